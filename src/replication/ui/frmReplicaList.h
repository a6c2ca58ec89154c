#pragma once

#include "replication/ReplicaList.h"

#include <QDialog>
#include <optional>

class QPushButton;
class QTreeWidget;

namespace qb {

/// The children of a mother library, of which one can be struck off.
class frmReplicaList : public QDialog {
    Q_OBJECT

public:
    explicit frmReplicaList(QWidget* parent = nullptr);

    /// The library whose children are listed; it must outlive the dialog. To be called before the dialog is shown.
    void SetDatabase(Database& mother);
    /// Without a library it says so and is not shown.
    int exec() override;

private:
    void Fill();
    void UpdateEnabled();
    void cmdForget_Click();

    std::optional<ReplicaList> m_list;
    QTreeWidget* lvReplicas;
    QPushButton* cmdForget;
};

} // namespace qb
