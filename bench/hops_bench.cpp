// Count Hops over a routed lab: the hop finder (Count Hops with Fast Refresh on) on
// N servers three hops away behind two routers, the first of which rate-limits its
// Time Exceeded answers, against the one-at-a-time trace (Count Hops as without
// Fast Refresh) on K of them; then both on the server behind a router that never
// answers.
//   hops_bench [--servers N] [--serial K]      (N 1..200, default 100; K default 5)
// The lab is tests/probes/hoplab.sh, in network namespaces made here and removed at
// the end; it needs root. Everything stays inside those namespaces.
#include "engine/hopfinder.h"
#include "probes/address.h"
#include "probes/hoptrace.h"
#include "probes/icmpecho.h"
#include "probes/timeouts.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QProcess>

#include <algorithm>
#include <cstdio>
#include <fcntl.h>
#include <sched.h>
#include <unistd.h>

namespace {
// Runs hoplab.sh; its exit status (77: the lab cannot be made here, with the reason printed).
int lab(const QStringList &arguments)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::ForwardedChannels);
    process.start(QStringLiteral(PULSEBOX_HOPLAB), arguments);
    process.waitForFinished(60000);
    return process.exitStatus() == QProcess::NormalExit ? process.exitCode() : 1;
}

bool enterNamespace(const QString &name)
{
    const int fd = ::open(qPrintable(QStringLiteral("/run/netns/") + name), O_RDONLY | O_CLOEXEC);
    const bool entered = fd >= 0 && ::setns(fd, CLONE_NEWNET) == 0;
    if (fd >= 0)
        ::close(fd);
    return entered;
}

qint32 server(int i) { return DottedToAddress(QStringLiteral("198.18.3.%1").arg(i + 2)); }
}

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    int servers = 100, serial = 5;
    const QStringList args = app.arguments();
    for (int i = 1; i + 1 < args.size(); i += 2) {
        if (args[i] == QStringLiteral("--servers"))
            servers = std::clamp(args[i + 1].toInt(), 1, 200);
        else if (args[i] == QStringLiteral("--serial"))
            serial = std::clamp(args[i + 1].toInt(), 0, servers);
    }
    const QString tag = QStringLiteral("pbb%1").arg(QCoreApplication::applicationPid());
    const int made = lab({QStringLiteral("up"), tag, QString::number(servers)});
    if (made != 0) {
        lab({QStringLiteral("down"), tag});
        std::printf("hops_bench: no lab, nothing measured\n");
        return made == 77 ? 0 : 1;
    }
    if (!enterNamespace(tag + QStringLiteral("-c"))) {
        std::printf("hops_bench: cannot enter the lab's client namespace\n");
        lab({QStringLiteral("down"), tag});
        return 1;
    }

    QList<qint32> destinations;
    for (int i = 0; i < servers; ++i)
        destinations << server(i);
    HopFinder finder;
    QEventLoop loop;
    QObject::connect(&finder, &HopFinder::finished, &loop, &QEventLoop::quit);
    QElapsedTimer clock;
    clock.start();
    finder.start(destinations);
    if (finder.isRunning())
        loop.exec();
    const qint64 fastMs = clock.elapsed();
    int trueCounts = 0, lines = 0, firstHops = 0;
    for (const HopResult &r : finder.results()) {
        trueCounts += r.done && r.hops == 3;
        lines += static_cast<int>(r.route.size());
        firstHops += !r.route.isEmpty() && r.route.first().hop == 1;
    }
    std::printf("fast Count Hops, %d servers: %.2f s, %d with the true count 3, %d probes, %d trace lines "
                "(%d first hops: the first router rate-limits)\n",
                servers, fastMs / 1000.0, trueCounts, finder.probesSent(), lines, firstHops);

    if (serial > 0) {
        LinuxIcmpEcho echo;
        HopTrace::Hooks hooks;
        hooks.bound = [] { return qint64(90); };
        hooks.stop = [] { return false; };
        QStringList counts;
        clock.restart();
        for (int i = 0; i < serial; ++i)
            counts << QString::number(HopTrace::run(echo, server(i), Timeouts::kCountHopsTicks, hooks).hops());
        std::printf("one-at-a-time Count Hops, %d servers: %.1f s, counts %s\n", serial, clock.elapsed() / 1000.0,
                    qPrintable(counts.join(u' ')));
        // The server four hops away behind the router that never answers.
        const qint32 far = DottedToAddress(QStringLiteral("198.18.5.2"));
        clock.restart();
        const int farSerial = HopTrace::run(echo, far, Timeouts::kCountHopsTicks, hooks).hops();
        const qint64 farSerialMs = clock.elapsed();
        clock.restart();
        finder.start({far});
        if (finder.isRunning())
            loop.exec();
        std::printf("behind the silent router (4 hops): one-at-a-time %d in %.1f s, fast %d in %.1f s\n", farSerial,
                    farSerialMs / 1000.0, finder.results().value(0).hops, clock.elapsed() / 1000.0);
    }
    lab({QStringLiteral("down"), tag});
    return 0;
}
