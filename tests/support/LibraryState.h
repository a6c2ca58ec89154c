#pragma once

#include "platform/dao/DBEngine.h"
#include "store/Library.h"
#include "support/FolderContents.h"

#include <QMap>

namespace qb::test {

/// All that a library is: the rows of all of its tables by their place, and the bytes of its two folders.
inline QMap<QString, QByteArray> StateOf(const QString& path)
{
    QMap<QString, QByteArray> state;
    const auto database = DBEngine::OpenDatabase(path, DatabaseAccess::ReadOnly);
    for (const QString& table : database->TableNames()) {
        QStringList columns;
        for (const Field& field : database->GetTableDef(table).Fields)
            columns << field.Name;
        state[u"table "_s + table] = columns.join(u',').toUtf8();
        Statement rows = database->Query(u"SELECT * FROM %1 ORDER BY rowid"_s.arg(Quoted(table)));
        for (int row = 0; rows.Step(); ++row) {
            for (int i = 0; i < rows.ColumnCount(); ++i)
                state[u"%1 %2"_s.arg(table).arg(row)] += rows.Column(i).ToBytes() + (rows.IsNull(i) ? "~" : "|");
        }
    }
    const std::pair<QString, QString> folders[] = {{u"files/"_s, FilesFolderOf(path)},
                                                   {u"pages/"_s, HTMLFolderOf(path)}};
    for (const auto& [kind, folder] : folders) {
        const QMap<QString, QByteArray> all = ContentsOf(folder);
        for (auto entry = all.begin(); entry != all.end(); ++entry) {
            if (!entry.key().endsWith(u'/') && entry.key() != u".library")
                state[kind + entry.key()] = entry.value();
        }
    }
    return state;
}

/// What differs between two states, for a message; empty when nothing does.
inline QString DifferenceOf(const QMap<QString, QByteArray>& left, const QMap<QString, QByteArray>& right)
{
    QStringList differences;
    for (const QString& name : left.keys() + right.keys()) {
        if ((left.value(name) != right.value(name) || left.contains(name) != right.contains(name))
            && !differences.contains(name))
            differences << name;
    }
    return differences.join(u"; "_s);
}

} // namespace qb::test
