#pragma once

#include "text/ui/RichTextViewOf.h"

namespace qb {

/// A rich text box over one of the toolkit's editors, QTextEdit or QPlainTextEdit: what the user does by keyboard,
/// mouse, clipboard, drag and drop or input method goes through the same operations as what code does, so that
/// protected text refuses it.
template <class Editor>
class RichTextBoxOf : public RichTextViewOf<Editor> {
    using View = RichTextViewOf<Editor>;

public:
    using View::View;

    // UserTextBox
    bool TypeText(const QString& text) override;
    UndoType UndoName() const override { return m_undoNames.Undoes(Editor::document()->availableUndoSteps()); }
    UndoType RedoName() const override { return m_undoNames.Redoes(Editor::document()->availableUndoSteps()); }
    bool CanUndo() const override { return !View::Locked() && !m_waits && Editor::document()->isUndoAvailable(); }
    bool CanRedo() const override { return !View::Locked() && !m_waits && Editor::document()->isRedoAvailable(); }
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

protected:
    /// What is taken in of a text with looks that is pasted or dropped.
    virtual QString TakenIn(const QString& rtf) const { return rtf; }
    /// The user has activated a link.
    virtual void ActivateLink(const QString& /*target*/) {}
    /// The user has undone or redone something.
    virtual void TakenBack() {}
    /// The user wants all of it larger or smaller, by so many steps.
    virtual void ZoomWanted(int /*steps*/) {}

    void keyPressEvent(QKeyEvent* event) override;
    void inputMethodEvent(QInputMethodEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    QMimeData* createMimeDataFromSelection() const override;
    bool canInsertFromMimeData(const QMimeData* source) const override;
    void insertFromMimeData(const QMimeData* source) override;

private:
    using View::m_changeEnd;
    using View::m_joinsSteps;
    using View::m_named;
    using View::m_showing;
    using View::m_text;
    using View::m_undoNames;
    using View::m_waits;

    void StandBehindChange();
    /// An edit of the user's, with the name that its undo has. A refused one is heard.
    template <class Edit>
    bool UserEdit(UndoType type, Edit&& edit);
    bool TypeOver(UndoType type, const QString& text);
    bool Insert(const QMimeData& source, UndoType type);
    bool DeleteTo(QTextCursor::MoveOperation operation);
    bool EditByKey(const QKeyEvent& event);
    bool EditByStandardKey(const QKeyEvent& event);
    void Enter();
    void Backspace();
    bool EndList();
    bool HoldsProtected() const { return m_text.IsProtected(m_text.SelStart(), m_text.SelLength()); }

    bool m_takesForeignLooks = true;
};

} // namespace qb
