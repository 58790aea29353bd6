// Fast Refresh against the serial refresh: the same servers give the same table,
// rows and log, but for a modern server silent below protocol 34, which only the
// fast one hears; Cancel ends a fast refresh at once.
#include "support/refreshharness.h"

#include "probes/address.h"

#include <QUdpSocket>
#include <QtTest>

namespace {
ScriptedEcho::Outcome ms(quint32 rtt) { return echoMs(rtt); }

// A UDP port on 127.0.0.1 that nothing uses now.
quint16 freeUdpPort()
{
    QUdpSocket probe;
    probe.bind(QHostAddress::LocalHost, 0);
    return probe.localPort();
}

// The demo's own population moved to 127.0.41.x (and a free port for the server
// found by host name), so that a demo running beside the tests does not collide.
Demo::Config demoPopulation(quint16 namedPort)
{
    Demo::Config c = Demo::Config::builtIn();
    c.httpPort = 0;
    for (Demo::Server &s : c.servers) {
        if (s.address == QHostAddress::LocalHost)
            s.port = namedPort;
        else
            s.address = QHostAddress(s.address.toString().replace(QStringLiteral("127.0.0."), QStringLiteral("127.0.41.")));
    }
    for (QString &line : c.listLines) {
        line.replace(QStringLiteral("127.0.0."), QStringLiteral("127.0.41."));
        line.replace(QStringLiteral("localhost:27920"), QStringLiteral("localhost:%1").arg(namedPort));
    }
    return c;
}
}

class TestFastRefresh : public QObject {
    Q_OBJECT
private slots:
    void fastAndSerialGiveTheSameTableRowsAndLog()
    {
        // Real ticks: the serial query listens 2 s after its send, so it hears the slow
        // server (1.3 s) with room to spare on a loaded machine; the engine listens 2 s
        // from each query's first send, so it hears whatever the serial query hears.
        const quint16 namedPort = freeUdpPort();
        RefreshHarness w(demoPopulation(namedPort), 1.0);
        QVERIFY(w.started);
        w.request.favorites = {QStringLiteral("127.0.41.12"), QStringLiteral("127.0.41.2:27910"), QStringLiteral("LocalHost:%1").arg(namedPort),
                               QStringLiteral("nosuchhost.invalid"), QStringLiteral("127.0.41.9")};
        w.env.echo.script = {{QStringLiteral("127.0.41.3"), {ms(45)}}, {QStringLiteral("127.0.41.9"), {ms(231)}},
                             {QStringLiteral("127.0.41.5"), {{0, 11010, 0}}}};

        const RefreshOutcome serial = w.run(false, false);
        QCOMPARE(serial.status, QStringLiteral("Done..."));
        QVERIFY(serial.log.contains(QStringLiteral("Reply from 127.0.41.9: time =231ms. TTL=90")));
        QElapsedTimer clock;
        clock.start();
        const RefreshOutcome fast = w.run(false, true);
        const qint64 fastMs = clock.elapsed();
        for (const auto &[text, index] : w.rows) {  // a fast-refreshed row points at its record, as any other
            const ServerRec &rec = fast.servers[static_cast<size_t>(index)];
            QVERIFY2(text.contains(AddressToDotted(rec.Address) + u':' + QString::number(rec.Port)), qPrintable(text));
        }
        // The one server told apart on purpose: the modern one, silent below protocol 34,
        // is heard by the engine's version probe only. Everything else is equal.
        RefreshOutcome fastRest = fast, serialRest = serial;
        for (RefreshOutcome *o : {&fastRest, &serialRest}) {
            const auto row = std::find_if(o->rows.begin(), o->rows.end(),
                                          [](const QString &r) { return r.contains(QStringLiteral("127.0.41.11:")); });
            QVERIFY(row != o->rows.end());
            QVERIFY2(o == &fastRest ? row->contains(QStringLiteral("Modern Times")) && row->contains(QStringLiteral("- 3.19"))
                                    : row->contains(QStringLiteral(" - No ")), qPrintable(*row));
            o->rows.erase(row);
            const auto rec = std::find_if(o->servers.begin(), o->servers.end(),
                                          [](const ServerRec &r) { return r.Address == DottedToAddress(QStringLiteral("127.0.41.11")); });
            QVERIFY(rec != o->servers.end());
            o->servers.erase(rec);
        }
        QCOMPARE(fastRest.rows, serialRest.rows);
        QCOMPARE(fast.log, serial.log);
        QVERIFY(fastRest == serialRest);  // the table, address, count, status and log selection too
        // The population shows every path: the slow one, each protocol, the refuser, the
        // server found by host name, the one without line feed, a failed echo.
        for (const char *needle : {"Slowpoke", "Old Timers", "Edge of Reason", "Pulse Arena", "Named by Host",
                                   "3.20 - data     - retur", "Malformed"})
            QVERIFY2(fast.rows.join(u'\n').contains(QLatin1String(needle)), needle);
        QVERIFY(fast.log.contains(QStringLiteral("Reply from 127.0.41.5: Failed code = 11010")));
        // Items of the serial probe's cost that the engine does not pay one after another.
        QVERIFY2(fastMs < 8000, qPrintable(QString::number(fastMs)));
    }

    void cancelEndsAFastRefreshAtOnce()
    {
        Demo::Config c;
        for (int i = 1; i <= 40; ++i) {
            c.servers << demoServer(QStringLiteral("127.0.43.%1").arg(i), i <= 5 ? QStringLiteral("34") : QStringLiteral("silent"));
            c.listLines << c.servers.last().address.toString();
        }
        RefreshHarness w(c, 1.0);  // real ticks: the silent servers would hold the refresh for 2 s
        QVERIFY(w.started);
        qint64 cancelledAt = -1;
        QElapsedTimer clock;
        QTimer::singleShot(300, [&] {
            QVERIFY(w.session.isRunning());
            QVERIFY(w.progress.last().first > 0);  // the five answering servers are done
            cancelledAt = clock.elapsed();
            w.session.cancel();
        });
        clock.start();
        const RefreshOutcome o = w.run(false, true);
        const qint64 endedAt = clock.elapsed();
        QVERIFY(cancelledAt >= 0);
        QVERIFY2(endedAt - cancelledAt < 1000, qPrintable(QString::number(endedAt - cancelledAt)));
        // The five answering servers come first and finished; the silent ones did not.
        QCOMPARE(o.rows.size(), 5);
        QCOMPARE(o.log.size(), 5);
        QCOMPARE(o.status, QStringLiteral("Done..."));
        QVERIFY(!w.session.isRunning() && !w.session.cancelRequested());
    }

    void numbersTypedWithDecimals()
    {
        RefreshHarness w({demoServer(QStringLiteral("127.0.44.1"), QStringLiteral("34"), QStringLiteral("Rounded Port"), {}, 27911)}, {});
        QVERIFY(w.started);
        w.request.favorites = {QStringLiteral("127.0.44.1:27910.7"), QStringLiteral("127.0.44.3"), QStringLiteral("127.0.44.2")};
        w.request.pingLimitText = QStringLiteral("230.5");
        w.request.quickPing = false;
        RefreshOutcome both[2];
        for (const bool fast : {false, true}) {
            // Means 230.33 (within 230.5; above 230 as it used to read) and 230.67; a failure ends a series.
            w.env.echo.script = {{QStringLiteral("127.0.44.1"), {ms(230), ms(230), ms(231)}},
                                 {QStringLiteral("127.0.44.2"), {ms(230), ms(231), ms(231)}},
                                 {QStringLiteral("127.0.44.3"), {ms(40), {0, 11010, 0}, ms(40)}}};
            const RefreshOutcome o = both[fast] = w.run(true, fast);
            QCOMPARE(o.rows.size(), 1);
            QVERIFY2(o.rows[0].startsWith(QStringLiteral("230 -*127.0.44.1:27910.7     - Rounded Port")), qPrintable(o.rows[0]));
            QCOMPARE(o.servers[1].Port, 27911);
            QCOMPARE(o.servers[1].PingMs, 230);
            QCOMPARE(o.log.mid(1), (QStringList{QStringLiteral("Reply from 127.0.44.3: Failed code = 11010"),
                                                QStringLiteral("Reply from 127.0.44.2: time =230ms. TTL=90")}));
            QCOMPARE(o.logSelection, 1);  // a ping over the limit is logged without selecting it
            QCOMPARE(o.count, QStringLiteral("0"));
        }
        QVERIFY(both[0] == both[1]);  // table, log selection and all
    }
};

QTEST_MAIN(TestFastRefresh)
#include "tst_fastrefresh.moc"
