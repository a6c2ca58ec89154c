#include "panels/ui/SteadyTreeView.h"

namespace qb {

QItemSelectionModel::SelectionFlags SteadyTreeView::selectionCommand(const QModelIndex& index,
                                                                     const QEvent* event) const
{
    constexpr auto takesBack = QItemSelectionModel::Toggle | QItemSelectionModel::Deselect;
    if (!index.isValid())
        return QItemSelectionModel::NoUpdate;
    const QItemSelectionModel::SelectionFlags command = QTreeView::selectionCommand(index, event);
    return command & takesBack ? QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows : command;
}

} // namespace qb
