#pragma once

#include "store/Library.h"

#include <QString>
#include <QStringList>

namespace qb {

/// Where the stored file of a row of `Files` lies: the library's folder of stored files, the ID,
/// " - " and the title. A title that would lead out of that folder gives an empty path.
QString StoredFilePath(const QString& filesFolder, qint64 id, const QString& title);
inline QString StoredFilePath(const Library& library, qint64 id, const QString& title)
{
    return StoredFilePath(library.FilesFolder(), id, title);
}

/// The same where an ordinary file stands there, empty otherwise: a library's folder may come from somebody
/// else, and a link, a pipe or a device in it is neither followed nor waited for.
QString ReadableStoredFile(const Library& library, qint64 id, const QString& title);

/// Whether an ordinary file stands there; links are none.
bool IsPlainFile(const QString& path);

/// What the deletion of a row of `Files` leaves to be done.
struct DeletedFileRow {
    QString Place; ///< of its file, which goes once the deletion is committed; empty when there was no row
    bool LacksMotherRecord = false; ///< the mother can't be told which file it was
};

/// Deletes one row of `Files`, inside the caller's transaction, and records the deletion where
/// another replica must learn of it.
DeletedFileRow DeleteStoredFileRow(Library& library, qint64 id);

/// The IDs of an item's stored files.
std::vector<qint64> StoredFilesOf(Library& library, qint64 itemId);

} // namespace qb
