#pragma once

#include <QString>
#include <array>
#include <memory>

namespace qb {

/// A regular expression of Perl's kind that is tried at one place of a line after another. It is
/// compiled to machine code where that is possible, allocates nothing when it is tried, and gives up
/// after a number of steps, since it may come from somebody else.
class Expression {
public:
    enum Case { Exact, Folds };

    Expression() = default;
    /// Raises nothing: a pattern that is not understood leaves it as the default one is, not valid, and then it must
    /// not be tried. Copies share what was compiled, so they are for one thread.
    Expression(const QString& pattern, Case sensitivity);

    /// Whether the pattern could be understood.
    bool IsValid() const { return m_compiled != nullptr; }

    struct Range {
        qsizetype Begin = -1; ///< -1: it took no part in the match
        qsizetype End = -1;
    };
    struct Match {
        Range Whole;
        Range Group; ///< the first one
    };
    /// Whether it matches at just this place; @p text must have no broken surrogates.
    bool MatchesAt(QStringView text, qsizetype place, Match& match) const;

    /// Whether a match can begin with a character below 128, or with any above.
    bool CanBeginWith(char16_t character) const { return m_begins[character < Last ? character : Last]; }

private:
    static constexpr size_t Last = 128;
    struct Compiled;

    std::shared_ptr<const Compiled> m_compiled;
    std::array<bool, Last + 1> m_begins{};
};

} // namespace qb
