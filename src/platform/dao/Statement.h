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
    /// @p sql is one statement; an error is raised when it is not understood. Parameters are Null until they are bound.
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

    // Columns count from 0. They can be read while Step() has said that there is a row.
    int ColumnCount() const; ///< known before the first row
    /// The value as it is stored, and the same as a whole number (0 for Null and for text that does not begin with
    /// one) or as text (empty for Null). A column of dates gives moments also where the file holds them otherwise.
    Value Column(int column) const;
    qint64 Long(int column) const;
    QString Text(int column) const;
    bool IsNull(int column) const;
    /// The text as it lies in the file, in UTF-8, until the next row; empty for Null.
    QByteArrayView RawText(int column) const;

private:
    bool IsDate(int column) const;

    Database* m_database;
    QString m_sql;
    sqlite3_stmt* m_statement = nullptr;
    std::vector<QByteArray> m_bound; ///< texts and bytes that the statement refers to
};

} // namespace qb
