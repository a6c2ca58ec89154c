#include "platform/richtext/HtmlWriter.h"

#include <algorithm>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

QString HtmlColor(quint32 color)
{
    const quint32 swapped = (color & 0xff) << 16 | (color & 0xff00) | (color >> 16 & 0xff);
    return u"#%1"_s.arg(swapped, 6, 16, QLatin1Char('0'));
}

/// The name of a font inside the quotes of a style, which it must not end.
QString FontName(const RichTextDocument& document, quint16 font)
{
    QString name = document.Font(font).Name;
    name.removeIf([](QChar character) { return character == u'\'' || character == u'\\' || character == u';'; });
    return name.toHtmlEscaped();
}

/// A page leads to addresses and mailboxes; a link of any other kind could run something.
bool IsHarmless(const QString& target)
{
    static const QStringList schemes{u"http:"_s, u"https:"_s, u"ftp:"_s, u"mailto:"_s};
    return std::any_of(schemes.begin(), schemes.end(),
                       [&target](const QString& scheme) { return target.startsWith(scheme, Qt::CaseInsensitive); });
}

QString Style(const CharFormat& format, const RichTextDocument& document, const CharFormat& base)
{
    QStringList styles;
    if (format.Font != base.Font)
        styles << u"font-family:'%1'"_s.arg(FontName(document, format.Font));
    if (format.HalfPoints != base.HalfPoints)
        styles << u"font-size:%1pt"_s.arg(format.HalfPoints / 2.0);
    if (format.Bold)
        styles << u"font-weight:bold"_s;
    if (format.Italic)
        styles << u"font-style:italic"_s;
    if (format.Underline || format.Strike)
        styles << u"text-decoration:"_s + (format.Underline ? u" underline"_s : QString())
                      + (format.Strike ? u" line-through"_s : QString());
    if (format.Color != AutomaticColor && format.Color != 0)
        styles << u"color:"_s + HtmlColor(format.Color);
    if (format.BackColor != AutomaticColor)
        styles << u"background:"_s + HtmlColor(format.BackColor);
    return styles.join(u';');
}

QString Content(const CharFormat& format, const RichTextDocument& document, const QString& text)
{
    if (format.Picture == 0)
        return QString(text).replace("\r\n"_L1, "\n"_L1).toHtmlEscaped();
    const TextPicture& picture = document.Picture(format.Picture);
    const QString type = picture.Type == TextPicture::Png ? u"png"_s : u"jpeg"_s;
    return u"<img alt=\"\" src=\"data:image/%1;base64,%2\">"_s.arg(type, QString::fromLatin1(picture.Bytes.toBase64()));
}

} // namespace

QString WriteHtml(const RichTextDocument& document, const QString& title)
{
    const CharFormat base = document.FormatAt(0);
    QString html = u"<!DOCTYPE html>\n<html>\n<head>\n<meta charset=\"utf-8\">\n<title>%1</title>\n</head>\n<body>\n"
                   "<pre style=\"font-family:'%2',monospace;font-size:%3pt\">"_s
                       .arg(title.toHtmlEscaped(), FontName(document, base.Font))
                       .arg(base.HalfPoints / 2.0);
    const QString& text = document.Text();
    for (auto run = document.Runs().RunAt(0); run != document.Runs().End() && run->first < text.size(); ++run) {
        const auto next = std::next(run);
        const qsizetype end = next == document.Runs().End() ? text.size() : std::min(text.size(), next->first);
        const CharFormat& format = document.Format(run->second);
        QString piece = Content(format, document, text.sliced(run->first, end - run->first));
        const QString style = Style(format, document, base);
        if (!style.isEmpty())
            piece = u"<span style=\""_s + style + u"\">"_s + piece + u"</span>"_s;
        if (format.Link != 0 && IsHarmless(document.Link(format.Link)))
            piece = u"<a href=\""_s + document.Link(format.Link).toHtmlEscaped() + u"\">"_s + piece + u"</a>"_s;
        html += piece;
    }
    return html + u"</pre>\n</body>\n</html>\n"_s;
}

} // namespace qb
