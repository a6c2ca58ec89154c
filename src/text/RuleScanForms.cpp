// The single forms of rules, and words and numbers.

#include "text/RuleScan.h"
#include "text/ScanCharacters.h"

#include <algorithm>

namespace qb {

using namespace Qt::StringLiterals;

bool RuleScan::OpenRaw(const ScanRule& rule, int number)
{
    constexpr qsizetype LongestMark = 255;
    const auto isMark = [&rule](QChar character) {
        switch (rule.Mark) {
        case ScanRule::MarkOf::Word:
            return IsAlphanumeric(character) || character == u'_';
        case ScanRule::MarkOf::Hash:
            return character == u'#';
        case ScanRule::MarkOf::Equals:
            return character == u'=';
        case ScanRule::MarkOf::Any:
            return !character.isSpace() && character != u'(' && character != u')' && character != u'\\';
        }
        return false;
    };
    const qsizetype begin = m_at + rule.Open.size();
    qsizetype end = begin;
    while (end < m_line.size() && end - begin < LongestMark && isMark(m_line[end])
           && !(rule.Mark == ScanRule::MarkOf::Any && Holds(end, rule.OpenTail)))
        ++end;
    if (!Holds(end, rule.OpenTail))
        return false;
    const QString mark = m_line.sliced(begin, end - begin).toString();
    const qsizetype openEnd = end + rule.OpenTail.size();
    if (!PushSpan(number, rule.Close + mark + rule.CloseTail))
        return false;
    Paint(m_at, openEnd, rule.Paint);
    m_at = openEnd;
    return true;
}

bool RuleScan::OpenHeredoc(const ScanRule& rule, int number)
{
    qsizetype at = m_at + rule.Open.size();
    bool indented = rule.Specials == "*"_L1; // always
    if (at < m_line.size() && rule.Specials.contains(m_line[at]) && m_line[at] != u'*') {
        indented = true;
        ++at;
    }
    while (rule.Spaced && at < m_line.size() && IsBlank(m_line[at]))
        ++at;
    const QChar quote = At(at) == u'"' || At(at) == u'\'' || At(at) == u'`' ? At(at) : QChar();
    QString mark;
    if (!quote.isNull()) {
        const qsizetype close = m_line.indexOf(quote, at + 1);
        if (close < 0)
            return false;
        mark = m_line.sliced(at + 1, close - at - 1).toString();
        at = close + 1;
    } else {
        const bool escaped = At(at) == u'\\'; // as good as quotes
        if (escaped)
            ++at;
        if (!m_rules->IsWordStart(At(at)))
            return false;
        const qsizetype end = WordEnd(at);
        mark = m_line.sliced(at, end - at).toString();
        at = end;
    }
    if (mark.isEmpty() || m_stack.size() + m_heredocs.size() >= DeepestStack)
        return false;
    Paint(m_at, at, rule.Paint);
    m_at = at;
    m_heredocs.append(Frame{.What = Frame::Is::Heredoc,
                            .Context = qint16(m_context),
                            .Rule = qint16(number),
                            .RuleContext = qint16(m_context),
                            .Depth = qint16(indented ? 1 : 0),
                            .Mark = mark});
    return true;
}

/// A word and a delimiter of the text's own choice, as in q(...), m{...} and s/.../.../.
bool RuleScan::OpenQuote(const ScanRule& rule, int number)
{
    qsizetype at = m_at + rule.Open.size();
    if (m_rules->IsWordPart(rule.Open.back()) && m_rules->IsWordPart(At(at)))
        return false; // a longer word
    if (IsMember(m_at))
        return false;
    while (rule.Spaced && at < m_line.size() && IsBlank(m_line[at]))
        ++at;
    if (at >= m_line.size())
        return false;
    const QChar delimiter = m_line[at];
    const bool apart = at > m_at + rule.Open.size();
    if (delimiter.isSpace() || m_rules->IsWordPart(delimiter) || QStringView(u",;)=").contains(delimiter)
        || (apart && delimiter == u'#'))
        return false;
    const QString mark = QString(delimiter) + ClosingOf(delimiter);
    if (!PushSpan(number, rule.Parts == 2 ? mark + u'2' : mark))
        return false;
    Paint(m_at, at + 1, rule.Paint);
    m_at = at + 1;
    return true;
}

/// One character between quotes, plain or escaped; a quote that is followed by anything else is
/// none of these.
bool RuleScan::TryCharacter(const ScanRule& rule)
{
    constexpr qsizetype LongestEscape = 12;
    qsizetype at = m_at + rule.Open.size();
    if (at < m_line.size() && !rule.Escape.isNull() && m_line[at] == rule.Escape) {
        const qsizetype last = std::min(m_line.size(), at + LongestEscape);
        at += 2;
        while (at < last && m_line[at] != rule.Close.front())
            ++at;
    } else if (at < m_line.size() && m_line[at] != rule.Close.front()) {
        at += m_line[at].isHighSurrogate() ? 2 : 1;
    } else if (Holds(at, rule.Close) && Holds(at + 1, rule.Close)) {
        ++at; // ''' is the quote itself
    } else {
        return false;
    }
    if (!Holds(at, rule.Close))
        return false;
    Paint(m_at, at + rule.Close.size(), rule.Paint);
    m_at = at + rule.Close.size();
    return true;
}

/// Whether an operand can stand here, so that a slash begins an expression and divides nothing.
bool RuleScan::OperandCanStand(const ScanRule& rule) const
{
    qsizetype before = m_at - 1;
    while (before >= 0 && IsBlank(m_line[before]))
        --before;
    if (before < 0)
        return true;
    if (!m_rules->IsWordPart(m_line[before]))
        return QStringView(u"(,=:[!&|?{};+-*%~^<>").contains(m_line[before]);
    qsizetype begin = before;
    while (begin > 0 && m_rules->IsWordPart(m_line[begin - 1]))
        --begin;
    const QStringView word = m_line.sliced(begin, before + 1 - begin);
    return std::any_of(rule.After.begin(), rule.After.end(), [word](const QString& known) { return word == known; });
}

bool RuleScan::TryRegex(const ScanRule& rule)
{
    if (!OperandCanStand(rule))
        return false;
    bool inClass = false;
    qsizetype at = m_at + rule.Open.size();
    const qsizetype begin = at;
    for (; at < m_line.size(); ++at) {
        const QChar character = m_line[at];
        if (character == u'\\') {
            ++at;
        } else if (character == u'[') {
            inClass = true;
        } else if (character == u']') {
            inClass = false;
        } else if (!inClass && character == rule.Close.front()) {
            break;
        }
    }
    if (at >= m_line.size() || at == begin)
        return false;
    ++at;
    while (at < m_line.size() && m_line[at].isLower())
        ++at;
    Paint(m_at, at, rule.Paint);
    m_at = at;
    return true;
}

bool RuleScan::TrySigil(const ScanRule& rule)
{
    const qsizetype begin = m_at + rule.Open.size();
    const QChar next = At(begin);
    qsizetype end = begin;
    if (rule.Braces && next == u'{') {
        const qsizetype close = m_line.indexOf(u'}', begin);
        if (close < 0)
            return false;
        end = close + 1;
    } else if (m_rules->IsWordStart(next)) {
        end = WordEnd(begin);
        while (rule.Dotted && At(end) == u'.' && m_rules->IsWordStart(At(end + 1)))
            end = WordEnd(end + 1);
    } else if (IsDigit(next) && rule.Specials.contains(u'0')) {
        while (IsDigit(At(end)))
            ++end;
    } else if (begin < m_line.size() && rule.Specials.contains(next)) {
        ++end;
    }
    if (end == begin)
        return false;
    Paint(m_at, end, rule.Paint);
    m_at = end;
    return true;
}

bool RuleScan::TryNumberPrefix(const ScanRule& rule)
{
    const qsizetype begin = m_at + rule.Open.size();
    if (!IsHexDigit(At(begin)))
        return false;
    const qsizetype opener = m_at;
    ScanNumber(begin);
    // The prefix and the number are one.
    if (!m_tokens->empty() && m_tokens->back().Begin == begin) {
        m_tokens->back().Begin = int(opener);
        m_tokens->back().Length += int(begin - opener);
    }
    return true;
}

bool RuleScan::TryMatch(const ScanRule& rule, int number)
{
    // The expression would look through the whole line for broken surrogates, each time.
    if (!m_isText)
        m_isText = m_line.isValidUtf16();
    if (!*m_isText)
        return false;
    Expression::Match match;
    if (!rule.Pattern.MatchesAt(m_line, m_at, match))
        return false;
    const bool part = match.Group.Begin >= 0;
    const qsizetype begin = part ? match.Group.Begin : m_at;
    const qsizetype end = part ? match.Group.End : match.Whole.End;
    const bool moves = end > m_at;
    if (!moves && rule.Context < 0 && !rule.Leaves)
        return false;
    Paint(m_at, begin, ContextHere().Paint);
    Paint(begin, end, rule.Paint);
    m_at = std::max(m_at, end);
    const int context = m_context;
    if (rule.Leaves && !m_stack.isEmpty() && m_stack.back().What == Frame::Is::Context) {
        m_stack.removeLast();
        m_stackChanged = true;
        Refresh();
    } else if (rule.Leaves && !moves) {
        return false;
    }
    if (rule.Context >= 0) {
        const qsizetype depth = m_stack.size();
        PushContext(rule, number);
        if (m_stack.size() > depth)
            m_stack.back().RuleContext = qint16(context);
        else if (!moves)
            return false;
    }
    return true;
}

// Words and numbers

qsizetype RuleScan::WordEnd(qsizetype begin) const
{
    qsizetype end = begin;
    while (end < m_line.size() && m_rules->IsWordPart(m_line[end]))
        ++end;
    return end;
}

bool RuleScan::IsMember(qsizetype begin) const
{
    const QStringList& marks = m_rules->MemberMarks();
    return std::any_of(marks.begin(), marks.end(), [&](const QString& mark) {
        const bool isRange = mark == "."_L1 && At(begin - 2) == u'.'; // a..if
        return Holds(begin - mark.size(), mark) && !isRange;
    });
}

void RuleScan::ScanWord()
{
    const ScanContext& context = ContextHere();
    const qsizetype begin = m_at;
    m_at = WordEnd(m_at);
    const std::optional<TokenKind> known = context.Words.Find(m_line.sliced(begin, m_at - begin));
    const bool isPainted = known && *known != TokenKind::Text && !IsMember(begin);
    Paint(begin, m_at, isPainted ? *known : context.Paint);
}

void RuleScan::ScanNumber(qsizetype begin)
{
    const QStringView separators = m_rules->NumberSeparators();
    const bool isHex = At(begin) == u'0' && (At(begin + 1) == u'x' || At(begin + 1) == u'X');
    bool hasPoint = false;
    qsizetype at = begin;
    for (; at < m_line.size(); ++at) {
        const QChar character = m_line[at];
        if (IsAlphanumeric(character)) {
            const bool isExponent = isHex ? character == u'p' || character == u'P'
                                          : character == u'e' || character == u'E';
            if (isExponent && (At(at + 1) == u'+' || At(at + 1) == u'-') && IsDigit(At(at + 2)))
                ++at;
        } else if (character == u'.') {
            const QChar next = At(at + 1);
            const bool goesOn =
                IsDigit(next) || (isHex && IsHexDigit(next))
                || (next != u'.'
                    && (!m_rules->IsWordStart(next)
                        || (QStringView(u"fFlLeE").contains(next) && !m_rules->IsWordPart(At(at + 2)))));
            if (hasPoint || !goesOn)
                break;
            hasPoint = true;
        } else if (!separators.contains(character) || !IsAlphanumeric(At(at + 1))) {
            break;
        }
    }
    Paint(begin, at, TokenKind::Number);
    m_at = at;
}

} // namespace qb
