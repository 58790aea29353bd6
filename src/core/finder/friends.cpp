#include "finder/friends.h"
#include "finder/playernames.h"

#include <QSet>

using namespace Qt::StringLiterals;

namespace Friends {

QStringList parse(const QByteArray &bytes)
{
    QStringList names;
    QSet<QString> seen;
    for (const QString &line : QString::fromUtf8(bytes).split(u'\n')) {
        QString name;
        for (const QChar c : line) {
            if (c.category() != QChar::Other_Control)
                name.append(c);
        }
        name = name.trimmed().left(kMaxNameLength);
        if (!name.isEmpty() && name.back().isHighSurrogate())  // never half a character
            name.chop(1);
        name = name.trimmed();
        const QString key = PlayerNames::folded(name);
        if (key.isEmpty() || seen.contains(key))
            continue;
        seen.insert(key);
        names << name;
    }
    return names;
}

QByteArray serialize(const QStringList &names)
{
    QByteArray bytes;
    for (const QString &name : parse(names.join(u'\n').toUtf8()))
        bytes += name.toUtf8() + '\n';
    return bytes;
}

namespace {
QString keyOf(const Sighting &s) { return PlayerNames::folded(s.player) + u'\n' + s.target; }
}

QList<Sighting> joined(const QList<Sighting> &before, const QList<Sighting> &now)
{
    QSet<QString> known;
    for (const Sighting &s : before)
        known.insert(keyOf(s));
    QList<Sighting> added;
    for (const Sighting &s : now) {
        if (!known.contains(keyOf(s))) {
            known.insert(keyOf(s));
            added << s;
        }
    }
    return added;
}

QList<Sighting> distinct(const QList<Sighting> &sightings) { return joined({}, sightings); }

QString joinedText(const Sighting &sighting)
{
    return u"%1 joined %2"_s.arg(sighting.player, sighting.server.isEmpty() ? sighting.target : sighting.server);
}

}
