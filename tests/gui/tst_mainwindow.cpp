#include "panels/ui/ctlSmartTreeView.h"
#include "platform/dao/DBEngine.h"
#include "platform/richtext/RtfPlainText.h"
#include "platform/system/SettingsStore.h"
#include "session/ui/frmCodeLib.h"
#include "session/ui/frmNewDatabase.h"
#include "store/CCodeItem.h"
#include "support/GuiRun.h"
#include "support/LibraryBuilder.h"
#include "support/ScriptedPrompts.h"
#include "support/TestRun.h"
#include "text/ui/CodeBox.h"
#include "text/ui/RichTextBox.h"

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QRadioButton>
#include <QScreen>
#include <QSignalSpy>
#include <QSplitter>
#include <QStatusBar>
#include <QTabWidget>
#include <QTimer>
#include <QTreeView>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

class TestMainWindow : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_home = std::make_unique<TemporaryHome>();
        m_prompts = std::make_unique<ScriptedPrompts>();
    }

    void cleanup()
    {
        m_window.reset();
        m_prompts.reset();
        m_home.reset();
    }

    void firstStart_makesALibraryAndShowsItsRoot()
    {
        Open();
        QVERIFY(QFileInfo::exists(DefaultLibrary()));
        QCOMPARE(Tree()->model()->rowCount(), 1);
        QCOMPARE(Text(Root()), u"KT Quillbase Library"_s);
        QCOMPARE(Tree()->currentIndex(), Root());
        QVERIFY(Root().data(TreeNodes::BoldRole).toBool());
        QCOMPARE(Combo()->currentText(), u"KT Quillbase"_s);
        QCOMPARE(Combo()->toolTip(), u"Currently selected database: KT Quillbase"_s);
        QCOMPARE(Find<QLabel>(u"sbrMainPanel1"_s)->text(), u"VB"_s);
        QVERIFY(Find<QWidget>(u"webWelcome"_s)->isVisible());
        QVERIFY(Find<QLabel>(u"Label1"_s)->text() == u"Welcome to the KT Quillbase Code Library"_s);
        TakePicture(*m_window, u"first-start"_s);
    }

    // Place and layout

    void firstStart_isMaximised()
    {
        Open();
        QVERIFY(m_window->isMaximized());
        const QRect screen = m_window->screen()->availableGeometry();
        m_window->showNormal();
        QTRY_COMPARE(m_window->geometry(), QRect(screen.width() / 10, screen.height() / 10, screen.width() / 10 * 8,
                                                 screen.height() / 10 * 8));
        const auto* tree = Find<QWidget>(u"tvCodeItems"_s);
        QVERIFY(tree->width() >= tree->minimumSizeHint().width()); // a seventh of the window would be less
    }

    void window_standsAsItWasLeft()
    {
        Open();
        m_window->showNormal();
        m_window->setGeometry(40, 50, 600, 500);
        QCoreApplication::processEvents();
        Find<QSplitter>(u"ctlResizer1"_s)->setSizes({250, 350});
        const int tree = Find<QSplitter>(u"ctlResizer1"_s)->sizes().value(0);
        m_window->close();
        QCOMPARE(Stored(u"MainLeft"_s), u"600"_s); // twips
        QCOMPARE(Stored(u"MainTop"_s), u"750"_s);
        QCOMPARE(Stored(u"MainWidth"_s), u"9000"_s);
        QCOMPARE(Stored(u"MainHeight"_s), u"7500"_s);
        QCOMPARE(Stored(u"WindowState"_s), u"0"_s);
        QCOMPARE(Stored(u"SubResizerSeparatorPos"_s), QString::number(tree * 15));
        Open();
        QVERIFY(!m_window->isMaximized());
        QCOMPARE(m_window->geometry(), QRect(40, 50, 600, 500));
        QTRY_COMPARE(Find<QSplitter>(u"ctlResizer1"_s)->sizes().value(0), tree);
    }

    void maximisedWindow_keepsItsPlaceBelow()
    {
        Open();
        m_window->showNormal();
        m_window->setGeometry(40, 50, 600, 500);
        m_window->showMaximized();
        QCoreApplication::processEvents();
        m_window->close();
        QCOMPARE(Stored(u"WindowState"_s), u"2"_s);
        QCOMPARE(Stored(u"MainWidth"_s), u"9000"_s);
    }

    void layoutThatIsNotSaved_isNotWritten()
    {
        SaveSetting(SettingsApplication, u"Settings"_s, u"SaveFormLayout"_s, u"False"_s);
        Open();
        m_window->close();
        for (const QString& key :
             {u"MainLeft"_s, u"WindowState"_s, u"AutoSave"_s, u"FormatTlbrPoss"_s, u"SubResizerSeparatorPos"_s})
            QCOMPARE(Stored(key), u"none"_s);
    }

    void placeOnAScreenThatHasGone_isNotUsed()
    {
        SaveSetting(SettingsApplication, u"Settings"_s, u"MainLeft"_s, u"300000"_s);
        SaveSetting(SettingsApplication, u"Settings"_s, u"WindowState"_s, u"0"_s);
        Open();
        QVERIFY(m_window->screen()->availableGeometry().intersects(m_window->geometry()));
    }

    void itemClicked_showsAllItsTexts()
    {
        MakeDefaultLibrary();
        Open();
        ClickOn(Child(Root(), 0));
        QVERIFY(!Find<QWidget>(u"webWelcome"_s)->isVisible());
        QCOMPARE(Find<QLabel>(u"lblTitle"_s)->text(), u"Äpfel"_s);
        QCOMPARE(Find<QLabel>(u"lblDescription"_s)->text(), u"about apples"_s);
        QCOMPARE(Find<CodeBox>(u"rtbCode"_s)->Text(), u"Dim apple\r\nEnd"_s);
        QCOMPARE(Find<RichTextBox>(u"rtbNotes"_s)->Text(), u"noted"_s);
        QCOMPARE(Find<CodeBox>(u"rtbUsage"_s)->Text(), u"used"_s);
        QCOMPARE(Find<QPlainTextEdit>(u"txtInfo"_s)->toPlainText(), u"informed"_s);
        QVERIFY(!Find<QLabel>(u"sbrMainPanel2"_s)->text().isEmpty());
        QVERIFY(Find<QLabel>(u"sbrMainPanel2"_s)->toolTip().startsWith(u"Item last updated. (Created on "_s));
        TakePicture(*m_window, u"item"_s);
    }

    void itemWithoutCode_opensOnTheFirstTabWithContent()
    {
        MakeDefaultLibrary();
        Open();
        ClickOn(Child(Child(Root(), 1), 0));
        QCOMPARE(Find<QLabel>(u"lblTitle"_s)->text(), u"only notes"_s);
        QCOMPARE(Find<QTabWidget>(u"tbsTabs"_s)->currentWidget()->objectName(), u"rtbNotes"_s);
    }

    void keyboard_walksAndOpensItems()
    {
        MakeDefaultLibrary();
        Open();
        Tree()->setFocus();
        QTest::keyClick(Tree(), Qt::Key_Down);
        QCOMPARE(Find<QLabel>(u"lblTitle"_s)->text(), u"Äpfel"_s);
        QTest::keyClick(Tree(), Qt::Key_Down);
        QTest::keyClick(Tree(), Qt::Key_Right);
        QVERIFY(Tree()->isExpanded(Child(Root(), 1)));
        QCOMPARE(Find<QLabel>(u"sbrMainPanel1"_s)->text(), u"branch"_s);
        QTest::keyClick(Tree(), Qt::Key_Left);
        QVERIFY(!Tree()->isExpanded(Child(Root(), 1)));
    }

    void backAndForward_followTheVisits()
    {
        MakeDefaultLibrary();
        Open();
        QVERIFY(!Action(u"BACK"_s)->isEnabled());
        ClickOn(Child(Root(), 0));
        ClickOn(Child(Root(), 1));
        QVERIFY(Action(u"BACK"_s)->isEnabled());
        QVERIFY(!Action(u"FORWARD"_s)->isEnabled());
        Action(u"BACK"_s)->trigger();
        QCOMPARE(Text(Tree()->currentIndex()), u"Äpfel"_s);
        QVERIFY(!Action(u"BACK"_s)->isEnabled());
        Action(u"FORWARD"_s)->trigger();
        QCOMPARE(Text(Tree()->currentIndex()), u"branch"_s);
    }

    void nextAndPrevious_walkTheWholeTree()
    {
        MakeDefaultLibrary();
        Open();
        QStringList titles;
        for (int i = 0; i < 4; ++i) {
            Action(u"NEXT"_s)->trigger();
            titles << Text(Tree()->currentIndex());
        }
        QCOMPARE(titles, (QStringList{u"Äpfel"_s, u"branch"_s, u"only notes"_s, u"only notes"_s}));
        Action(u"PREVIOUS"_s)->trigger();
        QCOMPARE(Text(Tree()->currentIndex()), u"branch"_s);
        QCOMPARE(Find<QLabel>(u"lblTitle"_s)->text(), u"branch"_s);
    }

    void clickOnAnItemLeftByTheButtons_opensItAgain()
    {
        MakeDefaultLibrary();
        Open();
        ClickOn(Child(Root(), 0));
        Action(u"NEXT"_s)->trigger();
        ClickOn(Child(Root(), 0));
        QCOMPARE(Find<QLabel>(u"lblTitle"_s)->text(), u"Äpfel"_s);
    }

    void menusWithoutAnything_areNotShown()
    {
        Open();
        for (const QAction* menu : m_window->menuBar()->actions()) {
            const QList<QAction*> entries = menu->menu()->actions();
            const bool anything = std::any_of(entries.begin(), entries.end(), [](const QAction* entry) {
                return entry->isVisible() && !entry->isSeparator();
            });
            QVERIFY2(menu->isVisible() == anything, qPrintable(menu->text()));
        }
    }

    void comboBox_changesTheLibrary()
    {
        MakeDefaultLibrary();
        const QString other = m_home->Path(u"other lib.qbd"_s);
        AddItem(*MakeLibrary(other), 0, u"the other's"_s);
        Open();
        m_prompts->ExpectFileName(u"Select a Quillbase Library Database"_s, other);
        m_prompts->ExpectInputBox(u"Include to Favourites List"_s, u"Other"_s);
        Action(u"mnuOpenDatabase"_s)->trigger();
        QCOMPARE(Combo()->currentText(), u"Other"_s);
        QCOMPARE(Text(Root()), u"Other Library"_s);
        QCOMPARE(Text(Child(Root(), 0)), u"the other's"_s);
        Combo()->setCurrentIndex(0);
        QCOMPARE(Text(Root()), u"KT Quillbase Library"_s);
        QCOMPARE(GetSetting(SettingsApplication, u"Settings"_s, u"LastDB"_s), DefaultLibrary());
        QCOMPARE(Tree()->model()->rowCount(Root()), 2);
        OpenFileMenu();
        const QList<QAction*> entries = Action(u"mnuFileDatabaseSelect"_s)->menu()->actions();
        QCOMPARE(entries.size(), 2);
        QVERIFY(entries[0]->isChecked() && !entries[1]->isChecked());
        entries[1]->trigger();
        QCOMPARE(Text(Root()), u"Other Library"_s);
    }

    void enterInTheComboBox_renamesTheAliasAfterAQuestion()
    {
        Open();
        for (const auto answer : {MsgBoxResult::No, MsgBoxResult::Yes}) {
            m_prompts->ExpectMsgBox(u"Alias Change"_s, answer);
            Combo()->lineEdit()->setText(u"My work"_s);
            QTest::keyClick(Combo(), Qt::Key_Return); // the box hands keys to its line
            QCOMPARE(Combo()->currentText(), answer == MsgBoxResult::Yes ? u"My work"_s : u"KT Quillbase"_s);
        }
        QCOMPARE(GetSetting(SettingsApplication, u"Databases"_s, u"ChosenDatabases"_s),
                 DefaultLibrary() + u"|My work;"_s);
    }

    void removingTheOnlyLibrary_leavesTheFileMenu()
    {
        MakeDefaultLibrary();
        Open();
        m_prompts->ExpectMsgBox(u"Remove Database"_s, MsgBoxResult::Yes);
        Action(u"mnuRemoveDBItem"_s)->trigger();
        QCOMPARE(Tree()->model()->rowCount(), 0);
        QCOMPARE(Combo()->count(), 0);
        QVERIFY(QFileInfo::exists(DefaultLibrary()));
        QVERIFY(!Action(u"NEXT"_s)->isEnabled());
        QVERIFY(!Find<QMenu>(u"mnuItem"_s)->isEnabled());
        QVERIFY(!Find<QMenu>(u"mnuView"_s)->isEnabled());
        QVERIFY(Action(u"mnuNewDatabase"_s)->isEnabled());
        TakePicture(*m_window, u"no-library"_s);
    }

    void newLibrary_isMadeAndOpened()
    {
        Open();
        const QString path = m_home->Path(u"fresh.qbd"_s);
        QTimer::singleShot(0, this, [this] {
            auto* dialog = Find<frmNewDatabase>(u"frmNewDatabase"_s);
            QVERIFY(!dialog->findChild<QLineEdit*>(u"txtPath"_s)->isEnabled());
            dialog->findChild<QRadioButton*>(u"optC"_s)->setChecked(true);
            TakePicture(*dialog, u"new-library"_s);
            dialog->accept();
        });
        m_prompts->ExpectFileName(u"Enter Name and Path for the New Database"_s, path);
        m_prompts->ExpectInputBox(u"Include to Favourites List"_s, u"Fresh"_s);
        Action(u"mnuNewDatabase"_s)->trigger();
        QCOMPARE(Text(Root()), u"Fresh Library"_s);
        QCOMPARE(Find<QLabel>(u"sbrMainPanel1"_s)->text(), u"C++"_s);
        QVERIFY(QFileInfo::exists(path));
    }

    void lostParent_isReportedAndTheWindowGoesOn()
    {
        MakeDefaultLibrary();
        Library::Open(DefaultLibrary())->Execute(u"UPDATE Items SET ParentID = 99 WHERE ID = 3"_s);
        m_prompts->ExpectError();
        Open();
        QVERIFY(m_prompts->Errors.first().contains(u"99"_s));
        QCOMPARE(Text(Root()), u"KT Quillbase Library"_s);
        QVERIFY(Tree()->model()->rowCount() > 1); // the lost one stands beside the root
        ClickOn(Child(Root(), 0));
        QCOMPARE(Find<QLabel>(u"lblTitle"_s)->text(), Text(Child(Root(), 0)));
    }

    void commandThatFails_isReportedAndTheWindowGoesOn()
    {
        MakeDefaultLibrary();
        Open();
        DBEngine::OpenDatabase(DefaultLibrary())->Execute(u"DROP TABLE Bookmarks"_s);
        DBEngine::OpenDatabase(DefaultLibrary())->Execute(u"ALTER TABLE Items RENAME TO Gone"_s);
        m_prompts->ExpectError();
        m_prompts->ExpectError();
        Action(u"mnuViewRefresh"_s)->trigger();
        QVERIFY(m_window->isVisible());
    }

    void reload_keepsTheWayBack()
    {
        MakeDefaultLibrary();
        Open();
        ClickOn(Child(Root(), 0));
        ClickOn(Child(Root(), 1));
        AddItem(*m_window->CurrentDatabase(), 0, u"added by another"_s);
        Action(u"mnuViewRefresh"_s)->trigger();
        QCOMPARE(Tree()->model()->rowCount(Root()), 3);
        QVERIFY(Action(u"BACK"_s)->isEnabled());
        QVERIFY(!Find<QLabel>(u"sbrMainPanel2"_s)->text().isEmpty()); // of the item, which stays
        Action(u"BACK"_s)->trigger();
        QCOMPARE(Find<QLabel>(u"lblTitle"_s)->text(), u"Äpfel"_s);
    }

    void closing_countsTheDayAndLetsGoOfTheLibrary()
    {
        MakeDefaultLibrary();
        const FixedClock clock(Date::FromParts(2026, 3, 31));
        Library::Open(DefaultLibrary())
            ->Execute(u"UPDATE Properties SET LastOpened = ?"_s, {Date::FromParts(2026, 3, 1)});
        Open();
        QVERIFY(m_window->close());
        QVERIFY(!m_window->CurrentDatabase());
        const auto database = Library::Open(DefaultLibrary());
        QCOMPARE(database->QueryValue(u"SELECT BackupOnExitUsedDays FROM Properties"_s).ToLong(), 1);
        QCOMPARE(database->QueryValue(u"SELECT LastOpened FROM Properties"_s).ToDate(), clock.Now());
    }

    void tipsFile_opensTheTipWindowUnlessSwitchedOff()
    {
        WriteFile(m_home->Path(u"data/Tips.rtf"_s), "{\\rtf1 a tip}");
        Open();
        Find<QCheckBox>(u"chkTipsOnStartup"_s)->click();
        Open();
        QVERIFY(!m_window->findChild<QCheckBox*>(u"chkTipsOnStartup"_s));
    }

    void sessionUndo_keepsACopyOfTheStart()
    {
        MakeDefaultLibrary();
        SaveSetting(SettingsApplication, u"Settings"_s, u"DBEnableSessionUndo"_s, u"True"_s);
        const QString copy = m_home->Path(u"data/KTSStartupBackup.qbd"_s);
        WriteFile(copy, "of the session before");
        Open();
        QCOMPARE(Library::Open(copy)->QueryValue(u"SELECT count(*) FROM Items"_s).ToLong(), 3);
        QVERIFY(m_window->CurrentDatabase());
    }

    void sessionUndo_isOffForASharedLibrary()
    {
        MakeDefaultLibrary();
        Library::Open(m_home->Path(u"data/QBLib.qbd"_s))->Execute(u"UPDATE Properties SET SharedDatabase = -1"_s);
        SaveSetting(SettingsApplication, u"Settings"_s, u"DBEnableSessionUndo"_s, u"True"_s);
        Open();
        QVERIFY(m_window->CurrentDatabase());
        QVERIFY(!QFileInfo::exists(m_home->Path(u"data/KTSStartupBackup.qbd"_s)));
        QVERIFY(!Action(u"mnuUndoThisSessionChanges"_s)->isEnabled());
    }

    void statusBarSetting_isFollowedAndKept()
    {
        SaveSetting(SettingsApplication, u"Settings"_s, u"ShowStatusBar"_s, u"False"_s);
        Open();
        QVERIFY(!m_window->statusBar()->isVisible());
        QVERIFY(!Action(u"mnuViewStatusBar"_s)->isChecked());
        Action(u"mnuViewStatusBar"_s)->trigger();
        QVERIFY(m_window->statusBar()->isVisible());
        QCOMPARE(GetSetting(SettingsApplication, u"Settings"_s, u"ShowStatusBar"_s), u"True"_s);
    }

    void progress_showsTheBarOnlyBetweenItsEnds()
    {
        Open();
        auto* bar = Find<QProgressBar>(u"prgStatus"_s);
        for (const auto& [percent, shown] : {std::pair{0, false}, {1, true}, {99, true}, {100, false}, {101, false}}) {
            m_window->Shell().ShowProgress(u"Working"_s, percent);
            QCOMPARE(bar->isVisible(), shown);
            QCOMPARE(Find<QLabel>(u"sbrMainPanel2"_s)->text(), shown ? u"Working"_s : QString());
            QCOMPARE(bar->minimum(), 1);
            QCOMPARE(bar->maximum(), 100);
        }
    }

    void treeDrawn_isTold()
    {
        Open(false);
        QSignalSpy painted(Find<ctlSmartTreeView>(u"tvCodeItems"_s), &ctlSmartTreeView::TreePainted);
        m_window->show();
        QTRY_COMPARE(painted.size(), 1);
    }

private:
    static QString Stored(const QString& key) { return GetSetting(SettingsApplication, u"Settings"_s, key, u"none"_s); }
    QString DefaultLibrary() const { return m_home->Path(u"data/QBLib.qbd"_s); }

    /// Two items under the root, the second with one below it.
    void MakeDefaultLibrary()
    {
        const auto database = MakeLibrary(DefaultLibrary());
        CCodeItem item;
        item.Initialise(*database, {});
        item.SetTitle(u"Äpfel"_s);
        item.SetDescription(u"about apples"_s);
        item.SetInfo(u"informed"_s);
        item.SetCode(RtfFromPlainText(u"Dim apple\nEnd"_s, CodeFont));
        item.SetNotes(RtfFromPlainText(u"noted"_s, {u"Verdana"_s, 10}));
        item.SetExample(RtfFromPlainText(u"used"_s, CodeFont));
        QVERIFY(item.Commit());
        const qint64 branch = AddItem(*database, 0, u"branch"_s);
        CCodeItem notes;
        notes.Initialise(*database, {});
        notes.SetParentKey(QString::number(branch));
        notes.SetTitle(u"only notes"_s);
        notes.SetNotes(RtfFromPlainText(u"n"_s, {u"Verdana"_s, 10}));
        QVERIFY(notes.Commit());
    }

    void Open(bool show = true)
    {
        m_window = std::make_unique<frmCodeLib>();
        m_window->Form_Load();
        if (show) {
            m_window->show();
            QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
        }
    }

    template <class Widget>
    Widget* Find(const QString& name)
    {
        auto* widget = m_window->findChild<Widget*>(name);
        if (!widget)
            qFatal("no widget %s", qPrintable(name));
        return widget;
    }

    QTreeView* Tree() { return Find<QTreeView>(u"tvwTree"_s); }
    QComboBox* Combo() { return Find<QComboBox>(u"cboDatabase"_s); }
    QAction* Action(const QString& name) { return Find<QAction>(name); }
    QModelIndex Root() { return Tree()->model()->index(0, 0); }
    QModelIndex Child(const QModelIndex& parent, int row) { return Tree()->model()->index(row, 0, parent); }
    static QString Text(const QModelIndex& index) { return index.data().toString(); }

    void ClickOn(const QModelIndex& index)
    {
        Tree()->scrollTo(index); // opens the branches above
        QTest::mouseClick(Tree()->viewport(), Qt::LeftButton, {}, Tree()->visualRect(index).center());
    }

    void OpenFileMenu()
    {
        auto* menu = Find<QMenu>(u"mnuFile"_s);
        QTimer::singleShot(0, menu, &QMenu::close);
        menu->exec(m_window->mapToGlobal(QPoint(0, 0)));
    }

    std::unique_ptr<TemporaryHome> m_home;
    std::unique_ptr<ScriptedPrompts> m_prompts;
    std::unique_ptr<frmCodeLib> m_window;
};

QB_GUI_TEST_MAIN(TestMainWindow)
#include "tst_mainwindow.moc"
