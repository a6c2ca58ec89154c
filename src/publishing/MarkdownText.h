#pragma once

#include "platform/richtext/RichTextDocument.h"

#include <QString>
#include <functional>

namespace qb {

/// A text as Markdown that says the same: what would be markup is escaped, and a line end is one.
QString MarkdownText(const QString& text);

/// The same in one line, for headings and the texts of links.
QString MarkdownLine(const QString& text);

/// A code block with the name of its language behind a fence longer than any in the text.
QString MarkdownCode(const QString& text, const QString& language);

/// A relative path, or an address, as the target of a link.
QString MarkdownTarget(const QString& path);

/// A text in the quotes of a front matter.
QString YamlText(const QString& text);

/// Formatted text: paragraphs, lists, bold, italic, struck out text, links and pictures; fonts and colours have no
/// form there. @p picture is told of each picture and returns the path to it.
QString MarkdownNotes(const RichTextDocument& document, const std::function<QString(const TextPicture&)>& picture);

/// The word behind a fence for a language: as its definition file is called where it comes with the program.
QString FenceWord(const QString& language);

} // namespace qb
