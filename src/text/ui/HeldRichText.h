#pragma once

#include "platform/richtext/RichText.h"
#include "text/ui/UserTextBox.h"

namespace qb {

/// A box that holds its text, and answers from that what is asked of it. How the text is shown and changed is told by
/// whoever derives from this.
class HeldRichText : public UserTextBox {
public:
    // ItemTextBox
    RichText Content() const override { return m_text; }
    bool IsEmpty() const override { return m_text.Document().Length() == 0; }
    void SetLanguage(const QString& name) override { m_text.Document().SetLanguage(name); }

    // IRichTextBox
    QString Text() const override { return m_text.Text(); }
    QString TextRTF() const override { return m_text.TextRTF(); }
    qsizetype SelStart() const override { return m_text.SelStart(); }
    qsizetype SelLength() const override { return m_text.SelLength(); }
    QString SelText() const override { return m_text.SelText(); }
    QString SelRTF() const override { return m_text.SelRTF(); }
    std::optional<quint32> SelColor() const override { return m_text.SelColor(); }
    std::optional<bool> SelBold() const override { return m_text.SelBold(); }
    std::optional<bool> SelItalic() const override { return m_text.SelItalic(); }
    std::optional<bool> SelUnderline() const override { return m_text.SelUnderline(); }
    std::optional<bool> SelProtected() const override { return m_text.SelProtected(); }
    std::optional<QString> SelFontName() const override { return m_text.SelFontName(); }
    std::optional<double> SelFontSize() const override { return m_text.SelFontSize(); }
    std::optional<bool> SelBullet() const override { return m_text.SelBullet(); }
    int BulletIndent() const override { return m_text.BulletIndent(); }
    std::optional<TextAlignment> SelAlignment() const override { return m_text.SelAlignment(); }
    std::optional<int> SelIndent() const override { return m_text.SelIndent(); }

protected:
    explicit HeldRichText(const RtfFont& font) : m_text(font) {}

    const QString& TextView() const override { return m_text.Document().Text(); }

    RichText m_text; ///< what counts, however it is shown
};

} // namespace qb
