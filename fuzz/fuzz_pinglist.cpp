// Ping-list files (*.Pbx) as friends send them: any length, any counts.
#include "fuzzinput.h"
#include "pinglists/pinglist.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray bytes = FuzzInput(data, size).rest();
    const PingList::LoadResult result = PingList::read(bytes, MatcherData());
    if (result.outcome != PingList::Outcome::Loaded) {
        FUZZ_CHECK(result.messages.size() == 1);
        return 0;
    }
    const MatcherData &data = result.data;
    FUZZ_CHECK(data.PlayerCount >= 1 && data.PlayerCount <= PingList::kMaxPlayers);
    FUZZ_CHECK(data.PlayerNames.size() == size_t(data.PlayerCount) + 1);
    FUZZ_CHECK(data.PlayerLists.size() == size_t(data.PlayerCount) + 1);
    FUZZ_CHECK(result.messages.size() <= data.PlayerCount);
    // Nothing held beyond the content limit, whatever the counts claim.
    FUZZ_CHECK(20 + qint64(data.PlayerCount) * (15 + 73 * qint64(data.MatchServerCount)) <= PingList::kMaxContentBytes);
    // What was loaded saves again as the same file, cut parts as empty records
    // (checked where that is quick, so that each run stays short).
    if (qint64(data.PlayerCount) * data.MatchServerCount <= 65536)
        FUZZ_CHECK(PingList::read(PingList::matcherBytes(data), MatcherData()).data == data);
    return 0;
}
