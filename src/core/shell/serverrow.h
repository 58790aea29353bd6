#pragma once
#include <QString>
#include <QtGlobal>

// One record of the server table; index 0 of the table is never filled.
struct ServerRec {
    qint32 Address = 0;  // dotted numbers in memory order (network byte order)
    qint32 Port = 0;
    qint32 PingMs = 0;
    qint32 Hops = 0;
    QString HostName = QString(50, QChar(0));  // 50 characters; NULs until assigned
    QString Version = QString(5, QChar(0));    // 5 characters; NULs until assigned
    qint16 IsFavorite = 0;

    bool operator==(const ServerRec &) const = default;
};

namespace ServerRow {
// s cut or padded on the right with spaces to exactly n characters.
QString pad(const QString &s, int n);
// The fixed-width row of the main list. pingWhole is the integer part of the mean.
QString format(qint64 pingWhole, bool favorite, const QString &addressAndPort,
               const QString &hostName, const QString &version, const QString &map,
               const QString &players);
// The row with the seven characters from column 59 replaced by the hop column.
QString withHops(const QString &row, int hops);
// Mean round-trip time stored in a record: nearest whole number, halves to even.
qint32 roundHalfEven(double value);
}
