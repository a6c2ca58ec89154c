#include "store/CDBCreate.h"
#include "support/ErrorRoutine.h"
#include "support/TestSession.h"

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// How rows become nodes, and what their images say.
class TestItemTreeFill : public QObject {
    Q_OBJECT

private:
    /// tree: branch (leaf A, leaf b), empty
    void FillSmallLibrary()
    {
        Library& library = s->OpenLibrary();
        m_branch = AddItem(library, 0, u"branch"_s);
        m_leafB = AddItem(library, m_branch, u"leaf b"_s);
        m_leafA = AddItem(library, m_branch, u"Leaf A"_s);
        m_empty = AddItem(library, 0, u"empty"_s);
    }

    void Execute(const QString& sql, const Values& values = {}) { s->State.CurrentDatabase->Execute(sql, values); }
    void SetParent(qint64 id, qint64 parent) { Execute(u"UPDATE Items SET ParentID = ? WHERE ID = ?"_s, {parent, id}); }
    void Mark(qint64 id) { Execute(u"UPDATE Items SET LastChanged = 0 WHERE ID = ?"_s, {id}); }
    void AddConflict(qint64 id)
    {
        Library& library = *s->State.CurrentDatabase;
        if (!library.TableExists(u"TempItems"_s))
            CDBCreate(&library).Create_TblDef_Items(true, u"TempItems"_s);
        Execute(u"INSERT INTO TempItems (ID, Title) VALUES (?, 'conflict')"_s, {id});
    }
    void MakeReplica(bool child, bool mother)
    {
        if (child)
            MakeChild(*s->State.CurrentDatabase, u"/Mütter/m.qbd"_s, s->Time.Now());
        if (mother)
            MakeMother(*s->State.CurrentDatabase, s->Time.Now());
    }

    QStringList WalkButtons() const
    {
        QStringList texts;
        for (const QString& button : {u"NEXT"_s, u"PREVIOUS"_s})
            texts << s->CommandStates.Get(button).Icon << s->CommandStates.Get(button).Tip;
        return texts;
    }

    std::optional<TestSession> s;
    qint64 m_branch = 0, m_leafA = 0, m_leafB = 0, m_empty = 0;

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        s.emplace();
    }

    void cleanup() { s.reset(); }

    void emptyLibrary_showsTheRootAlone()
    {
        MakeMother(s->OpenLibrary(), Date());
        s->CommandStates.SetEnabled(u"mnuConflictSolver"_s, true); // stays as it is
        s->State.CurrentItemKey = u"C5"_s;
        s->Tree.FillTree();
        QCOMPARE(s->Shape(), u"Ali äs Library"_s);
        QCOMPARE(s->Selected(), u"Ali äs Library"_s);
        QVERIFY(s->View.Nodes().Root()->Bold);
        QCOMPARE(s->Image(u"Ali äs Library"_s), u"OBJECTS"_s);
        QCOMPARE(s->Details.Replaced, 1);
        QVERIFY(s->Enabled(u"mnuConflictSolver"_s));
        QCOMPARE(s->State.CurrentItemKey, QString());
    }

    void noLibrary_showsTheRootAlone()
    {
        s->Tree.FillTree();
        QCOMPARE(s->View.Nodes().Count(), 1);
    }

    void items_standUnderTheirParentsSorted()
    {
        FillSmallLibrary();
        s->State.CurrentItemKey = NodeKey(m_empty);
        s->Tree.FillTree();
        QCOMPARE(s->Shape(), u"Ali äs Library(branch(Leaf A leaf b) empty)"_s);
        QCOMPARE(s->Node(u"Leaf A"_s).Key(), u"C%1"_s.arg(m_leafA));
        QCOMPARE(s->State.CurrentItemKey, QString());
        QVERIFY(s->View.Nodes().Root()->Expanded);
        QVERIFY(!s->Node(u"branch"_s).Expanded);
        for (TreeNode& node : s->View.Nodes().All())
            QCOMPARE(node.Bold, node.IsRoot());
    }

    void childrenBeforeTheirParents_areTakenToo()
    {
        FillSmallLibrary();
        const qint64 late = AddItem(*s->State.CurrentDatabase, 0, u"late parent"_s);
        SetParent(m_branch, late);
        s->Tree.FillTree();
        QCOMPARE(s->Shape(), u"Ali äs Library(empty late parent(branch(Leaf A leaf b)))"_s);
    }

    void secondFill_startsAnew()
    {
        FillSmallLibrary();
        s->Tree.FillTree();
        Execute(u"UPDATE Items SET Title = 'renamed' WHERE ID = ?"_s, {m_empty});
        s->Shell.Text = u"Other"_s;
        s->Tree.FillTree();
        QCOMPARE(s->Shape(), u"Other Library(branch(Leaf A leaf b) renamed)"_s);
    }

    void images_tellFoldersFromItems()
    {
        FillSmallLibrary();
        s->Tree.FillTree();
        QCOMPARE(s->Image(u"branch"_s), u"FOLDER"_s);
        QCOMPARE(s->ExpandedImage(u"branch"_s), u"FOLDER"_s); // until it is expanded
        QCOMPARE(s->Image(u"Leaf A"_s), u"CHILD"_s);
        QCOMPARE(s->Image(u"empty"_s), u"CHILD"_s);
    }

    void tags_holdTheDescriptions()
    {
        FillSmallLibrary();
        Execute(u"UPDATE Items SET Description = 'Beschreibung ü' WHERE ID = ?"_s, {m_leafA});
        Execute(u"UPDATE Items SET Description = NULL WHERE ID = ?"_s, {m_leafB});
        s->Tree.FillTree();
        QCOMPARE(s->Node(u"Leaf A"_s).Tag(), u"Beschreibung ü"_s);
        QCOMPARE(s->Node(u"leaf b"_s).Tag(), QString());
    }

    void statement_isAnsweredByTheCoveringIndex()
    {
        Library& library = s->OpenLibrary();
        QStringList plan;
        Statement rows = library.Query(u"EXPLAIN QUERY PLAN "_s + ItemTree::TreeQuery());
        while (rows.Step())
            plan << rows.Text(3);
        QCOMPARE(plan.size(), 1); // no sorting either
        QVERIFY2(plan[0].contains(u"COVERING INDEX own_Items_Tree"_s), qPrintable(plan[0]));
    }

    // Problem items

    void images_tellProblemItems_data()
    {
        QTest::addColumn<bool>("child");
        QTest::addColumn<bool>("mother");
        QTest::addColumn<QString>("marked");
        QTest::addColumn<QString>("conflicting");
        QTest::newRow("plain") << false << false << u"CHILD"_s << u"CHILD"_s;
        QTest::newRow("mother") << false << true << u"DELETED_ITEM"_s << u"CONFLICT_ITEM"_s;
        QTest::newRow("child") << true << false << u"CONFLICT_ITEM_INFO"_s << u"CHILD"_s;
        QTest::newRow("both") << true << true << u"CONFLICT_ITEM_INFO"_s << u"CONFLICT_ITEM"_s;
    }
    void images_tellProblemItems()
    {
        QFETCH(bool, child);
        QFETCH(bool, mother);
        QFETCH(QString, marked);
        QFETCH(QString, conflicting);
        FillSmallLibrary();
        MakeReplica(child, mother);
        Mark(m_leafA);
        AddConflict(m_leafB);
        s->Tree.FillTree();
        QCOMPARE(s->Image(u"Leaf A"_s), marked);
        QCOMPARE(s->ExpandedImage(u"Leaf A"_s), marked);
        QCOMPARE(s->Image(u"leaf b"_s), conflicting);
        QCOMPARE(s->Image(u"branch"_s), u"FOLDER"_s);
    }

    void itemThatIsBoth_showsTheConflict()
    {
        FillSmallLibrary();
        MakeReplica(false, true);
        Mark(m_leafA);
        AddConflict(m_leafA);
        s->Tree.FillTree();
        QCOMPARE(s->Image(u"Leaf A"_s), u"CONFLICT_ITEM"_s);
    }

    void itemWithoutADate_isNoProblem()
    {
        FillSmallLibrary();
        MakeReplica(false, true);
        Execute(u"UPDATE Items SET LastChanged = NULL WHERE ID = ?"_s, {m_leafA});
        s->Tree.FillTree();
        QCOMPARE(s->Image(u"Leaf A"_s), u"CHILD"_s);
    }

    void conflictOfAnItemThatIsGone_isPassedOver()
    {
        FillSmallLibrary();
        MakeReplica(false, true);
        AddConflict(4711);
        s->Tree.FillTree();
        QCOMPARE(s->CommandStates.Get(u"NEXT"_s).Icon, u"DOWN_RED"_s);
        QCOMPARE(s->Shape(), u"Ali äs Library(branch(Leaf A leaf b) empty)"_s);
    }

    void buttonsAndMenus_followTheProblems_data()
    {
        QTest::addColumn<bool>("child");
        QTest::addColumn<bool>("mother");
        QTest::addColumn<bool>("marked");
        QTest::addColumn<bool>("conflict");
        QTest::addColumn<bool>("red");
        const auto row = [](const char* name, bool child, bool mother, bool marked, bool conflict, bool red) {
            QTest::newRow(name) << child << mother << marked << conflict << red;
        };
        row("plain", false, false, true, true, false);
        row("child", true, false, true, true, false);
        row("mother without problems", false, true, false, false, false);
        row("mother, deleted item", false, true, true, false, true);
        row("mother, conflict", false, true, false, true, true);
        row("mother, both", false, true, true, true, true);
        row("child and mother, marked", true, true, true, false, true);
    }
    void buttonsAndMenus_followTheProblems()
    {
        QFETCH(bool, child);
        QFETCH(bool, mother);
        QFETCH(bool, marked);
        QFETCH(bool, conflict);
        QFETCH(bool, red);
        FillSmallLibrary();
        MakeReplica(child, mother);
        if (marked)
            Mark(m_leafA);
        if (conflict)
            AddConflict(m_leafB);
        s->Tree.FillTree();
        const QStringList plainTips{u"DOWN"_s, u"Next Tree Item"_s, u"UP"_s, u"Previous Tree Item"_s};
        const QStringList redTips{u"DOWN_RED"_s, u"Next Conflicting Item"_s, u"UP_RED"_s,
                                  u"Previous Conflicting Item"_s};
        QCOMPARE(WalkButtons(), red ? redTips : plainTips);
        QCOMPARE(s->Enabled(u"mnuConflictSolver"_s), red && conflict);
        QCOMPARE(s->Enabled(u"mnuRemoveDeletedItems"_s), red && marked);
    }

    // Broken trees

    void brokenParent_endsTheFillWithAReport_data()
    {
        QTest::addColumn<QString>("fault");
        QTest::addColumn<QByteArray>("number");
        QTest::newRow("missing parent") << u"missing"_s << QByteArray("35601");
        QTest::newRow("own parent") << u"self"_s << QByteArray("35614");
        QTest::newRow("cycle") << u"cycle"_s << QByteArray("35614");
    }
    void brokenParent_endsTheFillWithAReport()
    {
        QFETCH(QString, fault);
        QFETCH(QByteArray, number);
        FillSmallLibrary();
        const qint64 below = AddItem(*s->State.CurrentDatabase, 4710, u"below"_s); // its turn comes later
        if (fault == u"missing")
            SetParent(m_branch, 4000);
        else
            SetParent(m_branch, fault == u"self" ? m_branch : m_leafA);
        s->Script.ExpectError();
        s->Tree.FillTree();
        QCOMPARE(s->Script.Errors.size(), 1);
        const QByteArray log = ReadFile(ErrorLogFile());
        QVERIFY2(log.contains("  -  " + number + ", ") && log.contains(", MainForm, FillTree, "), log.constData());
        QCOMPARE(s->View.Nodes().Find(m_branch)->Parent, nullptr);
        QCOMPARE(s->View.Nodes().Find(below)->Parent, nullptr); // what was not reached stays beside the root
        QCOMPARE(s->View.Nodes().Find(m_empty)->Parent, s->View.Nodes().Root());
        QCOMPARE(s->View.Nodes().Count(), 6);
        QCOMPARE(s->Image(u"Leaf A"_s), u"FOLDER"_s); // the later steps are not done
    }

    void repairedTree_isFilledAgain()
    {
        FillSmallLibrary();
        SetParent(m_branch, 4000);
        s->Script.ExpectError();
        s->Tree.FillTree();
        SetParent(m_branch, 0);
        s->Tree.FillTree();
        QCOMPARE(s->Shape(), u"Ali äs Library(branch(Leaf A leaf b) empty)"_s);
    }

    void clearedTree_isEmpty()
    {
        FillSmallLibrary();
        s->Tree.FillTree();
        s->Tree.ClearTreeView();
        QCOMPARE(s->View.Nodes().Count(), 0);
        QCOMPARE(s->View.Nodes().rowCount(), 0);
        QCOMPARE(s->View.SelectedItem(), nullptr);
    }
};

QB_TEST_MAIN(TestItemTreeFill)
#include "tst_item_tree_fill.moc"
