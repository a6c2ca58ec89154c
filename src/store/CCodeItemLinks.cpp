// The links of an item: how they are read, and written as rows from both sides.

#include "platform/dao/Database.h"
#include "store/CCodeItem.h"
#include "store/Deletions.h"
#include "store/ItemBranch.h"
#include "store/Library.h"
#include "support/ErrorRoutine.h"

namespace qb {

using namespace Qt::StringLiterals;

void CCodeItem::LoadLinks()
{
    Guarded(ModuleName(), u"LoadLinks"_s, [this] { ReadLinks(); });
}

void CCodeItem::ReadLinks()
{
    m_links.Clear();
    const qint64 key = RowKey();
    Statement outgoing = OwnLibrary().Query(
        u"SELECT ItemLinks.ID, ItemLinks.LinkItemID, ItemLinks.Note, ItemLinks.DateUpdated, Items.Title FROM ItemLinks "
        "LEFT JOIN Items ON ItemLinks.LinkItemID = Items.ID WHERE ItemLinks.ItemID = ? ORDER BY ItemLinks.ID"_s,
        {key});
    while (outgoing.Step()) {
        const qint64 other = outgoing.Long(1);
        const std::shared_ptr<CLink> link = m_links.Add(CLinks::KeyOf(other));
        link->ID = outgoing.Long(0);
        link->LinkedItemId = other;
        link->Direction = LinkDirection::Left;
        link->Note = outgoing.Text(2);
        link->DateChanged = outgoing.Column(3).ToDate();
        link->LinkedItemTitle = outgoing.Text(4); // of a deleted item: empty
    }
    Statement incoming = OwnLibrary().Query(u"SELECT ID, ItemID FROM ItemLinks WHERE LinkItemID = ?"_s, {key});
    while (incoming.Step()) {
        // A link that only comes in is not this item's to show.
        if (const auto link = m_links.AddAutoResolveExisting(incoming.Long(1), LinkDirection::Right))
            link->ID2 = incoming.Long(0);
    }
}

/// What the mother calls a record; 0 outside a child.
qint64 CCodeItem::MotherRecordOf(qint64 item) const
{
    if (!OwnLibrary().IsChildReplica())
        return 0;
    const Value mother = OwnLibrary().QueryValue(u"SELECT MotherRecordID FROM Items WHERE ID = ?"_s, {item});
    if (mother.IsNull() && OwnLibrary().QueryValue(u"SELECT 1 FROM Items WHERE ID = ?"_s, {item}).IsNull())
        throw RuntimeError(ErrorNumber::NoCurrentRecord, u"Required record missing"_s, ModuleName());
    return mother.ToLong();
}

/// Adds the row that leads from one item to the other; returns its ID.
qint64 CCodeItem::InsertLinkRow(qint64 from, qint64 to, const QString& note)
{
    for (const qint64 end : {from, to}) {
        if (end == RowKey() || !OwnLibrary().IsChildReplica()) // another program may have deleted it since
            RequireItem(OwnLibrary(), end);
    }
    const Date now = OwnLibrary().NextStamp();
    Recordset row = OwnLibrary().OpenRecordset(u"ItemLinks"_s, u"ID = 0"_s);
    row.AddNew();
    row.Set(u"ItemID"_s, from);
    row.Set(u"LinkItemID"_s, to);
    if (OwnLibrary().IsChildReplica()) {
        const qint64 own = RowKey();
        row.Set(u"MotherItemID"_s, from == own ? qint64(MotherRecordKey()) : MotherRecordOf(from));
        row.Set(u"MotherLinkItemID"_s, to == own ? qint64(MotherRecordKey()) : MotherRecordOf(to));
    }
    row.Set(u"Note"_s, NoteText(note));
    row.Set(u"DateAdded"_s, now);
    row.Set(u"DateUpdated"_s, now);
    row.Update();
    return row.LastModified();
}

/// The ID of the row that leads from one item to the other; it is added where there is none. Another program,
/// or the other item, may have made it since; what that one notes stays, and @p note stands below it.
qint64 CCodeItem::EnsureLinkRow(qint64 from, qint64 to, const QString& note)
{
    const Recordset row = OwnLibrary().OpenRecordset(u"ItemLinks"_s, u"ItemID = ? AND LinkItemID = ?"_s, {from, to});
    if (row.IsEmpty())
        return InsertLinkRow(from, to, note);
    const qint64 id = row[u"ID"_s].ToLong();
    QStringList notes{row[u"Note"_s].ToText(), NoteText(note)};
    notes.removeAll(QString());
    notes.removeDuplicates();
    if (!note.isEmpty())
        OwnLibrary().Execute(u"UPDATE ItemLinks SET Note = ?, DateUpdated = ? WHERE ID = ?"_s,
                             {notes.join(u"\r\n"_s), OwnLibrary().NextStamp(), id});
    return id;
}

void CCodeItem::ChangeLinkNote(const QString& key, const QString& note)
{
    const std::shared_ptr<CLink> link = m_links.Item(key);
    if (!link || link->Note == WritableNote(note))
        return;
    link->Note = WritableNote(note);
    link->DirtyFlag = true;
    m_links.DirtyFlag = true;
    SetLinksChanged(true);
}

/// A note with an apostrophe can't be written; that is an error like any other of a statement.
QString CCodeItem::NoteText(const QString& note) const
{
    if (note.contains(u'\''))
        throw RuntimeError(
            ErrorNumber::SyntaxError,
            u"Syntax error (missing operator) in query expression: the note '%1' of a link has an apostrophe. "
            "Nothing was saved."_s.arg(note.left(60)),
            ModuleName());
    return note;
}

/// Deletes a row, and records it where the other side may know the link.
void CCodeItem::DeleteLinkRow(qint64 id)
{
    if (id == 0)
        return;
    if (OwnLibrary().IsReplicated())
        RecordLinkDeletion(id);
    OwnLibrary().Execute(u"DELETE FROM ItemLinks WHERE ID = ?"_s, {id});
}

/// The table of deletions names a link by the IDs that the other side knows it by, the log by those of both sides.
void CCodeItem::RecordLinkDeletion(qint64 id)
{
    Library& library = OwnLibrary();
    const Date now = library.NextStamp();
    const QString mothers = u"MotherItemID, MotherLinkItemID"_s;
    const QString ends = library.IsChildReplica() ? mothers : u"ItemID, LinkItemID"_s;
    library.Execute(u"INSERT INTO DeletedItemLinks (ItemID, LinkItemID, DateDeleted) SELECT %1, ? FROM ItemLinks "
                    "WHERE ID = ? AND coalesce(DateAdded, 0) < ? AND min(%1) > 0"_s.arg(ends),
                    {now, id, DeletionCutOff(library)});
    Statement row = library.Query(u"SELECT ItemID, LinkItemID, DateAdded, %1 FROM ItemLinks WHERE ID = ?"_s.arg(
                                      library.IsChildReplica() ? mothers : u"0, 0"_s),
                                  {id});
    if (row.Step())
        LogDeletion(library, {.Table = u"ItemLinks"_s,
                              .Record = row.Long(0),
                              .Second = row.Long(1),
                              .MotherRecord = row.Long(3),
                              .MotherSecond = row.Long(4),
                              .Added = row.Column(2),
                              .Deleted = now});
}

/// Writes the rows of one link; what changes in memory by that is for later, when all are written.
CCodeItem::LinkChange CCodeItem::UpdateLink(const CLink& link)
{
    const qint64 own = RowKey();
    const qint64 other = link.LinkedItemId;
    const auto writeNote = [&] {
        const qint64 written = OwnLibrary().Execute(u"UPDATE ItemLinks SET Note = ?, DateUpdated = ? WHERE ID = ?"_s,
                                                    {NoteText(link.Note), OwnLibrary().NextStamp(), link.ID});
        if (written == 0) // another program has removed it since
            EnsureLinkRow(own, other, link.Note);
    };
    const bool leads = link.Direction == LinkDirection::Left || link.Direction == LinkDirection::Both;
    const bool leadsBack = link.Direction == LinkDirection::Right || link.Direction == LinkDirection::Both;
    if (link.ID == 0) { // a new link; reloading the item brings its IDs
        if (leads)
            EnsureLinkRow(own, other, link.Note);
        if (leadsBack)
            EnsureLinkRow(other, own, {});
        return {.ID2 = link.ID2, .Removed = false};
    }
    LinkChange change{.ID2 = link.ID2, .Removed = !leads};
    leads ? writeNote() : DeleteLinkRow(link.ID);
    if (!leadsBack)
        DeleteLinkRow(link.ID2);
    else if (link.ID2 == 0)
        change.ID2 = EnsureLinkRow(other, own, {});
    return change;
}

/// All links or none.
void CCodeItem::UpdateLinks()
{
    std::vector<std::pair<std::shared_ptr<CLink>, LinkChange>> written;
    Transaction transaction(OwnLibrary());
    for (const std::shared_ptr<CLink>& link : m_links.All()) {
        if (link->DirtyFlag)
            written.emplace_back(link, UpdateLink(*link));
    }
    transaction.Commit();
    for (const auto& [link, change] : written) {
        link->ID2 = change.ID2;
        link->DirtyFlag = false;
        if (change.Removed)
            m_links.Remove(CLinks::KeyOf(link->LinkedItemId));
    }
    m_links.DirtyFlag = false;
}

} // namespace qb
