#include "platform/dao/DBEngine.h"
#include "store/CDBCreate.h"
#include "support/ErrorRoutine.h"
#include "support/LibraryBuilder.h"
#include "support/SchemaText.h"
#include "support/ScriptedPrompts.h"
#include "support/TestRun.h"

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// The tables of the files that travel between libraries.
class TestSchemaVariants : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<Database> NewDatabase(DatabaseKind kind)
    {
        const QString path = m_home->Path(u"vari anté %1.qbd"_s.arg(int(kind)));
        CDBCreate().Create_Database(path, kind);
        return DBEngine::OpenDatabase(path);
    }

    /// Table names in front of their columns, for all tables that CreateAditionalFields touches.
    static QStringList AllFields(Database& database)
    {
        QStringList all;
        for (const QString& table : database.TableNames()) {
            for (const QString& field : FieldTexts(database, table))
                all << table + u' ' + field;
            for (const QString& index : IndexTexts(database, table))
                all << table + u" index "_s + index;
        }
        return all;
    }

    static QStringList Added(const QStringList& before, QStringList after)
    {
        for (const QString& text : before)
            after.removeAll(text);
        after.sort();
        return after;
    }

    std::optional<TemporaryHome> m_home;

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_home.emplace();
    }

    void cleanup() { m_home.reset(); }

    void itemsWithoutKeys_takeAnIdTwice()
    {
        const auto database = NewDatabase(DatabaseKind::Synchronization);
        CDBCreate(database.get()).Create_TblDef_Items(true, u"ItemsX"_s);
        QCOMPARE(FieldTexts(*database, u"ItemsX"_s).first(), u"1 ID Long 1 =0"_s);
        QCOMPARE(FieldTexts(*database, u"ItemsX"_s).mid(1), FieldTexts(*database, u"Items"_s).mid(1));
        QCOMPARE(IndexTexts(*database, u"ItemsX"_s), (QStringList{u"CodeState(ItemStatus)"_s, u"Description(Title)"_s,
                                                                  u"ID(ID)"_s, u"ParentID(ParentID)"_s}));
        database->Execute(u"INSERT INTO ItemsX (ID, Title) VALUES (3, 'a'), (3, 'b')"_s);
        QCOMPARE(CountOf(*database, u"ItemsX"_s), 2);
    }

    void itemsUnderAnotherName_keepTheirKeys()
    {
        const auto database = NewDatabase(DatabaseKind::Library);
        CDBCreate(database.get()).Create_TblDef_Items(false, u"TempItems"_s);
        QCOMPARE(FieldTexts(*database, u"TempItems"_s), FieldTexts(*database, u"Items"_s));
        QCOMPARE(IndexTexts(*database, u"TempItems"_s), IndexTexts(*database, u"Items"_s));
    }

    void linksWithoutKeys_takeAPairTwice()
    {
        const auto database = NewDatabase(DatabaseKind::Synchronization);
        CDBCreate(database.get()).Create_TblDef_ItemLinks(u"ItemLinksX"_s, true);
        QCOMPARE(FieldTexts(*database, u"ItemLinksX"_s), FieldTexts(*database, u"ItemLinks"_s));
        QCOMPARE(IndexTexts(*database, u"ItemLinksX"_s),
                 (QStringList{u"ItemID(ItemID)"_s, u"LinkItemID(LinkItemID)"_s}));
        database->Execute(u"INSERT INTO ItemLinksX (ItemID, LinkItemID) VALUES (3, 4), (3, 4)"_s);
        QCOMPARE(Texts(*database, u"SELECT ID FROM ItemLinksX"_s), (QStringList{u"1"_s, u"2"_s}));
    }

    void filesUnderAnotherName_numberThemselvesByTheName_data()
    {
        QTest::addColumn<QString>("id");
        QTest::newRow("TempFiles") << u"1 ID Long 17"_s;
        QTest::newRow("FilesX") << u"1 ID Long 1 =0"_s;
    }
    void filesUnderAnotherName_numberThemselvesByTheName()
    {
        QFETCH(QString, id);
        const QString name = QString::fromLatin1(QTest::currentDataTag());
        const auto database = NewDatabase(DatabaseKind::Library);
        CDBCreate(database.get()).Create_TblDef_Files(name);
        QCOMPARE(FieldTexts(*database, name), QStringList{id} + FieldTexts(*database, u"Files"_s).mid(1));
        QCOMPARE(IndexTexts(*database, name), QStringList{u"CodeID(CodeID)"_s});
    }

    void propertiesOfATravellingDatabase_haveThreeMoreColumns_data()
    {
        QTest::addColumn<DatabaseKind>("kind");
        QTest::newRow("child") << DatabaseKind::Child;
        QTest::newRow("synchronization") << DatabaseKind::Synchronization;
    }
    void propertiesOfATravellingDatabase_haveThreeMoreColumns()
    {
        QFETCH(DatabaseKind, kind);
        const auto library = NewDatabase(DatabaseKind::Library);
        const auto database = NewDatabase(kind);
        QCOMPARE(Added(FieldTexts(*library, u"Properties"_s), FieldTexts(*database, u"Properties"_s)),
                 (QStringList{u"18 MasterReplicaPath Text255 2 empty"_s, u"19 LastSynchronized Date 1"_s,
                              u"20 LastExported Date 1"_s}));
        QCOMPARE(IndexTexts(*database, u"Properties"_s),
                 (QStringList{u"KeywordColour(KeywordColour)"_s, u"MasterReplicaPath(MasterReplicaPath)"_s}));
        QCOMPARE(CountOf(*database, u"Properties"_s), 1);
    }

    void propertiesOfAChild_nameTheMotherAndTheMoment()
    {
        const FixedClock clock;
        const auto database = NewDatabase(DatabaseKind::Child);
        const QString before = database->QueryValue(u"SELECT DBID FROM Properties"_s).ToText();
        CDBCreate(database.get(), DatabaseKind::Child).SetUpProperties(u"C:\\Mütter\\mother.qbd"_s);
        const Recordset row = database->OpenRecordset(u"Properties"_s);
        QCOMPARE(row.RecordCount(), 1);
        QCOMPARE(row[u"MasterReplicaPath"_s].ToText(), u"C:\\Mütter\\mother.qbd"_s);
        QCOMPARE(row[u"LastSynchronized"_s].ToDate(), clock.Now());
        QVERIFY(row[u"DBID"_s].ToText() != before);
    }

    void aditionalFields_completeTheSet_data()
    {
        QTest::addColumn<TableSet>("set");
        QTest::addColumn<DatabaseKind>("kind");
        QTest::addColumn<QStringList>("added");
        const auto named = [](const QString& suffix) {
            QStringList added{
                u"Files%1 10 MotherCodeID Long 1 =0"_s,           u"Files%1 4 File LongBinary 2"_s,
                u"Files%1 9 MotherRecordID Long 1 =0"_s,          u"ItemLinks%1 1 MotherItemID Long 1 =0"_s,
                u"ItemLinks%1 2 MotherLinkItemID Long 1 =0"_s,    u"Items%1 18 MotherRecordID Long 1 =-1"_s,
                u"Items%1 19 MotherParentID Long 1 =-1"_s,        u"Items%1 index MotherParentID(MotherParentID)"_s,
                u"Items%1 index MotherRecordID(MotherRecordID)"_s};
            for (QString& text : added)
                text = text.arg(suffix);
            added.sort();
            return added;
        };
        const QStringList temporary{u"TempFiles 4 File LongBinary 2"_s, u"TempItems 17 ReplicaRecordID Long 1 =-1"_s,
                                    u"TempItems 20 ReplicaOrigin Boolean 1"_s};
        const QStringList properties{u"Properties 7 MasterReplicaPath Text255 2 empty"_s,
                                     u"Properties 8 LastSynchronized Date 1"_s, u"Properties 9 LastExported Date 1"_s};
        const auto withProperties = [&properties](const QStringList& added) {
            QStringList all = added + properties;
            all.sort();
            return all;
        };
        QTest::newRow("plain, library") << TableSet::Plain << DatabaseKind::Library << named({});
        QTest::newRow("plain, child") << TableSet::Plain << DatabaseKind::Child << withProperties(named({}));
        QTest::newRow("X, library") << TableSet::X << DatabaseKind::Library << named(u"X"_s);
        QTest::newRow("X, synchronization")
            << TableSet::X << DatabaseKind::Synchronization << withProperties(named(u"X"_s));
        QTest::newRow("temporary, library") << TableSet::Temporary << DatabaseKind::Library << temporary;
        QTest::newRow("temporary, child") << TableSet::Temporary << DatabaseKind::Child << withProperties(temporary);
    }
    void aditionalFields_completeTheSet()
    {
        QFETCH(TableSet, set);
        QFETCH(DatabaseKind, kind);
        QFETCH(QStringList, added);
        const auto database = NewDatabase(DatabaseKind::Library); // its Properties lack the replica columns
        CDBCreate create(database.get(), kind);
        create.Create_TblDef_Items(true, u"ItemsX"_s);
        create.Create_TblDef_Files(u"FilesX"_s);
        create.Create_TblDef_ItemLinks(u"ItemLinksX"_s, true);
        create.Create_TblDef_Items(true, u"TempItems"_s);
        create.Create_TblDef_Files(u"TempFiles"_s);
        const QStringList before = AllFields(*database);
        QVERIFY(create.CreateAditionalFields(set));
        QCOMPARE(Added(before, AllFields(*database)), added);

        const QStringList complete = AllFields(*database);
        QVERIFY(create.CreateAditionalFields(set)); // a second time adds nothing and is no failure
        QCOMPARE(AllFields(*database), complete);
    }

    void addedColumn_standsAtItsPlace()
    {
        const auto database = NewDatabase(DatabaseKind::Library);
        CDBCreate(database.get()).CreateAditionalFields(TableSet::Plain);
        QStringList names;
        for (const Field& field : database->OpenRecordset(u"Files"_s).Fields())
            names << field.Name;
        QCOMPARE(names, (QStringList{u"ID"_s, u"CodeID"_s, u"Title"_s, u"File"_s, u"OrigDateTime"_s, u"DateAdded"_s,
                                     u"FileSize"_s, u"Description"_s, u"LastUpdated"_s, u"MotherRecordID"_s,
                                     u"MotherCodeID"_s}));
    }

    void aditionalFieldsWhereTheColumnsOfPropertiesStand_leaveThemAlone()
    {
        const auto database = NewDatabase(DatabaseKind::Synchronization);
        const QStringList before = FieldTexts(*database, u"Properties"_s);
        QVERIFY(CDBCreate(database.get(), DatabaseKind::Synchronization).CreateAditionalFields(TableSet::Plain));
        QCOMPARE(FieldTexts(*database, u"Properties"_s), before);
    }

    void existingRows_getTheDefaultsOfAddedColumns()
    {
        const auto database = NewDatabase(DatabaseKind::Library);
        AddItem(*Library::Open(database->Name()), 0, u"old"_s);
        CDBCreate(database.get()).CreateAditionalFields(TableSet::Plain);
        const Recordset row = database->OpenRecordset(u"Items"_s);
        QCOMPARE(row[u"MotherRecordID"_s], Value(-1));
        QCOMPARE(row[u"MotherParentID"_s], Value(-1));
    }

    void aditionalFieldsOfMissingTables_areReportedAndNothingIsAdded()
    {
        const auto database = NewDatabase(DatabaseKind::Library);
        CDBCreate(database.get()).Create_TblDef_Files(u"FilesX"_s); // ItemsX is missing
        const QStringList before = AllFields(*database);
        ScriptedPrompts prompts;
        prompts.ExpectError();
        QVERIFY(!CDBCreate(database.get()).CreateAditionalFields(TableSet::X));
        QCOMPARE(prompts.Errors, QStringList{u"There is no table 'ItemsX' in the database."_s});
        QVERIFY(ReadFile(ErrorLogFile()).contains(", CDBCreate, CreateAditionalFields, "));
        QCOMPARE(AllFields(*database), before);
    }

    void preparedAsBackUp_holdsPagesAndFiles()
    {
        const auto database = NewDatabase(DatabaseKind::Library);
        const QStringList before = AllFields(*database);
        QVERIFY(CDBCreate().PrepareAsBackUp(*database));
        QCOMPARE(Added(before, AllFields(*database)),
                 (QStringList{u"Files 4 File LongBinary 2"_s, u"HTMLFiles 1 ItemIDRef Long 1 =0"_s,
                              u"HTMLFiles 2 Name Text50 2"_s, u"HTMLFiles 3 Folder Text250 2 empty"_s,
                              u"HTMLFiles 4 File LongBinary 2"_s}));
    }

    void libraryThatCameAsAChild_isPreparedAsBackUpToo()
    {
        const auto database = NewDatabase(DatabaseKind::Child);
        CDBCreate create(database.get(), DatabaseKind::Child);
        QVERIFY(create.CreateAditionalTales(true));
        QVERIFY(create.CreateAditionalFields(TableSet::Plain));
        database->Execute(u"INSERT INTO HTMLFiles (Name) VALUES ('old.htm')"_s);
        database->Execute(u"INSERT INTO Files (Title, File) VALUES ('old', x'00')"_s);
        const QStringList before = AllFields(*database);
        QVERIFY(CDBCreate().PrepareAsBackUp(*database));
        QCOMPARE(AllFields(*database), before);
        QCOMPARE(CountOf(*database, u"HTMLFiles"_s), 0); // what it came with is not what it has now
        QCOMPARE(Texts(*database, u"SELECT File IS NULL FROM Files"_s), QStringList{u"1"_s});
    }

    void preparationThatFails_isReportedAndChangesNothing()
    {
        const auto database = NewDatabase(DatabaseKind::Library);
        database->Execute(u"DROP TABLE Files"_s);
        const QStringList before = database->TableNames();
        ScriptedPrompts prompts;
        prompts.ExpectError();
        QVERIFY(!CDBCreate().PrepareAsBackUp(*database));
        QVERIFY(ReadFile(ErrorLogFile()).contains(", CDBCreate, PrepareAsBackUp, "));
        QCOMPARE(database->TableNames(), before);
    }

    void tablesOfDeletionsThatStand_areKeptInAMother()
    {
        const auto database = NewDatabase(DatabaseKind::Library);
        CDBCreate create(database.get());
        QVERIFY(create.CreateAditionalTales(false));
        database->Execute(u"INSERT INTO DeletedItems (ItemID) VALUES (5)"_s);
        database->Execute(u"INSERT INTO ChildCopies (DBCopyID) VALUES ('Copy000001')"_s);
        QVERIFY(create.CreateAditionalTales(false)); // for her second child
        QCOMPARE(Texts(*database, u"SELECT ItemID FROM DeletedItems"_s), QStringList{u"5"_s});
        QCOMPARE(CountOf(*database, u"ChildCopies"_s), 1);
    }

    void tablesThatStandInACopyOfAMother_areEmptied()
    {
        const auto database = NewDatabase(DatabaseKind::Library);
        CDBCreate create(database.get(), DatabaseKind::Child);
        QVERIFY(create.CreateAditionalTales(true));
        for (const QString& table : {u"DeletedItems"_s, u"DeletedFiles"_s, u"DeletedItemLinks"_s})
            database->Execute(u"INSERT INTO %1 (ItemID) VALUES (5)"_s.arg(table));
        database->Execute(u"INSERT INTO HTMLFiles (Name) VALUES ('old.htm')"_s);
        database->Execute(u"INSERT INTO ChildCopies (DBCopyID) VALUES ('Copy000001')"_s);
        QVERIFY(create.CreateAditionalTales(true)); // a child's child
        QVERIFY(create.CreateAditionalFields(TableSet::Plain));
        for (const QString& table :
             {u"DeletedItems"_s, u"DeletedFiles"_s, u"DeletedItemLinks"_s, u"HTMLFiles"_s, u"ChildCopies"_s})
            QVERIFY2(CountOf(*database, table) == 0, qPrintable(table));
    }

    void aditionalTales_recordDeletions_data()
    {
        QTest::addColumn<bool>("withHTML");
        QTest::newRow("mother") << false;
        QTest::newRow("child") << true;
    }
    void aditionalTales_recordDeletions()
    {
        QFETCH(bool, withHTML);
        const auto database = NewDatabase(DatabaseKind::Library);
        database->Execute(u"INSERT INTO ChildCopies (DBCopyID) VALUES ('Copy000001')"_s);
        QVERIFY(CDBCreate(database.get()).CreateAditionalTales(withHTML));
        const QStringList index{u"ItemID(ItemID)"_s};
        QCOMPARE(FieldTexts(*database, u"DeletedFiles"_s),
                 (QStringList{u"0 ItemID Long 1 =0"_s, u"1 DateDeleted Date 1"_s}));
        QCOMPARE(FieldTexts(*database, u"DeletedItems"_s),
                 (QStringList{u"2 DateDeleted Date 1"_s, u"3 ItemID Long 1 =0"_s}));
        QCOMPARE(FieldTexts(*database, u"DeletedItemLinks"_s),
                 (QStringList{u"2 DateDeleted Date 1"_s, u"3 ItemID Long 1 =0"_s, u"3 LinkItemID Long 1 =0"_s}));
        for (const QString& table : {u"DeletedFiles"_s, u"DeletedItems"_s, u"DeletedItemLinks"_s})
            QCOMPARE(IndexTexts(*database, table), index);
        QCOMPARE(database->TableExists(u"HTMLFiles"_s), withHTML);
        QCOMPARE(CountOf(*database, u"ChildCopies"_s), withHTML ? 0 : 1);
    }

    void relationOfPages_isInNoDatabase()
    {
        const auto database = NewDatabase(DatabaseKind::Child);
        CDBCreate(database.get(), DatabaseKind::Child).CreateAditionalTales(true);
        for (const Relation& relation : database->Relations())
            QVERIFY(relation.Name != u"ItemsHTMLFiles");
    }
};

QB_TEST_MAIN(TestSchemaVariants)
#include "tst_schema_variants.moc"
