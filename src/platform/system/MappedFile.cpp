#include "platform/system/MappedFile.h"

#include <QFile>

#include <array>
#include <atomic>
#include <csignal>
#include <cstdint>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

constexpr size_t MostMappings = 256;

/// What is mapped, in a form that a signal handler can read.
struct Mapping {
    std::atomic<bool> Taken = false;
    std::atomic<uintptr_t> Begin = 0;
    std::atomic<uintptr_t> End = 0;
    std::atomic<bool> Damaged = false;
};
std::array<Mapping, MostMappings> Mappings;
struct sigaction HandlerBefore;

/// The system's answer to reading what is no longer in the file: empty memory takes its place, and the reader goes on.
void ReplaceMissing(int, siginfo_t* fault, void*)
{
    const auto place = reinterpret_cast<uintptr_t>(fault->si_addr);
    for (Mapping& mapping : Mappings) {
        if (place < mapping.Begin || place >= mapping.End)
            continue;
        constexpr uintptr_t Page = 4096;
        const uintptr_t begin = place & ~(Page - 1);
        if (::mmap(reinterpret_cast<void*>(begin), mapping.End - begin, PROT_READ,
                   MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED, -1, 0)
            == MAP_FAILED)
            break;
        mapping.Damaged = true;
        return;
    }
    ::sigaction(SIGBUS, &HandlerBefore, nullptr); // none of ours: it happens again, and has its way
}

void InstallHandler()
{
    static const bool installed = [] {
        struct sigaction handler {};
        handler.sa_sigaction = ReplaceMissing;
        handler.sa_flags = SA_SIGINFO | SA_NODEFER;
        ::sigemptyset(&handler.sa_mask);
        return ::sigaction(SIGBUS, &handler, &HandlerBefore) == 0;
    }();
    static_cast<void>(installed);
}

int TakeSlot()
{
    for (size_t i = 0; i < Mappings.size(); ++i) {
        bool expected = false;
        if (Mappings[i].Taken.compare_exchange_strong(expected, true)) {
            Mappings[i].Damaged = false;
            return int(i);
        }
    }
    return -1;
}

} // namespace

std::shared_ptr<const MappedFile> MappedFile::Map(QFile& file, qint64 offset, qint64 size, QString& reason)
{
    InstallHandler();
    if (size <= 0 || offset < 0 || offset > file.size() - size) {
        reason = u"the file is too short"_s;
        return nullptr;
    }
    const int slot = TakeSlot();
    void* begin = slot < 0 ? MAP_FAILED
                           : ::mmap(nullptr, size_t(size), PROT_READ, MAP_SHARED, file.handle(), off_t(offset));
    if (begin == MAP_FAILED) {
        if (slot >= 0)
            Mappings[size_t(slot)].Taken = false;
        reason = u"it can't be mapped"_s;
        return nullptr;
    }
    Mapping& mapping = Mappings[size_t(slot)];
    mapping.Begin = reinterpret_cast<uintptr_t>(begin);
    mapping.End = mapping.Begin + uintptr_t(size);
    return std::shared_ptr<const MappedFile>(new MappedFile(static_cast<char*>(begin), qsizetype(size), slot));
}

MappedFile::~MappedFile()
{
    Mapping& mapping = Mappings[size_t(m_slot)];
    mapping.Begin = 0;
    mapping.End = 0;
    ::munmap(m_begin, size_t(m_size));
    mapping.Taken = false;
}

bool MappedFile::IsDamaged() const
{
    return Mappings[size_t(m_slot)].Damaged;
}

} // namespace qb
