#pragma once

#include "platform/richtext/IRichTextBox.h"
#include "platform/richtext/RichTextDocument.h"

namespace qb {

/// A rich text box without a window.
class RichText : public IRichTextBox {
public:
    /// An empty text; @p font is that of text for which no other is named.
    explicit RichText(const RtfFont& font = CodeFont) : m_document(font) {}

    /// The text itself. A change made there asks for no protection and leaves the selection where it is.
    RichTextDocument& Document() { return m_document; }
    const RichTextDocument& Document() const { return m_document; }
    /// The look of what is typed next.
    CharFormat InsertionFormat() const;
    /// A change of this range is refused.
    bool IsProtected(qsizetype position, qsizetype length) const;

    QString Text() const override { return m_document.Text(); }
    void SetText(const QString& text) override;
    QString TextRTF() const override;
    void SetTextRTF(const QString& rtf) override;

    qsizetype SelStart() const override { return m_start; }
    void SetSelStart(qsizetype position) override;
    qsizetype SelLength() const override { return m_length; }
    void SetSelLength(qsizetype length) override;

    QString SelText() const override { return m_document.Text().mid(m_start, m_length); }
    bool SetSelText(const QString& text) override;
    QString SelRTF() const override;
    bool SetSelRTF(const QString& rtf) override;

    std::optional<quint32> SelColor() const override;
    void SetSelColor(quint32 color) override;
    std::optional<bool> SelBold() const override;
    void SetSelBold(bool on) override;
    std::optional<bool> SelItalic() const override;
    void SetSelItalic(bool on) override;
    std::optional<bool> SelUnderline() const override;
    void SetSelUnderline(bool on) override;
    std::optional<bool> SelProtected() const override;
    void SetSelProtected(bool on) override;
    std::optional<QString> SelFontName() const override;
    void SetSelFontName(const QString& name) override;
    std::optional<double> SelFontSize() const override;
    void SetSelFontSize(double points) override;

    std::optional<bool> SelBullet() const override;
    void SetSelBullet(bool on) override;
    int BulletIndent() const override { return m_bulletIndent; }
    void SetBulletIndent(int twips) override;
    std::optional<TextAlignment> SelAlignment() const override;
    void SetSelAlignment(TextAlignment alignment) override;
    std::optional<int> SelIndent() const override;
    void SetSelIndent(int twips) override;

protected:
    const QString& TextView() const override { return m_document.Text(); }

private:
    /// Changes the selection's characters, or what is typed next.
    template <class Change>
    void ChangeSelection(Change&& change);
    template <class Read>
    auto ReadSelection(Read&& read) const -> std::optional<decltype(read(CharFormat()))>;
    template <class Read>
    auto ReadParagraphs(Read&& read) const -> std::optional<decltype(read(ParagraphFormat()))>;
    void MoveTo(qsizetype position);
    static void HangBy(ParagraphFormat& format, int twips);

    RichTextDocument m_document;
    qsizetype m_start = 0;
    qsizetype m_length = 0;
    std::optional<CharFormat> m_typing; ///< set while the insertion point stands, for what is typed next
    int m_bulletIndent = 0;
};

} // namespace qb
