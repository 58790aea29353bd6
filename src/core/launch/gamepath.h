#pragma once
#include <QString>
#include <QStringList>

// Pulsebox.cfg holds one line: the game path as the player typed it.
namespace GameConfig {
inline const QString kName = QStringLiteral("Pulsebox.cfg");
// Only the first line counts: more than this is never read.
constexpr qint64 kMaxBytes = 64 * 1024;
QString firstLine(const QByteArray &bytes);
QByteArray serialize(const QString &typedPath);
}

// The path check: `text` upper-cased contains "QUAKE2.EXE" and `existsText` names
// an existing file. Start-up passes the line as read for both; Settings passes the
// typed text and its trimmed form.
bool GamePathPasses(const QString &text, const QString &existsText);

// 1-based position of the last folder separator ("\" or "/") of the path, as the
// launch scans for it: the last character is never looked at, and a result of 1
// or less means no usable folder.
int LastSeparatorPosition(const QString &gamePath);

struct LaunchCommand {
    QString program;
    QStringList arguments;
    QString workingFolder;  // the game's folder, separator included
};
// The game started connected to `target` (address ":" port).
LaunchCommand BuildLaunchCommand(const QString &gamePath, int separatorPosition,
                                 const QString &target);
