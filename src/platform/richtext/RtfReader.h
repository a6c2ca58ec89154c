#pragma once

#include "platform/richtext/RtfTables.h"
#include "platform/richtext/RtfTokenizer.h"
#include "platform/richtext/RtfWords.h"

#include <optional>
#include <vector>

namespace qb {

/// Reads an RTF string into a document. What words set stands in two tables: RtfWords says what a word is and what
/// it sets, Set() how that is done. Anything can be read; what is not known is passed over.
class RtfReader {
public:
    /// Both must outlive the reader. The document is empty; its default format holds for what the string leaves open,
    /// but for the size, which is 12 points then.
    RtfReader(const QString& rtf, RichTextDocument& document);

    /// Reads all of the string, once; raises nothing.
    void Read();

private:
    static constexpr quint16 PlainHalfPoints = 24;

    struct State {
        RtfTarget Where = RtfTarget::Body; ///< the destination of the group's text
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
    /// A picture while its group is read.
    struct PictureData {
        QByteArray Digits; ///< hexadecimal
        QByteArray Binary;
        int Kind = UnknownPicture;
        int Width = 0;
        int Height = 0;
    };
    using Setter = void (*)(RtfReader& reader, int value);
    struct Setters;

    void Take(const RtfToken& token);
    void BeginGroup();
    void EndGroup();
    void EndDestination(const State& ended);
    void TakeWord(const RtfToken& token);
    void Do(const RtfMeaning& meaning, const RtfToken& token);
    void Set(RtfTarget target, int value);

    // Symbols, bytes and text
    void TakeSymbol(QStringView symbol);
    void TakeByte(uchar byte);
    int CurrentCodePage() const { return m_state.CodePage ? m_state.CodePage : m_codePage; }
    bool EndsInLeadByte() const;
    void FlushBytes();
    void TakeText(QStringView text);
    void TakeBinary(QStringView bytes);
    void Route(QStringView text);

    // The text itself
    quint32 FormatNumber();
    quint32 ParagraphNumber();
    void Append(QStringView text);
    void AppendLines(QStringView text);
    void FlushCells();
    void EndParagraph();
    void AppendPicture();
    quint32 LinkOf(const QString& instruction);

    // Effects of control words
    CharFormat& Characters();
    void Plain();
    void AddTabStop(int twips);
    void ResetParagraph();
    void EndParagraphOrCell();
    void EndRow();
    void TakeCharacter(char16_t character);
    void TakeCodeUnit(char16_t unit);
    void SetFont(int number);
    void FinishFonts();
    void TakeListNumber(int number);
    void SetListLevel(int level);
    void SetListId(int id);
    void BeginPicture();
    void BeginText(RtfTarget destination, QString& text);

    RtfTokenizer m_tokens;
    RichTextDocument& m_document;
    State m_state;
    std::vector<State> m_outer;
    size_t m_tooDeep = 0;
    int m_skipFallback = 0;
    int m_codePage = 1252;
    QStringView m_word;           ///< the one that is being done
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
    QString m_sourceForm;
    PictureData m_picture;
};

} // namespace qb
