// Start-up of the main window, and the Help menu.
#include "shell/helpwindow.h"
#include "shell/frmpulsebox.h"
#include "shell/splashwindow.h"
#include "shell/pulseboxmod.h"
#include "shell/ticker.h"
#include "shell/waiting.h"
#include "probes/address.h"
#include "favorites/favfile.h"
#include "launch/gamepath.h"

#include <QComboBox>
#include <QGuiApplication>
#include <QScreen>

using namespace Qt::StringLiterals;

void frmPulsebox::Form_Load()
{
    splash_ = new SplashWindow;
    connect(splash_, &SplashWindow::closed, this, [this] { Mod().SplashTicks = 5; Timer2->setInterval(0); });
    splash_->show();
    Timer2->setInterval(1000);
    Mod().QueryMode = 1;
    Text1->addItem(Text1->currentText());
    Text1->addItem(u"http://127.0.0.1/"_s);
    // Master servers: the one the demo network runs on this machine, then public
    // masters, so that a first refresh on the internet finds servers without typing.
    for (const QString &master : {u"master://127.0.0.1:27900"_s, u"master://master.rlogin.dk:27900"_s,
                                  u"master://master.quakeservers.net:27900"_s})
        Text1->addItem(master);
    Text1->setEditText(Text1->itemText(0));

    waitUntil([] { return Mod().SplashTicks >= 2; });
    if (splash_)
        splash_->close();

    if (FileExists(FavFile::kName))
        loadFavorites();
    if (FileExists(GameConfig::kName))
        readConfiguration();

    if (const QScreen *screen = QGuiApplication::primaryScreen()) {
        adjustSize();
        move(screen->availableGeometry().center() - rect().center());
    }
}

void frmPulsebox::mnuabout_Click()
{
    if (!splash_) {
        splash_ = new SplashWindow;
        connect(splash_, &SplashWindow::closed, this, [this] { Mod().SplashTicks = 5; Timer2->setInterval(0); });
        splash_->show();
    }
    splash_->raise();
    splash_->activateWindow();
}

void frmPulsebox::mnuContents_Click()
{
    HelpWindow::showHelp();
}
