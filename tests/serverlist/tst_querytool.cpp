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
    Run run;
    if (!done.wait(60000)) {
        process.kill();
        process.waitForFinished();
        return run;
    }
    run.exitCode = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -2;
    run.out = process.readAllStandardOutput();
    run.err = process.readAllStandardError();
    return run;
}
}

class TestQueryTool : public QObject {
    Q_OBJECT
private slots:
    // The demo master's servers, probed and written as JSON, read back field by field.
    void jsonFromTheDemoMaster()
    {
        Demo::Config config;
        config.httpPort = 0;
        config.masterPort = 0;
        config.servers = {fake("127.0.13.1", "34", "Query One", {{QStringLiteral("Alice"), 12, 40}, {QStringLiteral("Bob \"B\""), -1, 999}}),
                          fake("127.0.13.2", "31", "Query Two"), fake("127.0.13.3", "silent", "Quiet")};
        config.listLines = {QStringLiteral("127.0.13.2"), QString(), QStringLiteral("127.0.13.3:27910")};
        Demo::Network network;
        QString error;
        QVERIFY2(network.start(config, &error, true), qPrintable(error));
        const QString master = network.masterUrl().mid(int(sizeof "master://") - 1);

        const Run run = runTool({QStringLiteral("--master"), master, QStringLiteral("--json"), QStringLiteral("--status"),
                                 QStringLiteral("--timeout"), QStringLiteral("600")});
        QCOMPARE(run.exitCode, 0);
        QJsonParseError parseError;
        const QJsonDocument doc = QJsonDocument::fromJson(run.out, &parseError);
        QVERIFY2(doc.isArray(), qPrintable(parseError.errorString() + QString::fromLocal8Bit(run.out)));
        const QJsonArray servers = doc.array();
        QCOMPARE(servers.size(), 3);

        const QJsonObject one = servers[0].toObject();
        QCOMPARE(one[QStringLiteral("entry")].toString(), QStringLiteral("127.0.13.1:27910"));
        QCOMPARE(one[QStringLiteral("address")].toString(), QStringLiteral("127.0.13.1"));
        QCOMPARE(one[QStringLiteral("port")].toInt(), 27910);
        QCOMPARE(one[QStringLiteral("answered")].toBool(), true);
        QCOMPARE(one[QStringLiteral("favorite")].toBool(), false);
        QCOMPARE(one[QStringLiteral("name")].toString(), QStringLiteral("Query One"));
        QCOMPARE(one[QStringLiteral("map")].toString(), QStringLiteral("q2dm3"));
        QCOMPARE(one[QStringLiteral("players")].toInt(), 2);
        QCOMPARE(one[QStringLiteral("maxPlayers")].toInt(), 12);
        QCOMPARE(one[QStringLiteral("version")].toString(), QStringLiteral("3.19"));
        QVERIFY(one[QStringLiteral("ping")].toDouble(-1) >= 0);
        QVERIFY(one[QStringLiteral("rttSource")].toString() != QStringLiteral("none"));
        const QJsonObject settings = one[QStringLiteral("settings")].toObject();
        QCOMPARE(settings[QStringLiteral("hostname")].toString(), QStringLiteral("Query One"));
        QCOMPARE(settings[QStringLiteral("maxclients")].toString(), QStringLiteral("12"));
        const QJsonArray players = one[QStringLiteral("playerList")].toArray();
        QCOMPARE(players.size(), 2);
        QCOMPARE(players[1].toObject()[QStringLiteral("name")].toString(), QStringLiteral("Bob \"B\""));
        QCOMPARE(players[1].toObject()[QStringLiteral("score")].toInt(), -1);
        QCOMPARE(players[1].toObject()[QStringLiteral("ping")].toInt(), 999);

        QCOMPARE(servers[1].toObject()[QStringLiteral("version")].toString(), QStringLiteral("3.14"));
        QCOMPARE(servers[1].toObject()[QStringLiteral("name")].toString(), QStringLiteral("Query Two"));
        const QJsonObject quiet = servers[2].toObject();
        QCOMPARE(quiet[QStringLiteral("answered")].toBool(), false);
        QVERIFY(quiet[QStringLiteral("name")].isNull());
        QVERIFY(quiet[QStringLiteral("players")].isNull());
        QVERIFY(quiet[QStringLiteral("playerList")].toArray().isEmpty());

        // The rows, fastest first, from a list file and the favorites together.
        QTemporaryDir dir;
        QFile list(dir.filePath(QStringLiteral("list.txt"))), fav(dir.filePath(QStringLiteral("Pulsebox.fav")));
        QVERIFY(list.open(QIODevice::WriteOnly) && fav.open(QIODevice::WriteOnly));
        list.write("\r\n 127.0.13.2 \r\n");
        fav.write("127.0.13.1\r\nmine\r\n");
        list.close();
        fav.close();
        const Run rows = runTool({QStringLiteral("--file"), list.fileName(), QStringLiteral("--favorites"), fav.fileName(),
                                  QStringLiteral("--timeout"), QStringLiteral("600")});
        QCOMPARE(rows.exitCode, 0);
        const QStringList lines = QString::fromLatin1(rows.out).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
        QCOMPARE(lines.size(), 2);
        QVERIFY(lines.join(QLatin1Char('\n')).contains(QStringLiteral("Query Two")));
        QVERIFY(lines.join(QLatin1Char('\n')).contains(QStringLiteral("Query One")));

        // The web list, fetched as the window fetches it: its two entries, the silent one unlisted.
        const Run web = runTool({QStringLiteral("--url"), network.listUrl(), QStringLiteral("--json"),
                                 QStringLiteral("--timeout"), QStringLiteral("600")});
        QCOMPARE(web.exitCode, 0);
        const QJsonArray listed = QJsonDocument::fromJson(web.out).array();
        QCOMPARE(listed.size(), 2);
        QCOMPARE(listed[0].toObject()[QStringLiteral("name")].toString(), QStringLiteral("Query Two"));
        QCOMPARE(listed[1].toObject()[QStringLiteral("answered")].toBool(), false);
    }

    void exitStatuses()
    {
        Demo::Config config;
        config.httpPort = 0;
        config.masterPort = 0;
        config.servers = {fake("127.0.13.9", "silent", "Quiet")};
        Demo::Network network;
        QString error;
        QVERIFY2(network.start(config, &error, true), qPrintable(error));

        // No game server answers: 1 (a row "No data returned" is still printed where ICMP reaches it).
        const Run silent = runTool({QStringLiteral("127.0.13.9"), QStringLiteral("--timeout"), QStringLiteral("200")});
        QCOMPARE(silent.exitCode, 1);
        QVERIFY(!silent.out.contains("Quiet"));

        // A master that never answers says so.
        network.master()->silent = true;
        const Run mute = runTool({QStringLiteral("--master"), network.masterUrl().mid(9)});
        QCOMPARE(mute.exitCode, 1);
        QVERIFY2(mute.err.contains("did not answer"), mute.err.constData());

        // Bad usage: 2 and a sentence that names the problem; nothing is sent.
        const QList<QPair<QStringList, QByteArray>> bad = {
            {{QStringLiteral("--rate"), QStringLiteral("0"), QStringLiteral("127.0.13.9")}, "rate"},
            {{QStringLiteral("--rate"), QStringLiteral("99999999999999"), QStringLiteral("127.0.13.9")}, "rate"},
            {{QStringLiteral("--rate"), QStringLiteral("fast"), QStringLiteral("127.0.13.9")}, "--rate needs a whole number"},
            {{QStringLiteral("--timeout"), QStringLiteral("0"), QStringLiteral("127.0.13.9")}, "time-out"},
            {{QStringLiteral("--timeout"), QStringLiteral("86400000"), QStringLiteral("127.0.13.9")}, "time-out"},
            {{QStringLiteral("--retries"), QStringLiteral("-1"), QStringLiteral("127.0.13.9")}, "tries"},
            {{QStringLiteral("--ping-limit"), QStringLiteral("nan"), QStringLiteral("127.0.13.9")}, "ping-limit"},
            {{QStringLiteral("--master"), QStringLiteral("host:0")}, "Not a master server"},
            {{QStringLiteral("127.0.13.9:x")}, "Not a server"},
            {{QStringLiteral("--file"), QStringLiteral("/nonexistent/list.txt")}, "Cannot read the list file"},
            {{QStringLiteral("--bogus")}, "bogus"},
            {{}, "No servers to probe"},
        };
        for (const auto &[arguments, message] : bad) {
            const Run run = runTool(arguments);
            QVERIFY2(run.exitCode == 2 && run.err.contains(message),
                     qPrintable(arguments.join(QLatin1Char(' ')) + QStringLiteral(" -> ") + QString::number(run.exitCode)
                                + QStringLiteral(": ") + QString::fromLocal8Bit(run.err)));
        }
    }
};

QTEST_GUILESS_MAIN(TestQueryTool)
#include "tst_querytool.moc"
