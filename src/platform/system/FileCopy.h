#pragma once

#include "platform/system/Work.h"

#include <QString>

namespace qb {

/// Copies a file's contents to @p target, which is replaced, and flushes them to the disk. Nobody may read
/// the copy who may not read @p source. Memory does not grow with the file. @p work counts bytes. Raises
/// RuntimeError 75 for what can't be read or written, 18 when it was cancelled; nothing is left at @p target
/// then.
void CopyFileContents(const QString& source, const QString& target, Work& work = NoWork());

} // namespace qb
