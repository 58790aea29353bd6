#include "serverlist/listsource.h"
#include "shell/ticker.h"
#include "shell/wiretext.h"
#include "support/demoservers.h"
#include "support/listwebserver.h"

#include <QSignalSpy>
#include <QSslConfiguration>
#include <QSslSocket>
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
    // One start to its end, with only what this one reported.
    bool fetch(const QString &location)
    {
        statuses.clear();
        boxes.clear();
        counts.clear();
        return source.start(location) && waitForEnd();
    }
    ListSource &source;
    QStringList statuses, boxes;
    QList<int> counts;
};

// Servers 127.0.22.1 to .24 as a text list and as binary records, with two
// lines and two records that name no server.
const QStringList kStandardEntries = [] {
    QStringList entries;
    for (int i = 1; i <= 24; ++i)
        entries << QStringLiteral("127.0.22.%1:27910").arg(i);
    return entries;
}();

QByteArray standardText()
{
    QByteArray text = "127.0.22.1:27910\r\n\r\n  127.0.22.2:27910 \n";
    text += QByteArray("127.0.22.99\0:27910\n", 19) + QByteArray(1025, 'x') + '\n';  // a NUL, an overlong line
    for (int i = 3; i <= 24; ++i)
        text += "127.0.22." + QByteArray::number(i) + ":27910\n";
    return text;
}

QByteArray standardRecords()
{
    QByteArray records;
    for (int i = 1; i <= 24; ++i)
        records += QByteArray("\x7f\x00\x16", 3) + char(i) + "\x6d\x06";
    return records + QByteArray("\0\0\0\0\x6d\x06" "\x7f\0\x16\x63\0\0", 12);  // address 0, port 0
}

struct WebList {
    explicit WebList(const QByteArray &response)
    {
        network.setRawResponse(response);
        started = startDemo(network, {});
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
    void webListRequestEntriesAndCounts()
    {
        QByteArray response = "HTTP/1.0 200 OK\r\nContent-Type: text/plain\r\nX-Odd: \t\r\n\r\n"
                              "1.2.3.4:27910\r\n\r\n5.6.7.8\r\n  a\tb  \r\n";
        for (int i = 4; i < 25; ++i)
            response += "127.0.0." + QByteArray::number(i) + "\n";
        WebList web(response);
        QVERIFY(web.fetch());
        QCOMPARE(web.network.lastRequest,
                 "GET /quake2/gamespy.txt text/plain\r\n"
                 "Accept: image/gif, image/x-xbitmap, image/jpeg, image/pjpeg, application/vnd.ms-excel, "
                 "application/msword, application/vnd.ms-powerpoint, */*\r\n"
                 "Accept -Language: en -us\r\nAccept -Encoding: gzip , deflate\r\n"
                 "If-Modified-Since: Sat, 27 Feb 1999 20:08:07 GMT\r\nIf-None-Match: \"1459df-c693-36d850a7\"\r\n"
                 "User-Agent: Mozilla/4.0 (compatible; MSIE 4.01; Windows 98)\r\n"
                 "Host: " + web.host().toLatin1() + "\r\nConnection: \r\n\r\n\r");
        QCOMPARE(web.source.kind(), ListSource::Kind::WebList);
        QCOMPARE(web.source.outcome(), ListSource::Outcome::Listed);
        QCOMPARE(web.source.location(), QStringLiteral("http://%1/quake2/gamespy.txt").arg(web.host()));
        QCOMPARE(web.source.entries().size(), 25);
        QCOMPARE(web.source.entries().mid(0, 5), (QStringList{QStringLiteral("1.2.3.4:27910"), QString(),
                                                              QStringLiteral("5.6.7.8"), QStringLiteral("ab"), QStringLiteral("127.0.0.4")}));
        // Body lines only, as delivered: 14 + 1 + 8 + 8, then six of 9 and fifteen of 10.
        QCOMPARE(web.source.bytesReceived(), 235);
        QCOMPARE(web.run.counts, (QList<int>{10, 20}));  // every tenth line
        QCOMPARE(web.run.statuses, (QStringList{QStringLiteral("Connected..."), QStringLiteral("Ready to Send..."),
                                                QStringLiteral("Retreiving List....10"), QStringLiteral("Retreiving List....20"),
                                                QStringLiteral("Connection closed...235 bytes received.")}));
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

    // Lists from a standard web server: the list request not taken and asked
    // again, text and binary lists, a port and a query string, a redirect, a
    // chunked body; then every way such a list fails, each in one sentence.
    void standardWebServer()
    {
        ListWebServer web;
        if (const QString why = web.start(); !why.isEmpty())
            QSKIP(qPrintable(why));
        const QByteArray text = standardText(), records = standardRecords();
        QVERIFY(web.put(QStringLiteral("list.txt"), text) && web.put(QStringLiteral("list.bin"), records)
                && web.put(QStringLiteral("sub/index.html"), text) && web.put(QStringLiteral("bad.bin"), records.left(7))
                && web.put(QStringLiteral("zero.bin"), records.right(12)));
        ListSource source;
        Run run(source);
        const QString lines = QStringLiteral(" 2 lines left out: a NUL byte or longer than 1024 characters.");
        const QString zeros = QStringLiteral(" 2 records left out: address 0 or port 0.");
        const std::tuple<QString, qsizetype, QString> lists[] = {
            {QStringLiteral("list.txt"), text.size(), lines},  // Python refuses the list request: asked again
            {QStringLiteral("list.bin?raw=2&c=dk"), records.size(), zeros},
            {QStringLiteral("sub?raw=1"), text.size(), lines},  // redirected to sub/?raw=1
        };
        for (const auto &[path, bytes, skipped] : lists) {
            QVERIFY2(run.fetch(web.url(path)), qPrintable(path));
            QCOMPARE(source.kind(), ListSource::Kind::HttpList);
            QCOMPARE(source.outcome(), ListSource::Outcome::Listed);
            QCOMPARE(source.entries(), kStandardEntries);
            QCOMPARE(run.counts.last(), 20);
            QCOMPARE(run.statuses.last(), QStringLiteral("Connection closed...%1 bytes received.").arg(bytes) + skipped);
            QCOMPARE(run.statuses.mid(0, run.statuses.size() - 2),
                     path == QStringLiteral("list.txt")
                         ? (QStringList{QStringLiteral("Connected..."), QStringLiteral("Ready to Send..."),
                                        QStringLiteral("The list server did not take the list request: asking again as a web browser would...")})
                         : QStringList());
        }
        QVERIFY(run.fetch(web.url(QStringLiteral("chunked?raw=1"))));
        QCOMPARE(source.entries(), (QStringList{QStringLiteral("127.0.22.1:27910"), QStringLiteral("127.0.22.2")}));

        source.setHttpLimits({300, 1500, 100});
        const std::pair<const char *, const char *> failures[] = {
            {"fail?raw=1", "The list server answered 503 Service Unavailable."},
            {"none.txt?raw=1", "The list server answered 404 File not found."},
            {"loop?raw=1", "The list location redirects more than 5 times (in a loop?)."},
            {"mute?raw=1", "The list server sent nothing for 0.3 s."},
            {"trickle?raw=1", "The list server did not send the whole list within 1.5 s."},
            {"list.bin?raw=2", "The list is larger than 100 bytes: too large to be one."},
            {"bad.bin?raw=2", "The list is neither text nor whole 6-byte records: 7 bytes is no multiple of 6."},
            {"zero.bin?raw=2", "The list names no server. 2 records left out: address 0 or port 0."},
        };
        for (const auto &[path, problem] : failures) {
            QVERIFY2(run.fetch(web.url(QLatin1String(path))), path);
            QCOMPARE(source.outcome(), ListSource::Outcome::Failed);
            QCOMPARE(source.problem(), QLatin1String(problem));
            QCOMPARE(run.statuses.last(), QLatin1String(problem));
            QVERIFY(source.entries().isEmpty());
        }
    }

    // HTTPS: a certificate nobody vouches for fails in one sentence; the same
    // server's throw-away certificate, trusted for this test only, lists.
    void secureWebServer()
    {
        if (!QSslSocket::supportsSsl())
            QSKIP("Qt has no TLS backend here");
        ListWebServer web;
        if (const QString why = web.start(true); !why.isEmpty())
            QSKIP(qPrintable(why));
        QVERIFY(web.put(QStringLiteral("list.bin"), standardRecords()));
        ListSource source;
        Run run(source);
        QVERIFY(run.fetch(web.url(QStringLiteral("list.bin"))));
        QCOMPARE(source.outcome(), ListSource::Outcome::Failed);
        QVERIFY2(source.problem().startsWith(QStringLiteral("The secure connection to the list server failed: ")),
                 qPrintable(source.problem()));

        const QSslConfiguration before = QSslConfiguration::defaultConfiguration();
        QSslConfiguration trusting = before;
        QVERIFY(trusting.addCaCertificates(web.certificatePath()));
        QSslConfiguration::setDefaultConfiguration(trusting);
        const bool fetched = run.fetch(web.url(QStringLiteral("list.bin")));
        QSslConfiguration::setDefaultConfiguration(before);
        QVERIFY(fetched);
        QCOMPARE(source.outcome(), ListSource::Outcome::Listed);
        QCOMPARE(source.entries(), kStandardEntries);
    }

    void master()
    {
        Ticker::setTimeScale(0.2);
        Demo::MasterServer master({demoServer(QStringLiteral("127.0.20.1")), demoServer(QStringLiteral("127.0.20.2"), QStringLiteral("34"), {}, {}, 27911)});
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
        Ticker::setTimeScale(1.0);
    }

    void files()
    {
        QTemporaryDir dir;
        const QString list = dir.filePath(QStringLiteral("list.txt")), fav = dir.filePath(QStringLiteral("Pulsebox.fav")),
                      big = dir.filePath(QStringLiteral("big.txt"));
        for (const auto &[path, bytes] : {std::pair{list, QByteArray("\r\n 127.0.13.2 \r\n127.0.13.3:27911")},
                                          std::pair{fav, QByteArray("127.0.13.1\r\nmine\r\nQ2Host:27920 \r\n\r\n")}}) {
            QFile file(path);
            QVERIFY(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
        }
        QVERIFY(QFile(big).open(QIODevice::WriteOnly) && QFile::resize(big, 16 * 1024 * 1024 + 1));  // sparse: no disk used

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
