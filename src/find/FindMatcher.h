#pragma once

#include "find/ByteScan.h"
#include "find/FindExpression.h"
#include "find/FindQuery.h"
#include "find/FoldText.h"

#include <memory>
#include <optional>
#include <vector>

namespace qb {

/// One word or phrase of a query, with the ways in which texts are looked through for it.
struct FindNeedle {
    /// What becomes of the texts that are not ASCII.
    enum WideTexts {
        Plain,  ///< as of the others, but for those whose folding makes ASCII of other characters
        Folded, ///< their folded form tells
        Filter, ///< those in whose folded form it is are folded as the query wants it
        Each    ///< all are folded as the query wants it
    };

    QByteArray Text;                  ///< folded as the query wants it
    std::optional<ByteScan> Ascii;    ///< for texts of ASCII; for all where nothing folds; none when it can't be in one
    std::optional<ByteScan> Wide;     ///< for folded forms
    std::optional<ByteScan> OnTheFly; ///< for texts that were folded as the query wants it
    WideTexts InWide = Plain;
    bool BeginsWord = false; ///< its first character is one of words
    bool EndsWord = false;
};

/// A query made ready, for any number of threads.
class FindMatcher {
public:
    static constexpr size_t MostNeedles = 64;

    /// Raises RuntimeError 5, with a sentence for the user, when nothing can be looked for: an empty text, more than 64
    /// words, an expression that is not understood.
    explicit FindMatcher(const FindQuery& query);

    const FindQuery& Query() const { return m_query; }
    /// How texts are folded for the query.
    Folding Folds() const { return m_folding; }
    /// None for an expression.
    const std::vector<FindNeedle>& Needles() const { return m_needles; }
    const FindExpression* Expression() const { return m_expression.get(); }
    /// For texts of ASCII: what an expression's matches hold; none when nothing is known.
    const std::optional<ByteScan>& Literal() const { return m_literal; }
    /// One bit for each needle, or for the expression.
    quint64 AllBits() const;

    /// Whether what stands from @p begin to @p end of a text is no part of longer words.
    static bool IsWhole(QByteArrayView text, qsizetype begin, qsizetype end, bool beginsWord, bool endsWord);

private:
    FindNeedle MakeNeedle(const QByteArray& text) const;

    FindQuery m_query;
    Folding m_folding = Folding::None;
    std::vector<FindNeedle> m_needles;
    std::unique_ptr<FindExpression> m_expression;
    std::optional<ByteScan> m_literal;
};

} // namespace qb
