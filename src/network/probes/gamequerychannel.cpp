#include "probes/gamequerychannel.h"

#include "probes/dssocket.h"
#include "probes/gamequery.h"
#include "probes/timeouts.h"
#include "serverlist/refreshdecisions.h"
#include "shell/prompter.h"
#include "shell/ticker.h"
#include "shell/waiting.h"

#include <cmath>
#include <optional>

using namespace Qt::StringLiterals;

GameQueryChannel::GameQueryChannel(Prompter &prompts, Activity::Kind mine, QObject *parent)
    : QObject(parent), prompts_(prompts), mine_(mine), socket_(new DsSocket(DsSocket::Kind::Datagram, this)),
      ticker_(new Ticker(this))
{
    connect(ticker_, &Ticker::timeout, this, [this] { ++ticks_; });
    connect(socket_, &DsSocket::SendReady, this, &GameQueryChannel::sendSelected);
    connect(socket_, &DsSocket::DataArrival, this, [this](const QString &data) { lastReply_ = data; });
    connect(socket_, &DsSocket::Error, this, [this](int number, const QString &description) {
        const QString numberText = number < 0 ? QString::number(number) : u' ' + QString::number(number);
        prompts_.message(numberText + description, u"Socket 2!"_s);
    });
}

GameQueryChannel::~GameQueryChannel() = default;

int GameQueryChannel::queryWaitMs()
{
    return static_cast<int>(std::lround(Timeouts::kQueryMs * Ticker::timeScale()));
}

void GameQueryChannel::setActivity(Activity *activity) { activity_ = activity; }

void GameQueryChannel::sendSelected()
{
    const QString datagram = GameQuery::datagram(mode_);
    if (!datagram.isEmpty())
        socket_->Send(datagram);
}

// The other window's query ends on its reply or its own tick limit; this one
// waits at most its own, so that two waits nested in each other cannot hold each
// other up.
void GameQueryChannel::waitForOtherQuery()
{
    if (!activity_)
        return;
    const Activity::Kind other =
        mine_ == Activity::Kind::LauncherQuery ? Activity::Kind::ServerQuery : Activity::Kind::LauncherQuery;
    if (!activity_->isRunning(other))
        return;
    ticks_ = 0;
    ticker_->setInterval(Timeouts::kTickMs);
    waitUntil([this, other] { return !activity_ || !activity_->isRunning(other) || ticks_ >= tickLimit_; });
    ticker_->setInterval(0);
}

QString GameQueryChannel::query(const QString &address, const QString &port, int mode)
{
    waitForOtherQuery();
    if (socket_->State() != DsSocket::StateOpen)
        socket_->SetAction(DsSocket::OpenAction);
    socket_->RemoteHost.clear();
    socket_->RemoteDotted = address;
    socket_->RemotePort = Probe::QueryPort(port);
    mode_ = mode;
    lastReply_.clear();
    ticks_ = 0;
    const bool wasBusy = busy_;
    busy_ = true;
    std::optional<Activity::Scope> marked;
    if (activity_)
        marked.emplace(*activity_, mine_);
    socket_->Connect();
    ticker_->setInterval(Timeouts::kTickMs);
    waitUntil([this] { return !lastReply_.isEmpty() || ticks_ >= tickLimit_; });
    ticker_->setInterval(0);
    busy_ = wasBusy;
    return lastReply_;
}

GameQueryChannel::VersionProbe GameQueryChannel::versionProbe(const QString &address, const QString &port)
{
    mode_ = 0;
    QString answer;
    int next = 1;
    while (next != 0 && !waitsAbandoned()) {
        const int mode = next;
        answer = query(address, port, mode);
        next = GameQuery::nextMode(mode, answer);
    }
    const QString version = GameQuery::versionText(mode_);
    mode_ = 1;
    return {version, GameQuery::infoLine(answer)};
}

QString GameQueryChannel::resolve(const QString &name)
{
    socket_->RemoteDotted = u"0.0.0.0"_s;
    socket_->RemoteHost = name;
    socket_->SetAction(DsSocket::ResolveAction);
    return socket_->RemoteDotted;
}
