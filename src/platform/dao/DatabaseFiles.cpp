// The files of a Database: the one that it was opened with, and those that are attached to it.

#include "platform/dao/DBEngine.h"
#include "platform/dao/JournalCheck.h"
#include "platform/dao/OpeningChecks.h"
#include "platform/dao/StatementLimit.h"

#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QUrl>
#include <QtEndian>
#include <array>
#include <sqlite3.h>
#include <sys/stat.h>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

/// The form in which the engine takes how a file is to be opened. It never makes one.
QString FileAddress(const QString& absolutePath, DatabaseAccess access)
{
    return u"file:"_s + QString::fromLatin1(QUrl::toPercentEncoding(absolutePath, "/"_ba))
           + (access == DatabaseAccess::ReadOnly ? u"?mode=ro"_s : u"?mode=rw"_s);
}

bool IsSameFile(const QString& a, const QString& b)
{
    const QString path = QFileInfo(a).canonicalFilePath();
    return !path.isEmpty() && path == QFileInfo(b).canonicalFilePath();
}

} // namespace

Database::TablePlace Database::Place(const QString& table) const
{
    const qsizetype dot = table.indexOf(u'.');
    const QString schema = table.left(std::max<qsizetype>(dot, 0)).toLower();
    if (schema == MainSchema || schema == TemporarySchema || m_attached.contains(schema))
        return {schema, table.mid(dot + 1)};
    return {MainSchema, table};
}

QString Database::NameOf(const QString& schema) const
{
    return schema == MainSchema ? m_name : m_attached.value(schema.toLower());
}

bool Database::IsReadOnly(const QString& schema) const
{
    return sqlite3_db_readonly(m_connection, schema.toUtf8().constData()) != 0;
}

FileStamp Database::Stamp()
{
    constexpr sqlite3_int64 CommitsInHeader = 24; // the number of pages stands behind it
    struct stat state {};
    ::stat(QFile::encodeName(m_name).constData(), &state);
    std::array<uchar, 8> counts{};
    // While a statement reads, nobody is in the middle of a commit. A file that is opened beside the engine would take
    // its locks away when it is closed, so the engine's own one is read.
    Statement reading = Query(u"SELECT 1 FROM sqlite_schema LIMIT 1"_s);
    reading.Step();
    sqlite3_file* file = nullptr;
    sqlite3_file_control(m_connection, "main", SQLITE_FCNTL_FILE_POINTER, &file);
    const int code = file && file->pMethods
                         ? file->pMethods->xRead(file, counts.data(), int(counts.size()), CommitsInHeader)
                         : SQLITE_CANTOPEN;
    if (code != SQLITE_OK)
        Raise(code, u"Database::Stamp"_s);
    constexpr qint64 Nanoseconds = 1'000'000'000;
    return {.Commits = qFromBigEndian<quint32>(counts.data()),
            .Pages = qFromBigEndian<quint32>(counts.data() + 4),
            .Inode = state.st_ino,
            .Modified = qint64(state.st_mtim.tv_sec) * Nanoseconds + state.st_mtim.tv_nsec};
}

void Database::RefuseToAttach(const QString& path, const QString& schema) const
{
    const QString procedure = u"Database::Attach"_s;
    static const QRegularExpression name(u"^[a-z][a-z0-9_]*$"_s);
    if (!name.match(schema).hasMatch() || schema == MainSchema || schema == TemporarySchema
        || m_attached.contains(schema))
        throw RuntimeError(ErrorNumber::InvalidCall, u"'%1' can't be the name of an attached file."_s.arg(schema),
                           procedure);
    if (InTransaction())
        throw RuntimeError(ErrorNumber::InvalidCall, u"No file is attached or detached inside a transaction."_s,
                           procedure);
    const QStringList files = QStringList(m_name) + m_attached.values();
    for (const QString& open : files) {
        if (IsSameFile(open, path)) // it would wait for itself
            throw RuntimeError(ErrorNumber::InUse, u"'%1' is in use; nothing was changed."_s.arg(path), procedure);
    }
}

void Database::Attach(const QString& path, const QString& schema, DatabaseAccess access)
{
    RefuseToAttach(path, schema);
    RefuseWhatIsNoDatabase(path);
    if (access == DatabaseAccess::ReadWrite)
        RefuseUnwritable(path);
    try {
        AttachAndLook(path, schema, access);
    } catch (const RuntimeError& error) {
        if (access != DatabaseAccess::ReadOnly || error.Number() != ErrorNumber::ReadOnly)
            throw;
        // A write was cut off in the middle. To undo it, the file has to be written once.
        DBEngine::OpenDatabase(path, DatabaseAccess::ReadWrite);
        AttachAndLook(path, schema, access);
    }
}

void Database::AttachAndLook(const QString& path, const QString& schema, DatabaseAccess access)
{
    const StatementLimit limit(*this, OpeningTime);
    RefuseForeignJournal(path);
    const QString absolute = QFileInfo(path).absoluteFilePath();
    m_blamed = absolute;
    try {
        Execute(u"ATTACH DATABASE ? AS ?"_s, {FileAddress(absolute, access), schema});
        m_attached.insert(schema, absolute);
        ApplyFilePragmas(*this, schema);
        QueryValue(u"SELECT 1 FROM %1.sqlite_schema LIMIT 1"_s.arg(Quoted(schema)));
        RefuseWhatCantBeUsed(*this, schema, access);
    } catch (const RuntimeError&) {
        m_blamed.clear();
        if (m_attached.contains(schema))
            Detach(schema);
        throw;
    }
    m_blamed.clear();
}

void Database::Detach(const QString& schema)
{
    if (!m_attached.contains(schema))
        throw RuntimeError(ErrorNumber::ItemNotFound, u"There is no attached file '%1'."_s.arg(schema),
                           u"Database::Detach"_s);
    if (InTransaction())
        throw RuntimeError(ErrorNumber::InvalidCall, u"No file is attached or detached inside a transaction."_s,
                           u"Database::Detach"_s);
    DropIdleStatements();
    m_tableDefs.clear();
    Execute(u"DETACH DATABASE ?"_s, {schema});
    m_attached.remove(schema);
}

AttachedFile::AttachedFile(Database& database, const QString& path, const QString& schema, DatabaseAccess access)
    : m_database(&database), m_schema(schema)
{
    database.Attach(path, schema, access);
}

AttachedFile::~AttachedFile()
{
    try {
        m_database->Detach(m_schema);
    } catch (const RuntimeError&) {
        // What still uses it keeps it until the database is closed.
    }
}

} // namespace qb
