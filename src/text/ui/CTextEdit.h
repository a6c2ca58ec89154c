#pragma once

#include "text/ui/UserTextBox.h"

namespace qb {

/// The edit commands over one rich text box.
class CTextEdit {
public:
    /// Works on @p box from now on, which is not owned.
    void Initialize(UserTextBox& box) { m_box = &box; }

    UndoType GetUndoType() const { return m_box->UndoName(); }
    UndoType GetRedoType() const { return m_box->RedoName(); }
    /// The step that would be undone or redone, in a word.
    QString TranslatedUndoType() const { return Translated(GetUndoType()); }
    QString TranslatedRedoType() const { return Translated(GetRedoType()); }

    bool CanPaste() const { return m_box->CanPaste() && !m_box->Locked(); }
    bool CanCopy() const { return m_box->SelLength() >= 1; }
    bool CanUndo() const { return m_box->CanUndo(); }
    bool CanRedo() const { return m_box->CanRedo(); }
    void Undo() { m_box->Undo(); }
    void Redo() { m_box->Redo(); }
    void Cut() { m_box->Cut(); }
    void Copy() { m_box->Copy(); }
    void Paste() { m_box->Paste(); }
    void Clear() { m_box->Clear(); }

    /// The word for the number of a kind of step; empty for a number that has none.
    static QString Translated(UndoType type);

private:
    UserTextBox* m_box = nullptr;
};

} // namespace qb
