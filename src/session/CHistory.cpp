#include "session/CHistory.h"

namespace qb {

namespace {
constexpr qsizetype LongestHistory = 31;
} // namespace

void CHistory::AddToHistory(const QString& key)
{
    if (m_position > 0 && m_keys[m_position - 1] == key)
        return;
    if (m_position < m_keys.size())
        m_keys.append(QString(m_keys[m_position - 1]));
    if (m_keys.size() >= LongestHistory)
        m_keys.remove(0, m_keys.size() - LongestHistory + 1);
    m_keys.append(key);
    m_position = m_keys.size();
    Q_EMIT LastHistoryItem();
    Q_EMIT HistoryItemAdded();
}

QString CHistory::PreviousInHistory()
{
    if (m_position == 0) {
        Q_EMIT FirstHistoryItem();
        Q_EMIT LastHistoryItem();
        return {};
    }
    if (m_position > 1)
        --m_position;
    const QString key = m_keys[m_position - 1];
    if (m_position == 1)
        Q_EMIT FirstHistoryItem();
    Q_EMIT HistoryMovedBack();
    return key;
}

QString CHistory::NextInHistory()
{
    if (m_position == 0) {
        Q_EMIT FirstHistoryItem();
        Q_EMIT LastHistoryItem();
        return {};
    }
    if (m_position < m_keys.size())
        ++m_position;
    const QString key = m_keys[m_position - 1];
    if (m_position == m_keys.size())
        Q_EMIT LastHistoryItem();
    Q_EMIT HistoryMovedForward();
    return key;
}

} // namespace qb
