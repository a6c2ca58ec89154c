#pragma once

#include <QHash>
#include <QStringView>

namespace qb {

/// What a control word does. They stand in groups: characters, paragraphs, text, header, tables, and
/// words that begin a destination; a reader tells them by the first of each group.
enum class RtfAction {
    Bold,
    Italic,
    Underline,
    NoUnderline,
    Strike,
    Protect,
    Color,
    BackColor,
    Font,
    Size,
    Plain,
    ResetParagraph,
    AlignLeft,
    AlignRight,
    AlignCenter,
    Justify,
    LeftIndent,
    FirstIndent,
    RightIndent,
    TabStop,
    Paragraph,
    Line,
    Cell,
    Row,
    InTable,
    Character,
    Unicode,
    FallbackLength,
    CodePage,
    DefaultFont,
    FontCharSet,
    FontFamily,
    Red,
    Green,
    Blue,
    BulletLevel,
    NumberLevel,
    NumberKind,
    NumberStart,
    ListNumber,
    ListLevel,
    List,
    ListLevelBegin,
    LevelKind,
    ListId,
    Override,
    Png,
    Jpeg,
    OtherPicture,
    PictureWidth,
    PictureHeight,
    BeginSkip,
    BeginBody,
    BeginFontTable,
    BeginColorTable,
    BeginListTable,
    BeginListOverrides,
    BeginPicture,
    BeginFieldInstruction,
    BeginFieldResult,
    BeginNumbering,
    BeginLanguage,
};

struct RtfMeaning {
    RtfAction Does;
    int Value = 0; ///< what it stands for, where several words do alike
};

/// All control words that mean something here.
const QHash<QStringView, RtfMeaning>& RtfWords();

} // namespace qb
