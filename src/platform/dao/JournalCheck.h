#pragma once

#include <QString>

namespace qb {

/// Raises an error when what lies beside the database file @p path under the names of its journals could
/// make the engine touch any other file: to be called before the first statement, which plays a journal
/// back. A journal that names a super-journal has that file read and deleted; only those of this
/// program's own are taken, the ones of a transaction over two files. A link, a device or a pipe in the
/// place of a journal would be followed or waited for. 3343 for either.
void RefuseForeignJournal(const QString& path);

} // namespace qb
