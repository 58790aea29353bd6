#pragma once
#include "engine/echobatch.h"
#include "probes/hoppacing.h"

#include <QElapsedTimer>
#include <QList>
#include <QObject>
#include <QTimer>

#include <memory>
#include <optional>
#include <vector>

// The hop counts of many servers at once, on the event loop: every server's
// echoes with time-to-live 1, 2, 3 ... are in flight together, paced by a
// HopPacer, over one EchoBatch. A server's own echo reply ends its search; the
// routers' answers are kept for the trace lines.
//
// Usage:
//     HopFinder finder;
//     connect(&finder, &HopFinder::finished, ...);
//     finder.start({a, b, c});              // address values, as the table holds them
//     ... event loop runs ...
//     for (const HopResult &r : finder.results()) if (r.done) ... r.hops, r.route ...

struct HopAnswer {
    int hop = 0;             // the probe's time-to-live
    qint32 address = 0;      // who answered: a router, or the server itself
    quint32 roundTripMs = 0;
};

struct HopResult {
    qint32 destination = 0;
    bool done = false;        // false: cancelled before its search ended
    int hops = 0;             // the smallest time-to-live the server answered; 0 when none
    QList<HopAnswer> route;   // the answered probes in hop order, up to the server's own answer
};

class HopFinder : public QObject {
    Q_OBJECT
public:
    explicit HopFinder(QObject *parent = nullptr);
    ~HopFinder() override;

    void setPacing(const HopPacing &pacing) { pacing_ = pacing; }
    // The echo transport; null (the default) means the Linux ICMP socket. Not owned.
    void setEchoBatch(EchoBatch *batch);

    // One result per destination, in the order given; a destination given twice is
    // probed once. A running search is cancelled first.
    void start(const QList<qint32> &destinations);
    // Stops at once; unfinished servers keep done = false. finished(true) follows.
    void cancel();
    bool isRunning() const { return running_; }
    const QList<HopResult> &results() const { return results_; }
    // Echo requests sent by the last start(), for the benchmark and the tests.
    int probesSent() const { return probesSent_; }

signals:
    void progress(int done, int total);
    void finished(bool cancelled);

private:
    void pump();
    void answered(int token, int result, const EchoReply &reply);
    void serverDone(int server);
    void finish(bool cancelled);

    HopPacing pacing_;
    EchoBatch *echo_ = nullptr;
    std::unique_ptr<EchoBatch> ownEcho_;
    std::unique_ptr<HopPacer> pacer_;
    QList<qint32> unique_;                            // the destinations probed
    QList<int> slotOf_;                               // result index -> unique index
    std::vector<std::vector<std::optional<HopAnswer>>> answers_;  // by server, by time-to-live
    QList<HopResult> results_;
    int finishedServers_ = 0;
    int probesSent_ = 0;
    bool running_ = false;
    QTimer pumpTimer_;
    QElapsedTimer clock_;
};
