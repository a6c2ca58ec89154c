#include "panels/ui/ctlSmartTreeView.h"
#include "panels/ui/NodeTreeView.h"
#include "session/ui/frmRelationshipDelete.h"
#include "support/EditingWindow.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QPlainTextEdit>
#include <QRadioButton>
#include <QSplitter>
#include <QToolBar>
#include <QToolButton>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// The tree panel in the main window: links, description, shrinking and the filter.
class TestTreePanel : public QObject, private EditingWindow {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        Begin();
        m_database->Execute(u"UPDATE Items SET Description = 'what it is for' WHERE ID = ?"_s, {m_item});
        m_other = m_database->QueryValue(u"SELECT ID FROM Items WHERE Title = 'other'"_s).ToLong();
    }
    void cleanup() { End(); }

    // Links

    void link_isMadeWithTwoClicksAndFollowedByItsButton()
    {
        Open();
        ClickOn(0);
        QCOMPARE(Combo()->currentText(), u"No Linked Items"_s);
        QCOMPARE(Combo()->toolTip(), u"There are no item links to the currently selected item."_s);
        QVERIFY(!Panel()->findChild<QAction*>(u"LINK_GOTO"_s)->isEnabled());
        ModeButton()->click();
        QVERIFY(ModeButton()->isChecked());
        QCOMPARE(Panel()->LinkMode(), LinkMode::OneWayFrom);
        QVERIFY(Tree()->viewport()->cursor().shape() == Qt::BitmapCursor);
        TakePicture(*m_window, u"link-mode"_s);
        m_prompts->ExpectMsgBox(u"New Link Creation"_s);
        ClickOn(1);
        QTRY_VERIFY(!ModeButton()->isChecked());
        QVERIFY(Tree()->viewport()->cursor().shape() != Qt::BitmapCursor);
        QCOMPARE(Tree()->currentIndex(), Child(0));
        QCOMPARE(Combo()->count(), 2);
        QCOMPARE(Combo()->itemText(0), u"Linked Items"_s);
        QCOMPARE(Combo()->itemText(1), u"other"_s);
        QCOMPARE(Combo()->itemData(1).toString(), u"%1C"_s.arg(m_other));
        Combo()->setCurrentIndex(1);
        Panel()->findChild<QAction*>(u"LINK_GOTO"_s)->trigger();
        QCOMPARE(Tree()->currentIndex(), Child(1)); // which saves the item that is left
        QCOMPARE(Texts(*m_database, u"SELECT LinkItemID FROM ItemLinks"_s), QStringList{QString::number(m_other)});
        QCOMPARE(m_window->findChild<QLabel*>(u"lblTitle"_s)->text(), u"other"_s);
        QCOMPARE(Combo()->currentText(), u"No Linked Items"_s);
        ClickOn(0);
        Combo()->setCurrentIndex(1);
        Panel()->findChild<QAction*>(u"LINK_GOTO"_s)->trigger();
        QCOMPARE(Tree()->currentIndex(), Child(1));
    }

    void modeMenu_setsTheButtonAndStarts_data()
    {
        QTest::addColumn<QString>("key");
        QTest::addColumn<LinkMode>("mode");
        QTest::newRow("1") << u"ONE_WAY_TARGET"_s << LinkMode::OneWayFrom;
        QTest::newRow("2") << u"ONE_WAY_SOURCE"_s << LinkMode::OneWayTo;
        QTest::newRow("3") << u"ONEWAY_NEW_TARGET"_s << LinkMode::OneWayNewFrom;
        QTest::newRow("4") << u"ONE_WAY_NEW_SOURCE"_s << LinkMode::OneWayNewTo;
        QTest::newRow("5") << u"TWO_WAY"_s << LinkMode::TwoWay;
        QTest::newRow("6") << u"TWOWAY_NEW"_s << LinkMode::TwoWayNew;
        QTest::newRow("7") << u"ADVANCED"_s << LinkMode::Advanced;
    }
    void modeMenu_setsTheButtonAndStarts()
    {
        QFETCH(QString, key);
        QFETCH(LinkMode, mode);
        Open();
        ClickOn(0);
        ChooseMode(key);
        QCOMPARE(Panel()->LinkMode(), mode);
        QVERIFY(ModeButton()->isChecked());
        TakePicture(*m_window, u"link-mode-%1"_s.arg(int(mode)));
        QTest::keyClick(Tree(), Qt::Key_Escape);
        QCOMPARE(Panel()->LinkMode(), LinkMode::None);
        QVERIFY(!ModeButton()->isChecked());
        ModeButton()->click(); // the last choice
        QCOMPARE(Panel()->LinkMode(), mode);
        ModeButton()->click();
        QCOMPARE(Panel()->LinkMode(), LinkMode::None);
    }

    void menuEntries_startTheirModes()
    {
        Open();
        ClickOn(0);
        const std::pair<const char*, LinkMode> entries[] = {{"mnuAddLinkOneWayFromSelItem", LinkMode::OneWayFrom},
                                                            {"mnuAddLinkToSelectedItem", LinkMode::OneWayTo},
                                                            {"mnuAddLinkOneWayNewFromSelItem", LinkMode::OneWayNewFrom},
                                                            {"mnuAddLinkOneWayNewToSelItem", LinkMode::OneWayNewTo},
                                                            {"mnuAddLinkTwoWayItem", LinkMode::TwoWay},
                                                            {"mnuAddLinkTwoWayNew", LinkMode::TwoWayNew}};
        for (const auto& [name, mode] : entries) {
            Action(QString::fromLatin1(name))->trigger();
            QCOMPARE(Panel()->LinkMode(), mode);
        }
        QCOMPARE(Action(u"mnuAddLinkTwoWayNew"_s)->text(), u"Two Way New..."_s);
        QTest::keyClick(m_window.get(), Qt::Key_Escape); // wherever the focus is
        QCOMPARE(Panel()->LinkMode(), LinkMode::None);
    }

    void root_hasNoLinkMode()
    {
        Open();
        Tree()->setCurrentIndex(Root());
        ModeButton()->click();
        QCOMPARE(Panel()->LinkMode(), LinkMode::None);
        QVERIFY(!ModeButton()->isChecked());
    }

    void keysInAMode_goAboutAndLinkNothing()
    {
        Open();
        ClickOn(0);
        ChooseMode(u"TWO_WAY"_s);
        QTest::keyClick(Tree(), Qt::Key_Down);
        QCOMPARE(Panel()->LinkMode(), LinkMode::TwoWay);
        m_prompts->ExpectMsgBox(u"New Link Creation"_s);
        QTest::keyClick(Tree(), Qt::Key_Return); // names it
        QCOMPARE(Combo()->count(), 2);
        QCOMPARE(Tree()->currentIndex(), Child(0));
    }

    void permanentMode_isSwitchedInTheMenu()
    {
        Open();
        ClickOn(0);
        for (QAction* action : ModeButton()->menu()->actions()) {
            if (action->property("key") == u"PERMANENT"_s)
                action->trigger();
        }
        ChooseMode(u"ONE_WAY_TARGET"_s);
        m_prompts->ExpectMsgBox(u"New Link Creation"_s);
        ClickOn(1);
        QTRY_COMPARE(Combo()->count(), 2);
        QCOMPARE(Panel()->LinkMode(), LinkMode::OneWayFrom);
        QTest::keyClick(Tree(), Qt::Key_Escape);
    }

    void newLinkedItem_getsItsTitleFirst()
    {
        Open();
        ClickOn(0);
        ChooseMode(u"TWOWAY_NEW"_s);
        ClickOn(1);
        QTRY_VERIFY(m_window->findChild<QLineEdit*>(u"txtLabelEdit"_s));
        auto* editor = m_window->findChild<QLineEdit*>(u"txtLabelEdit"_s);
        editor->setText(u"fresh"_s);
        m_prompts->ExpectMsgBox(u"New Link Creation"_s);
        Enter(editor);
        QTRY_COMPARE(Tree()->currentIndex(), Child(0));
        QCOMPARE(Combo()->itemText(1), u"fresh"_s);
    }

    void newLinkedItemWithThePresetTitle_isLinkedToo()
    {
        Open();
        ClickOn(0);
        ChooseMode(u"TWOWAY_NEW"_s);
        ClickOn(1);
        m_prompts->ExpectMsgBox(u"New Link Creation"_s);
        QTRY_VERIFY(m_window->findChild<QLineEdit*>(u"txtLabelEdit"_s));
        QTest::keyClick(m_window->findChild<QLineEdit*>(u"txtLabelEdit"_s), Qt::Key_Return);
        QTRY_COMPARE(Combo()->count(), 2);
        QCOMPARE(Combo()->itemText(1), u"New Code item"_s);
        QCOMPARE(Panel()->LinkMode(), LinkMode::None);
    }

    void link_isRemovedWithItsDialog()
    {
        for (const auto& [from, to] : {std::pair(m_item, m_other), std::pair(m_other, m_item)})
            m_database->Execute(u"INSERT INTO ItemLinks (ItemID, LinkItemID, Note) VALUES (?, ?, '')"_s, {from, to});
        Open();
        ClickOn(0);
        Combo()->setCurrentIndex(1);
        QTimer::singleShot(0, this, [] {
            auto* dialog = qobject_cast<frmRelationshipDelete*>(QApplication::activeModalWidget());
            QVERIFY(dialog);
            TakePicture(*dialog, u"relationship"_s);
            dialog->findChild<QRadioButton*>(u"optLeft"_s)->setChecked(true);
            dialog->accept();
        });
        Panel()->findChild<QAction*>(u"LINK_REMOVE"_s)->trigger();
        QCOMPARE(Combo()->count(), 1);
        Action(u"mnuSaveItem"_s)->trigger();
        QCOMPARE(Texts(*m_database, u"SELECT ItemID FROM ItemLinks"_s), QStringList{QString::number(m_other)});
    }

    void relationshipDialog_followsTheDirection_data()
    {
        QTest::addColumn<LinkDirection>("direction");
        QTest::addColumn<bool>("left");
        QTest::addColumn<bool>("right");
        QTest::newRow("1") << LinkDirection::Left << true << false;
        QTest::newRow("2") << LinkDirection::Right << false << true;
        QTest::newRow("3") << LinkDirection::Both << true << true;
    }
    void relationshipDialog_followsTheDirection()
    {
        QFETCH(LinkDirection, direction);
        QFETCH(bool, left);
        QFETCH(bool, right);
        frmRelationshipDelete dialog;
        dialog.DisplayRelationshipAndOptions(direction);
        dialog.show();
        QCOMPARE(dialog.windowTitle(), u"Item Relationship Deletion"_s);
        QCOMPARE(dialog.findChild<QLabel*>(u"picLeftArrow"_s)->isVisible(), left);
        QCOMPARE(dialog.findChild<QLabel*>(u"picRightArrow"_s)->isVisible(), right);
        const auto option = [&dialog](const QString& name) { return dialog.findChild<QRadioButton*>(name); };
        QCOMPARE(option(u"optLeft"_s)->isEnabled(), left && right);
        QCOMPARE(option(u"optRight"_s)->isEnabled(), left && right);
        QCOMPARE(dialog.Result(), LinkDirection::None);
        QCOMPARE(option(u"optComplete"_s)->text(), u"Remove relationship COMPLETELY."_s);
        option(u"optLeft"_s)->setChecked(true);
        QCOMPARE(dialog.Result(), LinkDirection::Right);
        option(u"optRight"_s)->setChecked(true);
        QCOMPARE(dialog.Result(), LinkDirection::Left);
        dialog.reject();
        QVERIFY(dialog.Cancelled());
    }

    void linkToADeletedItem_isShownAndSaidToBeOne()
    {
        m_database->Execute(u"INSERT INTO ItemLinks (ItemID, LinkItemID, Note) VALUES (?, 999, '')"_s, {m_item});
        Open();
        ClickOn(0);
        QCOMPARE(Combo()->itemText(1), u"(deleted item 999)"_s);
        m_prompts->ExpectMsgBox(ApplicationTitle);
        Combo()->setCurrentIndex(1);
        Panel()->findChild<QAction*>(u"LINK_GOTO"_s)->trigger();
        QCOMPARE(Tree()->currentIndex(), Child(0));
    }

    // Description and size

    void description_followsTheItem()
    {
        Open();
        ClickOn(0);
        QCOMPARE(Description()->toPlainText(), u"what it is for"_s);
        ClickOn(1);
        QCOMPARE(Description()->toPlainText(), QString());
        auto* button = Panel()->findChild<QAction*>(u"DESCRIPTION"_s);
        QCOMPARE(button->toolTip(), u"Hide Item Description"_s);
        button->trigger();
        QVERIFY(!Description()->isVisible());
        QVERIFY(Panel()->DescriptionHidden());
        QCOMPARE(button->toolTip(), u"Show Item Description"_s);
        button->trigger();
        QVERIFY(Description()->isVisible());
    }

    void panel_shrinksToItsButton()
    {
        Open();
        ClickOn(0);
        const int width = Panel()->width();
        QVERIFY(Action(u"mnuViewTreeItem"_s)->isChecked());
        auto* button = Panel()->findChild<QAction*>(u"SHRINK"_s);
        QCOMPARE(button->toolTip(), u"Shrink Tree"_s);
        button->trigger();
        QVERIFY(!Tree()->isVisible());
        QVERIFY(Panel()->TreeHidden());
        QTRY_VERIFY(Panel()->width() < width / 2);
        QCOMPARE(button->toolTip(), u"Expand Tree"_s);
        QVERIFY(!Action(u"mnuViewTreeItem"_s)->isChecked());
        TakePicture(*m_window, u"tree-shrunk"_s);
        Action(u"mnuViewTreeItem"_s)->trigger();
        QVERIFY(Tree()->isVisible());
        QTRY_COMPARE(Panel()->width(), width);
        QVERIFY(Action(u"mnuViewTreeItem"_s)->isChecked());
    }

    void shrunkPanel_keepsItsWidthForTheNextStart()
    {
        SaveSetting(SettingsApplication, u"Settings"_s, u"SubResizerSeparatorPos"_s, u"3600"_s);
        Open();
        Panel()->SetTreeHidden(true);
        m_window->close();
        QCOMPARE(GetSetting(SettingsApplication, u"Settings"_s, u"SubResizerSeparatorPos"_s), u"3600"_s);
    }

    // The bar

    void narrowBar_hasTheLinksBelowTheFilter()
    {
        Open();
        Widen(1);
        QTRY_VERIFY(Below(*Combo(), *Filter()));
        const QSize links = LinkBar()->size();
        QVERIFY(links.width() >= LinkBar()->sizeHint().width());
        QVERIFY(Filter()->width() > 100);
        TakePicture(*m_window, u"tree-bar-narrow"_s);
    }

    void wideBar_hasTheLinksBesideTheFilter()
    {
        Open();
        Widen(600);
        QTRY_VERIFY(!Below(*Combo(), *Filter()));
        QCOMPARE(Bar()->sizes().value(0), 211); // 3165 twips
        TakePicture(*m_window, u"tree-bar-wide"_s);
        Widen(1);
        QTRY_VERIFY(Below(*Combo(), *Filter()));
        QCOMPARE(Panel()->CoolBarFirstBandWidth(), 211);
        Widen(600);
        QTRY_VERIFY(!Below(*Combo(), *Filter()));
        QCOMPARE(Bar()->sizes().value(0), 211);
    }

    void bandThatWouldTakeTheRoomOfTheOther_getsWhatIsLeft()
    {
        Open();
        Widen(600);
        Panel()->SetCoolBarFirstBandWidth(2000);
        QTRY_COMPARE(LinkBar()->width(), LinkBar()->sizeHint().width());
        Panel()->SetCoolBarFirstBandWidth(0);
        QTRY_COMPARE(Bar()->sizes().value(0), m_window->findChild<QToolBar*>(u"tbrTree"_s)->sizeHint().width());
    }

    void bands_areRemembered()
    {
        Open();
        Widen(600);
        QTRY_VERIFY(!Below(*Combo(), *Filter()));
        DragSeparator(90);
        QCOMPARE(Bar()->sizes().value(0), 301);
        QCOMPARE(Panel()->CoolBarFirstBandWidth(), 301);
        m_window->close();
        QCOMPARE(GetSetting(SettingsApplication, u"Settings"_s, u"SmartTreeCoolBarBendWidth"_s), u"4515"_s);
        Open();
        QTRY_COMPARE(Bar()->sizes().value(0), 301);
    }

    // The filter

    void filter_narrowsTheTree()
    {
        const qint64 branch = AddItem(*m_database, m_other, u"deep needle"_s);
        AddItem(*m_database, branch, u"hay"_s);
        Open();
        ClickOn(0);
        Action(u"mnuFilterTree"_s)->trigger();
        QVERIFY(Filter()->hasFocus());
        QTest::keyClicks(Filter(), u"NEED"_s);
        QVERIFY(!Tree()->isVisible());
        QVERIFY(Found()->isVisible());
        QCOMPARE(Found()
                     ->model()
                     ->index(0, 0, Found()->model()->index(0, 0, Found()->model()->index(0, 0)))
                     .data()
                     .toString(),
                 u"deep needle"_s);
        TakePicture(*m_window, u"filter"_s);
        QTest::keyClick(Filter(), Qt::Key_Return);
        QCOMPARE(m_window->findChild<QLabel*>(u"lblTitle"_s)->text(), u"deep needle"_s);
        QVERIFY(Found()->hasFocus());
        QTest::keyClick(Found(), Qt::Key_Escape);
        QVERIFY(Tree()->isVisible());
        QCOMPARE(Filter()->text(), QString());
        QCOMPARE(Tree()->currentIndex().data().toString(), u"deep needle"_s);
        QVERIFY(Tree()->visualRect(Tree()->currentIndex()).isValid()); // its branch is open
    }

    void click_inWhatIsFound_opensTheItem()
    {
        Open();
        ClickOn(0);
        Filter()->setText(u"oth"_s);
        const QModelIndex index = Found()->model()->index(0, 0, Found()->model()->index(0, 0));
        QTest::mouseClick(Found()->viewport(), Qt::LeftButton, {}, Found()->visualRect(index).center());
        QCOMPARE(m_window->findChild<QLabel*>(u"lblTitle"_s)->text(), u"other"_s);
        QTest::keyClick(Filter(), Qt::Key_Escape);
        QVERIFY(Tree()->isVisible());
        QCOMPARE(Tree()->currentIndex(), Child(1));
    }

    void filteredTree_followsChanges()
    {
        Open();
        ClickOn(0);
        Filter()->setText(u"fresh"_s);
        QCOMPARE(Found()->model()->rowCount(), 0);
        TreeNodes& nodes = Panel()->Nodes();
        nodes.Insert(500, u"fresh"_s, TreeImage::CHILD, *nodes.Find(m_item));
        QTRY_COMPARE(Found()->model()->rowCount(), 1);
        nodes.SetText(*nodes.Find(500), u"old"_s);
        QTRY_COMPARE(Found()->model()->rowCount(), 0);
        nodes.SetText(*nodes.Find(500), u"fresh"_s);
        QTRY_COMPARE(Found()->model()->rowCount(), 1);
        Panel()->RemoveNode(*nodes.Find(500));
        QTRY_COMPARE(Found()->model()->rowCount(), 0);
        Action(u"mnuViewRefresh"_s)->trigger(); // all nodes are other ones
        Filter()->setText(u"item"_s);
        QCOMPARE(Found()->model()->rowCount(), 1);
    }

    void veryManyMatches_stayInClosedBranches()
    {
        Open();
        TreeNodes& nodes = Panel()->Nodes();
        for (int i = 0; i < 5001; ++i)
            nodes.Insert(1000 + i, u"match %1"_s.arg(i), TreeImage::CHILD, *nodes.Find(m_item));
        Filter()->setText(u"match"_s);
        const QModelIndex root = Found()->model()->index(0, 0);
        QVERIFY(Found()->isExpanded(root));
        QVERIFY(!Found()->isExpanded(Found()->model()->index(0, 0, root)));
        QCOMPARE(Found()->model()->rowCount(Found()->model()->index(0, 0, root)), 5001);
        Filter()->setText(u"match 12"_s);
        QVERIFY(Found()->isExpanded(Found()->model()->index(0, 0, Found()->model()->index(0, 0))));
    }

    void link_isMadeInTheFilteredTree()
    {
        Open();
        ClickOn(0);
        Filter()->setText(u"oth"_s);
        ChooseMode(u"ONE_WAY_TARGET"_s);
        m_prompts->ExpectMsgBox(u"New Link Creation"_s);
        const QModelIndex index = Found()->model()->index(0, 0, Found()->model()->index(0, 0));
        QTest::mouseClick(Found()->viewport(), Qt::LeftButton, {}, Found()->visualRect(index).center());
        QCOMPARE(Combo()->itemText(1), u"other"_s);
    }

    void pictures()
    {
        for (int i = 0; i < 3; ++i) {
            const qint64 linked = AddItem(*m_database, m_other, u"linked %1"_s.arg(i));
            m_database->Execute(u"INSERT INTO ItemLinks (ItemID, LinkItemID, Note) VALUES (?, ?, 'why it is linked')"_s,
                                {m_item, linked});
            if (i == 1)
                m_database->Execute(u"INSERT INTO ItemLinks (ItemID, LinkItemID, Note) VALUES (?, ?, '')"_s,
                                    {linked, m_item});
        }
        SaveSetting(SettingsApplication, u"Settings"_s, u"SubResizerSeparatorPos"_s, u"4800"_s);
        for (const bool dark : {false, true}) {
            const QPalette before = QApplication::palette();
            if (dark)
                QApplication::setPalette(DarkPalette());
            Open();
            m_window->resize(1000, 640);
            QTest::qWait(20);
            ClickOn(0);
            Combo()->setCurrentIndex(2);
            TakePicture(*m_window, dark ? u"tree-panel-dark"_s : u"tree-panel"_s);
            Combo()->showPopup();
            TakePicture(*Combo()->view()->window(), dark ? u"links-combo-dark"_s : u"links-combo"_s);
            Combo()->hidePopup();
            ModeButton()->menu()->popup(m_window->mapToGlobal(QPoint(0, 0)));
            TakePicture(*ModeButton()->menu(), dark ? u"link-menu-dark"_s : u"link-menu"_s);
            ModeButton()->menu()->close();
            m_window.reset();
            QApplication::setPalette(before);
        }
    }

private:
    ctlSmartTreeView* Panel() { return m_window->findChild<ctlSmartTreeView*>(u"tvCodeItems"_s); }
    QComboBox* Combo() { return Panel()->findChild<QComboBox*>(u"cboLinkedItems"_s); }
    QToolButton* ModeButton() { return Panel()->findChild<QToolButton*>(u"LINK_MODE"_s); }
    QPlainTextEdit* Description() { return Panel()->findChild<QPlainTextEdit*>(u"txtItemDescription"_s); }
    QLineEdit* Filter() { return Panel()->findChild<QLineEdit*>(u"txtFilter"_s); }
    QSplitter* Bar() { return Panel()->findChild<QSplitter*>(u"tlbTree"_s); }
    QToolBar* LinkBar() { return Panel()->findChild<QToolBar*>(u"tbrLinks"_s); }
    void Widen(int width)
    {
        auto* splitter = m_window->findChild<QSplitter*>(u"ctlResizer1"_s);
        QTRY_VERIFY(splitter->isVisible());
        QTest::qWait(0); // the window places its parts when it is shown
        splitter->setSizes({width, splitter->width() - width});
    }
    bool Below(const QWidget& lower, const QWidget& upper)
    {
        return lower.mapTo(Panel(), QPoint()).y() >= upper.mapTo(Panel(), QPoint(0, upper.height())).y();
    }
    void DragSeparator(int pixels)
    {
        QWidget* handle = Bar()->handle(1);
        const QPoint from = handle->rect().center();
        QTest::mousePress(handle, Qt::LeftButton, {}, from);
        const QPoint to = from + QPoint(pixels, 0);
        QMouseEvent move(QEvent::MouseMove, QPointF(to), QPointF(handle->mapToGlobal(to)), Qt::NoButton, Qt::LeftButton,
                         {});
        QApplication::sendEvent(handle, &move);
        QTest::mouseRelease(handle, Qt::LeftButton, {}, handle->rect().center());
    }
    QTreeView* Found() { return Panel()->findChild<QTreeView*>(u"tvwFound"_s); }
    void ChooseMode(const QString& key)
    {
        for (QAction* action : ModeButton()->menu()->actions()) {
            if (action->property("key") == key)
                action->trigger();
        }
    }

    qint64 m_other = 0;
};

QB_GUI_TEST_MAIN(TestTreePanel)
#include "tst_tree_panel.moc"
