#pragma once
#include <QString>
#include <QtGlobal>

// An IPv4 address value: a signed 32-bit number whose bytes in memory are the
// dotted numbers from left to right (network byte order).

// Four parts, each a decimal number taken modulo 256. Fewer than four parts,
// more than four, or a part that is not a plain decimal number give 0.
qint32 DottedToAddress(const QString &dotted);
QString AddressToDotted(qint32 address);
// False for the empty path; otherwise whether a regular file of that exact name exists.
bool FileExists(const QString &path);

// The first byte in memory of the value, and so on: what the echo call puts on the wire.
quint32 AddressToHostOrder(qint32 address);
qint32 AddressFromHostOrder(quint32 hostOrder);

// Numeric value of a text as the program's conversions read it: the longest
// decimal number at its start after leading blanks, with an optional sign; 0 when none.
qint64 LeadingNumber(const QString &text);
