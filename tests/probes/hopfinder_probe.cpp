// Counts the hops to the servers named, all at once, and prints per server
// "ADDRESS done=0|1 hops=N route=HOP:ADDRESS,..." then "probes=N ms=T".
// Run inside the network namespaces that hoplab.sh builds.
#include "engine/hopfinder.h"
#include "probes/address.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QStringList>
#include <QTimer>

#include <cstdio>

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    HopPacing pacing;
    int cancelAfterMs = -1;
    QList<qint32> destinations;
    QStringList args = app.arguments().mid(1);
    while (!args.isEmpty()) {
        const QString a = args.takeFirst();
        if (a == QStringLiteral("--budget") && !args.isEmpty())
            pacing.routerBudget = args.takeFirst().toInt();
        else if (a == QStringLiteral("--timeout") && !args.isEmpty())
            pacing.timeoutMs = args.takeFirst().toInt();
        else if (a == QStringLiteral("--cancel-after") && !args.isEmpty())
            cancelAfterMs = args.takeFirst().toInt();
        else
            destinations.append(DottedToAddress(a));
    }
    if (destinations.isEmpty()) {
        std::fprintf(stderr, "usage: hopfinder_probe [--budget N] [--timeout MS] [--cancel-after MS] ADDRESS...\n");
        return 2;
    }
    HopFinder finder;
    finder.setPacing(pacing);
    QObject::connect(&finder, &HopFinder::finished, &app, &QCoreApplication::quit);
    if (cancelAfterMs >= 0)
        QTimer::singleShot(cancelAfterMs, &finder, &HopFinder::cancel);
    QElapsedTimer clock;
    clock.start();
    finder.start(destinations);
    if (finder.isRunning())
        app.exec();
    for (const HopResult &r : finder.results()) {
        QStringList route;
        for (const HopAnswer &a : r.route)
            route << QStringLiteral("%1:%2").arg(a.hop).arg(AddressToDotted(a.address));
        std::printf("%s done=%d hops=%d route=%s\n", qPrintable(AddressToDotted(r.destination)), r.done ? 1 : 0, r.hops,
                    qPrintable(route.join(u',')));
    }
    std::printf("probes=%d ms=%lld\n", finder.probesSent(), static_cast<long long>(clock.elapsed()));
    return 0;
}
