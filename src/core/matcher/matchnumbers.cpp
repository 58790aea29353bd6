#include "matcher/matchnumbers.h"

#include <algorithm>

namespace MatchNumbers {

namespace {

constexpr qint64 kBound = 1'000'000'000'000;  // integer parts are held at 10^12

// A decimal number found at the start of a text, as its digits.
struct Decimal {
    bool negative = false;
    QStringView whole;     // digits before the point
    QStringView fraction;  // digits after it
    qsizetype length = 0;  // characters taken; 0 when the text starts with no number
};

bool isDigit(QChar c) { return c >= u'0' && c <= u'9'; }

Decimal leading(QStringView text)
{
    Decimal d;
    qsizetype i = 0;
    if (i < text.size() && (text[i] == u'-' || text[i] == u'+')) {
        d.negative = text[i] == u'-';
        ++i;
    }
    const qsizetype wholeStart = i;
    while (i < text.size() && isDigit(text[i]))
        ++i;
    d.whole = text.sliced(wholeStart, i - wholeStart);
    qsizetype end = i;
    if (i < text.size() && text[i] == u'.') {
        const qsizetype fractionStart = ++i;
        while (i < text.size() && isDigit(text[i]))
            ++i;
        d.fraction = text.sliced(fractionStart, i - fractionStart);
        if (!d.whole.isEmpty() || !d.fraction.isEmpty())
            end = i;  // "12." takes its point; a lone "." is no number
    }
    if (d.whole.isEmpty() && d.fraction.isEmpty())
        return {};
    d.length = end;
    return d;
}

QStringView withoutLeadingZeros(QStringView digits)
{
    while (!digits.isEmpty() && digits.front() == u'0')
        digits = digits.sliced(1);
    return digits;
}

QStringView withoutTrailingZeros(QStringView digits)
{
    while (!digits.isEmpty() && digits.back() == u'0')
        digits.chop(1);
    return digits;
}

// |a| against |b| with all their digits.
int compareMagnitude(const Decimal &a, const Decimal &b)
{
    const QStringView wa = withoutLeadingZeros(a.whole), wb = withoutLeadingZeros(b.whole);
    if (wa.size() != wb.size())
        return wa.size() < wb.size() ? -1 : 1;
    if (const int c = wa.compare(wb); c != 0)
        return c < 0 ? -1 : 1;
    const QStringView fa = withoutTrailingZeros(a.fraction), fb = withoutTrailingZeros(b.fraction);
    const int c = fa.compare(fb);  // same length up to a longer tail, which is then larger
    return c < 0 ? -1 : c > 0 ? 1 : 0;
}

bool isZero(const Decimal &d)
{
    return withoutLeadingZeros(d.whole).isEmpty() && withoutTrailingZeros(d.fraction).isEmpty();
}

QString unsignedDigits(quint64 value) { return QString::number(value); }

quint64 magnitude(qint64 value)
{
    return value < 0 ? 0 - static_cast<quint64>(value) : static_cast<quint64>(value);
}

QString sign(qint64 value) { return value < 0 ? QStringLiteral("-") : QString(); }

}

Milli read(QStringView text)
{
    const Decimal d = leading(text);
    qint64 whole = 0;
    for (QChar c : d.whole) {
        whole = whole * 10 + (c.unicode() - u'0');
        if (whole >= kBound) {
            whole = kBound;
            break;
        }
    }
    qint64 thousandths = whole * 1000;
    for (int i = 0; i < 3; ++i) {
        const int digit = i < d.fraction.size() ? d.fraction[i].unicode() - u'0' : 0;
        thousandths += digit * (i == 0 ? 100 : i == 1 ? 10 : 1);
    }
    // The fourth decimal decides: 5 or more is at least half a thousandth.
    if (whole < kBound && d.fraction.size() > 3 && d.fraction[3] >= u'5')
        ++thousandths;
    return d.negative ? -thousandths : thousandths;
}

bool looksNumeric(QStringView text)
{
    const QStringView trimmed = text.trimmed();
    const Decimal d = leading(trimmed);
    return d.length > 0 && d.length == trimmed.size();
}

int compareNumeric(QStringView a, QStringView b)
{
    const Decimal da = leading(a.trimmed()), db = leading(b.trimmed());
    const bool na = da.negative && !isZero(da), nb = db.negative && !isZero(db);
    if (na != nb)
        return na ? -1 : 1;
    const int c = compareMagnitude(da, db);
    return na ? -c : c;
}

int compareGeneric(QStringView a, QStringView b)
{
    const bool na = looksNumeric(a), nb = looksNumeric(b);
    if (na && nb)
        return compareNumeric(a, b);
    if (na != nb)
        return na ? -1 : 1;
    const int c = a.compare(b, Qt::CaseInsensitive);
    return c < 0 ? -1 : c > 0 ? 1 : 0;
}

QString hashDecimals(Milli value)
{
    const quint64 m = magnitude(value);
    QString fraction = QStringLiteral("%1").arg(m % 1000, 3, 10, QLatin1Char('0'));
    while (fraction.endsWith(u'0'))
        fraction.chop(1);
    return sign(value) + (m >= 1000 ? unsignedDigits(m / 1000) : QString()) + u'.' + fraction;
}

QString hashThousands(Milli value)
{
    const quint64 m = magnitude(value);
    return sign(value) + (m >= 1000 ? unsignedDigits(m / 1000) : QString()) + u'.'
        + QStringLiteral("%1").arg(m % 1000, 3, 10, QLatin1Char('0'));
}

QString hashWhole(qint64 value)
{
    return value == 0 ? QString() : sign(value) + unsignedDigits(magnitude(value));
}

QString zeroPadded(qint64 value)
{
    return sign(value) + QStringLiteral("%1").arg(magnitude(value), 3, 10, QLatin1Char('0'));
}

}

namespace Match {

using namespace MatchNumbers;

QString display(MatchMode mode, qint32 hops, qint32 pingMs)
{
    if (mode == MatchMode::PingsOnly)
        return hashWhole(pingMs);
    return hashDecimals(read(QString::number(hops) + u'.' + QString::number(pingMs)));
}

Milli comparison(MatchMode mode, qint32 hops, qint32 pingMs)
{
    if (mode == MatchMode::PingsOnly)
        return read(hashWhole(pingMs));
    // Written "##.###" and read back: the three-decimal text is the value, exactly.
    return read(hashDecimals(read(zeroPadded(hops) + u'.' + zeroPadded(pingMs))));
}

QString factor(const std::vector<Milli> &values)
{
    // mean m = S / P; factor = sum |m - v| / P = sum |S - P v| / P^2, in exact integers.
    __extension__ typedef __int128 Wide;
    const Wide players = static_cast<Wide>(values.size());
    if (players == 0)
        return hashThousands(0);
    Wide total = 0;
    for (Milli v : values)
        total += v;
    Wide deviations = 0;
    for (Milli v : values) {
        const Wide d = total - players * v;
        deviations += d < 0 ? -d : d;
    }
    const Wide divisor = players * players;
    const Wide rounded = (2 * deviations + divisor) / (2 * divisor);  // halves away from zero
    return hashThousands(static_cast<Milli>(rounded));
}

QString serverCell(const QString &hostName, const QString &version)
{
    return hostName.leftJustified(50, u' ', true) + QStringLiteral(" version:")
        + version.leftJustified(5, u' ', true);
}

}
