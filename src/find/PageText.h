#pragma once

#include <QString>

namespace qb {

/// What a reader sees of a page in HTML: its title and text, with a line a block; no markup, scripts, styles or
/// comments. Never fails.
QString TextOfPage(const QString& html);

} // namespace qb
