#pragma once

#include <QtGlobal>
#include <unistd.h>

namespace qb::test {

/// Lets access rights hold as for an ordinary user even when the tests are run by root.
class OrdinaryUser {
public:
    OrdinaryUser() : m_isRoot(getuid() == 0)
    {
        constexpr uid_t Nobody = 65534;
        if (m_isRoot && setresuid(Nobody, Nobody, 0) != 0)
            qFatal("can't change the user");
    }
    ~OrdinaryUser()
    {
        if (m_isRoot && setresuid(0, 0, 0) != 0)
            qFatal("can't change the user back");
    }
    OrdinaryUser(const OrdinaryUser&) = delete;
    OrdinaryUser& operator=(const OrdinaryUser&) = delete;

private:
    bool m_isRoot;
};

} // namespace qb::test
