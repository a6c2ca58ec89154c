#include "panels/ui/BookmarkView.h"
#include "panels/ui/ctlBookmarks.h"
#include "panels/ui/frmAddBookmark.h"
#include "session/WindowLayout.h"
#include "store/Bookmarks.h"
#include "store/CBookmark.h"
#include "support/EditingWindow.h"
#include "support/ui/Appearance.h"

#include <QAbstractItemModelTester>
#include <QComboBox>
#include <QHeaderView>
#include <QMimeData>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSplitter>
#include <QTabBar>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// Bookmarks in the window: making, opening, sorting and removing them, and the panel itself.
class TestBookmarksPanel : public QObject, private EditingWindow {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        Begin();
        m_other = m_database->QueryValue(u"SELECT ID FROM Items WHERE Title = 'other'"_s).ToLong();
    }
    void cleanup() { End(); }

    // The list

    void bookmarks_areListedUnderTheirGroups()
    {
        Make(m_item, u"To do"_s, u"look\r\nat it"_s);
        Make(m_other, u"Done"_s, u"a longer description of why this item has been bookmarked at all"_s);
        Make(m_other, u"To do"_s, {});
        Open();
        const QAbstractItemModelTester tester(List()->model());
        QCOMPARE(Titles(), (QStringList{u"To do (2)"_s, u"item"_s, u"other"_s, u"Done (1)"_s, u"other"_s}));
        QCOMPARE(List()->header()->count(), 2);
        QCOMPARE(Row(u"1B"_s).siblingAtColumn(1).data().toString(), u"look at it"_s);
        QCOMPARE(Caption(), u" Bookmarks :"_s);
        List()->setCurrentIndex(Row(u"2B"_s));
        TakePicture(*m_window, u"bookmarks"_s);
        ApplyAppearance(u"Dark"_s, {}, 0);
        TakePicture(*m_window, u"bookmarks-dark"_s);
        ApplyAppearance(u"System"_s, {}, 0);
    }

    void emptyList_saysWhatToDo()
    {
        Open();
        QCOMPARE(Titles(), QStringList());
        TakePicture(*Panel(), u"bookmarks-empty"_s);
        for (const char* name : {"mnuRemoveBookMark", "mnuRemoveAllItem", "mnuEditBookMark", "mnuOpenBookMark",
                                 "mnuRenameGroup", "mnuRemoveGroup"})
            QVERIFY2(!Action(QString::fromLatin1(name))->isEnabled(), name);
    }

    void clickOnAHeader_sortsAndTheThirdOneTakesItBack()
    {
        for (const char* title : {"b", "a", "c"})
            Make(AddItem(*m_database, 0, QString::fromLatin1(title)), u"g"_s, {});
        Open();
        const QHeaderView* header = List()->header();
        const QPoint place(header->sectionViewportPosition(0) + 20, header->height() / 2);
        const QStringList shapes[] = {{u"g (3)"_s, u"a"_s, u"b"_s, u"c"_s},
                                      {u"g (3)"_s, u"c"_s, u"b"_s, u"a"_s},
                                      {u"g (3)"_s, u"b"_s, u"a"_s, u"c"_s}};
        for (const QStringList& shape : shapes) {
            QTest::mouseClick(header->viewport(), Qt::LeftButton, {}, place);
            QCOMPARE(Titles(), shape);
        }
    }

    void list_keepsSelectionAndClosedGroups()
    {
        Make(m_item, u"one"_s, {});
        Make(m_other, u"two"_s, {});
        Open();
        List()->setExpanded(List()->model()->index(0, 0), false);
        List()->setCurrentIndex(Row(u"2B"_s));
        Panel()->Refresh();
        QVERIFY(!List()->isExpanded(List()->model()->index(0, 0)));
        QVERIFY(List()->isExpanded(List()->model()->index(1, 0)));
        QCOMPARE(Panel()->SelectedBookmark(), 2);
        Panel()->FindBookmark(m_item);
        QCOMPARE(Panel()->SelectedBookmark(), 1);
        QVERIFY(List()->isExpanded(List()->model()->index(0, 0)));
        Panel()->FindBookmark(99);
        QCOMPARE(Panel()->SelectedBookmark(), 1);
    }

    void bookmark_isDraggedToAnotherGroup()
    {
        Make(m_item, u"one"_s, {});
        Make(m_other, u"two"_s, {});
        Open();
        QCOMPARE(List()->dragDropMode(), QAbstractItemView::InternalMove); // nothing comes from elsewhere
        QVERIFY(List()->dragEnabled() && List()->viewport()->acceptDrops());
        List()->setCurrentIndex(Row(u"1B"_s));
        const std::unique_ptr<QMimeData> data(List()->model()->mimeData({Row(u"1B"_s)}));
        QVERIFY(List()->model()->dropMimeData(data.get(), Qt::MoveAction, -1, -1, Row(u"2G"_s)));
        QCOMPARE(Titles(), (QStringList{u"one (0)"_s, u"two (2)"_s, u"item"_s, u"other"_s}));
        QCOMPARE(Panel()->SelectedBookmark(), 1);
    }

    void title_followsThatOfTheItem()
    {
        Make(m_item, u"g"_s, {});
        Open();
        ClickOn(0);
        Action(u"mnuRename"_s)->trigger();
        auto* editor = m_window->findChild<QLineEdit*>(u"txtLabelEdit"_s);
        editor->setText(u"renamed"_s);
        Enter(editor);
        QCOMPARE(Titles(), (QStringList{u"g (1)"_s, u"renamed"_s}));
    }

    void bookmark_goesWithItsItem()
    {
        Make(m_item, u"g"_s, {});
        Open();
        ClickOn(0);
        m_prompts->ExpectMsgBox(u"Delete Stored Item"_s, MsgBoxResult::Yes);
        Action(u"mnuDeleteCode"_s)->trigger();
        QTRY_COMPARE(Titles(), QStringList{u"g (0)"_s});
    }

    // Making

    void bookmark_isMadeOfTheItemThatIsShown()
    {
        AddBookmarkGroup(*m_database, u"first"_s);
        AddBookmarkGroup(*m_database, u"second"_s);
        Open();
        QVERIFY(!Action(u"mnuBookMark"_s)->isEnabled()); // of the root
        ClickOn(1);
        InDialog([&](frmAddBookmark& dialog) {
            QCOMPARE(dialog.findChild<QLabel*>(u"lblItem"_s)->text(), u"other"_s);
            auto* groups = dialog.findChild<QComboBox*>(u"cboGroups"_s);
            QCOMPARE(groups->count(), 2);
            QCOMPARE(groups->itemText(0), u"first"_s);
            QCOMPARE(groups->currentIndex(), -1);
            QTest::keyClicks(groups->lineEdit(), u"second"_s);
            QTest::keyClick(groups, Qt::Key_Tab);
            QTRY_COMPARE(groups->currentIndex(), 1);
            auto* text = dialog.findChild<QPlainTextEdit*>(u"txtBookmark"_s);
            QCOMPARE(dialog.focusWidget(), text);
            QTest::keyClicks(text, u"two"_s);
            QTest::keyClick(text, Qt::Key_Return);
            QTest::keyClicks(text, u"lines"_s);
            TakePicture(dialog, u"add-bookmark"_s);
            QTest::keyClick(text, Qt::Key_Return, Qt::ControlModifier);
        });
        QTest::keyClick(m_window.get(), Qt::Key_D, Qt::ControlModifier);
        QCOMPARE(Stored(), QStringList{u"%1 2 two\r\nlines"_s.arg(m_other)});
        QCOMPARE(Titles(), (QStringList{u"first (0)"_s, u"second (1)"_s, u"other"_s}));
        QCOMPARE(Panel()->SelectedBookmark(), 1);
        QCOMPARE(Row(u"1B"_s).siblingAtColumn(1).data().toString(), u"two lines"_s);
        // The next one is offered the same group.
        InDialog([&](frmAddBookmark& dialog) {
            QCOMPARE(dialog.findChild<QComboBox*>(u"cboGroups"_s)->currentText(), u"second"_s);
        });
        ToolbarButton(u"tlbMain"_s, u"BOOKMARK"_s)->trigger();
        QCOMPARE(Stored().size(), 1); // it was cancelled
    }

    void newGroup_isAskedAboutWhenTheBoxIsLeft()
    {
        Open();
        ClickOn(0);
        InDialog([&](frmAddBookmark& dialog) {
            auto* groups = dialog.findChild<QComboBox*>(u"cboGroups"_s);
            QTest::keyClicks(groups->lineEdit(), u"new"_s);
            m_prompts->ExpectMsgBox(u"Group item not found"_s, MsgBoxResult::No);
            QTest::keyClick(groups, Qt::Key_Tab);
            QTRY_COMPARE(m_prompts->Messages.size(), 1);
            QTRY_COMPARE(dialog.focusWidget(), groups); // it keeps the focus
            m_prompts->ExpectMsgBox(u"Group item not found"_s, MsgBoxResult::Yes);
            QTest::keyClick(groups, Qt::Key_Tab);
            QTRY_COMPARE(groups->currentIndex(), 0);
            QCOMPARE(groups->currentText(), u"new"_s);
        });
        Action(u"mnuBookMark"_s)->trigger();
        QCOMPARE(Stored(), QStringList());
        QCOMPARE(Titles(), QStringList{u"new (0)"_s}); // the group was wanted
    }

    void cancelWithANewGroupInTheBox_asksNothing()
    {
        Open();
        ClickOn(0);
        InDialog([&](frmAddBookmark& dialog) {
            QTest::keyClicks(dialog.findChild<QComboBox*>(u"cboGroups"_s), u"new"_s);
            QTest::mouseClick(dialog.findChild<QPushButton*>(u"cmdCancel"_s), Qt::LeftButton);
            QVERIFY(dialog.Cancelled());
        });
        Action(u"mnuBookMark"_s)->trigger();
        QCOMPARE(CountOf(*m_database, u"BookmarkGroups"_s) + CountOf(*m_database, u"Bookmarks"_s), 0);
    }

    void okWithoutAGroup_staysOpen()
    {
        AddBookmarkGroup(*m_database, u"g"_s);
        Open();
        ClickOn(0);
        InDialog([&](frmAddBookmark& dialog) {
            m_prompts->ExpectMsgBox(u"No group selected"_s);
            QTest::mouseClick(dialog.findChild<QPushButton*>(u"cmdOK"_s), Qt::LeftButton);
            QVERIFY(dialog.isVisible());
        });
        Action(u"mnuBookMark"_s)->trigger();
        QCOMPARE(Stored(), QStringList());
    }

    void okWithANewGroup_asksOnceAndMakesBoth()
    {
        Open();
        ClickOn(0);
        InDialog([&](frmAddBookmark& dialog) {
            QTest::keyClicks(dialog.findChild<QComboBox*>(u"cboGroups"_s), u"new"_s);
            m_prompts->ExpectMsgBox(u"Group item not found"_s, MsgBoxResult::Yes);
            QTest::mouseClick(dialog.findChild<QPushButton*>(u"cmdOK"_s), Qt::LeftButton);
            QVERIFY(!dialog.isVisible());
        });
        Action(u"mnuBookMark"_s)->trigger();
        QCOMPARE(Stored(), QStringList{u"%1 1 "_s.arg(m_item)});
    }

    void description_isKeptToItsLength()
    {
        AddBookmarkGroup(*m_database, u"g"_s);
        Open();
        ClickOn(0);
        InDialog([&](frmAddBookmark& dialog) {
            auto* text = dialog.findChild<QPlainTextEdit*>(u"txtBookmark"_s);
            text->insertPlainText(u"a\n"_s + QString(CBookmark::LongestDescription, u'x'));
            QCOMPARE(text->toPlainText().size(), CBookmark::LongestDescription - 1); // the line's end takes two
            QTest::keyClicks(text, u"y"_s);
            QCOMPARE(text->toPlainText().size(), CBookmark::LongestDescription - 1);
            QTest::keyClicks(dialog.findChild<QComboBox*>(u"cboGroups"_s), u"g"_s);
            QTest::mouseClick(dialog.findChild<QPushButton*>(u"cmdOK"_s), Qt::LeftButton);
        });
        Action(u"mnuBookMark"_s)->trigger();
        QCOMPARE(Stored().size(), 1);
    }

    void bookmark_isEdited()
    {
        Make(m_item, u"g"_s, u"a\r\nb"_s);
        Open();
        PressInList(u"1B"_s, Qt::Key_A); // has the focus
        InDialog([&](frmAddBookmark& dialog) {
            QCOMPARE(dialog.windowTitle(), u"Edit Bookmark"_s);
            auto* text = dialog.findChild<QPlainTextEdit*>(u"txtBookmark"_s);
            QCOMPARE(text->toPlainText(), u"a\nb"_s);
            text->setPlainText(u"c"_s);
            QTest::mouseClick(dialog.findChild<QPushButton*>(u"cmdOK"_s), Qt::LeftButton);
        });
        PressInList(u"1B"_s, Qt::Key_F2);
        QCOMPARE(Stored(), QStringList{u"%1 1 c"_s.arg(m_item)});
        QCOMPARE(Panel()->SelectedBookmark(), 1);
    }

    // Opening

    void doubleClick_opensTheItem()
    {
        Make(m_other, u"g"_s, {});
        Open();
        Click(u"1B"_s);
        QCOMPARE(Tree()->currentIndex(), Root());
        DoubleClick(u"1B"_s);
        QCOMPARE(Tree()->currentIndex(), Child(1));
    }

    void singleClick_opensTheItemWhereItIsSet()
    {
        Make(m_other, u"g"_s, {});
        Make(m_item, u"g"_s, {});
        Open();
        QAction* button = ToolbarButton(u"tbrBookmarks"_s, u"SINGLE_CLICK"_s);
        QVERIFY(!button->isChecked());
        button->trigger();
        QVERIFY(button->isChecked());
        QVERIFY(Panel()->BookmarkSingleClick());
        Click(u"1B"_s);
        QCOMPARE(Tree()->currentIndex(), Child(1));
        PressInList(u"1B"_s, Qt::Key_Down); // going about with the keys opens nothing
        QCOMPARE(Panel()->SelectedItem(), m_item);
        QCOMPARE(Tree()->currentIndex(), Child(1));
        m_window->close();
        QCOMPARE(GetSetting(SettingsApplication, u"Settings"_s, u"BookmarkSingleClick"_s), u"True"_s);
        Open();
        QVERIFY(Panel()->BookmarkSingleClick());
        QVERIFY(ToolbarButton(u"tbrBookmarks"_s, u"SINGLE_CLICK"_s)->isChecked());
    }

    void enter_opensTheItemAndClosesAGroup()
    {
        Make(m_other, u"g"_s, {});
        Open();
        PressInList(u"1B"_s, Qt::Key_Return);
        QCOMPARE(Tree()->currentIndex(), Child(1));
        PressInList(u"1G"_s, Qt::Key_Return);
        QVERIFY(!List()->isExpanded(Row(u"1G"_s)));
        PressInList(u"1G"_s, Qt::Key_Return);
        QVERIFY(List()->isExpanded(Row(u"1G"_s)));
    }

    void itemThatTheTreeDoesNotShowYet_isFound()
    {
        Open();
        Make(AddItem(*m_database, m_item, u"fresh"_s), u"g"_s, {});
        Panel()->Refresh();
        DoubleClick(u"1B"_s);
        QCOMPARE(m_window->findChild<QLabel*>(u"lblTitle"_s)->text(), u"fresh"_s);
    }

    void itemThatHasGone_isTold()
    {
        Make(m_other, u"g"_s, {});
        Open();
        m_database->Execute(u"DELETE FROM Items WHERE ID = ?"_s, {m_other});
        m_window->findChild<QAction*>(u"mnuViewRefresh"_s)->trigger();
        QTRY_COMPARE(Titles(), QStringList{u"g (0)"_s});
    }

    // Removing

    void deleteKey_removesTheSelectedBookmark()
    {
        Make(m_item, u"g"_s, {});
        Make(m_other, u"g"_s, {});
        Open();
        PressInList(u"1B"_s, Qt::Key_Delete);
        QCOMPARE(Titles(), (QStringList{u"g (1)"_s, u"other"_s}));
        QCOMPARE(Panel()->SelectedBookmark(), 2); // what stands in its place
        ToolbarButton(u"tbrBookmarks"_s, u"mnuRemoveBookMark"_s)->trigger();
        QCOMPARE(CountOf(*m_database, u"Bookmarks"_s), 0);
        QCOMPARE(Panel()->SelectedGroup(), 1);
        QVERIFY(!Action(u"mnuRemoveBookMark"_s)->isEnabled());
        QCOMPARE(CountOf(*m_database, u"Items"_s), 2);
    }

    void deleteKeyElsewhere_removesNoBookmark()
    {
        Make(m_item, u"g"_s, {});
        Open();
        List()->setCurrentIndex(Row(u"1B"_s));
        ClickOn(0);
        QTest::keyClick(Code(), Qt::Key_Delete);
        QCOMPARE(CountOf(*m_database, u"Bookmarks"_s), 1);
    }

    void allBookmarks_areRemovedByTheirButton()
    {
        Make(m_item, u"g"_s, {});
        Make(m_other, u"h"_s, {});
        Open();
        m_prompts->ExpectMsgBox(u"Delete ALL bookmarks?"_s, MsgBoxResult::Yes);
        ToolbarButton(u"tbrBookmarks"_s, u"mnuRemoveAllItem"_s)->trigger();
        QCOMPARE(Titles(), (QStringList{u"g (0)"_s, u"h (0)"_s}));
        List()->setCurrentIndex(Row(u"2G"_s));
        Action(u"mnuRemoveGroup"_s)->trigger();
        QCOMPARE(Titles(), QStringList{u"g (0)"_s});
    }

    void readOnlyLibrary_keepsItsBookmarks()
    {
        Make(m_item, u"g"_s, {});
        Open();
        List()->setCurrentIndex(Row(u"1B"_s));
        QVERIFY(Action(u"mnuRemoveBookMark"_s)->isEnabled());
        QFile::rename(m_database->Name(), m_database->Name() + u".away"_s);
        m_prompts->ExpectMsgBox(ApplicationTitle);
        QEvent activated(QEvent::WindowActivate);
        QCoreApplication::sendEvent(m_window.get(), &activated);
        QTRY_VERIFY(!Action(u"mnuRemoveBookMark"_s)->isEnabled());
        List()->setCurrentIndex(Row(u"1G"_s));
        List()->setCurrentIndex(Row(u"1B"_s));
        for (const char* name : {"mnuRemoveBookMark", "mnuRemoveAllItem", "mnuEditBookMark", "mnuRenameGroup",
                                 "mnuRemoveGroup", "mnuBookMark"})
            QVERIFY2(!Action(QString::fromLatin1(name))->isEnabled(), name);
        QVERIFY(Action(u"mnuOpenBookMark"_s)->isEnabled());
        QFile::rename(m_database->Name() + u".away"_s, m_database->Name());
    }

    // The panel

    void panel_isShownAndHidden()
    {
        Open();
        QVERIFY(Panel()->isVisible());
        QVERIFY(Action(u"mnuViewBookmarks"_s)->isChecked());
        QAction* button = ToolbarButton(u"tlbMain"_s, u"VIEWBOOKMARKS"_s);
        QVERIFY(button->isChecked());
        button->trigger();
        QVERIFY(!Panel()->isVisible());
        QVERIFY(!Action(u"mnuViewBookmarks"_s)->isChecked());
        m_window->close();
        QCOMPARE(GetSetting(SettingsApplication, u"Settings"_s, u"ViewBookMarks"_s), u"False"_s);
        Open();
        QVERIFY(!Panel()->isVisible());
        Action(u"mnuViewBookmarks"_s)->trigger();
        QVERIFY(Panel()->isVisible());
        QVERIFY(ToolbarButton(u"tlbMain"_s, u"VIEWBOOKMARKS"_s)->isChecked());
    }

    void separator_isRemembered()
    {
        Open();
        auto* splitter = m_window->findChild<QSplitter*>(u"ctlResizer2"_s);
        QTRY_VERIFY(splitter->sizes().value(1) > 0);
        splitter->setSizes({splitter->height() - 190, 190});
        const int upper = splitter->sizes().value(0);
        m_window->close();
        QVERIFY(GetSetting(SettingsApplication, u"Settings"_s, u"MainResizerSeparatorPos"_s).toInt() > 0);
        Open();
        QTRY_COMPARE(m_window->findChild<QSplitter*>(u"ctlResizer2"_s)->sizes().value(0), upper);
        QVERIFY(Panel()->maximumHeight() * WindowLayout::TwipsPerPixel <= WindowLayout::HighestBookmarks);
    }

    void tabs_haveTheirNumbers()
    {
        Open();
        QCOMPARE(Panel()->DisplayedTab(), 0);
        Panel()->SetDisplayedTab(2);
        QCOMPARE(Panel()->DisplayedTab(), 2);
        QCOMPARE(Caption(), u" Item & Database Information :"_s);
        QVERIFY(!m_window->findChild<QToolBar*>(u"tbrBookmarks"_s)->isVisible());
        QVERIFY(m_window->findChild<QToolBar*>(u"tbrInfo"_s)->isVisible());
        Panel()->SetDisplayedTab(1);
        QCOMPARE(Panel()->DisplayedTab(), 1);
        Panel()->SetSearchKeyword(u"x"_s);
        Panel()->SetFindMode(2);
        QCOMPARE(Caption(), u" Find Results : x (All)"_s);
        for (const int none : {-1, 3})
            Panel()->SetDisplayedTab(none);
        QCOMPARE(Panel()->DisplayedTab(), 1);
    }

    void newItem_bringsTheInfoToTheFront()
    {
        Open();
        ClickOn(0);
        Action(u"mnuAddCode"_s)->trigger();
        QCOMPARE(Panel()->DisplayedTab(), 2);
        Enter(m_window->findChild<QLineEdit*>(u"txtLabelEdit"_s));
    }

private:
    void Make(qint64 item, const QString& group, const QString& text)
    {
        const qint64 known = FindBookmarkGroup(*m_database, group);
        CBookmark bookmark;
        bookmark.Initialise(*m_database, {});
        bookmark.SetCodeItemKey(QString::number(item));
        bookmark.SetGroupNo(known != 0 ? known : AddBookmarkGroup(*m_database, group));
        bookmark.SetDescription(text);
        QVERIFY(bookmark.Commit());
    }
    QStringList Stored()
    {
        return Texts(*m_database,
                     u"SELECT CodeID || ' ' || BookmarkGroup || ' ' || Description FROM Bookmarks ORDER BY ID"_s);
    }
    ctlBookmarks* Panel() { return m_window->findChild<ctlBookmarks*>(u"ctlBookMarkList"_s); }
    BookmarkView* List() { return m_window->findChild<BookmarkView*>(u"lvBookMarks"_s); }
    QString Caption() { return m_window->findChild<QLabel*>(u"lblCaption"_s)->text(); }
    QModelIndex Row(const QString& key) { return Panel()->List().Rows().IndexOfKey(key); }
    QStringList Titles()
    {
        QStringList titles;
        for (QModelIndex at = List()->model()->index(0, 0); at.isValid(); at = List()->indexBelow(at))
            titles << at.data().toString();
        return titles;
    }
    void Click(const QString& key)
    {
        QTest::mouseClick(List()->viewport(), Qt::LeftButton, {}, List()->visualRect(Row(key)).center());
    }
    void DoubleClick(const QString& key)
    {
        List()->scrollTo(Row(key));
        QTest::mouseDClick(List()->viewport(), Qt::LeftButton, {}, List()->visualRect(Row(key)).center());
    }
    void PressInList(const QString& row, Qt::Key key)
    {
        List()->setFocus();
        List()->setCurrentIndex(Row(row));
        QTest::keyClick(List(), key);
    }
    void InDialog(const std::function<void(frmAddBookmark&)>& act)
    {
        QTimer::singleShot(0, m_window.get(), [act] {
            auto* dialog = qobject_cast<frmAddBookmark*>(QApplication::activeModalWidget());
            QVERIFY(dialog);
            dialog->activateWindow();
            QTRY_VERIFY(dialog->isActiveWindow());
            act(*dialog);
            if (dialog->isVisible())
                dialog->reject();
        });
    }

    qint64 m_other = 0;
};

QB_GUI_TEST_MAIN(TestBookmarksPanel)
#include "tst_bookmarks_panel.moc"
