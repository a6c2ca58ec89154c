#include "text/TextBurden.h"

#include "platform/richtext/RtfPlainText.h"

#include <QLocale>
#include <algorithm>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

// Far beyond what anybody writes, and what a box still shows within seconds.
constexpr TextBurden MostFormatted{.Characters = 40'000'000,
                                   .Lines = 400'000,
                                   .LongestLine = 1'000'000,
                                   .Words = 1'500'000,
                                   .WordsOfLine = 15'000,
                                   .LongestRun = 100'000};
constexpr TextBurden MostCode{.Characters = 40'000'000,
                              .Lines = 400'000,
                              .LongestLine = 2'000'000,
                              .Words = 1'500'000,
                              .WordsOfLine = 50'000,
                              .LongestRun = 2'000'000};

// What is shown of a text that is larger.
constexpr qsizetype ShownSource = 1'000'000; // characters of its RTF
constexpr qsizetype ShownLines = 2'000;
constexpr qsizetype ShownOfLine = 5'000; // characters

bool IsLetter(QChar character)
{
    return (character >= u'a' && character <= u'z') || (character >= u'A' && character <= u'Z');
}

/// Counts in one pass. A word that it takes for another is counted all the same, so that nothing slips through.
class Count {
public:
    explicit Count(QStringView rtf) : m_rtf(rtf) {}

    TextBurden Run()
    {
        while (m_at < m_rtf.size()) {
            if (m_rtf[m_at] == u'\\')
                TakeWord();
            else
                TakeCharacter();
        }
        EndLine();
        return m_burden;
    }

private:
    void TakeCharacter()
    {
        const QChar character = m_rtf[m_at++];
        if (character == u'{' || character == u'}' || character == u'\r' || character == u'\n')
            return;
        ++m_line;
        m_run = character == u' ' ? 0 : m_run + 1;
        m_burden.LongestRun = std::max(m_burden.LongestRun, m_run);
    }

    void TakeWord()
    {
        const qsizetype begin = ++m_at;
        while (m_at < m_rtf.size() && IsLetter(m_rtf[m_at]))
            ++m_at;
        if (m_at == begin) { // a symbol, or a byte: \'e4
            m_at += m_at < m_rtf.size() && m_rtf[m_at] == u'\'' ? 3 : 1;
            ++m_line;
            return;
        }
        const QStringView word = m_rtf.sliced(begin, m_at - begin);
        while (m_at < m_rtf.size() && (m_rtf[m_at] == u'-' || m_rtf[m_at].isDigit()))
            ++m_at;
        if (m_at < m_rtf.size() && m_rtf[m_at] == u' ')
            ++m_at;
        if (word == u"par"_s || word == u"line"_s || word == u"row"_s || word == u"sect"_s || word == u"page"_s)
            EndLine();
        else if (word == u"u"_s) // with the character behind it for readers without Unicode
            ;
        else if (word == u"tab"_s)
            ++m_line;
        else
            ++m_words;
    }

    void EndLine()
    {
        ++m_burden.Lines;
        m_burden.Characters += m_line;
        m_burden.LongestLine = std::max(m_burden.LongestLine, m_line);
        m_burden.Words += m_words;
        m_burden.WordsOfLine = std::max(m_burden.WordsOfLine, m_words);
        m_line = m_words = m_run = 0;
    }

    QStringView m_rtf;
    qsizetype m_at = 0;
    qsizetype m_line = 0;  ///< characters of this line
    qsizetype m_words = 0; ///< of this line
    qsizetype m_run = 0;   ///< characters since the last blank
    TextBurden m_burden;
};

QString Grouped(qsizetype number)
{
    QLocale locale = QLocale::c();
    locale.setNumberOptions(QLocale::DefaultNumberOptions); // with a mark between thousands
    return locale.toString(number);
}

} // namespace

TextBurden BurdenOf(QStringView rtf)
{
    return Count(rtf).Run();
}

QString WhyTooLarge(const TextBurden& burden, TextForm form)
{
    const TextBurden& most = form == TextForm::Formatted ? MostFormatted : MostCode;
    if (burden.LongestLine > most.LongestLine)
        return u"one of its lines has %1 characters"_s.arg(Grouped(burden.LongestLine));
    if (burden.Lines > most.Lines)
        return u"it has %1 lines"_s.arg(Grouped(burden.Lines));
    if (burden.Characters > most.Characters)
        return u"it has %1 characters"_s.arg(Grouped(burden.Characters));
    if (burden.LongestRun > most.LongestRun)
        return u"one of its lines has %1 characters without a blank"_s.arg(Grouped(burden.LongestRun));
    if (burden.WordsOfLine > most.WordsOfLine)
        return u"the looks of one of its lines change %1 times"_s.arg(Grouped(burden.WordsOfLine));
    if (burden.Words > most.Words)
        return u"its looks change %1 times"_s.arg(Grouped(burden.Words));
    return {};
}

QString PlainBegin(const QString& rtf, const QString& reason)
{
    return PlainBeginOfText(PlainTextFromRtf(rtf.left(ShownSource)), reason);
}

QString PlainBeginOfText(const QString& text, const QString& reason)
{
    QStringList shown{
        u"This text is too large to be shown whole and to be changed here: %1. Its begin follows, as "
        "plain text. Nothing of it is lost: the command \"quillbase-cli show\" writes all of it."_s.arg(reason),
        QString()};
    qsizetype at = 0;
    const QString begin = text.left(ShownSource);
    for (qsizetype line = 0; line < ShownLines && at <= begin.size(); ++line) {
        const qsizetype end = begin.indexOf(u'\n', at);
        QString one = begin.mid(at, std::min(end < 0 ? begin.size() : end, at + ShownOfLine) - at);
        shown << one.remove(u'\r');
        if (end < 0)
            break;
        at = end + 1;
    }
    return shown.join(u"\r\n"_s);
}

} // namespace qb
