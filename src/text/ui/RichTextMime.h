#pragma once

#include "platform/richtext/RichTextDocument.h"

#include <memory>

class QMimeData;

namespace qb {

/// A text as other programs can take it: RTF, HTML and plain.
std::unique_ptr<QMimeData> MimeOfRichText(const RichTextDocument& text);

/// The RTF of what is offered: its own, or with @p foreignLooks made from HTML or a picture.
/// Empty when there is nothing but plain text.
QString RtfOfMime(const QMimeData& source, bool foreignLooks);

/// The plain text of what is offered, also of a page that comes without one.
QString TextOfMime(const QMimeData& source);

/// The text of an HTML page as rich text: fonts, sizes of headings, looks, alignment, lists, links, rows of
/// tables with a tab between cells, and pictures that the page holds itself. Nothing is fetched.
RichTextDocument RichTextFromHtml(const QString& html);

} // namespace qb
