#include "engine/echobatch.h"

#include "probes/address.h"
#include "probes/icmppacket.h"
#include "probes/icmpsocket.h"
#include "probes/timeouts.h"

#include <QSocketNotifier>

#include <arpa/inet.h>
#include <cerrno>
#include <linux/errqueue.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>

namespace {
quint16 word(const char *p) { return static_cast<quint16>(static_cast<quint8>(p[0]) << 8 | static_cast<quint8>(p[1])); }

// The sequence number a raw packet is about: an echo reply's own, or the one in
// the request an error message quotes. Only used to find the table entry; the
// packet decoder then checks everything against that entry.
std::optional<quint16> rawSequence(const char *data, ssize_t n)
{
    if (n < 28 || (static_cast<quint8>(data[0]) >> 4) != 4)
        return std::nullopt;
    const int header = (static_cast<quint8>(data[0]) & 0x0F) * 4;
    if (header < 20 || n < header + 8)
        return std::nullopt;
    const char *icmp = data + header;
    const int type = static_cast<quint8>(icmp[0]);
    if (type == 0)
        return word(icmp + 6);
    const ssize_t quotedAt = header + 8;
    if (n < quotedAt + 20)
        return std::nullopt;
    const int quotedHeader = (static_cast<quint8>(data[quotedAt]) & 0x0F) * 4;
    if (quotedHeader < 20 || n < quotedAt + quotedHeader + 8)
        return std::nullopt;
    return word(data + quotedAt + quotedHeader + 6);
}
}

IcmpEchoBatch::IcmpEchoBatch(QObject *parent) : EchoBatch(parent)
{
    clock_.start();
    timer_.setSingleShot(true);
    timer_.setTimerType(Qt::PreciseTimer);
    connect(&timer_, &QTimer::timeout, this, &IcmpEchoBatch::expire);
}

IcmpEchoBatch::~IcmpEchoBatch()
{
    delete readNotifier_;
    delete errorNotifier_;
    if (fd_ >= 0)
        ::close(fd_);
}

bool IcmpEchoBatch::open()
{
    if (tried_)
        return fd_ >= 0;
    tried_ = true;
    const IcmpSocket socket = IcmpSocket::open(SOCK_NONBLOCK);
    if (socket.fd < 0) {
        reason_ = IcmpSocket::notAllowedText(
            QStringLiteral("round trips are measured by the game's own ping and ack instead (by the first "
                           "game query for a server that does not answer ping)"));
        return false;
    }
    fd_ = socket.fd;
    raw_ = socket.raw;
    id_ = socket.rawId;
    // Many answers arrive together; a larger buffer keeps the kernel from dropping them.
    const int buffer = 1 << 20;
    ::setsockopt(fd_, SOL_SOCKET, SO_RCVBUF, &buffer, sizeof buffer);
    readNotifier_ = new QSocketNotifier(fd_, QSocketNotifier::Read);
    connect(readNotifier_, &QSocketNotifier::activated, this, &IcmpEchoBatch::readReady);
    if (!raw_) {
        // An undrained error queue would wake us for ever: drain it when poll says so.
        errorNotifier_ = new QSocketNotifier(fd_, QSocketNotifier::Exception);
        connect(errorNotifier_, &QSocketNotifier::activated, this, &IcmpEchoBatch::readErrors);
    }
    return true;
}

QString IcmpEchoBatch::unavailableReason()
{
    open();
    return reason_;
}

QString IcmpEchoBatch::socketKind()
{
    if (!open())
        return {};
    return raw_ ? QStringLiteral("raw") : QStringLiteral("ping");
}

void IcmpEchoBatch::send(int token, qint32 destination, const QByteArray &payload, int ttl, int timeoutMs)
{
    EchoReply reply;
    const quint32 dest = AddressToHostOrder(destination);
    const auto failNow = [&](quint32 status) {
        reply.Status = status;
        QMetaObject::invokeMethod(
            this,
            [this, token, reply, generation = generation_] {
                if (generation == generation_)  // not forgotten by clear() meanwhile
                    emit answered(token, 0, reply);
            },
            Qt::QueuedConnection);
    };
    if (dest == 0)
        return failNow(EchoStatus::BadDestination);
    if (!open())
        return failNow(EchoStatus::GeneralFailure);
    const int hops = std::clamp(ttl, 1, 255);
    if (hops != ttl_) {
        ::setsockopt(fd_, IPPROTO_IP, IP_TTL, &hops, sizeof hops);
        ttl_ = hops;
    }
    quint16 sequence = ++sequence_;
    for (int guard = 0; outstanding_.contains(sequence) && guard < 65536; ++guard)
        sequence = ++sequence_;
    if (outstanding_.contains(sequence))
        return failNow(EchoStatus::GeneralFailure);  // 65536 echoes outstanding
    const QByteArray packet = IcmpPacket::echoRequest(id_, sequence, payload);
    sockaddr_in to{};
    to.sin_family = AF_INET;
    to.sin_addr.s_addr = htonl(dest);
    const qint64 now = clock_.nsecsElapsed();
    const auto sendOnce = [&] {
        return ::sendto(fd_, packet.constData(), static_cast<size_t>(packet.size()), 0,
                        reinterpret_cast<const sockaddr *>(&to), sizeof to);
    };
    // A router's answer to an earlier echo leaves its error pending on a ping socket as
    // well as on the error queue, and the kernel fails the next send with it (and clears
    // it): the error queue keeps the answer, and the send is made once more.
    if (sendOnce() < 0 && (raw_ || sendOnce() < 0))
        return failNow(EchoStatus::fromErrno(errno));
    const qint64 deadline = now + qint64(std::max(timeoutMs, 1)) * Timeouts::kNsPerMs;
    outstanding_.insert(sequence, {token, dest, now, deadline});
    deadlines_.emplace(deadline, sequence);
    arm();
}

void IcmpEchoBatch::clear()
{
    ++generation_;
    outstanding_.clear();
    deadlines_.clear();
    timer_.stop();
}

namespace {
// A receive into one buffer, with the sender's address and room for control data.
msghdr messageInto(sockaddr_in &from, iovec &iov, char *control, size_t controlSize)
{
    msghdr msg{};
    msg.msg_name = &from;
    msg.msg_namelen = sizeof from;
    msg.msg_iov = &iov;
    msg.msg_iovlen = 1;
    msg.msg_control = control;
    msg.msg_controllen = controlSize;
    return msg;
}
}  // namespace

void IcmpEchoBatch::readReady()
{
    char data[4096];
    char control[256];
    for (int budget = 0; budget < 4096; ++budget) {
        sockaddr_in from{};
        iovec iov{data, sizeof data};
        msghdr msg = messageInto(from, iov, control, sizeof control);
        const ssize_t n = ::recvmsg(fd_, &msg, MSG_DONTWAIT);
        if (n < 0) {
            if (errno == EINTR)
                continue;
            if (!raw_ && errno != EAGAIN && errno != EWOULDBLOCK)
                readErrors();
            return;
        }
        const qint64 now = clock_.nsecsElapsed();
        const QByteArray packet(data, static_cast<qsizetype>(n));
        std::optional<quint16> sequence;
        if (raw_)
            sequence = rawSequence(data, n);
        else if (n >= 8)
            sequence = word(data + 6);
        if (!sequence)
            continue;
        const auto it = outstanding_.constFind(*sequence);
        if (it == outstanding_.constEnd())
            continue;  // late, foreign or our own request seen on loopback
        const Outstanding o = *it;
        const auto answer = raw_ ? IcmpPacket::parseRaw(packet, id_, *sequence, o.destination)
                                 : IcmpPacket::parsePingSocket(packet, *sequence);
        if (!answer)
            continue;
        EchoReply reply = IcmpSocket::replyOf(*answer, ntohl(from.sin_addr.s_addr));
        for (cmsghdr *c = CMSG_FIRSTHDR(&msg); c; c = CMSG_NXTHDR(&msg, c))
            if (c->cmsg_level == IPPROTO_IP && c->cmsg_type == IP_TTL)
                reply.Ttl = *reinterpret_cast<const int *>(CMSG_DATA(c));
        reply.RoundTripTime = static_cast<quint32>((now - o.sentNs) / Timeouts::kNsPerMs);
        outstanding_.remove(*sequence);
        emit answered(o.token, 1, reply);
    }
}

// Ping sockets hand routers' answers over on the error queue.
void IcmpEchoBatch::readErrors()
{
    char data[512];
    char control[512];
    for (int budget = 0; budget < 4096; ++budget) {
        sockaddr_in from{};
        iovec iov{data, sizeof data};
        msghdr msg = messageInto(from, iov, control, sizeof control);
        const ssize_t n = ::recvmsg(fd_, &msg, MSG_ERRQUEUE | MSG_DONTWAIT);
        if (n < 0)
            return;
        if (n < 8)
            continue;
        const quint16 sequence = word(data + 6);
        const auto it = outstanding_.constFind(sequence);
        if (it == outstanding_.constEnd())
            continue;
        for (cmsghdr *c = CMSG_FIRSTHDR(&msg); c; c = CMSG_NXTHDR(&msg, c)) {
            if (c->cmsg_level != IPPROTO_IP || c->cmsg_type != IP_RECVERR)
                continue;
            const auto *err = reinterpret_cast<const sock_extended_err *>(CMSG_DATA(c));
            const auto *offender = reinterpret_cast<const sockaddr_in *>(SO_EE_OFFENDER(err));
            EchoReply reply = err->ee_origin == SO_EE_ORIGIN_ICMP
                ? IcmpSocket::replyOf({EchoStatus::fromIcmp(err->ee_type, err->ee_code), ntohl(offender->sin_addr.s_addr), {}, -1}, 0)
                : IcmpSocket::replyOf({EchoStatus::fromErrno(static_cast<int>(err->ee_errno)), 0, {}, -1}, 0);
            const Outstanding o = *it;
            reply.RoundTripTime = static_cast<quint32>((clock_.nsecsElapsed() - o.sentNs) / Timeouts::kNsPerMs);
            outstanding_.remove(sequence);
            emit answered(o.token, 1, reply);
            break;
        }
    }
}

void IcmpEchoBatch::expire()
{
    const qint64 now = clock_.nsecsElapsed();
    while (!deadlines_.empty() && deadlines_.begin()->first <= now) {
        const quint16 sequence = deadlines_.begin()->second;
        const qint64 deadline = deadlines_.begin()->first;
        deadlines_.erase(deadlines_.begin());
        const auto it = outstanding_.constFind(sequence);
        if (it == outstanding_.constEnd() || it->deadlineNs != deadline)
            continue;  // answered already
        const int token = it->token;
        outstanding_.remove(sequence);
        EchoReply reply;
        reply.Status = EchoStatus::RequestTimedOut;
        emit answered(token, 0, reply);
    }
    arm();
}

void IcmpEchoBatch::arm()
{
    // Answered entries stay in the deadline list until their time; skip them here.
    while (!deadlines_.empty()) {
        const auto it = outstanding_.constFind(deadlines_.begin()->second);
        if (it != outstanding_.constEnd() && it->deadlineNs == deadlines_.begin()->first)
            break;
        deadlines_.erase(deadlines_.begin());
    }
    if (deadlines_.empty()) {
        timer_.stop();
        return;
    }
    const qint64 wait = (deadlines_.begin()->first - clock_.nsecsElapsed() + Timeouts::kNsPerMs - 1) / Timeouts::kNsPerMs;
    timer_.start(static_cast<int>(std::max<qint64>(wait, 0)));
}

ServiceEchoBatch::ServiceEchoBatch(EchoService &service, QObject *parent) : EchoBatch(parent), service_(service) {}

void ServiceEchoBatch::send(int token, qint32 destination, const QByteArray &payload, int ttl, int timeoutMs)
{
    EchoReply reply;
    const int result = service_.sendEcho(destination, payload, ttl, timeoutMs, reply);
    const quint32 generation = generation_;
    QMetaObject::invokeMethod(this, [this, token, result, reply, generation] {
        if (generation == generation_)
            emit answered(token, result, reply);
    }, Qt::QueuedConnection);
}
