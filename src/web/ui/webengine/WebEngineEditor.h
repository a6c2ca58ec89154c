#pragma once

#include "web/ui/EditorPane.h"

#include <QWebEngineUrlRequestInterceptor>
#include <QWebEngineUrlSchemeHandler>
#include <memory>

class QWebChannel;
class QWebEngineProfile;
class QWebEngineView;

namespace qb {

/// Gives the editor its own empty page under the address of the page that is edited, and the files that lie beside
/// that one; never the page itself.
class EditorPageHandler : public QWebEngineUrlSchemeHandler {
public:
    void requestStarted(QWebEngineUrlRequestJob* job) override;
    void SetPlace(const PicturePlace& place) { m_place = place; }
    QUrl Address() const;

private:
    PicturePlace m_place;
};

/// Lets the editor load nothing but what its page may.
class EditorGuard : public QWebEngineUrlRequestInterceptor {
public:
    void interceptRequest(QWebEngineUrlRequestInfo& info) override;
};

/// What the editor's scripts say. They run in a world of their own, which nothing of a page gets into.
class EditorBridge : public QObject {
    Q_OBJECT

public:
    explicit EditorBridge(EditorPane& pane) : m_pane(pane) {}
    /// Called by the scripts; @p json is an object.
    Q_INVOKABLE void Tell(const QString& what, const QString& json);

private:
    EditorPane& m_pane;
};

/// The editor's pane on Qt WebEngine.
class WebEngineEditor : public EditorPane {
public:
    WebEngineEditor();
    ~WebEngineEditor() override;

    QWidget* Widget() override;
    void Start(const PicturePlace& place) override;
    void Call(const QString& function, const QJsonValue& argument, const PageEditing::Answer& answer) override;
    void Do(Edit edit) override;
    void SendMark() override;

private:
    void Restrict();
    void Connect();

    EditorPageHandler m_pages;
    EditorGuard m_guard;
    EditorBridge m_bridge{*this};
    std::unique_ptr<QWebEngineProfile> m_profile; ///< outlives the page
    std::unique_ptr<QWebChannel> m_channel;
    std::unique_ptr<QWebEngineView> m_view;
};

} // namespace qb
