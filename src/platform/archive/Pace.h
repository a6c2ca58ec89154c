#pragma once

#include <QElapsedTimer>
#include <functional>

namespace qb {

/// Tells an observer several times a second how far a work is, in bytes, and remembers that it said to
/// end.
class Pace {
public:
    Pace(std::function<bool(qint64 done, qint64 total)> advance, qint64 total)
        : m_advance(std::move(advance)), m_total(total)
    {
    }

    /// False when the work is to end.
    bool Tell(qint64 done)
    {
        constexpr qint64 Interval = 40; // milliseconds
        if (!m_advance || m_ended || (m_told.isValid() && m_told.elapsed() < Interval && done < m_total))
            return !m_ended;
        m_told.start();
        m_ended = !m_advance(qMin(done, m_total), m_total);
        return !m_ended;
    }
    bool Ended() const { return m_ended; }

private:
    std::function<bool(qint64, qint64)> m_advance;
    qint64 m_total;
    QElapsedTimer m_told;
    bool m_ended = false;
};

} // namespace qb
