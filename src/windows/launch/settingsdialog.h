#pragma once
#include <QDialog>

class QLabel;
class QLineEdit;
class QPushButton;

// The game's path, kept in Pulsebox.cfg. The box starts with the file's line;
// OK checks the path, writes the file and reports the path trimmed.
class SettingsDialog : public QDialog {
    Q_OBJECT
public:
    // The box shows the file's line as typed, spaces included, not the trimmed
    // path in use: so the dialog needs nothing from its owner.
    explicit SettingsDialog(QWidget *owner);

signals:
    // After the file was written: the path to launch with from now on.
    void gamePathSaved(const QString &gamePath);

private:
    void checkAndSave();

    QLabel *pathLabel_;
    QLineEdit *pathEdit_;
    QPushButton *okButton_, *cancelButton_;
};
