#include "platform/system/SingleInstance.h"

#include "platform/system/Paths.h"

namespace qb {

SingleInstance::SingleInstance() : m_lock(ConfigFolder() + QStringLiteral("quillbase.lock"), FileLock::Target::Own) {}

} // namespace qb
