#include "launch/frmsettings.h"

#include "favorites/favfile.h"
#include "launch/gamepath.h"
#include "probes/address.h"
#include "serverlist/urltext.h"
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
    Twips::applyDesignLook(this);
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowModality(Qt::ApplicationModal);
    setFixedSize(Twips::size(4050, 1845));
    Label1 = new QLabel(u"Path to Quake 2"_s, this);
    Label1->setObjectName(u"Label1"_s);
    Label1->setGeometry(Twips::rect(120, 180, 1335, 255));
    Text1 = new QLineEdit(this);
    Text1->setObjectName(u"Text1"_s);
    Text1->setGeometry(Twips::rect(1560, 120, 2355, 315));
    Text1->setAccessibleName(Label1->text());
    Command1 = new QPushButton(u"OK"_s, this);
    Command1->setObjectName(u"Command1"_s);
    Command1->setGeometry(Twips::rect(60, 1380, 915, 375));
    Command1->setAccessibleName(u"OK"_s);
    Command2 = new QPushButton(u"Cancel"_s, this);
    Command2->setObjectName(u"Command2"_s);
    Command2->setGeometry(Twips::rect(3060, 1380, 915, 375));
    Command2->setAccessibleName(u"Cancel"_s);
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
