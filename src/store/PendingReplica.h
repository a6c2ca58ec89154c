#pragma once

#include "platform/dao/Database.h"

#include <QString>

namespace qb {

/// A file of replication that is complete and about to get its name, once the library says so: a child's, one with
/// the changes of this library, or a mother's answer to such changes.
struct PendingReplica {
    QString File = {};     ///< the path that it is to have
    QString Complete = {}; ///< where it lies
    QString Locked = {};   ///< the folder that whoever makes it has locked
    QString Identity = {}; ///< of the child that it holds; empty for changes
    bool IsFirst = false;  ///< the library became a mother by it
    Date Exported = {};    ///< what the library said of its last export before
    /// Of an answer: where the library keeps it, whatever becomes of the file. With nothing in Complete: the file as it
    /// was before a merge that was undone. Empty for others.
    QString Kept = {};
};

/// Notes in the library, inside the transaction by which a child is entered or an export is stamped, that the file is
/// still to get its name. Raises RuntimeError 75 when the file can't be read. An answer is complete by that commit.
void NotePendingReplica(Database& library, const PendingReplica& pending);

/// The file has its name.
void ForgetPendingReplica(Database& library);

/// It did not get its name: the library is brought back to what it was before.
void TakePendingReplicaBack(Database& library);

/// At an opening: what a dead process noted counts when its file is there, and is taken back when it is not. An answer
/// is kept, and written where it belongs if that can be seen. What a living one is at is left alone, and so is what
/// else was noted of a folder that can't be seen now.
void FinishPendingReplica(Database& library);

} // namespace qb
