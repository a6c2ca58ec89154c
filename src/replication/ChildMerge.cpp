#include "replication/ChildMerge.h"

#include "store/ReplicaLog.h"

#include <algorithm>

namespace qb {

using namespace Qt::StringLiterals;

void ChildMerge::SynchronizeChild()
{
    m_run.BeginWriting();
    ReplicaLog(m_lib).MoveOn(m_run.Exported, m_later);
    ListChanged();
    HoldChecksums();
    UpdateNewItemsDatesInReplica();
    m_run.SetUpOrphanedItemsFolder();
    m_run.MoveAndRemoveDeletedItems();
    TravelsAnew(u"SELECT ID FROM temp.merge_Kept"_s, true);
    m_run.RemoveDeletedFiles();
    FilesTravelAnew(u"SELECT ID FROM temp.merge_Survivors"_s);
    m_run.RemoveDeletedItemsLinks();
    m_run.EndIfCancelled();
    CopyNewAndUpdatedItemsToReplica();
    UpdateItemLinksIDsForReplica();
    CopyItemLinksToReplica();
    UpdateItemsParentIDsInReplica();
    UpdateParentIDsInTempTables();
    CopyFilesToReplica();
    CopyHTMLFilesToReplica();
    ReportVerdicts();
    if (!m_run.IsPreview)
        m_run.Contents.MakeNew();
    m_run.MoveMarkedItemsToOrphanedItemsFolder(true);
    m_run.CheckItToDeleteOrphanedItemsFolder();
    UpdateUpdatedItemsDatesInReplica();
    NoteArrivals();
    Stamp();
    m_run.NoteChecksums(ItemsOf(u"'new', 'update', 'won'"_s));
}

/// Of the rows that get another date: what the child has written since its export, and what the mother has found in
/// conflict.
void ChildMerge::HoldChecksums()
{
    m_run.Sums.Hold(u"Items"_s, u"SELECT ID FROM main.Items WHERE LastChanged > ?1 OR Created > ?1"_s,
                    {m_run.Exported});
    m_run.Sums.Hold(u"Items"_s, u"SELECT ID FROM synchro.Items WHERE ConflictItem <> 0"_s);
    m_run.Sums.Hold(u"Files"_s, u"SELECT ID FROM main.Files WHERE LastUpdated > ?1 OR DateAdded > ?1"_s,
                    {m_run.Exported});
}

/// Whether for good or for as long as the mother knows nothing of it.
void ChildMerge::ListChanged()
{
    m_run.Execute(
        u"INSERT OR IGNORE INTO temp.merge_Changed SELECT i.ID FROM main.Items AS i WHERE i.LastChanged > ?1 "
        "AND NOT %1 UNION SELECT l.RecordID FROM main.ReplicaLog AS l WHERE l.OfTable = 'Items' AND l.Event = 4 "
        "AND l.Moment > ?1"_s.arg(IsTakenOver(u"Items"_s, u"i.ID"_s, u"i.LastChanged"_s)),
        {m_run.Last});
    // What the mother calls otherwise from now on, or knows no more, is not taken by her deletions of it.
    m_run.Execute(u"INSERT OR IGNORE INTO temp.merge_Spared SELECT i.ID FROM synchro.Items AS s "
                  "JOIN main.Items AS i ON i.ID = s.ID WHERE s.IDChanged <> 0 AND i.MotherRecordID > 0 "
                  "AND s.MotherRecordID <> i.MotherRecordID"_s);
}

// What travels next time

/// The mother does not have these items, or not as she had them: next time everything of them goes to her.
void ChildMerge::TravelsAnew(const QString& items, bool withRow)
{
    if (m_lib.QueryValue(u"SELECT 1 WHERE EXISTS (%1)"_s.arg(items)).IsNull())
        return;
    m_run.Execute(u"CREATE TEMP TABLE merge_Anew AS "_s + items);
    const QString anew = u"SELECT ID FROM temp.merge_Anew"_s;
    FilesTravelAnew(u"SELECT ID FROM main.Files WHERE CodeID IN (%1)"_s.arg(anew));
    m_run.Log(u"SELECT 'ItemLinks', ItemID, LinkItemID, 4, ?1, ?1, '' FROM main.ItemLinks WHERE ItemID IN (%1) "
              "OR LinkItemID IN (%1)"_s.arg(anew),
              {m_later});
    if (withRow) {
        m_run.Execute(u"UPDATE main.Items SET MotherRecordID = -1, MotherParentID = 0 WHERE ID IN (%1)"_s.arg(anew));
        m_run.Log(u"SELECT 'Items', ID, 0, 4, ?1, ?1, '' FROM temp.merge_Anew"_s, {m_later});
    }
    m_run.Log(u"SELECT 'Pages', ID, 0, 4, ?1, ?1, '' FROM main.Items WHERE HTMLPage <> 0 AND ID IN (%1)"_s.arg(anew),
              {m_later});
    m_run.Execute(u"DROP TABLE temp.merge_Anew"_s);
}

void ChildMerge::FilesTravelAnew(const QString& files)
{
    m_run.Log(u"SELECT 'Files', ID, 0, 4, ?1, ?1, '' FROM main.Files WHERE ID IN (%1)"_s.arg(files), {m_later});
    m_run.Execute(u"UPDATE main.Files SET MotherRecordID = 0, MotherCodeID = 0 WHERE ID IN (%1)"_s.arg(files));
}

// Dates

void ChildMerge::UpdateNewItemsDatesInReplica()
{
    const Values bounds{m_later, m_run.Exported, m_run.Stamp};
    // What was added in the very second of the stamp would not travel by that date, either.
    for (const QString& statement :
         {u"UPDATE main.Items SET Created = ?1, LastChanged = ?1 WHERE Created > ?2 AND Created < ?3"_s,
          u"UPDATE main.Files SET DateAdded = ?1, LastUpdated = ?1 WHERE DateAdded > ?2 AND DateAdded <= ?3"_s,
          u"UPDATE main.ItemLinks SET DateAdded = ?1 WHERE DateAdded > ?2 AND DateAdded <= ?3"_s})
        m_run.Execute(statement, bounds);
    m_run.Log(u"SELECT 'ItemLinks', ItemID, LinkItemID, 4, ?1, ?1, '' FROM main.ItemLinks WHERE DateAdded = ?1"_s,
              {m_later});
    for (const QString& table : {u"DeletedFiles"_s, u"DeletedItems"_s, u"DeletedItemLinks"_s}) {
        // Those of the second of the export went along with it.
        m_run.Execute(u"DELETE FROM main.%1 WHERE DateDeleted <= ?"_s.arg(table), {m_run.Exported});
        m_run.Execute(u"UPDATE main.%1 SET DateDeleted = ?"_s.arg(table), {m_later});
    }
}

void ChildMerge::UpdateUpdatedItemsDatesInReplica()
{
    const Values bounds{m_later, m_run.Exported, m_run.Stamp};
    // A version of the child's that stays against the mother's travels.
    const QString own = u"i.ID IN (%1) OR NOT EXISTS (SELECT 1 FROM main.TempItems AS t WHERE t.ID = i.ID)"_s.arg(
        ItemsOf(u"'lost'"_s));
    for (const QString& date : {u"LastChanged"_s, u"HTMLLastUpdated"_s})
        m_run.Execute(u"UPDATE main.Items AS i SET %1 = ?1 WHERE i.%1 > ?2 AND i.%1 <= ?3 AND (%2) AND (i.ID IN "
                      "(SELECT ID FROM temp.merge_Taken) OR NOT %3)"_s.arg(
                          date, own, IsTakenOver(u"Items"_s, u"i.ID"_s, u"i."_s + date)),
                      bounds);
    m_run.Execute(
        u"UPDATE main.Files AS f SET LastUpdated = ?1 WHERE f.LastUpdated > ?2 AND f.LastUpdated <= ?3 AND (f.ID IN "
        "(SELECT ID FROM temp.merge_Described) OR NOT %1)"_s.arg(
            IsTakenOver(u"Files"_s, u"f.ID"_s, u"f.LastUpdated"_s)),
        bounds);
    m_run.Log(u"SELECT 'Items', ID, 0, 3, ?1, ?1, '' FROM main.Items WHERE ID IN (SELECT ID FROM temp.merge_Taken) "
              "AND (LastChanged = ?1 OR HTMLLastUpdated = ?1)"_s,
              {m_later});
    m_run.Log(u"SELECT 'Files', ID, 0, 3, ?1, ?1, '' FROM main.Files WHERE ID IN (SELECT ID FROM temp.merge_Described) "
              "AND LastUpdated = ?1"_s,
              {m_later});
    // By that date the row is not the child's, but its page is.
    const Date later = Date::FromSeconds(m_later.Seconds() + 1);
    m_run.Execute(u"UPDATE main.Items SET HTMLLastUpdated = ? WHERE ID IN (SELECT ID FROM temp.merge_OwnPages)"_s,
                  {later});
    m_run.Log(u"SELECT 'Items', ID, 0, 4, ?1, ?1, '' FROM temp.merge_OwnPages"_s, {later});
    // The child's own changes have that date too, which lies ahead for a minute.
    m_run.Log(u"SELECT 'Items', ID, 0, 4, ?1, ?1, '' FROM main.Items WHERE ID NOT IN (SELECT ID FROM temp.merge_Taken) "
              "AND (LastChanged = ?1 OR HTMLLastUpdated = ?1)"_s,
              {m_later});
    m_run.Log(u"SELECT 'Files', ID, 0, 4, ?1, ?1, '' FROM main.Files WHERE ID NOT IN (SELECT ID "
              "FROM temp.merge_Described) AND (LastUpdated = ?1 OR DateAdded = ?1)"_s,
              {m_later});
}

/// The children of a child learn what came from its mother.
void ChildMerge::NoteArrivals()
{
    if (m_lib.Replica().Children == 0)
        return;
    const Date moment = std::max(m_later, m_lib.NextStamp());
    for (const QString& rows :
         {u"'Items', i.ID, 0, 1, ?1, coalesce(i.LastChanged, 0), ?2 FROM main.Items AS i WHERE i.ID IN (SELECT ID "
          "FROM temp.merge_Taken UNION SELECT ID FROM temp.merge_Touched)"_s,
          u"'Files', f.ID, 0, 1, ?1, coalesce(f.LastUpdated, 0), ?2 FROM main.Files AS f WHERE f.ID IN (SELECT ID "
          "FROM temp.merge_Described)"_s,
          u"'ItemLinks', a.ID, b.ID, 1, ?1, coalesce(s.DateAdded, 0), ?2 FROM synchro.ItemLinks AS s "
          "JOIN main.Items AS a ON a.MotherRecordID = s.MotherItemID JOIN main.Items AS b ON b.MotherRecordID = "
          "s.MotherLinkItemID WHERE s.IDChanged = 0"_s})
        m_run.Log(u"SELECT "_s + rows, {moment, m_run.Other});
}

void ChildMerge::Stamp()
{
    m_run.Execute(u"DROP TABLE temp.merge_Described"_s);
    m_run.Execute(u"UPDATE main.Properties SET LastExported = 0, LastSynchronized = ?"_s, {m_run.Stamp});
    ReplicaLog(m_lib).Trim();
}

// The report

void ChildMerge::ReportVerdicts()
{
    m_run.ReportVerdicts(u"(SELECT min(p.ID) FROM main.Items AS p WHERE p.MotherRecordID = s.MotherParentID)"_s);
    m_run.Line(MergeEvent::ItemRegained,
               u"SELECT i.ID, i.Title, 'the mother has it again' FROM temp.merge_Spared AS r "
               "JOIN main.Items AS i ON i.ID = r.ID WHERE r.ID NOT IN (SELECT ID FROM temp.merge_Kept)"_s);
}

} // namespace qb
