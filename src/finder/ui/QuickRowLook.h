#pragma once

#include <QStyledItemDelegate>

namespace qb {

struct QuickRow;

/// Draws a row of quick open: its text with the letters that match in bold, where it stands in a fainter colour, and
/// its mark at the right. Of a hit the second is below the first.
class QuickRowLook : public QStyledItemDelegate {
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;

protected:
    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override;

private:
    static int DrawText(QPainter& painter, const QRect& place, const QuickRow& row, const QFont& font);
};

} // namespace qb
