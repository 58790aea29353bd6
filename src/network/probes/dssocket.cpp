#include "probes/dssocket.h"

#include "serverlist/linesplit.h"
#include "shell/wiretext.h"

#include <QHostInfo>
#include <QNetworkDatagram>
#include <QTcpSocket>
#include <QUdpSocket>

namespace {
int g_idleTimeoutMs = 30000;
// A line that never ends is delivered in pieces of this size rather than held forever.
constexpr qsizetype kMaxLine = 64 * 1024;

// The error numbers players know from the Windows socket library.
int errorNumber(QAbstractSocket::SocketError error)
{
    switch (error) {
    case QAbstractSocket::ConnectionRefusedError: return 10061;
    case QAbstractSocket::RemoteHostClosedError: return 10054;
    case QAbstractSocket::HostNotFoundError: return 11001;
    case QAbstractSocket::SocketAccessError: return 10013;
    case QAbstractSocket::SocketResourceError: return 10055;
    case QAbstractSocket::SocketTimeoutError: return 10060;
    case QAbstractSocket::DatagramTooLargeError: return 10040;
    case QAbstractSocket::NetworkError: return 10051;
    case QAbstractSocket::AddressInUseError: return 10048;
    case QAbstractSocket::SocketAddressNotAvailableError: return 10049;
    case QAbstractSocket::UnsupportedSocketOperationError: return 10045;
    default: return 10050;
    }
}
}

void DsSocket::setIdleTimeout(int ms) { g_idleTimeoutMs = ms; }

DsSocket::DsSocket(Kind kind, QObject *parent) : QObject(parent), kind_(kind)
{
    idle_.setSingleShot(true);
    connect(&idle_, &QTimer::timeout, this, [this] {
        if (tcp_)
            tcp_->abort();
        fail(10060, QStringLiteral("Connection timed out"), true);
    });
}

void DsSocket::fail(int number, const QString &description, bool raiseEvent)
{
    idle_.stop();
    state_ = StateFailed;
    LastError = number;
    LastErrorText = description;
    if (raiseEvent)
        emit Error(number, description);
}

bool DsSocket::Connect()
{
    LastError = 0;
    LastErrorText.clear();
    if (kind_ == Kind::Datagram) {
        QMetaObject::invokeMethod(this, &DsSocket::SendReady, Qt::QueuedConnection);
        return true;
    }
    if (tcp_) {  // a new fetch may start from any state
        tcp_->disconnect(this);
        tcp_->abort();
        tcp_->deleteLater();
    }
    pending_.clear();

    QString host = RemoteHost;
    quint16 port = RemotePort;
    const qsizetype colon = host.indexOf(u':');
    if (colon >= 0) {
        bool ok = false;
        const uint number = host.mid(colon + 1).toUInt(&ok);
        host = host.left(colon);
        if (!ok || number == 0 || number > 65535) {
            fail(10049, QStringLiteral("The port after the host is not a port number"), false);
            return false;
        }
        port = static_cast<quint16>(number);
    }
    if (host.isEmpty()) {
        fail(11001, QStringLiteral("No host to connect to"), false);
        return false;
    }

    tcp_ = new QTcpSocket(this);
    connect(tcp_, &QTcpSocket::connected, this, [this] {
        state_ = StateConnected;
        idle_.start(g_idleTimeoutMs);
        emit Connected();
        emit SendReady();
    });
    connect(tcp_, &QTcpSocket::readyRead, this, &DsSocket::readStream);
    connect(tcp_, &QTcpSocket::disconnected, this, [this] {
        readStream();
        flushLines(true);
        idle_.stop();
        if (state_ == StateFailed)
            return;  // the error event has already ended this connection
        state_ = StateClosed;
        emit Closed();
    });
    connect(tcp_, &QTcpSocket::errorOccurred, this, [this](QAbstractSocket::SocketError error) {
        if (error == QAbstractSocket::RemoteHostClosedError)
            return;  // the disconnected signal that follows is the close event
        fail(errorNumber(error), tcp_->errorString(), true);
    });
    state_ = StateConnecting;
    idle_.start(g_idleTimeoutMs);
    tcp_->connectToHost(host, port);
    return true;
}

void DsSocket::readStream()
{
    if (!tcp_)
        return;
    const QByteArray bytes = tcp_->readAll();
    if (bytes.isEmpty())
        return;
    idle_.start(g_idleTimeoutMs);
    if (!LineMode) {
        emit DataArrival(WireText::fromBytes(bytes));
        return;
    }
    pending_ += bytes;
    flushLines(false);
}

void DsSocket::flushLines(bool all)
{
    for (const QByteArray &line : TakeLines(pending_, static_cast<char>(EOLChar), all, kMaxLine))
        emit DataArrival(WireText::fromBytes(line));
}

bool DsSocket::openDatagram()
{
    if (udp_)
        return state_ == StateOpen;
    udp_ = new QUdpSocket(this);
    connect(udp_, &QUdpSocket::readyRead, this, &DsSocket::readDatagrams);
    if (!udp_->bind(QHostAddress::AnyIPv4, 0)) {
        fail(errorNumber(udp_->error()), udp_->errorString(), false);
        delete udp_;
        udp_ = nullptr;
        return false;
    }
    state_ = StateOpen;
    return true;
}

bool DsSocket::SetAction(int action)
{
    if (action == OpenAction)
        return kind_ == Kind::Datagram ? openDatagram() : false;
    if (action == ResolveAction) {
        const QHostInfo info = QHostInfo::fromName(RemoteHost);
        for (const QHostAddress &address : info.addresses()) {
            if (address.protocol() == QAbstractSocket::IPv4Protocol) {
                RemoteDotted = address.toString();
                return true;
            }
        }
        return false;
    }
    return false;
}

void DsSocket::Send(const QString &text)
{
    const QByteArray bytes = WireText::toBytes(text);
    if (kind_ == Kind::Stream) {
        if (tcp_)
            tcp_->write(bytes);
        return;
    }
    if (!openDatagram()) {
        emit Error(LastError, LastErrorText);
        return;
    }
    const QHostAddress to(RemoteDotted);
    if (to.protocol() != QAbstractSocket::IPv4Protocol) {
        emit Error(10049, QStringLiteral("Bad destination address ") + RemoteDotted);
        return;
    }
    if (udp_->writeDatagram(bytes, to, RemotePort) < 0)
        emit Error(errorNumber(udp_->error()), udp_->errorString());
}

void DsSocket::readDatagrams()
{
    while (udp_ && udp_->hasPendingDatagrams()) {
        const QNetworkDatagram datagram = udp_->receiveDatagram();
        emit DataArrival(WireText::fromBytes(datagram.data()));
    }
}
