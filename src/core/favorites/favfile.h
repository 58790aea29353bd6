#pragma once
#include <QByteArray>
#include <QList>
#include <QString>

struct Favorite {
    QString address;      // host, or host ":" port, as written
    QString description;  // as written, trailing spaces and NULs included
    bool operator==(const Favorite &) const = default;
};

// Pulsebox.fav: pairs of lines (address, description), CR LF, no header.
namespace FavFile {
inline const QString kName = QStringLiteral("Pulsebox.fav");

// Lines may end in CR LF, LF or CR. A last address without its description line
// is kept with an empty description.
QList<Favorite> parse(const QByteArray &bytes);
QByteArray serialize(const QList<Favorite> &favorites);
// `existing` (the file's bytes, kept as they are) with one more favorite after
// them, in one encoding for the whole file.
QByteArray appended(const QByteArray &existing, const Favorite &favorite);
}

// Lines of a text file as the program writes them: each text, then CR LF, in
// Windows-1252 or, when some text does not fit it, UTF-8 (WireText::toFileBytes).
QByteArray CrLfLines(const QStringList &lines);
// Splits at CR LF, LF or CR; a final line end does not start another line.
QStringList SplitLines(const QString &text);
// Replaces `path` whole or not at all: writes a temporary file beside it and
// renames it over the old one. On failure the old file is untouched and
// `error` says why.
bool WriteFileAtomically(const QString &path, const QByteArray &bytes, QString *error);
