#pragma once
#include "engine/echobatch.h"
#include "finder/serverfilter.h"
#include "probes/timeouts.h"
#include "shell/serverrow.h"

#include <QElapsedTimer>
#include <QHash>
#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QTimer>

#include <array>
#include <map>
#include <memory>
#include <optional>
#include <vector>

class QUdpSocket;

// The probe engine: probes many servers at once on the event loop and gives, per
// server, what the one-at-a-time refresh would give for it (the same log lines,
// record and row, made by the same core functions), without widgets.
//
// Usage:
//     ProbeEngine engine;
//     engine.setSettings(settings);          // clamped; see ProbeSettings::check
//     connect(&engine, &ProbeEngine::finished, ...);
//     engine.start({{"127.0.0.2:27910", false}, {"localhost:27920", true}});
//     ... event loop runs ...
//     for (const ProbeResult &r : engine.results()) if (r.done) ...
//
// Everything runs on the thread that owns the engine; nothing blocks. One
// non-blocking ICMP socket carries every echo (an EchoBatch), one UDP socket per
// kind of game query (five in all) every game query; answers count only from the
// address and port queried, on the socket of the query being asked; host names
// are resolved concurrently. Sends are paced by `rate` and
// at most `inFlight` servers are probed at a time.

struct ProbeSettings {
    int echoes = 1;               // echoes per server: 1 Quick Ping, 3 Regular Ping
    int ttl = 90;                 // time-to-live of the echoes, 0..255 (0 goes out as 1)
    QString ttlText = QStringLiteral("90");  // as typed: the log lines show it
    double pingLimit = 230;       // ms; a ping above it is only logged (equal is accepted)
    int echoTimeoutMs = Timeouts::kPingEchoMs;  // per echo
    int queryTimeoutMs = Timeouts::kEngineQueryMs;  // how long one info query listens for its answer, from its first send
    int tries = Timeouts::kEngineQueryTries;        // sends of one query inside queryTimeoutMs (the rest are re-sends)
    int ackPings = 3;             // without ICMP: "ping"s per server, one after another; the least round trip counts
    int rate = 8000;              // packets per second, echoes and queries together
    int inFlight = 1000;          // servers probed at the same time
    bool status = false;          // also ask every answering server for "status" (statusAnswer)
    bool pingOnly = false;        // only the echoes: no ping limit, no game queries (the matcher)

    // Values outside these bounds are clamped by setSettings; check() says why a
    // value is refused instead (for a command line that wants to refuse).
    static constexpr int MinRate = 10, MaxRate = 100000;
    static constexpr int MinTimeoutMs = 50, MaxTimeoutMs = 60000;
    static constexpr int MaxTries = 10, MaxInFlight = 10000;
    // Empty when every value lies within its bounds, else one clear sentence.
    QString check() const;
    ProbeSettings clamped() const;
};

struct ProbeEntry {
    QString text;           // host, or host ":" port, as a list or the favorites hold it
    bool favorite = false;  // favorites get "Reply from Fav" and the " -*" row mark
};

// Where a result's round-trip time came from: an ICMP echo, the game's own
// "ping"/"ack" (where ICMP is not allowed), or the first game query's answer (a
// server that does not answer "ping").
enum class RttSource { None, Icmp, UdpAck, GameQuery };

struct ProbeResult {
    ProbeEntry entry;
    bool done = false;         // false: cancelled before this server finished
    QString address;           // the dotted text probed (the looked-up address for a name)
    QString portText;          // the entry's port text ("27910" when it has none)
    quint16 port = 0;          // where the queries went (0: the port text is no port)
    QStringList log;           // the log lines of this server, in order
    bool accepted = false;     // pinged within the limit and queried: record and row are set
    ServerRec record;          // valid when accepted
    QString row;               // valid when accepted
    bool answered = false;     // the game server gave an info line (not "No data returned")
    double ping = 0;           // mean round trip in ms, when pinged
    quint32 echoStatus = 0;    // status of the last echo (0 success)
    int echoReplies = 0;       // echoes that got a reply (a router's answer counts), up to the first that got none
    RttSource rttSource = RttSource::None;
    QString version;           // "3.14" .. "3.20", valid when accepted
    QString infoLine;          // as the version probe gives it
    QString hostName, map, players;  // fields of the info line
    QString statusAnswer;      // the raw "status" answer (settings.status), empty when none

    // What the filters and the player search look at: the window's rows and
    // pulsebox-query judge a result by the same facts.
    ServerFacts facts() const;
};

class ProbeEngine : public QObject {
    Q_OBJECT
public:
    explicit ProbeEngine(QObject *parent = nullptr);
    ~ProbeEngine() override;

    // Settings for the next start(); out-of-range values are clamped.
    void setSettings(const ProbeSettings &settings);
    const ProbeSettings &settings() const { return settings_; }
    // The echo transport; null (the default) means the Linux ICMP socket. The
    // engine does not own it. Tests hand in scripted echoes.
    void setEchoBatch(EchoBatch *batch);

    // Starts probing; results() then holds one result per entry, in entry order.
    // A running probe is cancelled first.
    void start(const QList<ProbeEntry> &entries);
    // Stops at once: unfinished servers keep done = false. finished(true) follows.
    void cancel();
    bool isRunning() const { return running_; }

    const QList<ProbeResult> &results() const { return results_; }
    int completed() const { return completed_; }
    // Non-empty when ICMP is not allowed here: why, and how round trips are measured
    // instead (said once per run).
    QString rttNotice() const { return rttNotice_; }

    // Datagrams dropped: from no server being queried, or answering a query of that
    // server that is no longer asked (a duplicate or a late answer).
    int foreignDatagrams() const { return foreign_; }

signals:
    void serverDone(int index);      // results()[index] is final
    void progress(int completed, int total);
    void notice(const QString &text);  // the round-trip notice, once per run
    void finished(bool cancelled);

private:
    struct Server;
    void startNext();
    void beginServer(int index);
    void resolved(int index, const QString &address);
    void beginPing(int index);
    void echoAnswered(int token, int result, const EchoReply &reply);
    void judgePing(int index);
    void beginQuery(int index, int mode);
    void readDatagrams(int socket);
    void queryAnswered(int index, const QString &answer);
    void queryTimedOut(int index);
    void sendAckPing(int index);
    void ackAnswered(int index);
    void endAckPings(int index);
    bool takePing(int index, double ms, RttSource source);
    void accept(int index);
    void releaseKey(int index);
    void finishServer(int index);
    void finishAll(bool cancelled);
    enum class Packet { Echo, Query, AckPing };
    void queuePacket(int index, Packet packet);
    void pump();
    void armDeadlines();
    void expireDeadlines();
    quint64 keyOf(int index) const;

    ProbeSettings settings_;
    EchoBatch *echo_ = nullptr;
    std::unique_ptr<EchoBatch> ownEcho_;
    // One UDP socket per query kind ("info 31" .. "info 34", "status", "ping"): the
    // socket an answer arrives on says which query it answers, so a duplicate or late
    // answer to an earlier query of the same server is never taken for the answer to a
    // later one.
    static constexpr int QuerySockets = 6;
    static int socketOf(int mode);
    std::array<QUdpSocket *, QuerySockets> udp_{};
    QList<ProbeResult> results_;
    std::vector<Server> servers_;
    int next_ = 0;        // next entry to begin
    int active_ = 0;      // servers begun and not finished
    int completed_ = 0;
    int foreign_ = 0;
    bool running_ = false;
    bool starting_ = false;
    bool icmp_ = true;    // false: round trips from "ping"/"ack" or the first game query
    QString rttNotice_;
    QList<int> lookups_;  // pending host look-up ids
    // Servers being queried, by address and port: one per key at a time.
    QHash<quint64, int> querying_;
    QHash<quint64, QList<int>> waitingForKey_;
    // The send queue, in order; paced by a token bucket.
    struct Queued {
        int index;
        quint32 generation;  // of the query, or of the ping series for an AckPing
        Packet packet;
    };
    std::vector<Queued> queue_;
    size_t queueHead_ = 0;
    double tokens_ = 0;
    qint64 lastRefillNs_ = 0;
    QTimer pumpTimer_;
    // One sorted deadline list for the queries' re-sends and time-outs and the pings'
    // time-outs.
    struct Deadline {
        int index;
        quint32 generation;
        bool ackPing;
    };
    std::multimap<qint64, Deadline> deadlines_;  // by ns
    QTimer deadlineTimer_;
    QElapsedTimer clock_;
};
