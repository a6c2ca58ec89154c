#include "platform/dao/Recordset.h"

#include "platform/dao/Blob.h"
#include "platform/dao/Database.h"

#include <algorithm>
#include <limits>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

/// Keys are 32-bit numbers for all that refers to them.
constexpr qint64 LastKey = std::numeric_limits<qint32>::max();

bool IsLongColumn(const Field& field)
{
    return field.Type == FieldType::Memo || field.Type == FieldType::LongBinary;
}

RuntimeError NoCurrentRecord()
{
    return {ErrorNumber::NoCurrentRecord, u"There is no current record."_s, u"Recordset"_s};
}

RuntimeError RecordDeleted()
{
    return {ErrorNumber::RecordDeleted, u"The record has been deleted, perhaps by another program."_s, u"Recordset"_s};
}

} // namespace

Recordset::Recordset(Database& database, std::shared_ptr<const TableDef> table, const QString& where,
                     const Values& values, const QString& orderBy)
    : m_database(&database), m_table(std::move(table)), m_where(where), m_values(values), m_orderBy(orderBy)
{
    Statement keys = m_database->Query(Selection({}), m_values);
    while (keys.Step())
        m_keys.push_back(keys.Long(0));
    m_position = m_keys.empty() ? -1 : 0;
}

/// The statement that yields the keys of the recordset, narrowed by @p more.
QString Recordset::Selection(const QString& more) const
{
    QString sql = u"SELECT rowid FROM "_s + m_table->Reference();
    QStringList conditions;
    for (const QString& condition : {m_where, more}) {
        if (!condition.isEmpty())
            conditions << u'(' + condition + u')';
    }
    if (!conditions.isEmpty())
        sql += u" WHERE "_s + conditions.join(u" AND "_s);
    return sql + u" ORDER BY "_s + (m_orderBy.isEmpty() ? u"rowid"_s : m_orderBy);
}

void Recordset::MoveTo(qint64 position)
{
    m_position = position;
    m_row.clear();
    m_reading.reset();
    CancelUpdate();
}

void Recordset::MoveFirst()
{
    if (IsEmpty())
        throw NoCurrentRecord();
    MoveTo(0);
}

void Recordset::MoveLast()
{
    if (IsEmpty())
        throw NoCurrentRecord();
    MoveTo(RecordCount() - 1);
}

void Recordset::MoveNext()
{
    if (AtEnd())
        throw NoCurrentRecord();
    MoveTo(m_position + 1);
}

void Recordset::MovePrevious()
{
    if (AtBegin())
        throw NoCurrentRecord();
    MoveTo(m_position - 1);
}

void Recordset::FindFirst(const QString& where, const Values& values)
{
    Values all = m_values;
    all.insert(all.end(), values.begin(), values.end());
    Statement found = m_database->Query(Selection(where), all);
    qint64 position = -1;
    while (position < 0 && found.Step())
        position = PositionOf(found.Long(0)); // a row that was added since is not of this recordset
    m_noMatch = position < 0;
    if (!m_noMatch)
        MoveTo(position);
}

qint64 Recordset::PositionOf(Mark key) const
{
    if (m_positions.isEmpty()) {
        m_positions.reserve(qsizetype(m_keys.size()));
        for (size_t i = 0; i < m_keys.size(); ++i)
            m_positions.insert(m_keys[i], qint64(i));
    }
    return m_positions.value(key, -1);
}

Recordset::Mark Recordset::CurrentKey() const
{
    if (AtBegin() || AtEnd())
        throw NoCurrentRecord();
    return m_keys[size_t(m_position)];
}

Recordset::Mark Recordset::Bookmark() const
{
    return CurrentKey();
}

void Recordset::SetBookmark(Mark mark)
{
    const qint64 position = PositionOf(mark);
    if (position < 0)
        throw NoCurrentRecord();
    MoveTo(position);
}

size_t Recordset::FieldIndex(const QString& name) const
{
    const Field* field = m_table->FindField(name);
    if (!field)
        throw RuntimeError(ErrorNumber::ItemNotFound, u"The table '%1' has no column '%2'."_s.arg(m_table->Name, name),
                           u"Recordset"_s);
    return size_t(field - m_table->Fields.data());
}

Value Recordset::operator[](const QString& name) const
{
    const size_t index = FieldIndex(name);
    if (const auto pending = m_pending.find(index); pending != m_pending.end())
        return pending->second;
    const Field& field = m_table->Fields[index];
    if (m_mode == Mode::Add)
        return field.DefaultValue;
    FetchRow();
    if (!m_row[index])
        m_row[index] = FetchField(field);
    return *m_row[index];
}

/// Reads the short columns of the current row.
void Recordset::FetchRow() const
{
    const Mark key = CurrentKey();
    if (!m_row.empty())
        return;
    QStringList columns;
    for (const Field& field : m_table->Fields) {
        if (!IsLongColumn(field))
            columns << Quoted(field.Name);
    }
    Statement row = m_database->Query(u"SELECT %1 FROM %2 WHERE rowid = ?"_s.arg(
                                          columns.isEmpty() ? u"rowid"_s : columns.join(u", "_s), m_table->Reference()),
                                      {key});
    if (!row.Step())
        throw RecordDeleted();
    m_row.resize(m_table->Fields.size());
    int column = 0;
    for (size_t i = 0; i < m_row.size(); ++i) {
        if (!IsLongColumn(m_table->Fields[i]))
            m_row[i] = row.Column(column++);
    }
}

Value Recordset::FetchField(const Field& field) const
{
    Statement row = m_database->Query(
        u"SELECT %1 FROM %2 WHERE rowid = ?"_s.arg(Quoted(field.Name), m_table->Reference()), {CurrentKey()});
    if (!row.Step())
        throw RecordDeleted();
    return row.Column(0);
}

void Recordset::AddNew()
{
    m_pending.clear();
    m_mode = Mode::Add;
}

void Recordset::Edit()
{
    const Mark key = CurrentKey();
    m_row.clear(); // what is edited is the row as it stands now
    if (m_database->QueryValue(u"SELECT 1 FROM %1 WHERE rowid = ?"_s.arg(m_table->Reference()), {key}).IsNull())
        throw RecordDeleted();
    m_pending.clear();
    m_mode = Mode::Edit;
}

void Recordset::Set(const QString& field, const Value& value)
{
    if (m_mode == Mode::Browse)
        throw RuntimeError(ErrorNumber::NoCurrentRecord, u"The record is not being edited."_s, u"Recordset::Set"_s);
    m_pending[FieldIndex(field)] = value;
}

void Recordset::AppendChunk(const QString& field, const Value& chunk)
{
    const auto pending = m_pending.find(FieldIndex(field));
    if (pending == m_pending.end() || pending->second.IsNull())
        return Set(field, chunk);
    pending->second.Append(chunk);
}

QByteArray Recordset::GetChunk(const QString& field, qint64 offset, qint64 length) const
{
    const QString& column = m_table->Fields[FieldIndex(field)].Name;
    const Mark key = CurrentKey();
    if (m_reading && m_readingField == column) {
        try {
            return ReadOn(offset, length);
        } catch (const RuntimeError&) {
            // The row was changed since: it is read anew.
        }
    }
    m_reading.reset();
    const Value isNull = m_database->QueryValue(
        u"SELECT %1 IS NULL FROM %2 WHERE rowid = ?"_s.arg(Quoted(column), m_table->Reference()), {key});
    if (isNull.IsNull())
        throw RecordDeleted();
    if (isNull.ToLong() != 0)
        return {};
    m_reading = std::make_shared<Blob>(*m_database, *m_table, column, key);
    m_readingField = column;
    return ReadOn(offset, length);
}

/// Nothing of the row is held longer than it is read.
QByteArray Recordset::ReadOn(qint64 offset, qint64 length) const
{
    const QByteArray chunk = m_reading->Read(offset, length);
    if (offset + length >= m_reading->Size())
        m_reading.reset();
    return chunk;
}

void Recordset::Update()
{
    if (m_mode == Mode::Browse)
        throw RuntimeError(ErrorNumber::NoCurrentRecord, u"The record is not being edited."_s, u"Recordset::Update"_s);
    if (m_mode == Mode::Add)
        Insert();
    else
        Write();
    m_row.clear();
    m_reading.reset();
    CancelUpdate();
}

/// The value as its column has it: bytes that make up a text are one, and a Boolean is never Null.
Value Recordset::AsStored(const Field& field, const Value& value)
{
    if (field.Type == FieldType::Boolean && value.IsNull())
        return false;
    // The file checks the range of columns only that its table was made with.
    if (!field.IsInRange(value))
        throw RuntimeError(ErrorNumber::Overflow,
                           u"The value of '%1' is out of range; nothing was changed."_s.arg(field.Name),
                           u"Recordset::Update"_s);
    const bool isText = field.Type == FieldType::Text || field.Type == FieldType::Memo;
    return isText && std::holds_alternative<QByteArray>(value.Content()) ? Value(value.ToText()) : value;
}

/// The engine calls it a full disk.
void Recordset::RefuseWithoutKeysLeft() const
{
    const bool numbers = std::any_of(m_table->Fields.begin(), m_table->Fields.end(),
                                     [](const Field& field) { return field.AutoIncrement; });
    if (!numbers)
        return;
    const Value last = m_database->QueryValue(
        u"SELECT seq FROM %1 WHERE name = ?"_s.arg(Qualified(m_table->Schema, u"sqlite_sequence"_s)), {m_table->Name});
    if (last.ToLong() >= LastKey)
        throw RuntimeError(
            ErrorNumber::Overflow,
            u"The table '%1' has no numbers left for new rows (%2 is the last one): the library can take no more of "
            "them."_s.arg(m_table->Name)
                .arg(LastKey),
            u"Recordset::Update"_s);
}

void Recordset::Insert()
{
    QStringList columns;
    Values values;
    for (const auto& [index, value] : m_pending) {
        columns << Quoted(m_table->Fields[index].Name);
        values.push_back(AsStored(m_table->Fields[index], value));
    }
    const QString marks = QStringList(columns.size(), u"?"_s).join(u", "_s);
    RefuseWithoutKeysLeft();
    m_database->Execute(columns.isEmpty() ? u"INSERT INTO %1 DEFAULT VALUES"_s.arg(m_table->Reference())
                                          : u"INSERT INTO %1 (%2) VALUES (%3)"_s.arg(m_table->Reference(),
                                                                                     columns.join(u", "_s), marks),
                        values);
    m_lastModified = m_database->LastInsertedRowKey();
    const bool wasAtEnd = m_position >= RecordCount();
    m_keys.push_back(m_lastModified);
    if (!m_positions.isEmpty())
        m_positions.insert(m_lastModified, RecordCount() - 1);
    if (wasAtEnd)
        m_position = RecordCount();
}

void Recordset::Write()
{
    if (m_pending.empty())
        return;
    QStringList columns;
    Values values;
    for (const auto& [index, value] : m_pending) {
        columns << Quoted(m_table->Fields[index].Name) + u" = ?"_s;
        values.push_back(AsStored(m_table->Fields[index], value));
    }
    const Mark key = CurrentKey();
    values.emplace_back(key);
    const qint64 changed = m_database->Execute(
        u"UPDATE %1 SET %2 WHERE rowid = ?"_s.arg(m_table->Reference(), columns.join(u", "_s)), values);
    if (changed == 0)
        throw RecordDeleted();
    m_lastModified = key;
}

void Recordset::CancelUpdate()
{
    m_pending.clear();
    m_mode = Mode::Browse;
}

void Recordset::Delete()
{
    const Mark key = CurrentKey();
    if (m_database->Execute(u"DELETE FROM %1 WHERE rowid = ?"_s.arg(m_table->Reference()), {key}) == 0)
        throw RecordDeleted();
    m_keys.erase(m_keys.begin() + m_position);
    m_positions.clear();
    MoveTo(m_keys.empty() ? -1 : m_position);
}

} // namespace qb
