#include "platform/system/Prompts.h"

#include <cstdio>
#include <utility>

namespace qb {

namespace {

Prompts*& Installed()
{
    static Prompts* prompts = nullptr;
    return prompts;
}

void Print(const QString& text)
{
    std::fputs((text + u'\n').toUtf8().constData(), stderr);
}

} // namespace

MsgBoxResult Message::DefaultAnswer() const
{
    if (Default)
        return *Default;
    switch (Buttons) {
    case MsgBoxButtons::YesNo:
    case MsgBoxButtons::YesNoCancel:
        return MsgBoxResult::Yes;
    case MsgBoxButtons::RetryCancel:
        return MsgBoxResult::Retry;
    case MsgBoxButtons::OkOnly:
    case MsgBoxButtons::OkCancel:
        break;
    }
    return MsgBoxResult::Ok;
}

Prompts& Prompts::Current()
{
    static SilentPrompts silent;
    return Installed() ? *Installed() : silent;
}

Prompts* Prompts::SetCurrent(Prompts* prompts)
{
    return std::exchange(Installed(), prompts);
}

MsgBoxResult SilentPrompts::MsgBox(const Message& message)
{
    Print(message.Text);
    return message.DefaultAnswer();
}

ChosenText SilentPrompts::ChooseText(const TextChoice& choice)
{
    Print(choice.Text);
    return ChosenText::Cancel;
}

std::optional<QString> SilentPrompts::InputBox(const QString&, const QString&, const QString&)
{
    return std::nullopt;
}

QStringList SilentPrompts::FileNames(const FileQuestion&)
{
    return {};
}

QString SilentPrompts::FileName(const FileQuestion&)
{
    return {};
}

bool SilentPrompts::ShowError(const QString& description)
{
    Print(description);
    return false;
}

void SilentPrompts::OperationSuccessful(const QString& text, const QString&)
{
    Print(text);
}

std::unique_ptr<Information> SilentPrompts::InformUser(const QString& text)
{
    Print(text);
    return std::make_unique<Information>();
}

} // namespace qb
