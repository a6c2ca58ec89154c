#include "publishing/MarkdownText.h"

#include "platform/richtext/ListMark.h"
#include "publishing/HtmlText.h"
#include "store/ShippedLanguages.h"

#include <QRegularExpression>
#include <QUrl>
#include <algorithm>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype ShortestFence = 3;

/// What can't stand in a text: control characters, and halves of characters.
QString Clean(const QString& text)
{
    QString clean;
    clean.reserve(text.size());
    for (qsizetype at = 0; at < text.size(); ++at) {
        const QChar character = text[at];
        const bool isPair = character.isHighSurrogate() && at + 1 < text.size() && text[at + 1].isLowSurrogate();
        if (isPair)
            clean += character;
        clean += isPair                                     ? text[++at]
                 : character.isSurrogate()                  ? QChar(QChar::ReplacementCharacter)
                 : character == u'\n' || character == u'\t' ? character
                 : character.unicode() < 0x20               ? QChar(0x2400 + character.unicode())
                                                            : character;
    }
    return clean;
}

/// Escapes what is markup anywhere.
QString Escape(const QString& text)
{
    static const QString special = u"\\`*_{}[]<>#|~&$"_s;
    QString escaped;
    escaped.reserve(text.size() + text.size() / 8);
    for (const QChar character : text) {
        if (special.contains(character))
            escaped += u'\\';
        escaped += character;
    }
    return escaped;
}

/// Escapes what is markup at the begin of a line: marks of lists, rules and headings, and the blanks of a code block.
QString EscapeLineBegin(QString line)
{
    static const QRegularExpression number(u"^(\\d{1,9})([.)])"_s);
    qsizetype blanks = 0;
    while (blanks < line.size() && (line[blanks] == u' ' || line[blanks] == u'\t'))
        ++blanks;
    QString indent;
    for (qsizetype at = 0; at < blanks; ++at)
        indent += line[at] == u'\t' ? u"&emsp;"_s : u"&nbsp;"_s;
    line.remove(0, blanks);
    if (line.startsWith(u'+') || line.startsWith(u'-') || line.startsWith(u'=') || line.startsWith(u':'))
        line.prepend(u'\\');
    line.replace(number, u"\\1\\\\2"_s);
    return indent + line;
}

QString LinesWithBreaks(const QString& text)
{
    QStringList lines;
    const QStringList all = text.split(u'\n');
    for (const QString& line : all)
        lines << EscapeLineBegin(line);
    QString joined;
    for (qsizetype at = 0; at < lines.size(); ++at) {
        const bool isLast = at + 1 == lines.size();
        // A break at an empty line would be a backslash.
        joined += lines[at] + (isLast ? u""_s : lines[at].isEmpty() || lines[at + 1].isEmpty() ? u"\n"_s : u"\\\n"_s);
    }
    return joined;
}

} // namespace

QString MarkdownText(const QString& text)
{
    return LinesWithBreaks(Escape(Clean(QString(text).replace("\r\n"_L1, "\n"_L1))));
}

QString MarkdownLine(const QString& text)
{
    return EscapeLineBegin(Escape(Clean(text.simplified())));
}

QString MarkdownCode(const QString& text, const QString& language)
{
    QString code = QString(text).replace("\r\n"_L1, "\n"_L1);
    qsizetype longest = 0;
    qsizetype run = 0;
    for (const QChar character : code) {
        run = character == u'`' ? run + 1 : 0;
        longest = std::max(longest, run);
    }
    const QString fence(std::max(ShortestFence, longest + 1), u'`');
    if (!code.endsWith(u'\n'))
        code += u'\n';
    return fence + FenceWord(language) + u'\n' + code + fence + u'\n';
}

QString MarkdownTarget(const QString& path)
{
    return QString::fromLatin1(QUrl::toPercentEncoding(path, "/", "()"));
}

QString YamlText(const QString& text)
{
    QString quoted = u"\""_s;
    for (const QChar character : text) {
        const bool isSpecial = character.unicode() < 0x20 || (character.unicode() >= 0x7f && character.unicode() < 0xa0)
                               || character.unicode() == 0x2028 || character.unicode() == 0x2029
                               || character.unicode() == 0xfeff;
        if (character == u'"' || character == u'\\')
            quoted += u'\\';
        quoted += isSpecial ? u"\\u%1"_s.arg(character.unicode(), 4, 16, QLatin1Char('0')) : QString(character);
    }
    return quoted + u'"';
}

QString FenceWord(const QString& language)
{
    const ShippedLanguage* shipped = ShippedLanguageNamed(language);
    QString word = shipped ? shipped->Key : language.toLower();
    word.removeIf([](QChar character) { return character == u'`' || !character.isPrint() || character.isSurrogate(); });
    return word.simplified().replace(u' ', u'-');
}

// Formatted text

namespace {

class Notes {
public:
    Notes(const RichTextDocument& document, const std::function<QString(const TextPicture&)>& picture)
        : m_document(document), m_picture(picture)
    {
    }

    QString Write()
    {
        const QString& text = m_document.Text();
        for (qsizetype at = 0;;) {
            const qsizetype found = text.indexOf("\r\n"_L1, at);
            const qsizetype end = found < 0 ? text.size() : found;
            AddParagraph(at, end);
            if (found < 0)
                break;
            at = end + 2;
        }
        return m_out;
    }

private:
    void AddParagraph(qsizetype begin, qsizetype end)
    {
        const ParagraphFormat& format = m_document.ParagraphAt(begin);
        const bool isItem = format.List != ListKind::None;
        const QString line = isItem ? RunsOf(begin, end) : EscapeLineBegin(RunsOf(begin, end));
        if (line.trimmed().isEmpty() && !isItem) {
            m_wasItem = false;
            return;
        }
        if (!m_out.isEmpty())
            m_out += isItem && m_wasItem ? u"\n"_s : u"\n\n"_s;
        m_out += isItem ? MarkOf(format) + line : line;
        m_wasItem = isItem;
    }

    QString MarkOf(const ParagraphFormat& format)
    {
        constexpr int deepest = 8;
        constexpr int indent = 4; // as far as any mark wants what stands below it
        const int level = std::min<int>(format.ListLevel, deepest);
        const bool goesOn = m_wasItem && m_list == format.List && m_level == level;
        m_number = goesOn ? m_number + 1 : format.ListStart;
        m_list = format.List;
        m_level = level;
        return QString(level * indent, u' ')
               + (format.List == ListKind::Bullet ? u"- "_s : QString::number(m_number) + u". "_s);
    }

    QString RunsOf(qsizetype begin, qsizetype end)
    {
        QString line;
        for (auto run = m_document.Runs().RunAt(begin); begin < end; ++run) {
            const auto next = std::next(run);
            const qsizetype runEnd = next == m_document.Runs().End() ? end : std::min(end, next->first);
            line += RunText(m_document.Format(run->second), m_document.Text().mid(begin, runEnd - begin));
            begin = runEnd;
        }
        return line;
    }

    QString RunText(const CharFormat& format, const QString& text)
    {
        QString written = format.Picture == 0 ? Emphasised(format, Escape(Clean(text)))
                                              : u"![](%1)"_s.arg(m_picture(m_document.Picture(format.Picture)));
        if (format.Link != 0 && IsHarmlessAddress(m_document.Link(format.Link)))
            written = u"[%1](<%2>)"_s.arg(written, AddressOf(m_document.Link(format.Link)));
        return written;
    }

    static QString AddressOf(const QString& link)
    {
        return QString::fromLatin1(QUrl(link).toEncoded()).replace(u'<', u"%3C"_s).replace(u'>', u"%3E"_s);
    }

    /// Marks stand right against what they hold; blanks at its ends are outside.
    static QString Emphasised(const CharFormat& format, const QString& text)
    {
        const QString marks = QString(format.Strike ? u"~~"_s : u""_s) + (format.Bold ? u"**"_s : u""_s)
                              + (format.Italic ? u"*"_s : u""_s);
        const QString inner = text.trimmed();
        if (marks.isEmpty() || inner.isEmpty())
            return text;
        const qsizetype at = text.indexOf(inner);
        QString closing = marks;
        std::reverse(closing.begin(), closing.end());
        return text.first(at) + marks + inner + closing + text.sliced(at + inner.size());
    }

    const RichTextDocument& m_document;
    const std::function<QString(const TextPicture&)>& m_picture;
    QString m_out;
    bool m_wasItem = false;
    ListKind m_list = ListKind::None;
    int m_level = 0;
    int m_number = 0;
};

} // namespace

QString MarkdownNotes(const RichTextDocument& document, const std::function<QString(const TextPicture&)>& picture)
{
    return Notes(document, picture).Write();
}

} // namespace qb
