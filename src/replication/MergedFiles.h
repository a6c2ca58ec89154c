#pragma once

#include "platform/dao/Database.h"
#include "store/Library.h"

#include <QString>
#include <memory>

namespace qb {

/// The folder beside a library where merges are worked on, and the last answer to each child is kept: its name without
/// extension and "_Merged". Ends in a separator.
QString MergedFolderOf(const QString& libraryPath);

/// Where a mother keeps her last answer to a child, by the child's identity: it may have been lost on its way. There
/// need not be one.
QString KeptAnswerOf(const QString& libraryPath, const QString& child);

// What a mother and a child had in common before a merge that left conflicts: the answer before the last one, which is
// there until the next merge. Of an answer that was not kept, or was taken back, there is nothing.

/// Before a merge: what is there of an earlier one counts for nothing.
void ForgetFormerAnswer(const QString& libraryPath);
/// Puts the kept answer aside before another takes its place. @p stamp is that of the last synchronization with the
/// child. Raises nothing.
void KeepFormerAnswer(const QString& libraryPath, const QString& child, Date stamp);
/// Opens it by a copy in an empty folder. Nothing where there is none; raises an error for one that can't be read.
std::unique_ptr<Database> OpenFormerAnswer(const QString& libraryPath, const QString& folder);

/// Writes the kept answer to a child once more. Raises RuntimeError 3024 when none is kept, 75 when it can't be
/// written.
void HandOutAgain(Library& mother, const QString& child, const QString& target);

} // namespace qb
