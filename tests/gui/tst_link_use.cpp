#include "panels/ui/ctlBookmarks.h"
#include "panels/ui/ctlSmartTreeView.h"
#include "session/ui/frmRelationshipDelete.h"
#include "support/EditingWindow.h"

#include <QComboBox>
#include <QPlainTextEdit>
#include <QToolButton>
#include <QTreeWidget>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// Links by mouse and keys in the main window: the box of links, their descriptions, and the link mode.
class TestLinkUse : public QObject, private EditingWindow {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        Begin();
        m_other = m_database->QueryValue(u"SELECT ID FROM Items WHERE Title = 'other'"_s).ToLong();
    }
    void cleanup() { End(); }

    // The box of links

    void choosingALink_onlyChoosesIt()
    {
        AddLink(u"why"_s);
        Open();
        ClickOn(0);
        ChooseInBox();
        QCOMPARE(Tree()->currentIndex(), Child(0));
        QVERIFY(LinkButton(u"LINK_GOTO"_s)->isEnabled());
        QVERIFY(LinkButton(u"LINK_REMOVE"_s)->isEnabled());
        Press(u"LINK_GOTO"_s);
        QCOMPARE(Tree()->currentIndex(), Child(1));
    }

    void chosenLink_isRemovedByItsButton()
    {
        AddLink(u"why"_s);
        Open();
        ClickOn(0);
        ChooseInBox();
        QTimer::singleShot(0, this, [] {
            auto* dialog = qobject_cast<frmRelationshipDelete*>(QApplication::activeModalWidget());
            QVERIFY(dialog);
            dialog->accept();
        });
        Press(u"LINK_REMOVE"_s);
        QCOMPARE(LinkList()->topLevelItemCount(), 0);
        ClickOn(1);
        QCOMPARE(CountOf(*m_database, u"ItemLinks"_s), 0);
    }

    // Descriptions

    void descriptionOfALink_isTypedOnTheInfoTab()
    {
        AddLink(QString());
        Open();
        ClickOn(0);
        ShowInfo();
        QCOMPARE(LinkList()->topLevelItemCount(), 1);
        QCOMPARE(LinkList()->currentItem()->text(0), u"other"_s);
        QVERIFY(Note()->isEnabled());
        QTest::keyClicks(Note(), u"it's why"_s);
        QCOMPARE(Note()->toPlainText(), u"it\u2019s why"_s); // an apostrophe can't be written
        TakePicture(*m_window, u"link-notes"_s);
        QTest::keyClick(m_window.get(), Qt::Key_S, Qt::ControlModifier);
        QCOMPARE(Texts(*m_database, u"SELECT Note FROM ItemLinks"_s), QStringList{u"it\u2019s why"_s});
        QVERIFY(!LinkList()->currentItem()->text(1).isEmpty()); // the date
        QTest::keyClicks(Note(), u"!"_s);
        ClickOn(1);
        QCOMPARE(Texts(*m_database, u"SELECT Note FROM ItemLinks"_s), QStringList{u"it\u2019s why!"_s});
        QCOMPARE(LinkList()->topLevelItemCount(), 0);
        QVERIFY(!Note()->isEnabled());
    }

    void newLink_canBeDescribedAtOnce()
    {
        Open();
        ClickOn(0);
        ShowInfo();
        StartMode();
        m_prompts->ExpectMsgBox(u"New Link Creation"_s);
        ClickOn(1);
        QTRY_COMPARE(LinkList()->topLevelItemCount(), 1);
        QTest::keyClicks(Note(), u"new"_s);
        ClickOn(1);
        QCOMPARE(Texts(*m_database, u"SELECT Note FROM ItemLinks"_s), QStringList{u"new"_s});
    }

    void selectedLink_showsItsOwnDescription()
    {
        AddLink(u"first"_s);
        m_database->Execute(u"INSERT INTO ItemLinks (ItemID, LinkItemID, Note) VALUES (?, 999, 'second')"_s, {m_item});
        Open();
        ClickOn(0);
        ShowInfo();
        QCOMPARE(Note()->toPlainText(), u"first"_s);
        const QRect row = LinkList()->visualItemRect(LinkList()->topLevelItem(1));
        QTest::mouseClick(LinkList()->viewport(), Qt::LeftButton, {}, row.center());
        QCOMPARE(Note()->toPlainText(), u"second"_s);
        ClickOn(1);
        const QStringList notes = Texts(*m_database, u"SELECT Note FROM ItemLinks ORDER BY ID"_s);
        QCOMPARE(notes, (QStringList{u"first"_s, u"second"_s}));
    }

    // The mode

    void mode_tellsItsNextStepInTheStatusBar()
    {
        Open();
        ClickOn(0);
        StartMode();
        QCOMPARE(Status(), u"Link “item”: click the item to link with. Escape ends the link mode."_s);
        QTest::keyClick(Tree(), Qt::Key_Down);
        QCOMPARE(Status(), u"“item” is shown. Enter links it with “other”; Escape ends the link mode."_s);
        TakePicture(*m_window, u"link-mode-target"_s);
        QTest::keyClick(Tree(), Qt::Key_Escape);
        QCOMPARE(Status(), u"item"_s);
    }

    void escapeAfterArrowKeys_selectsTheItemThatIsShown()
    {
        Open();
        ClickOn(0);
        StartMode();
        QTest::keyClick(Tree(), Qt::Key_Down);
        QTest::keyClick(Tree(), Qt::Key_Escape);
        QCOMPARE(Tree()->currentIndex(), Child(0));
        QCOMPARE(Title(), u"item"_s);
    }

    void escape_endsTheModeWhereverTheFocusIs_data()
    {
        QTest::addColumn<QString>("focus");
        QTest::addColumn<int>("tab");
        for (const char* name : {"tvwTree", "rtbCode", "txtFilter", "cboDatabase", "txtItemDescription", "tbsTabs"})
            QTest::newRow(name) << QString::fromLatin1(name) << 0;
        QTest::newRow("rtbNotes") << u"rtbNotes"_s << 1;
        QTest::newRow("txtLinkNote") << u"txtLinkNote"_s << InfoTab;
        QTest::newRow("lvLinks") << u"lvLinks"_s << InfoTab;
    }
    void escape_endsTheModeWhereverTheFocusIs()
    {
        QFETCH(QString, focus);
        QFETCH(int, tab);
        AddLink(QString());
        Open();
        ClickOn(0);
        tab == InfoTab ? ShowInfo() : Tab(tab);
        StartMode();
        m_window->findChild<QWidget*>(focus)->setFocus();
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Escape);
        QCOMPARE(Panel()->LinkMode(), LinkMode::None);
        QVERIFY(!ModeButton()->isChecked());
        QCOMPARE(Status(), u"item"_s);
    }

    void newItemByItsKey_isNoLinkedOne()
    {
        Open();
        ClickOn(0);
        StartMode();
        QTest::keyClick(Tree(), Qt::Key_Down); // to the other item; the new one is of the item that is shown
        QTest::keyClick(m_window.get(), Qt::Key_N, Qt::ControlModifier);
        QCOMPARE(Panel()->LinkMode(), LinkMode::None);
        QTest::keyClick(m_window->findChild<QLineEdit*>(u"txtLabelEdit"_s), Qt::Key_Escape);
        QCoreApplication::processEvents();
        QCOMPARE(Tree()->model()->rowCount(Child(0)), 1);
        QCOMPARE(Box()->count(), 1);
        ClickOn(1);
        QCOMPARE(CountOf(*m_database, u"ItemLinks"_s), 0);
    }

    void escapeOnTheTitleOfALinkedItem_makesNeitherItemNorLink()
    {
        Open();
        ClickOn(0);
        Action(u"mnuAddLinkTwoWayNew"_s)->trigger();
        ClickOn(1);
        QTRY_VERIFY(m_window->findChild<QLineEdit*>(u"txtLabelEdit"_s));
        QTest::keyClick(m_window->findChild<QLineEdit*>(u"txtLabelEdit"_s), Qt::Key_Escape);
        QTRY_COMPARE(Panel()->LinkMode(), LinkMode::None);
        QCOMPARE(Tree()->model()->rowCount(Child(1)), 0);
        QCOMPARE(Child(1).data(TreeNodes::ImageRole).toInt(), int(TreeImage::CHILD));
        QCOMPARE(CountOf(*m_database, u"Items"_s), 2);
        QCOMPARE(Tree()->currentIndex(), Child(0));
        QCOMPARE(Title(), u"item"_s);
        ClickOn(1);
        QCOMPARE(CountOf(*m_database, u"ItemLinks"_s), 0);
    }

private:
    static constexpr int InfoTab = -1;

    void ShowInfo() { m_window->findChild<ctlBookmarks*>()->SetDisplayedTab(2); }

    void AddLink(const QString& note)
    {
        m_database->Execute(u"INSERT INTO ItemLinks (ItemID, LinkItemID, Note) VALUES (?, ?, ?)"_s,
                            {m_item, m_other, note});
    }
    /// Goes to the first link by the key, which is a choice as by the mouse.
    void ChooseInBox()
    {
        Box()->setFocus();
        QTest::keyClick(Box(), Qt::Key_Down);
        QCOMPARE(Box()->currentIndex(), 1);
    }
    void Press(const QString& key)
    {
        QWidget* button = m_window->findChild<QToolBar*>(u"tbrLinks"_s)->widgetForAction(LinkButton(key));
        QTest::mouseClick(button, Qt::LeftButton);
    }
    void StartMode() { QTest::mouseClick(ModeButton(), Qt::LeftButton, {}, QPoint(6, ModeButton()->height() / 2)); }

    ctlSmartTreeView* Panel() { return m_window->findChild<ctlSmartTreeView*>(u"tvCodeItems"_s); }
    QComboBox* Box() { return Panel()->findChild<QComboBox*>(u"cboLinkedItems"_s); }
    QToolButton* ModeButton() { return Panel()->findChild<QToolButton*>(u"LINK_MODE"_s); }
    QAction* LinkButton(const QString& key) { return Panel()->findChild<QAction*>(key); }
    QTreeWidget* LinkList() { return m_window->findChild<QTreeWidget*>(u"lvLinks"_s); }
    QPlainTextEdit* Note() { return m_window->findChild<QPlainTextEdit*>(u"txtLinkNote"_s); }
    QString Title() { return m_window->findChild<QLabel*>(u"lblTitle"_s)->text(); }
    QString Status() { return m_window->findChild<QLabel*>(u"sbrMainPanel1"_s)->text(); }

    qint64 m_other = 0;
};

QB_GUI_TEST_MAIN(TestLinkUse)
#include "tst_link_use.moc"
