#include "printing/ui/ItemLayout.h"

#include "printing/ui/CodeBlock.h"
#include "printing/ui/LinesBlock.h"
#include "printing/ui/PaperStyle.h"
#include "printing/ui/RichBlock.h"
#include "support/DateFormatCustom.h"

namespace qb {

using namespace Qt::StringLiterals;

namespace {

constexpr double BeforeItem = 26 * DotsPerPoint; ///< between two items on a page
constexpr double BeforePart = 12 * DotsPerPoint;
constexpr double BeforeText = 4 * DotsPerPoint;

LinesBlock::Style StyleOf(PaperFont font, const QColor& ink = Qt::black, double indent = 0)
{
    return {.Font = PaperFontOf(font), .Ink = ink, .Indent = indent};
}

QString DayText(Date date)
{
    return date.IsNone() ? QString() : DateFormatCustom(date, u"d mmm yyyy hh:nn"_s);
}

QString ArrowOf(PrintedLink::Leads leads)
{
    static const QString arrows[] = {u"\u2192"_s, u"\u2190"_s, u"\u2194"_s};
    return arrows[size_t(leads)];
}

} // namespace

ItemLayout::ItemLayout(PrintedItem item, const PrintSetup& setup, QSizeF column)
    : m_item(std::move(item)), m_setup(setup), m_column(column)
{
    AddHead();
    AddCode(u"Code"_s, m_item.Code);
    AddCode(u"Usage"_s, m_item.Usage);
    AddNotes();
    AddFiles();
    AddLinks();
    AddPage();
}

template <class Block, class... Arguments>
Block& ItemLayout::Add(Arguments&&... arguments)
{
    m_blocks.push_back(std::make_unique<Block>(std::forward<Arguments>(arguments)...));
    return static_cast<Block&>(*m_blocks.back());
}

void ItemLayout::AddHead()
{
    auto& head = Add<LinesBlock>(m_column.width());
    head.SpaceBefore = BeforeItem;
    head.AddText(m_item.Path.join(u" \u203a "_s), StyleOf(PaperFont::Small, PaleInk));
    head.AddText(m_item.Title.isEmpty() ? u"(untitled)"_s : m_item.Title, StyleOf(PaperFont::Title));
    head.AddText(m_item.Facts.join(u"  \u00b7  "_s), StyleOf(PaperFont::Small, PaleInk));
    head.AddRule();
    head.KeepsWithNext = true;
    if (!m_item.Description.isEmpty() || !m_item.Info.isEmpty()) {
        auto& texts = Add<LinesBlock>(m_column.width());
        texts.SpaceBefore = BeforeText;
        texts.AddText(m_item.Description, StyleOf(PaperFont::Bold));
        if (!texts.IsEmpty() && !m_item.Info.isEmpty())
            texts.AddSpace(BeforeText);
        texts.AddText(m_item.Info, StyleOf(PaperFont::Text));
    }
}

void ItemLayout::AddHeading(const QString& caption)
{
    auto& heading = Add<LinesBlock>(m_column.width());
    heading.AddText(caption, StyleOf(PaperFont::Heading));
    heading.AddSpace(BeforeText);
    heading.SpaceBefore = BeforePart;
    heading.KeepsWithNext = true;
}

void ItemLayout::AddCode(const QString& caption, const PrintedCode& code)
{
    if (code.empty())
        return;
    AddHeading(caption);
    Add<CodeBlock>(code, CodeBlock::Options{.Width = m_column.width(),
                                            .Points = m_setup.CodePoints,
                                            .LineNumbers = m_setup.LineNumbers,
                                            .Colours = m_setup.Colours});
}

void ItemLayout::AddNotes()
{
    if (m_item.Notes.Length() == 0 && m_item.PlainNotes.isEmpty())
        return;
    AddHeading(u"Notes"_s);
    if (m_item.PlainNotes.isEmpty())
        Add<RichBlock>(m_item.Notes, m_column);
    else
        Add<LinesBlock>(m_column.width()).AddText(m_item.PlainNotes, StyleOf(PaperFont::Text));
}

void ItemLayout::AddFiles()
{
    if (m_item.Files.empty())
        return;
    AddHeading(u"Files"_s);
    const double width = m_column.width();
    const double gap = 8 * DotsPerPoint;
    const double name = width * 0.42;
    const double size = width * 0.14;
    const double date = (width - name - size) / 2;
    const auto cells = [&](const QString& title, const QString& bytes, const QString& changed, const QString& added) {
        return std::vector<LinesBlock::Cell>{
            {title, 0, name - gap, Qt::AlignLeft},
            {bytes, name, size - gap, Qt::AlignRight},
            {changed, name + size, date - gap, Qt::AlignLeft},
            {added, name + size + date, date, Qt::AlignLeft},
        };
    };
    auto& table = Add<LinesBlock>(width);
    table.AddCells(cells(u"Name"_s, u"Bytes"_s, u"Changed"_s, u"Added"_s), StyleOf(PaperFont::Small, PaleInk));
    table.AddRule();
    for (const PrintedFile& file : m_item.Files) {
        table.AddCells(cells(file.Title, file.Size, DayText(file.OrigDateTime), DayText(file.DateAdded)),
                       StyleOf(PaperFont::Text));
        table.AddText(file.Description, StyleOf(PaperFont::Small, PaleInk, gap));
        table.AddSpace(BeforeText / 2);
    }
}

void ItemLayout::AddLinks()
{
    if (m_item.Links.empty())
        return;
    AddHeading(u"Links"_s);
    constexpr double Arrow = 16 * DotsPerPoint;
    auto& list = Add<LinesBlock>(m_column.width());
    for (const PrintedLink& link : m_item.Links) {
        const QString title = link.Title.isEmpty() ? u"(untitled)"_s : link.Title;
        list.AddCells({{ArrowOf(link.Direction), 0, Arrow}, {title, Arrow, m_column.width() - Arrow}},
                      StyleOf(PaperFont::Text));
        list.AddText(link.Note, StyleOf(PaperFont::Small, PaleInk, Arrow));
    }
}

void ItemLayout::AddPage()
{
    if (m_item.PageText.isEmpty())
        return;
    AddHeading(u"Web page"_s);
    Add<LinesBlock>(m_column.width()).AddText(m_item.PageText, StyleOf(PaperFont::Text));
}

} // namespace qb
