#include "web/LocalPages.h"

#include "exchange/PageNames.h"
#include "web/DownloadAddress.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QMimeDatabase>
#include <QRegularExpression>
#include <QStringDecoder>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

const QString Scheme = QString::fromLatin1(LocalPageScheme);
const QString Host = u"library"_s;
const QString ItemAddress = u"local://Item"_s;
const QString PageSuffix = u".htm"_s;

bool IsWeb(const QUrl& url)
{
    static const QStringList schemes{u"http"_s, u"https"_s, u"ws"_s, u"wss"_s, u"data"_s, u"blob"_s, u"about"_s, u""_s};
    return schemes.contains(url.scheme());
}

/// The file that a local address names, as all that looks at it must read it.
QString NameOf(const QUrl& url)
{
    return url.path(QUrl::FullyDecoded).replace(u'\\', u'/'); // as pages from elsewhere write it
}

} // namespace

bool IsPageName(const QString& name)
{
    return name.endsWith(PageSuffix, Qt::CaseInsensitive) || name.endsWith(u".html"_s, Qt::CaseInsensitive);
}

/// Set before everything else in the page but its document type, so that nothing is read without.
QByteArray WithPagePolicy(QByteArray page, const QByteArray& scheme)
{
    const QByteArray policy = "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; img-src "
                              + scheme + ": data:; media-src " + scheme + ":; font-src " + scheme + ":; style-src "
                              + scheme + ": 'unsafe-inline'; form-action 'none'; base-uri 'none'\">";
    const QByteArray mark = "\xef\xbb\xbf";
    if (page.startsWith("\xff\xfe") || page.startsWith("\xfe\xff"))
        page = mark + QString(QStringDecoder(QStringDecoder::Utf16).decode(page)).toUtf8();
    qsizetype at = page.startsWith(mark) ? mark.size() : 0;
    const qsizetype start = at;
    while (at < page.size() && QByteArray(" \t\r\n\f").contains(page[at]))
        ++at;
    const bool hasType = page.mid(at, 9).toLower() == "<!doctype";
    const qsizetype end = hasType ? page.indexOf('>', at) : -1;
    return page.insert(end < 0 ? start : end + 1, policy);
}

QUrl LocalPageUrl(const QString& name)
{
    QUrl url;
    url.setScheme(Scheme);
    url.setHost(Host);
    url.setPath(u'/' + name, QUrl::DecodedMode);
    return url;
}

bool IsLocalPage(const QUrl& url)
{
    return url.scheme() == Scheme;
}

QString AddressText(const QUrl& url)
{
    if (url == QUrl(u"about:blank"_s))
        return {};
    if (!IsLocalPage(url))
        return url.toDisplayString();
    const QString name = QFileInfo(url.path()).completeBaseName();
    bool isNumber = false;
    name.toLongLong(&isNumber);
    return isNumber ? ItemAddress + name : QString();
}

QUrl UrlOfAddress(const QString& text)
{
    const QString address = text.trimmed();
    if (address.startsWith(ItemAddress, Qt::CaseInsensitive))
        return LocalPageUrl(address.mid(ItemAddress.size()) + PageSuffix);
    return QUrl(address.contains(u"://"_s) ? address : u"http://"_s + address, QUrl::TolerantMode);
}

std::optional<qint64> ItemOfAddress(const QUrl& url)
{
    static const QRegularExpression name(u"\\Aitem((?:-|0-)+)?(\\d+)\\z"_s); // a host is in small letters
    const QRegularExpressionMatch match = name.match(url.host());
    const qint64 item = match.captured(2).toLongLong();
    if (url.scheme() != u"local"_s || item == 0)
        return std::nullopt;
    return match.hasCaptured(1) ? -item : item;
}

bool IsAddress(const QUrl& url)
{
    const bool needsHost = url.scheme() == u"http"_s || url.scheme() == u"https"_s;
    return url.isValid() && !url.isEmpty() && (!needsHost || !url.host().isEmpty());
}

QString ReasonInWords(QString reason)
{
    const QString prefix = u"net::ERR_"_s;
    return reason.startsWith(prefix) ? reason.sliced(prefix.size()).toLower().replace(u'_', u' ') : reason;
}

std::optional<LocalPageFile> ReadLocalPageFile(const QString& folder, const QUrl& url)
{
    if (!IsLocalPage(url) || folder.isEmpty())
        return std::nullopt;
    const QString base = QFileInfo(folder).canonicalFilePath();
    const QString name = NameOf(url);
    if (name.contains(QChar(u'\0')))
        return std::nullopt;
    const QString path = QFileInfo(base + name).canonicalFilePath();
    const bool isLink = path != QDir::cleanPath(base + name);
    if (base.isEmpty() || isLink || !path.startsWith(base + u'/') || !QFileInfo(path).isFile())
        return std::nullopt;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    QByteArray content = file.readAll();
    if (IsPageName(path))
        return LocalPageFile{WithPagePolicy(std::move(content), LocalPageScheme), "text/html"};
    return LocalPageFile{std::move(content), QMimeDatabase().mimeTypeForFile(path).name().toLatin1()};
}

bool MayRequest(const QUrl& page, const QUrl& resource)
{
    if (!IsLocalPage(page))
        return IsWeb(resource);
    const QString name = page.path();
    const QString own = name.left(name.lastIndexOf(u'.')) + u'/';
    const QString wanted = QDir::cleanPath(NameOf(resource));
    // The page of an item is a copy of the template, whose pictures stay where they are.
    static const QString ofTemplate = u'/' + TemplateFolder + u'/';
    return resource.scheme() == u"data"_s
           || (IsLocalPage(resource) && (wanted.startsWith(own) || wanted.startsWith(ofTemplate)));
}

bool IsWebAddress(const QUrl& url)
{
    static const QStringList schemes{u"http"_s, u"https"_s, u"ws"_s, u"wss"_s, u"ftp"_s};
    return schemes.contains(url.scheme());
}

NavigationAnswer AnswerNavigation(const QUrl& from, const QUrl& to, NavigationCause cause, Web web)
{
    const bool isPage = IsLocalPage(to) && IsPageName(to.path());
    const bool isWeb = to.scheme() == u"http"_s || to.scheme() == u"https"_s;
    if (cause == NavigationCause::Asked && (isPage || to == QUrl(u"about:blank"_s)))
        return NavigationAnswer::Show;
    if (cause == NavigationCause::Clicked && isPage && IsLocalPage(from))
        return NavigationAnswer::Show;
    if (ItemOfAddress(to))
        return cause == NavigationCause::Clicked && IsLocalPage(from) ? NavigationAnswer::OpenItem
                                                                      : NavigationAnswer::Refuse;
    if (isWeb && cause == NavigationCause::Page && IsLocalPage(from))
        return NavigationAnswer::Refuse;
    if (isWeb && web == Web::KeptOut)
        return NavigationAnswer::KeepOut;
    if (isWeb)
        return CancelNavigate(to.toString()) ? NavigationAnswer::LoadFile : NavigationAnswer::Show;
    if (IsLocalPage(to) || cause == NavigationCause::Page)
        return NavigationAnswer::Refuse;
    const bool isMail = to.scheme() == u"mailto"_s;
    return isMail || cause == NavigationCause::Asked ? NavigationAnswer::OpenOutside : NavigationAnswer::Refuse;
}

} // namespace qb
