#pragma once

#include "platform/dao/FileStamp.h"
#include "platform/dao/Recordset.h"
#include "platform/dao/Schema.h"
#include "platform/dao/Statement.h"
#include "platform/system/RuntimeError.h"

#include <QHash>
#include <memory>

struct sqlite3;
struct sqlite3_context;
struct sqlite3_stmt;
struct sqlite3_value;

namespace qb {

class StatementLimit;

enum class DatabaseAccess {
    ReadWrite, ///< raises 3051 when the file or its folder can't be written to, or is of a newer version
    ReadOnly,
};

/// One open database file, and others that are attached to it: statements, recordsets, table definitions and
/// transactions, which cover all of the files. Everything that fails raises RuntimeError. Not for use from
/// several threads.
///
/// A table is named as in a statement: `synchro.Items` is that of the file attached as `synchro`, `temp.Found`
/// one that goes with the connection, `Items` that of the main file.
class Database {
public:
    virtual ~Database();
    Database(const Database&) = delete;
    Database& operator=(const Database&) = delete;

    /// The full path of the file.
    const QString& Name() const { return m_name; }
    /// The full path of the file of a schema; empty when there is none.
    QString NameOf(const QString& schema) const;
    bool IsReadOnly(const QString& schema = MainSchema) const;
    /// The main file is of a format whose dates are the readings of a clock (see DateForm.h); statements convert them.
    bool HasWallDates() const { return m_hasWallDates; }
    /// A moment as the main file holds it, to be compared with a column of dates.
    Value StoredDate(Date date) const { return m_hasWallDates ? Value(date.WallSeconds()) : Value(date); }
    /// Asks the file's header whether it has them: the format may have been changed, here or by others.
    void LookAtDateForm();
    /// What the main file is like at the last commit. What is read later is of that state or a later one.
    FileStamp Stamp();

    /// Opens a second file on this connection, under the name @p schema: a word of small letters. It is held
    /// to what OpenDatabase holds a file to, and raises the same errors; 3045 when it is open here already, 5
    /// inside a transaction. A commit counts for all files or for none, whatever happens in the middle.
    void Attach(const QString& path, const QString& schema, DatabaseAccess access = DatabaseAccess::ReadWrite);
    /// Raises 5 inside a transaction, 3000 while a statement still reads the file.
    void Detach(const QString& schema);

    /// Runs one statement that yields no rows; returns the number of rows it changed.
    qint64 Execute(const QString& sql, const Values& values = {});
    /// Starts a statement that yields rows.
    Statement Query(const QString& sql, const Values& values = {});
    /// The first column of the first row, or Null when there is no row.
    Value QueryValue(const QString& sql, const Values& values = {});

    using Function = void (*)(sqlite3_context* context, int count, sqlite3_value** values);
    /// Gives the statements of this connection, and nothing in the file's schema, a function that gives the same for
    /// the same @p arguments.
    void DefineFunction(const char* name, int arguments, Function function);

    /// Opens rows of one table for reading and editing; @p where and @p orderBy are parts of a
    /// statement, with @p values for the parameters of @p where.
    Recordset OpenRecordset(const QString& table, const QString& where = {}, const Values& values = {},
                            const QString& orderBy = {});

    // Table definitions. The tables that keep them are not listed, nor those named "own_...", which the program has
    // for itself.
    QStringList TableNames(const QString& schema = MainSchema);
    bool TableExists(const QString& table);
    /// Raises 3265 for a table that the schema does not list.
    const TableDef& GetTableDef(const QString& table);
    /// Raises 3010 when the table exists in its schema.
    void AppendTableDef(const TableDef& table);
    /// Raises 3265 when there is no such table, 3201 when another table refers to it.
    void DeleteTableDef(const QString& table);
    /// Adds a column without reading the rows. Raises 3191 when the column exists. The range of its type is held
    /// by recordsets, the limits of a text by the file.
    void AppendField(const QString& table, const Field& field);
    void DeleteField(const QString& table, const QString& field);
    /// Raises 3284 when the index exists.
    void AppendIndex(const QString& table, const Index& index);
    void DeleteIndex(const QString& table, const QString& index);
    /// Makes an index that is no part of the table's definition: it only makes statements quicker.
    void AppendOwnIndex(const QString& table, const Index& index);
    QStringList OwnIndexNames(const QString& table);
    /// Relations are of the main file.
    std::vector<Relation> Relations();
    /// Raises 3012 when a relation of that name exists, 3201 when another table refers to the
    /// foreign table, which is remade. The foreign table's rows must fit.
    void AppendRelation(const Relation& relation);

    // Transactions. They nest: an inner one that is rolled back leaves the outer one running.
    void BeginTrans();
    void CommitTrans();
    void Rollback();
    bool InTransaction() const;
    /// The engine has rolled the running transaction back by itself, as it does on a full disk; all
    /// that is left to do with it is Rollback.
    bool TransactionLost() const;

    /// The key of the row that was last added over this connection, to whichever table; 0 before the first one. To be
    /// asked right after the insert.
    qint64 LastInsertedRowKey() const;

protected:
    /// For what is a database with more to it; @p other is of no use any more. It has no recordset or statement.
    Database(Database&& other) noexcept;

private:
    friend class Blob;
    friend class DBEngine;
    friend class Statement;
    friend class StatementLimit;

    struct TablePlace {
        QString Schema;
        QString Table;
    };

    Database(sqlite3* connection, QString name);

    TablePlace Place(const QString& table) const;
    void RefuseToAttach(const QString& path, const QString& schema) const;
    void AttachAndLook(const QString& path, const QString& schema, DatabaseAccess access);
    void DropIdleStatements();
    /// Raises an error when the engine has rolled the running transaction back by itself.
    void RequireTransaction() const;
    bool HasCommittedAllTheSame() const;
    RuntimeError MakeError(int code, const QString& action) const;
    [[noreturn]] void Raise(int code, const QString& action) const;
    sqlite3_stmt* TakeStatement(const QString& sql);
    void GiveBackStatement(const QString& sql, sqlite3_stmt* statement);
    std::shared_ptr<const TableDef> SharedTableDef(const QString& table);
    void RebuildTable(const QString& table);

    sqlite3* m_connection;
    QString m_name;
    int m_transactionDepth = 0;
    bool m_hasWallDates = false;
    QHash<QString, sqlite3_stmt*> m_idleStatements;
    QHash<QString, std::shared_ptr<const TableDef>> m_tableDefs; ///< by lower-case name with its schema
    QHash<QString, QString> m_attached;                          ///< full paths by schema
    StatementLimit* m_limit = nullptr;                           ///< the innermost
    QString m_blamed;                                            ///< the file that errors are about; empty: any of them
};

/// A file that is attached for as long as the object lives; it must outlive all that reads or writes it, the
/// transaction too.
class AttachedFile {
public:
    /// As Database::Attach, with its errors; after one of them nothing is attached. A file that is still being read
    /// when the object goes stays attached until the database is closed.
    AttachedFile(Database& database, const QString& path, const QString& schema,
                 DatabaseAccess access = DatabaseAccess::ReadWrite);
    ~AttachedFile();
    AttachedFile(const AttachedFile&) = delete;
    AttachedFile& operator=(const AttachedFile&) = delete;

private:
    Database* m_database;
    QString m_schema;
};

/// A transaction that is rolled back on every way out but Commit.
class Transaction {
public:
    /// Begins it, inside the running one if there is one. The outermost takes the write lock here, and raises an error
    /// when it can't.
    explicit Transaction(Database& database) : m_database(&database) { m_database->BeginTrans(); }
    ~Transaction();
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;

    /// On failure the exception leaves the transaction to be rolled back by the destructor.
    void Commit();

private:
    Database* m_database;
};

} // namespace qb
