#include "text/ColorizeScan.h"

#include <algorithm>
#include <cmath>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype MostRounds = 9999999; ///< of every inner loop
constexpr qsizetype LongestWithoutProgress = 3000;
constexpr int ProgressMarks = 20;
constexpr int PercentAMark = 5;
constexpr int Whole = 100;

bool IsWordCharacter(QChar character)
{
    const char16_t unit = character.unicode();
    return (unit >= u'a' && unit <= u'z') || (unit >= u'A' && unit <= u'Z') || (unit >= u'0' && unit <= u'9')
           || unit == u'_';
}

/// Lower case letter by letter, so that the length stays.
QString Lowered(QString text)
{
    std::transform(text.begin(), text.end(), text.begin(), [](QChar character) { return character.toLower(); });
    return text;
}

} // namespace

ColorizeScan::ColorizeScan(IRichTextBox& box, const ColorizeRules& rules, Work& work)
    : m_box(box), m_rules(rules), m_work(work), m_text(box.Text()),
      m_header(rules.CommentIdentifier + u"###############   "_s), m_limit(m_text.size() + 1)
{
    if (m_limit > LongestWithoutProgress)
        m_progressStep = qsizetype(std::nearbyint(double(m_limit) / ProgressMarks)); // ties to even
    m_nextMark = m_progressStep;
}

void ColorizeScan::Run()
{
    if (m_progressStep > 0)
        m_work.Advance(0, Whole);
    for (; m_position <= m_limit; ++m_position) {
        ReportProgress();
        Step();
    }
    if (m_progressStep > 0)
        m_work.Advance(Whole, Whole);
    Select(0, 0);
    m_box.SetSelColor(0);
}

void ColorizeScan::ReportProgress()
{
    if (m_progressStep == 0 || m_position < m_nextMark)
        return;
    m_nextMark += m_progressStep;
    m_percent += PercentAMark;
    m_work.Advance(m_percent, Whole);
}

void ColorizeScan::Step()
{
    const bool atEnd = m_position > m_text.size();
    const QChar character = atEnd ? QChar() : m_text[m_position - 1];
    if (!atEnd && IsWordCharacter(character))
        return WordStep(character);
    if (!atEnd && character == u'"')
        return StringStep();
    // An opener that begins alike and is another one goes straight to the separators.
    if (Opens(m_rules.CommentIdentifier))
        return IsWhole(m_rules.CommentIdentifier) ? LineCommentStep() : SeparatorStep();
    if (Opens(m_rules.CommentIdentifierStart))
        return IsWhole(m_rules.CommentIdentifierStart) ? BlockCommentStep() : SeparatorStep();
    SeparatorStep();
}

/// The character here is the first of @p identifier. An empty one begins with the empty character
/// that stands behind the text.
bool ColorizeScan::Opens(const QString& identifier) const
{
    if (m_position > m_text.size())
        return identifier.isEmpty();
    return !identifier.isEmpty() && m_text[m_position - 1] == identifier.front();
}

bool ColorizeScan::IsWhole(const QString& identifier) const
{
    return identifier.size() <= 1 || QStringView(m_text).sliced(m_position - 1).startsWith(identifier);
}

void ColorizeScan::Select(qsizetype start, qsizetype length)
{
    m_box.SetSelStart(start);
    m_box.SetSelLength(length);
}

void ColorizeScan::WordStep(QChar character)
{
    if (m_word.isEmpty())
        m_wordStart = m_position;
    m_word += character;
    FlushGap();
}

/// Paints the separators that follow the range painted last. A single one keeps its colour.
void ColorizeScan::FlushGap()
{
    if (m_gapCount == 0)
        return;
    Select(m_box.SelStart() + m_box.SelLength(), m_gapCount + 1);
    m_box.SetSelColor(m_rules.KeywordColour);
    m_gapCount = 0;
}

void ColorizeScan::SeparatorStep()
{
    if (m_word.isEmpty()) {
        ++m_gapCount;
        return;
    }
    PaintWord();
    if (m_word.compare("REM"_L1, Qt::CaseInsensitive) == 0)
        PaintRemark();
    m_word.clear();
}

void ColorizeScan::PaintWord()
{
    Select(m_wordStart - 1, m_word.size());
    const QStringView plain = m_rules.PlainKeywords.Find(m_word);
    const QStringView known = plain.isNull() ? m_rules.ColouredKeywords.Find(m_word) : plain;
    if (known.isNull()) {
        m_box.SetSelColor(m_rules.KeywordColour);
        if (m_box.SelBold() == true) { // only the word loses its bold here
            m_box.SetSelBold(false);
            SelectLine();
        }
        return;
    }
    m_box.SetSelColor(plain.isNull() ? m_rules.ColouredKeywordColour : m_rules.KeywordColour);
    const QStringView range = QStringView(m_text).sliced(m_wordStart - 1, m_word.size());
    if (!range.contains(u'\r') && !range.contains(u'\n')) // half a line end can't be written over
        m_box.SetSelText(known.toString());
    UnboldLine();
}

/// A remark, in any language, is set in lower case up to the end of its line; on the last line
/// that is where the rounds end.
void ColorizeScan::PaintRemark()
{
    constexpr qsizetype WordLength = 3;
    const qsizetype start = m_position - WordLength - 1;
    const qsizetype rounds = RoundsTo(m_text.indexOf("\r\n"_L1, m_position - 1));
    m_position += rounds;
    Select(start, WordLength + rounds);
    m_box.SetSelColor(m_rules.ColouredKeywordColour);
    m_box.SetSelText(Lowered(m_box.SelText()));
    UnboldLine();
}

/// How many rounds of one position each lead from here to an index of the text; all of them when
/// there is no such index (-1).
qsizetype ColorizeScan::RoundsTo(qsizetype index) const
{
    return index < 0 ? MostRounds : std::min(MostRounds, index + 1 - m_position);
}

void ColorizeScan::StringStep()
{
    FlushGap();
    const qsizetype start = m_position - 1;
    qsizetype end = m_position; // index of the next character
    while (end < m_text.size() && m_text[end] != u'"' && m_text[end] != u'\r')
        ++end;
    const qsizetype rounds = std::min(MostRounds, end - m_position);
    m_position += rounds;
    if (end == m_text.size()) { // no end of the string: it is abandoned without paint
        m_position = m_limit + 1;
        return;
    }
    m_position += 2; // with the step of the scan, the character behind the quote is not looked at
    Select(start, rounds + 1);
    m_box.SetSelColor(m_rules.KeywordColour);
    UnboldLine();
}

void ColorizeScan::LineCommentStep()
{
    m_box.SetSelStart(m_position - 1);
    const qsizetype end = m_text.indexOf("\r\n"_L1, m_position - 1);
    const qsizetype count = end < 0 ? std::min(MostRounds, m_limit + 1) : RoundsTo(end);
    m_position += count;
    PaintComment(count);
}

void ColorizeScan::BlockCommentStep()
{
    m_box.SetSelStart(m_position - 1);
    const QString& closer = m_rules.CommentIdentifierEnd;
    const qsizetype end = m_text.indexOf(closer, m_position - 1);
    const qsizetype count = end < 0 ? std::min(MostRounds, m_limit + 1) : RoundsTo(end) + closer.size();
    m_position += count;
    PaintComment(count);
}

void ColorizeScan::PaintComment(qsizetype count)
{
    const qsizetype start = m_box.SelStart();
    const bool header = m_box.SelBold() == true && QStringView(m_text).sliced(start).startsWith(m_header);
    if (header) {
        // The header of a section stays as it is. The next gap begins behind it.
        m_box.SetSelStart(start + count);
        return;
    }
    m_box.SetSelLength(count);
    m_box.SetSelColor(m_rules.CommentColour);
    UnboldLine();
}

void ColorizeScan::UnboldLine()
{
    if (m_box.SelBold() != true)
        return;
    SelectLine();
    m_box.SetSelBold(false);
}

/// The line that holds the insertion point, without its end. Its place is remembered, since a long
/// bold line is selected at each of its words.
void ColorizeScan::SelectLine()
{
    const qsizetype start = m_box.SelStart();
    if (start < m_lineBegin || start > m_lineFeed) {
        const qsizetype feed = m_text.indexOf(u'\n', start);
        m_lineFeed = feed < 0 ? m_text.size() : feed;
        m_lineBegin = start == 0 ? 0 : m_text.lastIndexOf(u'\n', start - 1) + 1;
    }
    const qsizetype end = m_text.indexOf(u'\r', m_lineBegin);
    Select(m_lineBegin, (end < 0 ? m_text.size() : end) - m_lineBegin);
}

} // namespace qb
