#include "store/Deletions.h"

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

} // namespace qb
