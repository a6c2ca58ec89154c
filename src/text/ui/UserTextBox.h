#pragma once

#include "platform/richtext/RichText.h"
#include "text/ui/UndoNames.h"

class QWidget;

namespace qb {

/// A rich text box that a user edits in a window.
class UserTextBox : public IRichTextBox {
public:
    virtual QWidget& Widget() = 0;

    /// A copy of the whole content to work on.
    virtual RichText Content() const = 0;
    /// Takes over a copy whose looks were changed, and spelling without a change of lengths, as
    /// one step of undo; the caret stays.
    virtual void SetRepainted(const RichText& painted) = 0;
    virtual bool IsEmpty() const = 0;

    virtual bool Locked() const = 0;
    /// Keeps the user from changes; code may still make them.
    virtual void SetLocked(bool locked) = 0;

    /// Shows everything larger or smaller; 1 is as it is.
    virtual void SetZoom(double factor) = 0;
    /// Marks places of the text, as begins and one length, beside the selection.
    virtual void MarkPlaces(const QList<qsizetype>& begins, qsizetype length) = 0;

    // What the user can do
    virtual UndoType UndoName() const = 0;
    virtual UndoType RedoName() const = 0;
    virtual bool CanUndo() const = 0;
    virtual bool CanRedo() const = 0;
    virtual bool CanPaste() const = 0;
    virtual void Undo() = 0;
    virtual void Redo() = 0;
    virtual void Cut() = 0;
    virtual void Copy() = 0;
    virtual void Paste() = 0;
    virtual void PastePlainText() = 0;
    /// Deletes the selection.
    virtual void Clear() = 0;
};

} // namespace qb
