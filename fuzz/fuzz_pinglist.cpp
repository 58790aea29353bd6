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
    const MatcherData &loaded = result.data;
    FUZZ_CHECK(loaded.PlayerCount >= 1 && loaded.PlayerCount <= PingList::kMaxPlayers);
    FUZZ_CHECK(loaded.PlayerNames.size() == size_t(loaded.PlayerCount) + 1);
    FUZZ_CHECK(loaded.PlayerLists.size() == size_t(loaded.PlayerCount) + 1);
    FUZZ_CHECK(result.messages.size() <= loaded.PlayerCount);
    // Nothing held beyond the content limit, whatever the counts claim.
    FUZZ_CHECK(20 + qint64(loaded.PlayerCount) * (15 + 73 * qint64(loaded.MatchServerCount)) <= PingList::kMaxContentBytes);
    // What was loaded saves again as the same file, cut parts as empty records
    // (checked where that is quick, so that each run stays short).
    if (qint64(loaded.PlayerCount) * loaded.MatchServerCount <= 4096)
        FUZZ_CHECK(PingList::read(PingList::matcherBytes(loaded), MatcherData()).data == loaded);
    return 0;
}
