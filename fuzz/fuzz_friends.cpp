// Pulsebox.friends and Pulsebox.filters as found on disk, hand-edited or damaged,
// and a status answer's players as the filters and the friends see them.
#include "finder/friends.h"
#include "finder/playernames.h"
#include "finder/serverfilter.h"
#include "fuzzinput.h"
#include "shell/wiretext.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    FuzzInput input(data, size);
    const quint8 which = input.byte();
    const QByteArray bytes = input.rest();
    if (which % 3 == 0) {
        const QStringList names = Friends::parse(bytes);
        FUZZ_CHECK(Friends::parse(Friends::serialize(names)) == names);
        for (const QString &name : names)
            FUZZ_CHECK(!name.isEmpty() && name.size() <= Friends::kMaxNameLength && !name.contains(u'\n'));
    } else if (which % 3 == 1) {
        const FinderSettings settings = FinderSettings::parse(bytes);
        FUZZ_CHECK(settings.watchSeconds >= FinderSettings::kMinWatchSeconds);
        FUZZ_CHECK(FinderSettings::parse(settings.serialize()).serialize() == settings.serialize());
    } else {
        const QString answer = WireText::fromBytes(bytes);
        const ServerFacts facts = ServerFacts::of(QStringLiteral("127.0.0.2:27910"), true, answer.left(40),
                                                  answer.mid(40, 5), answer.mid(45, 8), answer.mid(53, 5), 0, answer);
        FUZZ_CHECK(facts.foldedNames.count(u'\n') == facts.playerNames.size());
        for (const QString &name : facts.playerNames) {
            const QString folded = PlayerNames::folded(name);
            FUZZ_CHECK(folded.isEmpty() || PlayerNames::contains(name, name));
        }
        (void)PlayerNames::friendsAmong(facts.playerNames, {answer.left(8)});
    }
    return 0;
}
