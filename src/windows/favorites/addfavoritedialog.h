#pragma once
#include "favorites/favfile.h"

#include <QWidget>

#include <optional>

class FavoritesDialog;
class QLabel;
class QLineEdit;
class QPushButton;

// Edits one favorite, modally: a new one ("Add Favorite") or one taken out of the
// editor's list for a change ("Modify Favorite"), which Cancel puts back.
class AddFavoriteDialog : public QWidget {
    Q_OBJECT
public:
    explicit AddFavoriteDialog(FavoritesDialog *owner);
    AddFavoriteDialog(FavoritesDialog *owner, const Favorite &original);

protected:
    // Closing by the window's own control counts as Cancel.
    void closeEvent(QCloseEvent *event) override;

private:
    // Puts a stored description into its box whole, however long it is.
    void setDescription(const QString &text);
    void addAndClose();

    FavoritesDialog *owner_;
    std::optional<Favorite> original_;  // the favorite being modified
    bool answered_ = false;
    QLineEdit *serverEdit_, *descriptionEdit_;
    QLabel *serverLabel_, *descriptionLabel_;
    QPushButton *addButton_, *cancelButton_;
};
