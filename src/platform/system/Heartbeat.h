#pragma once

#include "platform/system/Work.h"

#include <QElapsedTimer>

namespace qb {

/// Tells a work several times a second, however often it is asked to, that the work goes on.
class Heartbeat {
public:
    /// @p work must outlive the object.
    explicit Heartbeat(Work& work) : m_work(work) {}

    /// False when the work is to end.
    bool Beat()
    {
        constexpr qint64 Interval = 50; // milliseconds
        if (m_ended || (m_told.isValid() && m_told.elapsed() < Interval))
            return !m_ended;
        m_told.start();
        m_work.Pulse();
        m_ended = m_work.IsCancelled();
        return !m_ended;
    }

private:
    Work& m_work;
    QElapsedTimer m_told;
    bool m_ended = false;
};

} // namespace qb
