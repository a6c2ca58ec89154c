#include "panels/ctlSmartTreeView.h"

#include "support/ui/Icons.h"

#include <QEvent>
#include <QScopedValueRollback>
#include <QStyledItemDelegate>
#include <QTimer>
#include <QTreeView>
#include <QVBoxLayout>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

/// Draws a node with the image of its state.
class NodeDelegate : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;

protected:
    void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override
    {
        QStyledItemDelegate::initStyleOption(option, index);
        const bool open = option->state & QStyle::State_Open;
        const int image = index.data(open ? TreeNodes::ExpandedImageRole : TreeNodes::ImageRole).toInt();
        option->features |= QStyleOptionViewItem::HasDecoration;
        option->icon = IconNamed(ImageKey(TreeImage(image)));
        option->decorationSize = option->widget->style()->pixelMetric(QStyle::PM_SmallIconSize) * QSize(1, 1);
        option->font.setBold(index.data(TreeNodes::BoldRole).toBool());
    }
};

} // namespace

ctlSmartTreeView::ctlSmartTreeView(QWidget* parent) : QWidget(parent), m_tree(new QTreeView)
{
    m_tree->setObjectName(u"tvwTree"_s);
    m_tree->setAccessibleName(u"Items"_s);
    m_tree->setHeaderHidden(true);
    m_tree->setUniformRowHeights(true); // the heights of 100,000 rows need not be asked for
    m_tree->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_tree->setFrameShape(QFrame::NoFrame);
    m_tree->setItemDelegate(new NodeDelegate(m_tree));
    m_tree->setModel(&m_nodes);
    m_tree->viewport()->installEventFilter(this);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_tree);
    setFocusProxy(m_tree);

    const auto click = [this](const QModelIndex& index) {
        if (index.isValid() && !m_selecting)
            Q_EMIT NodeClick(m_nodes.NodeAt(index));
    };
    // A click on the node that is selected already is a click all the same.
    connect(m_tree, &QTreeView::clicked, this, click);
    connect(m_tree->selectionModel(), &QItemSelectionModel::currentChanged, this, click);
    connect(m_tree, &QTreeView::expanded, this, [this](const QModelIndex& index) { Q_EMIT NodeExpanded(m_nodes.NodeAt(index)); });
    connect(m_tree, &QTreeView::collapsed, this, [this](const QModelIndex& index) { Q_EMIT NodeCollapsed(m_nodes.NodeAt(index)); });
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
