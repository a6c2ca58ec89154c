#pragma once

#include "panels/TreeNodes.h"
#include "platform/dao/Database.h"

#include <chrono>
#include <functional>
#include <vector>

namespace qb {

/// What the reading of a tree may take: a hundred times what one of a million items does.
inline constexpr std::chrono::milliseconds LongestTreeTime = std::chrono::seconds(20);

/// Siblings that were read one after the other.
struct SiblingRows {
    qint64 Parent;
    size_t Count;
};

/// Adds a node at top level for each item of a library, with its description as the tag. Returns their parents, in the
/// order of the nodes. Raises 3059 when a damaged table has no end.
std::vector<SiblingRows> ReadTreeRows(Database& database, TreeNodes& nodes, TreeImage image,
                                      std::chrono::milliseconds atMost = LongestTreeTime);

/// Puts the nodes that were read under their parents; the root stands before them. A node for which there is none, or
/// which would stand below itself, is told to @p lost; without that, the error ends it all.
void PutUnderParents(TreeNodes& nodes, const std::vector<SiblingRows>& rows,
                     const std::function<void(const TreeNode&)>& lost = {});

/// Reads all items of a library into @p nodes, below a root of the title @p root, children in
/// the order of the tree. Returns the items that have no place because their parent is missing
/// or they stand below themselves; they stay beside the root. Raises 3059 when a damaged table has no end.
std::vector<qint64> LoadTree(Database& database, TreeNodes& nodes, const QString& root,
                             std::chrono::milliseconds atMost = LongestTreeTime);

} // namespace qb
