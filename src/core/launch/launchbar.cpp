#include "launch/launchbar.h"

#include "probes/address.h"
#include "serverlist/urltext.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace LaunchBar {

Entry entryOf(const QString &address, const QString &description)
{
    Entry entry;
    const QString lower = address.toLower();
    const qsizetype colon = lower.indexOf(u':');
    const QString host = colon < 0 ? lower : lower.left(colon);
    const qint64 port = colon < 0 ? 0 : LeadingNumber(lower.mid(colon + 1));
    entry.server.Address = DottedToAddress(host);
    // The port is kept as the number written, as the record holds it; one that is
    // out of range fails at the send, like every other query's.
    entry.server.Port = port == 0 ? kDefaultPort : static_cast<qint32>(std::clamp<qint64>(port, -2147483647, 2147483647));
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
    if (reply.size() < 10)
        return std::nullopt;
    const QString rest = reply.mid(10);
    const qsizetype lf = rest.indexOf(u'\n');
    const QString serverLine = PrintableText(lf < 0 ? QString() : rest.left(lf + 1)) + u'\\';

    StatusView view;
    int separators = 0;
    bool hostNameKey = false;
    QString token;
    for (const QChar c : serverLine) {
        if (c != u'\\') {
            token += c;
            continue;
        }
        if (separators != 0) {
            if (separators % 2 == 1) {
                if (token.contains(u"hostname"_s))
                    hostNameKey = true;
            } else if (hostNameKey) {
                view.hostNames += token;
                hostNameKey = false;
            }
        }
        ++separators;
        token.clear();
    }
    QString players = lf < 0 ? rest : rest.mid(lf + 1);
    view.text = u"PLAYER STATUS:\r\n"_s + players.replace(u'\n', u"\r\n"_s);
    return view;
}
}
