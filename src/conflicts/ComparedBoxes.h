#pragma once

#include "conflicts/LineComparison.h"

#include <QStringList>

namespace qb {

// Two texts side by side: equal lines next to each other, those of one text only in red on its side and as filler,
// which is not seen, on the other. What a side holds is the same in a window (ComparedView) and without one.

/// What a line is to its side.
enum class LineLook { Same, Own, Filler };

/// The colours that lines are known by: black, red, and white, which is not seen on white.
constexpr quint32 ColorOf(LineLook look)
{
    constexpr quint32 Colors[] = {0, 255, 0xffffff};
    return Colors[size_t(look)];
}

/// One line of one side.
struct SideLine {
    QString Text;
    LineLook Look = LineLook::Same;
    std::vector<LineSpan> Words = {}; ///< that differ from the other text
    bool IsClash = false;             ///< the other text has changed the same line
};
/// The lines of a side; both sides have as many.
std::vector<SideLine> SideLinesOf(const LineComparison& comparison, LineOwner side);
/// A text that is compared with nothing.
std::vector<SideLine> SideLinesOf(const QString& text);

/// A side whose lines can be looked at and carried across.
class ComparedSide {
public:
    virtual ~ComparedSide() = default;

    virtual int LineCount() const = 0;
    virtual QString LineText(int line) const = 0;
    virtual LineLook LookOf(int line) const = 0;
    virtual void SetLook(int line, LineLook look) = 0;
};

/// The lines of a side that are no filler.
QStringList KeptLines(const ComparedSide& side);
/// Lines as RTF. Those that stand in @p own are taken from there with their looks, others from @p other, and what is in
/// neither has none.
QString LinesWithLooks(const QStringList& lines, const QString& own, const QString& other);

/// Carries lines of one side to the same place of the other, where they take the place of filler; where they came from
/// they are filler then. Equal lines stay. False when nothing was carried.
bool MoveLines(ComparedSide& from, ComparedSide& to, int first, int last);

} // namespace qb
