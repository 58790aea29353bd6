#include "probes/statusanswer.h"
#include "serverlist/urltext.h"

#include <QStringList>

namespace GameQuery {

namespace {
// Reads a decimal number (with an optional sign) at `at`, moving `at` past it.
bool readNumber(const QString &line, qsizetype &at, int *value)
{
    while (at < line.size() && line[at] == u' ')
        ++at;
    const qsizetype start = at;
    if (at < line.size() && (line[at] == u'-' || line[at] == u'+'))
        ++at;
    while (at < line.size() && line[at].isDigit() && line[at].unicode() < 128)
        ++at;
    bool ok = false;
    *value = line.mid(start, at - start).toInt(&ok);
    return ok;
}
}

StatusAnswer parseStatus(const QString &answer)
{
    StatusAnswer status;
    QStringList lines = answer.split(u'\n');
    if (lines.size() < 2)
        return status;
    const QString settings = PrintableText(lines[1]);
    const QStringList parts = settings.mid(settings.indexOf(u'\\') + 1).split(u'\\');
    if (settings.contains(u'\\')) {
        for (qsizetype i = 0; i < parts.size(); i += 2)
            status.settings.append({parts[i], parts.value(i + 1)});
    }
    for (qsizetype l = 2; l < lines.size(); ++l) {
        const QString line = PrintableText(lines[l]);
        if (TrimSpaces(line).isEmpty())
            continue;
        StatusAnswer::Player player;
        qsizetype at = 0;
        if (readNumber(line, at, &player.score) && readNumber(line, at, &player.ping)) {
            QString name = line.mid(at).trimmed();
            if (name.size() >= 2 && name.startsWith(u'"') && name.endsWith(u'"'))
                name = name.mid(1, name.size() - 2);
            player.name = name;
        } else {
            player = {0, 0, TrimSpaces(line)};
        }
        status.players.append(player);
    }
    return status;
}

}
