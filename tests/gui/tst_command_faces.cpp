#include "panels/ui/ctlSmartTreeView.h"
#include "store/ItemBranch.h"
#include "support/EditingWindow.h"

#include <QComboBox>
#include <QPlainTextEdit>
#include <QToolButton>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// What the commands of the main window offer: one state on all their faces, also after a change of the item or of
/// the library.
class TestCommandFaces : public QObject, private EditingWindow {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        Begin();
    }
    void cleanup() { End(); }

    // Barred commands

    void exportedChild_deletesNoItem()
    {
        MakeChild(*m_database, m_home->Path(u"mother.qbd"_s), Date());
        m_database->Execute(u"UPDATE Properties SET LastExported = 5"_s);
        Open();
        ClickOn(0);
        for (const char* name : {"DELETE", "mnuDeleteCode"})
            QVERIFY2(!Action(QString::fromLatin1(name))->isEnabled(), name);
        for (const char* name : {"NEW", "mnuAddCode", "mnuRename", "mnuAddLink"})
            QVERIFY2(Action(QString::fromLatin1(name))->isEnabled(), name);
        Tree()->setFocus();
        QTest::keyClick(Tree(), Qt::Key_Delete); // nobody is asked
        Action(u"DELETE"_s)->trigger();
        OpenMenu(u"mnuItem"_s, [this] { QVERIFY(!Action(u"mnuDeleteCode"_s)->isEnabled()); });
        QVERIFY(!Action(u"DELETE"_s)->isEnabled());
        QCOMPARE(CountOf(*m_database, u"Items"_s), 2);
    }

    void orphan_isLinkedNeitherByTheMenuNorByTheButton()
    {
        AddItem(*m_database, AddItem(*m_database, 0, OrphanedItemsTitle), u"orphan"_s);
        Open();
        ClickOn(0);
        QVERIFY(LinkMode()->isEnabled());
        ClickOn(1); // the folder of orphans
        QVERIFY(!Action(u"mnuAddLink"_s)->isEnabled());
        QVERIFY(!LinkMode()->isEnabled());
        QVERIFY(!Action(u"NEW"_s)->isEnabled());
        QVERIFY(!Action(u"BOOKMARK"_s)->isEnabled());
        ClickOn(0);
        QVERIFY(LinkMode()->isEnabled());
    }

    void keptItem_isRenamedAndAddedToAtOnce()
    {
        MakeMother(*m_database, Date());
        m_database->Execute(u"UPDATE Items SET LastChanged = 0 WHERE ID = ?"_s, {m_item});
        Open();
        ClickOn(0);
        OpenMenu(u"mnuItem"_s);
        for (const char* name : {"NEW", "mnuAddCode", "mnuRename", "mnuNewSiblingItem"})
            QVERIFY2(!Action(QString::fromLatin1(name))->isEnabled(), name);
        Action(u"mnuKeepItem"_s)->trigger();
        for (const char* name : {"NEW", "mnuAddCode", "mnuRename", "mnuNewSiblingItem"})
            QVERIFY2(Action(QString::fromLatin1(name))->isEnabled(), name);
        QVERIFY(!Action(u"mnuKeepItem"_s)->isVisible());
    }

    // Change of item

    void itemThatWasJustAdded_showsItsOwnLinksAndDescription()
    {
        Describe();
        Open();
        ClickOn(0);
        QCOMPARE(Links()->count(), 2);
        QCOMPARE(Description()->toPlainText(), u"what it is"_s);
        Action(u"NEW"_s)->trigger();
        QCOMPARE(Links()->count(), 1);
        QVERIFY(!Panel()->findChild<QAction*>(u"LINK_GOTO"_s)->isEnabled());
        QCOMPARE(Description()->toPlainText(), QString());
        QTest::keyClick(m_window->findChild<QLineEdit*>(u"txtLabelEdit"_s), Qt::Key_Escape);
    }

    void otherLibrary_hasNothingOfTheOneBefore_data()
    {
        QTest::addColumn<bool>("reopened");
        QTest::newRow("by the box") << false;
        QTest::newRow("none is left") << true;
    }
    void otherLibrary_hasNothingOfTheOneBefore()
    {
        QFETCH(bool, reopened);
        Describe();
        m_database->Execute(u"UPDATE Items SET Title = 'Orphaned Items' WHERE ID = ?"_s, {m_item});
        MakeChild(*m_database, m_home->Path(u"mother.qbd"_s), Date());
        MakeMother(*m_database, Date());
        m_database->Execute(u"UPDATE Items SET LastChanged = 0 WHERE Title = 'other'"_s);
        OpenTwoLibraries();
        QModelIndex orphan = Child(0).data() == u"Orphaned Items"_s ? Child(0) : Child(1);
        Tree()->setCurrentIndex(orphan);
        QVERIFY(Details()->Locked());
        QCOMPARE(Links()->count(), 2);
        QVERIFY(Action(u"NEXT"_s)->statusTip().contains(u"Conflicting"_s));
        if (reopened) {
            m_prompts->ExpectMsgBox(u"Remove Database"_s, MsgBoxResult::Yes);
            Action(u"mnuRemoveDBItem"_s)->trigger(); // goes on with the next of the list
        } else {
            Libraries()->setCurrentIndex(1);
        }
        QCOMPARE(Root().data().toString(), u"Second Library"_s);
        QVERIFY(!Details()->Locked());
        QCOMPARE(Links()->count(), 1);
        QVERIFY(!Panel()->findChild<QAction*>(u"LINK_GOTO"_s)->isEnabled());
        QCOMPARE(Description()->toPlainText(), QString());
        QVERIFY(Action(u"NEW"_s)->isEnabled());
        QVERIFY(!Action(u"NEXT"_s)->statusTip().contains(u"Conflicting"_s));
        QVERIFY(m_window->findChild<QMenu*>(u"mnuEdit"_s)->isEnabled());
        Panel()->findChild<QAction*>(u"LINK_GOTO"_s)->trigger(); // and leads nowhere
        QCOMPARE(Tree()->currentIndex(), Root());
    }

    // Without a library

    void withoutALibrary_optionsAndTheFilterAreInReach()
    {
        Open();
        m_prompts->ExpectMsgBox(u"Remove Database"_s, MsgBoxResult::Yes);
        Action(u"mnuRemoveDBItem"_s)->trigger();
        QTest::keyClick(m_window.get(), Qt::Key_L, Qt::ControlModifier | Qt::ShiftModifier);
        QVERIFY(m_window->findChild<QLineEdit*>(u"txtFilter"_s)->hasFocus());
        for (const char* name : {"mnuTools", "mnuEdit", "mnuFile", "mnuHelp"})
            QVERIFY2(m_window->findChild<QMenu*>(QString::fromLatin1(name))->isEnabled(), name);
        for (const char* name : {"mnuItem", "mnuView"})
            QVERIFY2(!m_window->findChild<QMenu*>(QString::fromLatin1(name))->isEnabled(), name);
        OpenMenu(u"mnuEdit"_s, [this] {
            QVERIFY(Action(u"mnuFilterTree"_s)->isEnabled());
            for (const char* name : {"mnuUndo", "mnuCut", "mnuPaste", "mnuFindInText", "mnuGoToLine"})
                QVERIFY2(!Action(QString::fromLatin1(name))->isEnabled(), name);
        });
        QVERIFY(Action(u"mnuOptionsItem"_s)->isEnabled());
        for (const char* name : {"mnuRemoveDeletedItems", "mnuAddCode", "NEW", "SAVE", "mnuSaveItem"})
            QVERIFY2(!Action(QString::fromLatin1(name))->isEnabled(), name);
        QVERIFY(!LinkMode()->isEnabled());
        QTimer::singleShot(0, this, [] {
            auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
            QVERIFY(dialog);
            dialog->reject();
        });
        Action(u"mnuOptionsItem"_s)->trigger();
    }

    void editMenu_isInReachAtTheRoot()
    {
        Open();
        Tree()->setCurrentIndex(Root());
        QVERIFY(m_window->findChild<QMenu*>(u"mnuEdit"_s)->isEnabled());
    }

    // The panels

    void treePanel_tellsTheNodeAtAPlace()
    {
        Open();
        const QPoint place = Tree()->visualRect(Child(1)).center();
        QCOMPARE(Panel()->HitTest(place.x(), place.y())->Text(), u"other"_s);
        QVERIFY(!Panel()->HitTest(place.x(), Tree()->height() + 100));
    }

    void details_forgetTheItemWhenTheyAreDone()
    {
        Describe();
        Open();
        ClickOn(0);
        QCOMPARE(Details()->Description(), u"what it is"_s);
        Details()->Terminate();
        QCOMPARE(Details()->Description(), QString());
        QVERIFY(!Details()->CurrentView());
        Details()->Terminate(); // a second time, as at the end of the program
    }

    // A tree that is hidden

    void treeThatBrowsingHides_isShownToWhoAsksForIt_data()
    {
        QTest::addColumn<QString>("command");
        QTest::newRow("button") << u"SHRINK"_s;
        QTest::newRow("menu") << u"mnuViewTreeItem"_s;
        QTest::newRow("filter") << u"mnuFilterTree"_s;
    }
    void treeThatBrowsingHides_isShownToWhoAsksForIt()
    {
        QFETCH(QString, command);
        Open();
        ClickOn(0);
        Panel()->AutoHideTree(true);
        QVERIFY(!Tree()->isVisible());
        QVERIFY(!Action(u"mnuViewTreeItem"_s)->isChecked());
        Action(command)->trigger();
        QVERIFY(Tree()->isVisible());
        QVERIFY(Action(u"mnuViewTreeItem"_s)->isChecked());
        QVERIFY(!Panel()->TreeHidden());
        QCOMPARE(Action(u"SHRINK"_s)->toolTip(), u"Shrink Tree"_s);
        Panel()->AutoHideTree(false); // browsing is over, and changes nothing
        QVERIFY(Tree()->isVisible());
    }

    void treeThatIsHiddenTwice_comesBackAtOnce()
    {
        Open();
        const int width = Panel()->width();
        Action(u"SHRINK"_s)->trigger();
        QVERIFY(Panel()->TreeHidden());
        QCOMPARE(Action(u"SHRINK"_s)->toolTip(), u"Expand Tree"_s);
        Panel()->AutoHideTree(true);
        Action(u"SHRINK"_s)->trigger();
        QVERIFY(Tree()->isVisible());
        QCOMPARE(Panel()->width(), width);
        Action(u"mnuViewTreeItem"_s)->trigger();
        Panel()->AutoHideTree(true);
        Panel()->AutoHideTree(false);
        QVERIFY(!Tree()->isVisible()); // the user's wish outlives browsing
        QVERIFY(!Action(u"mnuViewTreeItem"_s)->isChecked());
    }

private:
    ctlSmartTreeView* Panel() { return m_window->findChild<ctlSmartTreeView*>(u"tvCodeItems"_s); }
    QComboBox* Links() { return m_window->findChild<QComboBox*>(u"cboLinkedItems"_s); }
    QComboBox* Libraries() { return m_window->findChild<QComboBox*>(u"cboDatabase"_s); }
    QToolButton* LinkMode() { return m_window->findChild<QToolButton*>(u"LINK_MODE"_s); }
    QPlainTextEdit* Description() { return m_window->findChild<QPlainTextEdit*>(u"txtItemDescription"_s); }

    /// The item has a description and a link to the other one.
    void Describe()
    {
        Write(u"Description"_s, u"what it is"_s);
        m_database->Execute(
            u"INSERT INTO ItemLinks (ItemID, LinkItemID, DateAdded) SELECT ?, ID, 5 FROM Items WHERE Title = 'other'"_s,
            {m_item});
    }

    /// The window with two libraries in its list, the first of them open.
    void OpenTwoLibraries()
    {
        const QString second = m_home->Path(u"zweite ü.qbd"_s);
        AddItem(*MakeLibrary(second), 0, u"the other's"_s);
        const QString first = m_home->Path(u"data/QBLib.qbd"_s);
        SaveSetting(SettingsApplication, u"Databases"_s, u"ChosenDatabases"_s,
                    first + u"|First;"_s + second + u"|Second;"_s);
        SaveSetting(SettingsApplication, u"Settings"_s, u"LastDB"_s, first);
        Open();
        QCOMPARE(Root().data().toString(), u"First Library"_s);
    }
};

QB_GUI_TEST_MAIN(TestCommandFaces)
#include "tst_command_faces.moc"
