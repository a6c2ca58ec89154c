#include "platform/system/FileLock.h"

#include <QFile>
#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>
#include <utility>

namespace qb {

FileLock::FileLock(const QString& path, Target target, std::chrono::milliseconds patience)
    : m_path(path), m_target(target)
{
    constexpr int MostTries = 100; // where a file system can't tell files apart
    for (int tries = target == Target::Own ? MostTries : 1; tries > 0; --tries) {
        m_state = Open() ? Ask(patience) : errno == ENOENT ? State::Missing : State::Impossible;
        if (!IsHeld() || IsInPlace())
            break;
        Close(); // its last holder has removed it since it was opened
        m_state = State::Impossible;
    }
    if (!IsHeld())
        Close();
}

FileLock::FileLock(FileLock&& other) noexcept
    : m_path(std::move(other.m_path)), m_target(other.m_target), m_file(std::exchange(other.m_file, -1)),
      m_state(std::exchange(other.m_state, State::None))
{
}

FileLock& FileLock::operator=(FileLock&& other) noexcept
{
    if (this != &other) {
        Release();
        m_path = std::move(other.m_path);
        m_target = other.m_target;
        m_file = std::exchange(other.m_file, -1);
        m_state = std::exchange(other.m_state, State::None);
    }
    return *this;
}

void FileLock::Release()
{
    if (m_target == Target::Own)
        RemoveFile();
    Close();
    m_state = State::None;
}

void FileLock::RemoveFile()
{
    if (!IsHeld())
        return;
    if (IsInPlace())
        QFile::remove(m_path);
    Close();
    m_state = State::None;
}

/// For writing where that may be, which some file systems want for a lock; false with errno.
bool FileLock::Open()
{
    const QByteArray path = QFile::encodeName(m_path);
    const int flags = O_CLOEXEC | O_NONBLOCK | (m_target == Target::Own ? O_CREAT | O_NOFOLLOW : 0);
    m_file = ::open(path.constData(), flags | O_RDWR, 0666);
    if (m_file < 0 && (errno == EACCES || errno == EISDIR || errno == EROFS))
        m_file = ::open(path.constData(), flags | O_RDONLY, 0666); // a folder, or a file of another user
    return m_file >= 0;
}

FileLock::State FileLock::Ask(std::chrono::milliseconds patience) const
{
    constexpr auto Pause = std::chrono::milliseconds(5);
    const auto begin = std::chrono::steady_clock::now();
    const bool waits = patience == Forever;
    while (::flock(m_file, waits ? LOCK_EX : LOCK_EX | LOCK_NB) != 0) {
        if (errno == EINTR)
            continue;
        if (errno != EWOULDBLOCK)
            return State::Impossible; // a file system without locks
        if (std::chrono::steady_clock::now() - begin >= patience)
            return State::Busy;
        std::this_thread::sleep_for(Pause);
    }
    return State::Held;
}

/// Whether what is open is what stands under the name.
bool FileLock::IsInPlace() const
{
    struct stat open {};
    struct stat there {};
    return m_file >= 0 && ::fstat(m_file, &open) == 0 && ::stat(QFile::encodeName(m_path).constData(), &there) == 0
           && open.st_dev == there.st_dev && open.st_ino == there.st_ino;
}

void FileLock::Close()
{
    if (m_file >= 0)
        ::close(std::exchange(m_file, -1));
}

} // namespace qb
