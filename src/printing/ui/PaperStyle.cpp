#include "printing/ui/PaperStyle.h"

#include <QFontDatabase>
#include <QFontMetricsF>
#include <QTextLayout>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

struct FontRow {
    PaperFont Which;
    double Points;
    bool Bold;
};
constexpr FontRow Fonts[] = {
    {PaperFont::Text, 9.5, false}, {PaperFont::Small, 8, false}, {PaperFont::Heading, 10.5, true},
    {PaperFont::Title, 15, true},  {PaperFont::Bold, 9.5, true},
};

/// The first of these families that the machine has, or what it takes for the first.
QFont FirstOf(const QStringList& families, QFont::StyleHint hint)
{
    static const QStringList known = QFontDatabase::families();
    QString family = families.first();
    for (const QString& one : families) {
        if (known.contains(one, Qt::CaseInsensitive)) {
            family = one;
            break;
        }
    }
    QFont font(family);
    font.setStyleHint(hint);
    font.setHintingPreference(QFont::PreferNoHinting); // advances as they are on paper
    font.setKerning(hint != QFont::Monospace);
    font.setLetterSpacing(QFont::AbsoluteSpacing, UnligatedSpacing);
    return font;
}

} // namespace

int PaperDevice::metric(PaintDeviceMetric metric) const
{
    switch (metric) {
    case PdmDpiX:
    case PdmDpiY:
    case PdmPhysicalDpiX:
    case PdmPhysicalDpiY:
        return DotsPerInch;
    case PdmDevicePixelRatio:
        return 1;
    case PdmDevicePixelRatioScaled:
        return int(devicePixelRatioFScale());
    default:
        return QPaintDevice::metric(metric);
    }
}

const PaperDevice& Paper()
{
    static const PaperDevice paper;
    return paper;
}

PaperGeometry::PaperGeometry(const PrintSetup& setup)
    : Page(setup.PageWidth() * DotsPerMillimetre, setup.PageHeight() * DotsPerMillimetre)
{
    constexpr double HeaderHeight = 6 * DotsPerMillimetre;
    constexpr double Gap = 3 * DotsPerMillimetre;
    const QRectF inner = QRectF(QPointF(0, 0), Page)
                             .adjusted(setup.Left * DotsPerMillimetre, setup.Top * DotsPerMillimetre,
                                       -setup.Right * DotsPerMillimetre, -setup.Bottom * DotsPerMillimetre);
    Header = QRectF(inner.left(), inner.top(), inner.width(), HeaderHeight);
    Footer = QRectF(inner.left(), inner.bottom() - HeaderHeight, inner.width(), HeaderHeight);
    Body = inner.adjusted(0, HeaderHeight + Gap, 0, -HeaderHeight - Gap);
}

void PaintLine(QPainter& painter, const QRectF& area, Qt::Alignment alignment, const QString& text, const QFont& font)
{
    const QFont measured(font, &Paper());
    QTextLayout layout(QFontMetricsF(measured).elidedText(text, Qt::ElideMiddle, area.width()), font, &Paper());
    QTextOption option(Qt::AlignLeft | Qt::AlignAbsolute);
    option.setWrapMode(QTextOption::NoWrap);
    layout.setTextOption(option);
    layout.beginLayout();
    const QTextLine line = layout.createLine();
    layout.endLayout();
    const double left = alignment.testFlag(Qt::AlignRight) ? area.right() - line.naturalTextWidth() : area.left();
    const double top = alignment.testFlag(Qt::AlignBottom) ? area.bottom() - line.height() : area.top();
    layout.draw(&painter, {left, top});
}

QFont PaperFontOf(PaperFont which)
{
    static const QFont base = FirstOf({u"DejaVu Sans"_s, u"Noto Sans"_s, u"Liberation Sans"_s}, QFont::SansSerif);
    QFont font = base;
    font.setPointSizeF(Fonts[size_t(which)].Points);
    font.setBold(Fonts[size_t(which)].Bold);
    return font;
}

QFont PaperCodeFont(double points)
{
    static const QFont base = FirstOf({u"DejaVu Sans Mono"_s, u"Noto Sans Mono"_s, u"Liberation Mono"_s},
                                      QFont::Monospace);
    QFont font = base;
    font.setFixedPitch(true);
    font.setPointSizeF(points);
    return font;
}

} // namespace qb
