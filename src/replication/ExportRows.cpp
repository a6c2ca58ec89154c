#include "replication/ExportRows.h"

#include "maintenance/CDBManipulate.h"
#include "maintenance/PhasedWork.h"
#include "platform/system/Prompts.h"
#include "platform/system/RuntimeError.h"
#include "replication/PageLinks.h"
#include "replication/SystemDate.h"
#include "store/ItemBranch.h"
#include "store/Library.h"
#include "store/ReplicaLog.h"
#include "support/ErrorRoutine.h"

#include <optional>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

const QString ModuleName = u"CDBManipulate"_s;

/// A table whose rows travel: which dates say that a row is new or changed, and how it is known in the log.
struct TravellingTable {
    QLatin1StringView Name;
    QLatin1StringView Dates; ///< parted by commas
    QLatin1StringView Record;
    QLatin1StringView Second;
    QLatin1StringView Item; ///< the column by which the row belongs to an item; empty: it is the item
};
constexpr TravellingTable Items{"Items"_L1, "LastChanged"_L1, "ID"_L1, {}, {}};
constexpr TravellingTable Pages{"Items"_L1, "HTMLLastUpdated"_L1, "ID"_L1, {}, "ID"_L1};
constexpr TravellingTable Files{"Files"_L1, "LastUpdated,DateAdded"_L1, "ID"_L1, {}, "CodeID"_L1};
constexpr TravellingTable Links{"ItemLinks"_L1, "DateAdded"_L1, "ItemID"_L1, "LinkItemID"_L1, "ItemID"_L1};

/// What is known of an ID on the other side: what is not known is 0 or less there, and @p unknown here.
QString KnownOr(const QString& column, int unknown)
{
    return u"CASE WHEN %1 > 0 THEN %1 ELSE %2 END"_s.arg(column).arg(unknown);
}

/// The rows of one library that go to one other.
class ChangedRows {
public:
    /// @p to is the identity of who gets them; empty: the mother.
    ChangedRows(Database& connection, const QString& library, Date bound, const QString& to)
        : m_library(library), m_bound(bound), m_to(to), m_hasLog(ReplicaLog(connection, library).IsThere())
    {
    }

    /// The IDs of those rows of a table, as a statement that takes BoundValues().
    /// @p more is a condition on what the log, l, says of them.
    QString IDs(const TravellingTable& table, const QString& more = {}) const
    {
        QStringList changed;
        for (const QString& date : QString(table.Dates).split(u',')) {
            QString condition = u"r.%1 > ?1"_s.arg(date);
            if (m_hasLog && m_to.isEmpty()) // what came from there keeps the date that it got, until it is changed here
                condition += u" AND NOT EXISTS (SELECT 1 FROM %1 AS l WHERE l.Event = %2 AND l.OfTable = '%3' AND %4 "
                             "AND l.RowDate = r.%5)"_s.arg(Log(), Number(ReplicaEvent::TakenOver), table.Name,
                                                           IsOf(table), date);
            changed << u'(' + condition + u')';
        }
        const QString rows = Qualified(m_library, table.Name);
        QString ids = u"SELECT r.ID FROM %1 AS r WHERE %2"_s.arg(rows, changed.join(u" OR "_s));
        if (m_hasLog)
            ids += u" UNION SELECT r.ID FROM %1 AS l CROSS JOIN %2 AS r ON %3 WHERE %4 AND l.Moment "
                   "> ?1 AND l.Origin <> ?2%5"_s.arg(Log(), rows, IsOf(table), IsLogged(table), more);
        if (m_hasLog && !m_to.isEmpty() && table.Item.isEmpty()) // what waits for a decision is for nobody else
            ids += u" AND coalesce(r.LastChanged, -1) <> 0"_s;
        if (m_hasLog && !m_to.isEmpty() && !table.Item.isEmpty()) // an item that the child gets for the first time
            ids += u" UNION SELECT r.ID FROM %1 AS l CROSS JOIN %2 AS i ON i.ID = l.RecordID CROSS JOIN %3 AS r ON %4 "
                   "WHERE l.OfTable = 'Items' AND l.Origin = ?2 AND ((l.Event = %5 AND i.ID IN (%7)) OR "
                   "(l.Event = %6 AND coalesce(i.LastChanged, -1) <> 0))"_s.arg(
                       Log(), Qualified(m_library, u"Items"_s), rows, BelongsTo(table), Number(ReplicaEvent::Missing),
                       Number(ReplicaEvent::Withheld), IDs(Items));
        return ids;
    }
    /// Which of the files are new to the other side: all that came to be, or came here, since, and what the mother does
    /// not have any more. One that was only described otherwise is not.
    QString NewFiles() const
    {
        TravellingTable added = Files;
        added.Dates = "DateAdded"_L1;
        const QString again = m_to.isEmpty() ? u" OR coalesce(r.MotherRecordID, 0) <= 0"_s : QString();
        return IDs(added, u" AND (l.RowDate = r.DateAdded%1)"_s.arg(again));
    }
    /// Where no log is there is one parameter.
    Values BoundValues() const { return m_hasLog ? Values{m_bound, OriginOfOther()} : Values{m_bound}; }
    /// A condition on deletions in the log: the mother has no news of what she never had, nor a child of what it has
    /// deleted itself. Takes OriginOfOther().
    QString IsNewsToOther() const
    {
        return m_to.isEmpty() ? u"MotherRecordID > 0 AND Origin <> ?"_s : u"Origin <> ?"_s;
    }
    /// What comes from there need not go back. No origin is that of a mother: hers is known by another event.
    Value OriginOfOther() const { return m_to.isEmpty() ? ReplicaLog::FromMother() : m_to; }

    bool HasLog() const { return m_hasLog; }
    QString Log() const { return Qualified(m_library, u"ReplicaLog"_s); }
    Date Bound() const { return m_bound; }

private:
    static QString Number(ReplicaEvent event) { return QString::number(int(event)); }
    static QString IsOf(const TravellingTable& table)
    {
        return u"l.RecordID = r.%1 AND l.SecondID = %2"_s.arg(table.Record,
                                                              table.Second.isEmpty() ? u"0"_s : u"r."_s + table.Second);
    }
    /// A page arrives with its item. What was changed of the item here is no change of its page, which is noted alone.
    static QString IsLogged(const TravellingTable& table)
    {
        const QString both = u"l.OfTable = '%1' AND l.Event IN (%2, %3)"_s;
        const QString arrived = Number(ReplicaEvent::Arrived), changed = Number(ReplicaEvent::Changed);
        if (table.Name != Items.Name || table.Item.isEmpty())
            return both.arg(table.Name, arrived, changed);
        return u"(%1 OR %2)"_s.arg(both.arg(Items.Name, arrived, arrived), both.arg(u"Pages"_s, arrived, changed));
    }
    static QString BelongsTo(const TravellingTable& table)
    {
        const QString from = u"r.%1 = i.ID"_s.arg(table.Item);
        return table.Second.isEmpty() ? from : u"(%1 OR r.%2 = i.ID)"_s.arg(from, table.Second);
    }

    QString m_library;
    Date m_bound;
    QString m_to;
    bool m_hasLog;
};

/// A column that says what the mother calls the parent, owner or end that another one names. That may have become
/// known, or another, since the row was written.
struct MotherColumn {
    TravellingTable Of;
    QLatin1StringView Name;
    QLatin1StringView Local;
    int Unknown;

    /// Takes it anew for the rows in @p schema from the items in @p library.
    QString Update(const QString& schema, const QString& library) const
    {
        const QString anew = u"CASE WHEN coalesce(r.%1, 0) = 0 THEN 0 ELSE coalesce((SELECT %2 FROM %3 AS i "
                             "WHERE i.ID = r.%1), %4) END"_s.arg(Local, KnownOr(u"i.MotherRecordID"_s, Unknown),
                                                                 Qualified(library, u"Items"_s),
                                                                 QString::number(Unknown));
        return u"UPDATE %1 AS r SET %2 = %3 WHERE %2 IS NOT %3"_s.arg(Qualified(schema, Of.Name), Name, anew);
    }
};
constexpr MotherColumn MotherColumns[] = {{Items, "MotherParentID"_L1, "ParentID"_L1, -1},
                                          {Files, "MotherCodeID"_L1, "CodeID"_L1, 0},
                                          {Links, "MotherItemID"_L1, "ItemID"_L1, 0},
                                          {Links, "MotherLinkItemID"_L1, "LinkItemID"_L1, 0}};

/// One export.
class ChangeExport {
public:
    ChangeExport(const ExportPlace& place, bool intoXTables, Date bound, const QString& to, ExportCounts& counts,
                 Work& work)
        : m_place(place), m_connection(place.Connection), m_suffix(intoXTables ? u"X"_s : QString()),
          m_rows(place.Connection, place.Library, bound, to), m_counts(counts), m_work(work)
    {
    }

    void Run()
    {
        m_counts.Items = Copy(Items, u"Items"_s);
        CopyPages();
        if (m_suffix.isEmpty() && m_counts.Pages > 0)
            WriteItemNumbers(m_place);
        m_counts.Links = Copy(Links, u"ItemLinks"_s,
                              u" AND %1 AND %2"_s.arg(Exists(u"ItemID"_s), Exists(u"LinkItemID"_s)));
        m_counts.Files = Copy(Files, u"Files"_s);
        CopyContents();
        if (m_suffix.isEmpty()) {
            SetMotherIDs();
            CopyDeletions();
        }
    }

private:
    QString Target(const QString& table) const { return m_place.OfFile(table + m_suffix); }
    QString TargetReference(const QString& table) const { return Qualified(m_place.File, table + m_suffix); }
    QString Exists(const QString& column) const
    {
        return u"EXISTS (SELECT 1 FROM %1 AS i WHERE i.ID = r.%2)"_s.arg(Qualified(m_place.Library, u"Items"_s),
                                                                         column);
    }

    qint64 Copy(const TravellingTable& table, const QString& name, const QString& more = {})
    {
        return CopyRecords(m_connection, m_place.OfLibrary(name), Target(name),
                           u"r.ID IN (%1)%2"_s.arg(m_rows.IDs(table), more), m_rows.BoundValues());
    }

    /// With each page the mother's number of its item, which may not have changed otherwise and so not travel.
    void CopyPages()
    {
        CDBManipulate contents(m_work);
        contents.Use(m_connection);
        const QString table = Target(u"HTMLFiles"_s);
        QString ids = m_rows.IDs(Pages);
        contents.ImportAllHTMLFiles(m_place.HTMLFolder,
                                    {.Table = m_place.OfLibrary(u"Items"_s),
                                     .Where = u"HTMLPage <> 0 AND ID IN (%1)"_s.arg(ids),
                                     .WhereValues = m_rows.BoundValues()},
                                    table);
        m_counts.Pages = contents.ImportedPages().Count;
        m_counts.MissingPages = contents.MissingPages();
        const Field number{
            .Name = u"MotherRecordID"_s, .Type = FieldType::Long, .OrdinalPosition = 6, .DefaultValue = 0};
        if (!m_connection.GetTableDef(table).FindField(number.Name))
            m_connection.AppendField(table, number);
        const QString known = m_suffix.isEmpty() ? KnownOr(u"i.MotherRecordID"_s, 0) : u"i.ID"_s;
        m_connection.Execute(
            u"UPDATE %1 AS r SET MotherRecordID = coalesce((SELECT %2 FROM %3 AS i WHERE i.ID = r.ItemIDRef), 0)"_s.arg(
                TargetReference(u"HTMLFiles"_s), known, Qualified(m_place.Library, u"Items"_s)));
    }

    void CopyContents()
    {
        CDBManipulate contents(m_work);
        contents.Use(m_connection);
        contents.ImportAllItemFiles(m_place.FilesFolder, {.Table = Target(u"Files"_s),
                                                          .Where = u"ID IN (%1)"_s.arg(m_rows.NewFiles()),
                                                          .WhereValues = m_rows.BoundValues()});
        m_counts.Contents = contents.ImportedFiles().Count;
        m_counts.Missing = contents.MissingFiles();
    }

    void SetMotherIDs()
    {
        for (const MotherColumn& column : MotherColumns)
            m_connection.Execute(column.Update(m_place.File, m_place.Library));
        // The date with which a page was taken over is no change of it.
        if (m_rows.HasLog())
            m_connection.Execute(
                u"UPDATE %1 AS r SET HTMLLastUpdated = ?1 WHERE r.HTMLLastUpdated > ?1 AND EXISTS (SELECT 1 "
                "FROM %2 AS l WHERE l.Event = ?2 AND l.OfTable = 'Items' AND l.RecordID = r.ID "
                "AND l.RowDate = r.HTMLLastUpdated)"_s.arg(TargetReference(u"Items"_s), m_rows.Log()),
                {m_rows.Bound(), int(ReplicaEvent::TakenOver)});
        // The folder of orphaned items is each library's own.
        m_connection.Execute(
            u"UPDATE %1 SET MotherParentID = -2 WHERE ParentID IN (SELECT i.ID FROM %2 AS i WHERE i.ParentID = 0 "
            "AND i.Title = ? COLLATE BINARY)"_s.arg(TargetReference(u"Items"_s),
                                                    Qualified(m_place.Library, u"Items"_s)),
            {OrphanedItemsTitle});
        m_connection.Execute(u"UPDATE %1 SET MotherRecordID = -1 WHERE coalesce(MotherRecordID, 0) <= 0"_s.arg(
            TargetReference(u"Items"_s)));
        m_connection.Execute(u"UPDATE %1 SET MotherRecordID = 0 WHERE coalesce(MotherRecordID, 0) <= 0"_s.arg(
            TargetReference(u"Files"_s)));
    }

    /// By the mother's numbers: an item of hers may have the one that a deleted item had here. What she never had is no
    /// news to her.
    void CopyDeletions()
    {
        struct Deletions {
            QString Table, OfTable, Columns, Logged, IsLogged, Noted;
        };
        const QString item = u"l.MotherRecordID AS ItemID"_s, known = u"l.MotherRecordID > 0"_s;
        const Deletions all[] = {
            {u"DeletedItems"_s, u"Items"_s, u"ItemID"_s, item, known, {}}, // which has the numbers of this library
            {u"DeletedFiles"_s, u"Files"_s, u"ItemID"_s, item, known, u"r.ItemID > 0"_s},
            {u"DeletedItemLinks"_s, u"ItemLinks"_s, u"ItemID, LinkItemID"_s,
             item + u", l.MotherSecondID AS LinkItemID"_s, known + u" AND l.MotherSecondID > 0"_s,
             u"r.ItemID > 0 AND r.LinkItemID > 0"_s}};
        for (const Deletions& one : all) {
            QStringList sources;
            Values values;
            if (m_rows.HasLog()) {
                sources << u"SELECT %1, l.RowDate AS DateDeleted FROM %2 AS l WHERE l.Event = ? AND l.OfTable = ? "
                           "AND l.Moment > ? AND %3"_s.arg(one.Logged, m_rows.Log(), one.IsLogged);
                values = {int(ReplicaEvent::Deleted), one.OfTable, m_rows.Bound()};
            }
            if (!one.Noted.isEmpty())
                sources << u"SELECT %1, r.DateDeleted FROM %2 AS r WHERE %3"_s.arg(
                    one.Columns, Qualified(m_place.Library, one.Table), one.Noted);
            if (!sources.isEmpty())
                m_counts.Deleted += m_connection.Execute(
                    u"INSERT INTO %1 (%2, DateDeleted) SELECT %2, max(DateDeleted) FROM (%3) GROUP BY %2"_s.arg(
                        Qualified(m_place.File, one.Table), one.Columns, sources.join(u" UNION ALL "_s)),
                    values);
        }
    }

    const ExportPlace& m_place;
    Database& m_connection;
    QString m_suffix;
    ChangedRows m_rows;
    ExportCounts& m_counts;
    Work& m_work;
};

/// The moment from which on a child lacks the mother's changes; nothing when it is no child of hers, which is told.
std::optional<Date> BoundOfChild(const ExportPlace& place, const QString& identity)
{
    Database& connection = place.Connection;
    const QString children = Qualified(place.Library, u"ChildCopies"_s);
    const Value known = connection.QueryValue(
        u"SELECT coalesce(LastSynchronized, 0) FROM %1 WHERE DBCopyID = ?"_s.arg(children), {identity});
    const Date synchronized =
        connection.QueryValue(u"SELECT LastSynchronized FROM "_s + Qualified(place.File, u"Properties"_s)).ToDate();
    if (!known.IsNull() && known.ToDate() == synchronized)
        return synchronized;
    QString text = u"You are trying to synchronize from a replicated database, which is not a child of the current "
                   "database. Synchronization can not be performed."_s;
    if (!known.IsNull()) {
        connection.Execute(u"DELETE FROM %1 WHERE DBCopyID = ?"_s.arg(children), {identity});
        text = u"You are trying to synchronize from a replicated database which became independent and is no longer a "
               "child of the current database.\r\nThis database can not be synchronized as a child any more.\r\nThe "
               "child information will be automaticaly removed from the current database."_s;
    }
    Prompts::Current().MsgBox({.Text = text, .Caption = u"Synchronization faild"_s, .Icon = MsgBoxIcon::Exclamation});
    return std::nullopt;
}

QString IdentityIn(Database& connection, const QString& schema)
{
    return connection.QueryValue(u"SELECT DBID FROM "_s + Qualified(schema, u"Properties"_s)).ToText();
}

std::optional<Date> BoundOf(const ExportPlace& place, bool intoXTables)
{
    if (intoXTables)
        return BoundOfChild(place, IdentityIn(place.Connection, place.File));
    return place.Connection.QueryValue(u"SELECT LastSynchronized FROM "_s + Qualified(place.Library, u"Properties"_s))
        .ToDate();
}

qint64 CountRows(Database& database, const ChangedRows& rows, const TravellingTable& table)
{
    return database.QueryValue(u"SELECT count(*) FROM (%1)"_s.arg(rows.IDs(table)), rows.BoundValues()).ToLong();
}

ExportCounts CountOf(Database& database, const ChangedRows& rows)
{
    ExportCounts counts{.Items = CountRows(database, rows, Items),
                        .Files = CountRows(database, rows, Files),
                        .Pages = CountRows(database, rows, Pages),
                        .Links = CountRows(database, rows, Links)};
    if (rows.HasLog())
        counts.Deleted = database
                             .QueryValue(u"SELECT count(*) FROM %1 WHERE Event = ? AND Moment > ? AND %2"_s.arg(
                                             rows.Log(), rows.IsNewsToOther()),
                                         {int(ReplicaEvent::Deleted), rows.Bound(), rows.OriginOfOther()})
                             .ToLong();
    return counts;
}

} // namespace

QString ExportCounts::MissingText() const
{
    QStringList parts;
    for (const auto& [count, noun] : {std::pair(Missing, "new stored file"), std::pair(MissingPages, "web page")}) {
        if (count > 0)
            parts << u"%1 %2%3"_s.arg(count).arg(QLatin1StringView(noun), count == 1 ? u""_s : u"s"_s);
    }
    if (parts.isEmpty())
        return {};
    return u"%1 %2 missing in the library, and so in the export."_s.arg(
        parts.join(u" and "_s), Missing + MissingPages == 1 ? u"is"_s : u"are"_s);
}

qint64 CopyRecords(Database& connection, const QString& source, const QString& target, const QString& where,
                   const Values& values)
{
    const TableDef from = connection.GetTableDef(source);
    const TableDef to = connection.GetTableDef(target);
    QStringList columns;
    for (const Field& field : to.Fields) {
        if (!field.AutoIncrement && from.FindField(field.Name))
            columns << Quoted(field.Name);
    }
    const QString rows = columns.isEmpty() ? QString() : u"r."_s + columns.join(u", r."_s);
    return connection.Execute(u"INSERT INTO %1 (%2) SELECT %3 FROM %4 AS r%5"_s.arg(
                                  to.Reference(), columns.join(u", "_s), rows, from.Reference(),
                                  where.isEmpty() ? QString() : u" WHERE "_s + where),
                              values);
}

bool ExportChangedItems(const ExportPlace& place, bool intoXTables, Date exported, ExportCounts& counts, Work& work)
{
    std::optional<RuntimeError> cancelled; // which is no failure
    const bool isDone = Guarded(
        ModuleName, u"ExportChangedItems"_s,
        [&] {
            const std::optional<Date> bound = BoundOf(place, intoXTables);
            if (!bound || InvalidSystemDate(place.Connection, place.Library, *bound))
                return false;
            if (!intoXTables) {
                CopyRecords(place.Connection, place.OfLibrary(u"Properties"_s), place.OfFile(u"Properties"_s));
                place.Connection.Execute(
                    u"UPDATE %1 SET LastExported = ?"_s.arg(Qualified(place.File, u"Properties"_s)), {exported});
            }
            const QString to = intoXTables ? IdentityIn(place.Connection, place.File) : QString();
            try {
                ChangeExport(place, intoXTables, *bound, to, counts, work).Run();
            } catch (const RuntimeError& error) {
                if (!IsCancellation(error))
                    throw;
                cancelled = error;
            }
            return !cancelled;
        },
        false);
    if (cancelled)
        throw *cancelled;
    return isDone;
}

void RefreshMotherIDs(Database& child)
{
    const Date bound = child.QueryValue(u"SELECT LastSynchronized FROM Properties"_s).ToDate();
    const ChangedRows rows(child, MainSchema, bound, {});
    for (const MotherColumn& column : MotherColumns)
        child.Execute(column.Update(MainSchema, MainSchema) + u" AND r.ID IN (%1)"_s.arg(rows.IDs(column.Of)),
                      rows.BoundValues());
}

ExportCounts CountChanges(Database& child)
{
    const Date bound = child.QueryValue(u"SELECT LastSynchronized FROM Properties"_s).ToDate();
    return CountOf(child, ChangedRows(child, MainSchema, bound, {}));
}

ExportCounts CountChangesFor(Database& mother, const QString& child)
{
    const Date bound =
        mother.QueryValue(u"SELECT LastSynchronized FROM ChildCopies WHERE DBCopyID = ?"_s, {child}).ToDate();
    return CountOf(mother, ChangedRows(mother, MainSchema, bound, child));
}

} // namespace qb
