#pragma once

#include "platform/dao/Database.h"
#include "platform/richtext/IRichTextBox.h"
#include "store/LanguageDefinition.h"
#include "text/ColorizeScan.h"
#include "text/RulePaint.h"

#include <QHash>
#include <QObject>
#include <memory>

namespace qb {

/// Changes the look of rich text: the format of a selection, with signals that tell a toolbar
/// when the selection's state differs from what it shows, and the colouring of code by the
/// library's language.
class CTextFormat : public QObject {
    Q_OBJECT

public:
    /// The box that all operations on a selection work on; not owned.
    IRichTextBox* RichTextBox() const { return m_box; }
    void SetRichTextBox(IRichTextBox* box) { m_box = box; }

    // The last known state of the selection. A write changes the selection; bold to alignment
    // also raise their signal.
    QString Font() const { return m_font; }
    void SetFont(const QString& name);
    int Size() const { return m_size; }
    void SetSize(int points);
    bool Bold() const { return m_bold; }
    void SetBold(bool on);
    bool Italic() const { return m_italic; }
    void SetItalic(bool on);
    bool Underline() const { return m_underline; }
    void SetUnderline(bool on);
    bool Bullets() const { return m_bullets; }
    void SetBullets(bool on);
    int Alignment() const { return m_alignment; }
    void SetAlignment(int alignment);
    quint32 Color() const { return m_color; }
    void SetColor(quint32 color);
    /// By 200 twips; a failure is ignored.
    void IncreaseIndent();
    void DecreaseIndent();

    /// Writes the stored font, size, bold, italic, underline and colour onto the selection.
    void Format();
    /// Compares the stored state with the selection and raises a signal for each difference, in
    /// the order of the signals. Mixed states count as different and are stored as false.
    void ReadValues();

    /// Loads the library's colours, comment delimiters, keywords and rules. Where it has no keywords,
    /// those that were loaded from the same library stay.
    void ColorizeInit(Database& database);
    /// Takes colours, delimiters, keywords and rules from a definition.
    void SetLanguage(const LanguageDefinition& language);
    /// The language of the texts that come next, one that comes with the program; an empty name:
    /// the library's. A name that is not known counts as the library's, too.
    void SetItemLanguage(const QString& name);
    /// Paints the whole text of a box: by the rules of its language, which changes no character, or,
    /// where it has none, as ColorizeScan does.
    void ColorizeCode(IRichTextBox& box);
    /// The scan that paints by rules; null for a language without.
    std::shared_ptr<RuleScan> Rules() const { return m_item ? m_item->Scan : m_scan; }
    /// Opens a comment that runs to the end of the line.
    QString CommentIdentifier() const { return m_item ? m_item->Comment : m_rules.CommentIdentifier; }

    const TokenPalette& Palette() const { return m_palette; }
    void SetPalette(const TokenPalette& palette) { m_palette = palette; }

    /// Writes the three default colours to the library and replaces its keywords by those built
    /// in: language 1 has some, every other none. True on success.
    bool PopulateKeywordSet(Database& database, int language);

Q_SIGNALS:
    /// Of texts of about 3,000 characters and more only: 0 first, then steps of five or more, 100 in the end.
    void eColorizeProgress(int percent);

    /// The selection says something else than was known; ReadValues has found it, or, from bold on, it was
    /// written. A mixed selection tells an empty name, 0 or false. A size is in points; an alignment is a
    /// TextAlignment.
    void eFontChanged(const QString& font);
    void eFontSizeChanged(int size);
    void eBoldStateChanged(bool on);
    void eItalicStateChanged(bool on);
    void eUnderlineStateChanged(bool on);
    void BulletStateChanged(bool on);
    void AllignmentStateChanged(int alignment);

private:
    IRichTextBox& Box() const;
    void IndentBy(int twips);
    void LetState(const QString& property, bool& known, bool on, void (IRichTextBox::*set)(bool),
                  void (CTextFormat::*tell)(bool));
    void ReadKeywords(Database& database);
    void TakeRules(const LanguageDefinition& language);
    void ColorizeByWords(IRichTextBox& box);
    void ColorizeCopy(IRichTextBox& box);

    IRichTextBox* m_box = nullptr;
    QString m_font;
    int m_size = 0;
    bool m_bold = false;
    bool m_italic = false;
    bool m_underline = false;
    bool m_bullets = false;
    quint32 m_color = 0;
    int m_alignment = -1; ///< which no box reports, so that the first ReadValues tells it
    struct ItemLanguage {
        QString Comment;
        std::shared_ptr<RuleScan> Scan;
    };
    QString m_library; ///< that the keywords are of
    ColorizeRules m_rules;
    std::shared_ptr<RuleScan> m_scan; ///< null: the library's language has no rules
    bool m_correctsSpelling = true;
    std::shared_ptr<const ItemLanguage> m_item;                          ///< null: the library's counts
    QHash<QString, std::shared_ptr<const ItemLanguage>> m_itemLanguages; ///< those that were used, by name
    TokenPalette m_palette = TokenPalette::Default();
};

} // namespace qb
