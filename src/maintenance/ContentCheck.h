#pragma once

#include "maintenance/LibraryCheck.h"

namespace qb {

/// What a look at all that a library holds has found.
struct ContentCheck {
    std::vector<LibraryFault> Faults; ///< item by item, field by field
    qint64 KnownRows = 0;             ///< rows whose checksums are known
    qint64 UnknownRows = 0;           ///< written by a program that notes none, or before this one did
};

/// Reads all texts and stored files of a library and holds them against the checksums that were noted when they were
/// written. What is not known is no fault. A row that can't be read is one, and keeps nobody from the others. Changes
/// nothing. @p work counts rows. Raises an error when not even the list of rows can be read; RuntimeError 18 when it
/// was cancelled.
ContentCheck CheckContents(Database& database, Work& work = NoWork());

/// What is damaged, for people to read: a line for each of the first ten faults.
QString LinesOf(const std::vector<LibraryFault>& faults);

} // namespace qb
