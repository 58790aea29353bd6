// Fast Refresh on a loopback lab: wall time and CPU time of one Refresh List run by
// the probe engine over N simulated servers (one in five silent), against the
// serial refresh of the first 100 of them and against qstat on all N. With
// --players P every server has P players: the refresh is run again asking every
// server for them (as the player search needs), and typing into the search box is
// timed key by key.
//   fastrefresh_bench [--servers N] [--serial K] [--no-qstat] [--players P] [--no-silent]
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
#include <QKeyEvent>
#include <QLineEdit>
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
int serve(int servers, int sample, int players, bool silentToo)
{
    Demo::Config all, some;
    all.httpPort = some.httpPort = 0;
    for (int i = 0; i < servers; ++i) {
        Demo::Server s;
        s.address = labAddress(i);
        s.protocol = silentToo && i % 5 == 4 ? QStringLiteral("silent") : QStringLiteral("34");
        s.hostName = QStringLiteral("Lab %1").arg(i);
        s.map = QStringLiteral("q2dm1");
        s.maxClients = std::max(players, 8);
        for (int p = 0; p < players; ++p)
            s.players.append({QStringLiteral("[C%1]Player%2").arg(p).arg(i * players + p), p, 20 + p});
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

// Fast Refresh with every server asked for its players (the Find window open),
// then one key at a time typed into the player search: the time from the key
// press to the list laid out and painted with only the matching rows.
void searchPlayers(MainWindow &window, const QString &url, const Run &plain)
{
    window.findChild<QAction *>(QStringLiteral("findAction_"))->trigger();
    const Run asked = refresh(window, url, true);
    std::printf("fast refresh, players asked  %.2f s wall (%+.2f s), %.3f s CPU\n", asked.wall, asked.wall - plain.wall,
                asked.cpu);
    auto *search = window.findChild<QLineEdit *>(QStringLiteral("playerSearchEdit_"));
    auto *list = window.findChild<ItemList *>(QStringLiteral("serverList_"));
    const auto shown = [list] {
        int n = 0;
        for (int row = 0; row < list->count(); ++row)
            n += list->item(row)->isHidden() ? 0 : 1;
        return n;
    };
    double worst = 0, total = 0;
    const QString typed = QStringLiteral("player2345");
    for (const QChar c : typed) {
        QElapsedTimer clock;
        clock.start();
        QKeyEvent press(QEvent::KeyPress, 0, Qt::NoModifier, QString(c));
        QApplication::sendEvent(search, &press);
        QApplication::processEvents();
        list->viewport()->repaint();
        const double ms = static_cast<double>(clock.nsecsElapsed()) / 1e6;
        worst = std::max(worst, ms);
        total += ms;
        std::printf("  typed \"%s\"  %5.1f ms, rows shown %d of %d\n", qPrintable(search->text()), ms, shown(),
                    static_cast<int>(list->count()));
    }
    std::printf("player search  %.1f ms a key on average, %.1f ms at most\n", total / static_cast<double>(typed.size()),
                worst);
    search->clear();
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
    const int players = args.contains(QStringLiteral("--players")) ? value(QStringLiteral("--players"), 8) : 0;
    if (args.contains(QStringLiteral("--serve"))) {
        QCoreApplication app(argc, argv);
        return serve(servers, std::max(sample, 1), players, !args.contains(QStringLiteral("--no-silent")));
    }

    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    QProcess lab;
    QStringList labArguments{QStringLiteral("--serve"), QStringLiteral("--servers"), QString::number(servers),
                             QStringLiteral("--serial"), QString::number(std::max(sample, 1))};
    if (players > 0)
        labArguments << QStringLiteral("--players") << QString::number(players);
    if (args.contains(QStringLiteral("--no-silent")))
        labArguments << QStringLiteral("--no-silent");
    lab.start(QCoreApplication::applicationFilePath(), labArguments);
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
    const int silent = args.contains(QStringLiteral("--no-silent")) ? 0 : servers / 5;
    const int expected = servers - silent;
    std::printf("lab                 %d servers on loopback, %d silent, %d players each\n", servers, silent, players);
    std::printf("echo service        %s\n", realIcmp ? qPrintable(QStringLiteral("ICMP, ") + icmp.socketKind() + QStringLiteral(" socket"))
                                                     : "none here: instant stand-in for the serial run, game-query round trips for the engine");
    std::printf("fast refresh        %.2f s wall, %.3f s CPU\n", fast.wall, fast.cpu);
    std::printf("  rows              %lld, answering %d of %d, at 0 ms %d\n", static_cast<long long>(fast.rows.size()), answering, expected, zeroPing);

    if (players > 0)
        searchPlayers(window, urls[0], fast);

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
