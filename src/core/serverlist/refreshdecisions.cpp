#include "serverlist/refreshdecisions.h"

#include "probes/address.h"
#include "serverlist/serverentry.h"
#include "serverlist/urltext.h"

#include <algorithm>
#include <cmath>
#include <limits>

using namespace Qt::StringLiterals;

namespace Probe {

double NumberValue(const QString &text)
{
    qsizetype i = 0;
    while (i < text.size() && (text[i] == u' ' || text[i] == u'\t'))
        ++i;
    const qsizetype start = i;
    if (i < text.size() && (text[i] == u'+' || text[i] == u'-'))
        ++i;
    qsizetype digits = 0;
    // Digits beyond what a double holds add nothing; the cap keeps a huge text cheap.
    const auto isDigit = [&](qsizetype k) { return k < text.size() && text[k] >= u'0' && text[k] <= u'9'; };
    while (isDigit(i)) { ++i; ++digits; }
    if (i < text.size() && text[i] == u'.') {
        qsizetype j = i + 1;
        qsizetype fraction = 0;
        while (isDigit(j)) { ++j; ++fraction; }
        if (fraction > 0 || digits > 0) {
            digits += fraction;
            i = j;
        }
    }
    if (digits == 0)
        return 0;
    bool ok = false;
    const double value = text.mid(start, std::min<qsizetype>(i - start, 400)).toDouble(&ok);
    return ok && std::isfinite(value) ? value : 0;
}

qint32 PortNumber(const QString &portText)
{
    const double value = std::nearbyint(NumberValue(portText));  // ties to even
    constexpr double lo = std::numeric_limits<qint32>::min(), hi = std::numeric_limits<qint32>::max();
    return static_cast<qint32>(std::clamp(value, lo, hi));
}

quint16 QueryPort(const QString &portText)
{
    const qint32 port = PortNumber(portText);
    return port > 0 && port <= 65535 ? static_cast<quint16>(port) : 0;
}

int TtlValue(const QString &ttlText)
{
    return static_cast<int>(std::clamp<qint64>(LeadingNumber(ttlText), 0, 255));
}

void EchoSeries::add(int result, quint32 status, quint32 roundTripMs)
{
    lastStatus = status;
    if (result == 0) {
        ended = true;
        return;
    }
    ++successes;
    total += roundTripMs;
}

bool WithinLimit(double ping, const QString &limitText)
{
    return !(ping > NumberValue(limitText));
}

QString LookingUpLine(const QString &name) { return u"Looking up: "_s + name + u" Please wait.."_s; }
QString FoundLine(const QString &name, const QString &address) { return u"Found: "_s + name + u" as "_s + address; }

QString FailureLine(const QString &address, quint32 status)
{
    return u"Reply from "_s + TrimSpaces(address) + u": Failed code = "_s + QString::number(status);
}

QString TimeLine(const QString &address, double ping, const QString &ttlText, bool favorite)
{
    return (favorite ? u"Reply from Fav "_s : u"Reply from "_s) + TrimSpaces(address) + u": time ="_s
        + QString::number(static_cast<qint64>(std::floor(ping))) + u"ms. TTL="_s + ttlText;
}

Accepted Accept(const QString &address, const QString &portText, double ping, const QString &version,
                const QString &infoLine, bool favorite)
{
    Accepted a;
    a.hostName = ReplyField(infoLine, 1);
    a.map = ReplyField(infoLine, 2);
    a.players = ReplyField(infoLine, 3);
    a.record.Address = DottedToAddress(address);
    a.record.Port = PortNumber(portText);
    a.record.PingMs = ServerRow::roundHalfEven(ping);
    a.record.HostName = ServerRow::pad(a.hostName, 50);
    a.record.Version = ServerRow::pad(version, 5);
    a.record.IsFavorite = favorite ? 1 : 0;
    a.row = ServerRow::format(static_cast<qint64>(std::floor(ping)), favorite,
                              TrimSpaces(address) + u':' + portText, a.hostName, version, a.map, a.players);
    return a;
}

}

qint32 ServerTable::appendServer(const ServerRec &rec)
{
    ++ServerCount;
    Servers.resize(static_cast<size_t>(ServerCount) + 2);
    Servers[static_cast<size_t>(ServerCount)] = rec;
    return ServerCount;
}

void ServerTable::clearServers()
{
    ServerCount = 0;
    Servers.assign(1, ServerRec{});
}
