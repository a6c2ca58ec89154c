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

std::vector<Relation> RelationsInto(Database& database, const QString& foreignTable)
{
    std::vector<Relation> relations = database.Relations();
    std::erase_if(relations, [&foreignTable](const Relation& relation) {
        return relation.ForeignTable.compare(foreignTable, Qt::CaseInsensitive) != 0;
    });
    return relations;
}

/// Dropping a table deletes what refers to its rows.
void RefuseIfReferredTo(Database& database, const TableDef& table)
{
    if (table.Schema != MainSchema)
        return; // relations are of the main file
    for (const Relation& relation : database.Relations()) {
        if (relation.Table.compare(table.Name, Qt::CaseInsensitive) == 0)
            throw RuntimeError(ErrorNumber::RelatedRecordRequired,
                               u"The table '%1' can't be remade or deleted: '%2' refers to it."_s.arg(
                                   table.Name, relation.ForeignTable),
                               u"Database"_s);
    }
}

} // namespace

QStringList Database::TableNames(const QString& schema)
{
    QStringList names;
    Statement tables = Query(u"SELECT name FROM %1 WHERE type = 'table' AND name NOT LIKE 'MSys%' "
                             "AND name NOT LIKE 'sqlite\\_%' ESCAPE '\\' AND name NOT LIKE 'own\\_%' ESCAPE '\\' "
                             "ORDER BY name"_s.arg(Qualified(schema, u"sqlite_schema"_s)));
    while (tables.Step())
        names << tables.Text(0);
    return names;
}

bool Database::TableExists(const QString& table)
{
    const auto [schema, name] = Place(table);
    // One without rows of its own is none: it is what a stranger's file has in a table's place.
    return !QueryValue(u"SELECT 1 FROM %1 WHERE type = 'table' AND rootpage > 0 AND name = ? COLLATE NOCASE"_s.arg(
                           Qualified(schema, u"sqlite_schema"_s)),
                       {name})
                .IsNull();
}

const TableDef& Database::GetTableDef(const QString& table)
{
    return *SharedTableDef(table);
}

std::shared_ptr<const TableDef> Database::SharedTableDef(const QString& table)
{
    const auto [schema, name] = Place(table);
    std::shared_ptr<const TableDef>& known = m_tableDefs[Qualified(schema, name).toLower()];
    if (!known) {
        TableDef definition = Catalog::ReadTableDef(*this, schema, name);
        if (definition.Fields.empty())
            throw ItemNotFound(u"table"_s, table);
        known = std::make_shared<const TableDef>(std::move(definition));
    }
    return known;
}

void Database::AppendTableDef(const TableDef& table)
{
    TableDef ordered = table;
    ordered.Schema = table.Schema.isEmpty() ? MainSchema : table.Schema;
    if (TableExists(ordered.Schema + u'.' + table.Name))
        throw RuntimeError(ErrorNumber::TableExists, u"The table '%1' exists already."_s.arg(table.Name),
                           u"Database::AppendTableDef"_s);
    for (const Index& index : table.Indexes)
        RefuseMisnamedPrimary(index);
    std::stable_sort(ordered.Fields.begin(), ordered.Fields.end(),
                     [](const Field& a, const Field& b) { return a.OrdinalPosition < b.OrdinalPosition; });
    Transaction transaction(*this);
    if (ordered.Schema == TemporarySchema && !Catalog::IsIn(*this, TemporarySchema))
        Catalog::Create(*this, TemporarySchema);
    Execute(Catalog::CreateTableSql(ordered, {}, ordered.Name));
    for (const Field& field : table.Fields)
        Catalog::WriteField(*this, ordered, field);
    for (const Index& index : table.Indexes)
        Execute(Catalog::CreateIndexSql(ordered, index));
    transaction.Commit();
    m_tableDefs.clear();
}

void Database::DeleteTableDef(const QString& table)
{
    const std::shared_ptr<const TableDef> known = SharedTableDef(table);
    RefuseIfReferredTo(*this, *known);
    Transaction transaction(*this);
    Execute(u"DROP TABLE "_s + known->Reference());
    Catalog::ForgetTable(*this, *known);
    transaction.Commit();
    m_tableDefs.clear();
}

void Database::AppendField(const QString& table, const Field& field)
{
    const std::shared_ptr<const TableDef> known = SharedTableDef(table);
    if (known->FindField(field.Name))
        throw RuntimeError(ErrorNumber::FieldExists,
                           u"The table '%1' has a column '%2' already."_s.arg(known->Name, field.Name),
                           u"Database::AppendField"_s);
    // A check would have the engine read all rows, long texts and all, to see whether they pass.
    Transaction transaction(*this);
    Execute(u"ALTER TABLE %1 ADD COLUMN %2"_s.arg(known->Reference(), Catalog::ColumnSql(field, field.Required, true)));
    Catalog::WriteField(*this, *known, field);
    transaction.Commit();
    m_tableDefs.clear();
}

void Database::DeleteField(const QString& table, const QString& field)
{
    const std::shared_ptr<const TableDef> known = SharedTableDef(table);
    const Field* column = known->FindField(field);
    if (!column)
        throw ItemNotFound(u"column"_s, field);
    Transaction transaction(*this);
    Execute(u"ALTER TABLE %1 DROP COLUMN %2"_s.arg(known->Reference(), Quoted(column->Name)));
    Catalog::ForgetField(*this, *known, field);
    transaction.Commit();
    m_tableDefs.clear();
}

void Database::AppendIndex(const QString& table, const Index& index)
{
    const std::shared_ptr<const TableDef> known = SharedTableDef(table);
    if (known->FindIndex(index.Name))
        throw RuntimeError(ErrorNumber::IndexExists,
                           u"The table '%1' has an index '%2' already."_s.arg(known->Name, index.Name),
                           u"Database::AppendIndex"_s);
    if (index.Primary)
        throw RuntimeError(ErrorNumber::ValueNotAllowed, u"A primary index is made with its table."_s,
                           u"Database::AppendIndex"_s);
    Execute(Catalog::CreateIndexSql(*known, index));
    m_tableDefs.clear();
}

void Database::DeleteIndex(const QString& table, const QString& index)
{
    const std::shared_ptr<const TableDef> known = SharedTableDef(table);
    const Index* found = known->FindIndex(index);
    if (!found)
        throw ItemNotFound(u"index"_s, index);
    Execute(u"DROP INDEX "_s + Qualified(known->Schema, Catalog::StoredIndexName(known->Name, found->Name)));
    m_tableDefs.clear();
}

void Database::AppendOwnIndex(const QString& table, const Index& index)
{
    Execute(Catalog::CreateOwnIndexSql(*SharedTableDef(table), index));
}

QStringList Database::OwnIndexNames(const QString& table)
{
    QStringList names;
    for (const Index& index : Catalog::ReadOwnIndexes(*this, *SharedTableDef(table)))
        names << index.Name;
    return names;
}

std::vector<Relation> Database::Relations()
{
    return Catalog::ReadRelations(*this);
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
    RefuseIfReferredTo(*this, foreign);
    Transaction transaction(*this);
    Catalog::WriteRelation(*this, relation);
    RebuildTable(foreign.Name);
    transaction.Commit();
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
    const std::vector<Index> own = Catalog::ReadOwnIndexes(*this, table);
    const bool numbered = std::any_of(table.Fields.begin(), table.Fields.end(),
                                      [](const Field& field) { return field.AutoIncrement; });
    const QString sequence = Qualified(MainSchema, u"sqlite_sequence"_s);
    const Value lastNumber = numbered ? QueryValue(u"SELECT seq FROM %1 WHERE name = ?"_s.arg(sequence), {name})
                                      : Value();
    Execute(Catalog::CreateTableSql(table, RelationsInto(*this, name), interim));
    const QString made = Qualified(MainSchema, interim);
    Execute(u"INSERT INTO %1 (%2) SELECT %2 FROM %3"_s.arg(made, list, table.Reference()));
    Execute(u"DROP TABLE "_s + table.Reference());
    Execute(u"ALTER TABLE %1 RENAME TO %2"_s.arg(made, Quoted(name)));
    if (!lastNumber.IsNull()) { // numbers that were given stay given
        Execute(u"DELETE FROM %1 WHERE name = ?"_s.arg(sequence), {name});
        Execute(u"INSERT INTO %1 (name, seq) VALUES (?, ?)"_s.arg(sequence), {name, lastNumber});
    }
    for (const Index& index : table.Indexes)
        Execute(Catalog::CreateIndexSql(table, index));
    for (const Index& index : own)
        Execute(Catalog::CreateOwnIndexSql(table, index));
    m_tableDefs.clear();
}

} // namespace qb
