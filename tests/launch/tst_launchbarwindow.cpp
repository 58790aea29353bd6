// Iconize, the tray's clicks and the launcher bar, driven as a player would.
#include "support/testsupport.h"

#include "demonet/demonetwork.h"
#include "launch/frmlaunch.h"
#include "probes/frmsrvpop.h"
#include "shell/mainwindow.h"
#include "shell/pulseboxmod.h"
#include "shell/ticker.h"
#include "shell/trayicon.h"
#include "shell/twips.h"
#include "shell/vblist.h"

#include <QAction>
#include <QGuiApplication>
#include <QMenu>
#include <QPlainTextEdit>
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

frmLaunch *bar(MainWindow &w) { return w.findChild<frmLaunch *>(u"frmLaunch"_s); }

// A bar opened with the favorites as they stand, as the tray's single click opens it.
frmLaunch *openBar(MainWindow &w)
{
    auto *b = new frmLaunch(&w);
    b->show();
    return b;
}

QPoint twipsAt(QWidget *w, QWidget *in) { return w->mapTo(in, QPoint(0, 0)); }

Demo::Server fake(const char *address, const QString &protocol, const QString &hostName)
{
    Demo::Server s;
    s.address = QHostAddress(QLatin1String(address));
    s.protocol = protocol;
    s.hostName = hostName;
    s.map = u"q2dm1"_s;
    s.players = {{u"Vector"_s, 21, 38}, {u"Doc Holiday"_s, 3, 120}};
    return s;
}
}

class TestLaunchBarWindow : public QObject {
    Q_OBJECT
private slots:
    void iconizeAndTrayClicks()
    {
        TestEnvironment env;
        TrayMaker maker(true);
        auto w = newMainWindow();
        MainWindowDriver::addFavorite(*w, u"127.0.0.2"_s, u"Pulse Arena"_s);
        MainWindowDriver::trigger(*w, "iconizeAction_");
        QVERIFY(!w->isVisible());
        QVERIFY(maker.tray && maker.tray->shown);
        QCOMPARE(maker.tray->tip, u"Pulsebox 1.2"_s);
        QVERIFY(!maker.tray->icon.isNull());

        // A single press: the half-second wait runs, then the bar opens and the icon stays.
        bool sawWait = false;
        QTimer::singleShot(0, [&] {
            sawWait = maker.tray->awaitingSecondClick() && w->findChild<Ticker *>(u"trayClickTicker_"_s)->interval() == 500 && !bar(*w);
        });
        emit maker.tray->mouseEvent(TrayIcon::kLeftPress);
        QVERIFY(sawWait);
        QVERIFY(!maker.tray->awaitingSecondClick());
        QCOMPARE(w->findChild<Ticker *>(u"trayClickTicker_"_s)->interval(), 0);
        QVERIFY(bar(*w) && bar(*w)->isVisible());
        QVERIFY(bar(*w)->windowFlags().testFlag(Qt::WindowStaysOnTopHint));
        QVERIFY(!Mod().TaskbarEdge.isEmpty());
        const QRect work = QGuiApplication::primaryScreen()->availableGeometry();
        QVERIFY2(work.contains(bar(*w)->frameGeometry()), "the bar stays inside the work area");
        QVERIFY(!w->isVisible() && maker.tray->shown);
        // Other events of the icon are not acted on.
        emit maker.tray->mouseEvent(514);
        QVERIFY(!maker.tray->awaitingSecondClick());
        QTest::mouseClick(bar(*w)->Command1, Qt::LeftButton);
        QTRY_VERIFY(!bar(*w));

        // A double click inside the wait: the main window is back, the icon gone, no bar.
        QTimer::singleShot(0, [&] { emit maker.tray->mouseEvent(TrayIcon::kLeftDoubleClick); });
        emit maker.tray->mouseEvent(TrayIcon::kLeftPress);
        QVERIFY(!maker.tray->awaitingSecondClick());
        QVERIFY(w->isVisible());
        QVERIFY(!maker.tray->shown);
        QTest::qWait(50);
        QVERIFY(!bar(*w));
    }

    void trayReasonsBecomeEventNumbers()
    {
        TestEnvironment env;
        SystemTray tray;
        auto *icon = tray.findChild<QSystemTrayIcon *>();
        QVERIFY(icon);
        QList<int> numbers;
        connect(&tray, &TrayIcon::mouseEvent, this, [&](int n) { numbers.append(n); });
        emit icon->activated(QSystemTrayIcon::Trigger);
        emit icon->activated(QSystemTrayIcon::Context);
        emit icon->activated(QSystemTrayIcon::MiddleClick);
        QVERIFY(numbers.isEmpty());  // delivered from the event queue
        QTRY_COMPARE(numbers, QList<int>{TrayIcon::kLeftPress});
        // Inside a first click's wait, a second click is the double click, whether the
        // tray reports it as a click (StatusNotifier) or also as a double click (XEmbed).
        tray.setAwaitingSecondClick(true);
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
        QVERIFY(!w->isVisible());
        QWidget *standIn = nullptr;
        for (QWidget *top : QApplication::topLevelWidgets())
            if (top->objectName() == u"trayStandIn"_s && top->isVisible())
                standIn = top;
        QVERIFY(standIn);
        QCOMPARE(standIn->toolTip(), u"Pulsebox 1.2"_s);
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
        TestEnvironment env;
        auto w = newMainWindow();
        const QString nuls(50, QChar(0));
        // Each favorite shows its own description, or its address without one.
        w->setFavorites({{u"127.0.0.5:0"_s, nuls}, {u"Q2.Example.ORG"_s, u"  Named  "_s}, {u"127.0.0.7:27911"_s, u"Seven"_s}});
        frmLaunch *b = openBar(*w);
        QCOMPARE(b->cmdLaunch.size(), 3);
        QCOMPARE(Mod().LaunchServers.size(), size_t(4));  // one spare at the end
        const QStringList captions{u"127.0.0.5:0"_s, u"Named"_s, u"Seven"_s};
        for (int i = 0; i < 3; ++i) {
            QPushButton *button = b->cmdLaunch[i];
            QCOMPARE(button->text(), captions[i]);
            QVERIFY(button->isVisible());
            QCOMPARE(twipsAt(button, b), Twips::rect(120, 240 + 545 * i, 1695, 495).topLeft());
            QCOMPARE(button->font().pointSizeF(), 6.75);
        }
        QCOMPARE(Mod().LaunchServers[0].Port, 27910);
        QCOMPARE(Mod().LaunchServers[1].Address, 0);
        QCOMPARE(Mod().LaunchServers[2].Port, 27911);
        QCOMPARE(b->height(), Twips::px(930 + 1090));
        QCOMPARE(b->Frame1->height(), b->height() - (Twips::px(930) - Twips::px(855)));
        QVERIFY(b->windowFlags().testFlag(Qt::FramelessWindowHint));
        b->close();

        // No favorites: 545 twips lower than designed, only "x" remains.
        w->setFavorites({});
        b = openBar(*w);
        QCOMPARE(b->height(), Twips::px(930 - 545));
        QVERIFY(!b->cmdLaunch[0]->isVisible());
        QVERIFY(b->Command1->isVisible());
        b->close();

        // Far more favorites than the screen holds: the bar stays inside it and scrolls.
        for (int i = 0; i < 70; ++i)
            MainWindowDriver::addFavorite(*w, u"127.0.1.%1"_s.arg(i), u"Server %1"_s.arg(i));
        b = openBar(*w);
        QCOMPARE(b->cmdLaunch.size(), 70);
        QCOMPARE(Mod().LaunchServers.size(), size_t(71));
        const QRect work = QGuiApplication::primaryScreen()->availableGeometry();
        QVERIFY(b->height() <= work.height());
        auto *column = b->findChild<QScrollArea *>();
        QVERIFY(column);
        QScrollBar *scroll = column->verticalScrollBar();
        QVERIFY(scroll->isVisible());
        QVERIFY(scroll->maximum() > 0);
        scroll->setValue(scroll->maximum());
        QWidget *last = b->cmdLaunch.last();
        QVERIFY(b->Frame1->rect().contains(QRect(last->mapTo(b->Frame1, QPoint(0, 0)), last->size())));
        b->close();
    }

    void statusQueryAndPopup()
    {
        TestEnvironment env;
        auto w = newMainWindow();
        Demo::GameServer named(fake("127.0.10.21", u"34"_s, u"Pulse Arena"_s));
        Demo::GameServer described(fake("127.0.10.22", u"34"_s, u"Ignored Name"_s));
        Demo::GameServer silent(fake("127.0.10.23", u"silent"_s, u"Quiet"_s));
        QString error;
        for (Demo::GameServer *s : {&named, &described, &silent})
            QVERIFY2(s->start(&error), qPrintable(error));
        MainWindowDriver::addFavorite(*w, u"127.0.10.21"_s, QString(50, QChar(0)));
        MainWindowDriver::addFavorite(*w, u"127.0.10.22:27910"_s, u"My Place"_s);
        MainWindowDriver::addFavorite(*w, u"127.0.10.23"_s, u"Hush"_s);
        w->Command1->setEnabled(false);
        frmLaunch *b = openBar(*w);
        Mod().TaskbarEdge = u"BOTTOM"_s;

        // During the wait the main window's controls are off, the bar's clicks ignored.
        bool excluded = false;
        QTimer::singleShot(0, [&] {
            excluded = !w->centralWidget()->isEnabled() && b->launchBusy && Mod().QueryBusy;
            b->cmdLaunch_Click(1);
        });
        QCOMPARE(b->cmdLaunch[0]->text(), u"127.0.10.21"_s);
        b->cmdLaunch_Click(0);
        QVERIFY(excluded);
        QVERIFY(w->centralWidget()->isEnabled());
        QVERIFY(!b->launchBusy && !Mod().QueryBusy);
        QCOMPARE(named.received, QList<QByteArray>{QByteArray("\xff\xff\xff\xffstatus")});
        QVERIFY(described.received.isEmpty());
        QCOMPARE(Mod().QueryMode, 99);
        QVERIFY(b->popup && b->popup->isVisible());
        // The address caption gives way to the server's name, for this load only.
        QCOMPARE(b->cmdLaunch[0]->text(), u"Pulse Arena"_s);
        QCOMPARE(Mod().LaunchServers[0].HostName, u"Pulse Arena"_s.leftJustified(50, u' '));
        QCOMPARE(b->popup->windowTitle(), u"Pulse Arena"_s);
        QCOMPARE(b->popup->Text1->toPlainText(),
                 u"PLAYER STATUS:\n21 38 \"Vector\"\n3 120 \"Doc Holiday\"\n"_s);
        QVERIFY(b->popup->frameGeometry().right() < b->frameGeometry().left());

        // A described favorite keeps its caption; the same pop-up is reused.
        QPointer<frmsrvpop> popup = b->popup;
        b->cmdLaunch_Click(1);
        QCOMPARE(b->cmdLaunch[1]->text(), u"My Place"_s);
        QCOMPARE(popup.data(), b->popup.data());
        QCOMPARE(popup->windowTitle(), u"My Place"_s);

        // A silent server: five ticks, then nothing changes and nothing is said.
        popup->hide();
        b->cmdLaunch_Click(2);
        QCOMPARE(silent.received.size(), 1);
        QCOMPARE(b->launchTicks, 5);
        QVERIFY(!popup->isVisible());
        QVERIFY(env.prompts.shown.isEmpty());

        // While the main window runs or queries, the bar does not query at all.
        w->Command1->setEnabled(true);
        b->cmdLaunch_Click(0);
        Mod().QueryBusy = true;
        w->Command1->setEnabled(false);
        b->cmdLaunch_Click(0);
        Mod().QueryBusy = false;
        QCOMPARE(named.received.size(), 1);

        // "x" during a query hides the bar at once and closes it when the wait ends.
        QPointer<frmLaunch> guard = b;
        QTimer::singleShot(0, [&] { QTest::mouseClick(b->Command1, Qt::LeftButton); });
        b->cmdLaunch_Click(2);
        QTRY_VERIFY(!guard);
        QVERIFY(!popup);
    }

    void rightClickMenu()
    {
        TestEnvironment env;
        auto w = newMainWindow();
        MainWindowDriver::addFavorite(*w, u"127.0.0.2"_s, u"Pulse Arena"_s);
        MainWindowDriver::addFavorite(*w, u"127.0.0.3:0"_s, u"Edge"_s);
        frmLaunch *b = openBar(*w);
        QTest::mousePress(b->cmdLaunch[1], Qt::RightButton);
        QCOMPARE(b->popupIndex, 1);
        QTRY_VERIFY(b->mnupopup->isVisible());
        b->mnupopup->hide();
        QTest::mouseClick(b->cmdLaunch[0], Qt::MiddleButton);
        QCOMPARE(b->popupIndex, 1);

        Mod().GamePath = u"/games/q2/quake2.exe"_s;
        env.prompts.answers = {true};
        b->mnuLaunch->trigger();
        QCOMPARE(env.prompts.shown.size(), 1);
        QCOMPARE(env.prompts.shown[0].kind, u"question"_s);
        QCOMPARE(env.prompts.shown[0].text, u"Launch to Server?\nEdge"_s + QString(46, u' '));
        QCOMPARE(env.prompts.shown[0].title, u"Launch?"_s);
        QCOMPARE(env.starter.started.size(), 1);
        QCOMPARE(env.starter.started[0].program, u"/games/q2/quake2.exe"_s);
        QCOMPARE(env.starter.started[0].arguments.last(), u"127.0.0.3:27910"_s);
        QCOMPARE(env.starter.started[0].workingFolder, u"/games/q2/"_s);

        // The same launch as the list's: no path, no start.
        Mod().GamePath.clear();
        b->mnuLaunch->trigger();
        QCOMPARE(env.prompts.shown.last().title, u"Lauch Aborted"_s);
        QCOMPARE(env.starter.started.size(), 1);

        b->mnuChat->trigger();
        QCOMPARE(env.prompts.shown.last().text, u"Development not completed."_s);
        QCOMPARE(env.prompts.shown.last().title, u"Pulsebox"_s);
        QCOMPARE(env.prompts.shown.last().kind, u"message"_s);
        b->close();
    }
};

QTEST_MAIN(TestLaunchBarWindow)
#include "tst_launchbarwindow.moc"
