#include "platform/dao/TemporaryDatabase.h"

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

namespace {

constexpr int Cascades = SchemaAttribute::RelationUpdateCascade | SchemaAttribute::RelationDeleteCascade;

/// Stored files, which refer to `Items`, each with a number of its own.
TableDef FilesTable()
{
    return {.Name = u"Files"_s,
            .Fields = {{.Name = u"ID"_s, .OrdinalPosition = 1, .AutoIncrement = true},
                       {.Name = u"CodeID"_s, .OrdinalPosition = 2},
                       {.Name = u"Name"_s, .Type = FieldType::Text, .Size = 20, .OrdinalPosition = 3}},
            .Indexes = {{.Name = u"CodeID"_s, .Fields = {u"CodeID"_s}}}};
}

Relation ItemsFiles(int attributes = Cascades)
{
    return {.Name = u"ItemsFiles"_s,
            .Table = u"Items"_s,
            .ForeignTable = u"Files"_s,
            .FieldName = u"ID"_s,
            .ForeignField = u"CodeID"_s,
            .Attributes = attributes};
}

} // namespace

class TestRelations : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_database = std::make_unique<TemporaryDatabase>();
        Db().AppendTableDef(ItemsTable());
        Db().AppendTableDef(FilesTable());
        AddItems(Db(), {u"one"_s, u"two"_s});
    }
    void cleanup() { m_database.reset(); }

    void relation_comesBackFromTheFile()
    {
        Db().AppendRelation(ItemsFiles());
        m_database->Reopen();
        QCOMPARE(Db().Relations(), std::vector{ItemsFiles()});
        QCOMPARE(Db().TableNames(), QStringList({u"Files"_s, u"Items"_s}));
    }

    void existingRelation_raises3012()
    {
        Db().AppendRelation(ItemsFiles());
        Relation again = ItemsFiles();
        again.Name = u"ITEMSFILES"_s;
        QB_VERIFY_RAISES(Db().AppendRelation(again), 3012);
        QCOMPARE(Db().Relations().size(), size_t(1));
    }

    void unknownTableOrColumn_raises3265AndAddsNothing_data()
    {
        QTest::addColumn<Relation>("relation");
        Relation relation = ItemsFiles();
        relation.Table = u"None"_s;
        QTest::newRow("table") << relation;
        relation = ItemsFiles();
        relation.ForeignTable = u"None"_s;
        QTest::newRow("foreign table") << relation;
        relation = ItemsFiles();
        relation.FieldName = u"None"_s;
        QTest::newRow("column") << relation;
        relation = ItemsFiles();
        relation.ForeignField = u"None"_s;
        QTest::newRow("foreign column") << relation;
    }

    void unknownTableOrColumn_raises3265AndAddsNothing()
    {
        QFETCH(Relation, relation);
        QB_VERIFY_RAISES(Db().AppendRelation(relation), 3265);
        QVERIFY(Db().Relations().empty());
    }

    void rowWithoutAPartner_raises3201()
    {
        Db().AppendRelation(ItemsFiles());
        QB_VERIFY_RAISES(AddFile(99, u"orphan"_s), 3201);
        QCOMPARE(Files(), QStringList());
        AddFile(Value(), u"of none"_s);
        AddFile(2, u"of two"_s);
        QCOMPARE(Files(), QStringList({u"of none"_s, u"of two"_s}));
    }

    void deletedPartner_takesItsRowsAlong()
    {
        Db().AppendRelation(ItemsFiles());
        AddFile(1, u"of one"_s);
        AddFile(2, u"of two"_s);
        Recordset items = Db().OpenRecordset(u"Items"_s, u"ID = 1"_s);
        items.Delete();
        QCOMPARE(Files(), QStringList{u"of two"_s});
    }

    void changedKey_isChangedInTheRows()
    {
        Db().AppendRelation(ItemsFiles());
        AddFile(1, u"of one"_s);
        Db().Execute(u"UPDATE Items SET ID = 50 WHERE ID = 1"_s);
        QCOMPARE(Db().QueryValue(u"SELECT CodeID FROM Files"_s).ToLong(), 50);
    }

    void withoutCascades_aPartnerInUseStays()
    {
        Db().AppendRelation(ItemsFiles(0));
        AddFile(1, u"of one"_s);
        QB_VERIFY_RAISES(Db().Execute(u"DELETE FROM Items WHERE ID = 1"_s), 3201);
        QB_VERIFY_RAISES(Db().Execute(u"UPDATE Items SET ID = 50 WHERE ID = 1"_s), 3201);
        Db().Execute(u"DELETE FROM Items WHERE ID = 2"_s);
        QCOMPARE(Texts(Db(), u"SELECT Title FROM Items"_s), QStringList{u"one"_s});
        QCOMPARE(Files(), QStringList{u"of one"_s});
    }

    void appendedToATableWithRows_keepsRowsColumnsAndIndexes()
    {
        AddFile(1, u"a"_s);
        AddFile(2, u"b"_s);
        Db().Execute(u"DELETE FROM Files WHERE Name = 'a'"_s);
        Db().AppendRelation(ItemsFiles());
        QCOMPARE(Texts(Db(), u"SELECT ID || Name FROM Files"_s), QStringList{u"2b"_s});
        QCOMPARE(Db().GetTableDef(u"Files"_s).Fields, FilesTable().Fields);
        QCOMPARE(Db().GetTableDef(u"Files"_s).Indexes, FilesTable().Indexes);
        QB_VERIFY_RAISES(AddFile(99, u"orphan"_s), 3201);
    }

    void appendedRelation_keepsAutoNumbersFromBeingUsedAgain()
    {
        AddFile(1, u"a"_s);
        AddFile(1, u"b"_s);
        Db().Execute(u"DELETE FROM Files WHERE ID = 2"_s);
        Db().AppendRelation(ItemsFiles());
        AddFile(1, u"c"_s);
        QCOMPARE(Texts(Db(), u"SELECT ID || Name FROM Files ORDER BY ID"_s), QStringList({u"1a"_s, u"3c"_s}));
    }

    void appendedOverRowsThatDoNotFit_raises3201AndChangesNothing()
    {
        AddFile(99, u"orphan"_s);
        QB_VERIFY_RAISES(Db().AppendRelation(ItemsFiles()), 3201);
        m_database->Reopen();
        QVERIFY(Db().Relations().empty());
        QCOMPARE(Files(), QStringList{u"orphan"_s});
        QCOMPARE(Db().TableNames(), QStringList({u"Files"_s, u"Items"_s}));
        AddFile(98, u"another"_s);
    }

    void appendedToATableThatIsReferredTo_losesNoRows()
    {
        Db().AppendRelation(ItemsFiles());
        AddFile(1, u"of one"_s);
        Db().AppendTableDef(
            {.Name = u"Ratings"_s,
             .Fields = {{.Name = u"Rating"_s}},
             .Indexes = {{.Name = u"PrimaryKey"_s, .Fields = {u"Rating"_s}, .Primary = true, .Unique = true}}});
        Db().Execute(u"INSERT INTO Ratings (Rating) VALUES (7)"_s);
        try {
            Db().AppendRelation({.Name = u"RatingsItems"_s,
                                 .Table = u"Ratings"_s,
                                 .ForeignTable = u"Items"_s,
                                 .FieldName = u"Rating"_s,
                                 .ForeignField = u"Rating"_s});
        } catch (const RuntimeError&) {
            QCOMPARE(Db().Relations().size(), size_t(1)); // refusing is as good as keeping
        }
        QCOMPARE(Texts(Db(), u"SELECT Title FROM Items ORDER BY ID"_s), QStringList({u"one"_s, u"two"_s}));
        QCOMPARE(Files(), QStringList{u"of one"_s});
    }

    void secondRelation_keepsTheFirst()
    {
        Db().AppendRelation(ItemsFiles());
        Db().AppendTableDef(
            {.Name = u"Names"_s,
             .Fields = {{.Name = u"Name"_s, .Type = FieldType::Text, .Size = 20}},
             .Indexes = {{.Name = u"PrimaryKey"_s, .Fields = {u"Name"_s}, .Primary = true, .Unique = true}}});
        Db().AppendRelation({.Name = u"NamesFiles"_s,
                             .Table = u"Names"_s,
                             .ForeignTable = u"Files"_s,
                             .FieldName = u"Name"_s,
                             .ForeignField = u"Name"_s});
        Db().Execute(u"INSERT INTO Names (Name) VALUES ('known')"_s);
        AddFile(1, u"known"_s);
        QB_VERIFY_RAISES(AddFile(1, u"unknown"_s), 3201);
        QB_VERIFY_RAISES(AddFile(99, u"known"_s), 3201);
        QCOMPARE(Files(), QStringList{u"known"_s});
    }

    void deletedForeignTable_takesItsRelationsAlong()
    {
        Db().AppendRelation(ItemsFiles());
        Db().DeleteTableDef(u"Files"_s);
        QVERIFY(Db().Relations().empty());
        Db().Execute(u"DELETE FROM Items"_s);
        Db().AppendTableDef(FilesTable());
        Db().AppendRelation(ItemsFiles());
        QB_VERIFY_RAISES(AddFile(1, u"orphan"_s), 3201);
    }

private:
    Database& Db() { return **m_database; }
    void AddFile(const Value& item, const QString& name)
    {
        Db().Execute(u"INSERT INTO Files (CodeID, Name) VALUES (?, ?)"_s, {item, name});
    }
    QStringList Files() { return Texts(Db(), u"SELECT Name FROM Files ORDER BY ID"_s); }

    std::unique_ptr<TemporaryDatabase> m_database;
};

QB_TEST_MAIN(TestRelations)
#include "tst_relations.moc"
