#pragma once

#include "panels/LinkMode.h"
#include "panels/TreeNodes.h"
#include "store/CLinks.h"

namespace qb {

/// What the item tree's logic needs of the control that shows the tree.
class ItemTreeView {
public:
    virtual ~ItemTreeView() = default;

    /// The nodes that the control shows, which live as long as it does.
    virtual TreeNodes& Nodes() = 0;
    /// The selected node, or null.
    virtual TreeNode* SelectedItem() const = 0;
    /// Selects a node; this is no click on it.
    virtual void SelectItem(TreeNode& node) = 0;
    virtual void EnsureVisible(TreeNode& node) = 0;
    virtual void SetExpanded(TreeNode& node, bool expanded) = 0;
    virtual void FocusTree() = 0;
    virtual void SetTreeVisible(bool visible) = 0;
    /// Lets the user type another title for a node.
    virtual void StartLabelEdit(TreeNode& node) = 0;
    /// Takes over a title that is being typed.
    virtual void EndLabelEdit() = 0;
    /// Takes a node, with all below it, off the tree; what is selected then is no click.
    virtual void RemoveNode(TreeNode& node) = 0;
    /// Marks the node that a drop would go to; null: none.
    virtual void SetDropHighlight(const TreeNode* node) = 0;
    /// Scrolls by lines, up by negative ones.
    virtual void ScrollLines(int lines) = 0;

    // The links of the current item

    /// Shows that the next click names the other item of a link.
    virtual void SetLinkMode(LinkMode mode) = 0;
    /// The mode stays when a link has been made.
    virtual bool InPermanentLinkMode() const = 0;
    /// The list of linked items is empty.
    virtual void ClearLinkCombo() = 0;
    virtual void AddNewLinkToCombo(const CLink& link) = 0;
    virtual void UpdateLinkItemInCombo(const CLink& link) = 0;
    /// Shows the description of the current item.
    virtual void UpdateDescription(const QString& text) = 0;
};

} // namespace qb
