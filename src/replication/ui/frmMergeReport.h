#pragma once

#include "replication/MergeReport.h"

#include <QDialog>
#include <vector>

class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QTreeWidget;

namespace qb {

/// What a synchronization would do, before it is done, or what the last ones did.
class frmMergeReport : public QDialog {
    Q_OBJECT
public:
    enum class Purpose { Preview, Report };

    explicit frmMergeReport(Purpose purpose, QWidget* parent = nullptr);

    /// The latest first; of a preview there is one.
    void SetReports(std::vector<MergeReport> reports);
    /// Of a preview: whether the user wants to see it next time, too.
    bool ShowsAgain() const;
    /// The item that the user wants to be led to; 0: none.
    qint64 ChosenItem() const { return m_chosen; }

private:
    void Fill();
    void UpdateEnabled();
    void ShowChosen();

    Purpose m_purpose;
    std::vector<MergeReport> m_reports;
    qint64 m_chosen = 0;

    QComboBox* cboReports;
    QLabel* lblSummary;
    QLineEdit* txtFilter;
    QTreeWidget* lvLines;
    QCheckBox* chkShowAgain;
    QPushButton* cmdShow = nullptr;
};

} // namespace qb
