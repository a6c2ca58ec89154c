#pragma once

#include <QColor>
#include <algorithm>
#include <cmath>

namespace qb {

// Colours of texts and settings are numbers with red in the low byte.

/// Opaque; the high byte says nothing here.
inline QColor ColorOf(quint32 number)
{
    return QColor(int(number & 0xff), int(number >> 8 & 0xff), int(number >> 16 & 0xff));
}

/// The luminance of a colour, 0 to 1, as the Web Content Accessibility Guidelines define it.
inline double Luminance(const QColor& color)
{
    const auto part = [](double value) {
        return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * part(color.redF()) + 0.7152 * part(color.greenF()) + 0.0722 * part(color.blueF());
}

/// The contrast ratio of two colours, 1 to 21, by the same guidelines.
inline double Contrast(const QColor& left, const QColor& right)
{
    const auto [darker, lighter] = std::minmax({Luminance(left), Luminance(right)}); // as values
    return (lighter + 0.05) / (darker + 0.05);
}

/// Whether texts on it have to be light.
inline bool IsDark(const QColor& background)
{
    return Luminance(background) < 0.18; // the middle grey, to the eye
}

/// Without the transparency; the high byte is 0.
inline quint32 ColorNumber(const QColor& color)
{
    return quint32(color.red()) | quint32(color.green()) << 8 | quint32(color.blue()) << 16;
}

} // namespace qb
