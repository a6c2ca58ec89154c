#pragma once

#include "store/LanguageDefinition.h"

#include <QDialog>
#include <functional>

class QLineEdit;
class QPushButton;
class QRadioButton;

namespace qb {

class LanguageChooser;

/// Asks for the language of a new library.
class frmNewDatabase : public QDialog {
    Q_OBJECT

public:
    explicit frmNewDatabase(QWidget* parent = nullptr);

    /// The choice; None when the dialog was cancelled.
    LanguageType LanguageSelected() const;
    /// The definition file, for LanguageType::File.
    QString LanguageFilePath() const;

private:
    void Browse();
    void UpdateControls();

    QRadioButton* m_vb;
    QRadioButton* m_cpp;
    QRadioButton* m_file;
    QRadioButton* m_selfDefined;
    QLineEdit* m_path;
    QPushButton* m_browse;
    LanguageChooser* m_shipped;
    QPushButton* m_ok = nullptr;
};

} // namespace qb
