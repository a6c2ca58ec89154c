#pragma once

#include "panels/TreeNodes.h"
#include "panels/ui/SteadyTreeView.h"

#include <QTimer>
#include <functional>

namespace qb {

/// Decides about a drag in the tree. Lengths are in twips.
struct TreeDragRules {
    std::function<bool(TreeNode& node)> Start;
    std::function<bool(const TreeNode* node, int y, int treeHeight)> Over;
    std::function<void()> Tick;
    std::function<bool()> Drop;
    std::function<void()> Complete;
};

/// The control that draws the item tree: an image a node, titles that can be typed, a drag that
/// opens and scrolls.
class NodeTreeView : public SteadyTreeView {
    Q_OBJECT

public:
    explicit NodeTreeView(TreeNodes& nodes, QWidget* parent = nullptr);

    void SetDragRules(const TreeDragRules& rules) { m_drag = rules; }
    const TreeDragRules& DragRules() const { return m_drag; }
    /// How data that is dragged is marked.
    void SetDragFormat(const QString& format) { m_dragFormat = format; }
    void SetDropHighlight(const TreeNode* node);
    void StartLabelEdit(const TreeNode& node);
    void EndLabelEdit();
    bool IsEditingLabel() const { return state() == EditingState; }

Q_SIGNALS:
    /// Another title was typed, and not cancelled. The node still has the old one: whoever hears this sets the new
    /// one, or refuses it.
    void LabelEdited(qb::TreeNode* node, const QString& text);
    /// The editor of a title has closed, whether or not the title was changed; @p cancelled by Escape.
    void LabelEditEnded(qb::TreeNode* node, bool cancelled);
    void RightClicked(qb::TreeNode* node, const QPoint& place);
    void DeletePressed(qb::TreeNode* node);
    void InsertPressed();

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void startDrag(Qt::DropActions actions) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dragLeaveEvent(QDragLeaveEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    void drawRow(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override;

private:
    TreeNode* Current() const { return m_nodes.NodeAt(currentIndex()); }
    void GoByKey(QKeyEvent* event);
    void ExpandBelow(const TreeNode& node);
    bool IsOurs(const QDropEvent& event) const;

    TreeNodes& m_nodes;
    TreeDragRules m_drag;
    QString m_dragFormat;
    QPersistentModelIndex m_highlight;
    QPersistentModelIndex m_pressed; ///< what the mouse has picked up
    QTimer tmrDragTimer;
};

} // namespace qb
