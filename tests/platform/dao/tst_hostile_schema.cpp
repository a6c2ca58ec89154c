#include "platform/dao/StatementLimit.h"
#include "platform/dao/TemporaryDatabase.h"

#include <QtEndian>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

namespace {

const QString Endless = u"WITH RECURSIVE n(x) AS (SELECT 1 UNION ALL SELECT x + 1 FROM n) SELECT sum(x) FROM n"_s;

/// Writes pages behind a table's one page that refer to each other so that the table has more rows than anybody
/// can read, in a file of a few pages.
void MakeBomb(const QString& path, int rootPage)
{
    constexpr int PageSize = 4096, Cells = 400, Levels = 5, CellSize = 5, HeaderSize = 12;
    QByteArray file = ReadFile(path);
    const qsizetype root = (rootPage - 1) * PageSize;
    const int first = int(file.size()) / PageSize + 1;
    const QByteArray leaf = file.mid(root, PageSize);
    const auto inner = [](int child) {
        QByteArray page(PageSize, '\0');
        const auto put16 = [&page](int at, int value) { qToBigEndian(quint16(value), page.data() + at); };
        page[0] = 5; // an inner page of a table
        put16(3, Cells);
        put16(5, PageSize - Cells * CellSize);
        qToBigEndian(quint32(child), page.data() + 8);
        for (int i = 0; i < Cells; ++i) {
            const int at = PageSize - (i + 1) * CellSize;
            put16(HeaderSize + 2 * i, at);
            qToBigEndian(quint32(child), page.data() + at);
            page[at + 4] = 1; // the key
        }
        return page;
    };
    file.replace(root, PageSize, inner(first));
    for (int level = 1; level < Levels; ++level)
        file += inner(first + level);
    file += leaf;
    qToBigEndian(quint32(file.size() / PageSize), file.data() + 28); // pages of the file
    WriteFile(path, file);
}

} // namespace

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

    void virtualTable_isNoTable()
    {
        TemporaryDatabase database;
        database->Execute(u"CREATE TABLE Real (A)"_s);
        database->Execute(u"CREATE VIRTUAL TABLE Items USING fts4(Title)"_s);
        database.Reopen();
        QVERIFY(database->TableExists(u"Real"_s));
        QVERIFY(!database->TableExists(u"Items"_s));
    }

    void endlessStatement_endsAtItsDeadline()
    {
        TemporaryDatabase database;
        const StatementLimit limit(*database, std::chrono::milliseconds(50));
        QB_VERIFY_RAISES(database->QueryValue(Endless), 3059);
    }

    void endlessStatement_endsWhenItIsCancelled()
    {
        TemporaryDatabase database;
        int asked = 0;
        const StatementLimit limit(*database, [&asked] { return ++asked == 10; });
        QB_VERIFY_RAISES(database->QueryValue(Endless), 3059);
        QCOMPARE(asked, 10);
        QCOMPARE(database->QueryValue(u"SELECT 1"_s).ToLong(), 1); // the next one runs
    }

    void innerLimit_leavesTheOuterOneInForce()
    {
        TemporaryDatabase database;
        int asked = 0;
        const StatementLimit outer(*database, [&asked] { return ++asked >= 5; });
        {
            const StatementLimit inner(*database, [] { return false; });
            QB_VERIFY_RAISES(database->QueryValue(Endless), 3059);
        }
        asked = 0;
        QB_VERIFY_RAISES(database->QueryValue(Endless), 3059);
        QCOMPARE(asked, 5);
    }

    void cancelledChange_takesItsTransactionBack()
    {
        TemporaryDatabase database;
        database->AppendTableDef(ItemsTable());
        {
            Transaction transaction(*database);
            AddItems(*database, {u"one"_s});
            const StatementLimit limit(*database, [] { return true; });
            QB_VERIFY_RAISES(database->Execute(u"INSERT INTO Items (Title) WITH RECURSIVE n(x) AS (SELECT 1 UNION "
                                               "ALL SELECT x + 1 FROM n) SELECT 'x' FROM n"_s),
                             3059);
            QB_VERIFY_RAISES(AddItems(*database, {u"two"_s}), 3000); // nothing is written on its own
        }
        QCOMPARE(database->OpenRecordset(u"Items"_s).RecordCount(), 0);
    }

    void tableWithoutEnd_endsAtTheDeadline()
    {
        TemporaryDatabase database;
        database->AppendTableDef(ItemsTable());
        AddItems(*database, {u"one"_s});
        const int root = int(
            database->QueryValue(u"SELECT rootpage FROM sqlite_schema WHERE name = 'Items'"_s).ToLong());
        database.Close();
        MakeBomb(database.Path(), root);
        const auto bomb = DBEngine::OpenDatabase(database.Path());
        const StatementLimit limit(*bomb, std::chrono::milliseconds(50));
        QB_VERIFY_RAISES(bomb->QueryValue(u"SELECT max(Title) FROM Items"_s), 3059);
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
        database->Execute(u"PRAGMA user_version = 3"_s);
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
