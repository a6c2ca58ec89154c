#pragma once

#include "platform/dao/Database.h"

#include <QString>

namespace qb {

/// The values of the open library that the whole session reads.
struct SessionValues {
    QString CurrentFilesFolder; ///< folder of the stored files, ends in a separator
    QString CurrentHTMLFolder;  ///< folder of the web pages, ends in a separator
    QString LibraryPath;
    QString Identity;             ///< of the library
    bool IsChildReplica = false;  ///< the library was given out by a mother
    bool IsMotherReplica = false; ///< the library has children
    Date LastExportedDate;        ///< of a child whose changes are on their way to the mother
};

/// The session's one set of values.
SessionValues& Session();

/// The folder of a library's stored files: beside the library, its name without extension and "_Files".
QString FilesFolderOf(const QString& libraryPath);
/// The folder of its web pages, with "_HTML".
QString HTMLFolderOf(const QString& libraryPath);

/// What `Properties` and `ChildCopies` say of a library's part in replication.
struct ReplicaState {
    bool IsChild = false;
    bool IsMother = false;
    Date LastExported;
    Date LastSynchronized;
    int Children = 0;
};
ReplicaState ReadReplicaState(Database& database);

/// Sets all session values for @p database.
void SetSessionValues(Database& database);

/// True when the library has the four tables by which one is known.
bool IsLibrary(Database& database);

} // namespace qb
