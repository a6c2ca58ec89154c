#pragma once

#include "text/TokenPalette.h"
#include "web/PageEditing.h"

namespace qb {

/// The pieces of a code text in the page editor, by the rules of a language: its name, its key, or the ending of its
/// files' names. One that is not known colours nothing.
ColouredPieces ColourCode(const QString& text, const QString& language);

/// The style sheet for code on the screen, light or dark.
QString ScreenColours(const TokenPalette& palette, bool isDark);
/// The ones that go into pages: for light backgrounds, and what is added where a page has a dark one too.
QString PageColours(const TokenPalette& palette);
QString DarkPageColours(const TokenPalette& palette);

} // namespace qb
