#include "probes/hoppacing.h"

#include <algorithm>
#include <cmath>

namespace {
constexpr qint64 kSecondMs = 1000;
}

HopPacer::HopPacer(int servers, const HopPacing &pacing, qint64 nowMs) : pacing_(pacing), refilledMs_(nowMs)
{
    pacing_.maxTtl = std::clamp(pacing_.maxTtl, 1, HopPacing::MaxTtl);
    pacing_.rate = std::max(pacing_.rate, 1);
    pacing_.routerBudget = std::max(pacing_.routerBudget, 1);
    pacing_.timeoutMs = std::max(pacing_.timeoutMs, 1);
    servers = std::max(servers, 0);
    servers_.assign(static_cast<size_t>(servers), Server{});
    for (Server &s : servers_)
        s.probes.assign(static_cast<size_t>(pacing_.maxTtl) + 1, State::Unsent);
    waiting_.resize(static_cast<size_t>(pacing_.maxTtl) + 1);
    sentAt_.resize(static_cast<size_t>(pacing_.maxTtl) + 1);
    for (int t = 1; t <= pacing_.maxTtl; ++t)
        for (int s = 0; s < servers; ++s)
            waiting_[static_cast<size_t>(t)].push_back(s);
    unfinished_ = servers;
}

// A probe still worth sending: the server's search goes on and has not yet been
// answered at or below this time-to-live.
bool HopPacer::wanted(int server, int ttl) const
{
    const Server &s = servers_[static_cast<size_t>(server)];
    return !s.done && (s.reachedAt == 0 || ttl < s.reachedAt)
           && s.probes[static_cast<size_t>(ttl)] == State::Unsent;
}

void HopPacer::refill(qint64 nowMs)
{
    const double burst = std::max(1.0, pacing_.rate / 100.0);
    tokens_ = std::min(burst, tokens_ + static_cast<double>(nowMs - refilledMs_) * pacing_.rate / kSecondMs);
    refilledMs_ = std::max(refilledMs_, nowMs);
}

void HopPacer::forgetOldSends(int ttl, qint64 nowMs)
{
    std::deque<qint64> &sent = sentAt_[static_cast<size_t>(ttl)];
    while (!sent.empty() && sent.front() <= nowMs - kSecondMs)
        sent.pop_front();
}

std::optional<HopPacer::Probe> HopPacer::take(qint64 nowMs)
{
    refill(nowMs);
    if (tokens_ < 1)
        return std::nullopt;
    for (int t = 1; t <= pacing_.maxTtl; ++t) {
        forgetOldSends(t, nowMs);
        std::deque<int> &waiting = waiting_[static_cast<size_t>(t)];
        if (static_cast<int>(sentAt_[static_cast<size_t>(t)].size()) >= pacing_.routerBudget)
            continue;
        while (!waiting.empty() && !wanted(waiting.front(), t))
            waiting.pop_front();
        if (waiting.empty())
            continue;
        const int server = waiting.front();
        waiting.pop_front();
        servers_[static_cast<size_t>(server)].probes[static_cast<size_t>(t)] = State::Sent;
        sentAt_[static_cast<size_t>(t)].push_back(nowMs);
        tokens_ -= 1;
        return Probe{server, t};
    }
    return std::nullopt;
}

qint64 HopPacer::nextSendMs(qint64 nowMs)
{
    qint64 next = -1;
    for (int t = 1; t <= pacing_.maxTtl; ++t) {
        std::deque<int> &waiting = waiting_[static_cast<size_t>(t)];
        while (!waiting.empty() && !wanted(waiting.front(), t))
            waiting.pop_front();
        if (waiting.empty())
            continue;
        forgetOldSends(t, nowMs);
        const std::deque<qint64> &sent = sentAt_[static_cast<size_t>(t)];
        const qint64 at = static_cast<int>(sent.size()) < pacing_.routerBudget ? nowMs : sent.front() + kSecondMs;
        next = next < 0 ? at : std::min(next, at);
    }
    if (next < 0)
        return -1;
    refill(nowMs);
    if (tokens_ < 1)
        next = std::max(next, nowMs + static_cast<qint64>(std::ceil((1 - tokens_) * kSecondMs / pacing_.rate)));
    return next;
}

void HopPacer::settle(int server, int ttl, bool reached)
{
    if (server < 0 || static_cast<size_t>(server) >= servers_.size() || ttl < 1 || ttl > pacing_.maxTtl)
        return;
    Server &s = servers_[static_cast<size_t>(server)];
    if (s.done || s.probes[static_cast<size_t>(ttl)] != State::Sent)
        return;
    s.probes[static_cast<size_t>(ttl)] = State::Settled;
    if (reached && (s.reachedAt == 0 || ttl < s.reachedAt))
        s.reachedAt = ttl;
    checkDone(server);
}

void HopPacer::checkDone(int server)
{
    Server &s = servers_[static_cast<size_t>(server)];
    const int last = s.reachedAt > 0 ? s.reachedAt - 1 : pacing_.maxTtl;
    for (int t = 1; t <= last; ++t)
        if (s.probes[static_cast<size_t>(t)] != State::Settled)
            return;
    s.done = true;
    --unfinished_;
}
