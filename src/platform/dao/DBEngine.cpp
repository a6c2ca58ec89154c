#include "platform/dao/DBEngine.h"

#include "platform/dao/Catalog.h"
#include "platform/dao/EngineError.h"
#include "platform/dao/JournalCheck.h"
#include "platform/dao/OpeningChecks.h"
#include "platform/dao/StatementLimit.h"
#include "platform/system/FileReplace.h"
#include "platform/system/Interims.h"
#include "platform/system/Paths.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <functional>
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

QString Shown(const QString& path)
{
    return QDir::toNativeSeparators(path);
}

/// Tells a work several times a second how much of @p source is in the copy, and asks it whether to go on.
std::function<bool()> Watch(Work& work, const QString& source, const QString& copy)
{
    QElapsedTimer told;
    told.start();
    return [&work, total = QFileInfo(source).size(), copy, told]() mutable {
        constexpr qint64 Interval = 50; // milliseconds
        if (told.elapsed() < Interval)
            return false;
        told.restart();
        work.Advance(qMin(QFileInfo(copy).size(), total), total);
        return work.IsCancelled();
    };
}

} // namespace

std::unique_ptr<Database> DBEngine::Connect(const QString& path, int flags)
{
    RefuseForeignJournal(path);
    sqlite3* connection = nullptr;
    const QString absolute = QFileInfo(path).absoluteFilePath();
    // Files that are attached say by an address how they are to be opened; this one is a path from the root.
    const int code = sqlite3_open_v2(absolute.toUtf8().constData(), &connection, flags | SQLITE_OPEN_URI, nullptr);
    std::unique_ptr<Database> database(new Database(connection, absolute));
    if (code != SQLITE_OK)
        database->Raise(code, u"DBEngine::OpenDatabase"_s);
    sqlite3_extended_result_codes(connection, 1);
    sqlite3_busy_timeout(connection, BusyTimeoutMilliseconds);
    const StatementLimit limit(*database, OpeningTime);
    // Libraries come from other people: nothing in a file's schema is to be trusted with more
    // than holding data.
    sqlite3_db_config(connection, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
    sqlite3_db_config(connection, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
    sqlite3_db_config(connection, SQLITE_DBCONFIG_ENABLE_TRIGGER, 0, nullptr);
    sqlite3_db_config(connection, SQLITE_DBCONFIG_ENABLE_VIEW, 0, nullptr);
    for (const auto& [kind, value] : Limits)
        sqlite3_limit(connection, kind, value);
    // A misspelt column is an error, not a text.
    sqlite3_db_config(connection, SQLITE_DBCONFIG_DQS_DDL, 0, nullptr);
    sqlite3_db_config(connection, SQLITE_DBCONFIG_DQS_DML, 0, nullptr);
    database->Execute(u"PRAGMA cell_size_check = ON"_s); // damage is found where it is read
    database->Execute(u"PRAGMA foreign_keys = ON"_s);
    ApplyFilePragmas(*database, MainSchema);
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
    const StatementLimit limit(*database, OpeningTime);
    database->QueryValue(u"SELECT 1 FROM sqlite_schema LIMIT 1"_s);
    return database;
}

void DBEngine::ClearAway(Database& database)
{
    try {
        const Transaction lock(database);
        RemoveStaleSuperJournals(database.Name());
    } catch (const RuntimeError&) {
        // Somebody is writing: the next opening does it.
    }
}

std::unique_ptr<Database> DBEngine::OpenDatabase(const QString& path, Access access)
{
    RefuseWhatIsNoDatabase(path);
    if (access == Access::ReadWrite)
        RefuseUnwritable(path);
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
    const StatementLimit limit(*database, OpeningTime);
    RefuseWhatCantBeUsed(*database, MainSchema, access);
    database->LookAtDateForm();
    if (access == Access::ReadWrite && HasSuperJournals(path))
        ClearAway(*database);
    return database;
}

void DBEngine::CompactDatabase(const QString& source, const QString& target, Work& work, Copy copy)
{
    const QString procedure = u"DBEngine::CompactDatabase"_s;
    if (QFileInfo::exists(target))
        throw RuntimeError(ErrorNumber::DatabaseExists, u"The file '%1' exists already."_s.arg(Shown(target)),
                           procedure);
    if (const QString reason = WhyNotWritable(target); !reason.isEmpty())
        throw RuntimeError(ErrorNumber::PathAccess, u"'%1' can't be made. %2"_s.arg(Shown(target), reason), procedure);
    const QString interim = InterimName(target);
    try {
        const bool isReadOnly = copy == Copy::PassingOfReadOnly;
        const std::unique_ptr<Database> database = OpenDatabase(source,
                                                                isReadOnly ? Access::ReadOnly : Access::ReadWrite);
        if (const QString reason = ReplaceContents(interim, {}, QFile::permissions(source) | QFileDevice::WriteOwner);
            !reason.isEmpty())
            throw RuntimeError(ErrorNumber::PathAccess, u"'%1' can't be made: %2."_s.arg(Shown(target), reason),
                               procedure);
        if (!isReadOnly) { // in this mode the lock that the transaction takes is kept until the connection closes
            database->QueryValue(u"PRAGMA locking_mode = EXCLUSIVE"_s);
            database->Execute(u"BEGIN EXCLUSIVE"_s);
            database->Execute(u"COMMIT"_s);
        }
        if (copy != Copy::Lasting)
            database->Execute(u"PRAGMA synchronous = OFF"_s);
        {
            const StatementLimit watched(*database, Watch(work, source, interim));
            database->Execute(u"VACUUM INTO ?"_s, {interim});
        }
        if (copy == Copy::Lasting)
            MoveIntoPlace(interim, target, false);
        else if (!RenameFile(interim, target))
            throw RuntimeError(ErrorNumber::PathAccess, u"'%1' can't be made."_s.arg(Shown(target)), procedure);
    } catch (const RuntimeError&) {
        QFile::remove(interim);
        throw;
    }
}

} // namespace qb
