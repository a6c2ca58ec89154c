#pragma once

#include "platform/richtext/RtfPlainText.h"
#include "platform/richtext/RunMap.h"
#include "platform/richtext/TextFormats.h"

#include <QList>
#include <functional>

namespace qb {

/// A rich text as data: plain text with lines ended by CR LF, a format for each character and one
/// for each paragraph. Positions count from 0, and a CR LF counts as two. A picture stands as one
/// object replacement character.
class RichTextDocument {
public:
    static constexpr char16_t PictureCharacter = 0xfffc;

    /// An empty text; @p font is that of the default format, number 0.
    explicit RichTextDocument(const RtfFont& font = CodeFont);

    /// Empties the text; the default font stays.
    void Clear();

    /// Gives back memory that is kept for growth.
    void Squeeze();

    /// Lengths and positions count its UTF-16 units.
    const QString& Text() const { return m_text; }
    qsizetype Length() const { return m_text.size(); }

    // Formats by number
    const CharFormat& FormatAt(qsizetype position) const { return m_formats[m_runs.ValueAt(position)]; }
    const CharFormat& Format(quint32 number) const { return m_formats[number]; }
    const ParagraphFormat& ParagraphAt(qsizetype position) const
    {
        return m_paragraphFormats[m_paragraphs.ValueAt(position)];
    }
    const ParagraphFormat& Paragraph(quint32 number) const { return m_paragraphFormats[number]; }
    const RunMap& Runs() const { return m_runs; }
    const RunMap& ParagraphRuns() const { return m_paragraphs; }
    quint32 NumberOf(const CharFormat& format) { return m_formats.Number(format); }
    quint32 NumberOf(const ParagraphFormat& format) { return m_paragraphFormats.Number(format); }

    /// The number of the paragraph format at a position.
    quint32 ParagraphNumberAt(qsizetype position) const { return m_paragraphs.ValueAt(position); }

    // What formats refer to
    const FontInfo& Font(quint16 number) const { return m_fonts[number]; }
    quint16 NumberOfFont(const FontInfo& font) { return quint16(m_fonts.Number(font)); }
    /// The font of that name, with the family and character set it has in this text.
    quint16 NumberOfFontName(const QString& name);
    const QString& Link(quint32 number) const { return m_links[number]; }
    quint32 NumberOfLink(const QString& target) { return m_links.Number(target); }
    const TextPicture& Picture(quint32 number) const { return m_pictures[number]; }
    quint32 NumberOfPicture(const TextPicture& picture) { return m_pictures.Number(picture); }
    const QList<qint32>& TabStops(quint32 number) const { return m_tabStops[number]; }
    quint32 NumberOfTabStops(const QList<qint32>& stops) { return stops.isEmpty() ? 0 : m_tabStops.Number(stops); }
    const CharFormat& DefaultFormat() const { return m_formats[0]; }

    /// The name of the programming language that the text is written in; empty if it names none.
    const QString& Language() const { return m_language; }
    void SetLanguage(const QString& name) { m_language = name; }
    /// How the text stood in the file that it came from (platform/system/SourceForm.h); empty: as usual.
    const QString& SourceForm() const { return m_sourceForm; }
    void SetSourceForm(const QString& form) { m_sourceForm = form; }

    /// The range with line ends whole: one that ends within a line end holds all of it, and so
    /// does one that begins there and isn't empty. An empty range within one stands before it.
    struct Range {
        qsizetype Begin = 0;
        qsizetype Length = 0;
    };
    /// What is to be replaced when this range is; itself when it cuts no line end. Changes nothing.
    Range WithWholeLineEnds(qsizetype position, qsizetype length) const;

    /// Replaces a range. What comes in has @p format; its line ends, CR LF, LF or CR, become CR LF.
    /// Returns the length of what came in.
    qsizetype Replace(qsizetype position, qsizetype length, const QString& text, const CharFormat& format);
    /// Puts all of @p other in the place of a range, with its formats.
    qsizetype Replace(qsizetype position, qsizetype length, const RichTextDocument& other);
    /// A part of the text as a text of its own.
    RichTextDocument Part(qsizetype position, qsizetype length) const;

    /// Changes the format of each character in a range.
    void ChangeFormat(qsizetype begin, qsizetype end, const std::function<void(CharFormat&)>& change);
    /// Sets the format by number, for those who have it at hand.
    void SetFormat(qsizetype begin, qsizetype end, quint32 number) { m_runs.Set(begin, end, number); }
    /// Sets the format of the paragraphs that a range touches, by number.
    void SetParagraphs(qsizetype begin, qsizetype end, quint32 number);
    /// Changes the format of each paragraph that the range touches.
    void ChangeParagraphs(qsizetype begin, qsizetype end, const std::function<void(ParagraphFormat&)>& change);

    /// The begin of the paragraph that holds a position, and the place behind its line end.
    qsizetype ParagraphBegin(qsizetype position) const;
    qsizetype ParagraphEnd(qsizetype position) const;

    // For the reader: text and formats in order, at the end
    void Append(QStringView text, quint32 format);
    void EndParagraph(quint32 paragraph, quint32 format);
    /// The paragraph that has begun and has no line end gets its format.
    void FinishParagraph(quint32 paragraph);
    /// Takes the last line end off.
    void DropLastLineEnd();

private:
    qsizetype BehindParagraph(qsizetype position) const;
    quint32 Translate(const RichTextDocument& other, quint32 format);

    QString m_text;
    QString m_language;
    QString m_sourceForm;
    RunMap m_runs;
    RunMap m_paragraphs; ///< by position; runs begin where paragraphs do
    ValuePool<FontInfo> m_fonts;
    ValuePool<CharFormat> m_formats;
    ValuePool<ParagraphFormat> m_paragraphFormats;
    ValuePool<QString> m_links;
    ValuePool<TextPicture> m_pictures;
    ValuePool<QList<qint32>> m_tabStops;
    qsizetype m_paragraphBegin = 0; ///< of the paragraph that is being read
};

/// Line ends of any kind as CR LF.
QString WithCrLf(const QString& text);

} // namespace qb
