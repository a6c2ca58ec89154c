#pragma once

#include "platform/dao/Value.h"

#include <QString>
#include <QStringList>
#include <optional>
#include <vector>

namespace qb {

/// Column types, with the numbers by which code tests for them.
enum class FieldType {
    Boolean = 1,
    Byte = 2,
    Integer = 3, ///< 16 bits, signed
    Long = 4,    ///< 32 bits, signed
    Date = 8,
    Text = 10, ///< at most Size characters
    LongBinary = 11,
    Memo = 12,
};

/// Bits of Field::Attributes and Relation::Attributes.
namespace SchemaAttribute {
inline constexpr int FixedField = 1;
inline constexpr int VariableField = 2;
inline constexpr int AutoIncrField = 16;
inline constexpr int RelationUpdateCascade = 256;
inline constexpr int RelationDeleteCascade = 4096;
} // namespace SchemaAttribute

/// The schema of the file that a database was opened with, and that of tables which go with the connection.
inline const QString MainSchema = QStringLiteral("main");
inline const QString TemporarySchema = QStringLiteral("temp");

/// The name of every primary index.
inline const QString PrimaryIndexName = QStringLiteral("PrimaryKey");

/// The rules behind the names of column checks, "<column>:<rule>".
namespace CheckRule {
inline constexpr QLatin1StringView Length{"length"};
inline constexpr QLatin1StringView ZeroLength{"zero length"};
inline constexpr QLatin1StringView Range{"range"};
} // namespace CheckRule

/// The whole numbers that a column may hold.
struct ValueRange {
    qint64 Low;
    qint64 High;
};
/// That of a type; nothing for texts and bytes.
std::optional<ValueRange> RangeOf(FieldType type);

/// A column of a table.
struct Field {
    QString Name;
    FieldType Type = FieldType::Long;
    int Size = 0; ///< characters, for Text
    /// The place of the column in `SELECT *` order; places may repeat and have gaps, columns
    /// of one place stand in the order in which they were added.
    int OrdinalPosition = 0;
    bool AutoIncrement = false;
    bool Required = false;
    bool AllowZeroLength = false;
    Value DefaultValue = {};

    int Attributes() const; ///< bits of SchemaAttribute, which follow from Type and AutoIncrement
    /// Whether a value is in the range of the type, as the file takes it; Null always is.
    bool IsInRange(const Value& value) const;
    friend bool operator==(const Field&, const Field&) = default;
};

/// An index over one or more columns. A primary index is unique and its columns are required; it
/// is named `PrimaryKey` and made with its table.
struct Index {
    QString Name;
    QStringList Fields;
    bool Primary = false;
    bool Unique = false;

    friend bool operator==(const Index&, const Index&) = default;
};

/// A reference that the engine holds: each value of ForeignTable.ForeignField is one of
/// Table.FieldName, or Null.
struct Relation {
    QString Name;
    QString Table;
    QString ForeignTable;
    QString FieldName;
    QString ForeignField;
    int Attributes = 0;

    friend bool operator==(const Relation&, const Relation&) = default;
};

/// @p name as an identifier in a statement.
QString Quoted(const QString& name);
/// A name of a schema's table or index in a statement; an empty schema is the main one.
QString Qualified(const QString& schema, const QString& name);

/// A table: its columns in ordinal order, and its indexes.
struct TableDef {
    QString Name;
    std::vector<Field> Fields;
    std::vector<Index> Indexes;
    /// Where it lies: the name of an attached file, or "temp"; empty for the main file.
    QString Schema = {};

    /// How a statement names it, wherever a table of the same name may lie.
    QString Reference() const { return Qualified(Schema, Name); }

    /// The column of that name in any case, or null.
    const Field* FindField(const QString& name) const;
    const Index* FindIndex(const QString& name) const;
};

} // namespace qb
