#pragma once

#include "platform/dao/Value.h"

#include <vector>

struct sqlite3_stmt;

namespace qb {

class Database;

/// A prepared statement: bind its parameters, step through its rows, read its columns. It
/// must not outlive its database. All errors are RuntimeErrors.
class Statement {
public:
    Statement(Database& database, const QString& sql);
    ~Statement();
    Statement(Statement&& other) noexcept;
    Statement& operator=(Statement&&) = delete;
    Statement(const Statement&) = delete;
    Statement& operator=(const Statement&) = delete;

    /// Binds all parameters in order; the statement starts anew.
    void Bind(const Values& values);
    /// Goes to the next row; false when there is none left, which ends the statement's read
    /// of the database.
    bool Step();
    /// Ends the read, so that the statement can be bound and stepped again.
    void Reset();

    int ColumnCount() const;
    Value Column(int column) const;
    qint64 Long(int column) const;
    QString Text(int column) const;
    bool IsNull(int column) const;

private:
    Database* m_database;
    QString m_sql;
    sqlite3_stmt* m_statement = nullptr;
    std::vector<QByteArray> m_bound; ///< texts and bytes that the statement refers to
};

} // namespace qb
