#pragma once
#include "favorites/favfile.h"

#include <QList>
#include <QStringList>
#include <QWidget>

class QPushButton;
class ItemList;

// Saves the whole favorites file; on failure tells the user and leaves it as it was.
bool SaveFavoritesFile(const QByteArray &bytes);

// The favorites editor. It works on a copy of the favorites it was given; Close
// saves the copy to the file and reports it, Cancel drops it.
class FavoritesDialog : public QWidget {
    Q_OBJECT
public:
    FavoritesDialog(const QList<Favorite> &favorites, QWidget *parent);

    // Appends a favorite to the working copy: the Add or Modify dialog's answer.
    void addEntry(const Favorite &favorite);
    // The working copy in list order, each address with its own description.
    QList<Favorite> workingCopy() const;

signals:
    // After Close has written the file: the favorites as they now stand.
    void favoritesSaved(const QList<Favorite> &favorites);

private:
    void deleteSelected();
    void addManually();
    void modifySelected();
    void saveAndClose();

    ItemList *favoritesList_;  // addresses; item data = index of the description
    // Descriptions, reached only through the list's item data: a Delete or a
    // Modify removes the address row and leaves its description here.
    QStringList descriptions_;
    QPushButton *deleteButton_, *addManuallyButton_, *closeButton_, *cancelButton_, *modifyButton_;
};
