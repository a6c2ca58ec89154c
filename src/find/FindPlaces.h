#pragma once

#include "find/FindMatcher.h"
#include "find/FindSnapshot.h"

namespace qb {

/// One place in an item's texts at which a query was found.
struct FindPlace {
    FindField Field = FindField::Title;
    quint16 Piece = 0;   ///< as FindText has it
    qint64 Source = 0;   ///< the same
    qsizetype Begin = 0; ///< in the plain text as a text box counts: UTF-16 units, two for a line end
    qsizetype Length = 0;
    int Line = 1;                ///< from 1
    int Column = 1;              ///< in UTF-16 units, from 1
    QStringList Context;         ///< the lines of the place with those around it, as many as were asked for
    int ContextLine = 1;         ///< the number of the first of them
    qsizetype ContextColumn = 0; ///< where the place begins in its first line, as Context has it, from 0
};

/// All places of an item, in the order of its texts; @p most of them at most. Those of several words lie side by side
/// where one is part of another. @p context is the number of lines before and behind. Lines of more than a few hundred
/// characters are cut at both ends.
std::vector<FindPlace> PlacesIn(const FindSnapshot& texts, FindSnapshot::Place item, const FindMatcher& matcher,
                                size_t most, int context = 0);

/// The same in one text, which may be newer than any snapshot, as that of a box that is being edited is; its lines end
/// with CR LF or LF, and count as they do.
struct TextRange {
    qsizetype Begin = 0;
    qsizetype Length = 0;
    friend bool operator==(const TextRange&, const TextRange&) = default;
};
std::vector<TextRange> RangesIn(const QString& text, const FindMatcher& matcher, size_t most);

} // namespace qb
