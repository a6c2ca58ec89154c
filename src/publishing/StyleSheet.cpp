#include "publishing/StyleSheet.h"

#include <algorithm>
#include <cmath>

namespace qb {

namespace {

constexpr quint32 DarkBackground = 0x1e1e1e;
constexpr double LeastContrast = 4.5;

double Luminance(quint32 color)
{
    const auto part = [color](int shift) {
        const double value = (color >> shift & 0xff) / 255.0;
        return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * part(0) + 0.7152 * part(8) + 0.0722 * part(16);
}

double Contrast(quint32 first, quint32 second)
{
    const double one = Luminance(first) + 0.05;
    const double other = Luminance(second) + 0.05;
    return std::max(one, other) / std::min(one, other);
}

} // namespace

QByteArray HtmlColor(quint32 color)
{
    const quint32 swapped = (color & 0xff) << 16 | (color & 0xff00) | (color >> 16 & 0xff);
    return '#' + QByteArray::number(swapped, 16).rightJustified(6, '0');
}

quint32 LegibleOnDark(quint32 color)
{
    constexpr int steps = 16;
    for (int step = 0; step <= steps; ++step) {
        quint32 lighter = 0;
        for (const int shift : {0, 8, 16}) {
            const quint32 part = color >> shift & 0xff;
            lighter |= (part + (0xff - part) * quint32(step) / steps) << shift;
        }
        if (Contrast(lighter, DarkBackground) >= LeastContrast)
            return lighter;
    }
    return 0xffffff;
}

PageLook StyleSheet::Colored(quint32 color)
{
    return {.Always = {},
            .Light = "color:" + HtmlColor(color) + ';',
            .Dark = "color:" + HtmlColor(LegibleOnDark(color)) + ';'};
}

QByteArray StyleSheet::ClassOf(const PageLook& look)
{
    if (look.IsEmpty())
        return {};
    const QByteArray key = look.Always + '|' + look.Light + '|' + look.Dark;
    auto number = m_numbers.constFind(key);
    if (number == m_numbers.constEnd()) {
        number = m_numbers.insert(key, int(m_looks.size()));
        m_looks.append(look);
    }
    return "s" + QByteArray::number(*number);
}

QByteArray StyleSheet::ClassOfColor(quint32 color)
{
    QByteArray& name = m_colors[color];
    if (name.isEmpty())
        name = ClassOf(Colored(color));
    return name;
}

QByteArray StyleSheet::ClassOf(TokenKind kind)
{
    return kind == TokenKind::Text ? QByteArray() : "k" + QByteArray::number(int(kind));
}

QByteArray StyleSheet::Rules(const TokenPalette& palette) const
{
    QByteArray light;
    QByteArray dark;
    for (const TokenKindRow& row : TokenKindRows) {
        const QByteArray name = ClassOf(row.Kind);
        if (name.isEmpty())
            continue;
        light += '.' + name + "{color:" + HtmlColor(palette.Light[size_t(row.Kind)]) + "}\n";
        dark += '.' + name + "{color:" + HtmlColor(palette.Dark[size_t(row.Kind)]) + "}\n";
    }
    for (qsizetype number = 0; number < m_looks.size(); ++number) {
        const PageLook& look = m_looks[number];
        const QByteArray name = ".s" + QByteArray::number(number);
        light += name + '{' + look.Always + look.Light + "}\n";
        if (!look.Dark.isEmpty())
            dark += name + '{' + look.Dark + "}\n";
    }
    return light + "@media screen and (prefers-color-scheme:dark){\n" + dark + "}\n";
}

} // namespace qb
