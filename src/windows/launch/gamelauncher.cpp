#include "launch/gamelauncher.h"

#include "launch/gamepath.h"
#include "launch/programstarter.h"
#include "serverlist/urltext.h"
#include "shell/prompts.h"
#include "shell/seams.h"

using namespace Qt::StringLiterals;

GameLauncher::GameLauncher(QString gamePath) : gamePath_(std::move(gamePath)) {}

// The game gets its folder as working directory; the program's own current
// directory, where its files live, stays as it is.
void GameLauncher::launch(const QString &target, const QString &prompt) const
{
    if (TrimSpaces(gamePath_).isEmpty()) {
        Seams::prompts().message(
            u"Your Quake 2 path isn't set.  Go to Options/Settings to set your Quake 2 path"_s,
            u"Lauch Aborted"_s, Prompter::Icon::Information);
        return;
    }
    const int separator = LastSeparatorPosition(gamePath_);
    if (separator <= 1) {
        Seams::prompts().message(u"Bad Path to Quake 2"_s, AppTitle);
        return;
    }
    if (!Seams::prompts().question(prompt, u"Launch?"_s))
        return;
    const LaunchCommand command = BuildLaunchCommand(gamePath_, separator, target);
    QString error;
    if (!Seams::starter().start(command.program, command.arguments, command.workingFolder, &error))
        Seams::prompts().message(u"Could not start "_s + command.program + u":\n"_s + error, AppTitle,
                                 Prompter::Icon::Warning);
}
