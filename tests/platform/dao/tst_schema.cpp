#include "platform/dao/StatementLimit.h"
#include "platform/dao/TemporaryDatabase.h"

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

namespace {

template <class Columns>
QStringList Names(const Columns& fields)
{
    QStringList names;
    for (const Field& field : fields)
        names << field.Name;
    return names;
}

} // namespace

class TestSchema : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_database = std::make_unique<TemporaryDatabase>();
        Db().AppendTableDef(ItemsTable());
    }
    void cleanup() { m_database.reset(); }

    void newDatabase_listsNoTables()
    {
        const TemporaryDatabase empty;
        QCOMPARE(empty->TableNames(), QStringList());
        QVERIFY(empty->Relations().empty());
    }

    void tableDef_comesBackFromTheFile()
    {
        const TableDef table = WithIndexes();
        Db().AppendTableDef(table);
        m_database->Reopen();
        const TableDef& read = Db().GetTableDef(u"WORDS"_s);
        QCOMPARE(read.Name, table.Name);
        QCOMPARE(read.Fields, table.Fields);
        QCOMPARE(read.Indexes, table.Indexes);
        QCOMPARE(Db().TableNames(), QStringList({u"Items"_s, u"Words"_s}));
    }

    void columnsAndIndexes_areFoundInAnyCase()
    {
        Db().AppendTableDef(WithIndexes());
        const TableDef& table = Db().GetTableDef(u"words"_s);
        QCOMPARE(table.FindField(u"KEYWORD"_s)->Name, u"Keyword"_s);
        QCOMPARE(table.FindIndex(u"primarykey"_s)->Name, u"PrimaryKey"_s);
        QVERIFY(!table.FindField(u"nothing"_s));
        QVERIFY(!table.FindIndex(u"nothing"_s));
        QVERIFY(Db().TableExists(u"WORDS"_s));
        QVERIFY(!Db().TableExists(u"Word"_s));
    }

    void sameIndexNameInTwoTables_isKeptApart()
    {
        TableDef other = WithIndexes();
        other.Name = u"Words_By"_s; // its index names begin like those of the first table
        Db().AppendTableDef(WithIndexes());
        Db().AppendTableDef(other);
        QCOMPARE(Db().GetTableDef(u"Words"_s).Indexes, WithIndexes().Indexes);
        QCOMPARE(Db().GetTableDef(u"Words_By"_s).Indexes, WithIndexes().Indexes);
    }

    void existingTable_raises3010AndKeepsTheOldOne()
    {
        AddItems(Db(), {u"one"_s});
        TableDef again = WithIndexes();
        again.Name = u"ITEMS"_s;
        QB_VERIFY_RAISES(Db().AppendTableDef(again), 3010);
        QCOMPARE(Db().GetTableDef(u"Items"_s).Fields, ItemsTable().Fields);
        QCOMPARE(Texts(Db(), u"SELECT Title FROM Items"_s), QStringList{u"one"_s});
    }

    void faultyTable_isNotMadeInPart()
    {
        TableDef faulty = WithIndexes();
        faulty.Indexes.push_back({.Name = u"Faulty"_s, .Fields = {u"NoColumn"_s}});
        QB_VERIFY_RAISES(Db().AppendTableDef(faulty), 3000);
        QVERIFY(!Db().TableExists(u"Words"_s));
        QB_VERIFY_RAISES(Db().GetTableDef(u"Words"_s), 3265);
    }

    void existingColumn_raises3191()
    {
        QB_VERIFY_RAISES(Db().AppendField(u"Items"_s, {.Name = u"TITLE"_s}), 3191);
        QCOMPARE(Db().GetTableDef(u"Items"_s).Fields, ItemsTable().Fields);
    }

    void existingIndex_raises3284()
    {
        Db().AppendIndex(u"Items"_s, {.Name = u"ByTitle"_s, .Fields = {u"Title"_s}});
        QB_VERIFY_RAISES(Db().AppendIndex(u"Items"_s, {.Name = u"BYTITLE"_s, .Fields = {u"Rating"_s}}), 3284);
        QCOMPARE(Db().GetTableDef(u"Items"_s).FindIndex(u"ByTitle"_s)->Fields, QStringList{u"Title"_s});
    }

    void unknownNames_raise3265()
    {
        const Field field{.Name = u"Later"_s};
        QB_VERIFY_RAISES(Db().GetTableDef(u"None"_s), 3265);
        QB_VERIFY_RAISES(Db().OpenRecordset(u"None"_s), 3265);
        QB_VERIFY_RAISES(Db().DeleteTableDef(u"None"_s), 3265);
        QB_VERIFY_RAISES(Db().AppendField(u"None"_s, field), 3265);
        QB_VERIFY_RAISES(Db().DeleteField(u"None"_s, u"Title"_s), 3265);
        QB_VERIFY_RAISES(Db().DeleteField(u"Items"_s, u"None"_s), 3265);
        QB_VERIFY_RAISES(Db().AppendIndex(u"None"_s, {.Name = u"I"_s, .Fields = {u"ID"_s}}), 3265);
        QB_VERIFY_RAISES(Db().GetTableDef(u"MSysFields"_s), 3265);
    }

    void deletedTable_isGoneAndCanBeMadeAnew()
    {
        AddItems(Db(), {u"one"_s});
        Db().DeleteTableDef(u"ITEMS"_s);
        QVERIFY(!Db().TableExists(u"Items"_s));
        QB_VERIFY_RAISES(Db().GetTableDef(u"Items"_s), 3265);
        Db().AppendTableDef(ItemsTable());
        QCOMPARE(Db().GetTableDef(u"Items"_s).Fields, ItemsTable().Fields);
        QVERIFY(Db().OpenRecordset(u"Items"_s).IsEmpty());
    }

    void deletedColumn_isGoneAndTheRestIsKept()
    {
        AddItems(Db(), {u"one"_s});
        Db().DeleteField(u"items"_s, u"RATING"_s);
        m_database->Reopen();
        QCOMPARE(Names(Db().GetTableDef(u"Items"_s).Fields), QStringList({u"ID"_s, u"Title"_s, u"Notes"_s, u"Page"_s}));
        Recordset rows = Db().OpenRecordset(u"Items"_s);
        QCOMPARE(rows[u"Title"_s].ToText(), u"one"_s);
        QB_VERIFY_RAISES(rows[u"Rating"_s], 3265);
        Db().AppendField(u"Items"_s, {.Name = u"Rating"_s, .Type = FieldType::Memo});
        QCOMPARE(Db().GetTableDef(u"Items"_s).FindField(u"Rating"_s)->Type, FieldType::Memo);
    }

    void indexedColumn_isNotDeletedInPart()
    {
        Db().AppendIndex(u"Items"_s, {.Name = u"ByTitle"_s, .Fields = {u"Title"_s}});
        QB_VERIFY_RAISES(Db().DeleteField(u"Items"_s, u"Title"_s), 3000);
        QVERIFY(Db().GetTableDef(u"Items"_s).FindField(u"Title"_s));
        AddItems(Db(), {u"one"_s});
    }

    void ordinalPositions_decideTheOrderOfColumns()
    {
        Db().AppendTableDef({.Name = u"Places"_s,
                             .Fields = {{.Name = u"Nine"_s, .OrdinalPosition = 9},
                                        {.Name = u"OneA"_s, .OrdinalPosition = 1},
                                        {.Name = u"OneB"_s, .OrdinalPosition = 1},
                                        {.Name = u"Zero"_s, .OrdinalPosition = 0},
                                        {.Name = u"Four"_s, .OrdinalPosition = 4}},
                             .Indexes = {}});
        const QStringList expected{u"Zero"_s, u"OneA"_s, u"OneB"_s, u"Four"_s, u"Nine"_s};
        QCOMPARE(Names(Db().GetTableDef(u"Places"_s).Fields), expected);
        QCOMPARE(Names(Db().OpenRecordset(u"Places"_s).Fields()), expected);
        QCOMPARE(Db().GetTableDef(u"Places"_s).FindField(u"Nine"_s)->OrdinalPosition, 9);
    }

    void columnAddedLater_standsAtItsPlace()
    {
        AddItems(Db(), {u"one"_s});
        Db().AppendField(u"Items"_s, {.Name = u"Early"_s, .OrdinalPosition = 1});
        Db().AppendField(u"Items"_s, {.Name = u"Late"_s, .OrdinalPosition = 5});
        Db().AppendField(u"Items"_s, {.Name = u"First"_s, .OrdinalPosition = 0, .DefaultValue = -1});
        m_database->Reopen();
        const QStringList expected{u"First"_s,  u"ID"_s,    u"Early"_s, u"Title"_s,
                                   u"Rating"_s, u"Notes"_s, u"Page"_s,  u"Late"_s};
        const Recordset rows = Db().OpenRecordset(u"Items"_s);
        QCOMPARE(Names(rows.Fields()), expected);
        QCOMPARE(rows[u"Title"_s].ToText(), u"one"_s);
        QCOMPARE(rows[u"ID"_s].ToLong(), 1);
        QVERIFY(rows[u"Early"_s].IsNull());
    }

    void columnAddedLater_needsNoLookAtTheRows_data()
    {
        QTest::addColumn<Field>("field");
        for (const FieldType type : {FieldType::Boolean, FieldType::Byte, FieldType::Integer, FieldType::Long,
                                     FieldType::Date, FieldType::LongBinary})
            QTest::addRow("type %d", int(type)) << Field{.Name = u"Later"_s, .Type = type, .DefaultValue = 0};
        QTest::newRow("Memo") << Field{.Name = u"Later"_s, .Type = FieldType::Memo, .AllowZeroLength = true};
    }
    void columnAddedLater_needsNoLookAtTheRows()
    {
        QFETCH(Field, field);
        Db().Execute(u"WITH RECURSIVE n(x) AS (SELECT 1 UNION ALL SELECT x + 1 FROM n WHERE x < 3000) "
                     "INSERT INTO Items (Title) SELECT 'row' FROM n"_s);
        const StatementLimit limit(Db(), [] { return true; }); // a thousand steps at most
        QB_VERIFY_RAISES(Db().Execute(u"UPDATE Items SET Rating = 1"_s), 3059);
        Db().AppendField(u"Items"_s, field);
        QVERIFY(Db().GetTableDef(u"Items"_s).FindField(u"Later"_s));
    }

    void ownIndex_isNoPartOfTheDefinition()
    {
        Db().AppendOwnIndex(u"Items"_s, {.Name = u"Quick"_s, .Fields = {u"Rating"_s, u"Title"_s}});
        m_database->Reopen();
        QCOMPARE(Db().GetTableDef(u"Items"_s).Indexes, ItemsTable().Indexes);
        QCOMPARE(Db().OwnIndexNames(u"Items"_s), QStringList{u"Quick"_s});
        QCOMPARE(Texts(Db(), u"SELECT count(*) FROM pragma_index_info('own_Items_Quick')"_s), QStringList{u"2"_s});
    }

    void ownIndex_outlivesARelation()
    {
        Db().AppendTableDef(WithIndexes());
        Db().AppendField(u"Words"_s, {.Name = u"Item"_s});
        Db().AppendOwnIndex(u"Words"_s, {.Name = u"Quick"_s, .Fields = {u"Item"_s}});
        Db().AppendRelation({u"r"_s, u"Items"_s, u"Words"_s, u"ID"_s, u"Item"_s, 0}); // makes the table anew
        QCOMPARE(Db().OwnIndexNames(u"Words"_s), QStringList{u"Quick"_s});
    }

    void deletedIndex_isGone()
    {
        Db().AppendIndex(u"Items"_s, {.Name = u"ByTitle"_s, .Fields = {u"Title"_s}});
        Db().DeleteIndex(u"items"_s, u"BYTITLE"_s);
        QVERIFY(!Db().GetTableDef(u"Items"_s).FindIndex(u"ByTitle"_s));
        QB_VERIFY_RAISES(Db().DeleteIndex(u"Items"_s, u"ByTitle"_s), 3265);
    }

    void openRecordset_keepsItsColumnsWhenOneIsAdded()
    {
        AddItems(Db(), {u"one"_s});
        const Recordset rows = Db().OpenRecordset(u"Items"_s);
        Db().AppendField(u"Items"_s, {.Name = u"Later"_s, .OrdinalPosition = 0});
        QCOMPARE(rows.Fields().size(), ItemsTable().Fields.size());
        QCOMPARE(rows[u"Title"_s].ToText(), u"one"_s);
    }

    void autoNumber_isNeverUsedAgain()
    {
        AddItems(Db(), {u"one"_s, u"two"_s, u"three"_s});
        Db().Execute(u"DELETE FROM Items"_s);
        m_database->Reopen();
        AddItems(Db(), {u"four"_s});
        QCOMPARE(Db().LastInsertedRowKey(), 4);
    }

    void autoNumber_beyondItsRange_raises6()
    {
        Db().Execute(u"INSERT INTO Items (ID, Title) VALUES (2147483647, 'last')"_s);
        QB_VERIFY_RAISES(AddItems(Db(), {u"one too many"_s}), 6);
        QCOMPARE(Texts(Db(), u"SELECT Title FROM Items"_s), QStringList{u"last"_s});
    }

    void uniqueKey_refusesTheSameTextInAnotherCase()
    {
        Db().AppendTableDef(WithIndexes());
        const QString insert = u"INSERT INTO Words (Keyword) VALUES (?)"_s;
        Db().Execute(insert, {u"While"_s});
        QB_VERIFY_RAISES(Db().Execute(insert, {u"WHILE"_s}), 2032);
        QCOMPARE(Texts(Db(), u"SELECT Keyword FROM Words"_s), QStringList{u"While"_s});
    }

    void uniqueIndex_addedOverDoubles_raises2032AndIsNotThere()
    {
        AddItems(Db(), {u"same"_s, u"SAME"_s});
        QB_VERIFY_RAISES(Db().AppendIndex(u"Items"_s, {.Name = u"U"_s, .Fields = {u"Title"_s}, .Unique = true}), 2032);
        QVERIFY(!Db().GetTableDef(u"Items"_s).FindIndex(u"U"_s));
    }

    void keyOverTwoColumns_refusesOnlyTheSamePair()
    {
        Db().AppendTableDef(
            {.Name = u"Links"_s,
             .Fields = {{.Name = u"A"_s}, {.Name = u"B"_s}},
             .Indexes = {{.Name = u"PrimaryKey"_s, .Fields = {u"A"_s, u"B"_s}, .Primary = true, .Unique = true}}});
        const QString insert = u"INSERT INTO Links (A, B) VALUES (?, ?)"_s;
        Db().Execute(insert, {1, 2});
        Db().Execute(insert, {1, 3});
        QB_VERIFY_RAISES(Db().Execute(insert, {1, 2}), 2032);
        QCOMPARE(Db().OpenRecordset(u"Links"_s).RecordCount(), 2);
    }

    void primaryKey_refusesNull()
    {
        Index key{.Name = u"Identity"_s, .Fields = {u"Word"_s}, .Primary = true, .Unique = true};
        TableDef table{
            .Name = u"Keyed"_s, .Fields = {{.Name = u"Word"_s, .Type = FieldType::Text, .Size = 9}}, .Indexes = {key}};
        QB_VERIFY_RAISES(Db().AppendTableDef(table), 3317); // under another name
        QVERIFY(!Db().TableExists(u"Keyed"_s));
        key.Name = u"PrimaryKey"_s;
        table.Indexes = {key};
        Db().AppendTableDef(table);
        QVERIFY(Db().GetTableDef(u"Keyed"_s).FindIndex(u"PrimaryKey"_s)->Primary);
        QB_VERIFY_RAISES(Db().AppendIndex(u"Keyed"_s, {.Name = u"Later"_s, .Fields = {u"Word"_s}, .Primary = true}),
                         3317);
        QB_VERIFY_RAISES(Db().Execute(u"INSERT INTO Keyed (Word) VALUES (NULL)"_s), 3314);
    }

    void oddNames_areTakenAsTheyStand()
    {
        Db().AppendTableDef({.Name = u"Group \"x\"; DROP"_s,
                             .Fields = {{.Name = u"select 'ß'"_s, .Type = FieldType::Text, .Size = 9}},
                             .Indexes = {{.Name = u"a \"b\""_s, .Fields = {u"select 'ß'"_s}}}});
        Recordset rows = Db().OpenRecordset(u"Group \"x\"; DROP"_s);
        rows.AddNew();
        rows.Set(u"select 'ß'"_s, u"value"_s);
        rows.Update();
        rows.MoveFirst();
        QCOMPARE(rows[u"select 'ß'"_s].ToText(), u"value"_s);
        QCOMPARE(Db().GetTableDef(u"Group \"x\"; DROP"_s).Indexes[0].Name, u"a \"b\""_s);
    }

private:
    static TableDef WithIndexes()
    {
        return {
            .Name = u"Words"_s,
            .Fields = {{.Name = u"Keyword"_s, .Type = FieldType::Text, .Size = 30, .OrdinalPosition = 1},
                       {.Name = u"Coloured"_s, .Type = FieldType::Boolean, .OrdinalPosition = 2, .DefaultValue = true}},
            .Indexes = {{.Name = u"Both"_s, .Fields = {u"Coloured"_s, u"Keyword"_s}},
                        {.Name = u"PrimaryKey"_s, .Fields = {u"Keyword"_s}, .Primary = true, .Unique = true}}};
    }

    Database& Db() { return **m_database; }
    std::unique_ptr<TemporaryDatabase> m_database;
};

QB_TEST_MAIN(TestSchema)
#include "tst_schema.moc"
