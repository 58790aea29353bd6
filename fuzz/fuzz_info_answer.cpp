// A game server's answer to "info N": the info line, the wrong-version test and
// both version probes' steps.
#include "fuzzinput.h"
#include "probes/gamequery.h"
#include "shell/wiretext.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QString answer = WireText::fromBytes(FuzzInput(data, size).rest());
    (void)GameQuery::infoLine(answer);
    (void)GameQuery::isWrongVersion(answer);
    for (int mode = 1; mode <= 5; ++mode) {
        const int next = GameQuery::nextMode(mode, answer);
        FUZZ_CHECK(next == 0 || next == mode + 1);
    }
    // The fast probe fed this answer at every step ends within five steps.
    GameQuery::FastVersionProbe probe;
    for (int step = 0; step < 6 && !probe.done(); ++step)
        probe.answer(answer);
    FUZZ_CHECK(probe.done());
    (void)probe.version();
    return 0;
}
