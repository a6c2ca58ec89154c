#pragma once

#include "platform/richtext/RichTextDocument.h"

namespace qb {

/// Writes a document as an HTML page that stands for itself: one preformatted block, the looks as
/// inline styles, pictures as data.
QString WriteHtml(const RichTextDocument& document, const QString& title);

} // namespace qb
