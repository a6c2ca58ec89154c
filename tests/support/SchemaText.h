#pragma once

#include "platform/dao/Database.h"

#include <QStringList>
#include <algorithm>

namespace qb::test {

inline QString TypeText(const Field& field)
{
    switch (field.Type) {
    case FieldType::Boolean:
        return QStringLiteral("Boolean");
    case FieldType::Byte:
        return QStringLiteral("Byte");
    case FieldType::Integer:
        return QStringLiteral("Integer");
    case FieldType::Long:
        return QStringLiteral("Long");
    case FieldType::Date:
        return QStringLiteral("Date");
    case FieldType::Text:
        return QStringLiteral("Text%1").arg(field.Size);
    case FieldType::LongBinary:
        return QStringLiteral("LongBinary");
    case FieldType::Memo:
        break;
    }
    return QStringLiteral("Memo");
}

/// A column in one line: position, name, type with size, attributes, then "required", "empty"
/// where a text without characters is allowed, and the default value behind "=".
inline QString FieldText(const Field& field)
{
    QString text = QStringLiteral("%1 %2 %3 %4")
                       .arg(field.OrdinalPosition)
                       .arg(field.Name, TypeText(field))
                       .arg(field.Attributes());
    if (field.Required)
        text += QStringLiteral(" required");
    if (field.AllowZeroLength)
        text += QStringLiteral(" empty");
    if (!field.DefaultValue.IsNull())
        text += QStringLiteral(" =") + field.DefaultValue.ToText();
    return text;
}

inline QStringList FieldTexts(Database& database, const QString& table)
{
    QStringList texts;
    for (const Field& field : database.GetTableDef(table).Fields)
        texts << FieldText(field);
    return texts;
}

/// The indexes of a table in order of their names: "name(columns)", then "primary" or "unique".
inline QStringList IndexTexts(Database& database, const QString& table)
{
    QStringList texts;
    for (const Index& index : database.GetTableDef(table).Indexes) {
        const QString kind = index.Primary ? QStringLiteral(" primary") : QString();
        texts << QStringLiteral("%1(%2)").arg(index.Name, index.Fields.join(u',')) + kind
                     + (index.Unique ? QStringLiteral(" unique") : QString());
    }
    texts.sort();
    return texts;
}

/// The columns in the order of `SELECT *` on the file itself.
inline QStringList ColumnsOnDisk(Database& database, const QString& table)
{
    QStringList names;
    Statement rows = database.Query(QStringLiteral("SELECT name FROM pragma_table_info(?) ORDER BY cid"), {table});
    while (rows.Step())
        names << rows.Text(0);
    return names;
}

} // namespace qb::test
