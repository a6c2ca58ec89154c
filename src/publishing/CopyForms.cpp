#include "publishing/CopyForms.h"

#include "platform/richtext/Rtf.h"
#include "publishing/CodeColours.h"
#include "publishing/HtmlText.h"
#include "publishing/MarkdownText.h"
#include "publishing/StyleSheet.h"

namespace qb {

using namespace Qt::StringLiterals;

namespace {

quint32 ColorOf(const CodePiece& piece, const TokenPalette& palette)
{
    if (piece.Color != AutomaticColor || piece.Kind == TokenKind::Text)
        return piece.Color;
    return palette.Light[size_t(piece.Kind)];
}

/// The range in its colours, as a document that says nothing else. What a piece of code is the text before it tells.
RichTextDocument Painted(const RichTextDocument& code, CopiedRange range, CTextFormat& format)
{
    RichTextDocument painted(CodeFont);
    painted.Replace(0, 0, code.Text(), painted.DefaultFormat());
    CodeColours colours(format);
    for (const CodePiece& piece : colours.PiecesOf(code)) {
        CharFormat look = painted.DefaultFormat();
        look.Color = ColorOf(piece, format.Palette());
        look.Bold = piece.IsHeader;
        painted.SetFormat(piece.Begin, piece.Begin + piece.Length, painted.NumberOf(look));
    }
    return painted.Part(range.Begin, range.Length);
}

QByteArray HtmlOf(const RichTextDocument& painted)
{
    const QString& text = painted.Text();
    QByteArray html = "<pre style=\"font-family:'Courier New',monospace\">";
    if (text.startsWith(u'\r'))
        html += '\n'; // the first line end behind the tag is no part of the text
    for (auto run = painted.Runs().RunAt(0); run != painted.Runs().End() && run->first < text.size(); ++run) {
        const auto next = std::next(run);
        const qsizetype end = next == painted.Runs().End() ? text.size() : std::min(text.size(), next->first);
        const CharFormat& look = painted.Format(run->second);
        QByteArray style = look.Color != AutomaticColor ? "color:" + HtmlColor(look.Color) : QByteArray();
        if (look.Bold)
            style += style.isEmpty() ? "font-weight:bold" : ";font-weight:bold";
        if (!style.isEmpty())
            html += "<span style=\"" + style + "\">";
        AppendEscaped(html, QStringView(text).sliced(run->first, end - run->first));
        html += style.isEmpty() ? "" : "</span>";
    }
    return html + "</pre>\n";
}

} // namespace

CopiedText CopyOf(const RichTextDocument& code, CopiedRange range, CTextFormat& format, const QString& language,
                  CopyForm form)
{
    if (range.Length == 0)
        range = {0, code.Length()};
    const QString text = code.Text().mid(range.Begin, range.Length);
    CopiedText copied{.Plain = QString(text).replace("\r\n"_L1, "\n"_L1), .Forms = {}};
    if (form == CopyForm::Rtf) {
        const QByteArray rtf = WriteRtf(Painted(code, range, format)).toLatin1();
        copied.Forms = {{u"text/rtf"_s, rtf}, {u"application/rtf"_s, rtf}};
    } else if (form == CopyForm::Html) {
        const QByteArray html = HtmlOf(Painted(code, range, format));
        copied.Plain = QString::fromUtf8(html);
        copied.Forms = {{u"text/html"_s, html}};
    } else if (form == CopyForm::Markdown) {
        copied.Plain = MarkdownCode(text, language);
        copied.Forms = {{u"text/markdown"_s, copied.Plain.toUtf8()}};
    }
    return copied;
}

} // namespace qb
