// Ping-list files (*.Pbx) as friends send them: any length, any counts.
#include "fuzzinput.h"
#include "pinglists/pinglist.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray bytes = FuzzInput(data, size).rest();
    const PingList::LoadResult result = PingList::read(bytes, MatcherData());
    if (result.outcome == PingList::Outcome::Loaded) {
        FUZZ_CHECK(result.data.PlayerCount >= 0 && result.data.PlayerCount <= PingList::kMaxPlayers);
        FUZZ_CHECK(result.data.PlayerNames.size() == size_t(result.data.PlayerCount) + 1);
        (void)PingList::matcherBytes(result.data);
    }
    return 0;
}
