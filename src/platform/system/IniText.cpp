#include "platform/system/IniText.h"

#include <QUrl>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

/// Escapes that are one letter.
struct LetterRow {
    char Letter;
    char16_t Character;
};
constexpr LetterRow Letters[] = {{'a', u'\a'}, {'b', u'\b'}, {'f', u'\f'}, {'n', u'\n'},  {'r', u'\r'},  {'t', u'\t'},
                                 {'v', u'\v'}, {'"', u'"'},  {'?', u'?'},  {'\'', u'\''}, {'\\', u'\\'}, {'0', u'\0'}};

bool IsHexDigit(QChar character)
{
    return (character >= u'0' && character <= u'9') || (character.toLower() >= u'a' && character.toLower() <= u'f');
}

QString NameOf(const QByteArray& text)
{
    return QUrl::fromPercentEncoding(text.trimmed());
}

bool IsSame(const QByteArray& text, const QString& name)
{
    return NameOf(text).compare(name, Qt::CaseInsensitive) == 0;
}

/// Reads the escape that begins behind a backslash at @p at, and goes behind it.
QChar Unescaped(const QString& text, qsizetype& at)
{
    const QChar letter = text[at++];
    if (letter == u'x') {
        char16_t code = 0;
        while (at < text.size() && IsHexDigit(text[at]))
            code = char16_t(code * 16 + QStringView(text).mid(at++, 1).toInt(nullptr, 16));
        return code;
    }
    for (const LetterRow& row : Letters) {
        if (letter == QLatin1Char(row.Letter))
            return row.Character;
    }
    return letter;
}

QString Decoded(const QByteArray& bytes)
{
    const QString text = QString::fromUtf8(bytes);
    QString value;
    bool quoted = false;
    qsizetype kept = 0; // what stood in quotes keeps its blanks at the end
    for (qsizetype at = 0; at < text.size();) {
        const QChar character = text[at++];
        if (character == u'\\' && at < text.size()) {
            value += Unescaped(text, at);
            kept = value.size();
        } else if (character == u'"') {
            quoted = !quoted;
            kept = value.size();
        } else if (quoted || !value.isEmpty() || (character != u' ' && character != u'\t')) {
            value += character;
            if (quoted)
                kept = value.size();
        }
    }
    while (value.size() > kept && value.back().isSpace())
        value.chop(1);
    if (!value.startsWith(u'@'))
        return value;
    return value.startsWith("@@"_L1) ? value.mid(1) : QString(); // other values than texts stand behind one
}

QByteArray Encoded(const QString& value)
{
    QString text;
    bool afterHex = false;
    const QString escaped = value.startsWith(u'@') ? u'@' + value : value;
    for (const QChar character : escaped) {
        const bool isControl = character < u' ' || character == QChar(0x7f);
        if (isControl || (afterHex && IsHexDigit(character)))
            text += u"\\x"_s + QString::number(character.unicode(), 16);
        else if (character == u'"' || character == u'\\')
            text += QString(u'\\') + character;
        else
            text += character;
        afterHex = isControl || (afterHex && IsHexDigit(character));
    }
    const bool needsQuotes = text.startsWith(u' ') || text.endsWith(u' ') || text.contains(u';') || text.contains(u',')
                             || text.contains(u'=');
    return (needsQuotes ? u'"' + text + u'"' : text).toUtf8();
}

} // namespace

std::optional<IniText::Place> IniText::Find(const QString& section, const QString& key, qsizetype& sectionEnd) const
{
    bool inside = false;
    std::optional<Place> found;
    for (qsizetype begin = 0; begin < m_bytes.size();) {
        const qsizetype lineEnd = m_bytes.indexOf('\n', begin);
        const qsizetype end = lineEnd < 0 ? m_bytes.size() : lineEnd + 1;
        const QByteArray line = m_bytes.mid(begin, end - begin).trimmed();
        if (line.startsWith('[')) {
            inside = line.endsWith(']') && IsSame(line.mid(1, line.size() - 2), section);
            if (inside)
                sectionEnd = end;
        } else if (inside && !line.isEmpty()) {
            sectionEnd = end;
            const qsizetype equals = line.indexOf('=');
            if (equals > 0 && !line.startsWith(';') && IsSame(line.left(equals), key))
                found = Place{begin, end, line.mid(equals + 1)}; // the last one counts
        }
        begin = end;
    }
    return found;
}

std::optional<QString> IniText::Value(const QString& section, const QString& key) const
{
    qsizetype sectionEnd = -1;
    const std::optional<Place> place = Find(section, key, sectionEnd);
    return place ? std::optional<QString>(Decoded(place->Text)) : std::nullopt;
}

void IniText::Set(const QString& section, const QString& key, const QString& value)
{
    qsizetype sectionEnd = -1;
    const std::optional<Place> place = Find(section, key, sectionEnd);
    const QByteArray line = key.toUtf8() + '=' + Encoded(value) + '\n';
    if (place) {
        m_bytes.replace(place->Begin, place->End - place->Begin, line);
        return;
    }
    if (!m_bytes.isEmpty() && !m_bytes.endsWith('\n')) {
        if (sectionEnd == m_bytes.size())
            ++sectionEnd;
        m_bytes += '\n';
    }
    if (sectionEnd < 0) {
        m_bytes += (m_bytes.isEmpty() ? "[" : "\n[") + section.toUtf8() + "]\n";
        sectionEnd = m_bytes.size();
    }
    m_bytes.insert(sectionEnd, line);
}

} // namespace qb
