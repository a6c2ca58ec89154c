#pragma once

#include "text/ui/LiveColours.h"
#include "text/ui/RichTextBoxOf.h"

#include <QPlainTextEdit>

namespace qb {

/// The box for source code: it lays out only the lines that are seen, so that the length of a text
/// costs nothing. Fonts, looks and colours are shown; paragraphs all stand alike. Lines are
/// numbered.
class CodeBox : public RichTextBoxOf<QPlainTextEdit> {
    Q_OBJECT

public:
    explicit CodeBox(const RtfFont& font = CodeFont, QWidget* parent = nullptr);

    void SetLineNumbers(bool shown);
    bool LineNumbers() const { return m_lineNumbers->isVisibleTo(this); }
    void SetWordWrap(bool wraps);
    /// Puts the caret at the begin of a line, counted from 1; the last one when there are fewer.
    void GoToLine(int line);
    int LineOfCaret() const { return textCursor().blockNumber() + 1; }
    int LineCount() const { return blockCount(); }
    void SetZoom(double factor) override;

    void SetColouring(std::shared_ptr<RuleScan> scan, std::function<void(RichText&)> paint) override;
    bool ColoursByRules() const override { return m_colours.IsOn(); }
    void SetPalette(const TokenPalette& palette);

Q_SIGNALS:
    /// The wheel was turned with Ctrl: 1 for larger, -1 for smaller. The box itself stays as it is.
    void ZoomAsked(int steps);
    /// The user has undone or redone something.
    void TextTakenBack();

protected:
    void ZoomWanted(int steps) override { Q_EMIT ZoomAsked(steps); }
    void TakenBack() override { Q_EMIT TextTakenBack(); }
    void Loaded() override;
    void paintEvent(QPaintEvent* event) override;
    QMimeData* createMimeDataFromSelection() const override;
    QString TakenIn(const QString& rtf) const override;
    void resizeEvent(QResizeEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    class LineNumbersArea;

    void KeepDirectionOfLines();
    void ChooseWrapMode();
    bool HoldsLongWord(const QTextBlock& from, int end) const;
    void PlaceLineNumbers();
    void PaintLineNumbers(QPaintEvent& event);
    int LineNumbersWidth() const;
    QFont LineNumbersFont() const;

    void ShowColours();
    void ChooseColors();
    int LinesInSight() const;

    LiveColours m_colours;
    TokenPalette m_tokenPalette = TokenPalette::Default();
    std::function<void(RichText&)> m_paint;
    QWidget* m_lineNumbers;
    double m_zoom = 1;
};

} // namespace qb
