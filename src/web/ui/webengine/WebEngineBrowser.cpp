#include "web/ui/webengine/WebEngineBrowser.h"

#include "web/LocalPages.h"
#include "web/ui/webengine/PrepareEngine.h"

#include <QBuffer>
#include <QChildEvent>
#include <QPalette>
#include <QWebEngineDownloadRequest>
#include <QWebEngineHistory>
#include <QWebEngineLoadingInfo>
#include <QWebEngineNewWindowRequest>
#include <QWebEnginePage>
#include <QWebEngineProfile>
#include <QWebEngineSettings>
#include <QWebEngineUrlRequestInfo>
#include <QWebEngineUrlRequestJob>
#include <QWebEngineView>
#include <functional>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

NavigationCause CauseOf(QWebEnginePage::NavigationType type)
{
    switch (type) {
    case QWebEnginePage::NavigationTypeTyped:
    case QWebEnginePage::NavigationTypeBackForward:
    case QWebEnginePage::NavigationTypeReload:
        return NavigationCause::Asked;
    case QWebEnginePage::NavigationTypeLinkClicked:
    case QWebEnginePage::NavigationTypeFormSubmitted:
        return NavigationCause::Clicked;
    default:
        return NavigationCause::Page;
    }
}

bool KeepsWebOut(const WebBrowser& browser)
{
    return !browser.IsWebKeptOut || browser.IsWebKeptOut();
}

NavigationAnswer AnswerOf(const WebBrowser& browser, const QUrl& from, const QUrl& to, NavigationCause cause)
{
    const NavigationAnswer answer = AnswerNavigation(from, to, cause, KeepsWebOut(browser) ? Web::KeptOut : Web::Shown);
    const bool isPage = answer == NavigationAnswer::LoadFile && browser.IsKnownPage && browser.IsKnownPage(to);
    return isPage ? NavigationAnswer::Show : answer;
}

/// A page that decides where it may go.
class BrowserPage : public QWebEnginePage {
public:
    BrowserPage(WebBrowser& browser, QWebEngineProfile* profile) : QWebEnginePage(profile), m_browser(browser) {}

protected:
    bool acceptNavigationRequest(const QUrl& to, NavigationType type, bool isMainFrame) override
    {
        if (!isMainFrame)
            return MayRequest(url(), to);
        const NavigationAnswer answer = AnswerOf(m_browser, url(), to, CauseOf(type));
        if (answer == NavigationAnswer::LoadFile && m_browser.LoadFile)
            m_browser.LoadFile(to);
        if (answer == NavigationAnswer::OpenItem && m_browser.OpenItem)
            m_browser.OpenItem(*ItemOfAddress(to));
        if (answer == NavigationAnswer::OpenOutside && m_browser.OpenOutside)
            m_browser.OpenOutside(to);
        if (answer == NavigationAnswer::KeepOut && m_browser.KeptOut)
            m_browser.KeptOut(to);
        if (answer == NavigationAnswer::Show && m_browser.BeforeNavigate)
            m_browser.BeforeNavigate(to);
        return answer == NavigationAnswer::Show;
    }
    void javaScriptConsoleMessage(JavaScriptConsoleMessageLevel, const QString&, int, const QString&) override {}

private:
    WebBrowser& m_browser;
};

} // namespace

void LocalPageHandler::requestStarted(QWebEngineUrlRequestJob* job)
{
    const std::optional<LocalPageFile> file = ReadLocalPageFile(m_folder, job->requestUrl());
    if (!file)
        return job->fail(QWebEngineUrlRequestJob::UrlNotFound);
    auto* content = new QBuffer(job);
    content->setData(file->Content);
    job->reply(file->MimeType, content);
}

void RequestGuard::interceptRequest(QWebEngineUrlRequestInfo& info)
{
    const bool isKeptOut = IsWebAddress(info.requestUrl()) && KeepsWebOut(m_browser);
    if (isKeptOut || info.resourceType() != QWebEngineUrlRequestInfo::ResourceTypeMainFrame)
        info.block(isKeptOut || !MayRequest(info.firstPartyUrl(), info.requestUrl()));
}

bool GestureWatch::eventFilter(QObject* watched, QEvent* event)
{
    const bool isGesture = event->type() == QEvent::MouseButtonPress || event->type() == QEvent::KeyPress;
    if (isGesture && m_browser.Gestured)
        m_browser.Gestured();
    if (event->type() == QEvent::ChildAdded) // the part that gets the events is made with the first page
        static_cast<QChildEvent*>(event)->child()->installEventFilter(this);
    return QObject::eventFilter(watched, event);
}

WebEngineBrowser::WebEngineBrowser()
{
    PrepareEngine();
    m_profile = std::make_unique<QWebEngineProfile>();
    m_profile->installUrlSchemeHandler(LocalPageScheme, &m_localPages);
    m_profile->setUrlRequestInterceptor(&m_guard);
    m_view = std::make_unique<QWebEngineView>();
    m_view->installEventFilter(&m_watch);
    auto* page = new BrowserPage(*this, m_profile.get());
    page->setParent(m_view.get());
    m_view->setPage(page);
    QWebEngineSettings* settings = page->settings();
    settings->setAttribute(QWebEngineSettings::LocalContentCanAccessFileUrls, false);
    settings->setAttribute(QWebEngineSettings::LocalContentCanAccessRemoteUrls, false);
    settings->setAttribute(QWebEngineSettings::FullScreenSupportEnabled, false);
    settings->setAttribute(QWebEngineSettings::ScreenCaptureEnabled, false);
    Connect();
    ConnectWhatLeadsOut();
    HideActions();
}

WebEngineBrowser::~WebEngineBrowser()
{
    m_view.reset();
}

void WebEngineBrowser::Connect()
{
    QWebEnginePage* page = m_view->page();
    QObject::connect(page, &QWebEnginePage::loadProgress, page, [this](int percent) {
        if (ProgressChange)
            ProgressChange(percent);
    });
    QObject::connect(page, &QWebEnginePage::loadFinished, page, [this, page] {
        TellCommandState();
        if (DocumentComplete)
            DocumentComplete(page->url());
    });
    QObject::connect(page, &QWebEnginePage::loadingChanged, page, [this](const QWebEngineLoadingInfo& info) {
        if (info.status() == QWebEngineLoadingInfo::LoadFailedStatus && LoadFailed)
            LoadFailed(info.url(), info.errorString());
    });
    QObject::connect(page, &QWebEnginePage::renderProcessTerminated, page, [this](auto status, int) {
        if (status != QWebEnginePage::NormalTerminationStatus && Died)
            Died();
    });
    QObject::connect(page, &QWebEnginePage::urlChanged, page,
                     std::bind_front(&WebEngineBrowser::TellCommandState, this));
    QObject::connect(page, &QWebEnginePage::linkHovered, page, [this](const QString& address) {
        if (LinkHovered)
            LinkHovered(address);
    });
}

void WebEngineBrowser::ConnectWhatLeadsOut()
{
    QWebEnginePage* page = m_view->page();
    // One window is enough: what a page wants to open in another comes here.
    QObject::connect(page, &QWebEnginePage::newWindowRequested, page, [this](QWebEngineNewWindowRequest& request) {
        const bool clicked = request.isUserInitiated();
        const QUrl url = request.requestedUrl();
        const NavigationAnswer answer = AnswerOf(*this, m_view->url(), url,
                                                 clicked ? NavigationCause::Clicked : NavigationCause::Page);
        if (answer == NavigationAnswer::Show)
            m_view->setUrl(url);
        else if (answer == NavigationAnswer::KeepOut && KeptOut)
            KeptOut(url);
        else if (answer == NavigationAnswer::LoadFile && LoadFile)
            LoadFile(url);
        else if (answer == NavigationAnswer::OpenItem && OpenItem)
            OpenItem(*ItemOfAddress(url));
    });
    QObject::connect(page, &QWebEnginePage::featurePermissionRequested, page,
                     [page](const QUrl& origin, QWebEnginePage::Feature feature) {
                         page->setFeaturePermission(origin, feature, QWebEnginePage::PermissionDeniedByUser);
                     });
    QObject::connect(m_profile.get(), &QWebEngineProfile::downloadRequested, page,
                     [this](QWebEngineDownloadRequest* download) {
                         download->cancel();
                         if (LoadFile)
                             LoadFile(download->url());
                     });
}

void WebEngineBrowser::HideActions()
{
    static constexpr QWebEnginePage::WebAction actions[] = {QWebEnginePage::ViewSource,
                                                            QWebEnginePage::SavePage,
                                                            QWebEnginePage::OpenLinkInNewTab,
                                                            QWebEnginePage::OpenLinkInNewWindow,
                                                            QWebEnginePage::OpenLinkInNewBackgroundTab,
                                                            QWebEnginePage::DownloadLinkToDisk,
                                                            QWebEnginePage::DownloadImageToDisk,
                                                            QWebEnginePage::DownloadMediaToDisk};
    for (const QWebEnginePage::WebAction action : actions)
        m_view->page()->action(action)->setVisible(false);
}

void WebEngineBrowser::TellCommandState()
{
    const QWebEngineHistory* history = m_view->page()->history();
    if (CommandStateChange)
        CommandStateChange(history->canGoBack(), history->canGoForward());
}

QWidget* WebEngineBrowser::Widget()
{
    return m_view.get();
}

void WebEngineBrowser::Navigate(const QUrl& url)
{
    m_view->setUrl(url);
}

void WebEngineBrowser::GoBack()
{
    m_view->back();
}

void WebEngineBrowser::GoForward()
{
    m_view->forward();
}

void WebEngineBrowser::Stop()
{
    m_view->stop();
}

void WebEngineBrowser::Reload()
{
    m_view->reload();
}

} // namespace qb

extern "C" Q_DECL_EXPORT qb::WebBrowser* quillbase_make_web_browser()
{
    return new qb::WebEngineBrowser;
}
