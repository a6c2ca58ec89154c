#pragma once

#include "text/ui/RichTextBoxOf.h"

#include <QPlainTextEdit>

namespace qb {

/// The box for source code: it lays out only the lines that are seen, so that the length of a text
/// costs nothing. Fonts, looks and colours are shown; paragraphs all stand alike.
class CodeBox : public RichTextBoxOf<QPlainTextEdit> {
    Q_OBJECT

public:
    explicit CodeBox(const RtfFont& font = CodeFont, QWidget* parent = nullptr);
};

} // namespace qb
