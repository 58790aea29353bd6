// Host-name look-up of server entries, and the master list menu.
#include "probes/dssocket.h"
#include "serverlist/probedecisions.h"
#include "shell/frmpulsebox.h"
#include "shell/pulseboxmod.h"
#include "shell/prompts.h"
#include "shell/waiting.h"

using namespace Qt::StringLiterals;

QString frmPulsebox::lookUp(const QString &name)
{
    returnLine(Probe::LookingUpLine(name));
    yieldOnce();
    dsSocket2->RemoteDotted = u"0.0.0.0"_s;
    dsSocket2->RemoteHost = name;
    dsSocket2->SetAction(DsSocket::ResolveAction);
    const QString address = dsSocket2->RemoteDotted;
    returnLine(Probe::FoundLine(name, address));
    yieldOnce();
    return address;
}

void frmPulsebox::mnuupdmaster_Click()
{
    Seams::prompts().message(u"not available yet"_s, AppTitle);
}
