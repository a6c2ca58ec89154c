#pragma once

#include <QDialog>

class QLabel;

namespace qb {

/// A small window with a short message that stands until its owner closes it.
class frmInfo : public QDialog {
    Q_OBJECT

public:
    explicit frmInfo(QWidget* parent = nullptr);

    void InformUser(const QString& text);

private:
    QLabel* m_message;
};

} // namespace qb
