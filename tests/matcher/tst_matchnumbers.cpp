#include "matcher/matchnumbers.h"

#include <QTest>

using namespace MatchNumbers;
using namespace Qt::StringLiterals;

class TestMatchNumbers : public QObject {
    Q_OBJECT
private slots:
    void workedExample();
    void onePlayerIsZero();
    void cellsAndComparisonValues();
    void pingsOnly();
    void formatsAtTheirBoundaries();
    void readingTexts();
    void numericOrder();
};

namespace {
std::vector<Milli> values(MatchMode mode, std::initializer_list<std::pair<int, int>> hopsAndTimes)
{
    std::vector<Milli> v;
    for (auto [h, t] : hopsAndTimes)
        v.push_back(Match::comparison(mode, h, t));
    return v;
}
}

void TestMatchNumbers::workedExample()
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

void TestMatchNumbers::onePlayerIsZero()
{
    for (auto [h, t] : {std::pair{12, 85}, {0, 0}, {250, 999}, {-3, 7}})
        for (MatchMode mode : {MatchMode::HopsFirst, MatchMode::PingsOnly})
            QCOMPARE(Match::factor({Match::comparison(mode, h, t)}), u".000"_s);
    QCOMPARE(Match::factor({}), u".000"_s);
    // Equal players are a perfect match too.
    QCOMPARE(Match::factor(values(MatchMode::HopsFirst, {{9, 40}, {9, 40}, {9, 40}})), u".000"_s);
}

void TestMatchNumbers::cellsAndComparisonValues()
{
    // 5 ms at 12 hops: the cell reads as 12.5, the comparison keeps the 5 in the thousandths.
    QCOMPARE(Match::display(MatchMode::HopsFirst, 12, 5), u"12.5"_s);
    QCOMPARE(Match::comparison(MatchMode::HopsFirst, 12, 5), 12005);
    // Nothing measured: a lone point, value 0; Pings only shows nothing.
    QCOMPARE(Match::display(MatchMode::HopsFirst, 0, 0), u"."_s);
    QCOMPARE(Match::comparison(MatchMode::HopsFirst, 0, 0), 0);
    QCOMPARE(Match::display(MatchMode::PingsOnly, 0, 0), QString());
    QCOMPARE(Match::comparison(MatchMode::PingsOnly, 0, 0), 0);
    // A zero record takes part with value 0: 12.085 and 0 are 6.0425 away from their mean.
    QCOMPARE(Match::factor({12085, 0}), u"6.043"_s);
    // Times of a second and more spill over: the cell text keeps three decimals of "12.1235".
    QCOMPARE(Match::display(MatchMode::HopsFirst, 12, 1235), u"12.124"_s);
    QCOMPARE(Match::comparison(MatchMode::HopsFirst, 12, 1235), 12124);
    QCOMPARE(Match::display(MatchMode::HopsFirst, 0, 7), u".7"_s);
    QCOMPARE(Match::comparison(MatchMode::HopsFirst, 0, 7), 7);
    QCOMPARE(Match::display(MatchMode::HopsFirst, 3, 0), u"3."_s);
    // Damaged files may hold negative numbers: the texts read as far as they form a number.
    QCOMPARE(Match::display(MatchMode::HopsFirst, 12, -5), u"12."_s);
    QCOMPARE(Match::comparison(MatchMode::HopsFirst, -5, 90), -5090);
    QCOMPARE(Match::comparison(MatchMode::HopsFirst, 2147483647, 2147483647), 2147483647215LL);  // 2147483647.2147483647, no overflow
}

void TestMatchNumbers::pingsOnly()
{
    QCOMPARE(Match::display(MatchMode::PingsOnly, 12, 100), u"100"_s);
    QCOMPARE(Match::factor(values(MatchMode::PingsOnly, {{12, 100}, {3, 300}})), u"100.000"_s);
    // Hops do not count here: 85, 90 and 60 ms are 6.667, 11.667 and 18.333 from their mean.
    QCOMPARE(Match::factor(values(MatchMode::PingsOnly, {{12, 85}, {12, 90}, {14, 60}})), u"12.222"_s);
}

void TestMatchNumbers::formatsAtTheirBoundaries()
{
    const struct {
        Milli value;
        const char16_t *decimals, *thousands;
    } cases[] = {
        {0, u".", u".000"},          {500, u".5", u".500"},      {12000, u"12.", u"12.000"},
        {12850, u"12.85", u"12.85"}, {1, u".001", u".001"},      {250, u".25", u".250"},
        {1000, u"1.", u"1.000"},     {999999, u"999.999", u"999.999"},
        {-500, u"-.5", u"-.500"},    {-12085, u"-12.085", u"-12.085"},
    };
    for (const auto &c : cases) {
        QCOMPARE(hashDecimals(c.value), QString::fromUtf16(c.decimals));
        if (c.value != 12850)
            QCOMPARE(hashThousands(c.value), QString::fromUtf16(c.thousands));
    }
    QCOMPARE(hashThousands(12850), u"12.850"_s);
    // Rounding on the way in: halves away from zero, as decimal texts, not binary fractions.
    QCOMPARE(hashDecimals(read(u"0.0005")), u".001"_s);
    QCOMPARE(hashDecimals(read(u"0.0004999")), u"."_s);
    QCOMPARE(hashDecimals(read(u"999.9995")), u"1000."_s);
    QCOMPARE(hashThousands(read(u"999.9995")), u"1000.000"_s);
    QCOMPARE(hashDecimals(read(u"999.9994")), u"999.999"_s);
    QCOMPARE(hashDecimals(read(u"-0.0005")), u"-.001"_s);
    QCOMPARE(hashThousands(read(u"12.0855")), u"12.086"_s);  // decided on the text's digits
    QCOMPARE(hashThousands(read(u".87666666")), u".877"_s);

    QCOMPARE(hashWhole(0), QString());
    QCOMPARE(hashWhole(7), u"7"_s);
    QCOMPARE(hashWhole(1000), u"1000"_s);
    QCOMPARE(hashWhole(-5), u"-5"_s);
    QCOMPARE(zeroPadded(0), u"000"_s);
    QCOMPARE(zeroPadded(12), u"012"_s);
    QCOMPARE(zeroPadded(1234), u"1234"_s);
    QCOMPARE(zeroPadded(-5), u"-005"_s);
}

void TestMatchNumbers::readingTexts()
{
    QCOMPARE(read(u"12.85 ms"), 12850);
    QCOMPARE(read(u"12."), 12000);
    QCOMPARE(read(u".5"), 500);
    QCOMPARE(read(u"+7"), 7000);
    QCOMPARE(read(u"-.25x"), -250);
    for (const char16_t *none : {u"", u".", u"-", u"abc", u" 12", u"-.", u"x12"})
        QCOMPARE(read(QStringView(none)), 0);
    QCOMPARE(read(u"99999999999999999999999"), 1'000'000'000'000'000LL);  // held, no overflow
}

void TestMatchNumbers::numericOrder()
{
    QVERIFY(looksNumeric(u".877"));
    QVERIFY(looksNumeric(u"12"));
    QVERIFY(looksNumeric(u" -3.5 "));
    QVERIFY(!looksNumeric(u""));
    QVERIFY(!looksNumeric(u"."));
    QVERIFY(!looksNumeric(u"12 ms"));
    QVERIFY(compareNumeric(u"9", u"10") < 0);          // as numbers, not as texts
    QVERIFY(compareNumeric(u".877", u"1.000") < 0);
    QVERIFY(compareNumeric(u"2.5", u"2.50") == 0);
    QVERIFY(compareNumeric(u"007", u"7") == 0);
    QVERIFY(compareNumeric(u"-0", u"0") == 0);
    QVERIFY(compareNumeric(u"-2", u"-10") > 0);
    QVERIFY(compareNumeric(u"1.0001", u"1.0002") < 0);  // beyond three decimals too
    QVERIFY(compareGeneric(u"10", u"9.5") > 0);
    QVERIFY(compareGeneric(u"999", u"abc") < 0);  // numbers before texts
    QVERIFY(compareGeneric(u"", u"1") > 0);
    QVERIFY(compareGeneric(u"Arena", u"arena") == 0);
    QVERIFY(compareGeneric(u"arena", u"Base") < 0);
}

QTEST_GUILESS_MAIN(TestMatchNumbers)
#include "tst_matchnumbers.moc"
