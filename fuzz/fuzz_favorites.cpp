// Pulsebox.fav as found on disk, hand-edited or damaged.
#include "favorites/favfile.h"
#include "fuzzinput.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray bytes = FuzzInput(data, size).rest();
    const QList<Favorite> favorites = FavFile::parse(bytes);
    FUZZ_CHECK(favorites.size() <= bytes.size());
    (void)FavFile::serialize(favorites);
    return 0;
}
