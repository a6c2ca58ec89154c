#include "panels/ui/NodeLook.h"

#include "panels/TreeNodes.h"
#include "support/ui/Icons.h"

#include <QStyle>
#include <QWidget>

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

} // namespace qb
