#pragma once

class QString;

namespace qb {

class IRichTextBox;

/// What one step of indentation is.
const QString& LineIndent();

/// Indents all lines that the selection touches by one step, and selects them; empty lines and
/// protected ones stay as they are.
void IndentLines(IRichTextBox& box);
/// Takes one step back: up to four blanks, or a tab. Without a selection of the caret's line.
void UnindentLines(IRichTextBox& box);

} // namespace qb
