// The launcher bar's and the tray's decisions, without windows.
#include "launch/launchbar.h"
#include "probes/address.h"
#include "serverlist/refreshdecisions.h"
#include "serverlist/serverentry.h"
#include "shell/taskbar.h"

#include <QtTest>

using namespace Qt::StringLiterals;

class TestLaunchBar : public QObject {
    Q_OBJECT
private slots:
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
        QCOMPARE(PopupTopLeft(u"RIGHT"_s, {611, 300}, 16, popup, 600, current), QPoint(611 - 153, 316));
        QCOMPARE(PopupTopLeft(u"TOP"_s, {671, 28}, 16, popup, 600, current), QPoint(671 - 153, 44));
        QCOMPARE(PopupTopLeft(u"LEFT"_s, {60, 300}, 16, popup, 600, current), QPoint(60 + 153, 316));
        QCOMPARE(PopupTopLeft(QString(), {60, 300}, 16, popup, 600, current), QPoint(7, 316));
        // Reaching below the work area it moves up onto the bottom edge; just touching it, it stays.
        QCOMPARE(PopupTopLeft(u"BOTTOM"_s, {671, 437}, 100, popup, 572, current), QPoint(518, 572 - 97));
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
        QCOMPARE(entryOf(u"127.0.0.5:27910.7"_s, u"x"_s).server.Port, 27911);
        QCOMPARE(Probe::PortNumber(ServerEntry::split(u"127.0.0.5:0"_s).port), 0);
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

QTEST_APPLESS_MAIN(TestLaunchBar)
#include "tst_launchbar.moc"
