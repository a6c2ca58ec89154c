#pragma once

#include "exchange/ImportPreview.h"

#include <QDialog>

class QLabel;
class QPushButton;
class QTreeWidget;
class QTreeWidgetItem;

namespace qb {

/// Shows what an import would bring, as a tree with sizes and with what is there already, and lets the user choose
/// branches of it.
class frmImport : public QDialog {
    Q_OBJECT

public:
    /// @p items must outlive the dialog; @p target is the title that they are put under.
    frmImport(QWidget* parent, const std::vector<PreviewedItem>& items, const QString& target);

    /// The keys of the chosen branches, as BranchImportOptions has them.
    QStringList Keys() const { return m_choice.Keys(); }

private:
    void MakeTree();
    void FillTree();
    void ItemChanged(QTreeWidgetItem* row, int column);
    void ChooseAll(bool chosen);
    /// The ticks and the line below follow what is chosen.
    void ShowChoice();

    const std::vector<PreviewedItem>& m_previewed;
    BranchChoice m_choice;
    std::vector<QTreeWidgetItem*> m_rows; ///< by place
    QTreeWidget* tvItems;
    QLabel* lblChosen;
    QPushButton* cmdImport;
};

} // namespace qb
