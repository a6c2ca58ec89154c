// The table definitions of a Database. Each change of the schema and its entry in the catalog
// are one transaction.

#include "platform/dao/Catalog.h"
#include "platform/dao/Database.h"

#include <algorithm>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

RuntimeError ItemNotFound(const QString& what, const QString& name)
{
    return {ErrorNumber::ItemNotFound, u"There is no %1 '%2' in the database."_s.arg(what, name), u"Database"_s};
}

void RefuseMisnamedPrimary(const Index& index)
{
    if (index.Primary && index.Name != PrimaryIndexName)
        throw RuntimeError(ErrorNumber::ValueNotAllowed,
                           u"A primary index must be named 'PrimaryKey', not '%1'."_s.arg(index.Name),
                           u"Database::AppendTableDef"_s);
}

} // namespace

QStringList Database::TableNames()
{
    QStringList names;
    Statement tables = Query(u"SELECT name FROM sqlite_schema WHERE type = 'table' AND name NOT LIKE 'MSys%' "
                             "AND name NOT LIKE 'sqlite\\_%' ESCAPE '\\' ORDER BY name"_s);
    while (tables.Step())
        names << tables.Text(0);
    return names;
}

bool Database::TableExists(const QString& table)
{
    return !QueryValue(u"SELECT 1 FROM sqlite_schema WHERE type = 'table' AND name = ? COLLATE NOCASE"_s, {table})
                .IsNull();
}

const TableDef& Database::GetTableDef(const QString& table)
{
    return *SharedTableDef(table);
}

std::shared_ptr<const TableDef> Database::SharedTableDef(const QString& table)
{
    std::shared_ptr<const TableDef>& known = m_tableDefs[table.toLower()];
    if (!known) {
        TableDef definition = Catalog::ReadTableDef(*this, table);
        if (definition.Fields.empty())
            throw ItemNotFound(u"table"_s, table);
        known = std::make_shared<const TableDef>(std::move(definition));
    }
    return known;
}

void Database::AppendTableDef(const TableDef& table)
{
    if (TableExists(table.Name))
        throw RuntimeError(ErrorNumber::TableExists, u"The table '%1' exists already."_s.arg(table.Name),
                           u"Database::AppendTableDef"_s);
    for (const Index& index : table.Indexes)
        RefuseMisnamedPrimary(index);
    TableDef ordered = table;
    std::stable_sort(ordered.Fields.begin(), ordered.Fields.end(),
                     [](const Field& a, const Field& b) { return a.OrdinalPosition < b.OrdinalPosition; });
    Transaction transaction(*this);
    Execute(Catalog::CreateTableSql(ordered, {}, ordered.Name));
    for (const Field& field : table.Fields)
        Catalog::WriteField(*this, table.Name, field);
    for (const Index& index : table.Indexes)
        Execute(Catalog::CreateIndexSql(table.Name, index));
    transaction.Commit();
    m_tableDefs.clear();
}

void Database::DeleteTableDef(const QString& table)
{
    const QString name = GetTableDef(table).Name;
    RefuseIfReferredTo(name);
    Transaction transaction(*this);
    Execute(u"DROP TABLE "_s + Quoted(name));
    Catalog::ForgetTable(*this, name);
    transaction.Commit();
    m_tableDefs.clear();
}

void Database::AppendField(const QString& table, const Field& field)
{
    const QString name = GetTableDef(table).Name;
    if (GetTableDef(table).FindField(field.Name))
        throw RuntimeError(ErrorNumber::FieldExists,
                           u"The table '%1' has a column '%2' already."_s.arg(name, field.Name),
                           u"Database::AppendField"_s);
    Transaction transaction(*this);
    Execute(u"ALTER TABLE %1 ADD COLUMN %2"_s.arg(Quoted(name), Catalog::ColumnSql(field, field.Required)));
    Catalog::WriteField(*this, name, field);
    transaction.Commit();
    m_tableDefs.clear();
}

void Database::DeleteField(const QString& table, const QString& field)
{
    const QString name = GetTableDef(table).Name;
    const Field* column = GetTableDef(table).FindField(field);
    if (!column)
        throw ItemNotFound(u"column"_s, field);
    Transaction transaction(*this);
    Execute(u"ALTER TABLE %1 DROP COLUMN %2"_s.arg(Quoted(name), Quoted(column->Name)));
    Catalog::ForgetField(*this, name, field);
    transaction.Commit();
    m_tableDefs.clear();
}

void Database::AppendIndex(const QString& table, const Index& index)
{
    const QString name = GetTableDef(table).Name;
    if (GetTableDef(table).FindIndex(index.Name))
        throw RuntimeError(ErrorNumber::IndexExists,
                           u"The table '%1' has an index '%2' already."_s.arg(name, index.Name),
                           u"Database::AppendIndex"_s);
    if (index.Primary)
        throw RuntimeError(ErrorNumber::ValueNotAllowed, u"A primary index is made with its table."_s,
                           u"Database::AppendIndex"_s);
    Execute(Catalog::CreateIndexSql(name, index));
    m_tableDefs.clear();
}

std::vector<Relation> Database::Relations()
{
    return Catalog::ReadRelations(*this);
}

std::vector<Relation> Database::RelationsInto(const QString& foreignTable)
{
    std::vector<Relation> relations = Relations();
    std::erase_if(relations, [&foreignTable](const Relation& relation) {
        return relation.ForeignTable.compare(foreignTable, Qt::CaseInsensitive) != 0;
    });
    return relations;
}

void Database::AppendRelation(const Relation& relation)
{
    for (const Relation& known : Relations()) {
        if (known.Name.compare(relation.Name, Qt::CaseInsensitive) == 0)
            throw RuntimeError(ErrorNumber::RelationExists, u"The relation '%1' exists already."_s.arg(relation.Name),
                               u"Database::AppendRelation"_s);
    }
    const TableDef foreign = GetTableDef(relation.ForeignTable);
    if (!foreign.FindField(relation.ForeignField))
        throw ItemNotFound(u"column"_s, relation.ForeignField);
    if (!GetTableDef(relation.Table).FindField(relation.FieldName))
        throw ItemNotFound(u"column"_s, relation.FieldName);
    RefuseIfReferredTo(foreign.Name);
    Transaction transaction(*this);
    Catalog::WriteRelation(*this, relation);
    RebuildTable(foreign.Name);
    transaction.Commit();
}

/// Dropping a table deletes what refers to its rows.
void Database::RefuseIfReferredTo(const QString& table)
{
    for (const Relation& relation : Relations()) {
        if (relation.Table.compare(table, Qt::CaseInsensitive) == 0)
            throw RuntimeError(
                ErrorNumber::RelatedRecordRequired,
                u"The table '%1' can't be remade or deleted: '%2' refers to it."_s.arg(table, relation.ForeignTable),
                u"Database"_s);
    }
}

/// The engine takes references only when a table is made, so the table is made anew.
void Database::RebuildTable(const QString& name)
{
    m_tableDefs.clear();
    const TableDef table = GetTableDef(name);
    QStringList columns;
    for (const Field& field : table.Fields)
        columns << Quoted(field.Name);
    const QString list = columns.join(u", "_s);
    const QString interim = name + u"~"_s;
    const bool numbered = std::any_of(table.Fields.begin(), table.Fields.end(),
                                      [](const Field& field) { return field.AutoIncrement; });
    const Value lastNumber = numbered ? QueryValue(u"SELECT seq FROM sqlite_sequence WHERE name = ?"_s, {name})
                                      : Value();
    Execute(Catalog::CreateTableSql(table, RelationsInto(name), interim));
    Execute(u"INSERT INTO %1 (%2) SELECT %2 FROM %3"_s.arg(Quoted(interim), list, Quoted(name)));
    Execute(u"DROP TABLE "_s + Quoted(name));
    Execute(u"ALTER TABLE %1 RENAME TO %2"_s.arg(Quoted(interim), Quoted(name)));
    if (!lastNumber.IsNull()) { // numbers that were given stay given
        Execute(u"DELETE FROM sqlite_sequence WHERE name = ?"_s, {name});
        Execute(u"INSERT INTO sqlite_sequence (name, seq) VALUES (?, ?)"_s, {name, lastNumber});
    }
    for (const Index& index : table.Indexes)
        Execute(Catalog::CreateIndexSql(name, index));
    m_tableDefs.clear();
}

} // namespace qb
