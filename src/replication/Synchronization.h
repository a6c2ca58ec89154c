#pragma once

#include "platform/system/Work.h"
#include "replication/MergeReport.h"
#include "store/Library.h"

#include <QString>

namespace qb {

struct SyncOptions {
    /// Everything is done and rolled back, and what is reported is what would be. Nothing is told or asked of a file
    /// that can't be used.
    bool Preview = false;
};

/// What a library's taking a synchronization file in came to.
struct SyncResult {
    /// What the file is to the library: 0 it can't be used, which may have been told; 1 what its mother has made of its
    /// own changes, the third step; 2 changes of one of its children, the second step.
    int Result = 0;
    bool Done = false;         ///< the merge is committed; of a preview: it would be
    bool HasConflicts = false; ///< something waits for the solver now
    MergeReport Report;
};

/// Takes a synchronization file in: the library and the file are both as before, or both as after the merge, whatever
/// happens. A mother's answer takes the place of the file; the file that a child has taken in goes. Messages are those
/// of the commands of the window, through Prompts; faults in the data are told once the merge is committed. Raises an
/// error, with nothing changed: 5 while conflicts of an earlier merge are unsolved, 3049 and 3343 for what is no
/// synchronization file, 75 for what can't be read or written, 18 when it was cancelled.
SyncResult Synchronize(Library& library, const QString& file, const SyncOptions& options = {}, Work& work = NoWork());

/// Whether versions of items that lost wait for the solver.
bool HasPendingConflicts(Database& library);

} // namespace qb
