#include "platform/dao/DBEngine.h"
#include "store/CDBCreate.h"
#include "store/OwnIndexes.h"
#include "support/LibraryBuilder.h"
#include "support/TestRun.h"

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

namespace {

const QStringList All{u"LastChanged"_s, u"Tree"_s};

/// A library as older versions of the program have left it.
void MakeOld(Database& library)
{
    library.Execute(u"DROP INDEX own_Items_Tree"_s);
    library.Execute(u"DROP INDEX own_Items_LastChanged"_s);
    library.AppendIndex(u"Items"_s, {.Name = u"Tree"_s, .Fields = {u"ParentID"_s, u"Title"_s, u"Description"_s}});
}

} // namespace

class TestOwnIndexes : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_home = std::make_unique<TemporaryHome>();
        m_library = MakeLibrary(m_home->Path(u"own ä.qbd"_s), LanguageType::None);
    }
    void cleanup()
    {
        m_library.reset();
        m_home.reset();
    }

    void newLibrary_hasThemBesideThoseOfItsTables()
    {
        QCOMPARE(m_library->OwnIndexNames(u"Items"_s), All);
        for (const Index& index : m_library->GetTableDef(u"Items"_s).Indexes)
            QVERIFY2(!All.contains(index.Name), qPrintable(index.Name));
    }

    void libraryOfAnOlderVersion_getsThem()
    {
        MakeOld(*m_library);
        CompleteOwnIndexes(*m_library);
        QCOMPARE(m_library->OwnIndexNames(u"Items"_s), All);
        QVERIFY(!m_library->GetTableDef(u"Items"_s).FindIndex(u"Tree"_s));
        const QByteArray before = ReadFile(m_library->Name());
        CompleteOwnIndexes(*m_library);
        QCOMPARE(ReadFile(m_library->Name()), before);
    }

    void libraryThatIsReadOnly_isLeftAlone()
    {
        MakeOld(*m_library);
        const QString path = m_library->Name();
        m_library.reset();
        const auto reader = DBEngine::OpenDatabase(path, DatabaseAccess::ReadOnly);
        CompleteOwnIndexes(*reader);
        QCOMPARE(reader->OwnIndexNames(u"Items"_s), QStringList());
    }

    void libraryThatIsBeingWritten_isOpenedWithout()
    {
        MakeOld(*m_library);
        const auto other = DBEngine::OpenDatabase(m_library->Name());
        const Transaction writing(*other);
        m_library->Execute(u"PRAGMA busy_timeout = 1"_s);
        CompleteOwnIndexes(*m_library);
        QCOMPARE(m_library->OwnIndexNames(u"Items"_s), QStringList());
    }

    void changedItems_areFoundByTheIndex_data()
    {
        QTest::addColumn<QString>("condition");
        QTest::newRow("waiting for removal") << u"LastChanged = 0"_s;
        QTest::newRow("changed since") << u"LastChanged > 5"_s;
    }
    void changedItems_areFoundByTheIndex()
    {
        QFETCH(QString, condition);
        Statement plan = m_library->Query(u"EXPLAIN QUERY PLAN SELECT ID FROM Items WHERE "_s + condition);
        QVERIFY(plan.Step());
        QVERIFY2(plan.Text(3).contains(u"own_Items_LastChanged"_s), qPrintable(plan.Text(3)));
    }

private:
    std::unique_ptr<TemporaryHome> m_home;
    std::unique_ptr<Database> m_library;
};

QB_TEST_MAIN(TestOwnIndexes)
#include "tst_own_indexes.moc"
