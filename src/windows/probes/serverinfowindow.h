#pragma once
#include <QDialog>

class QPlainTextEdit;
class QPushButton;

// A server's settings and players, shown modally until OK.
class ServerInfoWindow : public QDialog {
    Q_OBJECT
public:
    explicit ServerInfoWindow(const QString &text, QWidget *parent = nullptr);
    QString text() const;

private:
    QPlainTextEdit *infoText_;
    QPushButton *okButton_;
};
