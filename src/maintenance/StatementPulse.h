#pragma once

#include "maintenance/PhasedWork.h"
#include "platform/dao/StatementLimit.h"
#include "platform/system/Heartbeat.h"
#include "platform/system/RunBeside.h"

namespace qb {

/// While it lives, statements of a database whose end nobody knows tell a work that they go on, several times a second,
/// and end, as StatementLimit has it, when the work is cancelled.
class StatementPulse {
public:
    /// Both must outlive it.
    StatementPulse(Database& database, Work& work)
        : m_heart(work), m_limit(database, [this] { return !m_heart.Beat(); })
    {
    }

private:
    Heartbeat m_heart;
    StatementLimit m_limit;
};

/// Runs statements that are a single step of the engine, however long that takes: a check of the structure, room for a
/// large value, the end of a column with large ones. The work tells meanwhile that it goes on; RuntimeError 18 is
/// raised when it was cancelled. Nobody else may use the database until then.
inline void RunPulsed(Database& database, Work& work, const std::function<void()>& statements)
{
    bool isCancelled = false;
    const auto beat = [&] {
        work.Pulse();
        isCancelled = isCancelled || work.IsCancelled();
        if (isCancelled)
            StatementLimit::Interrupt(database);
    };
    try {
        RunBeside(statements, beat);
    } catch (const RuntimeError&) {
        EndUnless(!isCancelled, QStringLiteral("RunPulsed"));
        throw;
    }
    EndUnless(!isCancelled, QStringLiteral("RunPulsed"));
}

} // namespace qb
