#include "platform/dao/DBEngine.h"
#include "store/CDBCreate.h"
#include "support/LibraryBuilder.h"
#include "support/SchemaText.h"
#include "support/ScriptedPrompts.h"
#include "support/TestRun.h"

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// The tables and columns that replication adds to files and libraries, and takes away again.
class TestReplicaTables : public QObject {
    Q_OBJECT

    std::unique_ptr<TemporaryHome> m_home;
    std::unique_ptr<ScriptedPrompts> m_prompts;
    QString m_path;

    std::unique_ptr<Database> NewSynchroFile() const
    {
        CDBCreate().CreateSynchroDatabase(m_path);
        return DBEngine::OpenDatabase(m_path);
    }
    static QStringList Marks(Database& database, const QString& table)
    {
        return FieldTexts(database, table)
            .filter(QRegularExpression(u"IDChanged|ConflictItem|MoveToOrphaned|Deleted"_s));
    }

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_home = std::make_unique<TemporaryHome>();
        m_prompts = std::make_unique<ScriptedPrompts>();
        m_path = m_home->Path(u"änderungen.qbs"_s);
    }
    void cleanup()
    {
        m_prompts.reset();
        m_home.reset();
    }

    void synchroDatabase_hasItsTablesAndNoOthers()
    {
        const auto file = NewSynchroFile();
        QCOMPARE(file->TableNames(),
                 (QStringList{u"DeletedFiles"_s, u"DeletedItemLinks"_s, u"DeletedItems"_s, u"Files"_s, u"HTMLFiles"_s,
                              u"ItemLinks"_s, u"Items"_s, u"Properties"_s}));
        QVERIFY(file->Relations().empty());
        QCOMPARE(CountOf(*file, u"Properties"_s), 0);
        const QStringList items = FieldTexts(*file, u"Items"_s);
        QCOMPARE(items.first(), u"1 ID Long 1 =0"_s);
        QCOMPARE(items.mid(17), (QStringList{u"18 MotherRecordID Long 1 =-1"_s, u"19 MotherParentID Long 1 =-1"_s}));
        QCOMPARE(IndexTexts(*file, u"Items"_s).filter(u"Mother"_s),
                 (QStringList{u"MotherParentID(MotherParentID)"_s, u"MotherRecordID(MotherRecordID)"_s}));
        const QStringList files = FieldTexts(*file, u"Files"_s);
        QCOMPARE(files.first(), u"1 ID Long 1 =0"_s);
        QVERIFY(files.contains(u"4 File LongBinary 2"_s));
        QVERIFY(files.contains(u"9 MotherRecordID Long 1 =0"_s));
        QVERIFY(files.contains(u"10 MotherCodeID Long 1 =0"_s));
        QVERIFY(FieldTexts(*file, u"ItemLinks"_s).contains(u"2 MotherLinkItemID Long 1 =0"_s));
        for (const QString& column : {u"MasterReplicaPath"_s, u"LastSynchronized"_s, u"LastExported"_s})
            QVERIFY(file->GetTableDef(u"Properties"_s).FindField(column));
    }

    void synchroDatabase_takesNumbersTwice()
    {
        const auto file = NewSynchroFile();
        file->Execute(u"INSERT INTO Items (ID, Title) VALUES (3, 'a'), (3, 'b')"_s);
        file->Execute(u"INSERT INTO Files (ID) VALUES (3), (3)"_s);
        file->Execute(u"INSERT INTO ItemLinks (ItemID, LinkItemID) VALUES (1, 2), (1, 2)"_s);
        QCOMPARE(Texts(*file, u"SELECT ID FROM Items"_s), (QStringList{u"3"_s, u"3"_s}));
        QCOMPARE(CountOf(*file, u"ItemLinks"_s), 2);
    }

    void synchroDatabaseOverAFile_isRefusedAndTheFileStays()
    {
        WriteFile(m_path, "somebody's");
        m_prompts->ExpectError();
        QVERIFY(!CDBCreate().CreateSynchroDatabase(m_path));
        QCOMPARE(ReadFile(m_path), "somebody's");
    }

    void synchroDatabaseWhereNothingCanBe_leavesNothing()
    {
        m_prompts->ExpectError();
        QVERIFY(!CDBCreate().CreateSynchroDatabase(m_home->Path(u"no folder/a.qbs"_s)));
        QVERIFY(!QFile::exists(m_home->Path(u"no folder"_s)));
    }

    void synchroDB_isALibraryWithTheColumnsOfAChild()
    {
        QVERIFY(CDBCreate().CreateSynchroDB(m_path));
        const auto file = DBEngine::OpenDatabase(m_path);
        QVERIFY(file->TableExists(u"Keywords"_s));
        QVERIFY(file->GetTableDef(u"Properties"_s).FindField(u"LastExported"_s));
    }

    void xTables_areAddedWithTheMarks()
    {
        NewSynchroFile();
        QVERIFY(CDBCreate().CreateAditionalTablesinSynchroDB(m_path));
        const auto file = DBEngine::OpenDatabase(m_path);
        for (const QString& table : {u"FilesX"_s, u"ItemsX"_s, u"HTMLFilesX"_s, u"ItemLinksX"_s}) {
            QVERIFY(file->TableExists(table));
            QCOMPARE(Marks(*file, table), QStringList());
        }
        QCOMPARE(FieldTexts(*file, u"FilesX"_s).first(), u"1 ID Long 1 =0"_s);
        QVERIFY(file->GetTableDef(u"FilesX"_s).FindField(u"File"_s));
        QVERIFY(file->GetTableDef(u"ItemsX"_s).FindIndex(u"MotherRecordID"_s));
        QVERIFY(!file->GetTableDef(u"ItemsX"_s).FindIndex(u"PrimaryKey"_s));
        QCOMPARE(Marks(*file, u"Items"_s), (QStringList{u"30 IDChanged Boolean 1"_s, u"31 ConflictItem Boolean 1"_s}));
        QCOMPARE(Marks(*file, u"Files"_s), QStringList{u"30 IDChanged Boolean 1"_s});
        QCOMPARE(Marks(*file, u"ItemLinks"_s), QStringList{u"30 IDChanged Boolean 1"_s});
        file->Execute(u"INSERT INTO ItemLinksX (ItemID, LinkItemID) VALUES (1, 2)"_s);
        QB_VERIFY_RAISES(file->Execute(u"INSERT INTO ItemLinksX (ItemID, LinkItemID) VALUES (1, 2)"_s), 2032);
    }

    void xTablesThatAreThere_areAFailureAndMarksAreNone()
    {
        NewSynchroFile();
        CDBCreate().CreateAditionalTablesinSynchroDB(m_path);
        m_prompts->ExpectError();
        QVERIFY(!CDBCreate().CreateAditionalTablesinSynchroDB(m_path));
        QVERIFY(CDBCreate().RemoveAditionalTablesInSynchroDB(m_path));
        QCOMPARE(DBEngine::OpenDatabase(m_path)->TableNames().filter(u"X"_s), QStringList());
        QVERIFY(CDBCreate().CreateAditionalTablesinSynchroDB(m_path)); // the marks are there
        QCOMPARE(Marks(*DBEngine::OpenDatabase(m_path), u"Items"_s).size(), 2);
    }

    void xTablesThatAreMissing_areRemovedInSilence()
    {
        NewSynchroFile();
        QVERIFY(CDBCreate().RemoveAditionalTablesInSynchroDB(m_path));
        QVERIFY(CDBCreate().RemoveAditionalTablesInSynchroDB(m_home->Path(u"no such file"_s)));
        QCOMPARE(CountOf(*DBEngine::OpenDatabase(m_path), u"Items"_s), 0);
    }

    void marksOfAMerge_comeAgainAndDeletedStays()
    {
        const auto library = MakeLibrary(m_home->Path(u"lib.qbd"_s));
        AddItem(*library, 0, u"one"_s);
        CDBCreate create;
        for (int round = 0; round < 2; ++round) {
            QVERIFY(create.CreateAditionalSynchroFieldsInMainDB(*library));
            QVERIFY(create.CreateAditionalSynchroFieldsInMainDB(*library));
            QCOMPARE(Marks(*library, u"Items"_s).size(), 2);
            QVERIFY(create.RemoveAditionalSynchroFieldsInMainDB(*library));
            QCOMPARE(Marks(*library, u"Items"_s).filter(u"Deleted"_s).size(), 1);
            QCOMPARE(Marks(*library, u"Items"_s).size(), 1);
        }
        QCOMPARE(Texts(*library, u"SELECT Title FROM Items"_s), QStringList{u"one"_s});
    }

    void temporaryTables_areMadeForLosers()
    {
        const auto library = MakeLibrary(m_home->Path(u"lib.qbd"_s));
        QVERIFY(CDBCreate().CreateTemporaryTablesInReplica(*library));
        QCOMPARE(FieldTexts(*library, u"TempFiles"_s).first(), u"1 ID Long 17"_s);
        QVERIFY(library->GetTableDef(u"TempFiles"_s).FindField(u"File"_s));
        QCOMPARE(FieldTexts(*library, u"TempItems"_s).filter(u"Replica"_s),
                 (QStringList{u"17 ReplicaRecordID Long 1 =-1"_s, u"20 ReplicaOrigin Boolean 1"_s}));
        QVERIFY(!library->GetTableDef(u"TempItems"_s).FindIndex(u"PrimaryKey"_s));
        QVERIFY(library->TableExists(u"TempHTMLFiles"_s));
    }

    void temporaryTablesOfOpenConflicts_areKept()
    {
        const auto library = MakeLibrary(m_home->Path(u"lib.qbd"_s));
        CDBCreate().CreateTemporaryTablesInMainDB(*library);
        library->Execute(u"INSERT INTO TempItems (ID, Title) VALUES (4, 'lost')"_s);
        library->Execute(u"INSERT INTO TempHTMLFiles (ItemIDRef, Name) VALUES (4, '4.htm')"_s);
        QVERIFY(CDBCreate().CreateTemporaryTablesInMainDB(*library));
        QCOMPARE(CountOf(*library, u"TempItems"_s), 1);
        QCOMPARE(CountOf(*library, u"TempHTMLFiles"_s), 1);
        library->Execute(u"DELETE FROM TempItems"_s); // decided
        QVERIFY(CDBCreate().CreateTemporaryTablesInMainDB(*library));
        QCOMPARE(CountOf(*library, u"TempHTMLFiles"_s), 0);
    }

    void temporaryPages_outliveTheRemoval()
    {
        const auto library = MakeLibrary(m_home->Path(u"lib.qbd"_s));
        CDBCreate().CreateTemporaryTablesInMainDB(*library);
        QVERIFY(CDBCreate().RemoveTemporaryTablesFromMainDB(*library));
        QCOMPARE(library->TableNames().filter(u"Temp"_s), QStringList{u"TempHTMLFiles"_s});
        QVERIFY(CDBCreate().CreateTemporaryTablesInMainDB(*library)); // the next round goes on
        QCOMPARE(library->TableNames().filter(u"Temp"_s).size(), 3);
    }
};

QB_TEST_MAIN(TestReplicaTables)
#include "tst_replica_tables.moc"
