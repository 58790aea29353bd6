#include "shell/frmhelp.h"

#include <QPointer>
#include <QTextBrowser>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

static void loadHelpResource()
{
    Q_INIT_RESOURCE(pulsebox);  // the help lives in a static library's resources
}

frmHelp::frmHelp(QWidget *parent) : QWidget(parent, Qt::Window)
{
    loadHelpResource();
    setObjectName(u"frmHelp"_s);
    setWindowTitle(u"Pulsebox Help"_s);
    setAttribute(Qt::WA_DeleteOnClose);
    browser = new QTextBrowser(this);
    browser->setObjectName(u"helpText"_s);
    browser->setOpenLinks(true);
    browser->setSource(QUrl(u"qrc:/help/pulsebox-help.html"_s));
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(browser);
    resize(640, 560);
}

frmHelp *frmHelp::showHelp()
{
    static QPointer<frmHelp> window;
    if (!window)
        window = new frmHelp;
    window->show();
    window->raise();
    window->activateWindow();
    return window;
}
