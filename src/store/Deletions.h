#pragma once

#include "store/Library.h"

namespace qb {

/// The moment before which a row is known to another replica, so that its deletion must be
/// recorded for it: the later of the library's own last synchronization, in a child, and the
/// latest of its children's, in a mother. "None" in an ordinary library.
Date DeletionCutOff(Library& library);

/// When a child last synchronized with its mother; "none" in any other library.
Date OwnLastSynchronized(Library& library);

} // namespace qb
