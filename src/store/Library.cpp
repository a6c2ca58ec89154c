#include "store/Library.h"

#include "platform/system/Clock.h"
#include "platform/system/Interims.h"
#include "platform/system/Paths.h"
#include "store/LibraryFormat.h"
#include "store/LibrarySwap.h"
#include "store/OwnIndexes.h"
#include "store/PendingRemoved.h"
#include "store/PendingReplica.h"
#include "store/ReplicaLog.h"
#include "store/SideFolders.h"

#include <QDir>
#include <QFileInfo>
#include <algorithm>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

QString SideFolder(const QString& libraryPath, const QString& suffix)
{
    return fnExtractPathOrFileName(libraryPath, PathPart::Folder)
           + fnExtractPathOrFileName(libraryPath, PathPart::BaseName) + suffix + u'/';
}

} // namespace

QString FilesFolderOf(const QString& libraryPath)
{
    return SideFolder(libraryPath, u"_Files"_s);
}

QString HTMLFolderOf(const QString& libraryPath)
{
    return SideFolder(libraryPath, u"_HTML"_s);
}

ReplicaState ReadReplicaState(Database& database, const QString& schema)
{
    ReplicaState state;
    const QString name = schema.isEmpty() ? u"Properties"_s : schema + u".Properties"_s;
    const TableDef& table = database.GetTableDef(name);
    const Recordset properties = database.OpenRecordset(name);
    // Only a library that was given out as a child has these columns.
    if (!properties.IsEmpty() && table.FindField(u"MasterReplicaPath"_s)) {
        state.IsChild = !properties[u"MasterReplicaPath"_s].ToText().isEmpty();
        state.LastExported = properties[u"LastExported"_s].ToDate();
        state.LastSynchronized = properties[u"LastSynchronized"_s].ToDate();
    }
    state.Children = int(
        database.QueryValue(u"SELECT count(*) FROM "_s + Qualified(schema, u"ChildCopies"_s)).ToLong());
    state.IsMother = state.Children > 0;
    return state;
}

std::unique_ptr<Library> Library::Open(const QString& path, DBEngine::Access access)
{
    OpenMark mark;
    if (access == DBEngine::Access::ReadWrite)
        mark = OpenMark(path);
    else
        RefuseWhileAlone(path);
    FinishSwap(path);
    const std::unique_ptr<Database> database = DBEngine::OpenDatabase(path, access);
    if (!IsLibrary(*database))
        throw RuntimeError(ErrorNumber::NotADatabase,
                           u"'%1' is not a KT Quillbase database."_s.arg(QDir::toNativeSeparators(path)), u"Library"_s);
    if (access == DBEngine::Access::ReadWrite) {
        RemoveStaleInterims(QFileInfo(database->Name()).absolutePath());
        if (database->HasWallDates())
            BringUpToDate(*database);
        CompleteOwnIndexes(*database);
        FinishPendingReplica(*database);
        FinishPendingRemoved(*database);
    }
    return std::unique_ptr<Library>(new Library(std::move(*database), std::move(mark)));
}

Library::Library(Database&& database, OpenMark&& mark)
    : Database(std::move(database)), m_mark(std::move(mark)), m_filesFolder(FilesFolderOf(Name())),
      m_htmlFolder(HTMLFolderOf(Name())), m_identity(LibraryIdentity(*this))
{
    ReadReplica();
}

void Library::ReadReplica()
{
    m_replica = ReadReplicaState(*this);
}

Date Library::LastOwnStamp()
{
    if (!IsReplicated())
        return {};
    QStringList stamps{u"SELECT max(LastSynchronized) FROM ChildCopies"_s};
    if (IsChildReplica())
        stamps << u"SELECT max(LastSynchronized, coalesce(LastExported, 0)) FROM Properties"_s;
    if (TableExists(u"ReplicaLog"_s))
        stamps << u"SELECT max(RowDate) FROM ReplicaLog WHERE Event = %1"_s.arg(int(ReplicaEvent::Exported));
    return QueryValue(u"SELECT coalesce(max(stamp), 0) FROM (SELECT NULL AS stamp UNION ALL %1)"_s.arg(
                          stamps.join(u" UNION ALL "_s)))
        .ToDate();
}

Date Library::NextStamp()
{
    const Date now = Clock::Now();
    if (!IsReplicated())
        return now;
    Date stamp = std::max(now, Date::FromSeconds(LastOwnStamp().Seconds() + 1));
    // What has the date that it was taken over with counts as not changed.
    while (IsTakenOverDate(stamp))
        stamp = Date::FromSeconds(stamp.Seconds() + 1);
    return stamp;
}

bool Library::IsTakenOverDate(Date date)
{
    return TableExists(u"ReplicaLog"_s)
           && !QueryValue(u"SELECT 1 FROM ReplicaLog WHERE Event = ? AND RowDate = ? LIMIT 1"_s,
                          {int(ReplicaEvent::TakenOver), date})
                   .IsNull();
}

bool IsLibrary(Database& database)
{
    const QString tables[] = {u"Items"_s, u"Files"_s, u"Bookmarks"_s, u"DBVersion"_s};
    return std::all_of(std::begin(tables), std::end(tables),
                       [&database](const QString& table) { return database.TableExists(table); });
}

} // namespace qb
