#include "support/demoservers.h"
#include "support/listwebserver.h"
#include "support/testsupport.h"

#include "finder/findwindow.h"
#include "serverlist/refreshsession.h"
#include "shell/seams.h"
#include "shell/trayicon.h"
#include "shell/helpwindow.h"
#include "shell/splashwindow.h"
#include "shell/itemlist.h"
#include "shell/mainwindow.h"
#include "shell/ticker.h"
#include "shell/waiting.h"

#include <QAccessible>
#include <QCheckBox>
#include <QPlainTextEdit>
#include <QAction>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QTextBrowser>
#include <QtTest>

#include <ctime>

using namespace Qt::StringLiterals;

namespace {
SplashWindow *visibleSplash()
{
    for (QWidget *top : QApplication::topLevelWidgets())
        if (auto *s = qobject_cast<SplashWindow *>(top); s && s->isVisible())
            return s;
    return nullptr;
}

template <typename T = QWidget>
T *child(const std::unique_ptr<MainWindow> &w, const char *name)
{
    T *found = w->findChild<T *>(QLatin1String(name));
    if (!found)
        qFatal("no control %s", name);
    return found;
}

QString heard(QObject *control)
{
    QAccessibleInterface *iface = QAccessible::queryAccessibleInterface(control);
    return iface ? iface->text(QAccessible::Name) : QStringLiteral("<no interface>");
}

// A tray that records its notifications.
class NotingTray : public TrayIcon {
public:
    using TrayIcon::TrayIcon;
    void add(const QIcon &, const QString &) override { shown = true; }
    void remove() override { shown = false; }
    bool isShown() const override { return shown; }
    void notify(const QString &, const QString &text) override { notes << text; }
    bool shown = false;
    QStringList notes;
};

// The main window and a list web server with game servers on loopback.
struct Lab {
    explicit Lab(const QList<Demo::Server> &servers)
    {
        QStringList lines;
        for (const Demo::Server &s : servers)
            lines << s.address.toString();
        started = startDemo(network, servers, lines);
        child<QComboBox>(window, "listLocationBox_")->setEditText(network.listUrl());
    }
    // `count` servers named "Server 1" up.
    Lab(const char *subnet, int count, const char *protocol = "silent") : Lab(servers(subnet, count, protocol)) {}
    static QList<Demo::Server> servers(const char *subnet, int count, const char *protocol)
    {
        QList<Demo::Server> all;
        for (int i = 1; i <= count; ++i)
            all << demoServer(QLatin1String(subnet) + QString::number(i), QLatin1String(protocol), u"Server %1"_s.arg(i));
        return all;
    }
    QPushButton *button(const char *name) { return child<QPushButton>(window, name); }
    TestEnvironment env;
    Demo::Network network;
    bool started = false;
    std::unique_ptr<MainWindow> window = newMainWindow();
};
}

class TestMainWindow : public QObject {
    Q_OBJECT
private slots:
    void startingStateAndPingMode()
    {
        TestEnvironment env;
        auto w = newMainWindow();
        struct Button { const char *name, *caption; bool enabled; };
        for (const Button &b : {Button{"refreshButton_", "Refresh List", true}, Button{"favRefreshButton_", "Fav Refresh", true},
                                Button{"cancelButton_", "Cancel", false}, Button{"addFavoriteButton_", "Add to Favorites", false},
                                Button{"countHopsButton_", "Count Hops", false}, Button{"serverInfoButton_", "Server Info", false}}) {
            auto *button = child<QPushButton>(w, b.name);
            QVERIFY2(button->text() == QLatin1String(b.caption) && button->isEnabled() == b.enabled, b.name);
        }
        QCOMPARE(child<QLineEdit>(w, "pingLimitEdit_")->text(), QStringLiteral("230"));
        QCOMPARE(child<QLineEdit>(w, "ttlEdit_")->text(), QStringLiteral("90"));
        QVERIFY(!child<QLineEdit>(w, "serverAddressEdit_")->isEnabled());
        QVERIFY(child<QComboBox>(w, "listLocationBox_")->isEditable());
        QVERIFY(child<QLabel>(w, "listCountLabel_")->text().isEmpty());
        QVERIFY(child<QAction>(w, "quickPingAction_")->isChecked() && !child<QAction>(w, "fullPingAction_")->isChecked());
        child<QAction>(w, "updateMasterAction_")->trigger();
        QCOMPARE(env.prompts.texts(), QStringList{QStringLiteral("not available yet")});
    }

    // A refresh through the buttons: the control rule applied while it runs
    // (tst_controlstates has every control), rows and "Done..." come.
    void refreshThroughTheButtons()
    {
        Lab lab("127.0.21.", 3, "34");
        QVERIFY(lab.started);
        int runningSends = 0;
        lab.env.echo.onSend = [&] {
            runningSends += lab.button("cancelButton_")->isEnabled() && !lab.button("refreshButton_")->isEnabled()
                            && child(lab.window, "progressBar_")->isVisible();
        };
        QTest::mouseClick(lab.button("refreshButton_"), Qt::LeftButton);
        QCOMPARE(runningSends, 3);
        QCOMPARE(child<ItemList>(lab.window, "serverList_")->texts().size(), 3);  // the session tests check their text
        QCOMPARE(child<ItemList>(lab.window, "logList_")->texts().size(), 3);
        QCOMPARE(child<QLineEdit>(lab.window, "serverAddressEdit_")->text(), QStringLiteral("127.0.21.3"));
        QVERIFY(lab.button("countHopsButton_")->isEnabled() && !lab.button("cancelButton_")->isEnabled());
        QVERIFY(child(lab.window, "progressBar_")->isHidden() && lab.window->activity().isIdle());

        // The screen reader hears what is shown.
        for (const auto &[label, text] : {std::pair{"statusLabel_", "Done..."}, {"listCountLabel_", "3"}})
            QVERIFY2(child<QLabel>(lab.window, label)->text() == QLatin1String(text)
                         && heard(child(lab.window, label)) == QLatin1String(text), label);
        QCOMPARE(heard(child(lab.window, "pingLimitEdit_")), child<QLabel>(lab.window, "pingLimitLabel_")->text());
        QCOMPARE(heard(child(lab.window, "ttlEdit_")), child<QLabel>(lab.window, "ttlLabel_")->text());
        auto *location = child<QComboBox>(lab.window, "listLocationBox_");
        QCOMPARE(heard(location), location->currentText());
        const auto labels = QAccessible::queryAccessibleInterface(location)->relations(QAccessible::Label);
        QVERIFY(!labels.isEmpty() && labels.first().first->object() == child(lab.window, "listLocationLabel_"));
        QCOMPARE(heard(lab.button("favRefreshButton_")), QStringLiteral("Fav Refresh"));
    }

    // Refresh List with a location on a standard web server (Python's, with a
    // query string as q2servers.com's) lists its servers.
    void refreshFromAStandardWebServer()
    {
        Lab lab("127.0.25.", 3, "34");
        ListWebServer web;
        if (const QString why = web.start(); !why.isEmpty())
            QSKIP(qPrintable(why));
        QVERIFY(lab.started && web.put(QStringLiteral("servers"), "127.0.25.1\n127.0.25.2:27910\n127.0.25.3\n"));
        child<QComboBox>(lab.window, "listLocationBox_")->setEditText(web.url(QStringLiteral("servers?raw=1")));
        QTest::mouseClick(lab.button("refreshButton_"), Qt::LeftButton);
        QCOMPARE(child<ItemList>(lab.window, "serverList_")->texts().size(), 3);
        QCOMPARE(child<QLabel>(lab.window, "statusLabel_")->text(), QStringLiteral("Done..."));
        QCOMPARE(child<QLabel>(lab.window, "listCountLabel_")->text(), QStringLiteral("3"));
        QVERIFY(lab.env.prompts.shown.isEmpty());
    }

    // While a run goes, the close is refused and a pick of a row leaves Server Info off;
    // Cancel allows both, and the close then ends everything at once.
    void closeAndRowPickDuringARun()
    {
        Lab lab("127.0.22.", 10);
        QVERIFY(lab.started);
        auto *list = child<ItemList>(lab.window, "serverList_");
        auto *serverInfo = lab.button("serverInfoButton_");
        bool refusedSeen = false, offWhileRunning = false, onAfterCancel = false;
        lab.env.echo.onSend = [&] {
            if (lab.env.echo.sent.size() != 3)
                return;
            QTimer::singleShot(0, [&] {
                list->selectRow(0);  // a row of this run
                offWhileRunning = !serverInfo->isEnabled();
                QVERIFY(!lab.window->close());
                child<QAction>(lab.window, "exitAction_")->trigger();  // Exit goes through the same rule
                refusedSeen = lab.window->isVisible();
                QTest::mouseClick(lab.button("cancelButton_"), Qt::LeftButton);
                QTest::keyClick(list, Qt::Key_Down);
                onAfterCancel = serverInfo->isEnabled();
                QVERIFY(lab.window->close());
            });
        };
        QElapsedTimer clock;
        clock.start();
        QTest::mouseClick(lab.button("refreshButton_"), Qt::LeftButton);
        QVERIFY(clock.elapsed() < 2000);
        QVERIFY(refusedSeen && offWhileRunning && onAfterCancel);
        QVERIFY(serverInfo->isEnabled());  // the end of the run leaves it as the pick made it
        QCOMPARE(lab.window->windowTitle(), QStringLiteral("Pulsebox Server Kit - CAN'T CLOSE BEFORE CANCEL!"));
        QVERIFY(!lab.window->isVisible());
        QVERIFY(waitsAbandoned());  // the run still on the stack unwound at once
        QCOMPARE(lab.env.echo.sent.size(), 3);
    }

    // The splash holds the start-up for about two seconds, or until it is clicked.
    void startUpWaitsForTheSplash_data()
    {
        QTest::addColumn<bool>("click");
        QTest::newRow("clicked") << true;
        QTest::newRow("not clicked") << false;
    }

    void startUpWaitsForTheSplash()
    {
        QFETCH(bool, click);
        TestEnvironment env(1.0);  // real seconds
        MainWindow w;
        if (click)
            QTimer::singleShot(300, [] {
                SplashWindow *splash = visibleSplash();
                QVERIFY(splash);
                QCOMPARE(splash->findChild<QLabel *>(QStringLiteral("versionLabel_"))->text(), QStringLiteral("Version 1.1.1"));
                QCOMPARE(splash->findChild<QLabel *>(QStringLiteral("riskLabel_"))->text(), QStringLiteral("Use at your own risk."));
                QCOMPARE(splash->findChild<QLabel *>(QStringLiteral("platformLabel_"))->text(), QStringLiteral("Win95"));
                QVERIFY(!(splash->windowFlags() & Qt::FramelessWindowHint));  // a fixed dialog border
                QTest::mouseClick(splash->findChild<QLabel *>(QStringLiteral("logo_")), Qt::LeftButton);
            });
        QElapsedTimer clock;
        clock.start();
        w.start();
        const qint64 waited = clock.elapsed();
        QVERIFY2(click ? waited < 1500 : waited >= 1500 && waited < 15000, qPrintable(QString::number(waited)));
        QVERIFY(!visibleSplash());
        QCOMPARE(w.findChild<Ticker *>(u"splashTicker_"_s)->interval(), 0);
        auto *location = w.findChild<QComboBox *>(u"listLocationBox_"_s);
        QCOMPARE(location->count(), 7);
        QCOMPARE(location->itemText(0), location->currentText());
        QCOMPARE(location->itemText(1), QStringLiteral("http://127.0.0.1/"));
        QCOMPARE(location->itemText(2), QStringLiteral("master://127.0.0.1:27900"));
        QCOMPARE(location->itemText(4), QStringLiteral("http://q2servers.com/?raw=1"));  // the first real-world one
    }

    void aboutAndHelp()
    {
        TestEnvironment env;
        auto w = newMainWindow();
        child<QAction>(w, "aboutAction_")->trigger();
        QPointer<SplashWindow> about = visibleSplash();
        QVERIFY(about);
        QTest::keyClick(about, Qt::Key_Space);
        QTRY_VERIFY(!about || !about->isVisible());

        child<QAction>(w, "contentsAction_")->trigger();
        HelpWindow *help = HelpWindow::showHelp();
        QVERIFY(help->isVisible());
        const QString text = help->text();
        for (const char *topic : {"Refresh List", "Fav Refresh", "Server Info", "Add to Favorites", "Settings",
                                  "Quick Ping", "Favorites", "Update Master List", "Find and Filter", "Friends..."})
            QVERIFY2(text.contains(QLatin1String(topic)), topic);
        help->close();
    }

    // The player search and the filters hide rows and never change them; friends
    // are marked beside their rows and counted; while iconized, the friends watch's
    // Fav Refresh tells through the tray who joined since the refresh before.
    void findFilterAndFriends()
    {
        Lab lab({demoServer(u"127.0.23.1"_s, u"34"_s, u"Arena"_s, {{u"[Q2]Vector"_s, 3, 40}, {u"Bot"_s, 0, 0}}),
                 demoServer(u"127.0.23.2"_s, u"34"_s, u"Bots"_s, {{u"Bot1"_s, 0, 0}, {u"Bot2"_s, 0, 0}}),
                 demoServer(u"127.0.23.3"_s, u"34"_s, u"Empty"_s)});
        QVERIFY(lab.started);
        MainWindow &w = *lab.window;
        QVERIFY(child(lab.window, "friendsOnlineLabel_")->isHidden());

        child<QAction>(lab.window, "findAction_")->trigger();
        auto *search = child<QLineEdit>(lab.window, "playerSearchEdit_");
        QVERIFY(search->isVisible() && !search->toolTip().isEmpty());
        QCOMPARE(heard(search), u"Player name:"_s);  // named by its label
        QTest::mouseClick(lab.button("refreshButton_"), Qt::LeftButton);  // the window open: players are asked
        auto *list = child<ItemList>(lab.window, "serverList_");
        auto *count = child<QLabel>(lab.window, "listCountLabel_");
        const QStringList rows = list->texts();
        QCOMPARE(rows.size(), 3);
        QCOMPARE(count->text(), u"3"_s);
        const auto shown = [&] {
            QStringList names;
            for (int row = 0; row < list->count(); ++row)
                if (!list->item(row)->isHidden())
                    names << list->rowText(row).mid(31, 6).trimmed();
            return names.join(u',');
        };

        QTest::keyClicks(search, u"VEC"_s);
        QCOMPARE(shown(), u"Arena"_s);
        QCOMPARE(count->text(), u"1 of 3"_s);
        search->clear();
        QCOMPARE(count->text(), u"3"_s);
        child<QCheckBox>(lab.window, "hideBotsCheck_")->click();
        QCOMPARE(shown(), u"Arena,Empty"_s);  // each filter's rule: tst_textroutines
        QVERIFY(readFile(u"Pulsebox.filters"_s).contains("hideEmpty=0\nhideFull=0\nhideOnlyBots=1\n"));
        child<QCheckBox>(lab.window, "hideBotsCheck_")->click();
        QCOMPARE(shown(), u"Arena,Bots,Empty"_s);
        QCOMPARE(list->texts(), rows);  // never a changed row

        // Friends: Escape cancels the editor; saved as typed, marked in the row's
        // margin (the text neither moves nor grows), counted.
        const int arena = static_cast<int>(rows.indexOf(rows.filter(u"Arena"_s).value(0)));
        const QRect arenaRect = list->visualItemRect(list->item(arena));
        QTest::mouseClick(child<QPushButton>(lab.window, "friendsButton_"), Qt::LeftButton);
        QTest::keyClick(child<QPlainTextEdit>(lab.window, "namesEdit_"), Qt::Key_Escape);
        QTRY_VERIFY(!w.findChild<QWidget *>(u"FriendsDialog"_s));
        QTest::mouseClick(child<QPushButton>(lab.window, "friendsButton_"), Qt::LeftButton);
        child<QPlainTextEdit>(lab.window, "namesEdit_")->setPlainText(u"mynx\n vector \n"_s);
        QTest::mouseClick(child<QPushButton>(lab.window, "saveButton_"), Qt::LeftButton);
        QCOMPARE(readFile(u"Pulsebox.friends"_s), QByteArray("mynx\nvector\n"));
        auto *online = child<QLabel>(lab.window, "friendsOnlineLabel_");
        QVERIFY(online->isVisible());
        QCOMPARE(online->text(), u"1 friend online"_s);
        QCOMPARE(heard(online), u"1 friend online"_s);
        QCOMPARE(list->texts(), rows);
        QCOMPARE(list->visualItemRect(list->item(arena)), arenaRect);
        const QImage drawn = list->viewport()->grab().toImage();
        const auto edge = [&](int row) { return drawn.pixel(0, list->visualItemRect(list->item(row)).center().y()); };
        QVERIFY(edge(arena) != edge(arena == 0 ? 1 : 0));
        QCOMPARE(list->item(arena)->data(Qt::AccessibleDescriptionRole).toString(), u"Friends here: [Q2]Vector"_s);

        // The watch: on, iconized; Mynx joins Bots before its Fav Refresh (through
        // the probe engine this time).
        child<QAction>(lab.window, "fastRefreshAction_")->trigger();
        child<QCheckBox>(lab.window, "watchCheck_")->click();
        w.setFavorites({{u"127.0.23.1"_s, u"a"_s}, {u"127.0.23.2"_s, u"b"_s}});
        QPointer<NotingTray> tray;
        Seams::setTrayMaker([&tray](QWidget *owner) { return tray = new NotingTray(owner); });
        auto *finder = w.findChild<QWidget *>(u"FindWindow"_s);
        QVERIFY(finder->isVisible());
        child<QAction>(lab.window, "iconizeAction_")->trigger();
        Seams::setTrayMaker({});
        QVERIFY(tray && !w.isVisible() && !finder->isVisible());  // Find and Filter goes along
        auto *watch = w.findChild<Ticker *>(u"friendsWatchTicker_"_s);
        QCOMPARE(watch->interval(), 300 * 1000);
        lab.network.gameServers()[1]->setPlayers({{u"Bot1"_s, 0, 0}, {u"Mynx"_s, 2, 70}});
        emit watch->timeout();
        QCOMPARE(tray->notes, QStringList{u"Mynx joined Bots"_s});
        QCOMPARE(online->text(), u"2 friends online"_s);
        emit watch->timeout();  // nobody new
        QCOMPARE(tray->notes.size(), 1);
        emit tray->mouseEvent(TrayIcon::kLeftDoubleClick);
        QTRY_VERIFY(w.isVisible());
        QVERIFY(finder->isVisible());
        QCOMPARE(watch->interval(), 0);
        // Both favorites are listed too: two rows each, each friend counted once;
        // while the refresh runs, the count starts again from 0 with the rows.
        auto *session = w.findChild<RefreshSession *>();
        QString during;
        connect(session, &RefreshSession::probingStarted, session, [&] { during = online->text(); });
        QTest::mouseClick(lab.button("refreshButton_"), Qt::LeftButton);
        QCOMPARE(during, u"0 friends online"_s);
        QCOMPARE(list->count(), 5);
        QCOMPARE(online->text(), u"2 friends online"_s);
        QTest::keyClick(search, Qt::Key_Escape);
        QVERIFY(!finder->isVisible());

        // Without a tray, the stand-in square shows the message as a note that
        // screen readers hear.
        StandInTray standIn;
        standIn.add(QIcon(), u"Pulsebox 1.1"_s);
        standIn.notify(u"Pulsebox"_s, u"Mynx joined Bots"_s);
        QVERIFY(standIn.note() && standIn.note()->isVisible());
        QCOMPARE(heard(standIn.note()), u"Mynx joined Bots"_s);
    }

    // After a refresh that did not ask for players, the search's hint comes and
    // goes without moving or squeezing a field; every control of the Find window
    // and the Friends editor has its own Alt key.
    void findWindowLayoutCountsAndKeys()
    {
        Lab lab({demoServer(u"127.0.26.1"_s, u"34"_s, u"Arena"_s, {{u"Vector"_s, 3, 40}})});
        QVERIFY(lab.started);
        QTest::mouseClick(lab.button("refreshButton_"), Qt::LeftButton);  // no finder yet: no players asked
        child<QAction>(lab.window, "findAction_")->trigger();
        auto *finder = lab.window->findChild<QWidget *>(u"FindWindow"_s);
        QVERIFY(QTest::qWaitForWindowExposed(finder));
        const auto geometries = [finder] {
            QList<QRect> all;
            for (const char *name : {"playerSearchEdit_", "versionBox_", "mapEdit_", "maxPingBox_", "hideBotsCheck_"})
                all << finder->findChild<QWidget *>(QLatin1String(name))->geometry();
            return all;
        };
        const QList<QRect> before = geometries();
        QTest::keyClicks(child<QLineEdit>(lab.window, "playerSearchEdit_"), u"vec"_s);
        auto *hint = child<QLabel>(lab.window, "playersHintLabel_");
        auto *shown = child<QLabel>(lab.window, "shownLabel_");
        QVERIFY(hint->isVisible());
        QCOMPARE(shown->text(), u"Showing 0 of 1 rows"_s);  // rows, as the list count counts them
        QCOMPARE(geometries(), before);
        child<QLineEdit>(lab.window, "playerSearchEdit_")->clear();
        QVERIFY(hint->isHidden());
        QCOMPARE(geometries(), before);

        QTest::mouseClick(child<QPushButton>(lab.window, "friendsButton_"), Qt::LeftButton);
        for (QWidget *window : {finder, lab.window->findChild<QWidget *>(u"FriendsDialog"_s)}) {
            QStringList keys;
            for (const QObject *control : window->findChildren<QObject *>(Qt::FindDirectChildrenOnly)) {
                const QVariant text = control->property("text");
                const QKeySequence key = QKeySequence::mnemonic(text.toString());
                if (text.isValid() && !key.isEmpty()) {
                    QVERIFY2(!keys.contains(key.toString()), qPrintable(text.toString()));
                    keys << key.toString();
                }
            }
            QVERIFY(keys.size() >= 3);
        }
    }

    // A friends file that cannot be read is said at start-up and kept: Save asks
    // before it replaces it.
    void unreadFriendsFileIsKept()
    {
        TestEnvironment env;
        const QByteArray huge(300 * 1024, 'x');
        writeFile(u"Pulsebox.friends"_s, huge);
        auto w = newMainWindow();
        w->start();
        QVERIFY(env.prompts.texts().join(u'|').contains(u"Could not read Pulsebox.friends: it is 307200 bytes long"_s));
        child<QAction>(w, "findAction_")->trigger();
        QTest::mouseClick(child<QPushButton>(w, "friendsButton_"), Qt::LeftButton);
        child<QPlainTextEdit>(w, "namesEdit_")->setPlainText(u"Vector"_s);
        QTest::mouseClick(child<QPushButton>(w, "saveButton_"), Qt::LeftButton);  // answered No
        QCOMPARE(env.prompts.shown.last().kind, u"question"_s);
        QCOMPARE(readFile(u"Pulsebox.friends"_s), huge);
        env.prompts.answers << true;
        QTest::mouseClick(child<QPushButton>(w, "saveButton_"), Qt::LeftButton);
        QCOMPARE(readFile(u"Pulsebox.friends"_s), QByteArray("Vector\n"));
    }

    void waitingSleepsInsteadOfSpinning()
    {
        TestEnvironment env(1.0);
        Ticker ticker;
        int ticks = 0;
        connect(&ticker, &Ticker::timeout, this, [&ticks] { ++ticks; });
        ticker.setInterval(1000);
        const std::clock_t cpuBefore = std::clock();  // this process's processor time
        QElapsedTimer clock;
        clock.start();
        waitUntil([&ticks] { return ticks >= 2; });
        const double cpu = static_cast<double>(std::clock() - cpuBefore) / CLOCKS_PER_SEC;
        QVERIFY(clock.elapsed() >= 1900);
        qInfo() << "CPU over a two-tick wait:" << cpu * 1000 << "ms";
        QVERIFY2(cpu < 0.1, "a two-second wait must stay well under 5% of a core");
    }
};

QTEST_MAIN(TestMainWindow)
#include "tst_mainwindow.moc"
