#include "store/ReplicaLog.h"

#include "platform/dao/Database.h"
#include "store/Library.h"
#include "store/LibrarySchema.h"

#include <algorithm>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

const QString TableName = u"ReplicaLog"_s;

QString InSchema(const QString& schema, const QString& table)
{
    return schema.isEmpty() ? table : schema + u'.' + table;
}

} // namespace

ReplicaLog::ReplicaLog(Database& database, const QString& schema)
    : m_database(&database), m_schema(schema), m_table(Qualified(schema, TableName))
{
}

bool ReplicaLog::IsThere()
{
    return m_database->TableExists(InSchema(m_schema, TableName));
}

void ReplicaLog::Make()
{
    if (IsThere())
        return;
    TableDef table = LibrarySchema::ReplicaLog();
    table.Schema = m_schema;
    m_database->AppendTableDef(table);
}

void ReplicaLog::Note(const ReplicaLogEntry& entry)
{
    if (!IsThere())
        return;
    m_database->Execute(u"INSERT OR REPLACE INTO %1 (OfTable, RecordID, SecondID, MotherRecordID, MotherSecondID, "
                        "Event, Moment, RowDate, Origin) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?)"_s.arg(m_table),
                        {entry.Table, entry.Record, entry.Second, entry.MotherRecord, entry.MotherSecond,
                         int(entry.Event), entry.Moment, entry.RowDate, entry.Origin});
}

std::vector<ReplicaLogEntry> ReplicaLog::Entries()
{
    std::vector<ReplicaLogEntry> entries;
    if (!IsThere())
        return entries;
    Statement rows = m_database->Query(
        u"SELECT Event, OfTable, RecordID, SecondID, MotherRecordID, MotherSecondID, Moment, RowDate, Origin FROM %1 "
        "ORDER BY Moment, rowid"_s.arg(m_table));
    while (rows.Step())
        entries.push_back({.Event = ReplicaEvent(rows.Long(0)),
                           .Table = rows.Text(1),
                           .Record = rows.Long(2),
                           .Second = rows.Long(3),
                           .MotherRecord = rows.Long(4),
                           .MotherSecond = rows.Long(5),
                           .Moment = rows.Column(6).ToDate(),
                           .RowDate = rows.Column(7).ToDate(),
                           .Origin = rows.Text(8)});
    return entries;
}

bool ReplicaLog::Has(ReplicaEvent event, const QString& table, qint64 record)
{
    return IsThere()
           && !m_database
                   ->QueryValue(
                       u"SELECT 1 FROM %1 WHERE OfTable = ? AND RecordID = ? AND Event = ? LIMIT 1"_s.arg(m_table),
                       {table, record, int(event)})
                   .IsNull();
}

void ReplicaLog::MoveOn(Date exported, Date moment)
{
    if (IsThere())
        m_database->Execute(u"UPDATE %1 SET Moment = ? WHERE Event = ? AND Moment > ? AND Moment < ?"_s.arg(m_table),
                            {moment, int(ReplicaEvent::Deleted), exported, moment});
}

void ReplicaLog::Trim()
{
    if (!IsThere())
        return;
    const ReplicaState state = ReadReplicaState(*m_database, m_schema);
    if (!state.IsChild && !state.IsMother)
        return Clear();
    const Value children = m_database->QueryValue(
        u"SELECT min(coalesce(LastSynchronized, 0)) FROM %1"_s.arg(Qualified(m_schema, u"ChildCopies"_s)));
    Date passed = state.IsChild ? state.LastSynchronized : children.ToDate();
    if (state.IsMother)
        passed = std::min(passed, children.ToDate());
    m_database->Execute(u"DELETE FROM %1 WHERE max(Moment, RowDate) < ? AND Event NOT IN (?, ?)"_s.arg(m_table),
                        {passed, int(ReplicaEvent::Missing), int(ReplicaEvent::Withheld)});
}

void ReplicaLog::Clear()
{
    if (IsThere())
        m_database->Execute(u"DELETE FROM "_s + m_table);
}

} // namespace qb
