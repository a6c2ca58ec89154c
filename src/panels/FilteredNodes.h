#pragma once

#include "panels/TreeNodes.h"

namespace qb {

/// The nodes of a tree whose titles hold a text, with their ancestors, as a tree of its own. It is a
/// picture of one moment: when the nodes change it has to be filled anew.
class FilteredNodes : public QAbstractItemModel {
    Q_OBJECT

public:
    explicit FilteredNodes(TreeNodes& nodes, QObject* parent = nullptr);

    /// Takes the nodes whose titles contain @p text, without regard to case. An empty text takes none.
    void SetFilter(const QString& text);
    /// How many titles match.
    int MatchCount() const { return m_matches; }
    /// The first match from the top; null when there is none.
    TreeNode* FirstMatch() const;
    /// Whether the title itself matches, not only one below it.
    bool IsMatch(const QModelIndex& index) const
    {
        return index.isValid() && m_entries[size_t(index.internalId())].Matches;
    }

    TreeNode* NodeAt(const QModelIndex& index) const;
    /// The place of a node; invalid when it is filtered out.
    QModelIndex IndexOf(const TreeNode* node) const;

    QModelIndex index(int row, int column, const QModelIndex& parent = {}) const override;
    QModelIndex parent(const QModelIndex& child) const override;
    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;

private:
    struct Entry {
        TreeNode* Node;
        int Parent; ///< index of its entry; -1 at top level
        int Row = 0;
        bool Matches = false;
        std::vector<int> Children{};
    };
    int EntryOf(TreeNode& node);
    void OrderChildren(std::vector<int>& children);
    const std::vector<int>& ChildrenOf(const QModelIndex& parent) const;

    TreeNodes& m_nodes;
    std::vector<Entry> m_entries;
    std::vector<int> m_topLevel;
    QHash<const TreeNode*, int> m_byNode;
    int m_matches = 0;
};

} // namespace qb
