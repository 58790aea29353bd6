#include "serverlist/masterclient.h"
#include "serverlist/masterlist.h"
#include "shell/ticker.h"

#include <QHostInfo>
#include <QNetworkDatagram>
#include <QUdpSocket>
#include <QVariant>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {
int scaled(int ms) { return std::max(1, static_cast<int>(ms * Ticker::timeScale())); }
}

MasterClient::MasterClient(QObject *parent) : QObject(parent)
{
    quiet_.setSingleShot(true);
    deadline_.setSingleShot(true);
    connect(&quiet_, &QTimer::timeout, this, [this] { finish({}); });
    connect(&deadline_, &QTimer::timeout, this, [this] {
        finish(counts_.datagrams > 0 ? QString() : u"The master server %1 did not answer."_s.arg(host_));
    });
}

MasterClient::~MasterClient() { abort(); }

void MasterClient::start(const QString &host, quint16 port)
{
    abort();
    host_ = host;
    port_ = port;
    address_.clear();
    entries_.clear();
    seen_.clear();
    error_.clear();
    counts_ = {};
    running_ = true;
    deadline_.start(scaled(timeoutMs));
    QHostAddress literal;
    if (literal.setAddress(host) && literal.protocol() == QAbstractSocket::IPv4Protocol) {
        // Queued, so that `finished` never comes before start returns.
        QMetaObject::invokeMethod(this, [this, literal] { if (running_) resolved({literal}, {}); },
                                  Qt::QueuedConnection);
        return;
    }
    lookupId_ = QHostInfo::lookupHost(host, this, [this](const QHostInfo &info) {
        lookupId_ = -1;
        resolved(info.addresses(), info.error() == QHostInfo::NoError ? QString() : info.errorString());
    });
}

void MasterClient::resolved(const QList<QHostAddress> &addresses, const QString &lookupError)
{
    for (const QHostAddress &a : addresses) {
        if (a.protocol() == QAbstractSocket::IPv4Protocol) {
            address_ = a;
            break;
        }
    }
    if (address_.isNull())
        return finish(u"The master server %1 was not found%2"_s.arg(host_,
                          lookupError.isEmpty() ? u"."_s : u": "_s + lookupError));
    socket_ = new QUdpSocket(this);
    connect(socket_, &QUdpSocket::readyRead, this, &MasterClient::readPending);
    const QByteArray query = MasterList::queryDatagram();
    const bool bound = socket_->bind(QHostAddress::AnyIPv4, 0);
    // A big list comes as a burst of datagrams: room for it while the loop is busy.
    socket_->setSocketOption(QAbstractSocket::ReceiveBufferSizeSocketOption, QVariant(4 << 20));
    if (!bound
        || socket_->writeDatagram(query, address_, port_) != query.size())
        return finish(u"The query to the master server %1 could not be sent: %2"_s.arg(host_, socket_->errorString()));
    sent_.start();
}

void MasterClient::readPending()
{
    while (running_ && socket_ && socket_->hasPendingDatagrams()) {
        const QNetworkDatagram datagram = socket_->receiveDatagram();
        if (datagram.senderAddress().toIPv4Address() != address_.toIPv4Address()
            || datagram.senderPort() != port_) {
            ++counts_.foreign;
            continue;
        }
        const auto reply = MasterList::parse(datagram.data());
        if (!reply) {
            ++counts_.junk;
            continue;
        }
        if (++counts_.datagrams == 1)
            quietWaitMs_ = std::clamp(static_cast<int>(sent_.elapsed()), scaled(minQuietMs),
                                      std::max(scaled(minQuietMs), scaled(quietMs)));
        counts_.bytes += datagram.data().size();
        counts_.truncated += reply->truncatedBytes > 0;
        counts_.skipped += reply->skipped;
        for (const MasterList::Record &r : reply->records) {
            const quint64 key = quint64(r.address) << 16 | r.port;
            if (seen_.contains(key)) {
                ++counts_.duplicates;
            } else if (entries_.size() >= maxEntries) {
                ++counts_.skipped;
            } else {
                seen_.insert(key);
                entries_.append(MasterList::entryText(r));
            }
        }
        quiet_.start(quietWaitMs_);
    }
}

void MasterClient::finish(const QString &error)
{
    if (!running_)
        return;
    abort();
    error_ = error;
    emit finished();
}

void MasterClient::abort()
{
    running_ = false;
    quiet_.stop();
    deadline_.stop();
    if (lookupId_ >= 0)
        QHostInfo::abortHostLookup(lookupId_);
    lookupId_ = -1;
    if (socket_) {
        socket_->deleteLater();
        socket_ = nullptr;
    }
}
