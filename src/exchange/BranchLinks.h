#pragma once

#include "platform/system/Date.h"

#include <QString>

namespace qb {

class Library;

/// Adds the row of a link between two items of which at least one came with a branch, inside the caller's transaction:
/// a mother does not know it. @p now is the date of its note.
void AddBranchLink(Library& library, qint64 from, qint64 to, const QString& note, Date added, Date now);

} // namespace qb
