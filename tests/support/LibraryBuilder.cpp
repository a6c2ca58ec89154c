#include "support/LibraryBuilder.h"

#include "platform/dao/DBEngine.h"
#include "platform/richtext/RtfPlainText.h"
#include "store/CCodeItem.h"
#include "store/CDBCreate.h"
#include "store/Library.h"
#include "store/ReplicaLog.h"
#include "support/TestRun.h"

#include <QDir>

namespace qb::test {

using namespace Qt::StringLiterals;

std::unique_ptr<Library> MakeLibrary(const QString& path, LanguageType language)
{
    CDBCreate().CreateNewDB(path, language, {});
    return Library::Open(path);
}

qint64 AddItem(Library& library, qint64 parent, const QString& title, const QString& code)
{
    CCodeItem item;
    item.Initialise(library, {});
    item.SetParentKey(QString::number(parent));
    item.SetTitle(title);
    item.SetCode(RtfFromPlainText(code, CodeFont));
    item.Commit();
    return item.Key().toLongLong();
}

void MakeChild(Library& library, const QString& masterPath, Date lastSynchronized)
{
    CDBCreate create(&library, DatabaseKind::Child);
    if (!library.TableExists(u"DeletedItems"_s))
        create.CreateAditionalTales(true);
    create.CreateAditionalFields(TableSet::Plain);
    ReplicaLog(library).Make();
    library.Execute(u"UPDATE Properties SET MasterReplicaPath = ?, LastSynchronized = ?"_s,
                    {masterPath, lastSynchronized});
    library.ReadReplica();
}

void MakeMother(Library& library, Date childLastSynchronized)
{
    if (!library.TableExists(u"DeletedItems"_s))
        CDBCreate(&library, DatabaseKind::Library).CreateAditionalTales(false);
    ReplicaLog(library).Make();
    library.Execute(u"INSERT INTO ChildCopies (DBCopyID, LastSynchronized) VALUES (?, ?)"_s,
                    {u"Child00001"_s, childLastSynchronized});
    library.ReadReplica();
}

QStringList Texts(Database& database, const QString& sql, const Values& values)
{
    QStringList texts;
    Statement rows = database.Query(sql, values);
    while (rows.Step())
        texts << rows.Text(0);
    return texts;
}

qint64 CountOf(Database& database, const QString& table)
{
    return database.QueryValue(u"SELECT count(*) FROM "_s + Quoted(table)).ToLong();
}

qint64 AddStoredFile(Library& library, qint64 item, const QString& title, const QByteArray& bytes, Date added)
{
    library.Execute(u"INSERT INTO Files (CodeID, Title, FileSize, DateAdded) VALUES (?, ?, ?, ?)"_s,
                    {item, title, bytes.size(), added});
    const qint64 id = library.LastInsertedRowKey();
    WriteFile(library.FilesFolder() + QString::number(id) + u" - "_s + title, bytes);
    return id;
}

void RefuseWord(Database& database, const QString& table, const QString& column, const QString& word)
{
    // The value that has no absolute value
    database.Execute(
        u"CREATE INDEX refuse ON %1 (abs(CASE WHEN instr(%2, '%3') THEN -9223372036854775807 - 1 ELSE 0 END))"_s.arg(
            table, column, word));
}

void LoseTransaction(Database& database)
{
    constexpr int Most = 10'000;
    database.QueryValue(u"PRAGMA max_page_count = 1"_s); // as many as there are
    try {
        for (int i = 0; i < Most; ++i)
            database.Execute(u"INSERT INTO Keywords (Keyword, Coloured) VALUES (?, 0)"_s, {u"filler %1"_s.arg(i)});
    } catch (const RuntimeError&) { // there is no room
    }
    QVERIFY(database.TransactionLost());
}

void MakeRoom(Database& database)
{
    database.QueryValue(u"PRAGMA max_page_count = 1000000"_s);
}

QStringList StoredNames(const QString& folder)
{
    QStringList names = QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot, QDir::Name);
    names.removeAll(u".library"_s);
    return names;
}

} // namespace qb::test
