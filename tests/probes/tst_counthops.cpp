#include "support/testsupport.h"

#include "probes/address.h"
#include "probes/hopsearch.h"
#include "probes/hoptrace.h"
#include "probes/timeouts.h"
#include "serverlist/refreshdecisions.h"
#include "shell/activity.h"
#include "shell/itemlist.h"
#include "shell/mainwindow.h"
#include "shell/serverrow.h"

#include <QAction>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QThread>
#include <QTimer>
#include <QtTest>

using namespace Qt::StringLiterals;

namespace {
using Outcome = ScriptedEcho::Outcome;
Outcome router(const char *dotted, quint32 rtt = 5) { return {1, 11013, rtt, QLatin1String(dotted)}; }
Outcome arrives(quint32 rtt = 9) { return {1, 0, rtt}; }
const Outcome kSilent{0, 11010, 0};

// The main window over a server table as a refresh leaves it. Ticks run at their
// real pace, so the tick rule only fires where a test makes the probes slow.
struct Hops {
    explicit Hops(double timeScale = 1.0) : env(timeScale) { MainWindowDriver::offerListCommands(*window); }
    TestEnvironment env;
    std::unique_ptr<MainWindow> window = newMainWindow();
    ItemList *list = window->findChild<ItemList *>(u"serverList_"_s);
    ItemList *logList = window->findChild<ItemList *>(u"logList_"_s);
    QLineEdit *ttl = window->findChild<QLineEdit *>(u"ttlEdit_"_s);

    QPushButton *button(const char *name) const { return window->findChild<QPushButton *>(QLatin1String(name)); }
    QString status() const { return window->findChild<QLabel *>(u"statusLabel_"_s)->text(); }
    // One record and its row; the ping orders the rows.
    void add(qint64 ping, const char *dotted, qint32 port, bool favorite, qint32 hops = 0)
    {
        ServerRec r;
        r.Address = DottedToAddress(QLatin1String(dotted));
        r.Port = port;
        r.PingMs = qint32(ping);
        r.Hops = hops;
        r.HostName = ServerRow::pad(u"Arena"_s, 50);
        r.Version = ServerRow::pad(u"3.20"_s, 5);
        r.IsFavorite = favorite ? 1 : 0;
        const QString row = ServerRow::format(ping, favorite, u"%1:%2"_s.arg(QLatin1String(dotted)).arg(port), u"Arena"_s,
                                              u"3.20"_s, u"q2dm1"_s, u" 0/ 8"_s);
        list->setRowData(list->addRow(row), window->servers().appendServer(r));
    }
    void run(bool yes = true)
    {
        env.prompts.answers = {yes};
        button("countHopsButton_")->click();
    }
    QStringList log() const { return logList->texts(); }
    QString hopColumn(int row) const { return list->rowText(row).mid(58, 7); }  // columns 59-65
    // The hop counts of records 1..ServerCount.
    QList<qint32> hops() const
    {
        QList<qint32> counts;
        for (qint32 k = 1; k <= window->servers().ServerCount; ++k)
            counts << window->servers().Servers[static_cast<size_t>(k)].Hops;
        return counts;
    }
    // The run is over and the idle controls are back (every control: tst_controlstates).
    void verifyRestored() const
    {
        QCOMPARE(status(), u"Done..."_s);
        QVERIFY(!button("cancelButton_")->isEnabled() && button("countHopsButton_")->isEnabled());
        QVERIFY(window->activity().isIdle());
    }
};
}

class TestCountHops : public QObject {
    Q_OBJECT
private slots:
    void directAndRoutedServers()
    {
        Hops h;
        h.add(10, "127.0.60.1", 27910, false);
        h.add(20, "127.0.60.2", 27910, false);
        h.env.echo.script[u"127.0.60.2"_s] = {router("127.0.61.1"), router("127.0.61.2", 6), router("127.0.61.3", 7), arrives(12)};
        h.logList->addRow(u"from the refresh"_s);
        h.list->selectRow(1);
        QVERIFY(h.button("serverInfoButton_")->isEnabled());  // Count Hops disables it
        h.run();

        QCOMPARE(h.env.prompts.shown.size(), 1);  // nothing else, whatever happens
        const ScriptedPrompter::Shown &asked = h.env.prompts.shown[0];
        QCOMPARE(QStringList({asked.kind, asked.text, asked.title}),
                 QStringList({u"question"_s, u"This may take a long time.  Are you sure?"_s, u"Are you sure?"_s}));
        QCOMPARE(h.log(), (QStringList{u"Trace Route: Hop 1 127.0.60.1 time=10 ms."_s, u"Trace Route: Hop 1 127.0.61.1 time=5 ms."_s,
                                       u"Trace Route: Hop 2 127.0.61.2 time=6 ms."_s, u"Trace Route: Hop 3 127.0.61.3 time=7 ms."_s,
                                       u"Trace Route: Hop 4 127.0.60.2 time=12 ms."_s}));
        QCOMPARE(h.logList->selectedRow(), 4);  // the newest line selected
        const QString a = u"127.0.60.1"_s, b = u"127.0.60.2"_s;
        QCOMPARE(h.env.echo.sent, (QList<QPair<QString, int>>{{a, 1}, {b, 1}, {b, 2}, {b, 3}, {b, 4}}));
        QCOMPARE(QStringList({h.hopColumn(0), h.hopColumn(1)}), QStringList({u" -   1 "_s, u" -   4 "_s}));
        QCOMPARE(h.hops(), (QList<qint32>{1, 4}));
        QCOMPARE(h.window->findChild<QLineEdit *>(u"serverAddressEdit_"_s)->text(), b);
        QVERIFY(h.window->findChild<QWidget *>(u"hopsHeader_"_s)->isVisible());
        h.verifyRestored();

        h.run(false);  // No: only the status line changes
        QCOMPARE(h.log().size(), 5);
        QCOMPARE(h.env.echo.sent.size(), 5);
        QCOMPARE(h.status(), u"Done..."_s);

        // An empty list: no probe, the controls restored all the same.
        h.window->servers().clearServers();
        h.list->clear();
        h.run();
        QVERIFY(h.log().isEmpty());
        QCOMPARE(h.env.echo.sent.size(), 5);
        h.verifyRestored();
    }

    // A silent router is asked again with the same time-to-live until the ticks
    // of the trace pass 5; from then on every probe also counts a silent hop. Each
    // probe here lasts longer than a tick, so probe n sees n - 1 ticks.
    void silentRouterAndTheTickRule()
    {
        Hops h(0.01);
        h.add(10, "127.0.60.3", 27910, false);
        h.env.echo.script[u"127.0.60.3"_s] = {router("127.0.61.1"), kSilent, kSilent, kSilent, kSilent, kSilent, kSilent,
                                               router("127.0.61.3"), arrives()};
        h.env.echo.onSend = [] { QThread::msleep(15); };
        h.run();
        QCOMPARE(h.log(), (QStringList{u"Trace Route: Hop 1 127.0.61.1 time=5 ms."_s, u"Trace Route: Hop 2 *.*.*.* time=*** ms."_s,
                                       u"Trace Route: Hop 3 127.0.61.3 time=5 ms."_s, u"Trace Route: Hop 4 *.*.*.* time=*** ms."_s,
                                       u"Trace Route: Hop 5 127.0.60.3 time=9 ms."_s, u"Trace Route: Hop 6 *.*.*.* time=*** ms."_s}));
        QList<int> ttls;
        for (const auto &s : h.env.echo.sent)
            ttls << s.second;
        QCOMPARE(ttls, (QList<int>{1, 2, 2, 2, 2, 2, 2, 3, 5}));  // the seventh probe saw six ticks
        QCOMPARE(h.hops(), QList<qint32>{6});
        QCOMPARE(h.hopColumn(0), u" -   6 "_s);
        // Every probe waits 2.7 s for its answer.
        QCOMPARE(h.env.echo.timeouts, QList<int>(h.env.echo.sent.size(), 2700));
    }

    // The Ping run's traces step over silent hops only after 15 ticks.
    void pingRunTickLimit()
    {
        TestEnvironment env(0.01);
        env.echo.script[u"127.0.60.8"_s] = {kSilent};
        env.echo.onSend = [] { QThread::msleep(15); };
        int probes = 0;
        HopTrace::Hooks hooks;
        QStringList lines;
        hooks.lines = [&](const QStringList &made) { lines << made; };
        hooks.bound = [] { return qint64(1); };
        hooks.stop = [&] { return ++probes > 40; };
        HopTrace::run(env.echo, DottedToAddress(u"127.0.60.8"_s), Timeouts::kPingRunHopTicks, hooks);
        QCOMPARE(env.echo.sent.size(), 17);  // the 17th probe saw 16 ticks and counted a silent hop
        QCOMPARE(lines, QStringList{u"Trace Route: Hop 1 *.*.*.* time=*** ms."_s});
    }

    // No reply never reaches the server, even when it names it; past 255 the byte keeps its last value.
    void hopSearchEdges()
    {
        const qint32 server = DottedToAddress(u"127.0.40.9"_s);
        HopSearch search(server, 5);
        search.record(false, server, 0, 0);
        QVERIFY(!search.reached());
        HopSearch endless(server, 0);
        for (int i = 0; i < 200; ++i)
            endless.record(true, DottedToAddress(u"127.0.41.1"_s), 1, 1);  // two steps per probe
        QCOMPARE(endless.counter(), 401);
        QCOMPARE(endless.ttl(), 255);
        QVERIFY(endless.goOn(401, false) && !endless.goOn(400, false));
    }

    // The bound is read after every probe; text that is no number counts as 0.
    void boundFromTxTTL()
    {
        Hops h;
        h.add(10, "127.0.60.4", 27910, false, 7);
        h.add(20, "127.0.60.5", 27910, false, 7);
        h.env.echo.script[u"127.0.60.4"_s] = {router("127.0.61.1")};
        h.env.echo.script[u"127.0.60.5"_s] = {kSilent};
        for (const char *text : {"0", "abc"}) {
            h.env.echo.sent.clear();
            h.ttl->setText(QLatin1String(text));
            h.run();
            QCOMPARE(h.env.echo.sent.size(), 2);  // one probe per server
            QCOMPARE(h.hops(), (QList<qint32>{1, 0}));
            QCOMPARE(QStringList({h.hopColumn(0), h.hopColumn(1)}), QStringList({u" -   1 "_s, u" -     "_s}));
            QCOMPARE(h.ttl->text(), QLatin1String(text));
        }
        // Edited during the run: the trace stops once the counter passes the new value.
        // (A silent server would be retried until the tick rule fires, seconds later.)
        h.env.echo.script.remove(u"127.0.60.5"_s);
        h.ttl->setText(u"90"_s);
        h.env.echo.sent.clear();
        h.env.echo.onSend = [&h] {
            if (h.env.echo.sent.size() == 2)
                h.ttl->setText(u"2"_s);
        };
        h.run();
        QCOMPARE(h.env.echo.sent.value(2).first, u"127.0.60.5"_s);
        QCOMPARE(h.hops(), (QList<qint32>{2, 1}));  // 127.0.60.4 only ever answers from a router
    }

    // Each trace stores its count in the records of its own origin only; records of
    // the same address on another port count as the same host.
    void originsOfOneAddress()
    {
        Hops h;
        h.add(10, "127.0.60.6", 27910, true, 9);
        h.add(20, "127.0.60.6", 27910, false, 9);
        h.add(30, "127.0.60.6", 27911, false, 9);
        h.add(40, "127.0.60.7", 27910, true, 9);
        h.env.echo.script[u"127.0.60.6"_s] = {arrives(), router("127.0.61.1"), arrives()};
        h.run();
        // The favorite row's trace answers at once. Both web-list rows trace the
        // address; the last trace (answered at once) sets both records, while the
        // second row keeps the text of its own trace.
        QCOMPARE(h.hops(), (QList<qint32>{1, 1, 1, 1}));
        QCOMPARE(h.list->rowText(0).at(5), QChar(u'*'));
        QCOMPARE(QStringList({h.hopColumn(0), h.hopColumn(1), h.hopColumn(2)}), QStringList({u" -   1 "_s, u" -   2 "_s, u" -   1 "_s}));
    }

    // A Fav Refresh pressed while Count Hops runs leaves Count Hops cancellable and
    // the window still refusing to close (the controls' rule: tst_controlstates).
    void favRefreshInsideCountHops()
    {
        Hops h;
        h.add(10, "127.0.60.21", 27910, false);
        h.add(20, "127.0.60.22", 27910, false);
        h.env.echo.script[u"127.0.60.21"_s] = {router("127.0.61.1"), router("127.0.61.2"), arrives()};
        bool checked = false;
        h.env.echo.onSend = [&h, &checked] {
            if (h.env.echo.sent.size() != 2)
                return;
            QTimer::singleShot(0, [&h, &checked] {
                QVERIFY(h.button("favRefreshButton_")->isEnabled() && !h.button("refreshButton_")->isEnabled());
                QTest::mouseClick(h.button("favRefreshButton_"), Qt::LeftButton);  // no favorites: ends at once
                QVERIFY(h.button("cancelButton_")->isEnabled() && !h.window->close());
                QVERIFY(h.window->windowTitle().endsWith(u"CAN'T CLOSE BEFORE CANCEL!"_s));
                h.button("cancelButton_")->click();
                checked = true;
            });
        };
        h.run();
        QVERIFY(checked);
        h.verifyRestored();
    }

    // With Fast Refresh on, every row at once: a router that never answers is not
    // counted, a server that never answers gets the TTL box's number, and the lines
    // come one per answered probe, row after row. Cancel keeps the rows finished.
    void fastRefreshCountsEveryRowAtOnce()
    {
        Hops h;
        h.add(10, "127.0.60.31", 27910, false);
        h.add(20, "127.0.60.32", 27910, true);
        h.add(30, "127.0.60.33", 27910, false);
        h.env.echo.script[u"127.0.60.31"_s] = {arrives()};
        h.env.echo.routes[u"127.0.60.32"_s] = {u"127.0.61.1"_s, QString(), u"127.0.61.3"_s};
        h.env.echo.script[u"127.0.60.32"_s] = {arrives(12)};
        h.env.echo.script[u"127.0.60.33"_s] = {kSilent};
        h.ttl->setText(u"12"_s);
        MainWindowDriver::trigger(*h.window, "fastRefreshAction_");
        h.run();
        QCOMPARE(h.log(), (QStringList{u"Trace Route: Hop 1 127.0.60.31 time=9 ms."_s, u"Trace Route: Hop 1 127.0.61.1 time=5 ms."_s,
                                       u"Trace Route: Hop 3 127.0.61.3 time=15 ms."_s, u"Trace Route: Hop 4 127.0.60.32 time=12 ms."_s}));
        QCOMPARE(h.logList->selectedRow(), 3);
        QCOMPARE(h.hops(), (QList<qint32>{1, 4, 12}));
        QCOMPARE(QStringList({h.hopColumn(0), h.hopColumn(1), h.hopColumn(2)}), QStringList({u" -   1 "_s, u" -   4 "_s, u" -  12 "_s}));
        QList<int> silentTtls;
        for (const auto &[destination, ttl] : h.env.echo.sent) {
            QVERIFY(ttl >= 1 && ttl <= 12);
            if (destination == u"127.0.60.33"_s)
                silentTtls << ttl;
        }
        std::sort(silentTtls.begin(), silentTtls.end());
        QCOMPARE(silentTtls, (QList<int>{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}));  // each once
        QCOMPARE(h.env.echo.timeouts, QList<int>(h.env.echo.sent.size(), 2700));
        h.verifyRestored();

        // Cancel once the first server is done and the silent one still has probes to go.
        Hops c;
        c.add(10, "127.0.60.34", 27910, false, 7);
        c.add(20, "127.0.60.35", 27910, false, 7);
        c.env.echo.script[u"127.0.60.35"_s] = {kSilent};
        c.env.echo.onSend = [&c] {
            if (c.env.echo.sent.size() == 11)
                QTimer::singleShot(0, c.button("cancelButton_"), &QPushButton::click);
        };
        MainWindowDriver::trigger(*c.window, "fastRefreshAction_");
        c.run();
        QCOMPARE(c.hops(), (QList<qint32>{1, 7}));
        QCOMPARE(c.log(), QStringList{u"Trace Route: Hop 1 127.0.60.34 time=10 ms."_s});
        QVERIFY(c.env.echo.sent.size() < 31);
        c.verifyRestored();
    }

    void cancelDuringTheThirdOfFive()
    {
        Hops h;
        for (int i = 1; i <= 5; ++i)
            h.add(10 * i, qPrintable(u"127.0.60.1%1"_s.arg(i)), 27910, false, 7);
        h.env.echo.script[u"127.0.60.13"_s] = {router("127.0.61.1"), router("127.0.61.2"), router("127.0.61.3"), arrives()};
        h.env.echo.onSend = [&h] {
            if (h.env.echo.sent.size() == 4)  // the second probe of the third server
                QTimer::singleShot(0, h.button("cancelButton_"), &QPushButton::click);
        };
        const QStringList before = h.list->texts();
        h.run();
        QCOMPARE(h.env.echo.sent.size(), 4);
        QCOMPARE(h.hops(), (QList<qint32>{1, 1, 2, 7, 7}));  // the third: counter - 1 at the moment of the cancel
        QCOMPARE(h.hopColumn(2), u" -   2 "_s);
        QCOMPARE(h.list->texts().mid(3), before.mid(3));
        h.verifyRestored();
    }
};

QTEST_MAIN(TestCountHops)
#include "tst_counthops.moc"
