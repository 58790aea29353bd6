// One server entry of a refresh: resolve, ping, judge, query, record.
#include "probes/address.h"
#include "probes/echoservice.h"
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

#include <algorithm>
#include <cmath>

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
    const int ttl = static_cast<int>(std::clamp<qint64>(LeadingNumber(txTTL->text()), 0, 255));
    yieldOnce();

    const int echoes = mnuqp[0]->isChecked() ? 1 : 3;
    const QByteArray payload = WireText::toBytes(EchoRequestText);
    EchoReply reply;
    int successes = 0;
    double total = 0;
    for (int n = 0; n < echoes; ++n) {
        if (echo.sendEcho(destination, payload, ttl, kPingTimeoutMs, reply) == 0)
            break;
        ++successes;
        total += reply.RoundTripTime;
    }
    const QString address = TrimSpaces(txIPAddress->text());
    if (successes == 0 || reply.Status != 0) {
        returnLine(u"Reply from "_s + address + u": Failed code = "_s + QString::number(reply.Status));
        return;
    }
    const double ping = total / successes;
    const qint64 pingWhole = static_cast<qint64>(std::floor(ping));
    const QString timeText = u": time ="_s + QString::number(pingWhole) + u"ms. TTL="_s + txTTL->text();
    if (ping > static_cast<double>(LeadingNumber(Text4->text()))) {
        lbReturn->AddItem(u"Reply from "_s + address + timeText);
        return;
    }

    const VersionProbeResult result = versionProbe(txIPAddress->text(), server.port);
    returnLine((favorite ? u"Reply from Fav "_s : u"Reply from "_s) + address + timeText);
    const QString hostName = ReplyField(result.infoLine, 1);
    const QString map = ReplyField(result.infoLine, 2);
    const QString players = ReplyField(result.infoLine, 3);

    ServerRec rec;
    rec.Address = DottedToAddress(txIPAddress->text());
    rec.Port = static_cast<qint32>(std::clamp<qint64>(LeadingNumber(server.port), INT32_MIN, INT32_MAX));
    rec.PingMs = ServerRow::roundHalfEven(ping);
    rec.HostName = ServerRow::pad(hostName, 50);
    rec.Version = ServerRow::pad(result.version, 5);
    rec.IsFavorite = favorite ? 1 : 0;
    const qint32 index = Mod().appendServer(rec);

    const QString row = ServerRow::format(pingWhole, favorite, address + u':' + server.port, hostName,
                                          result.version, map, players);
    List1->SetItemData(List1->AddItem(row), index);
    lbReturn->SelectLast();
}
