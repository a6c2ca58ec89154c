#include "store/CDBCreate.h"
#include "store/ItemBranch.h"
#include "support/ErrorRoutine.h"
#include "support/TestSession.h"

#include <QLocale>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// How a selection reaches the details panel, the commands and the status bar, and how branches
/// change their images.
class TestItemTreeSelection : public QObject {
    Q_OBJECT

private:
    enum class Role { Plain, Child, Mother, Both };

    void Fill(Role role)
    {
        Library& library = s->OpenLibrary();
        m_branch = AddItem(library, 0, u"branch"_s);
        m_leaf = AddItem(library, m_branch, u"leaf"_s, u"code"_s);
        const qint64 orphans = AddItem(library, 0, OrphanedItemsTitle);
        AddItem(library, orphans, u"orphan"_s);
        m_marked = AddItem(library, 0, u"marked"_s);
        m_conflict = AddItem(library, 0, u"conflict"_s);
        if (role == Role::Child || role == Role::Both)
            MakeChild(library, u"/Mütter/m.qbd"_s, s->Time.Now());
        if (role == Role::Mother || role == Role::Both)
            MakeMother(library, s->Time.Now());
        if (role != Role::Plain) {
            library.Execute(u"UPDATE Items SET LastChanged = 0 WHERE ID = ?"_s, {m_marked});
            CDBCreate(&library).Create_TblDef_Items(true, u"TempItems"_s);
            library.Execute(u"INSERT INTO TempItems (ID, Title) VALUES (?, 'c')"_s, {m_conflict});
        }
        s->Tree.FillTree();
    }

    static QString ShortText(Date date)
    {
        const QLocale locale;
        return locale.toString(date.Day(), QLocale::ShortFormat) + u' '
               + locale.toString(date.Time(), QLocale::ShortFormat);
    }

    std::optional<TestSession> s;
    qint64 m_branch = 0, m_leaf = 0, m_marked = 0, m_conflict = 0;

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        s.emplace();
    }

    void cleanup() { s.reset(); }

    void clickedItem_isShown()
    {
        Fill(Role::Plain);
        s->Click(u"leaf"_s);
        QCOMPARE(s->State.CurrentItemKey, NodeKey(m_leaf));
        QCOMPARE(s->State.oCodeItem->Key(), QString::number(m_leaf));
        QCOMPARE(s->Details.Item, s->State.oCodeItem.get());
        QVERIFY(s->Details.HasDatabase);
        QCOMPARE(s->State.moHistory->Keys(), QStringList{NodeKey(m_leaf)});
        for (const QString& name : {u"DELETE"_s, u"BOOKMARK"_s, u"PRINT"_s, u"NEW"_s, u"NEXT"_s, u"PREVIOUS"_s})
            QVERIFY2(s->Enabled(name), qPrintable(name));
        QVERIFY(!s->Enabled(u"mnuCollapseBranchesItem"_s));
    }

    void clickOnTheShownItem_isIgnored()
    {
        Fill(Role::Plain);
        s->Click(u"leaf"_s);
        const int before = s->Details.Initialised;
        s->Click(u"leaf"_s);
        QCOMPARE(s->Details.Initialised, before);
        s->Click(u"branch"_s);
        QCOMPARE(s->Details.Initialised, before + 1);
    }

    void clickAfterAFill_opensTheSelectedNode()
    {
        Fill(Role::Plain);
        s->Click(u"leaf"_s);
        const int before = s->Details.Initialised;
        s->Tree.FillTree();
        s->Click(u"leaf"_s);
        QCOMPARE(s->Details.Initialised, before + 1);
    }

    void clickedRoot_showsNoItem()
    {
        Fill(Role::Plain);
        s->Click(u"leaf"_s);
        s->Details.Item->Title();
        QVERIFY(!s->Shell.ItemDate.isEmpty());
        s->Click(u"Ali äs Library"_s);
        QCOMPARE(s->Details.Item, nullptr);
        QVERIFY(s->Details.HasDatabase);
        QCOMPARE(s->State.CurrentItemKey, u"ROOT"_s);
        for (const QString& name : {u"DELETE"_s, u"BOOKMARK"_s, u"PRINT"_s})
            QVERIFY2(!s->Enabled(name), qPrintable(name));
        QVERIFY(s->Enabled(u"mnuCollapseBranchesItem"_s));
        QCOMPARE(s->Shell.ItemDate, QString());
        QCOMPARE(s->State.moHistory->Keys(), QStringList{NodeKey(m_leaf)}); // the root is not remembered
    }

    void clickWithoutALibrary_isIgnored()
    {
        Fill(Role::Plain);
        s->State.CurrentDatabase.reset();
        s->Click(u"leaf"_s);
        QCOMPARE(s->State.CurrentItemKey, QString());
        QCOMPARE(s->Details.Initialised, 0);
    }

    void eventsOfTheItem_reachTheDetails()
    {
        Fill(Role::Plain);
        s->State.CurrentDatabase->Execute(u"UPDATE Items SET Notes = 'n', HTMLPage = -1 WHERE ID = ?"_s, {m_leaf});
        s->State.CurrentDatabase->Execute(u"INSERT INTO Files (CodeID, Title) VALUES (?, 'f')"_s, {m_leaf});
        s->Click(u"leaf"_s);
        s->Details.Item->Title(); // the panel reads
        QVERIFY(s->Details.Code && s->Details.Notes && s->Details.Files && s->Details.Links);
        QVERIFY(!s->Details.Usage);
        s->Click(u"branch"_s);
        s->Details.Item->Title();
        QVERIFY(!s->Details.Code && !s->Details.Notes && !s->Details.Files && !s->Details.Links && !s->Details.Usage);
    }

    // OpenItem

    void openedItem_setsTheCommandsByItsState_data()
    {
        QTest::addColumn<int>("role");
        QTest::addColumn<QString>("title");
        QTest::addColumn<QString>("enabled"); // of NEW and DELETE
        QTest::addColumn<QString>("shown");   // of KEEP and RESOLVE
        QTest::addColumn<bool>("locked");
        QTest::addColumn<bool>("dateHeld");
        const auto row = [](const char* name, Role role, const QString& title, const char* enabled, const char* shown,
                            bool locked, bool dateHeld) {
            QTest::newRow(name) << int(role) << title << QString::fromLatin1(enabled) << QString::fromLatin1(shown)
                                << locked << dateHeld;
        };
        row("ordinary", Role::Plain, u"leaf"_s, "NEW DELETE", "", false, false);
        row("orphan in a plain library", Role::Plain, u"orphan"_s, "DELETE", "", false, true);
        row("folder of orphans", Role::Plain, OrphanedItemsTitle, "DELETE", "", false, true);
        row("orphan in a mother", Role::Mother, u"orphan"_s, "DELETE", "", false, true);
        row("orphan in a child", Role::Child, u"orphan"_s, "", "", true, false);
        row("orphan in both", Role::Both, u"orphan"_s, "", "", true, false);
        row("deleted", Role::Mother, u"marked"_s, "DELETE", "KEEP", false, false);
        row("in conflict", Role::Mother, u"conflict"_s, "NEW", "RESOLVE", false, false);
        row("in conflict at the mother", Role::Child, u"marked"_s, "NEW DELETE", "", false, false);
        row("in conflict, both", Role::Both, u"conflict"_s, "NEW", "RESOLVE", false, false);
    }
    void openedItem_setsTheCommandsByItsState()
    {
        QFETCH(int, role);
        QFETCH(QString, title);
        Fill(Role(role));
        s->Click(title);
        const auto named = [](const QList<std::pair<QString, bool>>& all) {
            QStringList names;
            for (const auto& [name, on] : all) {
                if (on)
                    names << name;
            }
            return names.join(u' ');
        };
        QTEST(named({{u"NEW"_s, s->Enabled(u"NEW"_s)}, {u"DELETE"_s, s->Enabled(u"DELETE"_s)}}), "enabled");
        QTEST(named({{u"KEEP"_s, s->Shown(u"mnuKeepItem"_s)}, {u"RESOLVE"_s, s->Shown(u"mnuResolveItem"_s)}}), "shown");
        QTEST(s->Details.IsLocked, "locked");
        QCOMPARE(s->Shell.EditingEnabled, !s->Details.IsLocked);
        QTEST(s->State.oCodeItem->DontUpdateLastChangedDate(), "dateHeld");
        QVERIFY(s->Enabled(u"NEXT"_s) && s->Enabled(u"PREVIOUS"_s));
    }

    void ordinaryItemAfterALockedOne_isFreeAgain()
    {
        Fill(Role::Child);
        s->Click(u"orphan"_s);
        QVERIFY(s->Details.IsLocked);
        s->Click(u"leaf"_s);
        QVERIFY(!s->Details.IsLocked && s->Enabled(u"NEW"_s) && s->Enabled(u"DELETE"_s));
    }

    void orphans_areWhatStandsInTheFolderUnderTheRoot_data()
    {
        QTest::addColumn<QStringList>("path");
        QTest::addColumn<bool>("orphaned");
        QTest::newRow("the folder") << QStringList{u"Orphaned Items"_s} << true;
        QTest::newRow("in it") << QStringList{u"Orphaned Items"_s, u"a"_s} << true;
        QTest::newRow("deep in it") << QStringList{u"Orphaned Items"_s, u"a"_s, u"b\\c"_s, u"d"_s} << true;
        QTest::newRow("ordinary") << QStringList{u"a"_s, u"b"_s} << false;
        QTest::newRow("of that title below the first level") << QStringList{u"a"_s, u"Orphaned Items"_s} << false;
        QTest::newRow("below such a one") << QStringList{u"a"_s, u"Orphaned Items"_s, u"b"_s} << false;
        QTest::newRow("in other case") << QStringList{u"orphaned items"_s} << false;
    }
    void orphans_areWhatStandsInTheFolderUnderTheRoot()
    {
        QFETCH(QStringList, path);
        TreeNodes nodes;
        nodes.BeginBuild();
        TreeNode* node = &nodes.Add(0, u"Ali äs Library"_s, TreeImage::OBJECTS);
        for (int i = 0; i < path.size(); ++i) {
            TreeNode& next = nodes.Add(i + 1, path[i], TreeImage::CHILD);
            nodes.PutUnder(next, *node);
            node = &next;
        }
        nodes.EndBuild();
        QTEST(ItemTree::OrphanedItem(*node), "orphaned");
        QVERIFY(!ItemTree::OrphanedItem(*nodes.Root()));
    }

    // Status bar

    void statusBar_tellsTheDateOrTheState_data()
    {
        QTest::addColumn<int>("role");
        QTest::addColumn<QString>("title");
        QTest::addColumn<bool>("marked");
        QTest::addColumn<QString>("text");
        const QString date = ShortText(FixedClock().Now());
        QTest::newRow("ordinary") << int(Role::Plain) << u"leaf"_s << false << date;
        QTest::newRow("child, ordinary") << int(Role::Child) << u"leaf"_s << false << date;
        QTest::newRow("child, marked") << int(Role::Child) << u"marked"_s << true << u"Conflicting item"_s;
        QTest::newRow("mother, deleted") << int(Role::Mother) << u"marked"_s << true << u"Conflicting Deleted Item"_s;
        QTest::newRow("mother, in conflict") << int(Role::Mother) << u"conflict"_s << true << u"Conflicting item"_s;
        QTest::newRow("mother, in conflict with a date") << int(Role::Mother) << u"conflict"_s << false << date;
        QTest::newRow("both, marked") << int(Role::Both) << u"marked"_s << true << u"Conflicting item"_s;
        QTest::newRow("plain, marked") << int(Role::Plain) << u"marked"_s << true << QString(u""_s);
    }
    void statusBar_tellsTheDateOrTheState()
    {
        QFETCH(int, role);
        QFETCH(QString, title);
        QFETCH(bool, marked);
        QFETCH(QString, text);
        Fill(Role(role));
        if (marked)
            s->State.CurrentDatabase->Execute(u"UPDATE Items SET LastChanged = 0 WHERE Title = ?"_s, {title});
        s->Click(title);
        s->Details.Item->Title();
        QCOMPARE(s->Shell.ItemDate, text);
        QCOMPARE(s->Shell.ItemDateTip, u"Item last updated. (Created on %1)"_s.arg(ShortText(s->Time.Now())));
    }

    // GoToNode

    void goToNode_selectsShowsAndOpens()
    {
        Fill(Role::Plain);
        s->Tree.GoToNode(NodeKey(m_leaf));
        QCOMPARE(s->Selected(), u"leaf"_s);
        QCOMPARE(s->View.Shown, m_leaf);
        QCOMPARE(s->View.Focused, 1);
        QCOMPARE(s->State.CurrentItemKey, NodeKey(m_leaf));
        QCOMPARE(s->Details.Item->Key(), QString::number(m_leaf));
    }

    void goToNodeWithoutAKey_doesNothing()
    {
        Fill(Role::Plain);
        s->Tree.GoToNode({});
        QCOMPARE(s->Selected(), u"Ali äs Library"_s);
        QCOMPARE(s->Details.Initialised + s->View.Focused, 0);
    }

    void goToNodeThatIsGone_isReported()
    {
        Fill(Role::Plain);
        s->Click(u"leaf"_s);
        s->Script.ExpectError();
        s->Tree.GoToNode(u"C4711"_s);
        QCOMPARE(s->Script.Errors, QStringList{u"The item 4711 is not in the tree."_s});
        QVERIFY(ReadFile(ErrorLogFile()).contains(", MainForm, GoToNode, "));
        QCOMPARE(s->Selected(), u"leaf"_s);
        QCOMPARE(s->State.CurrentItemKey, NodeKey(m_leaf));
    }

    void backAndForward_addNothingToTheTrail()
    {
        Fill(Role::Plain);
        s->Click(u"leaf"_s);
        s->Click(u"branch"_s);
        s->Tree.GoToNode(s->State.moHistory->PreviousInHistory());
        QCOMPARE(s->Selected(), u"leaf"_s);
        s->Tree.GoToNode(s->State.moHistory->NextInHistory());
        QCOMPARE(s->Selected(), u"branch"_s);
        QCOMPARE(s->State.moHistory->Keys(), (QStringList{NodeKey(m_leaf), NodeKey(m_branch)}));
    }

    /// The item that was left for the root is the first step back.
    void backFromTheRoot_goesToTheItemBefore()
    {
        Fill(Role::Plain);
        s->Click(u"leaf"_s);
        s->Click(u"branch"_s);
        s->Click(u"Ali äs Library"_s);
        QVERIFY(s->Enabled(u"BACK"_s) && s->Enabled(u"mnuBackItem"_s));
        s->Tree.GoBack();
        QCOMPARE(s->Selected(), u"branch"_s);
        QVERIFY(s->Enabled(u"BACK"_s));
        s->Tree.GoBack();
        QCOMPARE(s->Selected(), u"leaf"_s);
        s->Click(u"Ali äs Library"_s);
        s->Tree.GoBack();
        QCOMPARE(s->Selected(), u"leaf"_s);
        QVERIFY(!s->Enabled(u"BACK"_s)); // nothing is before it
    }

    void rootBeforeAnyItem_hasNoWayBack()
    {
        Fill(Role::Plain);
        for (const QString& name : {u"BACK"_s, u"mnuBackItem"_s})
            s->CommandStates.SetEnabled(name, false); // as the library's opening does
        s->Click(u"Ali äs Library"_s);
        QVERIFY(!s->Enabled(u"BACK"_s) && !s->Enabled(u"mnuBackItem"_s));
    }

    void standing_isReadFromTheNode_data()
    {
        QTest::addColumn<int>("role");
        QTest::addColumn<QString>("title");
        QTest::addColumn<QString>("standing");
        QTest::newRow("ordinary") << int(Role::Mother) << u"leaf"_s << QString();
        QTest::newRow("deleted") << int(Role::Mother) << u"marked"_s << u"Deleted Marked"_s;
        QTest::newRow("in conflict") << int(Role::Mother) << u"conflict"_s << u"Conflict"_s;
        QTest::newRow("waiting") << int(Role::Child) << u"marked"_s << u"Waiting Marked"_s;
        QTest::newRow("root") << int(Role::Child) << u"Ali äs Library"_s << u"Root"_s;
        QTest::newRow("orphan") << int(Role::Plain) << u"orphan"_s << u"Orphan"_s;
        QTest::newRow("folder of orphans") << int(Role::Plain) << OrphanedItemsTitle << u"Orphan Folder"_s;
    }
    void standing_isReadFromTheNode()
    {
        QFETCH(int, role);
        QFETCH(QString, title);
        Fill(Role(role));
        const ItemStanding standing = StandingOf(s->State, s->Node(title));
        QStringList words;
        for (const auto& [holds, word] :
             {std::pair(standing.Root, "Root"), std::pair(standing.Deleted, "Deleted"),
              std::pair(standing.Conflict, "Conflict"), std::pair(standing.Waiting, "Waiting"),
              std::pair(standing.Orphan, "Orphan"), std::pair(standing.OrphanUnderRoot, "Folder"),
              std::pair(standing.Marked, "Marked")}) {
            if (holds)
                words << QString::fromLatin1(word);
        }
        QTEST(words.join(u' '), "standing");
    }

    void nodeThatStandsNowhere_isNoOrphan()
    {
        TreeNodes nodes;
        nodes.BeginBuild();
        nodes.Add(0, u"Ali äs Library"_s, TreeImage::OBJECTS);
        TreeNode& lost = nodes.Add(1, OrphanedItemsTitle, TreeImage::CHILD);
        TreeNode& below = nodes.Add(2, u"below"_s, TreeImage::CHILD);
        nodes.PutUnder(below, lost);
        nodes.EndBuild();
        QVERIFY(!IsOrphaned(lost));
        QVERIFY(!IsOrphaned(below));
    }

    // Expand and collapse

    void branch_changesItsImages_data()
    {
        QTest::addColumn<int>("role");
        QTest::addColumn<int>("image");
        QTest::addColumn<QString>("expanded");
        QTest::addColumn<QString>("collapsed");
        const auto row = [](const char* name, Role role, TreeImage image, const char* expanded, const char* collapsed) {
            QTest::newRow(name) << int(role) << int(image) << QString::fromLatin1(expanded)
                                << QString::fromLatin1(collapsed);
        };
        row("plain, folder", Role::Plain, TreeImage::FOLDER, "OPENFOLDER", "FOLDER");
        row("plain, child", Role::Plain, TreeImage::CHILD, "OPENFOLDER", "FOLDER");
        row("plain, problem", Role::Plain, TreeImage::DELETED_ITEM, "OPENFOLDER", "FOLDER");
        row("mother, folder", Role::Mother, TreeImage::FOLDER, "OPENFOLDER", "FOLDER");
        row("mother, deleted", Role::Mother, TreeImage::DELETED_ITEM, "DELETED_ITEM", "DELETED_ITEM");
        row("mother, in conflict", Role::Mother, TreeImage::CONFLICT_ITEM, "CONFLICT_ITEM", "CONFLICT_ITEM");
        row("child, folder", Role::Child, TreeImage::FOLDER, "OPENFOLDER", "FOLDER");
        row("child, in conflict", Role::Child, TreeImage::CONFLICT_ITEM_INFO, "CONFLICT_ITEM_INFO",
            "CONFLICT_ITEM_INFO");
    }
    void branch_changesItsImages()
    {
        QFETCH(int, role);
        QFETCH(int, image);
        QFETCH(QString, expanded);
        QFETCH(QString, collapsed);
        Fill(Role(role));
        TreeNode& branch = s->Node(u"branch"_s);
        branch.Image = branch.ExpandedImage = TreeImage(image);
        s->Tree.NodeExpanded(branch);
        QVERIFY(branch.Expanded);
        QCOMPARE(ImageKey(branch.ExpandedImage), expanded);
        QCOMPARE(int(branch.Image), image);
        QCOMPARE(s->Shell.StatusText, u"branch"_s);
        s->Shell.StatusText.clear();
        s->Tree.NodeCollapsed(branch);
        QVERIFY(!branch.Expanded);
        QCOMPARE(ImageKey(branch.Image), collapsed);
        QCOMPARE(s->Shell.StatusText, u"branch"_s);
    }

    void root_keepsItsImage()
    {
        Fill(Role::Plain);
        TreeNode& root = *s->View.Nodes().Root();
        s->Tree.NodeExpanded(root);
        s->Tree.NodeCollapsed(root);
        QCOMPARE(ImageKey(root.Image), u"OBJECTS"_s);
        QCOMPARE(ImageKey(root.ExpandedImage), u"OBJECTS"_s);
        QCOMPARE(s->Shell.StatusText, QString());
    }

    void collapsedBranches_leaveTheRootOpen()
    {
        Fill(Role::Plain);
        s->View.SetExpanded(s->Node(u"branch"_s), true);
        s->View.SetExpanded(s->Node(OrphanedItemsTitle), true);
        s->Tree.CollapseBranches();
        for (const TreeNode& node : s->View.Nodes().All())
            QCOMPARE(node.Expanded, node.IsRoot());
    }

    void walkWithoutALibrary_opensNoItem()
    {
        Fill(Role::Plain);
        s->State.CurrentDatabase.reset();
        s->Tree.MoveOnNextItem();
        QCOMPARE(s->Details.Initialised, 0);
        QVERIFY(!s->State.oCodeItem);
    }
};

QB_TEST_MAIN(TestItemTreeSelection)
#include "tst_item_tree_selection.moc"
