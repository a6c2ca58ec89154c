#pragma once

#include "text/RuleScan.h"

#include <functional>
#include <memory>

namespace qb {

/// What the lines of a text that is being edited are, by rules. The state in which each line begins
/// is remembered, so that a change has only those lines scanned again whose begin is another one,
/// and of these only what is asked for.
class LineColours {
public:
    /// Gives the text of a line.
    using TextOfLine = std::function<QString(int line)>;

    /// Begins anew, with a text of so many lines. @p scan null: no colours.
    void Reset(std::shared_ptr<RuleScan> scan, int lines);
    const std::shared_ptr<RuleScan>& Scan() const { return m_scan; }
    int LineCount() const { return int(m_begins.size()); }

    /// @p removed lines from @p first on have been replaced by @p added ones; a line that has
    /// changed is one that was replaced by itself.
    void LinesChanged(int first, int removed, int added);

    /// The tokens of a line. What stands before it is scanned as far as it is not known.
    const std::vector<Token>& TokensOf(int line, const TextOfLine& textOf);

    /// How many lines have been scanned so far, for measuring.
    qint64 LinesScanned() const { return m_scanned; }

private:
    void ScanUpTo(int line, const TextOfLine& textOf);

    std::shared_ptr<RuleScan> m_scan;
    std::vector<int> m_begins{RuleScan::Begin}; ///< the state in which each line begins
    int m_valid = 1;                            ///< of so many lines the state is right
    int m_suspect =
        1; ///< from this line on, up to m_known, states follow from each other; whether the first is right is not known
    int m_known = 1;
    qint64 m_scanned = 0;
    std::vector<Token> m_tokens;
};

} // namespace qb
