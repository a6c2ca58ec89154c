#pragma once

#include "platform/system/RuntimeError.h"
#include "platform/system/Work.h"

#include <functional>

namespace qb {

/// A work made of several that follow each other: whoever watches the whole sees one count that only grows, in parts
/// of a thousand. What it says and whether it is to end goes through.
class PhasedWork : public Work {
public:
    static constexpr qint64 Whole = 1000;

    /// @p whole must outlive the object.
    explicit PhasedWork(Work& whole) : m_whole(whole) {}

    /// What is counted from now on goes from where the last phase ended to @p end, in parts of a thousand.
    void Begin(qint64 end)
    {
        m_begin = m_end;
        m_end = end;
    }
    void Say(const QString& text, int percent) override { m_whole.Say(text, percent); }
    void Advance(qint64 done, qint64 total) override
    {
        const double part = total > 0 ? double(qMin(done, total)) / double(total) : 1.0;
        m_whole.Advance(m_begin + qint64(part * double(m_end - m_begin)), Whole);
    }
    void Pulse() override { m_whole.Pulse(); }
    bool IsCancelled() override { return m_whole.IsCancelled(); }

private:
    Work& m_whole;
    qint64 m_begin = 0;
    qint64 m_end = 0;
};

/// A part of a work that counts other things than the whole, which only shows that it goes on.
class UncountedWork : public Work {
public:
    /// @p whole must outlive the object.
    explicit UncountedWork(Work& whole) : m_whole(whole) {}

    void Advance(qint64, qint64) override { m_whole.Pulse(); }
    void Pulse() override { m_whole.Pulse(); }
    bool IsCancelled() override { return m_whole.IsCancelled(); }

private:
    Work& m_whole;
};

/// Raises the error by which a work ends that was cancelled.
[[noreturn]] inline void RaiseCancelled(const QString& procedure)
{
    throw RuntimeError(ErrorNumber::UserInterrupt, QStringLiteral("It was cancelled. Nothing was changed."), procedure);
}
/// Whether an error is that of a work that was cancelled.
inline bool IsCancellation(const RuntimeError& error)
{
    return error.Number() == ErrorNumber::UserInterrupt || error.Number() == ErrorNumber::Cancelled;
}

/// Runs a body. False when it was cancelled, which is no failure.
template <class Body>
bool RunUnlessCancelled(Body&& body)
{
    try {
        body();
        return true;
    } catch (const RuntimeError& error) {
        if (!IsCancellation(error))
            throw;
        return false;
    }
}

/// Raises the error of a cancelled work when @p goesOn is false.
inline void EndUnless(bool goesOn, const QString& procedure)
{
    if (!goesOn)
        RaiseCancelled(procedure);
}

} // namespace qb
