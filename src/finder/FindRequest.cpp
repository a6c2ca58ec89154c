#include "finder/FindRequest.h"

namespace qb {

void FindTask::Cancel()
{
    const std::lock_guard lock(m_mutex);
    IsCancelled = true;
    m_waiting.clear();
    if (m_run)
        m_run->Cancel();
}

void FindTask::SetRun(FindRun* run)
{
    const std::lock_guard lock(m_mutex);
    m_run = run;
    if (run && IsCancelled)
        run->Cancel();
}

bool FindTask::Put(std::vector<FindHit>&& hits)
{
    const std::lock_guard lock(m_mutex);
    if (IsCancelled || hits.empty())
        return false;
    const bool isFirst = m_waiting.empty();
    m_waiting.insert(m_waiting.end(), hits.begin(), hits.end());
    return isFirst;
}

std::vector<FindHit> FindTask::Take()
{
    const std::lock_guard lock(m_mutex);
    return std::exchange(m_waiting, {});
}

FindRequest::FindRequest(const FindQuery& query) : m_matcher(query), m_task(std::make_shared<FindTask>(query))
{
    m_task->Owner = this;
}

FindRequest::~FindRequest()
{
    m_task->Owner = nullptr;
    m_task->Cancel();
}

void FindRequest::TellStarted(std::shared_ptr<const FindSnapshot> texts)
{
    m_texts = std::move(texts);
    Q_EMIT Started();
}

void FindRequest::TellFound(const std::vector<FindHit>& hits)
{
    if (!hits.empty())
        Q_EMIT Found(hits);
}

void FindRequest::TellEnded(const FindOutcome& outcome)
{
    m_ended = true;
    m_outcome = outcome;
    Q_EMIT Ended(outcome);
}

void FindRequest::TellFailed(const QString& reason)
{
    m_ended = true;
    m_outcome.IsCancelled = true;
    Q_EMIT Failed(reason);
}

} // namespace qb
