#include "web/PageBytes.h"

#include "platform/system/RuntimeError.h"
#include "platform/system/TextEncoding.h"

#include <QRegularExpression>
#include <QStringDecoder>
#include <algorithm>
#include <bit>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

const QByteArray Utf8Mark = "\xef\xbb\xbf";
const QByteArray Utf16LEMark = "\xff\xfe";
const QByteArray Utf16BEMark = "\xfe\xff";

bool IsUtf8(const QByteArray& bytes)
{
    QStringDecoder decoder(QStringConverter::Utf8, QStringConverter::Flag::Stateless);
    const QString text = decoder(bytes);
    return !decoder.hasError();
}

/// What a page says of its encoding near its begin, in small letters.
QByteArray DeclaredEncoding(const QByteArray& page)
{
    constexpr qsizetype Looked = 1024; // bytes, as browsers look
    static const QRegularExpression declaration(uR"(<meta\b[^>]*\bcharset\s*=\s*["']?\s*([\w:.-]+))"_s,
                                                QRegularExpression::CaseInsensitiveOption);
    return declaration.match(QString::fromLatin1(page.left(Looked))).captured(1).toLower().toLatin1();
}

/// The length of the well-formed UTF-8 character at @p at; 0 for what is none.
int Utf8Length(const QByteArray& bytes, qsizetype at)
{
    const auto byte = uchar(bytes[at]);
    const int length = byte < 0x80 ? 1 : std::countl_one(byte);
    if (length > 4 || (length == 1 && byte >= 0x80) || at + length > bytes.size())
        return 0;
    return length == 1 || IsUtf8(bytes.mid(at, length)) ? length : 0;
}

char32_t Utf8Character(const QByteArray& bytes, qsizetype at, int length)
{
    if (length == 1)
        return uchar(bytes[at]);
    char32_t character = uchar(bytes[at]) & (0x7f >> length);
    for (int next = 1; next < length; ++next)
        character = (character << 6) | (uchar(bytes[at + next]) & 0x3f);
    return character;
}

bool CanWrite(PageEncoding encoding, char32_t character)
{
    if (encoding == PageEncoding::OtherAscii)
        return character < 0x80;
    if (encoding != PageEncoding::Windows1252 || character < 0x80)
        return true;
    return character <= 0xffff && ToWindows1252(QString(QChar(char16_t(character)))) != "?";
}

QByteArray Written(PageEncoding encoding, const QString& text)
{
    switch (encoding) {
    case PageEncoding::Utf16LE:
        return QStringEncoder(QStringConverter::Utf16LE)(text);
    case PageEncoding::Utf16BE:
        return QStringEncoder(QStringConverter::Utf16BE)(text);
    case PageEncoding::Windows1252:
        return ToWindows1252(text);
    default:
        return text.toUtf8();
    }
}

} // namespace

PageEncoding EncodingOf(const QByteArray& page)
{
    static const QByteArrayList windows{"windows-1252", "iso-8859-1", "iso8859-1", "latin1",
                                        "us-ascii",     "ascii",      "cp1252"};
    if (page.startsWith(Utf8Mark))
        return PageEncoding::Utf8;
    if (page.startsWith(Utf16LEMark))
        return PageEncoding::Utf16LE;
    if (page.startsWith(Utf16BEMark))
        return PageEncoding::Utf16BE;
    const QByteArray declared = DeclaredEncoding(page);
    if (windows.contains(declared))
        return PageEncoding::Windows1252;
    // A page that calls itself UTF-16 in letters of one byte is read as UTF-8.
    if (declared.startsWith("utf-8") || declared.startsWith("utf8") || declared.startsWith("utf-16"))
        return PageEncoding::Utf8;
    if (!declared.isEmpty())
        return PageEncoding::OtherAscii;
    return IsUtf8(page) ? PageEncoding::Utf8 : PageEncoding::Windows1252;
}

QByteArray EncodedFor(PageEncoding encoding, const QString& text)
{
    QString possible;
    for (const char32_t character : text.toUcs4()) {
        if (CanWrite(encoding, character))
            possible += QChar::fromUcs4(character);
        else
            possible += u"&#%1;"_s.arg(uint(character));
    }
    return Written(encoding, possible);
}

PageBytes::PageBytes(QByteArray bytes) : m_bytes(std::move(bytes)), m_encoding(EncodingOf(m_bytes))
{
    m_text.reserve(m_bytes.size());
    m_offsets.reserve(size_t(m_bytes.size()) + 1);
    if (m_encoding == PageEncoding::Utf8)
        ReadUtf8(m_bytes.startsWith(Utf8Mark) ? Utf8Mark.size() : 0);
    else if (m_encoding == PageEncoding::Utf16LE || m_encoding == PageEncoding::Utf16BE)
        ReadUtf16(Utf16LEMark.size());
    else
        ReadSingleBytes(0);
    m_offsets.push_back(m_bytes.size());
}

/// Each half of a pair stands at the place of the whole.
void PageBytes::Take(char32_t character, qsizetype at)
{
    for (const char16_t unit : QChar::fromUcs4(character)) {
        m_text += QChar(unit);
        m_offsets.push_back(at);
    }
}

void PageBytes::ReadUtf8(qsizetype at)
{
    while (at < m_bytes.size()) {
        const int length = Utf8Length(m_bytes, at);
        Take(length == 0 ? char32_t(QChar::ReplacementCharacter) : Utf8Character(m_bytes, at, length), at);
        at += qMax(length, 1);
    }
}

void PageBytes::ReadUtf16(qsizetype at)
{
    const bool isLittle = m_encoding == PageEncoding::Utf16LE;
    for (; at + 1 < m_bytes.size(); at += 2) {
        const auto first = uchar(m_bytes[at]);
        const auto second = uchar(m_bytes[at + 1]);
        m_text += QChar(isLittle ? char16_t(second << 8 | first) : char16_t(first << 8 | second));
        m_offsets.push_back(at);
    }
    if (at < m_bytes.size())
        Take(QChar::ReplacementCharacter, at);
}

void PageBytes::ReadSingleBytes(qsizetype at)
{
    const bool isKnown = m_encoding == PageEncoding::Windows1252;
    for (; at < m_bytes.size(); ++at) {
        const auto byte = uchar(m_bytes[at]);
        Take(isKnown || byte < 0x80 ? FromWindows1252(byte).unicode() : char16_t(QChar::ReplacementCharacter), at);
    }
}

QByteArray PageBytes::Slice(qsizetype begin, qsizetype end) const
{
    if (begin < 0 || begin > end || end > m_text.size())
        throw RuntimeError(ErrorNumber::Internal, u"A part of the page is none of it."_s, u"PageBytes"_s);
    const qsizetype from = m_offsets[size_t(begin)];
    return m_bytes.mid(from, m_offsets[size_t(end)] - from);
}

} // namespace qb
