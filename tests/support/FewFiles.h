#pragma once

#include <sys/resource.h>

namespace qb::test {

/// The process may have but so many files open, as long as this lives.
class FewFiles {
public:
    explicit FewFiles(rlim_t most)
    {
        ::getrlimit(RLIMIT_NOFILE, &m_before);
        const rlimit few{most, m_before.rlim_max};
        ::setrlimit(RLIMIT_NOFILE, &few);
    }
    ~FewFiles() { ::setrlimit(RLIMIT_NOFILE, &m_before); }
    FewFiles(const FewFiles&) = delete;
    FewFiles& operator=(const FewFiles&) = delete;

private:
    rlimit m_before{};
};

} // namespace qb::test
