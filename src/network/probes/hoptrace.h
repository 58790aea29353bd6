#pragma once
#include "probes/hopsearch.h"

#include <QStringList>

#include <functional>

class EchoService;

// The trace loop of Count Hops and of the matcher's Ping run: probes with a
// time-to-live of 1, 2, 3 ... until the destination answers, the bound is passed
// or the caller stops it (each probe waits Timeouts::kHopEchoMs), yielding after every probe so that ticks, Cancel and
// other clicks run. Its one-second ticker runs for the whole trace.
namespace HopTrace {
struct Hooks {
    std::function<void()> beforeProbe;                 // e.g. the matcher's status text
    std::function<void(const QStringList &)> lines;    // the lines each probe makes
    std::function<qint64()> bound;                     // read after every probe
    std::function<bool()> stop;                        // Cancel, or the program ending
};

// Runs one trace to `destination` (tickLimit: Timeouts::kCountHopsTicks or
// kPingRunHopTicks); the finished search tells the hop count.
HopSearch run(EchoService &echo, qint32 destination, int tickLimit, const Hooks &hooks);
}
