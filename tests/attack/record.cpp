// Preloaded into a program: writes down, with their bytes, the calls that change files, so that a power cut can be
// played at any moment and with any of the writes that no flush had reached. Needs no rights.
//
//   RECORD_TO    the file to write to, a record after another: a line, and the bytes that it announces
//   RECORD_BELOW a folder; what lies elsewhere is left out
//
//   C inode path          a file is made          N inode          one without a name
//   W inode place length  bytes are written       T inode length   a file is cut or grown
//   L inode path          it gets a name          M path           a folder is made
//   R inode length path path   a rename; the length is that of the first path
//   X 0 length path path  two names change what they stand for
//   U path                a name goes             D path           a folder goes
//   S inode               a file is flushed       F path           a folder is flushed
//   E                     all of the file system is flushed

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <mutex>
#include <set>
#include <string>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/types.h>
#include <sys/uio.h>
#include <unistd.h>
#include <vector>

namespace {

template <class Function>
Function Real(const char* name)
{
    return reinterpret_cast<Function>(::dlsym(RTLD_NEXT, name));
}

std::mutex& TheMutex()
{
    static std::mutex mutex;
    return mutex;
}

long Log()
{
    static const long file = [] {
        const char* path = std::getenv("RECORD_TO");
        return path ? ::syscall(SYS_openat, AT_FDCWD, path, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600) : -1L;
    }();
    return file;
}

void Put(const std::string& line, const void* bytes = nullptr, size_t size = 0)
{
    if (Log() < 0)
        return;
    std::string all = line + '\n';
    if (bytes)
        all.append(static_cast<const char*>(bytes), size);
    for (size_t done = 0; done < all.size();) {
        const long written = ::syscall(SYS_write, Log(), all.data() + done, all.size() - done);
        if (written <= 0)
            return;
        done += size_t(written);
    }
}

/// The absolute path that a call names.
std::string Path(int folder, const char* path)
{
    if (path[0] == '/')
        return path;
    char base[4096];
    const std::string link = folder == AT_FDCWD ? "/proc/self/cwd" : "/proc/self/fd/" + std::to_string(folder);
    const ssize_t length = ::readlink(link.c_str(), base, sizeof base);
    return std::string(base, length > 0 ? size_t(length) : 0) + '/' + path;
}

bool IsWatched(const std::string& path)
{
    static const char* below = std::getenv("RECORD_BELOW");
    return below && path.compare(0, std::strlen(below), below) == 0;
}

std::string PathOf(int fd)
{
    char path[4096];
    const ssize_t length = ::readlink(("/proc/self/fd/" + std::to_string(fd)).c_str(), path, sizeof path);
    return std::string(path, length > 0 ? size_t(length) : 0);
}

/// The inode of an open file of ours; 0 for anything else.
unsigned long long InodeOf(int fd)
{
    struct stat state {};
    if (fd <= 2 || ::fstat(fd, &state) != 0 || !S_ISREG(state.st_mode) || !IsWatched(PathOf(fd)))
        return 0;
    return state.st_ino;
}

bool Exists(const std::string& path)
{
    struct stat state {};
    return ::stat(path.c_str(), &state) == 0;
}

std::string Text(unsigned long long number)
{
    return std::to_string(number);
}

void Opened(int fd, const std::string& path, int flags, bool existed)
{
    if (fd < 0 || !IsWatched(path))
        return;
    if ((flags & O_TMPFILE) == O_TMPFILE)
        Put("N " + Text(InodeOf(fd)));
    else if ((flags & O_CREAT) && !existed)
        Put("C " + Text(InodeOf(fd)) + ' ' + path);
    else if ((flags & O_TRUNC) && InodeOf(fd) != 0)
        Put("T " + Text(InodeOf(fd)) + " 0");
}

/// Files whose writes are recorded. What the C library prints into its own streams can't be seen.
std::set<unsigned long long>& Written()
{
    static std::set<unsigned long long> inodes;
    return inodes;
}

/// All that a file holds, in one write.
void PutAll(int fd, const struct stat& state)
{
    std::vector<char> bytes(static_cast<size_t>(state.st_size));
    const std::string own = "/proc/self/fd/" + std::to_string(fd);
    const long reader = ::syscall(SYS_openat, AT_FDCWD, own.c_str(), O_RDONLY);
    if (reader >= 0 && ::pread64(int(reader), bytes.data(), bytes.size(), 0) == ssize_t(bytes.size()))
        Put("W " + Text(state.st_ino) + " 0 " + std::to_string(bytes.size()), bytes.data(), bytes.size());
    ::syscall(SYS_close, reader);
}

void Wrote(int fd, const void* bytes, ssize_t size, off64_t at)
{
    if (size <= 0)
        return;
    if (const auto inode = InodeOf(fd)) {
        Written().insert(inode);
        Put("W " + Text(inode) + ' ' + std::to_string(at) + ' ' + std::to_string(size), bytes, size_t(size));
    }
}

void Flushed(int fd)
{
    struct stat state {};
    const std::string path = PathOf(fd);
    if (::fstat(fd, &state) != 0 || !IsWatched(path))
        return;
    if (S_ISDIR(state.st_mode))
        return Put("F " + path);
    if (Written().count(state.st_ino) == 0)
        PutAll(fd, state);
    Put("S " + Text(state.st_ino));
}

void Linked(unsigned long long inode, const std::string& path)
{
    if (IsWatched(path))
        Put("L " + Text(inode) + ' ' + path);
}

unsigned long long InodeAt(const std::string& path)
{
    struct stat state {};
    return ::stat(path.c_str(), &state) == 0 ? state.st_ino : 0;
}

void Renamed(const std::string& from, const std::string& to)
{
    if (IsWatched(from) || IsWatched(to))
        Put("R " + Text(InodeAt(to)) + ' ' + std::to_string(from.size()) + ' ' + from + ' ' + to);
}

void Exchanged(const std::string& one, const std::string& other)
{
    if (IsWatched(one) || IsWatched(other))
        Put("X 0 " + std::to_string(one.size()) + ' ' + one + ' ' + other);
}

using Guard = std::lock_guard<std::mutex>;

} // namespace

#define QB_REAL(name) static const auto real = Real<decltype(&::name)>(#name)
#define QB_OPEN(name, folder)                                                                                          \
    mode_t mode = 0;                                                                                                   \
    if ((flags & O_CREAT) || (flags & O_TMPFILE) == O_TMPFILE) {                                                       \
        va_list more;                                                                                                  \
        va_start(more, flags);                                                                                         \
        mode = va_arg(more, mode_t);                                                                                   \
        va_end(more);                                                                                                  \
    }                                                                                                                  \
    QB_REAL(name);                                                                                                     \
    const Guard guard(TheMutex());                                                                                     \
    const std::string absolute = Path(folder, path);                                                                   \
    const bool existed = Exists(absolute);

extern "C" {

int open(const char* path, int flags, ...)
{
    QB_OPEN(open, AT_FDCWD)
    const int fd = real(path, flags, mode);
    Opened(fd, absolute, flags, existed);
    return fd;
}
int open64(const char* path, int flags, ...)
{
    QB_OPEN(open64, AT_FDCWD)
    const int fd = real(path, flags, mode);
    Opened(fd, absolute, flags, existed);
    return fd;
}
int openat(int folder, const char* path, int flags, ...)
{
    QB_OPEN(openat, folder)
    const int fd = real(folder, path, flags, mode);
    Opened(fd, absolute, flags, existed);
    return fd;
}
int openat64(int folder, const char* path, int flags, ...)
{
    QB_OPEN(openat64, folder)
    const int fd = real(folder, path, flags, mode);
    Opened(fd, absolute, flags, existed);
    return fd;
}
ssize_t write(int fd, const void* bytes, size_t size)
{
    QB_REAL(write);
    const Guard guard(TheMutex());
    const off64_t at = InodeOf(fd) ? ::lseek64(fd, 0, (::fcntl(fd, F_GETFL) & O_APPEND) ? SEEK_END : SEEK_CUR) : 0;
    const ssize_t written = real(fd, bytes, size);
    Wrote(fd, bytes, written, at);
    return written;
}
/// The C library's streams write from within: what goes into one is written at once.
size_t fwrite(const void* bytes, size_t size, size_t count, FILE* stream)
{
    QB_REAL(fwrite);
    const Guard guard(TheMutex());
    const int fd = ::fileno(stream);
    const off64_t at = InodeOf(fd) ? ::ftello64(stream) : 0;
    const size_t written = real(bytes, size, count, stream);
    if (InodeOf(fd) == 0)
        return written;
    if (std::fflush(stream) != 0)
        return 0;
    Wrote(fd, bytes, ssize_t(size * written), at);
    return written;
}
ssize_t pwrite(int fd, const void* bytes, size_t size, off_t at)
{
    QB_REAL(pwrite);
    const Guard guard(TheMutex());
    const ssize_t written = real(fd, bytes, size, at);
    Wrote(fd, bytes, written, at);
    return written;
}
ssize_t pwrite64(int fd, const void* bytes, size_t size, off64_t at)
{
    QB_REAL(pwrite64);
    const Guard guard(TheMutex());
    const ssize_t written = real(fd, bytes, size, at);
    Wrote(fd, bytes, written, at);
    return written;
}
ssize_t copy_file_range(int from, off64_t* fromAt, int to, off64_t* toAt, size_t size, unsigned flags)
{
    QB_REAL(copy_file_range);
    const Guard guard(TheMutex());
    const off64_t at = toAt ? *toAt : ::lseek64(to, 0, SEEK_CUR);
    const ssize_t copied = real(from, fromAt, to, toAt, size, flags);
    if (copied > 0) {
        std::vector<char> bytes(static_cast<size_t>(copied));
        const std::string own = "/proc/self/fd/" + std::to_string(to);
        const long reader = ::syscall(SYS_openat, AT_FDCWD, own.c_str(), O_RDONLY);
        if (reader >= 0 && ::pread64(int(reader), bytes.data(), bytes.size(), at) == copied)
            Wrote(to, bytes.data(), copied, at);
        ::syscall(SYS_close, reader);
    }
    return copied;
}
int fsync(int fd)
{
    QB_REAL(fsync);
    const Guard guard(TheMutex());
    const int result = real(fd);
    if (result == 0)
        Flushed(fd);
    return result;
}
int fdatasync(int fd)
{
    QB_REAL(fdatasync);
    const Guard guard(TheMutex());
    const int result = real(fd);
    if (result == 0)
        Flushed(fd);
    return result;
}
int syncfs(int fd) noexcept
{
    QB_REAL(syncfs);
    const Guard guard(TheMutex());
    const int result = real(fd);
    if (result == 0)
        Put("E");
    return result;
}
int ftruncate(int fd, off_t size) noexcept
{
    QB_REAL(ftruncate);
    const Guard guard(TheMutex());
    const int result = real(fd, size);
    if (const auto inode = result == 0 ? InodeOf(fd) : 0)
        Put("T " + Text(inode) + ' ' + std::to_string(size));
    return result;
}
int ftruncate64(int fd, off64_t size) noexcept
{
    QB_REAL(ftruncate64);
    const Guard guard(TheMutex());
    const int result = real(fd, size);
    if (const auto inode = result == 0 ? InodeOf(fd) : 0)
        Put("T " + Text(inode) + ' ' + std::to_string(size));
    return result;
}
int rename(const char* from, const char* to) noexcept
{
    QB_REAL(rename);
    const Guard guard(TheMutex());
    const int result = real(from, to);
    if (result == 0)
        Renamed(Path(AT_FDCWD, from), Path(AT_FDCWD, to));
    return result;
}
int renameat2(int fromFolder, const char* from, int toFolder, const char* to, unsigned flags) noexcept
{
    QB_REAL(renameat2);
    const Guard guard(TheMutex());
    const int result = real(fromFolder, from, toFolder, to, flags);
    if (result == 0 && (flags & RENAME_EXCHANGE))
        Exchanged(Path(fromFolder, from), Path(toFolder, to));
    else if (result == 0)
        Renamed(Path(fromFolder, from), Path(toFolder, to));
    return result;
}
int unlink(const char* path) noexcept
{
    QB_REAL(unlink);
    const Guard guard(TheMutex());
    const int result = real(path);
    if (result == 0 && IsWatched(Path(AT_FDCWD, path)))
        Put("U " + Path(AT_FDCWD, path));
    return result;
}
int link(const char* from, const char* to) noexcept
{
    QB_REAL(link);
    const Guard guard(TheMutex());
    const int result = real(from, to);
    if (result == 0)
        Linked(InodeAt(Path(AT_FDCWD, to)), Path(AT_FDCWD, to));
    return result;
}
int linkat(int fromFolder, const char* from, int toFolder, const char* to, int flags) noexcept
{
    QB_REAL(linkat);
    const Guard guard(TheMutex());
    const int result = real(fromFolder, from, toFolder, to, flags);
    if (result == 0)
        Linked(InodeAt(Path(toFolder, to)), Path(toFolder, to));
    return result;
}
int mkdir(const char* path, mode_t mode) noexcept
{
    QB_REAL(mkdir);
    const Guard guard(TheMutex());
    const int result = real(path, mode);
    if (result == 0 && IsWatched(Path(AT_FDCWD, path)))
        Put("M " + Path(AT_FDCWD, path));
    return result;
}
int rmdir(const char* path) noexcept
{
    QB_REAL(rmdir);
    const Guard guard(TheMutex());
    const int result = real(path);
    if (result == 0 && IsWatched(Path(AT_FDCWD, path)))
        Put("D " + Path(AT_FDCWD, path));
    return result;
}

} // extern "C"
