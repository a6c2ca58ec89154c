#pragma once

#include "platform/system/FileLock.h"

namespace qb {

/// The claim to be the one running instance of the program for this user. The claim ends with
/// the process, a crash included. A folder that can't be written to hinders nobody from starting.
class SingleInstance {
public:
    /// Tries to claim; the lock file lies in the ConfigFolder.
    SingleInstance();

    /// False when another process holds the claim.
    bool IsFirst() const { return !m_lock.IsBusy(); }

private:
    FileLock m_lock;
};

} // namespace qb
