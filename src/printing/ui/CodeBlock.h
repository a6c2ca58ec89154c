#pragma once

#include "printing/PrintedItem.h"
#include "printing/ui/PrintBlock.h"

#include <QFont>
#include <QStringList>
#include <vector>

namespace qb {

/// Code with the numbers of its lines. A line that is longer than the paper is wide goes on below, behind a mark.
class CodeBlock : public PrintBlock {
public:
    struct Options {
        double Width = 0;  ///< in dots
        double Points = 0; ///< of the font
        bool LineNumbers = true;
        bool Colours = true;
    };
    /// The code must outlive it.
    CodeBlock(const PrintedCode& code, const Options& options);

    /// What stands in each row.
    QStringList RowTexts() const;
    /// Stands before what a long line goes on with.
    static constexpr char16_t WrapMark = 0x21aa;

    // PrintBlock
    int Rows() const override { return int(m_rows.size()); }
    double Top(int row) const override { return row * m_rowHeight; }
    void Paint(QPainter& painter, int first, int last) const override;

private:
    struct Row {
        int Line;
        int Begin; ///< in characters
        int Length;
    };

    void PlaceGutter(bool hasNumbers);
    void BreakLine(int line);
    int FittingLength(const QString& text, int begin, int columns) const;
    int MeasuredLength(const QString& text, int begin, double width) const;
    double HangOf(const Row& row) const;
    void PaintText(QPainter& painter, const Row& row, double top) const;
    void PaintGutter(QPainter& painter, const Row& row, double top) const;

    const PrintedCode& m_code;
    Options m_options;
    QFont m_font;
    double m_character = 0; ///< the width of one
    double m_rowHeight = 0;
    double m_gutter = 0; ///< the width of numbers and marks
    double m_ascent = 0;
    int m_columns = 0; ///< characters that a row holds
    std::vector<Row> m_rows;
};

} // namespace qb
