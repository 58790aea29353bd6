// A game server's answer to "status": Server Info's text and the settings and
// players taken apart.
#include "fuzzinput.h"
#include "probes/gamequery.h"
#include "probes/statusanswer.h"
#include "shell/wiretext.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QString answer = WireText::fromBytes(FuzzInput(data, size).rest());
    (void)GameQuery::serverInfoText(answer);
    const StatusAnswer status = GameQuery::parseStatus(answer);
    FUZZ_CHECK(status.players.size() <= answer.count(u'\n'));
    return 0;
}
