#include "probes/statusanswer.h"
#include "serverlist/urltext.h"

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

StatusAnswer StatusAnswer::parse(const QString &answer)
{
    StatusAnswer status;
    status.complete = answer.size() >= 10;
    const QString rest = answer.mid(10);
    const qsizetype lf = rest.indexOf(u'\n');
    status.settingsEnded = status.complete && lf >= 0;
    if (lf >= 0)
        status.serverFields = PrintableText(rest.left(lf)).split(u'\\').mid(1);
    status.playerText = lf < 0 ? rest : rest.mid(lf + 1);
    return status;
}

QList<QPair<QString, QString>> StatusAnswer::settings() const
{
    QList<QPair<QString, QString>> pairs;
    for (qsizetype i = 0; i < serverFields.size(); i += 2)
        pairs.append({serverFields[i], serverFields.value(i + 1)});
    return pairs;
}

QList<StatusAnswer::Player> StatusAnswer::players() const
{
    QList<Player> players;
    for (const QString &text : playerText.split(u'\n')) {
        const QString line = PrintableText(text);
        if (TrimSpaces(line).isEmpty())
            continue;
        Player player;
        qsizetype at = 0;
        if (readNumber(line, at, &player.score) && readNumber(line, at, &player.ping)) {
            QString name = line.mid(at).trimmed();
            if (name.size() >= 2 && name.startsWith(u'"') && name.endsWith(u'"'))
                name = name.mid(1, name.size() - 2);
            player.name = name;
        } else {
            player = {0, 0, TrimSpaces(line)};
        }
        players.append(player);
    }
    return players;
}
