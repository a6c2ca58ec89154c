#include "publishing/HtmlText.h"

#include <QLocale>
#include <QStringList>
#include <algorithm>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

constexpr char32_t FirstPicture = 0x2400; // of control characters
constexpr char32_t PictureOfDelete = 0x2421;
constexpr char32_t Replacement = 0xfffd;

void AppendUtf8(QByteArray& out, char32_t character)
{
    const auto tail = [character](int shift) { return char(0x80 | (character >> shift & 0x3f)); };
    if (character < 0x80) {
        out += char(character);
    } else if (character < 0x800) {
        out += char(0xc0 | character >> 6);
        out += tail(0);
    } else if (character < 0x10000) {
        out += char(0xe0 | character >> 12);
        out += tail(6);
        out += tail(0);
    } else {
        out += char(0xf0 | character >> 18);
        out += tail(12);
        out += tail(6);
        out += tail(0);
    }
}

void AppendAscii(QByteArray& html, char16_t character)
{
    switch (character) {
    case u'<':
        html += "&lt;";
        return;
    case u'>':
        html += "&gt;";
        return;
    case u'&':
        html += "&amp;";
        return;
    case u'"':
        html += "&quot;";
        return;
    case u'\'':
        html += "&#39;";
        return;
    case u'\t':
    case u'\n':
    case u'\f':
        html += char(character);
        return;
    case 0x7f:
        return AppendUtf8(html, PictureOfDelete);
    default:
        if (character < 0x20)
            AppendUtf8(html, FirstPicture + character);
        else
            html += char(character);
    }
}

} // namespace

void AppendEscaped(QByteArray& html, QStringView text)
{
    html.reserve(html.size() + text.size() + text.size() / 8);
    for (qsizetype at = 0; at < text.size(); ++at) {
        const QChar character = text[at];
        const bool hasNext = at + 1 < text.size();
        if (character == u'\r' && hasNext && text[at + 1] == u'\n')
            continue;
        if (character.unicode() < 0x80)
            AppendAscii(html, character.unicode());
        else if (character.isHighSurrogate() && hasNext && text[at + 1].isLowSurrogate())
            AppendUtf8(html, QChar::surrogateToUcs4(character, text[++at]));
        else
            AppendUtf8(html, character.isSurrogate() ? Replacement : character.unicode());
    }
}

bool IsHarmlessAddress(const QString& target)
{
    static const QStringList schemes{u"http:"_s, u"https:"_s, u"ftp:"_s, u"mailto:"_s};
    return std::any_of(schemes.begin(), schemes.end(),
                       [&target](const QString& scheme) { return target.startsWith(scheme, Qt::CaseInsensitive); });
}

QString ReadableSize(qint64 bytes)
{
    return QLocale::c().formattedDataSize(bytes, 1);
}

} // namespace qb
