#include "serverlist/refreshsession.h"

#include "engine/echobatch.h"
#include "engine/probeengine.h"
#include "probes/address.h"
#include "probes/echoservice.h"
#include "probes/gamequery.h"
#include "probes/gamequerychannel.h"
#include "probes/timeouts.h"
#include "serverlist/listsource.h"
#include "serverlist/serverentry.h"
#include "serverlist/urltext.h"
#include "shell/prompter.h"
#include "shell/ticker.h"
#include "shell/waiting.h"
#include "shell/wiretext.h"

#include <cmath>
#include <memory>

using namespace Qt::StringLiterals;

namespace {
const QString kTitle = u"Pulsebox"_s;
}

RefreshSession::RefreshSession(Prompter &prompts, GameQueryChannel &queries, QObject *parent)
    : QObject(parent), prompts_(prompts), queries_(queries), source_(new ListSource(this))
{
    connect(source_, &ListSource::statusChanged, this, &RefreshSession::statusChanged);
    connect(source_, &ListSource::countChanged, this, &RefreshSession::listCountChanged);
    connect(source_, &ListSource::connectFailed, this,
            [this](const QString &message) { prompts_.message(message, kTitle); });
}

RefreshSession::~RefreshSession() = default;

void RefreshSession::setEchoService(EchoService *echo, bool engineToo)
{
    echo_ = echo;
    engineUsesEcho_ = engineToo;
}

void RefreshSession::logLine(const QString &line, bool selects)
{
    emit logLines({line}, selects ? 0 : -1);
}

bool RefreshSession::continueWithFavorites()
{
    return prompts_.question(u"Do you want to continue trying favorites?"_s, kTitle);
}

RefreshSession::ListOutcome RefreshSession::fetchList(const RefreshRequest &request, QStringList *entries)
{
    emit statusChanged(u"Retreiving List...."_s);
    yieldOnce();
    bool failed = false;
    if (!source_->start(request.location)) {
        prompts_.message(u"Invalid URL supplied."_s, kTitle);
        failed = true;
    } else {
        // The fetch has no time limit of its own: the server's close or the socket's error ends it.
        waitUntil([this] { return !source_->isRunning(); });
        if (waitsAbandoned()) {  // the program is ending
            source_->cancel();
            return ListOutcome::Stop;
        }
        *entries = source_->entries();  // a failed fetch keeps what came: the count shows it
        if (source_->outcome() == ListSource::Outcome::Failed) {
            prompts_.message(u"problem getting list of server"_s, kTitle);
            emit statusChanged(source_->kind() != ListSource::Kind::WebList
                                   ? u"Problem getting list from server: "_s + source_->problem()
                                   : u"Problem getting list from server"_s);
            failed = true;
        }
    }
    if (failed)
        return continueWithFavorites() ? ListOutcome::FavoritesInstead : ListOutcome::Stop;
    if (entries->isEmpty()) {
        prompts_.message(u"No sites from web source list"_s, kTitle);
        emit statusChanged(u"No sites from web source list"_s);
        return continueWithFavorites() ? ListOutcome::FavoritesInstead : ListOutcome::Stop;
    }
    return ListOutcome::Listed;
}

bool RefreshSession::run(const RefreshRequest &request)
{
    struct Ending {
        RefreshSession &session;
        ~Ending()
        {
            session.running_ = false;
            session.cancelRequested_ = false;
            emit session.finished();
        }
    } ending{*this};

    running_ = true;
    emit started();
    table_.clearServers();
    serverFacts_.clear();

    QStringList listEntries;
    bool withList = false;
    if (!request.favoritesOnly) {
        const ListOutcome outcome = fetchList(request, &listEntries);
        if (outcome == ListOutcome::Stop)
            return false;
        withList = outcome == ListOutcome::Listed;
    }

    emit statusChanged(u"Pinging...."_s);
    emit listCountChanged(static_cast<int>(listEntries.size()));
    yieldOnce();
    emit probingStarted();

    if (!withList)
        listEntries.clear();  // the list failed: only the favorites are probed
    if (request.fast) {
        probeFast(request, listEntries);
    } else {
        for (qsizetype i = 0; i < request.favorites.size() && !cancelRequested_; ++i) {
            probeSerial(request, request.favorites[i], true);
            yieldOnce();
        }
        const int total = static_cast<int>(listEntries.size());
        for (int i = 0; i < total && !cancelRequested_;) {
            probeSerial(request, listEntries[i], false);
            yieldOnce();
            ++i;
            emit progressChanged(i, total);
        }
    }
    emit statusChanged(u"Done..."_s);
    return true;
}

QString RefreshSession::lookUp(const QString &name)
{
    logLine(Probe::LookingUpLine(name));
    yieldOnce();
    const QString address = queries_.resolve(name);
    logLine(Probe::FoundLine(name, address));
    yieldOnce();
    return address;
}

void RefreshSession::probeSerial(const RefreshRequest &request, const QString &entry, bool favorite)
{
    const ServerEntry server = ServerEntry::split(entry);
    const QString address = server.isName ? lookUp(server.host) : server.host;
    emit addressProbed(address);

    EchoService &echo = *echo_;
    if (const QString advice = echo.adviceOnce(); !advice.isEmpty())
        prompts_.message(advice, kTitle, Prompter::Icon::Warning);
    const qint32 destination = DottedToAddress(address);
    const int ttl = Probe::TtlValue(request.ttlText);
    yieldOnce();

    const QByteArray payload = WireText::toBytes(EchoRequestText);
    Probe::EchoSeries series;
    series.wanted = request.quickPing ? 1 : 3;
    EchoReply reply;
    while (!series.done()) {
        const int result = echo.sendEcho(destination, payload, ttl, Timeouts::kPingEchoMs, reply);
        series.add(result, reply.Status, reply.RoundTripTime);
    }
    if (series.failed()) {
        logLine(Probe::FailureLine(address, series.lastStatus));
        return;
    }
    const double ping = series.ping();
    if (!Probe::WithinLimit(ping, request.pingLimitText)) {
        logLine(Probe::TimeLine(address, ping, request.ttlText), false);
        return;
    }

    const GameQueryChannel::VersionProbe probe = queries_.versionProbe(address, server.port);
    logLine(Probe::TimeLine(address, ping, request.ttlText, favorite));
    const Probe::Accepted accepted =
        Probe::Accept(address, server.port, ping, probe.version, probe.infoLine, favorite);
    const bool answered = GameQuery::gaveInfo(probe.infoLine);
    const QString status =
        request.players && answered ? queries_.query(address, server.port, GameQuery::StatusMode) : QString();
    const qint32 index = table_.appendServer(accepted.record);
    keepFacts(index, ServerFacts::of(address + u':' + server.port, answered, accepted.hostName, probe.version,
                                     accepted.map, accepted.players, ping, status));
    emit rowAccepted(accepted.row, index);
}

const ServerFacts &RefreshSession::facts(qint32 index) const
{
    static const ServerFacts none;
    const auto at = static_cast<size_t>(index);
    return index >= 0 && at < serverFacts_.size() ? serverFacts_[at] : none;
}

void RefreshSession::keepFacts(qint32 index, ServerFacts facts)
{
    if (index < 0)
        return;
    const auto at = static_cast<size_t>(index);
    if (serverFacts_.size() <= at)
        serverFacts_.resize(at + 1);
    serverFacts_[at] = std::move(facts);
}

void RefreshSession::probeFast(const RefreshRequest &request, const QStringList &listEntries)
{
    QList<ProbeEntry> entries;
    for (const QString &favorite : request.favorites)
        entries.append({favorite, true});
    for (const QString &entry : listEntries)
        entries.append({entry, false});
    if (entries.isEmpty() || cancelRequested_)
        return;

    ProbeSettings settings;
    settings.echoes = request.quickPing ? 1 : 3;
    settings.ttl = Probe::TtlValue(request.ttlText);
    settings.ttlText = request.ttlText;
    settings.pingLimit = Probe::NumberValue(request.pingLimitText);
    settings.queryTimeoutMs = static_cast<int>(std::lround(Timeouts::kEngineQueryMs * Ticker::timeScale()));
    settings.echoTimeoutMs = Timeouts::kPingEchoMs;
    settings.status = request.players;

    ProbeEngine engine;
    std::unique_ptr<ServiceEchoBatch> service;
    if (engineUsesEcho_ && echo_) {
        service = std::make_unique<ServiceEchoBatch>(*echo_);
        engine.setEchoBatch(service.get());
    }
    engine.setSettings(settings);
    connect(&engine, &ProbeEngine::progress, this, &RefreshSession::progressChanged);
    runUntilFinished(engine, entries, [this] { return cancelRequested_; });

    if (!engine.rttNotice().isEmpty())
        logLine(engine.rttNotice());
    QStringList lines;
    qsizetype selected = -1;
    // Entry order, up to the first server a Cancel left unfinished: the same as a
    // serial refresh cancelled there.
    for (const ProbeResult &r : engine.results()) {
        if (!r.done)
            break;
        emit addressProbed(r.address);
        // Every line but a ping over the limit selects itself as it comes; the log
        // selects once at the end, where the serial passes leave it, without laying
        // the list out again for every line.
        const bool overLimit = !r.accepted && r.rttSource != RttSource::None && !r.log.isEmpty();
        for (qsizetype i = 0; i < r.log.size(); ++i) {
            lines << r.log[i];
            if (!(overLimit && i == r.log.size() - 1))
                selected = lines.size() - 1;
        }
        if (r.accepted) {
            const qint32 index = table_.appendServer(r.record);
            keepFacts(index, r.facts());
            emit rowAccepted(r.row, index);
        }
    }
    if (!lines.isEmpty())
        emit logLines(lines, selected);
}
