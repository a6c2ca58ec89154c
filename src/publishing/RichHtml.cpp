#include "publishing/RichHtml.h"

#include "publishing/HtmlText.h"

#include <algorithm>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

constexpr int TwipsPerPoint = 20;
constexpr int TwipsPerPixel = 15;
constexpr int LongestIndent = 400; // points
constexpr int DeepestLevel = 8;

/// The name of a font inside the quotes of a style sheet, which it must end neither.
QByteArray FontName(const RichTextDocument& document, quint16 font)
{
    static const QString outside = u"'\"\\;<>{}"_s;
    QString name = document.Font(font).Name;
    name.removeIf([](QChar character) { return !character.isPrint() || outside.contains(character); });
    return name.toUtf8();
}

class RichHtml {
public:
    RichHtml(QByteArray& html, const RichTextDocument& document, StyleSheet& styles)
        : m_html(html), m_document(document), m_styles(styles), m_base(document.FormatAt(0))
    {
    }

    void Append()
    {
        const QString& text = m_document.Text();
        for (qsizetype at = 0;;) {
            const qsizetype found = text.indexOf("\r\n"_L1, at);
            const qsizetype end = found < 0 ? text.size() : found;
            AppendParagraph(at, end);
            if (found < 0)
                break;
            at = end + 2;
        }
        CloseList();
    }

private:
    void AppendParagraph(qsizetype begin, qsizetype end)
    {
        const ParagraphFormat& format = m_document.ParagraphAt(begin);
        const bool isItem = format.List != ListKind::None;
        const bool goesOn = isItem && m_list && m_list->List == format.List && m_list->ListLevel == format.ListLevel;
        if (!goesOn)
            CloseList();
        if (isItem && !goesOn)
            OpenList(format);
        Open(isItem ? "li" : "p", LookOf(format));
        if (begin == end)
            m_html += "<br>";
        else
            AppendRuns(begin, end);
        m_html += isItem ? "</li>\n" : "</p>\n";
    }

    PageLook LookOf(const ParagraphFormat& format) const
    {
        static constexpr std::array<const char*, 4> alignments{"", "text-align:right;", "text-align:center;",
                                                               "text-align:justify;"};
        PageLook look{.Always = alignments[size_t(format.Alignment)], .Light = {}, .Dark = {}};
        const auto points = [](int twips) {
            return QByteArray::number(std::clamp(twips / TwipsPerPoint, -LongestIndent, LongestIndent)) + "pt;";
        };
        if (format.List != ListKind::None)
            return look; // a list has an indent of its own
        if (format.LeftIndent > 0)
            look.Always += "margin-left:" + points(format.LeftIndent);
        if (format.RightIndent > 0)
            look.Always += "margin-right:" + points(format.RightIndent);
        if (format.FirstIndent != 0)
            look.Always += "text-indent:" + points(format.FirstIndent);
        return look;
    }

    void OpenList(const ParagraphFormat& format)
    {
        static constexpr const char* types[] = {"", "", "1", "a", "A", "i", "I"};
        const PageLook look{.Always = format.ListLevel > 0
                                          ? "margin-left:"
                                                + QByteArray::number(2 * std::min<int>(format.ListLevel, DeepestLevel))
                                                + "em;"
                                          : QByteArray(),
                            .Light = {},
                            .Dark = {}};
        if (format.List == ListKind::Bullet) {
            Open("ul", look);
        } else {
            const QByteArray start = QByteArray::number(format.ListStart);
            Open("ol", look, " type=\"" + QByteArray(types[size_t(format.List)]) + "\" start=\"" + start + '"');
        }
        m_html += '\n';
        m_list = &format;
    }

    void CloseList()
    {
        if (m_list)
            m_html += m_list->List == ListKind::Bullet ? "</ul>\n" : "</ol>\n";
        m_list = nullptr;
    }

    void Open(const char* tag, const PageLook& look, const QByteArray& attributes = {})
    {
        m_html += '<' + QByteArray(tag) + attributes;
        if (const QByteArray name = m_styles.ClassOf(look); !name.isEmpty())
            m_html += " class=" + name;
        m_html += '>';
    }

    void AppendRuns(qsizetype begin, qsizetype end)
    {
        for (auto run = m_document.Runs().RunAt(begin); begin < end; ++run) {
            const auto next = std::next(run);
            const qsizetype runEnd = next == m_document.Runs().End() ? end : std::min(end, next->first);
            AppendRun(m_document.Format(run->second), QStringView(m_document.Text()).sliced(begin, runEnd - begin));
            begin = runEnd;
        }
    }

    void AppendRun(const CharFormat& format, QStringView text)
    {
        const bool isLink = format.Link != 0 && IsHarmlessAddress(m_document.Link(format.Link));
        if (isLink)
            m_html += "<a rel=\"noreferrer\" href=\"" + Escaped(m_document.Link(format.Link)) + "\">";
        const PageLook look = LookOf(format);
        if (!look.IsEmpty())
            Open("span", look);
        if (format.Picture != 0)
            AppendPictures(m_document.Picture(format.Picture), text.size());
        else
            AppendEscaped(m_html, text);
        m_html += look.IsEmpty() ? "" : "</span>";
        m_html += isLink ? "</a>" : "";
    }

    PageLook LookOf(const CharFormat& format) const
    {
        PageLook look;
        if (format.Color != AutomaticColor && format.Color != 0)
            look = StyleSheet::Colored(format.Color);
        if (format.BackColor != AutomaticColor) { // what is written on it is legible there on any page
            const quint32 color = format.Color == AutomaticColor ? 0 : format.Color;
            look = {.Always = "background:" + HtmlColor(format.BackColor) + ";color:" + HtmlColor(color) + ';',
                    .Light = {},
                    .Dark = {}};
        }
        if (format.Font != m_base.Font)
            look.Always += "font-family:'" + FontName(m_document, format.Font) + "';";
        if (format.HalfPoints != m_base.HalfPoints)
            look.Always += "font-size:" + QByteArray::number(format.HalfPoints / 2.0) + "pt;";
        if (format.Bold)
            look.Always += "font-weight:bold;";
        if (format.Italic)
            look.Always += "font-style:italic;";
        if (format.Underline || format.Strike)
            look.Always += QByteArray("text-decoration:") + (format.Underline ? " underline" : "")
                           + (format.Strike ? " line-through" : "") + ';';
        return look;
    }

    /// Each character of the run stands for the picture.
    void AppendPictures(const TextPicture& picture, qsizetype count)
    {
        const char* type = picture.Type == TextPicture::Png ? "png" : "jpeg";
        QByteArray image = "<img alt=\"\" src=\"data:image/" + QByteArray(type) + ";base64," + picture.Bytes.toBase64()
                           + '"';
        if (picture.WidthGoal > 0)
            image += " width=" + QByteArray::number(std::max(1, picture.WidthGoal / TwipsPerPixel));
        if (picture.HeightGoal > 0)
            image += " height=" + QByteArray::number(std::max(1, picture.HeightGoal / TwipsPerPixel));
        image += '>';
        for (qsizetype left = count; left > 0; --left)
            m_html += image;
    }

    QByteArray& m_html;
    const RichTextDocument& m_document;
    StyleSheet& m_styles;
    CharFormat m_base;
    const ParagraphFormat* m_list = nullptr; ///< of the list that is open
};

QByteArray ClassOf(const CodePiece& piece, StyleSheet& styles)
{
    QByteArray names = piece.Color != AutomaticColor ? styles.ClassOfColor(piece.Color)
                                                     : StyleSheet::ClassOf(piece.Kind);
    if (piece.IsHeader)
        names += names.isEmpty() ? "h" : " h";
    return names;
}

} // namespace

void AppendRichHtml(QByteArray& html, const RichTextDocument& document, StyleSheet& styles)
{
    RichHtml(html, document, styles).Append();
}

void AppendCodeHtml(QByteArray& html, QStringView text, std::span<const CodePiece> pieces, StyleSheet& styles)
{
    if (text.startsWith(u'\r') || text.startsWith(u'\n'))
        html += '\n'; // the first line end behind the tag is no part of the text
    qsizetype at = 0;
    for (const CodePiece& piece : pieces) {
        const QByteArray names = ClassOf(piece, styles);
        if (names.isEmpty() || piece.Length <= 0)
            continue;
        AppendEscaped(html, text.sliced(at, piece.Begin - at));
        html += "<span class=\"" + names + "\">";
        AppendEscaped(html, text.sliced(piece.Begin, piece.Length));
        html += "</span>";
        at = piece.Begin + piece.Length;
    }
    AppendEscaped(html, text.sliced(at));
}

} // namespace qb
