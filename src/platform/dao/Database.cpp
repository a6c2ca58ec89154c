#include "platform/dao/Database.h"

#include "platform/dao/DateForm.h"
#include "platform/dao/EngineError.h"

#include <sqlite3.h>
#include <utility>

namespace qb {

using namespace Qt::StringLiterals;

namespace {
constexpr qsizetype MaxIdleStatements = 64;

QString SavepointName(int depth)
{
    return u"nested%1"_s.arg(depth);
}
} // namespace

Database::Database(sqlite3* connection, QString name) : m_connection(connection), m_name(std::move(name)) {}

Database::Database(Database&& other) noexcept
    : m_connection(std::exchange(other.m_connection, nullptr)), m_name(std::move(other.m_name)),
      m_transactionDepth(other.m_transactionDepth), m_hasWallDates(other.m_hasWallDates),
      m_idleStatements(std::exchange(other.m_idleStatements, {})), m_tableDefs(std::exchange(other.m_tableDefs, {})),
      m_attached(std::exchange(other.m_attached, {}))
{
}

Database::~Database()
{
    DropIdleStatements();
    sqlite3_close_v2(m_connection);
}

RuntimeError Database::MakeError(int code, const QString& action) const
{
    // The engine doesn't tell which of its files an error is about.
    const QStringList files = QStringList(m_name) + m_attached.values();
    return EngineError(m_connection, code, m_blamed.isEmpty() ? files.join(u"' or '"_s) : m_blamed, action);
}

void Database::Raise(int code, const QString& action) const
{
    throw MakeError(code, action);
}

// Statements go back to a small store when they are done, so that the same text is compiled
// once; a text in use twice at a time is compiled twice.
sqlite3_stmt* Database::TakeStatement(const QString& sql)
{
    if (sqlite3_stmt* idle = m_idleStatements.take(sql))
        return idle;
    sqlite3_stmt* statement = nullptr;
    const QByteArray text = sql.toUtf8();
    const int code = sqlite3_prepare_v3(m_connection, text.constData(), int(text.size()), SQLITE_PREPARE_PERSISTENT,
                                        &statement, nullptr);
    if (code != SQLITE_OK)
        Raise(code, u"Database::Query"_s);
    return statement;
}

void Database::GiveBackStatement(const QString& sql, sqlite3_stmt* statement)
{
    sqlite3_reset(statement);
    sqlite3_clear_bindings(statement);
    if (m_idleStatements.contains(sql)) {
        sqlite3_finalize(statement);
        return;
    }
    // Texts that are used once must not keep those out that are used for every row. Those come back soon, so that it
    // does not matter much which one goes.
    if (m_idleStatements.size() >= MaxIdleStatements) {
        const auto any = std::next(m_idleStatements.begin(), qptrdiff(qHash(sql) % size_t(m_idleStatements.size())));
        sqlite3_finalize(any.value());
        m_idleStatements.erase(any);
    }
    m_idleStatements.insert(sql, statement);
}

void Database::DropIdleStatements()
{
    for (sqlite3_stmt* statement : std::as_const(m_idleStatements))
        sqlite3_finalize(statement);
    m_idleStatements.clear();
}

Statement Database::Query(const QString& sql, const Values& values)
{
    RequireTransaction();
    Statement statement(*this, sql);
    statement.Bind(values);
    return statement;
}

/// A full disk makes the engine roll the whole transaction back; what follows in it must not be
/// written on its own.
void Database::RequireTransaction() const
{
    if (TransactionLost())
        throw RuntimeError(ErrorNumber::Engine, u"The transaction has been rolled back."_s, u"Database"_s);
}

qint64 Database::Execute(const QString& sql, const Values& values)
{
    Statement statement = Query(sql, values);
    while (statement.Step()) {}
    return sqlite3_changes64(m_connection);
}

Value Database::QueryValue(const QString& sql, const Values& values)
{
    Statement statement = Query(sql, values);
    return statement.Step() ? statement.Column(0) : Value();
}

void Database::DefineFunction(const char* name, int arguments, Function function)
{
    const int code = sqlite3_create_function_v2(m_connection, name, arguments,
                                                SQLITE_UTF8 | SQLITE_DETERMINISTIC | SQLITE_DIRECTONLY, nullptr,
                                                function, nullptr, nullptr, nullptr);
    if (code != SQLITE_OK)
        Raise(code, u"Database::DefineFunction"_s);
}

void Database::LookAtDateForm()
{
    m_hasWallDates = QueryValue(u"PRAGMA main.user_version"_s).ToLong() < DateForm::FirstFormat;
}

Recordset Database::OpenRecordset(const QString& table, const QString& where, const Values& values,
                                  const QString& orderBy)
{
    return Recordset(*this, SharedTableDef(table), where, values, orderBy);
}

bool Database::InTransaction() const
{
    return m_transactionDepth > 0;
}

bool Database::TransactionLost() const
{
    return m_transactionDepth > 0 && sqlite3_get_autocommit(m_connection);
}

void Database::BeginTrans()
{
    // The write lock is taken at once, so that a transaction never fails half-way for a lock.
    Execute(m_transactionDepth == 0 ? u"BEGIN IMMEDIATE"_s : u"SAVEPOINT "_s + SavepointName(m_transactionDepth));
    ++m_transactionDepth;
}

void Database::CommitTrans()
{
    if (m_transactionDepth == 0)
        throw RuntimeError(ErrorNumber::Engine, u"There is no transaction to commit."_s, u"Database::CommitTrans"_s);
    try {
        Execute(m_transactionDepth == 1 ? u"COMMIT"_s : u"RELEASE "_s + SavepointName(m_transactionDepth - 1));
    } catch (const RuntimeError&) {
        if (m_transactionDepth > 1 || !HasCommittedAllTheSame())
            throw;
    }
    --m_transactionDepth;
}

/// What failed came after the commit: the journal is gone, and only its folder could not be flushed, or the
/// file not be unlocked. To call it a failure would have its files taken back from rows that count.
bool Database::HasCommittedAllTheSame() const
{
    const int code = sqlite3_extended_errcode(m_connection);
    return (code == SQLITE_IOERR_DIR_FSYNC || code == SQLITE_IOERR_UNLOCK) && sqlite3_get_autocommit(m_connection);
}

void Database::Rollback()
{
    if (m_transactionDepth == 0)
        throw RuntimeError(ErrorNumber::Engine, u"There is no transaction to roll back."_s, u"Database::Rollback"_s);
    --m_transactionDepth;
    m_tableDefs.clear();
    if (sqlite3_get_autocommit(m_connection))
        return; // the engine has rolled back by itself, as it does on a full disk
    if (m_transactionDepth == 0) {
        Execute(u"ROLLBACK"_s);
    } else {
        Execute(u"ROLLBACK TO "_s + SavepointName(m_transactionDepth));
        Execute(u"RELEASE "_s + SavepointName(m_transactionDepth));
    }
}

qint64 Database::LastInsertedRowKey() const
{
    return sqlite3_last_insert_rowid(m_connection);
}

Transaction::~Transaction()
{
    if (!m_database)
        return;
    try {
        m_database->Rollback();
    } catch (const RuntimeError&) {
        // The engine rolls an unfinished transaction back when the file is next opened.
    }
}

void Transaction::Commit()
{
    m_database->CommitTrans();
    m_database = nullptr;
}

} // namespace qb
