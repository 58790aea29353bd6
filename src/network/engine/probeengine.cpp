#include "engine/probeengine.h"

#include "probes/address.h"
#include "probes/gamequery.h"
#include "probes/icmppacket.h"
#include "serverlist/refreshdecisions.h"
#include "serverlist/serverentry.h"
#include "shell/wiretext.h"

#include <QHostInfo>
#include <QNetworkDatagram>
#include <QUdpSocket>
#include <QVariant>

#include <algorithm>
#include <cmath>

using namespace Qt::StringLiterals;

ServerFacts ProbeResult::facts() const
{
    return ServerFacts::of(address + u':' + portText, answered, hostName, version, map, players, ping, statusAnswer);
}

struct ProbeEngine::Server {
    enum class Phase { Pending, Resolving, Pinging, WaitingForKey, Querying, Done };
    Phase phase = Phase::Pending;
    ServerEntry entry;
    quint32 ip = 0;  // host order
    quint16 port = 0;
    Probe::EchoSeries series;
    bool pingKnown = false;
    GameQuery::FastVersionProbe version;
    int mode = 0;                // the query being asked: 1..4, or the status query
    int triesSent = 0;
    qint64 firstSendNs = 0;
    bool finalDeadline = false;  // the pending deadline ends the query (else: re-send)
    quint32 generation = 0;      // bumped whenever the server moves on: stale work is skipped
    int duplicatesExpected = 0;  // answers to re-sends of the last query still to come
    QString lastAnswer;
    bool holdsKey = false;
    // Without ICMP: "ping"s one after another while the version probe runs, each
    // waiting for its "ack" before the next goes (an "ack" names no ping, so only one
    // is ever out); the series ends at the first one unanswered.
    bool acksStarted = false;
    int acksLeft = 0;             // pings still to send
    bool ackPending = false;      // a ping is out, its "ack" not yet in
    qint64 ackSentNs = 0;
    quint32 ackGeneration = 0;    // bumped when the ping out is answered or given up
};

QString ProbeSettings::check() const
{
    if (rate < MinRate || rate > MaxRate)
        return u"The rate must be %1 to %2 packets per second."_s.arg(MinRate).arg(MaxRate);
    if (queryTimeoutMs < MinTimeoutMs || queryTimeoutMs > MaxTimeoutMs || echoTimeoutMs < MinTimeoutMs / 5
        || echoTimeoutMs > MaxTimeoutMs)
        return u"The time-out must be %1 to %2 ms."_s.arg(MinTimeoutMs).arg(MaxTimeoutMs);
    if (tries < 1 || tries > MaxTries)
        return u"The tries must be 1 to %1."_s.arg(MaxTries);
    if (inFlight < 1 || inFlight > MaxInFlight)
        return u"The servers in flight must be 1 to %1."_s.arg(MaxInFlight);
    if (echoes < 1 || echoes > 3)
        return u"The echoes per server must be 1 to 3."_s;
    if (ttl < 0 || ttl > 255)
        return u"The time-to-live must be 0 to 255."_s;
    if (!std::isfinite(pingLimit))
        return u"The ping limit must be a number."_s;
    return {};
}

ProbeSettings ProbeSettings::clamped() const
{
    ProbeSettings s = *this;
    s.rate = std::clamp(rate, MinRate, MaxRate);
    s.queryTimeoutMs = std::clamp(queryTimeoutMs, MinTimeoutMs, MaxTimeoutMs);
    s.echoTimeoutMs = std::clamp(echoTimeoutMs, MinTimeoutMs / 5, MaxTimeoutMs);
    s.tries = std::clamp(tries, 1, MaxTries);
    s.inFlight = std::clamp(inFlight, 1, MaxInFlight);
    s.echoes = std::clamp(echoes, 1, 3);
    s.ttl = std::clamp(ttl, 0, 255);
    if (std::isnan(pingLimit))
        s.pingLimit = 0;
    return s;
}

ProbeEngine::ProbeEngine(QObject *parent) : QObject(parent)
{
    pumpTimer_.setSingleShot(true);
    pumpTimer_.setTimerType(Qt::PreciseTimer);
    connect(&pumpTimer_, &QTimer::timeout, this, &ProbeEngine::pump);
    deadlineTimer_.setSingleShot(true);
    deadlineTimer_.setTimerType(Qt::PreciseTimer);
    connect(&deadlineTimer_, &QTimer::timeout, this, &ProbeEngine::expireDeadlines);
    clock_.start();
}

ProbeEngine::~ProbeEngine()
{
    for (int id : std::as_const(lookups_))
        QHostInfo::abortHostLookup(id);
}

void ProbeEngine::setSettings(const ProbeSettings &settings) { settings_ = settings.clamped(); }

void ProbeEngine::setEchoBatch(EchoBatch *batch)
{
    if (echo_)
        disconnect(echo_, nullptr, this, nullptr);
    echo_ = batch;
    if (echo_)
        connect(echo_, &EchoBatch::answered, this, &ProbeEngine::echoAnswered);
}

void ProbeEngine::start(const QList<ProbeEntry> &entries)
{
    if (running_)
        cancel();
    if (!echo_) {
        ownEcho_ = std::make_unique<IcmpEchoBatch>();
        setEchoBatch(ownEcho_.get());
    }
    for (int i = 0; i < QuerySockets; ++i) {
        QUdpSocket *&udp = udp_[static_cast<size_t>(i)];
        if (udp)
            continue;
        udp = new QUdpSocket(this);
        udp->bind(QHostAddress(QHostAddress::AnyIPv4), 0);
        udp->setSocketOption(QAbstractSocket::ReceiveBufferSizeSocketOption, QVariant(1 << 20));
        connect(udp, &QUdpSocket::readyRead, this, [this, i] { readDatagrams(i); });
    }
    results_.clear();
    servers_.assign(static_cast<size_t>(entries.size()), Server{});
    for (const ProbeEntry &e : entries) {
        ProbeResult r;
        r.entry = e;
        results_.append(r);
    }
    next_ = active_ = completed_ = foreign_ = 0;
    querying_.clear();
    waitingForKey_.clear();
    queue_.clear();
    queueHead_ = 0;
    deadlines_.clear();
    tokens_ = 1;
    lastRefillNs_ = clock_.nsecsElapsed();
    running_ = true;
    const QString reason = echo_->unavailableReason();
    icmp_ = reason.isEmpty();
    rttNotice_.clear();
    if (!icmp_) {
        rttNotice_ = reason;
        emit notice(rttNotice_);
    }
    startNext();
}

void ProbeEngine::cancel()
{
    if (!running_)
        return;
    finishAll(true);
}

void ProbeEngine::finishAll(bool cancelled)
{
    for (int id : std::as_const(lookups_))
        QHostInfo::abortHostLookup(id);
    lookups_.clear();
    if (echo_)
        echo_->clear();
    pumpTimer_.stop();
    deadlineTimer_.stop();
    queue_.clear();
    queueHead_ = 0;
    deadlines_.clear();
    for (Server &s : servers_)
        ++s.generation;
    running_ = false;
    emit finished(cancelled);
}

void ProbeEngine::startNext()
{
    if (starting_)
        return;
    starting_ = true;
    while (running_ && active_ < settings_.inFlight && next_ < results_.size())
        beginServer(next_++);
    starting_ = false;
    if (running_ && completed_ == results_.size())
        finishAll(false);
}

void ProbeEngine::beginServer(int index)
{
    ++active_;
    Server &s = servers_[static_cast<size_t>(index)];
    ProbeResult &r = results_[index];
    s.entry = ServerEntry::split(r.entry.text);
    r.portText = s.entry.port;
    r.port = Probe::QueryPort(s.entry.port);
    if (!s.entry.isName)
        return resolved(index, s.entry.host);
    r.log << Probe::LookingUpLine(s.entry.host);
    s.phase = Server::Phase::Resolving;
    const quint32 generation = s.generation;
    const int id = QHostInfo::lookupHost(s.entry.host, this, [this, index, generation](const QHostInfo &info) {
        lookups_.removeOne(info.lookupId());
        if (!running_ || servers_[static_cast<size_t>(index)].generation != generation)
            return;
        QString address = u"0.0.0.0"_s;
        for (const QHostAddress &a : info.addresses()) {
            if (a.protocol() == QAbstractSocket::IPv4Protocol) {
                address = a.toString();
                break;
            }
        }
        resolved(index, address);
    });
    lookups_.append(id);
}

void ProbeEngine::resolved(int index, const QString &address)
{
    Server &s = servers_[static_cast<size_t>(index)];
    ProbeResult &r = results_[index];
    if (s.entry.isName)
        r.log << Probe::FoundLine(s.entry.host, address);
    r.address = address;
    s.ip = AddressToHostOrder(DottedToAddress(address));
    s.port = r.port;
    s.series.wanted = settings_.echoes;
    if (icmp_)
        return beginPing(index);
    if (settings_.pingOnly)
        return finishServer(index);  // no echoes here: no replies
    if (s.ip == 0) {  // no address to query
        r.echoStatus = EchoStatus::BadDestination;
        r.log << Probe::FailureLine(address, r.echoStatus);
        return finishServer(index);
    }
    beginQuery(index, 0);
}

void ProbeEngine::beginPing(int index)
{
    servers_[static_cast<size_t>(index)].phase = Server::Phase::Pinging;
    queuePacket(index, Packet::Echo);
}

void ProbeEngine::echoAnswered(int token, int result, const EchoReply &reply)
{
    if (!running_ || token < 0 || token >= results_.size())
        return;
    Server &s = servers_[static_cast<size_t>(token)];
    if (s.phase != Server::Phase::Pinging)
        return;
    s.series.add(result, reply.Status, reply.RoundTripTime);
    if (!s.series.done())
        return queuePacket(token, Packet::Echo);
    judgePing(token);
}

void ProbeEngine::judgePing(int index)
{
    Server &s = servers_[static_cast<size_t>(index)];
    ProbeResult &r = results_[index];
    r.echoStatus = s.series.lastStatus;
    r.echoReplies = s.series.successes;
    if (settings_.pingOnly) {
        r.ping = s.series.ping();
        return finishServer(index);
    }
    if (s.series.failed()) {
        r.log << Probe::FailureLine(r.address, s.series.lastStatus);
        return finishServer(index);
    }
    r.ping = s.series.ping();
    r.rttSource = RttSource::Icmp;
    s.pingKnown = true;
    if (r.ping > settings_.pingLimit) {
        r.log << Probe::TimeLine(r.address, r.ping, settings_.ttlText);
        return finishServer(index);
    }
    beginQuery(index, 0);
}

quint64 ProbeEngine::keyOf(int index) const
{
    const Server &s = servers_[static_cast<size_t>(index)];
    return quint64(s.ip) << 16 | s.port;
}

// mode 0: the version probe's next query; otherwise that query (the status query).
void ProbeEngine::beginQuery(int index, int mode)
{
    Server &s = servers_[static_cast<size_t>(index)];
    ++s.generation;
    if (s.port == 0) {  // the port text is no port: nothing can be sent, nothing answers
        s.version.answer(QString());
        return accept(index);
    }
    if (!s.holdsKey) {
        const quint64 key = keyOf(index);
        if (querying_.contains(key)) {  // the same server listed twice: one at a time
            s.phase = Server::Phase::WaitingForKey;
            s.mode = mode;
            waitingForKey_[key].append(index);
            return;
        }
        querying_.insert(key, index);
        s.holdsKey = true;
    }
    s.phase = Server::Phase::Querying;
    s.mode = mode == 0 ? s.version.mode() : mode;
    s.triesSent = 0;
    if (!icmp_ && !s.acksStarted) {  // the first ping goes just ahead of the first query
        s.acksStarted = true;
        s.acksLeft = settings_.ackPings;
        sendAckPing(index);
    }
    queuePacket(index, Packet::Query);
}

void ProbeEngine::sendAckPing(int index)
{
    Server &s = servers_[static_cast<size_t>(index)];
    s.ackPending = false;
    if (s.acksLeft <= 0)
        return;
    --s.acksLeft;
    queue_.push_back({index, s.ackGeneration, Packet::AckPing});
    if (!pumpTimer_.isActive())
        pumpTimer_.start(0);
}

void ProbeEngine::ackAnswered(int index)
{
    Server &s = servers_[static_cast<size_t>(index)];
    s.ackPending = false;
    ++s.ackGeneration;
    const double ms = std::floor(static_cast<double>(clock_.nsecsElapsed() - s.ackSentNs) / Timeouts::kNsPerMs);
    if (takePing(index, ms, RttSource::UdpAck))
        sendAckPing(index);
}

void ProbeEngine::endAckPings(int index)
{
    Server &s = servers_[static_cast<size_t>(index)];
    s.acksLeft = 0;
    s.ackPending = false;
    ++s.ackGeneration;
}

// A round trip measured without ICMP: an "ack" beats a game query's answer (which
// includes the server's work), and the least "ack" counts. The first round trip
// known is judged against the ping limit; false when that finished the server.
bool ProbeEngine::takePing(int index, double ms, RttSource source)
{
    Server &s = servers_[static_cast<size_t>(index)];
    ProbeResult &r = results_[index];
    const bool better = r.rttSource == RttSource::None
        || (source == RttSource::UdpAck && (r.rttSource != RttSource::UdpAck || ms < r.ping));
    if (better) {
        r.ping = ms;
        r.rttSource = source;
    }
    if (s.pingKnown)
        return true;
    s.pingKnown = true;
    if (r.ping <= settings_.pingLimit)
        return true;
    r.log << Probe::TimeLine(r.address, r.ping, settings_.ttlText);
    releaseKey(index);
    finishServer(index);
    return false;
}

void ProbeEngine::releaseKey(int index)
{
    Server &s = servers_[static_cast<size_t>(index)];
    if (!s.holdsKey)
        return;
    s.holdsKey = false;
    const quint64 key = keyOf(index);
    querying_.remove(key);
    auto it = waitingForKey_.find(key);
    if (it == waitingForKey_.end())
        return;
    const int nextIndex = it->takeFirst();
    if (it->isEmpty())
        waitingForKey_.erase(it);
    beginQuery(nextIndex, servers_[static_cast<size_t>(nextIndex)].mode);
}

int ProbeEngine::socketOf(int mode)
{
    return mode >= 1 && mode <= 4 ? mode - 1 : mode == GameQuery::PingMode ? 5 : 4;
}

void ProbeEngine::readDatagrams(int socket)
{
    QUdpSocket *udp = udp_[static_cast<size_t>(socket)];
    while (udp->hasPendingDatagrams()) {
        const QNetworkDatagram datagram = udp->receiveDatagram(65536);
        if (!running_) {
            ++foreign_;
            continue;
        }
        bool ok = false;
        const quint32 from = datagram.senderAddress().toIPv4Address(&ok);
        const int port = datagram.senderPort();
        const auto it = ok && port > 0 ? querying_.constFind(quint64(from) << 16 | quint16(port)) : querying_.constEnd();
        if (it == querying_.constEnd()) {
            ++foreign_;
            continue;
        }
        const int index = *it;
        Server &s = servers_[static_cast<size_t>(index)];
        if (socket == socketOf(GameQuery::PingMode)) {
            if (s.ackPending && GameQuery::isAck(WireText::fromBytes(datagram.data())))
                ackAnswered(index);
            else
                ++foreign_;  // a late "ack", or no "ack" at all
            continue;
        }
        if (s.phase != Server::Phase::Querying || s.triesSent == 0 || socketOf(s.mode) != socket) {
            ++foreign_;
            continue;
        }
        const QString text = WireText::fromBytes(datagram.data());
        if (text.isEmpty())
            continue;
        if (s.duplicatesExpected > 0 && text == s.lastAnswer) {
            --s.duplicatesExpected;  // an answer to a re-send of the query before
            continue;
        }
        queryAnswered(index, text);
    }
}

void ProbeEngine::queryAnswered(int index, const QString &answer)
{
    Server &s = servers_[static_cast<size_t>(index)];
    ProbeResult &r = results_[index];
    ++s.generation;
    s.duplicatesExpected = s.triesSent - 1;
    s.lastAnswer = answer;
    // No ICMP here, and no "ack" yet: the first answer's round trip stands for the ping.
    if (!icmp_ && !takePing(index, std::floor(static_cast<double>(clock_.nsecsElapsed() - s.firstSendNs) / Timeouts::kNsPerMs),
                            RttSource::GameQuery))
        return;
    if (s.mode == GameQuery::StatusMode) {
        r.statusAnswer = answer;
        releaseKey(index);
        return finishServer(index);
    }
    s.version.answer(answer);
    if (!s.version.done())
        return beginQuery(index, 0);
    accept(index);
}

void ProbeEngine::queryTimedOut(int index)
{
    Server &s = servers_[static_cast<size_t>(index)];
    ProbeResult &r = results_[index];
    ++s.generation;
    if (!s.pingKnown) {
        r.echoStatus = EchoStatus::RequestTimedOut;
        r.log << Probe::FailureLine(r.address, r.echoStatus);
        releaseKey(index);
        return finishServer(index);
    }
    if (s.mode == GameQuery::StatusMode) {
        releaseKey(index);
        return finishServer(index);
    }
    s.version.answer(QString());
    if (!s.version.done())
        return beginQuery(index, 0);
    accept(index);
}

void ProbeEngine::accept(int index)
{
    Server &s = servers_[static_cast<size_t>(index)];
    ProbeResult &r = results_[index];
    // The row shows the round trip known now: an "ack" that came before the answer
    // may still wait unread on its own socket.
    if (s.ackPending)
        readDatagrams(socketOf(GameQuery::PingMode));
    endAckPings(index);
    r.version = s.version.version();
    r.infoLine = s.version.infoLine();
    r.log << Probe::TimeLine(r.address, r.ping, settings_.ttlText, r.entry.favorite);
    const Probe::Accepted a = Probe::Accept(r.address, r.portText, r.ping, r.version, r.infoLine, r.entry.favorite);
    r.accepted = true;
    r.record = a.record;
    r.row = a.row;
    r.hostName = a.hostName;
    r.map = a.map;
    r.players = a.players;
    r.answered = GameQuery::gaveInfo(r.infoLine);
    if (settings_.status && r.answered && s.port != 0)
        return beginQuery(index, GameQuery::StatusMode);
    releaseKey(index);
    finishServer(index);
}

void ProbeEngine::finishServer(int index)
{
    Server &s = servers_[static_cast<size_t>(index)];
    s.phase = Server::Phase::Done;
    ++s.generation;
    endAckPings(index);
    results_[index].done = true;
    ++completed_;
    --active_;
    emit serverDone(index);
    emit progress(completed_, static_cast<int>(results_.size()));
    startNext();
}

void ProbeEngine::queuePacket(int index, Packet packet)
{
    queue_.push_back({index, servers_[static_cast<size_t>(index)].generation, packet});
    if (!pumpTimer_.isActive())
        pumpTimer_.start(0);
}

// A token bucket: `rate` packets a second, bursts of at most 5 ms worth.
void ProbeEngine::pump()
{
    const qint64 now = clock_.nsecsElapsed();
    const double burst = std::max(1.0, settings_.rate / 200.0);
    tokens_ = std::min(burst, tokens_ + static_cast<double>(now - lastRefillNs_) * settings_.rate / 1e9);
    lastRefillNs_ = now;
    const QByteArray payload = WireText::toBytes(EchoRequestText);
    while (running_ && queueHead_ < queue_.size() && tokens_ >= 1) {
        const Queued q = queue_[queueHead_++];
        Server &s = servers_[static_cast<size_t>(q.index)];
        if (q.packet == Packet::AckPing) {
            if (q.generation != s.ackGeneration || !s.holdsKey)
                continue;
            tokens_ -= 1;
            const QByteArray ping = WireText::toBytes(GameQuery::datagram(GameQuery::PingMode));
            s.ackSentNs = clock_.nsecsElapsed();
            s.ackPending = true;
            udp_[static_cast<size_t>(socketOf(GameQuery::PingMode))]->writeDatagram(ping, QHostAddress(s.ip), s.port);
            // An "ack" is due within a re-send interval of the queries; a later one is
            // dropped rather than taken for the answer to a later ping.
            const qint64 wait = qint64(settings_.queryTimeoutMs) * Timeouts::kNsPerMs / settings_.tries;
            deadlines_.emplace(s.ackSentNs + wait, Deadline{q.index, s.ackGeneration, true});
            continue;
        }
        if (q.generation != s.generation)
            continue;
        tokens_ -= 1;
        if (q.packet == Packet::Echo) {
            echo_->send(q.index, AddressFromHostOrder(s.ip), payload, settings_.ttl, settings_.echoTimeoutMs);
            continue;
        }
        if (s.phase != Server::Phase::Querying)
            continue;
        const QByteArray datagram = WireText::toBytes(GameQuery::datagram(s.mode));
        const qint64 sentAt = clock_.nsecsElapsed();
        udp_[static_cast<size_t>(socketOf(s.mode))]->writeDatagram(datagram, QHostAddress(s.ip), s.port);
        if (++s.triesSent == 1)
            s.firstSendNs = sentAt;
        const qint64 window = qint64(settings_.queryTimeoutMs) * Timeouts::kNsPerMs;
        s.finalDeadline = s.triesSent >= settings_.tries;
        const qint64 at = s.firstSendNs + (s.finalDeadline ? window : window * s.triesSent / settings_.tries);
        deadlines_.emplace(at, Deadline{q.index, s.generation, false});
    }
    if (queueHead_ >= queue_.size()) {
        queue_.clear();
        queueHead_ = 0;
    } else if (queueHead_ > 4096) {
        queue_.erase(queue_.begin(), queue_.begin() + static_cast<std::ptrdiff_t>(queueHead_));
        queueHead_ = 0;
    }
    if (running_ && queueHead_ < queue_.size())
        pumpTimer_.start(std::max(1, static_cast<int>(std::ceil((1 - tokens_) * 1000.0 / settings_.rate))));
    armDeadlines();
}

void ProbeEngine::armDeadlines()
{
    if (deadlines_.empty() || !running_) {
        deadlineTimer_.stop();
        return;
    }
    const qint64 wait = (deadlines_.begin()->first - clock_.nsecsElapsed() + Timeouts::kNsPerMs - 1) / Timeouts::kNsPerMs;
    deadlineTimer_.start(static_cast<int>(std::clamp<qint64>(wait, 0, 3600000)));
}

void ProbeEngine::expireDeadlines()
{
    const qint64 now = clock_.nsecsElapsed();
    while (running_ && !deadlines_.empty() && deadlines_.begin()->first <= now) {
        const Deadline d = deadlines_.begin()->second;
        deadlines_.erase(deadlines_.begin());
        Server &s = servers_[static_cast<size_t>(d.index)];
        if (d.ackPing) {
            if (d.generation == s.ackGeneration && s.ackPending)
                endAckPings(d.index);
            continue;
        }
        if (d.generation != s.generation || s.phase != Server::Phase::Querying)
            continue;
        if (s.finalDeadline)
            queryTimedOut(d.index);
        else
            queuePacket(d.index, Packet::Query);  // a re-send, paced like every packet
    }
    armDeadlines();
}
