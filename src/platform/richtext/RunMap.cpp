#include "platform/richtext/RunMap.h"

#include <algorithm>
#include <limits>

namespace qb {

void RunMap::Clear(quint32 value)
{
    m_before.assign(1, {0, value});
    m_behind.clear();
    m_shift = 0;
}

size_t RunMap::IndexAt(qsizetype position) const
{
    const bool before = m_before.back().first > position;
    const bool atGap = !before && (m_behind.empty() || m_behind.back().first + m_shift > position);
    if (atGap)
        return m_before.size() - 1;
    if (before) {
        const auto behind = std::upper_bound(m_before.begin(), m_before.end(), position,
                                             [](qsizetype at, const Run& run) { return at < run.first; });
        return size_t(behind - m_before.begin()) - 1;
    }
    // The runs behind the gap stand in reverse: the first of them that begins at or before.
    const auto found = std::lower_bound(m_behind.begin(), m_behind.end(), position - m_shift,
                                        [](const Run& run, qsizetype at) { return run.first > at; });
    return Count() - 1 - size_t(found - m_behind.begin());
}

/// Puts the gap behind the run that holds @p position.
void RunMap::MoveGapTo(qsizetype position)
{
    while (!m_behind.empty() && m_behind.back().first + m_shift <= position) {
        m_before.push_back({m_behind.back().first + m_shift, m_behind.back().second});
        m_behind.pop_back();
    }
    while (m_before.back().first > position) {
        m_behind.push_back({m_before.back().first - m_shift, m_before.back().second});
        m_before.pop_back();
    }
}

/// Adds a run before the gap, unless it goes on with the last one's value.
void RunMap::PushBefore(Run run)
{
    if (m_before.empty() || m_before.back().second != run.second)
        m_before.push_back(run);
}

void RunMap::Set(qsizetype begin, qsizetype end, quint32 value)
{
    if (begin >= end)
        return;
    MoveGapTo(end);
    const quint32 valueAtEnd = m_before.back().second;
    while (!m_before.empty() && m_before.back().first >= begin)
        m_before.pop_back();
    PushBefore({begin, value});
    PushBefore({end, valueAtEnd});
}

void RunMap::Squeeze()
{
    m_before.shrink_to_fit();
    m_behind.shrink_to_fit();
}

void RunMap::Append(qsizetype begin, quint32 value)
{
    MoveGapTo(std::numeric_limits<qsizetype>::max());
    while (!m_before.empty() && m_before.back().first >= begin)
        m_before.pop_back();
    PushBefore({begin, value});
}

void RunMap::Insert(qsizetype at, qsizetype length, quint32 value)
{
    if (length <= 0)
        return;
    MoveGapTo(at);
    m_shift += length;
    const Run held = m_before.back();
    if (held.first == at && at > 0) {
        // What begins here begins behind what comes in.
        m_before.pop_back();
        m_behind.push_back({at + length - m_shift, held.second});
    }
    Set(at, at + length, value);
}

void RunMap::Erase(qsizetype at, qsizetype length)
{
    if (length <= 0)
        return;
    MoveGapTo(at + length);
    const quint32 valueBehind = m_before.back().second;
    while (!m_before.empty() && m_before.back().first >= at)
        m_before.pop_back();
    m_shift -= length;
    PushBefore({at, valueBehind});
}

} // namespace qb
