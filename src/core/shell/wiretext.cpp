#include "shell/wiretext.h"

#include <QStringDecoder>

#include <algorithm>
#include <array>

namespace {
// 0x80..0x9F of Windows-1252; the five unassigned bytes map to the C1 controls,
// as the platform's own conversion does.
constexpr std::array<char16_t, 32> kHighControls = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
    0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x008D, 0x017D, 0x008F,
    0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
    0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178,
};
}

namespace WireText {

QString fromBytes(const QByteArray &bytes)
{
    QString text(bytes.size(), Qt::Uninitialized);
    QChar *out = text.data();
    for (const char c : bytes) {
        const auto b = static_cast<unsigned char>(c);
        *out++ = (b >= 0x80 && b <= 0x9F) ? QChar(kHighControls[b - 0x80]) : QChar(char16_t(b));
    }
    return text;
}

namespace {
int codePageByte(char16_t u)
{
    if (u < 0x80 || (u >= 0xA0 && u <= 0xFF))
        return u;
    for (int i = 0; i < 32; ++i) {
        if (kHighControls[static_cast<size_t>(i)] == u)
            return 0x80 + i;
    }
    return -1;
}
}

QByteArray toBytes(const QString &text)
{
    QByteArray bytes(text.size(), Qt::Uninitialized);
    char *out = bytes.data();
    for (const QChar ch : text) {
        const int b = codePageByte(ch.unicode());
        *out++ = static_cast<char>(b < 0 ? '?' : b);
    }
    return bytes;
}

bool fitsCodePage(const QString &text)
{
    for (const QChar ch : text) {
        if (codePageByte(ch.unicode()) < 0)
            return false;
    }
    return true;
}

QByteArray toFileBytes(const QString &text)
{
    return fitsCodePage(text) ? toBytes(text) : text.toUtf8();
}

QString fromFileBytes(const QByteArray &bytes)
{
    const bool ascii = std::all_of(bytes.begin(), bytes.end(),
                                   [](char c) { return static_cast<unsigned char>(c) < 0x80; });
    if (!ascii) {
        QStringDecoder utf8(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
        const QString text = utf8.decode(bytes);
        if (!utf8.hasError())
            return text;
    }
    return fromBytes(bytes);
}

}
