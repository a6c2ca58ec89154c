#pragma once

#include "conflicts/ComparedBoxes.h"

#include <QAbstractTextDocumentLayout>
#include <QPlainTextEdit>

namespace qb {

/// One side of a comparison, which can be typed in. It lays out and paints only what is seen, so that the length of a
/// text costs next to nothing. What is typed belongs to its side, also in a line that was filler.
class ComparedView : public QPlainTextEdit, public ComparedSide {
    Q_OBJECT

public:
    explicit ComparedView(QWidget* parent = nullptr);

    /// Shows other lines. A text with characters that would end a line here can be read, and not be changed.
    void Show(const std::vector<SideLine>& lines, bool locked);
    /// With the filler; lines end with CR LF.
    QString Text() const;

    // ComparedSide
    int LineCount() const override { return blockCount(); }
    QString LineText(int line) const override;
    LineLook LookOf(int line) const override;
    void SetLook(int line, LineLook look) override;
    /// Whether both sides have changed the line, which is marked at its begin.
    bool IsClash(int line) const;

    /// Puts the caret there. The line is not selected: that would show filler.
    void GoToLine(int line);
    int CurrentLine() const { return textCursor().blockNumber(); }
    /// The lines of the selection, from and to. The line behind one that is selected with its end is none of them.
    std::pair<int, int> SelectedLines() const;

protected:
    void paintEvent(QPaintEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    class Marks;

    void TakeChange(int begin, int added);
    void PaintLine(QPainter& painter, const QTextBlock& block, const QRectF& place,
                   const QAbstractTextDocumentLayout::PaintContext& context);
    void ChooseColors();

    QColor m_own;
    QColor m_word;
    QColor m_filler;
    QColor m_clash;
    bool m_loading = false;
};

} // namespace qb
