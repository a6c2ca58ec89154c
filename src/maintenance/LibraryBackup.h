#pragma once

#include "maintenance/BackupFile.h"
#include "maintenance/LibraryCheck.h"

namespace qb {

struct BackUpOptions {
    qint64 VolumeSize = 0; ///< in bytes; 0: one file
};

struct BackUpResult {
    QStringList Files; ///< the backup, or its volumes in order
    BackupSummary Summary;
    qint64 Size = 0;                  ///< of all of them, in bytes
    std::vector<LibraryFault> Damage; ///< of the library: it is in the backup as it is, and makes that no good one
    qint64 MissingFiles = 0;          ///< rows of `Files` whose file is not on the disk, neither in the library
};

/// Looks for damage in a library, packs it with its files and pages into a backup and compares that with what went in,
/// before it takes its name. The library may be open elsewhere, if nobody is writing. Raises an error, with what was there as it was:
/// 3045 when somebody is writing, 3204 when a database, or volumes, stand under the name, 75 for what can't be read
/// or written, 18 when it was cancelled.
BackUpResult BackUpLibrary(const QString& library, const QString& backupFile, const BackUpOptions& options,
                           Work& work = NoWork());

} // namespace qb
