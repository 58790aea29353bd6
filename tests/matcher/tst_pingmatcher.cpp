#include "support/dialogsupport.h"
#include "support/matcherdata.h"
#include "support/testsupport.h"

#include "matcher/matchgrid.h"
#include "matcher/matchnumbers.h"
#include "matcher/pingmatcherdialog.h"
#include "shell/ticker.h"

#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QStyle>
#include <QtTest>

#include <memory>

using namespace MatchNumbers;
using namespace Qt::StringLiterals;

namespace {
QString dotted(int s) { return u"127.0.%1.%1"_s.arg(s); }

MatchGrid *grid(const QWidget &w) { return child<MatchGrid>(w, "matchGrid_"); }
QPushButton *button(const QWidget &w, const char *name) { return child<QPushButton>(w, name); }
QLabel *label(const QWidget &w, const char *name) { return child<QLabel>(w, name); }

QList<QStringList> rows(const QWidget &w)
{
    QList<QStringList> all;
    for (int r = 1; r < grid(w)->gridRows(); ++r) {
        QStringList cells;
        for (int c = 0; c < grid(w)->gridCols(); ++c)
            cells << grid(w)->cellText(r, c);
        all << cells;
    }
    return all;
}

// Every cell of column `col` in the data rows, in the order shown.
QStringList column(const QWidget &w, int col)
{
    QStringList cells;
    for (const QStringList &row : rows(w))
        cells << row[col];
    return cells;
}

struct Matcher {
    explicit Matcher(const QList<PlayerScores> &players, bool fast = false)
        : data(matcherData(players)), w(std::make_unique<PingMatcherDialog>(data, nullptr, fast))
    {
        w->show();
    }
    TestEnvironment env;
    MatcherData data;
    std::unique_ptr<PingMatcherDialog> w;
};

// The first columns of pixels of a header section, where its text starts.
QImage sectionStart(QHeaderView *header, int section, int width)
{
    return header->grab(QRect(header->sectionViewportPosition(section), 0, width, header->height())).toImage();
}
}

class TestPingMatcher : public QObject {
    Q_OBJECT
private slots:
    void onePlayerLayout()
    {
        Matcher m({{u"Alice"_s, {{12, 85}, {0, 0}}}});
        PingMatcherDialog &w = *m.w;
        MatchGrid *g = grid(w);
        QCOMPARE(g->gridCols(), 4);
        QCOMPARE(g->gridRows(), 3);
        QCOMPARE((QStringList{g->cellText(0, 0), g->cellText(0, 1), g->cellText(0, 2)}),
                 (QStringList{u"Server Name"_s, PingList::fixedName(u"Alice"_s), u"Match Factor"_s}));
        QCOMPARE(g->textAt(1 * 4 + 0), ServerRow::pad(u"Server 1"_s, 50) + u" version:3.20 "_s);
        QCOMPARE(rows(w)[0].mid(1), (QStringList{u"12.85"_s, u".000"_s, u"1"_s}));
        QCOMPARE(rows(w)[1].mid(1), (QStringList{u"."_s, u".000"_s, u"2"_s}));
        QVERIFY(g->isColumnHidden(3));
        QCOMPARE(w.widthTwips(), 795 + 4365);
        QVERIFY(child<QRadioButton>(w, "hopsFirstOption_")->isChecked());
        QVERIFY(button(w, "saveButton_")->isHidden());

        // The busy pictures alternate only while their ticker runs.
        Ticker *busy = child<Ticker>(w, "busyTicker_");
        QCOMPARE(busy->interval(), 0);
        busy->setInterval(1000);
        emit busy->timeout();
        QVERIFY(label(w, "beatTallPicture_")->isVisible() && label(w, "beatLowPicture_")->isHidden());
        emit busy->timeout();
        QVERIFY(label(w, "beatTallPicture_")->isHidden() && label(w, "beatLowPicture_")->isVisible());
        busy->setInterval(0);
        emit busy->timeout();
        QVERIFY(label(w, "beatLowPicture_")->isVisible());

        // Resizing keeps the grid 1470 twips narrower; at 1470 or less it stays as it was.
        w.setWidthTwips(9000);
        QCOMPARE(g->widthTwips(), 9000 - 1470);
        w.setWidthTwips(1470);
        QCOMPARE(g->widthTwips(), 9000 - 1470);

        QTest::mouseClick(button(w, "cancelButton_"), Qt::LeftButton);  // idle: closes at once
        QVERIFY(!w.isVisible());
    }

    // A header too long for its column is cut on the right, so it reads from its start.
    void headersCutOnTheRight()
    {
        Matcher m({{u"Alice"_s, {{12, 85}}}});
        MatchGrid *g = grid(*m.w);
        QHeaderView *header = g->horizontalHeader();
        QFont font(u"DejaVu Sans"_s);
        font.setPixelSize(12);
        header->setFont(font);
        g->setColWidthTwips(2, 600);  // 40 pixels for "Match Factor"
        QVERIFY(header->fontMetrics().horizontalAdvance(u"Match Factor"_s) > header->sectionSize(2));
        // Up to the end of the first letter: the same for every text that begins with it.
        const int start = header->style()->pixelMetric(QStyle::PM_HeaderMargin) + header->fontMetrics().horizontalAdvance(u'M') - 1;
        const QImage cut = sectionStart(header, 2, start);
        g->setCellText(0, 2, u"Mountain Fortress"_s);
        QCOMPARE(sectionStart(header, 2, start), cut);
        g->setCellText(0, 2, u"Xylophone Works"_s);
        QVERIFY(sectionStart(header, 2, start) != cut);

        // Widened until it fits, the header is centred again.
        g->setColWidthTwips(2, 3000);
        QCOMPARE(g->horizontalHeaderItem(2)->textAlignment(), int(Qt::AlignCenter));
    }

    void modesAndSort()
    {
        // Server 1: a poor match by hops (.877 as worked out by hand), server 2 a perfect
        // one, server 3 close. By pings: 12.222, 0 and 33.333.
        Matcher m({{u"Alice"_s, {{12, 85}, {9, 40}, {5, 20}}},
                   {u"Bob"_s, {{12, 90}, {9, 40}, {5, 120}}},
                   {u"Carol"_s, {{14, 60}, {9, 40}, {5, 20}}}});
        PingMatcherDialog &w = *m.w;
        QCOMPARE(w.widthTwips(), 3 * 795 + 4365);
        const QList<QStringList> loaded = rows(w);
        QCOMPARE(column(w, 4), (QStringList{u".877"_s, u".000"_s, u".044"_s}));
        QCOMPARE(loaded[2].mid(1, 3), (QStringList{u"5.2"_s, u"5.12"_s, u"5.2"_s}));

        QTest::mouseClick(button(w, "sortButton_"), Qt::LeftButton);
        QCOMPARE(column(w, 5), (QStringList{u"2"_s, u"3"_s, u"1"_s}));

        QTest::mouseClick(child<QRadioButton>(w, "pingsOnlyOption_"), Qt::LeftButton);
        QCOMPARE(column(w, 5), (QStringList{u"2"_s, u"1"_s, u"3"_s}));  // by the ping factors
        QCOMPARE(column(w, 4), (QStringList{u".000"_s, u"12.222"_s, u"44.444"_s}));
        QCOMPARE(rows(w)[1].mid(1, 3), (QStringList{u"85"_s, u"90"_s, u"60"_s}));

        QTest::mouseClick(child<QRadioButton>(w, "hopsFirstOption_"), Qt::LeftButton);
        QCOMPARE(rows(w), (QList<QStringList>{loaded[1], loaded[2], loaded[0]}));  // the same rows, best first
    }

    void pingRunStoresWhatWasAnswered()
    {
        Matcher m({{u"Alice"_s, {{3, 40}, {7, 15}, {2, 9}}}});
        PingMatcherDialog &w = *m.w;
        ScriptedEcho &echo = m.env.echo;
        // Server 1 is silent; server 2 answers twice (10.5 ms on average) and then not,
        // and sits behind two routers; server 3 answers in 0 ms.
        echo.script[dotted(1)] = {{0, 11010, 0}};
        echo.script[dotted(2)] = {{1, 0, 10}, {1, 0, 11}, {0, 11010, 0},
                                  {1, 11013, 4, u"127.9.0.1"_s}, {1, 11013, 6, u"127.9.0.2"_s}, {1, 0, 12}};
        echo.script[dotted(3)] = {{1, 0, 0}};
        m.env.prompts.inputs = {u"Somebody with a long name"_s};

        QStringList statuses;
        bool busyEverywhere = true;
        echo.onSend = [&] {
            const QString status = label(w, "statusLabel_")->text();
            if (statuses.isEmpty() || statuses.last() != status)
                statuses << status;
            busyEverywhere = busyEverywhere && w.isPinging() && !button(w, "pingButton_")->isEnabled()
                && label(w, "hostPicture_")->isVisible() && label(w, "serverPicture_")->isVisible()
                && child<Ticker>(w, "busyTicker_")->interval() == 1000 && w.cursor().shape() == Qt::WaitCursor;
        };
        QTest::mouseClick(button(w, "pingButton_"), Qt::LeftButton);

        using Sent = QPair<QString, int>;
        QCOMPARE(echo.sent, (QList<Sent>{{dotted(1), 250},
                                         {dotted(2), 250}, {dotted(2), 250}, {dotted(2), 250},
                                         {dotted(2), 1}, {dotted(2), 2}, {dotted(2), 3},
                                         {dotted(3), 250}, {dotted(3), 250}, {dotted(3), 250}}));
        QVERIFY(busyEverywhere);
        QCOMPARE(statuses, (QStringList{u"Pinging"_s, u"Counting Hops"_s, u"Pinging"_s}));

        QCOMPARE(m.data.PlayerCount, 2);
        const ServerRec *silent = m.data.record(2, 1), *behind = m.data.record(2, 2), *instant = m.data.record(2, 3);
        QCOMPARE(std::pair(silent->Hops, silent->PingMs), std::pair(0, 0));
        QCOMPARE(std::pair(behind->Hops, behind->PingMs), std::pair(3, 10));  // 10.5 to the even 10
        QCOMPARE(std::pair(instant->Hops, instant->PingMs), std::pair(0, 0));
        QCOMPARE(behind->HostName, QString(50, QChar(0)));  // only hops and time are measured

        QCOMPARE(m.env.prompts.shown.size(), 1);
        const auto &asked = m.env.prompts.shown[0];
        QCOMPARE((QStringList{asked.kind, asked.text, asked.title, asked.defaultText}),
                 (QStringList{u"input"_s, u"Give me your name:"_s, u"Name"_s, QString()}));
        QCOMPARE(m.data.PlayerNames[2], u"Somebody with a"_s);

        MatchGrid *g = grid(w);
        QCOMPARE(g->gridCols(), 5);
        QCOMPARE(g->cellText(0, 2), u"Somebody with a"_s);
        QCOMPARE(column(w, 2), (QStringList{u"."_s, u"3.1"_s, u"."_s}));
        // 3.040 against 0, 7.015 against 3.010, 2.009 against 0: half the distance each.
        QCOMPARE(column(w, 3), (QStringList{u"1.520"_s, u"2.003"_s, u"1.005"_s}));
        QCOMPARE(column(w, 4), (QStringList{u"1"_s, u"2"_s, u"3"_s}));
        QVERIFY(g->isColumnHidden(4));

        // Idle again: the controls back on (one switch turns them all), the pictures gone, Save offered.
        QVERIFY(button(w, "pingButton_")->isEnabled() && button(w, "saveButton_")->isVisible());
        for (const char *name : {"hostPicture_", "serverPicture_", "beatTallPicture_", "beatLowPicture_"})
            QVERIFY(label(w, name)->isHidden());
        QCOMPARE(child<Ticker>(w, "busyTicker_")->interval(), 0);
        QCOMPARE(label(w, "statusLabel_")->text(), QString());
        QVERIFY(!w.isPinging() && w.cursor().shape() != Qt::WaitCursor);
        // Save writes every player (a load opening the matcher is tested with the files).
        m.env.prompts.fileNames = {u"friends.Pbx"_s};
        QTest::mouseClick(button(w, "saveButton_"), Qt::LeftButton);
        QCOMPARE(readFile(u"friends.Pbx"_s), PingList::matcherBytes(m.data));

        // A run made while Pings only shows still fills in Hops first; a cancelled name
        // box gives "Unknown".
        QTest::mouseClick(child<QRadioButton>(w, "pingsOnlyOption_"), Qt::LeftButton);
        echo.script.clear();  // every server answers in 10 ms from here on
        QTest::mouseClick(button(w, "pingButton_"), Qt::LeftButton);
        QCOMPARE(m.data.PlayerCount, 3);
        QCOMPARE(m.data.PlayerNames[3], PingList::fixedName(u"Unknown"_s));
        QCOMPARE(column(w, 1), (QStringList{u"3.4"_s, u"7.15"_s, u"2.9"_s}));  // back in list order
        QCOMPARE(column(w, 3), (QStringList{u"1.1"_s, u"1.1"_s, u"1.1"_s}));
    }

    // With Fast Refresh on, Ping measures every server at once and stores what the
    // one-at-a-time run stores where every router answers: nothing for a silent
    // server or one the hop probes never reach, 0 hops at 0 ms, else the hops up to
    // the server's own answer.
    void fastPingRunStoresWhatTheSerialRunStores()
    {
        const QList<PlayerScores> alice{{u"Alice"_s, {{3, 40}, {7, 15}, {2, 9}, {4, 4}}}};
        const auto script = [](ScriptedEcho &echo) {
            echo.script[dotted(1)] = {{0, 11010, 0}};
            echo.routes[dotted(2)] = {u"127.9.0.1"_s, u"127.9.0.2"_s};
            echo.script[dotted(2)] = {{1, 0, 11}};
            echo.script[dotted(3)] = {{1, 0, 0}};
            echo.script[dotted(4)] = {{1, 0, 20}, {1, 0, 20}, {1, 0, 20}, {0, 11010, 0}};
        };
        const auto run = [&script](Matcher &m) {
            script(m.env.echo);
            m.env.prompts.inputs = {u"Somebody"_s};
            QTest::mouseClick(button(*m.w, "pingButton_"), Qt::LeftButton);
        };
        Matcher serial(alice);
        run(serial);
        Matcher fast(alice, true);  // made after the serial run: the newest environment holds the seams
        QStringList statuses;
        fast.env.echo.onSend = [&] {
            const QString status = label(*fast.w, "statusLabel_")->text();
            if (statuses.isEmpty() || statuses.last() != status)
                statuses << status;
        };
        run(fast);
        QCOMPARE(statuses, (QStringList{u"Pinging"_s, u"Counting Hops"_s}));

        QCOMPARE(fast.data.PlayerCount, 2);
        QCOMPARE(std::pair(fast.data.record(2, 2)->Hops, fast.data.record(2, 2)->PingMs), std::pair(3, 11));
        for (qint32 s = 1; s <= 4; ++s)
            QCOMPARE(std::pair(fast.data.record(2, s)->Hops, fast.data.record(2, s)->PingMs),
                     std::pair(serial.data.record(2, s)->Hops, serial.data.record(2, s)->PingMs));
        QCOMPARE(rows(*fast.w), rows(*serial.w));
        int hopProbes = 0;
        for (const auto &[destination, ttl] : fast.env.echo.sent)
            hopProbes += ttl != 250;
        QVERIFY(hopProbes <= 30 + 30);  // servers 2 and 4 only, each time-to-live at most once
        QVERIFY(button(*fast.w, "saveButton_")->isVisible());
    }

    void cancelDuringTheThirdOfFive()
    {
        Matcher m({{u"Alice"_s, {{1, 10}, {2, 20}, {3, 30}, {4, 40}, {5, 50}}}});
        PingMatcherDialog &w = *m.w;
        QPushButton *cancel = button(w, "cancelButton_");
        bool cancelled = false;
        m.env.echo.onSend = [&] {
            if (m.env.echo.sent.last().first == dotted(3) && !cancelled) {
                cancelled = true;
                QTest::mouseClick(cancel, Qt::LeftButton);
            }
        };
        QTest::mouseClick(button(w, "pingButton_"), Qt::LeftButton);

        QVERIFY(w.isVisible());  // Cancel during a run keeps the window
        QCOMPARE(m.data.PlayerCount, 2);
        for (int s = 1; s <= 3; ++s)  // the server in progress is finished
            QCOMPARE(m.data.record(2, s)->Hops, 1);
        for (int s = 4; s <= 5; ++s) {
            QCOMPARE(std::pair(m.data.record(2, s)->Hops, m.data.record(2, s)->PingMs), std::pair(0, 0));
            QCOMPARE(grid(w)->cellText(s, 2), u"."_s);
        }
        QCOMPARE(m.env.echo.sent.last().first, dotted(3));
        QVERIFY(m.env.prompts.shown.isEmpty());  // no name asked
        QCOMPARE(m.data.PlayerNames[2], QString(15, QChar(0)));
        QVERIFY(button(w, "saveButton_")->isHidden());
        QVERIFY(!w.isPinging());

        // The window's close box during a run asks the run to stop and keeps the window.
        m.env.echo.onSend = [&] {
            if (m.env.echo.sent.last().first == dotted(2))
                w.close();
        };
        QTest::mouseClick(button(w, "pingButton_"), Qt::LeftButton);
        QVERIFY(w.isVisible());
        QCOMPARE(m.data.PlayerCount, 3);
        QCOMPARE(m.env.echo.sent.last().first, dotted(2));
        QCOMPARE(m.data.record(3, 2)->PingMs, 10);

        QTest::mouseClick(cancel, Qt::LeftButton);  // idle again: Cancel closes
        QVERIFY(!w.isVisible());
    }

    // The window's tests see the worked example on screen: .877 by hops, 12.222 by pings.
    void factors()
    {
        // Order does not matter; exactly half a thousandth rounds up (P = 2: 0.001 apart).
        QCOMPARE(Match::factor({14060, 12085, 12090}), u".877"_s);
        QCOMPARE(Match::factor({12085, 12086}), u".001"_s);
        QCOMPARE(Match::factor({0, 1, 1, 1}), u".000"_s);  // 0.000375
        // One player, none, or equal players: a perfect match.
        QCOMPARE(Match::factor({Match::comparison(MatchMode::PingsOnly, 250, 999)}), u".000"_s);
        QCOMPARE(Match::factor({}), u".000"_s);
        QCOMPARE(Match::factor({9040, 9040, 9040}), u".000"_s);
        // A zero record takes part with value 0: 12.085 and 0 are 6.0425 away from their mean.
        QCOMPARE(Match::factor({12085, 0}), u"6.043"_s);
        QCOMPARE(Match::factor({Match::comparison(MatchMode::PingsOnly, 12, 100),
                                Match::comparison(MatchMode::PingsOnly, 3, 300)}), u"100.000"_s);
    }

    void cellsAndComparisonValues()
    {
        const struct {
            MatchMode mode;
            int hops, ms;
            const char16_t *cell;
            Milli comparison;
        } cases[] = {
            // 5 ms at 12 hops reads as 12.5, and the comparison keeps the 5 in the thousandths.
            // Nothing measured is a lone point, value 0, or nothing in Pings only. A second and
            // more spills over ("12.1235"). Damaged files may hold negative numbers: the texts
            // read as far as they form a number. The largest values do not overflow.
            {MatchMode::HopsFirst, 12, 5, u"12.5", 12005}, {MatchMode::HopsFirst, 0, 0, u".", 0},
            {MatchMode::PingsOnly, 0, 0, u"", 0},          {MatchMode::HopsFirst, 12, 1235, u"12.124", 12124},
            {MatchMode::HopsFirst, 0, 7, u".7", 7},        {MatchMode::HopsFirst, 3, 0, u"3.", 3000},
            {MatchMode::HopsFirst, 12, -5, u"12.", 12000}, {MatchMode::HopsFirst, -5, 90, u"-5.9", -5090},
            {MatchMode::HopsFirst, 2147483647, 2147483647, u"2147483647.215", 2147483647215LL},
        };
        for (const auto &c : cases) {
            QCOMPARE(Match::display(c.mode, c.hops, c.ms), QString::fromUtf16(c.cell));
            QCOMPARE(Match::comparison(c.mode, c.hops, c.ms), c.comparison);
        }
    }

    void formatsAtTheirBoundaries()
    {
        const struct {
            Milli value;
            const char16_t *decimals, *thousands;
        } cases[] = {
            {0, u".", u".000"},          {1, u".001", u".001"},      {500, u".5", u".500"},
            {1000, u"1.", u"1.000"},     {12000, u"12.", u"12.000"}, {999999, u"999.999", u"999.999"},
            {-500, u"-.5", u"-.500"},    {-12085, u"-12.085", u"-12.085"},
            // Rounding on the way in: halves away from zero, decided on the text's digits.
            {read(u"0.0005"), u".001", u".001"},    {read(u"0.0004999"), u".", u".000"},
            {read(u"999.9995"), u"1000.", u"1000.000"}, {read(u"999.9994"), u"999.999", u"999.999"},
            {read(u"-0.0005"), u"-.001", u"-.001"}, {read(u"12.0855"), u"12.086", u"12.086"},
            {read(u".87666666"), u".877", u".877"},
        };
        for (const auto &c : cases) {
            QCOMPARE(hashDecimals(c.value), QString::fromUtf16(c.decimals));
            QCOMPARE(hashThousands(c.value), QString::fromUtf16(c.thousands));
        }
        const QStringList whole{hashWhole(0), hashWhole(7), hashWhole(1000), hashWhole(-5)};
        QCOMPARE(whole, (QStringList{QString(), u"7"_s, u"1000"_s, u"-5"_s}));
        const QStringList padded{zeroPadded(0), zeroPadded(12), zeroPadded(1234), zeroPadded(-5)};
        QCOMPARE(padded, (QStringList{u"000"_s, u"012"_s, u"1234"_s, u"-005"_s}));
    }

    void readingTexts()
    {
        const std::pair<const char16_t *, Milli> cases[] = {
            {u"12.85 ms", 12850}, {u"12.", 12000}, {u".5", 500}, {u"+7", 7000}, {u"-.25x", -250},
            {u"", 0}, {u".", 0}, {u"-", 0}, {u"abc", 0}, {u" 12", 0}, {u"-.", 0}, {u"x12", 0},
            {u"99999999999999999999999", 1'000'000'000'000'000LL},  // held, no overflow
        };
        for (auto [text, value] : cases)
            QCOMPARE(read(QStringView(text)), value);
    }

    void numericOrder()
    {
        for (const char16_t *text : {u".877", u"12", u" -3.5 "})
            QVERIFY(looksNumeric(text));
        for (const char16_t *text : {u"", u".", u"12 ms"})
            QVERIFY(!looksNumeric(text));
        // As numbers, not as texts, beyond three decimals too; for the generic order,
        // numbers before texts and texts without regard to case.
        const struct {
            const char16_t *a, *b;
            int numeric, generic;
        } cases[] = {
            {u"9", u"10", -1, -1}, {u".877", u"1.000", -1, -1}, {u"2.5", u"2.50", 0, 0}, {u"007", u"7", 0, 0},
            {u"-0", u"0", 0, 0}, {u"-2", u"-10", 1, 1}, {u"1.0001", u"1.0002", -1, -1}, {u"10", u"9.5", 1, 1},
            {u"999", u"abc", 2, -1}, {u"", u"1", 2, 1}, {u"Arena", u"arena", 2, 0}, {u"arena", u"Base", 2, -1},
        };
        const auto sign = [](int v) { return (v > 0) - (v < 0); };
        for (const auto &c : cases) {
            if (c.numeric != 2)
                QCOMPARE(sign(compareNumeric(c.a, c.b)), c.numeric);
            QCOMPARE(sign(compareGeneric(c.a, c.b)), c.generic);
        }
    }
};

QTEST_MAIN(TestPingMatcher)
#include "tst_pingmatcher.moc"
