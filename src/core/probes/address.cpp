#include "probes/address.h"

#include <QFileInfo>
#include <QStringList>
#include <QtEndian>

#include <cstring>

qint32 DottedToAddress(const QString &dotted)
{
    const QStringList parts = dotted.split(u'.');
    if (parts.size() != 4)
        return 0;
    unsigned char bytes[4];
    for (int i = 0; i < 4; ++i) {
        const QString &part = parts[i];
        if (part.isEmpty() || part.size() > 18)
            return 0;
        for (const QChar c : part)
            if (c < u'0' || c > u'9')
                return 0;
        bytes[i] = static_cast<unsigned char>(part.toULongLong() % 256);
    }
    qint32 value;
    std::memcpy(&value, bytes, 4);
    return value;
}

QString AddressToDotted(qint32 address)
{
    unsigned char bytes[4];
    std::memcpy(bytes, &address, 4);
    return QStringLiteral("%1.%2.%3.%4").arg(bytes[0]).arg(bytes[1]).arg(bytes[2]).arg(bytes[3]);
}

bool FileExists(const QString &path)
{
    if (path.isEmpty())
        return false;
    const QFileInfo info(path);
    return info.exists() && info.isFile();
}

quint32 AddressToHostOrder(qint32 address)
{
    unsigned char bytes[4];
    std::memcpy(bytes, &address, 4);
    return qFromBigEndian<quint32>(bytes);
}

qint32 AddressFromHostOrder(quint32 hostOrder)
{
    unsigned char bytes[4];
    qToBigEndian(hostOrder, bytes);
    qint32 value;
    std::memcpy(&value, bytes, 4);
    return value;
}

qint64 LeadingNumber(const QString &text)
{
    qsizetype i = 0;
    while (i < text.size() && (text[i] == u' ' || text[i] == u'\t'))
        ++i;
    bool negative = false;
    if (i < text.size() && (text[i] == u'-' || text[i] == u'+')) {
        negative = text[i] == u'-';
        ++i;
    }
    qint64 value = 0;
    for (; i < text.size() && text[i] >= u'0' && text[i] <= u'9'; ++i) {
        value = value * 10 + (text[i].unicode() - u'0');
        if (value > 0xFFFFFFFFLL)  // far beyond any port, ping or time-to-live
            break;
    }
    return negative ? -value : value;
}
