#pragma once

#include "find/FindPlaces.h"
#include "text/ItemTextBox.h"
#include "text/ui/UndoNames.h"

class QWidget;

namespace qb {

/// A rich text box that a user edits in a window.
class UserTextBox : public IRichTextBox, public ItemTextBox {
public:
    /// What of it stands in the window, and has the focus when it is edited; goes with the box.
    virtual QWidget& Widget() = 0;
    IRichTextBox& TextBox() override { return *this; }

    /// Shows everything larger or smaller; 1 is as it is.
    virtual void SetZoom(double factor) = 0;
    /// Marks places of the text, as begins and one length, beside the selection.
    virtual void MarkPlaces(const QList<qsizetype>& begins, qsizetype length) = 0;
    /// Marks places that a find over the library has found, in a colour of their own.
    virtual void MarkFound(const std::vector<TextRange>& places) = 0;

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
