#include "find/PageText.h"

#include <QHash>
#include <algorithm>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

constexpr QLatin1StringView Hidden[] = {"script"_L1, "style"_L1, "template"_L1};
constexpr QLatin1StringView Blocks[] = {
    "address"_L1, "article"_L1, "blockquote"_L1, "body"_L1,  "br"_L1, "caption"_L1, "dd"_L1,    "div"_L1, "dl"_L1,
    "dt"_L1,      "footer"_L1,  "form"_L1,       "h1"_L1,    "h2"_L1, "h3"_L1,      "h4"_L1,    "h5"_L1,  "h6"_L1,
    "head"_L1,    "header"_L1,  "hr"_L1,         "html"_L1,  "li"_L1, "main"_L1,    "nav"_L1,   "ol"_L1,  "option"_L1,
    "p"_L1,       "pre"_L1,     "section"_L1,    "table"_L1, "td"_L1, "th"_L1,      "title"_L1, "tr"_L1,  "ul"_L1};

struct Entity {
    QLatin1StringView Name;
    char32_t Character;
};
constexpr Entity Entities[] = {
    {"amp"_L1, U'&'},     {"lt"_L1, U'<'},       {"gt"_L1, U'>'},      {"quot"_L1, U'"'},    {"apos"_L1, U'\''},
    {"nbsp"_L1, U' '},    {"copy"_L1, 0xa9},     {"reg"_L1, 0xae},     {"deg"_L1, 0xb0},     {"middot"_L1, 0xb7},
    {"laquo"_L1, 0xab},   {"raquo"_L1, 0xbb},    {"times"_L1, 0xd7},   {"szlig"_L1, 0xdf},   {"auml"_L1, 0xe4},
    {"ouml"_L1, 0xf6},    {"uuml"_L1, 0xfc},     {"Auml"_L1, 0xc4},    {"Ouml"_L1, 0xd6},    {"Uuml"_L1, 0xdc},
    {"eacute"_L1, 0xe9},  {"egrave"_L1, 0xe8},   {"agrave"_L1, 0xe0},  {"ccedil"_L1, 0xe7},  {"ndash"_L1, 0x2013},
    {"mdash"_L1, 0x2014}, {"lsquo"_L1, 0x2018},  {"rsquo"_L1, 0x2019}, {"ldquo"_L1, 0x201c}, {"rdquo"_L1, 0x201d},
    {"bull"_L1, 0x2022},  {"hellip"_L1, 0x2026}, {"euro"_L1, 0x20ac},  {"rarr"_L1, 0x2192},  {"larr"_L1, 0x2190},
};

/// One pass over the page.
class Reader {
public:
    explicit Reader(QStringView html) : m_html(html) {}

    QString Read()
    {
        while (m_at < m_html.size()) {
            const QChar character = m_html[m_at];
            if (character == u'<' && BeginsMarkup()) {
                PassMarkup();
            } else if (character == u'&') {
                TakeEntity();
            } else {
                Take(character);
                ++m_at;
            }
        }
        while (m_text.endsWith(u'\n') || m_text.endsWith(u' '))
            m_text.chop(1);
        return m_text;
    }

private:
    bool BeginsMarkup() const
    {
        if (m_at + 1 >= m_html.size())
            return false;
        const QChar next = m_html[m_at + 1];
        return next.isLetter() || next == u'/' || next == u'!' || next == u'?';
    }

    void PassMarkup()
    {
        if (m_html.mid(m_at).startsWith("<!--"_L1)) {
            GoBehind("-->"_L1);
            return;
        }
        const bool closes = m_html[m_at + 1] == u'/';
        qsizetype end = m_at + (closes ? 2 : 1);
        const qsizetype begin = end;
        while (end < m_html.size() && m_html[end].isLetterOrNumber())
            ++end;
        const QString name = m_html.mid(begin, end - begin).toString().toLower();
        PassAttributes(end);
        if (std::find(std::begin(Blocks), std::end(Blocks), name) != std::end(Blocks))
            EndLine();
        if (name == "pre"_L1)
            m_preformatted = !closes;
        if (!closes && std::find(std::begin(Hidden), std::end(Hidden), name) != std::end(Hidden))
            GoBehind(u"</"_s + name);
    }

    /// Goes behind the tag; a ">" in quotes does not end it.
    void PassAttributes(qsizetype at)
    {
        QChar quote;
        for (; at < m_html.size(); ++at) {
            const QChar character = m_html[at];
            if (!quote.isNull()) {
                if (character == quote)
                    quote = QChar();
            } else if (character == u'"' || character == u'\'') {
                quote = character;
            } else if (character == u'>') {
                m_at = at + 1;
                return;
            }
        }
        m_at = m_html.size();
    }

    void GoBehind(const QString& end)
    {
        const qsizetype found = m_html.indexOf(end, m_at, Qt::CaseInsensitive);
        m_at = found < 0 ? m_html.size() : found;
        if (m_at < m_html.size() && end.startsWith(u'<'))
            PassAttributes(m_at);
        else if (m_at < m_html.size())
            m_at += end.size();
    }

    void TakeEntity()
    {
        constexpr qsizetype Longest = 12;
        const qsizetype end = m_html.mid(m_at, Longest).indexOf(u';');
        const QStringView name = end < 0 ? QStringView() : m_html.mid(m_at + 1, end - 1);
        const char32_t character = CharacterOf(name);
        if (character == 0) {
            Take(u'&');
            ++m_at;
            return;
        }
        if (character == U' ')
            Take(u' ');
        else
            m_text += QString::fromUcs4(&character, 1);
        m_at += end + 1;
    }

    static char32_t CharacterOf(QStringView name)
    {
        if (name.startsWith(u'#')) {
            const bool isHex = name.size() > 1 && (name[1] == u'x' || name[1] == u'X');
            const uint number = isHex ? name.mid(2).toUInt(nullptr, 16) : name.mid(1).toUInt();
            return number <= 0x10ffff && !QChar::isSurrogate(number) ? number : 0;
        }
        const auto* entity = std::find_if(std::begin(Entities), std::end(Entities),
                                          [name](const Entity& one) { return name == one.Name; });
        return entity == std::end(Entities) ? 0 : entity->Character;
    }

    void Take(QChar character)
    {
        if (m_preformatted)
            m_text += character;
        else if (!character.isSpace())
            m_text += character;
        else if (!m_text.isEmpty() && !m_text.back().isSpace())
            m_text += u' ';
    }

    void EndLine()
    {
        if (m_text.endsWith(u' '))
            m_text.chop(1);
        if (!m_text.isEmpty() && !m_text.endsWith(u'\n'))
            m_text += u'\n';
    }

    QStringView m_html;
    qsizetype m_at = 0;
    bool m_preformatted = false;
    QString m_text;
};

} // namespace

QString TextOfPage(const QString& html)
{
    return Reader(html).Read();
}

} // namespace qb
