#include "launch/settingsdialog.h"

#include "favorites/favfile.h"
#include "launch/gamepath.h"
#include "probes/address.h"
#include "serverlist/urltext.h"
#include "shell/controls.h"
#include "shell/seams.h"
#include "shell/prompts.h"
#include "shell/twips.h"

#include "shell/boundedfile.h"
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

using namespace Qt::StringLiterals;

SettingsDialog::SettingsDialog(QWidget *owner) : QDialog(owner)
{
    setObjectName(u"SettingsDialog"_s);
    setWindowTitle(u"Settings"_s);
    Controls::applyDesignLook(this);
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowModality(Qt::ApplicationModal);
    setFixedSize(Twips::size(4050, 1845));
    pathLabel_ = Controls::label(this, "pathLabel_", u"Path to Quake 2"_s, Twips::rect(120, 180, 1335, 255));
    pathEdit_ = Controls::textBox(this, "pathEdit_", Twips::rect(1560, 120, 2355, 315), pathLabel_);
    okButton_ = Controls::button(this, "okButton_", u"OK"_s, Twips::rect(60, 1380, 915, 375));
    cancelButton_ = Controls::button(this, "cancelButton_", u"Cancel"_s, Twips::rect(3060, 1380, 915, 375));
    setTabOrder(pathEdit_, okButton_);
    setTabOrder(okButton_, cancelButton_);
    connect(okButton_, &QPushButton::clicked, this, &SettingsDialog::checkAndSave);
    connect(cancelButton_, &QPushButton::clicked, this, &QDialog::close);

    if (FileExists(GameConfig::kName)) {
        const BoundedFile file = BoundedFile::read(GameConfig::kName, GameConfig::kMaxBytes);
        if (file.status != BoundedFile::Status::CannotOpen)
            pathEdit_->setText(GameConfig::firstLine(file.bytes));
    }
    if (owner)
        move(owner->geometry().center() - rect().center());
}

void SettingsDialog::checkAndSave()
{
    const QString typed = pathEdit_->text();
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
    emit gamePathSaved(trimmed);
    close();
}
