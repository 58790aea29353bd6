#pragma once

// How long the probes wait, each defined once. Waits counted in ticks run on
// the one-second timers of the windows (Ticker), which tests speed up.
namespace Timeouts {
constexpr int kTickMs = 1000;       // one tick of the windows' timers
constexpr long long kNsPerMs = 1000000;  // the engine's clocks count nanoseconds
constexpr int kPingEchoMs = 200;    // one echo of a server's ping
constexpr int kHopEchoMs = 2700;    // one echo of a hop count probe
constexpr int kQueryTicks = 2;      // a game query's wait for its answer
constexpr int kLauncherQueryTicks = 5;  // the launcher bar's status query
// Ticks of a whole trace after which every probe counts a silent hop.
constexpr int kCountHopsTicks = 5;
constexpr int kPingRunHopTicks = 15;  // the matcher's Ping run
// The same wait in milliseconds, for those that listen without the timers.
constexpr int kQueryMs = kQueryTicks * kTickMs;
// The probe engine listens this long for each query's answer, sending it this many
// times (evenly spaced) meanwhile: long enough for the slowest answer the
// two-tick wait is sure to hear plus the demo's slowest server (1.3 s).
constexpr int kEngineQueryMs = 1500;
constexpr int kEngineQueryTries = 3;
}
