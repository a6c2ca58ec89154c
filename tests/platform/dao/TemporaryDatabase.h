#pragma once

#include "platform/dao/DBEngine.h"
#include "support/TestRun.h"

#include <QDir>

namespace qb::test {

/// A new database in a folder of its own, for one test function.
class TemporaryDatabase {
public:
    TemporaryDatabase() : m_database(DBEngine::CreateDatabase(Path())) {}

    QString Path() const { return m_home.Path(QStringLiteral("library ö.qbd")); }
    QString Folder() const { return m_home.Path(); }
    Database& operator*() const { return *m_database; }
    Database* operator->() const { return m_database.get(); }

    /// A second connection to the same file.
    std::unique_ptr<Database> OpenSecond() const { return DBEngine::OpenDatabase(Path()); }
    void Close() { m_database.reset(); }
    void Reopen()
    {
        Close();
        m_database = DBEngine::OpenDatabase(Path());
    }

private:
    TemporaryHome m_home;
    std::unique_ptr<Database> m_database;
};

/// A table `Items` with an auto-number `ID`, `Title`, `Rating` (default 7), `Notes` and `Page`.
inline TableDef ItemsTable()
{
    using namespace Qt::StringLiterals;
    return {
        .Name = u"Items"_s,
        .Fields = {{.Name = u"ID"_s, .Type = FieldType::Long, .OrdinalPosition = 1, .AutoIncrement = true},
                   {.Name = u"Title"_s, .Type = FieldType::Text, .Size = 50, .OrdinalPosition = 2, .Required = true},
                   {.Name = u"Rating"_s, .Type = FieldType::Long, .OrdinalPosition = 3, .DefaultValue = 7},
                   {.Name = u"Notes"_s, .Type = FieldType::Memo, .OrdinalPosition = 4, .AllowZeroLength = true},
                   {.Name = u"Page"_s, .Type = FieldType::LongBinary, .OrdinalPosition = 5}},
        .Indexes = {{.Name = u"PrimaryKey"_s, .Fields = {u"ID"_s}, .Primary = true, .Unique = true}}};
}

/// Adds one row to `Items` for each title.
inline void AddItems(Database& database, const QStringList& titles)
{
    for (const QString& title : titles)
        database.Execute(QStringLiteral("INSERT INTO Items (Title) VALUES (?)"), {title});
}

/// The first column of all rows of a statement, as text.
inline QStringList Texts(Database& database, const QString& sql, const Values& values = {})
{
    QStringList texts;
    Statement rows = database.Query(sql, values);
    while (rows.Step())
        texts << rows.Column(0).ToText();
    return texts;
}

/// The names in a folder, those of hidden files too.
inline QStringList FileNames(const QString& folder)
{
    return QDir(folder).entryList(QDir::Files | QDir::Hidden, QDir::Name);
}

} // namespace qb::test
