#include "replication/ChildMerge.h"

#include "maintenance/CDBManipulate.h"

namespace qb {

using namespace Qt::StringLiterals;

// What the solver reads of the version that lost

/// All files of the version that lost: of the mother's the new ones, and those that both have.
void ChildMerge::MoveFilesToTempTable()
{
    m_run.CopyToTempFiles(
        u"SELECT v.LID, f.rowid, f.Title, 1 FROM temp.merge_Verdicts AS v JOIN synchro.Files AS f ON f.MotherCodeID = "
        "v.OldMother WHERE v.What = 'lost' AND f.IDChanged = 0 AND f.File IS NOT NULL UNION ALL "
        "SELECT v.LID, f.ID, f.Title, 0 FROM temp.merge_Verdicts AS v JOIN main.Files AS f ON f.CodeID = v.LID "
        "WHERE v.What = 'won' OR (v.What = 'lost' AND f.MotherRecordID > 0)"_s,
        {}, [this](const MergeRun::CopiedFile& file, qint64 copy) {
            // The mother may have described it otherwise.
            if (!file.IsPacked)
                m_run.Execute(u"UPDATE main.TempFiles SET Description = s.Description, LastUpdated = s.LastUpdated "
                              "FROM synchro.Files AS s JOIN main.Files AS f ON f.MotherRecordID = s.MotherRecordID "
                              "JOIN temp.merge_Verdicts AS v ON v.LID = f.CodeID AND v.What = 'lost' WHERE f.ID = ? "
                              "AND TempFiles.ID = ? AND s.IDChanged = 0 AND s.MotherRecordID > 0"_s,
                              {file.File, copy});
        });
}

void ChildMerge::MoveHTMLFilesToTempTable()
{
    m_run.Execute(u"INSERT INTO main.TempHTMLFiles (ItemIDRef, Name, Folder, File) "
                  "SELECT v.LID, h.Name, h.Folder, h.File FROM temp.merge_Verdicts AS v "
                  "JOIN synchro.Items AS s ON s.rowid = v.SRow JOIN synchro.HTMLFiles AS h ON h.ItemIDRef = s.ID "
                  "WHERE v.What = 'lost' AND s.HTMLPage <> 0"_s);
    CDBManipulate contents(m_run.Watcher);
    contents.Use(m_lib);
    // Its own pages, and those of the mother's that did not travel since they are the same.
    const QString own = u"ID IN (%1) OR ID IN (SELECT v.LID FROM temp.merge_Verdicts AS v JOIN synchro.Items AS s ON "
                        "s.rowid = v.SRow JOIN temp.merge_MothersPages AS m ON m.ID = v.LID WHERE s.HTMLPage <> 0 "
                        "AND s.ID NOT IN (SELECT ItemIDRef FROM synchro.HTMLFiles))"_s.arg(ItemsOf(u"'won'"_s));
    contents.ImportAllHTMLFiles(
        m_lib.HTMLFolder(),
        {.Table = u"Items"_s, .Where = u"HTMLPage <> 0 AND coalesce(HTMLLastUpdated, 0) > 0 AND (%1)"_s.arg(own)},
        u"TempHTMLFiles"_s);
}

// Stored files

void ChildMerge::CopyFilesToReplica()
{
    TakeFileNumbers();
    DescribeFiles();
    AddFiles();
}

void ChildMerge::TakeFileNumbers()
{
    m_run.Execute(u"UPDATE main.Files AS f SET MotherRecordID = s.MotherRecordID, MotherCodeID = s.MotherCodeID "
                  "FROM synchro.Files AS s WHERE s.IDChanged <> 0 AND s.ID = f.ID AND f.CodeID NOT IN (SELECT ID "
                  "FROM temp.merge_Kept)"_s);
}

void ChildMerge::DescribeFiles()
{
    // One that was described here since the export is the child's, if that was the later.
    const QString rows =
        u"synchro.Files AS s JOIN main.Files AS f ON f.MotherRecordID = s.MotherRecordID WHERE s.IDChanged = 0 "
        "AND s.MotherRecordID > 0"_s;
    const QString own =
        u"coalesce(f.LastUpdated, 0) > ?1 AND NOT %1 AND f.LastUpdated > coalesce(s.LastUpdated, 0)"_s.arg(
            IsTakenOver(u"Files"_s, u"f.ID"_s, u"f.LastUpdated"_s));
    m_run.Execute(u"CREATE TEMP TABLE merge_Described AS SELECT f.ID AS ID, s.rowid AS SRow FROM %1 AND NOT (%2)"_s.arg(
                      rows, own),
                  {m_run.Exported});
    m_run.SetAsideDescriptions(MergeRun::VersionOf::Library,
                               u"SELECT d.ID FROM temp.merge_Described AS d JOIN main.Files AS f ON f.ID = d.ID "
                               "JOIN synchro.Files AS s ON s.rowid = d.SRow WHERE coalesce(s.Description, '') <> "
                               "coalesce(f.Description, '')"_s,
                               u"described otherwise by the mother"_s);
    m_run.Line(MergeEvent::FileChanged,
               u"SELECT i.ID, i.Title, f.Title FROM temp.merge_Described AS d JOIN main.Files AS f ON f.ID = d.ID "
               "JOIN main.Items AS i ON i.ID = f.CodeID"_s);
    m_run.Sums.Hold(u"Files"_s, u"SELECT ID FROM temp.merge_Described"_s);
    m_run.Execute(u"UPDATE main.Files AS f SET Description = s.Description, LastUpdated = s.LastUpdated "
                  "FROM temp.merge_Described AS d JOIN synchro.Files AS s ON s.rowid = d.SRow WHERE d.ID = f.ID"_s);
    m_run.Sums.Wrote(u"Files"_s, u"SELECT ID FROM temp.merge_Described"_s, u"Description"_s);
}

void ChildMerge::AddFiles()
{
    struct NewFile {
        qint64 SRow;
        QString Title;
        qint64 Owner;
        bool HasContents;
    };
    std::vector<NewFile> files;
    Statement rows = m_lib.Query(
        u"SELECT s.rowid, s.Title, coalesce((SELECT min(i.ID) FROM main.Items AS i "
        "WHERE i.MotherRecordID = s.MotherCodeID), 0), s.File IS NOT NULL FROM synchro.Files AS s "
        "WHERE s.IDChanged = 0 AND NOT EXISTS (SELECT 1 FROM main.Files AS f WHERE f.MotherRecordID = "
        "s.MotherRecordID) AND NOT %1 AND NOT %2"_s.arg(IsDeletedHere(u"Files"_s, u"s.MotherRecordID"_s),
                                                        IsDeletedHere(u"Items"_s, u"s.MotherCodeID"_s)),
        {m_run.Exported});
    while (rows.Step())
        files.push_back({rows.Long(0), rows.Text(1), rows.Long(2), rows.Long(3) != 0});
    for (const NewFile& file : files) {
        if (!file.HasContents || file.Owner == 0) {
            m_run.Tell(u"Required record missing! (CDBManipulate; CopyFilesToReplica subroutine) /%1/"_s.arg(
                file.HasContents ? 3 : 2));
            continue;
        }
        m_run.Execute(
            u"INSERT INTO main.Files (CodeID, Title, OrigDateTime, DateAdded, FileSize, Description, LastUpdated, "
            "MotherRecordID, MotherCodeID) SELECT ?, Title, OrigDateTime, DateAdded, FileSize, Description, "
            "LastUpdated, MotherRecordID, MotherCodeID FROM synchro.Files WHERE rowid = ?"_s,
            {file.Owner, file.SRow});
        const qint64 added = m_lib.LastInsertedRowKey();
        m_run.Sums.Wrote(u"Files"_s, u"SELECT %1"_s.arg(added), u"Description"_s);
        m_run.Contents.AddFile(added, file.Title, file.SRow);
        m_run.Execute(u"INSERT INTO temp.merge_Described (ID, SRow) VALUES (?, ?)"_s, {added, file.SRow});
        m_run.Line(MergeEvent::FileAdded, u"SELECT ID, Title, ? FROM main.Items WHERE ID = ?"_s,
                   {file.Title, file.Owner});
    }
}

// Pages

void ChildMerge::CopyHTMLFilesToReplica()
{
    struct Page {
        qint64 Packed;
        qint64 Item;
        QString What;
        bool IsOwn;
    };
    std::vector<Page> pages;
    Statement rows = m_lib.Query(
        u"SELECT h.Packed, coalesce(i.ID, 0), coalesce(v.What, ''), CASE v.What WHEN 'lost' THEN i.ID NOT IN (SELECT "
        "ID FROM temp.merge_MothersPages) ELSE coalesce(i.HTMLLastUpdated, 0) > ?1 AND v.What IS NULL AND NOT %1 END "
        "FROM (SELECT ItemIDRef AS Packed, max(coalesce(MotherRecordID, 0)) AS Known "
        "FROM synchro.HTMLFiles WHERE ItemIDRef > 0 GROUP BY ItemIDRef) AS h LEFT "
        "JOIN main.Items AS i ON i.MotherRecordID = h.Known AND h.Known > 0 LEFT "
        "JOIN temp.merge_Verdicts AS v ON v.LID = i.ID WHERE NOT %2"_s.arg(
            IsTakenOver(u"Items"_s, u"i.ID"_s, u"i.HTMLLastUpdated"_s), IsDeletedHere(u"Items"_s, u"h.Known"_s)),
        {m_run.Exported});
    while (rows.Step())
        pages.push_back({rows.Long(0), rows.Long(1), rows.Text(2), rows.Long(3) != 0});
    for (const Page& page : pages) {
        if (page.Item == 0) {
            m_run.Tell(u"Invalid HTMLFile name - it doesn't exist in the main db. (CDBManipulate, CopyHTMLFiles "
                       "function)"_s);
            continue;
        }
        if (page.IsOwn)
            continue;
        if (page.What.isEmpty())
            m_run.SetAside(MergeRun::VersionOf::Library,
                           u"SELECT ID FROM main.Items WHERE HTMLPage <> 0 AND ID = %1"_s.arg(page.Item),
                           u"its web page was overwritten by the mother's"_s);
        m_run.Contents.WritePage(page.Item, page.Packed);
        m_run.Line(MergeEvent::PageChanged, u"SELECT ID, Title FROM main.Items WHERE ID = ?"_s, {page.Item});
        if (page.What.isEmpty()) { // the row has not come, since its texts are the child's
            m_run.Execute(u"INSERT OR IGNORE INTO temp.merge_Touched VALUES (?)"_s, {page.Item});
            m_run.Execute(
                u"UPDATE main.Items SET HTMLPage = ?1, HTMLLastUpdated = min(?2, coalesce((SELECT "
                "max(s.HTMLLastUpdated) FROM synchro.Items AS s WHERE s.ConflictItem <> 0 AND s.ID = ?3), ?2)) "
                "WHERE ID = ?3"_s,
                {Value(true), m_run.Exported, page.Item});
        }
    }
}

} // namespace qb
