#include "pinglists/pinglist.h"

#include "probes/address.h"
#include "shell/wiretext.h"

#include <QtEndian>

#include <algorithm>

namespace {
const QString kNeverAssignedName(PingList::kNameBytes, QChar(0));

// A text in a fixed field of n bytes: cut, or padded with blanks as an assignment
// to a fixed-length text pads it. NULs (never assigned) stay zero bytes.
QByteArray fixedField(const QString &text, int n)
{
    QByteArray bytes = WireText::toBytes(text.left(n));
    if (bytes.size() < n)
        bytes.append(n - bytes.size(), ' ');
    return bytes;
}

void appendInt32(QByteArray &out, qint32 value)
{
    char bytes[4];
    qToLittleEndian(value, bytes);
    out.append(bytes, 4);
}

void appendHeader(QByteArray &out, qint32 players, qint32 servers)
{
    out += PingList::kMagic;
    appendInt32(out, players);
    appendInt32(out, servers);
}

qint32 held(size_t size) { return size == 0 ? 0 : static_cast<qint32>(std::min<size_t>(size - 1, 0x7FFFFFFF)); }
}

void MatcherData::recreateNames(qint32 players)
{
    PlayerNames.assign(static_cast<size_t>(std::max(players, 0)) + 1, kNeverAssignedName);
}

void MatcherData::recreateLists(qint32 players, qint32 servers)
{
    // Copies of one record share its texts, so N empty records cost N small structs.
    const std::vector<ServerRec> empty(static_cast<size_t>(std::max(servers, 0)) + 1, ServerRec{});
    PlayerLists.assign(static_cast<size_t>(std::max(players, 0)) + 1, empty);
}

void MatcherData::addPlayer()
{
    ++PlayerCount;
    PlayerNames.resize(static_cast<size_t>(PlayerCount) + 1, kNeverAssignedName);
    PlayerLists.resize(static_cast<size_t>(PlayerCount) + 1,
                       std::vector<ServerRec>(static_cast<size_t>(std::max(MatchServerCount, 0)) + 1, ServerRec{}));
}

ServerRec *MatcherData::record(qint32 p, qint32 s)
{
    if (p < 0 || s < 0 || static_cast<size_t>(p) >= PlayerLists.size())
        return nullptr;
    std::vector<ServerRec> &list = PlayerLists[static_cast<size_t>(p)];
    return static_cast<size_t>(s) < list.size() ? &list[static_cast<size_t>(s)] : nullptr;
}

const ServerRec *MatcherData::record(qint32 p, qint32 s) const
{
    return const_cast<MatcherData *>(this)->record(p, s);
}

namespace PingList {

QString withDefaultSuffix(const QString &path)
{
    const QString fileName = path.mid(path.lastIndexOf(u'/') + 1);
    if (fileName.isEmpty() || fileName.contains(u'.'))
        return path;
    return path + QStringLiteral(".Pbx");
}

QString fixedName(const QString &name)
{
    return ServerRow::pad(name, kNameBytes);
}

QByteArray recordBytes(const ServerRec &rec)
{
    QByteArray out;
    out.reserve(kRecordBytes);
    char address[4];
    qToBigEndian(AddressToHostOrder(rec.Address), address);
    out.append(address, 4);
    appendInt32(out, rec.Port);
    appendInt32(out, rec.PingMs);
    appendInt32(out, rec.Hops);
    out += fixedField(rec.HostName, 50);
    out += fixedField(rec.Version, 5);
    char favorite[2];
    qToLittleEndian(rec.IsFavorite, favorite);
    out.append(favorite, 2);
    return out;
}

ServerRec recordFrom(const char *bytes)
{
    ServerRec rec;
    rec.Address = AddressFromHostOrder(qFromBigEndian<quint32>(bytes));
    rec.Port = qFromLittleEndian<qint32>(bytes + 4);
    rec.PingMs = qFromLittleEndian<qint32>(bytes + 8);
    rec.Hops = qFromLittleEndian<qint32>(bytes + 12);
    rec.HostName = WireText::fromBytes(QByteArray(bytes + 16, 50));
    rec.Version = WireText::fromBytes(QByteArray(bytes + 66, 5));
    rec.IsFavorite = qFromLittleEndian<qint16>(bytes + 71);
    return rec;
}

QByteArray serverListBytes(const std::vector<ServerRec> &servers, qint32 count, const QString &name)
{
    const qint32 n = std::clamp(count, 0, held(servers.size()));
    QByteArray out;
    out.reserve(kHeaderBytes + kNameBytes + qsizetype(n) * kRecordBytes);
    appendHeader(out, 1, n);
    out += fixedField(fixedName(name), kNameBytes);
    for (qint32 j = 1; j <= n; ++j)
        out += recordBytes(servers[static_cast<size_t>(j)]);
    return out;
}

QByteArray matcherBytes(const MatcherData &data)
{
    const qint32 p = std::clamp(data.PlayerCount, 0, std::min(held(data.PlayerNames.size()), held(data.PlayerLists.size())));
    qint32 n = std::max(data.MatchServerCount, 0);
    for (qint32 i = 1; i <= p; ++i)
        n = std::min(n, held(data.PlayerLists[static_cast<size_t>(i)].size()));
    QByteArray out;
    appendHeader(out, p, n);
    for (qint32 i = 1; i <= p; ++i) {
        out += fixedField(data.PlayerNames[static_cast<size_t>(i)], kNameBytes);
        const std::vector<ServerRec> &list = data.PlayerLists[static_cast<size_t>(i)];
        for (qint32 s = 1; s <= n; ++s)
            out += recordBytes(list[static_cast<size_t>(s)]);
    }
    return out;
}

LoadResult read(const QByteArray &bytes, MatcherData previous)
{
    LoadResult result;
    result.data = std::move(previous);
    MatcherData &data = result.data;
    const auto damaged = [&result] {
        result.outcome = Outcome::Damaged;
        result.messages.append({QStringLiteral("Invalid (Possibly Damaged) file"), QStringLiteral("Pulsebox"), true});
        return result;
    };

    // Reads stop at the end of the file; a read that cannot be completed leaves
    // its target empty, and so does every read after it.
    qint64 pos = 0;
    bool lastComplete = true;
    const auto take = [&](qint64 n) -> const char * {
        if (pos + n > bytes.size()) {
            pos = bytes.size();
            lastComplete = false;
            return nullptr;
        }
        const char *at = bytes.constData() + pos;
        pos += n;
        lastComplete = true;
        return at;
    };
    const auto count = [&take] {
        const char *at = take(4);
        return at ? qFromLittleEndian<qint32>(at) : 0;
    };

    if (!bytes.startsWith(kMagic)) {
        const bool ours = bytes.startsWith("Pulsebox");
        result.outcome = ours ? Outcome::IncorrectVersion : Outcome::NotPulsebox;
        result.messages.append({ours ? QStringLiteral("Incorrect version") : QStringLiteral("Not a Pulsebox file"),
                                QStringLiteral("Pulsebox"), true});
        return result;
    }
    take(kMagic.size());

    data.PlayerCount = count();
    const qint32 players = data.PlayerCount;
    if (players <= 0 || players > kMaxPlayers)
        return damaged();

    data.MatchServerCount = count();
    const qint32 servers = data.MatchServerCount;
    data.recreateNames(players);
    if (servers <= 0 || kHeaderBytes + qint64(players) * (kNameBytes + qint64(kRecordBytes) * servers) > kMaxContentBytes)
        return damaged();

    data.recreateLists(players, servers);
    for (qint32 p = 1; p <= players; ++p) {
        if (const char *name = take(kNameBytes))
            data.PlayerNames[static_cast<size_t>(p)] = WireText::fromBytes(QByteArray(name, kNameBytes));
        std::vector<ServerRec> &list = data.PlayerLists[static_cast<size_t>(p)];
        for (qint32 s = 1; s <= servers; ++s) {
            if (!lastComplete) {
                result.messages.append({QStringLiteral("File ended at: ") + QString::number(s), QStringLiteral("Error "), false});
                break;
            }
            if (const char *rec = take(kRecordBytes))
                list[static_cast<size_t>(s)] = recordFrom(rec);
        }
    }
    result.outcome = Outcome::Loaded;
    return result;
}

}
