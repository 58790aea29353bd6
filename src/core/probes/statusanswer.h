#pragma once
#include <QList>
#include <QPair>
#include <QString>
#include <QStringList>

// A game server's answer to "status", taken apart once for Server Info, the
// launcher bar's pop-up and the command-line tool: its first 10 characters (four
// 0xFF bytes, "print" and a line feed) are skipped unchecked; the server line, up
// to the next line feed, holds "\" key "\" value pairs; every later line is a player.
struct StatusAnswer {
    struct Player {
        int score = 0;
        int ping = 0;
        QString name;
    };

    bool complete = false;  // the opening 10 characters came
    // The settings line ended with a line feed: only then are the lines after it
    // players (a reply without one is no player list, whatever it says).
    bool settingsEnded = false;
    // The server line's printable text after its first "\", cut at every "\":
    // keys and values in turn, as sent; a last key may lack its value. Text before
    // the first "\" (some servers greet there) is no field.
    QStringList serverFields;
    // Everything after the server line, as received; the whole rest when the
    // server line never ended.
    QString playerText;

    // The answer as received: one character per byte.
    static StatusAnswer parse(const QString &answer);

    // Key and value pairs in the server's order; a key without its value gets "".
    QList<QPair<QString, QString>> settings() const;
    // One per non-blank player line "score ping \"name\""; a line whose numbers do
    // not read is kept with 0 for them and its text as the name.
    QList<Player> players() const;
};
