#pragma once

#include <QString>
#include <functional>

namespace qb {

/// What a work that takes its time tells, and whom it asks whether to go on. This one tells nobody and is
/// never cancelled; whoever watches a work overrides what interests them.
class Work {
public:
    Work() = default;
    virtual ~Work() = default;
    Work(const Work&) = delete;
    Work& operator=(const Work&) = delete;

    /// What is being done, for a status bar. A @p percent below 1, or of 100 and above, hides the bar.
    virtual void Say(const QString& text, int percent);
    /// So much of @p total is done: bytes, files, items or parts of a hundred, as the work counts.
    virtual void Advance(qint64 done, qint64 total);
    /// It goes on, but how far it is can't be told: whoever watches shows that it is alive.
    virtual void Pulse();
    /// Whether it is to end, asked after it has advanced. A work that can't end halfway does not ask.
    virtual bool IsCancelled();
};

/// For a work that nobody watches.
Work& NoWork();

/// Runs a work that takes its time with something to watch it by, which says @p title.
using WatchedRun = std::function<void(const QString& title, const std::function<void(Work&)>& body)>;

/// Runs a work that nobody watches.
void RunUnwatched(const QString& title, const std::function<void(Work&)>& body);

} // namespace qb
