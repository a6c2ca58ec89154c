#include "platform/dao/Blob.h"

#include "platform/dao/Database.h"

#include <sqlite3.h>

namespace qb {

using namespace Qt::StringLiterals;

Blob::Blob(Database& database, const TableDef& table, const QString& field, qint64 rowKey, Access access)
    : m_database(&database)
{
    const QByteArray schema = (table.Schema.isEmpty() ? MainSchema : table.Schema).toUtf8();
    const int code = sqlite3_blob_open(database.m_connection, schema.constData(), table.Name.toUtf8().constData(),
                                       field.toUtf8().constData(), rowKey, access == Access::Write, &m_blob);
    if (code != SQLITE_OK) {
        const RuntimeError error = database.MakeError(code, u"Blob"_s);
        sqlite3_blob_close(m_blob);
        throw error;
    }
}

Blob::~Blob()
{
    sqlite3_blob_close(m_blob);
}

void Blob::MakeRoom(Database& database, const TableDef& table, const QString& field, qint64 rowKey, qint64 size)
{
    const QString sql = u"UPDATE %1 SET %2 = zeroblob(?) WHERE rowid = ?"_s.arg(table.Reference(), Quoted(field));
    if (database.Execute(sql, {size, rowKey}) == 0)
        throw RuntimeError(ErrorNumber::RecordDeleted, u"The record has been deleted, perhaps by another program."_s,
                           u"Blob::MakeRoom"_s);
}

qint64 Blob::Size() const
{
    return sqlite3_blob_bytes(m_blob);
}

QByteArray Blob::Read(qint64 offset, qint64 length) const
{
    QByteArray bytes(qsizetype(qBound(qint64(0), Size() - offset, length)), Qt::Uninitialized);
    const int code = bytes.isEmpty() ? SQLITE_OK
                                     : sqlite3_blob_read(m_blob, bytes.data(), int(bytes.size()), int(offset));
    if (code != SQLITE_OK)
        m_database->Raise(code, u"Blob::Read"_s);
    return bytes;
}

void Blob::Write(qint64 offset, const QByteArray& bytes)
{
    m_database->RequireTransaction();
    if (!m_database->InTransaction())
        throw RuntimeError(ErrorNumber::Engine, u"A value is written piece by piece inside a transaction only."_s,
                           u"Blob::Write"_s);
    if (offset < 0 || offset + bytes.size() > Size())
        throw RuntimeError(ErrorNumber::InvalidCall, u"There is no room for these bytes."_s, u"Blob::Write"_s);
    const int code = sqlite3_blob_write(m_blob, bytes.constData(), int(bytes.size()), int(offset));
    if (code != SQLITE_OK)
        m_database->Raise(code, u"Blob::Write"_s);
}

} // namespace qb
