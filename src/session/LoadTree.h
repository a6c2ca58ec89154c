#pragma once

#include "panels/TreeNodes.h"
#include "platform/dao/Database.h"

#include <chrono>
#include <vector>

namespace qb {

/// What the reading of a tree may take: a hundred times what one of a million items does.
inline constexpr std::chrono::milliseconds LongestTreeTime = std::chrono::seconds(20);

/// Adds a node at top level for each item of a library, with its description as the tag. Returns the IDs of their
/// parents, in the order of the nodes. Raises 3059 when a damaged table has no end.
std::vector<qint64> ReadTreeRows(Database& database, TreeNodes& nodes, TreeImage image,
                                 std::chrono::milliseconds atMost = LongestTreeTime);

/// Finds the parents of nodes that are asked for one after the other: siblings come in a row.
class ParentLookup {
public:
    explicit ParentLookup(TreeNodes& nodes) : m_nodes(nodes) {}
    /// Raises 35601 where there is no such node.
    TreeNode& operator()(qint64 id);

private:
    TreeNodes& m_nodes;
    TreeNode* m_last = nullptr;
};

/// Reads all items of a library into @p nodes, below a root of the title @p root, children in
/// the order of the tree. Returns the items that have no place because their parent is missing
/// or they stand below themselves; they stay beside the root. Raises 3059 when a damaged table has no end.
std::vector<qint64> LoadTree(Database& database, TreeNodes& nodes, const QString& root,
                             std::chrono::milliseconds atMost = LongestTreeTime);

} // namespace qb
