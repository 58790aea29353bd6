#include "demonet/demonetwork.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

namespace {
Demo::Server fake(const char *address, const char *protocol, const char *name, QList<Demo::Player> players = {})
{
    Demo::Server s;
    s.address = QHostAddress(QLatin1String(address));
    s.protocol = QLatin1String(protocol);
    s.hostName = QLatin1String(name);
    s.map = QStringLiteral("q2dm3");
    s.maxClients = 12;
    s.players = players;
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
    Demo::Config config;
    config.httpPort = 0;
    config.masterPort = 0;
    config.servers = servers;
    config.listLines = listLines;
    QString error;
    return network.start(config, &error, true);
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
