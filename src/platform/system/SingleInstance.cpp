#include "platform/system/SingleInstance.h"

#include "platform/system/Paths.h"

namespace qb {

SingleInstance::SingleInstance() : m_lock(ConfigFolder() + QStringLiteral("quillbase.lock")), m_first(true)
{
    m_lock.setStaleLockTime(0); // a session may last for days; only a dead owner makes a lock stale
    if (qint64 owner = 0; !m_lock.tryLock(0)) { // a lock file without an owner in it is left over
        QString host, name;
        if (!m_lock.getLockInfo(&owner, &host, &name))
            m_lock.removeStaleLockFile();
    }
    // A folder that can't be written to hinders nobody from starting: only a live owner does.
    m_first = m_lock.tryLock(0) || m_lock.error() != QLockFile::LockFailedError;
}

} // namespace qb
