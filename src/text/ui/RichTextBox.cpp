#include "text/ui/RichTextBox.h"

#include "platform/richtext/ListMark.h"
#include "support/Addresses.h"

#include <QHelpEvent>
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
