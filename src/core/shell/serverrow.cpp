#include "shell/serverrow.h"

#include <cmath>
#include <limits>

namespace ServerRow {

QString pad(const QString &s, int n)
{
    return (s + QString(n, u' ')).left(n);
}

QString format(qint64 pingWhole, bool favorite, const QString &addressAndPort,
               const QString &hostName, const QString &version, const QString &map,
               const QString &players)
{
    const QString sep = QStringLiteral(" - ");
    return QStringLiteral("%1").arg(pingWhole, 3, 10, QChar(u'0'))
        + (favorite ? QStringLiteral(" -*") : sep)
        + pad(addressAndPort, 22) + sep
        + pad(hostName, 33) + sep
        + pad(version, 4) + sep
        + pad(map, 8) + sep
        + pad(players, 5);
}

QString withHops(const QString &row, int hops)
{
    const QString count = hops == 0 ? QString() : QString::number(hops);
    const QString column = QStringLiteral(" - ") + (QStringLiteral("   ") + count).right(3)
        + QLatin1Char(' ');
    QString result = row;
    if (result.size() < 58)
        result += QString(58 - result.size(), u' ');
    return result.replace(58, 7, column);
}

qint32 roundHalfEven(double value)
{
    const double r = std::nearbyint(value);  // default rounding mode: to nearest, ties to even
    if (!(r >= std::numeric_limits<qint32>::min() && r <= std::numeric_limits<qint32>::max()))
        return 0;
    return static_cast<qint32>(r);
}

}
