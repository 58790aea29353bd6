// How long a list of many servers takes to arrive and be read: the list request
// players know, and the standard client's text and binary forms, from the demo
// network's web server on loopback. Prints one line per way, best of three.
#include "demonet/demonetwork.h"
#include "serverlist/httplist.h"
#include "serverlist/listsource.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QTextStream>

#include <algorithm>

namespace {
qint64 fetchMs(const QString &location, qsizetype *entries)
{
    ListSource source;
    QEventLoop loop;
    QObject::connect(&source, &ListSource::finished, &loop, &QEventLoop::quit);
    QElapsedTimer clock;
    clock.start();
    if (!source.start(location))
        return -1;
    loop.exec();
    *entries = source.entries().size();
    return source.outcome() == ListSource::Outcome::Listed ? clock.elapsed() : -1;
}
}

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    const int count = argc > 1 ? QByteArray(argv[1]).toInt() : 100000;
    Demo::Config config;
    config.httpPort = 0;
    for (int i = 0; i < count; ++i)  // list lines only: nothing is ever sent to them
        config.listLines << QStringLiteral("127.%1.%2.%3:27910").arg(i >> 16 & 0xFF).arg(i >> 8 & 0xFF).arg(i & 0xFF);
    Demo::Network network;
    QString error;
    if (!network.start(config, &error, true)) {
        QTextStream(stderr) << error << "\n";
        return 1;
    }
    QTextStream out(stdout);
    const std::pair<const char *, QString> ways[] = {{"list request", network.listUrl()},
                                                     {"standard text", network.standardListUrl(false)},
                                                     {"standard binary", network.standardListUrl(true)}};
    for (const auto &[name, location] : ways) {
        qint64 best = -1;
        qsizetype entries = 0;
        for (int run = 0; run < 3; ++run) {
            const qint64 ms = fetchMs(location, &entries);
            best = best < 0 ? ms : std::min(best, ms);
        }
        out << name << ": " << entries << " entries in " << best << " ms\n";
    }
    QByteArray body;
    for (const QString &line : config.listLines)
        body += line.toLatin1() + '\n';
    QElapsedTimer clock;
    clock.start();
    const qsizetype decoded = HttpList::decode(body).entries.size();
    out << "decode text alone: " << decoded << " entries, " << body.size() << " bytes in " << clock.elapsed() << " ms\n";
    QByteArray records;
    for (int i = 0; i < count; ++i)
        records += QByteArray("\x7f", 1) + char(i >> 16) + char(i >> 8) + char(i) + "\x6d\x06";
    clock.restart();
    const qsizetype binary = HttpList::decode(records).entries.size();
    out << "decode binary alone: " << binary << " entries, " << records.size() << " bytes in " << clock.elapsed() << " ms\n";
    return 0;
}
