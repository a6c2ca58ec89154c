// What the words of an RTF string set, and how.

#include "platform/richtext/RtfReader.h"

#include <algorithm>
#include <array>
#include <functional>
#include <type_traits>

namespace qb {

using Target = RtfTarget;

/// How each target is set: one row for each.
struct RtfReader::Setters {
    struct Row {
        Target What;
        Setter How;
    };
    using R = RtfReader;

    /// A method of the reader, with the value where it takes one.
    template <auto Method>
    static void Call(R& r, int value)
    {
        if constexpr (std::is_invocable_v<decltype(Method), R&, int>)
            (r.*Method)(value);
        else
            (r.*Method)();
    }

    /// A destination begins.
    template <Target Destination>
    static void GoTo(R& r, int)
    {
        r.m_state.Where = Destination;
    }

    template <int ParagraphFormat::*Indent>
    static void SetIndent(R& r, int twips)
    {
        r.m_state.Paragraph.*Indent = twips;
    }

    static constexpr Row Rows[] = {
        // Of characters
        {Target::Bold, [](R& r, int on) { r.Characters().Bold = on != 0; }},
        {Target::Italic, [](R& r, int on) { r.Characters().Italic = on != 0; }},
        {Target::Underline, [](R& r, int on) { r.Characters().Underline = on != 0; }},
        {Target::Strike, [](R& r, int on) { r.Characters().Strike = on != 0; }},
        {Target::Protect, [](R& r, int on) { r.Characters().Protected = on != 0; }},
        {Target::Color, [](R& r, int number) { r.Characters().Color = r.m_colors.Find(number); }},
        {Target::BackColor, [](R& r, int number) { r.Characters().BackColor = r.m_colors.Find(number); }},
        {Target::Font, &Call<&R::SetFont>},
        {Target::HalfPoints, [](R& r, int size) { r.Characters().HalfPoints = quint16(size); }},
        {Target::Plain, &Call<&R::Plain>},
        // Of paragraphs
        {Target::Alignment, [](R& r, int side) { r.m_state.Paragraph.Alignment = TextAlignment(side); }},
        {Target::LeftIndent, &SetIndent<&ParagraphFormat::LeftIndent>},
        {Target::FirstIndent, &SetIndent<&ParagraphFormat::FirstIndent>},
        {Target::RightIndent, &SetIndent<&ParagraphFormat::RightIndent>},
        {Target::TabStop, &Call<&R::AddTabStop>},
        {Target::ResetParagraph, &Call<&R::ResetParagraph>},
        {Target::InTable, [](R& r, int) { r.m_state.InTable = true; }},
        // Of the text
        {Target::Paragraph, &Call<&R::EndParagraphOrCell>},
        {Target::Line, &Call<&R::EndParagraph>},
        {Target::Cell, [](R& r, int) { r.m_pendingCells += r.m_state.Where == Target::Body; }},
        {Target::Row, &Call<&R::EndRow>},
        {Target::Character, [](R& r, int character) { r.TakeCharacter(char16_t(character)); }},
        {Target::CodeUnit, [](R& r, int unit) { r.TakeCodeUnit(char16_t(unit)); }},
        {Target::FallbackLength, [](R& r, int length) { r.m_state.FallbackLength = length; }},
        // Of the header's tables
        {Target::CodePage, [](R& r, int number) { r.m_codePage = number; }},
        {Target::DefaultFont, [](R& r, int number) { r.m_defaultFont = number; }},
        {Target::FontCharSet, [](R& r, int number) { r.m_fonts.SetCharSet(number); }},
        {Target::FontFamily, [](R& r, int) { r.m_fonts.SetFamily(r.m_word.sliced(1).toString()); }},
        {Target::Red, [](R& r, int part) { r.m_colors.SetPart(part, 0); }},
        {Target::Green, [](R& r, int part) { r.m_colors.SetPart(part, 8); }},
        {Target::Blue, [](R& r, int part) { r.m_colors.SetPart(part, 16); }},
        // Of lists
        {Target::ListKind, [](R& r, int kind) { r.m_state.Paragraph.List = ListKind(kind); }},
        {Target::ListStart, [](R& r, int number) { r.m_state.Paragraph.ListStart = quint16(number); }},
        {Target::ListNumber, &Call<&R::TakeListNumber>},
        {Target::ListLevel, &Call<&R::SetListLevel>},
        {Target::BeginList, [](R& r, int) { r.m_lists.BeginList(); }},
        {Target::BeginListLevel, [](R& r, int) { r.m_lists.BeginLevel(); }},
        {Target::LevelKind, [](R& r, int code) { r.m_lists.SetLevelKind(code); }},
        {Target::ListId, &Call<&R::SetListId>},
        {Target::Nothing, [](R&, int) {}},
        // Of pictures
        {Target::PictureKind, [](R& r, int kind) { r.m_picture.Kind = kind; }},
        {Target::PictureWidth, [](R& r, int twips) { r.m_picture.Width = twips; }},
        {Target::PictureHeight, [](R& r, int twips) { r.m_picture.Height = twips; }},
        // Destinations
        {Target::Skip, &GoTo<Target::Skip>},
        {Target::Body, &GoTo<Target::Body>},
        {Target::FontTable, &GoTo<Target::FontTable>},
        {Target::ColorTable, &GoTo<Target::ColorTable>},
        {Target::ListTable, &GoTo<Target::ListTable>},
        {Target::ListOverrides, &GoTo<Target::ListOverrides>},
        {Target::Numbering, &GoTo<Target::Numbering>},
        {Target::Picture, &Call<&R::BeginPicture>},
        {Target::FieldInstruction, [](R& r, int) { r.BeginText(Target::FieldInstruction, r.m_instruction); }},
        {Target::FieldResult, [](R& r, int) { r.Characters().Link = r.m_outer.empty() ? 0 : r.m_outer.back().Link; }},
        {Target::Language, [](R& r, int) { r.BeginText(Target::Language, r.m_language); }},
        {Target::SourceForm, [](R& r, int) { r.BeginText(Target::SourceForm, r.m_sourceForm); }},
    };

    /// Whether each target has a row; asked of the rows, as sanitizers take the functions' addresses for no constants.
    static constexpr bool AreComplete()
    {
        std::array<bool, size_t(Target::Count)> has{};
        for (const Row& row : Rows)
            has[size_t(row.What)] = true;
        return std::ranges::all_of(has, std::identity());
    }

    /// By target.
    static constexpr std::array<Setter, size_t(Target::Count)> ByTarget()
    {
        std::array<Setter, size_t(Target::Count)> setters{};
        for (const Row& row : Rows)
            setters[size_t(row.What)] = row.How;
        return setters;
    }
};

void RtfReader::Set(RtfTarget target, int value)
{
    static constexpr auto setters = Setters::ByTarget();
    static_assert(Setters::AreComplete(), "each target has a row");
    setters[size_t(target)](*this, value);
}

CharFormat& RtfReader::Characters()
{
    m_formatKnown = false;
    return m_state.Format;
}

void RtfReader::Plain()
{
    Characters() = m_document.DefaultFormat();
    m_state.Format.HalfPoints = PlainHalfPoints;
    SetFont(m_defaultFont);
}

void RtfReader::AddTabStop(int twips)
{
    constexpr qsizetype Most = 64;
    if (m_state.Tabs.size() < Most)
        m_state.Tabs << twips;
}

void RtfReader::ResetParagraph()
{
    m_state.Paragraph = {};
    m_state.List = 0;
    m_state.Tabs.clear();
    m_state.InTable = false;
}

void RtfReader::EndParagraphOrCell()
{
    if (m_state.InTable)
        return Append(u" "); // a cell is one line of its row
    EndParagraph();
    m_endedByParagraph = m_state.Where == Target::Body;
}

void RtfReader::EndRow()
{
    m_pendingCells -= m_pendingCells > 0; // the last cell has no other behind it
    EndParagraph();
}

void RtfReader::TakeCharacter(char16_t character)
{
    if (m_skipFallback > 0) { // it stands for the character that came before
        --m_skipFallback;
        return;
    }
    const QChar text{character};
    Route(QStringView(&text, 1));
}

void RtfReader::TakeCodeUnit(char16_t unit)
{
    const QChar text{unit};
    Route(QStringView(&text, 1));
    m_skipFallback = m_state.FallbackLength;
}

// Destinations

void RtfReader::BeginPicture()
{
    m_state.Where = Target::Picture;
    m_picture = {.Digits = {}, .Binary = m_picture.Binary};
}

/// What follows is no part of the document and goes to @p text.
void RtfReader::BeginText(RtfTarget destination, QString& text)
{
    m_state.Where = destination;
    text.clear();
}

// Tables

void RtfReader::SetFont(int number)
{
    m_formatKnown = false;
    if (m_state.Where == Target::FontTable)
        return m_fonts.Begin(number, m_document);
    if (const RtfFonts::Entry* font = m_fonts.Find(number)) {
        m_state.Format.Font = font->Number;
        m_state.CodePage = font->CodePage;
    }
}

/// What has no font of its own so far is in the default one.
void RtfReader::FinishFonts()
{
    m_fonts.Finish(m_document);
    SetFont(m_defaultFont);
    for (State& outer : m_outer) {
        outer.Format.Font = m_state.Format.Font;
        outer.CodePage = m_state.CodePage;
    }
}

/// In the table of overrides: which list a number means. In the text: the list of the paragraph.
void RtfReader::TakeListNumber(int number)
{
    if (m_state.Where == Target::ListOverrides)
        return m_lists.NameOverride(number);
    m_state.List = number;
    m_state.Paragraph.List = m_lists.Find(number, m_state.Paragraph.ListLevel);
}

void RtfReader::SetListLevel(int level)
{
    m_state.Paragraph.ListLevel = quint8(level);
    if (m_state.List != 0)
        m_state.Paragraph.List = m_lists.Find(m_state.List, m_state.Paragraph.ListLevel);
}

void RtfReader::SetListId(int id)
{
    m_state.Where == Target::ListTable ? m_lists.SetListId(id) : m_lists.SetOverriddenId(id);
}

} // namespace qb
