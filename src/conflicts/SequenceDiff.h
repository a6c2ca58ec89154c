#pragma once

#include <QList>
#include <vector>

namespace qb {

/// What stands at one place in one sequence, instead of what stands there in the other. Positions count from 0; of a
/// length of 0 it is the place before which something is missing.
struct SequenceHunk {
    int First = 0;
    int FirstLength = 0;
    int Second = 0;
    int SecondLength = 0;

    friend bool operator==(const SequenceHunk&, const SequenceHunk&) = default;
};

/// How a sequence of numbers becomes another one, in order; what stands between the hunks is the same in both. Nearly
/// the fewest changes, in a time that differences don't blow up.
std::vector<SequenceHunk> DiffSequences(const QList<int>& first, const QList<int>& second);

} // namespace qb
