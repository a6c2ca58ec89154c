#pragma once

#include "platform/richtext/RichText.h"
#include "printing/ui/PrintBlock.h"
#include "text/ui/RichTextPage.h"

#include <QTextDocument>
#include <memory>
#include <vector>

namespace qb {

/// A text with fonts, lists and pictures. Nothing is fetched for it: what it shows is in it.
class RichBlock : public PrintBlock {
public:
    /// In a column of this width and height at most, in dots; larger pictures become smaller.
    RichBlock(const RichTextDocument& text, QSizeF column);
    ~RichBlock() override;

    // PrintBlock
    int Rows() const override { return int(m_tops.size()) - 1; }
    double Top(int row) const override { return m_tops[size_t(row)]; }
    void Paint(QPainter& painter, int first, int last) const override;

private:
    void FitPictures(QSizeF column);
    void PartLetters();
    void DarkenInk();
    void FindRows();
    void PaintListMarks(QPainter& painter, double from, double to) const;

    struct Mark {
        QPointF At; ///< the end of its base line
        QString Text;
        QFont Font;
        QColor Ink;
    };
    void FindListMarks();

    RichText m_text;
    std::unique_ptr<QTextDocument> m_document;
    RichTextPage m_page;
    std::vector<double> m_tops;
    std::vector<Mark> m_marks;
};

} // namespace qb
