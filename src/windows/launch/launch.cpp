// Reading the game path at start-up, the Settings command and the game launch.
#include "launch/frmsettings.h"
#include "launch/gamepath.h"
#include "launch/programstarter.h"
#include "probes/address.h"
#include "serverlist/urltext.h"
#include "shell/frmpulsebox.h"
#include "shell/pulseboxmod.h"
#include "shell/prompts.h"
#include "shell/vblist.h"

#include <QFile>

using namespace Qt::StringLiterals;

void frmPulsebox::readConfiguration()
{
    QFile file(GameConfig::kName);
    if (!file.open(QIODevice::ReadOnly))
        return;
    const QString line = GameConfig::firstLine(file.read(64 * 1024));
    if (GamePathPasses(line, line))
        Mod().GamePath = TrimSpaces(line);
}

void frmPulsebox::mnuSettings_Click()
{
    (new frmSettings(this))->show();
}

void frmPulsebox::List1_DblClick()
{
    if (const ServerRec *rec = selectedServer())
        launchGame(AddressToDotted(rec->Address) + u':' + QString::number(rec->Port), u"Launch to Server?"_s);
}

// The game gets its folder as working directory; the program's own current
// directory, where its files live, stays as it is.
void frmPulsebox::launchGame(const QString &target, const QString &prompt)
{
    const QString gamePath = Mod().GamePath;
    if (TrimSpaces(gamePath).isEmpty()) {
        Seams::prompts().message(
            u"Your Quake 2 path isn't set.  Go to Options/Settings to set your Quake 2 path"_s,
            u"Lauch Aborted"_s, Prompter::Icon::Information);
        return;
    }
    const int separator = LastSeparatorPosition(gamePath);
    if (separator <= 1) {
        Seams::prompts().message(u"Bad Path to Quake 2"_s, AppTitle);
        return;
    }
    if (!Seams::prompts().question(prompt, u"Launch?"_s))
        return;
    const LaunchCommand command = BuildLaunchCommand(gamePath, separator, target);
    QString error;
    if (!Seams::starter().start(command.program, command.arguments, command.workingFolder, &error))
        Seams::prompts().message(u"Could not start "_s + command.program + u":\n"_s + error, AppTitle,
                                 Prompter::Icon::Warning);
}
