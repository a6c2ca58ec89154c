#pragma once

#include <QStyledItemDelegate>

namespace qb {

/// Draws a node of the item tree with the image of its state.
class NodeLook : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;

protected:
    void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override;
};

} // namespace qb
