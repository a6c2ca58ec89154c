#include "session/LoadTree.h"

#include "platform/system/RuntimeError.h"
#include "session/TreeRowReader.h"

namespace qb {

std::vector<SiblingRows> ReadTreeRows(Database& database, TreeNodes& nodes, TreeImage image,
                                      std::chrono::milliseconds atMost)
{
    std::vector<SiblingRows> siblings;
    TreeRowReader reader(database, atMost);
    for (TreeRows rows; reader.Next(rows);) {
        const char* text = rows.Texts.data();
        for (const TreeRows::Row& row : rows.Rows) {
            const char* description = text + row.TitleSize;
            nodes.AddRow(row.Id, {text, row.TitleSize}, {description, row.DescriptionSize}, image);
            text = description + row.DescriptionSize;
            if (siblings.empty() || siblings.back().Parent != row.Parent)
                siblings.push_back({row.Parent, 0});
            ++siblings.back().Count;
        }
    }
    return siblings;
}

void PutUnderParents(TreeNodes& nodes, const std::vector<SiblingRows>& rows,
                     const std::function<void(const TreeNode&)>& lost)
{
    auto node = std::next(nodes.All().begin());
    for (const SiblingRows& siblings : rows) {
        TreeNode* parent = nodes.Find(siblings.Parent);
        for (size_t i = 0; i < siblings.Count; ++i, ++node) {
            try {
                nodes.PutUnder(*node, parent ? *parent : nodes[siblings.Parent]);
            } catch (const RuntimeError&) {
                if (!lost)
                    throw;
                lost(*node);
            }
        }
    }
}

std::vector<qint64> LoadTree(Database& database, TreeNodes& nodes, const QString& root,
                             std::chrono::milliseconds atMost)
{
    nodes.BeginBuild();
    nodes.Clear();
    nodes.Add(0, root, TreeImage::OBJECTS);
    std::vector<qint64> lost;
    PutUnderParents(nodes, ReadTreeRows(database, nodes, TreeImage::CHILD, atMost),
                    [&lost](const TreeNode& node) { lost.push_back(node.Id); });
    for (TreeNode& node : nodes.All())
        nodes.SortChildren(node);
    nodes.EndBuild();
    return lost;
}

} // namespace qb
