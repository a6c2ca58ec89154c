#pragma once

#include "platform/system/Prompts.h"

#include <QPointer>
#include <QWidget>

namespace qb {

/// Prompts with real dialogs over the active window.
class DialogPrompts : public Prompts {
public:
    MsgBoxResult MsgBox(const Message& message) override;
    ChosenText ChooseText(const TextChoice& choice) override;
    std::optional<QString> InputBox(const QString& text, const QString& caption, const QString& preset) override;
    QString FileName(const FileQuestion& question) override;
    QStringList FileNames(const FileQuestion& question) override;
    bool ShowError(const QString& description) override;
    void OperationSuccessful(const QString& text, const QString& filePath) override;
    std::unique_ptr<Information> InformUser(const QString& text) override;
};

} // namespace qb
