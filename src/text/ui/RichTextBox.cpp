#include "text/ui/RichTextBox.h"

#include "platform/richtext/ListMark.h"
#include "support/Addresses.h"
#include "text/AddressDetect.h"

#include <QApplication>
#include <QHelpEvent>
#include <QMouseEvent>
#include <QPaintEvent>
#include <QPainter>
#include <QScrollBar>
#include <QTextLayout>
#include <QToolTip>

namespace qb {

RichTextBox::RichTextBox(const RtfFont& font, QWidget* parent) : RichTextBoxOf(font, parent) {}

/// Where a link leads is seen before it is opened, whatever its text says.
bool RichTextBox::viewportEvent(QEvent* event)
{
    if (event->type() != QEvent::ToolTip)
        return RichTextBoxOf::viewportEvent(event);
    const auto* help = static_cast<QHelpEvent*>(event);
    const QString target = anchorAt(help->pos());
    if (target.isEmpty())
        QToolTip::hideText();
    else // as plain text, whatever it holds
        QToolTip::showText(help->globalPos(),
                           QStringLiteral("<span>%1</span>").arg(ShownAddress(target).toHtmlEscaped()), viewport());
    return true;
}

void RichTextBox::paintEvent(QPaintEvent* event)
{
    QTextEdit::paintEvent(event);
    PaintListMarks(event);
    if (m_detectsAddresses)
        PaintAddresses(event);
}

// Addresses

void RichTextBox::SetAutoURLDetect(bool detects)
{
    m_detectsAddresses = detects;
    viewport()->setMouseTracking(detects);
    viewport()->update();
}

/// What was detected there; empty where nothing was, or a link of the text has the place.
QString RichTextBox::AddressAt(const QPoint& place) const
{
    const QTextCursor cursor = cursorForPosition(place);
    const QString line = cursor.block().text();
    if (!m_detectsAddresses || !anchorAt(place).isEmpty())
        return {};
    const QRect caret = cursorRect(cursor); // the nearest one, which may be far from the place
    const bool isNear = std::abs(place.x() - caret.x()) < fontMetrics().averageCharWidth() * 3
                        && place.y() >= caret.top() && place.y() <= caret.bottom();
    const qsizetype at = cursor.positionInBlock();
    for (const DetectedAddress& address : AddressesIn(line)) {
        if (isNear && at >= address.Begin && at <= address.Begin + address.Length)
            return line.mid(address.Begin, address.Length);
    }
    return {};
}

/// A line under each, by which it is known; the looks of the text are the user's.
void RichTextBox::PaintAddresses(QPaintEvent* event)
{
    QPainter painter(viewport());
    painter.setClipRect(event->rect());
    painter.setPen(palette().color(QPalette::Link));
    const QPointF offset(-horizontalScrollBar()->value(), -verticalScrollBar()->value());
    for (QTextBlock block = cursorForPosition(QPoint(0, 0)).block(); block.isValid(); block = block.next()) {
        const QTextLayout* layout = block.layout();
        const QPointF place = layout->position() + offset;
        if (place.y() > viewport()->height())
            break;
        for (const DetectedAddress& address : AddressesIn(block.text())) {
            const int end = int(address.Begin + address.Length);
            for (int at = int(address.Begin); at < end;) {
                const QTextLine line = layout->lineForTextPosition(at);
                const int last = line.isValid() ? std::min(end, line.textStart() + line.textLength()) : end;
                if (!line.isValid() || last <= at)
                    break;
                const double y = line.y() + line.ascent() + 2;
                painter.drawLine(place + QPointF(line.cursorToX(at), y), place + QPointF(line.cursorToX(last), y));
                at = last;
            }
        }
    }
}

void RichTextBox::mouseMoveEvent(QMouseEvent* event)
{
    RichTextBoxOf::mouseMoveEvent(event);
    if (!m_detectsAddresses || event->buttons() != Qt::NoButton)
        return;
    const bool isOver = !AddressAt(event->position().toPoint()).isEmpty();
    viewport()->setCursor(isOver ? Qt::PointingHandCursor : Qt::IBeamCursor);
}

void RichTextBox::mousePressEvent(QMouseEvent* event)
{
    m_pressed = event->position().toPoint();
    RichTextBoxOf::mousePressEvent(event);
}

/// A click, and not the end of a selection.
void RichTextBox::mouseReleaseEvent(QMouseEvent* event)
{
    RichTextBoxOf::mouseReleaseEvent(event);
    const QPoint place = event->position().toPoint();
    const bool isClick = event->button() == Qt::LeftButton && !textCursor().hasSelection()
                         && (place - m_pressed).manhattanLength() < QApplication::startDragDistance()
                         && !(event->modifiers() & (Qt::ShiftModifier | Qt::AltModifier));
    const QString address = isClick ? AddressAt(place) : QString();
    if (!address.isEmpty())
        Q_EMIT AddressClicked(AddressToOpen(address), event->modifiers().testFlag(Qt::ControlModifier));
}

void RichTextBox::PaintListMarks(QPaintEvent* event)
{
    constexpr int Gap = 6;
    QPainter painter(viewport());
    painter.setClipRect(event->rect());
    const QPointF offset(-horizontalScrollBar()->value(), -verticalScrollBar()->value());
    int number = 0;
    quint32 listBefore = 0;
    for (QTextBlock block = cursorForPosition(QPoint(0, 0)).block(); block.isValid(); block = block.next()) {
        const QTextLayout* layout = block.layout();
        const QPointF place = layout->position() + offset;
        if (place.y() > viewport()->height())
            break;
        const ParagraphFormat& paragraph = Page().ParagraphOf(block);
        const quint32 list = paragraph.List == ListKind::None ? 0 : RichTextLook::NumberOf(block.blockFormat());
        if (list != 0 && layout->lineCount() > 0) {
            number = list == listBefore ? number + 1 : ListNumberOf(block);
            const QTextLine line = layout->lineAt(0);
            const QTextCharFormat look = block.begin().atEnd() ? block.charFormat()
                                                               : block.begin().fragment().charFormat();
            const QString mark = ListMark(paragraph.List, number);
            painter.setFont(look.font());
            painter.setPen(look.hasProperty(QTextFormat::ForegroundBrush) ? look.foreground().color()
                                                                          : palette().color(QPalette::Text));
            const double width = painter.fontMetrics().horizontalAdvance(mark);
            painter.drawText(place + QPointF(line.naturalTextRect().left() - width - Gap, line.y() + line.ascent()),
                             mark);
        }
        listBefore = list;
    }
}

int RichTextBox::ListNumberOf(const QTextBlock& block) const
{
    const quint32 list = RichTextLook::NumberOf(block.blockFormat());
    int before = 0;
    for (QTextBlock at = block.previous(); at.isValid() && RichTextLook::NumberOf(at.blockFormat()) == list;
         at = at.previous())
        ++before;
    return Page().ParagraphOf(block).ListStart + before;
}

} // namespace qb
