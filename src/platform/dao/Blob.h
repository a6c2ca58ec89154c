#pragma once

#include "platform/dao/Schema.h"

struct sqlite3_blob;

namespace qb {

class Database;

/// A stored LongBinary or Memo value (as UTF-8), read and written piece by piece, without the rest of its row
/// and never whole in memory. Its row is being read for as long as the object lives, which keeps other
/// programs from writing: not to be held longer than the work on it takes. A change of the row by a statement
/// ends it: later calls raise 3000. All errors are RuntimeErrors.
class Blob {
public:
    enum class Access { Read, Write };

    /// Raises 3000 when there is no such row or its value is Null.
    Blob(Database& database, const TableDef& table, const QString& field, qint64 rowKey, Access access = Access::Read);
    ~Blob();
    Blob(const Blob&) = delete;
    Blob& operator=(const Blob&) = delete;

    /// Gives a value @p size bytes of zeros, to be written piece by piece. Raises 3167 when the row is gone.
    static void MakeRoom(Database& database, const TableDef& table, const QString& field, qint64 rowKey, qint64 size);

    qint64 Size() const; ///< in bytes, of a text as UTF-8; reads nothing and raises nothing
    /// The bytes from @p offset on, fewer than @p length at the end and none beyond it.
    QByteArray Read(qint64 offset, qint64 length) const;
    /// Writes over bytes that are there, in the transaction that must be running; the size stays.
    void Write(qint64 offset, const QByteArray& bytes);

private:
    Database* m_database;
    sqlite3_blob* m_blob = nullptr;
};

} // namespace qb
