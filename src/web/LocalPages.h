#pragma once

#include <QByteArray>
#include <QString>
#include <QUrl>
#include <optional>

namespace qb {

/// The pages of a library's folder of web pages have a scheme of their own in the browser:
/// quillbase-page://library/17.htm. No page of the web shares their origin and no file outside
/// that folder can be named in it.
inline constexpr const char* LocalPageScheme = "quillbase-page";

/// The address of a file of the folder of web pages.
QUrl LocalPageUrl(const QString& name);
bool IsLocalPage(const QUrl& url);

/// What the address box shows for an address: "local://Item17" for the page of item 17, nothing for
/// the default pages and a blank page, anything else as it is.
QString AddressText(const QUrl& url);
/// The address of what was typed into the address box. Text without a scheme gets "http://".
QUrl UrlOfAddress(const QString& text);

/// The item that a link of a page leads to, "local://Item17"; a number below 0 for one that the page's library did not
/// have when the page came ("local://Item-17", "local://Item0-17"); nothing for any other address.
std::optional<qint64> ItemOfAddress(const QUrl& url);

/// Whether it could lead anywhere at all.
bool IsAddress(const QUrl& url);

/// Why a page can't be shown, from the browser's name for it: "net::ERR_CONNECTION_REFUSED" is
/// "connection refused".
QString ReasonInWords(QString reason);

struct LocalPageFile {
    QByteArray Content;
    QByteArray MimeType;
};
/// What the browser gets for an address of a local page: a file of @p folder. A page comes with a
/// policy that lets it run no script and load nothing but files of that scheme. Nothing when there
/// is no such file, or its name leads out of the folder.
std::optional<LocalPageFile> ReadLocalPageFile(const QString& folder, const QUrl& url);

/// Whether the name of a file is that of a page.
bool IsPageName(const QString& name);
/// A page with a policy that lets it run no script and load nothing but files of @p scheme ("file").
QByteArray WithPagePolicy(QByteArray page, const QByteArray& scheme);

/// Whether @p page may load @p resource into itself. A local page reaches the files of its own
/// folder (17.htm those in 17/) and of the template's, a page of the web only the web.
bool MayRequest(const QUrl& page, const QUrl& resource);

enum class NavigationCause {
    Asked,   ///< by the user: typed, chosen, back, forward, reload
    Clicked, ///< a link of the page
    Page,    ///< by the page itself
};
enum class NavigationAnswer {
    Show,
    OpenOutside, ///< the desktop's application for such addresses is asked
    Refuse,
    KeepOut,  ///< it would be shown, were pages of the web
    LoadFile, ///< it is a file, which is no page
    OpenItem  ///< of the library
};
/// Whether pages of the web are shown at all.
enum class Web { Shown, KeptOut };
/// What becomes of a navigation of the whole view from one page to another.
NavigationAnswer AnswerNavigation(const QUrl& from, const QUrl& to, NavigationCause cause, Web web = Web::Shown);
/// Whether an address is one of the web: what must not be asked for while the web is kept out.
bool IsWebAddress(const QUrl& url);

} // namespace qb
