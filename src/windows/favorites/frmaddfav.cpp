#include "favorites/frmaddfav.h"

#include "favorites/frmfavorites.h"
#include "shell/controls.h"
#include "shell/pulseboxmod.h"
#include "shell/twips.h"

#include <QCloseEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {
constexpr int kTypedDescription = 50;
}

frmAddFav::frmAddFav(frmFavorites *owner) : QWidget(owner, Qt::Dialog), owner_(owner)
{
    setObjectName(u"frmAddFav"_s);
    setWindowTitle(u"Add Favorite"_s);
    Controls::applyDesignLook(this);
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowModality(Qt::ApplicationModal);
    setFixedSize(Twips::size(3345, 1845));
    lblServer = Controls::label(this, "lblServer", u"Server (IP:Port)"_s, Twips::rect(120, 0, 1215, 255));
    lblServerDesc = Controls::label(this, "lblServerDesc", u"Server Description"_s, Twips::rect(120, 600, 1455, 255));
    txtServer = Controls::textBox(this, "txtServer", Twips::rect(120, 240, 3135, 375), lblServer);
    txtServerDesc = Controls::textBox(this, "txtServerDesc", Twips::rect(120, 840, 3135, 375), lblServerDesc);
    txtServerDesc->setMaxLength(kTypedDescription);
    // The limit is for typing: a longer description from the file stays whole, and
    // typing cannot make it longer (every deletion lowers the limit towards 50).
    connect(txtServerDesc, &QLineEdit::textEdited, this, [this](const QString &text) {
        txtServerDesc->setMaxLength(std::max<int>(kTypedDescription, text.size()));
    });
    cmdAdd = Controls::button(this, "cmdAdd", u"Add"_s, Twips::rect(120, 1320, 975, 495));
    cmdCancel = Controls::button(this, "cmdCancel", u"Cancel"_s, Twips::rect(2280, 1320, 975, 495));
    setTabOrder(txtServer, txtServerDesc);
    setTabOrder(txtServerDesc, cmdAdd);
    setTabOrder(cmdAdd, cmdCancel);
    connect(cmdAdd, &QPushButton::clicked, this, &frmAddFav::cmdAdd_Click);
    connect(cmdCancel, &QPushButton::clicked, this, &frmAddFav::cmdCancel_Click);
    move(owner->geometry().center() - rect().center());
}

void frmAddFav::setDescription(const QString &text)
{
    txtServerDesc->setMaxLength(std::max<int>(kTypedDescription, text.size()));
    txtServerDesc->setText(text);
}

void frmAddFav::cmdAdd_Click()
{
    answered_ = true;
    owner_->addEntry(txtServer->text(), txtServerDesc->text());
    close();
}

void frmAddFav::cmdCancel_Click()
{
    close();
}

void frmAddFav::closeEvent(QCloseEvent *event)
{
    if (!answered_) {
        answered_ = true;
        if (windowTitle().contains(u"Modify"_s))
            owner_->addEntry(Mod().favOrigServer, Mod().favOrigDesc);
    }
    QWidget::closeEvent(event);
}
