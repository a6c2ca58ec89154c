#pragma once

#include <QString>

namespace qb {

/// Shows the program in a colour scheme ("System", "Light" or "Dark") and a font; an empty name or
/// a size of 0 means the system's own.
void ApplyAppearance(const QString& colourScheme, const QString& fontName, int fontSize);

} // namespace qb
