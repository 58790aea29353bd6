#pragma once
#include <QWidget>

class QTextBrowser;

// The help document, shown inside the program.
class frmHelp : public QWidget {
    Q_OBJECT
public:
    explicit frmHelp(QWidget *parent = nullptr);
    // Opens the one help window, or brings it to the front.
    static frmHelp *showHelp();
    QTextBrowser *browser;
};
