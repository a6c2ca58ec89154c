#pragma once

#include "printing/PrintSetup.h"

#include <QColor>
#include <QFont>
#include <QPaintDevice>
#include <QPainter>
#include <QRectF>

namespace qb {

/// What pages are laid out for: all lengths on them are dots of this resolution, whatever they are painted on. It is
/// so fine that no rounding is seen.
class PaperDevice : public QPaintDevice {
public:
    static constexpr int DotsPerInch = 1200;

    PaperDevice() = default;
    QPaintEngine* paintEngine() const override { return nullptr; }

protected:
    int metric(PaintDeviceMetric metric) const override;
};

/// The one device of all layouts, which outlives them.
const PaperDevice& Paper();

inline constexpr double DotsPerPoint = PaperDevice::DotsPerInch / 72.0;
inline constexpr double DotsPerMillimetre = PaperDevice::DotsPerInch / 25.4;

/// The areas of a page, in dots from its upper left corner.
struct PaperGeometry {
    explicit PaperGeometry(const PrintSetup& setup);

    QSizeF Page;
    QRectF Header;
    QRectF Body;
    QRectF Footer;
};

/// Dots between letters, too few to be seen, that keep them from being joined: a joined "fi" in a PDF is found by
/// nobody who looks for "file".
inline constexpr double UnligatedSpacing = 0.02;

/// The fonts of print.
enum class PaperFont { Text, Small, Heading, Title, Bold };
QFont PaperFontOf(PaperFont which);
/// That of code, of a size in points.
QFont PaperCodeFont(double points);

/// Paints a line of text inside of an area, with its upper or lower edge there; what is too long is cut in the middle.
void PaintLine(QPainter& painter, const QRectF& area, Qt::Alignment alignment, const QString& text, const QFont& font);

/// Of captions, line numbers and rules: grey, and read on white.
inline const QColor PaleInk(0x5c, 0x5c, 0x5c);
inline const QColor RuleInk(0x9a, 0x9a, 0x9a);

} // namespace qb
