// Refresh List and Fav Refresh through the refresh session, against the demo
// network's fakes on loopback and the scripted echo service: rows, log lines,
// status texts, count, progress, prompts and the server table.
#include "support/refreshharness.h"

#include "probes/address.h"
#include "shell/serverrow.h"

#include <QtTest>

namespace {
const ScriptedEcho::Outcome kTimedOut{0, 11010, 0};

QString row(const char *ping, bool fav, const char *address, const char *name, const char *version,
            const char *map, const char *players)
{
    return ServerRow::format(QByteArray(ping).toLongLong(), fav, QLatin1String(address), QLatin1String(name),
                             QLatin1String(version), QLatin1String(map), QLatin1String(players));
}

Demo::Config masterConfig()
{
    Demo::Config config;
    config.masterPort = 0;
    config.servers = {fakeServer("127.0.12.1", 27910, "34", "Master Listed One"),
                      fakeServer("127.0.12.2", 27910, "31", "Master Listed Two"),
                      fakeServer("127.0.12.3", 27910, "silent", "Quiet")};
    return config;
}
}

class TestRefreshSession : public QObject {
    Q_OBJECT
private slots:
    void fullRefreshEndToEnd()
    {
        RefreshHarness r({fakeServer("127.0.11.1", 27910, "34", "Fav One", 2), fakeServer("127.0.11.2", 27910, "31", "Fav Two"),
                          fakeServer("127.0.11.3", 27910, "34", "Plain Address", 3),
                          fakeServer("127.0.11.4", 27911, "33", "Old Three Seventeen"),
                          fakeServer("127.0.0.1", 27931, "34", "Named Host", 1), fakeServer("127.0.11.5", 27910, "silent", "Quiet"),
                          fakeServer("127.0.11.6", 27910, "34", "Too Far Away")},
                         {QStringLiteral("127.0.11.3"), QStringLiteral("127.0.11.4:27911"), QStringLiteral("LocalHost:27931"),
                          QString(), QStringLiteral("127.0.11.5"), QStringLiteral("127.0.11.6")});
        QVERIFY(r.started);
        r.request.favorites = {QStringLiteral("127.0.11.1:27910"), QStringLiteral("127.0.11.2")};
        r.env.echo.script = {{QStringLiteral("127.0.11.1"), {echoMs(45)}}, {QStringLiteral("127.0.11.2"), {echoMs(12)}},
                             {QStringLiteral("127.0.11.3"), {echoMs(100)}}, {QStringLiteral("127.0.11.4"), {echoMs(230)}},
                             {QStringLiteral("127.0.0.1"), {echoMs(7)}}, {QStringLiteral("127.0.11.5"), {echoMs(60)}},
                             {QStringLiteral("127.0.11.6"), {echoMs(231)}}};
        QList<QPair<int, int>> progressAtSend;  // the progress as each server is pinged
        r.env.echo.onSend = [&] {
            QVERIFY(r.session.isRunning());
            progressAtSend << r.progress.last();
        };

        const RefreshOutcome o = r.run();

        QCOMPARE(progressAtSend, (QList<QPair<int, int>>{{0, 0}, {0, 0}, {0, 0}, {1, 6}, {2, 6}, {3, 6}, {4, 6}, {5, 6}}));
        QCOMPARE(r.progress.last(), qMakePair(6, 6));
        QCOMPARE(o.rows, (QStringList{
            row("007", false, "127.0.0.1:27931", "Named Host", "3.19", "q2dm1", "1/ 8"),
            row("012", true, "127.0.11.2:27910", "Fav Two", "3.14", "q2dm1", "0/ 8"),
            row("045", true, "127.0.11.1:27910", "Fav One", "3.19", "q2dm1", "2/ 8"),
            row("060", false, "127.0.11.5:27910", "No", "3.14", "data", "returned"),
            row("100", false, "127.0.11.3:27910", "Plain Address", "3.19", "q2dm1", "3/ 8"),
            row("230", false, "127.0.11.4:27911", "Old Three Seventeen", "3.17", "q2dm1", "0/ 8")}));
        QCOMPARE(o.log, (QStringList{
            QStringLiteral("Reply from Fav 127.0.11.1: time =45ms. TTL=90"),
            QStringLiteral("Reply from Fav 127.0.11.2: time =12ms. TTL=90"),
            QStringLiteral("Reply from 127.0.11.3: time =100ms. TTL=90"),
            QStringLiteral("Reply from 127.0.11.4: time =230ms. TTL=90"),
            QStringLiteral("Looking up: localhost Please wait.."),
            QStringLiteral("Found: localhost as 127.0.0.1"),
            QStringLiteral("Reply from 127.0.0.1: time =7ms. TTL=90"),
            QStringLiteral("Reply from : Failed code = 11018"),
            QStringLiteral("Reply from 127.0.11.5: time =60ms. TTL=90"),
            QStringLiteral("Reply from 127.0.11.6: time =231ms. TTL=90")}));
        QCOMPARE(o.logSelection, 8);  // a ping over the limit is logged without selecting it
        QCOMPARE(o.count, QStringLiteral("6"));
        QCOMPARE(o.status, QStringLiteral("Done..."));
        QCOMPARE(o.address, QStringLiteral("127.0.11.6"));
        QVERIFY(!r.session.isRunning());

        const ServerTable &table = r.session.table();
        QCOMPARE(table.ServerCount, 6);
        QVERIFY(table.Servers[0] == ServerRec{});  // row data 0 names no server
        const auto record = [](const char *address, int port, int ping, const char *name, const char *version, bool fav) {
            ServerRec rec;
            rec.Address = DottedToAddress(QLatin1String(address));
            rec.Port = port;
            rec.PingMs = ping;
            rec.HostName = ServerRow::pad(QLatin1String(name), 50);
            rec.Version = QLatin1String(version);
            rec.IsFavorite = fav;
            return rec;
        };
        QVERIFY(table.Servers[1] == record("127.0.11.1", 27910, 45, "Fav One", "3.19 ", true));
        QVERIFY(table.Servers[4] == record("127.0.11.4", 27911, 230, "Old Three Seventeen", "3.17 ", false));
        QVERIFY(table.Servers[6] == record("127.0.11.5", 27910, 60, "No", "3.14 ", false));
        for (const auto &[text, index] : r.rows) {  // each row points at its own record
            const ServerRec &rec = table.Servers[static_cast<size_t>(index)];
            QVERIFY(text.contains(AddressToDotted(rec.Address) + u':' + QString::number(rec.Port)));
        }
        QVERIFY(r.env.prompts.shown.isEmpty());
        QCOMPARE(r.env.echo.sent.first(), (QPair<QString, int>(QStringLiteral("127.0.11.1"), 90)));
        // Every echo of a refresh waits 200 ms for its reply.
        QCOMPARE(r.env.echo.timeouts, QList<int>(r.env.echo.sent.size(), 200));
    }

    void favoritesOnlyWithRegularPing()
    {
        RefreshHarness r({fakeServer("127.0.12.1", 27910, "34", "A"), fakeServer("127.0.12.2", 27910, "34", "B"),
                          fakeServer("127.0.12.3", 27910, "34", "C")}, {QStringLiteral("127.0.12.9")});
        r.request.favorites = {QStringLiteral("127.0.12.1"), QStringLiteral("127.0.12.2"), QStringLiteral("127.0.12.3")};
        r.request.quickPing = false;
        r.env.echo.script = {{QStringLiteral("127.0.12.1"), {echoMs(40), echoMs(41), echoMs(43)}},
                             {QStringLiteral("127.0.12.2"), {echoMs(40), kTimedOut, echoMs(40)}},
                             {QStringLiteral("127.0.12.3"), {echoMs(41), echoMs(42), echoMs(42)}}};

        const RefreshOutcome o = r.run(true);

        QVERIFY(r.network.lastRequest.isEmpty());  // no connection at all
        QCOMPARE(o.count, QStringLiteral("0"));
        QCOMPARE(o.log, (QStringList{QStringLiteral("Reply from Fav 127.0.12.1: time =41ms. TTL=90"),
                                     QStringLiteral("Reply from 127.0.12.2: Failed code = 11010"),
                                     QStringLiteral("Reply from Fav 127.0.12.3: time =41ms. TTL=90")}));
        QCOMPARE(o.rows.size(), 2);
        QVERIFY(o.rows[0].startsWith(QStringLiteral("041 -*127.0.12.1:27910")));
        QCOMPARE(o.servers[1].PingMs, 41);
        QCOMPARE(o.servers[2].PingMs, 42);  // 41.67 rounds up in the record, the row shows 41
        QVERIFY(o.rows[1].startsWith(QStringLiteral("041 -*127.0.12.3:27910")));
        QCOMPARE(r.env.echo.sent.size(), 3 + 2 + 3);
        QCOMPARE(o.status, QStringLiteral("Done..."));

        // A time-to-live too short to reach the server: a router answers instead.
        r.request.ttlText = QStringLiteral("1");
        r.request.quickPing = true;
        r.env.echo.script = {{QStringLiteral("127.0.12.1"), {{1, 11013, 3}}}};
        r.env.echo.sent.clear();
        QCOMPARE(r.run(true).log.first(), QStringLiteral("Reply from 127.0.12.1: Failed code = 11013"));
        QCOMPARE(r.env.echo.sent.first().second, 1);
        QCOMPARE(r.env.echo.sent.size(), 3);  // Quick Ping: one echo each

        // The next Refresh List fetches again.
        r.run();
        QVERIFY(!r.network.lastRequest.isEmpty());
    }

    void cancelStopsAfterTheCurrentServer()
    {
        Demo::Config silent;
        for (int i = 1; i <= 10; ++i) {  // servers that never answer a query, and the list naming them
            const QByteArray address = "127.0.13." + QByteArray::number(i);
            silent.servers << fakeServer(address.constData(), 27910, "silent", "S");
            silent.listLines << QString::fromLatin1(address);
        }
        RefreshHarness r(silent);
        r.env.echo.onSend = [&] {
            if (r.env.echo.sent.size() == 3)
                QTimer::singleShot(0, &r.session, &RefreshSession::cancel);  // a click while the third is probed
        };
        const RefreshOutcome o = r.run();
        QCOMPARE(r.env.echo.sent.size(), 3);
        QCOMPARE(o.rows.size(), 3);
        QCOMPARE(o.status, QStringLiteral("Done..."));
        QCOMPARE(o.count, QStringLiteral("10"));
        QVERIFY(!r.session.cancelRequested());  // the next run starts afresh
    }

    // A list that cannot be had asks whether to go on with the favorites: No probes nothing, Yes the favorites.
    void listProblemsAskAboutFavorites_data()
    {
        // "closed": a port nothing listens on; "master": the demo master, silent; "missing": a path the
        // demo's standard endpoint does not serve; empty: the demo list, empty.
        QTest::addColumn<QString>("url");
        QTest::addColumn<QString>("message");
        QTest::addColumn<QString>("status");  // after No
        QTest::addColumn<bool>("yes");
        const QString invalid = QStringLiteral("Invalid URL supplied."), problem = QStringLiteral("problem getting list of server");
        QTest::addRow("invalid URL") << QStringLiteral("  ") << invalid << QStringLiteral("Retreiving List....") << false;
        QTest::addRow("master without host") << QStringLiteral("master://:27900") << invalid
                                             << QStringLiteral("Retreiving List....") << false;
        QTest::addRow("unreachable") << QStringLiteral("closed") << problem << QStringLiteral("Problem getting list from server") << false;
        QTest::addRow("silent master") << QStringLiteral("master") << problem
                                       << QStringLiteral("Problem getting list from server: The master server 127.0.0.1 did not answer.") << false;
        QTest::addRow("standard client's 404") << QStringLiteral("missing") << problem
                                               << QStringLiteral("Problem getting list from server: The list server answered 404 Not Found.") << false;
        QTest::addRow("empty list") << QString() << QStringLiteral("No sites from web source list")
                                    << QStringLiteral("No sites from web source list") << false;
        // Yes goes on alike after every failed fetch: one failure and the empty list show it.
        QTest::addRow("unreachable Yes") << QStringLiteral("closed") << problem << QString() << true;
        QTest::addRow("empty list Yes") << QString() << QStringLiteral("No sites from web source list") << QString() << true;
    }

    void listProblemsAskAboutFavorites()
    {
        QFETCH(QString, url);
        QFETCH(QString, message);
        QFETCH(QString, status);
        QFETCH(bool, yes);
        RefreshHarness r(masterConfig());
        QVERIFY(r.started);
        r.network.master()->silent = true;
        r.request.favorites = {QStringLiteral("127.0.12.1")};
        if (url == QStringLiteral("closed"))
            url = QStringLiteral("http://127.0.0.1:%1/quake2/gamespy.txt").arg(closedPort());
        else if (url == QStringLiteral("master"))
            url = r.network.masterUrl();
        else if (url == QStringLiteral("missing"))
            url = r.network.standardListUrl(false).replace(QStringLiteral("?"), QStringLiteral("missing?"));
        if (!url.isNull())
            r.request.location = url;
        r.env.prompts.answers = {yes};
        bool ended = false;
        connect(&r.session, &RefreshSession::finished, this, [&] { ended = true; });
        const RefreshOutcome o = r.run();

        QCOMPARE(r.env.prompts.texts(), (QStringList{message, QStringLiteral("Do you want to continue trying favorites?")}));
        // A plain OK box without an icon, then the question with Yes and No, both titled "Pulsebox".
        QCOMPARE(r.env.prompts.shown[0].kind, QStringLiteral("message"));
        QCOMPARE(r.env.prompts.shown[0].icon, Prompter::Icon::None);
        QCOMPARE(r.env.prompts.shown[1].kind, QStringLiteral("question"));
        for (const auto &shown : r.env.prompts.shown)
            QCOMPARE(shown.title, QStringLiteral("Pulsebox"));
        QCOMPARE(o.status, yes ? QStringLiteral("Done...") : status);
        QCOMPARE(o.rows.size(), yes ? 1 : 0);
        QCOMPARE(r.env.echo.sent.isEmpty(), !yes);
        QVERIFY(ended && !r.session.isRunning());
        QCOMPARE(r.network.master()->received.size(), url == r.network.masterUrl() ? 1 : 0);
    }

    void noIcmpIsReportedOnce()
    {
        struct NoEcho : EchoService {
            int sendEcho(qint32, const QByteArray &, int, int, EchoReply &reply) override
            {
                reply.Status = 11050;
                return 0;
            }
            QString unavailableReason() override { return QStringLiteral("no ICMP here: net.ipv4.ping_group_range"); }
        } noEcho;
        RefreshHarness r({}, {});
        r.session.setEchoService(&noEcho, true);
        r.request.favorites = {QStringLiteral("127.0.17.1"), QStringLiteral("127.0.17.2")};
        r.run(true);
        const RefreshOutcome o = r.run(true);
        QCOMPARE(r.env.prompts.texts(), QStringList{QStringLiteral("no ICMP here: net.ipv4.ping_group_range")});
        QCOMPARE(r.env.prompts.shown[0].icon, Prompter::Icon::Warning);
        QCOMPARE(o.log, (QStringList{QStringLiteral("Reply from 127.0.17.1: Failed code = 11050"),
                                     QStringLiteral("Reply from 127.0.17.2: Failed code = 11050")}));
    }

    // The same servers from the demo master and from its standard list endpoint, binary and text.
    void refreshFromTheDemoMasterAndAStandardList()
    {
        Demo::Config config = masterConfig();
        config.listLines = {QStringLiteral("127.0.12.1"), QStringLiteral("127.0.12.2:27910"), QStringLiteral("127.0.12.3")};
        RefreshHarness r(config);
        QVERIFY(r.started);
        for (const QString &location : {QStringLiteral(" ") + r.network.masterUrl() + QStringLiteral(" "),
                                        r.network.standardListUrl(true), r.network.standardListUrl(false)}) {
            r.request.location = location;
            const RefreshOutcome o = r.run();
            QVERIFY(r.env.prompts.shown.isEmpty());
            QCOMPARE(o.rows.size(), 3);
            QVERIFY(o.rows[0].contains(QStringLiteral("127.0.12.1:27910")) && o.rows[0].contains(QStringLiteral("Master Listed One")));
            QVERIFY(o.rows[1].contains(QStringLiteral("Master Listed Two")) && o.rows[1].contains(QStringLiteral("3.14")));
            QVERIFY(o.rows[2].contains(QStringLiteral("127.0.12.3:27910")) && o.rows[2].contains(QStringLiteral("No ")));
            QCOMPARE(o.count, QStringLiteral("3"));
            QCOMPARE(o.status, QStringLiteral("Done..."));
        }
    }
};

QTEST_MAIN(TestRefreshSession)
#include "tst_refreshsession.moc"
