#include "web/ui/BusyLogo.h"

#include "support/ui/Icons.h"

#include <QPainter>
#include <QStyle>

namespace qb {

using namespace Qt::StringLiterals;

BusyLogo::BusyLogo(QWidget* parent) : QWidget(parent)
{
    constexpr int FrameTime = 40; // milliseconds
    constexpr int Step = 12;      // degrees a frame: a turn in 1.2 s
    constexpr int Turn = 360;
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    m_timer.setInterval(FrameTime);
    connect(&m_timer, &QTimer::timeout, this, [this] {
        m_angle = (m_angle + Step) % Turn;
        update();
    });
}

void BusyLogo::SetBusy(bool busy)
{
    if (busy == IsBusy())
        return;
    busy ? m_timer.start() : m_timer.stop();
    m_angle = 0;
    update();
}

QSize BusyLogo::sizeHint() const
{
    constexpr int Margin = 3;
    const int side = style()->pixelMetric(QStyle::PM_SmallIconSize) + 2 * Margin;
    return {side, side};
}

void BusyLogo::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    const int side = style()->pixelMetric(QStyle::PM_SmallIconSize);
    painter.translate(QRectF(rect()).center());
    painter.rotate(m_angle);
    IconNamed(u"quillbase"_s)
        .paint(&painter, {-side / 2, -side / 2, side, side}, Qt::AlignCenter,
               IsBusy() ? QIcon::Normal : QIcon::Disabled);
}

} // namespace qb
