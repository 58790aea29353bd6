#pragma once
#include <QWidget>

class QPushButton;
class VbList;
class MainWindow;

// Saves the whole favorites file; on failure tells the user and leaves it as it was.
bool SaveFavoritesFile(const QByteArray &bytes);

// The favorites editor. It works on a copy of the main window's favorites,
// which Close commits (lists and file) and Cancel drops.
class frmFavorites : public QWidget {
    Q_OBJECT
public:
    explicit frmFavorites(MainWindow *main);

    VbList *List1;  // addresses; item data = index of the description in List2
    VbList *List2;  // descriptions, hidden; rows are never removed while open
    QPushButton *Delete, *Manually, *cmClose, *Cancel, *cmModify;

    // Appends a favorite to the working copy, linked through item data.
    void addEntry(const QString &address, const QString &description);

    void Delete_Click();
    void Manually_Click();
    void cmModify_Click();
    void cmClose_Click();

private:
    MainWindow *main_;
};
