#include "conflicts/ComparedBoxes.h"

#include "conflicts/SequenceDiff.h"
#include "platform/richtext/RichTextDocument.h"
#include "platform/richtext/Rtf.h"

#include <QHash>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

const QString LineEnd = u"\r\n"_s;

/// A line with its end, as positions of a text.
struct Line {
    qsizetype Begin;
    qsizetype Length; ///< without its end
};

std::vector<Line> LinesOf(const QString& text)
{
    std::vector<Line> lines;
    qsizetype begin = 0;
    for (qsizetype end = text.indexOf(LineEnd); end >= 0; end = text.indexOf(LineEnd, begin)) {
        lines.push_back({begin, end - begin});
        begin = end + LineEnd.size();
    }
    lines.push_back({begin, text.size() - begin});
    return lines;
}

/// Numbers of lines, by what they say.
QList<int> NumbersOf(const QStringList& lines, QHash<QString, int>& known)
{
    QList<int> numbers;
    for (const QString& line : lines) {
        if (!known.contains(line))
            known.insert(line, int(known.size()));
        numbers << known[line];
    }
    return numbers;
}

QStringList TextsOf(const QString& text)
{
    return text.split(LineEnd);
}

/// Where each text stands first.
QHash<QString, int> FirstPlacesOf(const QStringList& texts)
{
    QHash<QString, int> places;
    for (int i = 0; i < int(texts.size()); ++i) {
        if (!places.contains(texts[i]))
            places.insert(texts[i], i);
    }
    return places;
}

/// Where each line of @p kept stands in @p own; -1 for none.
QList<int> PlacesIn(const QStringList& own, const QStringList& kept)
{
    QHash<QString, int> known;
    const QList<int> ownNumbers = NumbersOf(own, known);
    QList<int> places(kept.size(), -1);
    int ownLine = 0;
    int keptLine = 0;
    const auto same = [&](int end) {
        while (ownLine < end)
            places[keptLine++] = ownLine++;
    };
    for (const SequenceHunk& hunk : DiffSequences(ownNumbers, NumbersOf(kept, known))) {
        same(hunk.First);
        ownLine = hunk.First + hunk.FirstLength;
        keptLine = hunk.Second + hunk.SecondLength;
    }
    same(int(own.size()));
    return places;
}

/// Lines of a rich text, with their looks.
class LineSource {
public:
    explicit LineSource(const QString& rtf)
    {
        ReadRtf(rtf, m_document);
        m_lines = LinesOf(m_document.Text());
    }
    QStringList Texts() const { return TextsOf(m_document.Text()); }
    /// Lines behind each other. The end of the last is only there where that has one.
    RichTextDocument Part(int first, int last, bool withEnd) const
    {
        const qsizetype begin = m_lines[size_t(first)].Begin;
        const qsizetype end = m_lines[size_t(last)].Begin + m_lines[size_t(last)].Length;
        return m_document.Part(begin, end - begin + (withEnd && HasEnd(last) ? LineEnd.size() : 0));
    }
    bool HasEnd(int line) const { return size_t(line) + 1 < m_lines.size(); }

private:
    RichTextDocument m_document{CodeFont};
    std::vector<Line> m_lines;
};

} // namespace

std::vector<SideLine> SideLinesOf(const LineComparison& comparison, LineOwner side)
{
    std::vector<SideLine> lines;
    lines.reserve(comparison.Lines.size());
    for (const ComparedLine& line : comparison.Lines) {
        const bool isOwn = line.Owner == side;
        const LineLook look = line.Owner == LineOwner::Both ? LineLook::Same : isOwn ? LineLook::Own : LineLook::Filler;
        lines.push_back({line.Text, look, isOwn ? line.Words : std::vector<LineSpan>(), isOwn && line.IsClash});
    }
    return lines;
}

std::vector<SideLine> SideLinesOf(const QString& text)
{
    std::vector<SideLine> lines;
    for (const QString& line : LinesIn(text))
        lines.push_back({.Text = line});
    return lines;
}

QStringList KeptLines(const ComparedSide& side)
{
    QStringList kept;
    for (int line = 0; line < side.LineCount(); ++line) {
        if (side.LookOf(line) != LineLook::Filler)
            kept << side.LineText(line);
    }
    return kept;
}

QString LinesWithLooks(const QStringList& lines, const QString& own, const QString& other)
{
    const LineSource ownLines(own);
    const LineSource otherLines(other);
    const QList<int> places = PlacesIn(ownLines.Texts(), lines);
    const QHash<QString, int> otherPlaces = FirstPlacesOf(otherLines.Texts());
    RichTextDocument result(CodeFont);
    for (qsizetype i = 0; i < lines.size(); ++i) {
        const bool isOwn = places[i] >= 0;
        const int first = isOwn ? places[i] : otherPlaces.value(lines[i], -1);
        while (isOwn && i + 1 < lines.size() && places[i + 1] == places[i] + 1)
            ++i; // as one
        const int place = isOwn ? places[i] : first;
        const bool isLast = i + 1 == lines.size();
        const LineSource& source = isOwn ? ownLines : otherLines;
        if (place >= 0)
            result.Replace(result.Length(), 0, source.Part(first, place, !isLast));
        else
            result.Replace(result.Length(), 0, lines[i], result.DefaultFormat());
        if (!isLast && (place < 0 || !source.HasEnd(place)))
            result.Replace(result.Length(), 0, LineEnd, result.DefaultFormat());
    }
    return result.Length() == 0 ? QString() : WriteRtf(result);
}

bool MoveLines(ComparedSide& from, ComparedSide& to, int first, int last)
{
    bool moved = false;
    for (int line = first; line <= last && line < from.LineCount() && line < to.LineCount(); ++line) {
        const bool canMove = from.LookOf(line) != LineLook::Filler && to.LookOf(line) == LineLook::Filler
                             && from.LineText(line) == to.LineText(line);
        if (!canMove)
            continue;
        to.SetLook(line, LineLook::Own); // it is the same line already, and was not to be seen
        from.SetLook(line, LineLook::Filler);
        moved = true;
    }
    return moved;
}

} // namespace qb
