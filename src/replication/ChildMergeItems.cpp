#include "replication/ChildMerge.h"

#include "replication/PageLinks.h"

namespace qb {

using namespace Qt::StringLiterals;

namespace {

/// A page that the child has changed since its export, ?1, is its own.
QString KeepsPage()
{
    return u"coalesce(i.HTMLLastUpdated, 0) > ?1 AND NOT "_s
           + IsTakenOver(u"Items"_s, u"i.ID"_s, u"i.HTMLLastUpdated"_s);
}

} // namespace

void ChildMerge::CopyNewAndUpdatedItemsToReplica()
{
    TakeNumbers();
    Decide();
    LeadPagesToChildsItems(m_run);
    MoveRecordsToTempTable();
    TakeRowsOver();
    TakePagesOfOwnVersions();
    AddRows();
    LeaveConflictsToTheMother();
}

/// The first pass: what the mother calls the child's items.
void ChildMerge::TakeNumbers()
{
    const QString renamed = u"SELECT ID FROM temp.merge_Spared WHERE ID NOT IN (SELECT ID FROM temp.merge_Kept)"_s;
    const QString forgotten = u"SELECT ID FROM main.Items WHERE MotherRecordID = -1 AND ID IN (%1)"_s.arg(renamed);
    m_run.Execute(
        u"UPDATE main.Items AS i SET MotherRecordID = s.MotherRecordID, MotherParentID = CASE "
        "WHEN s.MotherParentID < 0 THEN 0 ELSE s.MotherParentID END, ParentID = CASE WHEN s.MotherParentID = -2 "
        "AND (coalesce(i.LastChanged, 0) <= ?1 OR %1) THEN ?2 ELSE i.ParentID END FROM synchro.Items AS s "
        "WHERE s.IDChanged <> 0 AND s.ID = i.ID AND i.ID "
        "NOT IN (SELECT ID FROM temp.merge_Kept)"_s.arg(IsTakenOver(u"Items"_s, u"i.ID"_s, u"i.LastChanged"_s)),
        {m_run.Exported, m_run.OrphanedFolderID});
    TravelsAnew(forgotten, true);
    TravelsAnew(u"%1 AND ID NOT IN (%2)"_s.arg(renamed, forgotten), false);
    NumberDeletions();
}

/// When it was deleted here nobody knew what the mother would call it; now she can be told.
void ChildMerge::NumberDeletions()
{
    m_run.Execute(u"UPDATE main.ReplicaLog AS l SET MotherRecordID = s.MotherRecordID FROM synchro.Files AS s "
                  "WHERE s.IDChanged <> 0 AND s.ID = l.RecordID AND l.OfTable = 'Files' AND l.Event = 2 AND "
                  "l.Moment > ?"_s,
                  {m_run.Stamp});
    m_run.Execute(u"UPDATE main.ReplicaLog AS l SET MotherRecordID = max(a.MotherRecordID, 0), MotherSecondID = "
                  "max(b.MotherRecordID, 0) FROM main.Items AS a, main.Items AS b WHERE a.ID = l.RecordID AND b.ID = "
                  "l.SecondID AND l.OfTable = 'ItemLinks' AND l.Event = 2 AND l.Moment > ?"_s,
                  {m_run.Stamp});
}

/// The second pass, by each row of the mother's: new here; `gone`, which the child has deleted since its export;
/// `update`; `won` and `lost`, by her, where the child has changed it since its export. Under a version of the child's
/// that stays, a page that it has not changed since is as the mother has it.
void ChildMerge::Decide()
{
    m_run.Execute(
        u"INSERT INTO temp.merge_Verdicts (SRow, SID, OldMother, LID, What, OldParent) "
        "SELECT s.rowid, s.ID, s.MotherRecordID, coalesce(i.ID, 0), CASE WHEN i.ID IS NULL THEN CASE "
        "WHEN %1 THEN 'gone' ELSE 'new' END WHEN coalesce(i.LastChanged, 0) <= ?1 OR %2 THEN 'update' "
        "WHEN i.LastChanged > coalesce(s.LastChanged, 0) THEN 'lost' ELSE 'won' END, i.ParentID "
        "FROM synchro.Items AS s LEFT JOIN main.Items AS i ON i.MotherRecordID = s.MotherRecordID "
        "WHERE s.IDChanged = 0 AND s.ConflictItem = 0 AND s.MotherRecordID > 0 GROUP BY s.rowid"_s.arg(
            IsDeletedHere(u"Items"_s, u"s.MotherRecordID"_s), IsTakenOver(u"Items"_s, u"i.ID"_s, u"i.LastChanged"_s)),
        {m_run.Exported});
    m_run.NumberNewItems(u"'new'"_s);
    m_run.Execute(u"INSERT INTO temp.merge_MothersPages SELECT v.LID FROM temp.merge_Verdicts AS v "
                  "JOIN main.Items AS i ON i.ID = v.LID WHERE v.What = 'lost' AND NOT (%1)"_s.arg(KeepsPage()),
                  {m_run.Exported});
}

void ChildMerge::MoveRecordsToTempTable()
{
    m_run.Execute(u"INSERT INTO main.TempItems (ID, ParentID, ReplicaRecordID, ReplicaOrigin, %1) "
                  "SELECT v.LID, r.MotherParentID, r.ID, ?, %2 FROM temp.merge_Verdicts AS v "
                  "JOIN synchro.Items AS r ON r.rowid = v.SRow WHERE "
                  "v.What = 'lost'"_s.arg(SharedColumns(), SharedColumns(u"r"_s)),
                  {Value(true)});
    m_run.Execute(u"INSERT INTO main.TempItems (ID, ParentID, ReplicaOrigin, %1) SELECT r.ID, r.MotherParentID, ?, %2 "
                  "FROM temp.merge_Verdicts AS v JOIN main.Items AS r ON r.ID = v.LID WHERE v.What = 'won'"_s.arg(
                      SharedColumns(), SharedColumns(u"r"_s)),
                  {Value(false)});
    MoveFilesToTempTable();
    MoveHTMLFilesToTempTable();
}

void ChildMerge::TakeRowsOver()
{
    // Of a conflict that the mother wins, the page is the child's only if she has not changed it.
    const QString keepsPage =
        KeepsPage()
        + u" AND coalesce(s.HTMLLastUpdated, 0) <= ?2 AND s.ID NOT IN (SELECT ItemIDRef FROM synchro.HTMLFiles)"_s;
    const QString rows = u"temp.merge_Verdicts AS v JOIN synchro.Items AS s ON s.rowid = v.SRow"_s;
    const QString taken = u"v.What IN ('update', 'won')"_s;
    m_run.SetAside(MergeRun::VersionOf::Library, ItemsOf(u"'update'"_s), u"overwritten by the mother's version"_s);
    Statement dropped = m_lib.Query(
        u"SELECT i.ID FROM %1 JOIN main.Items AS i ON i.ID = v.LID WHERE %2 AND i.HTMLPage <> 0 AND s.HTMLPage = 0 "
        "AND NOT (%3)"_s.arg(rows, taken, keepsPage),
        {m_run.Exported, m_run.Last});
    while (dropped.Step())
        m_run.Contents.DropPage(dropped.Long(0));
    m_run.Execute(
        u"INSERT OR IGNORE INTO temp.merge_OwnPages SELECT i.ID FROM %1 JOIN main.Items AS i ON i.ID = v.LID WHERE %2 "
        "AND %3"_s.arg(rows, taken, keepsPage),
        {m_run.Exported, m_run.Last});
    m_run.Execute(
        u"UPDATE main.Items AS i SET Title = s.Title, Description = s.Description, Info = s.Info, Created = s.Created, "
        "LastChanged = s.LastChanged, User = s.User, ItemStatus = s.ItemStatus, ItemRating = s.ItemRating, Code = "
        "s.Code, CodeHeaders = s.CodeHeaders, Notes = s.Notes, Example = s.Example, UsageHeaders = s.UsageHeaders, "
        "HTMLPage = CASE WHEN %1 THEN i.HTMLPage ELSE s.HTMLPage END, HTMLLastUpdated = CASE "
        "WHEN %1 THEN i.HTMLLastUpdated ELSE s.HTMLLastUpdated END, MotherParentID = CASE "
        "WHEN s.MotherParentID < 0 THEN 0 ELSE s.MotherParentID END FROM %2 WHERE %3 "
        "AND i.ID = v.LID"_s.arg(keepsPage, rows, taken),
        {m_run.Exported, m_run.Last});
    m_run.Execute(u"INSERT OR IGNORE INTO temp.merge_Taken "_s + ItemsOf(u"'update', 'won', 'new'"_s));
}

/// Where the child's version stays, so does its page if the child has changed that since its export. Otherwise it
/// becomes the mother's, or goes where she has taken it away.
void ChildMerge::TakePagesOfOwnVersions()
{
    DropPages(u"SELECT i.ID FROM temp.merge_MothersPages AS m JOIN temp.merge_Verdicts AS v ON v.LID = m.ID "
              "JOIN synchro.Items AS s ON s.rowid = v.SRow JOIN main.Items AS i ON i.ID = m.ID WHERE i.HTMLPage <> 0 "
              "AND s.HTMLPage = 0"_s);
    m_run.SetAside(MergeRun::VersionOf::Library,
                   u"SELECT i.ID FROM temp.merge_MothersPages AS m JOIN temp.merge_Verdicts AS v ON v.LID = m.ID "
                   "JOIN main.Items AS i ON i.ID = m.ID WHERE i.HTMLPage <> 0 AND v.SID IN (SELECT ItemIDRef FROM "
                   "synchro.HTMLFiles)"_s,
                   u"its web page was overwritten by the mother's"_s);
    m_run.Execute(u"UPDATE main.Items AS i SET HTMLPage = s.HTMLPage, HTMLLastUpdated = s.HTMLLastUpdated "
                  "FROM temp.merge_Verdicts AS v JOIN synchro.Items AS s ON s.rowid = v.SRow WHERE v.LID = i.ID AND "
                  "i.ID IN (SELECT ID FROM temp.merge_MothersPages)"_s);
}

/// The mother has taken these pages away.
void ChildMerge::DropPages(const QString& items)
{
    m_run.SetAside(MergeRun::VersionOf::Library, items, u"the mother has taken its web page away"_s);
    Statement dropped = m_lib.Query(items);
    while (dropped.Step())
        m_run.Contents.DropPage(dropped.Long(0));
    m_run.Execute(u"INSERT OR IGNORE INTO temp.merge_Touched "_s + items);
    m_run.Execute(u"UPDATE main.Items SET HTMLPage = ? WHERE ID IN (%1)"_s.arg(items), {Value(false)});
}

void ChildMerge::AddRows()
{
    m_run.Execute(u"INSERT INTO main.Items (ID, ParentID, MotherRecordID, MotherParentID, %1) "
                  "SELECT v.LID, 0, s.MotherRecordID, CASE WHEN s.MotherParentID < 0 THEN 0 "
                  "ELSE s.MotherParentID END, %2 FROM temp.merge_Verdicts AS v JOIN synchro.Items AS s ON s.rowid = "
                  "v.SRow WHERE v.What = 'new' ORDER BY v.SRow"_s.arg(SharedColumns(), SharedColumns(u"s"_s)));
}

/// The third pass: what the mother has found in conflict is hers to have resolved. What was changed here since travels
/// next time.
void ChildMerge::LeaveConflictsToTheMother()
{
    m_run.TellOfEach(u"Required record missing! (CDBManipulate; CopyNewAndUpdatedItemsToReplica sub"_s,
                     u"SELECT count(*) FROM synchro.Items AS s WHERE s.ConflictItem <> 0 AND NOT EXISTS (SELECT 1 "
                     "FROM main.Items AS i WHERE i.ID = s.ID)"_s);
    const QString settled = u"SELECT s.ID FROM synchro.Items AS s WHERE s.ConflictItem <> 0 AND s.ID NOT IN (%1)"_s.arg(
        ItemsOf(u"'won', 'lost'"_s));
    m_run.Execute(
        u"UPDATE main.Items AS i SET LastChanged = s.LastChanged FROM synchro.Items AS s WHERE s.ConflictItem <> 0 "
        "AND s.ID = i.ID AND s.ID IN (%1) AND (i.ID IN (SELECT ID FROM temp.merge_Taken) "
        "OR coalesce(i.LastChanged, 0) <= ?1)"_s.arg(settled),
        {m_run.Exported});
    DropPagesOfConflicts();
    for (const QString& statement : {u"DELETE FROM main.TempFiles WHERE CodeID IN (%1)"_s,
                                     u"DELETE FROM main.TempHTMLFiles WHERE ItemIDRef IN (%1)"_s,
                                     u"DELETE FROM main.TempItems WHERE ID IN (%1)"_s})
        m_run.Execute(statement.arg(settled));
}

/// Of items whose texts are the child's the mother may have taken the page away.
void ChildMerge::DropPagesOfConflicts()
{
    DropPages(u"SELECT i.ID FROM synchro.Items AS s JOIN main.Items AS i ON i.ID = s.ID WHERE s.ConflictItem <> 0 "
              "AND s.HTMLPage = 0 AND i.HTMLPage <> 0 AND i.ID NOT IN (SELECT ID FROM temp.merge_Taken) "
              "AND coalesce(i.HTMLLastUpdated, 0) <= %1"_s.arg(m_run.Exported.Seconds()));
}

// Links

void ChildMerge::UpdateItemLinksIDsForReplica()
{
    m_run.Execute(
        u"UPDATE main.ItemLinks AS l SET MotherItemID = s.MotherItemID, MotherLinkItemID = s.MotherLinkItemID "
        "FROM synchro.ItemLinks AS s WHERE s.IDChanged <> 0 AND s.ItemID = l.ItemID AND s.LinkItemID = l.LinkItemID"_s);
    for (const QString& end : {u"MotherItemID"_s, u"MotherLinkItemID"_s}) {
        m_run.TellOfEach(u"Required record in Items table in synchronization file was not found! (CDBManipulate; "
                         "UpdateItemLinksIDs subroutine)"_s,
                         u"SELECT count(*) FROM synchro.ItemLinks AS s WHERE s.IDChanged = 0 AND s.%1 > 0 "
                         "AND NOT EXISTS (SELECT 1 FROM "
                         "main.Items AS i WHERE i.MotherRecordID = s.%1) AND NOT %2"_s.arg(
                             end, IsDeletedHere(u"Items"_s, u"s."_s + end)),
                         {m_run.Exported});
    }
}

/// But for those that the child has deleted since its export.
void ChildMerge::CopyItemLinksToReplica()
{
    const QString complete =
        u"synchro.ItemLinks AS s JOIN main.Items AS a ON a.MotherRecordID = s.MotherItemID "
        "JOIN main.Items AS b ON b.MotherRecordID = s.MotherLinkItemID WHERE s.IDChanged = 0 AND s.MotherItemID > 0 "
        "AND s.MotherLinkItemID > 0 AND NOT EXISTS (SELECT 1 FROM main.ReplicaLog AS d WHERE d.Event = 2 "
        "AND d.OfTable = 'ItemLinks' AND d.MotherRecordID = s.MotherItemID AND d.MotherSecondID = s.MotherLinkItemID "
        "AND d.Moment > %1)"_s.arg(m_run.Exported.Seconds());
    m_run.Line(MergeEvent::LinkAdded,
               u"SELECT a.ID, a.Title, b.Title FROM %1 AND NOT EXISTS (SELECT 1 FROM main.ItemLinks AS l "
               "WHERE l.ItemID = a.ID AND l.LinkItemID = b.ID)"_s.arg(complete));
    m_run.Execute(
        u"INSERT INTO main.ItemLinks (ItemID, LinkItemID, MotherItemID, MotherLinkItemID, Note, DateAdded, "
        "DateUpdated) SELECT a.ID, b.ID, s.MotherItemID, s.MotherLinkItemID, s.Note, s.DateAdded, s.DateUpdated "
        "FROM %1 ON CONFLICT (ItemID, LinkItemID) DO UPDATE SET Note = CASE WHEN coalesce(excluded.DateUpdated, 0) > "
        "coalesce(ItemLinks.DateUpdated, 0) THEN excluded.Note ELSE ItemLinks.Note END, DateUpdated = "
        "max(coalesce(excluded.DateUpdated, 0), coalesce(ItemLinks.DateUpdated, 0)), MotherItemID = "
        "excluded.MotherItemID, MotherLinkItemID = excluded.MotherLinkItemID"_s.arg(complete));
}

// Places

void ChildMerge::UpdateItemsParentIDsInReplica()
{
    const QString rows = u"temp.merge_Verdicts AS v JOIN synchro.Items AS s ON s.rowid = v.SRow "
                         "WHERE v.What IN ('update', 'won', 'new')"_s;
    m_run.TellOfEach(u"Required record missing! (CDBManipulate; UpdateItemsParentIDsInReplica subroutine) /1/"_s,
                     u"SELECT count(*) FROM %1 AND s.MotherParentID > 0 AND NOT EXISTS (SELECT 1 FROM main.Items AS p "
                     "WHERE p.MotherRecordID = s.MotherParentID)"_s.arg(rows));
    m_run.Execute(
        u"UPDATE main.Items AS i SET ParentID = p.Place FROM (SELECT v.LID, CASE "
        "WHEN coalesce(s.MotherParentID, 0) = 0 THEN 0 WHEN s.MotherParentID < 0 THEN ?1 "
        "ELSE coalesce((SELECT min(a.ID) FROM main.Items AS a WHERE a.MotherRecordID = s.MotherParentID), ?1) END AS "
        "Place FROM %1) AS p WHERE p.LID = i.ID"_s.arg(rows),
        {m_run.OrphanedFolderID});
    BringOrphansBack();
    m_run.Execute(u"INSERT OR IGNORE INTO temp.merge_Loose SELECT v.LID FROM %1"_s.arg(rows));
    m_run.BreakCycles();
}

/// What came before its parent did, which was still waiting at the mother, or would have stood below itself, goes to
/// the place that the mother has for it once it can.
void ChildMerge::BringOrphansBack()
{
    std::vector<std::pair<qint64, qint64>> places;
    Statement orphans = m_lib.Query(
        u"SELECT i.ID, min(p.ID) FROM main.Items AS i JOIN main.Items AS p ON p.MotherRecordID = i.MotherParentID "
        "WHERE i.ParentID = ? AND i.MotherParentID > 0 GROUP BY i.ID ORDER BY i.ID"_s,
        {m_run.OrphanedFolderID});
    while (orphans.Step())
        places.emplace_back(orphans.Long(0), orphans.Long(1));
    for (const auto& [item, parent] : places) {
        m_run.Execute(u"INSERT OR IGNORE INTO temp.merge_Touched VALUES (?)"_s, {item});
        m_run.Execute(u"UPDATE main.Items SET ParentID = ?2 WHERE ID = ?1 AND ?1 NOT IN (WITH RECURSIVE above(At) AS "
                      "(SELECT ?2 UNION SELECT i.ParentID FROM above JOIN main.Items AS i ON i.ID = above.At) "
                      "SELECT At FROM above)"_s,
                      {item, parent});
    }
}

void ChildMerge::UpdateParentIDsInTempTables()
{
    const QString unknown = u"ParentID > 0 AND NOT EXISTS (SELECT 1 FROM main.Items AS i "
                            "WHERE i.MotherRecordID = TempItems.ParentID)"_s;
    m_run.TellOfEach(u"Required record missing! (CDBManipulate; UpdateParentIDsInTempTables subroutine)"_s,
                     u"SELECT count(*) FROM main.TempItems WHERE "_s + unknown);
    m_run.Execute(u"UPDATE main.TempItems SET ParentID = i.ID FROM main.Items AS i WHERE TempItems.ParentID > 0 "
                  "AND i.MotherRecordID = TempItems.ParentID"_s);
}

} // namespace qb
