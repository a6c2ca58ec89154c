#include "platform/richtext/RtfPlainText.h"
#include "support/TestSession.h"

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

namespace {
constexpr int TreeHeight = 6000; // twips
constexpr int Middle = 3000;
} // namespace

/// A move in the tree by dragging.
class TestItemDrag : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        s = std::make_unique<TestSession>();
    }
    void cleanup() { s.reset(); }

    void draggedItem_movesWithAllBelow()
    {
        Fill();
        s->Time.AddSeconds(60);
        QVERIFY(Drag(u"a"_s, u"b"_s));
        QCOMPARE(s->Shape(), u"Ali äs Library(b(a(a1 a2)) Orphaned Items(orphan))"_s);
        QCOMPARE(ParentOf(u"a"_s), s->Node(u"b"_s).Id);
        QCOMPARE(LastChanged(u"a"_s), s->Time.Now());
        QCOMPARE(s->Image(u"b"_s), u"CHILD"_s); // until the next filling
        QCOMPARE(s->ExpandedImage(u"b"_s), u"OPENFOLDER"_s);
        QCOMPARE(s->Selected(), u"a"_s);
        QCOMPARE(s->Details.Title, u"a"_s); // the panel follows
        QCOMPARE(s->View.Highlight, -1);
        QVERIFY(!s->Drag.IsDragging());
    }

    /// The tree shows the library as it was when it was opened.
    void moveThatAnotherProgramHasMadeImpossible_isRefused_data()
    {
        QTest::addColumn<QString>("elsewhere");
        QTest::newRow("the target stands below the item") << u"UPDATE Items SET ParentID = 1 WHERE Title = 'b'"_s;
        QTest::newRow("the target is gone") << u"DELETE FROM Items WHERE Title = 'b'"_s;
    }
    void moveThatAnotherProgramHasMadeImpossible_isRefused()
    {
        QFETCH(QString, elsewhere);
        Fill();
        s->State.CurrentDatabase->Execute(elsewhere);
        s->Script.ExpectError();
        QVERIFY(!Drag(u"a"_s, u"b"_s));
        QCOMPARE(ParentOf(u"a"_s), 0);
        QCOMPARE(s->Node(u"a"_s).Parent, s->View.Nodes().Root());
    }

    void itemDraggedToTheRoot_standsLastThere()
    {
        Fill();
        QVERIFY(Drag(u"a1"_s, u"Ali äs Library"_s));
        QCOMPARE(s->Shape(), u"Ali äs Library(a(a2) a1 b Orphaned Items(orphan))"_s);
        QCOMPARE(ParentOf(u"a1"_s), 0);
        QCOMPARE(s->Image(u"Ali äs Library"_s), u"OBJECTS"_s);
    }

    void parentThatLosesItsLastChild_isAPlainItem()
    {
        Fill();
        Drag(u"a1"_s, u"b"_s);
        QCOMPARE(s->Image(u"a"_s), u"FOLDER"_s);
        Drag(u"a2"_s, u"b"_s);
        QCOMPARE(s->Image(u"a"_s), u"CHILD"_s);
        QCOMPARE(s->ExpandedImage(u"a"_s), u"CHILD"_s);
    }

    void placesThatTakeNothing_areNotMarked_data()
    {
        QTest::addColumn<QString>("target");
        QTest::newRow("itself") << u"a"_s;
        QTest::newRow("below itself") << u"a1"_s;
        QTest::newRow("folder of orphans") << u"Orphaned Items"_s;
        QTest::newRow("below the folder of orphans") << u"orphan"_s;
    }

    void placesThatTakeNothing_areNotMarked()
    {
        QFETCH(QString, target);
        Fill();
        const QString shape = s->Shape();
        QVERIFY(s->Drag.Start(s->Node(u"a"_s)));
        QVERIFY(s->Drag.Over(&s->Node(u"b"_s), Middle, TreeHeight));
        QCOMPARE(s->View.Highlight, s->Node(u"b"_s).Id);
        QVERIFY(!s->Drag.Over(&s->Node(target), Middle, TreeHeight));
        QCOMPARE(s->View.Highlight, -1);
        QVERIFY(!s->Drag.Drop());
        s->Drag.Complete();
        QCOMPARE(s->Shape(), shape);
        QVERIFY(!s->Drag.Over(nullptr, Middle, TreeHeight));
    }

    void root_isNotDragged()
    {
        Fill();
        QVERIFY(!s->Drag.Start(s->Node(u"Ali äs Library"_s)));
    }

    void hovering_opensABranchAfterFourSeconds()
    {
        Fill();
        s->Drag.Start(s->Node(u"b"_s));
        s->Drag.Over(&s->Node(u"a"_s), Middle, TreeHeight);
        for (int i = 0; i < 40; ++i)
            s->Drag.Tick();
        QVERIFY(!s->Node(u"a"_s).Expanded);
        s->Drag.Tick();
        QVERIFY(s->Node(u"a"_s).Expanded);
    }

    void hovering_startsAnewWithoutAMark()
    {
        Fill();
        s->Drag.Start(s->Node(u"b"_s));
        s->Drag.Over(&s->Node(u"a"_s), Middle, TreeHeight);
        for (int i = 0; i < 30; ++i)
            s->Drag.Tick();
        s->Drag.Over(nullptr, Middle, TreeHeight);
        s->Drag.Tick();
        s->Drag.Over(&s->Node(u"a"_s), Middle, TreeHeight);
        for (int i = 0; i < 40; ++i)
            s->Drag.Tick();
        QVERIFY(!s->Node(u"a"_s).Expanded);
    }

    void edges_scrollTheTree_data()
    {
        QTest::addColumn<int>("y");
        QTest::addColumn<int>("direction");
        QTest::newRow("above") << 0 << 0;
        QTest::newRow("top") << 1 << -1;
        QTest::newRow("end of the top") << 299 << -1;
        QTest::newRow("below the top") << 300 << 0;
        QTest::newRow("above the bottom") << 5500 << 0;
        QTest::newRow("bottom") << 5501 << 1;
        QTest::newRow("last line") << 5999 << 1;
        QTest::newRow("below") << 6000 << 0;
    }

    void edges_scrollTheTree()
    {
        QFETCH(int, y);
        QFETCH(int, direction);
        Fill();
        s->Drag.Start(s->Node(u"b"_s));
        s->Drag.Over(&s->Node(u"a"_s), y, TreeHeight);
        for (int i = 0; i < 50; ++i)
            s->Drag.Tick();
        QCOMPARE(s->View.Scrolled, direction * 50);
        QCOMPARE(s->Node(u"a"_s).Expanded, direction == 0); // a tree that scrolls opens nothing
    }

    // Orphans

    void orphanDraggedOut_inAMother_takesTheFolderAlong()
    {
        Fill();
        MakeMother(*s->State.CurrentDatabase, Date());
        s->Tree.FillTree();
        s->Time.AddSeconds(60);
        s->Script.ExpectMsgBox(u"No other orphaned items present"_s);
        QVERIFY(Drag(u"orphan"_s, u"b"_s));
        QCOMPARE(s->Shape(), u"Ali äs Library(a(a1 a2) b(orphan))"_s);
        QCOMPARE(LastChanged(u"orphan"_s), s->Time.Now());
        QCOMPARE(CountOf(*s->State.CurrentDatabase, u"Items"_s), 5);
    }

    void orphan_inAChild_staysWhereItIs()
    {
        Fill();
        MakeChild(*s->State.CurrentDatabase, s->Home.Path(u"mother.qbd"_s), Date());
        s->Tree.FillTree();
        const QString shape = s->Shape();
        QVERIFY(!Drag(u"orphan"_s, u"b"_s));
        QCOMPARE(s->Shape(), shape);
    }

    void folderOfOrphans_inAMother_staysWhereItIs()
    {
        Fill();
        MakeMother(*s->State.CurrentDatabase, Date());
        s->Tree.FillTree();
        const QString shape = s->Shape();
        QVERIFY(!Drag(u"Orphaned Items"_s, u"b"_s));
        QCOMPARE(s->Shape(), shape);
    }

    void orphan_inAnOrdinaryLibrary_movesWithoutANewDate()
    {
        Fill();
        const Date before = LastChanged(u"orphan"_s);
        s->Time.AddSeconds(60);
        QVERIFY(Drag(u"orphan"_s, u"b"_s));
        QCOMPARE(ParentOf(u"orphan"_s), s->Node(u"b"_s).Id);
        QCOMPARE(LastChanged(u"orphan"_s), before);
        QCOMPARE(s->Node(u"Orphaned Items"_s).Children.size(), 0u); // and the folder stays
    }

    void reservedTitle_isNotMovedUnderTheRoot()
    {
        Fill();
        AddItem(*s->State.CurrentDatabase, s->Node(u"a"_s).Id, u"Orphaned Items"_s);
        s->State.CurrentDatabase->Execute(
            u"UPDATE Items SET Title = 'x' WHERE ParentID = 0 AND Title = 'Orphaned Items'"_s);
        s->Tree.FillTree();
        const QString shape = s->Shape();
        s->Script.ExpectMsgBox(u"Can not move this item"_s);
        QVERIFY(!Drag(u"Orphaned Items"_s, u"Ali äs Library"_s));
        QCOMPARE(
            s->Script.Messages.last().Text,
            u"It is not possible to move this item under the root!  Name 'Orphaned Items' under the root directory "
            "is reserved "
            "for the program. Directory with this name is used by it during synchronization.\r\nYou can rename the "
            "item and "
            "then repeat the action."_s);
        QCOMPARE(s->Shape(), shape);
    }

    // Failures

    void moveThatCanNotBeWritten_leavesTheTree()
    {
        Fill();
        const QString shape = s->Shape();
        s->State.CurrentDatabase->Execute(
            u"CREATE TEMP TRIGGER refuse BEFORE UPDATE ON Items BEGIN SELECT RAISE(ABORT, 'no room'); END"_s);
        s->Script.ExpectError();
        QVERIFY(!Drag(u"a"_s, u"b"_s));
        QCOMPARE(s->Shape(), shape);
        QCOMPARE(ParentOf(u"a"_s), 0);
    }

    void textsTypedBeforeTheMove_areKept()
    {
        Fill();
        s->Click(u"a1"_s);
        s->Details.Type(u"typed"_s);
        QVERIFY(Drag(u"a1"_s, u"b"_s));
        s->Details.Type(u"more"_s);
        s->Click(u"a"_s);
        QCOMPARE(PlainTextFromRtf(Column(u"a1"_s, u"Code"_s).ToText()), u"more"_s);
        QCOMPARE(ParentOf(u"a1"_s), s->Node(u"b"_s).Id); // the save has not brought the old parent back
    }

    void nodeThatIsGone_isNotDropped()
    {
        Fill();
        s->Drag.Start(s->Node(u"a1"_s));
        s->Drag.Over(&s->Node(u"b"_s), Middle, TreeHeight);
        s->View.RemoveNode(s->Node(u"a1"_s));
        QVERIFY(!s->Drag.Drop());
        s->Drag.Complete();
    }

private:
    /// a(a1 a2) b Orphaned Items(orphan)
    void Fill()
    {
        Library& database = s->OpenLibrary();
        const qint64 a = AddItem(database, 0, u"a"_s);
        AddItem(database, a, u"a1"_s);
        AddItem(database, a, u"a2"_s);
        AddItem(database, 0, u"b"_s);
        AddItem(database, AddItem(database, 0, u"Orphaned Items"_s), u"orphan"_s);
        s->Tree.FillTree();
    }

    bool Drag(const QString& title, const QString& target)
    {
        s->Select(title);
        s->Drag.Start(s->Node(title));
        s->Drag.Over(&s->Node(target), Middle, TreeHeight);
        const bool moved = s->Drag.Drop();
        [&] { QCOMPARE(s->View.Highlight, -1); }();
        s->Drag.Complete();
        return moved;
    }

    Value Column(const QString& title, const QString& column)
    {
        return s->State.CurrentDatabase->QueryValue(u"SELECT "_s + column + u" FROM Items WHERE Title = ?"_s, {title});
    }
    qint64 ParentOf(const QString& title) { return Column(title, u"ParentID"_s).ToLong(); }
    Date LastChanged(const QString& title) { return Column(title, u"LastChanged"_s).ToDate(); }

    std::unique_ptr<TestSession> s;
};

QB_TEST_MAIN(TestItemDrag)
#include "tst_item_drag.moc"
