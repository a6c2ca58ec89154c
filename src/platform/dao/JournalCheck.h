#pragma once

#include <QString>

namespace qb {

/// Raises an error when what lies beside the database file @p path under the names of its journals could
/// make the engine touch any other file: to be called before the first statement, which plays a journal
/// back. A journal that names a super-journal has that file read and deleted; only those are taken that the
/// engine makes for a transaction over several files, and that list this file's journal, wherever the other
/// files lie. A link, a device or a pipe in the place of a journal would be followed or waited for. 3343 for
/// either.
void RefuseForeignJournal(const QString& path);

/// Removes the super-journals beside the database file @p path to which no journal refers: a process that ends
/// between making one and writing its name leaves it for ever. Only while the write lock of the file is held,
/// which keeps those of living processes from it.
void RemoveStaleSuperJournals(const QString& path);
/// Whether there are any files that could be such.
bool HasSuperJournals(const QString& path);

} // namespace qb
