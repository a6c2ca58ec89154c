// Preloaded into a program under attack: counts the calls that change files, and at one of them ends the
// program, as a power switch does, or lets it fail, as a full or broken disk does. Needs no rights.
//
//   ATTACK_AT     the number of the call, from 1; without it all are only counted
//   ATTACK_HOW    "kill": ends the program before the call; "half": a write writes half of its bytes first;
//                 anything else: the number of the error that the call and all after it give
//   ATTACK_ONCE   with an error: the later calls work again
//   ATTACK_COUNT  a file that gets the number of calls when the program ends

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/types.h>
#include <sys/uio.h>
#include <unistd.h>

namespace {

std::atomic<long> Calls{0};

struct Plan {
    long At = 0;
    bool Kills = false;
    bool Halves = false;
    int Error = 0;
    bool Once = false;

    Plan()
    {
        const char* at = std::getenv("ATTACK_AT");
        const char* how = std::getenv("ATTACK_HOW");
        At = at ? std::atol(at) : 0;
        Halves = how && std::strcmp(how, "half") == 0;
        Kills = Halves || (how && std::strcmp(how, "kill") == 0);
        Error = how && !Kills ? std::atoi(how) : 0;
        Once = std::getenv("ATTACK_ONCE") != nullptr;
    }
};

const Plan& ThePlan()
{
    static const Plan plan;
    return plan;
}

[[noreturn]] void Die()
{
    ::kill(::getpid(), SIGKILL);
    for (;;)
        ::pause();
}

struct Nothing {
    void operator()() const {}
};

/// Whether the call is to fail; does not come back from one at which the program ends.
template <class Half = Nothing>
bool Fails(Half half = {})
{
    const long call = ++Calls;
    const Plan& plan = ThePlan();
    if (plan.At == 0 || call < plan.At)
        return false;
    if (plan.Kills) {
        if (plan.Halves)
            half();
        Die();
    }
    if (plan.Error == 0 || (plan.Once && call > plan.At))
        return false;
    errno = plan.Error;
    return true;
}

template <class Function>
Function Real(const char* name)
{
    return reinterpret_cast<Function>(::dlsym(RTLD_NEXT, name));
}

bool IsFile(int fd)
{
    struct stat state {};
    return fd > 2 && ::fstat(fd, &state) == 0 && S_ISREG(state.st_mode);
}

struct Reporter {
    ~Reporter()
    {
        const char* path = std::getenv("ATTACK_COUNT");
        if (!path)
            return;
        const long fd = ::syscall(SYS_openat, AT_FDCWD, path, O_WRONLY | O_CREAT | O_TRUNC, 0600);
        char text[32];
        const int length = std::snprintf(text, sizeof text, "%ld", Calls.load());
        ::syscall(SYS_write, fd, text, size_t(length));
        ::syscall(SYS_close, fd);
    }
} TheReporter;

} // namespace

#define QB_REAL(name) static const auto real = Real<decltype(&::name)>(#name)

extern "C" {

ssize_t write(int fd, const void* bytes, size_t size)
{
    QB_REAL(write);
    return IsFile(fd) && Fails([&] { real(fd, bytes, size / 2); }) ? -1 : real(fd, bytes, size);
}
ssize_t pwrite(int fd, const void* bytes, size_t size, off_t at)
{
    QB_REAL(pwrite);
    return IsFile(fd) && Fails([&] { real(fd, bytes, size / 2, at); }) ? -1 : real(fd, bytes, size, at);
}
ssize_t pwrite64(int fd, const void* bytes, size_t size, off64_t at)
{
    QB_REAL(pwrite64);
    return IsFile(fd) && Fails([&] { real(fd, bytes, size / 2, at); }) ? -1 : real(fd, bytes, size, at);
}
/// The C library's streams write from within: what goes into one is written at once.
size_t fwrite(const void* bytes, size_t size, size_t count, FILE* stream)
{
    QB_REAL(fwrite);
    if (!IsFile(::fileno(stream)))
        return real(bytes, size, count, stream);
    const auto half = [&] {
        real(bytes, 1, size * count / 2, stream);
        std::fflush(stream);
    };
    if (Fails(half))
        return 0;
    const size_t written = real(bytes, size, count, stream);
    return std::fflush(stream) == 0 ? written : 0;
}
ssize_t writev(int fd, const struct iovec* pieces, int count)
{
    QB_REAL(writev);
    return IsFile(fd) && Fails() ? -1 : real(fd, pieces, count);
}
ssize_t copy_file_range(int from, off64_t* fromAt, int to, off64_t* toAt, size_t size, unsigned flags)
{
    QB_REAL(copy_file_range);
    return Fails([&] { real(from, fromAt, to, toAt, size / 2, flags); }) ? -1
                                                                         : real(from, fromAt, to, toAt, size, flags);
}
int fsync(int fd)
{
    QB_REAL(fsync);
    return Fails() ? -1 : real(fd);
}
int fdatasync(int fd)
{
    QB_REAL(fdatasync);
    return Fails() ? -1 : real(fd);
}
int ftruncate(int fd, off_t size) noexcept
{
    QB_REAL(ftruncate);
    return Fails() ? -1 : real(fd, size);
}
int ftruncate64(int fd, off64_t size) noexcept
{
    QB_REAL(ftruncate64);
    return Fails() ? -1 : real(fd, size);
}
int rename(const char* from, const char* to) noexcept
{
    QB_REAL(rename);
    return Fails() ? -1 : real(from, to);
}
int renameat2(int fromFolder, const char* from, int toFolder, const char* to, unsigned flags) noexcept
{
    QB_REAL(renameat2);
    return Fails() ? -1 : real(fromFolder, from, toFolder, to, flags);
}
int unlink(const char* path) noexcept
{
    QB_REAL(unlink);
    return Fails() ? -1 : real(path);
}
int link(const char* from, const char* to) noexcept
{
    QB_REAL(link);
    return Fails() ? -1 : real(from, to);
}
int linkat(int fromFolder, const char* from, int toFolder, const char* to, int flags) noexcept
{
    QB_REAL(linkat);
    return Fails() ? -1 : real(fromFolder, from, toFolder, to, flags);
}
int mkdir(const char* path, mode_t mode) noexcept
{
    QB_REAL(mkdir);
    return Fails() ? -1 : real(path, mode);
}
int rmdir(const char* path) noexcept
{
    QB_REAL(rmdir);
    return Fails() ? -1 : real(path);
}

} // extern "C"
