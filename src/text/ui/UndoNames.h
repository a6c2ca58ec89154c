#pragma once

#include <map>

namespace qb {

/// What a step of undo is called, by the number of its kind.
enum class UndoType { Unknown = 0, Typing = 1, Delete = 2, DragDrop = 3, Cut = 4, Paste = 5 };

/// The names of a text document's steps of undo, which knows none itself. A step is known by how
/// many single changes could be undone once it was done.
class UndoNames {
public:
    /// For a document that holds another text: there are no steps, and none has a name.
    void Clear() { m_names.clear(); }
    /// An edit led from one count of changes to another; what could be redone is gone. One that
    /// was joined to the step before keeps that one's name.
    void Note(int before, int after, UndoType type);
    /// The name of the step that would be undone or redone at a count of changes.
    UndoType Undoes(int count) const;
    UndoType Redoes(int count) const;

private:
    std::map<int, UndoType> m_names;
};

} // namespace qb
