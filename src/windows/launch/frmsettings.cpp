#include "launch/frmsettings.h"

#include "favorites/favfile.h"
#include "launch/gamepath.h"
#include "probes/address.h"
#include "serverlist/urltext.h"
#include "shell/controls.h"
#include "shell/pulseboxmod.h"
#include "shell/prompts.h"
#include "shell/twips.h"

#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

using namespace Qt::StringLiterals;

frmSettings::frmSettings(QWidget *owner) : QDialog(owner)
{
    setObjectName(u"frmSettings"_s);
    setWindowTitle(u"Settings"_s);
    Controls::applyDesignLook(this);
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowModality(Qt::ApplicationModal);
    setFixedSize(Twips::size(4050, 1845));
    Label1 = Controls::label(this, "Label1", u"Path to Quake 2"_s, Twips::rect(120, 180, 1335, 255));
    Text1 = Controls::textBox(this, "Text1", Twips::rect(1560, 120, 2355, 315), Label1);
    Command1 = Controls::button(this, "Command1", u"OK"_s, Twips::rect(60, 1380, 915, 375));
    Command2 = Controls::button(this, "Command2", u"Cancel"_s, Twips::rect(3060, 1380, 915, 375));
    setTabOrder(Text1, Command1);
    setTabOrder(Command1, Command2);
    connect(Command1, &QPushButton::clicked, this, &frmSettings::Command1_Click);
    connect(Command2, &QPushButton::clicked, this, &QDialog::close);

    if (FileExists(GameConfig::kName)) {
        QFile file(GameConfig::kName);
        if (file.open(QIODevice::ReadOnly))
            Text1->setText(GameConfig::firstLine(file.readAll()));
    }
    if (owner)
        move(owner->geometry().center() - rect().center());
}

void frmSettings::Command1_Click()
{
    const QString typed = Text1->text();
    const QString trimmed = TrimSpaces(typed);
    if (!GamePathPasses(typed, trimmed)) {
        Seams::prompts().message(u"Didn't find QUAKE2.EXE"_s, AppTitle);
        return;
    }
    QString error;
    if (!WriteFileAtomically(GameConfig::kName, GameConfig::serialize(typed), &error)) {
        Seams::prompts().message(u"Could not save the game path to "_s + GameConfig::kName + u":\n"_s
                                     + error, AppTitle, Prompter::Icon::Warning);
        return;
    }
    Mod().GamePath = trimmed;
    close();
}
