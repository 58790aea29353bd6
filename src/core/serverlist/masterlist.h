#pragma once
#include <QByteArray>
#include <QList>
#include <QString>

#include <optional>

// Quake 2 master servers: a datagram "query\n\0" to UDP port 27900 brings the
// master's list back as one or more datagrams, each an optional four 0xFF bytes,
// the word "servers", one separator byte, then 6-byte records (four address bytes
// and the port, network order).
namespace MasterList {
constexpr quint16 kDefaultPort = 27900;

QByteArray queryDatagram();

struct Record {
    quint32 address = 0;  // host byte order
    quint16 port = 0;
    bool operator==(const Record &) const = default;
};

struct Reply {
    QList<Record> records;   // in the order the master sent them
    int skipped = 0;         // records that name no server (address 0 or port 0)
    int truncatedBytes = 0;  // a last record cut short: its bytes are dropped
};

// One datagram. Anything that is not a master's answer (no "servers" word at the
// start) gives nothing.
std::optional<Reply> parse(const QByteArray &datagram);
// Bare 6-byte records, as a master's answer carries them after its word (and as
// a binary web list is made).
Reply parseRecords(const QByteArray &records);

// "a.b.c.d:port", the entry form the refresh reads.
QString entryText(const Record &record);

struct Location {
    QString host;
    quint16 port = kDefaultPort;
};
// "master://host[:port]" (scheme in any letter case). Returns false for any other
// text; `location` is then untouched. A master URL with an empty host or a port
// that is no number from 1 to 65535 gives true with an empty host.
bool parseUrl(const QString &url, Location *location);
// "host[:port]" as typed on a command line; nothing when it is no such text.
std::optional<Location> parseHostPort(const QString &text);
}
