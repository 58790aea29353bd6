#pragma once
#include <QString>
#include <QStringList>
#include <QtGlobal>

// The hop search of one server: echo requests with a time-to-live of 1, 2, 3 ...
// until the destination itself answers. Count Hops and the matcher's Ping run both
// drive it; they differ only in the bound (Count Hops reads the TTL box after every probe,
// the Ping run passes 250), the tick limit (5 and 15) and whether they log.
//
// One trace:
//     HopSearch search(destination, tickLimit);     // tick counter cleared once, here
//     do {
//         int got = echo.sendEcho(destination, payload, search.ttl(), 2700, reply);
//         lines = search.record(got != 0, reply.Address, reply.RoundTripTime, ticks);
//         ... log the lines, yield (ticks and Cancel arrive here) ...
//     } while (search.goOn(bound, cancelRequested));
//     store search.hops();
//
// The search keeps no clock of its own: the caller passes the tick counter it keeps
// (ticks since the trace began, never cleared between hops). Once that counter has
// passed the tick limit, every later probe of the trace also moves the counter on,
// whether or not it was answered: a silent router is stepped over that way, and so
// is everything after it.
class HopSearch {
public:
    HopSearch(qint32 destination, int tickLimit);

    // The time-to-live byte of the next probe: 1 at first, then the counter. A counter
    // above 255 does not fit the byte, so the byte keeps its last value (255).
    int ttl() const { return ttl_; }

    // Feeds the outcome of one probe. `answered`: the echo call stored a reply;
    // `from`: who answered (a router, or the destination); `roundTripMs`: its time;
    // `ticks`: the caller's tick counter after the call. Returns the log lines the
    // probe makes, oldest first: "Trace Route: Hop N A.B.C.D time=T ms." for an
    // answer, then "Trace Route: Hop N *.*.*.* time=*** ms." when ticks > tickLimit.
    // `from` and `roundTripMs` are not read when `answered` is false: no reply means
    // the destination was not reached, whatever the reply record holds.
    QStringList record(bool answered, qint32 from, quint32 roundTripMs, qint64 ticks);

    // Whether to send another probe, with the bound read now (a bound below 1 allows
    // no second probe) and whether the user asked to stop. False once the
    // destination answered.
    bool goOn(qint64 bound, bool cancelRequested) const;

    // The log line of an answered probe: "Trace Route: Hop N A.B.C.D time=T ms.".
    static QString line(qint64 hop, qint32 from, quint32 roundTripMs);

    // The counter: 1 + answered probes + probes after which the tick rule fired.
    qint64 counter() const { return counter_; }
    // The hop count of the trace: counter - 1 (cut to what a record's field holds).
    qint32 hops() const;
    // The last probe got a reply (a router's or the destination's).
    bool lastAnswered() const { return lastAnswered_; }
    // The last probe was answered by the destination itself.
    bool reached() const { return reached_; }

private:
    qint32 destination_;
    int tickLimit_;
    qint64 counter_ = 1;
    int ttl_ = 1;
    bool lastAnswered_ = false;
    bool reached_ = false;
};
