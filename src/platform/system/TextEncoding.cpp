#include "platform/system/TextEncoding.h"

#include <QStringDecoder>
#include <algorithm>
#include <array>

namespace qb {

namespace {

constexpr uchar FirstSpecial = 0x80;

/// The characters of the bytes 0x80 to 0x9f; all others are those of Unicode.
constexpr std::array<char16_t, 32> Specials{0x20ac, 0x0081, 0x201a, 0x0192, 0x201e, 0x2026, 0x2020, 0x2021,
                                            0x02c6, 0x2030, 0x0160, 0x2039, 0x0152, 0x008d, 0x017d, 0x008f,
                                            0x0090, 0x2018, 0x2019, 0x201c, 0x201d, 0x2022, 0x2013, 0x2014,
                                            0x02dc, 0x2122, 0x0161, 0x203a, 0x0153, 0x009d, 0x017e, 0x0178};

/// The character has the number of its byte in the page.
bool IsItsOwnByte(char16_t character)
{
    return character < FirstSpecial || (character >= FirstSpecial + Specials.size() && character <= 0xff);
}

int UnitSize(QStringConverter::Encoding encoding)
{
    switch (encoding) {
    case QStringConverter::Utf16:
    case QStringConverter::Utf16LE:
    case QStringConverter::Utf16BE:
        return 2;
    case QStringConverter::Utf32:
    case QStringConverter::Utf32LE:
    case QStringConverter::Utf32BE:
        return 4;
    default:
        return 1;
    }
}

std::optional<QString> DecodeStrictly(const QByteArray& bytes, QStringConverter::Encoding encoding)
{
    // Without a state, what the last bytes begin and do not end is an error.
    QStringDecoder decoder(encoding, QStringConverter::Flag::Stateless);
    QString text = decoder(bytes);
    const bool whole = bytes.size() % UnitSize(encoding) == 0;
    return decoder.hasError() || !whole ? std::nullopt : std::optional(std::move(text));
}

} // namespace

QChar FromWindows1252(uchar byte)
{
    const bool special = byte >= FirstSpecial && byte < FirstSpecial + Specials.size();
    return special ? QChar(Specials[size_t(byte - FirstSpecial)]) : QChar(char16_t(byte));
}

QString FromWindows1252(const QByteArray& bytes)
{
    QString text(bytes.size(), Qt::Uninitialized);
    std::transform(bytes.begin(), bytes.end(), text.begin(), [](char byte) { return FromWindows1252(uchar(byte)); });
    return text;
}

QByteArray ToWindows1252(const QString& text)
{
    QByteArray bytes;
    bytes.reserve(text.size());
    for (const QChar character : text) {
        const auto special = std::find(Specials.begin(), Specials.end(), character.unicode());
        if (special != Specials.end())
            bytes += char(FirstSpecial + (special - Specials.begin()));
        else if (!character.isLowSurrogate()) // one mark for a pair
            bytes += IsItsOwnByte(character.unicode()) ? char(character.unicode()) : '?';
    }
    return bytes;
}

std::optional<QString> DecodeText(const QByteArray& bytes, FallbackEncoding fallback)
{
    const std::optional<QStringConverter::Encoding> marked = QStringConverter::encodingForData(bytes);
    std::optional<QString> text = DecodeStrictly(bytes, marked.value_or(QStringConverter::Utf8));
    if (!text && !marked && fallback != FallbackEncoding::None)
        text = fallback == FallbackEncoding::Latin1 ? QString::fromLatin1(bytes) : FromWindows1252(bytes);
    if (!text || text->contains(QChar(u'\0')))
        return std::nullopt;
    return text;
}

} // namespace qb
