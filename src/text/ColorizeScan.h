#pragma once

#include "platform/richtext/IRichTextBox.h"
#include "platform/system/Work.h"
#include "text/KeywordSet.h"

#include <QString>

namespace qb {

/// What the colouriser knows of a language. Colours have red in the low byte.
struct ColorizeRules {
    KeywordSet PlainKeywords;       ///< get their spelling, in the plain colour
    KeywordSet ColouredKeywords;    ///< get their spelling and their colour
    QString CommentIdentifier;      ///< opens a comment to the end of the line
    QString CommentIdentifierStart; ///< opens a comment that may span lines
    QString CommentIdentifierEnd;
    quint32 CommentColour = 0;
    quint32 ColouredKeywordColour = 0;
    quint32 KeywordColour = 0; ///< of everything else
};

/// One pass over the text of a rich text box that paints it. It never parses: it tells word
/// characters, the double quote, the openers of comments and everything else. Its order of steps
/// is the required one, odd results included: a word right against a string grows by what follows
/// the string, the character behind a closing quote or comment is not looked at, and where both
/// openers of comments begin with the same character, those of several lines stay unpainted.
class ColorizeScan {
public:
    /// Writes only through the operations of @p box; positions in its text stay valid since what
    /// is replaced is replaced by as much. @p work counts in hundred parts and is told of a long text only.
    ColorizeScan(IRichTextBox& box, const ColorizeRules& rules, Work& work);

    /// Paints the whole text; to be called once. In the end the insertion point stands at the begin, and what is typed
    /// there is black.
    void Run();

private:
    void Step();
    void WordStep(QChar character);
    void StringStep();
    void LineCommentStep();
    void BlockCommentStep();
    void SeparatorStep();
    void PaintWord();
    void PaintRemark();
    void PaintComment(qsizetype count);
    void FlushGap();
    void UnboldLine();
    void SelectLine();
    void Select(qsizetype start, qsizetype length);
    bool Opens(const QString& identifier) const;
    bool IsWhole(const QString& identifier) const;
    qsizetype RoundsTo(qsizetype index) const;
    void ReportProgress();

    IRichTextBox& m_box;
    const ColorizeRules& m_rules;
    Work& m_work;
    QString m_text;
    QString m_header;         ///< how a section's header begins
    qsizetype m_limit;        ///< one position more than the text has: an end that separates
    qsizetype m_position = 1; ///< counted from 1
    QString m_word;
    qsizetype m_wordStart = 0;
    qsizetype m_gapCount = 0;     ///< separators since the last word was painted, less one
    qsizetype m_lineBegin = 0;    ///< of the line that was selected last
    qsizetype m_lineFeed = -1;    ///< the place of its line feed
    qsizetype m_progressStep = 0; ///< 0: no progress
    qsizetype m_nextMark = 0;
    int m_percent = 0;
};

} // namespace qb
