#pragma once

#include "platform/dao/Database.h"
#include "store/LanguageDefinition.h"
#include "store/LibrarySchema.h"

namespace qb {

/// Builds the tables of libraries and of the files that travel between them. It alone does. An
/// operation that returns bool reports its error and returns false on failure.
class CDBCreate {
public:
    /// To build in a database that is open already; @p kind says what it is made for.
    explicit CDBCreate(Database* database = nullptr, DatabaseKind kind = DatabaseKind::Library);

    /// Makes a library at @p path with the words and colours of a language; @p languageFile is
    /// read for LanguageType::File. A file that stands there already is left alone, which is no
    /// failure. On failure no file is left.
    bool CreateNewDB(const QString& path, LanguageType languageType, const QString& languageFile);

    /// Makes the database file with the tables, relations and properties of a library. False,
    /// and nothing done, when a file of that name exists.
    bool Create_Database(const QString& path, DatabaseKind kind);

    /// Adds what a backup holds beyond a library: packed pages and the contents of files, empty both.
    bool PrepareAsBackUp(Database& database);

    /// Adds the tables of deletions where they are missing; with @p withHTML also the packed pages, and all of
    /// them and the list of children are empty then.
    bool CreateAditionalTales(bool withHTML);

    /// Completes a set of tables with the columns that replication needs. What exists already
    /// is passed over.
    bool CreateAditionalFields(TableSet set);

    /// Fills the one row of `Properties` with a new identity; a child also gets its mother's path.
    void SetUpProperties(const QString& masterPath);

    // Replication. Each is whole or not at all.

    /// Makes the database that a child's changes travel in. On failure, as where a file of that name stands, there is
    /// none of it.
    bool CreateSynchroDatabase(const QString& path);
    /// Makes a database with all tables of a library whose Properties are those of such a file.
    bool CreateSynchroDB(const QString& path);
    /// Adds the tables for what the mother has to say, and the marks of what she did with the child's rows. Columns
    /// that exist are passed over; a table that exists is a failure.
    bool CreateAditionalTablesinSynchroDB(const QString& path);
    /// Takes these tables away again. What is missing, the file included, is no failure.
    bool RemoveAditionalTablesInSynchroDB(const QString& path);
    /// Adds the marks that rows of `Items` bear during a merge; those that exist are passed over.
    bool CreateAditionalSynchroFieldsInMainDB(Database& database);
    /// Takes `MoveToOrphaned` away. `Deleted` stays for good.
    bool RemoveAditionalSynchroFieldsInMainDB(Database& database);
    /// Adds the tables for versions of items that lost. Those that exist stay; what lies in them of versions that are
    /// decided goes.
    bool CreateTemporaryTablesInMainDB(Database& database);
    bool CreateTemporaryTablesInReplica(Database& database);
    /// Takes `TempFiles` and `TempItems` away; `TempHTMLFiles` stays.
    bool RemoveTemporaryTablesFromMainDB(Database& database);

    /// Makes the copy @p child of a library one of its children: with an identity and a stamp of its own, without what
    /// only concerns the mother; and enters it there, with the tables that a mother has. Asks the user for a
    /// description. Both are as they were when it fails.
    bool CreateChildDB(Database& mother, Database& child);

    /// Ten characters that tell one library from another: digits, colon, B to Z, b to z.
    static QString DBIDGenerate();

    /// Each adds one empty table (that of the schema's version gets its one row) or one relation to the database, and
    /// raises what Database::AppendTableDef and AppendRelation raise. An empty name is the table's own; what
    /// @p noKeys means stands at the tables in LibrarySchema. Create_Database calls those that every library has;
    /// the others are for what comes later.
    void Create_TblDef_BookmarkGroups();
    void Create_TblDef_Bookmarks();
    void Create_TblDef_ChildCopies();
    void Create_TblDef_Files(const QString& name);
    void Create_TblDef_ItemLinks(const QString& name, bool noKeys);
    void Create_TblDef_Items(bool noKeys, const QString& name);
    void Create_TblDef_Keywords();
    void Create_TblDef_LanguageRules();
    void Create_TblDef_Properties();
    void Create_TblDef_DBVersion();
    void Create_TblDef_DeletedFiles();
    void Create_TblDef_DeletedItems();
    void Create_TblDef_DeletedItemLinks();
    void Create_TblDef_HTMLFiles(const QString& name);
    void Create_Rship_000();
    void Create_Rship_001();

private:
    void PopulateKeywordSet(LanguageType languageType);
    bool LanguageFromFile(const QString& languageFile);
    void WriteLanguage(const LanguageDefinition& language);
    void ForgetFormerPart();

    Database* m_database;
    DatabaseKind m_kind;
};

} // namespace qb
