#include "finder/ui/QuickHints.h"

#include <QPainter>

namespace qb {

using namespace Qt::StringLiterals;

QuickHints::QuickHints(QWidget* parent) : QWidget(parent)
{
    setObjectName(u"quickHints"_s);
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
}

void QuickHints::SetHints(std::span<const KeyHint> hints)
{
    m_hints = hints;
    update();
}

void QuickHints::SetStatus(const QString& status)
{
    m_status = status;
    update();
}

void QuickHints::SetMessage(const QString& message)
{
    m_message = message;
    setAccessibleName(message);
    update();
}

QSize QuickHints::sizeHint() const
{
    return {0, fontMetrics().height()};
}

QSize QuickHints::minimumSizeHint() const
{
    return sizeHint();
}

void QuickHints::paintEvent(QPaintEvent*)
{
    constexpr int Gap = 5;
    constexpr int BetweenHints = 16;
    QPainter painter(this);
    QRect room = rect();
    if (!m_message.isEmpty()) {
        painter.drawText(room, Qt::AlignVCenter | Qt::AlignLeft,
                         fontMetrics().elidedText(m_message, Qt::ElideMiddle, room.width()));
        return;
    }
    if (!m_status.isEmpty()) {
        const int width = std::min(fontMetrics().horizontalAdvance(m_status), room.width());
        painter.drawText(room, Qt::AlignVCenter | Qt::AlignRight,
                         fontMetrics().elidedText(m_status, Qt::ElideRight, width));
        room.setRight(room.right() - width - BetweenHints);
    }
    QFont bold = font();
    bold.setBold(true);
    for (const KeyHint& hint : m_hints) {
        const QString key = QString::fromUtf8(hint.Key);
        const QString does = QString::fromUtf8(hint.Does);
        const int keyWidth = QFontMetrics(bold).horizontalAdvance(key);
        const int width = keyWidth + Gap + fontMetrics().horizontalAdvance(does);
        if (width > room.width())
            return;
        painter.setFont(bold);
        painter.drawText(room, Qt::AlignVCenter | Qt::AlignLeft, key);
        painter.setFont(font());
        painter.drawText(room.adjusted(keyWidth + Gap, 0, 0, 0), Qt::AlignVCenter | Qt::AlignLeft, does);
        room.setLeft(room.left() + width + BetweenHints);
    }
}

} // namespace qb
