#pragma once

#include <QString>

namespace qb {

/// A name beside @p target, for what will be moved there when it is complete. Nobody else has it, and nobody can
/// foretell it. It says which process gave it.
QString InterimName(const QString& target);

/// Removes files of interim names from a folder whose processes are gone: what a power cut or a kill has left of files
/// that were never complete. Those of a living process stay, and those of another machine for some days. A file that
/// can't be removed is left alone.
void RemoveStaleInterims(const QString& folder);

} // namespace qb
