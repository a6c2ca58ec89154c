#pragma once

#include "conflicts/DiscardedVersions.h"

#include <vector>

namespace qb {

/// A conflict that was none, and what of the other version was dropped with it: it counts as no difference.
struct SettledConflict {
    qint64 Item = 0;
    QString Title;
    QStringList Dropped; ///< "looks", "status", "rating", "page flag", "place"
};

struct AutomaticResolution {
    std::vector<SettledConflict> Settled;
    qint64 Remaining = 0;
};

/// What became of them in one line: "3 conflicts resolved automatically; 1 of the other versions is in the removed
/// items". Empty where none was.
QString SummaryOf(const AutomaticResolution& resolution);

/// Removes the conflicts whose two versions say the same: title, description, info, date of the page, the plain texts
/// of code, usage and notes, and the stored files by title, date and description. What is Null is the same as what is
/// empty. Asks nobody. Versions that differ in what does not count are discarded. Raises an error, with all as it was.
AutomaticResolution ResolveAutomatically(Library& library, const DiscardInto& discardInto = IntoRemovedItems());

/// The same; says whether conflicts remain, and fills @p result. An error is reported, and changes nothing.
bool AutomaticResolveProblems(Library& library, AutomaticResolution* result = nullptr,
                              const DiscardInto& discardInto = IntoRemovedItems());

/// Gives all conflicts up: the other versions are discarded, and the temporary tables go, but for that of pages, which
/// is emptied. Returns how many conflicts there were. Raises an error, with all as it was.
qint64 DiscardAllConflicts(Library& library, const DiscardInto& discardInto = IntoRemovedItems());

} // namespace qb
