#pragma once

#include "finder/ReplacePlan.h"

#include <QDialog>

class QLabel;
class QListView;
class QPushButton;

namespace qb {

/// The preview of a replacement: each change with the line as it is and as it would be, and a box.
class frmReplace : public QDialog {
    Q_OBJECT

public:
    /// @p plan must outlive this. @p found and @p replacement are named in the head.
    frmReplace(ReplacePlan& plan, const QString& found, const QString& replacement, QWidget* parent = nullptr);

private:
    void ShowState();

    ReplacePlan& m_plan;
    QListView* lvChanges;
    QLabel* lblState;
    QPushButton* cmdOK;
};

} // namespace qb
