#include "replication/MotherMerge.h"

#include "replication/PageLinks.h"

namespace qb {

using namespace Qt::StringLiterals;

namespace {

/// A page belongs to who changed it. What came from another child meanwhile may be older than the bound, ?1.
const QString KeepsPage = u"coalesce(s.HTMLLastUpdated, 0) <= ?1"_s;

} // namespace

void MotherMerge::CopyNewAndUpdatedItems()
{
    Decide();
    m_run.NumberNewItems(u"'new', 'regained'"_s);
    LeadPagesToMothersItems(m_run);
    SetAsideWhatIsGone();
    MoveRecordsToTempTable();
    TakeRowsOver();
    AddRows();
    UpdateIDOfInMotherDeletedItems();
    TellWhatIsForgotten();
    SetPlaces();
    NoteArrivals();
}

/// By each row of the child: new to her; `update`, which she did not change; `won` and `lost`, which both changed;
/// `regained`, deleted before the child changed it, and `ignored`, deleted after that; `forgotten`, neither there nor
/// known to be deleted.
void MotherMerge::Decide()
{
    m_run.Execute(
        u"INSERT INTO temp.merge_Verdicts (SRow, SID, OldMother, LID, What, OldParent) SELECT s.rowid, s.ID, CASE "
        "WHEN %1 THEN s.MotherRecordID ELSE 0 END, coalesce(i.ID, 0), CASE WHEN NOT (%1) THEN 'new' "
        "WHEN i.ID IS NULL THEN CASE WHEN max(coalesce(d.Noted, -1), coalesce(d.Logged, -1)) = -1 THEN 'forgotten' "
        "WHEN max(coalesce(d.Noted, -1), coalesce(d.Logged, -1)) < s.LastChanged THEN 'regained' ELSE 'ignored' END "
        "WHEN c.ID IS NULL THEN 'update' WHEN coalesce(i.LastChanged, 0) > coalesce(s.LastChanged, 0) THEN 'lost' "
        "ELSE 'won' END, i.ParentID FROM synchro.Items AS s LEFT JOIN main.Items AS i ON %1 "
        "AND i.ID = s.MotherRecordID LEFT JOIN temp.merge_Changed AS c ON c.ID = i.ID LEFT JOIN "
        "(SELECT r.rowid AS SRow, (SELECT max(d.DateDeleted) FROM main.DeletedItems AS d "
        "WHERE d.ItemID = r.MotherRecordID) AS Noted, (SELECT max(l.RowDate) FROM main.ReplicaLog AS l "
        "WHERE l.OfTable = 'Items' AND l.RecordID = r.MotherRecordID AND l.Event = 2) AS Logged "
        "FROM synchro.Items AS r) AS d ON d.SRow = s.rowid"_s.arg(IsKnown(u"s.MotherRecordID"_s)));
    m_run.Execute(u"UPDATE synchro.Items SET ConflictItem = ? WHERE rowid IN (%1)"_s.arg(RowsOf(u"'won', 'lost'"_s)),
                  {Value(true)});
}

void MotherMerge::SetAsideWhatIsGone()
{
    const QString gone = u"SELECT SID FROM temp.merge_Verdicts WHERE What IN ('ignored', 'forgotten')"_s;
    m_run.SetAside(MergeRun::VersionOf::File, gone, u"changed by the child, and deleted here"_s);
}

/// The version that lost, as it was; its title and texts are read by the solver.
void MotherMerge::MoveRecordsToTempTable()
{
    m_run.Execute(u"INSERT INTO main.TempItems (ID, ParentID, ReplicaRecordID, ReplicaOrigin, %1) "
                  "SELECT v.LID, r.MotherParentID, r.ID, ?, %2 FROM temp.merge_Verdicts AS v "
                  "JOIN synchro.Items AS r ON r.rowid = v.SRow WHERE "
                  "v.What = 'lost'"_s.arg(SharedColumns(), SharedColumns(u"r"_s)),
                  {Value(true)});
    m_run.Execute(u"INSERT INTO main.TempItems (ID, ParentID, ReplicaOrigin, %1) SELECT r.ID, r.ParentID, ?, %2 "
                  "FROM temp.merge_Verdicts AS v JOIN main.Items AS r "
                  "ON r.ID = v.LID WHERE v.What = 'won'"_s.arg(SharedColumns(), SharedColumns(u"r"_s)),
                  {Value(false)});
    MoveFilesToTempTable();
    MoveHTMLFilesToTempTable();
}

void MotherMerge::TakeRowsOver()
{
    const QString taken = ItemsOf(u"'update', 'won'"_s);
    m_run.SetAside(MergeRun::VersionOf::Library, ItemsOf(u"'update'"_s), u"overwritten by the child's version"_s);
    Statement dropped = m_lib.Query(
        u"SELECT i.ID FROM temp.merge_Verdicts AS v JOIN synchro.Items AS s ON s.rowid = v.SRow "
        "JOIN main.Items AS i ON i.ID = v.LID WHERE v.What IN ('update', 'won') AND i.HTMLPage <> 0 AND s.HTMLPage = 0 "
        "AND NOT (%1)"_s.arg(KeepsPage),
        {m_run.Last});
    while (dropped.Step())
        m_run.Contents.DropPage(dropped.Long(0));
    m_run.Execute(
        u"UPDATE main.Items AS i SET Title = s.Title, Description = s.Description, Info = s.Info, Created = s.Created, "
        "LastChanged = s.LastChanged, User = s.User, ItemStatus = s.ItemStatus, ItemRating = s.ItemRating, Code = "
        "s.Code, CodeHeaders = s.CodeHeaders, Notes = s.Notes, Example = s.Example, UsageHeaders = s.UsageHeaders, "
        "HTMLPage = CASE WHEN %1 THEN i.HTMLPage ELSE s.HTMLPage END, HTMLLastUpdated = CASE "
        "WHEN %1 THEN i.HTMLLastUpdated ELSE s.HTMLLastUpdated END FROM temp.merge_Verdicts AS v "
        "JOIN synchro.Items AS s ON s.rowid = v.SRow WHERE v.What IN ('update', 'won') AND "
        "i.ID = v.LID"_s.arg(KeepsPage),
        {m_run.Last});
    m_run.Execute(u"INSERT OR IGNORE INTO temp.merge_Taken "_s + taken);
    // Her version lost; new files and descriptions of it travel all the same, and her page where the child has changed
    // none.
    m_run.Execute(u"DELETE FROM synchro.ItemsX WHERE ID IN (%1)"_s.arg(ItemsOf(u"'won'"_s)));
    m_run.Execute(u"DELETE FROM synchro.HTMLFilesX WHERE ItemIDRef IN (SELECT v.LID FROM temp.merge_Verdicts AS v "
                  "JOIN synchro.Items AS s ON s.rowid = v.SRow WHERE v.What IN ('won', 'update') "
                  "AND coalesce(s.HTMLLastUpdated, 0) > ?)"_s,
                  {m_run.Last});
    // What became of her page is told with the row, of which nothing else is read.
    m_run.Execute(u"UPDATE synchro.Items SET HTMLPage = i.HTMLPage, HTMLLastUpdated = i.HTMLLastUpdated "
                  "FROM temp.merge_Verdicts AS v JOIN main.Items AS i ON i.ID = v.LID WHERE v.SRow = Items.rowid "
                  "AND v.What = 'won'"_s);
}

void MotherMerge::AddRows()
{
    m_run.Execute(
        u"INSERT INTO main.Items (ID, Title, Description, Info, Created, LastChanged, User, ItemStatus, ItemRating, "
        "Code, CodeHeaders, Notes, Example, UsageHeaders, HTMLPage, HTMLLastUpdated, ParentID) "
        "SELECT v.LID, s.Title, s.Description, s.Info, s.Created, CASE v.What WHEN 'regained' THEN 0 "
        "ELSE s.LastChanged END, s.User, s.ItemStatus, s.ItemRating, s.Code, s.CodeHeaders, s.Notes, s.Example, "
        "s.UsageHeaders, s.HTMLPage, s.HTMLLastUpdated, 0 FROM temp.merge_Verdicts AS v "
        "JOIN synchro.Items AS s ON s.rowid = v.SRow WHERE v.What IN ('new', 'regained') ORDER BY v.SRow"_s);
    m_run.Execute(u"UPDATE synchro.Items SET MotherRecordID = v.LID, IDChanged = ? FROM temp.merge_Verdicts AS v "
                  "WHERE v.SRow = Items.rowid AND v.What = 'new'"_s,
                  {Value(true)});
    m_run.Execute(u"INSERT OR IGNORE INTO temp.merge_Orphaned SELECT v.LID FROM temp.merge_Verdicts AS v "
                  "JOIN synchro.Items AS s ON s.rowid = v.SRow WHERE v.What = 'regained' OR (v.What = 'new' "
                  "AND coalesce(s.MotherParentID, 0) <> 0)"_s);
}

/// The child learns the new number of what it has brought back. Others still learn that the old one is gone.
void MotherMerge::UpdateIDOfInMotherDeletedItems()
{
    m_run.Execute(u"INSERT INTO synchro.ItemsX (ID, MotherRecordID, MotherParentID, ParentID, Title) "
                  "SELECT v.SID, v.LID, s.MotherParentID, -3, s.Title FROM temp.merge_Verdicts AS v "
                  "JOIN synchro.Items AS s ON s.rowid = v.SRow WHERE v.What = 'regained'"_s);
    m_run.Log(u"SELECT 'Items', v.LID, 0, 6, ?1, 0, c.DBCopyID FROM temp.merge_Verdicts AS v "
              "JOIN main.ChildCopies AS c ON c.DBCopyID <> ?2 WHERE v.What = 'regained'"_s,
              {m_run.Stamp, m_run.Other});
}

/// Nothing becomes of such a row here; the child's item travels as a new one in the next round.
void MotherMerge::TellWhatIsForgotten()
{
    m_run.Execute(u"UPDATE synchro.Items SET MotherRecordID = -1, MotherParentID = 0, "
                  "IDChanged = ? WHERE rowid IN (%1)"_s.arg(RowsOf(u"'forgotten'"_s)),
                  {Value(true)});
}

void MotherMerge::NoteArrivals()
{
    m_run.Log(u"SELECT 'Items', i.ID, 0, 1, ?, coalesce(i.LastChanged, 0), ? FROM temp.merge_Verdicts AS v "
              "JOIN main.Items AS i ON i.ID = v.LID WHERE v.What IN ('new', 'regained', 'update', 'won')"_s,
              {m_run.Stamp, m_run.Other});
}

// Places

/// Below which item a row belongs that knows its parent; one that is gone gives the folder of orphaned items, and that
/// is told the child.
void MotherMerge::SetPlaces()
{
    const QString known = u"temp.merge_Verdicts AS v JOIN synchro.Items AS s ON s.rowid = v.SRow "
                          "WHERE v.What IN ('new', 'regained', 'update', 'won') AND coalesce(s.MotherParentID, "
                          "0) <> -1"_s;
    m_run.Execute(
        u"UPDATE main.Items AS i SET ParentID = CASE WHEN coalesce(p.Known, 0) = 0 THEN 0 WHEN EXISTS (SELECT 1 "
        "FROM main.Items AS a WHERE a.ID = p.Known) THEN p.Known ELSE ?1 END FROM (SELECT v.LID, CASE "
        "WHEN s.MotherParentID > 0 THEN coalesce((SELECT r.LID FROM temp.merge_Verdicts AS r "
        "WHERE r.OldMother = s.MotherParentID AND r.What = 'regained'), s.MotherParentID) "
        "ELSE s.MotherParentID END AS Known FROM %1) AS p WHERE p.LID = i.ID"_s.arg(known),
        {m_run.OrphanedFolderID});
    m_run.Execute(u"INSERT OR IGNORE INTO temp.merge_Loose SELECT LID FROM temp.merge_Verdicts "
                  "WHERE What IN ('new', 'regained', 'update', 'won')"_s);
    m_run.Execute(u"UPDATE synchro.Items SET MotherParentID = -2, IDChanged = ?1 WHERE rowid IN (SELECT v.SRow "
                  "FROM temp.merge_Verdicts AS v JOIN main.Items AS i ON i.ID = v.LID "
                  "WHERE v.What IN ('new', 'update', 'won') AND i.ParentID = ?2) "
                  "AND coalesce(MotherParentID, 0) NOT IN (-1, 0)"_s,
                  {Value(true), m_run.OrphanedFolderID});
    m_run.Execute(u"UPDATE synchro.ItemsX SET MotherParentID = -2 WHERE ParentID = -3 AND MotherRecordID IN (SELECT ID "
                  "FROM main.Items WHERE ParentID = ?)"_s,
                  {m_run.OrphanedFolderID});
}

void MotherMerge::UpdateItemsParentIDs()
{
    if (m_lib.QueryValue(u"SELECT 1 FROM main.Items LIMIT 1"_s).IsNull())
        m_run.Tell(u"No records in main db. (CDBManipulate; UpdateItemsParentIDs subroutine)"_s);
    const QString open = u"temp.merge_Verdicts AS v JOIN synchro.Items AS s ON s.rowid = v.SRow "
                         "WHERE v.What IN ('new', 'regained', 'update', 'won') AND s.MotherParentID = -1"_s;
    Statement missing = m_lib.Query(u"SELECT 1 FROM %1 AND NOT EXISTS (SELECT 1 FROM synchro.Items AS p "
                                    "WHERE p.ID = s.ParentID)"_s.arg(open));
    while (missing.Step())
        m_run.Tell(u"Error in CDBManipulate class; UpdateItemsIDsAndParents subroutine.\r\nMissing required record in "
                   "synchronization file."_s);
    m_run.Execute(
        u"UPDATE main.Items AS i SET ParentID = coalesce((SELECT w.LID FROM temp.merge_Verdicts AS w "
        "JOIN main.Items AS a ON a.ID = w.LID WHERE w.SID = p.Parent), ?1) FROM (SELECT v.LID, s.ParentID AS Parent "
        "FROM %1) AS p WHERE p.LID = i.ID"_s.arg(open),
        {m_run.OrphanedFolderID});
    m_run.Execute(
        u"UPDATE synchro.Items SET MotherParentID = CASE WHEN p.ParentID = ?1 THEN -2 "
        "ELSE p.ParentID END, IDChanged = ?2 FROM (SELECT v.SRow, v.What, i.ParentID FROM temp.merge_Verdicts AS v "
        "JOIN main.Items AS i ON i.ID = v.LID) AS p WHERE p.SRow = Items.rowid AND p.What IN ('new', 'update', 'won') "
        "AND Items.MotherParentID = -1"_s,
        {m_run.OrphanedFolderID, Value(true)});
    m_run.Execute(u"UPDATE synchro.ItemsX SET MotherParentID = CASE WHEN i.ParentID = ?1 THEN -2 ELSE i.ParentID END "
                  "FROM main.Items AS i WHERE i.ID = ItemsX.MotherRecordID AND ItemsX.ParentID = -3"_s,
                  {m_run.OrphanedFolderID});
    m_run.BreakCycles();
}

// Links

void MotherMerge::UpdateItemLinksIDs()
{
    struct End {
        QLatin1StringView Mother;
        QLatin1StringView Local;
    };
    for (const End& end : {End{"MotherItemID"_L1, "ItemID"_L1}, End{"MotherLinkItemID"_L1, "LinkItemID"_L1}}) {
        const QString anew = u"(SELECT v.LID FROM temp.merge_Verdicts AS v WHERE v.LID > 0 AND (v.SID = ItemLinks.%1 "
                             "AND coalesce(ItemLinks.%2, 0) <= 0 OR v.OldMother = ItemLinks.%2 "
                             "AND v.What = 'regained'))"_s.arg(end.Local, end.Mother);
        m_run.Execute(
            u"UPDATE synchro.ItemLinks SET %1 = %2, IDChanged = ? WHERE %2 IS NOT NULL"_s.arg(end.Mother, anew),
            {Value(true)});
        m_run.TellOfEach(u"Required record in Items table in synchronization file was not found! (CDBManipulate; "
                         "UpdateItemLinksIDs subroutine)"_s,
                         u"SELECT count(*) FROM synchro.ItemLinks WHERE coalesce(%1, 0) <= 0"_s.arg(end.Mother));
    }
}

/// A pair that is linked here already is one link; of two notes the later one stays.
void MotherMerge::CopyItemLinks()
{
    const QString complete = u"synchro.ItemLinks AS s JOIN main.Items AS a ON a.ID = s.MotherItemID "
                             "JOIN main.Items AS b ON b.ID = s.MotherLinkItemID"_s;
    m_run.Line(MergeEvent::LinkAdded,
               u"SELECT a.ID, a.Title, b.Title FROM %1 WHERE NOT EXISTS (SELECT 1 FROM main.ItemLinks AS l "
               "WHERE l.ItemID = a.ID AND l.LinkItemID = b.ID)"_s.arg(complete));
    m_run.Execute(
        u"INSERT INTO main.ItemLinks (ItemID, LinkItemID, Note, DateAdded, DateUpdated) "
        "SELECT a.ID, b.ID, s.Note, s.DateAdded, s.DateUpdated FROM %1 WHERE TRUE ON CONFLICT (ItemID, LinkItemID) DO "
        "UPDATE SET Note = excluded.Note, DateUpdated = excluded.DateUpdated WHERE coalesce(excluded.DateUpdated, 0) > "
        "coalesce(ItemLinks.DateUpdated, 0)"_s.arg(complete));
    m_run.Log(u"SELECT 'ItemLinks', a.ID, b.ID, 1, ?, coalesce(s.DateAdded, 0), ? FROM %1"_s.arg(complete),
              {m_run.Stamp, m_run.Other});
}

} // namespace qb
