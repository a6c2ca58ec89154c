#include "web/ui/webengine/WebEngineEditor.h"

#include "web/LocalPages.h"
#include "web/ui/webengine/PrepareEngine.h"

#include <QBuffer>
#include <QCoreApplication>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QKeyEvent>
#include <QWebChannel>
#include <QWebEngineDownloadRequest>
#include <QWebEngineNewWindowRequest>
#include <QWebEnginePage>
#include <QWebEngineProfile>
#include <QWebEngineScript>
#include <QWebEngineScriptCollection>
#include <QWebEngineSettings>
#include <QWebEngineUrlRequestInfo>
#include <QWebEngineUrlRequestJob>
#include <QWebEngineView>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

constexpr QWebEngineScript::ScriptWorldId World = QWebEngineScript::ApplicationWorld;

QByteArray Resource(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// The editor's scripts as one, in their order.
QString Scripts()
{
    static const QStringList parts{u":/qtwebchannel/qwebchannel.js"_s, u":/pageeditor/parts.js"_s,
                                   u":/pageeditor/schema.js"_s,        u":/pageeditor/read.js"_s,
                                   u":/pageeditor/write.js"_s,         u":/pageeditor/commands.js"_s,
                                   u":/pageeditor/find.js"_s,          u":/pageeditor/view.js"_s};
    QByteArray all;
    for (const QString& part : parts)
        all += Resource(part) + '\n';
    return QString::fromUtf8(all);
}

/// A page that stays where it is.
class EditorPage : public QWebEnginePage {
public:
    EditorPage(const EditorPageHandler& pages, QWebEngineProfile* profile) : QWebEnginePage(profile), m_pages(pages) {}

protected:
    bool acceptNavigationRequest(const QUrl& to, NavigationType /*type*/, bool isMainFrame) override
    {
        return isMainFrame && to == m_pages.Address();
    }
    QStringList chooseFiles(FileSelectionMode, const QStringList&, const QStringList&) override { return {}; }
    void javaScriptConsoleMessage(JavaScriptConsoleMessageLevel, const QString& text, int line, const QString&) override
    {
        if (qEnvironmentVariableIsSet("QUILLBASE_TRACE_EDITOR"))
            qInfo("%s (%d)", qUtf8Printable(text), line);
    }

private:
    const EditorPageHandler& m_pages;
};

} // namespace

QUrl EditorPageHandler::Address() const
{
    return LocalPageUrl(m_place.Page + u".htm"_s);
}

void EditorPageHandler::requestStarted(QWebEngineUrlRequestJob* job)
{
    std::optional<LocalPageFile> file;
    if (job->requestUrl() == Address())
        file = LocalPageFile{Resource(u":/pageeditor/editor.html"_s), "text/html"};
    else
        file = ReadLocalPageFile(m_place.PagesFolder, job->requestUrl());
    if (!file)
        return job->fail(QWebEngineUrlRequestJob::UrlNotFound);
    auto* content = new QBuffer(job);
    content->setData(file->Content);
    job->reply(file->MimeType, content);
}

void EditorGuard::interceptRequest(QWebEngineUrlRequestInfo& info)
{
    if (info.resourceType() != QWebEngineUrlRequestInfo::ResourceTypeMainFrame)
        info.block(!MayRequest(info.firstPartyUrl(), info.requestUrl()));
    else
        info.block(!IsLocalPage(info.requestUrl()));
}

void EditorBridge::Tell(const QString& what, const QString& json)
{
    if (m_pane.Told)
        m_pane.Told(what, QJsonDocument::fromJson(json.toUtf8()).object());
}

WebEngineEditor::WebEngineEditor()
{
    PrepareEngine();
    m_profile = std::make_unique<QWebEngineProfile>();
    m_profile->installUrlSchemeHandler(LocalPageScheme, &m_pages);
    m_profile->setUrlRequestInterceptor(&m_guard);
    m_view = std::make_unique<QWebEngineView>();
    auto* page = new EditorPage(m_pages, m_profile.get());
    page->setParent(m_view.get());
    m_view->setPage(page);
    m_view->setContextMenuPolicy(Qt::NoContextMenu);
    m_view->setAcceptDrops(true);
    m_channel = std::make_unique<QWebChannel>();
    m_channel->registerObject(u"bridge"_s, &m_bridge);
    page->setWebChannel(m_channel.get(), World);
    QWebEngineScript script;
    script.setName(u"editor"_s);
    script.setSourceCode(Scripts());
    script.setInjectionPoint(QWebEngineScript::DocumentReady);
    script.setWorldId(World);
    page->scripts().insert(script);
    Restrict();
    Connect();
}

WebEngineEditor::~WebEngineEditor()
{
    m_view.reset();
}

/// That no script of a page runs is said by the policy of the editor's own page. Scripts can't be switched off beside:
/// the timers of the editor's own would stop too.
void WebEngineEditor::Restrict()
{
    static constexpr QWebEngineSettings::WebAttribute denied[] = {QWebEngineSettings::LocalContentCanAccessFileUrls,
                                                                  QWebEngineSettings::LocalContentCanAccessRemoteUrls,
                                                                  QWebEngineSettings::PluginsEnabled,
                                                                  QWebEngineSettings::FullScreenSupportEnabled,
                                                                  QWebEngineSettings::ScreenCaptureEnabled,
                                                                  QWebEngineSettings::NavigateOnDropEnabled,
                                                                  QWebEngineSettings::DnsPrefetchEnabled,
                                                                  QWebEngineSettings::AutoLoadIconsForPage,
                                                                  QWebEngineSettings::HyperlinkAuditingEnabled};
    for (const QWebEngineSettings::WebAttribute attribute : denied)
        m_view->page()->settings()->setAttribute(attribute, false);
    m_view->page()->settings()->setAttribute(QWebEngineSettings::FocusOnNavigationEnabled, true);
}

void WebEngineEditor::Connect()
{
    QWebEnginePage* page = m_view->page();
    QObject::connect(page, &QWebEnginePage::renderProcessTerminated, page, [this](auto status, int) {
        if (status != QWebEnginePage::NormalTerminationStatus && Died)
            Died();
    });
    QObject::connect(page, &QWebEnginePage::featurePermissionRequested, page,
                     [page](const QUrl& origin, QWebEnginePage::Feature feature) {
                         page->setFeaturePermission(origin, feature, QWebEnginePage::PermissionDeniedByUser);
                     });
    QObject::connect(m_profile.get(), &QWebEngineProfile::downloadRequested, page,
                     [](QWebEngineDownloadRequest* download) { download->cancel(); });
}

QWidget* WebEngineEditor::Widget()
{
    return m_view.get();
}

void WebEngineEditor::Start(const PicturePlace& place)
{
    m_pages.SetPlace(place);
    m_view->setUrl(m_pages.Address());
}

void WebEngineEditor::Call(const QString& function, const QJsonValue& argument, const PageEditing::Answer& answer)
{
    const QByteArray given = QJsonDocument(QJsonArray{argument}).toJson(QJsonDocument::Compact);
    const QString script = u"PageEditor.answer(\"%1\", %2)"_s.arg(function, QString::fromUtf8(given));
    m_view->page()->runJavaScript(script, World, [answer](const QVariant& value) {
        if (answer)
            answer(value.isValid() ? QJsonValue::fromVariant(value) : QJsonValue(QJsonValue::Undefined));
    });
}

void WebEngineEditor::Do(Edit edit)
{
    static constexpr QWebEnginePage::WebAction actions[] = {QWebEnginePage::Cut, QWebEnginePage::Copy,
                                                            QWebEnginePage::Paste, QWebEnginePage::PasteAndMatchStyle};
    m_view->triggerPageAction(actions[size_t(edit)]);
}

void WebEngineEditor::SendMark()
{
    QWidget* surface = m_view->focusProxy() ? m_view->focusProxy() : m_view.get();
    for (const QEvent::Type type : {QEvent::KeyPress, QEvent::KeyRelease}) {
        QKeyEvent key(type, Qt::Key_F24, Qt::NoModifier);
        QCoreApplication::sendEvent(surface, &key);
    }
}

} // namespace qb

extern "C" Q_DECL_EXPORT qb::EditorPane* quillbase_make_editor_pane()
{
    return new qb::WebEngineEditor;
}
