#pragma once

#include "store/Library.h"
#include "text/CTextFormat.h"

#include <QStringList>
#include <vector>

namespace qb {

/// Colours lines out of the middle of a text as the boxes for code do.
class ContextColours {
public:
    struct Piece {
        qsizetype Begin = 0; ///< in its line
        qsizetype Length = 0;
        quint32 Light = 0;           ///< red in the low byte, for light backgrounds
        std::optional<quint32> Dark; ///< none: the other one, made lighter
    };
    using Line = std::vector<Piece>;

    /// Takes the language of a library.
    void SetLibrary(Library& library);
    void SetPalette(const TokenPalette& palette) { m_format.SetPalette(palette); }

    /// The pieces of each line that have a colour, by the language of that name; empty: the library's.
    std::vector<Line> ColoursOf(const QStringList& lines, const QString& language);

private:
    std::vector<Line> ByRules(const QStringList& lines, RuleScan& scan) const;
    std::vector<Line> ByWords(const QStringList& lines);

    CTextFormat m_format;
};

} // namespace qb
