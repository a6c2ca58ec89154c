#include "conflicts/ui/DifferenceStrip.h"

#include <QMouseEvent>
#include <QPainter>

namespace qb {

using namespace Qt::StringLiterals;

DifferenceStrip::DifferenceStrip(QWidget* parent) : QWidget(parent)
{
    constexpr int Width = 14;
    setObjectName(u"ctlDifferences"_s);
    setFixedWidth(Width);
    setToolTip(u"Where the two texts differ: red on the left side, blue on the right side, and orange "
               "where both have changed the same lines"_s);
}

void DifferenceStrip::Clear()
{
    m_blocks.clear();
    m_lines = 0;
    update();
}

void DifferenceStrip::SetComparison(const LineComparison& comparison)
{
    Clear();
    m_lines = int(comparison.Lines.size());
    for (int i = 0; i < m_lines; ++i) {
        const auto& [owner, text, words, isClash] = comparison.Lines[size_t(i)];
        if (owner == LineOwner::Both)
            continue;
        if (!m_blocks.empty() && m_blocks.back().End == i && m_blocks.back().Owner == owner
            && m_blocks.back().IsClash == isClash)
            m_blocks.back().End = i + 1;
        else
            m_blocks.push_back({i, i + 1, owner, isClash});
    }
}

QSize DifferenceStrip::sizeHint() const
{
    return {width(), 60};
}

void DifferenceStrip::paintEvent(QPaintEvent*)
{
    constexpr int Least = 2; // pixels
    QPainter painter(this);
    painter.fillRect(rect(), palette().color(QPalette::AlternateBase));
    painter.setPen(palette().color(QPalette::Mid));
    painter.drawRect(rect().adjusted(0, 0, -1, -1));
    const int half = width() / 2;
    for (const Block& block : m_blocks) {
        const int top = int(qint64(block.Begin) * height() / m_lines);
        const int bottom = std::max(top + Least, int(qint64(block.End) * height() / m_lines));
        const bool isFirst = block.Owner == LineOwner::First;
        const QColor color = block.IsClash ? QColor(0xe0, 0x8a, 0)
                             : isFirst     ? QColor(0xd0, 0x30, 0x30)
                                           : QColor(0x30, 0x60, 0xd0);
        painter.fillRect(QRect(isFirst ? 1 : half, top, half - 1, bottom - top), color);
    }
}

void DifferenceStrip::mousePressEvent(QMouseEvent* event)
{
    if (m_lines > 0 && height() > 0)
        Q_EMIT LineChosen(std::clamp(int(event->position().y() * m_lines / height()), 0, m_lines - 1));
}

} // namespace qb
