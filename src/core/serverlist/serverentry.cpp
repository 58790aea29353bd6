#include "serverlist/serverentry.h"

#include "serverlist/urltext.h"

ServerEntry ServerEntry::split(const QString &entry)
{
    const QString lower = entry.toLower();
    ServerEntry result;
    const qsizetype colon = lower.indexOf(u':');
    result.host = colon < 0 ? lower : lower.left(colon);
    result.port = colon < 0 ? QStringLiteral("27910") : lower.mid(colon + 1);
    result.isName = !result.host.isEmpty() && result.host[0] >= u'a' && result.host[0] <= u'z';
    return result;
}

QString ReplyField(const QString &line, int field)
{
    QString s = TrimSpaces(PrintableText(line));
    QString fields[3];
    qsizetype i = s.size();  // 1-based position of the character looked at
    int count = 0;
    while (i > 0 && count <= 2) {
        const bool separator = s[i - 1] == u' ' && !(i > 1 && s[i - 2] == u'/');
        if (separator) {
            ++count;
            if (count == 1) {
                fields[2] = TrimSpaces(s.mid(i - 1));
                s = TrimSpaces(s.left(i));
                i = s.size() + 1;
            } else if (count == 2) {
                fields[1] = TrimSpaces(s.mid(i - 1));
                fields[0] = TrimSpaces(s.left(i));
            }
        }
        --i;
    }
    return field >= 1 && field <= 3 ? fields[field - 1] : QString();
}
