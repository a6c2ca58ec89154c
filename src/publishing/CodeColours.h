#pragma once

#include "platform/richtext/RichTextDocument.h"
#include "store/Library.h"
#include "text/CTextFormat.h"

#include <vector>

namespace qb {

/// A piece of a code text that looks otherwise than the rest.
struct CodePiece {
    qsizetype Begin = 0;
    qsizetype Length = 0;
    TokenKind Kind = TokenKind::Text;
    bool IsHeader = false;          ///< the header of a section
    quint32 Color = AutomaticColor; ///< where it is coloured by words, not by its kind
};

/// Colours code texts as the program shows them, and never changes them.
class CodeColours {
public:
    /// For the texts of a library.
    explicit CodeColours(Library& library) { m_format.ColorizeInit(library); }
    /// By a format that is at hand, with its language.
    explicit CodeColours(CTextFormat& format) : m_given(&format) {}

    /// The pieces of a text that has them, in order. @p language is the one that the item names; empty: the library's.
    std::vector<CodePiece> PiecesOf(const RichTextDocument& document, const QString& language);
    /// The same by the language that the format has.
    std::vector<CodePiece> PiecesOf(const RichTextDocument& document);

private:
    CTextFormat& Format() { return m_given ? *m_given : m_format; }

    CTextFormat m_format;
    CTextFormat* m_given = nullptr;
};

} // namespace qb
