#pragma once

#include "finder/FindRequest.h"

#include <QObject>
#include <QString>
#include <memory>
#include <vector>

namespace qb {

/// The find over the open library, for the thread of the window: its texts, kept in step with the library by a thread
/// of its own, and searches in them. Nothing here waits for that thread but Close.
class FindService : public QObject {
    Q_OBJECT

public:
    enum class State {
        Closed,  ///< there is no library
        Reading, ///< texts are being read; requests wait for that
        Ready,
        Failed ///< the library can't be read, Failure says why; tried again with the next request
    };

    /// @p cacheFolder is where texts are kept; empty: the user's.
    explicit FindService(const QString& cacheFolder = {});
    ~FindService() override;

    /// Another library is open; its texts are read from now on.
    void Open(const QString& libraryPath);
    /// Before the library is closed, compacted or replaced: requests end as cancelled, and when this returns nobody
    /// here has the library open. Nothing to do where none is.
    void Close();
    bool IsOpen() const { return m_state != State::Closed; }

    /// Brings the texts in step with whatever has changed the library. Each request does so by itself; this is for
    /// the time before one.
    void Update();
    /// This program has changed these items, and nothing else that is searched, in one transaction. They may be gone.
    void Saved(const std::vector<qint64>& items);

    /// Starts to search; see FindRequest. Requests are worked at one after the other, so that a client who starts
    /// another one destroys the one before. Raises RuntimeError 5, with a sentence for the user, when the query can't
    /// be looked for, 91 when no library is open.
    [[nodiscard]] std::unique_ptr<FindRequest> Start(const FindQuery& query);

    /// The texts as they were read last, which may be older than the library is; null before the first time.
    const std::shared_ptr<const FindSnapshot>& Texts() const { return m_texts; }

    State CurrentState() const { return m_state; }
    /// Reading, this many items of that many; 0 of 0 while nobody knows.
    qint64 ItemsRead() const { return m_read; }
    qint64 ItemsToRead() const { return m_toRead; }
    /// Why the library can't be read.
    const QString& Failure() const { return m_failure; }
    /// Why texts are not kept for the next start; empty when they are.
    const QString& Warning() const { return m_warning; }
    /// What there is to say of all that, as a sentence; empty when all is well.
    QString StateText() const;
    /// Something that was asked for is not done yet.
    bool IsBusy() const { return m_pending > 0; }

Q_SIGNALS:
    /// CurrentState, or what goes with it.
    void StateChanged();
    /// Texts is another one.
    void TextsChanged();

private:
    class Worker;

    void ShowState(State state);
    void TakeTexts(std::shared_ptr<const FindSnapshot> texts, const QString& warning);
    void ShowFailure(const QString& reason);
    void ShowProgress(qint64 done, qint64 total);

    QString m_cacheFolder;
    State m_state = State::Closed;
    std::shared_ptr<const FindSnapshot> m_texts;
    QString m_failure;
    QString m_warning;
    qint64 m_read = 0;
    qint64 m_toRead = 0;
    int m_pending = 0;
    quint64 m_library = 0; ///< counts openings; what a thread of an earlier one has to say is not heard
    std::unique_ptr<Worker> m_worker;
};

} // namespace qb
