#include "replication/MergeRun.h"

#include "maintenance/CDBManipulate.h"
#include "platform/system/RuntimeError.h"
#include "store/Checksums.h"
#include "store/ItemBranch.h"
#include "store/ReplicaLog.h"
#include "store/StoredFiles.h"

#include <algorithm>

namespace qb {

using namespace Qt::StringLiterals;

MergeRun::MergeRun(Library& library, bool asMother, Date last, Date exported, const QString& other, const QString& name,
                   MergeUndo& undo, Work& work)
    : Lib(library), AsMother(asMother), Last(last), Exported(exported), Other(other), Watcher(work), Undo(undo),
      Removed(library, RemovalKind::Merge, u"Synchronized with '%1'"_s.arg(name)), Contents(library, undo, work),
      Sums(library)
{
    Report.AsMother = asMother;
    Report.Replica = name;
    MakeMergeTables(library);
}

MergeRun::~MergeRun()
{
    try {
        DropMergeTables(Lib);
    } catch (const RuntimeError&) {
        // They go with the connection, or with the next merge.
    }
}

void MergeRun::Tell(const QString& text, const QString& caption)
{
    Report.Faults.push_back({text, caption});
}

void MergeRun::TellOfEach(const QString& text, const QString& counted, const Values& values)
{
    const qint64 count = Lib.QueryValue(counted, values).ToLong();
    for (qint64 i = 0; i < count; ++i)
        Tell(text);
}

void MergeRun::Log(const QString& rows, const Values& values)
{
    Execute(u"INSERT OR REPLACE INTO main.ReplicaLog (OfTable, RecordID, SecondID, Event, Moment, RowDate, Origin) "_s
                + rows,
            values);
}

void MergeRun::NumberNewItems(const QString& verdicts)
{
    const QString last = u"SELECT max(coalesce((SELECT max(ID) FROM main.Items), 0), coalesce((SELECT seq "
                         "FROM main.sqlite_sequence WHERE name = 'Items'), 0))"_s;
    Execute(u"UPDATE temp.merge_Verdicts SET LID = ? + n.Number FROM (SELECT SRow AS NewRow, row_number() OVER "
            "(ORDER BY SRow) AS Number FROM temp.merge_Verdicts WHERE What IN (%1)) AS n WHERE "
            "n.NewRow = SRow"_s.arg(verdicts),
            {Lib.QueryValue(last)});
}

void MergeRun::CopyToTempFiles(const QString& files, const Values& values,
                               const std::function<void(const CopiedFile& file, qint64 copy)>& then)
{
    std::vector<CopiedFile> all;
    Statement rows = Lib.Query(files, values);
    while (rows.Step())
        all.push_back({rows.Long(0), rows.Long(1), rows.Text(2), rows.Long(3) != 0});
    CDBManipulate contents(Watcher);
    contents.Use(Lib);
    for (const CopiedFile& file : all) {
        const QString content = file.IsPacked ? u"File FROM synchro.Files"_s : u"NULL FROM main.Files"_s;
        Execute(u"INSERT INTO main.TempFiles (CodeID, Title, OrigDateTime, DateAdded, FileSize, Description, "
                "LastUpdated, File) SELECT ?, Title, OrigDateTime, DateAdded, FileSize, Description, LastUpdated, %1 "
                "WHERE rowid = ?"_s.arg(content),
                {file.Owner, file.File});
        const qint64 copy = Lib.LastInsertedRowKey();
        const QString path = file.IsPacked ? QString() : ReadableStoredFile(Lib, file.File, file.Title);
        if (!path.isEmpty())
            contents.ImportFileToField({Lib, u"TempFiles"_s, copy}, path);
        if (then)
            then(file, copy);
    }
}

void MergeRun::Line(MergeEvent event, const QString& sql, const Values& values)
{
    Statement rows = Lib.Query(sql, values);
    while (rows.Step())
        Report.Lines.push_back({event, rows.Long(0), rows.Text(1), rows.ColumnCount() > 2 ? rows.Text(2) : QString()});
}

void MergeRun::ForgetChecksumsOf(const QString& table, const QString& ids)
{
    if (HasChecksumTable(Lib))
        Execute(u"DELETE FROM main.own_Checksums WHERE OfTable = ? AND OfRow IN (%1)"_s.arg(ids), {table});
}

void MergeRun::NoteChecksums(const QString& taken)
{
    if (IsPreview)
        return;
    Sums.Wrote(u"Items"_s, taken);
    const QMap<qint64, quint32> files = Contents.MadeFiles();
    for (auto file = files.cbegin(); file != files.cend(); ++file)
        Sums.WroteFile(file.key(), file.value());
    Sums.Note();
}

void MergeRun::BeginWriting()
{
    const qint64 pages = Lib.QueryValue(u"PRAGMA synchro.page_count"_s).ToLong();
    Undo.HoldWrites(pages * Lib.QueryValue(u"PRAGMA synchro.page_size"_s).ToLong());
}

void MergeRun::EndIfCancelled()
{
    if (Watcher.IsCancelled())
        throw RuntimeError(ErrorNumber::Cancelled, u"The synchronization was stopped; nothing was changed."_s,
                           u"Synchronize"_s);
}

void MergeRun::LinesOf(MergeEvent event, const QString& what, const QString& detail)
{
    Line(event, u"SELECT i.ID, i.Title, %1 FROM temp.merge_Verdicts AS v JOIN main.Items AS i ON i.ID = v.LID "
                "JOIN synchro.Items AS s ON s.rowid = v.SRow WHERE %2"_s.arg(detail, what));
}

void MergeRun::ReportVerdicts(const QString& parent)
{
    const QString other = AsMother ? u"the child"_s : u"the mother"_s;
    const QString own = AsMother ? u"the mother"_s : u"the child"_s;
    LinesOf(MergeEvent::ItemAdded, u"v.What = 'new'"_s, u"''"_s);
    LinesOf(MergeEvent::ItemChanged, u"v.What = 'update'"_s, u"''"_s);
    LinesOf(MergeEvent::Conflict, u"v.What = 'won'"_s, u"'%1''s version is the later one'"_s.arg(other));
    LinesOf(MergeEvent::Conflict, u"v.What = 'lost'"_s, u"'the version here is the later one'"_s);
    ReportMissingPages();
    LinesOf(MergeEvent::ItemMoved, u"v.What IN ('update', 'won') AND v.OldParent <> i.ParentID"_s,
            u"coalesce((SELECT t.Title FROM main.Items AS t WHERE t.ID = i.ParentID), '')"_s);
    // What is no conflict, and yet was not taken.
    const QString whose = u"CASE v.What WHEN 'lost' THEN '%1' ELSE '%2' END"_s.arg(other, own);
    LinesOf(MergeEvent::SetAside,
            u"v.What IN ('won', 'lost') AND EXISTS (SELECT 1 FROM main.TempItems AS t WHERE t.ID = v.LID "
            "AND (coalesce(t.ItemStatus, 0) <> coalesce(i.ItemStatus, 0) OR coalesce(t.ItemRating, 0) <> "
            "coalesce(i.ItemRating, 0)))"_s,
            u"'status and rating of '|| "_s + whose);
    LinesOf(
        MergeEvent::SetAside,
        u"(v.What = 'lost' AND %1 > 0 AND %1 <> i.ParentID) OR (v.What = 'won' AND v.OldParent <> i.ParentID)"_s.arg(
            parent),
        u"'the place of '|| "_s + whose);
}

/// The other side has lost the page of an item that was taken over.
void MergeRun::ReportMissingPages()
{
    Line(MergeEvent::PageChanged,
         u"SELECT i.ID, i.Title, 'it is missing on the other side, and did not come' FROM temp.merge_Verdicts AS v "
         "JOIN synchro.Items AS s ON s.rowid = v.SRow JOIN main.Items AS i ON i.ID = v.LID WHERE v.What IN ('new', "
         "'regained', 'update', 'won') AND s.HTMLPage <> 0 AND s.HTMLLastUpdated > ? AND NOT EXISTS (SELECT 1 "
         "FROM synchro.HTMLFiles AS h WHERE h.ItemIDRef = s.ID)"_s,
         {Last});
}

QString MergeRun::MotherColumn() const
{
    return AsMother ? u"ID"_s : u"MotherRecordID"_s;
}

// Orphans

void MergeRun::SetUpOrphanedItemsFolder()
{
    OrphanedFolderID = OrphanFolder(Lib);
}

void MergeRun::MoveMarkedItemsToOrphanedItemsFolder(bool forChild)
{
    if (!forChild)
        Execute(u"DELETE FROM main.DeletedFiles WHERE ItemID IN (SELECT f.ID FROM main.Files AS f WHERE f.CodeID IN "
                "(SELECT ID FROM temp.merge_Orphaned))"_s);
    const QString orphans = u"SELECT i.ID FROM main.Items AS i WHERE i.ID IN (SELECT ID FROM temp.merge_Orphaned UNION "
                            "SELECT ID FROM temp.merge_Loose) AND coalesce(i.ParentID, 0) <> 0 AND NOT EXISTS "
                            "(SELECT 1 FROM main.Items AS p WHERE p.ID = i.ParentID)"_s;
    Line(MergeEvent::ItemOrphaned, u"SELECT ID, Title FROM main.Items WHERE ID IN (%1)"_s.arg(orphans));
    PutWithOrphans(orphans);
}

/// A mother of this one that is not told would take them with what stood above them; children would keep their place.
void MergeRun::PutWithOrphans(const QString& items)
{
    if (!AsMother)
        Execute(u"INSERT OR IGNORE INTO temp.merge_Touched "_s + items);
    if (TellsMother())
        Log(u"SELECT 'Items', ID, 0, 4, ?1, ?1, '' FROM main.Items WHERE ID IN (%1)"_s.arg(items), {Stamp});
    Execute(u"UPDATE main.Items SET ParentID = ? WHERE ID IN (%1)"_s.arg(items), {OrphanedFolderID});
}

void MergeRun::CheckItToDeleteOrphanedItemsFolder()
{
    RemoveEmptyOrphanFolder(Lib);
}

void MergeRun::BreakCycles()
{
    const QString cycle =
        u"WITH RECURSIVE above(Start, At) AS (SELECT ID, ParentID FROM main.Items WHERE ID IN (SELECT ID "
        "FROM temp.merge_Loose) UNION SELECT above.Start, i.ParentID FROM above "
        "JOIN main.Items AS i ON i.ID = above.At WHERE above.At <> 0) SELECT Start FROM above WHERE At = "
        "Start LIMIT 1"_s;
    // At the mother what was only edited by the child has not made the cycle, nor in a child what she had before.
    const QString hasStayed =
        AsMother ? u"EXISTS (SELECT 1 FROM temp.merge_Verdicts AS v WHERE v.LID = i.ID AND v.What IN ('update', 'won') "
                   "AND v.OldParent = i.ParentID)"_s
                 : u"i.ID NOT IN (SELECT ID FROM temp.merge_Loose) AND coalesce(i.LastChanged, 0) <= %1"_s.arg(
                     Exported.Seconds());
    // Each turn takes one item out of its cycle.
    for (Value start = Lib.QueryValue(cycle); !start.IsNull(); start = Lib.QueryValue(cycle)) {
        const qint64 item =
            Lib.QueryValue(u"WITH RECURSIVE above(At) AS (SELECT ?1 UNION SELECT i.ParentID FROM above "
                           "JOIN main.Items AS i ON i.ID = above.At) SELECT i.ID FROM main.Items AS i WHERE i.ID IN "
                           "(SELECT At FROM above) AND (i.ID IN (SELECT ID FROM temp.merge_Loose) OR i.ID IN "
                           "(SELECT ID FROM temp.merge_Changed)) ORDER BY %1, coalesce(i.LastChanged, 0), i.ID "
                           "LIMIT 1"_s.arg(hasStayed),
                           {start})
                .ToLong();
        Line(MergeEvent::ItemOrphaned,
             u"SELECT ID, Title, 'it would have stood below itself' FROM main.Items WHERE ID = ?"_s, {item});
        PutWithOrphans(u"SELECT %1"_s.arg(item));
        Execute(u"UPDATE synchro.Items SET MotherParentID = -2, IDChanged = ? WHERE rowid IN (SELECT SRow "
                "FROM temp.merge_Verdicts WHERE LID = ?)"_s,
                {Value(true), item});
    }
}

// What is taken away

bool MergeRun::IsToKeep(const QString& ids)
{
    return !IsPreview && !Lib.QueryValue(u"SELECT 1 WHERE EXISTS (%1)"_s.arg(ids)).IsNull();
}

void MergeRun::SetAside(VersionOf whose, const QString& ids, const QString& reason)
{
    if (!IsToKeep(ids))
        return;
    const QString where = u"r.ID IN (%1)"_s.arg(ids);
    if (whose == VersionOf::Library) {
        Removed.Add(RemovedRows::OfLibrary(where), reason);
        return;
    }
    RemovedRows rows = RemovedRows::InColumns(SynchroSchema, where);
    rows.ItemId = u"0"_s;
    rows.ParentId =
        AsMother ? u"coalesce(r.MotherParentID, 0)"_s
                 : u"coalesce((SELECT p.ID FROM main.Items AS p WHERE p.MotherRecordID = r.MotherParentID), 0)"_s;
    Removed.Add(rows, reason);
}

void MergeRun::SetAsideFiles(const QString& ids, const QString& reason)
{
    if (IsToKeep(ids))
        Removed.AddFiles(RemovedRows::OfLibrary(u"f.ID IN (%1)"_s.arg(ids)), reason);
}

void MergeRun::SetAsideDescriptions(VersionOf whose, const QString& ids, const QString& reason)
{
    if (!IsToKeep(ids))
        return;
    const QString where = u"f.ID IN (%1)"_s.arg(ids);
    Removed.AddDescriptions(whose == VersionOf::Library ? RemovedRows::OfLibrary(where)
                                                        : RemovedRows::InColumns(SynchroSchema, where),
                            reason);
}

} // namespace qb
