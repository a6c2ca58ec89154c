#pragma once

#include "maintenance/FileImport.h"

#include <QDialog>

class QCheckBox;
class QLabel;
class QLineEdit;
class QRadioButton;

namespace qb {

/// Asks whether files are to be compressed before they are stored.
class frmImportType : public QDialog {
    Q_OBJECT

public:
    explicit frmImportType(QWidget* parent = nullptr);

    // Texts
    void SetInfo(const QString& text);
    void SetNoCaption(const QString& text);
    void SetYesEachCaption(const QString& text);

    /// With one file its own words, and no archive of all.
    void SetMultipleFiles(bool multiple);
    ImportOption OptionSelected() const;
    void SetOptionSelected(ImportOption option);
    /// The name of the archive of all; ends in ".zip" once the dialog was accepted.
    QString ZipFileName() const;
    /// Proposes a name.
    void SetZipFileName(const QString& name);
    bool DontShowAgain() const;
    bool Cancelled() const { return result() != Accepted; }

    void accept() override;

private:
    void UpdateControls();

    QLabel* lblInfo;
    QRadioButton* optNo;
    QRadioButton* optYesEach;
    QRadioButton* optYesAll;
    QLineEdit* txtZipFileName;
    QCheckBox* chkDontShowAgain;
};

} // namespace qb
