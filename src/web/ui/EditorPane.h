#pragma once

#include "web/PageEditing.h"

#include <functional>
#include <memory>

class QWidget;

namespace qb {

/// Shows a page that is edited, in the browser's engine, which is loaded with the first of them. Nothing of the page
/// runs in it, nothing is loaded but the files beside the page.
class EditorPane {
public:
    virtual ~EditorPane() = default;

    virtual QWidget* Widget() = 0;
    /// Begins anew: the pane says that it is ready.
    virtual void Start(const PicturePlace& place) = 0;
    virtual void Call(const QString& function, const QJsonValue& argument, const PageEditing::Answer& answer) = 0;

    enum class Edit { Cut, Copy, Paste, PastePlain };
    virtual void Do(Edit edit) = 0;
    /// Sends a key behind those that were typed, which the pane answers with "after_keys".
    virtual void SendMark() = 0;

    // Callbacks
    std::function<void(const QString& what, const QJsonObject& value)> Told;
    std::function<void()> Died;
};

/// Null when the browser's engine is not installed, with the reason in @p reason.
std::unique_ptr<EditorPane> MakeEditorPane(QString& reason);

} // namespace qb
