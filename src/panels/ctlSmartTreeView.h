#pragma once

#include "panels/ItemTreeView.h"

#include <QWidget>

namespace qb {

class NodeTreeView;

/// The panel with the item tree.
class ctlSmartTreeView : public QWidget, public ItemTreeView {
    Q_OBJECT

public:
    explicit ctlSmartTreeView(QWidget* parent = nullptr);

    TreeNodes& Nodes() override { return m_nodes; }
    TreeNode* SelectedItem() const override;
    void SelectItem(TreeNode& node) override;
    void EnsureVisible(TreeNode& node) override;
    void SetExpanded(TreeNode& node, bool expanded) override;
    void FocusTree() override;
    void SetTreeVisible(bool visible) override;

    void StartLabelEdit(TreeNode& node) override;
    void EndLabelEdit() override;
    void RemoveNode(TreeNode& node) override;
    void SetDropHighlight(const TreeNode* node) override;
    void ScrollLines(int lines) override;

    NodeTreeView* Tree() const { return m_tree; }

Q_SIGNALS:
    /// The user has gone to a node.
    void NodeClick(qb::TreeNode* node);
    void NodeExpanded(qb::TreeNode* node);
    void NodeCollapsed(qb::TreeNode* node);
    /// The tree has been drawn with nodes in it, for the first time.
    void TreePainted();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    TreeNodes m_nodes;
    NodeTreeView* m_tree;
    bool m_selecting = false;
};

} // namespace qb
