#include "finder/serverfilter.h"
#include "finder/playernames.h"
#include "probes/statusanswer.h"

#include <QStringList>

#include <algorithm>

using namespace Qt::StringLiterals;

ServerFacts ServerFacts::of(const QString &target, bool answered, const QString &name, const QString &version,
                            const QString &map, const QString &playersField, double ping,
                            const QString &statusAnswer)
{
    ServerFacts facts;
    facts.target = target;
    facts.ping = ping;
    facts.answered = answered;
    if (!answered)
        return facts;
    facts.name = name.trimmed();
    facts.version = version.trimmed();
    facts.map = map.trimmed();
    const QStringList counts = playersField.split(u'/');
    bool ok = false;
    if (counts.size() == 2) {
        facts.players = counts[0].trimmed().toInt(&ok);
        if (!ok)
            facts.players = -1;
        facts.maxPlayers = counts[1].trimmed().toInt(&ok);
        if (!ok)
            facts.maxPlayers = -1;
    }
    if (!statusAnswer.isEmpty()) {
        const StatusAnswer status = StatusAnswer::parse(statusAnswer);
        const QList<StatusAnswer::Player> players =
            status.settingsEnded ? status.players() : QList<StatusAnswer::Player>();
        facts.playersAsked = true;
        facts.foldedNames = PlayerNames::foldedLines(players);
        facts.onlyBots = PlayerNames::onlyBots(players);
        for (const StatusAnswer::Player &p : players)
            facts.playerNames << p.name;
    }
    return facts;
}

bool ServerFilter::isOn() const
{
    return !PlayerNames::folded(playerText).isEmpty() || hideEmpty || hideFull || hideOnlyBots
           || !version.trimmed().isEmpty() || !mapText.trimmed().isEmpty() || maxPing >= 0;
}

bool ServerFilter::needsPlayers() const { return !PlayerNames::folded(playerText).isEmpty() || hideOnlyBots; }

bool ServerFilter::accepts(const ServerFacts &facts) const
{
    return accepts(facts, PlayerNames::folded(playerText));
}

bool ServerFilter::accepts(const ServerFacts &facts, const QString &foldedPlayerText) const
{
    if (!facts.answered && (!foldedPlayerText.isEmpty() || hideEmpty || hideFull || hideOnlyBots
                            || !version.trimmed().isEmpty() || !mapText.trimmed().isEmpty()))
        return false;
    if (hideEmpty && facts.players <= 0)
        return false;
    if (hideFull && facts.maxPlayers >= 0 && facts.players >= facts.maxPlayers)
        return false;
    if (hideOnlyBots && facts.onlyBots)
        return false;
    if (const QString v = version.trimmed(); !v.isEmpty() && facts.version.compare(v, Qt::CaseInsensitive) != 0)
        return false;
    if (const QString m = mapText.trimmed(); !m.isEmpty() && !facts.map.contains(m, Qt::CaseInsensitive))
        return false;
    if (maxPing >= 0 && facts.ping > maxPing)
        return false;
    return foldedPlayerText.isEmpty() || PlayerNames::anyContains(facts.foldedNames, foldedPlayerText);
}

FinderSettings FinderSettings::parse(const QByteArray &bytes)
{
    FinderSettings s;
    const QString text = QString::fromUtf8(bytes.left(kMaxBytes));
    for (const QString &line : text.split(u'\n')) {
        const qsizetype eq = line.indexOf(u'=');
        if (eq < 0)
            continue;
        const QString key = line.left(eq).trimmed();
        const QString value = line.mid(eq + 1).trimmed();
        bool ok = false;
        const int number = value.toInt(&ok);
        const bool flag = value == u"1"_s;
        if (key == u"hideEmpty"_s)
            s.filter.hideEmpty = flag;
        else if (key == u"hideFull"_s)
            s.filter.hideFull = flag;
        else if (key == u"hideOnlyBots"_s)
            s.filter.hideOnlyBots = flag;
        else if (key == u"version"_s)
            s.filter.version = value.left(16);
        else if (key == u"map"_s)
            s.filter.mapText = value.left(64);
        else if (key == u"maxPing"_s && ok)
            s.filter.maxPing = std::clamp(number, -1, ServerFilter::kMaxPing);
        else if (key == u"watchFriends"_s)
            s.watchFriends = flag;
        else if (key == u"watchSeconds"_s && ok)
            s.watchSeconds = std::clamp(number, kMinWatchSeconds, kMaxWatchSeconds);
    }
    return s;
}

QByteArray FinderSettings::serialize() const
{
    const auto flag = [](bool on) { return on ? u"1"_s : u"0"_s; };
    const QStringList lines{
        u"hideEmpty="_s + flag(filter.hideEmpty),
        u"hideFull="_s + flag(filter.hideFull),
        u"hideOnlyBots="_s + flag(filter.hideOnlyBots),
        u"version="_s + filter.version.simplified(),
        u"map="_s + filter.mapText.simplified(),
        u"maxPing="_s + QString::number(filter.maxPing),
        u"watchFriends="_s + flag(watchFriends),
        u"watchSeconds="_s + QString::number(watchSeconds),
    };
    return (lines.join(u'\n') + u'\n').toUtf8();
}
