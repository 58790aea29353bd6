#pragma once
#include "finder/serverfilter.h"
#include "serverlist/refreshdecisions.h"

#include <QObject>
#include <QString>
#include <QStringList>

class EchoService;
class GameQueryChannel;
class ListSource;
class Prompter;

// What one refresh is asked to do: the window's texts as typed.
struct RefreshRequest {
    QString location;          // the list location ("http://..." or "master://...")
    QStringList favorites;     // the favorites' entries ("host[:port]"), in file order
    bool favoritesOnly = false;  // Fav Refresh: no list is fetched
    QString pingLimitText = QStringLiteral("230");
    QString ttlText = QStringLiteral("90");
    bool quickPing = true;     // one echo a server; Regular Ping sends three
    bool fast = false;         // Fast Refresh: the probe engine probes every server at once
    // Also ask every answering server for "status" (its players), for the player
    // search, the filters and the friends: Fast Refresh once per server in the
    // engine, the serial refresh right after each server's version probe.
    bool players = false;
};

// Refresh List and Fav Refresh, without widgets: fetches the list, probes the
// favorites and then the list's servers, and keeps the server table. It reports
// everything a window shows through its signals, in the order the window shows it.
//
// The serial mode probes one server after the other and yields to the event loop
// between steps, so that Cancel, clicks and ticks run while it works (run() returns
// only at the end). Its game queries share one channel, and with it the last reply:
// a late answer is taken by the next query. Fast Refresh hands the probing to the
// probe engine and replays its results in entry order, so that rows and lines come
// out as the serial mode gives them.
class RefreshSession : public QObject {
    Q_OBJECT
public:
    RefreshSession(Prompter &prompts, GameQueryChannel &queries, QObject *parent = nullptr);
    ~RefreshSession() override;

    // The echo service of the next runs. `engineToo`: Fast Refresh sends its echoes
    // through it as well (a test's or a benchmark's service), rather than its own socket.
    void setEchoService(EchoService *echo, bool engineToo);

    // Runs one refresh to its end; returns false when it stopped at the list step
    // (the user declined to go on with the favorites, or the program is ending).
    bool run(const RefreshRequest &request);
    // Stops the probing after the server under way (the list fetch is not stopped).
    void cancel() { cancelRequested_ = true; }
    bool cancelRequested() const { return cancelRequested_; }
    bool isRunning() const { return running_; }

    // The accepted servers of the last refresh; Count Hops fills in their hops.
    const ServerTable &table() const { return table_; }
    ServerTable &table() { return table_; }
    // What the filters look at, of the table's record `index` (empty for none).
    const ServerFacts &facts(qint32 index) const;

signals:
    // A run began: the rows, the log and the list count start empty.
    void started();
    void statusChanged(const QString &text);
    void listCountChanged(int entries);
    // The address being probed, as the Server IP box shows it.
    void addressProbed(const QString &address);
    // Lines for the log; `selected` is the one of them the log selects afterwards,
    // or -1 to leave the selection as it is.
    void logLines(const QStringList &lines, qsizetype selected);
    // An accepted server's row and its record's index in the table.
    void rowAccepted(const QString &row, qint32 index);
    // The probing began (the progress bar shows, empty)...
    void probingStarted();
    // ... and `done` of the list's `total` servers are probed.
    void progressChanged(int done, int total);
    // The run ended, at the list step or after the probing.
    void finished();

private:
    enum class ListOutcome { Listed, FavoritesInstead, Stop };
    ListOutcome fetchList(const RefreshRequest &request, QStringList *entries);
    bool continueWithFavorites();
    void logLine(const QString &line, bool selects = true);
    void probeSerial(const RefreshRequest &request, const QString &entry, bool favorite);
    QString lookUp(const QString &name);
    void probeFast(const RefreshRequest &request, const QStringList &listEntries);

    Prompter &prompts_;
    GameQueryChannel &queries_;
    EchoService *echo_ = nullptr;
    bool engineUsesEcho_ = false;
    ListSource *source_;
    ServerTable table_;
    std::vector<ServerFacts> serverFacts_;  // by record index, like the table
    void keepFacts(qint32 index, ServerFacts facts);
    bool running_ = false;
    bool cancelRequested_ = false;
};
