#pragma once

#include "store/CLinks.h"

#include <QDialog>

class QLabel;
class QRadioButton;

namespace qb {

/// Asks how much of a relationship between two items is to be removed.
class frmRelationshipDelete : public QDialog {
    Q_OBJECT

public:
    explicit frmRelationshipDelete(QWidget* parent = nullptr);

    /// Draws the arrows of the link, and allows what can be removed of it.
    void DisplayRelationshipAndOptions(LinkDirection direction);
    bool Cancelled() const { return result() != QDialog::Accepted; }
    /// What is left of the link.
    LinkDirection Result() const;

private:
    QLabel* m_leftArrow;
    QLabel* m_rightArrow;
    QRadioButton* optComplete;
    QRadioButton* optLeft;
    QRadioButton* optRight;
};

} // namespace qb
