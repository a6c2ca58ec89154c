#include "panels/FilteredNodes.h"

#include <QStringMatcher>
#include <algorithm>

namespace qb {

FilteredNodes::FilteredNodes(TreeNodes& nodes, QObject* parent) : QAbstractItemModel(parent), m_nodes(nodes) {}

/// The entry of a node; it and its ancestors get one when they have none.
int FilteredNodes::EntryOf(TreeNode& node)
{
    std::vector<TreeNode*> missing;
    int above = -1;
    for (TreeNode* at = &node; at; at = at->Parent) {
        const auto found = m_byNode.constFind(at);
        if (found != m_byNode.constEnd()) {
            above = *found;
            break;
        }
        missing.push_back(at);
    }
    for (auto at = missing.rbegin(); at != missing.rend(); ++at) {
        const int entry = int(m_entries.size());
        m_entries.push_back({.Node = *at, .Parent = above});
        m_byNode.insert(*at, entry);
        (above < 0 ? m_topLevel : m_entries[size_t(above)].Children).push_back(entry);
        above = entry;
    }
    return above;
}

/// As they stand in the whole tree.
void FilteredNodes::OrderChildren(std::vector<int>& children)
{
    const auto row = [this](int entry) { return m_entries[size_t(entry)].Node->Row; };
    std::sort(children.begin(), children.end(), [&row](int left, int right) { return row(left) < row(right); });
    for (size_t i = 0; i < children.size(); ++i)
        m_entries[size_t(children[i])].Row = int(i);
}

void FilteredNodes::SetFilter(const QString& text)
{
    beginResetModel();
    m_entries.clear();
    m_topLevel.clear();
    m_byNode.clear();
    m_matches = 0;
    const QStringMatcher matcher(text, Qt::CaseInsensitive);
    std::vector<QChar> room;
    const auto take = [&](TreeNode& node) {
        if (node.IsRoot() || matcher.indexIn(node.Title.In(room)) < 0)
            return;
        m_entries[size_t(EntryOf(node))].Matches = true;
        ++m_matches;
    };
    if (!text.isEmpty()) {
        for (TreeNode& node : m_nodes.All()) {
            if (m_nodes.Find(node.Id) == &node) // what was removed stands there empty
                take(node);
        }
    }
    OrderChildren(m_topLevel);
    for (Entry& entry : m_entries)
        OrderChildren(entry.Children);
    endResetModel();
}

TreeNode* FilteredNodes::FirstMatch() const
{
    for (int entry = m_topLevel.empty() ? -1 : m_topLevel.front(); entry >= 0;) {
        const Entry& at = m_entries[size_t(entry)];
        if (at.Matches || at.Children.empty())
            return at.Matches ? at.Node : nullptr;
        entry = at.Children.front();
    }
    return nullptr;
}

TreeNode* FilteredNodes::NodeAt(const QModelIndex& index) const
{
    return index.isValid() ? m_entries[size_t(index.internalId())].Node : nullptr;
}

QModelIndex FilteredNodes::IndexOf(const TreeNode* node) const
{
    const auto found = m_byNode.constFind(node);
    return found == m_byNode.constEnd() ? QModelIndex()
                                        : createIndex(m_entries[size_t(*found)].Row, 0, quintptr(*found));
}

const std::vector<int>& FilteredNodes::ChildrenOf(const QModelIndex& parent) const
{
    return parent.isValid() ? m_entries[size_t(parent.internalId())].Children : m_topLevel;
}

QModelIndex FilteredNodes::index(int row, int column, const QModelIndex& parent) const
{
    const std::vector<int>& children = ChildrenOf(parent);
    if (row < 0 || row >= int(children.size()) || column != 0)
        return {};
    return createIndex(row, column, quintptr(children[size_t(row)]));
}

QModelIndex FilteredNodes::parent(const QModelIndex& child) const
{
    const int above = child.isValid() ? m_entries[size_t(child.internalId())].Parent : -1;
    return above < 0 ? QModelIndex() : createIndex(m_entries[size_t(above)].Row, 0, quintptr(above));
}

int FilteredNodes::rowCount(const QModelIndex& parent) const
{
    return int(ChildrenOf(parent).size());
}

int FilteredNodes::columnCount(const QModelIndex&) const
{
    return 1;
}

/// As the whole tree shows the node; what matches is bold.
QVariant FilteredNodes::data(const QModelIndex& index, int role) const
{
    if (!index.isValid())
        return {};
    if (role == TreeNodes::BoldRole)
        return m_entries[size_t(index.internalId())].Matches;
    return m_nodes.data(m_nodes.IndexOf(NodeAt(index)), role);
}

} // namespace qb
