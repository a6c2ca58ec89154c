#pragma once

#include "panels/ItemTreeView.h"

#include <QWidget>

class QAction;
class QPlainTextEdit;
class QSplitter;
class QToolBar;

namespace qb {

class FilteredTree;
class LinkBar;
class NodeTreeView;
class TreeBar;

/// The panel with the item tree: a bar with a box that narrows it to matching titles and with the links of the
/// current item, the tree, and the item's description below it.
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

    void SetLinkMode(qb::LinkMode mode) override;
    bool InPermanentLinkMode() const override;
    void SetInPermanentLinkMode(bool permanent);
    void ClearLinkCombo() override;
    void AddNewLinkToCombo(const CLink& link) override;
    void UpdateLinkItemInCombo(const CLink& link) override;
    void UpdateDescription(const QString& text) override;

    NodeTreeView* Tree() const { return m_tree; }
    /// The node at a place of the tree, in pixels; null where there is none.
    TreeNode* HitTest(int x, int y) const;
    qb::LinkMode LinkMode() const;

    /// Whether the user has shrunk the panel to its first button.
    bool TreeHidden() const { return m_hidden; }
    void SetTreeHidden(bool hidden);
    /// Hides the tree for a while, whatever the user wants at other times.
    void AutoHideTree(bool hide);
    bool IsShrunk() const { return m_hidden || m_autoHidden; }
    /// The width of a shrunk panel, in pixels.
    int ShrunkWidth() const;
    bool DescriptionHidden() const { return m_descriptionHidden; }
    void SetDescriptionHidden(bool hidden);
    /// Where the description begins, in pixels from the top of the tree.
    int SeparatorPosition() const;
    void SetSeparatorPosition(int position);
    /// How wide the buttons with the filter are in the bar over the tree, in pixels, where the links stand beside them.
    int CoolBarFirstBandWidth() const;
    void SetCoolBarFirstBandWidth(int width);

    /// Whether links of the current item can be made (@p adding) and removed.
    void EnableLinking(bool adding, bool removing);

    /// Puts the caret into the box that filters.
    void StartFilter();
    /// Shows the whole tree again.
    void EndFilter();

Q_SIGNALS:
    /// The user has gone to a node.
    void NodeClick(qb::TreeNode* node);
    void NodeExpanded(qb::TreeNode* node);
    void NodeCollapsed(qb::TreeNode* node);
    /// The tree has been drawn with nodes in it, for the first time.
    void TreePainted();
    /// The panel has become as small as its first button, or large again.
    void Shrinking(bool shrinks);
    void LinkModeStarted(qb::LinkMode mode);
    void LinkModeEnded();
    /// In a link mode the keys have gone to a node, which Enter would link with.
    void LinkTargetChosen(qb::TreeNode* node);
    /// The user wants to go to the linked item of this ID, or to remove the link to it.
    void LinkFollowed(qint64 item);
    void LinkRemoveAsked(qint64 item);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void ConnectTree();
    void ShowShrunk();

    TreeNodes m_nodes;
    NodeTreeView* m_tree;
    FilteredTree* m_trees; ///< the whole one, or what the filter finds
    QToolBar* tbrTree;     ///< the first band of the bar
    LinkBar* tbrLinks;     ///< the second one
    TreeBar* m_bar;
    QAction* m_shrink = nullptr;
    QAction* m_description = nullptr;
    QSplitter* m_splitter;
    QPlainTextEdit* txtDescription;
    bool m_hidden = false;
    bool m_autoHidden = false;
    bool m_descriptionHidden = false;
    bool m_selecting = false;
};

} // namespace qb
