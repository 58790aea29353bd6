#pragma once
#include <QString>

// Starts the game connected to a server: checks the configured game path, asks
// the player (Yes/No, "Launch?") with the given prompt, then starts the game in
// its own folder with " +set basedir " and " +connect " target. Used by the main
// list's double-click and by the launcher bar's menu.
class GameLauncher {
public:
    // gamePath: the configured game program, as the caller holds it when the launch happens.
    explicit GameLauncher(QString gamePath);

    // target: address ":" port. Every failure is told to the player.
    void launch(const QString &target, const QString &prompt) const;

private:
    QString gamePath_;
};
