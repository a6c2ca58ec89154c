#include "text/TokenPalette.h"

#include <QStringList>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

/// 0xRRGGBB, as it is commonly written, with red in the low byte.
constexpr quint32 Rgb(quint32 color)
{
    return (color & 0xff) << 16 | (color & 0xff00) | color >> 16;
}

void Take(TokenColors& colors, const QString& text)
{
    for (const QString& word : text.split(u' ', Qt::SkipEmptyParts)) {
        const qsizetype equals = word.indexOf(u"=#"_s);
        const std::optional<TokenKind> kind = TokenKindNamed(word.left(std::max<qsizetype>(equals, 0)));
        bool isNumber = false;
        const quint32 color = word.mid(equals + 2).toUInt(&isNumber, 16);
        if (kind && isNumber && word.size() == equals + 8)
            colors[size_t(*kind)] = Rgb(color);
    }
}

} // namespace

const TokenPalette& TokenPalette::Default()
{
    static constexpr TokenPalette palette = [] {
        struct Row {
            TokenKind Kind;
            quint32 Light;
            quint32 Dark;
        };
        constexpr Row rows[] = {
            {TokenKind::Text, 0x000000, 0xe6e6e6},       {TokenKind::Comment, 0x2e7d32, 0x7fbf7f},
            {TokenKind::String, 0xa31515, 0xe39a82},     {TokenKind::Number, 0x8a4600, 0xd7ba7d},
            {TokenKind::Keyword, 0x0b3fb3, 0x79b0ff},    {TokenKind::Type, 0x00695c, 0x4ec9b0},
            {TokenKind::Builtin, 0x5b4a00, 0xdcdc9a},    {TokenKind::Preprocessor, 0x7b2d9e, 0xd199f0},
            {TokenKind::Annotation, 0x9c3a00, 0xf0a860}, {TokenKind::Variable, 0x00578a, 0x9cdcfe},
            {TokenKind::Label, 0x8b1a5b, 0xf09cc8},      {TokenKind::Inserted, 0x1b6e1b, 0x8fd68f},
            {TokenKind::Deleted, 0xb00020, 0xff9a94},
        };
        TokenPalette made{};
        for (const Row& row : rows) {
            made.Light[size_t(row.Kind)] = Rgb(row.Light);
            made.Dark[size_t(row.Kind)] = Rgb(row.Dark);
        }
        return made;
    }();
    return palette;
}

TokenPalette TokenPalette::FromTexts(const QString& light, const QString& dark)
{
    TokenPalette palette = Default();
    Take(palette.Light, light);
    Take(palette.Dark, dark);
    return palette;
}

QString TokenPalette::TextOf(const TokenColors& colors, const TokenColors& defaults)
{
    QStringList words;
    for (const TokenKindRow& row : TokenKindRows) {
        const size_t place = size_t(row.Kind);
        if (colors[place] != defaults[place])
            words << u"%1=#%2"_s.arg(QLatin1StringView(row.Name)).arg(Rgb(colors[place]), 6, 16, QLatin1Char('0'));
    }
    return words.join(u' ');
}

} // namespace qb
