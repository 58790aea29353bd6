// Pulsebox.cfg as found on disk.
#include "fuzzinput.h"
#include "launch/gamepath.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray bytes = FuzzInput(data, size).rest();
    const QString path = GameConfig::firstLine(bytes);
    FUZZ_CHECK(!path.contains(u'\n'));
    (void)GameConfig::serialize(path);
    (void)LastSeparatorPosition(path);
    return 0;
}
