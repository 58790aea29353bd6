#pragma once
#include <QByteArray>
#include <QString>

// Text on the wire and in files is single-byte Windows-1252: every byte becomes
// exactly one character and back, so a datagram keeps its length and its 0xFF bytes.
namespace WireText {
QString fromBytes(const QByteArray &bytes);
// Characters outside the code page become '?'.
QByteArray toBytes(const QString &text);
}
