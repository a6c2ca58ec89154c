#pragma once

#include "session/SessionState.h"

#include <QString>
#include <vector>

namespace qb {

/// The list of libraries as it is stored: "path|alias;" for each.
std::vector<LibraryEntry> LibraryEntriesOf(const QString& text);
QString TextOfLibraryEntries(const std::vector<LibraryEntry>& entries);
/// Neither a path nor an alias may contain what parts them.
bool BreaksLibraryEntries(const QString& text);

/// The list that two programs have changed at the same time: @p before is what @p own was when it was stored last,
/// @p stored what is stored now. What was added, removed or given another alias here is so in the result; the rest
/// is as stored.
std::vector<LibraryEntry> MergedLibraryEntries(const std::vector<LibraryEntry>& before,
                                               const std::vector<LibraryEntry>& own,
                                               const std::vector<LibraryEntry>& stored);

} // namespace qb
