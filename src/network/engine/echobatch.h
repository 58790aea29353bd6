#pragma once
#include "probes/echoservice.h"

#include <QElapsedTimer>
#include <QHash>
#include <QObject>
#include <QTimer>

#include <map>

class QSocketNotifier;

// Echo requests that do not block: send() returns at once and answered() follows
// once per request, with what the blocking echo call would have returned for it
// (result 0 or 1, the reply record with its status and round-trip time).
class EchoBatch : public QObject {
    Q_OBJECT
public:
    using QObject::QObject;
    // Empty while echoes can be sent; otherwise why not, that round trips then come
    // from the first game query, and how to allow echoes.
    virtual QString unavailableReason() = 0;
    // `token` is the caller's; it comes back with the answer.
    virtual void send(int token, qint32 destination, const QByteArray &payload, int ttl, int timeoutMs) = 0;
    // Forget every outstanding request: no answered() for them.
    virtual void clear() = 0;

signals:
    void answered(int token, int result, const EchoReply &reply);
};

// Linux: one non-blocking ping socket (or raw socket) for every echo. Outstanding
// requests sit in a table keyed by sequence number (the identifier is the
// socket's own); their time-outs come from one sorted deadline list.
class IcmpEchoBatch : public EchoBatch {
    Q_OBJECT
public:
    explicit IcmpEchoBatch(QObject *parent = nullptr);
    ~IcmpEchoBatch() override;
    QString unavailableReason() override;
    void send(int token, qint32 destination, const QByteArray &payload, int ttl, int timeoutMs) override;
    void clear() override;
    QString socketKind();  // "ping", "raw" or "" when none could be opened

private:
    struct Outstanding {
        int token;
        quint32 destination;  // host order
        qint64 sentNs;
        qint64 deadlineNs;
    };
    bool open();
    void readReady();
    void readErrors();
    void expire();
    void arm();

    int fd_ = -1;
    bool raw_ = false;
    bool tried_ = false;
    int ttl_ = -1;
    quint16 id_ = 0;
    quint16 sequence_ = 0;
    quint32 generation_ = 0;  // bumped by clear(): answers queued before it are dropped
    QString reason_;
    QSocketNotifier *readNotifier_ = nullptr;
    QSocketNotifier *errorNotifier_ = nullptr;
    QHash<quint16, Outstanding> outstanding_;
    std::multimap<qint64, quint16> deadlines_;
    QTimer timer_;
    QElapsedTimer clock_;
};

// Any blocking EchoService (the scripted one of the tests, for instance) made to
// look non-blocking: each request is answered from the event loop right after.
class ServiceEchoBatch : public EchoBatch {
    Q_OBJECT
public:
    explicit ServiceEchoBatch(EchoService &service, QObject *parent = nullptr);
    QString unavailableReason() override { return service_.unavailableReason(); }
    void send(int token, qint32 destination, const QByteArray &payload, int ttl, int timeoutMs) override;
    void clear() override { ++generation_; }

private:
    EchoService &service_;
    quint32 generation_ = 0;
};
