#include "text/ui/RichTextLook.h"

#include "support/ui/Colors.h"

#include <QFontInfo>
#include <QTextImageFormat>
#include <algorithm>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

constexpr int TwipsPerInch = 1440;
constexpr double LeastContrast = 4.5; ///< of the guidelines for text

Qt::Alignment AlignmentOf(TextAlignment alignment)
{
    static constexpr Qt::AlignmentFlag flags[] = {Qt::AlignLeft, Qt::AlignRight, Qt::AlignHCenter, Qt::AlignJustify};
    return flags[size_t(alignment)] | Qt::AlignAbsolute;
}

} // namespace

RichTextLook::RichTextLook(const RichTextDocument& document, const QPalette& palette, int dotsPerInch)
    : m_document(&document), m_palette(palette), m_dotsPerInch(dotsPerInch)
{
}

QString RichTextLook::PictureName(quint32 picture)
{
    return u"picture:"_s + QString::number(picture);
}

double RichTextLook::Pixels(int twips) const
{
    return double(twips) * m_dotsPerInch / TwipsPerInch;
}

QColor RichTextLook::ColorOn(const QColor& background, quint32 color)
{
    const QColor wanted = ColorOf(color);
    if (!IsDark(background) || Contrast(wanted, background) >= LeastContrast)
        return wanted;
    constexpr int White = 255;
    constexpr int Step = 16;
    int hue = 0;
    int saturation = 0;
    int lightness = 0;
    wanted.getHsl(&hue, &saturation, &lightness);
    for (lightness = White - lightness; lightness < White;
         lightness += Step) { // first what is dark on white is light on black
        const QColor shown = QColor::fromHsl(hue, saturation, lightness);
        if (Contrast(shown, background) >= LeastContrast)
            return shown;
    }
    return Qt::white;
}

const QTextCharFormat& RichTextLook::CharLook(quint32 number)
{
    const auto found = m_chars.find(number);
    if (found != m_chars.end())
        return found->second;
    QTextCharFormat look = MakeCharLook(m_document->Format(number));
    look.setProperty(NumberProperty, int(number));
    return m_chars.emplace(number, std::move(look)).first->second;
}

const QTextBlockFormat& RichTextLook::BlockLook(quint32 number)
{
    const auto found = m_blocks.find(number);
    if (found != m_blocks.end())
        return found->second;
    QTextBlockFormat look = MakeBlockLook(m_document->Paragraph(number));
    look.setProperty(NumberProperty, int(number));
    return m_blocks.emplace(number, std::move(look)).first->second;
}

QTextCharFormat RichTextLook::MakeCharLook(const CharFormat& format) const
{
    QTextCharFormat look;
    const FontInfo& font = m_document->Font(format.Font);
    if (format.Picture != 0) {
        QTextImageFormat image;
        const TextPicture& picture = m_document->Picture(format.Picture);
        image.setName(PictureName(format.Picture));
        if (picture.WidthGoal > 0)
            image.setWidth(Pixels(picture.WidthGoal));
        if (picture.HeightGoal > 0)
            image.setHeight(Pixels(picture.HeightGoal));
        look = image;
    }
    look.setFontFamilies({font.Name});
    if (font.Family == "modern"_L1 || font.Name.startsWith("Courier"_L1)) {
        look.setFontFixedPitch(true);
        look.setFontStyleHint(QFont::Monospace);
    }
    look.setFontPointSize(format.HalfPoints / 2.0);
    if (format.Bold)
        look.setFontWeight(QFont::Bold);
    look.setFontItalic(format.Italic);
    look.setFontUnderline(format.Underline);
    look.setFontStrikeOut(format.Strike);
    const bool hasBackground = format.BackColor != AutomaticColor;
    const QColor background = hasBackground ? ColorOf(format.BackColor) : m_palette.color(QPalette::Base);
    if (hasBackground)
        look.setBackground(background);
    if (format.Color != AutomaticColor)
        look.setForeground(ColorOn(background, format.Color));
    else if (hasBackground)
        look.setForeground(IsDark(background) ? Qt::white : Qt::black);
    if (format.Link != 0) {
        look.setAnchor(true);
        look.setAnchorHref(m_document->Link(format.Link));
        look.setFontUnderline(true);
        look.setForeground(m_palette.color(QPalette::Link));
    }
    return look;
}

QTextBlockFormat RichTextLook::MakeBlockLook(const ParagraphFormat& format) const
{
    QTextBlockFormat look;
    const bool isList = format.List != ListKind::None;
    constexpr int RoomForMark = 300; // twips; a mark must stand somewhere
    look.setAlignment(AlignmentOf(format.Alignment));
    look.setLeftMargin(Pixels(isList ? std::max(RoomForMark, format.LeftIndent) : format.LeftIndent));
    look.setTextIndent(isList ? 0 : Pixels(format.FirstIndent));
    look.setRightMargin(Pixels(format.RightIndent));
    QList<QTextOption::Tab> tabs;
    for (const qint32 stop : m_document->TabStops(format.Tabs))
        tabs << QTextOption::Tab(Pixels(stop - format.LeftIndent), QTextOption::LeftTab);
    if (!tabs.isEmpty())
        look.setTabPositions(tabs);
    return look;
}

} // namespace qb
