// Reading the game path at start-up, the Settings command and the game launch.
#include "launch/settingsdialog.h"
#include "launch/gamelauncher.h"
#include "launch/gamepath.h"
#include "probes/address.h"
#include "serverlist/urltext.h"
#include "shell/itemlist.h"
#include "shell/mainwindow.h"
#include "shell/seams.h"
#include "shell/prompts.h"

#include "shell/boundedfile.h"

using namespace Qt::StringLiterals;

void MainWindow::readConfiguration()
{
    const BoundedFile file = BoundedFile::read(GameConfig::kName, GameConfig::kMaxBytes);
    if (file.status == BoundedFile::Status::CannotOpen)
        return;
    const QString line = GameConfig::firstLine(file.bytes);
    if (GamePathPasses(line, line))
        gamePath_ = TrimSpaces(line);
}

void MainWindow::editSettings()
{
    auto *settings = new SettingsDialog(this);
    connect(settings, &SettingsDialog::gamePathSaved, this, [this](const QString &path) { gamePath_ = path; });
    settings->show();
}

void MainWindow::launchSelected()
{
    if (const ServerRec *rec = selectedServer())
        launchGame(AddressToDotted(rec->Address) + u':' + QString::number(rec->Port), u"Launch to Server?"_s);
}

void MainWindow::launchGame(const QString &target, const QString &prompt)
{
    GameLauncher(gamePath_).launch(target, prompt);
}
