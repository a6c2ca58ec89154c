#pragma once

#include <QLabel>
#include <QPainter>
#include <QStyleOption>

namespace qb {

/// A label of one line that never asks for room: what does not fit is cut with dots, and told by the tip.
class ElidedLabel : public QLabel {
public:
    explicit ElidedLabel(const QString& name)
    {
        setObjectName(name);
        setTextFormat(Qt::PlainText);
        setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    }

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(this);
        const QRect place = contentsRect().adjusted(margin(), 0, -margin(), 0);
        const QString shown = fontMetrics().elidedText(text(), Qt::ElideRight, place.width());
        setToolTip(shown == text() ? QString() : text().toHtmlEscaped());
        style()->drawItemText(&painter, place, int(alignment()) | Qt::TextSingleLine, palette(), isEnabled(), shown,
                              foregroundRole());
    }
};

} // namespace qb
