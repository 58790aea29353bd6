// Refresh List, Fav Refresh and the run-state of the main window's controls.
#include "probes/dssocket.h"
#include "serverlist/masterlist.h"
#include "serverlist/urltext.h"
#include "shell/frmpulsebox.h"
#include "shell/pulseboxmod.h"
#include "shell/prompts.h"
#include "shell/vblist.h"
#include "shell/waiting.h"

#include <QAction>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>

using namespace Qt::StringLiterals;

namespace {
enum class ContinueAnswer { NotAsked, Yes, FavoritesOnly };

bool continueWithFavorites()
{
    return Seams::prompts().question(u"Do you want to continue trying favorites?"_s, AppTitle);
}
}

void frmPulsebox::setRunControls(bool running)
{
    Command1->setEnabled(running);
    for (QWidget *w : std::initializer_list<QWidget *>{Command2, Command8, Command7, cmAddFav, txTTL, Text4})
        w->setEnabled(!running);
    mnuPing->menuAction()->setEnabled(!running);
    mnuFastRefresh->setEnabled(!running);
    if (running) {
        Command6->setEnabled(false);
        lbHops->hide();
    } else {
        Shape1->hide();
        Shape2->hide();
    }
}

void frmPulsebox::Command8_Click()
{
    Mod().FavoritesOnly = -1;
    Command2_Click();
}

void frmPulsebox::Command2_Click()
{
    PulseboxMod &mod = Mod();
    const auto abort = [this, &mod] {
        setRunControls(false);
        mod.CancelRequested = 0;
    };

    List1->Clear();
    lbHost->Clear();
    lbReturn->Clear();
    Label14->setText(u"0"_s);
    setRunControls(true);
    ContinueAnswer answer = ContinueAnswer::NotAsked;
    mod.clearServers();
    mod.PlayerCount = 1;

    if (mod.FavoritesOnly != 0) {
        answer = ContinueAnswer::FavoritesOnly;
    } else {
        setStatus(u"Retreiving List...."_s);
        yieldOnce();
        QString host;
        MasterList::Location master;
        const bool fromMaster = MasterList::parseUrl(TrimSpaces(Text1->currentText()), &master);
        if (fromMaster ? master.host.isEmpty() : !fetchPrepare(&host)) {
            Seams::prompts().message(u"Invalid URL supplied."_s, AppTitle);
            if (!continueWithFavorites())
                return abort();
            answer = ContinueAnswer::Yes;
        } else if (fromMaster) {
            const QString problem = fetchFromMaster(master.host, master.port);
            if (waitsAbandoned())
                return abort();  // the program is ending
            if (!problem.isEmpty()) {
                Seams::prompts().message(u"problem getting list of server"_s, AppTitle);
                setStatus(u"Problem getting list from server: "_s + problem);
                if (!continueWithFavorites())
                    return abort();
                answer = ContinueAnswer::Yes;
            }
        } else {
            fetchStart(host);
            // The fetch has no time limit of its own: its close or error event ends it.
            waitUntil([this, &mod] { return dsSocket1->State() == DsSocket::StateFailed || !mod.FetchBusy; });
            if (waitsAbandoned())
                return abort();  // the program is ending
            if (dsSocket1->State() == DsSocket::StateFailed) {
                Seams::prompts().message(u"problem getting list of server"_s, AppTitle);
                setStatus(u"Problem getting list from server"_s);
                if (!continueWithFavorites())
                    return abort();
                answer = ContinueAnswer::Yes;
            }
        }
        if (lbHost->ListCount() == 0 && answer != ContinueAnswer::Yes) {
            Seams::prompts().message(u"No sites from web source list"_s, AppTitle);
            setStatus(u"No sites from web source list"_s);
            if (!continueWithFavorites())
                return abort();
            answer = ContinueAnswer::Yes;
        }
    }

    setStatus(u"Pinging...."_s);
    Label14->setText(QString::number(lbHost->ListCount()));
    yieldOnce();
    Shape1->show();
    Shape2->resize(0, Shape2->height());
    Shape2->show();

    if (mnuFastRefresh->isChecked()) {
        probeFast(answer == ContinueAnswer::NotAsked);
    } else {
        for (int i = 0; i < lbFav->ListCount() && mod.CancelRequested == 0; ++i) {
            probeServer(lbFav->List(i), true);
            yieldOnce();
        }
        if (answer == ContinueAnswer::NotAsked) {
            const int entries = lbHost->ListCount();
            for (int i = 0; i < entries && mod.CancelRequested == 0;) {
                probeServer(lbHost->List(i), false);
                yieldOnce();
                ++i;
                Shape2->resize(static_cast<int>(qint64(Shape1->width()) * i / entries), Shape2->height());
            }
        }
    }

    setStatus(u"Done..."_s);
    setRunControls(false);
    mod.FavoritesOnly = 0;
    mod.CancelRequested = 0;
}
