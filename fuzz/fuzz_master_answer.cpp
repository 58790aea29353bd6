// A datagram that claims to be a master server's answer.
#include "fuzzinput.h"
#include "serverlist/masterlist.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray datagram = FuzzInput(data, size).rest();
    const auto reply = MasterList::parse(datagram);
    if (!reply)
        return 0;
    // Every byte after the word and its separator is a record, a skipped record or a cut one.
    const qsizetype head = datagram.startsWith("\xff\xff\xff\xff") ? 12 : 8;
    const qsizetype body = std::max<qsizetype>(0, datagram.size() - head);
    FUZZ_CHECK((reply->records.size() + reply->skipped) * 6 + reply->truncatedBytes == body);
    FUZZ_CHECK(reply->truncatedBytes < 6);
    for (const MasterList::Record &r : reply->records) {
        FUZZ_CHECK(r.address != 0 && r.port != 0);
        (void)MasterList::entryText(r);
    }
    return 0;
}
