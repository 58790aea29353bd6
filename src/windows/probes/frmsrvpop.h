#pragma once
#include <QWidget>

class QPlainTextEdit;

// A small sizable text window that the launcher bar fills with a server's players.
class frmsrvpop : public QWidget {
    Q_OBJECT
public:
    explicit frmsrvpop(QWidget *parent = nullptr);
    QPlainTextEdit *Text1;

protected:
    void resizeEvent(QResizeEvent *event) override;
};
