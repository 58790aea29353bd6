#include "probes/icmpecho.h"

#include "probes/address.h"
#include "probes/icmppacket.h"
#include "probes/icmpsocket.h"

#include <QElapsedTimer>

#include <arpa/inet.h>
#include <cerrno>
#include <linux/errqueue.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>

namespace {
int clampTtl(int ttl) { return std::clamp(ttl, 1, 255); }

// One recvmsg into the caller's buffers; msg keeps pointing at them for the
// control messages that follow.
ssize_t receiveMessage(int fd, int flags, char *data, size_t dataSize, char *control, size_t controlSize,
                       sockaddr_in *from, iovec *iov, msghdr *msg)
{
    *iov = {data, dataSize};
    *msg = {};
    msg->msg_name = from;
    msg->msg_namelen = sizeof *from;
    msg->msg_iov = iov;
    msg->msg_iovlen = 1;
    msg->msg_control = control;
    msg->msg_controllen = controlSize;
    return ::recvmsg(fd, msg, flags);
}
}

LinuxIcmpEcho::~LinuxIcmpEcho()
{
    if (fd_ >= 0)
        ::close(fd_);
}

int LinuxIcmpEcho::openSocket(int type)
{
    return ::socket(AF_INET, type, IPPROTO_ICMP);
}

// A failure is not remembered: the player may open the ping sockets or give the
// capability while the program runs, and the next echo (so the next run) tries again.
// Two failing socket() calls per server cost nothing next to the echo's time-out.
bool LinuxIcmpEcho::open()
{
    if (fd_ >= 0)
        return true;
    const IcmpSocket socket = IcmpSocket::open(0, [this](int type) { return openSocket(type); });
    fd_ = socket.fd;
    raw_ = socket.raw;
    if (socket.raw)
        id_ = socket.rawId;
    if (fd_ >= 0) {
        reason_.clear();
        return true;
    }
    reason_ = IcmpSocket::notAllowedText(QStringLiteral("every server will fail its ping (code 11050)"));
    return false;
}

QString LinuxIcmpEcho::unavailableReason()
{
    open();
    return reason_;
}

QString LinuxIcmpEcho::socketKind()
{
    if (!open())
        return {};
    return raw_ ? QStringLiteral("raw") : QStringLiteral("ping");
}

int LinuxIcmpEcho::sendEcho(qint32 destination, const QByteArray &payload, int ttl, int timeoutMs,
                            EchoReply &reply)
{
    reply = EchoReply{};
    const quint32 dest = AddressToHostOrder(destination);
    if (dest == 0) {
        reply.Status = EchoStatus::BadDestination;
        return 0;
    }
    if (!open()) {
        reply.Status = EchoStatus::GeneralFailure;
        return 0;
    }
    const int hops = clampTtl(ttl);
    ::setsockopt(fd_, IPPROTO_IP, IP_TTL, &hops, sizeof hops);

    const quint16 sequence = ++sequence_;
    const QByteArray packet = IcmpPacket::echoRequest(id_, sequence, payload);
    sockaddr_in to{};
    to.sin_family = AF_INET;
    to.sin_addr.s_addr = htonl(dest);

    QElapsedTimer clock;
    clock.start();
    if (::sendto(fd_, packet.constData(), static_cast<size_t>(packet.size()), 0,
                 reinterpret_cast<const sockaddr *>(&to), sizeof to) < 0) {
        reply.Status = EchoStatus::fromErrno(errno);
        return 0;
    }
    for (;;) {
        const qint64 left = timeoutMs - clock.elapsed();
        if (left <= 0)
            break;
        pollfd pfd{fd_, POLLIN, 0};
        const int ready = ::poll(&pfd, 1, static_cast<int>(left));
        if (ready < 0 && errno == EINTR)
            continue;
        if (ready <= 0)
            break;
        int got = 0;
        if (pfd.revents & POLLERR)
            got = receiveError(sequence, reply);
        else if (pfd.revents & POLLIN)
            got = receive(sequence, dest, reply);
        if (got) {
            reply.RoundTripTime = static_cast<quint32>(clock.elapsed());
            return 1;
        }
    }
    reply = EchoReply{};
    reply.Status = EchoStatus::RequestTimedOut;
    return 0;
}

// Ping sockets hand routers' answers over on the error queue; draining it here
// also keeps poll from reporting the same error forever.
int LinuxIcmpEcho::receiveError(quint16 sequence, EchoReply &reply)
{
    char data[512];
    char control[512];
    sockaddr_in from{};
    iovec iov;
    msghdr msg;
    const ssize_t n = receiveMessage(fd_, MSG_ERRQUEUE | MSG_DONTWAIT, data, sizeof data, control, sizeof control,
                                     &from, &iov, &msg);
    if (n <= 0)
        return 0;
    const QByteArray quoted(data, static_cast<qsizetype>(n));
    for (cmsghdr *c = CMSG_FIRSTHDR(&msg); c; c = CMSG_NXTHDR(&msg, c)) {
        if (c->cmsg_level != IPPROTO_IP || c->cmsg_type != IP_RECVERR)
            continue;
        const auto *err = reinterpret_cast<const sock_extended_err *>(CMSG_DATA(c));
        IcmpPacket::QueuedError queued;
        queued.fromIcmp = err->ee_origin == SO_EE_ORIGIN_ICMP;
        queued.type = err->ee_type;
        queued.code = err->ee_code;
        queued.error = static_cast<int>(err->ee_errno);
        if (queued.fromIcmp)
            queued.offender = ntohl(reinterpret_cast<const sockaddr_in *>(SO_EE_OFFENDER(err))->sin_addr.s_addr);
        const auto answer = IcmpPacket::parseErrorQueue(quoted, queued, sequence);
        if (!answer)
            return 0;
        reply = IcmpSocket::replyOf(*answer, 0);
        return 1;
    }
    return 0;
}

int LinuxIcmpEcho::receive(quint16 sequence, quint32 destination, EchoReply &reply)
{
    char data[65536];
    char control[256];
    sockaddr_in from{};
    iovec iov;
    msghdr msg;
    const ssize_t n = receiveMessage(fd_, MSG_DONTWAIT, data, sizeof data, control, sizeof control, &from, &iov, &msg);
    if (n <= 0)
        return 0;
    const QByteArray packet(data, static_cast<qsizetype>(n));
    const auto answer = raw_ ? IcmpPacket::parseRaw(packet, id_, sequence, destination)
                             : IcmpPacket::parsePingSocket(packet, sequence);
    if (!answer)
        return 0;
    reply = IcmpSocket::replyOf(*answer, ntohl(from.sin_addr.s_addr));
    for (cmsghdr *c = CMSG_FIRSTHDR(&msg); c; c = CMSG_NXTHDR(&msg, c))
        if (c->cmsg_level == IPPROTO_IP && c->cmsg_type == IP_TTL)
            reply.Ttl = *reinterpret_cast<const int *>(CMSG_DATA(c));
    return 1;
}
