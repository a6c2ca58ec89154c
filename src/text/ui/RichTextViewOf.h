#pragma once

#include "text/ui/HeldRichText.h"
#include "text/ui/RichTextPage.h"
#include "text/ui/ZoomDevice.h"

#include <QTextEdit>
#include <functional>

namespace qb {

/// Shows a rich text in one of the toolkit's editors, QTextEdit or QPlainTextEdit: what code changes in the text, its
/// looks and its selection is seen at once. The editor's document never counts, only the text does.
template <class Editor>
class RichTextViewOf : public Editor, public HeldRichText {
public:
    /// @p font is that of texts that name none. A box that stands in another widget and is not seen puts off
    /// showing a new text until it is seen or edited.
    RichTextViewOf(const RtfFont& font, QWidget* parent);

    /// The font of texts that name none, from the next text on.
    void SetDefaultFont(const RtfFont& font) { m_font = font; }

    // UserTextBox
    QWidget& Widget() override { return *this; }
    void SetContent(const RichText& content) override;
    void SetRepainted(const RichText& painted) override;
    bool Locked() const override { return Editor::isReadOnly(); }
    void SetLocked(bool locked) override;
    bool HasFocus() const override { return Editor::hasFocus(); }
    void TakeFocus() override { Editor::setFocus(); }
    void InOneStep(const std::function<void()>& changes) override;
    void SetZoom(double factor) override;
    void MarkPlaces(const QList<qsizetype>& begins, qsizetype length) override;
    void MarkFound(const std::vector<TextRange>& places) override;

    // IRichTextBox
    void SetText(const QString& text) override;
    void SetTextRTF(const QString& rtf) override;
    void SetSelStart(qsizetype position) override;
    void SetSelLength(qsizetype length) override;
    bool SetSelText(const QString& text) override;
    bool SetSelRTF(const QString& rtf) override;
    void SetSelColor(quint32 color) override;
    void SetSelBold(bool on) override;
    void SetSelItalic(bool on) override;
    void SetSelUnderline(bool on) override;
    void SetSelProtected(bool on) override;
    void SetSelFontName(const QString& name) override;
    void SetSelFontSize(double points) override;
    void SetSelBullet(bool on) override;
    void SetBulletIndent(int twips) override;
    void SetSelAlignment(TextAlignment alignment) override;
    void SetSelIndent(int twips) override;

protected:
    /// The text document shows another text.
    virtual void Loaded() {}
    const RichTextPage& Page() const { return m_page; }
    /// Runs what changes the looks of lines on the screen and nothing else: the text is not changed
    /// by it, and nobody is told.
    void ShowingColours(const std::function<void()>& show);
    bool IsShowingColours() const { return m_showingColours; }
    bool IsLoading() const { return m_loading; }
    /// The text document shows the text, also where the box has not been seen yet.
    void EnsureLoaded();
    /// The selection of the text is what the user has selected.
    void SyncSelection();
    /// Shows what has become of the selected paragraphs' looks.
    void ShowParagraphs();
    void changeEvent(QEvent* event) override;
    void showEvent(QShowEvent* event) override;

    UndoNames m_undoNames;
    int m_changeEnd = 0;       ///< of what was taken back last, in the text document
    bool m_waits = false;      ///< the text document does not show the text yet
    bool m_showing = false;    ///< the text document is being changed from here
    bool m_named = false;      ///< the step of undo is given its name by who makes it
    bool m_joinsSteps = false; ///< an edit is undone together with one like it before

private:
    QTextEdit::ExtraSelection MarkOf(qsizetype begin, qsizetype length, const QColor& color) const;
    void Load();
    void LoadWhenSeen();
    void ShowSelection();
    template <class Change>
    void Show(Change&& change);
    bool Replace(bool (RichText::*set)(const QString&), const QString& value);
    template <class Value, class Given>
    void ChangeCharacters(void (RichText::*set)(Value), const Given& value);
    template <class Value>
    void ChangeParagraphs(void (RichText::*set)(Value), Value value);

    RtfFont m_font;
    RichTextPage m_page;
    ZoomDevice m_device;
    QList<QTextEdit::ExtraSelection> m_places; ///< marked by the find in this text
    QList<QTextEdit::ExtraSelection> m_found;  ///< marked by that over the library
    QColor m_background;                       ///< that the looks were made for
    bool m_loading = false;                    ///< another text is being shown
    bool m_showingColours = false;
};

} // namespace qb
