#pragma once

#include "store/LanguageDefinition.h"

namespace qb {

/// Reads a table of a language, from which a definition file is made: lines "key: value" (language,
/// comment, comment-start, comment-end), then the sections [coloured] and [plain] of words parted
/// by blanks, then [rules], whose lines are the definition's rules; lines that begin with "# " are
/// remarks. Raises RuntimeError 5 with the line's number
/// for what it can't be, and for a definition that no library could hold.
LanguageDefinition LanguageFromTable(const QString& text);

} // namespace qb
