#pragma once
#include "probes/timeouts.h"

#include <QtGlobal>

#include <deque>
#include <optional>
#include <vector>

// The fast hop count of many servers: echo requests with a time-to-live of 1 to
// maxTtl go to every server at once, lowest time-to-live first, and the hop count
// of a server is the smallest time-to-live whose echo the server itself answered.
//
// Pacing. A probe with time-to-live t runs out at whichever router sits t hops
// away, and only a probe that runs out there costs that router an answer. Which
// router that is stays unknown until it answers, and near this machine it is the
// same router for every server; so the budget is kept per time-to-live: never
// more than `routerBudget` probes with one time-to-live in any second, which is
// never more than that at any one router. All probes together go out at `rate`
// a second, in bursts of at most 10 ms worth.
//
// A server's search ends once the server answered at time-to-live t and every
// probe below t has its outcome (a router's answer or its time-out): probes above
// t are not sent any more. A server that never answers ends when all its probes
// have their outcomes.
//
// The pacer keeps no clock: the caller passes the time in milliseconds.
struct HopPacing {
    static constexpr int MaxTtl = 30;
    int maxTtl = MaxTtl;       // 1..MaxTtl
    int rate = 1000;           // probes a second, all servers together
    int routerBudget = 100;    // probes a second with one time-to-live
    int timeoutMs = Timeouts::kHopEchoMs;  // one probe's wait for its answer
};

class HopPacer {
public:
    struct Probe {
        int server = 0;
        int ttl = 0;
    };
    HopPacer(int servers, const HopPacing &pacing, qint64 nowMs);

    // The next probe to send now, counted as sent; none when the budgets or the rate
    // allow none now, or nothing is left to send.
    std::optional<Probe> take(qint64 nowMs);
    // When take() may give the next probe (nowMs or later); -1 when nothing is left
    // to send (the searches wait for answers only).
    qint64 nextSendMs(qint64 nowMs);
    // The outcome of a probe sent: `reached` when the server itself answered it; a
    // router's answer and a time-out both settle it without reaching.
    void settle(int server, int ttl, bool reached);

    bool done(int server) const { return servers_[static_cast<size_t>(server)].done; }
    bool allDone() const { return unfinished_ == 0; }
    // The smallest time-to-live the server answered; 0 when it answered none.
    int hops(int server) const { return servers_[static_cast<size_t>(server)].reachedAt; }
    const HopPacing &pacing() const { return pacing_; }

private:
    enum class State : quint8 { Unsent, Sent, Settled };
    struct Server {
        std::vector<State> probes;  // by time-to-live; [0] unused
        int reachedAt = 0;
        bool done = false;
    };
    bool wanted(int server, int ttl) const;
    void checkDone(int server);
    void refill(qint64 nowMs);
    void forgetOldSends(int ttl, qint64 nowMs);

    HopPacing pacing_;
    std::vector<Server> servers_;
    std::vector<std::deque<int>> waiting_;     // by time-to-live: servers yet to get that probe
    std::vector<std::deque<qint64>> sentAt_;   // by time-to-live: sends of the last second
    int unfinished_ = 0;
    double tokens_ = 1;
    qint64 refilledMs_ = 0;
};
