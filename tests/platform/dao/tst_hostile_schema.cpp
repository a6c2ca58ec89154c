#include "platform/dao/TemporaryDatabase.h"

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// A library comes from a stranger: what its schema holds beside data never runs.
class TestHostileSchema : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { FailOnWarnings(); }

    void trigger_doesNotRun_data()
    {
        QTest::addColumn<QString>("event");
        QTest::newRow("insert") << u"AFTER INSERT"_s;
        QTest::newRow("update") << u"AFTER UPDATE"_s;
        QTest::newRow("delete") << u"BEFORE DELETE"_s;
    }
    void trigger_doesNotRun()
    {
        QFETCH(QString, event);
        TemporaryDatabase database;
        database->AppendTableDef(ItemsTable());
        AddItems(*database, {u"one"_s, u"two"_s});
        database->Execute(u"CREATE TRIGGER harm %1 ON Items BEGIN DELETE FROM Items; END"_s.arg(event));
        database.Reopen();
        AddItems(*database, {u"three"_s});
        database->Execute(u"UPDATE Items SET Rating = 1 WHERE Title = 'one'"_s);
        database->Execute(u"DELETE FROM Items WHERE Title = 'two'"_s);
        QCOMPARE(Texts(*database, u"SELECT Title FROM Items"_s), (QStringList{u"one"_s, u"three"_s}));
    }

    /// One that never ends would hold the program for ever.
    void view_isNotRead()
    {
        TemporaryDatabase database;
        database->Execute(
            u"CREATE VIEW endless AS WITH RECURSIVE n(x) AS (SELECT 1 UNION ALL SELECT x + 1 FROM n) SELECT max(x) "
            "FROM n"_s);
        database.Reopen();
        QB_VERIFY_RAISES(database->QueryValue(u"SELECT * FROM endless"_s), 3000);
    }

    void statementBeyondTheLimits_isRefused_data()
    {
        QTest::addColumn<QString>("sql");
        QTest::newRow("length") << u"SELECT '"_s + QString(1'100'000, u'x') + u'\'';
        QTest::newRow("depth") << u"SELECT "_s + QString(u"(1+"_s).repeated(200) + u'1' + QString(200, u')');
        QTest::newRow("compound") << u"SELECT 1"_s + QString(u" UNION ALL SELECT 1"_s).repeated(100);
    }
    void statementBeyondTheLimits_isRefused()
    {
        QFETCH(QString, sql);
        TemporaryDatabase database;
        bool refused = false;
        try {
            database->QueryValue(sql);
        } catch (const RuntimeError&) {
            refused = true;
        }
        QVERIFY(refused);
    }

    void libraryOfANewerVersion_isOpenedForReadingOnly()
    {
        TemporaryDatabase database;
        database->AppendTableDef(ItemsTable());
        AddItems(*database, {u"one"_s});
        database->Execute(u"PRAGMA user_version = 2"_s);
        database.Close();
        const QByteArray before = ReadFile(database.Path());
        QB_VERIFY_RAISES(DBEngine::OpenDatabase(database.Path()), 3051);
        const auto reader = DBEngine::OpenDatabase(database.Path(), DBEngine::Access::ReadOnly);
        QCOMPARE(Texts(*reader, u"SELECT Title FROM Items"_s), QStringList{u"one"_s});
        QCOMPARE(ReadFile(database.Path()), before);
    }

    void deletedParent_stillTakesItsChildrenAlong()
    {
        TemporaryDatabase database;
        database->AppendTableDef(ItemsTable());
        database->AppendTableDef(
            {.Name = u"Files"_s,
             .Fields = {{.Name = u"ID"_s, .Type = FieldType::Long, .OrdinalPosition = 1, .AutoIncrement = true},
                        {.Name = u"CodeID"_s, .Type = FieldType::Long, .OrdinalPosition = 2}},
             .Indexes = {}});
        database->AppendRelation(
            {u"r"_s, u"Items"_s, u"Files"_s, u"ID"_s, u"CodeID"_s, SchemaAttribute::RelationDeleteCascade});
        AddItems(*database, {u"one"_s});
        database->Execute(u"INSERT INTO Files (CodeID) VALUES (1)"_s);
        database->Execute(u"DELETE FROM Items"_s);
        QCOMPARE(database->QueryValue(u"SELECT count(*) FROM Files"_s).ToLong(), 0);
    }
};

QB_TEST_MAIN(TestHostileSchema)
#include "tst_hostile_schema.moc"
