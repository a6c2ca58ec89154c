#include "printing/PrintInk.h"

#include "platform/richtext/TextFormats.h"

#include <cmath>

namespace qb {

namespace {

struct InkRow {
    TokenKind Kind;
    quint32 Color; ///< 0xRRGGBB
    bool Bold;
    bool Italic;
};
constexpr InkRow Inks[] = {
    {TokenKind::Text, 0x000000, false, false},       {TokenKind::Comment, 0x1f6124, false, true},
    {TokenKind::String, 0x8f1010, false, false},     {TokenKind::Number, 0x6f3800, false, false},
    {TokenKind::Keyword, 0x08308c, true, false},     {TokenKind::Type, 0x00544a, false, false},
    {TokenKind::Builtin, 0x4a3c00, false, false},    {TokenKind::Preprocessor, 0x672384, false, false},
    {TokenKind::Annotation, 0x7a2e00, false, false}, {TokenKind::Variable, 0x00466f, false, false},
    {TokenKind::Label, 0x74134b, true, false},       {TokenKind::Inserted, 0x165816, false, false},
    {TokenKind::Deleted, 0x96001b, false, false},
};

constexpr quint32 RedFirst(quint32 color)
{
    return (color & 0xff) << 16 | (color & 0xff00) | (color >> 16 & 0xff);
}

constexpr const InkRow& RowFor(TokenKind kind)
{
    return Inks[size_t(kind)];
}

double Linear(quint32 part)
{
    const double value = part / 255.0;
    return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
}

} // namespace

const TokenColors& InkColors()
{
    static const TokenColors colors = [] {
        TokenColors made{};
        for (const InkRow& row : Inks)
            made[size_t(row.Kind)] = RedFirst(row.Color);
        return made;
    }();
    return colors;
}

bool IsBoldInk(TokenKind kind)
{
    return RowFor(kind).Bold;
}

bool IsItalicInk(TokenKind kind)
{
    return RowFor(kind).Italic;
}

double InkContrast(quint32 color)
{
    const double luminance = 0.2126 * Linear(color & 0xff) + 0.7152 * Linear(color >> 8 & 0xff)
                             + 0.0722 * Linear(color >> 16 & 0xff);
    return 1.05 / (luminance + 0.05);
}

quint32 InkFor(quint32 color)
{
    if (color == AutomaticColor)
        return 0;
    constexpr double Darker = 0.9;
    quint32 ink = color & 0xffffff;
    while (InkContrast(ink) < LeastInkContrast) {
        const auto part = [&ink](int shift) { return quint32((ink >> shift & 0xff) * Darker) << shift; };
        ink = part(0) | part(8) | part(16);
    }
    return ink;
}

} // namespace qb
