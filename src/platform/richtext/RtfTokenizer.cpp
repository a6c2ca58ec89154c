#include "platform/richtext/RtfTokenizer.h"

#include <QString>
#include <algorithm>
#include <limits>

namespace qb {

namespace {

bool IsLetter(QChar character)
{
    const char16_t lower = character.unicode() | 0x20;
    return lower >= u'a' && lower <= u'z';
}

bool IsDigit(QChar character)
{
    return character >= u'0' && character <= u'9';
}

bool IsHexDigit(QChar character)
{
    const char16_t lower = character.unicode() | 0x20;
    return IsDigit(character) || (lower >= u'a' && lower <= u'f');
}

/// Characters that stand for nothing in the text.
bool IsIgnored(QChar character)
{
    return character == u'\r' || character == u'\n' || character == u'\0';
}

bool EndsText(QChar character)
{
    return character == u'\\' || character == u'{' || character == u'}' || IsIgnored(character);
}

} // namespace

RtfToken RtfTokenizer::Next()
{
    while (m_at < m_rtf.size() && IsIgnored(m_rtf[m_at]))
        ++m_at;
    if (m_at >= m_rtf.size())
        return {};
    const qsizetype begin = m_at++;
    switch (m_rtf[begin].unicode()) {
    case u'{':
        return {.What = RtfToken::GroupBegin, .Text = {}};
    case u'}':
        return {.What = RtfToken::GroupEnd, .Text = {}};
    case u'\\':
        return Control();
    default:
        return PlainText(begin);
    }
}

RtfToken RtfTokenizer::PlainText(qsizetype begin)
{
    const auto end = std::find_if(m_rtf.begin() + m_at, m_rtf.end(), EndsText);
    m_at = end - m_rtf.begin();
    return {.What = RtfToken::Characters, .Text = m_rtf.sliced(begin, m_at - begin)};
}

RtfToken RtfTokenizer::Control()
{
    if (m_at >= m_rtf.size())
        return {};
    if (IsLetter(m_rtf[m_at]))
        return ControlWord();
    const QStringView symbol = m_rtf.sliced(m_at++, 1);
    return symbol == u"'" ? HexByte() : RtfToken{.What = RtfToken::Symbol, .Text = symbol};
}

RtfToken RtfTokenizer::HexByte()
{
    constexpr qsizetype Digits = 2;
    const QStringView digits = m_rtf.mid(m_at, Digits);
    const int byte = digits.toInt(nullptr, 16);
    if (digits.size() < Digits || !std::all_of(digits.begin(), digits.end(), IsHexDigit))
        return {.What = RtfToken::Symbol, .Text = digits.first(0)}; // not understood: passed over
    m_at += Digits;
    return {.What = RtfToken::Byte, .Text = {}, .Number = byte};
}

RtfToken RtfTokenizer::ControlWord()
{
    const qsizetype begin = m_at;
    while (m_at < m_rtf.size() && IsLetter(m_rtf[m_at]))
        ++m_at;
    RtfToken token{.What = RtfToken::Word, .Text = m_rtf.sliced(begin, m_at - begin)};
    token.HasNumber = ReadNumber(token.Number);
    if (m_at < m_rtf.size() && m_rtf[m_at] == u' ')
        ++m_at;
    return token.Text == u"bin" ? Raw(token) : token;
}

/// Reads a number where one stands; one that is too large reads as the largest.
bool RtfTokenizer::ReadNumber(int& number)
{
    qsizetype at = m_at;
    const bool negative = at < m_rtf.size() && m_rtf[at] == u'-';
    at += negative;
    if (at >= m_rtf.size() || !IsDigit(m_rtf[at]))
        return false;
    qint64 value = 0;
    for (; at < m_rtf.size() && IsDigit(m_rtf[at]); ++at)
        value = std::min(value * 10 + (m_rtf[at].unicode() - u'0'), qint64(std::numeric_limits<int>::max()));
    m_at = at;
    number = int(negative ? -value : value);
    return true;
}

/// A length that the string can't hold is a lie: nothing is taken, so that no text is lost to it.
RtfToken RtfTokenizer::Raw(const RtfToken& word)
{
    const qsizetype length = std::max(0, word.Number);
    if (length > m_rtf.size() - m_at)
        return {.What = RtfToken::Binary, .Text = m_rtf.first(0)};
    m_at += length;
    return {.What = RtfToken::Binary, .Text = m_rtf.sliced(m_at - length, length)};
}

} // namespace qb
