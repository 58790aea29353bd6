// Iconize, the tray icon's clicks and where the launcher bar opens.
#include "launch/launcherbar.h"
#include "shell/mainwindow.h"
#include "shell/iconize.h"
#include "shell/seams.h"
#include "shell/ticker.h"
#include "shell/trayicon.h"
#include "shell/waiting.h"

using namespace Qt::StringLiterals;

namespace {
// "Pulsebox " major "." minor: the first two numbers of the program's version.
QString TrayTip()
{
    const QStringList parts = QStringLiteral(PULSEBOX_VERSION).split(u'.');
    return u"Pulsebox "_s + parts.value(0) + u'.' + parts.value(1, u"0"_s);
}
}

void MainWindow::iconize()
{
    if (!tray_) {
        tray_ = Seams::makeTray(this);
        connect(tray_, &TrayIcon::mouseEvent, this, &MainWindow::onTrayEvent);
        tray_->setFirstClickPending([this] { return trayClickState_ == 1; });
    }
    const QIcon icon = windowIcon().isNull() ? PulseboxIcon() : windowIcon();
    // The icon first: the window is hidden only once there is a way back to it.
    tray_->add(icon, TrayTip());
    if (tray_->isShown()) {
        hide();
        hideFinderWindows();
    }
    updateWatch();
}

// 513: a press that may be the first half of a double click. Its handler waits
// half a second; a double click (515) arriving meanwhile runs inside that wait
// and leaves the state 0, so the press then does nothing more.
void MainWindow::onTrayEvent(int number)
{
    if (number == TrayIcon::kLeftPress) {
        trayClickState_ = 1;
        trayClickTicker_->setInterval(500);
        waitUntil([this] { return trayClickState_ != 1; });
        trayClickTicker_->setInterval(0);
        if (trayClickState_ != 3)
            return;
        const ScreenRect taskbar = GetTaskbarRect();
        const ScreenRect workArea = GetWorkArea();
        taskbarEdge_ = TaskbarEdgeOf(taskbar);
        if (!launcherBar_)
            launcherBar_ = new LauncherBar(favorites_, activity_, [this](const QString &target, const QString &prompt) {
                launchGame(target, prompt);
            }, this);
        launcherBar_->setTaskbarEdge(taskbarEdge_);
        launcherBar_->move(LaunchBarTopLeft(taskbarEdge_, workArea, launcherBar_->frameGeometry().size(),
                                            launcherBar_->pos()));
        launcherBar_->show();
        SetTopMost(launcherBar_, true);
        launcherBar_->raise();
    } else if (number == TrayIcon::kLeftDoubleClick) {
        trayClickState_ = 0;
        show();
        raise();
        activateWindow();
        showFinderWindows();
        if (tray_)
            tray_->remove();
        updateWatch();
    }
}
