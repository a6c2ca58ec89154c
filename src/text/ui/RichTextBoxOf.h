#pragma once

#include "text/ui/RichTextPage.h"
#include "text/ui/UserTextBox.h"
#include "text/ui/ZoomDevice.h"

#include <QTextBlock>
#include <QTextEdit>
#include <functional>

namespace qb {

/// A rich text box over one of the toolkit's editors, QTextEdit or QPlainTextEdit. It answers as a
/// RichText does; what the user does by keyboard, mouse, clipboard, drag and drop or input method
/// goes through the same operations, so that protected text refuses it.
template <class Editor>
class RichTextBoxOf : public Editor, public UserTextBox {
public:
    /// @p font is that of texts that name none. A box that stands in another widget and is not seen puts off
    /// showing a new text until it is seen or edited.
    RichTextBoxOf(const RtfFont& font, QWidget* parent);

    // UserTextBox
    QWidget& Widget() override { return *this; }
    RichText Content() const override { return m_text; }
    void SetContent(const RichText& content) override;
    void SetRepainted(const RichText& painted) override;
    bool IsEmpty() const override { return m_text.Document().Length() == 0; }
    bool Locked() const override { return Editor::isReadOnly(); }
    void SetLocked(bool locked) override;
    void SetLanguage(const QString& name) override { m_text.Document().SetLanguage(name); }
    bool HasFocus() const override { return Editor::hasFocus(); }
    void TakeFocus() override { Editor::setFocus(); }
    void InOneStep(const std::function<void()>& changes) override;
    bool TypeText(const QString& text) override;
    UndoType UndoName() const override { return m_undoNames.Undoes(Editor::document()->availableUndoSteps()); }
    UndoType RedoName() const override { return m_undoNames.Redoes(Editor::document()->availableUndoSteps()); }
    bool CanUndo() const override { return !Locked() && !m_waits && Editor::document()->isUndoAvailable(); }
    bool CanRedo() const override { return !Locked() && !m_waits && Editor::document()->isRedoAvailable(); }
    bool CanPaste() const override { return Editor::canPaste(); }
    void Undo() override;
    void Redo() override;
    void Cut() override;
    void Copy() override { Editor::copy(); }
    void Paste() override { Editor::paste(); }
    void PastePlainText() override;
    void Clear() override;

    /// Looks and pictures from other programs are taken in by a paste, not only their text.
    void SetTakesForeignLooks(bool takes) { m_takesForeignLooks = takes; }

    void SetZoom(double factor) override;
    void MarkPlaces(const QList<qsizetype>& begins, qsizetype length) override;
    void MarkFound(const std::vector<TextRange>& places) override;

    /// The font of texts that name none, from the next text on.
    void SetDefaultFont(const RtfFont& font) { m_font = font; }

    // IRichTextBox
    QString Text() const override { return m_text.Text(); }
    void SetText(const QString& text) override;
    QString TextRTF() const override { return m_text.TextRTF(); }
    void SetTextRTF(const QString& rtf) override;
    qsizetype SelStart() const override { return m_text.SelStart(); }
    void SetSelStart(qsizetype position) override;
    qsizetype SelLength() const override { return m_text.SelLength(); }
    void SetSelLength(qsizetype length) override;
    QString SelText() const override { return m_text.SelText(); }
    bool SetSelText(const QString& text) override;
    QString SelRTF() const override { return m_text.SelRTF(); }
    bool SetSelRTF(const QString& rtf) override;
    std::optional<quint32> SelColor() const override { return m_text.SelColor(); }
    void SetSelColor(quint32 color) override;
    std::optional<bool> SelBold() const override { return m_text.SelBold(); }
    void SetSelBold(bool on) override;
    std::optional<bool> SelItalic() const override { return m_text.SelItalic(); }
    void SetSelItalic(bool on) override;
    std::optional<bool> SelUnderline() const override { return m_text.SelUnderline(); }
    void SetSelUnderline(bool on) override;
    std::optional<bool> SelProtected() const override { return m_text.SelProtected(); }
    void SetSelProtected(bool on) override;
    std::optional<QString> SelFontName() const override { return m_text.SelFontName(); }
    void SetSelFontName(const QString& name) override;
    std::optional<double> SelFontSize() const override { return m_text.SelFontSize(); }
    void SetSelFontSize(double points) override;
    std::optional<bool> SelBullet() const override { return m_text.SelBullet(); }
    void SetSelBullet(bool on) override;
    int BulletIndent() const override { return m_text.BulletIndent(); }
    void SetBulletIndent(int twips) override;
    std::optional<TextAlignment> SelAlignment() const override { return m_text.SelAlignment(); }
    void SetSelAlignment(TextAlignment alignment) override;
    std::optional<int> SelIndent() const override { return m_text.SelIndent(); }
    void SetSelIndent(int twips) override;

protected:
    /// What is taken in of a text with looks that is pasted or dropped.
    virtual QString TakenIn(const QString& rtf) const { return rtf; }
    /// The user has activated a link.
    virtual void ActivateLink(const QString& /*target*/) {}
    /// The user has undone or redone something.
    virtual void TakenBack() {}
    /// The text document shows another text.
    virtual void Loaded() {}
    /// The user wants all of it larger or smaller, by so many steps.
    virtual void ZoomWanted(int /*steps*/) {}
    const RichTextPage& Page() const { return m_page; }
    /// Runs what changes the looks of lines on the screen and nothing else: the text is not changed
    /// by it, and nobody is told.
    void ShowingColours(const std::function<void()>& show);
    bool IsShowingColours() const { return m_showingColours; }
    bool IsLoading() const { return m_loading; }

    const QString& TextView() const override { return m_text.Document().Text(); }
    void keyPressEvent(QKeyEvent* event) override;
    void inputMethodEvent(QInputMethodEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void changeEvent(QEvent* event) override;
    void showEvent(QShowEvent* event) override;
    QMimeData* createMimeDataFromSelection() const override;
    bool canInsertFromMimeData(const QMimeData* source) const override;
    void insertFromMimeData(const QMimeData* source) override;

private:
    QTextEdit::ExtraSelection MarkOf(qsizetype begin, qsizetype length, const QColor& color) const;
    void Load();
    void LoadWhenSeen();
    void EnsureLoaded();
    void StandBehindChange();
    void SyncSelection();
    void ShowSelection();
    template <class Change>
    void Show(Change&& change);
    template <class Change>
    bool Replace(Change&& change);
    template <class Change>
    void ChangeCharacters(Change&& change);
    template <class Change>
    void ChangeParagraphs(Change&& change);
    /// An edit of the user's, with the name that its undo has. A refused one is heard.
    template <class Edit>
    bool UserEdit(UndoType type, Edit&& edit);
    bool Insert(const QMimeData& source, UndoType type);
    bool DeleteTo(QTextCursor::MoveOperation operation);
    bool EditByKey(const QKeyEvent& event);
    void Enter();
    void Backspace();
    bool EndList();
    bool HoldsProtected() const { return m_text.IsProtected(m_text.SelStart(), m_text.SelLength()); }

    RtfFont m_font;
    RichText m_text; ///< what counts; the text document shows it
    RichTextPage m_page;
    ZoomDevice m_device;
    UndoNames m_undoNames;
    QList<QTextEdit::ExtraSelection> m_places; ///< marked by the find in this text
    QList<QTextEdit::ExtraSelection> m_found;  ///< marked by that over the library
    QColor m_background;                       ///< that the looks were made for
    int m_changeEnd = 0;                       ///< of what was taken back last, in the text document
    bool m_loading = false;                    ///< another text is being shown
    bool m_showingColours = false;
    bool m_waits = false;      ///< the text document does not show the text yet
    bool m_showing = false;    ///< the text document is being changed from here
    bool m_named = false;      ///< the step of undo is given its name by who makes it
    bool m_joinsSteps = false; ///< an edit is undone together with one like it before
    bool m_takesForeignLooks = true;
};

} // namespace qb
