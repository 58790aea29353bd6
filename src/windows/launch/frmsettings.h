#pragma once
#include <QDialog>

class QLabel;
class QLineEdit;
class QPushButton;

// The game's path, kept in Pulsebox.cfg.
class frmSettings : public QDialog {
    Q_OBJECT
public:
    explicit frmSettings(QWidget *owner);
    QLabel *Label1;
    QLineEdit *Text1;
    QPushButton *Command1, *Command2;

    void Command1_Click();
};
