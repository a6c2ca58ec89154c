#include "text/ui/CodeBox.h"

#include "support/ui/Colors.h"
#include "text/RulePaint.h"
#include "text/ui/RichTextMime.h"

#include <QFontDatabase>
#include <QMimeData>
#include <QPaintEvent>
#include <QPainter>
#include <QTextLayout>
#include <algorithm>

namespace qb {

/// The strip on the left.
class CodeBox::LineNumbersArea : public QWidget {
public:
    explicit LineNumbersArea(CodeBox& box) : QWidget(&box), m_box(box) {}

protected:
    void paintEvent(QPaintEvent* event) override { m_box.PaintLineNumbers(*event); }
    void wheelEvent(QWheelEvent* event) override { m_box.wheelEvent(event); }

private:
    CodeBox& m_box;
};

CodeBox::CodeBox(const RtfFont& font, QWidget* parent)
    : RichTextBoxOf(font, parent), m_colours(*document()), m_lineNumbers(new LineNumbersArea(*this))
{
    m_lineNumbers->setObjectName(QStringLiteral("lineNumbers"));
    setLineWrapMode(QPlainTextEdit::NoWrap);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn); // a width that changes would have every line laid out
    SetTakesForeignLooks(false);
    KeepDirectionOfLines();
    connect(document(), &QTextDocument::contentsChange, this, [this](int position, int, int added) {
        if (HoldsLongWord(document()->findBlock(position), position + added))
            setWordWrapMode(QTextOption::WrapAnywhere);
    });
    connect(this, &QPlainTextEdit::blockCountChanged, this, &CodeBox::PlaceLineNumbers);
    connect(this, &QPlainTextEdit::cursorPositionChanged, m_lineNumbers, qOverload<>(&QWidget::update));
    connect(this, &QPlainTextEdit::updateRequest, this, [this](const QRect& area, int scrolled) {
        if (scrolled != 0)
            m_lineNumbers->scroll(0, scrolled);
        else
            m_lineNumbers->update(0, area.y(), m_lineNumbers->width(), area.height());
    });
    connect(document(), &QTextDocument::contentsChange, this, [this](int position, int, int added) {
        if (!m_colours.IsOn() || IsShowingColours() || IsLoading())
            return;
        m_colours.Changed(position, added);
        int begin = 0;
        int end = 0; // the document is being changed anyway: it tells its layout of all of it
        m_colours.Show(firstVisibleBlock().blockNumber(), LinesInSight(), begin, end);
    });
    ChooseColors();
    PlaceLineNumbers();
}

void CodeBox::SetLineNumbers(bool shown)
{
    m_lineNumbers->setVisible(shown);
    PlaceLineNumbers();
}

/// Letters that are written from right to left don't turn a line of code around.
void CodeBox::KeepDirectionOfLines()
{
    QTextOption option = document()->defaultTextOption();
    option.setTextDirection(Qt::LeftToRight);
    document()->setDefaultTextOption(option);
}

/// Looking for a place between words takes the square of a word's length; in very long ones lines are
/// broken anywhere.
void CodeBox::ChooseWrapMode()
{
    const bool isLong = HoldsLongWord(document()->begin(), document()->characterCount());
    setWordWrapMode(isLong ? QTextOption::WrapAnywhere : QTextOption::WrapAtWordBoundaryOrAnywhere);
}

bool CodeBox::HoldsLongWord(const QTextBlock& from, int end) const
{
    constexpr int LongWord = 10'000;
    for (QTextBlock block = from; block.isValid() && block.position() <= end; block = block.next()) {
        if (block.length() <= LongWord)
            continue;
        const QString text = block.text();
        qsizetype begin = 0;
        for (qsizetype i = 0; i <= text.size(); ++i) {
            if (i < text.size() && !text[i].isSpace())
                continue;
            if (i - begin > LongWord)
                return true;
            begin = i + 1;
        }
    }
    return false;
}

void CodeBox::SetWordWrap(bool wraps)
{
    ChooseWrapMode();
    setLineWrapMode(wraps ? QPlainTextEdit::WidgetWidth : QPlainTextEdit::NoWrap);
}

void CodeBox::GoToLine(int line)
{
    QTextCursor cursor(document()->findBlockByNumber(std::clamp(line, 1, LineCount()) - 1));
    setTextCursor(cursor);
    centerCursor();
}

void CodeBox::SetZoom(double factor)
{
    m_zoom = factor;
    RichTextBoxOf::SetZoom(factor);
    PlaceLineNumbers();
}

// Colours

void CodeBox::SetColouring(std::shared_ptr<RuleScan> scan, std::function<void(RichText&)> paint)
{
    m_paint = std::move(paint);
    if (scan == m_colours.Rules())
        return; // what is seen has its colours
    ShowingColours([&] {
        const bool wasOn = m_colours.IsOn();
        m_colours.SetRules(std::move(scan));
        if (wasOn && !m_colours.IsOn())
            document()->markContentsDirty(0, document()->characterCount());
    });
    viewport()->update();
}

void CodeBox::SetPalette(const TokenPalette& palette)
{
    m_tokenPalette = palette;
    ChooseColors();
    viewport()->update();
}

void CodeBox::ChooseColors()
{
    m_colours.SetColors(IsDark(palette().color(QPalette::Base)) ? m_tokenPalette.Dark : m_tokenPalette.Light);
}

void CodeBox::Loaded()
{
    m_colours.Loaded();
    ChooseColors();
    ChooseWrapMode();
    PlaceLineNumbers();
}

/// How many lines can be in sight at the most.
int CodeBox::LinesInSight() const
{
    constexpr int Reserve = 2;
    const int height = std::max(4, QFontMetrics(document()->defaultFont(), viewport()).height()
                                       / 2); // a line may be smaller than most
    return viewport()->height() / height + Reserve;
}

/// Lines that come into sight get their colours before they are painted.
void CodeBox::ShowColours()
{
    if (!m_colours.IsOn())
        return;
    int begin = 0;
    int end = 0;
    ShowingColours([&] {
        if (m_colours.Show(firstVisibleBlock().blockNumber(), LinesInSight(), begin, end))
            document()->markContentsDirty(begin, end - begin);
    });
}

void CodeBox::paintEvent(QPaintEvent* event)
{
    ShowColours();
    RichTextBoxOf::paintEvent(event);
}

QMimeData* CodeBox::createMimeDataFromSelection() const
{
    if (!m_colours.IsOn() || !m_paint)
        return RichTextBoxOf::createMimeDataFromSelection();
    RichText painted = Content();
    m_paint(painted);
    return MimeOfRichText(painted.Document().Part(SelStart(), SelLength())).release();
}

/// A text that comes in leaves its colours behind where rules give them.
QString CodeBox::TakenIn(const QString& rtf) const
{
    if (!m_colours.IsOn() || rtf.isEmpty())
        return rtf;
    RichText plain;
    plain.SetTextRTF(rtf);
    TakePaintOff(plain);
    return plain.TextRTF();
}

// Line numbers

QFont CodeBox::LineNumbersFont() const
{
    QFont numbers = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    numbers.setPointSizeF(numbers.pointSizeF() * m_zoom * 0.9);
    return numbers;
}

int CodeBox::LineNumbersWidth() const
{
    constexpr int LeastDigits = 5; // a width that changes has every line laid out
    constexpr int Gaps = 12;
    const int digits = std::max<int>(LeastDigits, int(QString::number(LineCount()).size()));
    return Gaps + digits * QFontMetrics(LineNumbersFont()).horizontalAdvance(QLatin1Char('9'));
}

void CodeBox::PlaceLineNumbers()
{
    const int width = LineNumbers() ? LineNumbersWidth() : 0;
    setViewportMargins(width, 0, 0, 0);
    const QRect area = contentsRect();
    m_lineNumbers->setGeometry(area.left(), area.top(), width, area.height());
}

void CodeBox::resizeEvent(QResizeEvent* event)
{
    RichTextBoxOf::resizeEvent(event);
    PlaceLineNumbers();
}

void CodeBox::changeEvent(QEvent* event)
{
    RichTextBoxOf::changeEvent(event);
    if (event->type() == QEvent::PaletteChange)
        ChooseColors();
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange)
        PlaceLineNumbers();
}

void CodeBox::PaintLineNumbers(QPaintEvent& event)
{
    constexpr int Gap = 6;
    QPainter painter(m_lineNumbers);
    painter.fillRect(event.rect(), palette().color(QPalette::AlternateBase));
    painter.setFont(LineNumbersFont());
    const int caret = textCursor().blockNumber();
    QTextBlock block = firstVisibleBlock();
    for (QRectF place = blockBoundingGeometry(block).translated(contentOffset());
         block.isValid() && place.top() <= event.rect().bottom();) {
        painter.setPen(
            palette().color(block.blockNumber() == caret ? QPalette::Active : QPalette::Disabled, QPalette::Text));
        const QTextLayout* layout = block.layout();
        const double height = layout->lineCount() > 0 ? layout->lineAt(0).height() : place.height();
        const QRectF line(0, place.top(), m_lineNumbers->width() - Gap, height);
        painter.drawText(line, Qt::AlignRight | Qt::AlignVCenter, QString::number(block.blockNumber() + 1));
        block = block.next();
        place = QRectF(place.left(), place.bottom(), place.width(), blockBoundingRect(block).height());
    }
}

} // namespace qb
