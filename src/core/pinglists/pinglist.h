#pragma once
#include "shell/serverrow.h"

#include <QByteArray>
#include <QList>
#include <QString>

#include <vector>

// The ping matcher's players: one list of server records per player, all lists
// of the same length. Player 1's list names the servers; index 0 of either
// dimension is never used.
//
// After a load that stopped early the counts may disagree with what the arrays
// hold (a bad PlayerCount is stored before it is checked); the matcher window only
// opens after a load that got through, so nothing reads them in that state, and
// the writer writes only what is held.
struct MatcherData {
    qint32 PlayerCount = 0;       // P
    qint32 MatchServerCount = 0;  // N
    std::vector<QString> PlayerNames;               // 0..P, 15 characters each; NULs until assigned
    std::vector<std::vector<ServerRec>> PlayerLists;  // [p][s], 0..P x 0..N

    bool operator==(const MatcherData &) const = default;

    // Empties the names (0..players) or the lists (0..players x 0..servers).
    void recreateNames(qint32 players);
    void recreateLists(qint32 players, qint32 servers);
    // One more player with a never-assigned name and zero records (the Ping run).
    void addPlayer();
    // PlayerLists(p, s) when held, else nullptr.
    ServerRec *record(qint32 p, qint32 s);
    const ServerRec *record(qint32 p, qint32 s) const;
};

// Ping-list files ("*.Pbx"): magic "Pulsebox 1.0", P and N (signed 32-bit,
// little-endian), then P blocks of a 15-byte name and N 73-byte records. Texts are
// single-byte Windows-1252.
namespace PingList {
inline const QString kFilter = QStringLiteral("Pulsebox (*.Pbx)");
inline const QByteArray kMagic = QByteArrayLiteral("Pulsebox 1.0");
constexpr int kHeaderBytes = 20;
constexpr int kNameBytes = 15;
constexpr int kRecordBytes = 73;
// Counts whose content would pass this many bytes end a load as a damaged file.
// It also bounds what a load allocates, whatever the counts say.
constexpr qint64 kMaxContentBytes = 16 * 1024 * 1024;
constexpr qint32 kMaxPlayers = 10000;

// A file name without any extension gets ".Pbx"; one with an extension (".pbx",
// ".txt" ...) is kept as typed.
QString withDefaultSuffix(const QString &path);

// A name as the file holds it: cut or blank-padded to 15 characters.
QString fixedName(const QString &name);

// One server record in its 73-byte form and back. Texts shorter than their field
// are padded with blanks; a never-assigned text (NULs) stays zero bytes.
QByteArray recordBytes(const ServerRec &rec);
ServerRec recordFrom(const char *bytes);  // reads exactly 73 bytes

// The main window's save: P = 1, N = count, the name cut or padded to 15, then
// servers[1..count] (as many as are held).
QByteArray serverListBytes(const std::vector<ServerRec> &servers, qint32 count, const QString &name);
// The matcher's save: every player held, names as they are (NULs when never assigned).
QByteArray matcherBytes(const MatcherData &data);

struct Message {
    QString text;
    QString title;     // "Pulsebox", or "Error " for a cut list
    bool exclamation;  // shown with the exclamation icon
    bool operator==(const Message &) const = default;
};

enum class Outcome {
    Loaded,            // the matcher opens (also when lists were cut: see the messages)
    NotPulsebox,       // the data stay as they were
    IncorrectVersion,  // the data stay as they were
    Damaged,           // stopped at P or N: the data are as far as the load got
};

struct LoadResult {
    Outcome outcome = Outcome::Damaged;
    QList<Message> messages;  // in the order they are shown
    MatcherData data;         // the matcher data after the load, whatever its outcome
};

// Reads a ping-list file over the matcher data held before (which a load that
// stops early partly keeps: P is stored before it is checked, N and the emptied
// names before N is checked). A file that ends early keeps what was read and says
// "File ended at: s" once per player whose list is cut. Any bytes at all are safe:
// nothing is allocated beyond what kMaxContentBytes allows.
LoadResult read(const QByteArray &bytes, MatcherData previous);
}
