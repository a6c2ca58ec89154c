#include "platform/dao/DateForm.h"

#include "platform/dao/DBEngine.h"

#include <sqlite3.h>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

/// The function `moment(x)` of a statement: the moment of a reading of the clock.
void Moment(sqlite3_context* context, int, sqlite3_value** values)
{
    if (sqlite3_value_type(values[0]) == SQLITE_INTEGER)
        sqlite3_result_int64(context, Date::FromWallSeconds(sqlite3_value_int64(values[0])).Seconds());
    else
        sqlite3_result_value(context, values[0]);
}

/// None of a table that another program has added.
QStringList DateColumns(Database& database, const QString& table)
{
    QStringList columns;
    Statement rows = database.Query(u"SELECT FieldName FROM main.MSysFields WHERE TableName = ? AND Type = ?"_s,
                                    {table, int(FieldType::Date)});
    while (rows.Step())
        columns << Quoted(rows.Text(0));
    return columns;
}

} // namespace

void DateForm::Convert(Database& database)
{
    database.DefineFunction("moment", 1, Moment);
    for (const QString& name : database.TableNames()) {
        QStringList changes;
        for (const QString& column : DateColumns(database, name))
            changes << u"%1 = moment(%1)"_s.arg(column);
        if (!changes.isEmpty())
            database.Execute(u"UPDATE %1 SET %2"_s.arg(Quoted(name), changes.join(u", "_s)));
    }
    database.Execute(u"PRAGMA user_version = %1"_s.arg(DBEngine::FormatVersion));
}

} // namespace qb
