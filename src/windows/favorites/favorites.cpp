// The favorites store of the main window: loading, Add to Favorites, the editor.
#include "favorites/favfile.h"
#include "favorites/favoritesdialog.h"
#include "probes/address.h"
#include "shell/itemlist.h"
#include "shell/mainwindow.h"
#include "shell/seams.h"
#include "shell/boundedfile.h"
#include "shell/prompts.h"

#include <QFile>

using namespace Qt::StringLiterals;

namespace {
// Far beyond any real favorites file: 32,767 favorites of generous length.
constexpr qint64 kMaxFavoritesFile = 16 * 1024 * 1024;
constexpr int kMaxFavorites = 32767;

// The file's bytes, or nullopt (with a message) when it exists but cannot be read.
std::optional<QByteArray> readFavoritesFile()
{
    if (!QFile::exists(FavFile::kName))
        return QByteArray();
    const BoundedFile file = BoundedFile::read(FavFile::kName, kMaxFavoritesFile);
    if (file.status == BoundedFile::Status::Read)
        return file.bytes;
    const QString problem = file.status == BoundedFile::Status::TooLarge
                                ? file.problem + u", too large to be a favorites file"_s
                                : file.problem;
    Seams::prompts().message(u"Could not read the favorites file "_s + FavFile::kName + u":\n"_s + problem
                                 + u"\n\nThe file was left as it is."_s,
                             AppTitle, Prompter::Icon::Warning);
    return std::nullopt;
}
}

void MainWindow::loadFavorites()
{
    const auto bytes = readFavoritesFile();
    if (!bytes)
        return;
    const QList<Favorite> favorites = FavFile::parse(*bytes);
    favorites_ = favorites.mid(0, kMaxFavorites);
    if (favorites.size() > kMaxFavorites)
        Seams::prompts().message(u"The favorites file holds %1 favorites; the first %2 were loaded."_s
                                     .arg(favorites.size()).arg(kMaxFavorites),
                                 AppTitle, Prompter::Icon::Warning);
}

bool SaveFavoritesFile(const QByteArray &bytes)
{
    QString error;
    if (WriteFileAtomically(FavFile::kName, bytes, &error))
        return true;
    Seams::prompts().message(u"Could not save the favorites to "_s + FavFile::kName + u":\n"_s + error
                                 + u"\n\nThe favorites file was left as it was."_s,
                             AppTitle, Prompter::Icon::Warning);
    return false;
}

void MainWindow::addSelectedToFavorites()
{
    const ServerRec *rec = selectedServer();
    if (!rec)
        return;
    if (serverList_->rowText(serverList_->selectedRow()).mid(5, 1) == u"*"_s) {
        Seams::prompts().message(u"Already a Favorite"_s, AppTitle);
        return;
    }
    QString address = AddressToDotted(rec->Address);
    if (rec->Port != 0)
        address += u':' + QString::number(rec->Port);

    const auto existing = readFavoritesFile();
    if (!existing || !SaveFavoritesFile(FavFile::appended(*existing, {address, rec->HostName})))
        return;
    favorites_.append({address, rec->HostName});
}

void MainWindow::editFavorites()
{
    if (!favoritesEditor_) {
        favoritesEditor_ = new FavoritesDialog(favorites_, this);
        connect(favoritesEditor_, &FavoritesDialog::favoritesSaved, this,
                [this](const QList<Favorite> &saved) { favorites_ = saved; });
    }
    favoritesEditor_->show();
    favoritesEditor_->raise();
    favoritesEditor_->activateWindow();
}
