#pragma once

#include "platform/system/Prompts.h"

#include <QStringList>

namespace qb::test {

/// Says yes to whatever is asked, and writes down what is told: for histories of which nobody knows what they meet.
class UnaskedPrompts : public SilentPrompts {
public:
    UnaskedPrompts() : m_before(SetCurrent(this)) {}
    ~UnaskedPrompts() override { SetCurrent(m_before); }
    UnaskedPrompts(const UnaskedPrompts&) = delete;
    UnaskedPrompts& operator=(const UnaskedPrompts&) = delete;

    MsgBoxResult MsgBox(const Message& message) override
    {
        Told << message.Text.left(MostLetters);
        return MsgBoxResult::Yes;
    }
    bool ShowError(const QString& description) override
    {
        Told << QStringLiteral("error: ") + description;
        return false;
    }
    std::optional<QString> InputBox(const QString&, const QString&, const QString&) override
    {
        return QStringLiteral("child");
    }
    QStringList Told;

private:
    static constexpr qsizetype MostLetters = 160;

    Prompts* m_before;
};

} // namespace qb::test
