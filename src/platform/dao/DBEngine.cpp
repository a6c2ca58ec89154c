#include "platform/dao/DBEngine.h"

#include "platform/dao/Catalog.h"
#include "platform/dao/EngineError.h"
#include "platform/dao/JournalCheck.h"
#include "platform/system/FileReplace.h"
#include "platform/system/Paths.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <sqlite3.h>
#include <utility>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

constexpr int BusyTimeoutMilliseconds = 5000;
/// What a schema or a statement may ask for: more than this program's own ever do, and far less than an
/// attack needs.
constexpr std::pair<int, int> Limits[] = {
    {SQLITE_LIMIT_SQL_LENGTH, 1'000'000}, {SQLITE_LIMIT_COLUMN, 200},       {SQLITE_LIMIT_EXPR_DEPTH, 100},
    {SQLITE_LIMIT_COMPOUND_SELECT, 50},   {SQLITE_LIMIT_VDBE_OP, 100'000},  {SQLITE_LIMIT_FUNCTION_ARG, 16},
    {SQLITE_LIMIT_ATTACHED, 2},           {SQLITE_LIMIT_TRIGGER_DEPTH, 10},
};
constexpr QByteArrayView FileMagic{"SQLite format 3\0", 16};

QString Shown(const QString& path)
{
    return QDir::toNativeSeparators(path);
}

/// Says before the engine does, and more clearly, what is wrong with a file.
void RefuseWhatIsNoDatabase(const QString& path)
{
    const QString procedure = u"DBEngine::OpenDatabase"_s;
    const QFileInfo info(path);
    if (!info.exists())
        throw RuntimeError(ErrorNumber::FileNotFound, u"The file '%1' was not found."_s.arg(Shown(path)), procedure);
    if (info.isDir())
        throw RuntimeError(ErrorNumber::NotADatabase, u"'%1' is a folder, not a database."_s.arg(Shown(path)),
                           procedure);
    if (info.size() == 0)
        throw RuntimeError(ErrorNumber::NotADatabase, u"'%1' is empty, not a database."_s.arg(Shown(path)), procedure);
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        throw RuntimeError(ErrorNumber::CannotOpen, u"'%1' can't be opened: %2."_s.arg(Shown(path), file.errorString()),
                           procedure);
    if (file.read(FileMagic.size()) != FileMagic)
        throw RuntimeError(ErrorNumber::NotADatabase, u"'%1' is not a database of this program."_s.arg(Shown(path)),
                           procedure);
}

} // namespace

std::unique_ptr<Database> DBEngine::Connect(const QString& path, int flags)
{
    RefuseForeignJournal(path);
    sqlite3* connection = nullptr;
    const QString absolute = QFileInfo(path).absoluteFilePath();
    const int code = sqlite3_open_v2(absolute.toUtf8().constData(), &connection, flags, nullptr);
    std::unique_ptr<Database> database(new Database(connection, absolute));
    if (code != SQLITE_OK)
        database->Raise(code, u"DBEngine::OpenDatabase"_s);
    sqlite3_extended_result_codes(connection, 1);
    sqlite3_busy_timeout(connection, BusyTimeoutMilliseconds);
    // Libraries come from other people: nothing in a file's schema is to be trusted with more
    // than holding data.
    sqlite3_db_config(connection, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
    sqlite3_db_config(connection, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
    sqlite3_db_config(connection, SQLITE_DBCONFIG_ENABLE_TRIGGER, 0, nullptr);
    sqlite3_db_config(connection, SQLITE_DBCONFIG_ENABLE_VIEW, 0, nullptr);
    for (const auto& [limit, value] : Limits)
        sqlite3_limit(connection, limit, value);
    // A misspelt column is an error, not a text.
    sqlite3_db_config(connection, SQLITE_DBCONFIG_DQS_DDL, 0, nullptr);
    sqlite3_db_config(connection, SQLITE_DBCONFIG_DQS_DML, 0, nullptr);
    database->Execute(u"PRAGMA cell_size_check = ON"_s); // damage is found where it is read
    database->Execute(u"PRAGMA foreign_keys = ON"_s);
    // With FULL the removal of the journal is not on the disk when a commit returns: a power cut within
    // seconds finds the journal again and undoes the commit.
    database->Execute(u"PRAGMA synchronous = EXTRA"_s);
    database->Execute(u"PRAGMA cache_size = -8000"_s); // kB
    return database;
}

std::unique_ptr<Database> DBEngine::CreateDatabase(const QString& path)
{
    const QString procedure = u"DBEngine::CreateDatabase"_s;
    if (QFileInfo::exists(path))
        throw RuntimeError(ErrorNumber::DatabaseExists, u"The file '%1' exists already."_s.arg(Shown(path)), procedure);
    if (const QString reason = WhyNotWritable(path); !reason.isEmpty())
        throw RuntimeError(ErrorNumber::PathAccess, u"The database '%1' can't be made. %2"_s.arg(Shown(path), reason),
                           procedure);
    try {
        std::unique_ptr<Database> database = Connect(path, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE);
        database->Execute(u"PRAGMA application_id = %1"_s.arg(ApplicationId));
        database->Execute(u"PRAGMA user_version = %1"_s.arg(FormatVersion));
        Transaction transaction(*database);
        Catalog::Create(*database);
        transaction.Commit();
        return database;
    } catch (const RuntimeError& error) {
        QFile::remove(path);
        QFile::remove(path + u"-journal"_s);
        if (error.Number() == ErrorNumber::CannotOpen)
            throw RuntimeError(ErrorNumber::PathAccess, error.Description(), procedure);
        throw;
    }
}

/// Reading the schema brings damage to light, and an unfinished transaction to its end.
std::unique_ptr<Database> DBEngine::ConnectAndLook(const QString& path, Access access)
{
    std::unique_ptr<Database> database = Connect(path, access == Access::ReadWrite ? SQLITE_OPEN_READWRITE
                                                                                   : SQLITE_OPEN_READONLY);
    database->QueryValue(u"SELECT count(*) FROM sqlite_schema"_s);
    return database;
}

std::unique_ptr<Database> DBEngine::OpenDatabase(const QString& path, Access access)
{
    RefuseWhatIsNoDatabase(path);
    if (access == Access::ReadWrite) {
        if (const QString reason = WhyNotWritable(path); !reason.isEmpty())
            throw RuntimeError(ErrorNumber::CannotOpen, u"'%1' can't be changed. %2"_s.arg(Shown(path), reason),
                               u"DBEngine::OpenDatabase"_s);
    }
    std::unique_ptr<Database> database;
    try {
        database = ConnectAndLook(path, access);
    } catch (const RuntimeError& error) {
        if (access != Access::ReadOnly || error.Number() != ErrorNumber::ReadOnly)
            throw;
        // A write was cut off in the middle. To undo it, the file has to be written once.
        OpenDatabase(path, Access::ReadWrite);
        database = ConnectAndLook(path, access);
    }
    if (access == Access::ReadWrite && database->IsReadOnly())
        throw RuntimeError(ErrorNumber::CannotOpen, u"'%1' is read-only."_s.arg(Shown(path)),
                           u"DBEngine::OpenDatabase"_s);
    const qint64 version = database->QueryValue(u"PRAGMA user_version"_s).ToLong();
    if (access == Access::ReadWrite && version > FormatVersion)
        throw RuntimeError(
            ErrorNumber::CannotOpen,
            u"'%1' was made by a newer version of the program (format %2, this one knows %3); it can be opened for "
            "reading only."_s.arg(Shown(path))
                .arg(version)
                .arg(FormatVersion),
            u"DBEngine::OpenDatabase"_s);
    const qint64 expected = database->QueryValue(u"PRAGMA page_count"_s).ToLong()
                            * database->QueryValue(u"PRAGMA page_size"_s).ToLong();
    if (QFileInfo(path).size() < expected)
        throw RuntimeError(ErrorNumber::Corrupt, u"'%1' is damaged or incomplete."_s.arg(Shown(path)),
                           u"DBEngine::OpenDatabase"_s);
    // A file that another tool has switched to a write-ahead log could not lie on a share.
    if (access == Access::ReadWrite && database->QueryValue(u"PRAGMA journal_mode"_s).ToText() == u"wal"_s)
        database->QueryValue(u"PRAGMA journal_mode = DELETE"_s);
    return database;
}

void DBEngine::CompactDatabase(const QString& source, const QString& target)
{
    const QString procedure = u"DBEngine::CompactDatabase"_s;
    if (QFileInfo::exists(target))
        throw RuntimeError(ErrorNumber::DatabaseExists, u"The file '%1' exists already."_s.arg(Shown(target)),
                           procedure);
    if (const QString reason = WhyNotWritable(target); !reason.isEmpty())
        throw RuntimeError(ErrorNumber::PathAccess, u"'%1' can't be made. %2"_s.arg(Shown(target), reason), procedure);
    const QString interim = InterimName(target);
    QFile::remove(interim);
    try {
        const std::unique_ptr<Database> database = OpenDatabase(source);
        if (const QString reason = ReplaceContents(interim, {}, QFile::permissions(source)); !reason.isEmpty())
            throw RuntimeError(ErrorNumber::PathAccess, u"'%1' can't be made: %2."_s.arg(Shown(target), reason),
                               procedure);
        // In this mode the lock that the transaction takes is kept until the connection closes.
        database->QueryValue(u"PRAGMA locking_mode = EXCLUSIVE"_s);
        database->Execute(u"BEGIN EXCLUSIVE"_s);
        database->Execute(u"COMMIT"_s);
        database->Execute(u"VACUUM INTO ?"_s, {interim});
        MoveIntoPlace(interim, target, false);
    } catch (const RuntimeError&) {
        QFile::remove(interim);
        throw;
    }
}

} // namespace qb
