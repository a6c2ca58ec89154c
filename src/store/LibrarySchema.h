#pragma once

#include "platform/dao/Schema.h"

namespace qb {

/// What a database file is made for.
enum class DatabaseKind { Library = 0, Child = 1, Synchronization = 2 };

/// The table set that CreateAditionalFields completes.
enum class TableSet { Plain = 0, X = 1, Temporary = 2 };

/// The tables of a library and of the files that travel between libraries. An empty name means
/// the table's own name.
namespace LibrarySchema {

/// With @p noKeys `ID` is a plain number and no key refuses a second row of the same ID.
TableDef Items(const QString& name, bool noKeys);
/// `ID` numbers itself if @p name is empty or "TempFiles".
TableDef Files(const QString& name);
TableDef ItemLinks(const QString& name, bool noKeys);
TableDef HTMLFiles(const QString& name);
TableDef BookmarkGroups();
TableDef Bookmarks();
TableDef ChildCopies();
TableDef Keywords();
/// The rules by which texts of the library's language are painted: one row, made when there are any.
TableDef LanguageRules();
TableDef Properties(DatabaseKind kind);
/// One row with the version of the schema; with `Items`, `Files` and `Bookmarks` it is what a
/// library is known by.
TableDef DBVersion();
TableDef DeletedFiles();
TableDef DeletedItems();
TableDef DeletedItemLinks();
/// What the other replicas have to be told beyond dates and deletions (see ReplicaLog.h).
TableDef ReplicaLog();

/// All tables of a child as it travels, without the columns that replication adds to some.
std::vector<TableDef> TablesOfChild();

/// The column that holds the contents of a stored file, in files that travel.
Field FileContents();

/// A column, with an index of its name or without, that CreateAditionalFields adds to a table.
struct AddedField {
    QString Table;
    Field Column;
    bool Indexed = false;
};
/// The columns of replication for `Files`, `Items` and `ItemLinks`, for the same with an X behind their names, or
/// for `TempFiles` and `TempItems`. For a @p kind other than a library those of `Properties` come last, with any
/// set.
std::vector<AddedField> AditionalFields(TableSet set, DatabaseKind kind);

/// What the mother notes on a child's rows in a synchronization file: that they got an ID of hers, and, on items, that
/// both sides had changed them.
std::vector<AddedField> SynchronizationMarks();
/// What rows of `Items` are marked with while a merge runs.
std::vector<AddedField> MergeMarks();

/// From a group to its bookmarks, and from an item to its files: a new ID goes over to the rows that refer to it,
/// and with the row they go, too.
Relation BookmarkGroupsBookmarks();
Relation CodeItemsCodeFiles();

} // namespace LibrarySchema

} // namespace qb
