#pragma once
#include <QWidget>

class QTextBrowser;

// The help document, shown inside the program.
class HelpWindow : public QWidget {
    Q_OBJECT
public:
    explicit HelpWindow(QWidget *parent = nullptr);
    // Opens the one help window, or brings it to the front.
    static HelpWindow *showHelp();
    QString text() const;

private:
    QTextBrowser *helpText_;
};
