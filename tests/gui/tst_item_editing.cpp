#include "store/CDBCreate.h"
#include "support/EditingWindow.h"

#include <QProgressBar>
#include <QStatusBar>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// Items are added, named, deleted and offered what their state allows, in the main window.
class TestItemEditing : public QObject, private EditingWindow {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        Begin();
    }
    void cleanup() { End(); }

    // Items

    void newItem_isNamedAtOnce()
    {
        Open();
        ClickOn(0);
        Action(u"NEW"_s)->trigger();
        auto* editor = m_window->findChild<QLineEdit*>(u"txtLabelEdit"_s);
        QVERIFY(editor);
        QCOMPARE(editor->text(), u"New Code item"_s);
        QCOMPARE(editor->maxLength(), 50);
        editor->setText(u"child"_s);
        Enter(editor);
        const QModelIndex child = Tree()->model()->index(0, 0, Child(0));
        QCOMPARE(child.data().toString(), u"child"_s);
        QCOMPARE(Tree()->currentIndex(), child);
        QCOMPARE(m_window->findChild<QLabel*>(u"lblTitle"_s)->text(), u"child"_s);
        QCOMPARE(m_database->QueryValue(u"SELECT Title FROM Items WHERE ParentID = ?"_s, {m_item}).ToText(),
                 u"child"_s);
        QTest::keyClicks(Code(), u"x"_s);
        QTest::keyClick(m_window.get(), Qt::Key_S, Qt::ControlModifier);
        QCOMPARE(
            PlainTextFromRtf(m_database->QueryValue(u"SELECT Code FROM Items WHERE ParentID = ?"_s, {m_item}).ToText()),
            u"x"_s);
    }

    void newTitle_keepsTheCaretAndWhatCanBeUndone()
    {
        Open();
        ClickOn(0);
        QTest::keyClicks(Code(), u"one two"_s);
        Code()->SetSelStart(3);
        QTest::keyClicks(Code(), u"X"_s);
        Action(u"mnuRename"_s)->trigger();
        auto* editor = m_window->findChild<QLineEdit*>(u"txtLabelEdit"_s);
        editor->setText(u"renamed"_s);
        Enter(editor);
        QCOMPARE(m_window->findChild<QLabel*>(u"lblTitle"_s)->text(), u"renamed"_s);
        QCOMPARE(Code()->SelStart(), 4);
        QVERIFY(Code()->CanUndo());
        Code()->Undo();
        QCOMPARE(Code()->Text(), u"one two"_s);
        ClickOn(Tree()->currentIndex().row() == 0 ? 1 : 0);
        QVERIFY(!Code()->CanUndo()); // what was done to another item
    }

    void titleThatIsEmpty_isRefused()
    {
        Open();
        ClickOn(0);
        Action(u"mnuRename"_s)->trigger();
        auto* editor = m_window->findChild<QLineEdit*>(u"txtLabelEdit"_s);
        editor->clear();
        m_prompts->ExpectMsgBox(u"KT Quillbase"_s);
        Enter(editor);
        QCOMPARE(m_prompts->Messages.last().Text, u"You must enter some text for a title."_s);
        QCOMPARE(Child(0).data().toString(), u"item"_s);
    }

    void longTitle_isNotCutByEditing()
    {
        m_database->Execute(u"UPDATE Items SET Title = ? WHERE ID = ?"_s, {QString(255, u'a'), m_item});
        Open();
        ClickOn(0);
        Action(u"mnuRename"_s)->trigger();
        auto* editor = m_window->findChild<QLineEdit*>(u"txtLabelEdit"_s);
        QCOMPARE(editor->text().size(), 255);
        QTest::keyClick(editor, Qt::Key_End);
        QTest::keyClick(editor, Qt::Key_Backspace);
        Enter(editor);
        QCOMPARE(m_database->QueryValue(u"SELECT Title FROM Items WHERE ID = ?"_s, {m_item}).ToText(),
                 QString(254, u'a'));
    }

    void deleteKey_deletesAfterAQuestion()
    {
        Open();
        ClickOn(0);
        Tree()->setFocus();
        m_prompts->ExpectMsgBox(u"Delete Stored Item"_s, MsgBoxResult::No);
        QTest::keyClick(Tree(), Qt::Key_Delete);
        QCOMPARE(Tree()->model()->rowCount(Root()), 2);
        m_prompts->ExpectMsgBox(u"Delete Stored Item"_s, MsgBoxResult::Yes);
        QTest::keyClick(Tree(), Qt::Key_Delete);
        QCOMPARE(Tree()->model()->rowCount(Root()), 1);
        QCOMPARE(m_prompts->Messages.last().Text, u"Delete selected item?"_s);
        QCOMPARE(m_prompts->Messages.last().Default, std::optional(MsgBoxResult::No));
        QVERIFY(!m_window->findChild<QProgressBar*>(u"prgStatus"_s)->isVisible());
        QCOMPARE(m_database->QueryValue(u"SELECT count(*) FROM Items"_s).ToLong(), 1);
        Tree()->setCurrentIndex(Root());
        QTest::keyClick(Tree(), Qt::Key_Delete); // nothing happens
    }

    void insertKey_addsAnItem()
    {
        Open();
        ClickOn(1);
        Tree()->setFocus();
        QTest::keyClick(Tree(), Qt::Key_Insert);
        QCOMPARE(Tree()->model()->rowCount(Child(1)), 1);
        QTest::keyClick(m_window->findChild<QLineEdit*>(u"txtLabelEdit"_s), Qt::Key_Escape);
        QCOMPARE(Tree()->model()->index(0, 0, Child(1)).data().toString(), u"New Code item"_s);
    }

    void itemMenu_opensOnTheNodeUnderTheMouse()
    {
        Open();
        auto* menu = m_window->findChild<QMenu*>(u"mnuItem"_s);
        const QPoint place = Tree()->visualRect(Child(1)).center();
        QContextMenuEvent event(QContextMenuEvent::Mouse, place, Tree()->viewport()->mapToGlobal(place));
        QCoreApplication::sendEvent(Tree()->viewport(), &event);
        QVERIFY(menu->isVisible());
        QCOMPARE(Tree()->currentIndex(), Child(1));
        QVERIFY(Action(u"mnuRename"_s)->isEnabled());
        TakePicture(*menu, u"item-menu"_s);
        menu->close();
    }

    void itemMenu_inEachState()
    {
        const qint64 folder = AddItem(*m_database, 0, u"Orphaned Items"_s);
        AddItem(*m_database, folder, u"orphan"_s);
        MakeMother(*m_database, Date());
        m_database->Execute(u"UPDATE Items SET LastChanged = 0 WHERE ID = ?"_s, {m_item});
        m_database->Execute(u"CREATE TABLE TempItems (ID INTEGER)"_s);
        m_database->Execute(u"INSERT INTO TempItems SELECT ID FROM Items WHERE Title = 'other'"_s);
        Open();
        auto* menu = m_window->findChild<QMenu*>(u"mnuItem"_s);
        const auto shown = [&](const QModelIndex& index, const QString& name) {
            Tree()->setCurrentIndex(index);
            OpenMenu(u"mnuItem"_s, [&] { TakePicture(*menu, u"item-menu-"_s + name); });
            QStringList names;
            for (const QAction* entry : menu->actions()) {
                if (!entry->isSeparator() && entry->isVisible() && entry->isEnabled())
                    names << entry->objectName();
            }
            return names;
        };
        TakePicture(*m_window, u"problem-items"_s);
        const QStringList root = shown(Root(), u"root"_s);
        QVERIFY(root.contains(u"mnuAddCode"_s) && !root.contains(u"mnuRename"_s) && !root.contains(u"mnuDeleteCode"_s));
        const QStringList deleted = shown(Child(0), u"deleted"_s);
        QVERIFY(deleted.contains(u"mnuKeepItem"_s) && !deleted.contains(u"mnuAddCode"_s)
                && deleted.contains(u"mnuDeleteCode"_s));
        const QStringList conflict = shown(Child(2), u"conflict"_s);
        QVERIFY(!conflict.contains(u"mnuKeepItem"_s) && !conflict.contains(u"mnuDeleteCode"_s)
                && conflict.contains(u"mnuAddCode"_s));
        Tree()->expand(Child(1));
        const QStringList orphan = shown(Tree()->model()->index(0, 0, Child(1)), u"orphan"_s);
        QVERIFY(orphan.contains(u"mnuDeleteCode"_s) && !orphan.contains(u"mnuAddCode"_s)
                && !orphan.contains(u"mnuNewSiblingItem"_s));
        QVERIFY(m_window->findChild<QMenu*>(u"mnuTools"_s)->menuAction()->isVisible());
        Tree()->setCurrentIndex(Child(0));
        Action(u"mnuKeepItem"_s)->trigger();
        QVERIFY(Read(u"LastChanged"_s) != u"0"_s);
    }

    void conflictsThatAreNone_areToldInTheStatusBar()
    {
        MakeMother(*m_database, Date());
        CDBCreate().CreateTemporaryTablesInMainDB(*m_database);
        m_database->Execute(u"INSERT INTO TempItems (ID, Title, ItemRating) SELECT ID, Title, 5 FROM Items"_s);
        Open();
        m_prompts->ExpectMsgBox(u"All problems resolved"_s);
        Action(u"mnuConflictSolver"_s)->trigger();
        QCOMPARE(m_window->statusBar()->currentMessage(),
                 u"2 conflicts resolved automatically; 2 of the other versions are in the removed items"_s);
        QVERIFY(!Action(u"mnuConflictSolver"_s)->isEnabled());
    }
};

QB_GUI_TEST_MAIN(TestItemEditing)
#include "tst_item_editing.moc"
