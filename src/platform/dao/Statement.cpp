#include "platform/dao/Statement.h"

#include "platform/dao/Database.h"

#include <sqlite3.h>
#include <utility>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

int BindValue(sqlite3_stmt* statement, int index, const Value& value, std::vector<QByteArray>& keep)
{
    if (value.IsNull())
        return sqlite3_bind_null(statement, index);
    if (const auto* number = std::get_if<qint64>(&value.Content()))
        return sqlite3_bind_int64(statement, index, *number);
    if (const auto* number = std::get_if<double>(&value.Content()))
        return sqlite3_bind_double(statement, index, *number);
    const QByteArray& bytes = keep.emplace_back(value.ToBytes());
    const auto size = sqlite3_uint64(bytes.size());
    // An empty QByteArray still has a data pointer, so that an empty text is not bound as Null.
    if (std::holds_alternative<QByteArray>(value.Content()))
        return sqlite3_bind_blob64(statement, index, bytes.constData(), size, SQLITE_STATIC);
    return sqlite3_bind_text64(statement, index, bytes.constData(), size, SQLITE_STATIC, SQLITE_UTF8);
}

} // namespace

Statement::Statement(Database& database, const QString& sql)
    : m_database(&database), m_sql(sql), m_statement(database.TakeStatement(sql))
{
}

Statement::~Statement()
{
    if (m_statement)
        m_database->GiveBackStatement(m_sql, m_statement);
}

Statement::Statement(Statement&& other) noexcept
    : m_database(other.m_database), m_sql(std::move(other.m_sql)),
      m_statement(std::exchange(other.m_statement, nullptr)), m_bound(std::move(other.m_bound))
{
}

void Statement::Bind(const Values& values)
{
    Reset();
    if (sqlite3_bind_parameter_count(m_statement) != int(values.size()))
        throw RuntimeError(ErrorNumber::Engine, u"Wrong number of parameters for: "_s + m_sql, u"Statement::Bind"_s);
    m_bound.clear();
    m_bound.reserve(values.size());
    for (int i = 0; i < int(values.size()); ++i) {
        const int code = BindValue(m_statement, i + 1, values[size_t(i)], m_bound);
        if (code != SQLITE_OK)
            m_database->Raise(code, u"Statement::Bind"_s);
    }
}

bool Statement::Step()
{
    m_database->RequireTransaction();
    const int code = sqlite3_step(m_statement);
    if (code == SQLITE_ROW)
        return true;
    if (code == SQLITE_DONE) {
        sqlite3_reset(m_statement);
        return false;
    }
    const RuntimeError error = m_database->MakeError(code, u"Statement::Step"_s);
    sqlite3_reset(m_statement);
    throw error;
}

void Statement::Reset()
{
    sqlite3_reset(m_statement);
}

int Statement::ColumnCount() const
{
    return sqlite3_column_count(m_statement);
}

Value Statement::Column(int column) const
{
    switch (sqlite3_column_type(m_statement, column)) {
    case SQLITE_NULL:
        return {};
    case SQLITE_INTEGER:
        return Value(Long(column));
    case SQLITE_FLOAT:
        return Value(sqlite3_column_double(m_statement, column));
    case SQLITE_BLOB:
        return Value(QByteArray(static_cast<const char*>(sqlite3_column_blob(m_statement, column)),
                                sqlite3_column_bytes(m_statement, column)));
    default:
        return Value(Text(column));
    }
}

qint64 Statement::Long(int column) const
{
    const qint64 number = sqlite3_column_int64(m_statement, column);
    return m_database->HasWallDates() && IsDate(column) ? Date::FromWallSeconds(number).Seconds() : number;
}

/// Whether it is a column of dates as the file has it, and not computed.
bool Statement::IsDate(int column) const
{
    return qstrcmp(sqlite3_column_decltype(m_statement, column), "DATETIME") == 0;
}

QString Statement::Text(int column) const
{
    const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(m_statement, column));
    return QString::fromUtf8(text, sqlite3_column_bytes(m_statement, column));
}

QByteArrayView Statement::RawText(int column) const
{
    const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(m_statement, column));
    return {text, text ? qsizetype(sqlite3_column_bytes(m_statement, column)) : 0};
}

bool Statement::IsNull(int column) const
{
    return sqlite3_column_type(m_statement, column) == SQLITE_NULL;
}

} // namespace qb
