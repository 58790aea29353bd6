#pragma once
#include "shell/serverrow.h"

#include <QString>
#include <QtGlobal>

#include <vector>

// What every echo of the program carries, the one-at-a-time probes' and the engine's.
inline const QString EchoRequestText = QStringLiteral("Server please echo this back.");

// What a refresh decides about each server, for the one-at-a-time refresh and
// the probe engine alike: both feed these the same outcomes and so give the same
// lines, records and rows.
namespace Probe {

// Numeric value of a text as the program reads a typed number: the longest
// decimal number (sign, digits, an optional fraction) at its start after
// leading blanks; 0 when there is none. "230.5" is 230.5.
double NumberValue(const QString &text);
// A port text's value rounded to a whole number (halves to even), clamped to
// the record's 32-bit field: "27910.7" is 27911.
qint32 PortNumber(const QString &portText);
// The port the queries go to: PortNumber when it is 1..65535, else 0 (no port).
quint16 QueryPort(const QString &portText);
// The echoes' time-to-live from the TTL box's text: its number clamped to 0..255.
int TtlValue(const QString &ttlText);

// The echo series of one server: up to `wanted` echoes, ending at the first
// that gets no reply.
struct EchoSeries {
    int wanted = 1;
    int successes = 0;
    double total = 0;         // ms
    quint32 lastStatus = 0;   // the status the last call left
    bool ended = false;

    // Adds one echo's outcome (the call's result, the reply's status and
    // round-trip time); afterwards done() says whether to send another.
    void add(int result, quint32 status, quint32 roundTripMs);
    bool done() const { return ended || successes >= wanted; }
    // No reply at all, or the last call left a status other than success.
    bool failed() const { return successes == 0 || lastStatus != 0; }
    double ping() const { return successes > 0 ? total / successes : 0; }
};

// A ping equal to the limit is accepted; the limit is the number in its text.
bool WithinLimit(double ping, const QString &limitText);

// The log lines of a probe. `address` is the probed text as typed into
// the Server IP box (trimmed here), `ttlText` the TTL box's text as typed.
QString LookingUpLine(const QString &name);
QString FoundLine(const QString &name, const QString &address);
QString FailureLine(const QString &address, quint32 status);
QString TimeLine(const QString &address, double ping, const QString &ttlText, bool favorite = false);

// The record and the row of an accepted server, from the probed address text,
// the entry's port text, the mean ping, and the version probe's version text
// and info line.
struct Accepted {
    ServerRec record;
    QString row;
    QString hostName, map, players;
};
Accepted Accept(const QString &address, const QString &portText, double ping, const QString &version,
                const QString &infoLine, bool favorite);

}

// The server table: record 0 is never filled, and one spare zeroed record always
// follows the last filled one.
struct ServerTable {
    std::vector<ServerRec> Servers = std::vector<ServerRec>(1);
    qint32 ServerCount = 0;  // filled records, also the highest used index

    // Appends one record; returns its index.
    qint32 appendServer(const ServerRec &rec);
    void clearServers();
};
