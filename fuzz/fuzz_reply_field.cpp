// Fields of a server's info line, found by scanning from the right.
#include "fuzzinput.h"
#include "serverlist/serverentry.h"
#include "shell/wiretext.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    FuzzInput in(data, size);
    const int field = in.byte() % 6 - 1;  // -1 .. 4: the three fields and numbers that name none
    const QString line = WireText::fromBytes(in.rest());
    const QString value = ReplyField(line, field);
    FUZZ_CHECK(value.size() <= line.size());
    if (field < 1 || field > 3)
        FUZZ_CHECK(value.isEmpty());
    (void)ServerEntry::split(line);
    return 0;
}
