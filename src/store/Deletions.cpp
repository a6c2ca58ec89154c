#include "store/Deletions.h"

#include "store/ReplicaLog.h"

#include <algorithm>

namespace qb {

using namespace Qt::StringLiterals;

Date OwnLastSynchronized(Library& library)
{
    if (!library.IsChildReplica())
        return {};
    return library.QueryValue(u"SELECT LastSynchronized FROM Properties"_s).ToDate();
}

Date DeletionCutOff(Library& library)
{
    Date cutOff = OwnLastSynchronized(library);
    if (library.IsMotherReplica())
        cutOff = std::max(cutOff, library.QueryValue(u"SELECT max(LastSynchronized) FROM ChildCopies"_s).ToDate());
    return cutOff;
}

bool IsKnownElsewhere(Library& library, const DeletedRecord& record)
{
    if (!library.IsReplicated())
        return false;
    const bool isFromMother = record.MotherRecord > 0 && (record.Table != u"ItemLinks"_s || record.MotherSecond > 0);
    ReplicaLog log(library);
    // A date that was given to it after an exchange may be later than that of the export that took it along.
    return isFromMother || record.Added.ToDate() <= library.LastOwnStamp()
           || log.Has(ReplicaEvent::Arrived, record.Table, record.Record)
           || log.Has(ReplicaEvent::Changed, record.Table, record.Record);
}

void LogDeletion(Library& library, const DeletedRecord& record)
{
    if (IsKnownElsewhere(library, record))
        ReplicaLog(library).Note({.Event = ReplicaEvent::Deleted,
                                  .Table = record.Table,
                                  .Record = record.Record,
                                  .Second = record.Second,
                                  .MotherRecord = std::max(record.MotherRecord, qint64(0)),
                                  .MotherSecond = std::max(record.MotherSecond, qint64(0)),
                                  .Moment = record.Deleted,
                                  .RowDate = record.Deleted});
}

} // namespace qb
