#include "conflicts/ui/ComparedView.h"

#include "platform/richtext/RtfPlainText.h"
#include "support/ui/Colors.h"

#include <QAbstractTextDocumentLayout>
#include <QEvent>
#include <QPainter>
#include <QScrollBar>
#include <QTextBlock>
#include <QTextLayout>
#include <algorithm>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

/// A block's number for what it is; a block that was typed has none.
int StateOf(LineLook look)
{
    return int(look);
}

/// Characters that end a line in a text document, and nowhere else.
constexpr QChar Ends[] = {QChar(QChar::ParagraphSeparator), QChar(0xfdd0), QChar(0xfdd1)};

} // namespace

/// What is marked in a line, until it is changed.
class ComparedView::Marks : public QTextBlockUserData {
public:
    explicit Marks(const SideLine& line) : Words(line.Words), IsClash(line.IsClash) {}
    std::vector<LineSpan> Words;
    bool IsClash;
};

ComparedView::ComparedView(QWidget* parent) : QPlainTextEdit(parent)
{
    setLineWrapMode(NoWrap);
    QFont font(CodeFont.Name);
    font.setPointSizeF(CodeFont.Points);
    font.setStyleHint(QFont::Monospace);
    setFont(font);
    ChooseColors();
    connect(document(), &QTextDocument::contentsChange, this,
            [this](int begin, int, int added) { TakeChange(begin, added); });
}

void ComparedView::Show(const std::vector<SideLine>& lines, bool locked)
{
    m_loading = true;
    QStringList texts;
    texts.reserve(qsizetype(lines.size()));
    for (const SideLine& line : lines)
        texts << line.Text;
    QString text = texts.join(u'\n');
    bool isWhole = true;
    for (const QChar end : Ends) {
        isWhole = isWhole && !text.contains(end);
        if (!isWhole)
            text.replace(end, QChar::ReplacementCharacter);
    }
    setPlainText(text);
    QTextBlock block = document()->begin();
    for (const SideLine& line : lines) {
        block.setUserState(StateOf(line.Look));
        if (!line.Words.empty() || line.IsClash)
            block.setUserData(new Marks(line)); // the block's
        block = block.next();
    }
    setReadOnly(locked || !isWhole);
    m_loading = false;
}

QString ComparedView::Text() const
{
    QStringList lines;
    for (QTextBlock block = document()->begin(); block.isValid(); block = block.next())
        lines << block.text();
    return lines.join(u"\r\n"_s);
}

QString ComparedView::LineText(int line) const
{
    return document()->findBlockByNumber(line).text();
}

LineLook ComparedView::LookOf(int line) const
{
    const int state = document()->findBlockByNumber(line).userState();
    return state < 0 ? LineLook::Own : LineLook(state);
}

void ComparedView::SetLook(int line, LineLook look)
{
    QTextBlock block = document()->findBlockByNumber(line);
    block.setUserState(StateOf(look));
    block.setUserData(nullptr);
    viewport()->update();
}

bool ComparedView::IsClash(int line) const
{
    const auto* marks = static_cast<Marks*>(document()->findBlockByNumber(line).userData());
    return marks && marks->IsClash;
}

void ComparedView::GoToLine(int line)
{
    const QTextBlock block = document()->findBlockByNumber(line);
    if (!block.isValid())
        return;
    setTextCursor(QTextCursor(block));
    ensureCursorVisible();
}

std::pair<int, int> ComparedView::SelectedLines() const
{
    const QTextCursor cursor = textCursor();
    const int first = document()->findBlock(cursor.selectionStart()).blockNumber();
    const QTextBlock last = document()->findBlock(cursor.selectionEnd());
    const bool isBehind = last.blockNumber() > first && last.position() == cursor.selectionEnd();
    return {first, last.blockNumber() - (isBehind ? 1 : 0)};
}

/// What was typed into filler is not to be lost, so it is none any more.
void ComparedView::TakeChange(int begin, int added)
{
    if (m_loading)
        return;
    for (QTextBlock block = document()->findBlock(begin); block.isValid() && block.position() <= begin + added;
         block = block.next()) {
        block.setUserState(StateOf(LineLook::Own));
        block.setUserData(nullptr);
    }
}

void ComparedView::changeEvent(QEvent* event)
{
    QPlainTextEdit::changeEvent(event);
    if (event->type() == QEvent::PaletteChange || event->type() == QEvent::StyleChange)
        ChooseColors();
}

void ComparedView::ChooseColors()
{
    const bool isDark = IsDark(palette().color(QPalette::Base));
    constexpr int WordShade = 70;
    constexpr int FillerShade = 60;
    m_own = isDark ? QColor(0xff, 0x8c, 0x8c) : QColor(0xc8, 0, 0);
    m_word = isDark ? QColor(0xff, 0x40, 0x40) : QColor(0xff, 0x60, 0x60);
    m_word.setAlpha(WordShade);
    m_clash = QColor(0xe0, 0x8a, 0);
    m_filler = palette().color(QPalette::Text);
    m_filler.setAlpha(FillerShade);
}

void ComparedView::paintEvent(QPaintEvent* event)
{
    QPainter painter(viewport());
    const QAbstractTextDocumentLayout::PaintContext context = getPaintContext();
    QPointF place = contentOffset();
    for (QTextBlock block = firstVisibleBlock(); block.isValid() && place.y() <= event->rect().bottom();
         block = block.next()) {
        const QRectF line = blockBoundingRect(block).translated(place);
        if (line.bottom() >= event->rect().top())
            PaintLine(painter, block, line, context);
        place.ry() += line.height();
    }
}

void ComparedView::PaintLine(QPainter& painter, const QTextBlock& block, const QRectF& place,
                             const QAbstractTextDocumentLayout::PaintContext& context)
{
    const LineLook look = LookOf(block.blockNumber());
    const QRectF wide(0, place.top(), viewport()->width(), place.height());
    if (look == LineLook::Filler)
        painter.fillRect(wide, QBrush(m_filler, Qt::BDiagPattern));
    QList<QTextLayout::FormatRange> ranges;
    if (const auto* marks = static_cast<Marks*>(block.userData())) {
        if (marks->IsClash)
            painter.fillRect(QRectF(0, place.top(), document()->documentMargin(), place.height()), m_clash);
        for (const LineSpan& span : marks->Words) {
            QTextLayout::FormatRange range{int(span.Begin), int(span.Length), {}};
            range.format.setBackground(m_word);
            ranges << range;
        }
    }
    for (const auto& selection : context.selections) {
        const int begin = std::max(selection.cursor.selectionStart() - block.position(), 0);
        const int end = std::min(selection.cursor.selectionEnd() - block.position(), block.length() - 1);
        if (begin < end && look != LineLook::Filler)
            ranges << QTextLayout::FormatRange{begin, end - begin, selection.format};
    }
    painter.setPen(look == LineLook::Own ? m_own : palette().color(QPalette::Text));
    if (look != LineLook::Filler)
        block.layout()->draw(&painter, place.topLeft(), ranges, QRectF(viewport()->rect()));
    const int caret = context.cursorPosition - block.position();
    if (context.cursorPosition >= 0 && caret >= 0 && caret < block.length())
        block.layout()->drawCursor(&painter, place.topLeft(), caret, cursorWidth());
}

} // namespace qb
