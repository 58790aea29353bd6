#pragma once
#include <QHostAddress>
#include <QElapsedTimer>
#include <QObject>
#include <QSet>
#include <QStringList>
#include <QTimer>

class QUdpSocket;

// Asks one master server for its list: sends the query, takes the datagrams that
// come back from that master's address and port (anyone else's are dropped), and
// ends once the master has been quiet for a while, or at the time limit. Runs on
// the event loop; `finished` is emitted exactly once per start.
class MasterClient : public QObject {
    Q_OBJECT
public:
    explicit MasterClient(QObject *parent = nullptr);
    ~MasterClient() override;

    // Milliseconds, multiplied by Ticker's time scale when the client starts.
    // The datagrams of one answer are sent together: once as long as the first took to
    // come (at least minQuietMs, at most quietMs) has passed without another, the list
    // is complete.
    int minQuietMs = 250;
    int quietMs = 1000;
    int timeoutMs = 5000;  // the whole exchange, resolving the name included
    int maxEntries = 100000;  // more is no list a player could probe

    void start(const QString &host, quint16 port);
    void abort();  // ends at once, with the entries so far; emits nothing
    bool isRunning() const { return running_; }

    // The servers as "a.b.c.d:port", in the master's order, each once.
    QStringList entries() const { return entries_; }
    // Empty when the master answered; otherwise why there is no list.
    QString errorText() const { return error_; }
    QHostAddress masterAddress() const { return address_; }

    struct Counts {
        int datagrams = 0;   // answers of the master
        int foreign = 0;     // datagrams from other addresses or ports, dropped
        int junk = 0;        // datagrams of the master that were no answer
        int truncated = 0;   // answers that ended inside a record
        int duplicates = 0;  // servers named twice
        int skipped = 0;     // records naming address 0 or port 0, or past maxEntries
        qint64 bytes = 0;    // of the master's answers
    };
    Counts counts() const { return counts_; }

signals:
    void finished();

private:
    void resolved(const QList<QHostAddress> &addresses, const QString &lookupError);
    void readPending();
    void finish(const QString &error);

    QUdpSocket *socket_ = nullptr;
    QTimer quiet_, deadline_;
    QElapsedTimer sent_;  // since the query went
    int quietWaitMs_ = 0;
    QHostAddress address_;
    quint16 port_ = 0;
    QString host_;
    bool running_ = false;
    int lookupId_ = -1;
    QStringList entries_;
    QSet<quint64> seen_;
    QString error_;
    Counts counts_;
};
