#pragma once

#include <QtGlobal>
#include <cstddef>
#include <iterator>
#include <vector>

namespace qb {

/// A value for each position of a text, kept as runs of equal values; neighbouring runs always
/// differ. The runs lie in one array with a gap at the place of the last change, so that changes
/// one behind the other, as painting makes them, cost the same however many runs there are, and
/// moving all that stands behind costs nothing. A look-up elsewhere is a binary search.
class RunMap {
public:
    struct Run {
        qsizetype first; ///< position of its begin
        quint32 second;  ///< value
    };

    /// Goes through the runs in order.
    class Iterator {
    public:
        using iterator_category = std::bidirectional_iterator_tag;
        using value_type = Run;
        using difference_type = std::ptrdiff_t;
        using pointer = const Run*;
        using reference = const Run&;

        /// At a run by its number, Count() being the end. A change of the map ends its use.
        Iterator(const RunMap& map, size_t index) : m_map(&map), m_index(index) { Load(); }
        /// A copy of the run, of no meaning at the end.
        const Run& operator*() const { return m_run; }
        const Run* operator->() const { return &m_run; }
        Iterator& operator++()
        {
            ++m_index;
            Load();
            return *this;
        }
        Iterator& operator--()
        {
            --m_index;
            Load();
            return *this;
        }
        /// Compares the numbers of runs: for iterators of one map only.
        friend bool operator==(const Iterator& left, const Iterator& right) { return left.m_index == right.m_index; }

    private:
        void Load()
        {
            if (m_index < m_map->Count())
                m_run = m_map->At(m_index);
        }

        const RunMap* m_map;
        size_t m_index;
        Run m_run{};
    };

    /// All positions have @p value, however long the text is.
    explicit RunMap(quint32 value = 0) { Clear(value); }

    /// One run for the whole text.
    void Clear(quint32 value);
    quint32 ValueAt(qsizetype position) const { return At(IndexAt(position)).second; }
    /// The run that holds a position.
    Iterator RunAt(qsizetype position) const { return {*this, IndexAt(position)}; }
    Iterator End() const { return {*this, Count()}; }
    size_t Count() const { return m_before.size() + m_behind.size(); }

    /// Gives the positions from @p begin up to @p end a value.
    void Set(qsizetype begin, qsizetype end, quint32 value);
    /// Gives back memory that is kept for growth.
    void Squeeze();
    /// Lets a value begin behind all other runs.
    void Append(qsizetype begin, quint32 value);
    /// Positions from @p at on move up by @p length; what comes in has a value.
    void Insert(qsizetype at, qsizetype length, quint32 value);
    /// Positions from @p at up to @p at + @p length go.
    void Erase(qsizetype at, qsizetype length);

private:
    Run At(size_t index) const
    {
        if (index < m_before.size())
            return m_before[index];
        const Run& run = m_behind[Count() - 1 - index];
        return {run.first + m_shift, run.second};
    }
    size_t IndexAt(qsizetype position) const;
    void MoveGapTo(qsizetype position);
    void PushBefore(Run run);

    std::vector<Run> m_before; ///< up to the gap, in order; never empty
    std::vector<Run> m_behind; ///< behind the gap, the last of the text first
    qsizetype m_shift = 0;     ///< is added to the begins of the runs behind the gap
};

} // namespace qb
