#include "store/CDBCreate.h"

#include "platform/dao/DBEngine.h"
#include "platform/system/Clock.h"
#include "platform/system/FileReplace.h"
#include "platform/system/Interims.h"
#include "platform/system/Paths.h"
#include "platform/system/Prompts.h"
#include "platform/system/SettingsStore.h"
#include "store/Keywords.h"
#include "store/LibraryLanguage.h"
#include "store/OwnIndexes.h"
#include "store/SideFolders.h"
#include "store/TolerateExisting.h"
#include "support/ErrorRoutine.h"
#include "support/Version.h"

#include <QFile>
#include <QFileInfo>
#include <QRandomGenerator>
#include <cmath>
#include <functional>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

const QString ModuleName = u"CDBCreate"_s;

/// What a new library's maintenance starts with.
struct MaintenanceDefault {
    QLatin1StringView Column;
    Value Setting;
};
const MaintenanceDefault MaintenanceDefaults[] = {
    {"CompactOnExit"_L1, true},   {"CompactOnExitEvery"_L1, 5},  {"BackupOnExit"_L1, true},
    {"BackupOnExitEvery"_L1, 15}, {"BackupAutoDelete"_L1, true}, {"BackupAutoDeleteNo"_L1, 5},
};

void RemoveDatabaseFile(const QString& path)
{
    QFile::remove(path);
    QFile::remove(path + u"-journal"_s);
}

} // namespace

CDBCreate::CDBCreate(Database* database, DatabaseKind kind) : m_database(database), m_kind(kind) {}

bool CDBCreate::CreateNewDB(const QString& path, LanguageType languageType, const QString& languageFile)
{
    if (QFileInfo::exists(path))
        return true;
    RemoveStaleInterims(QFileInfo(path).absolutePath());
    const QString interim = InterimName(path); // a library appears whole or not at all
    const auto build = [&] {
        if (!Create_Database(interim, DatabaseKind::Library))
            return false;
        const std::unique_ptr<Database> database = DBEngine::OpenDatabase(interim);
        m_database = database.get();
        Transaction transaction(*database);
        if (languageType == LanguageType::VB || languageType == LanguageType::Cpp)
            PopulateKeywordSet(languageType);
        else if (languageType == LanguageType::File && !LanguageFromFile(languageFile))
            return false;
        transaction.Commit();
        m_database = nullptr;
        return true;
    };
    const bool created = Guarded(
        ModuleName, u"CreateNewDB"_s,
        [&] {
            if (const QString reason = WhyNotWritable(path); !reason.isEmpty())
                throw RuntimeError(ErrorNumber::PathAccess, u"The database '%1' can't be made. %2"_s.arg(path, reason),
                                   u"CDBCreate::CreateNewDB"_s);
            RefuseSharedFolders(path);
            try {
                const bool built = build();
                if (built)
                    MoveIntoPlace(interim, path, false);
                return built;
            } catch (const RuntimeError& error) { // the user knows the file by its own name
                throw RuntimeError(error.Number(), QString(error.Description()).replace(interim, path), error.Source());
            }
        },
        false);
    m_database = nullptr;
    RemoveDatabaseFile(interim);
    return created;
}

bool CDBCreate::Create_Database(const QString& path, DatabaseKind kind)
{
    if (QFileInfo::exists(path))
        return false;
    const bool created = Guarded(ModuleName, u"Create_Database"_s, [&] {
        const std::unique_ptr<Database> database = DBEngine::CreateDatabase(path);
        m_database = database.get();
        m_kind = kind;
        Transaction transaction(*database);
        Create_TblDef_BookmarkGroups();
        Create_TblDef_Bookmarks();
        Create_TblDef_ChildCopies();
        Create_TblDef_Files({});
        Create_TblDef_ItemLinks({}, false);
        Create_TblDef_Items(false, {});
        Create_TblDef_Keywords();
        Create_TblDef_Properties();
        Create_TblDef_DBVersion();
        Create_Rship_000();
        Create_Rship_001();
        MakeOwnIndexes(*database);
        SetUpProperties({});
        transaction.Commit();
    });
    m_database = nullptr;
    if (!created)
        RemoveDatabaseFile(path);
    return created;
}

bool CDBCreate::PrepareAsBackUp(Database& database)
{
    m_database = &database;
    return Guarded(ModuleName, u"PrepareAsBackUp"_s, [&] {
        Transaction transaction(database);
        // A library that was given out as a child has both, with what it came with.
        TolerateExisting(&CDBCreate::Create_TblDef_HTMLFiles, *this, QString());
        TolerateExisting(&Database::AppendField, database, u"Files"_s, LibrarySchema::FileContents());
        database.Execute(u"DELETE FROM HTMLFiles"_s);
        database.Execute(u"UPDATE Files SET File = NULL WHERE File IS NOT NULL"_s);
        transaction.Commit();
    });
}

bool CDBCreate::CreateAditionalTales(bool withHTML)
{
    return Guarded(ModuleName, u"CreateAditionalTales"_s, [&] {
        Transaction transaction(*m_database);
        // A library that has or is a child has them already. A mother keeps what they record for her other
        // children; in a copy they belong to the one that it was made of.
        TolerateExisting(&CDBCreate::Create_TblDef_DeletedFiles, *this);
        TolerateExisting(&CDBCreate::Create_TblDef_DeletedItems, *this);
        TolerateExisting(&CDBCreate::Create_TblDef_DeletedItemLinks, *this);
        if (withHTML) {
            TolerateExisting(&CDBCreate::Create_TblDef_HTMLFiles, *this, QString());
            for (const QString& table :
                 {u"DeletedFiles"_s, u"DeletedItems"_s, u"DeletedItemLinks"_s, u"HTMLFiles"_s, u"ChildCopies"_s})
                m_database->Execute(u"DELETE FROM "_s + table);
        }
        transaction.Commit();
    });
}

bool CDBCreate::CreateAditionalFields(TableSet set)
{
    return Guarded(ModuleName, u"CreateAditionalFields"_s, [&] {
        Transaction transaction(*m_database);
        for (const LibrarySchema::AddedField& added : LibrarySchema::AditionalFields(set, m_kind)) {
            TolerateExisting(&Database::AppendField, *m_database, added.Table, added.Column);
            if (added.Indexed) {
                const Index index{.Name = added.Column.Name, .Fields = {added.Column.Name}};
                TolerateExisting(&Database::AppendIndex, *m_database, added.Table, index);
            }
        }
        transaction.Commit();
    });
}

void CDBCreate::SetUpProperties(const QString& masterPath)
{
    constexpr qsizetype LongestPath = 255; // that it is there at all says that this is a child
    Recordset properties = m_database->OpenRecordset(u"Properties"_s);
    if (properties.IsEmpty()) {
        properties.AddNew();
    } else {
        properties.MoveFirst();
        properties.Edit();
    }
    properties.Set(u"dbid"_s, DBIDGenerate());
    if (m_kind == DatabaseKind::Child) {
        properties.Set(u"MasterReplicaPath"_s, masterPath.left(LongestPath));
        properties.Set(u"LastSynchronized"_s, Clock::Now());
    }
    properties.Update();
}

QString CDBCreate::DBIDGenerate()
{
    constexpr int Length = 10;
    constexpr int LastDigit = 11; // one past nine, so the colon is a member
    constexpr int LastCapital = 35;
    QString id;
    for (int i = 0; i < Length; ++i) {
        const int n = int(std::nearbyint(QRandomGenerator::global()->generateDouble() * 60)); // ties to even
        const int base = n < LastDigit ? 48 : n <= LastCapital ? 55 : 62;
        id += QChar(char16_t(n + base));
    }
    return id;
}

void CDBCreate::PopulateKeywordSet(LanguageType languageType)
{
    const LanguageDefinition language = BuiltInLanguage(languageType);
    WriteLanguage(language);
    Recordset keywords = m_database->OpenRecordset(u"Keywords"_s);
    const auto add = [&keywords](const QStringList& words, bool coloured) {
        for (const QString& word : words) {
            keywords.AddNew();
            keywords.Set(u"Keyword"_s, word);
            keywords.Set(u"Coloured"_s, coloured);
            keywords.Update();
        }
    };
    add(language.ColouredWords, true);
    add(language.PlainWords, false);
}

/// False when a word was refused, which has been reported.
bool CDBCreate::LanguageFromFile(const QString& languageFile)
{
    const LanguageDefinition language = ReadLanguageFile(languageFile);
    WriteLanguage(language);
    Recordset keywords = m_database->OpenRecordset(u"Keywords"_s);
    return Guarded(ModuleName, u"SetKeywords"_s, [&] {
        SetKeywords(keywords, language.PlainWords, u"False"_s);
        SetKeywords(keywords, language.ColouredWords, u"True"_s);
    });
}

/// Writes all of a language but its words, and empties the word list.
void CDBCreate::WriteLanguage(const LanguageDefinition& language)
{
    Recordset properties = m_database->OpenRecordset(u"Properties"_s);
    properties.MoveFirst();
    properties.Edit();
    properties.Set(u"Version"_s, ProgramVersion());
    properties.Set(u"LanguageUsed"_s, language.Language);
    properties.Set(u"ColouredKeywordColour"_s, language.ColouredKeywordColour);
    properties.Set(u"KeywordColour"_s, language.KeywordColour);
    properties.Set(u"CommentColour"_s, language.CommentColour);
    properties.Set(u"CommentIdentifier"_s, language.Comment);
    properties.Set(u"CommentIdentifierStart"_s, language.CommentStart);
    properties.Set(u"CommentIdentifierEnd"_s, language.CommentEnd);
    for (const MaintenanceDefault& one : MaintenanceDefaults)
        properties.Set(one.Column, one.Setting);
    properties.Update();
    m_database->Execute(u"DELETE FROM Keywords"_s);
    StoreRulesOfLibrary(*m_database, language.Rules);
}

// The builders, one a table and one a relation.

void CDBCreate::Create_TblDef_BookmarkGroups()
{
    m_database->AppendTableDef(LibrarySchema::BookmarkGroups());
}

void CDBCreate::Create_TblDef_Bookmarks()
{
    m_database->AppendTableDef(LibrarySchema::Bookmarks());
}

void CDBCreate::Create_TblDef_ChildCopies()
{
    m_database->AppendTableDef(LibrarySchema::ChildCopies());
}

void CDBCreate::Create_TblDef_Files(const QString& name)
{
    m_database->AppendTableDef(LibrarySchema::Files(name));
}

void CDBCreate::Create_TblDef_ItemLinks(const QString& name, bool noKeys)
{
    m_database->AppendTableDef(LibrarySchema::ItemLinks(name, noKeys));
}

void CDBCreate::Create_TblDef_Items(bool noKeys, const QString& name)
{
    m_database->AppendTableDef(LibrarySchema::Items(name, noKeys));
}

void CDBCreate::Create_TblDef_Keywords()
{
    m_database->AppendTableDef(LibrarySchema::Keywords());
}

void CDBCreate::Create_TblDef_LanguageRules()
{
    m_database->AppendTableDef(LibrarySchema::LanguageRules());
}

void CDBCreate::Create_TblDef_Properties()
{
    m_database->AppendTableDef(LibrarySchema::Properties(m_kind));
}

void CDBCreate::Create_TblDef_DBVersion()
{
    m_database->AppendTableDef(LibrarySchema::DBVersion());
    m_database->Execute(u"INSERT INTO DBVersion (Version) VALUES (?)"_s, {DBEngine::FormatVersion});
}

void CDBCreate::Create_TblDef_DeletedFiles()
{
    m_database->AppendTableDef(LibrarySchema::DeletedFiles());
}

void CDBCreate::Create_TblDef_DeletedItems()
{
    m_database->AppendTableDef(LibrarySchema::DeletedItems());
}

void CDBCreate::Create_TblDef_DeletedItemLinks()
{
    m_database->AppendTableDef(LibrarySchema::DeletedItemLinks());
}

void CDBCreate::Create_TblDef_HTMLFiles(const QString& name)
{
    m_database->AppendTableDef(LibrarySchema::HTMLFiles(name));
}

void CDBCreate::Create_Rship_000()
{
    m_database->AppendRelation(LibrarySchema::BookmarkGroupsBookmarks());
}

void CDBCreate::Create_Rship_001()
{
    m_database->AppendRelation(LibrarySchema::CodeItemsCodeFiles());
}

} // namespace qb
