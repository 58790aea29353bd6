#include "probes/gamequery.h"

#include "serverlist/urltext.h"

namespace GameQuery {

namespace {
const QString kHeader(4, QChar(0xFF));
const QString kCrLf = QStringLiteral("\r\n");
}

QString datagram(int queryMode)
{
    switch (queryMode) {
    case 1: return kHeader + QStringLiteral("info 31");
    case 2: return kHeader + QStringLiteral("info 32");
    case 3: return kHeader + QStringLiteral("info 33");
    case 4: return kHeader + QStringLiteral("info 34");
    case StatusMode: return kHeader + QStringLiteral("status");
    default: return {};
    }
}

QString versionText(int queryMode)
{
    switch (queryMode) {
    case 1: return QStringLiteral("3.14");
    case 2: return QStringLiteral("3.15");
    case 3: return QStringLiteral("3.17");
    case 4: return QStringLiteral("3.19");
    case 5: return QStringLiteral("3.20");
    default: return QStringLiteral("unkn");
    }
}

bool isWrongVersion(const QString &answer)
{
    return answer.contains(QStringLiteral("wrong version"));
}

QString infoLine(const QString &answer)
{
    if (answer.isEmpty())
        return QStringLiteral("No data returned");
    const qsizetype lf = answer.indexOf(u'\n');
    if (lf < 0)
        return QStringLiteral("Malformed data returned");
    return PrintableText(answer.mid(lf + 1));
}

QString serverInfoText(const QString &answer)
{
    const QString rest = answer.size() > 10 ? answer.mid(10) : QString();
    const qsizetype lf = rest.indexOf(u'\n');
    const QString serverLine = PrintableText(lf < 0 ? QString() : rest.left(lf + 1)) + u'\\';

    QString text = QStringLiteral("SERVER STATUS:") + kCrLf;
    int separators = 0;
    QString token;
    for (const QChar c : serverLine) {
        if (c != u'\\') {
            token += c;
            continue;
        }
        if (separators % 2 == 1)
            text += token;
        else if (separators != 0)
            text += u'=' + token + kCrLf;
        ++separators;
        token.clear();
    }
    text += kCrLf + QStringLiteral("PLAYER STATUS:") + kCrLf;
    QString players = lf < 0 ? rest : rest.mid(lf + 1);
    text += players.replace(u'\n', kCrLf);
    return text;
}

}
