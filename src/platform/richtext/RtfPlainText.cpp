#include "platform/richtext/RtfPlainText.h"

#include "platform/system/TextEncoding.h"

#include <algorithm>
#include <optional>
#include <string_view>
#include <vector>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

constexpr char16_t FirstPrintable = 0x20;
constexpr char16_t FirstNonAscii = 0x7f;
constexpr size_t DeepestNesting = 10000;

void AppendEscaped(QString& out, char16_t character)
{
    if (character == u'\\' || character == u'{' || character == u'}') {
        out += u'\\';
        out += QChar(character);
    } else if (character == u'\t') {
        out += "\\tab "_L1;
    } else if (character < FirstPrintable || character >= FirstNonAscii) {
        out += "\\u"_L1 + QString::number(qint16(character)) + u'?'; // the number is a signed one
    } else {
        out += QChar(character);
    }
}

/// Words that stand for a character of the text.
struct CharacterWord {
    QStringView Word;
    QStringView Text;
};
constexpr CharacterWord CharacterWords[] = {
    {u"par", u"\r\n"},    {u"line", u"\r\n"},   {u"sect", u"\r\n"},     {u"page", u"\r\n"},
    {u"row", u"\r\n"},    {u"tab", u"\t"},      {u"cell", u"\t"},       {u"emdash", u"\u2014"},
    {u"endash", u"\u2013"}, {u"emspace", u"\u2003"}, {u"enspace", u"\u2002"}, {u"bullet", u"\u2022"},
    {u"lquote", u"\u2018"}, {u"rquote", u"\u2019"}, {u"ldblquote", u"\u201c"}, {u"rdblquote", u"\u201d"},
};

/// Groups that hold no text of the document.
constexpr QLatin1StringView SkippedDestinations[] = {
    "fonttbl"_L1, "colortbl"_L1, "stylesheet"_L1, "info"_L1,     "pict"_L1,    "object"_L1,  "header"_L1,
    "footer"_L1,  "headerl"_L1,  "headerr"_L1,    "footerl"_L1,  "footerr"_L1, "generator"_L1, "fldinst"_L1,
    "listtable"_L1, "listoverridetable"_L1, "pntext"_L1, "listtext"_L1, "filetbl"_L1, "revtbl"_L1,
};

class Reader {
public:
    explicit Reader(const QString& rtf) : m_rtf(rtf) { m_text.reserve(rtf.size() / 2); }

    QString Read()
    {
        while (m_at < m_rtf.size())
            ReadToken();
        return m_text;
    }

private:
    struct Group {
        bool Skipped = false;
        int FallbackLength = 1; ///< characters that stand behind a \u for readers without Unicode
    };

    void ReadToken()
    {
        const char16_t character = m_rtf[m_at++].unicode();
        switch (character) {
        case u'{':
            if (m_outer.size() < DeepestNesting)
                m_outer.push_back(m_group);
            else
                ++m_tooDeep;
            break;
        case u'}':
            if (m_tooDeep > 0) {
                --m_tooDeep;
            } else if (!m_outer.empty()) {
                m_group = m_outer.back();
                m_outer.pop_back();
            }
            break;
        case u'\\':
            ReadControl();
            break;
        case u'\r':
        case u'\n':
        case u'\0':
            break;
        default:
            Append(QChar(character));
        }
    }

    void ReadControl()
    {
        if (m_at >= m_rtf.size())
            return;
        const QChar first = m_rtf[m_at];
        if (first.unicode() < 0x80 && first.isLetter())
            ReadWord();
        else
            ReadSymbol(m_rtf[m_at++].unicode());
    }

    void ReadSymbol(char16_t symbol)
    {
        switch (symbol) {
        case u'\\':
        case u'{':
        case u'}':
            return Append(QChar(symbol));
        case u'~':
            return Append(QChar(0xa0));
        case u'_':
            return Append(QChar(0x2011));
        case u'\r':
        case u'\n':
            return AppendText(u"\r\n");
        case u'\'':
            return ReadCodePageCharacter();
        case u'*':
            m_group.Skipped = true;
            return;
        default:
            return;
        }
    }

    void ReadCodePageCharacter()
    {
        bool ok = false;
        const uint code = QStringView(m_rtf).mid(m_at, 2).toUInt(&ok, 16);
        m_at = std::min(m_at + 2, m_rtf.size());
        if (ok)
            Append(FromWindows1252(uchar(code)));
    }

    void ReadWord()
    {
        const qsizetype start = m_at;
        while (m_at < m_rtf.size() && m_rtf[m_at].unicode() < 0x80 && m_rtf[m_at].isLetter())
            ++m_at;
        const QStringView word = QStringView(m_rtf).mid(start, m_at - start);
        const std::optional<int> number = ReadNumber();
        if (m_at < m_rtf.size() && m_rtf[m_at] == u' ')
            ++m_at;
        Handle(word, number);
    }

    std::optional<int> ReadNumber()
    {
        const qsizetype start = m_at;
        if (m_at < m_rtf.size() && m_rtf[m_at] == u'-')
            ++m_at;
        const qsizetype digits = m_at;
        while (m_at < m_rtf.size() && m_rtf[m_at] >= u'0' && m_rtf[m_at] <= u'9')
            ++m_at;
        if (m_at == digits) {
            m_at = start;
            return std::nullopt;
        }
        return QStringView(m_rtf).mid(start, m_at - start).toInt(); // a number out of range reads as 0
    }

    void Handle(QStringView word, std::optional<int> number)
    {
        if (word == u"u")
            return ReadUnicode(number.value_or(0));
        if (word == u"uc") {
            m_group.FallbackLength = std::clamp(number.value_or(1), 0, 16);
        } else if (word == u"bin") {
            m_at = std::min(m_rtf.size(), m_at + std::max(0, number.value_or(0)));
        } else if (std::find(std::begin(SkippedDestinations), std::end(SkippedDestinations), word)
                   != std::end(SkippedDestinations)) {
            m_group.Skipped = true;
        } else {
            const auto* known = std::find_if(std::begin(CharacterWords), std::end(CharacterWords),
                                             [word](const CharacterWord& one) { return one.Word == word; });
            if (known != std::end(CharacterWords))
                AppendText(known->Text);
        }
    }

    void ReadUnicode(int code)
    {
        Append(QChar(char16_t(code)));
        for (int i = 0; i < m_group.FallbackLength; ++i)
            SkipFallbackCharacter();
    }

    void SkipFallbackCharacter()
    {
        if (m_at >= m_rtf.size() || m_rtf[m_at] == u'{' || m_rtf[m_at] == u'}')
            return;
        if (QStringView(m_rtf).mid(m_at).startsWith(u"\\'"))
            m_at = std::min(m_at + 4, m_rtf.size());
        else if (m_rtf[m_at] != u'\\')
            ++m_at;
    }

    void Append(QChar character)
    {
        if (!m_group.Skipped)
            m_text += character;
    }

    void AppendText(QStringView text)
    {
        if (!m_group.Skipped)
            m_text += text;
    }

    const QString& m_rtf;
    qsizetype m_at = 0;
    QString m_text;
    Group m_group;
    std::vector<Group> m_outer;
    size_t m_tooDeep = 0;
};

} // namespace

QString RtfFromPlainText(const QString& text, const RtfFont& font)
{
    if (text.isEmpty())
        return {};
    QString rtf;
    rtf.reserve(text.size() + text.size() / 8 + 128);
    rtf += "{\\rtf1\\ansi\\ansicpg1252\\deff0\\uc1{\\fonttbl{\\f0\\fnil\\fcharset0 "_L1;
    for (const QChar character : font.Name)
        AppendEscaped(rtf, character.unicode());
    rtf += ";}}\r\n\\pard\\f0\\fs"_L1 + QString::number(font.Points * 2) + u' ';
    for (qsizetype i = 0; i < text.size(); ++i) {
        const char16_t character = text[i].unicode();
        if (character == u'\r' && i + 1 < text.size() && text[i + 1] == u'\n')
            continue;
        if (character == u'\r' || character == u'\n')
            rtf += "\\par\r\n"_L1;
        else
            AppendEscaped(rtf, character);
    }
    return rtf + u'}';
}

QString PlainTextFromRtf(const QString& rtf)
{
    return rtf.startsWith("{\\rtf"_L1) ? Reader(rtf).Read() : rtf;
}

} // namespace qb
