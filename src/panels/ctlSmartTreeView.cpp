#include "panels/ctlSmartTreeView.h"

#include "panels/ui/NodeTreeView.h"

#include <QEvent>
#include <QScopedValueRollback>
#include <QScrollBar>
#include <QTimer>
#include <QVBoxLayout>

namespace qb {

using namespace Qt::StringLiterals;

ctlSmartTreeView::ctlSmartTreeView(QWidget* parent) : QWidget(parent), m_tree(new NodeTreeView(m_nodes))
{
    m_tree->setObjectName(u"tvwTree"_s);
    m_tree->setAccessibleName(u"Items"_s);
    m_tree->viewport()->installEventFilter(this);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_tree);
    setFocusProxy(m_tree);

    const auto click = [this](const QModelIndex& index) {
        if (index.isValid() && !m_selecting)
            Q_EMIT NodeClick(m_nodes.NodeAt(index));
    };
    // A click on the node that is selected already is a click all the same; one on a node that was
    // not left for it is over.
    connect(m_tree, &NodeTreeView::clicked, this, [this, click](const QModelIndex& index) {
        if (index == m_tree->currentIndex())
            click(index);
    });
    connect(m_tree->selectionModel(), &QItemSelectionModel::currentChanged, this, click);
    connect(m_tree, &NodeTreeView::expanded, this, [this](const QModelIndex& index) { Q_EMIT NodeExpanded(m_nodes.NodeAt(index)); });
    connect(m_tree, &NodeTreeView::collapsed, this, [this](const QModelIndex& index) { Q_EMIT NodeCollapsed(m_nodes.NodeAt(index)); });
}

TreeNode* ctlSmartTreeView::SelectedItem() const
{
    return m_nodes.NodeAt(m_tree->currentIndex());
}

void ctlSmartTreeView::SelectItem(TreeNode& node)
{
    const QScopedValueRollback guard(m_selecting, true);
    m_tree->setCurrentIndex(m_nodes.IndexOf(&node));
}

void ctlSmartTreeView::EnsureVisible(TreeNode& node)
{
    m_tree->scrollTo(m_nodes.IndexOf(&node));
}

void ctlSmartTreeView::SetExpanded(TreeNode& node, bool expanded)
{
    m_tree->setExpanded(m_nodes.IndexOf(&node), expanded);
}

void ctlSmartTreeView::FocusTree()
{
    m_tree->setFocus();
}

void ctlSmartTreeView::SetTreeVisible(bool visible)
{
    m_tree->setVisible(visible);
}

void ctlSmartTreeView::StartLabelEdit(TreeNode& node)
{
    m_tree->StartLabelEdit(node);
}

void ctlSmartTreeView::EndLabelEdit()
{
    m_tree->EndLabelEdit();
}

void ctlSmartTreeView::RemoveNode(TreeNode& node)
{
    const QScopedValueRollback guard(m_selecting, true); // the tree selects another one, which is no click
    m_nodes.Remove(node);
}

void ctlSmartTreeView::SetDropHighlight(const TreeNode* node)
{
    m_tree->SetDropHighlight(node);
}

void ctlSmartTreeView::ScrollLines(int lines)
{
    m_tree->verticalScrollBar()->setValue(m_tree->verticalScrollBar()->value() + lines);
}

bool ctlSmartTreeView::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::Paint && m_nodes.Count() > 0) {
        m_tree->viewport()->removeEventFilter(this);
        // Told once the event, and with it the drawing, is over.
        QTimer::singleShot(0, this, &ctlSmartTreeView::TreePainted);
    }
    return QWidget::eventFilter(watched, event);
}

} // namespace qb
