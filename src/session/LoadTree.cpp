#include "session/LoadTree.h"

#include "platform/dao/StatementLimit.h"
#include "platform/system/RuntimeError.h"
#include "session/ItemTree.h"

namespace qb {

std::vector<qint64> LoadTree(Database& database, TreeNodes& nodes, const QString& root,
                             std::chrono::milliseconds atMost)
{
    const StatementLimit limit(database, atMost);
    nodes.BeginBuild();
    nodes.Clear();
    nodes.Add(0, root, TreeImage::OBJECTS);
    std::vector<qint64> parents{0};
    Statement rows = database.Query(ItemTree::TreeQuery());
    while (rows.Step()) {
        nodes.Add(rows.Long(0), rows.Text(2), TreeImage::CHILD).Tag = rows.Text(3);
        parents.push_back(rows.Long(1));
    }
    std::vector<qint64> lost;
    for (size_t i = 1; i < parents.size(); ++i) {
        TreeNode& node = nodes.All()[i];
        try {
            nodes.PutUnder(node, nodes[parents[i]]);
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
