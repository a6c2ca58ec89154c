#pragma once

#include "find/FindMatcher.h"
#include "find/FindPlaces.h"
#include "store/Library.h"

namespace qb {

/// One change that a replacement makes, or would.
struct ReplaceChange {
    qint64 Item = 0;
    FindField Field = FindField::Title;
    TextRange Range;     ///< in the plain text as it is, as a text box counts
    QString Found;       ///< what stands there
    QString Replacement; ///< what takes its place
    int Line = 1;
    QString Before; ///< the line, or lines, as they are
    QString After;  ///< the same with this change alone
};

/// The texts of items that can be replaced in: title, description, code, notes and usage.
inline constexpr FindFieldSet ReplaceFields = BitOf(FindField::Title) | BitOf(FindField::Description)
                                              | BitOf(FindField::Code) | BitOf(FindField::Notes)
                                              | BitOf(FindField::Usage);

/// What would be changed in an item as it stands now, in the order of its texts. In @p replacement of an expression \0
/// to \9
/// stand for what its groups matched, \\ for a backslash. Raises RuntimeError 3265 when there is no such item.
std::vector<ReplaceChange> ChangesIn(Library& library, qint64 item, const FindMatcher& matcher,
                                     const QString& replacement);

/// Makes changes that ChangesIn has told of, in one transaction, inside the running one if there is one. Formatted
/// texts
/// keep their formats: what comes in looks like the first character that goes. Each item is asked for by the rules of
/// all
/// other changes (see ItemRules.h). Raises an error, with the library as it was, when an item may not be changed, when
/// a
/// text no longer holds what a change says, when a title would be empty, too long or reserved, or a part is protected.
void MakeChanges(Library& library, const std::vector<ReplaceChange>& changes);

} // namespace qb
