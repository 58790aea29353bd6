// Iconize, the tray icon's clicks and where the launcher bar opens.
#include "launch/gamelauncher.h"
#include "launch/launcherbar.h"
#include "shell/activity.h"
#include "shell/frmpulsebox.h"
#include "shell/iconize.h"
#include "shell/pulseboxmod.h"
#include "shell/ticker.h"
#include "shell/trayicon.h"
#include "shell/vblist.h"
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

void frmPulsebox::mnuIconize_Click()
{
    if (!tray_) {
        tray_ = Seams::makeTray(this);
        tray_->setFirstClickPending([] { return Mod().TrayClickState == 1; });
        connect(tray_, &TrayIcon::mouseEvent, this, &frmPulsebox::Tray_MouseEvent);
    }
    const QIcon icon = windowIcon().isNull() ? PulseboxIcon() : windowIcon();
    // The icon first: the window is hidden only once there is a way back to it.
    tray_->add(icon, TrayTip());
    if (tray_->isShown())
        hide();
}

// 513: a press that may be the first half of a double click. Its handler waits
// half a second; a double click (515) arriving meanwhile runs inside that wait
// and leaves the state 0, so the press then does nothing more.
void frmPulsebox::Tray_MouseEvent(int number)
{
    PulseboxMod &mod = Mod();
    if (number == TrayIcon::kLeftPress) {
        mod.TrayClickState = 1;
        Timer3->setInterval(500);
        waitUntil([&mod] { return mod.TrayClickState != 1; });
        Timer3->setInterval(0);
        if (mod.TrayClickState != 3)
            return;
        const ScreenRect taskbar = GetTaskbarRect();
        const ScreenRect workArea = GetWorkArea();
        if (!launchBar_) {
            QList<Favorite> favorites;  // each address with the description its item data names
            for (int i = 0; i < lbFav->ListCount(); ++i)
                favorites.append({lbFav->List(i), lbFavDesc->List(lbFav->ItemData(i))});
            auto *activity = findChild<Activity *>();
            if (!activity)
                activity = new Activity(this);
            launchBar_ = new LauncherBar(favorites, *activity, [](const QString &target, const QString &prompt) {
                GameLauncher(Mod().GamePath).launch(target, prompt);
            }, this);
        }
        mod.TaskbarEdge = TaskbarEdgeOf(taskbar);
        launchBar_->setTaskbarEdge(mod.TaskbarEdge);
        launchBar_->move(LaunchBarTopLeft(mod.TaskbarEdge, workArea, launchBar_->frameGeometry().size(),
                                          launchBar_->pos()));
        launchBar_->show();
        SetTopMost(launchBar_, true);
        launchBar_->raise();
    } else if (number == TrayIcon::kLeftDoubleClick) {
        mod.TrayClickState = 0;
        show();
        raise();
        activateWindow();
        if (tray_)
            tray_->remove();
    }
}
