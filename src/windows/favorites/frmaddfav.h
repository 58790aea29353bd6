#pragma once
#include <QWidget>

class QLabel;
class QLineEdit;
class QPushButton;
class frmFavorites;

// Edits one favorite, modally. Its title tells the two modes apart:
// "Add Favorite" or "Modify Favorite".
class frmAddFav : public QWidget {
    Q_OBJECT
public:
    explicit frmAddFav(frmFavorites *owner);

    QLineEdit *txtServer, *txtServerDesc;
    QLabel *lblServer, *lblServerDesc;
    QPushButton *cmdAdd, *cmdCancel;

    // Puts a stored description into its box whole, however long it is.
    void setDescription(const QString &text);

    void cmdAdd_Click();
    void cmdCancel_Click();

protected:
    // Closing by the window's own control counts as Cancel.
    void closeEvent(QCloseEvent *event) override;

private:
    frmFavorites *owner_;
    bool answered_ = false;
};
