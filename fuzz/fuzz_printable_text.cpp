// Text from the wire made printable, and the space trimming of typed and listed text.
#include "fuzzinput.h"
#include "serverlist/urltext.h"
#include "shell/wiretext.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QString text = WireText::fromBytes(FuzzInput(data, size).rest());
    const QString printable = PrintableText(text);
    FUZZ_CHECK(printable.size() <= text.size());
    FUZZ_CHECK(PrintableText(printable) == printable);
    const QString trimmed = TrimSpaces(text);
    FUZZ_CHECK(trimmed.size() <= text.size() && TrimSpaces(trimmed) == trimmed);
    // Every byte survives the way to text and back.
    FUZZ_CHECK(WireText::toBytes(text) == FuzzInput(data, size).rest());
    return 0;
}
