#include "replication/MotherMerge.h"

#include "platform/system/Clock.h"
#include "replication/ExportRows.h"
#include "store/ItemBranch.h"
#include "store/ReplicaLog.h"

namespace qb {

using namespace Qt::StringLiterals;

bool MotherMerge::SynchronizeMother()
{
    if (!ExportOwnChanges())
        return false;
    m_run.BeginWriting();
    NoteWhatIsWithheld();
    CopyMotherIDsInXTables();
    ListChanged();
    m_run.SetUpOrphanedItemsFolder();
    m_run.MoveAndRemoveDeletedItems();
    m_run.RemoveDeletedFiles();
    m_run.RemoveDeletedItemsLinks();
    m_run.EndIfCancelled();
    CopyNewAndUpdatedItems();
    UpdateItemLinksIDs();
    CopyItemLinks();
    UpdateItemsParentIDs();
    CopyFiles();
    CopyHTMLFiles();
    DatePagesForTheMother();
    ReportVerdicts();
    if (!m_run.IsPreview)
        m_run.Contents.MakeNew();
    ClearSynchroFileTables();
    m_run.MoveMarkedItemsToOrphanedItemsFolder(false);
    m_run.CheckItToDeleteOrphanedItemsFolder();
    DeleteOrphanedItemsFromSynchroXTables();
    CopyDeletions();
    CopyMotherIDsUpdatesForDeletedItems();
    CopyXTables();
    BringDatesDown();
    StampBoth();
    CleanLists();
    m_run.NoteChecksums(ItemsOf(u"'new', 'regained', 'update', 'won'"_s));
    return true;
}

bool MotherMerge::ExportOwnChanges()
{
    const ExportPlace place{.Connection = m_lib,
                            .Library = MainSchema,
                            .File = SynchroSchema,
                            .FilesFolder = m_lib.FilesFolder(),
                            .HTMLFolder = m_lib.HTMLFolder()};
    ExportCounts counts;
    return ExportChangedItems(place, true, {}, counts, m_run.Watcher);
}

/// What waits for a decision is for nobody else. A child that may not have got it before gets it whole in the round
/// after that is taken, whoever takes it.
void MotherMerge::NoteWhatIsWithheld()
{
    m_run.Execute(u"DELETE FROM main.ReplicaLog WHERE Event = 7 AND OfTable = 'Items' AND Origin = ? AND RecordID IN "
                  "(SELECT ID FROM main.Items WHERE coalesce(LastChanged, -1) <> 0)"_s,
                  {m_run.Other});
    m_run.Log(u"SELECT 'Items', i.ID, 0, 7, ?1, 0, ?2 FROM main.Items AS i WHERE i.LastChanged = 0 AND (i.Created > ?3 "
              "OR EXISTS (SELECT 1 FROM main.ReplicaLog AS l WHERE l.OfTable = 'Items' AND l.RecordID = i.ID "
              "AND l.Event = 1 AND l.Moment > ?3 AND l.Origin <> ?2))"_s,
              {m_run.Stamp, m_run.Other, m_run.Last});
}

void MotherMerge::CopyMotherIDsInXTables()
{
    for (const QString& statement :
         {u"UPDATE synchro.ItemsX SET MotherRecordID = ID, MotherParentID = ParentID"_s,
          u"UPDATE synchro.FilesX SET MotherRecordID = ID, MotherCodeID = CodeID"_s,
          u"UPDATE synchro.ItemLinksX SET MotherItemID = ItemID, MotherLinkItemID = LinkItemID"_s})
        m_run.Execute(statement);
}

/// What waits for a decision counts as changed, unless it waits since this child brought it back.
void MotherMerge::ListChanged()
{
    m_run.Execute(u"INSERT OR IGNORE INTO temp.merge_Changed SELECT ID FROM synchro.ItemsX"_s);
    m_run.Execute(u"INSERT OR IGNORE INTO temp.merge_Changed SELECT i.ID FROM main.Items AS i WHERE i.LastChanged = 0 "
                  "AND NOT EXISTS (SELECT 1 FROM main.ReplicaLog AS l WHERE l.OfTable = 'Items' AND l.RecordID = i.ID "
                  "AND l.Event = 1 AND l.RowDate = 0 AND l.Origin = ?)"_s,
                  {m_run.Other});
}

// The file for the way back

void MotherMerge::ClearSynchroFileTables()
{
    for (const QString& statement :
         {u"DELETE FROM synchro.DeletedFiles"_s, u"DELETE FROM synchro.DeletedItems"_s,
          u"DELETE FROM synchro.Files WHERE IDChanged = 0"_s,
          u"UPDATE synchro.Files SET File = NULL, Description = ''"_s, u"DELETE FROM synchro.HTMLFiles"_s,
          u"DELETE FROM synchro.ItemLinks WHERE IDChanged = 0"_s, u"DELETE FROM synchro.DeletedItemLinks"_s,
          // A place that is still unknown now has been told otherwise.
          u"DELETE FROM synchro.Items WHERE IDChanged = 0 AND ConflictItem = 0"_s})
        m_run.Execute(statement);
}

void MotherMerge::DeleteOrphanedItemsFromSynchroXTables()
{
    // What waits here that the child does not have has nothing that travels, either.
    const QString kept = u"SELECT ID FROM temp.merge_Orphaned"_s;
    const QString lacking =
        u"SELECT l.RecordID FROM main.ReplicaLog AS l WHERE l.Event IN (6, 7) AND l.OfTable = 'Items' AND l.Origin = ? "
        "AND l.RecordID NOT IN (SELECT ID FROM synchro.ItemsX)"_s;
    m_run.Execute(u"DELETE FROM synchro.ItemsX WHERE ParentID <> -3 AND ID IN (%1)"_s.arg(kept));
    for (const QString& statement : {u"DELETE FROM synchro.FilesX WHERE CodeID IN (%1)"_s,
                                     u"DELETE FROM synchro.HTMLFilesX WHERE ItemIDRef IN (%1)"_s,
                                     u"DELETE FROM synchro.ItemLinksX WHERE ItemID IN (%1) OR LinkItemID IN (%1)"_s}) {
        m_run.Execute(statement.arg(kept));
        m_run.Execute(statement.contains(u" OR "_s) ? statement.arg(QString(lacking).replace(u'?', u"?1"_s))
                                                    : statement.arg(lacking),
                      {m_run.Other});
    }
    m_run.Execute(u"DELETE FROM main.ReplicaLog WHERE Event = 6 AND OfTable = 'Items' AND Origin = ? AND RecordID IN "
                  "(SELECT ID FROM synchro.ItemsX WHERE ParentID <> -3)"_s,
                  {m_run.Other});
    m_run.Execute(
        u"UPDATE synchro.ItemsX SET MotherParentID = -2 WHERE ParentID <> -3 AND ID IN (SELECT ID FROM main.Items "
        "WHERE ParentID = ?)"_s,
        {m_run.OrphanedFolderID});
    // Whatever moved here since the rows were copied.
    m_run.Execute(u"UPDATE synchro.ItemsX SET MotherParentID = i.ParentID FROM main.Items AS i WHERE i.ID = ItemsX.ID "
                  "AND ItemsX.ParentID <> -3 AND i.ParentID <> ?"_s,
                  {m_run.OrphanedFolderID});
}

/// What was deleted here since, or came from others, but not what this child has told itself, or has brought back. In
/// the tables of one that is a child as well stands what its mother is to be told, in her numbers; the log has it all.
void MotherMerge::CopyDeletions()
{
    struct Deletions {
        QString Table, OfTable, Columns, Logged, Same;
    };
    const Deletions all[] = {
        {u"DeletedFiles"_s, u"Files"_s, u"ItemID"_s, u"l.RecordID AS ItemID"_s, u"l.RecordID = r.ItemID"_s},
        {u"DeletedItems"_s, u"Items"_s, u"ItemID"_s, u"l.RecordID AS ItemID"_s, u"l.RecordID = r.ItemID"_s},
        {u"DeletedItemLinks"_s, u"ItemLinks"_s, u"ItemID, LinkItemID"_s,
         u"l.RecordID AS ItemID, l.SecondID AS LinkItemID"_s,
         u"l.RecordID = r.ItemID AND l.SecondID = r.LinkItemID"_s}};
    const bool hasTables = !m_lib.IsChildReplica();
    for (const Deletions& one : all)
        m_run.Execute(
            u"INSERT INTO synchro.%1 (%2, DateDeleted) SELECT %2, max(DateDeleted) FROM (SELECT %2, DateDeleted "
            "FROM main.%1 AS r WHERE ?4 AND DateDeleted > ?1 AND NOT EXISTS (SELECT 1 FROM main.ReplicaLog AS l "
            "WHERE l.OfTable = ?3 AND l.Event = 2 AND %4 AND l.Origin = ?2) UNION ALL "
            "SELECT %3, l.RowDate AS DateDeleted FROM main.ReplicaLog AS l WHERE l.OfTable = ?3 AND l.Event = 2 "
            "AND l.Moment > ?1 AND l.Origin <> ?2) GROUP BY %2"_s.arg(one.Table, one.Columns, one.Logged, one.Same),
            {m_run.Last, m_run.Other, one.OfTable, int(hasTables)});
    // What was linked again since is no deletion; of two notes the later one stays there as well.
    m_run.Execute(u"DELETE FROM synchro.DeletedItemLinks AS d WHERE EXISTS (SELECT 1 FROM main.ItemLinks AS l "
                  "WHERE l.ItemID = d.ItemID AND l.LinkItemID = d.LinkItemID)"_s);
    m_run.Execute(u"DELETE FROM synchro.DeletedItems WHERE ItemID IN (SELECT OldMother FROM temp.merge_Verdicts "
                  "WHERE What = 'regained')"_s);
}

void MotherMerge::CopyMotherIDsUpdatesForDeletedItems()
{
    m_run.Execute(u"INSERT INTO synchro.Items (ID, MotherRecordID, MotherParentID, Title, IDChanged) "
                  "SELECT ID, MotherRecordID, MotherParentID, Title, ? FROM synchro.ItemsX WHERE ParentID = -3"_s,
                  {Value(true)});
    m_run.Execute(u"DELETE FROM synchro.ItemsX WHERE ParentID = -3"_s);
}

void MotherMerge::CopyXTables()
{
    for (const QString& table : {u"Items"_s, u"Files"_s, u"HTMLFiles"_s, u"ItemLinks"_s})
        CopyRecords(m_lib, u"synchro."_s + table + u'X', u"synchro."_s + table);
    for (const QString& table : {u"ItemsX"_s, u"FilesX"_s, u"HTMLFilesX"_s, u"ItemLinksX"_s})
        m_lib.DeleteTableDef(u"synchro."_s + table);
}

// Dates

/// A child's clock may be ahead; its dates decide as they are, and count as of now then.
void MotherMerge::BringDatesDown()
{
    struct Dated {
        QLatin1StringView Table;
        QLatin1StringView Date;
    };
    constexpr Dated Dates[] = {{"Items"_L1, "LastChanged"_L1},
                               {"Items"_L1, "Created"_L1},
                               {"Items"_L1, "HTMLLastUpdated"_L1},
                               {"Files"_L1, "DateAdded"_L1},
                               {"Files"_L1, "LastUpdated"_L1}};
    const Date now = Clock::Now();
    for (const Dated& dated : Dates)
        m_run.Execute(u"UPDATE main.%1 SET %2 = ?1 WHERE %2 > ?1 AND ID IN (SELECT RecordID FROM main.ReplicaLog "
                      "WHERE OfTable = '%1' AND Event = 1 AND Moment = ?2 AND "
                      "Origin = ?3)"_s.arg(dated.Table, dated.Date),
                      {now, m_run.Stamp, m_run.Other});
    m_run.Execute(u"UPDATE main.ItemLinks SET DateAdded = ?1 WHERE DateAdded > ?1"_s, {now});
    m_run.Execute(u"UPDATE main.ItemLinks SET DateUpdated = ?1 WHERE DateUpdated > ?1"_s, {now});
    m_run.Execute(u"UPDATE main.DeletedItems SET DateDeleted = ?1 WHERE DateDeleted > ?1"_s, {now});
    m_run.Execute(u"UPDATE main.DeletedFiles SET DateDeleted = ?1 WHERE DateDeleted > ?1"_s, {now});
    m_run.Execute(u"UPDATE main.DeletedItemLinks SET DateDeleted = ?1 WHERE DateDeleted > ?1"_s, {now});
    m_run.Execute(u"UPDATE OR REPLACE main.ReplicaLog SET RowDate = ?1 WHERE RowDate > ?1 AND Moment = ?2 "
                  "AND Origin = ?3"_s,
                  {now, m_run.Stamp, m_run.Other});
}

void MotherMerge::StampBoth()
{
    m_run.Execute(u"UPDATE main.ChildCopies SET LastSynchronized = ? WHERE DBCopyID = ?"_s, {m_run.Stamp, m_run.Other});
    m_run.Execute(u"UPDATE synchro.Properties SET LastSynchronized = ?"_s, {m_run.Stamp});
}

/// A deletion stays listed until every child has passed it.
void MotherMerge::CleanLists()
{
    const Value passed = m_lib.QueryValue(u"SELECT min(LastSynchronized) FROM main.ChildCopies"_s);
    if (!passed.IsNull()) {
        for (const QString& table : {u"DeletedFiles"_s, u"DeletedItems"_s, u"DeletedItemLinks"_s})
            m_run.Execute(u"DELETE FROM main.%1 WHERE DateDeleted < ?"_s.arg(table), {passed});
    }
    ReplicaLog(m_lib).Trim();
}

// The report

void MotherMerge::ReportVerdicts()
{
    m_run.ReportVerdicts(u"s.MotherParentID"_s);
    m_run.LinesOf(MergeEvent::ItemRegained, u"v.What = 'regained'"_s, u"'deleted here, changed by the child later'"_s);
    m_run.Line(MergeEvent::SetAside,
               u"SELECT 0, s.Title, CASE v.What WHEN 'forgotten' THEN 'not known here; it travels as a new item in the "
               "next round' ELSE 'deleted here after the child had changed it' END FROM temp.merge_Verdicts AS v "
               "JOIN synchro.Items AS s ON s.rowid = v.SRow WHERE v.What IN ('forgotten', 'ignored')"_s);
}

} // namespace qb
