#pragma once

#include "platform/richtext/IRichTextBox.h"
#include "platform/system/Work.h"
#include "text/RuleScan.h"
#include "text/TokenPalette.h"

namespace qb {

/// Paints the whole text of a box by rules: colours only, never a character. The headers of
/// sections, whatever opens a comment in them, stay as they are; all else loses what looks it had.
/// @p work counts in hundred parts and is told of a long text only.
void PaintByRules(IRichTextBox& box, RuleScan& scan, const TokenColors& colors, Work& work);

/// Takes the colours off, as a text stands in a box that colours what it shows by itself.
void TakePaintOff(IRichTextBox& box);

/// Whether a line is the header of a section if it is bold: behind a comment's opener stand fifteen
/// hash marks and blanks.
bool ReadsLikeHeader(QStringView line);

} // namespace qb
