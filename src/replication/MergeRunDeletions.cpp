#include "replication/MergeRun.h"

#include "store/ReplicaLog.h"

#include <QLocale>
#include <algorithm>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

/// The order of these texts is not that of the dates; it has always been so.
QString DayFirst(Date date)
{
    return date.Day().toString(u"dd/MM/yy"_s) + u' ' + date.Time().toString(u"HH:mm:ss"_s);
}

QString ShortDate(Date date)
{
    return QLocale().toString(date.Day(), QLocale::ShortFormat);
}

QString ShortTime(Date date)
{
    return QLocale().toString(date.Time(), QLocale::ShortFormat);
}

} // namespace

void MergeRun::MoveAndRemoveDeletedItems()
{
    Execute(u"INSERT INTO temp.merge_Deleted SELECT i.ID, max(d.DateDeleted), 0 FROM synchro.DeletedItems AS d "
            "JOIN main.Items AS i ON i.%1 = d.ItemID WHERE %2 AND i.ID <> ? GROUP BY i.ID"_s.arg(
                MotherColumn(), IsKnown(u"d.ItemID"_s)),
            {OrphanedFolderID});
    RecursiveRemoveDeletedItems();
    WriteKeptNotes();
    RemoveGoneItems();
}

/// What stands below a deleted item goes by a date of its own, where the other side has listed it; else it inherits
/// that of its parent. In a child it does so only below one that stays. What changed here, what the other side never
/// had, and what it has elsewhere does not inherit.
void MergeRun::RecursiveRemoveDeletedItems()
{
    const QString unseen =
        AsMother ? u"coalesce(i.LastChanged, -1) <> 0 AND NOT EXISTS (SELECT 1 FROM synchro.Items AS s "
                   "WHERE s.MotherRecordID = i.ID) AND NOT EXISTS (SELECT 1 FROM main.ReplicaLog AS l "
                   "WHERE l.Event = 6 AND l.OfTable = 'Items' AND l.RecordID = i.ID AND l.Origin = ?2)"_s
                 : u"coalesce(i.MotherRecordID, 0) > 0 AND ?2 = ?2 AND NOT EXISTS (SELECT 1 FROM synchro.Items AS s "
                   "WHERE s.MotherRecordID = i.MotherRecordID)"_s;
    const QString parents = AsMother ? u"temp.merge_Deleted"_s : u"temp.merge_Kept"_s;
    for (qint64 round = 0;; ++round) {
        KeepWhatChanged(round);
        const qint64 inherited = Execute(
            u"INSERT OR IGNORE INTO temp.merge_Deleted SELECT i.ID, d.DateDeleted, ?1 + 1 FROM temp.merge_Deleted AS d "
            "JOIN main.Items AS i ON i.ParentID = d.ID WHERE d.Round = ?1 AND d.ID IN (SELECT ID FROM %1) "
            "AND i.ID NOT IN (SELECT ID FROM temp.merge_Changed) AND %2"_s.arg(parents, unseen),
            {round, Other});
        if (inherited == 0)
            break;
    }
    Execute(u"INSERT INTO temp.merge_Gone SELECT ID, DateDeleted FROM temp.merge_Deleted WHERE ID NOT IN (SELECT ID "
            "FROM temp.merge_Kept)"_s);
}

void MergeRun::KeepWhatChanged(qint64 round)
{
    const QString newFile = AsMother ? u"SELECT f.CodeID FROM main.Files AS f WHERE f.CodeID IN (SELECT ID "
                                       "FROM temp.merge_Deleted WHERE Round = ?1) AND (f.DateAdded > ?2 OR EXISTS "
                                       "(SELECT 1 FROM main.ReplicaLog AS l WHERE l.Event = 1 AND l.OfTable = 'Files' "
                                       "AND l.RecordID = f.ID AND l.RowDate = f.DateAdded AND l.Moment > ?2 "
                                       "AND l.Origin <> ?3))"_s
                                     : u"SELECT f.CodeID FROM main.Files AS f WHERE f.CodeID IN (SELECT ID "
                                       "FROM temp.merge_Deleted WHERE Round = ?1) AND f.DateAdded > ?2 AND ?3 = ?3"_s;
    Execute(u"INSERT OR IGNORE INTO temp.merge_Kept "_s + newFile, {round, Last, Other});
    std::vector<qint64> later;
    Statement rows = Lib.Query(u"SELECT d.ID, coalesce(i.LastChanged, 0), d.DateDeleted, (SELECT max(l.Moment) "
                               "FROM main.ReplicaLog AS l WHERE l.OfTable = 'Items' AND l.RecordID = d.ID "
                               "AND (l.Event = 6 OR (l.Event = 1 AND l.RowDate = 0))) FROM temp.merge_Deleted AS d "
                               "JOIN temp.merge_Changed AS c ON c.ID = d.ID JOIN main.Items AS i ON i.ID = d.ID "
                               "WHERE d.Round = ?"_s,
                               {round});
    while (rows.Step()) {
        const Date changed = rows.Column(1).ToDate();
        const Date deleted = rows.Column(2).ToDate();
        // What waits for a decision is taken by a deletion that came after it began to wait.
        const bool stays = changed.IsNone() ? rows.IsNull(3) || deleted <= rows.Column(3).ToDate()
                                            : DayFirst(changed) > DayFirst(deleted);
        if (stays)
            later.push_back(rows.Long(0));
    }
    for (const qint64 item : later)
        Execute(u"INSERT OR IGNORE INTO temp.merge_Kept VALUES (?)"_s, {item});
}

/// The titles above an item, as people read a place.
QString MergeRun::PathOf(qint64 item)
{
    QStringList titles;
    Statement above = Lib.Query(u"WITH RECURSIVE above(At, Depth) AS (SELECT ParentID, 1 FROM main.Items WHERE ID = ? "
                                "UNION ALL SELECT i.ParentID, Depth + 1 FROM above JOIN main.Items AS i ON i.ID = "
                                "above.At WHERE Depth < 1000) SELECT i.Title FROM above "
                                "JOIN main.Items AS i ON i.ID = above.At ORDER BY Depth DESC"_s,
                                {item});
    while (above.Step())
        titles << above.Text(0);
    return u"//"_s + titles.join(u'/');
}

void MergeRun::WriteKeptNotes()
{
    struct Kept {
        qint64 ID;
        Date Changed;
        QString Info;
        bool HasNewFiles;
    };
    std::vector<Kept> all;
    Statement rows = Lib.Query(
        u"SELECT i.ID, i.LastChanged, i.Info, EXISTS (SELECT 1 FROM main.Files AS f WHERE f.CodeID = i.ID "
        "AND (f.DateAdded > ?1 OR EXISTS (SELECT 1 FROM main.ReplicaLog AS l WHERE l.Event = 1 AND l.OfTable = 'Files' "
        "AND l.RecordID = f.ID AND l.RowDate = f.DateAdded AND l.Moment > ?1 AND l.Origin <> ?2))) "
        "FROM temp.merge_Kept AS k JOIN main.Items AS i ON i.ID = k.ID"_s,
        {Last, Other});
    while (rows.Step())
        all.push_back({rows.Long(0), rows.Column(1).ToDate(), rows.Text(2), rows.Long(3) != 0});
    const QString ids = u"SELECT ID FROM temp.merge_Kept"_s;
    Sums.Hold(u"Items"_s, ids);
    Sums.Wrote(u"Items"_s, ids, u"Info"_s);
    for (const Kept& kept : all) {
        if (kept.Changed.IsNone()) // it waits already, and says why
            continue;
        const QString note =
            (kept.HasNewFiles ? u"Record was not deleted during synchronization because it contains at least one file, "
                                "that was added after the previous synchronization.\r\n"_s
                              : QString())
            + u"%1 - Original location of this item was: %2\r\nItem originaly last updated on %1 %3.\r\n"_s.arg(
                ShortDate(kept.Changed), PathOf(kept.ID), ShortTime(kept.Changed));
        Execute(u"UPDATE main.Items SET Info = ? WHERE ID = ?"_s, {QString(note + u"\r\n"_s + kept.Info), kept.ID});
    }
    if (AsMother)
        Execute(u"UPDATE main.Items SET LastChanged = 0 WHERE ID IN (SELECT ID FROM temp.merge_Kept)"_s);
    Execute(u"INSERT OR IGNORE INTO temp.merge_Orphaned SELECT ID FROM temp.merge_Kept"_s);
    Execute(u"INSERT OR IGNORE INTO temp.merge_Spared SELECT ID FROM temp.merge_Kept"_s);
    NoteWhatOthersLack();
    Line(MergeEvent::ItemKept, u"SELECT ID, Title, 'deleted on the other side, changed here' FROM main.Items "
                               "WHERE ID IN (SELECT ID FROM temp.merge_Kept)"_s);
}

/// The child that has deleted an item which stays gets it, if at all, as a whole.
void MergeRun::NoteWhatOthersLack()
{
    if (!AsMother)
        return;
    Execute(
        u"DELETE FROM main.ReplicaLog WHERE OfTable = 'Items' AND Event = 1 AND RowDate = 0 AND RecordID IN (SELECT ID "
        "FROM temp.merge_Kept)"_s);
    Log(u"SELECT 'Items', ID, 0, 6, ?, 0, ? FROM temp.merge_Kept"_s, {Stamp, Other});
}

void MergeRun::RemoveGoneItems()
{
    const QString gone = u"SELECT ID FROM temp.merge_Gone"_s;
    if (Lib.QueryValue(gone + u" LIMIT 1"_s).IsNull())
        return;
    SetAside(VersionOf::Library, gone, u"deleted on the other side"_s);
    Line(MergeEvent::ItemDeleted, u"SELECT ID, Title FROM main.Items WHERE ID IN (%1)"_s.arg(gone));
    Statement files = Lib.Query(u"SELECT ID, Title FROM main.Files WHERE CodeID IN (%1)"_s.arg(gone));
    while (files.Step())
        Contents.DeleteFile(files.Long(0), files.Text(1));
    Statement items = Lib.Query(gone);
    while (items.Step())
        Contents.DeletePageOf(items.Long(0));
    Execute(u"INSERT OR IGNORE INTO temp.merge_Loose SELECT ID FROM main.Items WHERE ParentID IN (%1) "
            "AND ID NOT IN (%1)"_s.arg(gone));
    ForgetChecksumsOf(u"Files"_s, u"SELECT ID FROM main.Files WHERE CodeID IN (%1)"_s.arg(gone));
    ForgetChecksumsOf(u"Items"_s, gone);
    NoteDeletions(u"Items"_s, u"DeletedItems"_s, u"temp.merge_Gone"_s);
    for (const QString& statement :
         {u"DELETE FROM main.ItemLinks WHERE ItemID IN (%1) OR LinkItemID IN (%1)"_s,
          u"DELETE FROM main.Bookmarks WHERE CodeID IN (%1)"_s, u"DELETE FROM main.Files WHERE CodeID IN (%1)"_s,
          u"DELETE FROM main.Items WHERE ID IN (%1)"_s})
        Execute(statement.arg(gone));
    Execute(u"DELETE FROM main.ReplicaLog WHERE OfTable IN ('Items', 'Pages') AND Event IN (1, 4, 6, 7) "
            "AND RecordID IN (%1)"_s.arg(gone));
    if (!AsMother)
        return;
    for (const QString& statement :
         {u"DELETE FROM synchro.ItemsX WHERE ID IN (%1)"_s, u"DELETE FROM synchro.FilesX WHERE CodeID IN (%1)"_s,
          u"DELETE FROM synchro.HTMLFilesX WHERE ItemIDRef IN (%1)"_s,
          u"DELETE FROM synchro.ItemLinksX WHERE ItemID IN (%1) OR LinkItemID IN (%1)"_s})
        Execute(statement.arg(gone));
}

bool MergeRun::TellsOthers() const
{
    return Lib.Replica().Children > (AsMother ? 1 : 0) || TellsMother();
}

bool MergeRun::TellsMother() const
{
    return AsMother && Lib.IsChildReplica();
}

/// The other children, and the mother of one that has children itself, learn of it with its own date. The mother does
/// by her own numbers, which the log has; the tables have those of this library.
void MergeRun::NoteDeletions(const QString& table, const QString& deletions, const QString& rows)
{
    if (!TellsOthers())
        return;
    if (AsMother && !TellsMother())
        Execute(u"INSERT INTO main.%1 (ItemID, DateDeleted) SELECT ID, DateDeleted FROM %2"_s.arg(deletions, rows));
    Log(u"SELECT ?, ID, 0, 2, ?, DateDeleted, ? FROM %1"_s.arg(rows), {table, Stamp, Other});
    if (TellsMother())
        Execute(u"UPDATE main.ReplicaLog AS l SET MotherRecordID = max(coalesce(r.MotherRecordID, 0), 0) FROM main.%1 "
                "AS r WHERE r.ID = l.RecordID AND l.OfTable = '%1' AND l.Event = 2 AND l.Moment = ? "
                "AND l.Origin = ?"_s.arg(table),
                {Stamp, Other});
}

void MergeRun::RemoveDeletedFiles()
{
    const QString listed = u"synchro.DeletedFiles AS d JOIN main.Files AS f ON f.%1 = d.ItemID WHERE %2 "
                           "AND f.CodeID NOT IN (SELECT "
                           "ID FROM temp.merge_Spared)"_s.arg(MotherColumn(), IsKnown(u"d.ItemID"_s));
    // In a child a date with which it was taken over is no change.
    const QString changed =
        AsMother ? u"coalesce(f.LastUpdated, 0)"_s
                 : u"CASE WHEN EXISTS (SELECT 1 FROM main.ReplicaLog AS l WHERE l.Event = 3 AND l.OfTable = 'Files' "
                   "AND l.RecordID = f.ID AND l.RowDate = f.LastUpdated) THEN 0 ELSE coalesce(f.LastUpdated, 0) END"_s;
    Execute(u"INSERT INTO temp.merge_GoneFiles SELECT f.ID, max(d.DateDeleted) FROM %1 GROUP BY f.ID "
            "HAVING %2 < max(d.DateDeleted)"_s.arg(listed, changed));
    Execute(u"INSERT INTO temp.merge_Survivors SELECT DISTINCT f.ID FROM %1 AND f.ID NOT IN (SELECT ID "
            "FROM temp.merge_GoneFiles)"_s.arg(listed));
    const QString gone = u"SELECT ID FROM temp.merge_GoneFiles"_s;
    if (Lib.QueryValue(gone + u" LIMIT 1"_s).IsNull())
        return;
    SetAsideFiles(gone, u"deleted on the other side"_s);
    Line(MergeEvent::FileDeleted, u"SELECT i.ID, i.Title, f.Title FROM main.Files AS f JOIN main.Items AS i ON i.ID = "
                                  "f.CodeID WHERE f.ID IN (%1)"_s.arg(gone));
    Statement files = Lib.Query(u"SELECT ID, Title FROM main.Files WHERE ID IN (%1)"_s.arg(gone));
    while (files.Step())
        Contents.DeleteFile(files.Long(0), files.Text(1));
    ForgetChecksumsOf(u"Files"_s, gone);
    NoteDeletions(u"Files"_s, u"DeletedFiles"_s, u"temp.merge_GoneFiles"_s);
    Execute(u"DELETE FROM main.Files WHERE ID IN (%1)"_s.arg(gone));
    if (AsMother)
        Execute(u"DELETE FROM synchro.FilesX WHERE ID IN (%1)"_s.arg(gone));
}

/// Whatever became of the link here.
void MergeRun::RemoveDeletedItemsLinks()
{
    const QString ends =
        AsMother ? u"main.ItemLinks AS l ON l.ItemID = d.ItemID AND l.LinkItemID = d.LinkItemID"_s
                 : u"main.Items AS a ON a.MotherRecordID = d.ItemID JOIN main.Items AS b ON b.MotherRecordID = "
                   "d.LinkItemID JOIN main.ItemLinks AS l ON l.ItemID = a.ID AND l.LinkItemID = b.ID"_s;
    // One that a child has made since its export is another one.
    const QString own = AsMother ? QString() : u" AND coalesce(l.DateAdded, 0) <= %1"_s.arg(Exported.Seconds());
    Execute(u"INSERT INTO temp.merge_GoneLinks SELECT l.ID, max(d.DateDeleted) FROM synchro.DeletedItemLinks AS d "
            "JOIN %1 WHERE d.ItemID > 0 AND d.LinkItemID > 0%2 GROUP BY l.ID"_s.arg(ends, own));
    const QString gone = u"SELECT ID FROM temp.merge_GoneLinks"_s;
    if (Lib.QueryValue(gone + u" LIMIT 1"_s).IsNull())
        return;
    Line(MergeEvent::LinkDeleted,
         u"SELECT i.ID, i.Title, coalesce((SELECT t.Title FROM main.Items AS t WHERE t.ID = l.LinkItemID), '') || CASE "
         "WHEN coalesce(l.Note, '') = '' THEN '' ELSE ': ' || l.Note END FROM main.ItemLinks AS l "
         "JOIN main.Items AS i ON i.ID = l.ItemID WHERE l.ID IN (%1)"_s.arg(gone));
    if (TellsOthers() && AsMother && !TellsMother())
        Execute(u"INSERT INTO main.DeletedItemLinks (ItemID, LinkItemID, DateDeleted) "
                "SELECT l.ItemID, l.LinkItemID, g.DateDeleted FROM temp.merge_GoneLinks AS g "
                "JOIN main.ItemLinks AS l ON l.ID = g.ID"_s);
    if (TellsOthers())
        Log(u"SELECT 'ItemLinks', l.ItemID, l.LinkItemID, 2, ?, g.DateDeleted, ? FROM temp.merge_GoneLinks AS g "
            "JOIN main.ItemLinks AS l ON l.ID = g.ID"_s,
            {Stamp, Other});
    if (TellsMother())
        Execute(u"UPDATE main.ReplicaLog AS e SET MotherRecordID = max(coalesce(l.MotherItemID, 0), 0), "
                "MotherSecondID = max(coalesce(l.MotherLinkItemID, 0), 0) FROM main.ItemLinks AS l WHERE l.ID IN (%1) "
                "AND l.ItemID = e.RecordID AND l.LinkItemID = e.SecondID AND e.OfTable = 'ItemLinks' AND e.Event = 2 "
                "AND e.Moment = ? AND e.Origin = ?"_s.arg(gone),
                {Stamp, Other});
    if (AsMother)
        Execute(u"DELETE FROM synchro.ItemLinksX WHERE EXISTS (SELECT 1 FROM main.ItemLinks AS l WHERE l.ID IN (%1) "
                "AND l.ItemID = ItemLinksX.ItemID AND l.LinkItemID = ItemLinksX.LinkItemID)"_s.arg(gone));
    Execute(u"DELETE FROM main.ItemLinks WHERE ID IN (%1)"_s.arg(gone));
}

} // namespace qb
