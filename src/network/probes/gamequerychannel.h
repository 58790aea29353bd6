#pragma once
#include "probes/timeouts.h"
#include "shell/activity.h"

#include <QObject>
#include <QPointer>
#include <QString>

class DsSocket;
class Prompter;
class Ticker;

// The game queries of one window: a datagram socket, the last datagram it
// received, the query the next send sends, and the wait of a query with its
// one-second ticker. The queries of a refresh, Server Info and the launcher bar
// each go through such a channel.
//
// The last reply is shared by every query of the channel: a reply that comes after
// its query gave up is taken by the next query that is waiting, as players have
// always seen it.
class GameQueryChannel : public QObject {
    Q_OBJECT
public:
    // Timeouts::kQueryTicks in milliseconds at the ticker's current time scale: the probe
    // engine listens this long, and so hears every server the serial query hears.
    static int queryWaitMs();

    // `prompts` shows the socket's errors. `mine` is the kind of query this channel
    // marks in the activity set with setActivity.
    GameQueryChannel(Prompter &prompts, Activity::Kind mine = Activity::Kind::ServerQuery,
                     QObject *parent = nullptr);
    ~GameQueryChannel() override;

    // While the other window's query waits, a query first waits for it to end (at
    // most its own tick limit); its own wait is marked in the activity.
    void setActivity(Activity *activity);
    void setTickLimit(int ticks) { tickLimit_ = ticks; }

    // One query: the datagram for `mode` to address:port, then the wait until a
    // reply or the tick limit. The reply, or empty.
    QString query(const QString &address, const QString &port, int mode);

    // The serial version probe: "info 34", 33, 32, 31 while each answers "wrong
    // version"; then the version the last mode stands for and its info line.
    struct VersionProbe {
        QString version;
        QString infoLine;
    };
    VersionProbe versionProbe(const QString &address, const QString &port);

    // A host name's address as dotted text; "0.0.0.0" when it does not resolve.
    // Blocks until the resolver answers.
    QString resolve(const QString &name);

    QString lastReply() const { return lastReply_; }
    bool isBusy() const { return busy_; }

private:
    void sendSelected();
    void waitForOtherQuery();

    Prompter &prompts_;
    Activity::Kind mine_;
    QPointer<Activity> activity_;
    DsSocket *socket_;
    Ticker *ticker_;
    qint64 ticks_ = 0;
    int tickLimit_ = Timeouts::kQueryTicks;
    int mode_ = 1;        // which datagram the next send-ready sends
    QString lastReply_;   // the last datagram received, whichever query it answers
    bool busy_ = false;
};
