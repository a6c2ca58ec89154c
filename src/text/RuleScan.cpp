#include "text/RuleScan.h"

#include "text/ScanCharacters.h"

#include <algorithm>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

constexpr size_t MostStates = 100000; ///< a text that makes more goes on as if nothing were open

} // namespace

RuleScan::RuleScan(std::shared_ptr<const LanguageRules> rules) : m_rules(std::move(rules))
{
    m_numbers.insert(Stack{}, Begin);
}

// States

void RuleScan::Load(int state)
{
    m_stack = m_states[size_t(state) < m_states.size() ? size_t(state) : 0];
    m_stackChanged = false;
    m_heredocs.clear();
    Refresh();
}

int RuleScan::Save()
{
    if (m_stack.isEmpty())
        return Begin;
    const auto known = m_numbers.constFind(m_stack);
    if (known != m_numbers.constEnd())
        return *known;
    if (m_states.size() >= MostStates)
        return Begin;
    m_states.push_back(m_stack);
    const int number = int(m_states.size()) - 1;
    m_numbers.insert(m_stack, number);
    return number;
}

/// What the frames mean for what comes next.
void RuleScan::Refresh()
{
    m_context = 0;
    m_paintAll.reset();
    for (const Frame& frame : std::as_const(m_stack)) {
        if (frame.What == Frame::Is::Context)
            m_context = frame.Context;
        if (frame.What == Frame::Is::Interpolation && !m_paintAll)
            m_paintAll = RuleOf(frame).Paint;
    }
}

int RuleScan::ScanLine(QStringView line, int state, std::vector<Token>& tokens)
{
    m_line = line;
    m_isText.reset();
    m_at = 0;
    m_tokens = &tokens;
    m_tokens->clear();
    Load(state);
    m_firstInLine = 0;
    while (m_firstInLine < line.size() && IsBlank(line[m_firstInLine]))
        ++m_firstInLine;
    if (!m_stack.isEmpty() && m_stack.back().What == Frame::Is::Heredoc)
        ScanHeredoc();
    int idle = 0; // contexts may be entered and left again without a step
    while (m_at < m_line.size()) {
        constexpr int MostIdle = 200;
        const qsizetype before = m_at;
        if (idle > MostIdle)
            ++m_at;
        else if (!m_stack.isEmpty() && m_stack.back().What == Frame::Is::Span)
            ScanSpan();
        else
            ScanContextHere();
        idle = m_at == before ? idle + 1 : 0;
    }
    EndLine();
    return m_stackChanged ? Save() : state;
}

/// The line ends with a character that makes it go on; two of them are an escaped one.
bool RuleScan::GoesOnBy(QChar character) const
{
    if (character.isNull())
        return false;
    qsizetype count = 0;
    while (count < m_line.size() && m_line[m_line.size() - 1 - count] == character)
        ++count;
    return count % 2 == 1;
}

/// What does not reach beyond its line ends here.
void RuleScan::EndLine()
{
    for (qsizetype i = 0; i < m_stack.size(); ++i) {
        const Frame& frame = m_stack[i];
        const bool isSpan = frame.What == Frame::Is::Span;
        if (isSpan && !RuleOf(frame).Lines && !GoesOnBy(RuleOf(frame).Escape)) {
            m_stack.resize(i); // with all that was opened within
            m_stackChanged = true;
        } else if (frame.What == Frame::Is::Context) {
            const ScanContext& context = m_rules->Contexts()[size_t(frame.Context)];
            if (context.UntilLineEnd && !GoesOnBy(context.Continues)) {
                m_stack.removeAt(i--);
                m_stackChanged = true;
            }
        }
    }
    for (auto heredoc = m_heredocs.crbegin(); heredoc != m_heredocs.crend(); ++heredoc) {
        m_stack.append(*heredoc); // the first on top
        m_stackChanged = true;
    }
}

// Painting

void RuleScan::Paint(qsizetype begin, qsizetype end, TokenKind kind)
{
    if (m_paintAll)
        kind = *m_paintAll;
    if (kind == TokenKind::Text || end <= begin)
        return;
    if (!m_tokens->empty() && m_tokens->back().Kind == kind
        && m_tokens->back().Begin + m_tokens->back().Length == begin)
        m_tokens->back().Length += int(end - begin);
    else
        m_tokens->push_back({int(begin), int(end - begin), kind});
}

// Inside something that is open

void RuleScan::ScanSpan()
{
    Frame& frame = m_stack.back();
    const ScanRule& rule = RuleOf(frame);
    const bool isQuote = rule.Kind == ScanRule::Form::Quote;
    const QString closer = isQuote ? frame.Mark.mid(1, 1) : rule.Kind == ScanRule::Form::Raw ? frame.Mark : rule.Close;
    if (closer.isEmpty()) { // a comment of one line that the next one belongs to
        Paint(m_at, m_line.size(), rule.Paint);
        m_at = m_line.size();
        return;
    }
    const QChar bracket = isQuote && frame.Mark[0] != frame.Mark[1] ? frame.Mark[0] : QChar();
    const Qt::CaseSensitivity sensitivity = m_rules->FoldsCase() ? Qt::CaseInsensitive : Qt::CaseSensitive;
    const qsizetype begin = m_at;
    const QChar first = closer.front();
    const QChar firstOther = m_rules->FoldsCase() ? (first.isUpper() ? first.toLower() : first.toUpper()) : first;
    for (; m_at < m_line.size(); ++m_at) {
        const QChar character = m_line[m_at];
        const bool interpolates = !rule.InterpolationOpen.isEmpty() && Holds(m_at, rule.InterpolationOpen);
        if (character == rule.Escape && !rule.Escape.isNull() && !interpolates) {
            if (m_at + 1 < m_line.size())
                ++m_at;
            continue;
        }
        if ((character == first || character == firstOther)
            && m_line.sliced(m_at, std::min(closer.size(), m_line.size() - m_at)).compare(closer, sensitivity) == 0) {
            if (rule.Doubled && Holds(m_at + closer.size(), closer)) {
                m_at += 2 * closer.size() - 1;
                continue;
            }
            if (frame.Depth > 0) {
                --frame.Depth;
                m_stackChanged = true;
                m_at += closer.size() - 1;
                continue;
            }
            m_at += closer.size();
            Paint(begin, m_at, rule.Paint);
            return CloseSpan(rule);
        }
        if (rule.Nested && Holds(m_at, rule.Open)) {
            ++frame.Depth;
            m_stackChanged = true;
            m_at += rule.Open.size() - 1;
        } else if (!bracket.isNull() && character == bracket) {
            ++frame.Depth;
            m_stackChanged = true;
        } else if (interpolates && m_stack.size() < DeepestStack) {
            m_at += rule.InterpolationOpen.size();
            Paint(begin, m_at, rule.Paint);
            return OpenInterpolation();
        }
    }
    Paint(begin, m_at, rule.Paint);
}

/// What follows within the string that is open is code again.
void RuleScan::OpenInterpolation()
{
    Frame inner = m_stack.back();
    inner.What = Frame::Is::Interpolation;
    inner.Depth = 1;
    inner.Mark.clear();
    m_stack.append(inner);
    m_stackChanged = true;
    Refresh();
}

/// The closer has been passed. A quote may have a second part, as in s/.../.../ and s{...}{...}.
void RuleScan::CloseSpan(const ScanRule& rule)
{
    m_stackChanged = true;
    Frame& frame = m_stack.back();
    const bool again = rule.Kind == ScanRule::Form::Quote && frame.Mark.size() > 2;
    if (again && frame.Mark[0] == frame.Mark[1]) {
        frame.Mark.chop(1);
        return;
    }
    qsizetype at = m_at;
    while (again && at < m_line.size() && IsBlank(m_line[at]))
        ++at;
    if (again && at < m_line.size() && !m_rules->IsWordPart(m_line[at])) { // the second part has brackets of its own
        frame.Mark = QString(m_line[at]) + ClosingOf(m_line[at]);
        Paint(at, at + 1, rule.Paint);
        m_at = at + 1;
        return;
    }
    const qsizetype behind = m_at;
    while (rule.Kind == ScanRule::Form::Quote && m_at < m_line.size() && m_line[m_at].isLower())
        ++m_at;
    Paint(behind, m_at, rule.Paint);
    m_stack.removeLast();
    Refresh();
}

/// A line that stands in a heredoc, or ends it.
void RuleScan::ScanHeredoc()
{
    const Frame frame = m_stack.back();
    const ScanRule& rule = RuleOf(frame);
    const bool indented = frame.Depth != 0;
    const qsizetype begin = indented ? m_firstInLine : 0;
    const qsizetype end = begin + frame.Mark.size();
    const bool closes = Holds(begin, frame.Mark)
                        && (rule.Loose ? !m_rules->IsWordPart(At(end)) : m_line.sliced(end).trimmed().isEmpty());
    m_at = closes ? end : m_line.size();
    Paint(0, m_at, rule.Paint);
    if (!closes)
        return;
    m_stack.removeLast();
    m_stackChanged = true;
    Refresh();
    if (!m_stack.isEmpty() && m_stack.back().What == Frame::Is::Heredoc)
        m_at = m_line.size(); // the next one begins below
}

// Where the rules of a context hold

void RuleScan::ScanContextHere()
{
    const ScanContext& context = ContextHere();
    const QChar character = m_line[m_at];
    if (IsBlank(character)) {
        const qsizetype begin = m_at;
        while (m_at < m_line.size() && IsBlank(m_line[m_at]))
            ++m_at;
        return Paint(begin, m_at, context.Paint);
    }
    if (m_at == 0 || m_at == m_firstInLine) {
        if (!context.LineMatches.empty() && TryRules(context.LineMatches, true))
            return;
    }
    const char16_t unit = character.unicode();
    const std::vector<int>& openers = context.Openers[std::min<size_t>(unit, context.Openers.size() - 1)];
    const bool isWord = m_rules->IsWordStart(character);
    if (!openers.empty() && TryRules(openers, !isWord || AtWordBegin()))
        return;
    if (isWord)
        return ScanWord();
    if (context.HasNumbers
        && (IsDigit(character)
            || (character == u'.' && IsDigit(At(m_at + 1)) && AtWordBegin() && At(m_at - 1) != u'.')))
        return ScanNumber(m_at);
    if (CountBrackets(character))
        return;
    const int width = character.isHighSurrogate() && m_at + 1 < m_line.size() ? 2 : 1;
    Paint(m_at, m_at + width, context.Paint);
    m_at += width;
}

/// Within an interpolation its brackets are counted. True when the last one has closed it.
bool RuleScan::CountBrackets(QChar character)
{
    if (m_stack.isEmpty() || m_stack.back().What != Frame::Is::Interpolation)
        return false;
    Frame& frame = m_stack.back();
    const ScanRule& rule = RuleOf(frame);
    if (character == rule.InterpolationOpen.back()
        && rule.InterpolationOpen.back() != rule.InterpolationClose.front()) {
        ++frame.Depth;
        m_stackChanged = true;
        return false;
    }
    if (!Holds(m_at, rule.InterpolationClose))
        return false;
    m_stackChanged = true;
    if (--frame.Depth > 0)
        return false;
    Paint(m_at, m_at + rule.InterpolationClose.size(), rule.Paint);
    m_at += rule.InterpolationClose.size();
    m_stack.removeLast();
    Refresh();
    return true;
}

bool RuleScan::TryRules(const std::vector<int>& rules, bool atWordBegin)
{
    if (!atWordBegin)
        return false;
    return std::any_of(rules.begin(), rules.end(), [this](int rule) { return TryRule(rule); });
}

bool RuleScan::Holds(qsizetype index, QStringView text) const
{
    return index >= 0 && index + text.size() <= m_line.size() && m_line.sliced(index, text.size()) == text;
}

bool RuleScan::StandsRight(const ScanRule& rule) const
{
    if (rule.NotAfterWord && m_at > 0 && m_rules->IsWordPart(m_line[m_at - 1]))
        return false;
    switch (rule.Where) {
    case ScanRule::Place::Anywhere:
        return true;
    case ScanRule::Place::AfterBlank:
        return m_at == 0 || IsBlank(m_line[m_at - 1]);
    case ScanRule::Place::FirstInLine:
        return m_at == m_firstInLine;
    case ScanRule::Place::LineBegin:
        return m_at == 0;
    }
    return false;
}

/// The opener of a rule stands here.
bool RuleScan::Opens(const ScanRule& rule) const
{
    const qsizetype end = m_at + rule.Open.size();
    if (end > m_line.size() || !StandsRight(rule))
        return false;
    const QStringView here = m_line.sliced(m_at, rule.Open.size());
    if (m_rules->FoldsCase() ? here.compare(rule.Open, Qt::CaseInsensitive) != 0 : here != rule.Open)
        return false;
    if (rule.WholeWord && (m_rules->IsWordPart(At(end)) || IsMember(m_at)))
        return false;
    if (!rule.Follow.isEmpty() && (end >= m_line.size() || !rule.Follow.contains(m_line[end])))
        return false;
    return rule.NotFollow.isEmpty() || end >= m_line.size() || !rule.NotFollow.contains(m_line[end]);
}

bool RuleScan::TryRule(int number)
{
    const ScanRule& rule = ContextHere().Rules[size_t(number)];
    if (rule.Kind == ScanRule::Form::Match)
        return StandsRight(rule) && TryMatch(rule, number);
    if (!Opens(rule))
        return false;
    switch (rule.Kind) {
    case ScanRule::Form::Line:
        Paint(m_at, m_line.size(), rule.Paint);
        m_at = m_line.size();
        if (GoesOnBy(rule.Escape))
            PushSpan(number);
        return true;
    case ScanRule::Form::Block:
    case ScanRule::Form::String:
        return OpenSpan(rule, number);
    case ScanRule::Form::Raw:
        return OpenRaw(rule, number);
    case ScanRule::Form::Heredoc:
        return OpenHeredoc(rule, number);
    case ScanRule::Form::Quote:
        return OpenQuote(rule, number);
    case ScanRule::Form::Character:
        return TryCharacter(rule);
    case ScanRule::Form::Regex:
        return TryRegex(rule);
    case ScanRule::Form::Sigil:
        return TrySigil(rule);
    case ScanRule::Form::NumberPrefix:
        return TryNumberPrefix(rule);
    case ScanRule::Form::Enter:
        Paint(m_at, m_at + rule.Open.size(), rule.Paint);
        m_at += rule.Open.size();
        PushContext(rule, number);
        return true;
    case ScanRule::Form::Leave:
        return Leave(rule);
    case ScanRule::Form::Skip:
        Paint(m_at, m_at + rule.Open.size(), ContextHere().Paint);
        m_at += rule.Open.size();
        return true;
    case ScanRule::Form::Match:
        break;
    }
    return false;
}

void RuleScan::PushContext(const ScanRule& rule, int number)
{
    if (rule.Context < 0 || m_stack.size() >= DeepestStack)
        return;
    m_stack.append(Frame{.What = Frame::Is::Context,
                         .Context = qint16(rule.Context),
                         .Rule = qint16(number),
                         .RuleContext = qint16(m_context),
                         .Depth = 0,
                         .Mark = {}});
    m_stackChanged = true;
    Refresh();
}

bool RuleScan::Leave(const ScanRule& rule)
{
    if (m_stack.isEmpty() || m_stack.back().What != Frame::Is::Context)
        return false;
    Paint(m_at, m_at + rule.Open.size(), rule.Paint);
    m_at += rule.Open.size();
    m_stack.removeLast();
    m_stackChanged = true;
    Refresh();
    return true;
}

/// What comes next belongs to a rule. False when too much is open already.
bool RuleScan::PushSpan(int number, const QString& mark)
{
    if (m_stack.size() >= DeepestStack)
        return false;
    m_stack.append(Frame{.What = Frame::Is::Span,
                         .Context = qint16(m_context),
                         .Rule = qint16(number),
                         .RuleContext = qint16(m_context),
                         .Depth = 0,
                         .Mark = mark});
    m_stackChanged = true;
    return true;
}

bool RuleScan::OpenSpan(const ScanRule& rule, int number)
{
    if (!PushSpan(number))
        return false;
    Paint(m_at, m_at + rule.Open.size(), rule.Paint);
    m_at += rule.Open.size();
    return true;
}

} // namespace qb
