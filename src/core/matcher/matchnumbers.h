#pragma once
#include <QString>
#include <QStringView>
#include <QtGlobal>

#include <vector>

// The matcher's numbers are decimal texts: the cells are what the user compares, and
// a Match Factor must come out as the decimal arithmetic on those texts gives it. So
// every value is kept in whole thousandths (exact), never in binary fractions.
namespace MatchNumbers {

using Milli = qint64;  // a number in thousandths: 12.085 is 12085

// Reads a text as a number: its longest leading decimal number (an optional sign,
// digits, an optional point and digits), 0 when there is none; rounded to three
// decimals, halves away from zero. Values beyond +-10^12 are held at that bound.
Milli read(QStringView text);

// Compares two texts that both look like numbers (looksNumeric), exactly, with all
// their decimals: negative, 0 or positive like a - b.
int compareNumeric(QStringView a, QStringView b);
// The whole text (blanks around it aside) is one decimal number.
bool looksNumeric(QStringView text);
// The grid's sort order: numbers as numbers, before texts; texts without regard to case.
int compareGeneric(QStringView a, QStringView b);

QString hashDecimals(Milli value);   // "##.###": 12.85, .5, 12. and a lone point for 0
QString hashThousands(Milli value);  // "##.000": .250, 1.000
QString hashWhole(qint64 value);     // "###": no leading zeros, nothing for 0
QString zeroPadded(qint64 value);    // "000": at least three digits

}

// How the matcher compares players: by hop count with the time as decimals, or by time.
enum class MatchMode { HopsFirst = 0, PingsOnly = 1 };

namespace Match {

// The cell text of one player's record for one server.
QString display(MatchMode mode, qint32 hops, qint32 pingMs);
// The value that enters the Match Factor, in thousandths.
MatchNumbers::Milli comparison(MatchMode mode, qint32 hops, qint32 pingMs);
// Mean absolute deviation of the players' values, written "##.000"; ".000" for no players.
QString factor(const std::vector<MatchNumbers::Milli> &values);
// Column 0 of a server's row: the host name and the version at their full widths.
QString serverCell(const QString &hostName, const QString &version);

}
