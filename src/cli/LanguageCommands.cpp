// The language of a library.

#include "cli/Arguments.h"
#include "cli/CommandTable.h"
#include "cli/OpenLibrary.h"
#include "cli/Output.h"
#include "store/KeywordDefiner.h"
#include "store/ShippedLanguages.h"

#include <QFileInfo>

namespace qb::cli {

using namespace Qt::StringLiterals;

namespace {

QString ColourText(qint32 colour)
{
    return u"#%1%2%3"_s.arg(colour & 0xff, 2, 16, QLatin1Char('0'))
        .arg(colour >> 8 & 0xff, 2, 16, QLatin1Char('0'))
        .arg(colour >> 16 & 0xff, 2, 16, QLatin1Char('0'));
}

int ShowLanguage(const Arguments& arguments)
{
    const auto database = OpenLibrary(arguments.Positional(0), DBEngine::Access::ReadOnly);
    const KeywordDefiner definer(*database);
    const LanguageDefinition& language = definer.Values();
    const QStringList coloured = definer.GetKeywords(true);
    const QStringList plain = definer.GetKeywords(false);
    if (arguments.Json()) {
        Print(QJsonObject{{u"language"_s, language.Language},
                          {u"comment"_s, language.Comment},
                          {u"commentStart"_s, language.CommentStart},
                          {u"commentEnd"_s, language.CommentEnd},
                          {u"rules"_s, language.Rules},
                          {u"colouredKeywordColour"_s, ColourText(language.ColouredKeywordColour)},
                          {u"keywordColour"_s, ColourText(language.KeywordColour)},
                          {u"commentColour"_s, ColourText(language.CommentColour)},
                          {u"colouredWords"_s, QJsonArray::fromStringList(coloured)},
                          {u"plainWords"_s, QJsonArray::fromStringList(plain)}});
        return 0;
    }
    const std::pair<const char*, QString> lines[] = {
        {"language:", language.Language},
        {"comment:", language.Comment},
        {"comment start:", language.CommentStart},
        {"comment end:", language.CommentEnd},
        {"keyword colour:", ColourText(language.ColouredKeywordColour)},
        {"text colour:", ColourText(language.KeywordColour)},
        {"comment colour:", ColourText(language.CommentColour)},
        {"rules:", language.Rules.isEmpty() ? u"none"_s : u"%1 lines"_s.arg(language.Rules.count(u'\n'))},
        {"coloured words:", coloured.join(u' ')},
        {"plain words:", plain.join(u' ')},
    };
    for (const auto& [name, value] : lines)
        Print(u"%1%2\n"_s.arg(QLatin1StringView(name), -16).arg(value));
    return 0;
}

int ExportLanguage(const QString& library, const QString& file)
{
    const auto database = OpenLibrary(library, DBEngine::Access::ReadOnly);
    KeywordDefiner(*database).ExportLanguageDefinition(file);
    return 0;
}

int ImportLanguage(const QString& library, const QString& file)
{
    const auto database = OpenLibrary(library, DBEngine::Access::ReadWrite);
    if (!QFileInfo(file).isFile())
        throw RuntimeError(ErrorNumber::FileNotFound, u"The language definition file '%1' was not found."_s.arg(file),
                           u"language"_s);
    KeywordDefiner definer(*database);
    if (!definer.ImportLanguageDefinition(file) || !definer.CheckCommentDelimiter())
        return 1;
    definer.SaveLanguage();
    definer.Commit();
    return 0;
}

} // namespace

int Languages(const QStringList& words)
{
    const Arguments arguments(words, {}, 0);
    QJsonArray list;
    for (const ShippedLanguage& language : ShippedLanguages()) {
        if (arguments.Json())
            list.append(QJsonObject{{u"key"_s, language.Key},
                                    {u"name"_s, language.Name},
                                    {u"files"_s, QJsonArray::fromStringList(language.Files)},
                                    {u"interpreters"_s, QJsonArray::fromStringList(language.Interpreters)}});
        else
            Print(u"%1 %2 %3\n"_s.arg(language.Key, -16).arg(language.Name, -20).arg(language.Files.join(u' ')));
    }
    if (arguments.Json())
        Print(list);
    return 0;
}

int Language(const QStringList& words)
{
    const QString verb = words.value(0);
    if (verb != u"export"_s && verb != u"import"_s)
        return ShowLanguage(Arguments(words, {}, 1));
    const Arguments arguments(words.mid(1), {}, 2);
    const auto run = verb == u"export"_s ? ExportLanguage : ImportLanguage;
    return run(arguments.Positional(0), arguments.Positional(1));
}

} // namespace qb::cli
