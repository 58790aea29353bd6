#include "matcher/matchnumbers.h"

#include <QTest>

using namespace MatchNumbers;
using namespace Qt::StringLiterals;

namespace {
std::vector<Milli> values(MatchMode mode, std::initializer_list<std::pair<int, int>> hopsAndTimes)
{
    std::vector<Milli> v;
    for (auto [h, t] : hopsAndTimes)
        v.push_back(Match::comparison(mode, h, t));
    return v;
}
}

class TestMatchNumbers : public QObject {
    Q_OBJECT
private slots:
    void workedExample()
    {
        QCOMPARE(Match::display(MatchMode::HopsFirst, 12, 85), u"12.85"_s);
        QCOMPARE(Match::display(MatchMode::HopsFirst, 12, 90), u"12.9"_s);
        QCOMPARE(Match::display(MatchMode::HopsFirst, 14, 60), u"14.6"_s);
        const auto v = values(MatchMode::HopsFirst, {{12, 85}, {12, 90}, {14, 60}});
        QCOMPARE(v, (std::vector<Milli>{12085, 12090, 14060}));
        QCOMPARE(Match::factor(v), u".877"_s);  // 0.87666...
        // The same three players in another order give the same factor.
        QCOMPARE(Match::factor({14060, 12085, 12090}), u".877"_s);
        // Exactly half a thousandth rounds up: deviations 0.0005 on average (P = 2: 0.001 apart).
        QCOMPARE(Match::factor({12085, 12086}), u".001"_s);  // 0.0005
        QCOMPARE(Match::factor({0, 1, 1, 1}), u".000"_s);    // 0.000375
    }

    void onePlayerIsZero()
    {
        for (auto [h, t] : {std::pair{12, 85}, {0, 0}, {250, 999}, {-3, 7}})
            for (MatchMode mode : {MatchMode::HopsFirst, MatchMode::PingsOnly})
                QCOMPARE(Match::factor({Match::comparison(mode, h, t)}), u".000"_s);
        QCOMPARE(Match::factor({}), u".000"_s);
        // Equal players are a perfect match too.
        QCOMPARE(Match::factor(values(MatchMode::HopsFirst, {{9, 40}, {9, 40}, {9, 40}})), u".000"_s);
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
        // A zero record takes part with value 0: 12.085 and 0 are 6.0425 away from their mean.
        QCOMPARE(Match::factor({12085, 0}), u"6.043"_s);
    }

    void pingsOnly()
    {
        QCOMPARE(Match::display(MatchMode::PingsOnly, 12, 100), u"100"_s);
        QCOMPARE(Match::factor(values(MatchMode::PingsOnly, {{12, 100}, {3, 300}})), u"100.000"_s);
        // Hops do not count here: 85, 90 and 60 ms are 6.667, 11.667 and 18.333 from their mean.
        QCOMPARE(Match::factor(values(MatchMode::PingsOnly, {{12, 85}, {12, 90}, {14, 60}})), u"12.222"_s);
    }

    void formatsAtTheirBoundaries()
    {
        const struct {
            Milli value;
            const char16_t *decimals, *thousands;
        } cases[] = {
            {0, u".", u".000"},          {500, u".5", u".500"},      {12000, u"12.", u"12.000"},
            {12850, u"12.85", u"12.850"}, {1, u".001", u".001"},     {250, u".25", u".250"},
            {1000, u"1.", u"1.000"},     {999999, u"999.999", u"999.999"},
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

QTEST_GUILESS_MAIN(TestMatchNumbers)
#include "tst_matchnumbers.moc"
