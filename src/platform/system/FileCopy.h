#pragma once

#include <QString>
#include <functional>

namespace qb {

/// Copies a file's contents to @p target, which is replaced, and flushes them to the disk. Nobody may read
/// the copy who may not read @p source. Memory
/// does not grow with the file. @p progress is told the bytes done and of all, and ends the copying by
/// answering false. Raises RuntimeError 75 for what can't be read or written, 18 when it was ended;
/// nothing is left at @p target then.
void CopyFileContents(const QString& source, const QString& target,
                      const std::function<bool(qint64 done, qint64 total)>& progress = {});

} // namespace qb
