#pragma once

#include <QList>
#include <QString>
#include <QStringList>
#include <functional>
#include <optional>
#include <vector>

namespace qb {

/// A part of a line, in characters.
struct LineSpan {
    qsizetype Begin = 0;
    qsizetype Length = 0;

    friend bool operator==(const LineSpan&, const LineSpan&) = default;
};

/// The lines of a text, whatever ends them; at least one.
QStringList LinesIn(const QString& text);

/// Which of two texts a line stands in.
enum class LineOwner { Both, First, Second };

/// One line of both sides: of one text only it is coloured on that side, and filler on the other.
struct ComparedLine {
    LineOwner Owner = LineOwner::Both;
    QString Text;
    std::vector<LineSpan> Words = {}; ///< that differ from the line of the other text in its place
    bool IsClash = false;             ///< both texts have changed it since they were the same
};

/// Two texts side by side.
struct LineComparison {
    std::vector<ComparedLine> Lines;
    bool IsTooLarge = false; ///< nothing was compared

    /// Equal lines and no others.
    bool IsSame() const;
    /// The first lines of the blocks that differ.
    QList<int> Differences() const;
    /// One of the two texts, as it was given.
    QString TextOf(LineOwner side) const;
};

/// Beyond so many characters of a text it is shown as it is, and not compared.
inline constexpr qsizetype LongestCompared = 4'000'000;

/// Beyond so many characters a rich text is not read for it, either.
inline constexpr qsizetype LongestRead = 12'000'000;

/// Compares two texts line by line; any line end counts as one, case and blanks count.
LineComparison CompareLines(const QString& first, const QString& second);

/// A stretch of a text that was merged.
struct MergedBlock {
    enum class Kind {
        Same,   ///< no side changed it
        First,  ///< changed by the first side only
        Second, ///< by the second side only
        Both,   ///< by both in the same way
        Clash   ///< by both, in different ways
    };
    Kind What = Kind::Same;
    QStringList Base;
    QStringList First;
    QStringList Second;

    /// What the merge takes; of a clash there is nothing that it could.
    const QStringList& Taken() const { return What == Kind::Second ? Second : First; }
};

/// Two texts and the one that both came from.
struct MergedText {
    std::vector<MergedBlock> Blocks;

    bool HasClash() const;
    /// The merged text, lines ended by CR LF; of clashes the lines of @p side.
    QString Text(LineOwner side) const;
};
MergedText MergeTexts(const QString& base, const QString& first, const QString& second);

/// Marks the lines that clash, in a comparison of the two texts that were merged.
void MarkClashes(LineComparison& comparison, const MergedText& merged);

} // namespace qb
