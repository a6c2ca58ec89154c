#pragma once

#include "maintenance/BackupRotation.h"
#include "store/Library.h"

namespace qb {

struct BackupItem;

/// A line of the list of backups, as it is shown.
struct BackupLine {
    QString Path;
    QString Made;
    QString Size;
    QString State;   ///< whether it was checked, and good
    QString Changes; ///< since it was made, in the open library; empty for a backup of another one
};

/// The backups in a folder, the latest first, empty where there is no such folder. @p library is the open one, or null.
std::vector<BackupLine> BackupLines(const QString& folder, Library* library);

/// What has changed in a library since a backup of it, in words.
QString ChangesSince(Library& library, const BackupSummary& backup);

/// An item of a backup as plain text, to be looked at before it is brought back.
QString PreviewOf(const BackupItem& item);

} // namespace qb
