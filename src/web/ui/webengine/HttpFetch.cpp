#include "web/ui/webengine/HttpFetch.h"

#include <QNetworkRequest>
#include <chrono>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

constexpr qint64 Piece = 1 << 16; ///< bytes that are handed on at a time
constexpr qint64 Ahead = 1 << 20; ///< bytes that may wait
constexpr int MostRedirections = 10;
constexpr std::chrono::seconds Patience(60); ///< without a byte

bool IsHttp(const QUrl& url)
{
    return (url.scheme() == u"http" || url.scheme() == u"https") && !url.host().isEmpty();
}

/// By which the server tells next time that it is the same file. A weak mark does not promise the same bytes.
QByteArray ValidatorOf(const QNetworkReply& reply)
{
    if (reply.rawHeader("Accept-Ranges").trimmed().toLower() == "none")
        return {};
    const QByteArray tag = reply.rawHeader("ETag").trimmed();
    return tag.isEmpty() || tag.startsWith("W/") ? reply.rawHeader("Last-Modified").trimmed() : tag;
}

} // namespace

void HttpFetch::Start(const QUrl& url, qint64 from, const QByteArray& validator)
{
    m_from = from;
    m_validator = validator;
    m_network.setRedirectPolicy(QNetworkRequest::ManualRedirectPolicy);
    if (IsHttp(url))
        return Ask(url);
    QMetaObject::invokeMethod(
        this, [this] { Ended(u"it is no address of the web"_s); }, Qt::QueuedConnection);
}

void HttpFetch::Ask(const QUrl& url)
{
    QNetworkRequest request(url);
    request.setAttribute(QNetworkRequest::CookieLoadControlAttribute, QNetworkRequest::Manual);
    request.setAttribute(QNetworkRequest::CookieSaveControlAttribute, QNetworkRequest::Manual);
    request.setAttribute(QNetworkRequest::AuthenticationReuseAttribute, QNetworkRequest::Manual);
    request.setRawHeader("Accept-Encoding", "identity"); // the bytes as they are
    request.setTransferTimeout(int(std::chrono::milliseconds(Patience).count()));
    if (m_from > 0) {
        request.setRawHeader("Range", "bytes=" + QByteArray::number(m_from) + '-');
        request.setRawHeader("If-Range", m_validator);
    }
    m_isAnswered = false;
    m_reply = m_network.get(request);
    m_reply->setReadBufferSize(Ahead);
    connect(m_reply, &QNetworkReply::metaDataChanged, this, &HttpFetch::HeadArrived);
    connect(m_reply, &QNetworkReply::readyRead, this, &HttpFetch::BytesArrived);
    connect(m_reply, &QNetworkReply::finished, this, &HttpFetch::ReplyFinished);
}

void HttpFetch::Stop()
{
    if (!m_reply)
        return;
    QNetworkReply* reply = std::exchange(m_reply, nullptr);
    reply->disconnect(this);
    reply->abort();
    reply->deleteLater();
}

void HttpFetch::HeadArrived()
{
    const QUrl target = m_reply->attribute(QNetworkRequest::RedirectionTargetAttribute).toUrl();
    if (target.isEmpty())
        return;
    const QUrl from = m_reply->url();
    const QUrl to = from.resolved(target);
    Stop();
    const bool isLessSafe = from.scheme() == u"https" && to.scheme() != u"https";
    if (!IsHttp(to) || isLessSafe)
        return Ended(u"the server leads to '%1', which is not followed"_s.arg(to.toDisplayString()));
    if (++m_redirections > MostRedirections)
        return Ended(u"the server leads on without end"_s);
    Ask(to);
}

FetchAnswer HttpFetch::AnswerOf(const QNetworkReply& reply) const
{
    const QVariant length = reply.header(QNetworkRequest::ContentLengthHeader);
    return {.Status = reply.attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt(),
            .Reason = reply.attribute(QNetworkRequest::HttpReasonPhraseAttribute).toString(),
            .Url = reply.url(),
            .ContentType = reply.rawHeader("Content-Type").trimmed().toLower(),
            .Disposition = reply.rawHeader("Content-Disposition"),
            .Range = reply.rawHeader("Content-Range"),
            .Validator = ValidatorOf(reply),
            .Length = length.isValid() ? length.toLongLong() : -1};
}

/// Once; false when nothing of it is wanted.
bool HttpFetch::TellAnswer()
{
    if (std::exchange(m_isAnswered, true))
        return true;
    if (Answered(AnswerOf(*m_reply)))
        return true;
    Stop();
    return false;
}

void HttpFetch::BytesArrived()
{
    if (!TellAnswer())
        return;
    while (m_reply && m_reply->bytesAvailable() > 0) {
        if (!Received(m_reply->read(Piece)))
            return Stop();
    }
}

void HttpFetch::ReplyFinished()
{
    const bool hasStatus = m_reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).isValid();
    if (hasStatus && !TellAnswer()) // also of an empty file
        return;
    BytesArrived();
    if (!m_reply)
        return;
    const QString why = m_reply->error() == QNetworkReply::NoError ? QString() : m_reply->errorString();
    Stop();
    Ended(why);
}

} // namespace qb

extern "C" Q_DECL_EXPORT qb::FileFetch* quillbase_make_file_fetch()
{
    return new qb::HttpFetch;
}
