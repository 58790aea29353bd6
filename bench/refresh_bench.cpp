// Refreshes a simulated server population and reports what the refresh costs:
// wall time, the process's CPU time and CPU time per probed server.
//   refresh_bench                 the demo network's own population
//   refresh_bench --servers N     N servers, alternately answering and silent
#include "demonet/demonetwork.h"
#include "probes/icmpecho.h"
#include "shell/itemlist.h"
#include "shell/mainwindow.h"
#include "shell/seams.h"

#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QElapsedTimer>
#include <QPushButton>

#include <cstdio>
#include <sys/resource.h>

namespace {
double cpuSeconds()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    const auto seconds = [](const timeval &t) { return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_usec) / 1e6; };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

Demo::Config population(int servers)
{
    Demo::Config config;
    for (int i = 0; i < servers; ++i) {
        Demo::Server s;
        s.address = QHostAddress(QStringLiteral("127.0.%1.%2").arg(20 + i / 200).arg(1 + i % 200));
        s.protocol = i % 2 ? QStringLiteral("silent") : QStringLiteral("34");
        s.hostName = QStringLiteral("Bench %1").arg(i);
        s.map = QStringLiteral("q2dm1");
        config.servers << s;
        config.listLines << s.address.toString();
    }
    return config;
}

// Answers every echo at once in 20 ms, for machines where ICMP is not allowed.
struct InstantEcho : EchoService {
    int sendEcho(qint32 destination, const QByteArray &, int, int, EchoReply &reply) override
    {
        reply = EchoReply{};
        reply.Address = destination;
        reply.RoundTripTime = 20;
        return destination != 0;
    }
};
}

int main(int argc, char *argv[])
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    const QStringList args = app.arguments();
    const int count = args.size() > 2 && args[1] == QStringLiteral("--servers") ? args[2].toInt() : 0;
    Demo::Config config = count > 0 ? population(count) : Demo::Config::builtIn();
    config.httpPort = 0;
    Demo::Network network;
    QString error;
    if (!network.start(config, &error, true)) {
        std::fprintf(stderr, "refresh_bench: %s\n", qPrintable(error));
        return 1;
    }
    LinuxIcmpEcho icmp;
    InstantEcho instant;
    const bool realIcmp = icmp.unavailableReason().isEmpty();
    Seams::setEcho(realIcmp ? static_cast<EchoService *>(&icmp) : &instant);

    MainWindow window;
    window.findChild<QComboBox *>(QStringLiteral("listLocationBox_"))->setEditText(network.listUrl());
    window.show();
    const double cpuBefore = cpuSeconds();
    QElapsedTimer wall;
    wall.start();
    window.findChild<QPushButton *>(QStringLiteral("refreshButton_"))->click();
    const double seconds = static_cast<double>(wall.elapsed()) / 1000.0;
    const double cpu = cpuSeconds() - cpuBefore;
    const int probed = window.findChild<QLabel *>(QStringLiteral("listCountLabel_"))->text().toInt();

    std::printf("servers listed      %d (%d rows)\n", probed, window.findChild<ItemList *>(QStringLiteral("serverList_"))->count());
    std::printf("echo service        %s\n", realIcmp ? qPrintable(QStringLiteral("ICMP, ") + icmp.socketKind() + QStringLiteral(" socket")) : "instant stand-in (no ICMP here)");
    std::printf("wall time           %.2f s\n", seconds);
    std::printf("CPU time            %.3f s (%.2f%% of one core)\n", cpu, 100.0 * cpu / seconds);
    std::printf("CPU per server      %.2f ms\n", probed ? 1000.0 * cpu / probed : 0.0);
    return 0;
}
