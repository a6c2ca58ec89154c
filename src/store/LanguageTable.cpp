#include "store/LanguageTable.h"

#include "platform/system/RuntimeError.h"

#include <QHash>
#include <QSet>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

[[noreturn]] void Fail(int line, const QString& why)
{
    throw RuntimeError(ErrorNumber::InvalidCall, u"line %1: %2"_s.arg(line).arg(why), u"LanguageFromTable"_s);
}

} // namespace

LanguageDefinition LanguageFromTable(const QString& text)
{
    LanguageDefinition language = BuiltInLanguage(LanguageType::VB); // for its colours
    language.Version.clear();
    language.Language.clear();
    language.Comment.clear();
    const QHash<QString, QString*> values{{u"language"_s, &language.Language},
                                          {u"comment"_s, &language.Comment},
                                          {u"comment-start"_s, &language.CommentStart},
                                          {u"comment-end"_s, &language.CommentEnd}};
    const QHash<QString, QStringList*> sections{{u"[coloured]"_s, &language.ColouredWords},
                                                {u"[plain]"_s, &language.PlainWords}};
    for (QStringList* words : sections)
        words->clear();
    QStringList* section = nullptr;
    bool inRules = false;
    QSet<QString> known;
    int number = 0;
    for (const QString& line : text.split(u'\n')) {
        ++number;
        if (line.isEmpty() || line == u"#"_s || line.startsWith(u"# "_s))
            continue;
        if (line == u"[rules]"_s) {
            inRules = true;
            continue;
        }
        if (inRules) {
            language.Rules += line.trimmed() + u'\n';
            continue;
        }
        if (QStringList* words = sections.value(line)) {
            section = words;
            continue;
        }
        if (!section) {
            const qsizetype colon = line.indexOf(u": "_s);
            QString* value = values.value(line.left(colon));
            if (colon < 0 || !value)
                Fail(number, u"'%1' is no value of a language."_s.arg(line));
            *value = line.mid(colon + 2);
            continue;
        }
        for (const QString& word : line.split(u' ', Qt::SkipEmptyParts)) {
            if (known.contains(word.toCaseFolded()))
                Fail(number, u"The word '%1' stands there already."_s.arg(word));
            known.insert(word.toCaseFolded());
            *section << word;
        }
    }
    if (language.Language.isEmpty() || language.Comment.isEmpty())
        Fail(number, u"The language or its comment is not named."_s);
    if (const QString reason = WhyNotStorable(language); !reason.isEmpty())
        Fail(number, reason);
    return language;
}

} // namespace qb
