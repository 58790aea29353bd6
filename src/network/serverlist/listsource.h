#pragma once
#include "serverlist/httplistfetch.h"
#include "serverlist/urltext.h"

#include <QObject>
#include <QStringList>

#include <optional>

class DsSocket;
class MasterClient;

// Obtains one server list, from wherever it comes: a web list fetched over HTTP,
// a master server ("master://host[:port]"), a list file (one entry a line) or a
// favorites file. Runs on the event loop; the window's refresh and pulsebox-query
// both use it, so a list reads the same in both.
//
// The web list keeps the fetch players know: port 80 unless the host carries a
// port, the list request byte for byte, the header skipped up to its first empty
// line, every later line one entry (an empty line an empty entry). It has no time
// limit of its own: the server's close or the socket's error (a silent connection
// times out) ends it, and the Cancel of a refresh does not.
//
// The locations that fetch cannot serve go to the standard HTTP client instead
// (Kind HttpList): "https://" and any location with a query string, and a web
// list whose server answers the list request with anything but a success status
// line (an error, a redirect, an error page without status line), which is
// asked again at once. That client reads text and binary lists
// and has bounds of time and size (HttpListFetch).
class ListSource : public QObject {
    Q_OBJECT
public:
    enum class Kind { None, WebList, HttpList, Master, ListFile, FavoritesFile };
    // Idle before the first start. Listed: the list came (perhaps with no entry).
    // Failed: the web list's socket failed, the standard client gave up or got no
    // list (then no entry), the master did not answer, a file could not be read;
    // the entries received so far stay.
    enum class Outcome { Idle, Running, Listed, InvalidLocation, Failed, Cancelled };

    explicit ListSource(QObject *parent = nullptr);
    ~ListSource() override;

    // The list a location text names: "master://host[:port]" or a web list URL
    // (outer spaces ignored). False, with Outcome InvalidLocation and nothing
    // started, when it names no host.
    bool start(const QString &location);
    bool startMaster(const QString &host, quint16 port);
    // A list file (each line one entry, outer spaces removed) or a favorites file
    // (the favorites' addresses as written), read at once; a file of more than
    // 16 MiB (or a device that never ends) is refused.
    void startFile(const QString &path);
    void startFavoritesFile(const QString &path);
    // Ends at once (Outcome Cancelled, the entries so far kept); emits nothing.
    void cancel();
    // How long a master may take, resolving its name included (default 5000 ms).
    void setMasterTimeout(int ms);
    // The standard client's bounds (tests make them small).
    void setHttpLimits(const HttpListFetch::Limits &limits);

    Kind kind() const { return kind_; }
    bool isRunning() const { return outcome_ == Outcome::Running; }
    Outcome outcome() const { return outcome_; }
    QString location() const { return location_; }  // the location text, outer spaces removed
    QStringList entries() const { return entries_; }
    // Characters of the web list's body lines as delivered, bytes of the standard
    // client's body, or bytes of the master's answers; at most 2^31 - 1.
    qint64 bytesReceived() const { return bytes_; }
    // Why a start failed: the master's reason, a file's problem, the standard
    // client's sentence, or the web list's socket error as "number description".
    // Empty otherwise.
    QString problem() const { return problem_; }

signals:
    // The status line while the list comes: "Connected...", "Ready to Send...",
    // "Retreiving List....N", "Connection closed...N bytes received.",
    // "dsSocket1 Error : N:description", "Master server answered: ...", and the
    // standard client's sentences.
    void statusChanged(const QString &text);
    // The list count: every tenth web list entry, a master's total at its end.
    void countChanged(int entries);
    // The web list's connect failed at once: "Error connecting to host", CR,
    // number, ":", description. The caller shows it; the source then fails.
    void connectFailed(const QString &message);
    // Once per start that did not return false, from the event loop (never
    // inside a start), unless cancelled.
    void finished();

private:
    void reset(Kind kind, const QString &location);
    void sendRequest();
    void takeLine(const QString &line);
    void end(Outcome outcome);
    void endLater(Outcome outcome);
    void masterFinished();
    bool startHttp(const QString &location);
    void httpFinished();
    void dropSocket();
    std::optional<QByteArray> readFile(const QString &kindName);

    Kind kind_ = Kind::None;
    Outcome outcome_ = Outcome::Idle;
    QString location_;
    QStringList entries_;
    qint64 bytes_ = 0;
    QString problem_;
    int masterTimeoutMs_ = 5000;
    quint64 generation_ = 0;  // a later start outdates an earlier start's pending end
    ListBodyReader body_;
    bool statusLineSeen_ = false;
    int reportedCount_ = 0;  // the standard client's last count shown
    HttpListFetch::Limits httpLimits_;
    DsSocket *socket_ = nullptr;
    MasterClient *master_ = nullptr;
    HttpListFetch *http_ = nullptr;
};
