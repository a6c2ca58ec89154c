#include "store/LibraryLanguage.h"

#include "store/CDBCreate.h"

namespace qb {

using namespace Qt::StringLiterals;

namespace {
const QString RulesTable = u"LanguageRules"_s;
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

} // namespace qb
