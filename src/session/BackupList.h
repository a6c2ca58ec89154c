#pragma once

#include "maintenance/BackupRotation.h"
#include "store/Library.h"

namespace qb {

struct BackupItem;
class BackupItems;

/// A line of the list of backups, as it is shown.
struct BackupLine {
    QString Path;
    QString Made;
    QString Size;
    QString Library; ///< the name of the one that was backed up, and whether it is the open one
    QString State;   ///< whether it was checked, and good
    QString Changes; ///< since it was made, in the open library; empty for a backup of another one
};

/// The backups in a folder, the latest first, empty where there is no such folder. @p library is the open one, or null.
std::vector<BackupLine> BackupLines(const QString& folder, Library* library);

/// The folder whose backups are listed at first: what the settings say, or, where they say nothing, the program's own,
/// to which backups go then. It need not be there.
QString FolderOfList(const QString& ofSettings);
/// What to tell where that list is empty, as a sentence.
QString NoBackupsNotice(const QString& folder);

inline const QString DeletedState = QStringLiteral("deleted");
/// An item of a backup as it is listed.
struct BackupItemLine {
    qint64 Id = 0;
    qint64 Parent = 0;
    QString Title;
    QString State; ///< how it is in the library now: DeletedState, "changed"; empty where it is the same, or not known
};
/// All items of a backup, in the order of their titles.
std::vector<BackupItemLine> BackupItemLines(BackupItems& backup, Library& library);
/// Those of the lines whose title holds @p text and, with @p onlyOthers, that are not as they were; with all that they
/// stand below. Flags, one a line: it is listed, and it is one of those itself.
struct ListedLine {
    bool IsListed = false;
    bool Fits = false;
};
std::vector<ListedLine> Listed(const std::vector<BackupItemLine>& lines, const QString& text, bool onlyOthers);

/// What has changed in a library since a backup of it, in words.
QString ChangesSince(Library& library, const BackupSummary& backup);

/// An item of a backup as plain text, to be looked at before it is brought back.
QString PreviewOf(const BackupItem& item);

} // namespace qb
