#pragma once
#include "finder/serverfilter.h"

#include <QStringList>

class QCommandLineParser;
class QJsonObject;
struct ProbeResult;

// pulsebox-query's player search, friends and filters: the window's rules from
// the core, applied to the engine's results.
struct FinderOptions {
    ServerFilter filter;
    bool withFriends = false;  // --friends given: every JSON object gets "friends"
    QStringList friends;

    static void addTo(QCommandLineParser &parser);
    // The arguments with "--version=X" read as "--game-version X": a bare
    // --version prints the tool's own version, as every tool's does.
    static QStringList arguments(const QStringList &given);
    // False with one sentence when an option's value is no good (or the friends
    // file cannot be read).
    bool read(const QCommandLineParser &parser, QString *problem);
    // The engine must ask every answering server for its players.
    bool needsStatus() const { return filter.needsPlayers() || withFriends; }
    // A result the filters keep; servers that gave no info line never pass a filter.
    bool keeps(const ProbeResult &result) const;
    // Adds "friends" (the matching player names) when --friends was given.
    void mark(const ProbeResult &result, QJsonObject *object) const;
};
