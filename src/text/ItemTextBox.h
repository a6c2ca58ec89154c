#pragma once

#include "platform/richtext/RichText.h"

#include <functional>
#include <memory>

namespace qb {

class RuleScan;

/// A box in which a user edits one of the texts of an item: what stands behind the operations on its text,
/// with or without a window.
class ItemTextBox {
public:
    virtual ~ItemTextBox() = default;

    /// The operations on its text.
    virtual IRichTextBox& TextBox() = 0;
    /// A copy of the whole content to work on.
    virtual RichText Content() const = 0;
    /// Takes over a text as a whole; what could be undone is gone.
    virtual void SetContent(const RichText& content) = 0;
    /// Takes over a copy whose looks were changed, and spelling without a change of lengths, as
    /// one step of undo; the caret stays.
    virtual void SetRepainted(const RichText& painted) = 0;
    virtual bool IsEmpty() const = 0;
    /// The programming language that the text names.
    virtual void SetLanguage(const QString& name) = 0;

    /// The user can't change the text.
    virtual bool Locked() const = 0;
    /// Keeps the user from changes; code may still make them.
    virtual void SetLocked(bool locked) = 0;
    /// Whether it is the one that is typed into.
    virtual bool HasFocus() const = 0;
    virtual void TakeFocus() = 0;

    /// Changes that are undone as one.
    virtual void InOneStep(const std::function<void()>& changes) = 0;
    /// Puts a text in the place of the selection as if the user had typed it. False when it is refused.
    virtual bool TypeText(const QString& text) = 0;

    /// From now on what is seen is coloured by rules while it is edited; the text itself holds no
    /// colours then. @p paint colours a copy that leaves the box by the clipboard. Null: the text is
    /// shown in the looks that it has. A box for formatted text has no such colours.
    virtual void SetColouring(std::shared_ptr<RuleScan> /*scan*/, std::function<void(RichText&)> /*paint*/) {}
    virtual bool ColoursByRules() const { return false; }
};

} // namespace qb
