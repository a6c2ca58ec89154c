#pragma once

#include "platform/system/Work.h"
#include "replication/ExportRows.h"
#include "store/Library.h"

#include <QString>
#include <optional>

namespace qb {

/// Whether a child whose changes are on their way may write them once more: the file was lost.
enum class ExportAgain { No, Yes };

struct ExportedChanges {
    QString File;
    Date Exported;
    ExportCounts Counts;
};

/// Writes the changes of an open child into the file @p target, for its mother, and stamps the child as exported; both
/// or neither, whatever happens. A file that stands there is replaced. An export once more has all that the one before
/// it had, and what changed since. Nothing when the clock or the bond to the mother forbids it, which has been told.
/// Raises an error, with nothing changed: 5 for a library that is no child, or has been exported already, 3204 for a
/// target that is a database, 75 for what can't be read or written, 18 when it was cancelled.
std::optional<ExportedChanges> WriteChanges(Library& child, const QString& target, ExportAgain again,
                                            Work& work = NoWork());

/// Packs the database that lies under the name of a synchronization file into the file of that name. False, with the
/// database in its place, when that fails; a failure that lies beyond the program's reach is reported.
bool CompactSynchronizationFile(const QString& path, Work& work = NoWork());

} // namespace qb
