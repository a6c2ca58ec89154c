#include "web/DownloadAddress.h"

#include "platform/system/SafeNames.h"

#include <QRegularExpression>
#include <QStringDecoder>
#include <QStringList>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

/// A name in UTF-8 where it is that, else a character a byte.
QString Decoded(const QByteArray& bytes)
{
    QStringDecoder decoder(QStringDecoder::Utf8);
    const QString text = decoder.decode(bytes);
    return decoder.hasError() ? QString::fromLatin1(bytes) : text;
}

/// "filename*=UTF-8''na%C3%AFve.txt" counts before "filename="naive.txt"".
QString NameInDisposition(const QByteArray& disposition)
{
    static const QRegularExpression extended(uR"((?:^|;)\s*filename\*\s*=\s*(?:utf-8|iso-8859-1)'[^']*'([^;\s]+))"_s,
                                             QRegularExpression::CaseInsensitiveOption);
    static const QRegularExpression plain(uR"~((?:^|;)\s*filename\s*=\s*(?:"((?:[^"\\]|\\.)*)"|([^;\s"]+)))~"_s,
                                          QRegularExpression::CaseInsensitiveOption);
    const QString text = QString::fromLatin1(disposition);
    if (const QRegularExpressionMatch match = extended.match(text); match.hasMatch())
        return Decoded(QByteArray::fromPercentEncoding(match.captured(1).toLatin1()));
    const QRegularExpressionMatch match = plain.match(text);
    const QString quoted = match.captured(1);
    return Decoded((quoted.isEmpty() ? match.captured(2) : quoted).toLatin1());
}

/// Only what stands behind the last separator of any system.
QString LastPart(const QString& path)
{
    return path.mid(path.lastIndexOf(QRegularExpression(u"[/\\\\]"_s)) + 1);
}

} // namespace

bool CancelNavigate(const QString& address)
{
    constexpr qsizetype PiecesOfAPage = 4; // "http:", "", the server, a name
    constexpr qsizetype Ending = 4;
    static const QStringList pages{u".HTM"_s, u"HTML"_s, u".ASP"_s, u".ODT"_s, u".XML"_s};
    const QStringList pieces = address.split(u'/');
    if (pieces.size() <= PiecesOfAPage || address.startsWith("res://"_L1))
        return false;
    const QString ending = pieces.last().right(Ending).toUpper();
    return !pages.contains(ending) && ending.size() == Ending && ending.startsWith(u'.');
}

QString DownloadName(const QUrl& url, const QByteArray& disposition)
{
    QString name = LastPart(NameInDisposition(disposition)).trimmed();
    if (name.isEmpty() || name == u"." || name == u"..")
        name = LastPart(url.path(QUrl::FullyDecoded));
    const bool isNone = name.isEmpty() || name == u"." || name == u"..";
    return isNone ? u"download"_s : SafeName(name);
}

} // namespace qb
