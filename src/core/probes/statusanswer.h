#pragma once
#include <QList>
#include <QPair>
#include <QString>

// A "status" answer taken apart for programs that read it (the command-line
// tool's JSON): the settings in the server's order and one entry per player.
struct StatusAnswer {
    struct Player {
        int score = 0;
        int ping = 0;
        QString name;
    };
    QList<QPair<QString, QString>> settings;
    QList<Player> players;
};

namespace GameQuery {
// The answer's first line ("print") is skipped; text before the first "\" of the
// settings line is ignored (some servers put a greeting there); a key without its
// value gets an empty one. A player line is "score ping \"name\""; a line whose
// numbers do not read is kept with 0 for them and its text as the name. The
// answer as received: one character per byte.
StatusAnswer parseStatus(const QString &answer);
}
