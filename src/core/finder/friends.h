#pragma once
#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

// The friends list: Pulsebox.friends in the program's folder, UTF-8, one name a
// line (LF or CR LF), written whole or not at all (WriteFileAtomically).
namespace Friends {
inline const QString kFileName = QStringLiteral("Pulsebox.friends");
// A list of friends is a few hundred bytes; a file over this is refused unread
// (BoundedFile), never cut and saved back shorter.
constexpr qint64 kMaxBytes = 256 * 1024;
constexpr int kMaxNameLength = 64;  // the game cuts names far shorter

// One name a line, blanks around it trimmed, control characters dropped, at most
// kMaxNameLength characters; empty names and names already listed (compared as
// PlayerNames folds them) are skipped. Bytes that are no UTF-8 read as U+FFFD.
QStringList parse(const QByteArray &bytes);
QByteArray serialize(const QStringList &names);

// A friend seen on a server by one refresh.
struct Sighting {
    QString player;  // the name as the server sent it
    QString target;  // address ":" port
    QString server;  // the server's host name, or its target when it gave none

    bool operator==(const Sighting &) const = default;
};

// One sighting per player (folded) per server: a server listed twice (a favorite
// that the list names too) shows its friends once. "n friends online" counts these.
QList<Sighting> distinct(const QList<Sighting> &sightings);
// The sightings of `now` that `before` lacks: the same player (folded) on the same
// server counts as still there, so a friend who moves to another server joins it.
QList<Sighting> joined(const QList<Sighting> &before, const QList<Sighting> &now);
// "NAME joined SERVER": the tray's message for one sighting.
QString joinedText(const Sighting &sighting);
}
