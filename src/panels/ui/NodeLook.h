#pragma once

#include <QStyledItemDelegate>

namespace qb {

/// Draws a node of the item tree with the image of its state.
class NodeLook : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    /// Tells what a node is for, and its whole title where there is no room for it.
    bool helpEvent(QHelpEvent* event, QAbstractItemView* view, const QStyleOptionViewItem& option,
                   const QModelIndex& index) override;

protected:
    void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override;
};

} // namespace qb
