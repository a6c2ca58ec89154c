#include "platform/dao/TemporaryDatabase.h"

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

class TestTransaction : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_database = std::make_unique<TemporaryDatabase>();
        Db().AppendTableDef(ItemsTable());
    }
    void cleanup() { m_database.reset(); }

    void commit_isSeenByOthers()
    {
        const auto other = m_database->OpenSecond();
        {
            Transaction transaction(Db());
            AddItems(Db(), {u"one"_s});
            QVERIFY(Db().InTransaction());
            QCOMPARE(Titles(*other), QStringList());
            transaction.Commit();
        }
        QVERIFY(!Db().InTransaction());
        QCOMPARE(Titles(*other), QStringList{u"one"_s});
    }

    void scopeLeft_rollsBack()
    {
        try {
            const Transaction transaction(Db());
            AddItems(Db(), {u"one"_s});
            throw std::runtime_error("out of the scope");
        } catch (const std::runtime_error&) {
        }
        QVERIFY(!Db().InTransaction());
        m_database->Reopen();
        QCOMPARE(Titles(Db()), QStringList());
    }

    void innerRolledBack_outerIsKept()
    {
        Transaction outer(Db());
        AddItems(Db(), {u"before"_s});
        {
            const Transaction inner(Db());
            AddItems(Db(), {u"inner"_s});
        }
        AddItems(Db(), {u"after"_s});
        QVERIFY(Db().InTransaction());
        outer.Commit();
        m_database->Reopen();
        QCOMPARE(Titles(Db()), QStringList({u"before"_s, u"after"_s}));
    }

    void outerRolledBack_takesTheCommittedInnerWithIt()
    {
        {
            const Transaction outer(Db());
            Transaction inner(Db());
            AddItems(Db(), {u"inner"_s});
            inner.Commit();
        }
        QCOMPARE(Titles(Db()), QStringList());
    }

    void threeLevels_rollBackOnlyTheMiddleOne()
    {
        Transaction outer(Db());
        {
            const Transaction middle(Db());
            Transaction inner(Db());
            AddItems(Db(), {u"inner"_s});
            inner.Commit();
        }
        AddItems(Db(), {u"outer"_s});
        outer.Commit();
        QCOMPARE(Titles(Db()), QStringList{u"outer"_s});
    }

    void commitWithoutABegin_raises()
    {
        QB_VERIFY_RAISES(Db().CommitTrans(), 3000);
        QB_VERIFY_RAISES(Db().Rollback(), 3000);
        Db().BeginTrans();
        AddItems(Db(), {u"one"_s});
        Db().CommitTrans();
        QB_VERIFY_RAISES(Db().CommitTrans(), 3000);
        QCOMPARE(Titles(Db()), QStringList{u"one"_s});
    }

    void rolledBackSchema_isForgotten()
    {
        {
            const Transaction transaction(Db());
            Db().AppendField(u"Items"_s, {.Name = u"Later"_s});
            QVERIFY(Db().GetTableDef(u"Items"_s).FindField(u"Later"_s));
        }
        QVERIFY(!Db().GetTableDef(u"Items"_s).FindField(u"Later"_s));
    }

    void fullDisk_leavesNothing()
    {
        {
            const Transaction transaction(Db());
            AddItems(Db(), {u"one"_s});
            QB_VERIFY_RAISES(FillTheDisk(), 3026);
        }
        QVERIFY(!Db().InTransaction());
        m_database->Reopen();
        QCOMPARE(Titles(Db()), QStringList());
    }

    void fullDisk_laterStatementsOfTheTransactionRaise()
    {
        {
            Transaction outer(Db());
            {
                const Transaction inner(Db());
                QB_VERIFY_RAISES(FillTheDisk(), 3026);
                QB_VERIFY_RAISES(AddItems(Db(), {u"inner"_s}), 3000);
            }
            QB_VERIFY_RAISES(AddItems(Db(), {u"outer"_s}), 3000);
            QB_VERIFY_RAISES(Db().BeginTrans(), 3000);
            QB_VERIFY_RAISES(outer.Commit(), 3000);
        }
        QCOMPARE(Titles(Db()), QStringList());
        AddItems(Db(), {u"after"_s});
        QCOMPARE(Titles(Db()), QStringList{u"after"_s});
    }

    void fullDisk_statementStartedBeforeRaises()
    {
        {
            const Transaction transaction(Db());
            Statement insert = Db().Query(u"INSERT INTO Items (Title) VALUES (?)"_s, {u"before"_s});
            QB_VERIFY_RAISES(FillTheDisk(), 3026);
            QB_VERIFY_RAISES(insert.Step(), 3000);
        }
        QCOMPARE(Titles(Db()), QStringList());
    }

    void fullDisk_outsideATransaction_leavesTheRowsAsTheyWere()
    {
        AddItems(Db(), {u"one"_s});
        QB_VERIFY_RAISES(FillTheDisk(), 3026);
        QCOMPARE(Titles(Db()), QStringList{u"one"_s});
        AddItems(Db(), {u"two"_s});
        QCOMPARE(Titles(Db()), QStringList({u"one"_s, u"two"_s}));
    }

private:
    Database& Db() { return **m_database; }
    static QStringList Titles(Database& database) { return Texts(database, u"SELECT Title FROM Items ORDER BY ID"_s); }

    /// Adds a row that no longer fits into the file.
    void FillTheDisk()
    {
        const qint64 pages = Db().QueryValue(u"PRAGMA page_count"_s).ToLong();
        Db().QueryValue(u"PRAGMA max_page_count = %1"_s.arg(pages + 2));
        Db().Execute(u"INSERT INTO Items (Title, Notes) VALUES ('big', ?)"_s, {QString(1000000, u'x')});
    }

    std::unique_ptr<TemporaryDatabase> m_database;
};

QB_TEST_MAIN(TestTransaction)
#include "tst_transaction.moc"
