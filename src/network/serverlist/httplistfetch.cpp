#include "serverlist/httplistfetch.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QSslError>
#include <QTimer>

using namespace Qt::StringLiterals;

namespace {
// No status yet (headers to come) or a 2xx one. Redirects the client follows
// never reach here; one it does not follow is no list.
bool succeeded(const QNetworkReply *reply)
{
    const QVariant status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute);
    return !status.isValid() || (status.toInt() >= 200 && status.toInt() < 300);
}
}

HttpListFetch::HttpListFetch(QObject *parent)
    : QObject(parent), manager_(new QNetworkAccessManager(this)), idle_(new QTimer(this)), deadline_(new QTimer(this))
{
    idle_->setSingleShot(true);
    deadline_->setSingleShot(true);
    connect(idle_, &QTimer::timeout, this, [this] {
        fail(u"The list server sent nothing for %1 s."_s.arg(limits.idleMs / 1000.0));
    });
    connect(deadline_, &QTimer::timeout, this, [this] {
        fail(u"The list server did not send the whole list within %1 s."_s.arg(limits.totalMs / 1000.0));
    });
}

HttpListFetch::~HttpListFetch() { stop(); }

void HttpListFetch::start(const QUrl &url)
{
    stop();
    body_.clear();
    form_.reset();
    counted_ = 0;
    lines_ = 0;
    tlsProblem_.clear();
    list_ = HttpList::List();
    problem_.clear();
    QNetworkRequest request(url);
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::NoLessSafeRedirectPolicy);
    request.setMaximumRedirectsAllowed(limits.maxRedirects);
    request.setRawHeader("User-Agent", "Pulsebox/" PULSEBOX_VERSION);
    reply_ = manager_->get(request);
    connect(reply_, &QNetworkReply::readyRead, this, &HttpListFetch::read);
    connect(reply_, &QNetworkReply::finished, this, &HttpListFetch::done);
    connect(reply_, &QNetworkReply::sslErrors, this, [this](const QList<QSslError> &errors) {
        if (!errors.isEmpty())
            tlsProblem_ = errors.first().errorString();
    });
    idle_->start(limits.idleMs);
    deadline_->start(limits.totalMs);
}

void HttpListFetch::read()
{
    idle_->start(limits.idleMs);
    const QByteArray bytes = reply_->readAll();
    if (!succeeded(reply_))
        return;  // an error page: its status is the answer
    body_ += bytes;
    if (body_.size() > limits.maxBytes)
        return fail(HttpList::tooLargeText(limits.maxBytes));
    if (!form_)
        form_ = HttpList::formOf(body_, false);
    if (!form_)
        return;
    if (*form_ == HttpList::Form::Binary) {
        emit progress(static_cast<int>(body_.size() / 6));
        return;
    }
    lines_ += static_cast<int>(QByteArrayView(body_).sliced(counted_).count('\n'));
    counted_ = body_.size();
    emit progress(lines_);
}

void HttpListFetch::done()
{
    QNetworkReply *reply = reply_;
    if (!reply)
        return;
    if (const QString problem = problemOf(reply); !problem.isEmpty())
        return fail(problem);
    read();  // what is left
    if (!reply_)
        return;  // too large: already failed
    stop();
    list_ = HttpList::decode(body_);
    problem_ = list_.problem;
    if (problem_.isEmpty() && list_.entries.isEmpty() && list_.skipped > 0)
        problem_ = u"The list names no server. "_s + HttpList::skippedText(list_);
    emit finished();
}

QString HttpListFetch::problemOf(const QNetworkReply *reply) const
{
    switch (reply->error()) {
    case QNetworkReply::TooManyRedirectsError:
        return u"The list location redirects more than %1 times (in a loop?)."_s.arg(limits.maxRedirects);
    case QNetworkReply::InsecureRedirectError:
        return u"The list location redirects from https to plain http, which is not followed."_s;
    case QNetworkReply::SslHandshakeFailedError:
        return u"The secure connection to the list server failed: %1."_s
            .arg(tlsProblem_.isEmpty() ? reply->errorString() : tlsProblem_);
    default:
        break;
    }
    if (!succeeded(reply)) {
        const int status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
        const QString reason = reply->attribute(QNetworkRequest::HttpReasonPhraseAttribute).toString();
        return u"The list server answered %1 %2."_s.arg(status).arg(reason).replace(u" ."_s, u"."_s);
    }
    if (reply->error() != QNetworkReply::NoError)
        return u"The list could not be fetched: %1."_s.arg(reply->errorString());
    return QString();
}

void HttpListFetch::fail(const QString &problem)
{
    stop();
    problem_ = problem;
    emit finished();
}

void HttpListFetch::abort() { stop(); }

void HttpListFetch::stop()
{
    idle_->stop();
    deadline_->stop();
    if (!reply_)
        return;
    QNetworkReply *reply = reply_;
    reply_ = nullptr;
    reply->disconnect(this);
    reply->abort();
    reply->deleteLater();  // it may be the sender of the signal being handled
}
