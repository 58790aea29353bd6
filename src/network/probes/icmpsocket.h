#pragma once
#include "probes/echoservice.h"

#include <QString>

#include <functional>

namespace IcmpPacket {
struct Answer;
}

// The one way the program opens its ICMP socket on Linux: an unprivileged ping
// socket when the player's group may have one (net.ipv4.ping_group_range), else
// a raw socket (cap_net_raw). A ping socket reports "time exceeded" and
// "unreachable" through its error queue and each answer's time-to-live.
struct IcmpSocket {
    int fd = -1;  // -1: neither kind could be opened
    bool raw = false;
    // An identifier for a raw socket's echoes: the kernel numbers a ping
    // socket's itself, but every raw socket sees every echo answer.
    quint16 rawId = 0;

    // `flags` (SOCK_NONBLOCK) are added to SOCK_CLOEXEC. `makeSocket` stands in
    // for socket(AF_INET, type, IPPROTO_ICMP) in the tests.
    static IcmpSocket open(int flags, const std::function<int(int type)> &makeSocket = {});

    // Why no ICMP socket opens here and how to allow it; `consequence` says what
    // that means for the player and ends the first sentence.
    static QString notAllowedText(const QString &consequence);

    // The reply kept of a decoded answer (its payload cut to the 250 bytes a reply
    // holds); `fallbackFrom` (host order) names the sender when the answer does not.
    static EchoReply replyOf(const IcmpPacket::Answer &answer, quint32 fallbackFrom);
};
