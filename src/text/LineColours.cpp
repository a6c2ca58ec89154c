#include "text/LineColours.h"

#include <algorithm>
#include <utility>

namespace qb {

void LineColours::Reset(std::shared_ptr<RuleScan> scan, int lines)
{
    m_scan = std::move(scan);
    m_begins.assign(size_t(std::max(1, lines)), RuleScan::Begin);
    m_valid = m_suspect = m_known = 1;
    m_scanned = 0;
}

void LineColours::LinesChanged(int first, int removed, int added)
{
    first = std::clamp(first, 0, LineCount() - 1);
    removed = std::clamp(removed, 1, LineCount() - first);
    added = std::max(1, added);
    const int behind = first + removed;
    const bool anySuspect = m_suspect < m_known;
    if (first < m_valid && !anySuspect) {
        m_suspect = std::min(behind, m_valid); // what was right goes on being so if the change leaves nothing open
        m_known = m_valid;
    } else if (first >= m_suspect && first < m_known) {
        m_known = first + 1; // a second place: what is behind it is forgotten
    } else {
        m_suspect = std::max(m_suspect, behind);
    }
    m_valid = std::min(m_valid, first + 1);
    const int shift = added - removed;
    const auto place = m_begins.begin() + first + 1;
    if (shift > 0)
        m_begins.insert(place, size_t(shift), RuleScan::Begin);
    else
        m_begins.erase(place, place - shift);
    if (m_suspect >= behind && m_suspect < m_known) {
        m_suspect += shift;
        m_known += shift;
    } else if (m_suspect >= m_known) {
        m_suspect = m_known = m_valid;
    }
}

void LineColours::ScanUpTo(int line, const TextOfLine& textOf)
{
    while (m_valid <= line) {
        const int here = m_valid - 1;
        const int behind = m_scan->ScanLine(textOf(here), m_begins[size_t(here)], m_tokens);
        ++m_scanned;
        const bool meets = m_valid >= m_suspect && m_valid < m_known && m_begins[size_t(m_valid)] == behind;
        if (m_valid < LineCount())
            m_begins[size_t(m_valid)] = behind;
        m_valid = meets ? m_known : m_valid + 1;
        m_known = std::max(m_known, m_valid);
        m_suspect = std::max(m_suspect, m_valid);
    }
}

const std::vector<Token>& LineColours::TokensOf(int line, const TextOfLine& textOf)
{
    m_tokens.clear();
    if (!m_scan || line < 0 || line >= LineCount())
        return m_tokens;
    ScanUpTo(line, textOf);
    m_scan->ScanLine(textOf(line), m_begins[size_t(line)], m_tokens);
    ++m_scanned;
    return m_tokens;
}

} // namespace qb
