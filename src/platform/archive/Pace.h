#pragma once

#include "platform/system/Work.h"

#include <QElapsedTimer>

namespace qb {

/// Tells a work's watcher several times a second how far it is, in bytes, and remembers that it is to end.
class Pace {
public:
    /// @p total is in bytes; the watcher is never told of more. @p work must outlive the object.
    Pace(Work& work, qint64 total) : m_work(&work), m_total(total) {}

    /// False when the work is to end.
    bool Tell(qint64 done)
    {
        constexpr qint64 Interval = 40; // milliseconds
        if (m_ended || (m_told.isValid() && m_told.elapsed() < Interval && done < m_total))
            return !m_ended;
        m_told.start();
        m_work->Advance(qMin(done, m_total), m_total);
        m_ended = m_work->IsCancelled();
        return !m_ended;
    }
    bool Ended() const { return m_ended; }

private:
    Work* m_work;
    qint64 m_total;
    QElapsedTimer m_told;
    bool m_ended = false;
};

} // namespace qb
