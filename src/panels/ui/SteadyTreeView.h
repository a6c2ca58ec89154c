#pragma once

#include <QTreeView>

namespace qb {

/// A tree in which one row stays selected whatever is clicked: a click beside the rows, or one that
/// would take the selection back, leaves it as it is.
class SteadyTreeView : public QTreeView {
    Q_OBJECT

public:
    using QTreeView::QTreeView;

protected:
    QItemSelectionModel::SelectionFlags selectionCommand(const QModelIndex& index, const QEvent* event) const override;
};

} // namespace qb
