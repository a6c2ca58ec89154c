#pragma once

#include "panels/ItemTreeView.h"
#include "session/ItemCommands.h"
#include "session/ItemTree.h"
#include "session/SessionState.h"

namespace qb {

/// A move of an item in the tree by dragging it: what may be dragged where, the branches that
/// open and the tree that scrolls meanwhile, and the drop.
class ItemDrag {
public:
    /// Nothing is dragged yet. Everything must outlive this; @p commands saves the current item before it is moved.
    ItemDrag(SessionState& session, ItemTreeView& view, ItemTree& tree, ItemCommands& commands);

    /// The format of what is dragged: the key of the node, as bytes.
    static const QString& TreeClipboardFormat();

    /// A node is picked up. False when it must not be dragged at all.
    bool Start(TreeNode& node);
    /// The pointer is over a node (null: over none) at a height in twips of the tree's. True when a
    /// drop is accepted here.
    bool Over(const TreeNode* node, int y, int treeHeight);
    /// Every 100 milliseconds while dragging.
    void Tick();
    /// The drop. True when the item was moved.
    bool Drop();
    /// The drag has ended, with or without a drop.
    void Complete();
    bool IsDragging() const { return m_dragging; }

private:
    void SetHighlight(TreeNode* node);
    bool MoveTo(TreeNode& node, TreeNode& target, bool stamp);

    SessionState& m_session;
    ItemTreeView& m_view;
    ItemTree& m_tree;
    ItemCommands& m_commands;
    qint64 m_draggedNode = 0; ///< ID of the item; 0: none
    qint64 m_highlight = -1;  ///< ID of the node that would take the drop; -1: none
    bool m_dropCancelled = false;
    bool m_dragging = false;
    int m_scrollDirection = 0; ///< -1 up, 1 down
    int m_hoverTicks = 0;
};

} // namespace qb
