#pragma once

#include "find/FindQuery.h"

#include <QStringList>
#include <vector>

namespace qb {

/// A query as text, to be kept for another time, and back. What the text does not say, or says in a way that is not
/// understood, is as a new query has it.
QString TextOfQuery(const FindQuery& query);
FindQuery QueryOfText(const QString& text);

/// What was looked for last, and the searches that the user has given names, in the user's settings.
class FindMemory {
public:
    static constexpr qsizetype MostTexts = 50;
    static constexpr qsizetype LongestText = 1000; ///< a longer one is not kept

    struct Saved {
        QString Name;
        FindQuery Query;
    };

    /// What was looked for, the last one first.
    static QStringList History();
    static void AddToHistory(const QString& text);

    /// By name.
    static std::vector<Saved> SavedFinds();
    /// Keeps a search under a name, over one that has it already. False when it can't be written, which was reported.
    static bool Save(const QString& name, const FindQuery& query);
    static void Remove(const QString& name);
};

} // namespace qb
