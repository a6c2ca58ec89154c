#pragma once

#include <QByteArray>
#include <QString>
#include <vector>

namespace qb {

/// How the characters of a page are written.
enum class PageEncoding {
    Utf8,
    Utf16LE,
    Utf16BE,
    Windows1252,
    OtherAscii, ///< one of which only the characters of ASCII are known; the others are kept, never made
};

/// The encoding of a page, as a browser finds it: by the mark at its begin, by what it says of itself, else by
/// whether it can be UTF-8.
PageEncoding EncodingOf(const QByteArray& page);

/// @p text in an encoding, for a place in a page where a character that the encoding lacks may stand as a reference
/// (&#8364;).
QByteArray EncodedFor(PageEncoding encoding, const QString& text);

/// A page as text, each place of which knows where it stands in the bytes. What is no character there reads as a
/// replacement character and keeps its bytes.
class PageBytes {
public:
    explicit PageBytes(QByteArray bytes);

    const QByteArray& Bytes() const { return m_bytes; }
    PageEncoding Encoding() const { return m_encoding; }
    /// Without the mark at its begin.
    const QString& Text() const { return m_text; }

    /// The bytes of the text from @p begin up to @p end, as they stand; raises an error for a place that is none.
    QByteArray Slice(qsizetype begin, qsizetype end) const;
    /// What stands ahead of the text: the mark of its encoding, or nothing.
    QByteArray Mark() const { return m_bytes.left(m_offsets.front()); }

private:
    void ReadUtf8(qsizetype at);
    void ReadUtf16(qsizetype at);
    void ReadSingleBytes(qsizetype at);
    void Take(char32_t character, qsizetype at);

    QByteArray m_bytes;
    PageEncoding m_encoding;
    QString m_text;
    std::vector<qsizetype> m_offsets; ///< of each place of the text, and of its end
};

} // namespace qb
