#include "probes/queryrun.h"

#include "probes/dssocket.h"
#include "probes/gamequery.h"
#include "serverlist/probedecisions.h"
#include "shell/pulseboxmod.h"
#include "shell/ticker.h"
#include "shell/waiting.h"

QString RunGameQuery(DsSocket &socket, Ticker &timer, qint32 &ticks, int tickLimit,
                     const QString &address, const QString &port, int mode)
{
    if (socket.State() != DsSocket::StateOpen)
        socket.SetAction(DsSocket::OpenAction);
    socket.RemoteHost.clear();
    socket.RemoteDotted = address;
    socket.RemotePort = Probe::QueryPort(port);
    PulseboxMod &mod = Mod();
    mod.QueryMode = mode;
    mod.LastReply.clear();
    ticks = 0;
    const bool wasBusy = mod.QueryBusy;
    mod.QueryBusy = true;
    socket.Connect();
    timer.setInterval(1000);
    waitUntil([&mod, &ticks, tickLimit] { return !mod.LastReply.isEmpty() || ticks >= tickLimit; });
    timer.setInterval(0);
    mod.QueryBusy = wasBusy;
    return mod.LastReply;
}

void SendSelectedQuery(DsSocket &socket)
{
    const QString datagram = GameQuery::datagram(Mod().QueryMode);
    if (!datagram.isEmpty())
        socket.Send(datagram);
}
