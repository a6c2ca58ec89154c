#pragma once

#include "find/FindMatcher.h"
#include "find/FindSegment.h"

#include <array>
#include <functional>

namespace qb {

using FindCounters = std::array<quint32, FindFields>;

/// Looks through one chunk of texts after another for what a matcher wants. For one thread.
class ChunkSearch {
public:
    /// @p isEnough is asked now and then; when it says so a search ends before its time.
    ChunkSearch(const FindMatcher& matcher, std::function<bool()> isEnough);

    /// What was found of an item; each bit is a needle.
    struct Found {
        FindCounters Counters{};
        quint64 Seen = 0;
        quint64 Whole = 0; ///< as a word of its own somewhere
        quint64 InTitle = 0;
        quint64 WholeInTitle = 0;
    };

    /// @p wanted says of each item of the chunk whether it is looked at; @p fields which of its texts. The result is
    /// there
    /// until the next search.
    const std::vector<Found>& Search(const FindSegment& segment, const SegmentChunk& chunk,
                                     const std::vector<char>& wanted, FindFieldSet fields);

    /// Texts of which an expression was given up, in all searches.
    size_t GivenUp() const { return m_givenUp; }

private:
    enum class Form { Plain, Folded };

    bool IsWanted(const SegmentPart& part) const
    {
        return (BitOf(part.Field) & m_fields) != 0 && m_wanted[part.Item - m_chunk->FirstItem];
    }
    /// Calls @p take(part, place) for each place of @p scan in those of the wanted parts that @p accepts.
    template <class Accepts, class Take>
    void Scan(const ByteScan& scan, Form form, Accepts&& accepts, Take&& take);
    /// The same for a needle of one byte, without its places: they are too many to look at each.
    template <class Accepts>
    void CountByte(const ByteScan& scan, Form form, Accepts&& accepts, const FindNeedle& needle, quint64 bit);
    static bool HasWhole(const ByteScan& scan, QByteArrayView texts, qsizetype at, const FindNeedle& needle);
    void SearchNeedle(const FindNeedle& needle, quint64 bit);
    void SearchOnTheFly(const FindNeedle& needle, quint64 bit, const SegmentPart& part);
    void SearchExpression();
    void SearchExpressionIn(const SegmentPart& part);
    void Count(const SegmentPart& part, quint64 bit, bool isWhole, quint32 times = 1);
    bool IsFoundWhole(const SegmentPart& part, quint64 bit) const;

    const FindMatcher& m_matcher;
    std::function<bool()> m_isEnough;
    std::optional<FindExpression::Matcher> m_expression;
    const FindSegment* m_segment = nullptr;
    const SegmentChunk* m_chunk = nullptr;
    std::vector<char> m_wanted;
    FindFieldSet m_fields = 0;
    std::vector<Found> m_found;
    std::vector<char> m_candidates; ///< by part
    QByteArray m_buffer;
    size_t m_givenUp = 0;
};

} // namespace qb
