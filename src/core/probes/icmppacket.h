#pragma once
#include <QByteArray>
#include <QtGlobal>

#include <optional>

// Status numbers of an echo outcome, as the original platform reports them.
namespace EchoStatus {
constexpr quint32 Success = 0;
constexpr quint32 DestNetUnreachable = 11002;
constexpr quint32 DestHostUnreachable = 11003;
constexpr quint32 DestProtocolUnreachable = 11004;
constexpr quint32 DestPortUnreachable = 11005;
constexpr quint32 PacketTooBig = 11009;
constexpr quint32 RequestTimedOut = 11010;
constexpr quint32 BadRoute = 11012;
constexpr quint32 TtlExpiredTransit = 11013;
constexpr quint32 TtlExpiredReassembly = 11014;
constexpr quint32 ParameterProblem = 11015;
constexpr quint32 SourceQuench = 11016;
constexpr quint32 BadDestination = 11018;
constexpr quint32 GeneralFailure = 11050;

// Status of an ICMP error message (type 3, 4, 11 or 12 with its code).
quint32 fromIcmp(int type, int code);
// Status of a send that failed with errno.
quint32 fromErrno(int error);
}

namespace IcmpPacket {
// An echo request: type 8, code 0, checksum, identifier, sequence, payload.
QByteArray echoRequest(quint16 id, quint16 sequence, const QByteArray &payload);
quint16 checksum(const QByteArray &bytes);

// What a received packet says about our request.
struct Answer {
    quint32 status = 0;       // EchoStatus
    quint32 from = 0;         // answering host, host byte order
    QByteArray data;          // echoed payload (echo replies only)
    int ttl = -1;             // time-to-live left in the reply, when known
};

// A packet read from a raw socket: IPv4 header first. Keeps only an echo reply
// with our identifier and sequence, or an error whose quoted request went to
// `destination` with our identifier and sequence; our own request (seen on
// loopback) and other programs' traffic give nothing.
std::optional<Answer> parseRaw(const QByteArray &packet, quint16 id, quint16 sequence,
                               quint32 destination);
// A packet read from a ping socket: the ICMP message without IP header. The kernel
// has already matched the identifier, so only the type and the sequence count.
std::optional<Answer> parsePingSocket(const QByteArray &packet, quint16 sequence);

// A router's answer as a ping socket's error queue hands it over: the request as
// the kernel quotes it (ICMP header first) and the fields of the extended error.
struct QueuedError {
    bool fromIcmp = false;  // an ICMP message: type and code say what, offender who
    int type = 0;
    int code = 0;
    int error = 0;          // errno, for an error of this machine
    quint32 offender = 0;   // host byte order
};
std::optional<Answer> parseErrorQueue(const QByteArray &quoted, const QueuedError &error, quint16 sequence);
}
