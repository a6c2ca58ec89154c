#pragma once

#include "platform/richtext/IRichTextBox.h"
#include "text/RuleScan.h"
#include "text/TokenPalette.h"

#include <functional>

namespace qb {

/// Paints the whole text of a box by rules: colours only, never a character. The headers of
/// sections, bold lines that begin with @p header, stay as they are; all else loses what looks it
/// had. @p progress gets percentages from 0 to 100 of a long text.
void PaintByRules(IRichTextBox& box, RuleScan& scan, const TokenColors& colors, const QString& header,
                  const std::function<void(int percent)>& progress);

/// Takes the colours off, as a text stands in a box that colours what it shows by itself.
void TakePaintOff(IRichTextBox& box, const QString& header);

/// How the header of a section begins in a language with that comment.
QString HeaderBegin(const QString& commentIdentifier);

} // namespace qb
