#pragma once

#include "printing/PrintSetup.h"

#include <QDialog>

class QComboBox;
class QDialogButtonBox;
class QDoubleSpinBox;
class QLabel;

namespace qb {

/// Paper and margins.
class frmPageSetup : public QDialog {
    Q_OBJECT

public:
    frmPageSetup(QWidget* parent, const PrintSetup& setup);

    /// What was chosen; all else of the setup is as it was given.
    PrintSetup Chosen() const;

private:
    void ShowRoom();

    PrintSetup m_setup;
    QComboBox* cboPaper;
    QComboBox* cboOrientation;
    QDoubleSpinBox* m_margins[4] = {};
    QLabel* lblRoom;
    QDialogButtonBox* m_buttons;
};

} // namespace qb
