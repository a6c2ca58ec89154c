#include "support/ui/SchemeStyle.h"

#include "support/ui/Icons.h"

#include <QPainter>
#include <QStyleOption>

namespace qb {

namespace {

/// Between the text and what it stands on.
QColor FrameColor(const QPalette& palette)
{
    const QColor text = palette.color(QPalette::WindowText), window = palette.color(QPalette::Window);
    const auto between = [](int one, int other) { return (3 * one + 2 * other) / 5; };
    return QColor(between(text.red(), window.red()), between(text.green(), window.green()),
                  between(text.blue(), window.blue()));
}

} // namespace

void SchemeStyle::drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                                const QWidget* widget) const
{
    QProxyStyle::drawPrimitive(element, option, painter, widget);
    const bool isRound = element == PE_IndicatorRadioButton;
    if (!isRound && element != PE_IndicatorCheckBox)
        return;
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing, isRound);
    painter->setPen(FrameColor(option->palette));
    painter->setBrush(Qt::NoBrush);
    const QRectF frame = QRectF(option->rect).adjusted(0.5, 0.5, -0.5, -0.5);
    isRound ? painter->drawEllipse(frame) : painter->drawRect(frame);
    painter->restore();
}

QIcon SchemeStyle::standardIcon(StandardPixmap icon, const QStyleOption* option, const QWidget* widget) const
{
    const QIcon own = icon == SP_LineEditClearButton ? IconNamed(QStringLiteral("edit-clear-locationbar-rtl"))
                                                     : QIcon();
    return own.isNull() ? QProxyStyle::standardIcon(icon, option, widget) : own;
}

} // namespace qb
