#pragma once

#include "text/CodeKeys.h"
#include "text/ItemSections.h"

#include <memory>
#include <optional>

class QEvent;
class QObject;

namespace qb {

class CodeBox;
class FindBar;
class FoundMarks;
class RichTextBox;
class UserTextBox;

/// The boxes of an item's texts with what edits them, and the commands of a panel on the texts.
class TextCommands {
public:
    /// What decides about the texts.
    ItemEditor& Editor() { return m_editor; }
    const ItemEditor& Editor() const { return m_editor; }

    /// The box for the notes of the item, not those of a stored file.
    RichTextBox* RTBNotesControl() const { return rtbNotes; }
    /// The code as plain text, as it stands in its box.
    QString CodeWindowText() const;
    void NotesSetFocus();

    // Colouring, as the editor has it

    /// The RTF of the text of "Code" or "Usage" in colour, which is put back into its box with @p saveBack. Empty
    /// for an empty text, and for any other tab, of which the user is told.
    QString fnColorize(const QString& tab, bool saveBack) { return m_editor.fnColorize(tab, saveBack); }
    /// The box already holds the painted text, which is stored as it is. Holds until the next change or save.
    void SetCodeColorized(bool colorized) { m_editor.SetColorized(ItemText::Code, colorized); }
    void SetUsageColorized(bool colorized) { m_editor.SetColorized(ItemText::Usage, colorized); }
    /// Colours the text of the visible tab, which changes the item. Does nothing unless CanColorize.
    void ColorizeVisible() { m_editor.ColorizeVisible(); }
    /// The visible tab holds code or usage that can be changed and is not shown in colour. Never for a language
    /// whose rules colour a text as it is seen.
    bool CanColorize() const { return m_editor.CanColorize(); }
    /// Empty for the language of the library, and without an item.
    QString ItemLanguage() const { return m_editor.ItemLanguage(); }
    /// Whether the tab has content. One that has none can be shown all the same.
    bool TabEnabled(DetailsTab tab) const { return m_editor.TabEnabled(tab); }
    /// The colours of what is painted by rules.
    void SetPalette(const TokenPalette& palette);

    // Sections, as ItemSections has them

    /// Adds a section to @p item and its line to the text that is shown, or goes to the one that is there. With
    /// @p color 0 the line has the usual one. Nothing is added to a locked item, in a protected place, or on a
    /// tab other than Code and Usage.
    void CreateCodeSection(CCodeItem& item, quint8 header, quint32 color);
    /// Where the line of such a section would be put, in words: "before line 3"; empty on another tab.
    QString PlaceOfNewSection(quint8 header) const { return m_sections.PlaceOfNewSection(header); }
    /// Puts the caret on the first line with the section's title, behind the blanks before that unless
    /// @p stayOnHeader. False when there is none, or on another tab, of which the user is told.
    bool GoToCodeSection(quint8 header, bool stayOnHeader);
    /// From the caret's line to the end of its section; with 0 the whole text.
    void CopyCodeSectionToClipboard(quint8 header);
    void DeleteCodeSection(quint8 header) { m_sections.DeleteCodeSection(header); }
    quint8 CurrentSection() const { return m_sections.CurrentSection(); }

    // View

    /// Opens the bar for finding, with what is selected if that is of one line. These do nothing where no text is
    /// shown.
    void FindInText();
    /// From the selection on, or back, around the end of the text. Opens the bar where it is closed and empty.
    void FindNextOccurance();
    void FindPreviousOccurance();
    /// The places of a find over the library, in the text that is shown.
    FoundMarks& Found() { return *m_found; }
    /// Asks for a line of the code and goes there.
    void GoToLine();
    /// Goes there, with the focus.
    void GoToLine(int line);
    /// In percent; the boxes keep within 50 to 400.
    int Zoom() const { return m_zoom; }
    void SetZoom(int percent);
    void SetLineNumbers(bool shown);
    void SetWordWrap(bool wraps);
    /// The font of notes that have none of their own.
    void SetDefaultFont(const RtfFont& font);

    // Texts that were not saved before the program ended

    /// As qb::OfferUnsavedTexts, for the texts of the panel.
    void OfferUnsavedTexts(Library& library, const std::function<void(qint64 item)>& goTo);
    void KeepUnsavedTexts() { m_editor.KeepUnsavedTexts(); }

protected:
    TextCommands(CTextFormat& formatter, ItemEditorView& view);
    ~TextCommands();

    /// The box for code that is on the tab that is shown; null on any other.
    CodeBox* CurrentCodeBox() const;
    /// The text whose box that is.
    std::optional<ItemText> TextOf(const QObject* box) const;
    /// What a key or an input method does to a box before it sees it; true when that is all.
    bool BoxEvent(const QObject* box, QEvent& event);
    void ZoomBy(int steps);

    CodeBox* rtbCode;
    RichTextBox* rtbNotes;
    CodeBox* rtbUsage;
    RichTextBox* m_fileNotes = nullptr; ///< of a stored file: looks as the item's notes do
    FindBar* m_findBar = nullptr;
    std::unique_ptr<FoundMarks> m_found;
    ItemEditor m_editor;
    ItemSections m_sections;
    CodeKeys m_keys;

private:
    int m_zoom = 100;
};

} // namespace qb
