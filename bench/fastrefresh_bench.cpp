// Fast Refresh on a loopback lab: wall time and CPU time of one Refresh List run by
// the probe engine over N simulated servers (one in five silent), against the
// serial refresh of the first 100 of them and against qstat on all N.
//   fastrefresh_bench [--servers N] [--serial K] [--no-qstat]
// The simulated servers run in a child process (this program with --serve), so
// the CPU time reported is the browser's own. Everything stays on 127.0.0.0/8.
#include "demonet/demonetwork.h"
#include "probes/icmpecho.h"
#include "shell/itemlist.h"
#include "shell/mainwindow.h"
#include "shell/seams.h"

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QPushButton>
#include <QSet>
#include <QStandardPaths>
#include <QTemporaryFile>

#include <cstdio>
#include <sys/resource.h>

namespace {
double cpuSeconds(int who)
{
    rusage usage{};
    getrusage(who, &usage);
    const auto seconds = [](const timeval &t) { return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_usec) / 1e6; };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

QHostAddress labAddress(int i) { return QHostAddress(QStringLiteral("127.0.%1.%2").arg(60 + i / 200).arg(1 + i % 200)); }

// The lab: servers and the web list that names them all; a second list names the
// first `sample` only.
int serve(int servers, int sample)
{
    Demo::Config all, some;
    all.httpPort = some.httpPort = 0;
    for (int i = 0; i < servers; ++i) {
        Demo::Server s;
        s.address = labAddress(i);
        s.protocol = i % 5 == 4 ? QStringLiteral("silent") : QStringLiteral("34");
        s.hostName = QStringLiteral("Lab %1").arg(i);
        s.map = QStringLiteral("q2dm1");
        all.servers << s;
        all.listLines << s.address.toString();
    }
    some.listLines = all.listLines.mid(0, sample);
    Demo::Network network, sampleList;
    QString error;
    if (!network.start(all, &error, true) || !sampleList.start(some, &error, true)) {
        std::fprintf(stderr, "fastrefresh_bench: %s\n", qPrintable(error));
        return 1;
    }
    std::printf("%s %s\n", qPrintable(network.listUrl()), qPrintable(sampleList.listUrl()));
    std::fflush(stdout);
    return QCoreApplication::exec();
}

// Answers every echo at once in 0 ms, for machines where ICMP is not allowed.
struct InstantEcho : EchoService {
    int sendEcho(qint32 destination, const QByteArray &, int, int, EchoReply &reply) override
    {
        reply = EchoReply{};
        reply.Address = destination;
        return destination != 0;
    }
};

struct Run {
    double wall = 0, cpu = 0;
    QStringList rows;
};

Run refresh(MainWindow &window, const QString &url, bool fast)
{
    window.findChild<QComboBox *>(QStringLiteral("listLocationBox_"))->setEditText(url);
    auto *fastRefresh = window.findChild<QAction *>(QStringLiteral("fastRefreshAction_"));
    if (fastRefresh->isChecked() != fast)
        fastRefresh->trigger();
    const double cpuBefore = cpuSeconds(RUSAGE_SELF);
    QElapsedTimer wall;
    wall.start();
    window.findChild<QPushButton *>(QStringLiteral("refreshButton_"))->click();
    return {static_cast<double>(wall.nsecsElapsed()) / 1e9, cpuSeconds(RUSAGE_SELF) - cpuBefore,
            window.findChild<ItemList *>(QStringLiteral("serverList_"))->texts()};
}

QString rowAddress(const QString &row) { return row.mid(6).section(u':', 0, 0).trimmed(); }
bool answered(const QString &row) { return !row.contains(QStringLiteral(" - No ")); }
}

int main(int argc, char *argv[])
{
    const QStringList args = [&] {
        QStringList a;
        for (int i = 0; i < argc; ++i)
            a << QString::fromLocal8Bit(argv[i]);
        return a;
    }();
    const auto value = [&](const QString &name, int fallback) {
        const qsizetype at = args.indexOf(name);
        return at > 0 && at + 1 < args.size() ? std::clamp(args[at + 1].toInt(), 1, 4000) : fallback;
    };
    const int servers = value(QStringLiteral("--servers"), 1000);
    const int sample = std::min(servers, args.contains(QStringLiteral("--no-serial")) ? 0 : value(QStringLiteral("--serial"), 100));
    if (args.contains(QStringLiteral("--serve"))) {
        QCoreApplication app(argc, argv);
        return serve(servers, std::max(sample, 1));
    }

    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    QProcess lab;
    lab.start(QCoreApplication::applicationFilePath(),
              {QStringLiteral("--serve"), QStringLiteral("--servers"), QString::number(servers), QStringLiteral("--serial"),
               QString::number(std::max(sample, 1))});
    if (!lab.waitForReadyRead(30000)) {
        std::fprintf(stderr, "fastrefresh_bench: the lab did not start\n%s", lab.readAllStandardError().constData());
        return 1;
    }
    const QStringList urls = QString::fromLatin1(lab.readLine()).trimmed().split(u' ');
    if (urls.size() != 2)
        return 1;

    LinuxIcmpEcho icmp;
    InstantEcho instant;
    const bool realIcmp = icmp.unavailableReason().isEmpty();
    if (!realIcmp)
        Seams::setEcho(&instant);  // the serial refresh would stop at the echo service's warning

    MainWindow window;
    window.show();
    const Run fast = refresh(window, urls[0], true);
    int answering = 0, zeroPing = 0;
    for (const QString &row : fast.rows) {
        if (!answered(row))
            continue;
        ++answering;
        zeroPing += row.startsWith(QStringLiteral("000 "));
    }
    const int expected = servers - servers / 5;
    std::printf("lab                 %d servers on loopback, %d silent\n", servers, servers / 5);
    std::printf("echo service        %s\n", realIcmp ? qPrintable(QStringLiteral("ICMP, ") + icmp.socketKind() + QStringLiteral(" socket"))
                                                     : "none here: instant stand-in for the serial run, game-query round trips for the engine");
    std::printf("fast refresh        %.2f s wall, %.3f s CPU\n", fast.wall, fast.cpu);
    std::printf("  rows              %lld, answering %d of %d, at 0 ms %d\n", static_cast<long long>(fast.rows.size()), answering, expected, zeroPing);

    if (sample > 0) {
        const Run serial = refresh(window, urls[1], false);
        QSet<QString> sampled;
        for (int i = 0; i < sample; ++i)
            sampled.insert(labAddress(i).toString());
        QStringList fastSample;
        for (const QString &row : fast.rows)
            if (sampled.contains(rowAddress(row)))
                fastSample << row;
        std::printf("serial refresh      %d servers: %.2f s wall, %.3f s CPU; rows equal to the engine's: %s\n", sample, serial.wall,
                    serial.cpu, fastSample == serial.rows ? "yes" : "NO");
        if (fastSample != serial.rows)
            for (qsizetype i = 0; i < std::max(fastSample.size(), serial.rows.size()); ++i)
                if (fastSample.value(i) != serial.rows.value(i))
                    std::printf("  engine: %s\n  serial: %s\n", qPrintable(fastSample.value(i)), qPrintable(serial.rows.value(i)));
    }

    const QString qstat = QStandardPaths::findExecutable(QStringLiteral("quakestat"));
    if (args.contains(QStringLiteral("--no-qstat"))) {
    } else if (qstat.isEmpty()) {
        std::printf("qstat               not installed (apt-get install qstat)\n");
    } else {
        QTemporaryFile list;
        list.open();
        for (int i = 0; i < servers; ++i)
            list.write("Q2S " + labAddress(i).toString().toLatin1() + ":27910\n");
        list.flush();
        QProcess run;
        const double cpuBefore = cpuSeconds(RUSAGE_CHILDREN);
        QElapsedTimer wall;
        wall.start();
        run.start(qstat, {QStringLiteral("-f"), list.fileName(), QStringLiteral("-nh")});
        run.waitForFinished(300000);
        const double seconds = static_cast<double>(wall.nsecsElapsed()) / 1e9;
        const double cpu = cpuSeconds(RUSAGE_CHILDREN) - cpuBefore;
        int up = 0;
        for (const QByteArray &line : run.readAllStandardOutput().split('\n'))
            up += !line.isEmpty() && !line.contains("no response") && !line.contains("DOWN") && !line.contains("TIMEOUT");
        std::printf("qstat (defaults)    %.2f s wall, %.3f s CPU, answering %d\n", seconds, cpu, up);
    }
    lab.kill();
    lab.waitForFinished();
    return 0;
}
