#pragma once

#include "platform/system/Work.h"
#include "store/Library.h"

#include <QString>
#include <functional>
#include <vector>

namespace qb {

/// Raises an error when the library has no such item.
void RequireItem(Library& library, qint64 id);

/// The item and everything below it, each parent before its children. A cycle in damaged rows
/// is walked once.
std::vector<qint64> BranchOf(Library& library, qint64 id);

/// True when @p candidate is @p id or stands below it.
bool IsInBranch(Library& library, qint64 id, qint64 candidate);

/// Keeps what is about to be deleted, together with the transaction that deletes it.
class DeletionKeeper {
public:
    virtual ~DeletionKeeper() = default;
    /// Inside the transaction, while all of the items are there still. What it raises is the deletion's error.
    virtual void Take(Library& library, const std::vector<qint64>& items) = 0;
    /// The last thing before the commit; raises as Take.
    virtual void Note() = 0;
    /// The transaction is committed. Raises nothing.
    virtual void Place() = 0;
};
/// Keeps nothing.
DeletionKeeper& NoKeeper();

/// Deletes an item and everything below it, with stored files and pages, in one transaction;
/// files on disk go once it is committed. @p work counts items and can't be cancelled. Raises
/// the first error, with the library as it was.
void DeleteBranch(Library& library, qint64 id, Work& work = NoWork(), DeletionKeeper& keeper = NoKeeper());

/// The same where nobody watches, if the item may be deleted as it stands (see ItemRules.h); an orphan takes the
/// folder of orphaned items along when that is empty then.
void DeleteItem(Library& library, qint64 id, DeletionKeeper& keeper = NoKeeper());

/// The folder of items that have lost their parent; 0 when there is none.
qint64 FindOrphanFolder(Library& library);
/// The same, made where it is missing, with a date at which nobody takes it for a change.
qint64 OrphanFolder(Library& library);
/// Removes the folder of orphaned items when nothing is left in it; returns its ID, or 0 when it stays.
qint64 RemoveEmptyOrphanFolder(Library& library);

/// The items that wait for removal: a child has deleted them, or they are in conflict at the mother.
std::vector<qint64> ItemsMarkedForDelete(Library& library);

struct RemovedItems {
    std::vector<qint64> Items;
    qint64 Orphans = 0; ///< items that stood directly below one of them and were put into the folder of orphaned items
};
/// Deletes those items in one transaction, as one after another by hand, recorded for the other replicas, with
/// their stored files, pages, bookmarks and links. What stands below one and does not wait for removal itself is
/// nobody's to delete: it becomes an orphan. @p beforeCommit is told what is about to be committed.
RemovedItems RemoveItemsMarkedForDelete(Library& library,
                                        const std::function<void(const RemovedItems&)>& beforeCommit = {},
                                        DeletionKeeper& keeper = NoKeeper());

/// The title that is reserved, directly under the root, for the items that a synchronization
/// leaves without a parent.
inline const QString OrphanedItemsTitle = QStringLiteral("Orphaned Items");

/// Gives an item another title and stamps it as changed. An error is reported; false means that the row is as it was.
bool RenameItem(Library& library, qint64 id, const QString& title);

/// Puts an item, with everything below it, under another parent (0: the root), if both may take part in that as
/// they stand (see ItemRules.h), and stamps it as changed, but for an orphan that keeps its date. Raises an error,
/// with the library as it was, when there is no such item or parent, when the parent stands below the item, or the
/// place is reserved.
void MoveItem(Library& library, qint64 id, qint64 parent);

/// Raises an error when an item of that title must not be put under @p parent.
void RefuseReservedTitle(const QString& title, qint64 parent);

} // namespace qb
