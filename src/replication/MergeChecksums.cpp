#include "replication/MergeChecksums.h"

#include "store/Library.h"

namespace qb {

using namespace Qt::StringLiterals;

namespace {

const QString ItemsTable = u"Items"_s;

QString StampOf(const QString& table)
{
    return table == ItemsTable ? u"LastChanged"_s : u"LastUpdated"_s;
}

QStringList TextsOf(const QString& table)
{
    return table == ItemsTable
               ? QStringList{u"Title"_s, u"Description"_s, u"Info"_s, u"Code"_s, u"Example"_s, u"Notes"_s}
               : QStringList{u"Description"_s};
}

} // namespace

void MergeChecksums::Hold(const QString& table, const QString& ids, const Values& values)
{
    Statement rows = m_library.Query(
        u"SELECT ID, coalesce(%1, 0) FROM main.%2 WHERE ID IN (%3)"_s.arg(StampOf(table), table, ids), values);
    while (rows.Step()) {
        if (m_rows[table].contains(rows.Long(0)))
            continue;
        const std::optional<NotedChecksums> noted = ReadChecksums(m_library, table, rows.Long(0));
        if (noted && noted->IsWhole && noted->Stamp == rows.Long(1))
            m_rows[table][rows.Long(0)].Known = noted->Sums;
    }
}

void MergeChecksums::Wrote(const QString& table, const QString& ids, const QString& column)
{
    Statement rows = m_library.Query(ids);
    while (rows.Step())
        m_rows[table][rows.Long(0)].Written << (column.isEmpty() ? TextsOf(table) : QStringList{column});
}

void MergeChecksums::WroteFile(qint64 id, quint32 sum)
{
    m_rows[u"Files"_s][id].Known[FileContentsName] = sum;
}

void MergeChecksums::Note()
{
    if (!HasChecksumTable(m_library))
        return;
    for (auto table = m_rows.cbegin(); table != m_rows.cend(); ++table) {
        for (auto row = table->cbegin(); row != table->cend(); ++row)
            NoteRow(table.key(), row.key(), *row);
    }
}

void MergeChecksums::NoteRow(const QString& table, qint64 id, const Row& row)
{
    QString columns = u"coalesce(%1, 0)"_s.arg(StampOf(table));
    for (const QString& column : row.Written)
        columns += u", CAST(%1 AS BLOB)"_s.arg(column);
    Statement now = m_library.Query(u"SELECT %1 FROM main.%2 WHERE ID = ?"_s.arg(columns, table), {id});
    if (!now.Step()) // it has gone since
        return;
    Checksums sums = row.Known;
    for (qsizetype i = 0; i < row.Written.size(); ++i)
        sums[row.Written[i]] = ChecksumOfBytes(now.Column(int(i) + 1).ToBytes());
    WriteChecksums(m_library, table, id, now.Long(0), sums);
}

} // namespace qb
