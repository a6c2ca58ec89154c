#pragma once

#include <QString>
#include <chrono>

namespace qb {

/// A lock on a file or a folder, held until it is released or its process ends, however that happens. It
/// keeps out whoever asks for one too, the same process included, and nobody else: what is locked can be read and
/// written. Held means that what is locked still stands under its name.
class FileLock {
public:
    enum class Target {
        Existing, ///< a file or folder that is there; it stays
        Own,      ///< a file that is there for the lock only: made where it is missing, gone with the lock
    };
    enum class State {
        None,
        Held,
        Busy,       ///< somebody else holds it
        Missing,    ///< nothing stands there
        Impossible, ///< nobody can tell: it can't be opened or locked, or went away meanwhile
    };
    static constexpr std::chrono::milliseconds Forever = std::chrono::milliseconds::max();

    FileLock() = default;
    /// Asks for the lock, and for as long as @p patience again while somebody else holds it.
    FileLock(const QString& path, Target target, std::chrono::milliseconds patience = {});
    ~FileLock() { Release(); }
    FileLock(FileLock&& other) noexcept;
    FileLock& operator=(FileLock&& other) noexcept;

    /// What came of asking for the lock; None when it was never asked for, or was released or moved away since.
    State Result() const { return m_state; }
    bool IsHeld() const { return m_state == State::Held; }
    /// Somebody else holds it.
    bool IsBusy() const { return m_state == State::Busy; }
    /// Does nothing when it is not held.
    void Release();
    /// Removes the file that is locked with the lock; nothing when it is not held.
    void RemoveFile();

private:
    bool Open();
    State Ask(std::chrono::milliseconds patience) const;
    bool IsInPlace() const;
    void Close();

    QString m_path;
    Target m_target = Target::Existing;
    int m_file = -1;
    State m_state = State::None;
};

} // namespace qb
