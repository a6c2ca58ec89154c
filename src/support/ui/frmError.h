#pragma once

#include <QDialog>

class QLabel;

namespace qb {

/// Shows an error and offers to report it.
class frmError : public QDialog {
    Q_OBJECT

public:
    explicit frmError(QWidget* parent = nullptr);

    void SetMessage(const QString& message);
    /// The user closed the dialog with the button that asks for a report.
    bool ReportTheBug() const { return m_reportTheBug; }

private:
    QLabel* m_message;
    bool m_reportTheBug = false;
};

} // namespace qb
