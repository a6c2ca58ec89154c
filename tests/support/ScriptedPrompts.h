#pragma once

#include "platform/system/Prompts.h"

#include <QStringList>
#include <deque>

namespace qb::test {

/// Prompts that answer by a script and write down what was asked. A question that the script
/// does not expect fails the test; so does an answer left over at the end.
class ScriptedPrompts : public Prompts {
public:
    ScriptedPrompts();
    ~ScriptedPrompts() override;

    void ExpectMsgBox(const QString& caption, MsgBoxResult answer = MsgBoxResult::Ok);
    void ExpectTextChoice(ChosenText answer);
    void ExpectInputBox(const QString& caption, std::optional<QString> answer);
    void ExpectFileNames(const QString& title, const QStringList& answer);
    void ExpectFileName(const QString& title, const QString& answer);
    void ExpectError(bool report = false);

    QList<Message> Messages;   ///< that were shown
    QList<TextChoice> Choices; ///< of texts
    QStringList InputTexts;    ///< texts of input boxes
    QStringList InputPresets;
    QList<FileQuestion> Questions; ///< file dialogs
    QStringList Errors;            ///< descriptions

    MsgBoxResult MsgBox(const Message& message) override;
    ChosenText ChooseText(const TextChoice& choice) override;
    std::optional<QString> InputBox(const QString& text, const QString& caption, const QString& preset) override;
    QString FileName(const FileQuestion& question) override;
    QStringList FileNames(const FileQuestion& question) override;
    bool ShowError(const QString& description) override;
    void OperationSuccessful(const QString& text, const QString& filePath) override;
    std::unique_ptr<Information> InformUser(const QString& text) override;

private:
    struct Step {
        enum { MsgBoxStep, TextChoiceStep, InputBoxStep, FileNameStep, FileNamesStep, ErrorStep } Kind;
        QString Caption;
        MsgBoxResult Answer = MsgBoxResult::Ok;
        std::optional<QString> Text = {};
        bool Report = false;
        ChosenText Chosen = ChosenText::Cancel;
        QStringList Files = {};
    };
    Step Next(decltype(Step::Kind) kind, const QString& caption, const QString& text);

    std::deque<Step> m_script;
    Prompts* m_before;
};

} // namespace qb::test
