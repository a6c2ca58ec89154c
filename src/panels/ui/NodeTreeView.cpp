#include "panels/ui/NodeTreeView.h"

#include "panels/ui/NodeLook.h"
#include "support/ui/Icons.h"

#include <QDrag>
#include <QDragMoveEvent>
#include <QLineEdit>
#include <QMimeData>
#include <QPainter>
#include <algorithm>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

constexpr int TwipsPerPixel = 15;

/// Lets the title of a node be typed.
class NodeDelegate : public NodeLook {
public:
    NodeDelegate(NodeTreeView& view, TreeNodes& nodes) : NodeLook(&view), m_view(view), m_nodes(nodes) {}

    QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem&, const QModelIndex& index) const override
    {
        static constexpr int LongestTyped = 50;
        auto* editor = new QLineEdit(parent);
        editor->setObjectName(u"txtLabelEdit"_s);
        editor->setFrame(true);
        // What is there already stays whole.
        const auto limit = [editor](const QString& text) {
            editor->setMaxLength(std::max<int>(LongestTyped, int(text.size())));
        };
        limit(index.data(Qt::EditRole).toString());
        connect(editor, &QLineEdit::textEdited, editor, limit);
        return editor;
    }

    void setModelData(QWidget* editor, QAbstractItemModel*, const QModelIndex& index) const override
    {
        const QString text = qobject_cast<QLineEdit*>(editor)->text();
        if (text != index.data(Qt::EditRole).toString())
            Q_EMIT m_view.LabelEdited(m_nodes.NodeAt(index), text);
    }

private:
    NodeTreeView& m_view;
    TreeNodes& m_nodes;
};

} // namespace

NodeTreeView::NodeTreeView(TreeNodes& nodes, QWidget* parent) : SteadyTreeView(parent), m_nodes(nodes)
{
    constexpr int DragInterval = 100; // milliseconds
    setHeaderHidden(true);
    setUniformRowHeights(true); // the heights of 100,000 rows need not be asked for
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setFrameShape(QFrame::NoFrame);
    setItemDelegate(new NodeDelegate(*this, nodes));
    setModel(&nodes);
    setDragEnabled(true);
    setAcceptDrops(true);
    setDropIndicatorShown(false);
    setAutoScroll(false); // the drag has a way of its own
    tmrDragTimer.setInterval(DragInterval);
    const auto editorClosed = [this](QWidget*, QAbstractItemDelegate::EndEditHint hint) {
        // Once the text has been taken over, if it was.
        const bool cancelled = hint == QAbstractItemDelegate::RevertModelCache;
        if (TreeNode* node = Current())
            QTimer::singleShot(0, this, [this, id = node->Id, cancelled] {
                if (TreeNode* edited = m_nodes.Find(id))
                    Q_EMIT LabelEditEnded(edited, cancelled);
            });
    };
    connect(itemDelegate(), &QAbstractItemDelegate::closeEditor, this, editorClosed);
    connect(&tmrDragTimer, &QTimer::timeout, this, [this] { m_drag.Tick(); });
}

void NodeTreeView::StartLabelEdit(const TreeNode& node)
{
    edit(m_nodes.IndexOf(&node));
}

void NodeTreeView::EndLabelEdit()
{
    if (auto* editor = findChild<QLineEdit*>(u"txtLabelEdit"_s); editor && state() == EditingState) {
        commitData(editor);
        closeEditor(editor, QAbstractItemDelegate::NoHint);
    }
}

void NodeTreeView::SetDropHighlight(const TreeNode* node)
{
    m_highlight = m_nodes.IndexOf(node);
    viewport()->update();
}

void NodeTreeView::drawRow(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const
{
    SteadyTreeView::drawRow(painter, option, index);
    if (!m_highlight.isValid() || index != m_highlight)
        return;
    QColor fill = palette().color(QPalette::Highlight);
    painter->setPen(fill);
    constexpr int Veil = 60;
    fill.setAlpha(Veil);
    painter->setBrush(fill);
    painter->drawRect(option.rect.adjusted(0, 0, -1, -1));
}

// Mouse and keys

void NodeTreeView::mousePressEvent(QMouseEvent* event)
{
    m_pressed = indexAt(event->position().toPoint());
    if (event->button() != Qt::RightButton) // which only asks for the menu of the selected node
        SteadyTreeView::mousePressEvent(event);
}

void NodeTreeView::contextMenuEvent(QContextMenuEvent* event)
{
    // The mouse points at a node of its own; the key means the selected one.
    if (event->reason() == QContextMenuEvent::Mouse && indexAt(event->pos()).isValid())
        setCurrentIndex(indexAt(event->pos()));
    if (TreeNode* node = Current()) {
        const QPoint place = event->reason() == QContextMenuEvent::Mouse ? event->pos()
                                                                         : visualRect(currentIndex()).center();
        Q_EMIT RightClicked(node, viewport()->mapToGlobal(place));
    }
}

void NodeTreeView::keyPressEvent(QKeyEvent* event)
{
    TreeNode* node = Current();
    if (event->key() == Qt::Key_Delete && event->modifiers() == Qt::NoModifier && node && !node->IsRoot())
        Q_EMIT DeletePressed(node);
    else if (event->key() == Qt::Key_Insert && event->modifiers() == Qt::NoModifier)
        Q_EMIT InsertPressed();
    else if (event->key() == Qt::Key_Asterisk && node)
        ExpandBelow(*node);
    else if (event->key() == Qt::Key_Plus && node && node->Children.empty())
        event->accept(); // there is nothing to open
    else
        GoByKey(event);
}

/// The row that a key goes to is seen; dragging has a way of scrolling of its own, so the tree has none.
void NodeTreeView::GoByKey(QKeyEvent* event)
{
    static constexpr int moves[] = {Qt::Key_Up,   Qt::Key_Down, Qt::Key_PageUp, Qt::Key_PageDown,
                                    Qt::Key_Home, Qt::Key_End,  Qt::Key_Left,   Qt::Key_Right};
    const QModelIndex before = currentIndex();
    SteadyTreeView::keyPressEvent(event);
    if (currentIndex() != before || std::find(std::begin(moves), std::end(moves), event->key()) != std::end(moves))
        scrollTo(currentIndex());
}

/// Opens a branch with all branches in it. What has no children is none, and is not opened.
void NodeTreeView::ExpandBelow(const TreeNode& node)
{
    scheduleDelayedItemsLayout(); // once, when all are open
    std::vector<const TreeNode*> left{&node};
    while (!left.empty()) {
        const TreeNode* at = left.back();
        left.pop_back();
        left.insert(left.end(), at->Children.begin(), at->Children.end());
        if (!at->Children.empty())
            expand(m_nodes.IndexOf(at));
    }
}

// Drag and drop

void NodeTreeView::startDrag(Qt::DropActions)
{
    TreeNode* node = Current();
    // Where the press has not led to another item, as when the one before had to stay, nothing is dragged.
    if (!node || currentIndex() != m_pressed || !m_drag.Start || !m_drag.Start(*node))
        return;
    auto* dragged = new QMimeData;
    dragged->setData(m_dragFormat, node->Key().toUtf8());
    auto* drag = new QDrag(this); // the toolkit deletes it
    drag->setMimeData(dragged);
    drag->setPixmap(IconNamed(ImageKey(node->Image)).pixmap(style()->pixelMetric(QStyle::PM_SmallIconSize)));
    tmrDragTimer.start();
    drag->exec(Qt::MoveAction);
    tmrDragTimer.stop();
    m_drag.Complete();
}

bool NodeTreeView::IsOurs(const QDropEvent& event) const
{
    return event.source() == this && event.mimeData()->hasFormat(m_dragFormat);
}

void NodeTreeView::dragEnterEvent(QDragEnterEvent* event)
{
    event->setAccepted(IsOurs(*event));
}

void NodeTreeView::dragMoveEvent(QDragMoveEvent* event)
{
    const QPoint place = event->position().toPoint();
    const TreeNode* node = IsOurs(*event) ? m_nodes.NodeAt(indexAt(place)) : nullptr;
    event->setDropAction(Qt::MoveAction);
    event->setAccepted(m_drag.Over(node, place.y() * TwipsPerPixel, viewport()->height() * TwipsPerPixel));
}

void NodeTreeView::dragLeaveEvent(QDragLeaveEvent*)
{
    m_drag.Over(nullptr, -1, viewport()->height() * TwipsPerPixel); // neither opens nor scrolls any more
}

void NodeTreeView::dropEvent(QDropEvent* event)
{
    event->setDropAction(Qt::IgnoreAction); // the tree has moved the node itself
    event->setAccepted(IsOurs(*event) && m_drag.Drop());
}

} // namespace qb
