#include "panels/ui/NodeLook.h"

#include "panels/TreeNodes.h"
#include "support/ui/Icons.h"

#include <QAbstractItemView>
#include <QHelpEvent>
#include <QStyle>
#include <QTextDocument>
#include <QToolTip>

namespace qb {

void NodeLook::initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const
{
    QStyledItemDelegate::initStyleOption(option, index);
    const bool open = option->state & QStyle::State_Open;
    const int image = index.data(open ? TreeNodes::ExpandedImageRole : TreeNodes::ImageRole).toInt();
    option->features |= QStyleOptionViewItem::HasDecoration;
    option->icon = IconNamed(ImageKey(TreeImage(image)));
    option->decorationSize = option->widget->style()->pixelMetric(QStyle::PM_SmallIconSize) * QSize(1, 1);
    option->font.setBold(index.data(TreeNodes::BoldRole).toBool());
}

/// Titles and descriptions are the user's, so that no part of them is markup.
bool NodeLook::helpEvent(QHelpEvent* event, QAbstractItemView* view, const QStyleOptionViewItem& option,
                         const QModelIndex& index)
{
    if (event->type() != QEvent::ToolTip || !index.isValid())
        return QStyledItemDelegate::helpEvent(event, view, option, index);
    QStringList lines;
    const QRect seen = option.rect.intersected(view->viewport()->rect());
    if (sizeHint(option, index).width() > seen.width())
        lines << index.data().toString();
    if (const QString tip = index.data(Qt::ToolTipRole).toString(); !tip.isEmpty())
        lines << tip;
    const QString plain = lines.join(u'\n');
    const QString text = plain.isEmpty() ? QString() : Qt::convertFromPlainText(plain, Qt::WhiteSpaceNormal);
    QToolTip::showText(event->globalPos(), text, view->viewport(), option.rect); // an empty one hides what is shown
    return true;
}

} // namespace qb
