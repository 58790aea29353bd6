#pragma once
#include "serverlist/httplist.h"

#include <QObject>
#include <QUrl>

#include <optional>

class QNetworkAccessManager;
class QNetworkReply;
class QTimer;

// One server list fetched by Qt's standard HTTP client (HTTP/1.1 and 2, HTTPS,
// redirects, chunked and compressed bodies), within bounds of time, size and
// redirects, then read as a text or binary list. Runs on the event loop.
class HttpListFetch : public QObject {
    Q_OBJECT
public:
    explicit HttpListFetch(QObject *parent = nullptr);
    ~HttpListFetch() override;

    void start(const QUrl &url);
    // Ends at once; emits nothing.
    void abort();

    // The bounds: no byte for idleMs, or not done within totalMs, ends the
    // fetch; so does a body past maxBytes or more than maxRedirects hops.
    struct Limits {
        int idleMs = 30000;  // as the list request's socket
        int totalMs = 120000;
        qint64 maxBytes = HttpList::kMaxBytes;
        int maxRedirects = 5;
    };
    Limits limits;

    qint64 bytesReceived() const { return body_.size(); }
    const HttpList::List &list() const { return list_; }
    // Why the fetch failed, one sentence; empty when the list came.
    QString problem() const { return problem_; }

signals:
    // While the body comes: the entries it holds so far (as far as it can tell).
    void progress(int entries);
    void finished();

private:
    void read();
    void done();
    QString problemOf(const QNetworkReply *reply) const;
    void fail(const QString &problem);
    void stop();

    QNetworkAccessManager *manager_;
    QNetworkReply *reply_ = nullptr;
    QTimer *idle_;
    QTimer *deadline_;
    QByteArray body_;
    std::optional<HttpList::Form> form_;
    qsizetype counted_ = 0;  // bytes of the body already scanned for line feeds
    int lines_ = 0;
    QString tlsProblem_;
    HttpList::List list_;
    QString problem_;
};
