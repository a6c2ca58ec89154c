#include "session/LoadTree.h"

#include "platform/dao/StatementLimit.h"
#include "platform/system/RuntimeError.h"
#include "session/ItemTree.h"

namespace qb {

std::vector<qint64> ReadTreeRows(Database& database, TreeNodes& nodes, TreeImage image,
                                 std::chrono::milliseconds atMost)
{
    const StatementLimit limit(database, atMost);
    std::vector<qint64> parents;
    Statement rows = database.Query(ItemTree::TreeQuery());
    while (rows.Step()) {
        nodes.Add(rows.Long(0), rows.Text(2), image).Tag = rows.Text(3);
        parents.push_back(rows.Long(1));
    }
    return parents;
}

TreeNode& ParentLookup::operator()(qint64 id)
{
    if (!m_last || m_last->Id != id)
        m_last = &m_nodes[id];
    return *m_last;
}

std::vector<qint64> LoadTree(Database& database, TreeNodes& nodes, const QString& root,
                             std::chrono::milliseconds atMost)
{
    nodes.BeginBuild();
    nodes.Clear();
    nodes.Add(0, root, TreeImage::OBJECTS);
    const std::vector<qint64> parents = ReadTreeRows(database, nodes, TreeImage::CHILD, atMost);
    std::vector<qint64> lost;
    ParentLookup parentOf(nodes);
    auto parent = parents.begin();
    for (TreeNode& node : nodes.All()) {
        if (node.IsRoot())
            continue;
        try {
            nodes.PutUnder(node, parentOf(*parent++));
        } catch (const RuntimeError&) {
            lost.push_back(node.Id);
        }
    }
    for (TreeNode& node : nodes.All())
        nodes.SortChildren(node);
    nodes.EndBuild();
    return lost;
}

} // namespace qb
