#pragma once

#include "platform/dao/Schema.h"

namespace qb {

class Database;

/// How the schema lies in the file: the statements that make tables, and the two tables that
/// keep what the engine's own schema can't (`MSysFields`: ordinal positions, sizes, flags;
/// `MSysRelations`: the relations by name).
namespace Catalog {

/// Makes the two tables in a new file, or another schema.
void Create(Database& database, const QString& schema = MainSchema);
bool IsIn(Database& database, const QString& schema);

/// The statement that makes @p table with the references in @p relations, under @p name, in its schema.
QString CreateTableSql(const TableDef& table, const std::vector<Relation>& relations, const QString& name);
QString CreateIndexSql(const TableDef& table, const Index& index);
/// The declaration of one column: type, default and checks, except that of its type's range for a column
/// @p withoutRange.
QString ColumnSql(const Field& field, bool required, bool withoutRange = false);

/// Without columns when the schema has no such table.
TableDef ReadTableDef(Database& database, const QString& schema, const QString& table);
void WriteField(Database& database, const TableDef& table, const Field& field);
void ForgetField(Database& database, const TableDef& table, const QString& field);
void ForgetTable(Database& database, const TableDef& table);

/// Relations are of the main file; they come sorted by name.
std::vector<Relation> ReadRelations(Database& database);
/// Notes a relation and nothing else: Database::AppendRelation checks it first, and remakes the table that refers.
void WriteRelation(Database& database, const Relation& relation);

/// Index names are unique in a table here and in the whole file there.
QString StoredIndexName(const QString& table, const QString& index);
/// The name of an index that is no part of the table's definition.
QString StoredOwnIndexName(const QString& table, const QString& index);
QString CreateOwnIndexSql(const TableDef& table, const Index& index);
std::vector<Index> ReadOwnIndexes(Database& database, const TableDef& table);

} // namespace Catalog

} // namespace qb
