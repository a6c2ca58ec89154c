#pragma once

#include "store/CCodeItem.h"

#include <vector>

namespace qb {

/// What a save of an item has come to.
struct MergedSave {
    bool Saved = false;        ///< otherwise the row is as it was, and what was changed here still waits
    std::vector<size_t> Taken; ///< columns that say now what another program had written to them
};

/// Commits an item whose row another program may have written to since it was read. What was not changed
/// here is taken from the row. What was changed on both sides is kept as it is here, but for texts: there
/// the user is asked, with both side by side. Colours alone are no change of a text of code. Raises 3167
/// when the row is gone.
MergedSave SaveMerged(CCodeItem& item, Library& library);

} // namespace qb
