#include "launch/launchbar.h"

#include "probes/address.h"
#include "probes/statusanswer.h"
#include "serverlist/refreshdecisions.h"
#include "serverlist/serverentry.h"
#include "serverlist/urltext.h"


using namespace Qt::StringLiterals;

namespace LaunchBar {

Entry entryOf(const QString &address, const QString &description)
{
    Entry entry;
    // Read as the refresh reads an entry; only a port of value 0 differs: the bar
    // queries 27910 there.
    const ServerEntry server = ServerEntry::split(address);
    const qint32 port = Probe::PortNumber(server.port);
    entry.server.Address = DottedToAddress(server.host);
    // The port is kept as the number written, as the record holds it; one that is
    // out of range fails at the send, like every other query's.
    entry.server.Port = port == 0 ? kDefaultPort : port;
    entry.server.HostName = ServerRow::pad(description, 50);
    entry.caption = entry.server.HostName == QString(50, QChar(0)) ? address : TrimSpaces(entry.server.HostName);
    return entry;
}

int barHeight(int favorites)
{
    return favorites >= 1 ? kBarHeight + (favorites - 1) * kButtonStep : kBarHeight - kButtonStep;
}

int frameHeight(int favorites)
{
    return barHeight(favorites) - (kBarHeight - kFrameHeight);
}

int buttonTop(int index) { return kButtonTop + kButtonStep * index; }

bool captionIsAddress(const QString &caption)
{
    return !caption.isEmpty() && caption.front() >= u'0' && caption.front() <= u'9';
}

std::optional<StatusView> statusView(const QString &reply)
{
    const StatusAnswer status = StatusAnswer::parse(reply);
    if (!status.complete)
        return std::nullopt;
    StatusView view;
    const QStringList &fields = status.serverFields;
    for (qsizetype i = 0; i + 1 < fields.size(); i += 2) {  // a last key without its value names nothing
        if (fields[i].contains(u"hostname"_s))
            view.hostNames += fields[i + 1];
    }
    QString players = status.playerText;
    view.text = u"PLAYER STATUS:\r\n"_s + players.replace(u'\n', u"\r\n"_s);
    return view;
}
}
