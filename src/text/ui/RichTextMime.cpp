#include "text/ui/RichTextMime.h"

#include "platform/richtext/HtmlWriter.h"
#include "platform/richtext/Rtf.h"
#include "support/ui/Colors.h"

#include <QBuffer>
#include <QGuiApplication>
#include <QImage>
#include <QMimeData>
#include <QRegularExpression>
#include <QTextBlock>
#include <QTextDocument>
#include <QTextList>
#include <QTextTable>
#include <QUrl>
#include <algorithm>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

constexpr int TwipsPerPixel = 15;
constexpr const char* RtfTypes[] = {"text/rtf", "application/rtf", "text/richtext"};

/// A page that fetches nothing: what it holds itself, as data, is all there is.
class ClosedPage : public QTextDocument {
protected:
    QVariant loadResource(int type, const QUrl& name) override
    {
        return name.scheme() == u"data"_s ? QTextDocument::loadResource(type, name) : QVariant(QByteArray());
    }
};

std::optional<TextPicture> PictureOf(const QVariant& resource)
{
    const QImage image = resource.canConvert<QImage>() ? resource.value<QImage>()
                                                       : QImage::fromData(resource.toByteArray());
    if (image.isNull())
        return std::nullopt;
    TextPicture picture;
    QBuffer buffer(&picture.Bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    picture.WidthGoal = image.width() * TwipsPerPixel;
    picture.HeightGoal = image.height() * TwipsPerPixel;
    return picture;
}

class HtmlReader {
public:
    explicit HtmlReader(const QString& html) { m_page.setHtml(html); }

    RichTextDocument Read()
    {
        for (QTextBlock block = m_page.begin(); block.isValid(); block = block.next()) {
            const quint32 paragraph = m_text.NumberOf(ParagraphOf(block));
            for (auto it = block.begin(); !it.atEnd(); ++it)
                ReadFragment(it.fragment(), paragraph);
            if (const QString between = BetweenCells(block); !between.isEmpty())
                m_text.Append(between, 0);
            else if (block.next().isValid())
                m_text.EndParagraph(paragraph, 0);
            else
                Finish(ParagraphOf(block));
        }
        return std::move(m_text);
    }

private:
    /// The last paragraph takes the look of the place that it is pasted at; an item of a list is ended
    /// before that, to stay one.
    void Finish(const ParagraphFormat& last)
    {
        const bool isItem = last.List != ListKind::None;
        if (isItem)
            m_text.EndParagraph(m_text.NumberOf(last), 0);
        m_text.FinishParagraph(m_text.NumberOf(isItem ? ParagraphFormat() : last));
    }

    /// A row of a table is one paragraph: what parts its cells, and the paragraphs within one; empty at
    /// the end of a row, and outside tables.
    static QString BetweenCells(const QTextBlock& block)
    {
        const QTextBlock next = block.next();
        QTextTable* table = next.isValid() ? QTextCursor(block).currentTable() : nullptr;
        if (!table || QTextCursor(next).currentTable() != table)
            return {};
        const QTextTableCell cell = table->cellAt(block.position());
        const QTextTableCell after = table->cellAt(next.position());
        if (cell.row() != after.row())
            return {};
        return cell == after ? u" "_s : u"\t"_s;
    }

    /// Headings and the like are so many steps larger or smaller than other text.
    static quint16 HalfPointsOfStep(int step)
    {
        static constexpr double factors[] = {0.7, 0.8, 1.0, 1.2, 1.5, 2.0, 2.4};
        constexpr int Unchanged = 2;
        return quint16(CharFormat().HalfPoints * factors[std::clamp(step + Unchanged, 0, int(std::size(factors)) - 1)]);
    }

    void ReadFragment(const QTextFragment& fragment, quint32 paragraph)
    {
        const QTextCharFormat shown = fragment.charFormat();
        CharFormat format = FormatOf(shown);
        if (shown.isImageFormat()) {
            const QUrl name(shown.toImageFormat().name());
            const std::optional<TextPicture> picture = PictureOf(m_page.resource(QTextDocument::ImageResource, name));
            if (!picture)
                return;
            format.Picture = m_text.NumberOfPicture(*picture);
        }
        QString text = fragment.text();
        text.replace(QChar::Nbsp, u' ');
        const quint32 look = m_text.NumberOf(format);
        qsizetype begin = 0;
        for (qsizetype end = text.indexOf(QChar::LineSeparator); end >= 0;
             end = text.indexOf(QChar::LineSeparator, begin)) {
            m_text.Append(QStringView(text).sliced(begin, end - begin), look);
            m_text.EndParagraph(paragraph, look);
            begin = end + 1;
        }
        m_text.Append(QStringView(text).sliced(begin), look);
    }

    CharFormat FormatOf(const QTextCharFormat& look)
    {
        CharFormat format;
        const QStringList families = look.fontFamilies().toStringList();
        if (!families.isEmpty())
            format.Font = m_text.NumberOfFontName(families.front());
        if (look.fontPointSize() > 0)
            format.HalfPoints = quint16(look.fontPointSize() * 2);
        else if (look.hasProperty(QTextFormat::FontPixelSize))
            format.HalfPoints = quint16(look.intProperty(QTextFormat::FontPixelSize) * TwipsPerPixel / 10);
        else if (look.hasProperty(QTextFormat::FontSizeAdjustment))
            format.HalfPoints = HalfPointsOfStep(look.intProperty(QTextFormat::FontSizeAdjustment));
        format.Bold = look.fontWeight() > QFont::Medium;
        format.Italic = look.fontItalic();
        format.Underline = look.fontUnderline() && !look.isAnchor();
        format.Strike = look.fontStrikeOut();
        if (look.hasProperty(QTextFormat::ForegroundBrush) && !look.isAnchor())
            format.Color = ColorNumber(look.foreground().color());
        if (look.hasProperty(QTextFormat::BackgroundBrush))
            format.BackColor = ColorNumber(look.background().color());
        if (look.isAnchor() && !look.anchorHref().isEmpty())
            format.Link = m_text.NumberOfLink(look.anchorHref());
        return format;
    }

    static ParagraphFormat ParagraphOf(const QTextBlock& block)
    {
        constexpr int ListIndent = 300; // twips
        ParagraphFormat format;
        const QTextBlockFormat look = block.blockFormat();
        if (QTextCursor(block).currentTable())
            return format; // of its row
        if (look.alignment() & Qt::AlignHCenter)
            format.Alignment = TextAlignment::Center;
        else if (look.alignment() & Qt::AlignRight)
            format.Alignment = TextAlignment::Right;
        format.LeftIndent = int(look.leftMargin()) * TwipsPerPixel;
        if (const QTextList* list = block.textList()) {
            format.List = KindOf(list->format().style());
            format.LeftIndent = ListIndent * list->format().indent();
            format.FirstIndent = -ListIndent;
        }
        return format;
    }

    static ListKind KindOf(QTextListFormat::Style style)
    {
        switch (style) {
        case QTextListFormat::ListDecimal:
            return ListKind::Decimal;
        case QTextListFormat::ListLowerAlpha:
            return ListKind::LowerLetter;
        case QTextListFormat::ListUpperAlpha:
            return ListKind::UpperLetter;
        case QTextListFormat::ListLowerRoman:
            return ListKind::LowerRoman;
        case QTextListFormat::ListUpperRoman:
            return ListKind::UpperRoman;
        default:
            return ListKind::Bullet;
        }
    }

    ClosedPage m_page;
    RichTextDocument m_text;
};

} // namespace

std::unique_ptr<QMimeData> MimeOfRichText(const RichTextDocument& text)
{
    auto mime = std::make_unique<QMimeData>();
    mime->setText(QString(text.Text()).replace("\r\n"_L1, "\n"_L1));
    mime->setHtml(WriteHtml(text, {}));
    const QByteArray rtf = WriteRtf(text).toLatin1();
    for (const char* type : {RtfTypes[0], RtfTypes[1]})
        mime->setData(QLatin1StringView(type), rtf);
    return mime;
}

RichTextDocument RichTextFromHtml(const QString& html)
{
    return HtmlReader(html).Read();
}

QString TextOfMime(const QMimeData& source)
{
    return source.hasText() || !source.hasHtml() ? source.text() : RichTextFromHtml(source.html()).Text();
}

QString RtfOfMime(const QMimeData& source, bool foreignLooks)
{
    for (const char* type : RtfTypes) {
        const QByteArray rtf = source.data(QLatin1StringView(type));
        if (rtf.startsWith("{\\rtf"))
            return QString::fromLatin1(rtf);
    }
    if (foreignLooks && source.hasHtml())
        return WriteRtf(RichTextFromHtml(source.html()));
    if (foreignLooks && source.hasImage() && !source.hasText()) {
        RichTextDocument text;
        if (const std::optional<TextPicture> picture = PictureOf(source.imageData())) {
            CharFormat format;
            format.Picture = text.NumberOfPicture(*picture);
            text.Append(QString(QChar(RichTextDocument::PictureCharacter)), text.NumberOf(format));
            text.FinishParagraph(0);
            return WriteRtf(text);
        }
    }
    return {};
}

} // namespace qb
