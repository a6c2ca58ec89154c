#pragma once

#include <QDialog>

class QLabel;

namespace qb {

/// Says that a long operation has succeeded, and leads to the folder of what it made.
class frmMsgBox : public QDialog {
    Q_OBJECT

public:
    explicit frmMsgBox(QWidget* parent = nullptr);

    void SetMessage(const QString& message);
    /// Keeps the folder of the path, for the button.
    void SetFilePath(const QString& path);

private:
    QLabel* m_message;
    QString m_folder;
};

} // namespace qb
