#include "replication/MotherMerge.h"

#include "maintenance/CDBManipulate.h"
#include "replication/ExportRows.h"

namespace qb {

using namespace Qt::StringLiterals;

namespace {

/// A child's IDs of the mother that she has given it in this run go before those in the file.
const QString OwnerOfFile = u"CASE WHEN coalesce(f.MotherCodeID, 0) > 0 THEN coalesce((SELECT v.LID "
                            "FROM temp.merge_Verdicts AS v WHERE v.OldMother = f.MotherCodeID "
                            "AND v.What = 'regained'), f.MotherCodeID) ELSE (SELECT v.LID "
                            "FROM temp.merge_Verdicts AS v WHERE v.SID = f.CodeID AND v.LID > 0) END"_s;

} // namespace

// What the solver reads of the version that lost

/// All files of the version that lost. Of the child's those that did not travel are known here as they were.
void MotherMerge::MoveFilesToTempTable()
{
    const QString rows =
        u"SELECT v.LID, f.rowid, f.Title, 1 FROM temp.merge_Verdicts AS v JOIN synchro.Files AS f ON f.CodeID = v.SID "
        "WHERE v.What = 'lost' AND coalesce(f.MotherRecordID, 0) <= 0 UNION ALL SELECT v.LID, f.ID, f.Title, 0 "
        "FROM temp.merge_Verdicts AS v JOIN main.Files AS f ON f.CodeID = v.LID WHERE v.What = 'won' "
        "OR (v.What = 'lost' AND coalesce(f.DateAdded, 0) <= ?1 AND NOT EXISTS (SELECT 1 FROM main.ReplicaLog AS l "
        "WHERE l.OfTable = 'Files' AND l.RecordID = f.ID AND l.Event = 1 AND l.RowDate = f.DateAdded AND l.Moment > ?1 "
        "AND l.Origin <> ?2))"_s;
    m_run.CopyToTempFiles(rows, {m_run.Last, m_run.Other}, [this](const MergeRun::CopiedFile& file, qint64 copy) {
        // The child may have described it otherwise.
        if (!file.IsPacked)
            m_run.Execute(u"UPDATE main.TempFiles SET Description = s.Description, LastUpdated = s.LastUpdated "
                          "FROM synchro.Files AS s JOIN temp.merge_Verdicts AS v ON v.What = 'lost' AND v.LID = ? "
                          "WHERE TempFiles.ID = ? AND s.MotherRecordID = ? AND s.CodeID = v.SID"_s,
                          {file.Owner, copy, file.File});
    });
}

void MotherMerge::MoveHTMLFilesToTempTable()
{
    const QString hasPage = u"HTMLPage <> 0 AND coalesce(HTMLLastUpdated, 0) > 0"_s;
    m_run.Execute(u"INSERT INTO main.TempHTMLFiles (ItemIDRef, Name, Folder, File) "
                  "SELECT v.LID, h.Name, h.Folder, h.File FROM temp.merge_Verdicts AS v "
                  "JOIN synchro.Items AS s ON s.rowid = v.SRow JOIN synchro.HTMLFiles AS h ON h.ItemIDRef = s.ID "
                  "WHERE v.What = 'lost' AND s.%1"_s.arg(QString(hasPage).replace(u"coalesce(H"_s, u"coalesce(s.H"_s)));
    // Her own pages, and those of the child's that did not travel since they are hers.
    const QString own = u"ID IN (%1) OR ID IN (SELECT v.LID FROM temp.merge_Verdicts AS v "
                        "JOIN synchro.Items AS s ON s.rowid = v.SRow WHERE v.What = 'lost' AND s.HTMLPage <> 0 "
                        "AND NOT EXISTS (SELECT 1 FROM synchro.HTMLFiles AS h WHERE h.ItemIDRef = s.ID) "
                        "AND coalesce(Items.HTMLLastUpdated, 0) <= ?1)"_s.arg(ItemsOf(u"'won'"_s));
    CDBManipulate contents(m_run.Watcher);
    contents.Use(m_lib);
    contents.ImportAllHTMLFiles(
        m_lib.HTMLFolder(),
        {.Table = u"Items"_s, .Where = u"%1 AND (%2)"_s.arg(hasPage, own), .WhereValues = {m_run.Last}},
        u"TempHTMLFiles"_s);
}

// Stored files

void MotherMerge::CopyFiles()
{
    DescribeFiles();
    AddFiles();
    SendSurvivors();
}

void MotherMerge::DescribeFiles()
{
    m_run.Execute(u"CREATE TEMP TABLE merge_Described AS SELECT m.ID AS ID, f.rowid AS SRow, f.ID AS SID, "
                  "coalesce(length(f.File), 0) > 0 AS IsPacked, coalesce(m.LastUpdated, 0) > ?1 AS IsHers, "
                  "coalesce(m.LastUpdated, 0) > coalesce(f.LastUpdated, 0) AS IsLater, coalesce(f.Description, '') <> "
                  "coalesce(m.Description, '') AS Differs FROM synchro.Files AS f "
                  "JOIN main.Files AS m ON m.ID = f.MotherRecordID WHERE f.MotherRecordID > 0"_s,
                  {m_run.Last});
    m_run.TellOfEach(u"A file record has been changed, but exports also the file itself!"_s,
                     u"SELECT count(*) FROM temp.merge_Described WHERE IsPacked"_s);
    m_run.Execute(u"DELETE FROM temp.merge_Described WHERE IsPacked"_s);
    // What both have described is the later one's, on both sides.
    const QString lines = u"SELECT i.ID, i.Title, m.Title || ': ' || coalesce(%1, '') FROM temp.merge_Described AS d "
                          "JOIN main.Files AS m ON m.ID = d.ID JOIN synchro.Files AS f ON f.rowid = d.SRow "
                          "JOIN main.Items AS i ON i.ID = m.CodeID WHERE %2"_s;
    m_run.Line(MergeEvent::SetAside, lines.arg(u"f.Description"_s, u"IsHers AND IsLater AND Differs"_s));
    m_run.Line(MergeEvent::SetAside, lines.arg(u"m.Description"_s, u"IsHers AND NOT IsLater AND Differs"_s));
    m_run.SetAsideDescriptions(MergeRun::VersionOf::File,
                               u"SELECT SID FROM temp.merge_Described WHERE IsHers AND IsLater AND Differs"_s,
                               u"described otherwise here, later"_s);
    m_run.Execute(u"DELETE FROM temp.merge_Described WHERE IsHers AND IsLater"_s);
    m_run.SetAsideDescriptions(MergeRun::VersionOf::Library, u"SELECT ID FROM temp.merge_Described WHERE Differs"_s,
                               u"described otherwise by the child"_s);
    m_run.Line(MergeEvent::FileChanged, lines.arg(u"f.Description"_s, u"Differs"_s));
    m_run.Sums.Hold(u"Files"_s, u"SELECT ID FROM temp.merge_Described"_s);
    m_run.Execute(u"UPDATE main.Files AS m SET Description = f.Description, LastUpdated = f.LastUpdated "
                  "FROM temp.merge_Described AS d JOIN synchro.Files AS f ON f.rowid = d.SRow WHERE d.ID = m.ID"_s);
    m_run.Sums.Wrote(u"Files"_s, u"SELECT ID FROM temp.merge_Described"_s, u"Description"_s);
    m_run.Execute(u"DELETE FROM synchro.FilesX WHERE ID IN (SELECT ID FROM temp.merge_Described)"_s);
    m_run.Log(u"SELECT 'Files', m.ID, 0, 1, ?, coalesce(m.LastUpdated, 0), ? FROM temp.merge_Described AS d "
              "JOIN main.Files AS m ON m.ID = d.ID"_s,
              {m_run.Stamp, m_run.Other});
    m_run.Execute(u"DROP TABLE temp.merge_Described"_s);
}

void MotherMerge::AddFiles()
{
    struct NewFile {
        qint64 SRow;
        QString Title;
        qint64 Owner;
        bool OwnerIsThere;
        bool HasContents;
    };
    std::vector<NewFile> files;
    Statement rows = m_lib.Query(
        u"SELECT f.rowid, f.Title, coalesce(%1, 0) AS Owner, EXISTS (SELECT 1 FROM main.Items AS i "
        "WHERE i.ID = %1), f.File IS NOT NULL FROM synchro.Files AS f WHERE "
        "coalesce(f.MotherRecordID, 0) <= 0"_s.arg(OwnerOfFile));
    while (rows.Step())
        files.push_back({rows.Long(0), rows.Text(1), rows.Long(2), rows.Long(3) != 0, rows.Long(4) != 0});
    for (const NewFile& file : files) {
        if (!file.OwnerIsThere) { // the child keeps it
            m_run.Tell(u"An item record is missing for a current file record!"_s);
            m_run.Report.Lines.push_back(
                {MergeEvent::SetAside, 0, file.Title, u"a file of an item that is not here; the child keeps it"_s});
            continue;
        }
        m_run.Execute(
            u"INSERT INTO main.Files (CodeID, Title, OrigDateTime, DateAdded, FileSize, Description, LastUpdated) "
            "SELECT ?, Title, OrigDateTime, DateAdded, FileSize, Description, LastUpdated FROM synchro.Files "
            "WHERE rowid = ?"_s,
            {file.Owner, file.SRow});
        const qint64 added = m_lib.LastInsertedRowKey();
        m_run.Sums.Wrote(u"Files"_s, u"SELECT %1"_s.arg(added), u"Description"_s);
        if (file.HasContents)
            m_run.Contents.AddFile(added, file.Title, file.SRow);
        m_run.Execute(u"UPDATE synchro.Files SET MotherCodeID = ?, MotherRecordID = ?, IDChanged = ? WHERE rowid = ?"_s,
                      {file.Owner, added, Value(true), file.SRow});
        m_run.Log(u"SELECT 'Files', ID, 0, 1, ?, coalesce(DateAdded, 0), ? FROM main.Files WHERE ID = ?"_s,
                  {m_run.Stamp, m_run.Other, added});
        m_run.Line(MergeEvent::FileAdded, u"SELECT ID, Title, ? FROM main.Items WHERE ID = ?"_s,
                   {file.HasContents ? file.Title : file.Title + u", whose contents are missing in the replica"_s,
                    file.Owner});
    }
}

/// The child has deleted a file that was described here later: it gets it again.
void MotherMerge::SendSurvivors()
{
    const QString survivors = u"SELECT ID FROM temp.merge_Survivors"_s;
    CopyRecords(m_lib, u"Files"_s, u"synchro.FilesX"_s,
                u"r.ID IN (%1) AND r.ID NOT IN (SELECT ID FROM synchro.FilesX)"_s.arg(survivors));
    m_run.Execute(
        u"UPDATE synchro.FilesX SET MotherRecordID = ID, MotherCodeID = CodeID WHERE ID IN (%1)"_s.arg(survivors));
    CDBManipulate contents(m_run.Watcher);
    contents.Use(m_lib);
    contents.ImportAllItemFiles(
        m_lib.FilesFolder(), {.Table = u"synchro.FilesX"_s, .Where = u"File IS NULL AND ID IN (%1)"_s.arg(survivors)});
}

// Pages

void MotherMerge::CopyHTMLFiles()
{
    struct Page {
        qint64 Packed;
        qint64 Item;
        QString What;
        bool IsThere;
        bool IsHers; ///< she has changed it since, and it comes without a version that was decided about
    };
    std::vector<Page> pages;
    Statement rows = m_lib.Query(
        u"SELECT h.Packed, coalesce(v.LID, h.Known), coalesce(v.What, ''), i.ID IS NOT NULL, v.What IS NULL "
        "AND coalesce(i.HTMLLastUpdated, 0) > ? FROM (SELECT ItemIDRef AS Packed, max(coalesce(MotherRecordID, 0)) AS "
        "Known FROM synchro.HTMLFiles WHERE ItemIDRef > 0 GROUP BY ItemIDRef) AS h LEFT "
        "JOIN temp.merge_Verdicts AS v ON v.SID = h.Packed LEFT JOIN main.Items AS i ON i.ID = coalesce(v.LID, "
        "h.Known)"_s,
        {m_run.Last});
    while (rows.Step())
        pages.push_back({rows.Long(0), rows.Long(1), rows.Text(2), rows.Long(3) != 0, rows.Long(4) != 0});
    for (const Page& page : pages) {
        if (page.What == u"lost"_s || page.What == u"ignored"_s || page.What == u"forgotten"_s)
            continue; // it belongs to a version that did not win
        if (!page.IsThere) {
            m_run.Tell(u"Invalid HTMLFile name - it doesn't exist in the main db. (CDBManipulate, CopyHTMLFiles "
                       "function)"_s);
            continue;
        }
        if (page.IsHers) { // it goes to the child, which keeps what it had
            m_run.Line(MergeEvent::SetAside,
                       u"SELECT ID, Title, 'the web page of the child' FROM main.Items WHERE ID = ?"_s, {page.Item});
            continue;
        }
        m_run.Contents.WritePage(page.Item, page.Packed);
        if (page.What.isEmpty()) // the others get it alone, as it came
            m_run.Log(u"SELECT 'Pages', ID, 0, 1, ?, coalesce(HTMLLastUpdated, 0), ? FROM main.Items WHERE ID = ?"_s,
                      {m_run.Stamp, m_run.Other, page.Item});
        m_run.Line(MergeEvent::PageChanged, u"SELECT ID, Title FROM main.Items WHERE ID = ?"_s, {page.Item});
    }
    // Of a version of the child's that lost, the page goes here back over it.
    CDBManipulate contents(m_run.Watcher);
    contents.Use(m_lib);
    const QString back =
        u"SELECT v.LID FROM temp.merge_Verdicts AS v JOIN synchro.Items AS s ON s.rowid = v.SRow WHERE v.What = 'lost' "
        "AND coalesce(s.HTMLLastUpdated, 0) > ?1"_s;
    contents.ImportAllHTMLFiles(m_lib.HTMLFolder(),
                                {.Table = u"Items"_s,
                                 .Where = u"HTMLPage <> 0 AND ID IN (%1) AND ID NOT IN (SELECT ItemIDRef "
                                          "FROM synchro.HTMLFilesX)"_s.arg(back),
                                 .WhereValues = {m_run.Last}},
                                u"synchro.HTMLFilesX"_s);
    m_run.Execute(u"UPDATE synchro.HTMLFilesX SET MotherRecordID = ItemIDRef WHERE coalesce(MotherRecordID, 0) <= 0"_s);
}

/// A mother of this one tells by the date whether the page of a row is the row's. What came from here below may have
/// been changed before the two met last.
void MotherMerge::DatePagesForTheMother()
{
    if (!m_lib.IsChildReplica())
        return;
    m_run.Execute(u"UPDATE main.Items AS i SET HTMLLastUpdated = ?1 FROM temp.merge_Verdicts AS v "
                  "JOIN synchro.Items AS s ON s.rowid = v.SRow WHERE v.LID = i.ID AND v.What IN ('update', 'won') "
                  "AND coalesce(s.HTMLLastUpdated, 0) > ?2 AND coalesce(i.HTMLLastUpdated, 0) <= ?3"_s,
                  {m_run.Stamp, m_run.Last, m_lib.Replica().LastSynchronized});
}

} // namespace qb
