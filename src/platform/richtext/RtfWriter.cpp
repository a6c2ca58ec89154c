#include "platform/richtext/ListMark.h"
#include "platform/richtext/Rtf.h"
#include "platform/richtext/RtfPlainText.h"

#include <algorithm>
#include <array>
#include <limits>
#include <map>
#include <optional>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

constexpr char16_t FirstPrintable = 0x20;
constexpr char16_t FirstNonAscii = 0x7f;

bool IsPlain(char16_t character)
{
    return character >= FirstPrintable && character < FirstNonAscii && character != u'\\' && character != u'{'
           && character != u'}';
}

void AppendCharacter(QByteArray& out, char16_t character)
{
    if (character == u'\\' || character == u'{' || character == u'}') {
        out += '\\';
        out += char(character);
    } else if (character == u'\t') {
        out += "\\tab ";
    } else if (IsPlain(character)) {
        out += char(character);
    } else {
        out += "\\u" + QByteArray::number(qint16(character)) + '?'; // the number is a signed one
    }
}

/// Text without line ends.
void AppendText(QByteArray& out, QStringView text)
{
    for (qsizetype i = 0; i < text.size();) {
        const qsizetype begin = i;
        while (i < text.size() && IsPlain(text[i].unicode()))
            ++i;
        const qsizetype old = out.size();
        out.resize(old + i - begin);
        std::transform(text.begin() + begin, text.begin() + i, out.begin() + old,
                       [](QChar c) { return char(c.unicode()); });
        if (i < text.size())
            AppendCharacter(out, text[i++].unicode());
    }
}

/// A destination of this program's own, which other readers pass over.
QByteArray OwnGroup(const char* word, const QString& text)
{
    QByteArray group;
    if (text.isEmpty())
        return group;
    group = "{\\*\\" + QByteArray(word) + ' ';
    AppendText(group, text);
    return group + '}';
}

QByteArray LanguageGroup(const QString& language)
{
    return OwnGroup("qblang", language);
}

void AppendHead(QByteArray& out, const RichTextDocument& document)
{
    out += "{\\rtf1\\ansi\\ansicpg1252\\deff0\\uc1";
    out += LanguageGroup(document.Language());
    out += OwnGroup("qbsource", document.SourceForm());
}

void AppendFontTable(QByteArray& out, const std::vector<FontInfo>& fonts)
{
    out += "{\\fonttbl";
    for (size_t i = 0; i < fonts.size(); ++i) {
        out += "{\\f" + QByteArray::number(i) + "\\f" + fonts[i].Family.toLatin1() + "\\fcharset"
               + QByteArray::number(fonts[i].CharSet) + ' ';
        AppendText(out, fonts[i].Name);
        out += ";}";
    }
    out += "}";
}

/// A word that opens or closes a property.
QByteArray Toggle(const char* word, bool on)
{
    return on ? QByteArray(word) : QByteArray(word) + '0';
}

const char* NumberingWord(ListKind kind)
{
    switch (kind) {
    case ListKind::LowerLetter:
        return "\\pnlcltr";
    case ListKind::UpperLetter:
        return "\\pnucltr";
    case ListKind::LowerRoman:
        return "\\pnlcrm";
    case ListKind::UpperRoman:
        return "\\pnucrm";
    default:
        return "\\pndec";
    }
}

class Writer {
public:
    explicit Writer(const RichTextDocument& document) : m_document(document), m_text(document.Text()) {}

    QString Write()
    {
        m_out.reserve(m_text.size() + m_text.size() / 4 + 256);
        CollectTables();
        AppendHead(m_out, m_document);
        AppendFontTable(m_out, m_fonts);
        AppendColorTable();
        m_out += "\r\n";
        for (qsizetype at = 0;;) {
            const qsizetype lineFeed = m_text.indexOf(u'\n', at); // the second half of a line end
            const qsizetype end = lineFeed < 0 ? -1 : lineFeed - 1;
            WriteParagraph(at, end < 0 ? m_text.size() : end);
            if (end >= 0)
                WriteFormat(m_document.Format(RunFrom(end).first)); // a line end has a look of its own
            m_out += "\\par\r\n";
            m_wordOpen = false;
            if (end < 0)
                break;
            at = end + 2;
        }
        m_out += '}';
        return QString::fromLatin1(m_out);
    }

private:
    /// Numbers the fonts and colours in the order in which they are first used.
    void CollectTables()
    {
        for (auto run = m_document.Runs().RunAt(0); run != m_document.Runs().End(); ++run) {
            if (run->first > 0 && run->first >= m_text.size())
                break;
            const CharFormat& format = m_document.Format(run->second);
            if (m_fontNumbers.emplace(format.Font, int(m_fonts.size())).second)
                m_fonts.push_back(m_document.Font(format.Font));
            for (const quint32 color : {format.Color, format.BackColor}) {
                if (color != AutomaticColor && m_colorNumbers.emplace(color, int(m_colors.size()) + 1).second)
                    m_colors.push_back(color);
            }
        }
    }

    void AppendColorTable()
    {
        if (m_colors.empty())
            return;
        m_out += "\r\n{\\colortbl ;";
        for (const quint32 color : m_colors)
            m_out += "\\red" + QByteArray::number(color & 0xff) + "\\green" + QByteArray::number(color >> 8 & 0xff)
                     + "\\blue" + QByteArray::number(color >> 16 & 0xff) + ';';
        m_out += "}";
    }

    void WriteParagraph(qsizetype begin, qsizetype end)
    {
        const ParagraphFormat& paragraph = m_document.ParagraphAt(begin);
        const bool changed = !m_paragraph || *m_paragraph != paragraph;
        m_listNumber = changed || m_listNumber == 0 ? paragraph.ListStart : m_listNumber + 1;
        if (changed)
            Word("\\pard");
        if (paragraph.List != ListKind::None)
            WriteListText(paragraph);
        if (changed)
            WriteParagraphFormat(paragraph);
        m_paragraph = &paragraph;
        WriteRuns(begin, end);
    }

    /// What stands before the paragraph, for readers that know no lists.
    void WriteListText(const ParagraphFormat& paragraph)
    {
        m_out += paragraph.List == ListKind::Bullet
                     ? QByteArray("{\\pntext\\bullet\\tab}")
                     : "{\\pntext " + ListMark(paragraph.List, m_listNumber).toLatin1() + "\\tab}";
        m_wordOpen = false;
    }

    void WriteParagraphFormat(const ParagraphFormat& paragraph)
    {
        const auto length = [this](const char* word, int twips) {
            if (twips != 0)
                Word(word + QByteArray::number(twips));
        };
        if (paragraph.List == ListKind::Bullet) {
            m_out += "{\\*\\pn\\pnlvlblt{\\pntxtb\\bullet}}";
            m_wordOpen = false;
        } else if (paragraph.List != ListKind::None) {
            m_out += "{\\*\\pn\\pnlvlbody" + QByteArray(NumberingWord(paragraph.List)) + "\\pnstart"
                     + QByteArray::number(paragraph.ListStart) + "{\\pntxta.}}";
            m_wordOpen = false;
        }
        if (paragraph.ListLevel != 0)
            length("\\ilvl", paragraph.ListLevel);
        length("\\fi", paragraph.FirstIndent);
        length("\\li", paragraph.LeftIndent);
        length("\\ri", paragraph.RightIndent);
        static constexpr std::array<const char*, 4> alignments{"", "\\qr", "\\qc", "\\qj"};
        if (paragraph.Alignment != TextAlignment::Left)
            Word(alignments[size_t(paragraph.Alignment)]);
        for (const qint32 stop : m_document.TabStops(paragraph.Tabs))
            Word("\\tx" + QByteArray::number(stop));
    }

    /// The look at a position, and where it ends. Positions only grow, so the runs are gone through
    /// once.
    std::pair<quint32, qsizetype> RunFrom(qsizetype at)
    {
        const auto end = m_document.Runs().End();
        for (auto next = std::next(m_run); next != end && next->first <= at; ++next)
            m_run = next;
        const auto next = std::next(m_run);
        return {m_run->second, next == end ? std::numeric_limits<qsizetype>::max() : next->first};
    }

    void WriteRuns(qsizetype begin, qsizetype end)
    {
        if (begin == end && !m_current) // an empty text says what it would be written in
            WriteFormat(m_document.FormatAt(begin));
        for (qsizetype at = begin; at < end;) {
            const auto [number, behind] = RunFrom(at);
            const qsizetype runEnd = std::min(end, behind);
            const CharFormat& format = m_document.Format(number);
            if (format.Link != 0)
                at = WriteLink(at, end, format.Link);
            else {
                WriteRun(at, runEnd, format);
                at = runEnd;
            }
        }
    }

    /// A link holds all runs that lead to the same place.
    qsizetype WriteLink(qsizetype begin, qsizetype end, quint32 link)
    {
        m_out += "{\\field{\\*\\fldinst{HYPERLINK \"";
        AppendText(m_out, m_document.Link(link));
        m_out += "\"}}{\\fldrslt";
        const std::optional<CharFormat> outside = m_current;
        m_wordOpen = true; // behind the word of the group
        qsizetype at = begin;
        while (at < end) {
            const auto [number, behind] = RunFrom(at);
            const CharFormat& format = m_document.Format(number);
            if (format.Link != link)
                break;
            const qsizetype runEnd = std::min(end, behind);
            WriteRun(at, runEnd, format);
            at = runEnd;
        }
        m_out += "}}";
        m_wordOpen = false;
        m_current = outside; // a group takes its formats with it
        return at;
    }

    void WriteRun(qsizetype begin, qsizetype end, const CharFormat& format)
    {
        WriteFormat(format);
        if (format.Picture != 0)
            return WritePictures(begin, end, m_document.Picture(format.Picture));
        if (m_wordOpen)
            m_out += ' ';
        m_wordOpen = false;
        AppendText(m_out, QStringView(m_text).sliced(begin, end - begin));
    }

    void WritePictures(qsizetype begin, qsizetype end, const TextPicture& picture)
    {
        for (qsizetype i = begin; i < end; ++i) {
            m_out += picture.Type == TextPicture::Png ? "{\\pict\\pngblip" : "{\\pict\\jpegblip";
            if (picture.WidthGoal > 0)
                m_out += "\\picwgoal" + QByteArray::number(picture.WidthGoal);
            if (picture.HeightGoal > 0)
                m_out += "\\pichgoal" + QByteArray::number(picture.HeightGoal);
            m_out += ' ' + picture.Bytes.toHex() + '}';
        }
        m_wordOpen = false;
    }

    void WriteFormat(const CharFormat& format)
    {
        static const CharFormat nothing{.HalfPoints = 0};
        if (m_current == format)
            return;
        const bool first = !m_current;
        const CharFormat& now = first ? nothing : *m_current;
        if (first || now.Font != format.Font)
            Word("\\f" + QByteArray::number(m_fontNumbers[format.Font]));
        if (now.HalfPoints != format.HalfPoints)
            Word("\\fs" + QByteArray::number(format.HalfPoints));
        if (now.Bold != format.Bold)
            Word(Toggle("\\b", format.Bold));
        if (now.Italic != format.Italic)
            Word(Toggle("\\i", format.Italic));
        if (now.Underline != format.Underline)
            Word(format.Underline ? "\\ul" : "\\ulnone");
        if (now.Strike != format.Strike)
            Word(Toggle("\\strike", format.Strike));
        if (now.Protected != format.Protected)
            Word(Toggle("\\protect", format.Protected));
        if (now.Color != format.Color)
            Word("\\cf" + QByteArray::number(ColorNumber(format.Color)));
        if (now.BackColor != format.BackColor)
            Word("\\highlight" + QByteArray::number(ColorNumber(format.BackColor)));
        m_current = format;
    }

    int ColorNumber(quint32 color) const
    {
        const auto found = m_colorNumbers.find(color);
        return found == m_colorNumbers.end() ? 0 : found->second;
    }

    void Word(const QByteArray& word)
    {
        m_out += word;
        m_wordOpen = true; // a blank must come before the text
    }

    const RichTextDocument& m_document;
    const QString& m_text;
    RunMap::Iterator m_run = m_document.Runs().RunAt(0); ///< that was written last
    QByteArray m_out;
    std::vector<FontInfo> m_fonts;
    std::map<quint16, int> m_fontNumbers;
    std::vector<quint32> m_colors;
    std::map<quint32, int> m_colorNumbers;
    const ParagraphFormat* m_paragraph = nullptr; ///< of the paragraph before
    std::optional<CharFormat> m_current;          ///< as written last
    int m_listNumber = 0;
    bool m_wordOpen = false;
};

} // namespace

QString WriteRtf(const RichTextDocument& document)
{
    return Writer(document).Write();
}

namespace {

/// Where the group that names the language stands in an RTF string; an empty range when there is none.
std::pair<qsizetype, qsizetype> LanguageGroupIn(const QString& rtf)
{
    constexpr qsizetype LongestHead = 4096; // it stands at the begin
    static const QString opener = u"{\\*\\qblang "_s;
    const qsizetype begin = QStringView(rtf).first(std::min(rtf.size(), LongestHead)).indexOf(opener);
    int depth = 0;
    for (qsizetype at = begin; at >= 0 && at < rtf.size(); ++at) {
        if (rtf[at] == u'\\')
            ++at; // a brace behind it is a character
        else if (rtf[at] == u'{')
            ++depth;
        else if (rtf[at] == u'}' && --depth == 0)
            return {begin, at + 1};
    }
    return {0, 0};
}

} // namespace

QString LanguageInRtf(const QString& rtf)
{
    const auto [begin, end] = LanguageGroupIn(rtf);
    if (begin == end)
        return {};
    RichTextDocument document;
    ReadRtf(u"{\\rtf1\\ansi\\uc1"_s + rtf.mid(begin, end - begin) + u'}', document);
    return document.Language();
}

QString WithLanguageInRtf(const QString& rtf, const QString& language)
{
    static const QString signature = u"{\\rtf1"_s;
    if (!rtf.startsWith(signature))
        return rtf.isEmpty() || language.isEmpty() ? rtf : WithLanguageInRtf(RtfFromPlainText(rtf, CodeFont), language);
    const auto [begin, end] = LanguageGroupIn(rtf);
    QString changed = rtf;
    changed.remove(begin, end - begin);
    const qsizetype table = changed.indexOf(u"{\\fonttbl"_s);
    changed.insert(begin < end  ? begin
                   : table >= 0 ? table
                                : signature.size(),
                   QString::fromLatin1(LanguageGroup(language)));
    return changed;
}

} // namespace qb
