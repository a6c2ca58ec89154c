#include "panels/ui/BookmarkView.h"

#include "support/ui/Icons.h"

#include <QHeaderView>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QPainter>
#include <QScopedValueRollback>
#include <QStyledItemDelegate>
#include <QTextDocument>
#include <QToolTip>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

constexpr int ExpandDelay = 700; ///< milliseconds that something is held over a closed group

class BookmarkLook : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;

protected:
    void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override
    {
        QStyledItemDelegate::initStyleOption(option, index);
        const QString image = index.data(BookmarkTree::ImageRole).toString();
        if (!image.isEmpty()) {
            option->features |= QStyleOptionViewItem::HasDecoration;
            option->icon = IconNamed(image);
            option->decorationSize = option->widget->style()->pixelMetric(QStyle::PM_SmallIconSize) * QSize(1, 1);
        }
        option->font.setBold(!index.parent().isValid());
    }

    /// Descriptions are the user's, so that no part of them is markup.
    bool helpEvent(QHelpEvent* event, QAbstractItemView* view, const QStyleOptionViewItem& option,
                   const QModelIndex& index) override
    {
        if (event->type() != QEvent::ToolTip)
            return QStyledItemDelegate::helpEvent(event, view, option, index);
        const QString plain = index.data(Qt::ToolTipRole).toString();
        QToolTip::showText(event->globalPos(),
                           plain.isEmpty() ? QString() : Qt::convertFromPlainText(plain, Qt::WhiteSpaceNormal),
                           view->viewport(), option.rect); // an empty one hides what is shown
        return true;
    }
};

} // namespace

BookmarkView::BookmarkView(BookmarkTree& rows, QWidget* parent) : QTreeView(parent), m_rows(rows)
{
    setObjectName(u"lvBookMarks"_s);
    setAccessibleName(u"Bookmarks"_s);
    setFrameShape(QFrame::NoFrame);
    setUniformRowHeights(true);
    setAllColumnsShowFocus(true);
    setEditTriggers(NoEditTriggers);
    setExpandsOnDoubleClick(true);
    setDragDropMode(InternalMove);
    setAutoExpandDelay(ExpandDelay);
    setItemDelegate(new BookmarkLook(this));
    setModel(&rows);
    header()->setSortIndicatorClearable(true);
    header()->setSortIndicator(-1, Qt::AscendingOrder);
    setSortingEnabled(true);
    connect(&rows, &QAbstractItemModel::modelAboutToBeReset, this, &BookmarkView::Remember);
    connect(&rows, &QAbstractItemModel::modelReset, this, &BookmarkView::Restore);
    connect(this, &QTreeView::collapsed, this, [this](const QModelIndex& index) {
        if (!m_restoring)
            m_closed.insert(index.data(BookmarkTree::KeyRole).toString());
    });
    connect(this, &QTreeView::expanded, this,
            [this](const QModelIndex& index) { m_closed.remove(index.data(BookmarkTree::KeyRole).toString()); });
}

void BookmarkView::Select(const QModelIndex& index)
{
    if (!index.isValid())
        return;
    setExpanded(index.parent(), true);
    setCurrentIndex(index);
    scrollTo(index);
}

// The list is read anew

void BookmarkView::Remember()
{
    m_current = currentIndex().data(BookmarkTree::KeyRole).toString();
    m_group = currentIndex().parent().data(BookmarkTree::KeyRole).toString();
    m_row = currentIndex().row();
}

/// Where what was selected is gone, what stands in its place is, or the group that has nothing any more.
void BookmarkView::Restore()
{
    const QScopedValueRollback restoring(m_restoring, true);
    for (int row = 0; row < m_rows.rowCount(); ++row) {
        const QModelIndex group = m_rows.index(row, 0);
        setExpanded(group, !m_closed.contains(group.data(BookmarkTree::KeyRole).toString()));
    }
    QModelIndex place = m_rows.IndexOfKey(m_current);
    if (!place.isValid() && !m_current.isEmpty()) {
        const QModelIndex group = m_rows.IndexOfKey(m_group);
        place = m_rows.index(qMin(m_row, m_rows.rowCount(group) - 1), 0, group);
        place = place.isValid() ? place : group;
    }
    if (place.isValid())
        setCurrentIndex(place);
    Q_EMIT CurrentChanged();
}

void BookmarkView::currentChanged(const QModelIndex& current, const QModelIndex& previous)
{
    QTreeView::currentChanged(current, previous);
    if (!m_restoring)
        Q_EMIT CurrentChanged();
}

// Opening

void BookmarkView::Open(const QModelIndex& index)
{
    if (const qint64 bookmark = m_rows.BookmarkAt(index))
        Q_EMIT BookmarkActivated(bookmark);
}

void BookmarkView::keyPressEvent(QKeyEvent* event)
{
    const bool isEnter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (!isEnter)
        return QTreeView::keyPressEvent(event);
    const QModelIndex index = currentIndex();
    if (m_rows.BookmarkAt(index) != 0)
        Open(index);
    else
        setExpanded(index, !isExpanded(index));
}

bool BookmarkView::IsClick(const QMouseEvent& event) const
{
    return event.button() == Qt::LeftButton && event.modifiers() == Qt::NoModifier;
}

void BookmarkView::mousePressEvent(QMouseEvent* event)
{
    m_pressed = indexAt(event->pos());
    QTreeView::mousePressEvent(event);
}

/// Pressed on one bookmark and let go over another is no click.
void BookmarkView::mouseReleaseEvent(QMouseEvent* event)
{
    QTreeView::mouseReleaseEvent(event);
    const QModelIndex index = indexAt(event->pos());
    if (m_singleClick && IsClick(*event) && index.isValid() && index == m_pressed)
        Open(index);
}

void BookmarkView::mouseDoubleClickEvent(QMouseEvent* event)
{
    QTreeView::mouseDoubleClickEvent(event);
    m_pressed = QModelIndex(); // its second click is not one more
    if (!m_singleClick && IsClick(*event))
        Open(indexAt(event->pos()));
}

// Looks

void BookmarkView::resizeEvent(QResizeEvent* event)
{
    QTreeView::resizeEvent(event);
    if (!std::exchange(m_columnsSized, true)) // later widths are the user's
        setColumnWidth(BookmarkTree::ItemColumn, viewport()->width() * 2 / 5);
}

/// An empty list says so, and what to do about it.
void BookmarkView::paintEvent(QPaintEvent* event)
{
    QTreeView::paintEvent(event);
    if (m_rows.rowCount() > 0)
        return;
    QPainter painter(viewport());
    painter.setPen(palette().color(QPalette::PlaceholderText));
    painter.drawText(viewport()->rect(), Qt::AlignCenter | Qt::TextWordWrap,
                     u"There are no bookmarks.\nCtrl+D bookmarks the item that is shown."_s);
}

} // namespace qb
