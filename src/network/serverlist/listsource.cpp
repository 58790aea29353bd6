// Stand-in for the web list and master kinds until the full list source is merged.
#include "serverlist/listsource.h"

#include "probes/dssocket.h"
#include "serverlist/masterclient.h"
#include "serverlist/masterlist.h"

#include <QTimer>

using namespace Qt::StringLiterals;

ListSource::ListSource(QObject *parent) : QObject(parent) {}
ListSource::~ListSource() = default;

void ListSource::reset(Kind kind, const QString &location)
{
    ++generation_;
    kind_ = kind;
    location_ = location;
    entries_.clear();
    bytes_ = 0;
    problem_.clear();
    body_ = ListBodyReader();
}

void ListSource::end(Outcome outcome)
{
    if (outcome_ != Outcome::Running)
        return;
    outcome_ = outcome;
    emit finished();
}

void ListSource::endLater(Outcome outcome)
{
    const quint64 generation = generation_;
    QTimer::singleShot(0, this, [this, generation, outcome] {
        if (generation == generation_)
            end(outcome);
    });
}

bool ListSource::start(const QString &location)
{
    const QString trimmed = TrimSpaces(location);
    MasterList::Location master;
    if (MasterList::parseUrl(trimmed, &master)) {
        if (master.host.isEmpty()) {
            reset(Kind::Master, trimmed);
            outcome_ = Outcome::InvalidLocation;
            return false;
        }
        const bool started = startMaster(master.host, master.port);
        location_ = trimmed;
        return started;
    }
    reset(Kind::WebList, trimmed);
    const QString host = UrlHost(trimmed);
    if (host.isEmpty()) {
        outcome_ = Outcome::InvalidLocation;
        return false;
    }
    if (!socket_) {
        socket_ = new DsSocket(DsSocket::Kind::Stream, this);
        connect(socket_, &DsSocket::Connected, this, [this] { emit statusChanged(u"Connected..."_s); });
        connect(socket_, &DsSocket::SendReady, this, &ListSource::sendRequest);
        connect(socket_, &DsSocket::DataArrival, this, &ListSource::takeLine);
        connect(socket_, &DsSocket::Closed, this, [this] {
            emit statusChanged(u"Connection closed..."_s + QString::number(bytes_) + u" bytes received."_s);
            end(Outcome::Listed);
        });
        connect(socket_, &DsSocket::Error, this, [this](int number, const QString &description) {
            problem_ = QString::number(number) + u' ' + description;
            emit statusChanged(u"dsSocket1 Error : "_s + QString::number(number) + u':' + description);
            end(Outcome::Failed);
        });
    }
    socket_->LineMode = true;
    socket_->EOLChar = 10;
    socket_->RemoteHost = host;
    socket_->RemotePort = 80;
    outcome_ = Outcome::Running;
    if (!socket_->Connect()) {
        emit connectFailed(u"Error connecting to host"_s + u'\r' + QString::number(socket_->LastError) + u':'
                           + socket_->LastErrorText);
        endLater(Outcome::Failed);
    }
    return true;
}

void ListSource::sendRequest()
{
    body_ = ListBodyReader();
    emit statusChanged(u"Ready to Send..."_s);
    entries_.clear();
    socket_->Send(ListRequestText(UrlHost(location_), UrlPath(location_)));
}

void ListSource::takeLine(const QString &line)
{
    QString entry;
    if (!body_.take(line, &entry))
        return;
    entries_ << entry;
    const int n = static_cast<int>(entries_.size());
    if (n % 10 == 0) {
        emit countChanged(n);
        emit statusChanged(u"Retreiving List...."_s + QString::number(n));
    }
    bytes_ = std::min<qint64>(bytes_ + line.size(), INT32_MAX);
}

bool ListSource::startMaster(const QString &host, quint16 port)
{
    reset(Kind::Master, host);
    if (!master_) {
        master_ = new MasterClient(this);
        connect(master_, &MasterClient::finished, this, &ListSource::masterFinished);
    }
    outcome_ = Outcome::Running;
    master_->start(host, port);
    return true;
}

void ListSource::masterFinished()
{
    if (!master_->errorText().isEmpty()) {
        problem_ = master_->errorText();
        end(Outcome::Failed);
        return;
    }
    entries_ = master_->entries();
    bytes_ = std::min<qint64>(master_->counts().bytes, INT32_MAX);
    emit countChanged(static_cast<int>(entries_.size()));
    emit statusChanged(u"Master server answered: "_s + QString::number(entries_.size()) + u" servers, "_s
                       + QString::number(bytes_) + u" bytes received."_s);
    end(Outcome::Listed);
}

void ListSource::cancel()
{
    ++generation_;
    if (master_)
        master_->abort();
    if (outcome_ == Outcome::Running)
        outcome_ = Outcome::Cancelled;
}

void ListSource::setMasterTimeout(int ms) { masterTimeoutMs_ = ms; }
bool ListSource::startFile(const QString &) { return false; }
bool ListSource::startFavoritesFile(const QString &) { return false; }
