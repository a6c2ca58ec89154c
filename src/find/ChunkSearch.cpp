#include "find/ChunkSearch.h"

#include <algorithm>

namespace qb {

namespace {

constexpr size_t PlacesAtOnce = 1024;

/// The stretch of a chunk's texts, or their folded forms, in which a part stands.
struct Stretch {
    Stretch(const SegmentPart& part, bool isPlain)
        : Begin(isPlain ? part.Begin : part.FoldedBegin), End(Begin + (isPlain ? part.Length : part.FoldedLength))
    {
    }
    qsizetype Begin;
    qsizetype End;
};

} // namespace

ChunkSearch::ChunkSearch(const FindMatcher& matcher, std::function<bool()> isEnough)
    : m_matcher(matcher), m_isEnough(std::move(isEnough))
{
    if (matcher.Expression())
        m_expression.emplace(*matcher.Expression());
}

const std::vector<ChunkSearch::Found>& ChunkSearch::Search(const FindSegment& segment, const SegmentChunk& chunk,
                                                           const std::vector<char>& wanted, FindFieldSet fields)
{
    m_segment = &segment;
    m_chunk = &chunk;
    m_wanted = wanted;
    m_fields = fields;
    m_found.assign(chunk.Items, Found());
    if (m_expression) {
        SearchExpression();
        return m_found;
    }
    quint64 bit = 1;
    for (const FindNeedle& needle : m_matcher.Needles()) {
        if (m_isEnough())
            break;
        SearchNeedle(needle, bit);
        bit <<= 1;
    }
    return m_found;
}

template <class Accepts, class Take>
void ChunkSearch::Scan(const ByteScan& scan, Form form, Accepts&& accepts, Take&& take)
{
    constexpr qsizetype Gap = 256; // less is quicker scanned than left out
    const bool isPlain = form == Form::Plain;
    const QByteArrayView texts = isPlain ? m_segment->TextsOf(*m_chunk) : m_segment->FoldedOf(*m_chunk);
    const std::span<const SegmentPart> parts = m_segment->PartsOf(*m_chunk);
    const auto stretch = [isPlain](const SegmentPart& part) { return Stretch(part, isPlain); };
    const auto counts = [&](const SegmentPart& part) { return IsWanted(part) && accepts(part); };
    std::array<quint32, PlacesAtOnce> places;
    for (size_t first = 0; first < parts.size();) {
        if (!counts(parts[first])) {
            ++first;
            continue;
        }
        size_t last = first;
        for (size_t next = first + 1;
             next < parts.size() && stretch(parts[next]).Begin - stretch(parts[last]).End <= Gap; ++next) {
            if (counts(parts[next]))
                last = next;
        }
        const QByteArrayView range = texts.first(stretch(parts[last]).End);
        qsizetype at = stretch(parts[first]).Begin;
        size_t part = first;
        for (size_t count = PlacesAtOnce; count == PlacesAtOnce;) {
            count = scan.Next(range, at, places);
            for (size_t i = 0; i < count; ++i) {
                while (part < last && stretch(parts[part]).End <= qsizetype(places[i]))
                    ++part;
                if (counts(parts[part]))
                    take(parts[part], qsizetype(places[i]), texts);
            }
        }
        first = last + 1;
    }
}

bool ChunkSearch::HasWhole(const ByteScan& scan, QByteArrayView texts, qsizetype at, const FindNeedle& needle)
{
    std::array<quint32, PlacesAtOnce> places;
    for (size_t count = PlacesAtOnce; count == PlacesAtOnce;) {
        count = scan.Next(texts, at, places);
        for (size_t i = 0; i < count; ++i) {
            if (FindMatcher::IsWhole(texts, places[i], places[i] + 1, needle.BeginsWord, needle.EndsWord))
                return true;
        }
    }
    return false;
}

template <class Accepts>
void ChunkSearch::CountByte(const ByteScan& scan, Form form, Accepts&& accepts, const FindNeedle& needle, quint64 bit)
{
    const bool isPlain = form == Form::Plain;
    const QByteArrayView texts = isPlain ? m_segment->TextsOf(*m_chunk) : m_segment->FoldedOf(*m_chunk);
    for (const SegmentPart& part : m_segment->PartsOf(*m_chunk)) {
        if (!IsWanted(part) || !accepts(part))
            continue;
        const Stretch stretch(part, isPlain);
        const qsizetype times = scan.CountByte(texts.sliced(stretch.Begin, stretch.End - stretch.Begin));
        if (times > 0)
            Count(part, bit, IsFoundWhole(part, bit) || HasWhole(scan, texts.first(stretch.End), stretch.Begin, needle),
                  quint32(times));
    }
}

bool ChunkSearch::IsFoundWhole(const SegmentPart& part, quint64 bit) const
{
    const Found& found = m_found[part.Item - m_chunk->FirstItem];
    return ((part.Field == FindField::Title ? found.WholeInTitle : found.Whole) & bit) != 0;
}

void ChunkSearch::Count(const SegmentPart& part, quint64 bit, bool isWhole, quint32 times)
{
    Found& found = m_found[part.Item - m_chunk->FirstItem];
    found.Counters[size_t(part.Field)] += times;
    found.Seen |= bit;
    if (isWhole)
        found.Whole |= bit;
    if (part.Field != FindField::Title)
        return;
    found.InTitle |= bit;
    if (isWhole)
        found.WholeInTitle |= bit;
}

void ChunkSearch::SearchNeedle(const FindNeedle& needle, quint64 bit)
{
    const bool wholeOnly = m_matcher.Query().WholeWord;
    const auto take = [&](const SegmentPart& part, qsizetype place, QByteArrayView texts) {
        // Whether it is a word of its own need not be asked again for an item that has one.
        const bool isWhole = (!wholeOnly && IsFoundWhole(part, bit))
                             || FindMatcher::IsWhole(texts, place, place + needle.Text.size(), needle.BeginsWord,
                                                     needle.EndsWord);
        if (isWhole || !wholeOnly)
            Count(part, bit, isWhole);
    };
    const auto search = [&](const ByteScan& scan, Form form, const auto& accepts) {
        if (scan.Length() == 1 && !wholeOnly)
            CountByte(scan, form, accepts, needle, bit);
        else
            Scan(scan, form, accepts, take);
    };
    const auto isWide = [](const SegmentPart& part) { return (part.Flags & SegmentPart::NotAscii) != 0; };
    const bool takesIntoAscii = m_matcher.Folds() == Folding::None;
    if (needle.Ascii) {
        search(*needle.Ascii, Form::Plain, [&](const SegmentPart& part) {
            if (!isWide(part))
                return true;
            return needle.InWide == FindNeedle::Plain && (takesIntoAscii || !(part.Flags & SegmentPart::IntoAscii));
        });
    }
    const std::span<const SegmentPart> parts = m_segment->PartsOf(*m_chunk);
    if (needle.InWide == FindNeedle::Folded) {
        search(*needle.Wide, Form::Folded, isWide);
    } else if (needle.InWide == FindNeedle::Filter) {
        const SegmentPart* last = nullptr;
        Scan(*needle.Wide, Form::Folded, isWide, [&](const SegmentPart& part, qsizetype, QByteArrayView) {
            if (&part != last)
                SearchOnTheFly(needle, bit, part);
            last = &part;
        });
    } else if (needle.InWide == FindNeedle::Each || !takesIntoAscii) {
        const quint8 flag = needle.InWide == FindNeedle::Each ? SegmentPart::NotAscii : SegmentPart::IntoAscii;
        for (const SegmentPart& part : parts) {
            if ((part.Flags & flag) != 0 && IsWanted(part))
                SearchOnTheFly(needle, bit, part);
        }
    }
}

void ChunkSearch::SearchOnTheFly(const FindNeedle& needle, quint64 bit, const SegmentPart& part)
{
    if (m_isEnough())
        return;
    m_buffer.resize(0);
    AppendFolded(m_segment->TextOf(*m_chunk, part), m_matcher.Folds(), m_buffer);
    const bool wholeOnly = m_matcher.Query().WholeWord;
    std::array<quint32, PlacesAtOnce> places;
    qsizetype at = 0;
    for (size_t count = PlacesAtOnce; count == PlacesAtOnce;) {
        count = needle.OnTheFly->Next(m_buffer, at, places);
        for (size_t i = 0; i < count; ++i) {
            const bool isWhole = FindMatcher::IsWhole(m_buffer, places[i], places[i] + needle.Text.size(),
                                                      needle.BeginsWord, needle.EndsWord);
            if (isWhole || !wholeOnly)
                Count(part, bit, isWhole);
        }
    }
}

void ChunkSearch::SearchExpression()
{
    const std::span<const SegmentPart> parts = m_segment->PartsOf(*m_chunk);
    const std::optional<ByteScan>& literal = m_matcher.Literal();
    m_candidates.assign(parts.size(), literal ? 0 : 1);
    if (literal) {
        Scan(
            *literal, Form::Plain, [](const SegmentPart&) { return true; },
            [&](const SegmentPart& part, qsizetype, QByteArrayView) {
                m_candidates[size_t(&part - parts.data())] = 1;
            });
    }
    for (size_t i = 0; i < parts.size() && !m_isEnough(); ++i) {
        if (IsWanted(parts[i]) && (m_candidates[i] || (parts[i].Flags & SegmentPart::IntoAscii) != 0))
            SearchExpressionIn(parts[i]);
    }
}

void ChunkSearch::SearchExpressionIn(const SegmentPart& part)
{
    const QByteArrayView text = m_segment->TextOf(*m_chunk, part);
    const bool isAscii = !(part.Flags & SegmentPart::NotAscii);
    qsizetype at = 0;
    while (at < text.size() && !m_isEnough()) {
        const auto match = m_expression->Next(text, at, isAscii);
        if (!match) {
            m_givenUp += m_expression->HasGivenUp() ? 1u : 0u;
            return;
        }
        qsizetype first = match->Begin;
        const bool beginsWord = IsWordCharacter(NextCharacter(text, first));
        const bool endsWord = IsWordCharacter(CharacterBefore(text, match->End));
        Count(part, 1,
              IsFoundWhole(part, 1) || FindMatcher::IsWhole(text, match->Begin, match->End, beginsWord, endsWord));
        at = match->End;
    }
}

} // namespace qb
