#pragma once

#include "printing/ui/PrintBlock.h"

#include <QTextLayout>
#include <memory>
#include <vector>

namespace qb {

/// Lines of plain text: paragraphs that are broken at the width, and rows of several cells.
class LinesBlock : public PrintBlock {
public:
    /// @p width in dots.
    explicit LinesBlock(double width) : m_width(width) { m_tops.push_back(0); }

    struct Style {
        QFont Font;
        QColor Ink = Qt::black;
        double Indent = 0; ///< in dots
    };
    /// Adds a text, a paragraph a line; nothing for an empty one.
    void AddText(const QString& text, const Style& style);

    /// A cell of a row: a text with its place and width in dots.
    struct Cell {
        QString Text;
        double Left = 0;
        double Width = 0;
        Qt::Alignment Alignment = Qt::AlignLeft;
    };
    /// Adds cells that begin in the same row and go on below, each in its own width.
    void AddCells(const std::vector<Cell>& cells, const Style& style);
    /// Dots between what was added and what comes next.
    void AddSpace(double space) { m_tops.back() += space; }
    /// A line across, below what was added.
    void AddRule();

    bool IsEmpty() const { return m_rows.empty(); }

    // PrintBlock
    int Rows() const override { return int(m_rows.size()); }
    double Top(int row) const override { return m_tops[size_t(row)]; }
    void Paint(QPainter& painter, int first, int last) const override;

private:
    struct Piece {
        std::shared_ptr<QTextLayout> Layout;
        int Line = 0;
        double Left = 0;
        QColor Ink;
    };
    struct Row {
        std::vector<Piece> Pieces;
        double Rule = 0; ///< its place below the begin of the row; 0: none
    };

    void AddParagraph(const QString& paragraph, const Style& style);
    void AddRow(Row row, double height);
    static std::shared_ptr<QTextLayout> Laid(const QString& text, const QFont& font, double width,
                                             Qt::Alignment alignment);

    double m_width;
    std::vector<Row> m_rows;
    std::vector<double> m_tops; ///< of each row, and behind the last one
};

} // namespace qb
