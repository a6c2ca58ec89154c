#pragma once

#include "text/ui/UserTextBox.h"

namespace qb {

/// The edit commands over one rich text box.
class CTextEdit {
public:
    /// Works on @p box from now on, which is not owned.
    void Initialize(UserTextBox& box) { m_box = &box; }

    /// The kind of the step that would be undone or redone; Unknown when there is none, or when the program
    /// has made it and not the user. Neither these nor the commands may be called before Initialize.
    UndoType GetUndoType() const { return m_box->UndoName(); }
    UndoType GetRedoType() const { return m_box->RedoName(); }
    /// The step that would be undone or redone, in a word.
    QString TranslatedUndoType() const { return Translated(GetUndoType()); }
    QString TranslatedRedoType() const { return Translated(GetRedoType()); }

    /// The clipboard holds something for the box, which is not locked.
    bool CanPaste() const { return m_box->CanPaste() && !m_box->Locked(); }
    /// Something is selected, in a locked box, too.
    bool CanCopy() const { return m_box->SelLength() >= 1; }
    /// Never in a locked box.
    bool CanUndo() const { return m_box->CanUndo(); }
    bool CanRedo() const { return m_box->CanRedo(); }
    /// These do nothing where the box can't do them; protected text refuses an edit with a beep.
    void Undo() { m_box->Undo(); }
    void Redo() { m_box->Redo(); }
    void Cut() { m_box->Cut(); }
    void Copy() { m_box->Copy(); }
    void Paste() { m_box->Paste(); }
    /// Deletes the selection, not the whole text.
    void Clear() { m_box->Clear(); }

    /// The word for the number of a kind of step; empty for a number that has none.
    static QString Translated(UndoType type);

private:
    UserTextBox* m_box = nullptr;
};

} // namespace qb
