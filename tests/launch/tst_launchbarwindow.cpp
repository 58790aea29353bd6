// Iconize, the tray's clicks and the launcher bar, driven as a player would; and the
// bar's decisions (panel edges, placement, entries, status replies) without windows.
#include "support/demoservers.h"
#include "support/dialogsupport.h"
#include "support/testsupport.h"

#include "launch/launchbar.h"
#include "launch/launcherbar.h"
#include "probes/statuspopup.h"
#include "serverlist/serverentry.h"
#include "shell/activity.h"
#include "shell/taskbar.h"
#include "shell/ticker.h"
#include "shell/trayicon.h"
#include "shell/twips.h"

#include <QAction>
#include <QFrame>
#include <QGuiApplication>
#include <QMenu>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QSystemTrayIcon>
#include <QtTest>

using namespace Qt::StringLiterals;

namespace {
// A tray the test clicks on by emitting the icon's event numbers.
class FakeTray : public TrayIcon {
public:
    using TrayIcon::TrayIcon;
    void add(const QIcon &i, const QString &t) override { icon = i, tip = t, shown = true; }
    void remove() override { shown = false; }
    bool isShown() const override { return shown; }
    QIcon icon;
    QString tip;
    bool shown = false;
};

struct TrayMaker {
    explicit TrayMaker(bool fake)
    {
        if (fake)
            Seams::setTrayMaker([this](QWidget *owner) { return tray = new FakeTray(owner); });
    }
    ~TrayMaker() { Seams::setTrayMaker({}); }
    QPointer<FakeTray> tray;
};

LauncherBar *bar(QWidget &w) { return w.findChild<LauncherBar *>(); }

// A bar on `favorites`, with the launches it asks for recorded instead of made.
struct Bar {
    explicit Bar(const QList<Favorite> &favorites)
        : bar(new LauncherBar(favorites, activity, [this](const QString &target, const QString &prompt) {
              launches << target + u'|' + prompt;
          }, nullptr))
    {
        bar->setTaskbarEdge(u"BOTTOM"_s);
        bar->show();
    }
    ~Bar() { delete bar; }
    QList<QPushButton *> buttons() const { return bar->findChildren<QPushButton *>(u"launchButtons_"_s); }
    QPushButton *closeButton() const { return child<QPushButton>(*bar, "closeButton_"); }
    StatusPopup *popup() const { return bar->findChild<StatusPopup *>(); }
    QString launchFrom(int index)
    {
        QTest::mousePress(buttons()[index], Qt::RightButton);
        child<QAction>(*bar, "launchAction_")->trigger();
        return launches.takeLast();
    }
    // Clicks button `index` and returns once its query has ended.
    void query(int index)
    {
        QTest::mouseClick(buttons()[index], Qt::LeftButton);
        QTRY_VERIFY(!bar || !bar->isQuerying());
    }

    TestEnvironment env;
    Activity activity;
    QStringList launches;
    QPointer<LauncherBar> bar;
};

Demo::Server fake(const char *address, const QString &protocol, const QString &hostName)
{
    return demoServer(QLatin1String(address), protocol, hostName, {{u"Vector"_s, 21, 38}, {u"Doc Holiday"_s, 3, 120}});
}

const QString kPlayers = u"PLAYER STATUS:\n21 38 \"Vector\"\n3 120 \"Doc Holiday\"\n"_s;
}

class TestLaunchBarWindow : public QObject {
    Q_OBJECT
private slots:
    void iconizeAndTrayClicks()
    {
        TestEnvironment env;
        TrayMaker maker(true);
        auto w = newMainWindow();
        // The bar's descriptions are found through the item data, not by position.
        w->setFavorites({{u"127.0.0.2"_s, u"First"_s}, {u"127.0.0.3"_s, u"Second"_s}});
        MainWindowDriver::trigger(*w, "iconizeAction_");
        QVERIFY(!w->isVisible());
        QVERIFY(maker.tray && maker.tray->shown);
        QCOMPARE(maker.tray->tip, u"Pulsebox 1.1"_s);
        QVERIFY(!maker.tray->icon.isNull());

        // A single press: the half-second wait runs, then the bar opens and the icon stays.
        bool sawWait = false;
        QTimer::singleShot(0, [&] { sawWait = maker.tray->firstClickPending() && !bar(*w); });
        emit maker.tray->mouseEvent(TrayIcon::kLeftPress);
        QVERIFY(sawWait);
        QVERIFY(!maker.tray->firstClickPending());
        QVERIFY(bar(*w) && bar(*w)->isVisible());
        QVERIFY(bar(*w)->windowFlags().testFlag(Qt::WindowStaysOnTopHint));
        QVERIFY2(QGuiApplication::primaryScreen()->availableGeometry().contains(bar(*w)->frameGeometry()),
                 "the bar stays inside the work area");
        QStringList captions;
        for (QPushButton *b : bar(*w)->findChildren<QPushButton *>(u"launchButtons_"_s))
            captions << b->text();
        QCOMPARE(captions, (QStringList{u"First"_s, u"Second"_s}));
        QVERIFY(!w->isVisible() && maker.tray->shown);
        QTest::mouseClick(child<QPushButton>(*bar(*w), "closeButton_"), Qt::LeftButton);
        QTRY_VERIFY(!bar(*w));

        // A double click inside the wait: the main window is back, the icon gone, no bar.
        QTimer::singleShot(0, [&] { emit maker.tray->mouseEvent(TrayIcon::kLeftDoubleClick); });
        emit maker.tray->mouseEvent(TrayIcon::kLeftPress);
        QVERIFY(w->isVisible());
        QVERIFY(!maker.tray->shown);
        QTest::qWait(50);
        QVERIFY(!bar(*w));
    }

    void trayReasonsBecomeEventNumbers()
    {
        TestEnvironment env;
        SystemTray tray;
        bool pending = false;
        tray.setFirstClickPending([&] { return pending; });
        auto *icon = tray.findChild<QSystemTrayIcon *>();
        QList<int> numbers;
        connect(&tray, &TrayIcon::mouseEvent, this, [&](int n) { numbers.append(n); });
        emit icon->activated(QSystemTrayIcon::Trigger);
        emit icon->activated(QSystemTrayIcon::Context);
        emit icon->activated(QSystemTrayIcon::MiddleClick);
        QVERIFY(numbers.isEmpty());  // delivered from the event queue
        QTRY_COMPARE(numbers, QList<int>{TrayIcon::kLeftPress});
        // Inside a first click's wait, a second click is the double click, whether the
        // tray reports it as a click (StatusNotifier) or also as a double click (XEmbed).
        pending = true;
        emit icon->activated(QSystemTrayIcon::Trigger);
        emit icon->activated(QSystemTrayIcon::DoubleClick);
        QTRY_COMPARE(numbers.size(), 3);
        QCOMPARE(numbers.mid(1), (QList<int>{TrayIcon::kLeftDoubleClick, TrayIcon::kLeftDoubleClick}));
    }

    void standInWhereNoTray()
    {
        if (QSystemTrayIcon::isSystemTrayAvailable())
            QSKIP("this desktop has a tray; the stand-in is not used");
        TestEnvironment env;
        TrayMaker maker(false);
        auto w = newMainWindow();
        MainWindowDriver::trigger(*w, "iconizeAction_");
        QWidget *standIn = nullptr;
        for (QWidget *top : QApplication::topLevelWidgets())
            if (top->objectName() == u"trayStandIn"_s && top->isVisible())
                standIn = top;
        QVERIFY(standIn);
        QCOMPARE(standIn->toolTip(), u"Pulsebox 1.1"_s);
        QVERIFY(QGuiApplication::primaryScreen()->availableGeometry().contains(standIn->geometry()));

        QTest::mouseClick(standIn, Qt::LeftButton);
        QTRY_VERIFY(bar(*w) && bar(*w)->isVisible());
        QVERIFY(!w->isVisible());
        QTest::mouseDClick(standIn, Qt::LeftButton);
        QTRY_VERIFY(w->isVisible());
        QVERIFY(!standIn->isVisible());
    }

    void barBuiltFromFavorites()
    {
        const QString nuls(50, QChar(0));
        Bar b({{u"127.0.0.5:0"_s, nuls}, {u"Q2.Example.ORG"_s, u"  Named  "_s}, {u"127.0.0.7:27911"_s, u"Seven"_s}});
        // Captions and how each favorite reads are tested without windows; the heights
        // follow the count.
        QCOMPARE(b.bar->height(), Twips::px(930 + 1090));

        // The prompt carries the 50-character description (how each entry reads: favoritesBecomeEntries).
        QCOMPARE(b.launchFrom(0), u"127.0.0.5:27910|Launch to Server?\n"_s + nuls);
        child<QAction>(*b.bar, "chatAction_")->trigger();
        QCOMPARE(b.env.prompts.shown.last().text, u"Development not completed."_s);
        QCOMPARE(b.env.prompts.shown.last().title, u"Pulsebox"_s);

        // No favorites: 545 twips lower than designed, only "x" remains.
        Bar none({});
        QCOMPARE(none.bar->height(), Twips::px(930 - 545));
        QVERIFY(!none.buttons()[0]->isVisible());
        QVERIFY(none.closeButton()->isVisible());

        // Far more favorites than the screen holds: the bar stays inside it and scrolls.
        QList<Favorite> many;
        for (int i = 0; i < 70; ++i)
            many.append({u"127.0.1.%1"_s.arg(i), u"Server %1"_s.arg(i)});
        Bar tall(many);
        QCOMPARE(tall.buttons().size(), 70);
        QVERIFY(tall.bar->height() <= QGuiApplication::primaryScreen()->availableGeometry().height());
        QScrollBar *scroll = child<QScrollArea>(*tall.bar, "column_")->verticalScrollBar();
        QVERIFY(scroll->isVisible() && scroll->maximum() > 0);
        scroll->setValue(scroll->maximum());
        QWidget *last = tall.buttons().last(), *frame = child<QFrame>(*tall.bar, "frame_");
        QVERIFY(frame->rect().contains(QRect(last->mapTo(frame, QPoint(0, 0)), last->size())));
    }

    void statusQueryAndPopup()
    {
        Demo::GameServer named(fake("127.0.10.21", u"34"_s, u"Pulse Arena"_s));
        Demo::GameServer described(fake("127.0.10.22", u"34"_s, u"Ignored Name"_s));
        Demo::GameServer silent(fake("127.0.10.23", u"silent"_s, u"Quiet"_s));
        QString error;
        for (Demo::GameServer *s : {&named, &described, &silent})
            QVERIFY2(s->start(&error), qPrintable(error));
        Bar b({{u"127.0.10.21"_s, QString(50, QChar(0))}, {u"127.0.10.22:27910"_s, u"My Place"_s}, {u"127.0.10.23"_s, u"Hush"_s}});

        // During the query the bar marks it, and its other clicks are ignored.
        bool marked = false;
        QTimer::singleShot(0, [&] {
            marked = b.bar->isQuerying() && b.activity.isRunning(Activity::Kind::LauncherQuery);
            QTest::mouseClick(b.buttons()[1], Qt::LeftButton);
        });
        b.query(0);
        QVERIFY(marked);
        QVERIFY(b.activity.isIdle());
        QCOMPARE(named.received, QList<QByteArray>{QByteArray("\xff\xff\xff\xffstatus")});
        QVERIFY(described.received.isEmpty());
        // The address caption gives way to the server's name, for this load only.
        QCOMPARE(b.buttons()[0]->text(), u"Pulse Arena"_s);
        QVERIFY(b.popup() && b.popup()->isVisible());
        QCOMPARE(b.popup()->windowTitle(), u"Pulse Arena"_s);
        QCOMPARE(b.popup()->text(), kPlayers);
        QVERIFY(b.popup()->frameGeometry().right() < b.bar->frameGeometry().left());
        QCOMPARE(b.launchFrom(0), u"127.0.10.21:27910|Launch to Server?\n"_s + u"Pulse Arena"_s.leftJustified(50));

        // A described favorite keeps its caption; the same pop-up is reused.
        QPointer<StatusPopup> popup = b.popup();
        b.query(1);
        QCOMPARE(b.buttons()[1]->text(), u"My Place"_s);
        QCOMPARE(b.popup(), popup.data());
        QCOMPARE(popup->windowTitle(), u"My Place"_s);

        // A silent server: five ticks, then nothing changes and nothing is said.
        popup->hide();
        QElapsedTimer clock;
        clock.start();
        b.query(2);
        QCOMPARE(silent.received.size(), 1);
        QVERIFY(clock.elapsed() >= 5 * 1000 * 0.05 * 0.8);  // five ticks of the test's fast clock
        QVERIFY(!popup->isVisible());
        QVERIFY(b.env.prompts.shown.isEmpty());

        // "x" during a query hides the bar at once and closes it when the wait ends.
        QTest::mouseClick(b.buttons()[2], Qt::LeftButton);
        QTest::mouseClick(b.closeButton(), Qt::LeftButton);
        QVERIFY(b.bar && !b.bar->isVisible());
        QTRY_VERIFY(!b.bar);
        QVERIFY(!popup);
    }

    // Only the bar's own query blocks its clicks; the owner's runs do not, but the
    // bar never sends while a game query of the owner waits.
    void queriesNeverOverlap()
    {
        Demo::GameServer named(fake("127.0.10.31", u"34"_s, u"Pulse Arena"_s));
        QString error;
        QVERIFY2(named.start(&error), qPrintable(error));
        Bar b({{u"127.0.10.31"_s, u"Arena"_s}});

        Activity::Scope refresh(b.activity, Activity::Kind::Refresh);  // between two of its queries
        b.query(0);
        QCOMPARE(named.received.size(), 1);
        QCOMPARE(b.popup()->text(), kPlayers);

        b.popup()->close();
        b.activity.begin(Activity::Kind::ServerQuery);
        QTest::mouseClick(b.buttons()[0], Qt::LeftButton);
        QTest::qWait(100);
        QVERIFY(b.bar->isQuerying());
        QCOMPARE(named.received.size(), 1);  // held back
        b.activity.begin(Activity::Kind::CountHops);  // other changes do not release it
        QTest::qWait(50);
        QCOMPARE(named.received.size(), 1);
        b.activity.end(Activity::Kind::ServerQuery);
        QTRY_COMPARE(named.received.size(), 2);
        QTRY_VERIFY(!b.bar->isQuerying());
        QVERIFY(b.popup()->isVisible());
        b.activity.end(Activity::Kind::CountHops);

        // A query that waits for the owner's goes with the bar when "x" is pressed.
        b.activity.begin(Activity::Kind::ServerQuery);
        QTest::mouseClick(b.buttons()[0], Qt::LeftButton);
        QTest::mouseClick(b.closeButton(), Qt::LeftButton);
        QTRY_VERIFY(!b.bar);
        b.activity.end(Activity::Kind::ServerQuery);
        QTest::qWait(50);
        QCOMPARE(named.received.size(), 2);
    }

    void panelEdges()
    {
        // An 800 x 600 screen with the panel on each side, as a shell reports it.
        QCOMPARE(TaskbarEdgeOf({-2, 572, 802, 602}), u"BOTTOM"_s);
        QCOMPARE(TaskbarEdgeOf({-2, -2, 60, 602}), u"LEFT"_s);
        QCOMPARE(TaskbarEdgeOf({740, -2, 802, 602}), u"RIGHT"_s);  // "TOP" first, then replaced
        QCOMPARE(TaskbarEdgeOf({-2, -2, 802, 28}), u"TOP"_s);
        // A small panel floating inside the screen: taller than wide, no edge.
        QCOMPARE(TaskbarEdgeOf({100, 100, 160, 400}), QString());
        QCOMPARE(TaskbarEdgeOf({}), QString());

        // The panel as the strip the work area leaves out.
        const QRect screen(0, 0, 800, 600);
        QCOMPARE(TaskbarEdgeOf(TaskbarFromScreen(screen, QRect(0, 0, 800, 572))), u"BOTTOM"_s);
        QCOMPARE(TaskbarEdgeOf(TaskbarFromScreen(screen, QRect(0, 28, 800, 572))), u"TOP"_s);
        QCOMPARE(TaskbarEdgeOf(TaskbarFromScreen(screen, QRect(60, 0, 740, 600))), u"LEFT"_s);
        QCOMPARE(TaskbarEdgeOf(TaskbarFromScreen(screen, QRect(0, 0, 740, 600))), u"RIGHT"_s);
        QCOMPARE(TaskbarFromScreen(screen, QRect(0, 0, 800, 572)), (ScreenRect{0, 572, 800, 600}));
        // A top bar and a narrow dock on the left: the larger strip is the panel.
        QCOMPARE(TaskbarEdgeOf(TaskbarFromScreen(screen, QRect(20, 28, 780, 572))), u"TOP"_s);
        // No panel at all, or a work area off the screen: a thin strip at the bottom.
        for (const QRect &work : {screen, QRect(900, 0, 100, 100), QRect()}) {
            QCOMPARE(TaskbarFromScreen(screen, work), (ScreenRect{0, 599, 800, 600}));
            QCOMPARE(TaskbarEdgeOf(TaskbarFromScreen(screen, work)), u"BOTTOM"_s);
        }
    }

    void barAndPopupPlacement()
    {
        const QSize bar(129, 135);
        const QPoint current(7, 9);
        // Work areas of an 800 x 600 screen with the panel on each side.
        QCOMPARE(LaunchBarTopLeft(u"BOTTOM"_s, {0, 0, 800, 572}, bar, current), QPoint(671, 437));
        QCOMPARE(LaunchBarTopLeft(u"TOP"_s, {0, 28, 800, 600}, bar, current), QPoint(671, 28));
        QCOMPARE(LaunchBarTopLeft(u"LEFT"_s, {60, 0, 800, 600}, bar, current), QPoint(60, 465));
        QCOMPARE(LaunchBarTopLeft(u"RIGHT"_s, {0, 0, 740, 600}, bar, current), QPoint(611, 465));
        QCOMPARE(LaunchBarTopLeft(QString(), {0, 0, 740, 600}, bar, current), current);

        // The pop-up beside the bar, level with the button: left of it, or right of it
        // by the pop-up's own width when the panel is on the left.
        const QSize popup(153, 97);
        QCOMPARE(PopupTopLeft(u"BOTTOM"_s, {671, 300}, 16, popup, 572, current), QPoint(671 - 153, 316));
        QCOMPARE(PopupTopLeft(u"LEFT"_s, {60, 300}, 16, popup, 600, current), QPoint(60 + 153, 316));
        QCOMPARE(PopupTopLeft(QString(), {60, 300}, 16, popup, 600, current), QPoint(7, 316));
        // Reaching below the work area it moves up onto the bottom edge; just touching it, it stays.
        QCOMPARE(PopupTopLeft(u"BOTTOM"_s, {671, 437}, 38, popup, 572, current), QPoint(518, 475));
        QCOMPARE(PopupTopLeft(u"BOTTOM"_s, {671, 437}, 39, popup, 572, current), QPoint(518, 475));
    }

    void favoritesBecomeEntries()
    {
        using LaunchBar::entryOf;
        const QString nuls(50, QChar(0));
        // A host name in capitals without a port: lower-cased, never looked up, port 27910.
        LaunchBar::Entry e = entryOf(u"Q2.EXAMPLE.ORG"_s, u"  Frag Palace  "_s);
        QCOMPARE(e.server.Address, 0);
        QCOMPARE(e.server.Port, 27910);
        QCOMPARE(e.caption, u"Frag Palace"_s);
        QCOMPARE(e.server.HostName, (u"  Frag Palace"_s + QString(37, u' ')));
        // Ports that are worth 0 become 27910; others are kept as written.
        for (const QString &port : {u":0"_s, u":"_s, u":abc"_s, u""_s})
            QCOMPARE(entryOf(u"127.0.0.5"_s + port, u"x"_s).server.Port, 27910);
        QCOMPARE(entryOf(u"127.0.0.5:27911:9"_s, u"x"_s).server.Port, 27911);
        // The port is read as the refresh reads it ("27910.7" is 27911); only a port worth
        // 0 differs: the refresh has no port to ask there, the bar asks 27910.
        for (const QString &entry : {u"127.0.0.5:27910.7"_s, u"127.0.0.5:27912.5"_s, u"127.0.0.5: 27913"_s})
            QCOMPARE(entryOf(entry, u"x"_s).server.Port, Probe::PortNumber(ServerEntry::split(entry).port));
        e = entryOf(u"127.0.0.5:27911"_s, u"x"_s);
        QCOMPARE(AddressToDotted(e.server.Address), u"127.0.0.5"_s);
        // Only 50 NULs fall back to the address as stored; empty text gives an empty caption.
        QCOMPARE(entryOf(u"127.0.0.5:27911"_s, nuls).caption, u"127.0.0.5:27911"_s);
        QCOMPARE(entryOf(u"127.0.0.5:27911"_s, nuls.left(49)).caption, QString(49, QChar(0)));
        QCOMPARE(entryOf(u"127.0.0.5"_s, QString()).caption, QString());
        QCOMPARE(entryOf(u"127.0.0.5"_s, QString()).server.HostName, QString(50, u' '));
    }

    void statusReplies()
    {
        const QString head = u"\xff\xff\xff\xffprint\n"_s;
        // Too short to hold the reply's opening: ignored.
        QVERIFY(!LaunchBar::statusView(QString()));
        QVERIFY(!LaunchBar::statusView(u"\xff\xff\xff\xffprint"_s));
        QCOMPARE(LaunchBar::statusView(head)->text, u"PLAYER STATUS:\r\n"_s);

        auto view = LaunchBar::statusView(
            head + u"\\cheats\\0\\hostname\\Pulse Arena\\maxclients\\8\\sv_hostname\\Second\x01\\hostname\r\n"_s
            + u"21 38 \"Vector\"\n3 120 \"Doc\"\n"_s);
        QVERIFY(view);
        // Every value of a key holding "hostname"; control characters are gone from the
        // server line, and a value that reads "hostname" is no key.
        QCOMPARE(view->hostNames, (QStringList{u"Pulse Arena"_s, u"Second"_s}));
        QCOMPARE(view->text, u"PLAYER STATUS:\r\n21 38 \"Vector\"\r\n3 120 \"Doc\"\r\n"_s);

        // The key is matched as written: "HostName" is not it.
        view = LaunchBar::statusView(head + u"\\HostName\\Shouty\\x\\hostname\n"_s);
        QVERIFY(view->hostNames.isEmpty());

        // No line feed after the opening: no server line, everything is player text.
        view = LaunchBar::statusView(u"\xff\xff\xff\xffprint \\hostname\\A\rB"_s);
        QVERIFY(view->hostNames.isEmpty());
        QCOMPARE(view->text, u"PLAYER STATUS:\r\n\\hostname\\A\rB"_s);
    }
};

QTEST_MAIN(TestLaunchBarWindow)
#include "tst_launchbarwindow.moc"
