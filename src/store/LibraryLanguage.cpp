#include "store/LibraryLanguage.h"

#include "store/CDBCreate.h"

#include <QSet>

namespace qb {

using namespace Qt::StringLiterals;

namespace {
const QString RulesTable = u"LanguageRules"_s;

/// All words that a language knows, in lower case.
QSet<QString> WordsOf(const LanguageDefinition& language)
{
    QSet<QString> words;
    const auto add = [&words](const QStringList& list) {
        for (const QString& word : list)
            words.insert(word.toCaseFolded());
    };
    add(language.ColouredWords);
    add(language.PlainWords);
    for (const QString& line : language.Rules.split(u'\n')) {
        if (line.startsWith("words "_L1))
            add(line.mid(line.indexOf(u": "_s) + 2).split(u' ', Qt::SkipEmptyParts));
    }
    return words;
}
} // namespace

LanguageDefinition LanguageOfLibrary(Database& database)
{
    LanguageDefinition language;
    Recordset properties = database.OpenRecordset(u"Properties"_s);
    properties.MoveFirst();
    language.Language = properties[u"LanguageUsed"_s].ToText();
    language.Comment = properties[u"CommentIdentifier"_s].ToText();
    language.CommentStart = properties[u"CommentIdentifierStart"_s].ToText();
    language.CommentEnd = properties[u"CommentIdentifierEnd"_s].ToText();
    language.ColouredKeywordColour = qint32(properties[u"ColouredKeywordColour"_s].ToLong());
    language.KeywordColour = qint32(properties[u"KeywordColour"_s].ToLong());
    language.CommentColour = qint32(properties[u"CommentColour"_s].ToLong());
    Statement rows = database.Query(u"SELECT Keyword, Coloured FROM Keywords"_s);
    while (rows.Step())
        (rows.Long(1) != 0 ? language.ColouredWords : language.PlainWords) << rows.Text(0);
    language.Rules = RulesOfLibrary(database);
    return language;
}

QString RulesOfLibrary(Database& database)
{
    if (!database.TableExists(RulesTable))
        return {};
    return database.QueryValue(u"SELECT Rules FROM LanguageRules"_s).ToText();
}

void StoreRulesOfLibrary(Database& database, const QString& rules)
{
    if (!database.TableExists(RulesTable)) {
        if (rules.isEmpty())
            return;
        CDBCreate(&database).Create_TblDef_LanguageRules();
    }
    Transaction transaction(database);
    database.Execute(u"DELETE FROM LanguageRules"_s);
    if (!rules.isEmpty())
        database.Execute(u"INSERT INTO LanguageRules (Rules) VALUES (?)"_s, {rules});
    transaction.Commit();
}

void TakeLanguage(Database& database, const LanguageDefinition& language)
{
    const LanguageDefinition former = LanguageOfLibrary(database);
    const QSet<QString> known = WordsOf(language);
    const auto add = [&database](const QStringList& words, bool coloured) {
        for (const QString& word : words)
            database.Execute(u"INSERT INTO Keywords (Keyword, Coloured) VALUES (?, ?)"_s, {word, coloured});
    };
    const auto unknown = [&known](QStringList words) {
        words.removeIf([&known](const QString& word) { return known.contains(word.toCaseFolded()); });
        return words;
    };
    Transaction transaction(database);
    database.Execute(u"DELETE FROM Keywords"_s);
    add(language.ColouredWords, true);
    add(language.PlainWords, false);
    add(unknown(former.ColouredWords), true);
    add(unknown(former.PlainWords), false);
    database.Execute(
        u"UPDATE Properties SET CommentIdentifier = ?, CommentIdentifierStart = ?, CommentIdentifierEnd = ?"_s,
        {language.Comment, language.CommentStart, language.CommentEnd});
    StoreRulesOfLibrary(database, language.Rules);
    transaction.Commit();
}

} // namespace qb
