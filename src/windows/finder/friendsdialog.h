#pragma once
#include <QStringList>
#include <QWidget>

class QLabel;
class QPlainTextEdit;
class QPushButton;

// The friends editor: one name a line. Save writes Pulsebox.friends whole or not
// at all and reports the names; a failed write keeps the editor open with its text.
class FriendsDialog : public QWidget {
    Q_OBJECT
public:
    // `replaceAsked`: the file on disk could not be read; Save asks before it
    // replaces it, so that an unread list is never lost unawares.
    FriendsDialog(const QStringList &friends, bool replaceAsked, QWidget *parent);

signals:
    void friendsSaved(const QStringList &friends);

protected:
    void keyPressEvent(QKeyEvent *event) override;  // Escape cancels

private:
    void save();

    bool replaceAsked_;
    QLabel *namesLabel_;
    QPlainTextEdit *namesEdit_;
    QPushButton *saveButton_, *cancelButton_;
};
