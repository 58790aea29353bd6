#include "support/demoservers.h"
#include "support/listwebserver.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

namespace {
// Map and room other than the defaults, so that the JSON shows they are read.
Demo::Server fake(const char *address, const char *protocol, const char *name, QList<Demo::Player> players = {})
{
    Demo::Server s = demoServer(QLatin1String(address), QLatin1String(protocol), QLatin1String(name), players);
    s.map = QStringLiteral("q2dm3");
    s.maxClients = 12;
    return s;
}

struct Run {
    int exitCode = -1;
    QByteArray out, err;
};

// Runs the tool while this thread's event loop serves the demo network.
Run runTool(const QStringList &arguments)
{
    QProcess process;
    QSignalSpy done(&process, &QProcess::finished);
    process.start(QStringLiteral(PULSEBOX_QUERY), arguments);
    if (!done.wait(60000)) {
        process.kill();
        process.waitForFinished();
        return {};
    }
    return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -2, process.readAllStandardOutput(),
            process.readAllStandardError()};
}

// Space-separated arguments, none of which holds a space.
Run runTool(const QString &arguments) { return runTool(arguments.split(u' ', Qt::SkipEmptyParts)); }

bool start(Demo::Network &network, const QList<Demo::Server> &servers, const QStringList &listLines = {})
{
    return startDemo(network, servers, listLines, true);
}

QString masterHost(const Demo::Network &network) { return network.masterUrl().mid(int(sizeof "master://") - 1); }

void verifyFields(const QJsonObject &object, const QList<std::pair<const char *, QJsonValue>> &fields)
{
    for (const auto &[key, value] : fields)
        QVERIFY2(object[QLatin1String(key)] == value, key);
}
}

class TestQueryTool : public QObject {
    Q_OBJECT
private slots:
    // The demo master's servers, probed and written as JSON, read back field by field.
    void jsonFromTheDemoMaster()
    {
        Demo::Network network;
        QVERIFY(start(network, {fake("127.0.13.1", "34", "Query One", {{QStringLiteral("Alice"), 12, 40}, {QStringLiteral("Bob \"B\""), -1, 999}}),
                                fake("127.0.13.2", "31", "Query Two"), fake("127.0.13.3", "silent", "Quiet")},
                      {QStringLiteral("127.0.13.2"), QString(), QStringLiteral("127.0.13.3:27910")}));

        const Run run = runTool(QStringLiteral("--master %1 --json --status --hops --timeout 600").arg(masterHost(network)));
        QCOMPARE(run.exitCode, 0);
        QJsonParseError parseError;
        const QJsonArray servers = QJsonDocument::fromJson(run.out, &parseError).array();
        QVERIFY2(servers.size() == 3, qPrintable(parseError.errorString() + QString::fromLocal8Bit(run.out)));
        const QJsonObject one = servers[0].toObject();
        verifyFields(one, {{"entry", QStringLiteral("127.0.13.1:27910")}, {"address", QStringLiteral("127.0.13.1")},
                           {"port", 27910}, {"answered", true}, {"favorite", false}, {"name", QStringLiteral("Query One")},
                           {"map", QStringLiteral("q2dm3")}, {"players", 2}, {"maxPlayers", 12}, {"version", QStringLiteral("3.19")}});
        QVERIFY(one[QStringLiteral("ping")].toDouble(-1) >= 0);
        QVERIFY(one[QStringLiteral("rttSource")].toString() != QStringLiteral("none"));
        verifyFields(one[QStringLiteral("settings")].toObject(), {{"hostname", QStringLiteral("Query One")}, {"maxclients", QStringLiteral("12")}});
        const QJsonArray players = one[QStringLiteral("playerList")].toArray();
        QCOMPARE(players.size(), 2);
        verifyFields(players[1].toObject(), {{"name", QStringLiteral("Bob \"B\"")}, {"score", -1}, {"ping", 999}});
        verifyFields(servers[1].toObject(), {{"version", QStringLiteral("3.14")}, {"name", QStringLiteral("Query Two")}});
        verifyFields(servers[2].toObject(), {{"answered", false}, {"name", QJsonValue::Null}, {"players", QJsonValue::Null},
                                             {"playerList", QJsonArray()}});
        // --hops: a loopback server is one hop away, its own answer the whole route
        // (null where ICMP is not allowed); a server that did not answer gets none.
        QVERIFY(one.contains(QStringLiteral("hops")) && !servers[2].toObject().contains(QStringLiteral("hops")));
        if (!one[QStringLiteral("hops")].isNull()) {
            QCOMPARE(one[QStringLiteral("hops")].toInt(), 1);
            const QJsonArray route = one[QStringLiteral("route")].toArray();
            QCOMPARE(route.size(), 1);
            verifyFields(route[0].toObject(), {{"hop", 1}, {"address", QStringLiteral("127.0.13.1")}});
        }

        // Rows from the web list, fetched as the window fetches it, and the favorites together.
        QTemporaryDir dir;
        QFile fav(dir.filePath(QStringLiteral("Pulsebox.fav")));
        QVERIFY(fav.open(QIODevice::WriteOnly) && fav.write("127.0.13.1\r\nmine\r\n") > 0);
        fav.close();
        const Run rows = runTool(QStringList{QStringLiteral("--url"), network.listUrl(), QStringLiteral("--favorites"),
                                              fav.fileName(), QStringLiteral("--timeout"), QStringLiteral("600")});
        QCOMPARE(rows.exitCode, 0);
        QVERIFY(rows.out.contains("Query Two") && rows.out.contains("Query One") && !rows.out.contains("Quiet"));
    }

    // --url on a standard web server: a binary list lists; each failure is one
    // sentence with status 1, a text that is no location status 2.
    void urlOnAStandardWebServer()
    {
        ListWebServer web;
        if (const QString why = web.start(); !why.isEmpty())
            QSKIP(qPrintable(why));
        Demo::Network network;
        QVERIFY(start(network, {fake("127.0.24.1", "34", "Binary One"), fake("127.0.24.2", "34", "Binary Two")}));
        QVERIFY(web.put(QStringLiteral("list.bin"), QByteArray("\x7f\x00\x18\x01\x6d\x06\x7f\x00\x18\x02\x6d\x06", 12))
                && web.put(QStringLiteral("empty.txt"), QByteArray("\n\n")));
        const Run listed = runTool(QStringLiteral("--url %1 --timeout 600").arg(web.url(QStringLiteral("list.bin?raw=2"))));
        QCOMPARE(listed.exitCode, 0);
        QVERIFY2(listed.out.contains("Binary One") && listed.out.contains("Binary Two"), listed.out.constData());

        const std::tuple<QString, int, const char *> failures[] = {
            {web.url(QStringLiteral("none.txt?raw=1")), 1, "The list server answered 404 File not found."},
            {web.url(QStringLiteral("empty.txt")), 1, "names no server."},
            {QStringLiteral("https://"), 2, "Not a list URL"},
        };
        for (const auto &[url, status, message] : failures) {
            const Run run = runTool(QStringList{QStringLiteral("--url"), url});
            QVERIFY2(run.exitCode == status && run.err.contains(message), qPrintable(url + QString::fromLocal8Bit(run.err)));
        }
    }

    // --find keeps servers with a matching player, the filters leave servers out,
    // --friends names the friends on each server: the window's rules.
    void findFriendsAndFiltersInJson()
    {
        Demo::Network network;
        Demo::Server full = fake("127.0.13.24", "34", "Full", {{QStringLiteral("Vect\u00efr"), 1, 60}});  // high-bit "o"
        full.maxClients = 1;
        QVERIFY(start(network, {fake("127.0.13.21", "34", "Arena", {{QStringLiteral("[Q2]Vector"), 3, 40}, {QStringLiteral("Bot"), 0, 0}}),
                                fake("127.0.13.22", "34", "Bots", {{QStringLiteral("Bot1"), 0, 0}, {QStringLiteral("Bot2"), 0, 0}}),
                                fake("127.0.13.23", "34", "Empty"), full}));
        const QString servers = QStringLiteral(" 127.0.13.21 127.0.13.22 127.0.13.23 127.0.13.24 --json --timeout 600");
        const auto names = [](const Run &run) {
            QStringList found;
            for (const QJsonValue &server : QJsonDocument::fromJson(run.out).array())
                found << server[QStringLiteral("name")].toString();
            return found.join(u',');
        };
        QCOMPARE(names(runTool(QStringLiteral("--find VECTOR") + servers)), QStringLiteral("Arena,Full"));
        QCOMPARE(names(runTool(QStringLiteral("--find [q2]v") + servers)), QStringLiteral("Arena"));
        QCOMPARE(names(runTool(QStringLiteral("--no-bots") + servers)), QStringLiteral("Arena,Empty,Full"));
        QCOMPARE(names(runTool(QStringLiteral("--not-empty --not-full") + servers)), QStringLiteral("Arena,Bots"));
        QCOMPARE(names(runTool(QStringLiteral("--map DM --version=3.19 --max-ping 1000") + servers)),
                 QStringLiteral("Arena,Bots,Empty,Full"));
        const Run none = runTool(QStringLiteral("--game-version 3.20") + servers);  // none passes: said, status 1
        QCOMPARE(names(none), QString());
        QVERIFY2(none.exitCode == 1 && none.err.contains("No server passes the filters."), none.err.constData());

        QTemporaryDir dir;
        QFile friends(dir.filePath(QStringLiteral("friends.txt")));
        QVERIFY(friends.open(QIODevice::WriteOnly) && friends.write("vector\r\nMynx\n") > 0);
        friends.close();
        const Run marked = runTool(QStringLiteral("--friends ") + friends.fileName() + servers);
        QCOMPARE(marked.exitCode, 0);
        QStringList seen;
        for (const QJsonValue &server : QJsonDocument::fromJson(marked.out).array())
            seen << server[QStringLiteral("friends")].toVariant().toStringList().join(u'+');
        QCOMPARE(seen, (QStringList{QStringLiteral("[Q2]Vector"), QString(), QString(), QStringLiteral("Vect\u00efr")}));

        for (const auto &[bad, said] : std::initializer_list<std::pair<const char *, const char *>>{
                 {"--find \x01", "--find"}, {"--max-ping -5", "0 to 9999"}, {"--max-ping 99999999999", "0 to 9999"},
                 {"--game-version 3.99", "3.20, 3.19, 3.17, 3.15, 3.14, unkn"},
                 {"--friends /nonexistent/friends.txt", "friends file"}}) {
            const Run run = runTool(QLatin1String(bad) + servers);
            QVERIFY2(run.exitCode == 2 && run.err.contains(said), bad);
        }
    }

    void exitStatuses()
    {
        Demo::Network network;
        QVERIFY(start(network, {fake("127.0.13.9", "silent", "Quiet")}));

        // No game server answers: 1 (a row "No data returned" is still printed where ICMP reaches it).
        const Run silent = runTool(QStringLiteral("127.0.13.9 --timeout 200"));
        QCOMPARE(silent.exitCode, 1);
        QVERIFY(!silent.out.contains("Quiet"));

        // A master that never answers says so.
        network.master()->silent = true;
        const Run mute = runTool(QStringLiteral("--master ") + masterHost(network));
        QCOMPARE(mute.exitCode, 1);
        QVERIFY2(mute.err.contains("did not answer"), mute.err.constData());

        // Bad usage: 2 and a sentence that names the problem; nothing is sent.
        const std::pair<const char *, const char *> bad[] = {
            {"--rate 0 127.0.13.9", "rate"}, {"--rate 99999999999999 127.0.13.9", "rate"},
            {"--rate fast 127.0.13.9", "--rate needs a whole number"}, {"--timeout 0 127.0.13.9", "time-out"},
            {"--timeout 86400000 127.0.13.9", "time-out"}, {"--retries -1 127.0.13.9", "tries"},
            {"--ping-limit nan 127.0.13.9", "ping-limit"}, {"--master host:0", "Not a master server"},
            {"127.0.13.9:x", "Not a server"}, {"--file /nonexistent/list.txt", "Cannot read the list file"},
            {"--bogus", "bogus"}, {"", "No servers to probe"},
        };
        for (const auto &[arguments, message] : bad) {
            const Run run = runTool(QLatin1String(arguments));
            QVERIFY2(run.exitCode == 2 && run.err.contains(message),
                     qPrintable(QStringLiteral("%1 -> %2: %3").arg(QLatin1String(arguments)).arg(run.exitCode)
                                    .arg(QString::fromLocal8Bit(run.err))));
        }
    }
};

QTEST_GUILESS_MAIN(TestQueryTool)
#include "tst_querytool.moc"
