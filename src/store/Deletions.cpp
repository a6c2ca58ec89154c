#include "store/Deletions.h"

#include "store/SessionValues.h"

#include <algorithm>

namespace qb {

using namespace Qt::StringLiterals;

Date OwnLastSynchronized(Database& database)
{
    if (!Session().IsChildReplica)
        return {};
    return database.QueryValue(u"SELECT LastSynchronized FROM Properties"_s).ToDate();
}

Date DeletionCutOff(Database& database)
{
    Date cutOff = OwnLastSynchronized(database);
    if (Session().IsMotherReplica)
        cutOff = std::max(cutOff, database.QueryValue(u"SELECT max(LastSynchronized) FROM ChildCopies"_s).ToDate());
    return cutOff;
}

} // namespace qb
