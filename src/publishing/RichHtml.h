#pragma once

#include "platform/richtext/RichTextDocument.h"
#include "publishing/CodeColours.h"
#include "publishing/StyleSheet.h"

#include <span>

namespace qb {

/// Appends a formatted text as paragraphs and lists, with its pictures as data; its looks are put into @p styles.
void AppendRichHtml(QByteArray& html, const RichTextDocument& document, StyleSheet& styles);

/// Appends a code text, its pieces in colour, as what stands in a `pre`.
void AppendCodeHtml(QByteArray& html, QStringView text, std::span<const CodePiece> pieces, StyleSheet& styles);

} // namespace qb
