#pragma once

#include "store/Library.h"

#include <QString>

namespace qb {

/// Whether the version of an item in `TempItems` has a page in `TempHTMLFiles`.
bool HasConflictPage(Library& library, qint64 item);

/// Writes the page of the version in `TempItems` into a folder, which ends in a separator: the page as `<name>.htm`,
/// what lies beside it below a folder `<name>`, from which the page loads it then. False, with nothing written, when
/// there is no page. Names that would lead out of the folder raise RuntimeError 75, as does what can't be written.
bool WriteConflictPage(Library& library, qint64 item, const QString& folder, const QString& name);

} // namespace qb
