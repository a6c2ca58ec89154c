#pragma once

#include "web/FileFetch.h"

#include <QString>
#include <QUrl>
#include <functional>
#include <memory>

class QWidget;

namespace qb {

/// A browser. It stands in a library of its own that is loaded when the first one is made, so that
/// nothing of it is paid for before.
class WebBrowser {
public:
    virtual ~WebBrowser() = default;

    /// Shows the pages. It is the browser's and goes with it, whatever window it stands in.
    virtual QWidget* Widget() = 0;
    /// The folder of the local pages from now on.
    virtual void SetPages(const QString& folder) = 0;
    virtual void Navigate(const QUrl& url) = 0;
    virtual void GoBack() = 0;
    virtual void GoForward() = 0;
    virtual void Stop() = 0;
    virtual void Reload() = 0;

    /// Whether pages of the web are kept out; asked before each.
    std::function<bool()> IsWebKeptOut;

    // Callbacks
    std::function<void(const QUrl& url)> BeforeNavigate;
    std::function<void(bool back, bool forward)> CommandStateChange;
    std::function<void(int percent)> ProgressChange;
    std::function<void(const QUrl& url)> DocumentComplete;
    /// A page can't be shown; @p reason as the browser names it.
    std::function<void(const QUrl& url, const QString& reason)> LoadFailed;
    /// The process of the page that is shown has come to an end by itself. Reload and Navigate begin another.
    std::function<void()> Died;
    /// An address of the web was not shown, because the web is kept out.
    std::function<void(const QUrl& url)> KeptOut;
    /// The user has clicked, or pressed a key, in a page.
    std::function<void()> Gestured;
    /// An address that is not for the browser, as of a mail. A page may ask for it by itself.
    std::function<void(const QUrl& url)> OpenOutside;
    /// The address of a file to be loaded. A page may ask for it by itself.
    std::function<void(const QUrl& url)> LoadFile;
    /// A link of a page of the library to one of its items was clicked.
    std::function<void(qint64 item)> OpenItem;
    /// Whether an address that looks like that of a file is known to be that of a page.
    std::function<bool(const QUrl& url)> IsKnownPage;
    std::function<void(const QString& address)> LinkHovered;
};

/// Makes a browser; null when the library or what it needs is not installed, with the reason in
/// @p reason.
std::unique_ptr<WebBrowser> MakeWebBrowser(QString& reason);
/// Makes what fetches a file, which stands in the same library; null as above.
std::unique_ptr<FileFetch> MakeFileFetch(QString& reason);

} // namespace qb
