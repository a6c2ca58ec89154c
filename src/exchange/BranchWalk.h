#pragma once

#include "store/Library.h"

#include <vector>

namespace qb {

/// An item of a branch, and the item of the branch that it stands below; 0: none.
struct BranchNode {
    qint64 Item;
    qint64 Parent;
};

/// An item and everything below it, depth first, siblings in the order of their titles; with @p item 0 all of the
/// library, with the items, too, that no way leads to from the root. A cycle in damaged rows is walked once. Raises an
/// error when there is no such item.
std::vector<BranchNode> NodesOfBranch(Library& library, qint64 item);

} // namespace qb
