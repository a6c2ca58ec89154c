#pragma once

#include "store/Library.h"

#include <QString>
#include <initializer_list>

namespace qb {

/// What is about to be done with an item, or to the library of it.
enum class ItemChange {
    Add,         ///< an item below it
    AddBeside,   ///< an item beside it
    Import,      ///< a branch below it
    Edit,        ///< of its texts, files and links, where a user is asked about what that decides
    EditUnasked, ///< the same where nobody is asked
    Rename,
    Move,
    Receive, ///< another item is moved below it
    Delete,
    Keep,
    Resolve,
    Bookmark,
    Link,  ///< a link that leads from it
    Print, ///< nothing is changed by it
    Write, ///< anything that only needs a library that can be written
    Read   ///< anything that only needs a library
};

/// What keeps a change from being made.
enum class Bar {
    None,
    NoLibrary,
    FileGone,
    ReadOnly,
    Root,
    LockedOrphan, ///< an orphan in a child
    OrphanFolder, ///< the folder of orphaned items itself, in a mother
    Orphan,
    Exported, ///< the child's changes are on their way to its mother
    Deleted,  ///< a child has deleted the item
    Waiting,  ///< the mother has to decide about the item
    Conflict,
    NotDeleted,
    NotInConflict
};

/// What of a library and one of its items decides which changes are barred.
struct ItemStanding {
    bool NoLibrary = false; ///< none is open
    bool FileGone = false;
    bool ReadOnly = false;
    bool IsChild = false;
    bool IsMother = false;
    bool Exported = false;
    bool Root = false;            ///< no item, but the root of the tree
    bool Deleted = false;         ///< in a mother: a child has deleted it, and it waits for removal
    bool Waiting = false;         ///< in a child: it is in conflict at the mother
    bool Conflict = false;        ///< in a mother: changed on both sides
    bool Orphan = false;          ///< the folder of orphaned items, or below it
    bool OrphanUnderRoot = false; ///< the folder itself
    bool Marked = false;          ///< it has no date of its last change, whatever the library is
};

/// The first thing that bars a change; the one place that decides it, for the window and the command line.
Bar WhatBars(ItemChange change, const ItemStanding& standing);
inline bool IsBarred(ItemChange change, const ItemStanding& standing)
{
    return WhatBars(change, standing) != Bar::None;
}

/// What is wrong, as the beginning of a sentence without a full stop; empty for Bar::None.
QString SentenceOf(Bar bar);

/// Whether a change moves the date of the item's last change: an orphan that is tidied outside of a child keeps
/// its date, and one that is moved out gets a new one in a mother only.
bool MovesDate(ItemChange change, const ItemStanding& standing);

/// How an item stands by its rows; 0 is the root.
ItemStanding StandingOf(Library& library, qint64 item);

/// Raises an error that says what bars one of the changes, and that nothing was changed.
void RequireChange(Library& library, qint64 item, std::initializer_list<ItemChange> changes);

/// A title that begins so, directly under the root, is that of the folder of orphaned items.
bool IsOrphanFolderTitle(const QString& title);

} // namespace qb
