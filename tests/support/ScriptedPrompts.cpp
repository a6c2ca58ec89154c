#include "support/ScriptedPrompts.h"

#include <QTest>

namespace qb::test {

using namespace Qt::StringLiterals;

ScriptedPrompts::ScriptedPrompts() : m_before(Prompts::SetCurrent(this)) {}

ScriptedPrompts::~ScriptedPrompts()
{
    Prompts::SetCurrent(m_before);
    for (const Step& step : m_script)
        QTest::qFail(qPrintable(u"was not asked: "_s + step.Caption), __FILE__, __LINE__);
}

void ScriptedPrompts::ExpectMsgBox(const QString& caption, MsgBoxResult answer)
{
    m_script.push_back({.Kind = Step::MsgBoxStep, .Caption = caption, .Answer = answer});
}

void ScriptedPrompts::ExpectTextChoice(ChosenText answer)
{
    m_script.push_back({.Kind = Step::TextChoiceStep, .Caption = u"Changed Twice"_s, .Chosen = answer});
}

void ScriptedPrompts::ExpectInputBox(const QString& caption, std::optional<QString> answer)
{
    m_script.push_back({.Kind = Step::InputBoxStep, .Caption = caption, .Text = std::move(answer)});
}

void ScriptedPrompts::ExpectFileNames(const QString& title, const QStringList& answer)
{
    m_script.push_back({.Kind = Step::FileNamesStep, .Caption = title, .Files = answer});
}

void ScriptedPrompts::ExpectFileName(const QString& title, const QString& answer)
{
    m_script.push_back({.Kind = Step::FileNameStep, .Caption = title, .Text = answer});
}

void ScriptedPrompts::ExpectError(bool report)
{
    m_script.push_back({.Kind = Step::ErrorStep, .Caption = {}, .Report = report});
}

ScriptedPrompts::Step ScriptedPrompts::Next(decltype(Step::Kind) kind, const QString& caption, const QString& text)
{
    if (m_script.empty() || m_script.front().Kind != kind || m_script.front().Caption != caption) {
        QTest::qFail(qPrintable(u"unexpected question: %1: %2"_s.arg(caption, text)), __FILE__, __LINE__);
        return {.Kind = kind, .Caption = caption, .Answer = MsgBoxResult::Cancel};
    }
    Step step = m_script.front();
    m_script.pop_front();
    return step;
}

MsgBoxResult ScriptedPrompts::MsgBox(const Message& message)
{
    Messages << message;
    return Next(Step::MsgBoxStep, message.Caption, message.Text).Answer;
}

ChosenText ScriptedPrompts::ChooseText(const TextChoice& choice)
{
    Choices << choice;
    return Next(Step::TextChoiceStep, choice.Caption, choice.Text).Chosen;
}

std::optional<QString> ScriptedPrompts::InputBox(const QString& text, const QString& caption, const QString& preset)
{
    InputTexts << text;
    InputPresets << preset;
    return Next(Step::InputBoxStep, caption, text).Text;
}

QStringList ScriptedPrompts::FileNames(const FileQuestion& question)
{
    Questions << question;
    return Next(Step::FileNamesStep, question.Title, question.Filter).Files;
}

QString ScriptedPrompts::FileName(const FileQuestion& question)
{
    Questions << question;
    return Next(Step::FileNameStep, question.Title, question.Filter).Text.value_or(QString());
}

bool ScriptedPrompts::ShowError(const QString& description)
{
    Errors << description;
    return Next(Step::ErrorStep, {}, description).Report;
}

void ScriptedPrompts::OperationSuccessful(const QString& text, const QString&)
{
    Next(Step::MsgBoxStep, u"Operation Successful"_s, text);
}

std::unique_ptr<Information> ScriptedPrompts::InformUser(const QString&)
{
    return std::make_unique<Information>();
}

} // namespace qb::test
