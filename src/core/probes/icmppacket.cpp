#include "probes/icmppacket.h"

#include <QtEndian>

#include <cerrno>

namespace EchoStatus {

quint32 fromIcmp(int type, int code)
{
    switch (type) {
    case 11:
        return code == 1 ? TtlExpiredReassembly : TtlExpiredTransit;
    case 12:
        return ParameterProblem;
    case 4:
        return SourceQuench;
    case 3:
        switch (code) {
        case 0: case 6: case 9: case 11: return DestNetUnreachable;
        case 2: return DestProtocolUnreachable;
        case 3: return DestPortUnreachable;
        case 4: return PacketTooBig;
        case 5: return BadRoute;
        default: return DestHostUnreachable;
        }
    default:
        return GeneralFailure;
    }
}

quint32 fromErrno(int error)
{
    switch (error) {
    case EHOSTUNREACH: return DestHostUnreachable;
    case ENETUNREACH: return DestNetUnreachable;
    case EMSGSIZE: return PacketTooBig;
    default: return GeneralFailure;
    }
}

}

namespace IcmpPacket {

namespace {
quint8 byteAt(const QByteArray &b, qsizetype i) { return static_cast<quint8>(b[i]); }
quint16 word(const QByteArray &b, qsizetype i) { return quint16(byteAt(b, i) << 8 | byteAt(b, i + 1)); }
quint32 dword(const QByteArray &b, qsizetype i) { return quint32(word(b, i)) << 16 | word(b, i + 2); }
constexpr int kEchoReply = 0;
bool isError(int type) { return type == 3 || type == 4 || type == 11 || type == 12; }
}

quint16 checksum(const QByteArray &bytes)
{
    quint32 sum = 0;
    qsizetype i = 0;
    for (; i + 1 < bytes.size(); i += 2)
        sum += word(bytes, i);
    if (i < bytes.size())
        sum += quint32(byteAt(bytes, i)) << 8;
    while (sum >> 16)
        sum = (sum & 0xFFFF) + (sum >> 16);
    return static_cast<quint16>(~sum);
}

QByteArray echoRequest(quint16 id, quint16 sequence, const QByteArray &payload)
{
    QByteArray packet(8, '\0');
    packet[0] = 8;
    qToBigEndian(id, packet.data() + 4);
    qToBigEndian(sequence, packet.data() + 6);
    packet += payload;
    qToBigEndian(checksum(packet), packet.data() + 2);
    return packet;
}

std::optional<Answer> parseRaw(const QByteArray &packet, quint16 id, quint16 sequence,
                               quint32 destination)
{
    if (packet.size() < 20 || (byteAt(packet, 0) >> 4) != 4)
        return std::nullopt;
    const int headerLength = (byteAt(packet, 0) & 0x0F) * 4;
    if (headerLength < 20 || packet.size() < headerLength + 8)
        return std::nullopt;
    const int ttl = byteAt(packet, 8);
    const quint32 source = dword(packet, 12);
    const QByteArray icmp = packet.mid(headerLength);
    const int type = byteAt(icmp, 0);

    if (type == kEchoReply) {
        if (word(icmp, 4) != id || word(icmp, 6) != sequence)
            return std::nullopt;
        return Answer{EchoStatus::Success, source, icmp.mid(8), ttl};
    }
    if (!isError(type))
        return std::nullopt;
    // The error quotes our request: its IP header, then at least 8 bytes of ICMP.
    const QByteArray quoted = icmp.mid(8);
    if (quoted.size() < 20 || (byteAt(quoted, 0) >> 4) != 4)
        return std::nullopt;
    const int quotedHeader = (byteAt(quoted, 0) & 0x0F) * 4;
    if (quotedHeader < 20 || quoted.size() < quotedHeader + 8 || byteAt(quoted, 9) != 1)
        return std::nullopt;
    if (dword(quoted, 16) != destination || byteAt(quoted, quotedHeader) != 8
        || word(quoted, quotedHeader + 4) != id || word(quoted, quotedHeader + 6) != sequence)
        return std::nullopt;
    return Answer{EchoStatus::fromIcmp(type, byteAt(icmp, 1)), source, {}, ttl};
}

std::optional<Answer> parsePingSocket(const QByteArray &packet, quint16 sequence)
{
    if (packet.size() < 8 || byteAt(packet, 0) != kEchoReply || word(packet, 6) != sequence)
        return std::nullopt;
    return Answer{EchoStatus::Success, 0, packet.mid(8), -1};
}

std::optional<Answer> parseErrorQueue(const QByteArray &quoted, const QueuedError &error, quint16 sequence)
{
    if (quoted.size() < 8 || word(quoted, 6) != sequence)
        return std::nullopt;
    if (error.fromIcmp)
        return Answer{EchoStatus::fromIcmp(error.type, error.code), error.offender, {}, -1};
    return Answer{EchoStatus::fromErrno(error.error), 0, {}, -1};
}

}
