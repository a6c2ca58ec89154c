#include "platform/richtext/RichTextDocument.h"

#include <algorithm>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

constexpr QChar CR = u'\r';
constexpr QChar LF = u'\n';

CharFormat DefaultFormatOf(const RtfFont& font)
{
    CharFormat format;
    format.HalfPoints = quint16(font.Points * 2);
    return format;
}

/// Both are as long and have their line ends, or halves of them, at the same places.
bool HasSameLineEnds(QStringView left, QStringView right)
{
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [](QChar a, QChar b) { return a == b || (a != CR && a != LF && b != CR && b != LF); });
}

} // namespace

QString WithCrLf(const QString& text)
{
    QString result;
    qsizetype copied = 0;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const char16_t unit = text[i].unicode();
        if (unit > u'\r' || (unit != u'\r' && unit != u'\n'))
            continue;
        if (unit == u'\r' && i + 1 < text.size() && text[i + 1] == LF) {
            ++i; // a whole one
            continue;
        }
        if (copied == 0)
            result.reserve(text.size() + text.size() / 16);
        result += QStringView(text).sliced(copied, i - copied);
        result += "\r\n"_L1;
        copied = i + 1;
    }
    return copied == 0 ? text : result += QStringView(text).sliced(copied);
}

RichTextDocument::RichTextDocument(const RtfFont& font)
    : m_fonts(FontInfo{.Name = font.Name}), m_formats(DefaultFormatOf(font)), m_paragraphFormats(ParagraphFormat()),
      m_links(QString()), m_pictures(TextPicture()), m_tabStops(QList<qint32>())
{
}

void RichTextDocument::Clear()
{
    m_text.clear();
    m_language.clear();
    m_sourceForm.clear();
    m_runs.Clear(0);
    m_paragraphs.Clear(0);
    m_paragraphBegin = 0;
}

void RichTextDocument::Squeeze()
{
    m_text.squeeze();
    m_runs.Squeeze();
    m_paragraphs.Squeeze();
}

quint16 RichTextDocument::NumberOfFontName(const QString& name)
{
    for (quint32 i = 0; i < m_fonts.Count(); ++i) {
        if (m_fonts[i].Name == name)
            return quint16(i);
    }
    return NumberOfFont({.Name = name});
}

RichTextDocument::Range RichTextDocument::WithWholeLineEnds(qsizetype position, qsizetype length) const
{
    const auto splits = [this](qsizetype at) {
        return at > 0 && at < Length() && m_text[at] == LF && m_text[at - 1] == CR;
    };
    if (length > 0 && splits(position + length))
        ++length;
    if (splits(position)) {
        --position;
        length += length > 0 ? 1 : 0;
    }
    return {position, length};
}

qsizetype RichTextDocument::Replace(qsizetype position, qsizetype length, const QString& text, const CharFormat& format)
{
    const QStringView old = QStringView(m_text).sliced(position, length);
    if (HasSameLineEnds(old, text)) { // the commonest change, of a word's spelling or look, moves nothing
        if (old != text)
            std::copy(text.begin(), text.end(), m_text.begin() + position);
        m_runs.Set(position, position + length, NumberOf(format));
        return length;
    }
    const QString lines = WithCrLf(text);
    const Range whole = WithWholeLineEnds(position, length);
    position = whole.Begin;
    length = whole.Length;
    // What is left of whole paragraphs that go is the one behind them.
    const bool wholeOnes = lines.isEmpty() && ParagraphBegin(position) == position;
    const quint32 paragraph = m_paragraphs.ValueAt(wholeOnes ? position + length : position);
    m_text.replace(position, length, lines);
    m_runs.Erase(position, length);
    m_runs.Insert(position, lines.size(), NumberOf(format));
    m_paragraphs.Erase(position, length);
    m_paragraphs.Insert(position, lines.size(), paragraph);
    // The whole paragraph, as it is now, stands as its begin does.
    m_paragraphs.Set(ParagraphBegin(position), BehindParagraph(position + lines.size()), paragraph);
    return lines.size();
}

/// The number here of a format of another text.
quint32 RichTextDocument::Translate(const RichTextDocument& other, quint32 number)
{
    CharFormat format = other.Format(number);
    format.Font = NumberOfFont(other.Font(format.Font));
    format.Link = NumberOfLink(other.Link(format.Link));
    format.Picture = NumberOfPicture(other.Picture(format.Picture));
    return NumberOf(format);
}

qsizetype RichTextDocument::Replace(qsizetype position, qsizetype length, const RichTextDocument& other)
{
    const Range whole = WithWholeLineEnds(position, length);
    position = whole.Begin;
    Replace(position, whole.Length, other.Text(), other.DefaultFormat());
    const qsizetype end = other.Length();
    for (auto run = other.m_runs.RunAt(0); run != other.m_runs.End() && run->first < end;) {
        const auto next = std::next(run);
        const qsizetype runEnd = next == other.m_runs.End() ? end : std::min(end, next->first);
        m_runs.Set(position + run->first, position + runEnd, Translate(other, run->second));
        run = next;
    }
    // Paragraphs that come in whole bring their own stand.
    const qsizetype last = other.ParagraphBegin(end);
    for (auto run = other.m_paragraphs.RunAt(0); run != other.m_paragraphs.End() && run->first < last;) {
        const auto next = std::next(run);
        const qsizetype runEnd = next == other.m_paragraphs.End() ? last : std::min(last, next->first);
        ParagraphFormat format = other.Paragraph(run->second);
        format.Tabs = NumberOfTabStops(other.TabStops(format.Tabs));
        const qsizetype begin = run->first == 0 ? ParagraphBegin(position) : position + run->first;
        m_paragraphs.Set(begin, position + runEnd, NumberOf(format));
        run = next;
    }
    return end;
}

RichTextDocument RichTextDocument::Part(qsizetype position, qsizetype length) const
{
    RichTextDocument part(*this);
    if (position + length < Length()) {
        part.m_runs.Erase(position + length, Length() - position - length);
        part.m_paragraphs.Erase(position + length, Length() - position - length);
    }
    part.m_runs.Erase(0, position);
    part.m_paragraphs.Erase(0, position);
    part.m_text = m_text.mid(position, length);
    return part;
}

void RichTextDocument::ChangeFormat(qsizetype begin, qsizetype end, const std::function<void(CharFormat&)>& change)
{
    auto run = m_runs.RunAt(begin);
    for (qsizetype at = begin; at < end;) {
        const auto next = std::next(run);
        const qsizetype runEnd = next == m_runs.End() ? end : std::min(end, next->first);
        CharFormat format = m_formats[run->second];
        change(format);
        if (format == m_formats[run->second]) {
            run = next;
        } else {
            m_runs.Set(at, runEnd, NumberOf(format));
            run = m_runs.RunAt(runEnd);
        }
        at = runEnd;
    }
}

void RichTextDocument::SetParagraphs(qsizetype begin, qsizetype end, quint32 number)
{
    m_paragraphs.Set(ParagraphBegin(begin), BehindParagraph(end), number);
}

void RichTextDocument::ChangeParagraphs(qsizetype begin, qsizetype end,
                                        const std::function<void(ParagraphFormat&)>& change)
{
    qsizetype at = ParagraphBegin(begin);
    do {
        const qsizetype next = BehindParagraph(at);
        ParagraphFormat format = ParagraphAt(at);
        change(format);
        m_paragraphs.Set(at, next, NumberOf(format));
        at = next;
    } while (at < end);
}

qsizetype RichTextDocument::ParagraphBegin(qsizetype position) const
{
    return position == 0 ? 0 : m_text.lastIndexOf(LF, position - 1) + 1;
}

qsizetype RichTextDocument::ParagraphEnd(qsizetype position) const
{
    return std::min(BehindParagraph(position), Length());
}

/// The same; the last paragraph, which has no line end and may be empty, counts one position more.
qsizetype RichTextDocument::BehindParagraph(qsizetype position) const
{
    const qsizetype end = m_text.indexOf(LF, position);
    return end < 0 ? Length() + 1 : end + 1;
}

void RichTextDocument::Append(QStringView text, quint32 format)
{
    m_runs.Append(m_text.size(), format);
    m_text += text;
}

void RichTextDocument::EndParagraph(quint32 paragraph, quint32 format)
{
    Append(u"\r\n", format);
    m_paragraphs.Append(m_paragraphBegin, paragraph);
    m_paragraphBegin = m_text.size();
}

void RichTextDocument::FinishParagraph(quint32 paragraph)
{
    m_paragraphs.Append(m_paragraphBegin, paragraph);
}

void RichTextDocument::DropLastLineEnd()
{
    if (m_text.endsWith("\r\n"_L1))
        m_text.chop(2);
}

} // namespace qb
