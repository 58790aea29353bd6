#pragma once
#include <QWidget>

class QPlainTextEdit;

// A small sizable text window that the launcher bar fills with a server's players.
class StatusPopup : public QWidget {
    Q_OBJECT
public:
    explicit StatusPopup(QWidget *parent = nullptr);

    // The title (the button's caption) and the player text.
    void setStatus(const QString &title, const QString &text);
    QString text() const;

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    QPlainTextEdit *playersText_;
};
