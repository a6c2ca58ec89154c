#pragma once

#include "platform/system/Hook.h"
#include "removed/RemovedList.h"

namespace qb {

struct ReturnResult {
    qint64 Item = 0; ///< that came back, or the one that got back what it had lost
    int Items = 0;
    int Files = 0;
    int Pages = 0;
    int Links = 0;
    int Bookmarks = 0;
    QStringList Missing;   ///< stored files whose contents were not there when they were removed
    bool IsBeside = false; ///< its former self is still there, or its number belongs to another
};

struct ReturnOptions {
    qint64 Parent = -1;     ///< 0: the root; -1: the former one, where that is still there
    bool WithBranch = true; ///< with what stood below it in the same event, and is gone too
    /// Told what was brought back before it counts. What it raises takes everything back.
    Hook<void(const ReturnResult&)> BeforeCommit{};
};

/// Where an entry would come back to.
enum class ReturnPlace {
    Former,  ///< below its former parent
    Beside,  ///< beside its former self, under another title
    OwnItem, ///< into the item that it was a part of
    None     ///< its parent is gone: at the root, or where the user says
};
ReturnPlace PlaceOfReturn(Library& library, const ListedEntry& entry);

/// Brings an entry back, with stored files, page, links to items that are there and bookmarks: under its former number
/// where that is free, as a new item where it is not, and always in a replica, to the others of which it is new. A
/// version of an item that is still there comes beside it, as "<title> (removed version)". A part of an item goes into
/// it where it is still there; a page where it has none; a description behind that which the file has.
/// All or nothing: on an error, which is raised, the library is as it was. RuntimeError 3059 when it was cancelled.
ReturnResult ReturnRemoved(Library& library, const RemovedList& list, const ListedEntry& entry,
                           const ReturnOptions& options = {}, Work& work = NoWork());

} // namespace qb
