#pragma once

#include "web/ui/WebBrowser.h"

#include <QWebEngineUrlRequestInterceptor>
#include <QWebEngineUrlSchemeHandler>
#include <memory>

class QWebEngineProfile;
class QWebEngineView;

namespace qb {

/// Gives the browser the files of the folder of web pages.
class LocalPageHandler : public QWebEngineUrlSchemeHandler {
public:
    void requestStarted(QWebEngineUrlRequestJob* job) override;
    /// The folder whose files are given from now on; with an empty one each request fails.
    void SetFolder(const QString& folder) { m_folder = folder; }

private:
    QString m_folder;
};

/// Keeps each page to what it may load.
class RequestGuard : public QWebEngineUrlRequestInterceptor {
public:
    explicit RequestGuard(const WebBrowser& browser) : m_browser(browser) {}
    void interceptRequest(QWebEngineUrlRequestInfo& info) override;

private:
    const WebBrowser& m_browser;
};

/// Sees the user's clicks and keys before the page does.
class GestureWatch : public QObject {
public:
    explicit GestureWatch(const WebBrowser& browser) : m_browser(browser) {}
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    const WebBrowser& m_browser;
};

/// The browser on Qt WebEngine. It keeps nothing of what was visited.
class WebEngineBrowser : public WebBrowser {
public:
    /// The first one settles, for the whole program, what must be settled before the engine starts: the scheme of
    /// local pages, what it writes to the log, and that root has no sandbox: to root it shows local pages only.
    WebEngineBrowser();
    ~WebEngineBrowser() override;

    QWidget* Widget() override;
    void SetPages(const QString& folder) override { m_localPages.SetFolder(folder); }
    void Navigate(const QUrl& url) override;
    void GoBack() override;
    void GoForward() override;
    void Stop() override;
    void Reload() override;

private:
    void Connect();
    void ConnectWhatLeadsOut();
    void HideActions();
    void TellCommandState();

    LocalPageHandler m_localPages;
    RequestGuard m_guard{*this};
    GestureWatch m_watch{*this};
    std::unique_ptr<QWebEngineProfile> m_profile; ///< outlives the page
    std::unique_ptr<QWebEngineView> m_view;
};

} // namespace qb
