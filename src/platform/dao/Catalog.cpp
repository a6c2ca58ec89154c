#include "platform/dao/Catalog.h"

#include "platform/dao/Database.h"

#include <algorithm>

namespace qb::Catalog {

using namespace Qt::StringLiterals;

namespace {

const QString FieldsTable = u"MSysFields"_s;
const QString RelationsTable = u"MSysRelations"_s;

// The declared types decide the engine's affinity: "TEXT" anywhere in the name keeps digits
// text, "BLOB" keeps bytes bytes, everything else is numeric.
QString DeclaredType(const Field& field)
{
    switch (field.Type) {
    case FieldType::Boolean:
        return u"BOOLEAN"_s;
    case FieldType::Byte:
        return u"BYTE"_s;
    case FieldType::Integer:
        return u"INTEGER16"_s;
    case FieldType::Long:
        return u"LONG"_s;
    case FieldType::Date:
        return u"DATETIME"_s;
    case FieldType::Text:
        return u"TEXT(%1)"_s.arg(field.Size);
    case FieldType::LongBinary:
        return u"LONGBINARY BLOB"_s;
    case FieldType::Memo:
        break;
    }
    return u"MEMO TEXT"_s;
}

QString Check(const Field& field, QLatin1StringView rule, const QString& condition)
{
    return u" CONSTRAINT %1 CHECK (%2)"_s.arg(Quoted(field.Name + u':' + rule), condition);
}

QString RangeCheck(const Field& field, const ValueRange& range)
{
    const QString name = Quoted(field.Name);
    if (field.Type == FieldType::Boolean)
        return Check(field, CheckRule::Range, u"%1 IN (0, -1)"_s.arg(name));
    // Null passes: a check is violated only by a result of 0.
    return Check(
        field, CheckRule::Range,
        u"%1 IS NULL OR (typeof(%1) = 'integer' AND %1 BETWEEN %2 AND %3)"_s.arg(name).arg(range.Low).arg(range.High));
}

QString Checks(const Field& field, bool withoutRange)
{
    if (const std::optional<ValueRange> range = RangeOf(field.Type))
        return withoutRange ? QString() : RangeCheck(field, *range);
    if (field.Type == FieldType::LongBinary)
        return {};
    const QString name = Quoted(field.Name);
    QString checks;
    // length() stops at a NUL character, so that one must not hide a longer text.
    if (field.Type == FieldType::Text)
        checks = Check(field, CheckRule::Length,
                       u"%1 IS NULL OR (length(%1) <= %2 AND instr(%1, char(0)) = 0)"_s.arg(name).arg(field.Size));
    if (!field.AllowZeroLength)
        checks += Check(field, CheckRule::ZeroLength, u"%1 <> ''"_s.arg(name));
    return checks;
}

QString IndexSql(const TableDef& table, const Index& index, const QString& name)
{
    QStringList columns;
    for (const QString& field : index.Fields)
        columns << Quoted(field);
    const QString unique = index.Unique || index.Primary ? u"UNIQUE "_s : QString();
    return u"CREATE %1INDEX %2 ON %3 (%4)"_s.arg(unique, Qualified(table.Schema, name), Quoted(table.Name),
                                                 columns.join(u", "_s));
}

/// The indexes of a table whose stored names begin with @p prefix, under the rest of their names.
std::vector<Index> ReadIndexes(Database& database, const TableDef& table, const QString& prefix)
{
    std::vector<Index> all;
    Statement rows = database.Query(u"SELECT l.name, l.\"unique\", i.name FROM pragma_index_list(?1, ?2) l, "
                                    "pragma_index_info(l.name, ?2) i ORDER BY l.name, i.seqno"_s,
                                    {table.Name, table.Schema});
    while (rows.Step()) {
        if (!rows.Text(0).startsWith(prefix))
            continue;
        const QString name = rows.Text(0).mid(prefix.size());
        if (all.empty() || all.back().Name != name)
            all.push_back(
                {.Name = name, .Fields = {}, .Primary = name == PrimaryIndexName, .Unique = rows.Long(1) != 0});
        all.back().Fields << rows.Text(2);
    }
    return all;
}

QString Literal(const Value& value)
{
    if (const auto* text = std::get_if<QString>(&value.Content()))
        return u'\'' + QString(*text).replace(u'\'', u"''"_s) + u'\'';
    return value.ToText();
}

} // namespace

void Create(Database& database, const QString& schema)
{
    database.Execute(
        u"CREATE TABLE %1 (TableName TEXT NOT NULL COLLATE NOCASE, FieldName TEXT NOT NULL "
        "COLLATE NOCASE, Sequence INTEGER NOT NULL, OrdinalPosition INTEGER NOT NULL, Type INTEGER NOT "
        "NULL, Size INTEGER NOT NULL, AutoNumber INTEGER NOT NULL, Required INTEGER NOT NULL, "
        "AllowZeroLength INTEGER NOT NULL, DefaultValue, PRIMARY KEY (TableName, FieldName)) WITHOUT ROWID"_s.arg(
            Qualified(schema, FieldsTable)));
    database.Execute(u"CREATE TABLE %1 (Name TEXT NOT NULL COLLATE NOCASE PRIMARY KEY, TableName TEXT NOT "
                     "NULL COLLATE NOCASE, ForeignTable TEXT NOT NULL COLLATE NOCASE, FieldName TEXT NOT NULL, "
                     "ForeignField TEXT NOT NULL, Attributes INTEGER NOT NULL) WITHOUT ROWID"_s.arg(
                         Qualified(schema, RelationsTable)));
}

bool IsIn(Database& database, const QString& schema)
{
    return !database
                .QueryValue(
                    u"SELECT 1 FROM %1 WHERE type = 'table' AND name = ?"_s.arg(Qualified(schema, u"sqlite_schema"_s)),
                    {FieldsTable})
                .IsNull();
}

QString ColumnSql(const Field& field, bool required, bool withoutRange)
{
    QString sql = Quoted(field.Name) + u' ';
    if (field.AutoIncrement) {
        // Only this very spelling makes the engine number the rows; numbers are not used again.
        return sql + u"INTEGER PRIMARY KEY AUTOINCREMENT"_s + Checks(field, withoutRange);
    }
    sql += DeclaredType(field);
    // A Boolean is never Null: one that is not set is false.
    const bool isBoolean = field.Type == FieldType::Boolean;
    if (required || isBoolean)
        sql += u" NOT NULL"_s;
    if (!field.DefaultValue.IsNull() || isBoolean)
        sql += u" DEFAULT "_s + Literal(isBoolean && field.DefaultValue.IsNull() ? Value(false) : field.DefaultValue);
    if (field.Type == FieldType::Text || field.Type == FieldType::Memo)
        sql += u" COLLATE NOCASE"_s;
    return sql + Checks(field, withoutRange);
}

QString CreateTableSql(const TableDef& table, const std::vector<Relation>& relations, const QString& name)
{
    const Index* primary = table.FindIndex(PrimaryIndexName);
    QStringList parts;
    for (const Field& field : table.Fields) {
        const bool inPrimary = primary && primary->Fields.contains(field.Name, Qt::CaseInsensitive);
        parts << ColumnSql(field, field.Required || inPrimary);
    }
    for (const Relation& relation : relations) {
        QString reference = u"FOREIGN KEY (%1) REFERENCES %2 (%3)"_s.arg(
            Quoted(relation.ForeignField), Quoted(relation.Table), Quoted(relation.FieldName));
        if (relation.Attributes & SchemaAttribute::RelationUpdateCascade)
            reference += u" ON UPDATE CASCADE"_s;
        if (relation.Attributes & SchemaAttribute::RelationDeleteCascade)
            reference += u" ON DELETE CASCADE"_s;
        parts << reference;
    }
    return u"CREATE TABLE %1 (%2)"_s.arg(Qualified(table.Schema, name), parts.join(u", "_s));
}

QString StoredIndexName(const QString& table, const QString& index)
{
    return table + u'_' + index;
}

QString StoredOwnIndexName(const QString& table, const QString& index)
{
    return u"own_"_s + StoredIndexName(table, index);
}

QString CreateIndexSql(const TableDef& table, const Index& index)
{
    return IndexSql(table, index, StoredIndexName(table.Name, index.Name));
}

QString CreateOwnIndexSql(const TableDef& table, const Index& index)
{
    return IndexSql(table, index, StoredOwnIndexName(table.Name, index.Name));
}

TableDef ReadTableDef(Database& database, const QString& schema, const QString& table)
{
    TableDef definition{.Name = {}, .Fields = {}, .Indexes = {}, .Schema = schema};
    if (schema == TemporarySchema && !IsIn(database, schema))
        return definition; // nothing was made there yet
    Statement fields = database.Query(
        u"SELECT TableName, FieldName, Type, Size, OrdinalPosition, AutoNumber, Required, "
        "AllowZeroLength, DefaultValue FROM %1 WHERE TableName = ? "
        "ORDER BY OrdinalPosition, Sequence"_s.arg(Qualified(schema, FieldsTable)),
        {table});
    while (fields.Step()) {
        definition.Name = fields.Text(0);
        definition.Fields.push_back({.Name = fields.Text(1),
                                     .Type = FieldType(fields.Long(2)),
                                     .Size = int(fields.Long(3)),
                                     .OrdinalPosition = int(fields.Long(4)),
                                     .AutoIncrement = fields.Long(5) != 0,
                                     .Required = fields.Long(6) != 0,
                                     .AllowZeroLength = fields.Long(7) != 0,
                                     .DefaultValue = fields.Column(8)});
    }
    definition.Indexes = ReadIndexes(database, definition, StoredIndexName(definition.Name, {}));
    return definition;
}

std::vector<Index> ReadOwnIndexes(Database& database, const TableDef& table)
{
    return ReadIndexes(database, table, StoredOwnIndexName(table.Name, {}));
}

void WriteField(Database& database, const TableDef& table, const Field& field)
{
    database.Execute(u"INSERT INTO %1 (TableName, FieldName, Sequence, OrdinalPosition, Type, Size, "
                     "AutoNumber, Required, AllowZeroLength, DefaultValue) VALUES (?1, ?2, (SELECT "
                     "coalesce(max(Sequence), 0) + 1 FROM %1 WHERE TableName = ?1), ?3, ?4, ?5, ?6, ?7, ?8, ?9)"_s.arg(
                         Qualified(table.Schema, FieldsTable)),
                     {table.Name, field.Name, field.OrdinalPosition, int(field.Type), field.Size, field.AutoIncrement,
                      field.Required, field.AllowZeroLength, field.DefaultValue});
}

void ForgetField(Database& database, const TableDef& table, const QString& field)
{
    database.Execute(
        u"DELETE FROM %1 WHERE TableName = ? AND FieldName = ?"_s.arg(Qualified(table.Schema, FieldsTable)),
        {table.Name, field});
}

void ForgetTable(Database& database, const TableDef& table)
{
    database.Execute(u"DELETE FROM %1 WHERE TableName = ?"_s.arg(Qualified(table.Schema, FieldsTable)), {table.Name});
    database.Execute(u"DELETE FROM %1 WHERE ForeignTable = ?"_s.arg(Qualified(table.Schema, RelationsTable)),
                     {table.Name});
}

std::vector<Relation> ReadRelations(Database& database)
{
    std::vector<Relation> relations;
    Statement rows = database.Query(u"SELECT Name, TableName, ForeignTable, FieldName, ForeignField, Attributes "
                                    "FROM %1 ORDER BY Name"_s.arg(Qualified(MainSchema, RelationsTable)));
    while (rows.Step())
        relations.push_back({rows.Text(0), rows.Text(1), rows.Text(2), rows.Text(3), rows.Text(4), int(rows.Long(5))});
    return relations;
}

void WriteRelation(Database& database, const Relation& relation)
{
    database.Execute(u"INSERT INTO %1 (Name, TableName, ForeignTable, FieldName, ForeignField, Attributes) "
                     "VALUES (?, ?, ?, ?, ?, ?)"_s.arg(Qualified(MainSchema, RelationsTable)),
                     {relation.Name, relation.Table, relation.ForeignTable, relation.FieldName, relation.ForeignField,
                      relation.Attributes});
}

} // namespace qb::Catalog
