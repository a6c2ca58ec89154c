#pragma once

#include "platform/dao/Database.h"

#include <QString>

namespace qb {

/// Names in the folder of stored files for what is under way, which no title can make: they begin with
/// a dot and tell the process. A file of the first kind has no row yet; one of the second belongs to a
/// row that is being committed; one of the third was a row's that is being deleted.
QString AddingName();
QString ArrivingName(qint64 id);
QString LeavingName(qint64 id);

/// After a process ended in the middle of its work: gives each row that was committed its file, and
/// removes the files of rows that were not, or were deleted. What a running process has under way is
/// left to it.
void FinishPendingFiles(Database& database);

} // namespace qb
