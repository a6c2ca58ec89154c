#include "platform/richtext/RichText.h"

#include "platform/richtext/Rtf.h"

#include <algorithm>

namespace qb {

void RichText::MoveTo(qsizetype position)
{
    m_start = position;
    m_length = 0;
    m_typing.reset();
}

void RichText::SetText(const QString& text)
{
    m_document.Clear();
    m_document.Replace(0, 0, text, m_document.DefaultFormat());
    MoveTo(0);
}

QString RichText::TextRTF() const
{
    return WriteRtf(m_document);
}

void RichText::SetTextRTF(const QString& rtf)
{
    ReadRtf(rtf, m_document);
    MoveTo(0);
}

void RichText::SetSelStart(qsizetype position)
{
    MoveTo(std::clamp(position, qsizetype(0), m_document.Length()));
}

void RichText::SetSelLength(qsizetype length)
{
    m_length = std::clamp(length, qsizetype(0), m_document.Length() - m_start);
    m_typing.reset();
}

/// What is typed takes the look of the character before it; at the begin of a paragraph, of the
/// one behind.
CharFormat RichText::InsertionFormat() const
{
    if (m_typing)
        return *m_typing;
    const QString& text = m_document.Text();
    const bool begins = m_start == 0 || (m_start < text.size() && text[m_start - 1] == u'\n');
    CharFormat format = m_document.FormatAt(m_length > 0 || begins ? m_start : m_start - 1);
    format.Picture = 0;
    return format;
}

bool RichText::IsProtected(qsizetype position, qsizetype length) const
{
    const auto guarded = [this](qsizetype at) {
        return at >= 0 && at < m_document.Length() && m_document.FormatAt(at).Protected;
    };
    if (length == 0) // between two protected characters
        return guarded(position - 1) && guarded(position);
    for (auto run = m_document.Runs().RunAt(position); run != m_document.Runs().End() && run->first < position + length;
         ++run) {
        if (m_document.Format(run->second).Protected)
            return true;
    }
    return false;
}

bool RichText::SetSelText(const QString& text)
{
    if (IsProtected(m_start, m_length))
        return false;
    CharFormat format = InsertionFormat();
    if (!m_typing)
        format.Protected = 0; // what comes in beside a protected text is not part of it
    const RichTextDocument::Range range = m_document.WithWholeLineEnds(m_start, m_length);
    MoveTo(range.Begin + m_document.Replace(range.Begin, range.Length, text, format));
    return true;
}

QString RichText::SelRTF() const
{
    return WriteRtf(m_document.Part(m_start, m_length));
}

bool RichText::SetSelRTF(const QString& rtf)
{
    if (IsProtected(m_start, m_length))
        return false;
    RichTextDocument part;
    ReadRtf(rtf, part);
    const RichTextDocument::Range range = m_document.WithWholeLineEnds(m_start, m_length);
    MoveTo(range.Begin + m_document.Replace(range.Begin, range.Length, part));
    return true;
}

// Characters

template <class Change>
void RichText::ChangeSelection(Change&& change)
{
    if (m_length > 0) {
        m_document.ChangeFormat(m_start, m_start + m_length, change);
        return;
    }
    CharFormat format = InsertionFormat();
    if (!m_typing)
        format.Protected = 0; // what is typed beside a protected text is not part of it
    change(format);
    m_typing = format;
}

template <class Read>
auto RichText::ReadSelection(Read&& read) const -> std::optional<decltype(read(CharFormat()))>
{
    if (m_length == 0)
        return read(InsertionFormat());
    auto run = m_document.Runs().RunAt(m_start);
    const auto first = read(m_document.Format(run->second));
    for (++run; run != m_document.Runs().End() && run->first < m_start + m_length; ++run) {
        if (read(m_document.Format(run->second)) != first)
            return std::nullopt;
    }
    return first;
}

std::optional<quint32> RichText::SelColor() const
{
    return ReadSelection([](const CharFormat& format) { return format.Color == AutomaticColor ? 0 : format.Color; });
}

void RichText::SetSelColor(quint32 color)
{
    ChangeSelection([color](CharFormat& format) { format.Color = color; });
}

std::optional<bool> RichText::SelBold() const
{
    return ReadSelection([](const CharFormat& format) { return bool(format.Bold); });
}

void RichText::SetSelBold(bool on)
{
    ChangeSelection([on](CharFormat& format) { format.Bold = on; });
}

std::optional<bool> RichText::SelItalic() const
{
    return ReadSelection([](const CharFormat& format) { return bool(format.Italic); });
}

void RichText::SetSelItalic(bool on)
{
    ChangeSelection([on](CharFormat& format) { format.Italic = on; });
}

std::optional<bool> RichText::SelUnderline() const
{
    return ReadSelection([](const CharFormat& format) { return bool(format.Underline); });
}

void RichText::SetSelUnderline(bool on)
{
    ChangeSelection([on](CharFormat& format) { format.Underline = on; });
}

std::optional<bool> RichText::SelProtected() const
{
    return ReadSelection([](const CharFormat& format) { return bool(format.Protected); });
}

void RichText::SetSelProtected(bool on)
{
    ChangeSelection([on](CharFormat& format) { format.Protected = on; });
}

std::optional<QString> RichText::SelFontName() const
{
    return ReadSelection([this](const CharFormat& format) { return m_document.Font(format.Font).Name; });
}

void RichText::SetSelFontName(const QString& name)
{
    const quint16 font = m_document.NumberOfFontName(name);
    ChangeSelection([font](CharFormat& format) { format.Font = font; });
}

std::optional<double> RichText::SelFontSize() const
{
    return ReadSelection([](const CharFormat& format) { return format.HalfPoints / 2.0; });
}

void RichText::SetSelFontSize(double points)
{
    const auto halfPoints = quint16(std::clamp(points * 2, 2.0, 3276.0));
    ChangeSelection([halfPoints](CharFormat& format) { format.HalfPoints = halfPoints; });
}

// Paragraphs

template <class Read>
auto RichText::ReadParagraphs(Read&& read) const -> std::optional<decltype(read(ParagraphFormat()))>
{
    const qsizetype begin = m_document.ParagraphBegin(m_start);
    auto run = m_document.ParagraphRuns().RunAt(begin);
    const auto first = read(m_document.Paragraph(run->second));
    for (++run; run != m_document.ParagraphRuns().End() && run->first < m_start + m_length; ++run) {
        if (read(m_document.Paragraph(run->second)) != first)
            return std::nullopt;
    }
    return first;
}

std::optional<bool> RichText::SelBullet() const
{
    return ReadParagraphs([](const ParagraphFormat& format) { return format.List == ListKind::Bullet; });
}

void RichText::SetSelBullet(bool on)
{
    m_document.ChangeParagraphs(m_start, m_start + m_length, [this, on](ParagraphFormat& format) {
        if ((format.List == ListKind::Bullet) == on)
            return;
        format.List = on ? ListKind::Bullet : ListKind::None;
        HangBy(format, on ? m_bulletIndent : 0);
    });
}

void RichText::SetBulletIndent(int twips)
{
    m_bulletIndent = twips;
    m_document.ChangeParagraphs(m_start, m_start + m_length, [twips](ParagraphFormat& format) {
        if (format.List == ListKind::Bullet)
            HangBy(format, twips);
    });
}

/// The bullet of a paragraph stands at its indent, the text hangs behind it by so much.
void RichText::HangBy(ParagraphFormat& format, int twips)
{
    format.LeftIndent = std::max(0, format.LeftIndent + format.FirstIndent + twips);
    format.FirstIndent = -twips;
}

std::optional<TextAlignment> RichText::SelAlignment() const
{
    return ReadParagraphs([](const ParagraphFormat& format) { return format.Alignment; });
}

void RichText::SetSelAlignment(TextAlignment alignment)
{
    m_document.ChangeParagraphs(m_start, m_start + m_length,
                                [alignment](ParagraphFormat& format) { format.Alignment = alignment; });
}

std::optional<int> RichText::SelIndent() const
{
    return ReadParagraphs(
        [](const ParagraphFormat& format) { return format.LeftIndent + std::min(0, format.FirstIndent); });
}

void RichText::SetSelIndent(int twips)
{
    m_document.ChangeParagraphs(m_start, m_start + m_length, [twips](ParagraphFormat& format) {
        format.LeftIndent = std::max(0, twips) - std::min(0, format.FirstIndent);
    });
}

} // namespace qb
