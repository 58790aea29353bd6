#include "serverlist/masterlist.h"

using namespace Qt::StringLiterals;

namespace MasterList {

QByteArray queryDatagram() { return QByteArray("query\n\0", 7); }

std::optional<Reply> parse(const QByteArray &datagram)
{
    static const QByteArray prefix("\xff\xff\xff\xff", 4);
    static const QByteArray word("servers");
    qsizetype at = datagram.startsWith(prefix) ? prefix.size() : 0;
    if (datagram.mid(at, word.size()) != word)
        return std::nullopt;
    at += word.size() + 1;  // the separator, a blank or a line feed, whatever it is
    return parseRecords(datagram.mid(at));
}

Reply parseRecords(const QByteArray &records)
{
    Reply reply;
    const auto *bytes = reinterpret_cast<const uchar *>(records.constData());
    const qsizetype size = records.size();
    qsizetype at = 0;
    for (; at + 6 <= size; at += 6) {
        const uchar *r = bytes + at;
        const Record record{quint32(r[0]) << 24 | quint32(r[1]) << 16 | quint32(r[2]) << 8 | r[3],
                            static_cast<quint16>(r[4] << 8 | r[5])};
        if (record.address == 0 || record.port == 0)
            ++reply.skipped;
        else
            reply.records.append(record);
    }
    reply.truncatedBytes = static_cast<int>(size - at);
    return reply;
}

QString entryText(const Record &r)
{
    return u"%1.%2.%3.%4:%5"_s.arg(r.address >> 24).arg(r.address >> 16 & 0xFF).arg(r.address >> 8 & 0xFF)
        .arg(r.address & 0xFF).arg(r.port);
}

std::optional<Location> parseHostPort(const QString &text)
{
    Location location;
    const qsizetype colon = text.lastIndexOf(u':');
    location.host = colon < 0 ? text : text.left(colon);
    if (colon >= 0) {
        bool ok = false;
        const uint port = text.mid(colon + 1).toUInt(&ok);
        if (!ok || port == 0 || port > 65535)
            return std::nullopt;
        location.port = static_cast<quint16>(port);
    }
    if (location.host.isEmpty() || location.host.contains(u'/') || location.host.contains(u' '))
        return std::nullopt;
    return location;
}

bool parseUrl(const QString &url, Location *location)
{
    static const QString scheme = u"master://"_s;
    if (!url.startsWith(scheme, Qt::CaseInsensitive))
        return false;
    QString rest = url.mid(scheme.size());
    if (rest.endsWith(u'/'))
        rest.chop(1);
    *location = parseHostPort(rest).value_or(Location{QString(), kDefaultPort});
    return true;
}

}
