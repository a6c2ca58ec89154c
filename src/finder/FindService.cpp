#include "finder/FindService.h"

#include "find/FindCache.h"

#include <QElapsedTimer>
#include <QLocale>
#include <condition_variable>
#include <deque>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

constexpr std::chrono::seconds Idle{5}; ///< after which what is in memory only is written to the file

QString SentenceOf(const std::exception& error)
{
    const auto* own = dynamic_cast<const RuntimeError*>(&error);
    return own ? own->Description() : QString::fromLocal8Bit(error.what());
}

} // namespace

/// The thread that has the library open for the find, and what waits for it. It tells the service what has happened by
/// calls that the service's own thread makes.
class FindService::Worker {
public:
    Worker(FindService& service, const QString& library, const QString& cacheFolder)
        : m_service(service), m_number(service.m_library), m_library(library), m_cacheFolder(cacheFolder),
          m_thread([this] { Run(); })
    {
    }
    ~Worker()
    {
        {
            const std::lock_guard lock(m_mutex);
            m_ends = true;
            if (m_current)
                m_current->Cancel();
        }
        m_wake.notify_one();
        m_thread.join();
    }
    Worker(const Worker&) = delete;
    Worker& operator=(const Worker&) = delete;

    void Update()
    {
        Add([this] { BringInStep([](FindCache& cache, Work& work) { return cache.Update(work); }); });
    }
    void Saved(const std::vector<qint64>& items)
    {
        Add([this, items] {
            BringInStep([&items](FindCache& cache, Work& work) { return cache.Saved(items, work); });
        });
    }
    void Search(const std::shared_ptr<FindTask>& task)
    {
        Add([this, task] { DoSearch(task); });
    }

private:
    /// Tells how far the reading is, now and then, and is cancelled when the service closes.
    class Reading : public Work {
    public:
        explicit Reading(Worker& worker) : m_worker(worker) { m_sinceTold.start(); }
        void Advance(qint64 done, qint64 total) override
        {
            constexpr qint64 Pause = 100; // milliseconds
            if (m_sinceTold.elapsed() < Pause)
                return;
            m_sinceTold.start();
            m_worker.Tell([done, total](FindService& service) { service.ShowProgress(done, total); });
        }
        bool IsCancelled() override { return m_worker.m_ends; }

    private:
        Worker& m_worker;
        QElapsedTimer m_sinceTold;
    };

    void Add(std::function<void()> job)
    {
        ++m_service.m_pending;
        {
            const std::lock_guard lock(m_mutex);
            m_jobs.push_back(std::move(job));
        }
        m_wake.notify_one();
    }

    /// Has the service's thread do something, unless the library is another one by then.
    template <class Action>
    void Tell(Action&& action)
    {
        QMetaObject::invokeMethod(
            &m_service,
            [&service = m_service, number = m_number, action = std::forward<Action>(action)] {
                if (service.m_library == number)
                    action(service);
            },
            Qt::QueuedConnection);
    }

    void Run()
    {
        while (const std::function<void()> job = Next()) {
            job();
            Tell([](FindService& service) { --service.m_pending; });
        }
        m_cache.reset();
    }

    /// The next job; none when it ends. Those that wait then are still done: they find that it ends.
    std::function<void()> Next()
    {
        std::unique_lock lock(m_mutex);
        const auto isWanted = [this] { return m_ends || !m_jobs.empty(); };
        while (!m_wake.wait_for(lock, Idle, isWanted)) {
            lock.unlock();
            Keep();
            lock.lock();
        }
        if (m_jobs.empty())
            return {};
        std::function<void()> job = std::move(m_jobs.front());
        m_jobs.pop_front();
        return job;
    }

    void Keep()
    {
        try {
            if (m_cache)
                m_cache->Keep();
        } catch (const std::exception&) { // it stays in memory
        }
    }

    /// The texts after @p read; null when they can't be read, of which the service is told.
    template <class Read>
    std::shared_ptr<const FindSnapshot> BringInStep(const Read& read, QString* failure = nullptr)
    {
        if (m_ends)
            return {};
        try {
            if (!m_cache)
                m_cache = std::make_unique<FindCache>(m_library, m_cacheFolder);
            Reading work(*this);
            std::shared_ptr<const FindSnapshot> texts = read(*m_cache, work);
            Tell([texts, warning = m_cache->Warning()](FindService& service) { service.TakeTexts(texts, warning); });
            return texts;
        } catch (const std::exception& error) {
            const QString reason = SentenceOf(error);
            if (failure)
                *failure = reason;
            m_cache.reset();
            if (!m_ends)
                Tell([reason](FindService& service) { service.ShowFailure(reason); });
            return {};
        }
    }

    void DoSearch(const std::shared_ptr<FindTask>& task)
    {
        try {
            TrySearch(task);
        } catch (const std::exception& error) {
            SetCurrent(nullptr, nullptr);
            task->SetRun(nullptr);
            TellRequest(task, &FindRequest::TellFailed, SentenceOf(error));
        }
    }

    void TrySearch(const std::shared_ptr<FindTask>& task)
    {
        constexpr int Tries = 3;
        QString failure = u"The texts of the library are being damaged all the time."_s;
        for (int i = 0; i < Tries; ++i) {
            const std::shared_ptr<const FindSnapshot> texts =
                task->IsCancelled
                    ? nullptr
                    : BringInStep([](FindCache& cache, Work& work) { return cache.Update(work); }, &failure);
            if (m_ends || task->IsCancelled) {
                FindOutcome cancelled;
                cancelled.IsCancelled = true;
                return TellRequest(task, &FindRequest::TellEnded, cancelled);
            }
            if (!texts)
                break;
            TellRequest(task, &FindRequest::TellStarted, texts);
            const FindOutcome outcome = RunIn(texts, task);
            if (!outcome.IsDamaged)
                return TellRequest(task, &FindRequest::TellEnded, outcome);
            m_cache->Discard();
        }
        TellRequest(task, &FindRequest::TellFailed, failure);
    }

    FindOutcome RunIn(const std::shared_ptr<const FindSnapshot>& texts, const std::shared_ptr<FindTask>& task)
    {
        FindRun run(texts, task->Query, [this, &task](std::vector<FindHit>&& hits) {
            if (task->Put(std::move(hits)))
                TellRequest(task, [task](FindRequest& request) { request.TellFound(task->Take()); });
        });
        SetCurrent(task, &run);
        FindOutcome outcome = run.Wait();
        SetCurrent(nullptr, nullptr);
        task->SetRun(nullptr);
        outcome.IsCancelled = outcome.IsCancelled || task->IsCancelled;
        return outcome;
    }

    void SetCurrent(const std::shared_ptr<FindTask>& task, FindRun* run)
    {
        const std::lock_guard lock(m_mutex);
        m_current = task;
        if (task)
            task->SetRun(run);
        if (task && m_ends)
            task->Cancel();
    }

    /// Told whichever library is open by then: a request always hears of its end.
    template <class Action, class... Told>
    void TellRequest(const std::shared_ptr<FindTask>& task, Action action, const Told&... told)
    {
        QMetaObject::invokeMethod(
            &m_service,
            [task, action, told...] {
                if (task->Owner)
                    std::invoke(action, *task->Owner, told...);
            },
            Qt::QueuedConnection);
    }

    FindService& m_service;
    const quint64 m_number;
    const QString m_library;
    const QString m_cacheFolder;
    std::unique_ptr<FindCache> m_cache; ///< for the thread alone
    std::mutex m_mutex;
    std::condition_variable m_wake;
    std::deque<std::function<void()>> m_jobs;
    std::shared_ptr<FindTask> m_current; ///< that a run goes on for
    std::atomic<bool> m_ends = false;
    std::thread m_thread;
};

FindService::FindService(const QString& cacheFolder) : m_cacheFolder(cacheFolder) {}

FindService::~FindService()
{
    m_worker.reset();
}

void FindService::Open(const QString& libraryPath)
{
    Close();
    if (m_cacheFolder.isEmpty())
        m_cacheFolder = FindCache::CacheFolderOfFinds();
    ++m_library;
    m_worker = std::make_unique<Worker>(*this, libraryPath, m_cacheFolder);
    m_worker->Update();
    ShowState(State::Reading);
}

void FindService::Close()
{
    if (!IsOpen())
        return;
    m_worker.reset();
    ++m_library;
    m_texts.reset();
    m_failure.clear();
    m_warning.clear();
    m_read = m_toRead = 0;
    m_pending = 0;
    Q_EMIT TextsChanged();
    ShowState(State::Closed);
}

void FindService::Update()
{
    if (m_worker)
        m_worker->Update();
}

void FindService::Saved(const std::vector<qint64>& items)
{
    if (m_worker)
        m_worker->Saved(items);
}

std::unique_ptr<FindRequest> FindService::Start(const FindQuery& query)
{
    if (!m_worker)
        throw RuntimeError(ErrorNumber::ObjectNotSet, u"No library is open."_s, u"FindService::Start"_s);
    auto request = std::make_unique<FindRequest>(query);
    m_worker->Search(request->Task());
    return request;
}

QString FindService::StateText() const
{
    if (m_state == State::Failed)
        return u"The texts of the library can't be read: %1"_s.arg(m_failure);
    if (m_state == State::Reading && m_toRead > 0)
        return u"Texts are being read (%1 of %2)"_s.arg(QLocale().toString(m_read), QLocale().toString(m_toRead));
    return m_state == State::Reading ? u"Texts are being read"_s : m_warning;
}

void FindService::ShowState(State state)
{
    m_state = state;
    Q_EMIT StateChanged();
}

void FindService::TakeTexts(std::shared_ptr<const FindSnapshot> texts, const QString& warning)
{
    m_warning = warning;
    m_failure.clear();
    m_read = m_toRead = 0;
    const bool isOther = m_texts != texts;
    m_texts = std::move(texts);
    if (isOther)
        Q_EMIT TextsChanged();
    ShowState(State::Ready);
}

void FindService::ShowFailure(const QString& reason)
{
    m_failure = reason;
    m_read = m_toRead = 0;
    ShowState(State::Failed);
}

void FindService::ShowProgress(qint64 done, qint64 total)
{
    m_read = done;
    m_toRead = total;
    ShowState(State::Reading);
}

} // namespace qb
