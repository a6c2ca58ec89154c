#include "platform/system/SingleInstance.h"

#include "platform/system/Paths.h"

namespace qb {

SingleInstance::SingleInstance() : m_lock(ConfigFolder() + QStringLiteral("quillbase.lock"))
{
    m_lock.setStaleLockTime(0); // a session may last for days; only a dead owner makes a lock stale
    m_first = m_lock.tryLock(0);
    qint64 owner = 0;
    QString host;
    QString name;
    if (!m_first && !m_lock.getLockInfo(&owner, &host, &name)) { // a file without an owner in it is left over
        m_lock.removeStaleLockFile();
        m_first = m_lock.tryLock(0);
    }
    // A folder that can't be written to hinders nobody from starting: only a live owner does.
    m_first = m_first || m_lock.error() != QLockFile::LockFailedError;
}

} // namespace qb
