#pragma once

#include "text/TokenKind.h"

namespace qb {

/// A colour for each kind of token, red in the low byte.
using TokenColors = std::array<quint32, TokenKindCount>;

/// The colours in which texts are painted by rules: those for light backgrounds, in which they are
/// stored too, and those for dark ones.
struct TokenPalette {
    TokenColors Light;
    TokenColors Dark;

    /// The colours that the program comes with. Each has a contrast of 4.5:1 at least.
    static const TokenPalette& Default();
    /// The default, but for the colours that texts such as "comment=#2e7d32 string=#a31515" name;
    /// what can't be understood in them is passed over.
    static TokenPalette FromTexts(const QString& light, const QString& dark);
    /// The texts of FromTexts: what differs from the default.
    QString LightText() const { return TextOf(Light, Default().Light); }
    QString DarkText() const { return TextOf(Dark, Default().Dark); }

    friend bool operator==(const TokenPalette&, const TokenPalette&) = default;

private:
    static QString TextOf(const TokenColors& colors, const TokenColors& defaults);
};

} // namespace qb
