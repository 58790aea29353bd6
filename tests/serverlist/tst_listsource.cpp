#include "demonet/demonetwork.h"
#include "serverlist/listsource.h"
#include "serverlist/urltext.h"
#include "shell/ticker.h"
#include "shell/wiretext.h"

#include <QSignalSpy>
#include <QTcpServer>
#include <QTemporaryDir>
#include <QTest>

namespace {
// One list obtained from start to end, with everything the source reported.
struct Run {
    explicit Run(ListSource &source) : source(source)
    {
        QObject::connect(&source, &ListSource::statusChanged, [this](const QString &t) { statuses << t; });
        QObject::connect(&source, &ListSource::countChanged, [this](int n) { counts << n; });
        QObject::connect(&source, &ListSource::connectFailed, [this](const QString &t) { boxes << t; });
    }
    // True when the source ended with exactly one finished (bounded).
    bool waitForEnd()
    {
        QSignalSpy finished(&source, &ListSource::finished);
        if (!finished.wait(20000))
            return false;
        QTest::qWait(20);  // a second finished would come right after
        return finished.size() == 1 && !source.isRunning();
    }
    ListSource &source;
    QStringList statuses, boxes;
    QList<int> counts;
};

struct WebList {
    explicit WebList(const QByteArray &response)
    {
        network.setRawResponse(response);
        Demo::Config config;
        config.httpPort = 0;
        QString error;
        started = network.start(config, &error, true);
    }
    bool fetch()
    {
        return started && source.start(QStringLiteral("  http://%1/quake2/gamespy.txt ").arg(host())) && run.waitForEnd();
    }
    QString host() const { return QStringLiteral("127.0.0.1:%1").arg(network.httpPort()); }
    Demo::Network network;
    bool started = false;
    ListSource source;
    Run run{source};
};
}

class TestListSource : public QObject {
    Q_OBJECT
private slots:
    void webListRequestAndEntries()
    {
        WebList web("HTTP/1.0 200 OK\r\nContent-Type: text/plain\r\nX-Odd: \t\r\n\r\n"
                    "1.2.3.4:27910\r\n\r\n5.6.7.8\r\n  a\tb  \r\n");
        QVERIFY(web.fetch());
        QCOMPARE(web.network.lastRequest, WireText::toBytes(ListRequestText(web.host(), QStringLiteral("quake2/gamespy.txt"))));
        QCOMPARE(web.source.kind(), ListSource::Kind::WebList);
        QCOMPARE(web.source.outcome(), ListSource::Outcome::Listed);
        QCOMPARE(web.source.location(), QStringLiteral("http://%1/quake2/gamespy.txt").arg(web.host()));
        QCOMPARE(web.source.entries(), (QStringList{QStringLiteral("1.2.3.4:27910"), QString(),
                                                    QStringLiteral("5.6.7.8"), QStringLiteral("ab")}));
        QCOMPARE(web.source.bytesReceived(), 14 + 1 + 8 + 8);  // body lines only, as delivered
        QCOMPARE(web.run.statuses, (QStringList{QStringLiteral("Connected..."), QStringLiteral("Ready to Send..."),
                                                QStringLiteral("Connection closed...31 bytes received.")}));
        QVERIFY(web.run.counts.isEmpty());  // fewer than ten lines
    }

    void webListCountsEveryTenthLine()
    {
        QByteArray body = "HTTP/1.0 200 OK\r\n\r\n";
        for (int i = 0; i < 25; ++i)
            body += "127.0.0." + QByteArray::number(i) + "\n";
        WebList web(body);
        QVERIFY(web.fetch());
        QCOMPARE(web.source.entries().size(), 25);
        QCOMPARE(web.run.counts, (QList<int>{10, 20}));
        QCOMPARE(web.run.statuses, (QStringList{QStringLiteral("Connected..."), QStringLiteral("Ready to Send..."),
                                                QStringLiteral("Retreiving List....10"), QStringLiteral("Retreiving List....20"),
                                                QStringLiteral("Connection closed...%1 bytes received.").arg(web.source.bytesReceived())}));
    }

    void webListOddResponses()
    {
        WebList headerOnly("HTTP/1.0 200 OK\r\nContent-Type: text/plain\r\n1.2.3.4\r\n5.6.7.8");
        QVERIFY(headerOnly.fetch());
        QCOMPARE(headerOnly.source.outcome(), ListSource::Outcome::Listed);  // the caller says "No sites"
        QCOMPARE(headerOnly.source.entries().size(), 0);
        QCOMPARE(headerOnly.run.statuses.last(), QStringLiteral("Connection closed...0 bytes received."));

        QByteArray body = "HTTP/1.0 200 OK\r\n\r\n";
        body += QByteArray(200 * 1024, 'y');                 // a line that never ends
        body += QByteArray("\n\x00\x01\xff\x80 tail", 11);  // control and high bytes, no final line feed
        WebList hostile(body);
        QVERIFY(hostile.fetch());
        QCOMPARE(hostile.source.entries().size(), 5);  // three whole pieces, the rest, the tail
        QCOMPARE(hostile.source.entries().last(), WireText::fromBytes("\xff\x80 tail"));
        QCOMPARE(hostile.source.bytesReceived(), 200 * 1024 + 10);
    }

    void webListWithoutPortAsksPort80()
    {
        QTcpServer web;
        if (!web.listen(QHostAddress(QStringLiteral("127.0.19.1")), 80))
            QSKIP("port 80 on 127.0.19.1 cannot be opened here (needs root or a low "
                  "net.ipv4.ip_unprivileged_port_start)");
        ListSource source;
        Run run(source);
        QVERIFY(source.start(QStringLiteral("http://127.0.19.1/quake2/gamespy.txt")));
        QTRY_VERIFY(web.hasPendingConnections());
        delete web.nextPendingConnection();  // closes: the fetch ends with an empty list
        QVERIFY(run.waitForEnd());
        QCOMPARE(source.outcome(), ListSource::Outcome::Listed);
    }

    void webListFailures()
    {
        quint16 closed = 0;
        {
            QTcpServer probe;
            QVERIFY(probe.listen(QHostAddress::LocalHost));
            closed = probe.serverPort();
        }
        ListSource source;
        Run run(source);
        // Refused: the status line says why, no box.
        QVERIFY(source.start(QStringLiteral("http://127.0.0.1:%1/quake2/gamespy.txt").arg(closed)));
        QVERIFY(run.waitForEnd());
        QCOMPARE(source.outcome(), ListSource::Outcome::Failed);
        QVERIFY(run.statuses.last().startsWith(QStringLiteral("dsSocket1 Error : 10061:")));
        QVERIFY(source.problem().startsWith(QStringLiteral("10061 ")));
        QVERIFY(run.boxes.isEmpty());

        // No host without "//": nothing starts.
        QVERIFY(!source.start(QStringLiteral("127.0.0.1/quake2/gamespy.txt")));
        QCOMPARE(source.outcome(), ListSource::Outcome::InvalidLocation);
        QVERIFY(!source.start(QStringLiteral("master://")));
        QCOMPARE(source.outcome(), ListSource::Outcome::InvalidLocation);

        // A port that is no number: the box text with the whole error number, then the end.
        QVERIFY(source.start(QStringLiteral("http://127.0.0.1:http/quake2/gamespy.txt")));
        QCOMPARE(run.boxes.size(), 1);
        QVERIFY(run.boxes[0].startsWith(QStringLiteral("Error connecting to host\r10049:")));
        QCOMPARE(source.outcome(), ListSource::Outcome::Failed);
        QVERIFY(run.waitForEnd());
    }

    // A fetch the server never answers ends only when cancelled, and then quietly.
    void cancelEndsAtOnce()
    {
        QTcpServer mute;
        QVERIFY(mute.listen(QHostAddress::LocalHost));
        ListSource source;
        QSignalSpy finished(&source, &ListSource::finished);
        QVERIFY(source.start(QStringLiteral("http://127.0.0.1:%1/").arg(mute.serverPort())));
        QTRY_VERIFY(mute.hasPendingConnections());
        QVERIFY(source.isRunning());
        source.cancel();
        QCOMPARE(source.outcome(), ListSource::Outcome::Cancelled);
        QTest::qWait(50);
        QCOMPARE(finished.size(), 0);
    }

    void master()
    {
        Ticker::setTimeScale(0.2);
        Demo::Server a, b;
        a.address = QHostAddress(QStringLiteral("127.0.20.1"));
        b.address = QHostAddress(QStringLiteral("127.0.20.2"));
        b.port = 27911;
        Demo::MasterServer master({a, b});
        QString error;
        QVERIFY2(master.start(0, &error), qPrintable(error));
        ListSource source;
        Run run(source);
        QVERIFY(source.start(QStringLiteral(" master://127.0.0.1:%1 ").arg(master.port())));
        QVERIFY(run.waitForEnd());
        QCOMPARE(source.kind(), ListSource::Kind::Master);
        QCOMPARE(source.location(), QStringLiteral("master://127.0.0.1:%1").arg(master.port()));
        QCOMPARE(source.entries(), (QStringList{QStringLiteral("127.0.20.1:27910"), QStringLiteral("127.0.20.2:27911")}));
        QCOMPARE(run.counts, QList<int>{2});
        QCOMPARE(run.statuses, QStringList{QStringLiteral("Master server answered: 2 servers, %1 bytes received.")
                                               .arg(source.bytesReceived())});
        QVERIFY(source.bytesReceived() > 0);

        master.silent = true;
        source.setMasterTimeout(500);
        QVERIFY(source.startMaster(QStringLiteral("127.0.0.1"), master.port()));
        QVERIFY(run.waitForEnd());
        QCOMPARE(source.outcome(), ListSource::Outcome::Failed);
        QVERIFY2(source.problem().contains(QStringLiteral("did not answer")), qPrintable(source.problem()));
        Ticker::setTimeScale(1.0);
    }

    void files()
    {
        QTemporaryDir dir;
        const QString list = dir.filePath(QStringLiteral("list.txt")), fav = dir.filePath(QStringLiteral("Pulsebox.fav")),
                      big = dir.filePath(QStringLiteral("big.txt"));
        QFile file(list);
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write("\r\n 127.0.13.2 \r\n127.0.13.3:27911") > 0);
        file.close();
        file.setFileName(fav);
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write("127.0.13.1\r\nmine\r\nQ2Host:27920 \r\n\r\n") > 0);
        file.close();
        file.setFileName(big);
        QVERIFY(file.open(QIODevice::WriteOnly) && file.resize(16 * 1024 * 1024 + 1));  // sparse: no disk used
        file.close();

        ListSource source;
        Run run(source);
        source.startFile(list);
        QVERIFY(run.waitForEnd());
        QCOMPARE(source.outcome(), ListSource::Outcome::Listed);
        QCOMPARE(source.entries(), (QStringList{QString(), QStringLiteral("127.0.13.2"), QStringLiteral("127.0.13.3:27911")}));
        source.startFavoritesFile(fav);
        QVERIFY(run.waitForEnd());
        QCOMPARE(source.kind(), ListSource::Kind::FavoritesFile);
        QCOMPARE(source.entries(), (QStringList{QStringLiteral("127.0.13.1"), QStringLiteral("Q2Host:27920 ")}));

        // Refused, never read without end: a file past the bound, a device that never ends, no file.
        const std::pair<QString, QString> refused[] = {
            {big, QStringLiteral("The list file %1 holds more than 16 MiB: too large to be one.").arg(big)},
            {QStringLiteral("/dev/zero"), QStringLiteral("The list file /dev/zero holds more than 16 MiB: too large to be one.")},
            {dir.filePath(QStringLiteral("none")), QStringLiteral("Cannot read the list file %1: ").arg(dir.filePath(QStringLiteral("none")))},
        };
        for (const auto &[path, problem] : refused) {
            source.startFile(path);
            QVERIFY(run.waitForEnd());
            QCOMPARE(source.outcome(), ListSource::Outcome::Failed);
            QVERIFY2(source.problem().startsWith(problem), qPrintable(source.problem()));
            QVERIFY(source.entries().isEmpty());
        }
        QVERIFY(run.statuses.isEmpty());
    }
};

QTEST_GUILESS_MAIN(TestListSource)
#include "tst_listsource.moc"
