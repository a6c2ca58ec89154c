#pragma once

#include "platform/dao/StatementLimit.h"
#include "platform/system/Work.h"

#include <QElapsedTimer>

namespace qb {

/// While it lives, statements of a database whose end nobody knows tell a work that they go on, several times a second,
/// and end, as StatementLimit has it, when the work is cancelled.
class StatementPulse {
public:
    /// Both must outlive it.
    StatementPulse(Database& database, Work& work) : m_work(work), m_limit(database, [this] { return Beat(); })
    {
        m_told.start();
    }

private:
    bool Beat()
    {
        constexpr qint64 Interval = 50; // milliseconds
        if (m_told.elapsed() < Interval)
            return false;
        m_told.restart();
        m_work.Pulse();
        return m_work.IsCancelled();
    }

    Work& m_work;
    QElapsedTimer m_told;
    StatementLimit m_limit;
};

} // namespace qb
