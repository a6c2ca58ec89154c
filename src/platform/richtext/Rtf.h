#pragma once

#include "platform/richtext/RichTextDocument.h"

namespace qb {

/// Reads an RTF string into @p document, whose contents are replaced; its default font stays. A
/// text that is no RTF is taken as it is. Never fails: what is unknown is passed over, damaged or
/// truncated input gives what could be read. The last line end of the file is not part of the
/// text.
void ReadRtf(const QString& rtf, RichTextDocument& document);

/// Writes a document as an RTF string: ASCII only, with tables of what is used and nothing else.
/// What is read from it writes the same bytes again.
QString WriteRtf(const RichTextDocument& document);

/// The programming language that an RTF string names (RichTextDocument::Language), found without
/// reading the text.
QString LanguageInRtf(const QString& rtf);
/// The same RTF string naming another language, or none for an empty name; nothing else of it is
/// changed. An empty text stays empty: what has no text has no language.
QString WithLanguageInRtf(const QString& rtf, const QString& language);

} // namespace qb
