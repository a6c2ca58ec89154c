#include "store/RowObject.h"

#include "platform/dao/Blob.h"
#include "store/Library.h"
#include "support/ErrorRoutine.h"

namespace qb {

using namespace Qt::StringLiterals;

RowObject::RowObject(const QString& module, const QString& table, std::span<const RowColumn> columns)
    : m_module(module), m_table(table), m_columns(columns), m_cells(columns.size())
{
}

void RowObject::InitialiseProperties()
{
    m_state = RecordState::Clean;
    m_attributesLoaded = m_readFailed = false;
    m_key.clear();
    for (size_t i = 0; i < m_cells.size(); ++i)
        m_cells[i] = {AsHeld({}, m_columns[i].Holds), AsHeld({}, m_columns[i].Holds)};
}

void RowObject::Initialise(Library& library, const QString& key)
{
    Guarded(m_module, u"IDataObject_Initialise"_s, [&] {
        InitialiseProperties();
        m_library = &library;
        m_key = key;
        m_state = key.isEmpty() ? RecordState::New : RecordState::Clean;
        if (key.isEmpty())
            RowBegun();
    });
}

bool RowObject::Commit()
{
    return Guarded(
        m_module, u"IDataObject_Commit"_s,
        [this] {
            switch (m_state) {
            case RecordState::New:
                return InsertObject();
            case RecordState::MarkedForDelete:
                return DeleteObject();
            default:
                return UpdateObject();
            }
        },
        false);
}

void RowObject::SetStateForLet()
{
    m_state = StateForLet(m_state, StateModule() + u"::SetStateForLet"_s);
}

Value RowObject::AsHeld(const Value& value, RowColumn::Kind kind)
{
    switch (kind) {
    case RowColumn::Text:
    case RowColumn::Memo:
        return value.ToText();
    case RowColumn::Number:
        return value.ToLong();
    case RowColumn::Boolean:
        return value.ToBoolean();
    }
    return value;
}

RowObject::Row RowObject::ReadRow(const std::function<bool(size_t)>& leftOut) const
{
    const TableDef& table = m_library->GetTableDef(m_table);
    QStringList names;
    for (size_t i = 0; i < m_columns.size(); ++i) {
        const QString name = QString::fromLatin1(m_columns[i].Name);
        const bool isThere = table.FindField(name);
        if (!isThere && !m_columns[i].Optional)
            throw RuntimeError(ErrorNumber::ItemNotFound, u"The table '%1' has no column '%2'."_s.arg(m_table, name),
                               m_module);
        names << (isThere && !leftOut(i) ? Quoted(name) : u"NULL"_s);
    }
    Statement found = m_library->Query(u"SELECT %1 FROM %2 WHERE ID = ?"_s.arg(names.join(u", "_s), Quoted(m_table)),
                                       {RowKey()});
    if (!found.Step())
        return {};
    Row row(m_columns.size());
    for (size_t i = 0; i < row.size(); ++i) {
        if (names[qsizetype(i)] != u"NULL"_s)
            row[i] = AsHeld(found.Column(int(i)), m_columns[i].Holds);
    }
    return row;
}

void RowObject::GetAttributes()
{
    ReadAttributes(false);
}

void RowObject::ReadWhole()
{
    ReadAttributes(true);
}

void RowObject::ReadAttributes(bool whole)
{
    if (m_attributesLoaded || !m_library || (m_state != RecordState::Clean && m_state != RecordState::Edited))
        return;
    m_attributesLoaded = true; // at once, so that what is told of the row can't start it again
    m_readFailed = !Guarded(m_module, u"GetAttributes"_s, [this, whole] {
        const auto waits = [this, whole](size_t column) {
            return !whole && m_columns[column].Holds == RowColumn::Memo;
        };
        const Row row = ReadRow(waits);
        for (size_t i = 0; i < row.size(); ++i) {
            if (row[i])
                m_cells[i] = {*row[i], *row[i]};
            m_cells[i].Waits = waits(i);
        }
        RowRead(!row.empty());
    });
}

const Value& RowObject::Loaded(size_t column)
{
    GetAttributes();
    if (m_cells[column].Waits)
        ReadMemo(column);
    return m_cells[column].Own;
}

void RowObject::ReadMemo(size_t column)
{
    m_cells[column].Waits = false;
    const bool read = Guarded(m_module, u"GetAttributes"_s, [this, column] {
        const Row row = ReadRow([column](size_t other) { return other != column; });
        if (!row.empty() && row[column])
            m_cells[column] = {*row[column], *row[column]};
    });
    m_readFailed = m_readFailed || !read;
}

bool RowObject::HasText(size_t column)
{
    GetAttributes();
    if (!m_cells[column].Waits)
        return !m_cells[column].Own.ToText().isEmpty();
    const QString name = QString::fromLatin1(m_columns[column].Name);
    const TableDef& table = m_library->GetTableDef(m_table);
    if (!table.FindField(name)
        || m_library
               ->QueryValue(u"SELECT %1 IS NULL FROM %2 WHERE ID = ?"_s.arg(Quoted(name), Quoted(m_table)), {RowKey()})
               .ToBoolean())
        return false;
    return Blob(*m_library, table, name, RowKey()).Size() > 0;
}

void RowObject::RequireRead() const
{
    if (m_readFailed)
        throw RuntimeError(
            ErrorNumber::NoCurrentRecord,
            u"The row %1 of '%2' could not be read, so it is not written either; nothing was changed."_s.arg(m_key,
                                                                                                             m_table),
            m_module);
}

std::vector<RowObject::ForeignChange> RowObject::ForeignChanges() const
{
    const Row row = ReadRow([this](size_t column) { return m_cells[column].Waits; });
    if (row.empty())
        throw RuntimeError(ErrorNumber::RecordDeleted, u"The record has been deleted, perhaps by another program."_s,
                           m_module);
    std::vector<ForeignChange> changes;
    for (size_t i = 0; i < row.size(); ++i) {
        const Cell& cell = m_cells[i];
        if (row[i] && !(*row[i] == cell.Read))
            changes.push_back({i, *row[i], IsChanged(i) && !(*row[i] == cell.Own)});
    }
    return changes;
}

void RowObject::TakeTheirs(const ForeignChange& change)
{
    m_cells[change.Column] = {change.Theirs, change.Theirs, false};
}

void RowObject::WriteChanged(Recordset& row) const
{
    const TableDef& table = m_library->GetTableDef(m_table);
    for (size_t i = 0; i < m_cells.size(); ++i) {
        const QString name = QString::fromLatin1(m_columns[i].Name);
        const bool isThere = !m_columns[i].Optional || table.FindField(name);
        if (IsChanged(i) && isThere && !m_columns[i].Fixed)
            row.Set(name, m_cells[i].Own);
    }
}

void RowObject::SetUnchanged()
{
    m_state = RecordState::Clean;
    m_attributesLoaded = true;
}

void RowObject::RowWritten()
{
    SetUnchanged();
    for (Cell& cell : m_cells)
        cell.Read = cell.Own;
}

void RowObject::RowInserted(qint64 key)
{
    m_key = QString::number(key);
    m_state = RecordState::Clean;
}

} // namespace qb
