#pragma once

#include "text/TokenPalette.h"

namespace qb {

/// The colours of code on paper, whatever those on the screen are: dark enough to be read on white by any lamp,
/// and told apart by a printer without colours by the weight and slant that go with them.
const TokenColors& InkColors();

/// A kind of token that is printed bold, or slanted.
bool IsBoldInk(TokenKind kind);
bool IsItalicInk(TokenKind kind);

/// The least contrast of any ink with the paper.
inline constexpr double LeastInkContrast = 4.5;

/// The contrast of a colour, red in its low byte, with white paper, 1 to 21.
double InkContrast(quint32 color);
/// A colour that a text was given, made as dark as it has to be on white paper. What is automatic is black.
quint32 InkFor(quint32 color);

} // namespace qb
