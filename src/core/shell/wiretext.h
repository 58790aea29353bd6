#pragma once
#include <QByteArray>
#include <QString>

// Text on the wire and in files is single-byte Windows-1252: every byte becomes
// exactly one character and back, so a datagram keeps its length and its 0xFF bytes.
namespace WireText {
QString fromBytes(const QByteArray &bytes);
// Characters outside the code page become '?'.
QByteArray toBytes(const QString &text);

// Pulsebox.cfg and Pulsebox.fav: Windows-1252 whenever the code page holds the
// whole text (as the files always were), else UTF-8, so that a Cyrillic or Greek
// folder name survives a save. Reading takes UTF-8 when the bytes are valid UTF-8
// with at least one byte above 0x7F, else Windows-1252.
bool fitsCodePage(const QString &text);
QByteArray toFileBytes(const QString &text);
QString fromFileBytes(const QByteArray &bytes);
}
