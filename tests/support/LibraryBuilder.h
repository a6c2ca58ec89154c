#pragma once

#include "store/LanguageDefinition.h"
#include "store/Library.h"

#include <QStringList>
#include <memory>

namespace qb::test {

/// Makes a library at @p path, and opens it.
std::unique_ptr<Library> MakeLibrary(const QString& path, LanguageType language = LanguageType::Cpp);

/// Adds an item by the program's own objects; returns its ID.
qint64 AddItem(Library& library, qint64 parent, const QString& title, const QString& code = {});

/// Makes an open library a child (its mother at @p masterPath, last synchronized then) or a mother
/// (with one child, last synchronized then), with the tables and columns that these have.
void MakeChild(Library& library, const QString& masterPath, Date lastSynchronized);
void MakeMother(Library& library, Date childLastSynchronized);

/// The first column of all rows that a statement yields, as texts.
QStringList Texts(Database& database, const QString& sql, const Values& values = {});
/// The number of rows of a table.
qint64 CountOf(Database& database, const QString& table);

/// Adds a row to `Files` and lays the file on the disk; returns the row's ID.
qint64 AddStoredFile(Library& library, qint64 item, const QString& title, const QByteArray& bytes, Date added);

/// Lets every connection fail to store a text with @p word in a column, until the index `refuse` is dropped.
void RefuseWord(Database& database, const QString& table, const QString& column, const QString& word);

/// Fills the library inside the transaction that is open until there is no room for it: the engine ends it by itself.
void LoseTransaction(Database& database);
/// There is room again, once that transaction has been given up.
void MakeRoom(Database& database);

/// All that lies in the folder of stored files, hidden or not, but for the mark of its library.
QStringList StoredNames(const QString& folder);

} // namespace qb::test
