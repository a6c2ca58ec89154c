#include "printing/ui/CodeBlock.h"

#include "printing/ui/PaperStyle.h"
#include "support/ui/Colors.h"

#include <QFontMetricsF>
#include <QTextLayout>
#include <algorithm>

namespace qb {

namespace {

constexpr int LeastColumns = 8; ///< however narrow the paper is

int IndentOf(const QString& text)
{
    const auto first = std::find_if(text.begin(), text.end(), [](QChar character) { return character != u' '; });
    return int(first - text.begin());
}

/// All of these characters are as wide as each other in a font of fixed pitch, and none joins another.
bool IsPlain(QStringView text)
{
    return std::all_of(text.begin(), text.end(),
                       [](QChar character) { return character >= u' ' && character < QChar(0x7f); });
}

} // namespace

CodeBlock::CodeBlock(const PrintedCode& code, const Options& options)
    : m_code(code), m_options(options), m_font(PaperCodeFont(options.Points))
{
    constexpr double LineSpacing = 1.18;
    const QFontMetricsF metrics(m_font, &Paper());
    m_character = metrics.horizontalAdvance(u'0');
    m_rowHeight = (metrics.ascent() + metrics.descent()) * LineSpacing;
    m_ascent = metrics.ascent();
    PlaceGutter(options.LineNumbers);
    m_columns = std::max(LeastColumns, int((options.Width - m_gutter) / m_character));
    for (int line = 0; line < int(code.size()); ++line)
        BreakLine(line);
}

void CodeBlock::PlaceGutter(bool hasNumbers)
{
    constexpr int LeastDigits = 3;
    constexpr double Gap = 1.5; // characters
    const int digits = std::max(LeastDigits, int(QString::number(m_code.size()).size()));
    m_gutter = m_character * ((hasNumbers ? digits : 1) + Gap);
}

/// What a line goes on with stands below its own indent, unless that leaves too little room.
double CodeBlock::HangOf(const Row& row) const
{
    return row.Begin == 0 ? 0 : m_character * std::min(IndentOf(m_code[size_t(row.Line)].Text), m_columns / 3);
}

void CodeBlock::BreakLine(int line)
{
    const QString& text = m_code[size_t(line)].Text;
    int begin = 0;
    do {
        const Row row{line, begin, 0};
        const int columns = m_columns - int(HangOf(row) / m_character);
        const int length = FittingLength(text, begin, columns);
        m_rows.push_back({line, begin, length});
        begin += length;
    } while (begin < text.size());
}

/// How much of a text goes into a row; 1 at least where there is any.
int CodeBlock::FittingLength(const QString& text, int begin, int columns) const
{
    const int left = int(text.size()) - begin;
    const QStringView next = QStringView(text).sliced(begin, std::min(left, columns));
    if (!IsPlain(next))
        return MeasuredLength(text, begin, columns * m_character);
    if (left <= columns)
        return left;
    const auto parts = [](QChar character) { return QStringView(u" ,;)}").contains(character); };
    for (int length = columns; length > columns * 2 / 3; --length) {
        if (parts(next[length - 1]))
            return length;
    }
    return columns;
}

int CodeBlock::MeasuredLength(const QString& text, int begin, double width) const
{
    constexpr int Most = 4; // times the characters that could be as narrow as others are wide
    const int candidates = std::min(int(text.size()) - begin, m_columns * Most);
    QTextLayout layout(text.mid(begin, candidates), m_font, &Paper());
    QTextOption option(Qt::AlignLeft | Qt::AlignAbsolute);
    option.setTextDirection(Qt::LeftToRight);
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    layout.setTextOption(option);
    layout.beginLayout();
    QTextLine line = layout.createLine();
    line.setLineWidth(width);
    layout.endLayout();
    return std::max(1, line.textLength());
}

QStringList CodeBlock::RowTexts() const
{
    QStringList texts;
    for (const Row& row : m_rows)
        texts << m_code[size_t(row.Line)].Text.mid(row.Begin, row.Length);
    return texts;
}

void CodeBlock::Paint(QPainter& painter, int first, int last) const
{
    painter.fillRect(QRectF(m_gutter - m_character * 0.75, 0, DotsPerPoint / 3, (last - first) * m_rowHeight), RuleInk);
    for (int row = first; row < last; ++row) {
        const double top = (row - first) * m_rowHeight;
        PaintGutter(painter, m_rows[size_t(row)], top);
        PaintText(painter, m_rows[size_t(row)], top);
    }
}

void CodeBlock::PaintGutter(QPainter& painter, const Row& row, double top) const
{
    const bool goesOn = row.Begin > 0;
    if (!goesOn && !m_options.LineNumbers)
        return;
    const QRectF place(0, top, m_gutter - m_character * 1.25, m_rowHeight);
    painter.setPen(PaleInk);
    const QString text = goesOn ? QString(QChar(WrapMark)) : QString::number(row.Line + 1);
    PaintLine(painter, place, Qt::AlignRight | Qt::AlignTop, text, m_font);
}

void CodeBlock::PaintText(QPainter& painter, const Row& row, double top) const
{
    if (row.Length == 0)
        return;
    const PrintedLine& line = m_code[size_t(row.Line)];
    QTextLayout layout(line.Text.mid(row.Begin, row.Length), m_font, &Paper());
    QList<QTextLayout::FormatRange> looks;
    for (const PrintedSpan& span : line.Spans) {
        const int from = std::max(span.Begin, row.Begin) - row.Begin;
        const int to = std::min(span.Begin + span.Length, row.Begin + row.Length) - row.Begin;
        if (from >= to)
            continue;
        QTextLayout::FormatRange look{from, to - from, {}};
        look.format.setForeground(m_options.Colours ? ColorOf(span.Color) : QColor(Qt::black));
        if (span.Bold)
            look.format.setFontWeight(QFont::Bold);
        look.format.setFontItalic(span.Italic);
        looks << look;
    }
    layout.setFormats(looks);
    QTextOption option(Qt::AlignLeft | Qt::AlignAbsolute);
    option.setTextDirection(Qt::LeftToRight);
    option.setWrapMode(QTextOption::NoWrap);
    layout.setTextOption(option);
    layout.beginLayout();
    QTextLine shown = layout.createLine();
    shown.setLineWidth(m_options.Width);
    layout.endLayout();
    painter.setPen(Qt::black);
    // Letters of other fonts are higher: the base lines are what stands in a row.
    layout.draw(&painter, {m_gutter + HangOf(row), top + m_ascent - shown.ascent()});
}

} // namespace qb
