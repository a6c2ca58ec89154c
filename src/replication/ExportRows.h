#pragma once

#include "platform/dao/Database.h"
#include "platform/system/Work.h"

#include <QString>

namespace qb {

/// Where an export comes from and goes to: two files on one connection, by the names of their schemas.
struct ExportPlace {
    Database& Connection;
    QString Library; ///< the library's schema
    QString File;    ///< that of the synchronization file
    QString FilesFolder;
    QString HTMLFolder;

    QString OfLibrary(const QString& table) const { return Library + u'.' + table; }
    QString OfFile(const QString& table) const { return File + u'.' + table; }
};

/// How much an export holds.
struct ExportCounts {
    qint64 Items = 0;
    qint64 Files = 0;    ///< rows of stored files, new ones with their contents
    qint64 Contents = 0; ///< of them
    qint64 Missing = 0;  ///< stored files that are new and not in their folder
    qint64 Pages = 0;    ///< files of web pages
    qint64 MissingPages = 0;
    qint64 Links = 0;
    qint64 Deleted = 0; ///< items, stored files and links

    qint64 Changes() const { return Items + Files + Pages + Links + Deleted; }
    /// What did not travel since it is missing in the library, as a sentence; empty when nothing is.
    QString MissingText() const;
};

/// Writes every row that changed since the last synchronization into a synchronization file, inside the caller's
/// transaction: of a child, for its mother, with what it has deleted and its `Properties`, which say that they were
/// exported at @p exported; or, with @p intoXTables, of a mother into the X tables for the child whose file it is. Two
/// libraries that have no such bond, or a clock that can't be trusted, are told in a message, and nothing is written
/// then but that such a bond is dropped. False then, or on an error, which has been reported. @p work counts bytes of
/// contents; RuntimeError 18 when it was cancelled.
bool ExportChangedItems(const ExportPlace& place, bool intoXTables, Date exported, ExportCounts& counts,
                        Work& work = NoWork());

/// Takes anew what the mother calls the parents, owners and ends of a child's changed rows, as an export does in its
/// file.
void RefreshMotherIDs(Database& child);

/// How much an export of the child would hold now.
ExportCounts CountChanges(Database& child);

/// What the export to one child would hold now, of the mother's changes alone.
ExportCounts CountChangesFor(Database& mother, const QString& child);

/// Adds the rows of one table to another: the columns that both have, by name, but for those in which the other
/// numbers its rows itself. @p where is a condition on the rows, which go by the name r. Returns how many there were.
qint64 CopyRecords(Database& connection, const QString& source, const QString& target, const QString& where = {},
                   const Values& values = {});

} // namespace qb
