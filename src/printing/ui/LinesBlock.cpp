#include "printing/ui/LinesBlock.h"

#include "printing/ui/PaperStyle.h"

#include <algorithm>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype LongestPiece = 4000; ///< in characters; laying out takes more than their number

/// Where to cut the first piece off a long paragraph: behind a blank, never within a character.
qsizetype PieceLength(QStringView text)
{
    if (text.size() <= LongestPiece)
        return text.size();
    const qsizetype blank = text.first(LongestPiece).lastIndexOf(u' ');
    if (blank > LongestPiece / 2)
        return blank + 1;
    return text[LongestPiece].isLowSurrogate() ? LongestPiece - 1 : LongestPiece;
}

} // namespace

std::shared_ptr<QTextLayout> LinesBlock::Laid(const QString& text, const QFont& font, double width,
                                              Qt::Alignment alignment)
{
    auto layout = std::make_shared<QTextLayout>(text, font, &Paper());
    QTextOption option(alignment);
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    layout->setTextOption(option);
    layout->setCacheEnabled(true);
    layout->beginLayout();
    for (QTextLine line = layout->createLine(); line.isValid(); line = layout->createLine()) {
        line.setLineWidth(width);
        line.setPosition({0, 0});
    }
    layout->endLayout();
    return layout;
}

void LinesBlock::AddText(const QString& text, const Style& style)
{
    if (text.isEmpty())
        return;
    QString lines = text;
    lines.replace(u"\r\n"_s, u"\n"_s).replace(u'\r', u'\n');
    for (const QString& paragraph : lines.split(u'\n')) {
        QStringView rest = paragraph;
        do {
            const qsizetype length = PieceLength(rest);
            AddParagraph(rest.first(length).toString(), style);
            rest = rest.sliced(length);
        } while (!rest.isEmpty());
    }
}

void LinesBlock::AddParagraph(const QString& paragraph, const Style& style)
{
    const auto layout = Laid(paragraph, style.Font, m_width - style.Indent, Qt::AlignLeft);
    for (int line = 0; line < layout->lineCount(); ++line)
        AddRow({.Pieces = {{layout, line, style.Indent, style.Ink}}, .Rule = 0}, layout->lineAt(line).height());
}

void LinesBlock::AddCells(const std::vector<Cell>& cells, const Style& style)
{
    std::vector<std::shared_ptr<QTextLayout>> layouts;
    int rows = 0;
    for (const Cell& cell : cells) {
        layouts.push_back(Laid(cell.Text, style.Font, cell.Width, cell.Alignment));
        rows = std::max(rows, layouts.back()->lineCount());
    }
    for (int line = 0; line < rows; ++line) {
        Row row;
        double height = 0;
        for (size_t i = 0; i < cells.size(); ++i) {
            if (line >= layouts[i]->lineCount())
                continue;
            row.Pieces.push_back({layouts[i], line, cells[i].Left, style.Ink});
            height = std::max(height, layouts[i]->lineAt(line).height());
        }
        AddRow(std::move(row), height);
    }
}

void LinesBlock::AddRow(Row row, double height)
{
    m_rows.push_back(std::move(row));
    m_tops.push_back(m_tops.back() + height);
}

void LinesBlock::AddRule()
{
    constexpr double Gap = 2 * DotsPerPoint;
    if (m_rows.empty())
        return;
    m_rows.back().Rule = m_tops.back() - m_tops[m_rows.size() - 1] + Gap;
    AddSpace(2 * Gap);
}

void LinesBlock::Paint(QPainter& painter, int first, int last) const
{
    for (int row = first; row < last; ++row) {
        const double top = Top(row) - Top(first);
        for (const Piece& piece : m_rows[size_t(row)].Pieces) {
            painter.setPen(piece.Ink);
            piece.Layout->lineAt(piece.Line).draw(&painter, {piece.Left, top});
        }
        if (const double rule = m_rows[size_t(row)].Rule; rule > 0)
            painter.fillRect(QRectF(0, top + rule, m_width, DotsPerPoint / 2), RuleInk);
    }
}

} // namespace qb
