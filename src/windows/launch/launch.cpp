// Reading the game path at start-up, the Settings command and the game launch.
#include "launch/frmsettings.h"
#include "launch/gamelauncher.h"
#include "launch/gamepath.h"
#include "probes/address.h"
#include "serverlist/urltext.h"
#include "shell/itemlist.h"
#include "shell/mainwindow.h"
#include "shell/pulseboxmod.h"
#include "shell/prompts.h"

#include <QFile>

using namespace Qt::StringLiterals;

void MainWindow::readConfiguration()
{
    QFile file(GameConfig::kName);
    if (!file.open(QIODevice::ReadOnly))
        return;
    const QString line = GameConfig::firstLine(file.read(64 * 1024));
    if (GamePathPasses(line, line))
        gamePath_ = TrimSpaces(line);
}

void MainWindow::editSettings()
{
    (new frmSettings(this))->show();
}

void MainWindow::launchSelected()
{
    if (const ServerRec *rec = selectedServer())
        launchGame(AddressToDotted(rec->Address) + u':' + QString::number(rec->Port));
}

void MainWindow::launchGame(const QString &target)
{
    Mod().GamePath = gamePath_;
    GameLauncher().launch(target, u"Launch to Server?"_s);
}
