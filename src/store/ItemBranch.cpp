#include "store/ItemBranch.h"

#include "store/CCodeItem.h"
#include "store/ItemRules.h"
#include "store/Library.h"
#include "store/PendingFiles.h"
#include "store/PendingPages.h"
#include "store/StoredFiles.h"

#include <unordered_set>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

void CommitOrRaise(CCodeItem& item, const QString& what)
{
    if (!item.Commit())
        throw RuntimeError(ErrorNumber::Engine, what, u"ItemBranch"_s);
}

/// What of deleted items lies outside of the library's file.
struct Outside {
    StoredFileDeletion Files;
    PageDeletion Pages;

    /// The transaction is committed.
    void Complete()
    {
        Files.Complete();
        Pages.Complete();
    }
};

/// The row of an item and of its files, inside the caller's transaction.
void DeleteOne(Library& library, qint64 item, Outside& outside)
{
    for (const qint64 file : StoredFilesOf(library, item))
        outside.Files.Delete(library, file);
    outside.Pages.Delete(library, item);
    CCodeItem row;
    row.Initialise(library, QString::number(item));
    try {
        row.DeleteRow();
    } catch (const RuntimeError& error) {
        throw RuntimeError(
            error.Number(),
            u"The item %1 could not be deleted; nothing was changed.\n%2"_s.arg(item).arg(error.Description()),
            u"DeleteBranch"_s);
    }
}

/// The rows of a branch and of its files, inside the caller's transaction.
void DeleteRows(Library& library, qint64 id, Outside& outside, Work& work, DeletionKeeper& keeper)
{
    qint64 done = 0;
    RequireItem(library, id);
    const std::vector<qint64> branch = BranchOf(library, id);
    keeper.Take(library, branch);
    for (const qint64 item : branch) {
        DeleteOne(library, item, outside);
        work.Advance(++done, qint64(branch.size()));
    }
}

/// What stands below the items and does not go with them becomes an orphan, and keeps its date. Returns how many.
qint64 MakeOrphansBelow(Library& library, const std::vector<qint64>& items)
{
    qint64 orphans = 0;
    for (const qint64 item : items) {
        const bool hasAny = !library
                                 .QueryValue(u"SELECT 1 FROM Items WHERE ParentID = ? AND (LastChanged IS NULL OR "
                                             "LastChanged <> 0) LIMIT 1"_s,
                                             {item})
                                 .IsNull();
        if (hasAny)
            orphans += library.Execute(u"UPDATE Items SET ParentID = ? WHERE ParentID = ? AND (LastChanged IS NULL OR "
                                       "LastChanged <> 0)"_s,
                                       {OrphanFolder(library), item});
    }
    return orphans;
}

} // namespace

qint64 FindOrphanFolder(Library& library)
{
    return library
        .QueryValue(u"SELECT ID FROM Items WHERE ParentID = 0 AND Title = ? COLLATE BINARY"_s, {OrphanedItemsTitle})
        .ToLong();
}

qint64 OrphanFolder(Library& library)
{
    const qint64 found = FindOrphanFolder(library);
    if (found != 0)
        return found;
    CCodeItem folder;
    folder.Initialise(library, {});
    folder.SetTitle(OrphanedItemsTitle);
    folder.SetParentKey(u"0"_s);
    folder.SetCreated(Date::FromParts(2000, 1, 1));
    folder.SetLastChanged(Date::FromParts(2000, 1, 1));
    CommitOrRaise(folder, u"The folder of orphaned items could not be made; nothing was changed."_s);
    return folder.Key().toLongLong();
}

void RequireItem(Library& library, qint64 id)
{
    if (library.QueryValue(u"SELECT 1 FROM Items WHERE ID = ?"_s, {id}).IsNull())
        throw RuntimeError(ErrorNumber::ItemNotFound,
                           u"There is no item %1 in the library; nothing was changed."_s.arg(id), u"RequireItem"_s);
}

std::vector<qint64> BranchOf(Library& library, qint64 id)
{
    std::vector<qint64> branch;
    std::unordered_set<qint64> seen;
    std::vector<qint64> waiting{id};
    while (!waiting.empty()) {
        const qint64 item = waiting.back();
        waiting.pop_back();
        if (!seen.insert(item).second)
            continue;
        branch.push_back(item);
        Statement children = library.Query(u"SELECT ID FROM Items WHERE ParentID = ? ORDER BY ID DESC"_s, {item});
        while (children.Step())
            waiting.push_back(children.Long(0));
    }
    return branch;
}

bool IsInBranch(Library& library, qint64 id, qint64 candidate)
{
    std::unordered_set<qint64> seen;
    for (qint64 at = candidate; at != 0 && seen.insert(at).second;
         at = library.QueryValue(u"SELECT ParentID FROM Items WHERE ID = ?"_s, {at}).ToLong()) {
        if (at == id)
            return true;
    }
    return false;
}

DeletionKeeper& NoKeeper()
{
    class Nothing : public DeletionKeeper {
        void Take(Library&, const std::vector<qint64>&) override {}
        void Note() override {}
        void Place() override {}
    };
    static Nothing nothing;
    return nothing;
}

void DeleteBranch(Library& library, qint64 id, Work& work, DeletionKeeper& keeper)
{
    Outside outside;
    Transaction transaction(library);
    DeleteRows(library, id, outside, work, keeper);
    keeper.Note();
    transaction.Commit();
    keeper.Place();
    outside.Complete();
}

void DeleteItem(Library& library, qint64 id, DeletionKeeper& keeper)
{
    Outside outside;
    Transaction transaction(library);
    RequireChange(library, id, {ItemChange::Delete});
    const ItemStanding standing = StandingOf(library, id);
    DeleteRows(library, id, outside, NoWork(), keeper);
    if (standing.Orphan && (standing.IsMother || standing.IsChild))
        RemoveEmptyOrphanFolder(library);
    keeper.Note();
    transaction.Commit();
    keeper.Place();
    outside.Complete();
}

qint64 RemoveEmptyOrphanFolder(Library& library)
{
    Transaction transaction(library); // nothing is put into the folder in between
    const qint64 folder = FindOrphanFolder(library);
    if (folder == 0 || !library.QueryValue(u"SELECT 1 FROM Items WHERE ParentID = ? LIMIT 1"_s, {folder}).IsNull())
        return 0;
    library.Execute(u"DELETE FROM Items WHERE ID = ?"_s, {folder});
    transaction.Commit();
    return folder;
}

std::vector<qint64> ItemsMarkedForDelete(Library& library)
{
    std::vector<qint64> items;
    Statement rows = library.Query(u"SELECT ID FROM Items WHERE LastChanged = 0"_s);
    while (rows.Step())
        items.push_back(rows.Long(0));
    return items;
}

RemovedItems RemoveItemsMarkedForDelete(Library& library, const std::function<void(const RemovedItems&)>& beforeCommit,
                                        DeletionKeeper& keeper)
{
    Outside outside;
    Transaction transaction(library);
    RemovedItems removed;
    removed.Items = ItemsMarkedForDelete(library);
    std::erase(removed.Items, FindOrphanFolder(library)); // what stands in it would go along
    keeper.Take(library, removed.Items);
    removed.Orphans = MakeOrphansBelow(library, removed.Items);
    for (const qint64 item : removed.Items)
        DeleteOne(library, item, outside);
    if (removed.Orphans == 0)
        RemoveEmptyOrphanFolder(library);
    keeper.Note();
    if (beforeCommit)
        beforeCommit(removed);
    transaction.Commit();
    keeper.Place();
    outside.Complete();
    return removed;
}

bool RenameItem(Library& library, qint64 id, const QString& title)
{
    CCodeItem item;
    item.Initialise(library, QString::number(id));
    item.SetTitle(title);
    item.SetItemChanged(true);
    return item.Commit();
}

void MoveItem(Library& library, qint64 id, qint64 parent)
{
    Transaction transaction(library); // two moves at a time could make a cycle
    // Nobody is asked here whether an item that waits for a decision is to be kept, which a new date would do.
    RequireChange(library, id, {ItemChange::Move, ItemChange::EditUnasked});
    RequireChange(library, parent, {ItemChange::Receive});
    if (IsInBranch(library, id, parent))
        throw RuntimeError(ErrorNumber::NodeCycle,
                           u"The item %1 can't be moved below itself; nothing was changed."_s.arg(id), u"MoveItem"_s);
    const bool stamp = MovesDate(ItemChange::Move, StandingOf(library, id));
    CCodeItem item;
    item.Initialise(library, QString::number(id));
    RefuseReservedTitle(item.Title(), parent);
    item.SetParentKey(QString::number(parent));
    item.SetDontUpdateLastChangedDate(!stamp);
    item.SetItemChanged(true);
    CommitOrRaise(item, u"The item %1 could not be moved; nothing was changed."_s.arg(id));
    if (stamp)
        RemoveEmptyOrphanFolder(library);
    transaction.Commit();
}

void RefuseReservedTitle(const QString& title, qint64 parent)
{
    if (parent == 0 && title == OrphanedItemsTitle)
        throw RuntimeError(ErrorNumber::ValueNotAllowed,
                           u"You can't create an 'Orphaned Items' folder! This name is reserved for the program."_s,
                           u"RefuseReservedTitle"_s);
}

} // namespace qb
