// Groups, words and text of an RTF string.

#include "platform/richtext/RtfReader.h"

#include "platform/richtext/CodePages.h"
#include "platform/richtext/Rtf.h"

#include <algorithm>
#include <cctype>

namespace qb {

using namespace Qt::StringLiterals;

using Target = RtfTarget;

namespace {

constexpr size_t DeepestNesting = 2000;
constexpr qsizetype LargestPicture = 64 * 1024 * 1024;
constexpr qsizetype LongestInstruction = 65536;
constexpr qsizetype LongestLanguage = 64;
constexpr qsizetype LongestSourceForm = 1024;

} // namespace

RtfReader::RtfReader(const QString& rtf, RichTextDocument& document) : m_tokens(rtf), m_document(document)
{
    m_state.Format = document.DefaultFormat();
    m_state.Format.HalfPoints = PlainHalfPoints;
}

void RtfReader::Read()
{
    for (RtfToken token = m_tokens.Next(); token.What != RtfToken::End; token = m_tokens.Next())
        Take(token);
    FlushBytes();
    if (m_endedByParagraph)
        m_document.DropLastLineEnd();
    else // the state of the outermost group, which may have been closed by now
        m_document.FinishParagraph(m_lastParagraph.value_or(ParagraphNumber()));
}

void RtfReader::Take(const RtfToken& token)
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

void RtfReader::BeginGroup()
{
    m_skipFallback = 0;
    if (m_outer.size() >= DeepestNesting) {
        ++m_tooDeep; // what is deeper shares one state
        return;
    }
    m_outer.push_back(m_state);
    m_state.Starred = false;
}

void RtfReader::EndGroup()
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
    if (ended.Where != m_state.Where)
        EndDestination(ended);
}

void RtfReader::EndDestination(const State& ended)
{
    switch (ended.Where) {
    case Target::Picture:
        return AppendPicture();
    case Target::FieldInstruction:
        m_state.Link = LinkOf(m_instruction);
        return;
    case Target::Numbering:
        m_state.Paragraph.List = ended.Paragraph.List;
        m_state.Paragraph.ListStart = ended.Paragraph.ListStart;
        return;
    case Target::FontTable:
        return FinishFonts();
    case Target::Language:
        return m_document.SetLanguage(m_language.trimmed());
    case Target::SourceForm:
        return m_document.SetSourceForm(m_sourceForm.trimmed());
    default:
        return;
    }
}

// Words

void RtfReader::TakeWord(const RtfToken& token)
{
    const auto found = RtfWords().constFind(token.Text);
    if (found != RtfWords().constEnd())
        Do(*found, token);
    else if (m_state.Starred)
        m_state.Where = Target::Skip;
    m_state.Starred = false;
}

/// In what is skipped only a body is begun, which holds text of the document again.
void RtfReader::Do(const RtfMeaning& meaning, const RtfToken& token)
{
    if (m_state.Where == Target::Skip && meaning.Sets != Target::Body)
        return;
    m_word = token.Text;
    Set(meaning.Sets, meaning.ValueOf(token.HasNumber, token.Number));
}

// Symbols, bytes and text

void RtfReader::TakeSymbol(QStringView symbol)
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

void RtfReader::TakeByte(uchar byte)
{
    if (m_skipFallback > 0) {
        --m_skipFallback;
        return;
    }
    m_bytes += char(byte);
}

/// The last of the bytes is the first half of a character.
bool RtfReader::EndsInLeadByte() const
{
    qsizetype at = 0;
    while (at < m_bytes.size())
        at += IsLeadByte(CurrentCodePage(), uchar(m_bytes[at])) ? 2 : 1;
    return at > m_bytes.size();
}

void RtfReader::FlushBytes()
{
    if (m_bytes.isEmpty())
        return;
    const QString text = DecodeCodePage(m_bytes, m_state.Where == Target::FontTable ? m_fonts.CodePageOfName()
                                                                                    : CurrentCodePage());
    m_bytes.clear();
    Route(text);
}

void RtfReader::TakeText(QStringView text)
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

void RtfReader::TakeBinary(QStringView bytes)
{
    if (m_state.Where == Target::Picture && bytes.size() <= LargestPicture)
        m_picture.Binary = bytes.toLatin1();
}

void RtfReader::Route(QStringView text)
{
    switch (m_state.Where) {
    case Target::Body:
        return Append(text);
    case Target::FontTable:
        return m_fonts.TakeText(text, m_document);
    case Target::ColorTable:
        return m_colors.TakeText(text);
    case Target::Picture:
        if (m_picture.Digits.size() < 2 * LargestPicture)
            m_picture.Digits += text.toLatin1();
        return;
    case Target::FieldInstruction:
        if (m_instruction.size() < LongestInstruction)
            m_instruction += text;
        return;
    case Target::Language:
        m_language += text.first(std::min(text.size(), LongestLanguage - m_language.size()));
        return;
    case Target::SourceForm:
        m_sourceForm += text.first(std::min(text.size(), LongestSourceForm - m_sourceForm.size()));
        return;
    default:
        return;
    }
}

// The text itself

quint32 RtfReader::FormatNumber()
{
    if (!m_formatKnown) {
        m_formatNumber = m_document.NumberOf(m_state.Format);
        m_formatKnown = true;
    }
    return m_formatNumber;
}

quint32 RtfReader::ParagraphNumber()
{
    m_state.Paragraph.Tabs = m_document.NumberOfTabStops(m_state.Tabs);
    ParagraphFormat paragraph = m_state.Paragraph;
    if (paragraph.List == ListKind::None || paragraph.List == ListKind::Bullet)
        paragraph.ListStart = 1; // only numbers begin somewhere
    return m_document.NumberOf(paragraph);
}

void RtfReader::Append(QStringView text)
{
    if (m_state.Where != Target::Body || text.isEmpty())
        return;
    if (text.contains(u'\r') || text.contains(u'\n'))
        return AppendLines(text);
    m_behindCr = false;
    FlushCells();
    m_document.Append(text, FormatNumber());
    m_endedByParagraph = false;
}

/// Line ends that came as characters are line ends.
void RtfReader::AppendLines(QStringView text)
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

void RtfReader::FlushCells()
{
    if (m_pendingCells == 0)
        return;
    m_document.Append(QString(m_pendingCells, u'\t'), FormatNumber());
    m_pendingCells = 0;
    m_endedByParagraph = false;
}

void RtfReader::EndParagraph()
{
    if (m_state.Where != Target::Body)
        return;
    FlushCells();
    m_document.EndParagraph(ParagraphNumber(), FormatNumber());
    m_endedByParagraph = false;
}

void RtfReader::AppendPicture()
{
    const PictureData data = std::exchange(m_picture, {});
    QByteArray digits = data.Digits;
    digits.removeIf([](char c) { return !std::isxdigit(uchar(c)); });
    digits.chop(digits.size() % 2); // half a byte is none
    const QByteArray bytes = data.Binary.isEmpty() ? QByteArray::fromHex(digits) : data.Binary;
    if (data.Kind == UnknownPicture || bytes.isEmpty() || bytes.size() > LargestPicture
        || m_state.Where != Target::Body)
        return;
    CharFormat format = m_state.Format;
    format.Picture = m_document.NumberOfPicture({TextPicture::Kind(data.Kind), bytes, data.Width, data.Height});
    const QChar character{RichTextDocument::PictureCharacter};
    FlushCells();
    m_document.Append(QStringView(&character, 1), m_document.NumberOf(format));
    m_endedByParagraph = false;
}

/// The target of an instruction `HYPERLINK "target"`; 0 for any other instruction.
quint32 RtfReader::LinkOf(const QString& instruction)
{
    const QString text = instruction.trimmed();
    if (!text.startsWith("HYPERLINK"_L1, Qt::CaseInsensitive))
        return 0;
    const QString quoted = text.section(u'"', 1, 1);
    QString target = quoted.isEmpty() ? text.section(u' ', 1, 1, QString::SectionSkipEmpty) : quoted;
    return m_document.NumberOfLink(target.remove(u'"'));
}

void ReadRtf(const QString& rtf, RichTextDocument& document)
{
    document.Clear();
    if (rtf.startsWith("{\\rtf"_L1))
        RtfReader(rtf, document).Read();
    else
        document.Replace(0, 0, rtf, document.DefaultFormat());
}

} // namespace qb
