#include "find/FindPlaces.h"

#include <algorithm>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

/// Where something stands in a text in UTF-8.
struct Stretch {
    qsizetype Begin;
    qsizetype End;
    friend auto operator<=>(const Stretch&, const Stretch&) = default;
};

void AddNeedle(QByteArrayView text, const FindNeedle& needle, const FindMatcher& matcher, size_t most,
               std::vector<Stretch>& found)
{
    QByteArray folded;
    std::vector<quint32> origins;
    AppendFolded(text, matcher.Folds(), folded, &origins);
    origins.push_back(quint32(text.size()));
    std::array<quint32, 256> places;
    qsizetype at = 0;
    for (size_t count = places.size(); count == places.size() && found.size() < most;) {
        count = needle.OnTheFly->Next(folded, at, places);
        for (size_t i = 0; i < count && found.size() < most; ++i) {
            const qsizetype end = places[i] + needle.Text.size();
            if (!matcher.Query().WholeWord
                || FindMatcher::IsWhole(folded, places[i], end, needle.BeginsWord, needle.EndsWord))
                found.push_back({origins[places[i]], origins[size_t(end)]});
        }
    }
}

void AddMatches(QByteArrayView text, const FindExpression& expression, size_t most, std::vector<Stretch>& found)
{
    FindExpression::Matcher matcher(expression);
    const bool isAscii = IsAscii(text);
    for (qsizetype at = 0; at < text.size() && found.size() < most;) {
        const auto match = matcher.Next(text, at, isAscii);
        if (!match)
            return;
        found.push_back({match->Begin, match->End});
        at = match->End;
    }
}

/// In the order of the text.
std::vector<Stretch> StretchesIn(QByteArrayView text, const FindMatcher& matcher, size_t most)
{
    std::vector<Stretch> found;
    if (matcher.Expression())
        AddMatches(text, *matcher.Expression(), most, found);
    for (const FindNeedle& needle : matcher.Needles()) {
        std::vector<Stretch> own;
        AddNeedle(text, needle, matcher, most, own);
        found.insert(found.end(), own.begin(), own.end());
    }
    std::sort(found.begin(), found.end());
    found.resize(std::min(found.size(), most));
    return found;
}

/// Counts characters on the way through a text.
class Counter {
public:
    explicit Counter(QByteArrayView text) : m_text(text) {}

    /// Forward only.
    void GoTo(qsizetype place)
    {
        for (; m_at < place; ++m_at) {
            const auto byte = uchar(m_text[m_at]);
            if (byte == '\n') {
                ++m_line;
                m_lineBegin = m_at + 1;
                m_unitsOfLine = 0;
                m_units += 2; // CR LF
            } else if ((byte & 0xc0u) != 0x80u) {
                const int units = byte >= 0xf0 ? 2 : 1;
                m_units += units;
                m_unitsOfLine += units;
            }
        }
    }
    qsizetype Units() const { return m_units; }
    int Line() const { return m_line; }
    int UnitsOfLine() const { return m_unitsOfLine; }
    qsizetype LineBegin() const { return m_lineBegin; }

private:
    QByteArrayView m_text;
    qsizetype m_at = 0;
    qsizetype m_units = 0;
    qsizetype m_lineBegin = 0;
    int m_line = 1;
    int m_unitsOfLine = 0;
};

constexpr qsizetype LongestLine = 400; // of context

/// The begin of a character at or before a place.
qsizetype CharacterBegin(QByteArrayView text, qsizetype at)
{
    while (at > 0 && at < text.size() && (uchar(text[at]) & 0xc0u) == 0x80u)
        --at;
    return at;
}

qsizetype LineEnd(QByteArrayView text, qsizetype at)
{
    const qsizetype end = text.indexOf('\n', at);
    return end < 0 ? text.size() : end;
}

void AddContext(QByteArrayView text, const Stretch& stretch, const Counter& counter, int lines, FindPlace& place)
{
    qsizetype begin = counter.LineBegin();
    int before = 0;
    for (; before < lines && begin > 0; ++before)
        begin = begin < 2 ? 0 : text.lastIndexOf('\n', begin - 2) + 1;
    place.ContextLine = counter.Line() - before;
    for (int behind = -before; behind <= lines; ++behind) {
        const qsizetype end = LineEnd(text, begin);
        // Of a long line that holds the place, what is around it.
        qsizetype cut = begin;
        if (behind == 0 && stretch.Begin - begin > LongestLine / 2)
            cut = CharacterBegin(text, stretch.Begin - LongestLine / 2);
        const qsizetype stop = CharacterBegin(text, std::min(end, cut + LongestLine));
        place.Context << QString::fromUtf8(text.sliced(cut, stop - cut));
        if (behind == 0)
            place.ContextColumn = QString::fromUtf8(text.sliced(cut, stretch.Begin - cut)).size();
        if (end >= text.size())
            break;
        begin = end + 1;
    }
}

} // namespace

std::vector<FindPlace> PlacesIn(const FindSnapshot& texts, FindSnapshot::Place item, const FindMatcher& matcher,
                                size_t most, int context)
{
    const FindSegment& segment = texts.SegmentOf(item);
    const SegmentChunk& chunk = segment.ChunkOfItem(item.Item);
    std::vector<FindPlace> places;
    for (const SegmentPart& part : segment.PartsOfItem(item.Item)) {
        if (places.size() >= most)
            break;
        if (!(matcher.Query().Fields & BitOf(part.Field)))
            continue;
        const QByteArrayView text = segment.TextOf(chunk, part);
        Counter counter(text);
        for (const Stretch& stretch : StretchesIn(text, matcher, most - places.size())) {
            counter.GoTo(stretch.Begin);
            FindPlace place;
            place.Field = part.Field;
            place.Piece = part.Piece;
            place.Source = part.Source;
            place.Begin = counter.Units();
            place.Line = counter.Line();
            place.Column = counter.UnitsOfLine() + 1;
            Counter end = counter;
            end.GoTo(stretch.End);
            place.Length = end.Units() - place.Begin;
            if (context >= 0)
                AddContext(text, stretch, counter, context, place);
            places.push_back(std::move(place));
        }
    }
    return places;
}

std::vector<TextRange> RangesIn(const QString& text, const FindMatcher& matcher, size_t most)
{
    const QByteArray searched = NormalText(text).toUtf8();
    std::vector<TextRange> ranges;
    qsizetype unit = 0; // in the text as it was given
    qsizetype byte = 0;
    const auto goTo = [&](qsizetype place) {
        while (byte < place) {
            if (searched[byte] == '\n') {
                unit += text[unit] == u'\r' && unit + 1 < text.size() && text[unit + 1] == u'\n' ? 2 : 1;
            } else if ((uchar(searched[byte]) & 0xc0u) != 0x80u) {
                unit += uchar(searched[byte]) >= 0xf0 ? 2 : 1;
            }
            ++byte;
        }
        return unit;
    };
    for (const Stretch& stretch : StretchesIn(searched, matcher, most)) {
        if (stretch.Begin < byte) { // one word within another
            unit = 0;
            byte = 0;
        }
        const qsizetype begin = goTo(stretch.Begin);
        ranges.push_back({begin, goTo(stretch.End) - begin});
    }
    return ranges;
}

} // namespace qb
