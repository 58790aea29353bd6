// Game server queries over the datagram socket, and the Server Info command.
#include "probes/address.h"
#include "probes/dssocket.h"
#include "probes/serverinfowindow.h"
#include "probes/gamequery.h"
#include "probes/queryrun.h"
#include "shell/frmpulsebox.h"
#include "shell/pulseboxmod.h"
#include "shell/prompts.h"
#include "shell/ticker.h"
#include "shell/vblist.h"
#include "shell/waiting.h"

#include <QLineEdit>

using namespace Qt::StringLiterals;

QString frmPulsebox::query(const QString &address, const QString &port, int mode)
{
    return RunGameQuery(*dsSocket2, *Timer1, Mod().TimerTicks, 2, address, port, mode);
}

frmPulsebox::VersionProbeResult frmPulsebox::versionProbe(const QString &address, const QString &port)
{
    PulseboxMod &mod = Mod();
    mod.QueryMode = 0;
    QString answer;
    int next = 1;
    while (next != 0 && !waitsAbandoned()) {
        mod.QueryMode = next;
        answer = query(address, port, mod.QueryMode);
        next = GameQuery::nextMode(mod.QueryMode, answer);
    }
    const QString version = GameQuery::versionText(mod.QueryMode);
    mod.QueryMode = 1;
    return {version, GameQuery::infoLine(answer)};
}

void frmPulsebox::dsSocket2_SendReady()
{
    SendSelectedQuery(*dsSocket2);
}

void frmPulsebox::dsSocket2_DataArrival(const QString &data)
{
    Mod().LastReply = data;
    Text2->Text = data;
}

void frmPulsebox::dsSocket2_Error(int number, const QString &description)
{
    const QString numberText = number < 0 ? QString::number(number) : u' ' + QString::number(number);
    Seams::prompts().message(numberText + description, u"Socket 2!"_s);
}

void frmPulsebox::Command6_Click()
{
    const ServerRec *rec = selectedServer();
    if (!rec)
        return;
    const QString address = AddressToDotted(rec->Address);
    const QString port = QString::number(rec->Port);
    txIPAddress->setText(address);
    if (query(address, port, GameQuery::StatusMode).isEmpty())
        return;
    auto *window = new ServerInfoWindow(GameQuery::serverInfoText(Text2->Text), this);
    window->show();
}
