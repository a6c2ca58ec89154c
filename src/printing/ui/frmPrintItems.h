#pragma once

#include "printing/PrintOrder.h"

#include <QDialog>
#include <vector>

class QLabel;
class QPushButton;
class QTreeWidget;
class QTreeWidgetItem;

namespace qb {

/// Chooses items of a branch.
class frmPrintItems : public QDialog {
    Q_OBJECT

public:
    frmPrintItems(QWidget* parent, const std::vector<OutlinedForPrint>& outline);

    /// The IDs of those that were chosen, in the order of the branch.
    std::vector<qint64> Chosen() const;

private:
    void Fill(const std::vector<OutlinedForPrint>& outline);
    void SetAll(bool chosen);
    void ItemChanged(QTreeWidgetItem* item);
    void ShowCount();

    std::vector<QTreeWidgetItem*> m_items; ///< in the order of the branch
    QTreeWidget* tvwItems;
    QLabel* lblCount;
    QPushButton* cmdOk = nullptr;
};

} // namespace qb
