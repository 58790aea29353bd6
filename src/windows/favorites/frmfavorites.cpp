#include "favorites/frmfavorites.h"

#include "favorites/favfile.h"
#include "favorites/frmaddfav.h"
#include "shell/controls.h"
#include "shell/mainwindow.h"
#include "shell/pulseboxmod.h"
#include "shell/twips.h"
#include "shell/vblist.h"

#include <QLineEdit>
#include <QPushButton>

using namespace Qt::StringLiterals;

frmFavorites::frmFavorites(MainWindow *main) : QWidget(main, Qt::Window), main_(main)
{
    setObjectName(u"frmFavorites"_s);
    setWindowTitle(u"Favorites"_s);
    Controls::applyDesignLook(this);
    setAttribute(Qt::WA_DeleteOnClose);
    setFixedSize(Twips::size(4380, 3765));
    List1 = new VbList(false, this);
    List1->setObjectName(u"List1"_s);
    List1->setGeometry(Twips::rect(180, 180, 3975, 2205));
    List1->setAccessibleName(u"Favorites"_s);
    Delete = Controls::button(this, "Delete", u"Delete"_s, Twips::rect(180, 2880, 1275, 375));
    Manually = Controls::button(this, "Manually", u"Add Manually"_s, Twips::rect(180, 2460, 1275, 375));
    cmClose = Controls::button(this, "cmClose", u"Close"_s, Twips::rect(2880, 2880, 1275, 375));
    Cancel = Controls::button(this, "Cancel", u"Cancel"_s, Twips::rect(2880, 3300, 1275, 375));
    cmModify = Controls::button(this, "cmModify", u"Modify"_s, Twips::rect(180, 3300, 1275, 375));
    List2 = new VbList(false, this);
    List2->setObjectName(u"List2"_s);
    List2->setGeometry(Twips::rect(1680, 2760, 855, 840));
    List2->hide();
    setTabOrder(List1, Delete);
    setTabOrder(Delete, Manually);
    setTabOrder(Manually, cmClose);
    setTabOrder(cmClose, Cancel);
    setTabOrder(Cancel, cmModify);

    connect(Delete, &QPushButton::clicked, this, &frmFavorites::Delete_Click);
    connect(Manually, &QPushButton::clicked, this, &frmFavorites::Manually_Click);
    connect(cmModify, &QPushButton::clicked, this, &frmFavorites::cmModify_Click);
    connect(cmClose, &QPushButton::clicked, this, &frmFavorites::cmClose_Click);
    connect(Cancel, &QPushButton::clicked, this, &QWidget::close);

    // The two hidden lists are parallel, so the copy pairs them by position.
    for (const Favorite &favorite : main_->favorites())
        addEntry(favorite.address, favorite.description);
    move(main->geometry().center() - rect().center());
}

void frmFavorites::addEntry(const QString &address, const QString &description)
{
    List1->AddItem(address);
    List2->AddItem(description);
    List1->SetItemData(List1->ListCount() - 1, List2->ListCount() - 1);
}

void frmFavorites::Delete_Click()
{
    List1->RemoveItem(List1->ListIndex());
}

void frmFavorites::Manually_Click()
{
    (new frmAddFav(this))->show();
}

void frmFavorites::cmModify_Click()
{
    const int row = List1->ListIndex();
    if (row < 0)
        return;
    auto *dialog = new frmAddFav(this);
    dialog->cmdAdd->setText(u"Save"_s);
    dialog->txtServer->setText(List1->List(row));
    dialog->setDescription(List2->List(List1->ItemData(row)));
    Mod().favOrigServer = dialog->txtServer->text();
    Mod().favOrigDesc = dialog->txtServerDesc->text();
    dialog->setWindowTitle(u"Modify Favorite"_s);
    List1->RemoveItem(row);
    dialog->show();
}

void frmFavorites::cmClose_Click()
{
    QList<Favorite> favorites;
    for (int i = 0; i < List1->ListCount(); ++i)
        favorites.append({List1->List(i), List2->List(List1->ItemData(i))});
    if (!SaveFavoritesFile(FavFile::serialize(favorites)))
        return;  // the window stays open: the edits are not lost
    main_->setFavorites(favorites);
    close();
}
