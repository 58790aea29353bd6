#include "shell/helpwindow.h"

#include <QPointer>
#include <QTextBrowser>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

static void loadHelpResource()
{
    Q_INIT_RESOURCE(pulsebox);  // the help lives in a static library's resources
}

HelpWindow::HelpWindow(QWidget *parent) : QWidget(parent, Qt::Window)
{
    loadHelpResource();
    setObjectName(u"HelpWindow"_s);
    setWindowTitle(u"Pulsebox Help"_s);
    setAttribute(Qt::WA_DeleteOnClose);
    helpText_ = new QTextBrowser(this);
    helpText_->setObjectName(u"helpText_"_s);
    helpText_->setOpenLinks(true);
    helpText_->setSource(QUrl(u"qrc:/help/pulsebox-help.html"_s));
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(helpText_);
    resize(640, 560);
}

HelpWindow *HelpWindow::showHelp()
{
    static QPointer<HelpWindow> window;
    if (!window)
        window = new HelpWindow;
    window->show();
    window->raise();
    window->activateWindow();
    return window;
}

QString HelpWindow::text() const { return helpText_->toPlainText(); }
