#include "engine/hopfinder.h"

#include "serverlist/refreshdecisions.h"
#include "shell/wiretext.h"

#include <QHash>

#include <algorithm>

namespace {
// A probe's token: the server in the high bits, its time-to-live (below 256) in the low byte.
int tokenOf(int server, int ttl) { return server << 8 | ttl; }
}

HopFinder::HopFinder(QObject *parent) : QObject(parent)
{
    pumpTimer_.setSingleShot(true);
    pumpTimer_.setTimerType(Qt::PreciseTimer);
    connect(&pumpTimer_, &QTimer::timeout, this, &HopFinder::pump);
    clock_.start();
}

HopFinder::~HopFinder() = default;

void HopFinder::setEchoBatch(EchoBatch *batch)
{
    if (echo_)
        disconnect(echo_, nullptr, this, nullptr);
    echo_ = batch;
    if (echo_)
        connect(echo_, &EchoBatch::answered, this, &HopFinder::answered);
}

void HopFinder::start(const QList<qint32> &destinations)
{
    if (running_)
        cancel();
    if (!echo_) {
        ownEcho_ = std::make_unique<IcmpEchoBatch>();
        setEchoBatch(ownEcho_.get());
    }
    unique_.clear();
    slotOf_.clear();
    results_.clear();
    QHash<qint32, int> seen;
    for (qint32 destination : destinations) {
        auto it = seen.constFind(destination);
        if (it == seen.constEnd()) {
            it = seen.insert(destination, static_cast<int>(unique_.size()));
            unique_.append(destination);
        }
        slotOf_.append(*it);
        HopResult r;
        r.destination = destination;
        results_.append(r);
    }
    const int servers = static_cast<int>(unique_.size());
    pacer_ = std::make_unique<HopPacer>(servers, pacing_, clock_.elapsed());
    answers_.assign(static_cast<size_t>(servers),
                    std::vector<std::optional<HopAnswer>>(static_cast<size_t>(pacer_->pacing().maxTtl) + 1));
    finishedServers_ = probesSent_ = 0;
    running_ = true;
    if (pacer_->allDone())
        return finish(false);
    pump();
}

void HopFinder::cancel()
{
    if (running_)
        finish(true);
}

void HopFinder::pump()
{
    if (!running_)
        return;
    const QByteArray payload = WireText::toBytes(EchoRequestText);
    const qint64 now = clock_.elapsed();
    while (const auto probe = pacer_->take(now)) {
        ++probesSent_;
        echo_->send(tokenOf(probe->server, probe->ttl), unique_[probe->server], payload, probe->ttl,
                    pacer_->pacing().timeoutMs);
    }
    const qint64 next = pacer_->nextSendMs(now);
    if (next >= 0 && running_)
        pumpTimer_.start(static_cast<int>(std::max<qint64>(next - clock_.elapsed(), 1)));
}

void HopFinder::answered(int token, int result, const EchoReply &reply)
{
    const int server = token >> 8, ttl = token & 0xFF;
    if (!running_ || server < 0 || server >= unique_.size() || pacer_->done(server))
        return;
    const bool reached = result != 0 && reply.Address == unique_[server];
    if (result != 0 && ttl < static_cast<int>(answers_[static_cast<size_t>(server)].size()))
        answers_[static_cast<size_t>(server)][static_cast<size_t>(ttl)] = HopAnswer{ttl, reply.Address, reply.RoundTripTime};
    pacer_->settle(server, ttl, reached);
    if (pacer_->done(server))
        serverDone(server);
}

void HopFinder::serverDone(int server)
{
    HopResult done;
    done.destination = unique_[server];
    done.done = true;
    done.hops = pacer_->hops(server);
    const int last = done.hops > 0 ? done.hops : pacer_->pacing().maxTtl;
    for (int t = 1; t <= last; ++t)
        if (const auto &a = answers_[static_cast<size_t>(server)][static_cast<size_t>(t)])
            done.route.append(*a);
    for (qsizetype i = 0; i < results_.size(); ++i)
        if (slotOf_[i] == server)
            results_[i] = done;
    ++finishedServers_;
    emit progress(finishedServers_, static_cast<int>(unique_.size()));
    if (pacer_->allDone())
        finish(false);
}

void HopFinder::finish(bool cancelled)
{
    running_ = false;
    pumpTimer_.stop();
    if (echo_)
        echo_->clear();  // the probes above a server's answer are still out: forget them
    emit finished(cancelled);
}
