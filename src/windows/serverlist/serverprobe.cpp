// One server entry of a refresh: resolve, ping, judge, query, record.
#include "probes/address.h"
#include "probes/echoservice.h"
#include "serverlist/probedecisions.h"
#include "serverlist/serverentry.h"
#include "serverlist/urltext.h"
#include "shell/frmpulsebox.h"
#include "shell/pulseboxmod.h"
#include "shell/prompts.h"
#include "shell/vblist.h"
#include "shell/waiting.h"
#include "shell/wiretext.h"

#include <QAction>
#include <QLineEdit>


using namespace Qt::StringLiterals;

namespace {
constexpr int kPingTimeoutMs = 200;

// Says once per run of the program why pings cannot work here, with the fix.
void reportEchoTrouble(EchoService &echo)
{
    if (Mod().echoTroubleReported)
        return;
    const QString reason = echo.unavailableReason();
    if (reason.isEmpty())
        return;
    Mod().echoTroubleReported = true;
    Seams::prompts().message(reason, AppTitle, Prompter::Icon::Warning);
}
}

void frmPulsebox::probeServer(const QString &entry, bool favorite)
{
    const ServerEntry server = ServerEntry::split(entry);
    const QString host = server.isName ? lookUp(server.host) : server.host;
    txIPAddress->setText(host);

    EchoService &echo = Seams::echo();
    reportEchoTrouble(echo);
    const qint32 destination = DottedToAddress(txIPAddress->text());
    const int ttl = Probe::TtlValue(txTTL->text());
    yieldOnce();

    const QByteArray payload = WireText::toBytes(EchoRequestText);
    Probe::EchoSeries series;
    series.wanted = mnuqp[0]->isChecked() ? 1 : 3;
    EchoReply reply;
    while (!series.done()) {
        const int result = echo.sendEcho(destination, payload, ttl, kPingTimeoutMs, reply);
        series.add(result, reply.Status, reply.RoundTripTime);
    }
    const QString address = txIPAddress->text();
    if (series.failed()) {
        returnLine(Probe::FailureLine(address, series.lastStatus));
        return;
    }
    const double ping = series.ping();
    if (!Probe::WithinLimit(ping, Text4->text())) {
        lbReturn->AddItem(Probe::TimeLine(address, ping, txTTL->text()));
        return;
    }

    const VersionProbeResult result = versionProbe(txIPAddress->text(), server.port);
    returnLine(Probe::TimeLine(address, ping, txTTL->text(), favorite));
    const Probe::Accepted accepted =
        Probe::Accept(txIPAddress->text(), server.port, ping, result.version, result.infoLine, favorite);
    const qint32 index = Mod().appendServer(accepted.record);
    List1->SetItemData(List1->AddItem(accepted.row), index);
    lbReturn->SelectLast();
}
