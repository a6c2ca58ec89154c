#pragma once

#include <QLockFile>

namespace qb {

/// The claim to be the one running instance of the program for this user. The claim ends with
/// the process, a crash included: a lock left by a process that is gone is taken over.
class SingleInstance {
public:
    /// Tries to claim; the lock file lies in the ConfigFolder.
    SingleInstance();

    /// False when another process holds the claim.
    bool IsFirst() const { return m_first; }

private:
    QLockFile m_lock;
    bool m_first = false;
};

} // namespace qb
