#pragma once

#include "text/RuleScan.h"

namespace qb {

/// A text with the kind of each character below it: each line is followed by one of the marks of
/// TokenKindRows, a blank for plain text. This is how definitions are checked by eye and by tests.
QString MarkedText(const QString& text, RuleScan& scan);

/// Takes a marked text apart again.
struct TextAndMarks {
    QString Text;      ///< lines that end with LF
    QStringList Marks; ///< a line each
};
/// Each second line is taken for marks, as it stands; a last line without any below it is left out.
TextAndMarks FromMarkedText(const QString& marked);

/// The marks of one line.
QString MarksOf(QStringView line, const std::vector<Token>& tokens);

} // namespace qb
