#pragma once

#include <QByteArray>
#include <QString>
#include <QUrl>
#include <functional>
#include <memory>

namespace qb {

/// What a server says before it sends a file.
struct FetchAnswer {
    int Status = 0; ///< of HTTP
    QString Reason; ///< in the server's words
    QUrl Url;       ///< where the file was, after all redirections
    QByteArray ContentType;
    QByteArray Disposition; ///< what it would have the file called
    QByteArray Range;       ///< of an answer in part: "bytes 5-9/10"
    QByteArray Validator;   ///< by which the file is known to be the same next time; empty: by nothing
    qint64 Length = -1;     ///< in bytes, of what comes; -1: it does not say
};

/// Fetches one file from the web, over http and https alone, whatever it is redirected to. What it calls must not
/// delete it.
class FileFetch {
public:
    virtual ~FileFetch() = default; ///< stops it

    /// Asks for the file, or for all of it from @p from on as long as it is the one of @p validator.
    virtual void Start(const QUrl& url, qint64 from, const QByteArray& validator) = 0;
    /// Nothing is called any more.
    virtual void Stop() = 0;

    /// False: nothing of it is wanted, and nothing else will be called.
    std::function<bool(const FetchAnswer& answer)> Answered;
    /// Bytes, in order. False as above.
    std::function<bool(const QByteArray& piece)> Received;
    /// Nothing more comes; empty when the server has sent all it wanted to, else why not.
    std::function<void(const QString& why)> Ended;
};
using FetchMaker = std::function<std::unique_ptr<FileFetch>(QString& reason)>;

} // namespace qb
