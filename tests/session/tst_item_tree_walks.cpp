#include "support/TestSession.h"

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// The ways through the tree: root (a (a1, a2 (deep)), b, c (c1)).
class TestItemTreeWalks : public QObject {
    Q_OBJECT

private:
    QStringList Walk(void (ItemTree::*step)(), const QString& from)
    {
        s->Select(from);
        QStringList way;
        for (QString at = from;;) {
            (s->Tree.*step)();
            if (s->Selected() == at || way.size() > 20)
                return way;
            way << (at = s->Selected());
        }
    }

    void SetImage(const QString& title, TreeImage image) { s->Node(title).Image = image; }

    std::optional<TestSession> s;

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        s.emplace();
        Library& library = s->OpenLibrary();
        const qint64 a = AddItem(library, 0, u"a"_s);
        AddItem(library, a, u"a1"_s);
        const qint64 a2 = AddItem(library, a, u"a2"_s);
        AddItem(library, a2, u"deep"_s);
        AddItem(library, 0, u"b"_s);
        const qint64 c = AddItem(library, 0, u"c"_s);
        AddItem(library, c, u"c1"_s);
        s->Shell.Text = u"top"_s;
        s->Tree.FillTree();
    }

    void cleanup() { s.reset(); }

    void nextItem_walksTheTree_data()
    {
        QTest::addColumn<bool>("expandBranches");
        QTest::addColumn<QStringList>("open");
        QTest::addColumn<QStringList>("way");
        const QStringList whole{u"a"_s, u"a1"_s, u"a2"_s, u"deep"_s, u"b"_s, u"c"_s, u"c1"_s};
        QTest::newRow("into every branch") << true << QStringList() << whole;
        QTest::newRow("closed branches") << false << QStringList() << QStringList{u"a"_s, u"b"_s, u"c"_s};
        QTest::newRow("one open branch") << false << QStringList{u"a"_s}
                                         << QStringList{u"a"_s, u"a1"_s, u"a2"_s, u"b"_s, u"c"_s};
        QTest::newRow("all open") << false << QStringList{u"a"_s, u"a2"_s, u"c"_s} << whole;
    }
    void nextItem_walksTheTree()
    {
        QFETCH(bool, expandBranches);
        QFETCH(QStringList, open);
        QFETCH(QStringList, way);
        s->State.moSettings->SetExpandBranches(expandBranches);
        for (const QString& title : open)
            s->Node(title).Expanded = true;
        QCOMPARE(Walk(&ItemTree::MoveOnNextItem, u"top Library"_s), way);
        way.removeLast();
        std::reverse(way.begin(), way.end());
        const QString last = s->Selected();
        QCOMPARE(Walk(&ItemTree::MoveOnPreviousItem, last), way + QStringList{u"top Library"_s});
    }

    void walkedItem_isOpened()
    {
        s->Select(u"a1"_s);
        s->Tree.MoveOnNextItem();
        QCOMPARE(s->Selected(), u"a2"_s);
        QCOMPARE(s->State.CurrentItemKey, s->Node(u"a2"_s).Key());
        QCOMPARE(s->Details.Item->Title(), u"a2"_s);
        QCOMPARE(s->View.Focused, 1);
    }

    void nextOfTheLast_stays()
    {
        s->Select(u"c1"_s);
        s->Tree.MoveOnNextItem();
        QCOMPARE(s->Selected(), u"c1"_s);
        QCOMPARE(s->Details.Initialised, 0);
    }

    void previousOfTheRoot_stays()
    {
        s->Select(u"top Library"_s);
        s->Tree.MoveOnPreviousItem();
        QCOMPARE(s->Selected(), u"top Library"_s);
        QCOMPARE(s->Details.Initialised, 0);
    }

    void walkWithoutASelection_doesNothing()
    {
        s->View.Selected = -1;
        s->Tree.MoveOnNextItem();
        s->Tree.MoveOnPreviousItem();
        QCOMPARE(s->Details.Initialised, 0);
    }

    void nextParentNode_isTheNearestAncestorsSibling_data()
    {
        QTest::addColumn<QString>("next");
        QTest::newRow("deep") << u"b"_s;
        QTest::newRow("a1") << u"b"_s;
        QTest::newRow("c1") << QString();
        QTest::newRow("a") << QString(); // its parent is the root
        QTest::newRow("top Library") << QString();
    }
    void nextParentNode_isTheNearestAncestorsSibling()
    {
        const TreeNode* next = ItemTree::NextParentNode(s->Node(QString::fromLatin1(QTest::currentDataTag())));
        QTEST(next ? next->Text() : QString(), "next");
    }

    void previousLowestNode_isTheDeepestLastOne_data()
    {
        QTest::addColumn<QString>("lowest");
        QTest::newRow("top Library") << u"c1"_s;
        QTest::newRow("a") << u"deep"_s;
        QTest::newRow("b") << u"b"_s;
    }
    void previousLowestNode_isTheDeepestLastOne()
    {
        QTEST(ItemTree::PreviousLowestNode(s->Node(QString::fromLatin1(QTest::currentDataTag())))->Text(), "lowest");
    }

    // Problem items

    void conflictWalks_stopAtProblemsOnly()
    {
        s->State.moSettings->SetExpandBranches(false); // it makes no difference
        SetImage(u"a1"_s, TreeImage::DELETED_ITEM);
        SetImage(u"deep"_s, TreeImage::CONFLICT_ITEM);
        SetImage(u"b"_s, TreeImage::CONFLICT_ITEM_INFO); // is none to be decided here
        SetImage(u"c1"_s, TreeImage::CONFLICT_ITEM);
        QCOMPARE(Walk(&ItemTree::FindNextConflictItem, u"top Library"_s), (QStringList{u"a1"_s, u"deep"_s, u"c1"_s}));
        QCOMPARE(Walk(&ItemTree::FindPreviousConflictItem, u"c1"_s), (QStringList{u"deep"_s, u"a1"_s}));
    }

    void conflictThatIsFound_isOpened()
    {
        SetImage(u"deep"_s, TreeImage::CONFLICT_ITEM);
        s->Select(u"top Library"_s);
        s->Tree.FindNextConflictItem();
        QCOMPARE(s->State.CurrentItemKey, s->Node(u"deep"_s).Key());
        QCOMPARE(s->Details.Item->Title(), u"deep"_s);
    }

    void endOfAConflictWalk_disablesItsButton()
    {
        SetImage(u"a1"_s, TreeImage::DELETED_ITEM);
        s->Select(u"a1"_s);
        s->CommandStates.SetEnabled(u"PREVIOUS"_s, false);
        s->Tree.FindNextConflictItem();
        QCOMPARE(s->Selected(), u"a1"_s);
        QVERIFY(!s->Enabled(u"NEXT"_s));
        QVERIFY(s->Enabled(u"PREVIOUS"_s));
        s->Tree.FindPreviousConflictItem();
        QCOMPARE(s->Selected(), u"a1"_s);
        QVERIFY(s->Enabled(u"NEXT"_s));
        QVERIFY(!s->Enabled(u"PREVIOUS"_s));
    }

    void foundConflict_leavesItsButton()
    {
        SetImage(u"b"_s, TreeImage::DELETED_ITEM);
        s->Select(u"a1"_s);
        s->Tree.FindNextConflictItem();
        QCOMPARE(s->Selected(), u"b"_s);
        QVERIFY(s->Enabled(u"NEXT"_s));
    }

    void conflictThatIsFound_canBeDeletedAndBookmarked()
    {
        SetImage(u"b"_s, TreeImage::DELETED_ITEM);
        s->Select(u"top Library"_s);
        s->CommandStates.DoToolBarLogic(true);
        s->Tree.FindNextConflictItem();
        QVERIFY(s->Enabled(u"DELETE"_s) && s->Enabled(u"BOOKMARK"_s));
    }
};

QB_TEST_MAIN(TestItemTreeWalks)
#include "tst_item_tree_walks.moc"
