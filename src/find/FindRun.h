#pragma once

#include "find/ChunkSearch.h"
#include "find/FindSnapshot.h"

#include <QDeadlineTimer>
#include <atomic>
#include <mutex>
#include <thread>

namespace qb {

/// How good a hit is; the best first.
enum class FindRank : quint8 { WordInTitle, InTitle, Word, Part };

/// An item in which the query was found.
struct FindHit {
    qint64 Id = 0;
    FindSnapshot::Place Place{};
    FindRank Rank = FindRank::Part;
    FindCounters Counters{}; ///< how often, by field

    QString Letters() const; ///< of the fields with hits, parted by "/"
};

/// What came of a run. A large file that was left out is no fault of it.
struct FindOutcome {
    bool IsCancelled = false;
    bool DeadlineReached = false; ///< there may be more than was found
    size_t GivenUp = 0;           ///< texts on which the expression would have taken too long
    size_t LeftOut = 0;           ///< files that are too large to be looked through
    bool IsDamaged = false;       ///< the texts' file was cut short: nothing of it holds

    bool IsComplete() const { return !IsCancelled && !DeadlineReached && GivenUp == 0 && !IsDamaged; }
};

/// One search through a snapshot, by as many threads as the machine runs at a time.
class FindRun {
public:
    /// Gets hits as they are found, in order within a batch; called by one worker thread at a time.
    using Receiver = std::function<void(std::vector<FindHit>&& batch)>;
    /// Called once, by the last worker thread, when there will be no more.
    using Ending = std::function<void(const FindOutcome& outcome)>;

    /// Starts it. Raises what FindMatcher raises.
    FindRun(std::shared_ptr<const FindSnapshot> texts, const FindQuery& query, Receiver receiver, Ending ending = {});
    /// Cancels what still runs, and waits for it.
    ~FindRun();
    FindRun(const FindRun&) = delete;
    FindRun& operator=(const FindRun&) = delete;

    /// No batch comes after those that are on their way.
    void Cancel() { m_cancelled = true; }
    /// Until all is done.
    FindOutcome Wait();

    const FindMatcher& Matcher() const { return m_matcher; }

private:
    struct Task {
        quint32 Layer;
        quint32 Chunk;
    };

    void ListTasks();
    size_t CountLeftOut() const;
    FindOutcome Outcome() const;
    void Work();
    bool IsEnough();
    bool MarkWanted(const Task& task, std::vector<char>& wanted) const;
    bool Passes(FindSnapshot::Place place) const;
    std::vector<FindHit> Hits(const Task& task, const std::vector<ChunkSearch::Found>& found) const;
    void End();

    std::shared_ptr<const FindSnapshot> m_texts;
    FindMatcher m_matcher;
    Receiver m_receiver;
    Ending m_ending;
    QDeadlineTimer m_deadline;
    std::vector<qint64> m_branch;
    bool m_selects = false; ///< not all items are looked at
    std::vector<Task> m_tasks;
    std::atomic<size_t> m_next = 0;
    std::atomic<size_t> m_working = 0;
    std::atomic<bool> m_cancelled = false;
    std::atomic<bool> m_late = false;
    std::atomic<size_t> m_givenUp = 0;
    size_t m_leftOut = 0;
    std::mutex m_receiving;
    std::vector<std::jthread> m_threads;
};

/// The better hit comes first: by rank, then the item that was changed last, then by ID.
bool IsBetter(const FindSnapshot& texts, const FindHit& a, const FindHit& b);

/// All hits of a query, the best first.
struct FindResult {
    std::vector<FindHit> Hits;
    FindOutcome Outcome;
};
FindResult FindAll(const std::shared_ptr<const FindSnapshot>& texts, const FindQuery& query);
/// Puts hits in order.
void SortHits(const FindSnapshot& texts, std::vector<FindHit>& hits);

} // namespace qb
