#include "conflicts/LineComparison.h"

#include "conflicts/SequenceDiff.h"

#include <QHash>
#include <algorithm>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

/// Beyond so many characters a line's words are not compared.
constexpr qsizetype LongestLine = 2000;

/// Gives each distinct text a number.
class Numbers {
public:
    template <class Texts>
    QList<int> Of(const Texts& texts)
    {
        QList<int> numbers;
        numbers.reserve(qsizetype(texts.size()));
        for (const auto& text : texts)
            numbers << Number(text.toString());
        return numbers;
    }
    QList<int> Of(const QStringList& texts)
    {
        QList<int> numbers;
        numbers.reserve(texts.size());
        for (const QString& text : texts)
            numbers << Number(text);
        return numbers;
    }

private:
    int Number(const QString& text)
    {
        const auto known = m_numbers.constFind(text);
        if (known != m_numbers.constEnd())
            return *known;
        const int number = int(m_numbers.size());
        m_numbers.insert(text, number);
        return number;
    }

    QHash<QString, int> m_numbers;
};

enum class WordKind { Word, Blank, Sign };

WordKind KindOf(QChar character)
{
    if (character.isLetterOrNumber() || character == u'_' || character.isSurrogate())
        return WordKind::Word;
    return character.isSpace() ? WordKind::Blank : WordKind::Sign;
}

/// Words, runs of blanks, and all other characters one by one.
std::vector<QStringView> WordsOf(const QString& line)
{
    std::vector<QStringView> words;
    for (qsizetype begin = 0; begin < line.size();) {
        const WordKind kind = KindOf(line[begin]);
        qsizetype end = begin + 1;
        while (kind != WordKind::Sign && end < line.size() && KindOf(line[end]) == kind)
            ++end;
        words.push_back(QStringView(line).mid(begin, end - begin));
        begin = end;
    }
    return words;
}

/// The characters of some words that stand behind each other.
void AddSpan(std::vector<LineSpan>& spans, const QString& line, const std::vector<QStringView>& words, int begin,
             int count)
{
    if (count == 0)
        return;
    const qsizetype first = words[size_t(begin)].data() - line.constData();
    const QStringView last = words[size_t(begin + count - 1)];
    spans.push_back({first, last.data() - line.constData() + last.size() - first});
}

/// Notes the words in which a changed line and the one in its place differ. Lines that have nothing in common are no
/// change of each other.
void CompareWords(ComparedLine& first, ComparedLine& second)
{
    if (first.Text.size() > LongestLine || second.Text.size() > LongestLine)
        return;
    const std::vector<QStringView> left = WordsOf(first.Text);
    const std::vector<QStringView> right = WordsOf(second.Text);
    Numbers numbers;
    const QList<int> leftNumbers = numbers.Of(left);
    const std::vector<SequenceHunk> hunks = DiffSequences(leftNumbers, numbers.Of(right));
    size_t changed = 0;
    for (const SequenceHunk& hunk : hunks)
        changed += size_t(hunk.FirstLength);
    if (changed == left.size())
        return;
    for (const SequenceHunk& hunk : hunks) {
        AddSpan(first.Words, first.Text, left, hunk.First, hunk.FirstLength);
        AddSpan(second.Words, second.Text, right, hunk.Second, hunk.SecondLength);
    }
}

void AddHunk(LineComparison& comparison, const QStringList& first, const QStringList& second, const SequenceHunk& hunk)
{
    const size_t begin = comparison.Lines.size();
    for (int i = 0; i < hunk.FirstLength; ++i)
        comparison.Lines.push_back({LineOwner::First, first[hunk.First + i]});
    for (int i = 0; i < hunk.SecondLength; ++i)
        comparison.Lines.push_back({LineOwner::Second, second[hunk.Second + i]});
    const auto pairs = size_t(std::min(hunk.FirstLength, hunk.SecondLength));
    for (size_t i = 0; i < pairs; ++i)
        CompareWords(comparison.Lines[begin + i], comparison.Lines[begin + size_t(hunk.FirstLength) + i]);
}

/// A stretch of the base that one side or both have changed.
struct Stretch {
    int Begin;
    int End;
};

/// The hunks of both sides, those that touch each other as one.
std::vector<Stretch> StretchesOf(const std::vector<SequenceHunk>& first, const std::vector<SequenceHunk>& second)
{
    std::vector<Stretch> all;
    for (const std::vector<SequenceHunk>* hunks : {&first, &second}) {
        for (const SequenceHunk& hunk : *hunks)
            all.push_back({hunk.First, hunk.First + hunk.FirstLength});
    }
    std::sort(all.begin(), all.end(), [](const Stretch& left, const Stretch& right) {
        return std::pair(left.Begin, left.End) < std::pair(right.Begin, right.End);
    });
    std::vector<Stretch> joined;
    for (const Stretch& stretch : all) {
        if (joined.empty() || stretch.Begin > joined.back().End)
            joined.push_back(stretch);
        else
            joined.back().End = std::max(joined.back().End, stretch.End);
    }
    return joined;
}

/// How a place of the base that lies in no hunk is called in a side: by what the hunks before it added or took.
class SidePlaces {
public:
    explicit SidePlaces(const std::vector<SequenceHunk>& hunks) : m_hunks(hunks) {}

    /// The lines that a side has for a stretch of the base. Stretches come in their order.
    QStringList Lines(const Stretch& stretch, const QStringList& lines)
    {
        const int begin = stretch.Begin + m_moved;
        for (; m_next < m_hunks.size() && m_hunks[m_next].First <= stretch.End
               && m_hunks[m_next].First + m_hunks[m_next].FirstLength <= stretch.End;
             ++m_next)
            m_moved += m_hunks[m_next].SecondLength - m_hunks[m_next].FirstLength;
        return lines.mid(begin, stretch.End + m_moved - begin);
    }

private:
    const std::vector<SequenceHunk>& m_hunks;
    size_t m_next = 0;
    int m_moved = 0;
};

MergedBlock::Kind KindOf(const MergedBlock& block)
{
    if (block.First == block.Second)
        return MergedBlock::Kind::Both;
    if (block.Second == block.Base)
        return MergedBlock::Kind::First;
    return block.First == block.Base ? MergedBlock::Kind::Second : MergedBlock::Kind::Clash;
}

} // namespace

QStringList LinesIn(const QString& text)
{
    QStringList lines;
    qsizetype begin = 0;
    qsizetype feed = text.indexOf(u'\n');
    qsizetype carriage = text.indexOf(u'\r');
    while (feed >= 0 || carriage >= 0) {
        const bool isFeed = carriage < 0 || (feed >= 0 && feed < carriage);
        const qsizetype end = isFeed ? feed : carriage;
        lines << text.mid(begin, end - begin);
        begin = end + (!isFeed && feed == carriage + 1 ? 2 : 1);
        if (feed >= 0 && feed < begin)
            feed = text.indexOf(u'\n', begin);
        if (carriage >= 0 && carriage < begin)
            carriage = text.indexOf(u'\r', begin);
    }
    return lines << text.mid(begin);
}

bool LineComparison::IsSame() const
{
    return !IsTooLarge && std::all_of(Lines.begin(), Lines.end(), [](const ComparedLine& line) {
        return line.Owner == LineOwner::Both;
    });
}

QList<int> LineComparison::Differences() const
{
    QList<int> begins;
    for (int i = 0; i < int(Lines.size()); ++i) {
        const bool differs = Lines[size_t(i)].Owner != LineOwner::Both;
        if (differs && (i == 0 || Lines[size_t(i) - 1].Owner == LineOwner::Both))
            begins << i;
    }
    return begins;
}

QString LineComparison::TextOf(LineOwner side) const
{
    QStringList lines;
    for (const ComparedLine& line : Lines) {
        if (line.Owner == LineOwner::Both || line.Owner == side)
            lines << line.Text;
    }
    return lines.join(u"\r\n"_s);
}

LineComparison CompareLines(const QString& first, const QString& second)
{
    LineComparison comparison;
    if (first.size() > LongestCompared || second.size() > LongestCompared) {
        comparison.IsTooLarge = true;
        return comparison;
    }
    const QStringList left = LinesIn(first);
    const QStringList right = LinesIn(second);
    Numbers numbers;
    const QList<int> leftNumbers = numbers.Of(left);
    int done = 0;
    const auto addSame = [&](int end) {
        for (; done < end; ++done)
            comparison.Lines.push_back({LineOwner::Both, left[done]});
    };
    for (const SequenceHunk& hunk : DiffSequences(leftNumbers, numbers.Of(right))) {
        addSame(hunk.First);
        AddHunk(comparison, left, right, hunk);
        done = hunk.First + hunk.FirstLength;
    }
    addSame(int(left.size()));
    return comparison;
}

bool MergedText::HasClash() const
{
    return std::any_of(Blocks.begin(), Blocks.end(),
                       [](const MergedBlock& block) { return block.What == MergedBlock::Kind::Clash; });
}

QString MergedText::Text(LineOwner side) const
{
    QStringList lines;
    for (const MergedBlock& block : Blocks) {
        const bool isClash = block.What == MergedBlock::Kind::Clash;
        lines << (isClash && side == LineOwner::Second ? block.Second : block.Taken());
    }
    return lines.join(u"\r\n"_s);
}

MergedText MergeTexts(const QString& base, const QString& first, const QString& second)
{
    const QStringList baseLines = LinesIn(base);
    const QStringList firstLines = LinesIn(first);
    const QStringList secondLines = LinesIn(second);
    Numbers numbers;
    const QList<int> baseNumbers = numbers.Of(baseLines);
    const std::vector<SequenceHunk> toFirst = DiffSequences(baseNumbers, numbers.Of(firstLines));
    const std::vector<SequenceHunk> toSecond = DiffSequences(baseNumbers, numbers.Of(secondLines));
    SidePlaces ofFirst(toFirst);
    SidePlaces ofSecond(toSecond);
    MergedText merged;
    int done = 0;
    const auto addSame = [&](int end) {
        const QStringList same = baseLines.mid(done, end - done);
        if (!same.isEmpty())
            merged.Blocks.push_back({MergedBlock::Kind::Same, same, same, same});
    };
    for (const Stretch& stretch : StretchesOf(toFirst, toSecond)) {
        addSame(stretch.Begin);
        MergedBlock block{.Base = baseLines.mid(stretch.Begin, stretch.End - stretch.Begin),
                          .First = ofFirst.Lines(stretch, firstLines),
                          .Second = ofSecond.Lines(stretch, secondLines)};
        block.What = KindOf(block);
        merged.Blocks.push_back(std::move(block));
        done = stretch.End;
    }
    addSame(int(baseLines.size()));
    return merged;
}

void MarkClashes(LineComparison& comparison, const MergedText& merged)
{
    std::vector<bool> first;
    std::vector<bool> second;
    for (const MergedBlock& block : merged.Blocks) {
        const bool isClash = block.What == MergedBlock::Kind::Clash;
        first.insert(first.end(), size_t(block.First.size()), isClash);
        second.insert(second.end(), size_t(block.Second.size()), isClash);
    }
    size_t ofFirst = 0;
    size_t ofSecond = 0;
    for (ComparedLine& line : comparison.Lines) {
        line.IsClash = (line.Owner == LineOwner::First && first[ofFirst])
                       || (line.Owner == LineOwner::Second && second[ofSecond]);
        ofFirst += line.Owner == LineOwner::Second ? 0 : 1;
        ofSecond += line.Owner == LineOwner::First ? 0 : 1;
    }
}

} // namespace qb
