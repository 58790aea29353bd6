// pulsebox-query: probes Quake 2 servers from the command line with the same
// engine and the same decisions as the window's fast refresh.
#include "engine/hopfinder.h"
#include "engine/probeengine.h"
#include "finderoptions.h"
#include "probes/address.h"
#include "probes/statusanswer.h"
#include "probes/timeouts.h"
#include "serverlist/listsource.h"
#include "serverlist/masterlist.h"
#include "serverlist/urltext.h"
#include "shell/serverrow.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QEventLoop>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLibraryInfo>
#include <QTextStream>

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdio>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {
constexpr int ExitAnswered = 0, ExitNoneAnswered = 1, ExitUsage = 2;

QTextStream &err()
{
    static QTextStream stream(stderr);
    return stream;
}

struct Usage {
    QString problem;  // empty: the options are good
};

// A whole number option; out-of-range values are left to ProbeSettings::check,
// which names the bounds.
bool wholeNumber(const QCommandLineParser &parser, const QString &name, int *value, QString *problem)
{
    if (!parser.isSet(name))
        return true;
    bool ok = false;
    const qint64 n = parser.value(name).trimmed().toLongLong(&ok);
    if (!ok) {
        *problem = u"--%1 needs a whole number, not \"%2\"."_s.arg(name, parser.value(name));
        return false;
    }
    *value = static_cast<int>(std::clamp<qint64>(n, INT_MIN, INT_MAX));
    return true;
}

// A master is given at least this long, however short the query time-out.
constexpr int kMinMasterWaitMs = 2000;

// Runs a started source to its end.
void waitFor(ListSource &source)
{
    if (!source.isRunning())
        return;
    QEventLoop loop;
    QObject::connect(&source, &ListSource::finished, &loop, &QEventLoop::quit);
    loop.exec();
}

// The entries a source gave: an empty one names no server and is skipped.
void append(const ListSource &source, bool favorite, QList<ProbeEntry> *entries)
{
    for (const QString &text : source.entries()) {
        const QString entry = TrimSpaces(text);
        if (!entry.isEmpty())
            entries->append({entry, favorite});
    }
}

// A list or favorites file; false with the reason when it cannot be read.
bool readFile(const QString &path, bool favorites, QList<ProbeEntry> *entries, QString *problem)
{
    ListSource source;
    if (favorites)
        source.startFavoritesFile(path);
    else
        source.startFile(path);
    *problem = source.problem();
    append(source, favorites, entries);
    return problem->isEmpty();
}

// The entries of a list location, fetched as the window fetches it (the list
// request players know, or the standard client where that cannot serve); false
// with the reason when it failed or named no server, *usage set when the text
// is no location at all.
bool readWebList(const QString &url, QList<ProbeEntry> *entries, QString *problem, bool *usage)
{
    ListSource source;
    if (!source.start(url)) {
        *problem = u"Not a list URL: \"%1\" (http://HOST[:PORT]/PATH, https://..., master://HOST[:PORT])."_s.arg(url);
        *usage = true;
        return false;
    }
    waitFor(source);
    const qsizetype before = entries->size();
    append(source, false, entries);
    if (source.outcome() == ListSource::Outcome::Failed)
        *problem = source.kind() != ListSource::Kind::WebList
                       ? source.problem()
                       : u"The list at %1 could not be fetched: %2"_s.arg(url, source.problem());
    else if (entries->size() == before)
        *problem = u"The list at %1 names no server."_s.arg(url);
    return problem->isEmpty();
}

// The master's servers, or why there are none.
void askMaster(const MasterList::Location &master, int timeoutMs, QList<ProbeEntry> *entries, QString *problem)
{
    ListSource source;
    source.setMasterTimeout(timeoutMs);
    source.startMaster(master.host, master.port);
    waitFor(source);
    *problem = source.problem();
    append(source, false, entries);
}

QString rttSourceText(RttSource source)
{
    switch (source) {
    case RttSource::Icmp: return u"icmp"_s;
    case RttSource::UdpAck: return u"ack"_s;
    case RttSource::GameQuery: return u"query"_s;
    case RttSource::None: break;
    }
    return u"none"_s;
}

QJsonObject jsonOf(const ProbeResult &r, bool withStatus)
{
    QJsonObject o;
    o[u"entry"_s] = r.entry.text;
    o[u"address"_s] = r.address;
    o[u"port"_s] = r.port;
    o[u"favorite"_s] = r.entry.favorite;
    o[u"answered"_s] = r.answered;
    o[u"ping"_s] = r.rttSource == RttSource::None ? QJsonValue() : QJsonValue(r.ping);
    o[u"rttSource"_s] = rttSourceText(r.rttSource);
    o[u"version"_s] = r.accepted ? QJsonValue(r.version) : QJsonValue();
    o[u"name"_s] = r.answered ? QJsonValue(r.hostName.trimmed()) : QJsonValue();
    o[u"map"_s] = r.answered ? QJsonValue(r.map.trimmed()) : QJsonValue();
    const QStringList counts = r.players.split(u'/');
    bool inUse = false, capacity = false;
    const int players = counts.value(0).trimmed().toInt(&inUse);
    const int maxPlayers = counts.value(1).trimmed().toInt(&capacity);
    o[u"players"_s] = r.answered && inUse ? QJsonValue(players) : QJsonValue();
    o[u"maxPlayers"_s] = r.answered && capacity ? QJsonValue(maxPlayers) : QJsonValue();
    if (withStatus) {
        const StatusAnswer status = StatusAnswer::parse(r.statusAnswer);
        QJsonObject settings;
        for (const auto &[key, value] : status.settings())
            settings[key] = value;
        QJsonArray list;
        for (const StatusAnswer::Player &p : status.players())
            list.append(QJsonObject{{u"score"_s, p.score}, {u"ping"_s, p.ping}, {u"name"_s, p.name}});
        o[u"settings"_s] = settings;
        o[u"playerList"_s] = list;
    }
    return o;
}
}

namespace {
// --hops: the hop count and the route of every answering server the filters keep,
// all at once.
QHash<QString, HopResult> countHops(const QList<ProbeResult> &results, const FinderOptions &filters)
{
    QList<qint32> destinations;
    for (const ProbeResult &r : results)
        if (r.answered && filters.keeps(r))
            destinations.append(DottedToAddress(r.address));
    HopFinder finder;
    QEventLoop loop;
    QObject::connect(&finder, &HopFinder::finished, &loop, &QEventLoop::quit);
    finder.start(destinations);
    if (finder.isRunning())
        loop.exec();
    QHash<QString, HopResult> byAddress;
    for (const HopResult &h : finder.results())
        byAddress.insert(AddressToDotted(h.destination), h);
    return byAddress;
}

void addHops(QJsonObject &o, const HopResult &h)
{
    o[u"hops"_s] = h.hops > 0 ? QJsonValue(h.hops) : QJsonValue();
    QJsonArray route;
    for (const HopAnswer &a : h.route)
        route.append(QJsonObject{{u"hop"_s, a.hop}, {u"address"_s, AddressToDotted(a.address)},
                                 {u"rtt"_s, static_cast<qint64>(a.roundTripMs)}});
    o[u"route"_s] = route;
}
}

int run();

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(u"pulsebox-query"_s);
    QCoreApplication::setApplicationVersion(QStringLiteral(PULSEBOX_VERSION));
    // The program may carry cap_net_raw: plug-ins (the TLS backend of https
    // lists) come only from Qt's own folder, never from QT_PLUGIN_PATH or the
    // program's folder.
    QCoreApplication::setLibraryPaths({QLibraryInfo::path(QLibraryInfo::PluginsPath)});
    const int status = run();
    err().flush();
    return status;
}

int run()
{
    QCommandLineParser parser;
    parser.setApplicationDescription(
        u"Probes Quake 2 servers: pings each, asks it for its version and info line, and prints the\n"
        "rows of the servers within the ping limit, fastest first (or every server as JSON).\n"
        "Exit status: 0 when a server answered (and passed the filters, when any are given),\n"
        "1 when none did, 2 for bad usage."_s);
    parser.addHelpOption();
    parser.addVersionOption();
    parser.addPositionalArgument(u"servers"_s, u"Servers as HOST[:PORT] (port 27910 when none)."_s,
                                 u"[HOST[:PORT]...]"_s);
    parser.addOptions({
        {u"file"_s, u"Servers from a list file, one HOST[:PORT] a line."_s, u"file"_s},
        {u"url"_s, u"Servers from a list location, fetched as the window does: http://HOST[:PORT]/PATH, https:// "
                  "or a query string (text or binary lists, through a standard HTTP client), master://HOST[:PORT]."_s,
         u"url"_s},
        {u"master"_s, u"Servers from a master server (UDP, port 27900 when none)."_s, u"host[:port]"_s},
        {u"favorites"_s, u"Servers from a favorites file (Pulsebox.fav); they are marked as favorites."_s,
         u"file"_s},
        {u"ping-limit"_s, u"Servers pinging above this many ms are left out of the rows (default 230)."_s,
         u"ms"_s},
        {u"regular"_s, u"Regular Ping: three echoes per server instead of one."_s},
        {u"rate"_s, u"Packets per second, echoes and queries together (10 to 100000, default 8000)."_s,
         u"pps"_s},
        {u"timeout"_s, u"How long each query waits for its answer (50 to 60000 ms, default %1)."_s
                           .arg(Timeouts::kEngineQueryMs), u"ms"_s},
        {u"retries"_s, u"Re-sends of an unanswered query within the time-out (0 to 9, default %1)."_s
                           .arg(Timeouts::kEngineQueryTries - 1), u"n"_s},
        {u"status"_s, u"Also ask each answering server for its settings and players."_s},
        {u"json"_s, u"Every server as a JSON object (an array on standard output)."_s},
        {u"hops"_s, u"Also count the router hops to every answering server (with --json, its route too)."_s},
    });
    FinderOptions finder;
    FinderOptions::addTo(parser);
    if (!parser.parse(FinderOptions::arguments(QCoreApplication::arguments()))) {
        err() << parser.errorText() << "\nTry 'pulsebox-query --help'.\n";
        return ExitUsage;
    }
    if (parser.isSet(u"help"_s))
        parser.showHelp(0);
    if (parser.isSet(u"version"_s))
        parser.showVersion();

    ProbeSettings settings;
    settings.echoes = parser.isSet(u"regular"_s) ? 3 : 1;
    int retries = settings.tries - 1;
    QString problem;
    if (!finder.read(parser, &problem)) {
        err() << problem << "\n";
        return ExitUsage;
    }
    settings.status = parser.isSet(u"status"_s) || finder.needsStatus();
    if (!wholeNumber(parser, u"rate"_s, &settings.rate, &problem)
        || !wholeNumber(parser, u"timeout"_s, &settings.queryTimeoutMs, &problem)
        || !wholeNumber(parser, u"retries"_s, &retries, &problem)) {
        err() << problem << "\n";
        return ExitUsage;
    }
    settings.tries = retries < INT_MAX ? retries + 1 : INT_MAX;
    if (parser.isSet(u"ping-limit"_s)) {
        bool ok = false;
        settings.pingLimit = parser.value(u"ping-limit"_s).trimmed().toDouble(&ok);
        if (!ok || !std::isfinite(settings.pingLimit) || settings.pingLimit < 0) {
            err() << "--ping-limit needs a number of milliseconds, not \"" << parser.value(u"ping-limit"_s)
                  << "\".\n";
            return ExitUsage;
        }
    }
    if (const QString bad = settings.check(); !bad.isEmpty()) {
        err() << bad << "\n";
        return ExitUsage;
    }

    QList<ProbeEntry> entries;
    for (const QString &argument : parser.positionalArguments()) {
        if (!MasterList::parseHostPort(argument)) {
            err() << "Not a server: \"" << argument << "\" (HOST or HOST:PORT).\n";
            return ExitUsage;
        }
        entries.append({argument, false});
    }
    if ((parser.isSet(u"file"_s) && !readFile(parser.value(u"file"_s), false, &entries, &problem))
        || (parser.isSet(u"favorites"_s) && !readFile(parser.value(u"favorites"_s), true, &entries, &problem))) {
        err() << problem << "\n";
        return ExitUsage;
    }
    bool usage = false;
    if (parser.isSet(u"url"_s) && !readWebList(parser.value(u"url"_s), &entries, &problem, &usage)) {
        err() << problem << "\n";  // probes what did arrive; none: status 1 below
        if (usage)
            return ExitUsage;
    }
    if (parser.isSet(u"master"_s)) {
        const auto master = MasterList::parseHostPort(parser.value(u"master"_s));
        if (!master) {
            err() << "Not a master server: \"" << parser.value(u"master"_s) << "\" (HOST or HOST:PORT).\n";
            return ExitUsage;
        }
        askMaster(*master, std::max(settings.queryTimeoutMs, kMinMasterWaitMs), &entries, &problem);
        if (!problem.isEmpty())
            err() << problem << "\n";
    }
    if (entries.isEmpty()) {
        if (!problem.isEmpty())
            return ExitNoneAnswered;  // the list or the master gave nothing: said above
        err() << "No servers to probe: name them, or give --file, --url, --master or --favorites.\n"
                 "Try 'pulsebox-query --help'.\n";
        return ExitUsage;
    }

    ProbeEngine engine;
    engine.setSettings(settings);
    QObject::connect(&engine, &ProbeEngine::notice, [](const QString &text) { err() << text << "\n"; err().flush(); });
    const bool terminal = isatty(STDERR_FILENO) == 1;
    if (terminal) {
        QObject::connect(&engine, &ProbeEngine::progress, [](int completed, int total) {
            err() << "\r" << completed << "/" << total << " servers";
            err().flush();
        });
    }
    QEventLoop loop;
    QObject::connect(&engine, &ProbeEngine::finished, &loop, &QEventLoop::quit);
    engine.start(entries);
    if (engine.isRunning())
        loop.exec();
    if (terminal)
        err() << "\n";
    err().flush();

    const QList<ProbeResult> &results = engine.results();
    const bool withHops = parser.isSet(u"hops"_s);
    const QHash<QString, HopResult> hops = withHops ? countHops(results, finder) : QHash<QString, HopResult>();
    QTextStream out(stdout);
    qsizetype kept = 0;
    if (parser.isSet(u"json"_s)) {
        QJsonArray array;
        for (const ProbeResult &r : results) {
            if (!finder.keeps(r))
                continue;
            QJsonObject object = jsonOf(r, settings.status);
            finder.mark(r, &object);
            if (withHops && r.answered)
                addHops(object, hops.value(r.address));
            array.append(object);
        }
        out << QJsonDocument(array).toJson(QJsonDocument::Indented);
        kept = array.size();
    } else {
        QList<const ProbeResult *> rows;
        for (const ProbeResult &r : results) {
            if (r.accepted && finder.keeps(r))
                rows.append(&r);
        }
        std::stable_sort(rows.begin(), rows.end(),
                         [](const ProbeResult *a, const ProbeResult *b) { return a->ping < b->ping; });
        kept = rows.size();
        for (const ProbeResult *r : rows)
            out << (withHops && r->answered ? ServerRow::withHops(r->row, hops.value(r->address).hops) : r->row) << "\n";
    }
    out.flush();
    const bool anyAnswered = std::any_of(results.begin(), results.end(), [](const ProbeResult &r) { return r.answered; });
    if (anyAnswered && finder.filter.isOn() && kept == 0) {
        err() << "No server passes the filters.\n";
        return ExitNoneAnswered;
    }
    return anyAnswered ? ExitAnswered : ExitNoneAnswered;
}
