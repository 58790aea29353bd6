#pragma once
#include <QDialog>

class QLabel;
class QLineEdit;
class QPushButton;
class frmFavorites;

// Edits one favorite, modally. Its title tells the two modes apart:
// "Add Favorite" or "Modify Favorite".
class frmAddFav : public QDialog {
    Q_OBJECT
public:
    explicit frmAddFav(frmFavorites *owner);

    QLineEdit *txtServer, *txtServerDesc;
    QLabel *lblServer, *lblServerDesc;
    QPushButton *cmdAdd, *cmdCancel;

    void cmdAdd_Click();
    void cmdCancel_Click();

protected:
    void reject() override;
    // Closing by the window's own control counts as Cancel.
    void closeEvent(QCloseEvent *event) override;

private:
    frmFavorites *owner_;
    bool answered_ = false;
};
