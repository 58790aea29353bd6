#include "serverlist/listsource.h"

#include "favorites/favfile.h"
#include "probes/dssocket.h"
#include "serverlist/httplist.h"
#include "serverlist/masterclient.h"
#include "serverlist/masterlist.h"
#include "shell/boundedfile.h"
#include "shell/wiretext.h"

#include <QUrl>

#include <algorithm>
#include <climits>

using namespace Qt::StringLiterals;

namespace {
// Far beyond any real list or favorites file.
constexpr qint64 kMaxFileBytes = 16 * 1024 * 1024;

// The status line's counters have always been 32-bit: a list far larger than
// any real one must not wrap them.
qint64 capped(qint64 n) { return std::min<qint64>(n, INT32_MAX); }
}

ListSource::ListSource(QObject *parent) : QObject(parent) {}

ListSource::~ListSource() { cancel(); }

void ListSource::reset(Kind kind, const QString &location)
{
    cancel();
    kind_ = kind;
    outcome_ = Outcome::Running;
    location_ = location;
    entries_.clear();
    bytes_ = 0;
    problem_.clear();
    body_ = ListBodyReader();
    reportedCount_ = 0;
}

void ListSource::end(Outcome outcome)
{
    outcome_ = outcome;
    emit finished();
}

void ListSource::endLater(Outcome outcome)
{
    outcome_ = outcome;
    QMetaObject::invokeMethod(this, [this, generation = generation_] {
        if (generation == generation_)
            emit finished();
    }, Qt::QueuedConnection);
}

bool ListSource::start(const QString &location)
{
    const QString text = TrimSpaces(location);
    MasterList::Location master;
    if (MasterList::parseUrl(text, &master)) {
        const bool started = startMaster(master.host, master.port);
        location_ = text;
        return started;
    }
    if (HttpList::needsStandardClient(text))
        return startHttp(text);
    reset(Kind::WebList, text);
    const QString host = UrlHost(text);
    if (host.isEmpty()) {
        outcome_ = Outcome::InvalidLocation;
        return false;
    }
    socket_ = new DsSocket(DsSocket::Kind::Stream, this);
    socket_->LineMode = true;
    socket_->EOLChar = 10;
    socket_->RemoteHost = host;
    socket_->RemotePort = 80;
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
    if (!socket_->Connect()) {
        // The socket raises no event for a connect refused at once.
        problem_ = QString::number(socket_->LastError) + u' ' + socket_->LastErrorText;
        endLater(Outcome::Failed);
        emit connectFailed(u"Error connecting to host"_s + u'\r' + QString::number(socket_->LastError) + u':'
                           + socket_->LastErrorText);
    }
    return true;
}

void ListSource::sendRequest()
{
    body_ = ListBodyReader();
    statusLineSeen_ = false;
    emit statusChanged(u"Ready to Send..."_s);
    entries_.clear();
    socket_->Send(ListRequestText(UrlHost(location_), UrlPath(location_)));
}

void ListSource::takeLine(const QString &line)
{
    // Today's web servers do not take the list request: ask again as a standard
    // client rather than list the lines of their error page.
    if (!statusLineSeen_) {
        statusLineSeen_ = true;
        if (!HttpList::servedListRequest(line)) {
            dropSocket();
            emit statusChanged(u"The list server did not take the list request: asking again as a web browser would..."_s);
            if (!startHttp(location_)) {  // a location only the list request could read
                problem_ = u"The list server did not take the list request, and %1 is no URL to ask otherwise."_s
                               .arg(location_);
                emit statusChanged(problem_);
                end(Outcome::Failed);
            }
            return;
        }
    }
    QString entry;
    if (!body_.take(line, &entry))
        return;
    entries_.append(entry);
    const int n = int(entries_.size());
    if (n % 10 == 0) {
        emit countChanged(n);
        emit statusChanged(u"Retreiving List...."_s + QString::number(n));
    }
    bytes_ = capped(bytes_ + line.size());
}

bool ListSource::startHttp(const QString &location)
{
    reset(Kind::HttpList, location);
    const QUrl url(location, QUrl::StrictMode);
    const QString scheme = url.scheme().toLower();
    if (!url.isValid() || url.host().isEmpty() || (scheme != u"http"_s && scheme != u"https"_s)) {
        outcome_ = Outcome::InvalidLocation;
        return false;
    }
    http_ = new HttpListFetch(this);
    http_->limits = httpLimits_;
    connect(http_, &HttpListFetch::progress, this, [this](int n) {
        const int tens = n / 10 * 10;
        if (tens > reportedCount_) {
            reportedCount_ = tens;
            emit countChanged(tens);
            emit statusChanged(u"Retreiving List...."_s + QString::number(tens));
        }
    });
    connect(http_, &HttpListFetch::finished, this, &ListSource::httpFinished);
    http_->start(url);
    return true;
}

void ListSource::httpFinished()
{
    bytes_ = capped(http_->bytesReceived());
    problem_ = http_->problem();
    if (!problem_.isEmpty()) {
        emit statusChanged(problem_);
        return end(Outcome::Failed);
    }
    entries_ = http_->list().entries;
    const QString skipped = HttpList::skippedText(http_->list());
    emit statusChanged(u"Connection closed..."_s + QString::number(bytes_) + u" bytes received."_s
                       + (skipped.isEmpty() ? QString() : u' ' + skipped));
    end(Outcome::Listed);
}

bool ListSource::startMaster(const QString &host, quint16 port)
{
    reset(Kind::Master, u"master://"_s + host + u':' + QString::number(port));
    if (host.isEmpty()) {
        outcome_ = Outcome::InvalidLocation;
        return false;
    }
    master_ = new MasterClient(this);
    master_->timeoutMs = masterTimeoutMs_;
    connect(master_, &MasterClient::finished, this, &ListSource::masterFinished);
    master_->start(host, port);
    return true;
}

void ListSource::masterFinished()
{
    problem_ = master_->errorText();
    if (!problem_.isEmpty())
        return end(Outcome::Failed);
    entries_ = master_->entries();
    bytes_ = capped(master_->counts().bytes);
    const int n = int(entries_.size());
    emit countChanged(n);
    emit statusChanged(u"Master server answered: "_s + QString::number(n) + u" servers, "_s
                       + QString::number(bytes_) + u" bytes received."_s);
    end(Outcome::Listed);
}

void ListSource::startFile(const QString &path)
{
    reset(Kind::ListFile, path);
    if (const auto bytes = readFile(u"list"_s)) {
        for (const QString &line : SplitLines(WireText::fromBytes(*bytes)))
            entries_.append(TrimSpaces(line));
    }
}

void ListSource::startFavoritesFile(const QString &path)
{
    reset(Kind::FavoritesFile, path);
    if (const auto bytes = readFile(u"favorites"_s)) {
        for (const Favorite &favorite : FavFile::parse(*bytes))
            entries_.append(favorite.address);
    }
}

// The whole file location_ names; the start ends here either way (Listed, or
// Failed with the problem).
std::optional<QByteArray> ListSource::readFile(const QString &kindName)
{
    const BoundedFile file = BoundedFile::read(location_, kMaxFileBytes);
    if (file.status == BoundedFile::Status::Read) {
        endLater(Outcome::Listed);
        return file.bytes;
    }
    problem_ = file.status == BoundedFile::Status::TooLarge
                   ? u"The %1 file %2 holds more than 16 MiB: too large to be one."_s.arg(kindName, location_)
                   : u"Cannot read the %1 file %2: %3"_s.arg(kindName, location_, file.problem);
    endLater(Outcome::Failed);
    return std::nullopt;
}

void ListSource::dropSocket()
{
    if (socket_) {
        socket_->disconnect(this);
        socket_->deleteLater();  // it may be the sender of the event being handled
        socket_ = nullptr;
    }
}

void ListSource::cancel()
{
    ++generation_;
    dropSocket();
    if (http_) {
        http_->disconnect(this);
        http_->abort();
        http_->deleteLater();
        http_ = nullptr;
    }
    if (master_) {
        master_->disconnect(this);
        master_->abort();
        master_->deleteLater();
        master_ = nullptr;
    }
    if (outcome_ == Outcome::Running)
        outcome_ = Outcome::Cancelled;
}

void ListSource::setMasterTimeout(int ms) { masterTimeoutMs_ = ms; }

void ListSource::setHttpLimits(const HttpListFetch::Limits &limits) { httpLimits_ = limits; }
