// A server list's body as a standard web server sends it: text or 6-byte records.
#include "fuzzinput.h"
#include "serverlist/httplist.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray body = FuzzInput(data, size).rest();
    const HttpList::List list = HttpList::decode(body);
    FUZZ_CHECK(list.form == HttpList::formOf(body, true));
    if (list.form == HttpList::Form::Binary && body.size() % 6 != 0) {
        FUZZ_CHECK(!list.problem.isEmpty() && list.entries.isEmpty());
    } else if (list.form == HttpList::Form::Binary) {
        FUZZ_CHECK((list.entries.size() + list.skipped) * 6 == body.size());
    } else {
        FUZZ_CHECK(list.entries.size() + list.skipped <= body.count('\n') + 1);
        for (const QString &entry : list.entries)
            FUZZ_CHECK(!entry.isEmpty() && entry.size() <= HttpList::kMaxLineBytes);
    }
    (void)HttpList::skippedText(list);
    (void)HttpList::servedListRequest(QString::fromLatin1(body.left(200)));
    return 0;
}
