#pragma once

#include "platform/dao/Database.h"

#include <QString>

namespace qb {

/// Whose a side folder is. Two libraries whose names differ in the extension only would share theirs, and
/// each would find, finish and delete the files of the other; so a folder knows its library.
enum class FolderOwner { Nobody, This, Another };

/// The identity of a library; empty when it has none.
QString LibraryIdentity(Database& database);

/// What the mark in a folder (`.library`, the library's identity) says of its owner.
FolderOwner OwnerOf(const QString& folder, const QString& identity);

/// Makes the folder if it is not there, and this library its owner if it has none. Raises RuntimeError 75
/// when it is another library's, or can't be written.
void ClaimFolder(const QString& folder, const QString& identity);

/// A sentence that names the side folders of an open library that are another one's; empty when all is well.
QString WhoseFoldersAreForeign(Database& database);

/// Raises RuntimeError 3204 when a new library at @p path would share its side folders with another one.
void RefuseSharedFolders(const QString& path);

} // namespace qb
