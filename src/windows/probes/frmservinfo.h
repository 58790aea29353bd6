#pragma once
#include <QDialog>

class QPlainTextEdit;
class QPushButton;

// A server's settings and players, shown modally until OK.
class frmServinfo : public QDialog {
    Q_OBJECT
public:
    frmServinfo(const QString &text, QWidget *parent = nullptr);
    QPlainTextEdit *Text1;
    QPushButton *Command1;
};
