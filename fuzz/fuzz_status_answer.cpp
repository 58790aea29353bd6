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
    const StatusAnswer status = StatusAnswer::parse(answer);
    FUZZ_CHECK(status.settings().size() * 2 >= status.serverFields.size());
    FUZZ_CHECK(status.players().size() <= status.playerText.count(u'\n') + 1);
    return 0;
}
