#pragma once

#include "platform/dao/DBEngine.h"
#include "store/LibraryUse.h"

#include <QString>
#include <memory>

namespace qb {

/// What `Properties` and `ChildCopies` say of a library's part in replication.
struct ReplicaState {
    bool IsChild = false;  ///< the library was given out by a mother
    bool IsMother = false; ///< the library has children
    Date LastExported;     ///< of a child's changes to the mother; "none" once she has answered
    Date LastSynchronized; ///< of a child with its mother
    int Children = 0;
};
/// Reads it from a database that need not be open as a Library; both tables must be there. Without a row in
/// `Properties`, or the columns that a child has, it is no child. @p schema is the name under which it is attached.
ReplicaState ReadReplicaState(Database& database, const QString& schema = {});

/// A library: an open database with its two folders and its part in replication. Several can be open at a
/// time; nothing of one is known outside of it.
class Library : public Database {
public:
    /// Raises what DBEngine::OpenDatabase raises, and 3343 when the database is no library; 3045 also while it is being
    /// compacted or replaced. What a process left that ended while it replaced the library is brought to its end first.
    static std::unique_ptr<Library> Open(const QString& path, DBEngine::Access access = DBEngine::Access::ReadWrite);

    const QString& FilesFolder() const { return m_filesFolder; } ///< of the stored files, ends in a separator
    const QString& HTMLFolder() const { return m_htmlFolder; }   ///< of the web pages, ends in a separator
    const QString& Identity() const { return m_identity; }       ///< empty when the library has none
    bool IsChildReplica() const { return m_replica.IsChild; }
    bool IsMotherReplica() const { return m_replica.IsMother; }
    bool IsReplicated() const { return IsChildReplica() || IsMotherReplica(); }
    /// Of a child whose changes are on their way to the mother; "none" otherwise.
    Date LastExportedDate() const { return IsChildReplica() ? m_replica.LastExported : Date(); }
    const ReplicaState& Replica() const { return m_replica; }

    /// The moment for a change that is made now: the present time, but in a replica always later than LastOwnStamp, so
    /// that what is changed after a synchronization is known by its date, whatever was done to the clock. All dates
    /// of changes and deletions that are written are this one's.
    Date NextStamp();
    /// The latest synchronization, or export, that this replica took part in; "none" in an ordinary library.
    Date LastOwnStamp();

    /// Reads anew what others, or a synchronization, may have changed of the library's part in replication.
    void ReadReplica();

private:
    Library(Database&& database, OpenMark&& mark);
    bool IsTakenOverDate(Date date);

    OpenMark m_mark; ///< of a library that is open for writing
    QString m_filesFolder;
    QString m_htmlFolder;
    QString m_identity;
    ReplicaState m_replica;
};

/// The folder of a library's stored files: beside the library, its name without extension and "_Files".
QString FilesFolderOf(const QString& libraryPath);
/// The folder of its web pages, with "_HTML".
QString HTMLFolderOf(const QString& libraryPath);

/// True when the database has the four tables by which a library is known.
bool IsLibrary(Database& database);

} // namespace qb
