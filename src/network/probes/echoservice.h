#pragma once
#include <QByteArray>
#include <QString>
#include <QtGlobal>

// What one echo call leaves behind, like the platform's echo reply record.
struct EchoReply {
    qint32 Address = 0;         // who answered: the destination, or a router (address value)
    quint32 Status = 0;         // EchoStatus; also set when the call returns 0
    quint32 RoundTripTime = 0;  // milliseconds
    QByteArray Data;            // echoed payload, at most 250 bytes
    int Ttl = -1;               // time-to-live left in the reply, when known
};

// The ICMP echo service. One request, one blocking wait of at most timeoutMs;
// the result is the number of replies stored in `reply` (0 or 1). A router's
// "time exceeded" and an "unreachable" answer count as one reply with their
// status and the answering router's address. Destination 0 (a failed look-up)
// fails at once with BadDestination. A time-to-live outside 1..255 is taken as
// the nearest of the two.
class EchoService {
public:
    virtual ~EchoService() = default;
    virtual int sendEcho(qint32 destination, const QByteArray &payload, int ttl, int timeoutMs,
                         EchoReply &reply) = 0;
    // Empty while echoes can be sent; otherwise why not and how to allow it.
    virtual QString unavailableReason() { return {}; }

    // unavailableReason() the first time it is not empty, then empty: the advice is
    // given once per run of the program, however many refreshes follow.
    QString adviceOnce()
    {
        if (adviceGiven_)
            return {};
        const QString reason = unavailableReason();
        adviceGiven_ = !reason.isEmpty();
        return reason;
    }

private:
    bool adviceGiven_ = false;
};
