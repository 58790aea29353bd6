#include "serverlist/linesplit.h"

QList<QByteArray> TakeLines(QByteArray &pending, char eol, bool all, qsizetype maxLine)
{
    QList<QByteArray> lines;
    qsizetype at = 0;  // one pass, one removal: a burst of short lines stays linear
    for (;;) {
        const qsizetype end = pending.indexOf(eol, at);
        const qsizetype left = pending.size() - at;
        // A line of exactly maxLine bytes may still get its line end in the next
        // delivery: cutting it now would add an empty line when that comes.
        if (end < 0 && left <= maxLine)
            break;
        const bool cut = end < 0 || end - at > maxLine;
        const qsizetype take = cut ? maxLine : end - at;
        lines.append(pending.mid(at, take));
        at += cut ? take : take + 1;
    }
    if (all && at < pending.size()) {
        lines.append(pending.mid(at));
        at = pending.size();
    }
    pending.remove(0, at);
    return lines;
}
