#pragma once

#include "store/Library.h"

namespace qb {

/// The moment before which a row is known to another replica, so that its deletion must be
/// recorded for it: the later of the library's own last synchronization, in a child, and the
/// latest of its children's, in a mother. "None" in an ordinary library.
Date DeletionCutOff(Library& library);

/// A record of a replica that is being deleted.
struct DeletedRecord {
    QString Table = {}; ///< as in ReplicaLogEntry, like the four after it
    qint64 Record = 0;
    qint64 Second = 0;
    qint64 MotherRecord = 0;
    qint64 MotherSecond = 0;
    Value Added = {};  ///< when the record came to be; Null where nothing says it
    Date Deleted = {}; ///< what the deletion is dated
};

/// Whether another replica may have the record: it came from there, or was there at the last synchronization or export,
/// whatever was changed of it since. False in an ordinary library.
bool IsKnownElsewhere(Library& library, const DeletedRecord& record);

/// Notes the deletion of a record that another replica may have, in the log of a mother or a child and inside the
/// transaction that deletes. Nothing in an ordinary library.
void LogDeletion(Library& library, const DeletedRecord& record);

/// When a child last synchronized with its mother; "none" in any other library.
Date OwnLastSynchronized(Library& library);

} // namespace qb
