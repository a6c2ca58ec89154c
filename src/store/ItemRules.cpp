#include "store/ItemRules.h"

#include "store/ItemBranch.h"

#include <QFileInfo>
#include <algorithm>
#include <unordered_set>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

struct BarRow {
    Bar What;
    bool (*Holds)(const ItemStanding& standing);
    const char* Sentence;
};

/// In the order in which they are told.
constexpr BarRow BarRows[] = {
    {Bar::NoLibrary, [](const ItemStanding& s) { return s.NoLibrary; }, "No library is open"},
    {Bar::FileGone, [](const ItemStanding& s) { return s.FileGone; }, "The file of the library is not there any more"},
    {Bar::ReadOnly, [](const ItemStanding& s) { return s.ReadOnly; }, "The library can only be read"},
    {Bar::Root, [](const ItemStanding& s) { return s.Root; }, "The root of the tree is no item"},
    {Bar::LockedOrphan, [](const ItemStanding& s) { return s.Orphan && s.IsChild; },
     "The item is an orphan of this child library and locked until its mother has decided"},
    {Bar::OrphanFolder, [](const ItemStanding& s) { return s.OrphanUnderRoot && s.IsMother; },
     "The folder of orphaned items stays where it is in a mother library"},
    {Bar::Orphan, [](const ItemStanding& s) { return s.Orphan; },
     "The item is the folder of orphaned items or stands below it"},
    {Bar::Exported, [](const ItemStanding& s) { return s.Exported && !s.Orphan; },
     "The changes of this child library are on their way to its mother; until its answer is taken in no item can be "
     "deleted"},
    {Bar::Deleted, [](const ItemStanding& s) { return s.Deleted; },
     "A child library has deleted the item; it has to be kept or removed first"},
    {Bar::Waiting, [](const ItemStanding& s) { return s.Waiting; }, "The item is in conflict at the mother library"},
    {Bar::Conflict, [](const ItemStanding& s) { return s.Conflict; },
     "The item is in conflict, which has to be resolved first"},
    {Bar::NotDeleted, [](const ItemStanding& s) { return !s.Marked; }, "The item does not wait for removal"},
    {Bar::NotInConflict, [](const ItemStanding& s) { return !s.Conflict; }, "The item is not in conflict"},
};

constexpr unsigned Bit(Bar bar)
{
    return 1U << unsigned(bar);
}

template <class... Bars>
constexpr unsigned Any(Bars... bars)
{
    return ((Bit(Bar::NoLibrary) | Bit(Bar::FileGone) | Bit(Bar::ReadOnly)) | ... | Bit(bars));
}

struct ChangeRow {
    ItemChange What;
    unsigned Bars;
};

/// What bars each change; a library that is not there or can't be written bars all that change something.
constexpr ChangeRow ChangeRows[] = {
    {ItemChange::Add, Any(Bar::Orphan, Bar::Deleted)},
    {ItemChange::AddBeside, Any(Bar::Root, Bar::Orphan, Bar::Deleted)},
    {ItemChange::Import, Any(Bar::Orphan, Bar::Deleted)},
    {ItemChange::Edit, Any(Bar::LockedOrphan)},
    {ItemChange::EditUnasked, Any(Bar::Root, Bar::LockedOrphan, Bar::Deleted, Bar::Waiting)},
    {ItemChange::Rename, Any(Bar::Root, Bar::Orphan, Bar::Deleted, Bar::Conflict)},
    {ItemChange::Move, Any(Bar::Root, Bar::LockedOrphan, Bar::OrphanFolder)},
    {ItemChange::Receive, Any(Bar::Orphan)},
    {ItemChange::Delete, Any(Bar::Root, Bar::LockedOrphan, Bar::Exported, Bar::Conflict)},
    {ItemChange::Keep, Any(Bar::Root, Bar::Waiting, Bar::Conflict, Bar::NotDeleted)},
    {ItemChange::Resolve, Any(Bar::Root, Bar::NotInConflict)},
    {ItemChange::Bookmark, Any(Bar::Root, Bar::Orphan)},
    {ItemChange::Link, Any(Bar::Root, Bar::Orphan)},
    {ItemChange::Print, Bit(Bar::NoLibrary) | Bit(Bar::Root)},
    {ItemChange::Write, Any()},
    {ItemChange::Read, Bit(Bar::NoLibrary)},
};

/// The title of the ancestor directly under the root; empty where there is none.
QString TitleUnderRoot(Library& library, qint64 item)
{
    std::unordered_set<qint64> seen; // damaged rows may make a circle
    QString title;
    while (item != 0 && seen.insert(item).second) {
        Statement row = library.Query(u"SELECT ParentID, Title FROM Items WHERE ID = ?"_s, {item});
        if (!row.Step())
            return {};
        item = row.Long(0);
        title = row.Text(1);
    }
    return item == 0 ? title : QString();
}

void ReadItem(Library& library, qint64 item, ItemStanding& standing)
{
    Statement row = library.Query(
        u"SELECT ParentID, LastChanged IS NULL, coalesce(LastChanged, 0) FROM Items WHERE ID = ?"_s, {item});
    if (!row.Step())
        return;
    standing.Orphan = IsOrphanFolderTitle(TitleUnderRoot(library, item));
    standing.OrphanUnderRoot = standing.Orphan && row.Long(0) == 0;
    standing.Marked = row.Long(2) == 0;
    standing.Conflict = standing.IsMother && library.TableExists(u"TempItems"_s)
                        && !library.QueryValue(u"SELECT 1 FROM TempItems WHERE ID = ?"_s, {item}).IsNull();
    const bool decides = standing.Marked && row.Long(1) == 0 && !standing.Conflict; // a row without any date is none
    standing.Waiting = decides && standing.IsChild;
    standing.Deleted = decides && standing.IsMother && !standing.IsChild;
}

} // namespace

Bar WhatBars(ItemChange change, const ItemStanding& standing)
{
    const auto* row = std::find_if(std::begin(ChangeRows), std::end(ChangeRows),
                                   [change](const ChangeRow& one) { return one.What == change; });
    // The folder's place under the root is an ordinary one.
    const unsigned exempt = change == ItemChange::AddBeside && standing.OrphanUnderRoot ? Bit(Bar::Orphan) : 0;
    for (const BarRow& bar : BarRows) {
        if ((row->Bars & ~exempt & Bit(bar.What)) && bar.Holds(standing))
            return bar.What;
    }
    return Bar::None;
}

QString SentenceOf(Bar bar)
{
    const auto* row = std::find_if(std::begin(BarRows), std::end(BarRows),
                                   [bar](const BarRow& one) { return one.What == bar; });
    return row == std::end(BarRows) ? QString() : QString::fromLatin1(row->Sentence);
}

bool MovesDate(ItemChange change, const ItemStanding& standing)
{
    const bool decided = standing.Deleted || standing.Conflict; // by being edited
    return !standing.Orphan || standing.IsChild || decided || (change == ItemChange::Move && standing.IsMother);
}

ItemStanding StandingOf(Library& library, qint64 item)
{
    const ReplicaState replica = ReadReplicaState(library);
    ItemStanding standing{.FileGone = !QFileInfo::exists(library.Name()),
                          .ReadOnly = library.IsReadOnly(),
                          .IsChild = replica.IsChild,
                          .IsMother = replica.IsMother,
                          .Exported = replica.IsChild && !replica.LastExported.IsNone(),
                          .Root = item == 0};
    if (item != 0)
        ReadItem(library, item, standing);
    return standing;
}

void RequireChange(Library& library, qint64 item, std::initializer_list<ItemChange> changes)
{
    if (item != 0)
        RequireItem(library, item);
    const ItemStanding standing = StandingOf(library, item);
    for (const ItemChange change : changes) {
        const Bar bar = WhatBars(change, standing);
        if (bar != Bar::None)
            throw RuntimeError(ErrorNumber::ValueNotAllowed,
                               item == 0 ? SentenceOf(bar) + u"; nothing was changed."_s
                                         : u"Item %1: %2; nothing was changed."_s.arg(item).arg(SentenceOf(bar)),
                               u"RequireChange"_s);
    }
}

bool IsOrphanFolderTitle(const QString& title)
{
    return title.startsWith(OrphanedItemsTitle);
}

} // namespace qb
