#pragma once
#include "probes/hopsearch.h"

#include <QStringList>

#include <functional>

class EchoService;

// The trace loop of Count Hops and of the matcher's Ping run: probes with a
// time-to-live of 1, 2, 3 ... until the destination answers, the bound is passed
// or the caller stops it, yielding after every probe so that ticks, Cancel and
// other clicks run. Its one-second ticker runs for the whole trace.
namespace HopTrace {
constexpr int kProbeTimeoutMs = 2700;   // each probe waits this long for its answer
constexpr int kCountHopsTicks = 5;      // Count Hops steps over silent hops after 5 ticks
constexpr int kPingRunTicks = 15;       // the matcher's Ping run after 15

struct Hooks {
    std::function<void()> beforeProbe;                 // e.g. the matcher's status text
    std::function<void(const QStringList &)> lines;    // the lines each probe makes
    std::function<qint64()> bound;                     // read after every probe
    std::function<bool()> stop;                        // Cancel, or the program ending
};

// Runs one trace to `destination`; the finished search tells the hop count.
HopSearch run(EchoService &echo, qint32 destination, int tickLimit, const Hooks &hooks);
}
