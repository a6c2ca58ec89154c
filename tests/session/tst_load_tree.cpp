#include "session/LoadTree.h"
#include "support/LibraryBuilder.h"
#include "support/TestSession.h"

#include <QSignalSpy>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

class TestLoadTree : public QObject {
    Q_OBJECT

private:
    TemporaryHome m_home;
    std::unique_ptr<Library> m_library;

    void AddMany(int count)
    {
        m_library->Execute(u"WITH RECURSIVE n(x) AS (SELECT 1 UNION ALL SELECT x + 1 FROM n LIMIT ?) INSERT INTO Items "
                           "(ID, Title, Description, ParentID) SELECT x, 'ü' || (1000000 - x), CASE x % 2 WHEN 0 "
                           "THEN x ELSE '' END, 0 FROM n"_s,
                           {count});
    }

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_library = MakeLibrary(m_home.Path(u"Wälder.qbd"_s), LanguageType::None);
        m_library->BeginTrans();
    }

    void cleanup()
    {
        m_library->Rollback();
        m_library.reset();
    }

    void library_isReadSortedBelowTheRoot()
    {
        const qint64 fruit = AddItem(*m_library, 0, u"fruit"_s);
        AddItem(*m_library, fruit, u"pear"_s);
        const qint64 apple = AddItem(*m_library, fruit, u"Äpfel"_s);
        m_library->Execute(u"UPDATE Items SET Description = 'rot' WHERE ID = ?"_s, {apple});
        TreeNodes nodes;
        QSignalSpy begun(&nodes, &QAbstractItemModel::modelAboutToBeReset);
        QSignalSpy done(&nodes, &QAbstractItemModel::modelReset);
        QVERIFY(LoadTree(*m_library, nodes, u"Wurzel"_s).empty());
        QCOMPARE(begun.size(), 1);
        QCOMPARE(done.size(), 1);
        QCOMPARE(TestSession::Shape(nodes.TopLevel()), u"Wurzel(fruit(Äpfel pear))"_s);
        QCOMPARE(nodes[apple].Tag(), u"rot"_s);
    }

    void emptyLibrary_hasTheRootAlone()
    {
        TreeNodes nodes;
        QVERIFY(LoadTree(*m_library, nodes, u"root"_s).empty());
        QCOMPARE(TestSession::Shape(nodes.TopLevel()), u"root"_s);
    }

    void itemsWithoutAPlace_areNamedAndStayBesideTheRoot()
    {
        const qint64 good = AddItem(*m_library, 0, u"good"_s);
        const qint64 lost = AddItem(*m_library, 4711, u"lost"_s);
        AddItem(*m_library, lost, u"below lost"_s);
        const qint64 self = AddItem(*m_library, good, u"self"_s);
        m_library->Execute(u"UPDATE Items SET ParentID = ID WHERE ID = ?"_s, {self});
        TreeNodes nodes;
        std::vector<qint64> named = LoadTree(*m_library, nodes, u"root"_s);
        std::sort(named.begin(), named.end());
        QCOMPARE(named, (std::vector<qint64>{lost, self}));
        QCOMPARE(nodes[lost].Parent, nullptr);
        QCOMPARE(nodes.Count(), 5);
        QCOMPARE(TestSession::Shape(nodes.Root()->Children.All()), u"good"_s);
    }

    void cycle_losesOneOfItsItems()
    {
        const qint64 one = AddItem(*m_library, 0, u"one"_s);
        const qint64 two = AddItem(*m_library, one, u"two"_s);
        m_library->Execute(u"UPDATE Items SET ParentID = ? WHERE ID = ?"_s, {two, one});
        TreeNodes nodes;
        QCOMPARE(LoadTree(*m_library, nodes, u"root"_s).size(), size_t(1));
        QCOMPARE(nodes.Count(), 3);
        QCOMPARE(nodes.TopLevel().size(), size_t(2));
    }

    void readingThatTakesTooLong_isGivenUp()
    {
        m_library->Execute(u"WITH RECURSIVE n(x) AS (SELECT 1 UNION ALL SELECT x + 1 FROM n LIMIT 5000) INSERT INTO "
                           "Items (Title, ParentID) SELECT 'x', 0 FROM n"_s);
        TreeNodes nodes;
        QB_VERIFY_RAISES(LoadTree(*m_library, nodes, {}, std::chrono::milliseconds(0)), ErrorNumber::Cancelled);
        TreeNodes all;
        QVERIFY(LoadTree(*m_library, all, {}).empty());
        QCOMPARE(all.Count(), 5001);
    }

    void manyItems_areReadInTheOrderOfTheTree()
    {
        AddMany(100'000);
        TreeNodes nodes;
        QVERIFY(LoadTree(*m_library, nodes, u"root"_s).empty());
        QCOMPARE(nodes.Count(), 100'001);
        qint64 expected = 100'000; // titles count down
        for (const TreeNode* node : nodes.Root()->Children.All()) {
            QCOMPARE(node->Id, expected);
            QCOMPARE(node->Text(), u"ü%1"_s.arg(1'000'000 - expected));
            QCOMPARE(node->Tag(), expected % 2 == 0 ? QString::number(expected) : QString());
            --expected;
        }
    }

    /// The reader is far ahead then, or waits.
    void treeThatTakesNoMore_endsTheReading()
    {
        AddMany(100'000);
        TreeNodes nodes;
        nodes.Add(100'000, u"there"_s, TreeImage::CHILD); // which is the first that is read
        QB_VERIFY_RAISES(ReadTreeRows(*m_library, nodes, TreeImage::CHILD), ErrorNumber::NodeKeyExists);
        QCOMPARE(CountOf(*m_library, u"Items"_s), 100'000);
    }
};

QB_TEST_MAIN(TestLoadTree)
#include "tst_load_tree.moc"
