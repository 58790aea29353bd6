#pragma once
#include <QHostAddress>
#include <QList>
#include <QObject>
#include <QStringList>

#include <optional>

class QTcpServer;
class QUdpSocket;

// A simulated Quake 2 server population and the web list that names it, all on
// loopback addresses. Used by the demo, the end-to-end tests and the benchmark.
namespace Demo {

struct Player {
    QString name;
    int score = 0;
    int ping = 0;
};

struct Server {
    QHostAddress address;
    quint16 port = 27910;
    // "31".."34": the protocol it speaks; "none": answers "wrong version" to every
    // info query; "silent": never answers; "nolf": answers without any line feed;
    // "q2pro": silent for "info 31" to "info 33", answers 34, 35 and 36. All but
    // "silent" answer "ping" with "ack" (after delayMs, as every answer).
    QString protocol = QStringLiteral("34");
    int delayMs = 0;  // how long it takes to answer
    QString hostName;
    QString map;
    int maxClients = 8;
    QList<Player> players;
};

struct Config {
    quint16 httpPort = 80;
    // A master server on 127.0.0.1 that lists every server below; 0 picks a free port.
    std::optional<quint16> masterPort;
    QList<Server> servers;
    QStringList listLines;  // the list body, line by line

    // The demo's own population: every path of a refresh shows.
    static Config builtIn();
    // Lines "http|PORT", "master|PORT", "server|ADDRESS:PORT|PROTOCOL|DELAY|NAME|MAP|MAX|name:score:ping,...",
    // "list|ENTRY"; "#" starts a comment line.
    static std::optional<Config> parse(const QString &text, QString *error);
};

// What a real server sends back for one query datagram; empty for no answer.
QByteArray answerFor(const Server &server, const QByteArray &query);

// A master server's answer: the records of `servers`, `perDatagram` to a datagram.
QList<QByteArray> masterAnswer(const QList<Server> &servers, int perDatagram);

// A simulated master server: answers "query" with the list of its servers.
class MasterServer : public QObject {
    Q_OBJECT
public:
    explicit MasterServer(const QList<Server> &servers, QObject *parent = nullptr);
    bool start(quint16 port, QString *error);
    quint16 port() const;
    int perDatagram = 100;   // records in one answer datagram
    int gapMs = 0;           // pause between two answer datagrams
    bool silent = false;     // never answers
    QList<QByteArray> received;

private:
    void readPending();
    QList<Server> servers_;
    QUdpSocket *socket_;
};

// One simulated game server on its own address and port.
class GameServer : public QObject {
    Q_OBJECT
public:
    explicit GameServer(const Server &server, QObject *parent = nullptr);
    bool start(QString *error);
    void setPlayers(const QList<Player> &players) { server_.players = players; }  // who plays from now on
    QList<QByteArray> received;  // every datagram, as it came

private:
    void readPending();
    Server server_;
    QUdpSocket *socket_;
};

class Network : public QObject {
    Q_OBJECT
public:
    explicit Network(QObject *parent = nullptr);
    // Tries the configured HTTP port, then 8080 and up, unless strictPort.
    bool start(const Config &config, QString *error, bool strictPort = false);
    quint16 httpPort() const { return httpPort_; }
    QString listUrl() const;
    // The same list as a standard web server serves it, like q2servers.com:
    // "http://127.0.0.1[:PORT]/?raw=1" (text) or "?raw=2" (binary records).
    QString standardListUrl(bool binary) const;
    // "master://127.0.0.1:PORT", empty when the population has no master.
    QString masterUrl() const;
    MasterServer *master() const { return master_; }
    QList<GameServer *> gameServers() const { return gameServers_; }
    // Replaces the whole HTTP response (status line and headers included).
    void setRawResponse(const QByteArray &response) { rawResponse_ = response; }
    QByteArray lastRequest;  // the bytes of the last list request received

private:
    void serve();
    QByteArray standardBody(bool binary) const;
    Config config_;
    QTcpServer *http_;
    quint16 httpPort_ = 0;
    QList<GameServer *> gameServers_;
    MasterServer *master_ = nullptr;
    std::optional<QByteArray> rawResponse_;
};

}
