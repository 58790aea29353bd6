#include "favorites/frmaddfav.h"

#include "favorites/frmfavorites.h"
#include "shell/pulseboxmod.h"
#include "shell/twips.h"

#include <QCloseEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

using namespace Qt::StringLiterals;

frmAddFav::frmAddFav(frmFavorites *owner) : QWidget(owner, Qt::Dialog), owner_(owner)
{
    setObjectName(u"frmAddFav"_s);
    setWindowTitle(u"Add Favorite"_s);
    Twips::applyDesignLook(this);
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowModality(Qt::ApplicationModal);
    setFixedSize(Twips::size(3345, 1845));
    txtServer = new QLineEdit(this);
    txtServer->setObjectName(u"txtServer"_s);
    txtServer->setGeometry(Twips::rect(120, 240, 3135, 375));
    txtServerDesc = new QLineEdit(this);
    txtServerDesc->setObjectName(u"txtServerDesc"_s);
    txtServerDesc->setGeometry(Twips::rect(120, 840, 3135, 375));
    txtServerDesc->setMaxLength(50);
    lblServer = new QLabel(u"Server (IP:Port)"_s, this);
    lblServer->setObjectName(u"lblServer"_s);
    lblServer->setGeometry(Twips::rect(120, 0, 1215, 255));
    lblServerDesc = new QLabel(u"Server Description"_s, this);
    lblServerDesc->setObjectName(u"lblServerDesc"_s);
    lblServerDesc->setGeometry(Twips::rect(120, 600, 1455, 255));
    txtServer->setAccessibleName(lblServer->text());
    txtServerDesc->setAccessibleName(lblServerDesc->text());
    cmdAdd = new QPushButton(u"Add"_s, this);
    cmdAdd->setObjectName(u"cmdAdd"_s);
    cmdAdd->setGeometry(Twips::rect(120, 1320, 975, 495));
    cmdAdd->setAccessibleName(u"Add"_s);
    cmdCancel = new QPushButton(u"Cancel"_s, this);
    cmdCancel->setObjectName(u"cmdCancel"_s);
    cmdCancel->setGeometry(Twips::rect(2280, 1320, 975, 495));
    cmdCancel->setAccessibleName(u"Cancel"_s);
    setTabOrder(txtServer, txtServerDesc);
    setTabOrder(txtServerDesc, cmdAdd);
    setTabOrder(cmdAdd, cmdCancel);
    connect(cmdAdd, &QPushButton::clicked, this, &frmAddFav::cmdAdd_Click);
    connect(cmdCancel, &QPushButton::clicked, this, &frmAddFav::cmdCancel_Click);
    move(owner->geometry().center() - rect().center());
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
