#pragma once
#include <QHostAddress>
#include <QObject>
#include <QPointer>
#include <QTimer>

class QTcpSocket;
class QUdpSocket;

// The program's socket component: a stream or datagram socket driven through a
// few members and answering through events on the user-interface thread.
// Text goes out and comes in one byte per character (Windows-1252).
class DsSocket : public QObject {
    Q_OBJECT
public:
    enum class Kind { Stream, Datagram };
    // State values: what the refresh's wait and the queries look at.
    enum State { StateClosed = 0, StateOpen = 1, StateConnecting = 3, StateConnected = 4, StateFailed = 5 };
    enum Action { OpenAction = 1, ResolveAction = 6 };

    DsSocket(Kind kind, QObject *parent = nullptr);

    QString RemoteHost;                            // host to connect to or to resolve
    quint16 RemotePort = 0;                        // used when RemoteHost carries no ":port"
    QString RemoteDotted = QStringLiteral("0.0.0.0");  // datagram destination; resolve result
    bool LineMode = false;                         // stream: one data event per line
    int EOLChar = 10;                              // the line terminator in line mode

    // Sends on the connection, or as one datagram to RemoteDotted:RemotePort.
    void Send(const QString &text);
    // Open (datagram: bind) or resolve RemoteHost into RemoteDotted, which the
    // caller presets: a name that does not resolve leaves it as it was. Resolving
    // blocks until the resolver answers. False when the action failed.
    bool SetAction(int action);
    int State() const { return state_; }
    // Stream: connect to RemoteHost (and its ":port" when it has one, else
    // RemotePort). Datagram: ask for a send-ready event. False when the call
    // failed at once; LastError and LastErrorText then say why.
    bool Connect();

    int LastError = 0;
    QString LastErrorText;

    // A stream connection that stays silent this long fails with a time-out error.
    static void setIdleTimeout(int ms);

signals:
    void Connected();
    void SendReady();
    void DataArrival(const QString &data);
    void Closed();
    void Error(int number, const QString &description);

private:
    void fail(int number, const QString &description, bool raiseEvent);
    void readStream();
    void flushLines(bool all);
    void readDatagrams();
    bool openDatagram();

    Kind kind_;
    int state_ = StateClosed;
    QPointer<QTcpSocket> tcp_;
    QUdpSocket *udp_ = nullptr;
    QByteArray pending_;  // stream bytes not yet delivered as a line
    QTimer idle_;
};
