#include "favorites/favoritesdialog.h"

#include "favorites/addfavoritedialog.h"
#include "shell/controls.h"
#include "shell/twips.h"
#include "shell/itemlist.h"

#include <QPushButton>

using namespace Qt::StringLiterals;

FavoritesDialog::FavoritesDialog(const QList<Favorite> &favorites, QWidget *parent) : QWidget(parent, Qt::Window)
{
    setObjectName(u"FavoritesDialog"_s);
    setWindowTitle(u"Favorites"_s);
    Controls::applyDesignLook(this);
    setAttribute(Qt::WA_DeleteOnClose);
    setFixedSize(Twips::size(4380, 3765));
    favoritesList_ = new ItemList(false, this);
    favoritesList_->setObjectName(u"favoritesList_"_s);
    favoritesList_->setGeometry(Twips::rect(180, 180, 3975, 2205));
    favoritesList_->setAccessibleName(u"Favorites"_s);
    deleteButton_ = Controls::button(this, "deleteButton_", u"Delete"_s, Twips::rect(180, 2880, 1275, 375));
    addManuallyButton_ = Controls::button(this, "addManuallyButton_", u"Add Manually"_s, Twips::rect(180, 2460, 1275, 375));
    closeButton_ = Controls::button(this, "closeButton_", u"Close"_s, Twips::rect(2880, 2880, 1275, 375));
    cancelButton_ = Controls::button(this, "cancelButton_", u"Cancel"_s, Twips::rect(2880, 3300, 1275, 375));
    modifyButton_ = Controls::button(this, "modifyButton_", u"Modify"_s, Twips::rect(180, 3300, 1275, 375));
    setTabOrder(favoritesList_, deleteButton_);
    setTabOrder(deleteButton_, addManuallyButton_);
    setTabOrder(addManuallyButton_, closeButton_);
    setTabOrder(closeButton_, cancelButton_);
    setTabOrder(cancelButton_, modifyButton_);

    connect(deleteButton_, &QPushButton::clicked, this, &FavoritesDialog::deleteSelected);
    connect(addManuallyButton_, &QPushButton::clicked, this, &FavoritesDialog::addManually);
    connect(modifyButton_, &QPushButton::clicked, this, &FavoritesDialog::modifySelected);
    connect(closeButton_, &QPushButton::clicked, this, &FavoritesDialog::saveAndClose);
    connect(cancelButton_, &QPushButton::clicked, this, &QWidget::close);

    for (const Favorite &favorite : favorites)
        addEntry(favorite);
    if (parent)
        move(parent->geometry().center() - rect().center());
}

void FavoritesDialog::addEntry(const Favorite &favorite)
{
    favoritesList_->addRow(favorite.address);
    descriptions_.append(favorite.description);
    favoritesList_->setRowData(favoritesList_->count() - 1, static_cast<int>(descriptions_.size()) - 1);
}

QList<Favorite> FavoritesDialog::workingCopy() const
{
    QList<Favorite> favorites;
    for (int i = 0; i < favoritesList_->count(); ++i)
        favorites.append({favoritesList_->rowText(i), descriptions_.value(favoritesList_->rowData(i))});
    return favorites;
}

void FavoritesDialog::deleteSelected()
{
    favoritesList_->removeRow(favoritesList_->selectedRow());
}

void FavoritesDialog::addManually()
{
    (new AddFavoriteDialog(this))->show();
}

void FavoritesDialog::modifySelected()
{
    const int row = favoritesList_->selectedRow();
    if (row < 0)
        return;
    const Favorite original{favoritesList_->rowText(row), descriptions_.value(favoritesList_->rowData(row))};
    auto *dialog = new AddFavoriteDialog(this, original);
    favoritesList_->removeRow(row);
    dialog->show();
}

void FavoritesDialog::saveAndClose()
{
    const QList<Favorite> favorites = workingCopy();
    if (!SaveFavoritesFile(FavFile::serialize(favorites)))
        return;  // the window stays open: the edits are not lost
    emit favoritesSaved(favorites);
    close();
}
