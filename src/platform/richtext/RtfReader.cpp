#include "platform/richtext/CodePages.h"
#include "platform/richtext/Rtf.h"
#include "platform/richtext/RtfTables.h"
#include "platform/richtext/RtfTokenizer.h"
#include "platform/richtext/RtfWords.h"

#include <algorithm>
#include <cctype>
#include <optional>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

using Action = RtfAction;
using Meaning = RtfMeaning;

constexpr size_t DeepestNesting = 2000;
constexpr qsizetype LargestPicture = 64 * 1024 * 1024;

/// Where the text of a group goes.
enum class Destination {
    Body,
    Skip,
    FontTable,
    ColorTable,
    ListTable,
    ListOverrides,
    Picture,
    FieldInstruction,
    Numbering,
    Language
};

class Reader {
public:
    Reader(const QString& rtf, RichTextDocument& document) : m_tokens(rtf), m_document(document)
    {
        m_state.Format = document.DefaultFormat();
        m_state.Format.HalfPoints = PlainHalfPoints;
    }

    void Read()
    {
        for (RtfToken token = m_tokens.Next(); token.What != RtfToken::End; token = m_tokens.Next())
            Take(token);
        FlushBytes();
        if (m_endedByParagraph)
            m_document.DropLastLineEnd();
        else // the state of the outermost group, which may have been closed by now
            m_document.FinishParagraph(m_lastParagraph.value_or(ParagraphNumber()));
    }

private:
    static constexpr quint16 PlainHalfPoints = 24;

    struct State {
        Destination Where = Destination::Body;
        CharFormat Format;
        ParagraphFormat Paragraph;
        QList<qint32> Tabs;
        int FallbackLength = 1; ///< characters behind a \u for readers without Unicode
        int CodePage = 0;       ///< of the font; 0: of the document
        int List = 0;           ///< the number by which the text names its list; 0: none
        quint32 Link = 0;       ///< of the field whose group this is
        bool InTable = false;
        bool Starred = false; ///< the group began with \*: an unknown word means that it is skipped
    };

    void Take(const RtfToken& token)
    {
        const bool isText = token.What == RtfToken::Byte || token.What == RtfToken::Characters
                            || token.What == RtfToken::Symbol;
        if (!isText)
            FlushBytes();
        switch (token.What) {
        case RtfToken::GroupBegin:
            return BeginGroup();
        case RtfToken::GroupEnd:
            return EndGroup();
        case RtfToken::Word:
            return TakeWord(token);
        case RtfToken::Symbol:
            return TakeSymbol(token.Text);
        case RtfToken::Byte:
            return TakeByte(uchar(token.Number));
        case RtfToken::Binary:
            return TakeBinary(token.Text);
        case RtfToken::Characters:
            return TakeText(token.Text);
        case RtfToken::End:
            return;
        }
    }

    void BeginGroup()
    {
        m_skipFallback = 0;
        if (m_outer.size() >= DeepestNesting) {
            ++m_tooDeep; // what is deeper shares one state
            return;
        }
        m_outer.push_back(m_state);
        m_state.Starred = false;
    }

    void EndGroup()
    {
        m_skipFallback = 0;
        if (m_tooDeep > 0) {
            --m_tooDeep;
            return;
        }
        if (m_outer.empty())
            return;
        if (m_outer.size() == 1)
            m_lastParagraph = ParagraphNumber();
        const State ended = std::move(m_state);
        m_state = std::move(m_outer.back());
        m_outer.pop_back();
        m_formatKnown = false;
        if (ended.Where == m_state.Where)
            return;
        if (ended.Where == Destination::Picture)
            AppendPicture();
        else if (ended.Where == Destination::FieldInstruction)
            m_state.Link = LinkOf(m_instruction);
        else if (ended.Where == Destination::Numbering)
            TakeNumbering(ended.Paragraph);
        else if (ended.Where == Destination::FontTable)
            FinishFonts();
        else if (ended.Where == Destination::Language)
            m_document.SetLanguage(m_language.trimmed());
    }

    void TakeNumbering(const ParagraphFormat& from)
    {
        m_state.Paragraph.List = from.List;
        m_state.Paragraph.ListStart = from.ListStart;
    }

    // Words

    void TakeWord(const RtfToken& token)
    {
        const auto found = RtfWords().constFind(token.Text);
        if (found == RtfWords().constEnd()) {
            if (m_state.Starred)
                m_state.Where = Destination::Skip;
            m_state.Starred = false;
            return;
        }
        const int number = token.HasNumber ? token.Number : 1;
        Do(*found, number, token);
        m_state.Starred = false;
    }

    void Do(const Meaning& meaning, int number, const RtfToken& token)
    {
        if (meaning.Does >= Action::BeginSkip)
            return Begin(meaning.Does);
        if (m_state.Where == Destination::Skip)
            return;
        if (meaning.Does >= Action::BulletLevel)
            return DoForTables(meaning, number);
        if (meaning.Does >= Action::CodePage)
            return DoForHeader(meaning, number, token);
        if (meaning.Does >= Action::Paragraph)
            return DoForText(meaning, number);
        if (meaning.Does >= Action::ResetParagraph)
            return DoForParagraph(meaning.Does, number);
        DoForCharacters(meaning.Does, number, token.HasNumber);
    }

    void DoForCharacters(Action action, int number, bool hasNumber)
    {
        CharFormat& format = m_state.Format;
        m_formatKnown = false;
        switch (action) {
        case Action::Bold:
            format.Bold = number != 0;
            break;
        case Action::Italic:
            format.Italic = number != 0;
            break;
        case Action::Underline:
            format.Underline = number != 0;
            break;
        case Action::NoUnderline:
            format.Underline = 0;
            break;
        case Action::Strike:
            format.Strike = number != 0;
            break;
        case Action::Protect:
            format.Protected = number != 0;
            break;
        case Action::Color:
            format.Color = m_colors.Find(hasNumber ? number : 0);
            break;
        case Action::BackColor:
            format.BackColor = m_colors.Find(hasNumber ? number : 0);
            break;
        case Action::Font:
            SetFont(hasNumber ? number : 0);
            break;
        case Action::Size:
            format.HalfPoints = quint16(std::clamp(hasNumber ? number : int(PlainHalfPoints), 1, 3276));
            break;
        default: // Plain
            format = m_document.DefaultFormat();
            format.HalfPoints = PlainHalfPoints;
            SetFont(m_defaultFont);
            break;
        }
    }

    void DoForParagraph(Action action, int number)
    {
        ParagraphFormat& paragraph = m_state.Paragraph;
        switch (action) {
        case Action::AlignLeft:
            paragraph.Alignment = TextAlignment::Left;
            break;
        case Action::AlignRight:
            paragraph.Alignment = TextAlignment::Right;
            break;
        case Action::AlignCenter:
            paragraph.Alignment = TextAlignment::Center;
            break;
        case Action::Justify:
            paragraph.Alignment = TextAlignment::Justified;
            break;
        case Action::LeftIndent:
            paragraph.LeftIndent = number;
            break;
        case Action::FirstIndent:
            paragraph.FirstIndent = number;
            break;
        case Action::RightIndent:
            paragraph.RightIndent = number;
            break;
        case Action::TabStop:
            if (m_state.Tabs.size() < MostTabs)
                m_state.Tabs << number;
            break;
        default: // ResetParagraph
            paragraph = {};
            m_state.List = 0;
            m_state.Tabs.clear();
            m_state.InTable = false;
            break;
        }
    }

    void DoForText(const Meaning& meaning, int number)
    {
        switch (meaning.Does) {
        case Action::Paragraph:
            if (m_state.InTable)
                return Append(u" "); // a cell is one line of its row
            EndParagraph();
            m_endedByParagraph = m_state.Where == Destination::Body;
            return;
        case Action::Line:
            return EndParagraph();
        case Action::Cell:
            m_pendingCells += m_state.Where == Destination::Body;
            return;
        case Action::Row:
            m_pendingCells -= m_pendingCells > 0; // the last cell has no other behind it
            return EndParagraph();
        case Action::InTable:
            m_state.InTable = true;
            return;
        case Action::Character: {
            if (m_skipFallback > 0) { // it stands for the character that came before
                --m_skipFallback;
                return;
            }
            const QChar character{char16_t(meaning.Value)};
            return Route(QStringView(&character, 1));
        }
        case Action::Unicode: {
            const QChar character{char16_t(number)};
            Route(QStringView(&character, 1));
            m_skipFallback = m_state.FallbackLength;
            return;
        }
        default: // FallbackLength
            m_state.FallbackLength = std::clamp(number, 0, 16);
            return;
        }
    }

    void DoForHeader(const Meaning& meaning, int number, const RtfToken& token)
    {
        switch (meaning.Does) {
        case Action::CodePage:
            m_codePage = meaning.Value ? meaning.Value : number;
            break;
        case Action::DefaultFont:
            m_defaultFont = token.HasNumber ? token.Number : 0;
            break;
        case Action::FontCharSet:
            m_fonts.SetCharSet(token.HasNumber ? token.Number : 0);
            break;
        case Action::FontFamily:
            m_fonts.SetFamily(token.Text.sliced(1).toString());
            break;
        case Action::Red:
            m_colors.SetPart(number, 0);
            break;
        case Action::Green:
            m_colors.SetPart(number, 8);
            break;
        default: // Blue
            m_colors.SetPart(number, 16);
            break;
        }
    }

    void DoForTables(const Meaning& meaning, int number)
    {
        ParagraphFormat& paragraph = m_state.Paragraph;
        switch (meaning.Does) {
        case Action::BulletLevel:
            paragraph.List = ListKind::Bullet;
            break;
        case Action::NumberLevel:
            paragraph.List = ListKind::Decimal;
            break;
        case Action::NumberKind:
            paragraph.List = ListKind(meaning.Value);
            break;
        case Action::NumberStart:
            paragraph.ListStart = quint16(std::clamp(number, 0, 32767));
            break;
        case Action::ListNumber:
            TakeListNumber(number);
            break;
        case Action::ListLevel:
            paragraph.ListLevel = quint8(std::clamp(number, 0, 8));
            if (m_state.List != 0)
                paragraph.List = m_lists.Find(m_state.List, paragraph.ListLevel);
            break;
        case Action::List:
            m_lists.BeginList();
            break;
        case Action::ListLevelBegin:
            m_lists.BeginLevel();
            break;
        case Action::LevelKind:
            m_lists.SetLevelKind(number);
            break;
        case Action::ListId:
            m_state.Where == Destination::ListTable ? m_lists.SetListId(number) : m_lists.SetOverriddenId(number);
            break;
        case Action::Override:
            break;
        case Action::Png:
            m_pictureKind = TextPicture::Png;
            m_pictureKnown = true;
            break;
        case Action::Jpeg:
            m_pictureKind = TextPicture::Jpeg;
            m_pictureKnown = true;
            break;
        case Action::OtherPicture:
            m_pictureKnown = false;
            break;
        case Action::PictureWidth:
            m_pictureWidth = std::max(0, number);
            break;
        default: // PictureHeight
            m_pictureHeight = std::max(0, number);
            break;
        }
    }

    void Begin(Action action)
    {
        if (m_state.Where == Destination::Skip && action != Action::BeginBody)
            return;
        switch (action) {
        case Action::BeginBody:
            m_state.Where = Destination::Body;
            break;
        case Action::BeginFontTable:
            m_state.Where = Destination::FontTable;
            break;
        case Action::BeginColorTable:
            m_state.Where = Destination::ColorTable;
            break;
        case Action::BeginListTable:
            m_state.Where = Destination::ListTable;
            break;
        case Action::BeginListOverrides:
            m_state.Where = Destination::ListOverrides;
            break;
        case Action::BeginPicture:
            m_state.Where = Destination::Picture;
            m_picture.clear();
            m_pictureKnown = false;
            m_pictureWidth = m_pictureHeight = 0;
            break;
        case Action::BeginFieldInstruction:
            m_state.Where = Destination::FieldInstruction;
            m_instruction.clear();
            break;
        case Action::BeginFieldResult:
            m_state.Format.Link = m_outer.empty() ? 0 : m_outer.back().Link;
            m_formatKnown = false;
            break;
        case Action::BeginNumbering:
            m_state.Where = Destination::Numbering;
            break;
        case Action::BeginLanguage:
            m_state.Where = Destination::Language;
            m_language.clear();
            break;
        default: // BeginSkip
            m_state.Where = Destination::Skip;
            break;
        }
    }

    // Symbols, bytes and text

    void TakeSymbol(QStringView symbol)
    {
        if (symbol == u"*") {
            FlushBytes();
            m_state.Starred = true;
            return;
        }
        struct Row {
            QStringView Symbol;
            QStringView Text;
        };
        static constexpr Row rows[] = {{u"\\", u"\\"},    {u"{", u"{"},      {u"}", u"}"},  {u"~", u"\u00a0"},
                                       {u"_", u"\u2011"}, {u"-", u"\u00ad"}, {u"\t", u"\t"}};
        for (const Row& row : rows) {
            if (row.Symbol == symbol)
                return TakeText(row.Text);
        }
        FlushBytes();
        if (symbol == u"\r" || symbol == u"\n")
            EndParagraph();
    }

    void TakeByte(uchar byte)
    {
        if (m_skipFallback > 0) {
            --m_skipFallback;
            return;
        }
        m_bytes += char(byte);
    }

    int CurrentCodePage() const { return m_state.CodePage ? m_state.CodePage : m_codePage; }

    /// The last of the bytes is the first half of a character.
    bool EndsInLeadByte() const
    {
        qsizetype at = 0;
        while (at < m_bytes.size())
            at += IsLeadByte(CurrentCodePage(), uchar(m_bytes[at])) ? 2 : 1;
        return at > m_bytes.size();
    }

    void FlushBytes()
    {
        if (m_bytes.isEmpty())
            return;
        const QString text = DecodeCodePage(m_bytes, m_state.Where == Destination::FontTable ? m_fonts.CodePageOfName()
                                                                                             : CurrentCodePage());
        m_bytes.clear();
        Route(text);
    }

    void TakeText(QStringView text)
    {
        const qsizetype skipped = std::min(qsizetype(m_skipFallback), text.size());
        m_skipFallback -= int(skipped);
        text = text.sliced(skipped);
        if (text.isEmpty())
            return;
        // The second byte of a character may stand as an ordinary letter.
        if (EndsInLeadByte() && text.front().unicode() < 0x100) {
            m_bytes += char(text.front().unicode());
            text = text.sliced(1);
        }
        FlushBytes();
        Route(text);
    }

    void TakeBinary(QStringView bytes)
    {
        if (m_state.Where == Destination::Picture && bytes.size() <= LargestPicture)
            m_pictureBinary = bytes.toLatin1();
    }

    void Route(QStringView text)
    {
        switch (m_state.Where) {
        case Destination::Body:
            return Append(text);
        case Destination::FontTable:
            return m_fonts.TakeText(text, m_document);
        case Destination::ColorTable:
            return m_colors.TakeText(text);
        case Destination::Picture:
            if (m_picture.size() < 2 * LargestPicture)
                m_picture += text.toLatin1();
            return;
        case Destination::FieldInstruction:
            if (m_instruction.size() < LongestInstruction)
                m_instruction += text;
            return;
        case Destination::Language:
            m_language += text.first(std::min(text.size(), LongestLanguage - m_language.size()));
            return;
        default:
            return;
        }
    }

    // The text itself

    quint32 FormatNumber()
    {
        if (!m_formatKnown) {
            m_formatNumber = m_document.NumberOf(m_state.Format);
            m_formatKnown = true;
        }
        return m_formatNumber;
    }

    quint32 ParagraphNumber()
    {
        m_state.Paragraph.Tabs = m_document.NumberOfTabStops(m_state.Tabs);
        ParagraphFormat paragraph = m_state.Paragraph;
        if (paragraph.List == ListKind::None || paragraph.List == ListKind::Bullet)
            paragraph.ListStart = 1; // only numbers begin somewhere
        return m_document.NumberOf(paragraph);
    }

    void Append(QStringView text)
    {
        if (m_state.Where != Destination::Body || text.isEmpty())
            return;
        if (text.contains(u'\r') || text.contains(u'\n'))
            return AppendLines(text);
        m_behindCr = false;
        FlushCells();
        m_document.Append(text, FormatNumber());
        m_endedByParagraph = false;
    }

    /// Line ends that came as characters are line ends.
    void AppendLines(QStringView text)
    {
        for (const QChar& character : text) {
            if (character != u'\r' && character != u'\n') {
                Append(QStringView(&character, 1));
                continue;
            }
            if (character == u'\r' || !m_behindCr)
                EndParagraph();
            m_behindCr = character == u'\r';
        }
    }

    void FlushCells()
    {
        if (m_pendingCells == 0)
            return;
        m_document.Append(QString(m_pendingCells, u'\t'), FormatNumber());
        m_pendingCells = 0;
        m_endedByParagraph = false;
    }

    void EndParagraph()
    {
        if (m_state.Where != Destination::Body)
            return;
        FlushCells();
        m_document.EndParagraph(ParagraphNumber(), FormatNumber());
        m_endedByParagraph = false;
    }

    void AppendPicture()
    {
        m_picture.removeIf([](char c) { return !std::isxdigit(uchar(c)); });
        m_picture.chop(m_picture.size() % 2); // half a byte is none
        const QByteArray bytes = m_pictureBinary.isEmpty() ? QByteArray::fromHex(m_picture) : m_pictureBinary;
        m_picture.clear();
        m_pictureBinary.clear();
        if (!m_pictureKnown || bytes.isEmpty() || bytes.size() > LargestPicture || m_state.Where != Destination::Body)
            return;
        CharFormat format = m_state.Format;
        format.Picture = m_document.NumberOfPicture({m_pictureKind, bytes, m_pictureWidth, m_pictureHeight});
        const QChar character{RichTextDocument::PictureCharacter};
        FlushCells();
        m_document.Append(QStringView(&character, 1), m_document.NumberOf(format));
        m_endedByParagraph = false;
    }

    /// The target of an instruction `HYPERLINK "target"`; 0 for any other instruction.
    quint32 LinkOf(const QString& instruction)
    {
        const QString text = instruction.trimmed();
        if (!text.startsWith("HYPERLINK"_L1, Qt::CaseInsensitive))
            return 0;
        const QString quoted = text.section(u'"', 1, 1);
        QString target = quoted.isEmpty() ? text.section(u' ', 1, 1, QString::SectionSkipEmpty) : quoted;
        return m_document.NumberOfLink(target.remove(u'"'));
    }

    // Tables

    void SetFont(int number)
    {
        if (m_state.Where == Destination::FontTable)
            return m_fonts.Begin(number, m_document);
        if (const RtfFonts::Entry* font = m_fonts.Find(number)) {
            m_state.Format.Font = font->Number;
            m_state.CodePage = font->CodePage;
        }
    }

    /// What has no font of its own so far is in the default one.
    void FinishFonts()
    {
        m_fonts.Finish(m_document);
        SetFont(m_defaultFont);
        for (State& outer : m_outer) {
            outer.Format.Font = m_state.Format.Font;
            outer.CodePage = m_state.CodePage;
        }
    }

    /// In the table of overrides: which list a number means. In the text: the list of the paragraph.
    void TakeListNumber(int number)
    {
        if (m_state.Where == Destination::ListOverrides)
            return m_lists.NameOverride(number);
        m_state.List = number;
        m_state.Paragraph.List = m_lists.Find(number, m_state.Paragraph.ListLevel);
    }

    static constexpr qsizetype MostTabs = 64;
    static constexpr qsizetype LongestInstruction = 65536;
    static constexpr qsizetype LongestLanguage = 64;

    RtfTokenizer m_tokens;
    RichTextDocument& m_document;
    State m_state;
    std::vector<State> m_outer;
    size_t m_tooDeep = 0;
    int m_skipFallback = 0;
    int m_codePage = 1252;
    QByteArray m_bytes;           ///< of the code page, not decoded yet
    qsizetype m_pendingCells = 0; ///< ends of cells before which nothing has come since
    bool m_endedByParagraph = false;
    bool m_behindCr = false; ///< a line feed that comes now belongs to the line end before
    std::optional<quint32> m_lastParagraph;
    bool m_formatKnown = false;
    quint32 m_formatNumber = 0;

    RtfFonts m_fonts;
    RtfColors m_colors;
    RtfLists m_lists;
    int m_defaultFont = 0;
    QString m_instruction;
    QString m_language;
    QByteArray m_picture; ///< in hexadecimal digits
    QByteArray m_pictureBinary;
    TextPicture::Kind m_pictureKind = TextPicture::Png;
    bool m_pictureKnown = false;
    int m_pictureWidth = 0;
    int m_pictureHeight = 0;
};

} // namespace

void ReadRtf(const QString& rtf, RichTextDocument& document)
{
    document.Clear();
    if (rtf.startsWith("{\\rtf"_L1))
        Reader(rtf, document).Read();
    else
        document.Replace(0, 0, rtf, document.DefaultFormat());
}

} // namespace qb
