#include "platform/richtext/RtfTables.h"

#include "platform/richtext/CodePages.h"

#include <algorithm>

namespace qb {

namespace {

// More than any real text has; what goes beyond is passed over.
constexpr qsizetype MostFonts = 4096;
constexpr size_t MostColors = 65536;
constexpr size_t MostLists = 4096;
constexpr size_t MostLevels = 9;

ListKind KindOfLevel(int code)
{
    switch (code) {
    case 0:
        return ListKind::Decimal;
    case 1:
        return ListKind::UpperRoman;
    case 2:
        return ListKind::LowerRoman;
    case 3:
        return ListKind::UpperLetter;
    case 4:
        return ListKind::LowerLetter;
    case 23:
        return ListKind::Bullet;
    default:
        return ListKind::None;
    }
}

} // namespace

void RtfFonts::Begin(int number, RichTextDocument& document)
{
    Finish(document);
    m_number = number;
}

void RtfFonts::TakeText(QStringView text, RichTextDocument& document)
{
    const qsizetype end = text.indexOf(u';');
    m_font.Name += end < 0 ? text : text.first(end);
    if (end >= 0)
        Finish(document);
}

void RtfFonts::Finish(RichTextDocument& document)
{
    m_font.Name = m_font.Name.trimmed();
    if (!m_font.Name.isEmpty() && m_entries.size() < MostFonts) {
        // Character set 0 says nothing that the document's own code page does not.
        const int codePage = m_font.CharSet == 0 ? 0 : CodePageOfCharSet(m_font.CharSet);
        m_entries.insert(m_number, {document.NumberOfFont(m_font), codePage});
    }
    m_font = {};
}

int RtfFonts::CodePageOfName() const
{
    return CodePageOfCharSet(m_font.CharSet);
}

const RtfFonts::Entry* RtfFonts::Find(int number) const
{
    const auto found = m_entries.constFind(number);
    return found == m_entries.constEnd() ? nullptr : &*found;
}

void RtfColors::SetPart(int value, int shift)
{
    const quint32 known = m_color == AutomaticColor ? 0 : m_color;
    m_color = (known & ~(0xffu << shift)) | quint32(std::clamp(value, 0, 255)) << shift;
}

void RtfColors::TakeText(QStringView text)
{
    for (const QChar character : text) {
        if (character != u';' || m_colors.size() >= MostColors)
            continue;
        m_colors.push_back(m_color);
        m_color = AutomaticColor;
    }
}

quint32 RtfColors::Find(int number) const
{
    return number >= 0 && size_t(number) < m_colors.size() ? m_colors[size_t(number)] : AutomaticColor;
}

void RtfLists::BeginList()
{
    if (m_lists.size() < MostLists)
        m_lists.push_back({});
}

void RtfLists::BeginLevel()
{
    if (!m_lists.empty() && m_lists.back().Levels.size() < MostLevels)
        m_lists.back().Levels.push_back(ListKind::None);
}

void RtfLists::SetLevelKind(int code)
{
    if (!m_lists.empty() && !m_lists.back().Levels.empty())
        m_lists.back().Levels.back() = KindOfLevel(code);
}

void RtfLists::NameOverride(int number)
{
    if (size_t(m_overrides.size()) < MostLists)
        m_overrides.insert(number, m_overriddenId);
}

ListKind RtfLists::Find(int number, size_t level) const
{
    const auto id = m_overrides.constFind(number);
    if (id == m_overrides.constEnd())
        return ListKind::None;
    const auto list = std::find_if(m_lists.begin(), m_lists.end(), [id](const List& one) { return one.Id == *id; });
    return list != m_lists.end() && level < list->Levels.size() ? list->Levels[level] : ListKind::None;
}

} // namespace qb
