#pragma once

#include "web/FileFetch.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QObject>

namespace qb {

/// Fetches by http and https, with no memory of former visits. It follows redirections within these two alone, and from
/// https to https only; reads no faster than the file is written.
class HttpFetch : public QObject, public FileFetch {
public:
    ~HttpFetch() override { Stop(); }

    void Start(const QUrl& url, qint64 from, const QByteArray& validator) override;
    void Stop() override;

private:
    void Ask(const QUrl& url);
    void HeadArrived();
    void BytesArrived();
    void ReplyFinished();
    bool TellAnswer();
    FetchAnswer AnswerOf(const QNetworkReply& reply) const;

    QNetworkAccessManager m_network;
    QNetworkReply* m_reply = nullptr;
    qint64 m_from = 0;
    QByteArray m_validator;
    int m_redirections = 0;
    bool m_isAnswered = false;
};

} // namespace qb
