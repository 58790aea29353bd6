#include "finderoptions.h"

#include "engine/probeengine.h"
#include "finder/friends.h"
#include "finder/playernames.h"
#include "shell/boundedfile.h"

#include <QCommandLineParser>
#include <QJsonArray>
#include <QJsonObject>

using namespace Qt::StringLiterals;

void FinderOptions::addTo(QCommandLineParser &parser)
{
    parser.addOptions({
        {u"find"_s, u"Keep only servers where a player's name contains TEXT (plain text; case, colours and control "
                    "characters do not count). Implies --status."_s, u"text"_s},
        {u"friends"_s, u"A friends file (UTF-8, one name a line): each server's JSON gets \"friends\", the players "
                       "whose names contain a friend's. Implies --status."_s, u"file"_s},
        {u"not-empty"_s, u"Leave out servers without players."_s},
        {u"not-full"_s, u"Leave out full servers."_s},
        {u"no-bots"_s, u"Leave out servers whose only players look like bots (every one pings 0). Implies --status."_s},
        {u"map"_s, u"Keep only servers whose map name contains TEXT, regardless of case."_s, u"text"_s},
        {u"game-version"_s, u"Keep only servers of this game version (%1); also --version=VERSION."_s.arg(
                                ServerFilter::kVersions.join(u", "_s)), u"version"_s},
        {u"max-ping"_s, u"Keep only servers pinging at most this many ms (0 to %1)."_s.arg(ServerFilter::kMaxPing),
         u"ms"_s},
    });
}

QStringList FinderOptions::arguments(const QStringList &given)
{
    QStringList arguments;
    for (const QString &argument : given) {
        if (argument.startsWith(u"--version="_s))
            arguments << u"--game-version"_s << argument.mid(10);
        else
            arguments << argument;
    }
    return arguments;
}

bool FinderOptions::read(const QCommandLineParser &parser, QString *problem)
{
    filter.playerText = parser.value(u"find"_s);
    if (parser.isSet(u"find"_s) && PlayerNames::folded(filter.playerText).isEmpty()) {
        *problem = u"--find needs a name to look for."_s;
        return false;
    }
    filter.hideEmpty = parser.isSet(u"not-empty"_s);
    filter.hideFull = parser.isSet(u"not-full"_s);
    filter.hideOnlyBots = parser.isSet(u"no-bots"_s);
    filter.mapText = parser.value(u"map"_s);
    filter.version = parser.value(u"game-version"_s).trimmed();
    if (parser.isSet(u"game-version"_s) && !ServerFilter::kVersions.contains(filter.version, Qt::CaseInsensitive)) {
        *problem = u"--game-version must be one of %1, not \"%2\"."_s.arg(ServerFilter::kVersions.join(u", "_s),
                                                                          parser.value(u"game-version"_s));
        return false;
    }
    if (parser.isSet(u"max-ping"_s)) {
        bool ok = false;
        filter.maxPing = parser.value(u"max-ping"_s).trimmed().toInt(&ok);
        if (!ok || filter.maxPing < 0 || filter.maxPing > ServerFilter::kMaxPing) {
            *problem = u"--max-ping needs a whole number of milliseconds from 0 to %1, not \"%2\"."_s.arg(
                ServerFilter::kMaxPing).arg(parser.value(u"max-ping"_s));
            return false;
        }
    }
    withFriends = parser.isSet(u"friends"_s);
    if (withFriends) {
        const QString path = parser.value(u"friends"_s);
        const BoundedFile file = BoundedFile::read(path, Friends::kMaxBytes);
        if (file.status != BoundedFile::Status::Read) {
            *problem = u"Cannot read the friends file %1: %2."_s.arg(path, file.problem);
            return false;
        }
        friends = Friends::parse(file.bytes);
    }
    return true;
}

bool FinderOptions::keeps(const ProbeResult &result) const
{
    // A server without a row (no ping, or over the limit) never passes a filter;
    // the rest are judged as the window judges its rows.
    return !filter.isOn() || (result.accepted && filter.accepts(result.facts()));
}

void FinderOptions::mark(const ProbeResult &result, QJsonObject *object) const
{
    if (!withFriends)
        return;
    QJsonArray names;
    for (const QString &name : PlayerNames::friendsAmong(result.facts().playerNames, friends))
        names.append(name);
    (*object)[u"friends"_s] = names;
}
