#pragma once

#include "platform/dao/Database.h"

#include <QString>
#include <QStringList>

namespace qb {

/// Where the stored file of a row of `Files` lies: the library's folder of stored files, the ID,
/// " - " and the title. A title that would lead out of that folder gives an empty path.
QString StoredFilePath(qint64 id, const QString& title);

/// Deletes one row of `Files`, inside the caller's transaction, and records the deletion where
/// another replica must learn of it. Returns the path of the file, which the caller removes once
/// the transaction is committed.
QString DeleteStoredFileRow(Database& database, qint64 id);

/// The IDs of an item's stored files.
std::vector<qint64> StoredFilesOf(Database& database, qint64 itemId);

} // namespace qb
