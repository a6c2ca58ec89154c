// The tables of replication: what travels between mother and child, and what each has for a merge.

#include "platform/dao/DBEngine.h"
#include "platform/system/Clock.h"
#include "platform/system/Prompts.h"
#include "store/CDBCreate.h"
#include "store/Library.h"
#include "store/OwnIndexes.h"
#include "store/ReplicaLog.h"
#include "store/TolerateExisting.h"
#include "support/ErrorRoutine.h"

#include <QFile>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

const QString ModuleName = u"CDBCreate"_s;

void AppendTolerantly(Database& database, const std::vector<LibrarySchema::AddedField>& fields)
{
    for (const LibrarySchema::AddedField& added : fields)
        TolerateExisting(&Database::AppendField, database, added.Table, added.Column);
}

/// False when there was no such table.
bool DeleteTableIfThere(Database& database, const QString& table)
{
    if (!database.TableExists(table))
        return false;
    database.DeleteTableDef(table);
    return true;
}

} // namespace

// The synchronization file

bool CDBCreate::CreateSynchroDatabase(const QString& path)
{
    bool isMade = false;
    const bool created = Guarded(
        ModuleName, u"CreateSynchroDatabase"_s,
        [&] {
            const std::unique_ptr<Database> database = DBEngine::CreateDatabase(path);
            isMade = true;
            m_database = database.get();
            m_kind = DatabaseKind::Synchronization;
            Transaction transaction(*database);
            Create_TblDef_Files(u"Files"_s);
            Create_TblDef_ItemLinks({}, true);
            Create_TblDef_Items(true, {});
            Create_TblDef_Properties();
            Create_TblDef_DeletedFiles();
            Create_TblDef_DeletedItems();
            Create_TblDef_DeletedItemLinks();
            Create_TblDef_HTMLFiles({});
            const bool isComplete = CreateAditionalFields(TableSet::Plain);
            if (isComplete)
                transaction.Commit();
            return isComplete;
        },
        false);
    m_database = nullptr;
    if (!created && isMade) {
        QFile::remove(path);
        QFile::remove(path + u"-journal"_s);
    }
    return created;
}

bool CDBCreate::CreateSynchroDB(const QString& path)
{
    return Create_Database(path, DatabaseKind::Synchronization);
}

bool CDBCreate::CreateAditionalTablesinSynchroDB(const QString& path)
{
    const bool created = Guarded(
        ModuleName, u"CreateAditionalTablesinSynchroDB"_s,
        [&] {
            const std::unique_ptr<Database> database = DBEngine::OpenDatabase(path);
            m_database = database.get();
            m_kind = DatabaseKind::Library; // its Properties are complete
            Transaction transaction(*database);
            Create_TblDef_Files(u"FilesX"_s);
            Create_TblDef_Items(true, u"ItemsX"_s);
            Create_TblDef_HTMLFiles(u"HTMLFilesX"_s);
            Create_TblDef_ItemLinks(u"ItemLinksX"_s, false);
            if (!CreateAditionalFields(TableSet::X))
                return false;
            AppendTolerantly(*database, LibrarySchema::SynchronizationMarks());
            transaction.Commit();
            return true;
        },
        false);
    m_database = nullptr;
    return created;
}

bool CDBCreate::RemoveAditionalTablesInSynchroDB(const QString& path)
{
    try {
        const std::unique_ptr<Database> database = DBEngine::OpenDatabase(path);
        for (const QString& table : {u"Filesx"_s, u"ItemsX"_s, u"HTMLFilesX"_s, u"ItemLinksX"_s})
            DeleteTableIfThere(*database, table);
    } catch (const RuntimeError&) {
        // They are in nobody's way.
    }
    return true;
}

// The library during a merge

bool CDBCreate::CreateAditionalSynchroFieldsInMainDB(Database& database)
{
    return Guarded(ModuleName, u"CreateAditionalSynchroFieldsInMainDB"_s,
                   [&] { AppendTolerantly(database, LibrarySchema::MergeMarks()); });
}

bool CDBCreate::RemoveAditionalSynchroFieldsInMainDB(Database& database)
{
    return Guarded(ModuleName, u"RemoveAditionalSynchroFieldsInMainDB"_s,
                   [&] { database.DeleteField(u"Items"_s, u"MoveToOrphaned"_s); });
}

bool CDBCreate::CreateTemporaryTablesInMainDB(Database& database)
{
    CDBCreate create(&database, DatabaseKind::Library);
    return Guarded(
        ModuleName, u"CreateTemporaryTablesInMainDB"_s,
        [&] {
            Transaction transaction(database);
            TolerateExisting(&CDBCreate::Create_TblDef_Files, create, u"TempFiles"_s);
            TolerateExisting(&CDBCreate::Create_TblDef_Items, create, true, u"TempItems"_s);
            TolerateExisting(&CDBCreate::Create_TblDef_HTMLFiles, create, u"TempHTMLFiles"_s);
            if (!create.CreateAditionalFields(TableSet::Temporary))
                return false;
            if (database.QueryValue(u"SELECT 1 FROM TempItems LIMIT 1"_s).IsNull()) {
                database.Execute(u"DELETE FROM TempFiles"_s);
                database.Execute(u"DELETE FROM TempHTMLFiles"_s);
            }
            transaction.Commit();
            return true;
        },
        false);
}

bool CDBCreate::CreateTemporaryTablesInReplica(Database& database)
{
    return CreateTemporaryTablesInMainDB(database);
}

bool CDBCreate::RemoveTemporaryTablesFromMainDB(Database& database)
{
    return Guarded(ModuleName, u"RemoveTemporaryTablesFromMainDB"_s, [&] {
        Transaction transaction(database);
        // No table has the last name, and that is meant: the pages stay.
        for (const QString& table : {u"TempFiles"_s, u"TempItems"_s, u"TepmHTMLFiles"_s})
            DeleteTableIfThere(database, table);
        transaction.Commit();
    });
}

// A child

/// What a copy has of the part that its library had in replication, and is none of a new child's.
void CDBCreate::ForgetFormerPart()
{
    m_database->Execute(u"UPDATE Properties SET LastExported = NULL"_s);
    // Conflicts are the mother's to resolve.
    for (const QString& table : {u"TempFiles"_s, u"TempItems"_s, u"TempHTMLFiles"_s})
        DeleteTableIfThere(*m_database, table);
    m_database->Execute(u"UPDATE Files SET File = NULL WHERE File IS NOT NULL"_s);
}

bool CDBCreate::CreateChildDB(Database& mother, Database& child)
{
    constexpr qsizetype LongestDescription = 255;
    m_database = &child;
    m_kind = DatabaseKind::Child;
    return Guarded(
        ModuleName, u"CreateChildDB"_s,
        [&] {
            Transaction ofMother(mother);
            Transaction ofChild(child);
            const ReplicaState state = ReadReplicaState(mother);
            if (!state.IsMother && !state.IsChild && !CDBCreate(&mother, m_kind).CreateAditionalTales(false))
                return false;
            if (!CreateAditionalTales(true) || !CreateAditionalFields(TableSet::Plain))
                return false;
            ForgetFormerPart();
            ReplicaLog(mother).Make();
            ReplicaLog(child).Make();
            ReplicaLog(child).Clear(); // it tells of others
            MakeReplicaIndexes(mother);
            MakeReplicaIndexes(child);
            SetUpProperties(mother.Name());
            Recordset children = mother.OpenRecordset(u"ChildCopies"_s);
            children.AddNew();
            children.Set(u"DBCopyID"_s, child.QueryValue(u"SELECT DBID FROM Properties"_s));
            children.Set(u"LastSynchronized"_s, Clock::Now());
            children.Set(u"ShortDescr"_s, Prompts::Current()
                                              .InputBox(u"Please type short description for the new child database."_s,
                                                        u"Short Description"_s, {})
                                              .value_or(QString())
                                              .left(LongestDescription));
            children.Update();
            ofChild.Commit();
            ofMother.Commit();
            return true;
        },
        false);
}

} // namespace qb
