#include "probes/icmpsocket.h"

#include "probes/address.h"
#include "probes/icmppacket.h"

#include <QCoreApplication>

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>

using namespace Qt::StringLiterals;

namespace {
std::atomic<quint16> g_nextId{0};
}

IcmpSocket IcmpSocket::open(int flags, const std::function<int(int type)> &makeSocket)
{
    const auto make = [&](int type) {
        type |= SOCK_CLOEXEC | flags;
        return makeSocket ? makeSocket(type) : ::socket(AF_INET, type, IPPROTO_ICMP);
    };
    IcmpSocket s;
    s.fd = make(SOCK_DGRAM);
    if (s.fd >= 0) {
        const int on = 1;
        // Without IP_RECVERR the kernel drops "time exceeded" and "unreachable" for us.
        ::setsockopt(s.fd, IPPROTO_IP, IP_RECVERR, &on, sizeof on);
        ::setsockopt(s.fd, IPPROTO_IP, IP_RECVTTL, &on, sizeof on);
        return s;
    }
    s.fd = make(SOCK_RAW);
    if (s.fd >= 0) {
        s.raw = true;
        s.rawId = static_cast<quint16>((::getpid() & 0xFFFF) ^ (g_nextId.fetch_add(1) * 0x9E37));
    }
    return s;
}

QString IcmpSocket::notAllowedText(const QString &consequence)
{
    const QString program = QCoreApplication::instance() ? QCoreApplication::applicationFilePath()
                                                         : u"<path to pulsebox>"_s;
    return u"Pulsebox cannot send pings (ICMP echo) on this machine: it may open neither an "
           "unprivileged ping socket nor a raw socket, so %1.\n\n"
           "To allow it, either let your group use ping sockets (this works at once: no restart "
           "is needed, the next Refresh List pings again):\n"
           "    sudo sysctl -w net.ipv4.ping_group_range=\"0 2147483647\"\n"
           "or give the program the raw-socket capability (this takes effect only when Pulsebox "
           "is started again):\n"
           "    sudo setcap cap_net_raw+ep %2"_s.arg(consequence, program);
}

EchoReply IcmpSocket::replyOf(const IcmpPacket::Answer &answer, quint32 fallbackFrom)
{
    constexpr int kDataArea = 250;
    EchoReply reply;
    reply.Status = answer.status;
    reply.Address = AddressFromHostOrder(answer.from ? answer.from : fallbackFrom);
    reply.Data = answer.data.left(kDataArea);
    reply.Ttl = answer.ttl;
    return reply;
}
