#include "text/LanguageSample.h"

#include <QStringList>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

/// The bar keeps blanks at the begin of a line, and empty lines.
const QString SampleKey = u"sample: |"_s;

QString MadeSample(const LanguageDefinition& language)
{
    constexpr int Words = 6;
    const auto some = [](const QStringList& words) { return words.mid(0, Words).join(u' '); };
    QStringList lines{language.Comment + u" A comment to the end of the line"_s};
    if (!language.CommentStart.isEmpty())
        lines << language.CommentStart + u" a comment of several lines "_s + language.CommentEnd;
    lines << some(language.ColouredWords) << some(language.PlainWords) << u"name = \"a text\" + 42"_s;
    lines.removeAll(QString());
    return lines.join(u'\n');
}

} // namespace

QString SampleOf(const LanguageDefinition& language)
{
    QStringList lines;
    for (const QString& line : language.Rules.split(u'\n')) {
        if (line.startsWith(SampleKey))
            lines << line.mid(SampleKey.size());
    }
    return lines.isEmpty() ? MadeSample(language) : lines.join(u'\n');
}

QString WithSample(const QString& rules, const QString& text)
{
    constexpr int Lines = 18;
    QString whole = rules;
    for (const QString& line : text.trimmed().split(u'\n').mid(0, Lines))
        whole += SampleKey + line + u'\n';
    return whole;
}

} // namespace qb
