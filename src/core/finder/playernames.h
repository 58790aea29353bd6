#pragma once
#include "probes/statusanswer.h"

#include <QList>
#include <QString>
#include <QStringList>

// How a player's name is matched, by the player search, the friends list and
// pulsebox-query alike. Names are wire text (one character per Windows-1252 byte).
// The game draws a byte with bit 7 set as the same letter in another colour, so
// both bytes are one letter here; letters compare without regard to case; control
// bytes (after dropping bit 7) are no part of a name. The text searched for is
// plain text: no character has a special meaning.
namespace PlayerNames {

// The form names are compared in: bit 7 dropped, controls removed, ASCII letters
// in lower case. A character the code page lacks (only a typed text can hold one)
// stays as it is, so it matches no name.
QString folded(const QString &name);

// `text` is part of `name` (after folding both). A text that folds to nothing
// matches nothing: an empty search is no search.
bool contains(const QString &name, const QString &text);

// Every player's folded name, one a line: a search over all players of a server
// is one look-up (a folded text holds no line feed, so it never spans two names).
QString foldedLines(const QList<StatusAnswer::Player> &players);
bool anyContains(const QString &foldedLines, const QString &foldedText);

// The bot rule: a server "has only bots" when it lists at least one player and
// every one of them shows ping 0 (game bots are local to the server; a human on
// the internet never pings 0).
bool onlyBots(const QList<StatusAnswer::Player> &players);

// The players whose names contain one of `friends` (a friend's name may carry a
// clan tag or colours in the game), in the server's order, as the server sent them.
QStringList friendsAmong(const QStringList &playerNames, const QStringList &friends);

}
