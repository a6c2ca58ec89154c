#pragma once

#include "text/ItemTextBox.h"

namespace qb::test {

/// A box for a text of an item without a window. It tells of each change, as a real one does.
class WindowlessBox : public RichText, public ItemTextBox {
public:
    /// The text is another one, or has another look.
    std::function<void()> Changed = [] {};
    /// How often changes were made in one step.
    int Steps = 0;
    /// Where the user types.
    bool Focused = false;

    // ItemTextBox
    IRichTextBox& TextBox() override { return *this; }
    RichText Content() const override { return *this; }
    void SetContent(const RichText& content) override
    {
        RichText::operator=(content);
        Changed();
    }
    void SetRepainted(const RichText& painted) override
    {
        const qsizetype caret = SelStart();
        RichText::operator=(painted);
        SetSelStart(caret);
        Changed();
    }
    bool IsEmpty() const override { return Document().Length() == 0; }
    void SetLanguage(const QString& name) override { Document().SetLanguage(name); }
    bool Locked() const override { return m_locked; }
    void SetLocked(bool locked) override { m_locked = locked; }
    bool HasFocus() const override { return Focused; }
    void TakeFocus() override { Focused = true; }
    void InOneStep(const std::function<void()>& changes) override
    {
        ++Steps;
        changes();
    }
    bool TypeText(const QString& text) override { return !m_locked && SetSelText(text); }
    void SetColouring(std::shared_ptr<RuleScan> scan, std::function<void(RichText&)>) override
    {
        m_rules = std::move(scan);
    }
    bool ColoursByRules() const override { return bool(m_rules); }

    // IRichTextBox
    void SetText(const QString& text) override
    {
        RichText::SetText(text);
        Changed();
    }
    void SetTextRTF(const QString& rtf) override
    {
        RichText::SetTextRTF(rtf);
        Changed();
    }
    bool SetSelText(const QString& text) override
    {
        const bool done = RichText::SetSelText(text);
        if (done)
            Changed();
        return done;
    }

private:
    std::shared_ptr<RuleScan> m_rules;
    bool m_locked = false;
};

} // namespace qb::test
