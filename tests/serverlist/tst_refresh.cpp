#include "support/testsupport.h"

#include "demonet/demonetwork.h"
#include "probes/address.h"
#include "shell/frmpulsebox.h"
#include "shell/pulseboxmod.h"
#include "shell/serverrow.h"
#include "shell/vblist.h"

#include <QAccessible>
#include <QAction>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QtTest>

namespace {
Demo::Server fake(const char *address, quint16 port, const char *protocol, const char *name, int players = 0)
{
    Demo::Server s;
    s.address = QHostAddress(QLatin1String(address));
    s.port = port;
    s.protocol = QLatin1String(protocol);
    s.hostName = QLatin1String(name);
    s.map = QStringLiteral("q2dm1");
    for (int i = 0; i < players; ++i)
        s.players.append({QStringLiteral("p%1").arg(i), i, 50});
    return s;
}

// `count` game servers that never answer a query, and the list naming them.
std::pair<QList<Demo::Server>, QStringList> silentServers(const char *subnet, int count)
{
    std::pair<QList<Demo::Server>, QStringList> made;
    for (int i = 1; i <= count; ++i) {
        const QByteArray address = subnet + QByteArray::number(i);
        made.first << fake(address.constData(), 27910, "silent", "S");
        made.second << QString::fromLatin1(address);
    }
    return made;
}

ScriptedEcho::Outcome ms(quint32 rtt) { return {1, 0, rtt}; }
const ScriptedEcho::Outcome kTimedOut{0, 11010, 0};

// The main window, a list web server and game servers on loopback.
struct Refresh {
    explicit Refresh(const QList<Demo::Server> &servers, const QStringList &listLines)
    {
        Demo::Config config;
        config.httpPort = 0;
        config.servers = servers;
        config.listLines = listLines;
        QString error;
        started = network.start(config, &error, true);
        window->Text1->setEditText(network.listUrl());
    }
    explicit Refresh(const std::pair<QList<Demo::Server>, QStringList> &servers) : Refresh(servers.first, servers.second) {}
    void addFavorite(const QString &address) { window->appendFavorite(address, QStringLiteral("desc")); }
    QStringList rows() const { return window->List1->Texts(); }
    QStringList log() const { return window->lbReturn->Texts(); }
    // While a run goes only Cancel may start anything: the one guard against nesting.
    bool controlsAre(bool running) const
    {
        bool ok = window->Command1->isEnabled() == running && !window->Command6->isEnabled()
                  && window->mnuPing->menuAction()->isEnabled() != running
                  && window->mnuFastRefresh->isEnabled() != running && Mod().CancelRequested == 0;
        for (QWidget *w : std::initializer_list<QWidget *>{window->Command2, window->Command8, window->Command7,
                                                           window->cmAddFav, window->txTTL, window->Text4})
            ok = ok && w->isEnabled() != running;
        return ok && (running || (window->Shape1->isHidden() && window->Shape2->isHidden()));
    }
    void verifyIdleControls() const { QVERIFY(controlsAre(false)); }

    TestEnvironment env;
    Demo::Network network;
    bool started = false;
    std::unique_ptr<frmPulsebox> window = newMainWindow();
};

QString row(const char *ping, bool fav, const char *address, const char *name, const char *version,
            const char *map, const char *players)
{
    return ServerRow::format(QByteArray(ping).toLongLong(), fav, QLatin1String(address), QLatin1String(name),
                             QLatin1String(version), QLatin1String(map), QLatin1String(players));
}
}

class TestRefresh : public QObject {
    Q_OBJECT
private slots:
    void fullRefreshEndToEnd()
    {
        Refresh r({fake("127.0.11.1", 27910, "34", "Fav One", 2), fake("127.0.11.2", 27910, "31", "Fav Two"),
                   fake("127.0.11.3", 27910, "34", "Plain Address", 3), fake("127.0.11.4", 27911, "33", "Old Three Seventeen"),
                   fake("127.0.0.1", 27931, "34", "Named Host", 1), fake("127.0.11.5", 27910, "silent", "Quiet"),
                   fake("127.0.11.6", 27910, "34", "Too Far Away")},
                  {QStringLiteral("127.0.11.3"), QStringLiteral("127.0.11.4:27911"), QStringLiteral("LocalHost:27931"),
                   QString(), QStringLiteral("127.0.11.5"), QStringLiteral("127.0.11.6")});
        QVERIFY(r.started);
        r.addFavorite(QStringLiteral("127.0.11.1:27910"));
        r.addFavorite(QStringLiteral("127.0.11.2"));
        r.env.echo.script = {{QStringLiteral("127.0.11.1"), {ms(45)}}, {QStringLiteral("127.0.11.2"), {ms(12)}},
                             {QStringLiteral("127.0.11.3"), {ms(100)}}, {QStringLiteral("127.0.11.4"), {ms(230)}},
                             {QStringLiteral("127.0.0.1"), {ms(7)}}, {QStringLiteral("127.0.11.5"), {ms(60)}},
                             {QStringLiteral("127.0.11.6"), {ms(231)}}};

        QList<int> bar;  // the progress bar's width as each server is pinged (-1: hidden)
        int runningSends = 0;
        r.env.echo.onSend = [&] {
            bar << (r.window->Shape2->isVisible() ? r.window->Shape2->width() : -1);
            runningSends += r.controlsAre(true) ? 1 : 0;
        };

        QTest::mouseClick(r.window->Command2, Qt::LeftButton);

        const int full = r.window->Shape1->width();
        QCOMPARE(bar, (QList<int>{0, 0, 0, full / 6, 2 * full / 6, 3 * full / 6, 4 * full / 6, 5 * full / 6}));
        QCOMPARE(runningSends, bar.size());
        QCOMPARE(r.rows(), (QStringList{
            row("007", false, "127.0.0.1:27931", "Named Host", "3.19", "q2dm1", "1/ 8"),
            row("012", true, "127.0.11.2:27910", "Fav Two", "3.14", "q2dm1", "0/ 8"),
            row("045", true, "127.0.11.1:27910", "Fav One", "3.19", "q2dm1", "2/ 8"),
            row("060", false, "127.0.11.5:27910", "No", "3.14", "data", "returned"),
            row("100", false, "127.0.11.3:27910", "Plain Address", "3.19", "q2dm1", "3/ 8"),
            row("230", false, "127.0.11.4:27911", "Old Three Seventeen", "3.17", "q2dm1", "0/ 8")}));
        QCOMPARE(r.log(), (QStringList{
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
        QCOMPARE(r.window->Label14->text(), QStringLiteral("6"));
        QCOMPARE(r.window->Statusbar->text(), QStringLiteral("Done..."));
        QCOMPARE(r.window->txIPAddress->text(), QStringLiteral("127.0.11.6"));
        r.verifyIdleControls();

        const PulseboxMod &mod = Mod();
        QCOMPARE(mod.ServerCount, 6);
        QVERIFY(mod.Servers[0] == ServerRec{});  // row data 0 names no server
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
        QVERIFY(mod.Servers[1] == record("127.0.11.1", 27910, 45, "Fav One", "3.19 ", true));
        QVERIFY(mod.Servers[4] == record("127.0.11.4", 27911, 230, "Old Three Seventeen", "3.17 ", false));
        QVERIFY(mod.Servers[6] == record("127.0.11.5", 27910, 60, "No", "3.14 ", false));
        for (int i = 0; i < r.window->List1->ListCount(); ++i) {  // each row points at its own record
            const ServerRec &rec = mod.Servers[static_cast<size_t>(r.window->List1->ItemData(i))];
            QVERIFY(r.window->List1->List(i).contains(AddressToDotted(rec.Address) + u':' + QString::number(rec.Port)));
        }
        QCOMPARE(mod.PlayerCount, 1);
        QCOMPARE(mod.QueryMode, 1);
        QVERIFY(r.env.prompts.shown.isEmpty());
        QCOMPARE(r.env.echo.sent.first(), (QPair<QString, int>(QStringLiteral("127.0.11.1"), 90)));
    }

    void favoritesOnlyWithRegularPing()
    {
        Refresh r({fake("127.0.12.1", 27910, "34", "A"), fake("127.0.12.2", 27910, "34", "B"),
                   fake("127.0.12.3", 27910, "34", "C")}, {QStringLiteral("127.0.12.9")});
        r.addFavorite(QStringLiteral("127.0.12.1"));
        r.addFavorite(QStringLiteral("127.0.12.2"));
        r.addFavorite(QStringLiteral("127.0.12.3"));
        r.window->lbHost->AddItem(QStringLiteral("left over from an earlier refresh"));
        r.window->mnuqp[1]->trigger();
        r.env.echo.script = {{QStringLiteral("127.0.12.1"), {ms(40), ms(41), ms(43)}},
                             {QStringLiteral("127.0.12.2"), {ms(40), kTimedOut, ms(40)}},
                             {QStringLiteral("127.0.12.3"), {ms(41), ms(42), ms(42)}}};

        QTest::mouseClick(r.window->Command8, Qt::LeftButton);

        QVERIFY(r.network.lastRequest.isEmpty());  // no connection at all
        QCOMPARE(r.window->lbHost->ListCount(), 0);
        QCOMPARE(r.window->Label14->text(), QStringLiteral("0"));
        QCOMPARE(Mod().FavoritesOnly, qint16(0));
        QCOMPARE(r.log(), (QStringList{QStringLiteral("Reply from Fav 127.0.12.1: time =41ms. TTL=90"),
                                       QStringLiteral("Reply from 127.0.12.2: Failed code = 11010"),
                                       QStringLiteral("Reply from Fav 127.0.12.3: time =41ms. TTL=90")}));
        QCOMPARE(r.rows().size(), 2);
        QVERIFY(r.rows()[0].startsWith(QStringLiteral("041 -*127.0.12.1:27910")));
        QCOMPARE(Mod().Servers[1].PingMs, 41);
        QCOMPARE(Mod().Servers[2].PingMs, 42);  // 41.67 rounds up in the record, the row shows 41
        QVERIFY(r.rows()[1].startsWith(QStringLiteral("041 -*127.0.12.3:27910")));
        QCOMPARE(r.env.echo.sent.size(), 3 + 2 + 3);
        QCOMPARE(r.window->Statusbar->text(), QStringLiteral("Done..."));
        r.verifyIdleControls();

        // A time-to-live too short to reach the server: a router answers instead.
        r.window->txTTL->setText(QStringLiteral("1"));
        r.window->mnuqp[0]->trigger();
        r.env.echo.script = {{QStringLiteral("127.0.12.1"), {{1, 11013, 3}}}};
        r.env.echo.sent.clear();
        QTest::mouseClick(r.window->Command8, Qt::LeftButton);
        QCOMPARE(r.log().first(), QStringLiteral("Reply from 127.0.12.1: Failed code = 11013"));
        QCOMPARE(r.env.echo.sent.first().second, 1);
        QCOMPARE(r.env.echo.sent.size(), 3);  // Quick Ping: one echo each

        // The next Refresh List fetches again.
        QTest::mouseClick(r.window->Command2, Qt::LeftButton);
        QVERIFY(!r.network.lastRequest.isEmpty());
    }

    void cancelStopsAfterTheCurrentServer()
    {
        Refresh r(silentServers("127.0.13.", 10));
        QTimer watcher;
        bool refusedSeen = false;
        QObject::connect(&watcher, &QTimer::timeout, [&] {
            if (r.env.echo.sent.size() == 3 && r.window->Command1->isEnabled() && Mod().CancelRequested == 0) {
                QVERIFY(!r.window->close());  // refused while the refresh runs
                r.window->mnuExit->trigger();  // Exit goes through the same rule
                refusedSeen = r.window->isVisible();
                QTest::mouseClick(r.window->Command1, Qt::LeftButton);
            }
        });
        watcher.start(5);
        QTest::mouseClick(r.window->Command2, Qt::LeftButton);
        watcher.stop();
        QVERIFY(refusedSeen);
        QCOMPARE(r.window->windowTitle(), QStringLiteral("Pulsebox Server Kit - CAN'T CLOSE BEFORE CANCEL!"));
        QCOMPARE(r.env.echo.sent.size(), 3);
        QCOMPARE(r.rows().size(), 3);
        QCOMPARE(r.window->Statusbar->text(), QStringLiteral("Done..."));
        QCOMPARE(r.window->Label14->text(), QStringLiteral("10"));
        r.verifyIdleControls();
        QVERIFY(r.window->close());
    }

    void closingAfterCancelEndsTheRunAtOnce()
    {
        Refresh r(silentServers("127.0.14.", 5));
        QTimer::singleShot(30, [&] {
            QTest::mouseClick(r.window->Command1, Qt::LeftButton);
            QVERIFY(r.window->close());
        });
        QElapsedTimer clock;
        clock.start();
        QTest::mouseClick(r.window->Command2, Qt::LeftButton);
        QVERIFY(clock.elapsed() < 2000);
        QVERIFY(!r.window->isVisible());
        QVERIFY(r.env.echo.sent.size() <= 2);
    }

    // A list that cannot be had asks whether to go on with the favorites: No probes nothing, Yes the favorites.
    void listProblemsAskAboutFavorites_data()
    {
        QTest::addColumn<QString>("url");  // "closed": a port nothing listens on; empty: the demo list, empty
        QTest::addColumn<QString>("message");
        QTest::addColumn<QString>("status");  // after No
        QTest::addColumn<bool>("yes");
        for (bool yes : {false, true}) {
            const char *answer = yes ? " Yes" : " No";
            QTest::addRow("invalid URL%s", answer) << QStringLiteral("  ") << QStringLiteral("Invalid URL supplied.")
                                                   << QStringLiteral("Retreiving List....") << yes;
            QTest::addRow("unreachable%s", answer) << QStringLiteral("closed") << QStringLiteral("problem getting list of server")
                                                   << QStringLiteral("Problem getting list from server") << yes;
            QTest::addRow("empty list%s", answer) << QString() << QStringLiteral("No sites from web source list")
                                                  << QStringLiteral("No sites from web source list") << yes;
        }
    }

    void listProblemsAskAboutFavorites()
    {
        QFETCH(QString, url);
        QFETCH(QString, message);
        QFETCH(QString, status);
        QFETCH(bool, yes);
        Refresh r({fake("127.0.15.1", 27910, "34", "Fav")}, {});
        QVERIFY(r.started);
        r.addFavorite(QStringLiteral("127.0.15.1"));
        if (url == QStringLiteral("closed"))
            url = QStringLiteral("http://127.0.0.1:%1/quake2/gamespy.txt").arg(closedPort());
        if (!url.isNull())
            r.window->Text1->setEditText(url);
        r.env.prompts.answers = {yes};
        QTest::mouseClick(r.window->Command2, Qt::LeftButton);

        QCOMPARE(r.env.prompts.texts(), (QStringList{message, QStringLiteral("Do you want to continue trying favorites?")}));
        // A plain OK box without an icon, then the question with Yes and No, both titled "Pulsebox".
        QCOMPARE(r.env.prompts.shown[0].kind, QStringLiteral("message"));
        QCOMPARE(r.env.prompts.shown[0].icon, Prompter::Icon::None);
        QCOMPARE(r.env.prompts.shown[1].kind, QStringLiteral("question"));
        for (const auto &shown : r.env.prompts.shown)
            QCOMPARE(shown.title, QStringLiteral("Pulsebox"));
        QCOMPARE(r.window->Statusbar->text(), yes ? QStringLiteral("Done...") : status);
        QCOMPARE(r.rows().size(), yes ? 1 : 0);
        QCOMPARE(r.env.echo.sent.isEmpty(), !yes);
        r.verifyIdleControls();
    }

    void screenReaderHearsWhatIsShown()
    {
        Refresh r({fake("127.0.18.1", 27910, "34", "Heard")}, {});
        QVERIFY(r.started);
        r.addFavorite(QStringLiteral("127.0.18.1"));
        r.env.echo.script = {{QStringLiteral("127.0.18.1"), {ms(20)}}};
        const auto heard = [](QObject *control) {
            QAccessibleInterface *iface = QAccessible::queryAccessibleInterface(control);
            return iface ? iface->text(QAccessible::Name) : QStringLiteral("<no interface>");
        };
        QTest::mouseClick(r.window->Command8, Qt::LeftButton);
        QCOMPARE(r.window->Statusbar->text(), QStringLiteral("Done..."));
        QCOMPARE(heard(r.window->Statusbar), QStringLiteral("Done..."));
        QVERIFY(!r.window->Label14->text().isEmpty());  // the count, set by the run
        QCOMPARE(heard(r.window->Label14), r.window->Label14->text());
        // Boxes are named by their captions; buttons by their caption of the moment.
        QCOMPARE(heard(r.window->Text4), r.window->Label5->text());
        QCOMPARE(heard(r.window->txTTL), r.window->Label3->text());
        // An editable list box is heard by its text on Linux, and labelled by its caption.
        QCOMPARE(heard(r.window->Text1), r.window->Text1->currentText());
        const auto labels = QAccessible::queryAccessibleInterface(r.window->Text1)->relations(QAccessible::Label);
        QVERIFY(!labels.isEmpty() && labels.first().first->object() == r.window->Label4);
        QCOMPARE(heard(r.window->Command8), QStringLiteral("Fav Refresh"));
        r.window->Command8->setText(QStringLiteral("Pulse Arena"));
        QCOMPARE(heard(r.window->Command8), QStringLiteral("Pulse Arena"));
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
        Refresh r({}, {});
        Seams::setEcho(&noEcho);
        r.addFavorite(QStringLiteral("127.0.17.1"));
        r.addFavorite(QStringLiteral("127.0.17.2"));
        QTest::mouseClick(r.window->Command8, Qt::LeftButton);
        QTest::mouseClick(r.window->Command8, Qt::LeftButton);
        QCOMPARE(r.env.prompts.texts(), QStringList{QStringLiteral("no ICMP here: net.ipv4.ping_group_range")});
        QCOMPARE(r.log(), (QStringList{QStringLiteral("Reply from 127.0.17.1: Failed code = 11050"),
                                       QStringLiteral("Reply from 127.0.17.2: Failed code = 11050")}));
    }
};

QTEST_MAIN(TestRefresh)
#include "tst_refresh.moc"
