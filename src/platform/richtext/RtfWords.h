#pragma once

#include <QHash>
#include <QStringView>
#include <climits>

namespace qb {

/// How a control word says what it says.
enum class RtfCategory : quint8 {
    Flag,        ///< on; off with the number 0
    Number,      ///< its number, within bounds
    Fixed,       ///< always the same
    Symbol,      ///< a character of the text
    Act,         ///< something happens here; nothing is set
    Destination, ///< what follows in the group goes elsewhere
};

/// What a control word sets, does or begins.
enum class RtfTarget : quint8 {
    // Of characters
    Bold,
    Italic,
    Underline,
    Strike,
    Protect,
    Color,
    BackColor,
    Font,
    HalfPoints,
    Plain,
    // Of paragraphs
    Alignment,
    LeftIndent,
    FirstIndent,
    RightIndent,
    TabStop,
    ResetParagraph,
    InTable,
    // Of the text
    Paragraph,
    Line,
    Cell,
    Row,
    Character,
    CodeUnit,
    FallbackLength,
    // Of the header's tables
    CodePage,
    DefaultFont,
    FontCharSet,
    FontFamily,
    Red,
    Green,
    Blue,
    // Of lists
    ListKind,
    ListStart,
    ListNumber,
    ListLevel,
    BeginList,
    BeginListLevel,
    LevelKind,
    ListId,
    Nothing,
    // Of pictures
    PictureKind,
    PictureWidth,
    PictureHeight,
    // Destinations
    Skip,
    Body,
    FontTable,
    ColorTable,
    ListTable,
    ListOverrides,
    Picture,
    FieldInstruction,
    FieldResult,
    Numbering,
    Language,
    SourceForm,
    Count
};

/// The kind of a picture that can't be shown, beside those of TextPicture.
inline constexpr int UnknownPicture = -1;

/// What a control word means.
struct RtfMeaning {
    RtfCategory Is;
    RtfTarget Sets;
    int Value = 0;       ///< of what is fixed, a symbol's character, a number's where the word has none
    int Least = INT_MIN; ///< of a number
    int Most = INT_MAX;  ///< of a number

    /// What the word says with @p number behind it, or without one.
    int ValueOf(bool hasNumber, int number) const;
};

/// All control words that mean something here.
const QHash<QStringView, RtfMeaning>& RtfWords();

} // namespace qb
