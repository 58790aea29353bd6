#include "support/testsupport.h"

#include "matcher/flexgrid.h"
#include "matcher/frmmatch.h"
#include "pinglists/pinglist.h"
#include "probes/address.h"
#include "shell/mainwindow.h"
#include "shell/pulseboxmod.h"
#include "shell/serverrow.h"
#include "shell/ticker.h"

#include <QAction>
#include <QApplication>
#include <QGroupBox>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QtTest>

#include <memory>

using namespace Qt::StringLiterals;

namespace {
struct Player {
    QString name;
    QList<std::pair<int, int>> hopsAndTimes;  // one per server
};

// Matcher data as a load leaves them: player 1's list names servers 127.0.<s>.<s>.
void loadPlayers(const QList<Player> &players)
{
    PulseboxMod &mod = Mod();
    const auto P = static_cast<qint32>(players.size());
    const auto N = static_cast<qint32>(players.first().hopsAndTimes.size());
    mod.PlayerCount = P;
    mod.MatchServerCount = N;
    mod.recreateNames(P);
    mod.recreateLists(P, N);
    for (qint32 p = 1; p <= P; ++p) {
        mod.PlayerNames[static_cast<size_t>(p)] = PingList::fixedName(players[p - 1].name);
        for (qint32 s = 1; s <= N; ++s) {
            ServerRec &rec = *mod.record(p, s);
            const auto [hops, ms] = players[p - 1].hopsAndTimes[s - 1];
            rec.Hops = hops;
            rec.PingMs = ms;
            if (p == 1) {
                rec.Address = DottedToAddress(u"127.0.%1.%1"_s.arg(s));
                rec.Port = 27910;
                rec.HostName = ServerRow::pad(u"Server %1"_s.arg(s), 50);
                rec.Version = ServerRow::pad(u"3.20"_s, 5);
            }
        }
    }
}

QString dotted(int s) { return u"127.0.%1.%1"_s.arg(s); }

FlexGrid *grid(frmMatch &w) { return w.findChild<FlexGrid *>(u"MSFlexGrid1"_s); }

QPushButton *button(QWidget &w, const QString &name) { return w.findChild<QPushButton *>(name); }

QRadioButton *option(frmMatch &w, int index)
{
    for (QRadioButton *b : w.findChildren<QRadioButton *>(u"Option1"_s))
        if (b->property("Index").toInt() == index)
            return b;
    return nullptr;
}

QLabel *label(frmMatch &w, const QString &name) { return w.findChild<QLabel *>(name); }

// The data rows: every cell of rows 1 to N, hidden position column included.
QList<QStringList> rows(frmMatch &w)
{
    FlexGrid *g = grid(w);
    QList<QStringList> all;
    for (int r = 1; r < g->Rows(); ++r) {
        QStringList cells;
        for (int c = 0; c < g->Cols(); ++c)
            cells << g->TextMatrix(r, c);
        all << cells;
    }
    return all;
}

QStringList column(frmMatch &w, int col)
{
    QStringList cells;
    for (const QStringList &row : rows(w))
        cells << row[col];
    return cells;
}

std::unique_ptr<frmMatch> openMatcher()
{
    auto w = std::make_unique<frmMatch>(nullptr);
    w->show();
    return w;
}
}

class TestFrmMatch : public QObject {
    Q_OBJECT
private slots:
    void onePlayerLayout();
    void modesAndSort();
    void pingRunStoresWhatWasAnswered();
    void cancelDuringTheThirdOfFive();
    void openedModallyBySaveThenLoad();
};

void TestFrmMatch::onePlayerLayout()
{
    TestEnvironment env;
    loadPlayers({{u"Alice"_s, {{12, 85}, {0, 0}}}});
    auto w = openMatcher();
    FlexGrid *g = grid(*w);
    QVERIFY(g);
    QCOMPARE(g->Cols(), 4);
    QCOMPARE(g->Rows(), 3);
    QCOMPARE(g->TextMatrix(0, 0), u"Server Name"_s);
    QCOMPARE(g->TextMatrix(0, 1), PingList::fixedName(u"Alice"_s));
    QCOMPARE(g->TextMatrix(0, 2), u"Match Factor"_s);
    QCOMPARE(g->TextArray(1 * 4 + 0), ServerRow::pad(u"Server 1"_s, 50) + u" version:3.20 "_s);
    QCOMPARE(rows(*w)[0].mid(1), (QStringList{u"12.85"_s, u".000"_s, u"1"_s}));
    QCOMPARE(rows(*w)[1].mid(1), (QStringList{u"."_s, u".000"_s, u"2"_s}));
    QCOMPARE(g->ColWidth(3), 0);
    QVERIFY(g->isColumnHidden(3));
    QCOMPARE(g->ColWidth(1), 795);
    QCOMPARE(w->Width(), 5160);
    QCOMPARE(g->WidthTwips(), 795 + 2895);

    QVERIFY(option(*w, 0)->isChecked() && !option(*w, 1)->isChecked());
    QVERIFY(w->findChild<QGroupBox *>(u"fraCalcs"_s)->isEnabled());
    QVERIFY(button(*w, u"cmdSave"_s)->isHidden());
    for (const char *name : {"Image1", "Image2", "Image3", "Image4"})
        QVERIFY(label(*w, QLatin1String(name))->isHidden());
    QCOMPARE(w->findChild<Ticker *>(u"Timer2"_s)->interval(), 0);

    // The busy pictures alternate only while Timer2 runs.
    Ticker *timer2 = w->findChild<Ticker *>(u"Timer2"_s);
    timer2->setInterval(1000);
    emit timer2->timeout();
    QVERIFY(label(*w, u"Image3"_s)->isVisible() && label(*w, u"Image4"_s)->isHidden());
    emit timer2->timeout();
    QVERIFY(label(*w, u"Image3"_s)->isHidden() && label(*w, u"Image4"_s)->isVisible());
    timer2->setInterval(0);
    emit timer2->timeout();
    QVERIFY(label(*w, u"Image4"_s)->isVisible());
    label(*w, u"Image4"_s)->hide();

    // Resizing keeps the grid 1470 twips narrower; at 1470 or less it stays as it was.
    w->setWidth(9000);
    QCOMPARE(g->WidthTwips(), 9000 - 1470);
    w->setWidth(1470);
    QCOMPARE(g->WidthTwips(), 9000 - 1470);

    // Cancel when idle closes the window at once.
    QTest::mouseClick(button(*w, u"cmbCancel"_s), Qt::LeftButton);
    QVERIFY(!w->isVisible());
}

void TestFrmMatch::modesAndSort()
{
    TestEnvironment env;
    // Server 1: a poor match by hops (.877 as worked out by hand), server 2 a perfect
    // one, server 3 close. By pings: 12.222, 0 and 33.333.
    loadPlayers({{u"Alice"_s, {{12, 85}, {9, 40}, {5, 20}}},
                 {u"Bob"_s, {{12, 90}, {9, 40}, {5, 120}}},
                 {u"Carol"_s, {{14, 60}, {9, 40}, {5, 20}}}});
    auto w = openMatcher();
    QCOMPARE(w->Width(), 3 * 795 + 4365);
    const QList<QStringList> loaded = rows(*w);
    QCOMPARE(column(*w, 4), (QStringList{u".877"_s, u".000"_s, u".044"_s}));
    QCOMPARE(loaded[2].mid(1, 3), (QStringList{u"5.2"_s, u"5.12"_s, u"5.2"_s}));

    QTest::mouseClick(button(*w, u"cmdSort"_s), Qt::LeftButton);
    QCOMPARE(column(*w, 5), (QStringList{u"2"_s, u"3"_s, u"1"_s}));

    QTest::mouseClick(option(*w, 1), Qt::LeftButton);
    QCOMPARE(column(*w, 5), (QStringList{u"2"_s, u"1"_s, u"3"_s}));  // by the ping factors
    QCOMPARE(column(*w, 4), (QStringList{u".000"_s, u"12.222"_s, u"44.444"_s}));
    QCOMPARE(rows(*w)[1].mid(1, 3), (QStringList{u"85"_s, u"90"_s, u"60"_s}));

    QTest::mouseClick(option(*w, 0), Qt::LeftButton);
    QList<QStringList> expected{loaded[1], loaded[2], loaded[0]};  // the same rows, best first
    QCOMPARE(rows(*w), expected);
    QVERIFY(button(*w, u"cmdSave"_s)->isHidden());
}

void TestFrmMatch::pingRunStoresWhatWasAnswered()
{
    TestEnvironment env;
    loadPlayers({{u"Alice"_s, {{3, 40}, {7, 15}, {2, 9}}}});
    // Server 1 is silent; server 2 answers twice (10.5 ms on average) and then not,
    // and sits behind two routers; server 3 answers in 0 ms.
    env.echo.script[dotted(1)] = {{0, 11010, 0}};
    env.echo.script[dotted(2)] = {{1, 0, 10}, {1, 0, 11}, {0, 11010, 0},
                                  {1, 11013, 4, u"127.9.0.1"_s}, {1, 11013, 6, u"127.9.0.2"_s}, {1, 0, 12}};
    env.echo.script[dotted(3)] = {{1, 0, 0}};
    env.prompts.inputs = {u"Somebody with a long name"_s};

    auto w = openMatcher();
    Ticker *timer2 = w->findChild<Ticker *>(u"Timer2"_s);
    QStringList statuses;
    bool busyEverywhere = true;
    env.echo.onSend = [&] {
        const QString status = label(*w, u"lblStatus"_s)->text();
        if (statuses.isEmpty() || statuses.last() != status)
            statuses << status;
        busyEverywhere = busyEverywhere && w->MatchBusy == 1 && !button(*w, u"cmdPing"_s)->isEnabled()
            && !button(*w, u"cmdSort"_s)->isEnabled() && !w->findChild<QGroupBox *>(u"fraCalcs"_s)->isEnabled()
            && label(*w, u"Image1"_s)->isVisible() && label(*w, u"Image2"_s)->isVisible()
            && timer2->interval() == 1000 && w->cursor().shape() == Qt::WaitCursor;
    };
    QTest::mouseClick(button(*w, u"cmdPing"_s), Qt::LeftButton);

    using Sent = QPair<QString, int>;
    QCOMPARE(env.echo.sent, (QList<Sent>{{dotted(1), 250},
                                         {dotted(2), 250}, {dotted(2), 250}, {dotted(2), 250},
                                         {dotted(2), 1}, {dotted(2), 2}, {dotted(2), 3},
                                         {dotted(3), 250}, {dotted(3), 250}, {dotted(3), 250}}));
    QVERIFY(busyEverywhere);
    QCOMPARE(statuses, (QStringList{u"Pinging"_s, u"Counting Hops"_s, u"Pinging"_s}));

    QCOMPARE(Mod().PlayerCount, 2);
    const ServerRec *silent = Mod().record(2, 1), *behind = Mod().record(2, 2), *instant = Mod().record(2, 3);
    QCOMPARE(std::pair(silent->Hops, silent->PingMs), std::pair(0, 0));
    QCOMPARE(std::pair(behind->Hops, behind->PingMs), std::pair(3, 10));  // 10.5 to the even 10
    QCOMPARE(std::pair(instant->Hops, instant->PingMs), std::pair(0, 0));
    QCOMPARE(behind->HostName, QString(50, QChar(0)));  // only hops and time are measured

    QCOMPARE(env.prompts.shown.size(), 1);
    QCOMPARE(env.prompts.shown[0].kind, u"input"_s);
    QCOMPARE(env.prompts.shown[0].text, u"Give me your name:"_s);
    QCOMPARE(env.prompts.shown[0].title, u"Name"_s);
    QCOMPARE(env.prompts.shown[0].defaultText, QString());
    QCOMPARE(Mod().PlayerNames[2], u"Somebody with a"_s);

    FlexGrid *g = grid(*w);
    QCOMPARE(g->Cols(), 5);
    QCOMPARE(w->Width(), 2 * 795 + 4365);
    QCOMPARE(g->TextMatrix(0, 2), u"Somebody with a"_s);
    QCOMPARE(column(*w, 2), (QStringList{u"."_s, u"3.1"_s, u"."_s}));
    // 3.040 against 0, 7.015 against 3.010, 2.009 against 0: half the distance each.
    QCOMPARE(column(*w, 3), (QStringList{u"1.520"_s, u"2.003"_s, u"1.005"_s}));
    QCOMPARE(column(*w, 4), (QStringList{u"1"_s, u"2"_s, u"3"_s}));
    QVERIFY(g->isColumnHidden(4));

    QVERIFY(button(*w, u"cmdSave"_s)->isVisible());
    for (const char *name : {"cmdPing", "cmdSort", "cmdSave"})
        QVERIFY(button(*w, QLatin1String(name))->isEnabled());
    QVERIFY(w->findChild<QGroupBox *>(u"fraCalcs"_s)->isEnabled());
    for (const char *name : {"Image1", "Image2", "Image3", "Image4"})
        QVERIFY(label(*w, QLatin1String(name))->isHidden());
    QCOMPARE(timer2->interval(), 0);
    QCOMPARE(label(*w, u"lblStatus"_s)->text(), QString());
    QCOMPARE(w->MatchBusy, 0);
    QVERIFY(w->cursor().shape() != Qt::WaitCursor);

    // A run made while Pings only shows still fills in Hops first; a cancelled name
    // box gives "Unknown".
    QTest::mouseClick(option(*w, 1), Qt::LeftButton);
    env.echo.script.clear();  // every server answers in 10 ms from here on
    QTest::mouseClick(button(*w, u"cmdPing"_s), Qt::LeftButton);
    QCOMPARE(Mod().PlayerCount, 3);
    QCOMPARE(Mod().PlayerNames[3], PingList::fixedName(u"Unknown"_s));
    QCOMPARE(column(*w, 1), (QStringList{u"3.4"_s, u"7.15"_s, u"2.9"_s}));  // back in list order
    QCOMPARE(column(*w, 3), (QStringList{u"1.1"_s, u"1.1"_s, u"1.1"_s}));
}

void TestFrmMatch::cancelDuringTheThirdOfFive()
{
    TestEnvironment env;
    loadPlayers({{u"Alice"_s, {{1, 10}, {2, 20}, {3, 30}, {4, 40}, {5, 50}}}});
    auto w = openMatcher();
    QPushButton *cancel = button(*w, u"cmbCancel"_s);
    env.echo.onSend = [&] {
        if (env.echo.sent.last().first == dotted(3) && w->MatchCancelRequested == 0)
            QTest::mouseClick(cancel, Qt::LeftButton);
    };
    QTest::mouseClick(button(*w, u"cmdPing"_s), Qt::LeftButton);

    QVERIFY(w->isVisible());  // Cancel during a run keeps the window
    QCOMPARE(Mod().PlayerCount, 2);
    for (int s = 1; s <= 3; ++s)  // the server in progress is finished
        QCOMPARE(Mod().record(2, s)->Hops, 1);
    for (int s = 4; s <= 5; ++s) {
        QCOMPARE(std::pair(Mod().record(2, s)->Hops, Mod().record(2, s)->PingMs), std::pair(0, 0));
        QCOMPARE(grid(*w)->TextMatrix(s, 2), u"."_s);
    }
    QCOMPARE(env.echo.sent.last().first, dotted(3));
    QVERIFY(env.prompts.shown.isEmpty());  // no name asked
    QCOMPARE(Mod().PlayerNames[2], QString(15, QChar(0)));
    QVERIFY(button(*w, u"cmdSave"_s)->isHidden());
    QCOMPARE(w->MatchBusy, 0);
    QCOMPARE(w->MatchCancelRequested, 0);

    // The window's close box during a run asks the run to stop and keeps the window.
    env.echo.onSend = [&] {
        if (env.echo.sent.last().first == dotted(2))
            w->close();
    };
    QTest::mouseClick(button(*w, u"cmdPing"_s), Qt::LeftButton);
    QVERIFY(w->isVisible());
    QCOMPARE(Mod().PlayerCount, 3);
    QCOMPARE(env.echo.sent.last().first, dotted(2));
    QCOMPARE(Mod().record(3, 2)->PingMs, 10);
    QVERIFY(env.prompts.shown.isEmpty());

    // Idle again, Cancel closes.
    QTest::mouseClick(cancel, Qt::LeftButton);
    QVERIFY(!w->isVisible());
}

void TestFrmMatch::openedModallyBySaveThenLoad()
{
    TestEnvironment env;
    loadPlayers({{u"Alice"_s, {{12, 85}, {7, 15}}}, {u"Bob"_s, {{12, 90}, {8, 33}}}});
    auto main = newMainWindow();
    {
        auto w = openMatcher();
        env.echo.script[dotted(2)] = {{1, 0, 48}, {1, 0, 48}, {1, 0, 48}, {1, 11013, 4, u"127.9.0.1"_s}, {1, 0, 48}};
        env.prompts.inputs = {u"Carol"_s};
        QTest::mouseClick(button(*w, u"cmdPing"_s), Qt::LeftButton);
        env.prompts.fileNames = {u"friends.Pbx"_s};
        QTest::mouseClick(button(*w, u"cmdSave"_s), Qt::LeftButton);
    }
    const MatcherData saved = Mod();
    QCOMPARE(saved.PlayerCount, 3);
    QCOMPARE(*saved.record(3, 2), [] { ServerRec r; r.Hops = 2; r.PingMs = 48; return r; }());
    QCOMPARE(readFile(u"friends.Pbx"_s).size(), 20 + 3 * (15 + 73 * 2));

    Mod().PlayerCount = 1;  // a refresh would start over
    env.prompts.fileNames = {u"friends.Pbx"_s};
    bool sawModal = false;
    QTimer::singleShot(0, [&] {
        auto *w = qobject_cast<frmMatch *>(QApplication::activeModalWidget());
        sawModal = w && w->isVisible() && w->Width() == 3 * 795 + 4365 && grid(*w)->TextMatrix(0, 3) == u"Carol"_s.leftJustified(15)
            && !w->findChild<QPushButton *>(u"cmdSave"_s)->isVisible();
        if (w)
            QTest::mouseClick(button(*w, u"cmbCancel"_s), Qt::LeftButton);
    });
    main->mnufileload->trigger();  // returns once the matcher is closed
    QVERIFY(sawModal);
    QVERIFY(!QApplication::activeModalWidget());
    QCOMPARE(static_cast<const MatcherData &>(Mod()), saved);
}

QTEST_MAIN(TestFrmMatch)
#include "tst_frmmatch.moc"
