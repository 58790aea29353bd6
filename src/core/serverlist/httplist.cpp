#include "serverlist/httplist.h"

#include "serverlist/masterlist.h"
#include "serverlist/urltext.h"
#include "shell/wiretext.h"

#include <QRegularExpression>

using namespace Qt::StringLiterals;

namespace HttpList {

bool needsStandardClient(const QString &location)
{
    const QString text = TrimSpaces(location);
    return text.startsWith(u"https://"_s, Qt::CaseInsensitive) || text.contains(u'?');
}

bool servedListRequest(const QString &firstLine)
{
    static const QRegularExpression success(u"^HTTP/\\d+(\\.\\d+)? +2\\d\\d(\\D|$)"_s);
    return success.match(firstLine).hasMatch();
}

std::optional<Form> formOf(const QByteArray &body, bool complete)
{
    for (const char c : body) {
        if (c == '\n')
            return Form::Text;
        if (static_cast<uchar>(c) < 0x20 && c != '\t' && c != '\r')
            return Form::Binary;
    }
    return complete ? std::optional(Form::Text) : std::nullopt;
}

namespace {
List decodeText(const QByteArray &body)
{
    List list;
    qsizetype at = 0;
    while (at < body.size()) {
        qsizetype end = body.indexOf('\n', at);
        if (end < 0)
            end = body.size();
        const QByteArrayView line(body.constData() + at, end - at);
        at = end + 1;
        if (line.size() > kMaxLineBytes || line.contains('\0')) {
            ++list.skipped;
            continue;
        }
        const QString entry = TrimSpaces(PrintableText(WireText::fromBytes(line.toByteArray())));
        if (!entry.isEmpty())
            list.entries.append(entry);
    }
    return list;
}

List decodeBinary(const QByteArray &body)
{
    List list;
    list.form = Form::Binary;
    if (body.size() % 6 != 0) {
        list.problem = u"The list is neither text nor whole 6-byte records: %1 bytes is no multiple of 6."_s
                           .arg(body.size());
        return list;
    }
    const MasterList::Reply records = MasterList::parseRecords(body);
    for (const MasterList::Record &record : records.records)
        list.entries.append(MasterList::entryText(record));
    list.skipped = records.skipped;
    return list;
}
}

List decode(const QByteArray &body)
{
    if (body.size() > kMaxBytes) {
        List list;
        list.problem = tooLargeText(kMaxBytes);
        return list;
    }
    return formOf(body, true) == Form::Binary ? decodeBinary(body) : decodeText(body);
}

QString tooLargeText(qint64 limit)
{
    constexpr qint64 mib = 1024 * 1024;
    const QString size = limit % mib == 0 ? u"%1 MiB"_s.arg(limit / mib) : u"%1 bytes"_s.arg(limit);
    return u"The list is larger than %1: too large to be one."_s.arg(size);
}

QString skippedText(const List &list)
{
    if (list.skipped == 0)
        return QString();
    return list.form == Form::Binary
               ? u"%1 records left out: address 0 or port 0."_s.arg(list.skipped)
               : u"%1 lines left out: a NUL byte or longer than %2 characters."_s.arg(list.skipped).arg(kMaxLineBytes);
}

}
