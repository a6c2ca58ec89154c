#include "printing/ui/RichBlock.h"

#include "platform/richtext/ListMark.h"
#include "printing/PrintInk.h"
#include "printing/ui/PaperStyle.h"
#include "support/ui/Colors.h"

#include <QAbstractTextDocumentLayout>
#include <QGuiApplication>
#include <QImage>
#include <QScreen>
#include <QTextBlock>
#include <QTextCursor>
#include <algorithm>
#include <functional>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

/// A text document that shows what it was given and loads nothing, from no file and no address.
class ClosedDocument : public QTextDocument {
protected:
    QVariant loadResource(int, const QUrl&) override { return {}; }
};

/// What lengths in formats are counted in, before they are brought to the device.
int ScreenDotsPerInch()
{
    const QScreen* screen = QGuiApplication::primaryScreen();
    constexpr int Usual = 96;
    return screen ? qRound(screen->logicalDotsPerInchY()) : Usual;
}

QPalette PaperPalette()
{
    QPalette palette(Qt::black, Qt::white);
    palette.setColor(QPalette::Base, Qt::white);
    palette.setColor(QPalette::Text, Qt::black);
    palette.setColor(QPalette::Link, ColorOf(InkColors()[size_t(TokenKind::Keyword)]));
    return palette;
}

void ForEachFragment(const QTextDocument& document, const std::function<void(const QTextFragment&)>& visit)
{
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
        std::vector<QTextFragment> fragments; // a change of a look joins some of them
        for (auto it = block.begin(); !it.atEnd(); ++it)
            fragments.push_back(it.fragment());
        for (const QTextFragment& fragment : fragments)
            visit(fragment);
    }
}

} // namespace

RichBlock::RichBlock(const RichTextDocument& text, QSizeF column)
    : m_document(std::make_unique<ClosedDocument>()), m_page(m_text, *m_document)
{
    m_text.Document() = text;
    m_document->setUndoRedoEnabled(false);
    m_document->setDocumentMargin(0);
    m_document->documentLayout()->setPaintDevice(const_cast<PaperDevice*>(&Paper())); // which it only measures by
    m_page.Load(PaperPalette(), ScreenDotsPerInch());
    m_document->setUndoRedoEnabled(false);
    FitPictures(column);
    PartLetters();
    DarkenInk();
    m_document->setTextWidth(column.width());
    FindRows();
    FindListMarks();
}

RichBlock::~RichBlock() = default;

void RichBlock::FitPictures(QSizeF column)
{
    const double scale = double(PaperDevice::DotsPerInch) / ScreenDotsPerInch();
    const QSizeF most = column / scale;
    QTextCursor cursor(m_document.get());
    ForEachFragment(*m_document, [&](const QTextFragment& fragment) {
        if (!fragment.charFormat().isImageFormat())
            return;
        QTextImageFormat format = fragment.charFormat().toImageFormat();
        const QImage image = m_document->resource(QTextDocument::ImageResource, QUrl(format.name())).value<QImage>();
        QSizeF size(format.width() > 0 ? format.width() : image.width(),
                    format.height() > 0 ? format.height() : image.height());
        const double left = m_document->findBlock(fragment.position()).blockFormat().leftMargin();
        const QSizeF room(std::max(most.width() - left, most.width() / 4), most.height() * 0.95);
        if (size.width() > room.width() || size.height() > room.height())
            size.scale(room, Qt::KeepAspectRatio);
        format.setWidth(size.width());
        format.setHeight(size.height());
        cursor.setPosition(fragment.position());
        cursor.setPosition(fragment.position() + fragment.length(), QTextCursor::KeepAnchor);
        cursor.setCharFormat(format);
    });
}

void RichBlock::PartLetters()
{
    QTextCursor cursor(m_document.get());
    cursor.select(QTextCursor::Document);
    QTextCharFormat parted;
    parted.setFontLetterSpacingType(QFont::AbsoluteSpacing);
    parted.setFontLetterSpacing(UnligatedSpacing);
    cursor.mergeCharFormat(parted);
}

/// Yellow on white is nothing that can be read.
void RichBlock::DarkenInk()
{
    QTextCursor cursor(m_document.get());
    ForEachFragment(*m_document, [&](const QTextFragment& fragment) {
        const QTextCharFormat look = fragment.charFormat();
        if (!look.hasProperty(QTextFormat::ForegroundBrush) || look.hasProperty(QTextFormat::BackgroundBrush))
            return;
        const quint32 color = ColorNumber(look.foreground().color());
        const quint32 ink = InkFor(color);
        if (ink == color)
            return;
        QTextCharFormat darker;
        darker.setForeground(ColorOf(ink));
        cursor.setPosition(fragment.position());
        cursor.setPosition(fragment.position() + fragment.length(), QTextCursor::KeepAnchor);
        cursor.mergeCharFormat(darker);
    });
}

/// A line of the text is a row.
void RichBlock::FindRows()
{
    const QAbstractTextDocumentLayout& layout = *m_document->documentLayout();
    const double height = layout.documentSize().height(); // which lays all of it out
    for (QTextBlock block = m_document->begin(); block.isValid(); block = block.next()) {
        const double top = layout.blockBoundingRect(block).top();
        for (int line = 0; line < block.layout()->lineCount(); ++line)
            m_tops.push_back(line == 0 ? top : block.layout()->position().y() + block.layout()->lineAt(line).y());
    }
    if (m_tops.empty())
        m_tops.push_back(0);
    m_tops.front() = 0;
    m_tops.push_back(std::max(height, m_tops.back()));
}

void RichBlock::FindListMarks()
{
    constexpr double Gap = 5 * DotsPerPoint;
    int number = 0;
    quint32 listBefore = 0;
    for (QTextBlock block = m_document->begin(); block.isValid(); block = block.next()) {
        const ParagraphFormat& paragraph = m_page.ParagraphOf(block);
        const quint32 list = paragraph.List == ListKind::None ? 0 : RichTextLook::NumberOf(block.blockFormat());
        if (list != 0 && block.layout()->lineCount() > 0) {
            number = list == listBefore ? number + 1 : paragraph.ListStart;
            const QTextLine line = block.layout()->lineAt(0);
            const QTextCharFormat look = block.begin().atEnd() ? block.charFormat()
                                                               : block.begin().fragment().charFormat();
            const QString text = ListMark(paragraph.List, number);
            const double width = QFontMetricsF(look.font(), &Paper()).horizontalAdvance(text);
            m_marks.push_back({block.layout()->position()
                                   + QPointF(line.naturalTextRect().left() - width - Gap, line.y() + line.ascent()),
                               text, look.font(),
                               look.hasProperty(QTextFormat::ForegroundBrush) ? look.foreground().color() : Qt::black});
        }
        listBefore = list;
    }
}

void RichBlock::Paint(QPainter& painter, int first, int last) const
{
    const double from = Top(first);
    const double to = Top(last);
    painter.save();
    painter.translate(0, -from);
    const QRectF shown(0, from, m_document->textWidth(), to - from);
    painter.setClipRect(shown, Qt::IntersectClip);
    QAbstractTextDocumentLayout::PaintContext context;
    context.palette = PaperPalette();
    context.clip = shown;
    m_document->documentLayout()->draw(&painter, context);
    PaintListMarks(painter, from, to);
    painter.restore();
}

void RichBlock::PaintListMarks(QPainter& painter, double from, double to) const
{
    for (const Mark& mark : m_marks) {
        if (mark.At.y() < from || mark.At.y() > to)
            continue;
        QTextLayout layout(mark.Text, mark.Font, &Paper());
        layout.beginLayout();
        const QTextLine line = layout.createLine();
        layout.endLayout();
        painter.setPen(mark.Ink);
        layout.draw(&painter, mark.At - QPointF(0, line.ascent()));
    }
}

} // namespace qb
