#pragma once

#include "panels/FilteredNodes.h"

#include <QStackedWidget>
#include <QTimer>

class QLabel;
class QLineEdit;
class QTreeView;

namespace qb {

class NodeTreeView;

/// The whole tree, or in its place the nodes whose titles match what is typed into a box, which the panel lays out.
class FilteredTree : public QStackedWidget {
    Q_OBJECT

public:
    /// Takes @p tree in, whose nodes are @p nodes.
    FilteredTree(TreeNodes& nodes, NodeTreeView& tree);

    QLineEdit* Box() const { return txtFilter; }
    QTreeView* Found() const { return m_found; }
    /// Not the whole tree is shown.
    bool IsFiltering() const;
    /// Puts the caret into the box.
    void StartFilter();
    /// Shows the whole tree again.
    void EndFilter();
    /// Marks a node among the matches, if it is one.
    void Select(const TreeNode* node);
    /// The keys go to the tree that is shown; to the box where nothing matches.
    void TakeFocus();

Q_SIGNALS:
    /// The user has gone to a match.
    void NodeChosen(qb::TreeNode* node);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void MakeFound();
    void MakeBox();
    void ApplyFilter();
    void GoToFound(const QModelIndex& index);
    bool FilterKey(QObject* watched, int key);

    TreeNodes& m_nodes;
    FilteredNodes m_matches;
    NodeTreeView& m_tree;
    QTimer m_refilter; ///< once the changes of the nodes are over
    QLineEdit* txtFilter = nullptr;
    QTreeView* m_found = nullptr;
    QLabel* m_noMatch = nullptr; ///< in the place of what is found, when that is nothing
};

} // namespace qb
