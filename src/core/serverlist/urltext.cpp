#include "serverlist/urltext.h"

namespace {
QString afterScheme(const QString &url, bool *found)
{
    const qsizetype at = url.indexOf(QStringLiteral("//"));
    *found = at >= 0;
    return *found ? url.mid(at + 2) : QString();
}
}

QString UrlHost(const QString &url)
{
    bool found;
    const QString rest = afterScheme(url, &found);
    const qsizetype slash = rest.indexOf(u'/');
    return slash < 0 ? rest : rest.left(slash);
}

QString UrlPath(const QString &url)
{
    bool found;
    const QString rest = afterScheme(url, &found);
    const qsizetype slash = rest.indexOf(u'/');
    return slash < 0 ? QString() : rest.mid(slash + 1);
}

QString PrintableText(const QString &text)
{
    QString kept;
    kept.reserve(text.size());
    for (const QChar c : text)
        if (c.unicode() >= u' ' && c.unicode() <= 0x20AC)
            kept += c;
    return kept;
}

QString ListRequestText(const QString &host, const QString &path)
{
    const QString crlf = QStringLiteral("\r\n");
    return QStringLiteral("GET /") + path + QStringLiteral(" text/plain") + crlf
        + QStringLiteral("Accept: image/gif, image/x-xbitmap, image/jpeg, image/pjpeg, "
                         "application/vnd.ms-excel, application/msword, "
                         "application/vnd.ms-powerpoint, */*") + crlf
        + QStringLiteral("Accept -Language: en -us") + crlf
        + QStringLiteral("Accept -Encoding: gzip , deflate") + crlf
        + QStringLiteral("If-Modified-Since: Sat, 27 Feb 1999 20:08:07 GMT") + crlf
        + QStringLiteral("If-None-Match: \"1459df-c693-36d850a7\"") + crlf
        + QStringLiteral("User-Agent: Mozilla/4.0 (compatible; MSIE 4.01; Windows 98)") + crlf
        + QStringLiteral("Host: ") + host + crlf
        + QStringLiteral("Connection: ") + crlf
        + crlf
        + u'\r';
}

QString TrimSpaces(const QString &text)
{
    qsizetype begin = 0;
    qsizetype end = text.size();
    while (begin < end && text[begin] == u' ')
        ++begin;
    while (end > begin && text[end - 1] == u' ')
        --end;
    return text.mid(begin, end - begin);
}

bool ListBodyReader::take(const QString &line, QString *entry)
{
    if (!inBody_) {
        if (PrintableText(line).isEmpty())
            inBody_ = true;
        return false;
    }
    *entry = TrimSpaces(PrintableText(line));
    return true;
}
