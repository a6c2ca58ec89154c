#include "platform/dao/Blob.h"
#include "platform/dao/TemporaryDatabase.h"

#include <QFileInfo>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

namespace {

/// `Items` with a plain number: nothing refuses a row twice.
TableDef PlainItems(const QString& schema = {})
{
    TableDef table = ItemsTable();
    table.Fields[0].AutoIncrement = false;
    table.Indexes = {{.Name = u"ID"_s, .Fields = {u"ID"_s}}};
    table.Schema = schema;
    return table;
}

} // namespace

/// A second file on the connection of the first.
class TestAttach : public QObject {
    Q_OBJECT

private:
    /// A folder of its own, with what an address would read something else into.
    QString Other() const { return m_database->Folder() + u"/elsewhere #1 100% ?mode=ro/other 'ä'.qbs"_s; }

    Database& Db() { return **m_database; }

    void MakeOther()
    {
        QDir().mkpath(QFileInfo(Other()).absolutePath());
        const auto other = DBEngine::CreateDatabase(Other());
        other->AppendTableDef(PlainItems());
        AddItems(*other, {u"theirs"_s});
    }

    std::unique_ptr<TemporaryDatabase> m_database;

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_database = std::make_unique<TemporaryDatabase>();
        Db().AppendTableDef(ItemsTable());
        AddItems(Db(), {u"ours"_s});
        MakeOther();
    }
    void cleanup() { m_database.reset(); }

    void attachedFile_isReadUnderItsName()
    {
        Db().Attach(Other(), u"synchro"_s);
        QCOMPARE(Db().NameOf(u"synchro"_s), Other());
        QCOMPARE(Texts(Db(), u"SELECT Title FROM synchro.Items"_s), QStringList{u"theirs"_s});
        QCOMPARE(Texts(Db(), u"SELECT Title FROM Items"_s), QStringList{u"ours"_s});
        QCOMPARE(Db().OpenRecordset(u"SYNCHRO.items"_s)[u"Title"_s].ToText(), u"theirs"_s);
        QCOMPARE(Db().OpenRecordset(u"Items"_s)[u"Title"_s].ToText(), u"ours"_s);
        QCOMPARE(Db().TableNames(u"synchro"_s), QStringList{u"Items"_s});
        Db().Detach(u"synchro"_s);
        QCOMPARE(Db().NameOf(u"synchro"_s), QString());
        QB_VERIFY_RAISES(Db().GetTableDef(u"synchro.Items"_s), 3265);
        QB_VERIFY_RAISES(Db().QueryValue(u"SELECT Title FROM synchro.Items"_s), 3000);
    }

    void tableOfAnAttachedFile_hasItsOwnDefinition()
    {
        const AttachedFile other(Db(), Other(), u"synchro"_s);
        QVERIFY(!Db().GetTableDef(u"synchro.Items"_s).FindIndex(u"PrimaryKey"_s));
        QVERIFY(Db().GetTableDef(u"synchro.Items"_s).FindIndex(u"ID"_s));
        QVERIFY(Db().GetTableDef(u"Items"_s).FindIndex(u"PrimaryKey"_s));
        QVERIFY(!Db().GetTableDef(u"Items"_s).FindIndex(u"ID"_s));
    }

    void tablesMadeInAnAttachedFile_areInThatFile()
    {
        {
            const AttachedFile other(Db(), Other(), u"synchro"_s);
            TableDef table = PlainItems(u"synchro"_s);
            table.Name = u"ItemsX"_s;
            Db().AppendTableDef(table);
            QB_VERIFY_RAISES(Db().AppendTableDef(table), 3010);
            Db().AppendField(u"synchro.ItemsX"_s, {.Name = u"First"_s, .OrdinalPosition = 0, .DefaultValue = -1});
            Db().AppendIndex(u"synchro.ItemsX"_s, {.Name = u"ByFirst"_s, .Fields = {u"First"_s}});
            Db().DeleteField(u"synchro.ItemsX"_s, u"Rating"_s);
            QVERIFY(Db().TableExists(u"synchro.itemsx"_s));
            QVERIFY(!Db().TableExists(u"ItemsX"_s));
            Db().DeleteTableDef(u"synchro.Items"_s);
            QVERIFY(Db().TableExists(u"Items"_s));
        }
        const auto other = DBEngine::OpenDatabase(Other());
        QCOMPARE(other->TableNames(), QStringList{u"ItemsX"_s});
        const TableDef& made = other->GetTableDef(u"ItemsX"_s);
        QStringList names;
        for (const Field& field : made.Fields)
            names << field.Name;
        QCOMPARE(names, (QStringList{u"First"_s, u"ID"_s, u"Title"_s, u"Notes"_s, u"Page"_s}));
        QCOMPARE(made.Fields[0].OrdinalPosition, 0);
        QVERIFY(made.FindIndex(u"ByFirst"_s));
        QCOMPARE(Texts(Db(), u"SELECT count(*) FROM MSysFields WHERE TableName = 'ItemsX'"_s), QStringList{u"0"_s});
    }

    void temporaryTable_goesWithTheConnection()
    {
        TableDef table = ItemsTable();
        table.Schema = TemporarySchema;
        QB_VERIFY_RAISES(Db().GetTableDef(u"temp.Items"_s), 3265);
        Db().AppendTableDef(table);
        Recordset rows = Db().OpenRecordset(u"temp.Items"_s);
        rows.AddNew();
        rows.Set(u"Title"_s, u"passing"_s);
        rows.Update();
        QCOMPARE(Texts(Db(), u"SELECT Title FROM temp.Items"_s), QStringList{u"passing"_s});
        QCOMPARE(Texts(Db(), u"SELECT Title FROM main.Items"_s), QStringList{u"ours"_s});
        QCOMPARE(Db().OpenRecordset(u"Items"_s)[u"Title"_s].ToText(), u"ours"_s); // not hidden by the other one
        Db().AppendField(u"Items"_s, {.Name = u"Later"_s});
        QVERIFY(Db().GetTableDef(u"Items"_s).FindField(u"Later"_s));
        QVERIFY(!Db().GetTableDef(u"temp.Items"_s).FindField(u"Later"_s));
        QCOMPARE(Db().TableNames(), QStringList{u"Items"_s});
        m_database->Reopen();
        QB_VERIFY_RAISES(Db().GetTableDef(u"temp.Items"_s), 3265);
    }

    void recordsetOfAnAttachedFile_editsItByRowKey()
    {
        const AttachedFile other(Db(), Other(), u"synchro"_s);
        Recordset rows = Db().OpenRecordset(u"synchro.Items"_s);
        rows.AddNew();
        rows.Set(u"ID"_s, 1);
        rows.Set(u"Title"_s, u"a"_s);
        rows.Update();
        rows.AddNew();
        rows.Set(u"ID"_s, 1); // nothing refuses it
        rows.Set(u"Title"_s, u"b"_s);
        rows.Update();
        rows.SetBookmark(rows.LastModified());
        rows.Edit();
        rows.Set(u"Title"_s, u"c"_s);
        rows.Update();
        rows.FindFirst(u"Title = ?"_s, {u"theirs"_s});
        QVERIFY(!rows.NoMatch());
        rows.Delete();
        QCOMPARE(Texts(Db(), u"SELECT Title FROM synchro.Items ORDER BY rowid"_s), (QStringList{u"a"_s, u"c"_s}));
        QCOMPARE(Texts(Db(), u"SELECT Title FROM Items"_s), QStringList{u"ours"_s});
    }

    void setOfRows_goesFromFileToFileInOneStatement()
    {
        const AttachedFile other(Db(), Other(), u"synchro"_s);
        QCOMPARE(Db().Execute(u"INSERT INTO synchro.Items (ID, Title) SELECT ID, Title FROM main.Items"_s), 1);
        QCOMPARE(Texts(Db(), u"SELECT Title FROM synchro.Items ORDER BY Title"_s),
                 (QStringList{u"ours"_s, u"theirs"_s}));
    }

    void longValue_goesFromFileToFileByChunks()
    {
        QByteArray bytes;
        for (int i = 0; i < 200'000; ++i)
            bytes += char(i * 7 + i / 251);
        Recordset ours = Db().OpenRecordset(u"Items"_s);
        ours.Edit();
        ours.Set(u"Page"_s, bytes);
        ours.Update();
        const AttachedFile other(Db(), Other(), u"synchro"_s);
        Recordset theirs = Db().OpenRecordset(u"synchro.Items"_s);
        theirs.Edit();
        constexpr qint64 ChunkSize = 16384;
        for (qint64 at = 0; at < bytes.size(); at += ChunkSize)
            theirs.AppendChunk(u"Page"_s, ours.GetChunk(u"Page"_s, at, ChunkSize));
        theirs.Update();
        QVERIFY(Db().QueryValue(u"SELECT Page FROM synchro.Items"_s).ToBytes() == bytes);
        QVERIFY(theirs.GetChunk(u"Page"_s, 100'000, 50) == bytes.mid(100'000, 50));
    }

    void valueWrittenPieceByPiece_isInTheAttachedFile()
    {
        const AttachedFile other(Db(), Other(), u"synchro"_s);
        const TableDef& table = Db().GetTableDef(u"synchro.Items"_s);
        Transaction transaction(Db());
        Blob::MakeRoom(Db(), table, u"Page"_s, 1, 10);
        {
            Blob blob(Db(), table, u"Page"_s, 1, Blob::Access::Write);
            QCOMPARE(blob.Size(), 10);
            blob.Write(0, "01234"_ba);
            blob.Write(5, "56789"_ba);
            QB_VERIFY_RAISES(blob.Write(8, "89A"_ba), 5);
            QCOMPARE(blob.Read(3, 4), "3456"_ba);
            QCOMPARE(blob.Read(8, 4), "89"_ba);
            QCOMPARE(blob.Read(10, 4), QByteArray());
        }
        transaction.Commit();
        QCOMPARE(Db().QueryValue(u"SELECT Page FROM synchro.Items"_s).ToBytes(), "0123456789"_ba);
        QB_VERIFY_RAISES(Blob::MakeRoom(Db(), table, u"Page"_s, 99, 10), 3167);
        QB_VERIFY_RAISES(Blob(Db(), table, u"Page"_s, 99), 3000);
        Blob outside(Db(), table, u"Page"_s, 1, Blob::Access::Write);
        QB_VERIFY_RAISES(outside.Write(0, "x"_ba), 3000);
    }

    void transaction_coversBothFiles_data()
    {
        QTest::addColumn<bool>("commits");
        QTest::newRow("committed") << true;
        QTest::newRow("rolled back") << false;
    }
    void transaction_coversBothFiles()
    {
        QFETCH(bool, commits);
        {
            const AttachedFile other(Db(), Other(), u"synchro"_s);
            Transaction transaction(Db());
            Db().Execute(u"UPDATE Items SET Title = 'both'"_s);
            Db().Execute(u"UPDATE synchro.Items SET Title = 'both'"_s);
            if (commits)
                transaction.Commit();
        }
        QCOMPARE(Texts(Db(), u"SELECT Title FROM Items"_s), QStringList{commits ? u"both"_s : u"ours"_s});
        const auto other = DBEngine::OpenDatabase(Other());
        QCOMPARE(Texts(*other, u"SELECT Title FROM Items"_s), QStringList{commits ? u"both"_s : u"theirs"_s});
        QCOMPARE(FileNames(QFileInfo(Other()).absolutePath()), QStringList{QFileInfo(Other()).fileName()});
        QCOMPARE(FileNames(m_database->Folder()), QStringList{QFileInfo(m_database->Path()).fileName()});
    }

    void transactionThatOneFileRefuses_isBegunInNeither()
    {
        const AttachedFile other(Db(), Other(), u"synchro"_s);
        const auto holder = DBEngine::OpenDatabase(Other());
        const Transaction held(*holder);
        Db().Execute(u"PRAGMA busy_timeout = 1"_s);
        QB_VERIFY_RAISES(Db().BeginTrans(), 3045);
        QVERIFY(!Db().InTransaction());
        const auto second = m_database->OpenSecond();
        Transaction ofTheSecond(*second); // nothing is locked
        second->Execute(u"UPDATE Items SET Title = 'free'"_s);
        ofTheSecond.Commit();
    }

    void attachingInsideATransaction_isRefused()
    {
        Db().BeginTrans();
        QB_VERIFY_RAISES(Db().Attach(Other(), u"synchro"_s), 5);
        Db().Rollback();
        Db().Attach(Other(), u"synchro"_s);
        Db().BeginTrans();
        QB_VERIFY_RAISES(Db().Detach(u"synchro"_s), 5);
        Db().Rollback();
        Db().Detach(u"synchro"_s);
        QB_VERIFY_RAISES(Db().Detach(u"synchro"_s), 3265);
    }

    void nameThatIsNoWordOrTaken_isRefused_data()
    {
        QTest::addColumn<QString>("name");
        for (const char* name : {"main", "temp", "", "Synchro", "a.b", "a b", "x\"; DROP", "taken"})
            QTest::newRow(name) << QString::fromLatin1(name);
    }
    void nameThatIsNoWordOrTaken_isRefused()
    {
        QFETCH(QString, name);
        const QString third = m_database->Folder() + u"/third.qbs"_s;
        DBEngine::CreateDatabase(third);
        Db().Attach(Other(), u"taken"_s);
        QB_VERIFY_RAISES(Db().Attach(third, name), 5);
        QCOMPARE(Texts(Db(), u"SELECT Title FROM taken.Items"_s), QStringList{u"theirs"_s});
    }

    void sameFileTwice_isRefused()
    {
        QB_VERIFY_RAISES(Db().Attach(m_database->Path(), u"synchro"_s), 3045);
        Db().Attach(Other(), u"synchro"_s);
        const QString link = m_database->Folder() + u"/link.qbs"_s;
        QVERIFY(QFile::link(Other(), link));
        QB_VERIFY_RAISES(Db().Attach(link, u"again"_s), 3045);
    }

    void readOnlyFile_isReadAndKeptAsItIs()
    {
        const QByteArray before = ReadFile(Other());
        Db().Attach(Other(), u"synchro"_s, DatabaseAccess::ReadOnly);
        QVERIFY(Db().IsReadOnly(u"synchro"_s));
        QVERIFY(!Db().IsReadOnly());
        QB_VERIFY_RAISES(Db().Execute(u"UPDATE synchro.Items SET Title = 'x'"_s), 3027);
        Transaction transaction(Db());
        Db().Execute(u"INSERT INTO Items (Title) SELECT Title FROM synchro.Items"_s);
        transaction.Commit();
        QCOMPARE(Texts(Db(), u"SELECT Title FROM Items"_s), (QStringList{u"ours"_s, u"theirs"_s}));
        QCOMPARE(ReadFile(Other()), before);
    }

    void fileThatCantBeOpened_isNotAttached_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<long>("number");
        QTest::newRow("missing") << QByteArray() << 3024l;
        QTest::newRow("empty") << ""_ba << 3343l;
        QTest::newRow("another kind") << "a text that is no database"_ba << 3343l;
        QTest::newRow("cut short") << "SQLite format 3"_ba << 3343l;
    }
    void fileThatCantBeOpened_isNotAttached()
    {
        QFETCH(QByteArray, content);
        QFETCH(long, number);
        const QString path = m_database->Folder() + u"/bad.qbs"_s;
        if (!content.isNull())
            WriteFile(path, content);
        QB_VERIFY_RAISES(Db().Attach(path, u"synchro"_s), number);
        QCOMPARE(QFileInfo::exists(path), !content.isNull()); // none is made
        Db().Attach(Other(), u"synchro"_s);
        QCOMPARE(Texts(Db(), u"SELECT Title FROM synchro.Items"_s), QStringList{u"theirs"_s});
    }

    void fileCutShort_isNotAttached()
    {
        const QByteArray whole = ReadFile(Other());
        WriteFile(Other(), whole.first(whole.size() - 4096));
        QString said;
        try {
            Db().Attach(Other(), u"synchro"_s);
        } catch (const RuntimeError& error) {
            QCOMPARE(error.Number(), 3049);
            said = error.Description();
        }
        QVERIFY2(said.contains(QDir::toNativeSeparators(Other())), qPrintable(said));
        QVERIFY(!said.contains(QFileInfo(m_database->Path()).fileName())); // it is not at fault
        QCOMPARE(Db().NameOf(u"synchro"_s), QString());
    }

    void fileOfANewerVersion_isAttachedForReadingOnly()
    {
        DBEngine::OpenDatabase(Other())->Execute(u"PRAGMA user_version = 3"_s);
        QB_VERIFY_RAISES(Db().Attach(Other(), u"synchro"_s), 3051);
        Db().Attach(Other(), u"synchro"_s, DatabaseAccess::ReadOnly);
        QCOMPARE(Texts(Db(), u"SELECT Title FROM synchro.Items"_s), QStringList{u"theirs"_s});
    }

    void fileWithDatesOfAnOlderForm_isNotAttached()
    {
        DBEngine::OpenDatabase(Other())->Execute(u"PRAGMA user_version = 1"_s);
        QB_VERIFY_RAISES(Db().Attach(Other(), u"synchro"_s, DatabaseAccess::ReadOnly), 3051);
        QCOMPARE(Db().NameOf(u"synchro"_s), QString());
    }

    void triggerOfAnAttachedFile_doesNotRun()
    {
        DBEngine::OpenDatabase(Other())->Execute(
            u"CREATE TRIGGER harm AFTER INSERT ON Items BEGIN DELETE FROM Items; END"_s);
        const AttachedFile other(Db(), Other(), u"synchro"_s);
        Db().Execute(u"INSERT INTO synchro.Items (Title) VALUES ('new')"_s);
        QCOMPARE(Texts(Db(), u"SELECT Title FROM synchro.Items"_s), (QStringList{u"theirs"_s, u"new"_s}));
    }

    void journalThatNamesAnotherFile_isRefusedHereToo()
    {
        WriteFile(Other() + u"-journal"_s, "x"_ba);
        QFile::remove(Other() + u"-journal"_s);
        QVERIFY(QFile::link(m_database->Folder() + u"/diary"_s, Other() + u"-journal"_s));
        QB_VERIFY_RAISES(Db().Attach(Other(), u"synchro"_s), 3343);
        QCOMPARE(Db().NameOf(u"synchro"_s), QString());
    }

    void commitOfAnAttachedFile_isOnTheDiskWhenItReturns()
    {
        const AttachedFile other(Db(), Other(), u"synchro"_s);
        QCOMPARE(Db().QueryValue(u"PRAGMA synchro.synchronous"_s).ToLong(), 3); // as for the main file
        QCOMPARE(Db().QueryValue(u"PRAGMA main.synchronous"_s).ToLong(), 3);
        QCOMPARE(Db().QueryValue(u"PRAGMA synchro.journal_mode"_s).ToText(), u"delete"_s);
    }
};

QB_TEST_MAIN(TestAttach)
#include "tst_attach.moc"
