#pragma once
#include <QByteArray>
#include <QString>
#include <QStringList>

// What the filters and the player search look at, of one listed server.
struct ServerFacts {
    QString target;          // address ":" port, as the row shows it
    // The server gave its info line. One that did not ("No data returned") has no
    // name, map, player count or players here, and only the ping filter judges it.
    bool answered = false;
    QString name;            // host name, trimmed ("" when the server gave none)
    QString version;         // "3.14" .. "3.20" or "unkn", trimmed
    QString map;             // trimmed
    int players = -1;        // in use, from the info line; -1 when it gave none
    int maxPlayers = -1;     // capacity; -1 when none
    double ping = 0;         // ms
    bool playersAsked = false;  // the server answered "status": the fields below hold
    QString foldedNames;     // PlayerNames::foldedLines of its players
    QStringList playerNames; // as sent
    bool onlyBots = false;   // PlayerNames::onlyBots

    // From the info line's players field ("3/ 8", as the server wrote it), the
    // other info fields and the raw "status" answer (empty when none came). Without
    // `answered` the info fields are ignored. Players come only from an answer whose
    // settings line ended with a line feed: anything else is no player list.
    static ServerFacts of(const QString &target, bool answered, const QString &name, const QString &version,
                          const QString &map, const QString &playersField, double ping,
                          const QString &statusAnswer);
};

// The filters and the player search, one object for the window and the tool.
// Every filter is off by default; a filter only ever hides servers. A server that
// gave no info line is hidden by every filter but the ping filter, which judges its
// ping: it lacks what the others look at (its version is only the probe's guess).
struct ServerFilter {
    // The versions a server can show, newest first, and the highest ping limit.
    static inline const QStringList kVersions{QStringLiteral("3.20"), QStringLiteral("3.19"), QStringLiteral("3.17"),
                                              QStringLiteral("3.15"), QStringLiteral("3.14"), QStringLiteral("unkn")};
    static constexpr int kMaxPing = 9999;

    QString playerText;       // show servers where a player's name contains it
    bool hideEmpty = false;   // no players in use, or no count given
    bool hideFull = false;    // in use at least the capacity
    bool hideOnlyBots = false;  // PlayerNames::onlyBots
    QString version;          // show only this version ("3.20"); empty: any
    QString mapText;          // show maps whose name contains it, regardless of case
    int maxPing = -1;         // show pings of at most this many ms; -1: any

    // Some setting hides servers (the search included).
    bool isOn() const;
    // The search or the bot rule needs every server's players.
    bool needsPlayers() const;
    bool accepts(const ServerFacts &facts) const;
    // accepts() with the search text already folded: the window folds it once
    // per key press, not once per row.
    bool accepts(const ServerFacts &facts, const QString &foldedPlayerText) const;

    bool operator==(const ServerFilter &) const = default;
};

// Pulsebox.filters: the window's filters (not the search) and the friends watch,
// as "key=value" lines in UTF-8. Unknown keys and bad values are ignored, so a
// damaged file gives the defaults for what it garbled.
struct FinderSettings {
    ServerFilter filter;        // playerText is never saved
    bool watchFriends = false;  // while iconized, Fav Refresh every watchSeconds
    int watchSeconds = 300;

    static constexpr int kMinWatchSeconds = 60, kMaxWatchSeconds = 24 * 3600;
    static constexpr qint64 kMaxBytes = 64 * 1024;
    static inline const QString kFileName = QStringLiteral("Pulsebox.filters");

    static FinderSettings parse(const QByteArray &bytes);
    QByteArray serialize() const;
    bool operator==(const FinderSettings &) const = default;
};
