// The list server's stream cut into lines, delivered in pieces of any size.
#include "fuzzinput.h"
#include "serverlist/linesplit.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    FuzzInput in(data, size);
    const qsizetype maxLine = in.byte() % 64 + 1;
    const qsizetype piece = in.byte() % 16 + 1;
    const QByteArray stream = in.rest();
    QByteArray pending, rejoined;
    QList<QByteArray> lines;
    for (qsizetype at = 0; at < stream.size() + piece; at += piece) {
        const bool all = at >= stream.size();
        pending += stream.mid(at, piece);
        for (const QByteArray &line : TakeLines(pending, '\n', all, maxLine)) {
            FUZZ_CHECK(line.size() <= maxLine && !line.contains('\n'));
            rejoined += line;
            lines.append(line);
        }
        FUZZ_CHECK(pending.size() <= maxLine && !pending.contains('\n'));
        if (all)
            FUZZ_CHECK(pending.isEmpty());
    }
    // Nothing lost and nothing made up: the lines are the stream without its line ends.
    QByteArray expected = stream;
    expected.replace('\n', QByteArray());
    FUZZ_CHECK(rejoined == expected);
    // How the stream was cut into pieces makes no difference to its lines.
    QByteArray whole = stream;
    FUZZ_CHECK(TakeLines(whole, '\n', true, maxLine) == lines);
    return 0;
}
