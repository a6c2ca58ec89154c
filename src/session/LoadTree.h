#pragma once

#include "panels/TreeNodes.h"
#include "platform/dao/Database.h"

#include <vector>

namespace qb {

/// Reads all items of a library into @p nodes, below a root of the title @p root, children in
/// the order of the tree. Returns the items that have no place because their parent is missing
/// or they stand below themselves; they stay beside the root.
std::vector<qint64> LoadTree(Database& database, TreeNodes& nodes, const QString& root);

} // namespace qb
