#include "platform/system/FileCopy.h"

#include "platform/system/RuntimeError.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <atomic>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <system_error>
#include <thread>
#include <unistd.h>
#include <vector>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

constexpr size_t ChunkLength = 8 * 1024 * 1024;

/// An open file of the system.
class Descriptor {
public:
    Descriptor(const QString& path, int flags) : m_path(path) { Open(path, flags); }
    ~Descriptor() { Close(); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int Number() const { return m_number; }
    const QString& Path() const { return m_path; }
    bool Close() { return m_number < 0 || ::close(std::exchange(m_number, -1)) == 0; }

protected:
    explicit Descriptor(const QString& path) : m_path(path) {}
    void Open(const QString& path, int flags)
    {
        m_number = ::open(QFile::encodeName(path).constData(), flags | O_CLOEXEC, 0666);
    }

private:
    QString m_path;
    int m_number = -1;
};

/// A new file that gets its name when it is complete, where the file system knows files without one: what
/// is killed in the middle leaves nothing then.
class NewFile : public Descriptor {
public:
    enum Kind { Unnamed, Named };
    NewFile(const QString& path, Kind kind) : Descriptor(path)
    {
        QFile::remove(path);
        if (kind == Unnamed)
            Open(QFileInfo(path).path(), O_WRONLY | O_TMPFILE);
        m_isNamed = Number() < 0;
        if (m_isNamed)
            Open(path, O_WRONLY | O_CREAT | O_EXCL);
    }
    ~NewFile()
    {
        if (m_isNamed && !m_isComplete)
            QFile::remove(Path());
    }

    /// Whether it has its name from the beginning.
    bool IsNamed() const { return m_isNamed; }
    /// Flushes it and gives it its name; false with errno when that can't be.
    bool Complete()
    {
        const QByteArray own = "/proc/self/fd/" + QByteArray::number(Number());
        m_isComplete = ::fsync(Number()) == 0
                       && (m_isNamed
                           || ::linkat(AT_FDCWD, own.constData(), AT_FDCWD, QFile::encodeName(Path()).constData(),
                                       AT_SYMLINK_FOLLOW)
                                  == 0)
                       && Close();
        return m_isComplete;
    }

private:
    bool m_isNamed = false;
    bool m_isComplete = false;
};

[[noreturn]] void Fail(const QString& action, const QString& path)
{
    throw RuntimeError(ErrorNumber::PathAccess,
                       u"The file '%1' can't be %2: %3."_s.arg(QDir::toNativeSeparators(path), action,
                                                               QString::fromLocal8Bit(std::strerror(errno))),
                       u"CopyFileContents"_s);
}

/// What can't be written is named by its source, and by the folder where it was to be.
[[noreturn]] void FailToWrite(const Descriptor& source, const Descriptor& target)
{
    const QString reason = QString::fromLocal8Bit(std::strerror(errno));
    throw RuntimeError(
        ErrorNumber::PathAccess,
        u"The file '%1' can't be copied to '%2': %3."_s.arg(
            QDir::toNativeSeparators(source.Path()), QDir::toNativeSeparators(QFileInfo(target.Path()).path()), reason),
        u"CopyFileContents"_s);
}

/// Copies a piece inside the system, where the file systems can; -1 where they can't.
ssize_t CopyInside(const Descriptor& source, const Descriptor& target)
{
    const ssize_t copied = ::copy_file_range(source.Number(), nullptr, target.Number(), nullptr, ChunkLength, 0);
    const bool cant =
        copied < 0 && (errno == EXDEV || errno == EINVAL || errno == ENOSYS || errno == EOPNOTSUPP || errno == EBADF);
    if (copied < 0 && !cant)
        FailToWrite(source, target);
    return copied;
}

/// Copies a piece through the memory.
ssize_t CopyThrough(const Descriptor& source, const Descriptor& target, std::vector<char>& buffer)
{
    ssize_t length = 0;
    do
        length = ::read(source.Number(), buffer.data(), buffer.size());
    while (length < 0 && errno == EINTR);
    if (length < 0)
        Fail(u"read"_s, source.Path());
    for (ssize_t done = 0; done < length;) {
        const ssize_t written = ::write(target.Number(), buffer.data() + done, size_t(length - done));
        if (written < 0 && errno != EINTR)
            FailToWrite(source, target);
        done += qMax<ssize_t>(0, written);
    }
    return length;
}

/// Has the disk begin with what is copied while more is, so that the flush at the end finds little to do.
class EarlyWriter {
public:
    explicit EarlyWriter(const Descriptor& target)
    {
        try {
            m_thread = std::thread([this, file = target.Number()] { Run(file); });
        } catch (const std::system_error&) { // it only takes longer without
        }
    }
    ~EarlyWriter()
    {
        if (!m_thread.joinable())
            return;
        m_end = true;
        m_copied += 1; // so that it is noticed
        m_copied.notify_one();
        m_thread.join();
    }
    EarlyWriter(const EarlyWriter&) = delete;
    EarlyWriter& operator=(const EarlyWriter&) = delete;

    /// So many bytes are copied.
    void Begin(qint64 copied)
    {
        m_copied = copied;
        m_copied.notify_one();
    }

private:
    void Run(int file)
    {
        for (qint64 begun = 0; !m_end;) {
            m_copied.wait(begun);
            const qint64 copied = m_copied;
            if (!m_end)
                ::sync_file_range(file, begun, copied - begun, SYNC_FILE_RANGE_WRITE); // fsync tells what fails
            begun = copied;
        }
    }

    std::atomic<qint64> m_copied = 0; ///< bytes
    std::atomic<bool> m_end = false;
    std::thread m_thread;
};

void Copy(const Descriptor& source, const Descriptor& target, qint64 total, Work& work)
{
    std::vector<char> buffer;
    EarlyWriter writer(target);
    qint64 done = 0;
    for (;;) {
        // Some systems say of a file that it ends at once when they can't copy it inside.
        ssize_t copied = buffer.empty() ? CopyInside(source, target) : -1;
        if (copied < 0 || (copied == 0 && done == 0 && buffer.empty())) {
            buffer.resize(ChunkLength);
            copied = CopyThrough(source, target, buffer);
        }
        if (copied == 0)
            return;
        done += copied;
        writer.Begin(done);
        work.Advance(done, qMax(done, total));
        if (work.IsCancelled())
            throw RuntimeError(ErrorNumber::UserInterrupt, u"The copying of '%1' was cancelled."_s.arg(source.Path()),
                               u"CopyFileContents"_s);
    }
}

/// A copy can be read by nobody who can't read its source. Before there is anything in it.
void RestrictRights(int file, mode_t source)
{
    struct stat state {};
    if (::fstat(file, &state) == 0)
        ::fchmod(file, (state.st_mode & source & 0777) | S_IRUSR | S_IWUSR); // a file system may know no rights
}

} // namespace

void CopyFileContents(const QString& source, const QString& target, Work& work)
{
    Descriptor from(source, O_RDONLY | O_NONBLOCK); // a pipe is not waited for
    struct stat state {};
    if (from.Number() < 0 || ::fstat(from.Number(), &state) != 0)
        Fail(u"read"_s, source);
    if (!S_ISREG(state.st_mode)) {
        errno = S_ISDIR(state.st_mode) ? EISDIR : EINVAL;
        Fail(u"read"_s, source);
    }
    for (const NewFile::Kind kind : {NewFile::Unnamed, NewFile::Named}) {
        NewFile to(target, kind);
        if (to.Number() < 0)
            FailToWrite(from, to);
        RestrictRights(to.Number(), state.st_mode);
        Copy(from, to, state.st_size, work);
        if (to.Complete())
            return;
        if (to.IsNamed() || ::lseek(from.Number(), 0, SEEK_SET) != 0) // else it could get no name afterwards
            FailToWrite(from, to);
    }
}

} // namespace qb
