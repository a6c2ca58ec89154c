#include "platform/dao/TemporaryDatabase.h"

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

class TestStatement : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_database = std::make_unique<TemporaryDatabase>();
        Db().AppendTableDef(ItemsTable());
    }
    void cleanup() { m_database.reset(); }

    void parameters_comeBackAsTheyWereBound_data()
    {
        QTest::addColumn<Value>("value");
        QTest::newRow("null") << Value();
        QTest::newRow("number") << Value(std::numeric_limits<qint64>::max());
        QTest::newRow("fraction") << Value(0.1);
        QTest::newRow("text") << Value(u"it's \"ß\" 😀"_s);
        QTest::newRow("empty text") << Value(QString());
        QTest::newRow("text with NUL") << Value(u"a\0b"_s);
        QTest::newRow("bytes") << Value(QByteArray("\0\1\xff", 3));
        QTest::newRow("empty bytes") << Value(QByteArray());
    }

    void parameters_comeBackAsTheyWereBound()
    {
        QFETCH(Value, value);
        QVERIFY(Db().QueryValue(u"SELECT ?"_s, {value}) == value);
    }

    void wrongNumberOfParameters_raisesAndDoesNothing()
    {
        const QString insert = u"INSERT INTO Items (Title, Rating) VALUES (?, ?)"_s;
        QB_VERIFY_RAISES(Db().Execute(insert, {u"one"_s}), 3000);
        QB_VERIFY_RAISES(Db().Execute(insert, {u"one"_s, 1, 2}), 3000);
        QB_VERIFY_RAISES(Db().Execute(insert), 3000);
        QCOMPARE(Db().QueryValue(u"SELECT count(*) FROM Items"_s).ToLong(), 0);
        QCOMPARE(Db().Execute(insert, {u"one"_s, 1}), 1);
    }

    void faultyStatement_raises()
    {
        QB_VERIFY_RAISES(Db().Execute(u"SELEKT 1"_s), 3000);
        QB_VERIFY_RAISES(Db().Query(u"SELECT * FROM NoSuchTable"_s), 3000);
    }

    void execute_returnsTheNumberOfChangedRows()
    {
        AddItems(Db(), {u"one"_s, u"two"_s, u"three"_s});
        QCOMPARE(Db().Execute(u"UPDATE Items SET Rating = 1 WHERE ID < ?"_s, {3}), 2);
        QCOMPARE(Db().Execute(u"DELETE FROM Items WHERE ID = 99"_s), 0);
    }

    void queryValue_withoutARow_isNull() { QVERIFY(Db().QueryValue(u"SELECT Title FROM Items"_s).IsNull()); }

    void sameTextTwiceAtATime_readsIndependently()
    {
        AddItems(Db(), {u"one"_s, u"two"_s, u"three"_s});
        const QString sql = u"SELECT Title FROM Items WHERE ID >= ? ORDER BY ID"_s;
        Statement first = Db().Query(sql, {1});
        QVERIFY(first.Step());
        {
            Statement second = Db().Query(sql, {3});
            QVERIFY(second.Step());
            QCOMPARE(second.Text(0), u"three"_s);
            QVERIFY(!second.Step());
        }
        QCOMPARE(first.Text(0), u"one"_s);
        QVERIFY(first.Step());
        QCOMPARE(first.Text(0), u"two"_s);
    }

    void reusedText_doesNotKeepOldParameters()
    {
        const QString sql = u"SELECT ?"_s;
        QCOMPARE(Db().QueryValue(sql, {u"old"_s}).ToText(), u"old"_s);
        QVERIFY(Db().QueryValue(sql, {Value()}).IsNull());
    }

    void manyTexts_allWork()
    {
        for (int round = 0; round < 2; ++round) {
            for (int i = 0; i < 200; ++i)
                QCOMPARE(Db().QueryValue(u"SELECT %1"_s.arg(i)).ToLong(), i);
        }
    }

    void bindAndReset_startAnew()
    {
        Statement statement = Db().Query(u"SELECT ? + 1"_s, {1});
        QVERIFY(statement.Step());
        QCOMPARE(statement.Long(0), 2);
        statement.Bind({41});
        QVERIFY(statement.Step());
        QCOMPARE(statement.Long(0), 42);
        statement.Reset();
        QVERIFY(statement.Step());
        QCOMPARE(statement.Long(0), 42);
    }

    void movedStatement_goesOn()
    {
        AddItems(Db(), {u"one"_s, u"two"_s});
        Statement first = Db().Query(u"SELECT Title FROM Items ORDER BY ID"_s);
        QVERIFY(first.Step());
        Statement second(std::move(first));
        QCOMPARE(second.Text(0), u"one"_s);
        QVERIFY(second.Step());
        QCOMPARE(second.Text(0), u"two"_s);
    }

    void failedStep_leavesTheStatementUsable()
    {
        Statement insert = Db().Query(u"INSERT INTO Items (Title) VALUES (?)"_s, {Value()});
        QB_VERIFY_RAISES(insert.Step(), 3314);
        insert.Bind({u"one"_s});
        QVERIFY(!insert.Step());
        QCOMPARE(Texts(Db(), u"SELECT Title FROM Items"_s), QStringList{u"one"_s});
    }

    void columns_areReadByType()
    {
        Statement row = Db().Query(u"SELECT 5, 'five', NULL, x'0500', 0.5"_s);
        QVERIFY(row.Step());
        QCOMPARE(row.ColumnCount(), 5);
        QVERIFY(row.Column(0) == Value(5));
        QVERIFY(row.Column(1) == Value(u"five"_s));
        QVERIFY(row.Column(2).IsNull() && row.IsNull(2) && !row.IsNull(0));
        QVERIFY(row.Column(3) == Value(QByteArray("\5\0", 2)));
        QVERIFY(row.Column(4) == Value(0.5));
    }

    void changedSchema_isSeenByAStatementUsedBefore()
    {
        QCOMPARE(Db().Query(u"SELECT * FROM Items"_s).ColumnCount(), 5);
        Db().AppendField(u"Items"_s, {.Name = u"Later"_s, .OrdinalPosition = 9});
        AddItems(Db(), {u"one"_s});
        Statement rows = Db().Query(u"SELECT * FROM Items"_s);
        QVERIFY(rows.Step());
        QCOMPARE(rows.ColumnCount(), 6);
    }

private:
    Database& Db() { return **m_database; }
    std::unique_ptr<TemporaryDatabase> m_database;
};

QB_TEST_MAIN(TestStatement)
#include "tst_statement.moc"
