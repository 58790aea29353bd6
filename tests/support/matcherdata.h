#pragma once
// Ping-list bytes and matcher data as the tests build them.
#include "pinglists/pinglist.h"
#include "probes/address.h"
#include "shell/serverrow.h"

#include <QList>
#include <QtEndian>

#include <utility>

inline QByteArray le32(qint32 v)
{
    char b[4];
    qToLittleEndian(v, b);
    return QByteArray(b, 4);
}

struct PlayerScores {
    QString name;
    QList<std::pair<int, int>> hopsAndTimes;  // one per server
};

// Matcher data as a load leaves them: player 1's records name the servers
// 127.0.<s>.<s> "Server <s>", version 3.20, port 27910.
inline MatcherData matcherData(const QList<PlayerScores> &players)
{
    MatcherData data;
    const auto P = static_cast<qint32>(players.size());
    const auto N = static_cast<qint32>(players.first().hopsAndTimes.size());
    data.PlayerCount = P;
    data.MatchServerCount = N;
    data.recreateNames(P);
    data.recreateLists(P, N);
    for (qint32 p = 1; p <= P; ++p) {
        data.PlayerNames[static_cast<size_t>(p)] = PingList::fixedName(players[p - 1].name);
        for (qint32 s = 1; s <= N; ++s) {
            ServerRec &rec = *data.record(p, s);
            std::tie(rec.Hops, rec.PingMs) = players[p - 1].hopsAndTimes[s - 1];
            if (p == 1) {
                rec.Address = DottedToAddress(QStringLiteral("127.0.%1.%1").arg(s));
                rec.Port = 27910;
                rec.HostName = ServerRow::pad(QStringLiteral("Server %1").arg(s), 50);
                rec.Version = ServerRow::pad(QStringLiteral("3.20"), 5);
            }
        }
    }
    return data;
}
