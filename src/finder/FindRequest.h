#pragma once

#include "find/FindRun.h"

#include <QObject>
#include <atomic>
#include <memory>
#include <mutex>

namespace qb {

class FindRequest;

/// What a request and the thread that works for it share. Only the members of the first kind are for both threads.
struct FindTask {
    explicit FindTask(const FindQuery& query) : Query(query) {}

    /// No batch is taken any more, and a run that goes on ends soon.
    void Cancel();
    /// A run goes on for it, or, with null, none does any more.
    void SetRun(FindRun* run);
    /// Adds hits to those that wait; true when nobody has been told of waiting ones yet.
    bool Put(std::vector<FindHit>&& hits);
    std::vector<FindHit> Take();

    const FindQuery Query;
    std::atomic<bool> IsCancelled = false;

    FindRequest* Owner = nullptr; ///< for the thread of the window alone

private:
    std::mutex m_mutex;
    FindRun* m_run = nullptr;
    std::vector<FindHit> m_waiting;
};

/// A search that was asked of a FindService, and what comes of it, told in the thread of the window. Destroying it
/// cancels the search; the service may go before it.
class FindRequest : public QObject {
    Q_OBJECT

public:
    /// Made by FindService::Start. Raises what FindMatcher raises.
    explicit FindRequest(const FindQuery& query);
    ~FindRequest() override;

    const FindQuery& Query() const { return m_matcher.Query(); }
    /// For the places in an item's texts (see PlacesIn), and in those of boxes.
    const FindMatcher& Matcher() const { return m_matcher; }
    /// The texts that are searched; null until Started.
    const std::shared_ptr<const FindSnapshot>& Texts() const { return m_texts; }
    /// There will be no more: it has ended, or failed.
    bool HasEnded() const { return m_ended; }
    const FindOutcome& Outcome() const { return m_outcome; }
    /// Ends it; what is on its way is not told any more, but Ended is.
    void Cancel() { m_task->Cancel(); }

    const std::shared_ptr<FindTask>& Task() const { return m_task; }

    // The service tells what has happened
    void TellStarted(std::shared_ptr<const FindSnapshot> texts);
    void TellFound(const std::vector<FindHit>& hits);
    void TellEnded(const FindOutcome& outcome);
    void TellFailed(const QString& reason);

Q_SIGNALS:
    /// The search begins, in Texts. Once more when the texts turned out to be damaged and were read again: nothing
    /// that was found before counts then.
    void Started();
    /// Some hits, in no order among batches.
    void Found(const std::vector<qb::FindHit>& hits);
    /// All has been told.
    void Ended(const qb::FindOutcome& outcome);
    /// The library, or its texts, can't be read: a sentence for the user.
    void Failed(const QString& reason);

private:
    FindMatcher m_matcher;
    std::shared_ptr<FindTask> m_task;
    std::shared_ptr<const FindSnapshot> m_texts;
    FindOutcome m_outcome;
    bool m_ended = false;
};

} // namespace qb
