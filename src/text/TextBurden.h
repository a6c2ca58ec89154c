#pragma once

#include <QString>

namespace qb {

/// What a text asks of the box that it is shown in. Counted over its RTF, which need not be read for it.
struct TextBurden {
    qsizetype Characters = 0;
    qsizetype Lines = 0;
    qsizetype LongestLine = 0; ///< in characters
    qsizetype Words = 0;       ///< that change looks, or do anything else
    qsizetype WordsOfLine = 0; ///< the most of them in one line
    qsizetype LongestRun = 0;  ///< of characters without a blank, in one line
};
/// The box for formatted text lays out a whole line at a time. It takes the square of its changes of looks for it, and
/// of the length of what can't be broken.
enum class TextForm { Formatted, Code };
TextBurden BurdenOf(QStringView rtf);

/// Why a text is too large to be shown whole and edited in the window, as the end of a sentence; empty when it is not.
QString WhyTooLarge(const TextBurden& burden, TextForm form);

/// What is shown of a text that is too large: a sentence that says so with @p reason, and its begin as plain text. The
/// rest of it is not lost: it stays in the library as it is.
QString PlainBegin(const QString& rtf, const QString& reason);
/// The same of a text that is no RTF.
QString PlainBeginOfText(const QString& text, const QString& reason);

} // namespace qb
