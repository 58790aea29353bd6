// Reading the game path at start-up, the Settings command and the game launch.
#include "launch/settingsdialog.h"
#include "launch/gamelauncher.h"
#include "launch/gamepath.h"
#include "probes/address.h"
#include "serverlist/urltext.h"
#include "shell/frmpulsebox.h"
#include "shell/pulseboxmod.h"
#include "shell/prompts.h"
#include "shell/vblist.h"

#include "shell/boundedfile.h"

using namespace Qt::StringLiterals;

void frmPulsebox::readConfiguration()
{
    const BoundedFile file = BoundedFile::read(GameConfig::kName, GameConfig::kMaxBytes);
    if (file.status == BoundedFile::Status::CannotOpen)
        return;
    const QString line = GameConfig::firstLine(file.bytes);
    if (GamePathPasses(line, line))
        Mod().GamePath = TrimSpaces(line);
}

void frmPulsebox::mnuSettings_Click()
{
    auto *settings = new SettingsDialog(this);
    connect(settings, &SettingsDialog::gamePathSaved, this, [](const QString &path) { Mod().GamePath = path; });
    settings->show();
}

void frmPulsebox::List1_DblClick()
{
    if (const ServerRec *rec = selectedServer())
        GameLauncher(Mod().GamePath).launch(AddressToDotted(rec->Address) + u':' + QString::number(rec->Port), u"Launch to Server?"_s);
}
