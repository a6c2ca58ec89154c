#pragma once

#include "platform/system/FileLock.h"

#include <QString>

namespace qb {

/// Says that a library is open for writing, for as long as it lives: a file beside the library, locked by this
/// process. Not on the library's own file, whose locks belong to the engine. Where no file can be made there is no
/// mark; nobody else can replace the library there either.
class OpenMark {
public:
    OpenMark() = default;
    /// Raises RuntimeError 3045 while somebody has the library for himself (SoleUse).
    explicit OpenMark(const QString& library);
    OpenMark(OpenMark&&) = default;
    OpenMark& operator=(OpenMark&&) = default;

private:
    FileLock m_lock;
};

/// Keeps everybody else from opening a library for writing, for as long as it lives: for what brings the library to
/// another state as a whole.
class SoleUse {
public:
    /// Raises RuntimeError 3045 when the library is open for writing, here or in another process, or somebody else
    /// has it for himself; 75 when nobody can tell, since nothing can be written beside it. The library need not
    /// be there. @p procedure is named as the source of these errors.
    SoleUse(const QString& library, const QString& procedure);
    SoleUse(const SoleUse&) = delete;
    SoleUse& operator=(const SoleUse&) = delete;

private:
    FileLock m_lock;
};

/// Raises RuntimeError 3045 while somebody has the library for himself.
void RefuseWhileAlone(const QString& library);

} // namespace qb
