#include "config/CSettings.h"
#include "platform/dao/DBEngine.h"
#include "platform/richtext/RtfPlainText.h"
#include "platform/system/SettingsStore.h"
#include "session/frmCodeLib.h"
#include "store/CCodeItem.h"
#include "support/GuiRun.h"
#include "support/LibraryBuilder.h"
#include "support/ScriptedPrompts.h"
#include "support/TestRun.h"
#include "text/ui/CTextEdit.h"
#include "text/ui/CodeBox.h"
#include "text/ui/LocalPage.h"
#include "text/ui/RichTextBox.h"

#include <QAction>
#include <QBuffer>
#include <QClipboard>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QProgressBar>
#include <QSignalSpy>
#include <QTabWidget>
#include <QTimer>
#include <QToolBar>
#include <QToolButton>
#include <QTreeView>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

namespace {

QByteArray RedPng()
{
    QImage image(4, 4, QImage::Format_RGB32);
    image.fill(Qt::red);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    image.save(&buffer, "PNG");
    return bytes;
}

} // namespace

/// An item is read and written in the main window.
class TestEditing : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_home = std::make_unique<TemporaryHome>();
        m_prompts = std::make_unique<ScriptedPrompts>();
        m_database = MakeLibrary(m_home->Path(u"data/QBLib.qbd"_s), LanguageType::VB);
        m_item = AddItem(*m_database, 0, u"item"_s);
        AddItem(*m_database, 0, u"other"_s);
    }

    void cleanup()
    {
        m_window.reset();
        m_database.reset();
        m_prompts.reset();
        m_home.reset();
    }

    // Texts

    void openedItem_isNotChanged()
    {
        Write(u"Notes"_s, RtfFromPlainText(u"noted"_s, {u"Verdana"_s, 10}));
        Write(u"Code"_s, RtfFromPlainText(u"dim x"_s, CodeFont));
        Open();
        const QString before = Read(u"Code"_s);
        m_database->Execute(u"UPDATE Items SET LastChanged = LastChanged - 1000"_s);
        const QString changed = Read(u"LastChanged"_s);
        ClickOn(0);
        ClickOn(1);
        QCOMPARE(Read(u"Code"_s), before);
        for (int tab = 0; tab < 4; ++tab) { // nor by a look at each tab
            ClickOn(0);
            Tab(tab);
            ClickOn(1);
        }
        QVERIFY(m_window->close());
        QCOMPARE(Read(u"Code"_s), before);
        QCOMPARE(Read(u"LastChanged"_s), changed);
    }

    void typedText_isSavedWhenTheItemIsLeft()
    {
        Open();
        ClickOn(0);
        Tab(1);
        QTest::keyClicks(Notes(), u"remember"_s);
        QCOMPARE(TabIcon(1), true);
        Tab(0);
        QTest::keyClicks(Code(), u"dim x "_s);
        ClickOn(1);
        QCOMPARE(PlainTextFromRtf(Read(u"Notes"_s)), u"remember"_s);
        QCOMPARE(PlainTextFromRtf(Read(u"Code"_s)), u"Dim x "_s); // coloured on its way
        QVERIFY(Read(u"Code"_s).contains(u"\\blue128"_s));
        QVERIFY(Read(u"Notes"_s).contains(u"Verdana"_s));
        ClickOn(0);
        QCOMPARE(Code()->Text(), u"Dim x "_s);
    }

    void allNotesDeleted_storeTheEmptyText()
    {
        Write(u"Notes"_s, RtfFromPlainText(u"noted"_s, {u"Verdana"_s, 10}));
        Open();
        ClickOn(0);
        QCOMPARE(TabIcon(1), true);
        Notes()->selectAll();
        QTest::keyClick(Notes(), Qt::Key_Delete);
        QCOMPARE(TabIcon(1), false);
        Action(u"mnuSaveItem"_s)->trigger();
        QCOMPARE(Read(u"Notes"_s), QString());
    }

    void unwantedChange_isDropped_data()
    {
        QTest::addColumn<bool>("yes");
        QTest::newRow("yes") << true;
        QTest::newRow("no") << false;
    }

    void unwantedChange_isDropped()
    {
        QFETCH(bool, yes);
        Open();
        Action(u"mnuAutoSaveItem"_s)->trigger();
        QVERIFY(!Action(u"SAVE"_s)->isChecked());
        ClickOn(0);
        QTest::keyClicks(Code(), u"text"_s);
        m_prompts->ExpectMsgBox(u"Save Item"_s, yes ? MsgBoxResult::Yes : MsgBoxResult::No);
        ClickOn(1);
        QCOMPARE(m_prompts->Messages.last().Text, u"This item has been changed. Do you wish to save the changes?"_s);
        ClickOn(0);
        QCOMPARE(Code()->Text(), yes ? u"text"_s : QString());
    }

    void closing_asksOnceAndClosesEitherWay()
    {
        Open();
        Action(u"mnuAutoSaveItem"_s)->trigger();
        ClickOn(0);
        QTest::keyClicks(Code(), u"text"_s);
        m_prompts->ExpectMsgBox(u"Save Item"_s, MsgBoxResult::No);
        QVERIFY(m_window->close());
        QCOMPARE(Read(u"Code"_s), QString());
        QCOMPARE(GetSetting(SettingsApplication, u"Settings"_s, u"AutoSave"_s), u"False"_s);
        Open();
        QVERIFY(!Action(u"mnuAutoSaveItem"_s)->isChecked());
    }

    void saveButton_savesByOneClickAndSwitchesByTwo()
    {
        Open();
        QVERIFY(Action(u"SAVE"_s)->isChecked());
        ClickOn(0);
        QTest::keyClicks(Code(), u"text"_s);
        auto* button = m_window->findChild<QToolBar*>(u"tlbMain"_s)->widgetForAction(Action(u"SAVE"_s));
        QTest::mouseClick(button, Qt::LeftButton);
        QTRY_COMPARE(PlainTextFromRtf(Read(u"Code"_s)), u"text"_s);
        QTRY_VERIFY(Action(u"SAVE"_s)->isChecked());
        QTest::mouseClick(button, Qt::LeftButton);
        QTest::mouseClick(button, Qt::LeftButton);
        QTRY_VERIFY(!Action(u"mnuAutoSaveItem"_s)->isChecked());
        QVERIFY(!Action(u"SAVE"_s)->isChecked());
    }

    void itemThatCanNotBeSaved_staysIfTheUserWants()
    {
        Open();
        ClickOn(0);
        QTest::keyClicks(Code(), u"precious"_s);
        m_database->Execute(u"DELETE FROM Items WHERE ID = ?"_s, {m_item});
        for (const auto answer : {MsgBoxResult::No, MsgBoxResult::Yes}) {
            m_prompts->ExpectError();
            m_prompts->ExpectMsgBox(u"Save Item"_s, answer);
            ClickOn(1);
            const bool stays = answer == MsgBoxResult::No;
            QCOMPARE(Tree()->currentIndex().row(), stays ? 0 : 1);
            QCOMPARE(Code()->Text(), stays ? u"precious"_s : QString());
        }
    }

    void windowWithTextThatCanNotBeSaved_staysOpenIfTheUserWants()
    {
        Open();
        ClickOn(0);
        QTest::keyClicks(Code(), u"precious"_s);
        m_database->Execute(u"CREATE TRIGGER refuse BEFORE UPDATE ON Items BEGIN SELECT RAISE(ABORT, 'no room'); END"_s);
        m_prompts->ExpectError();
        m_prompts->ExpectMsgBox(u"Save Item"_s, MsgBoxResult::No);
        QVERIFY(!m_window->close());
        QCOMPARE(Code()->Text(), u"precious"_s);
        m_database->Execute(u"DROP TRIGGER refuse"_s); // there is room again
        Action(u"mnuSaveItem"_s)->trigger();
        QCOMPARE(PlainTextFromRtf(Read(u"Code"_s)), u"precious"_s);
        QVERIFY(m_window->close());
    }

    void itemThatWaitsForADecision_isAskedAbout_data()
    {
        QTest::addColumn<bool>("inChild");
        QTest::addColumn<bool>("yes");
        for (const bool inChild : {false, true}) {
            for (const bool yes : {false, true})
                QTest::addRow("%s, %s", inChild ? "child" : "mother", yes ? "yes" : "no") << inChild << yes;
        }
    }

    void itemThatWaitsForADecision_isAskedAbout()
    {
        QFETCH(bool, inChild);
        QFETCH(bool, yes);
        inChild ? MakeChild(*m_database, m_home->Path(u"mother.qbd"_s), Date()) : MakeMother(*m_database, Date());
        m_database->Execute(u"UPDATE Items SET LastChanged = 0 WHERE ID = ?"_s, {m_item});
        Open();
        ClickOn(0);
        QTest::keyClicks(Code(), u"x"_s);
        const QString status = inChild ? u"Conflicting"_s : u"Deleted"_s;
        m_prompts->ExpectMsgBox(u"Update this item and reset its '%1' status?"_s.arg(status), yes ? MsgBoxResult::Yes : MsgBoxResult::No);
        Action(u"mnuSaveItem"_s)->trigger();
        const QString asked = m_prompts->Messages.last().Text;
        QVERIFY(asked.startsWith(inChild ? u"The item you have just updated is currently in conflict with its copy in mother database. \r\n"_s
                                         : u"The item you have just updated is marked for deletion. \r\n"_s));
        QVERIFY(asked.endsWith(u"point. \r\nDo you wish to continue?"_s));
        QCOMPARE(Read(u"LastChanged"_s) == u"0"_s, !yes);
        QCOMPARE(PlainTextFromRtf(Read(u"Code"_s)), yes ? u"x"_s : QString());
        ClickOn(1); // auto-save asks nothing
        QCOMPARE(PlainTextFromRtf(Read(u"Code"_s)), u"x"_s);
    }

    void newItem_hasNothingOfTheOneBefore()
    {
        Write(u"Code"_s, RtfFromPlainText(u"x"_s, CodeFont));
        m_database->Execute(u"UPDATE Items SET HTMLPage = -1 WHERE ID = ?"_s, {m_item});
        Open();
        ClickOn(0);
        QVERIFY(TabIcon(0));
        QVERIFY(m_window->findChild<QLabel*>(u"lblAttachments"_s)->isVisible());
        Action(u"NEW"_s)->trigger();
        QVERIFY(!TabIcon(0));
        QVERIFY(!m_window->findChild<QLabel*>(u"lblAttachments"_s)->isVisible());
        QTest::keyClick(m_window->findChild<QLineEdit*>(u"txtLabelEdit"_s), Qt::Key_Escape);
        QVERIFY(Action(u"mnuRename"_s)->isEnabled());
    }

    void newItem_whileATitleIsTyped_takesThatTitleFirst()
    {
        Open();
        ClickOn(0);
        Action(u"mnuRename"_s)->trigger();
        m_window->findChild<QLineEdit*>(u"txtLabelEdit"_s)->setText(u"typed title"_s);
        Action(u"mnuAddCode"_s)->trigger();
        QCOMPARE(Child(0).data().toString(), u"typed title"_s);
        QCoreApplication::processEvents();
        QCOMPARE(m_window->findChild<QLabel*>(u"lblTitle"_s)->text(), u"New Code item"_s);
        QCOMPARE(Tree()->currentIndex().data().toString(), u"New Code item"_s);
    }

    void colorize_paintsTheVisibleTextAndWaitsForTheNextChange()
    {
        Open();
        ClickOn(0);
        QVERIFY(!Action(u"COLORIZE"_s)->isEnabled());
        QTest::keyClicks(Code(), u"dim x 'note"_s);
        QVERIFY(Action(u"COLORIZE"_s)->isEnabled());
        Action(u"COLORIZE"_s)->trigger();
        QVERIFY(!Action(u"COLORIZE"_s)->isEnabled());
        QCOMPARE(Code()->Text(), u"Dim x 'note"_s);
        QCOMPARE(Code()->SelStart(), 11);
        Code()->SetSelStart(0);
        Code()->SetSelLength(3);
        QCOMPARE(Code()->SelColor(), std::optional(quint32(0x800000)));
        Code()->Undo();
        QCOMPARE(Code()->Text(), u"dim x 'note"_s);
        QVERIFY(Action(u"COLORIZE"_s)->isEnabled());
    }

    void openedItem_isColouredWhereTheSettingSays()
    {
        SaveSetting(SettingsApplication, u"Settings"_s, u"AutoColorizeWhenItemOpened"_s, u"True"_s);
        Write(u"Code"_s, RtfFromPlainText(u"dim x "_s, CodeFont));
        Open();
        ClickOn(0);
        QCOMPARE(Code()->Text(), u"Dim x "_s);
        ClickOn(1); // it counts as changed
        QCOMPARE(PlainTextFromRtf(Read(u"Code"_s)), u"Dim x "_s);
        QCOMPARE(Read(u"Example"_s), QString());
    }

    void longText_showsProgress()
    {
        Open();
        ClickOn(0);
        QString text;
        for (int i = 0; i < 400; ++i)
            text += u"dim x as long ' "_s + QString::number(i) + u"\r\n"_s;
        QGuiApplication::clipboard()->setText(text);
        Code()->Paste();
        auto* bar = m_window->findChild<QProgressBar*>(u"prbColorize"_s);
        QList<int> values;
        connect(bar, &QProgressBar::valueChanged, this, [&](int value) { values << value; });
        Action(u"mnuSaveItem"_s)->trigger();
        QVERIFY(values.size() > 15);
        QVERIFY(!m_window->findChild<QWidget*>(u"picColorize"_s)->isVisible());
        QCOMPARE(m_window->findChild<QLabel*>(u"lblColorize"_s)->text(), u"Colorizing"_s);
    }

    // The welcome page

    void welcomePage_isTheUsersOwn()
    {
        Open();
        auto* page = m_window->findChild<LocalPage*>(u"webWelcome"_s);
        QVERIFY(page->toPlainText().contains(u"Keep something"_s));
        const QString folder = m_home->Path(u"data/QBLib_HTML"_s) + u'/';
        QVERIFY(QFileInfo::exists(folder + u"default2.htm"_s));
        WriteFile(m_home->Path(u"data/secret.png"_s), RedPng());
        WriteFile(folder + u"mine.png"_s, RedPng());
        WriteFile(folder + u"default.htm"_s,
                  "<p>my page</p><img src='mine.png'><img src='../secret.png'><img src='file:///etc/hostname'>"
                  "<a href='https://example.org'>out</a><script>document.write('script')</script>");
        ClickOn(0);
        Tree()->setCurrentIndex(Root());
        QVERIFY(page->toPlainText().startsWith(u"my page"_s));
        QVERIFY(!page->toPlainText().contains(u"script"_s));
        const auto isLoaded = [page](const char* name) {
            const QVariant loaded = page->document()->resource(QTextDocument::ImageResource, QUrl(QLatin1StringView(name)));
            return !loaded.toByteArray().isEmpty() || !loaded.value<QPixmap>().isNull() || !loaded.value<QImage>().isNull();
        };
        QVERIFY(isLoaded("mine.png"));
        for (const char* name : {"../secret.png", "file:///etc/hostname", "/etc/hostname", "https://example.org/x.png", "sub/../../secret.png"})
            QVERIFY2(!isLoaded(name), name);
        disconnect(page, &LocalPage::AddressActivated, nullptr, nullptr); // nothing is to be opened
        QSignalSpy activated(page, &LocalPage::AddressActivated);
        Q_EMIT page->anchorClicked(QUrl(u"https://example.org"_s));
        Q_EMIT page->anchorClicked(QUrl(u"file:///etc/passwd"_s));
        QCOMPARE(activated.count(), 1);
    }

    // Finding and looks

    void findBar_goesFromPlaceToPlace()
    {
        Write(u"Code"_s, RtfFromPlainText(u"one two\r\nOne onetwo\r\n"_s, CodeFont));
        Open();
        ClickOn(0);
        Action(u"mnuFindInText"_s)->trigger();
        auto* line = m_window->findChild<QLineEdit*>(u"txtFindText"_s);
        auto* count = m_window->findChild<QLabel*>(u"lblFound"_s);
        QVERIFY(line->isVisible());
        line->setText(u"one"_s);
        QCOMPARE(count->text(), u"3 places"_s);
        QCOMPARE(Code()->extraSelections().size(), 3);
        QTest::keyClick(line, Qt::Key_Return);
        QCOMPARE(Code()->SelStart(), 0);
        QCOMPARE(count->text(), u"1 of 3"_s);
        QTest::keyClick(line, Qt::Key_Return);
        QCOMPARE(Code()->SelStart(), 9);
        QTest::keyClick(line, Qt::Key_Return, Qt::ShiftModifier);
        Action(u"mnuFindPrevious"_s)->trigger();
        QCOMPARE(Code()->SelStart(), 13); // around the begin
        QCOMPARE(count->text(), u"3 of 3"_s);
        Action(u"mnuFindNext"_s)->trigger();
        QCOMPARE(Code()->SelStart(), 0); // and around the end
        m_window->findChild<QToolButton*>(u"chkMatchCase"_s)->click();
        QCOMPARE(count->text(), u"2 places"_s);
        m_window->findChild<QToolButton*>(u"chkWholeWord"_s)->click();
        QCOMPARE(count->text(), u"1 place"_s);
        TakePicture(*m_window, u"find"_s);
        line->setText(u"nowhere"_s);
        QCOMPARE(count->text(), u"Not found"_s);
        QTest::keyClick(line, Qt::Key_Escape);
        QVERIFY(!line->isVisible());
        QVERIFY(Code()->extraSelections().isEmpty());
        ClickOn(1);
        QCOMPARE(PlainTextFromRtf(Read(u"Code"_s)), u"one two\r\nOne onetwo\r\n"_s); // looking changes nothing
    }

    void line_isGoneToByItsNumber()
    {
        Write(u"Code"_s, RtfFromPlainText(QString(u"x\r\n"_s).repeated(500), CodeFont));
        Open();
        ClickOn(0);
        m_prompts->ExpectInputBox(u"Go to Line"_s, u"300"_s);
        Action(u"mnuGoToLine"_s)->trigger();
        QCOMPARE(Code()->LineOfCaret(), 300);
        QCOMPARE(m_prompts->InputTexts.last(), u"Line (1 to 501):"_s);
        for (const auto& answer : {std::optional(u"9999"_s), std::optional(u"x"_s), std::optional<QString>()}) {
            m_prompts->ExpectInputBox(u"Go to Line"_s, answer);
            Action(u"mnuGoToLine"_s)->trigger();
            QCOMPARE(Code()->LineOfCaret(), 501);
        }
        TakePicture(*m_window, u"line-numbers"_s);
    }

    void looksOfTexts_areKept()
    {
        Write(u"Code"_s, RtfFromPlainText(u"some code"_s, CodeFont));
        Open();
        ClickOn(0);
        QVERIFY(Code()->LineNumbers());
        const int height = Code()->cursorRect().height();
        for (int i = 0; i < 5; ++i)
            Action(u"mnuViewZoomIn"_s)->trigger();
        QVERIFY(Code()->cursorRect().height() > height * 13 / 10);
        QCOMPARE(Code()->SelFontSize(), std::optional(10.0)); // the text has its own size still
        TakePicture(*m_window, u"zoomed"_s);
        Action(u"mnuViewLineNumbers"_s)->trigger();
        Action(u"mnuViewWordWrap"_s)->trigger();
        QVERIFY(!Code()->LineNumbers());
        QVERIFY(m_window->close());
        QCOMPARE(PlainTextFromRtf(Read(u"Code"_s)), u"some code"_s);
        QCOMPARE(GetSetting(SettingsApplication, u"Settings"_s, u"ViewZoom"_s), u"150"_s);
        Open();
        ClickOn(0);
        QVERIFY(!Code()->LineNumbers());
        QCOMPARE(Code()->lineWrapMode(), QPlainTextEdit::WidgetWidth);
        QVERIFY(Code()->cursorRect().height() > height * 13 / 10);
        Action(u"mnuViewZoomReset"_s)->trigger();
        QCOMPARE(Code()->cursorRect().height(), height);
    }

    // What is left when the program ends without a word

    void unsavedText_isOfferedAtTheNextStart_data()
    {
        QTest::addColumn<bool>("wanted");
        QTest::newRow("wanted") << true;
        QTest::newRow("unwanted") << false;
    }

    void unsavedText_isOfferedAtTheNextStart()
    {
        QFETCH(bool, wanted);
        Write(u"Notes"_s, RtfFromPlainText(u"noted"_s, {u"Verdana"_s, 10}));
        TypeAndDie(u"precious"_s);
        m_prompts->ExpectMsgBox(u"Unsaved Changes"_s, wanted ? MsgBoxResult::Yes : MsgBoxResult::No);
        Open();
        QVERIFY(m_prompts->Messages.last().Text.contains(u"'item'"_s));
        if (wanted) {
            QCOMPARE(Tree()->currentIndex(), Child(0));
            QCOMPARE(Code()->Text(), u"precious"_s);
            QCOMPARE(Notes()->Text(), u"noted"_s);
            ClickOn(1);
        }
        QCOMPARE(PlainTextFromRtf(Read(u"Code"_s)), wanted ? u"precious"_s : QString());
        QVERIFY(UnsavedFiles().isEmpty());
        Open(); // and is not offered again
    }

    void unsavedText_ofAnOlderState_isNotOffered()
    {
        TypeAndDie(u"precious"_s);
        m_database->Execute(u"UPDATE Items SET LastChanged = LastChanged + 1 WHERE ID = ?"_s, {m_item});
        Open();
        QVERIFY(UnsavedFiles().isEmpty());
        TypeAndDie(u"more"_s);
        m_database->Execute(u"DELETE FROM Items WHERE ID = ?"_s, {m_item});
        Open();
        QVERIFY(UnsavedFiles().isEmpty());
    }

    void recoveredText_hasItsSections()
    {
        Open();
        ClickOn(0);
        CodeButton(u"BAS_MODULE"_s)->trigger();
        QTRY_COMPARE(UnsavedFiles().size(), 1);
        m_window.reset();
        m_prompts->ExpectMsgBox(u"Unsaved Changes"_s, MsgBoxResult::Yes);
        Open();
        QCOMPARE(CodeButton(u"BAS_MODULE"_s)->property("Tag").toString(), u"GOTO"_s);
        ClickOn(1);
        QCOMPARE(Read(u"CodeHeaders"_s), u"4"_s);
    }

    void savedOrDroppedText_leavesNothingToOffer()
    {
        Open();
        ClickOn(0);
        QTest::keyClicks(Code(), u"text"_s);
        QTRY_COMPARE(UnsavedFiles().size(), 1);
        Action(u"mnuSaveItem"_s)->trigger();
        QVERIFY(UnsavedFiles().isEmpty());
        QTest::keyClicks(Code(), u"more"_s);
        QTRY_COMPARE(UnsavedFiles().size(), 1);
        QVERIFY(m_window->close());
        QVERIFY(UnsavedFiles().isEmpty());
    }

    // Sections

    void sectionButton_addsGoesAndCopies()
    {
        Write(u"Code"_s, RtfFromPlainText(u"x = 1"_s, CodeFont));
        Open();
        ClickOn(0);
        QAction* button = CodeButton(u"BAS_MODULE"_s);
        QCOMPARE(button->toolTip(), u"Add Code Module Header"_s);
        button->trigger();
        const QString line = u"'###############      Code Module Code      ###############\r\n"_s;
        QCOMPARE(Code()->Text(), u"x = 1\r\n\r\n\r\n"_s + line);
        QCOMPARE(button->property("Tag").toString(), u"GOTO"_s);
        QTest::keyClicks(Code(), u"y = 2"_s);
        QCOMPARE(Code()->Text(), u"x = 1\r\n\r\n\r\n"_s + line + u"y = 2"_s);
        QCOMPARE(button->toolTip(), u"Copy Code Module's Code to Clipboard"_s); // the caret is in it
        Code()->SetSelStart(0);
        QCOMPARE(button->toolTip(), u"Go to Code Module Code"_s);
        button->trigger();
        QCOMPARE(Code()->SelStart(), Code()->Text().indexOf(u"Code Module Code"_s));
        Code()->SetSelStart(Code()->Text().size() - 4);
        button->trigger();
        QCOMPARE(QGuiApplication::clipboard()->text(), u"y = 2"_s);
        ClickOn(1);
        QVERIFY(Read(u"Code"_s).contains(u"\\protect"_s));
        QCOMPARE(Read(u"CodeHeaders"_s), u"4"_s);
        ClickOn(0);
        QCOMPARE(button->property("Tag").toString(), u"GOTO"_s);
        TakePicture(*m_window, u"section"_s);
    }

    void headerThatIsGone_isTakenOffTheItem()
    {
        m_database->Execute(u"UPDATE Items SET CodeHeaders = 4 WHERE ID = ?"_s, {m_item});
        Write(u"Code"_s, RtfFromPlainText(u"x = 1"_s, CodeFont));
        Open();
        ClickOn(0);
        CodeButton(u"BAS_MODULE"_s)->trigger();
        QCOMPARE(CodeButton(u"BAS_MODULE"_s)->property("Tag").toString(), u"ADD"_s);
        ClickOn(1);
        QCOMPARE(Read(u"CodeHeaders"_s), u"0"_s);
    }

    void sectionMenu_addsAndDeletes()
    {
        Open();
        ClickOn(0);
        OpenMenu(u"mnuEdit"_s);
        QCOMPARE(Action(u"mnuEditAddGlobalDeclar"_s)->text(), u"Add &Global Declaration Section"_s);
        Action(u"mnuEditAddGlobalDeclar"_s)->trigger();
        QVERIFY(Code()->Text().startsWith(u"'###############     Global Declarations     ###############\r\n"_s));
        OpenMenu(u"mnuEdit"_s);
        QCOMPARE(Action(u"mnuEditAddGlobalDeclar"_s)->text(), u"Delete &Global Declaration Section"_s);
        Action(u"mnuEditAddGlobalDeclar"_s)->trigger();
        QCOMPARE(Code()->Text(), QString());
    }

    void keysOnAHeader_askOrDoNothing_data()
    {
        QTest::addColumn<int>("answer");
        QTest::addColumn<QString>("text");
        const QString line = u"'###############      Code Module Code      ###############\r\n"_s;
        QTest::newRow("yes") << int(MsgBoxResult::Yes) << u"x = 1\r\n\r\n"_s;
        QTest::newRow("no") << int(MsgBoxResult::No) << u"x = 1\r\n\r\ny = 2"_s;
        QTest::newRow("cancel") << int(MsgBoxResult::Cancel) << u"x = 1\r\n\r\n\r\n"_s + line + u"y = 2"_s;
    }

    void keysOnAHeader_askOrDoNothing()
    {
        QFETCH(int, answer);
        QFETCH(QString, text);
        Write(u"Code"_s, RtfFromPlainText(u"x = 1"_s, CodeFont));
        Open();
        ClickOn(0);
        CodeButton(u"BAS_MODULE"_s)->trigger();
        QTest::keyClicks(Code(), u"y = 2"_s);
        const QString whole = Code()->Text();
        Code()->SetSelStart(whole.indexOf(u"'###"_s));
        Code()->SetSelLength(59);
        QTest::keyClicks(Code(), u"z"_s);
        QTest::keyClick(Code(), Qt::Key_Return);
        QCOMPARE(Code()->Text(), whole);
        m_prompts->ExpectMsgBox(u"Section Delete"_s, MsgBoxResult(answer));
        QTest::keyClick(Code(), Qt::Key_Backspace);
        QCOMPARE(m_prompts->Messages.last().Text,
                 u"Do you wish to delete the whole section?\r\n\r\nIf you select no, just header will be deleted."_s);
        QCOMPARE(Code()->Text(), text);
    }

    void textBehindAHeader_isOrdinary()
    {
        Open();
        ClickOn(0);
        CodeButton(u"BAS_MODULE"_s)->trigger();
        QInputMethodEvent commit;
        commit.setCommitString(u"\u4f60"_s);
        QCoreApplication::sendEvent(Code(), &commit);
        QTest::keyClicks(Code(), u"x"_s);
        Code()->SetSelStart(Code()->Text().size() - 2);
        Code()->SetSelLength(2);
        QCOMPARE(Code()->SelBold(), std::optional(false));
        QCOMPARE(Code()->SelProtected(), std::optional(false));
        QCOMPARE(Code()->SelColor(), std::optional(quint32(0)));
    }

    void tabAndBackspace_moveByIndents()
    {
        Open();
        ClickOn(0);
        Code()->setFocus();
        QTest::keyClick(Code(), Qt::Key_Tab);
        QTest::keyClick(Code(), Qt::Key_Tab);
        QCOMPARE(Code()->Text(), QString(8, u' '));
        QTest::keyClick(Code(), Qt::Key_Backspace);
        QCOMPARE(Code()->Text(), QString(4, u' '));
        QTest::keyClicks(Code(), u"x"_s);
        QTest::keyClick(Code(), Qt::Key_Backspace);
        QCOMPARE(Code()->Text(), QString(4, u' '));
        QTest::keyClick(Code(), Qt::Key_Backspace);
        QCOMPARE(Code()->Text(), QString());
    }

    void newLine_isIndentedAsTheOneBefore()
    {
        Open();
        ClickOn(0);
        QTest::keyClicks(Code(), u"  if x"_s);
        QTest::keyClick(Code(), Qt::Key_Return);
        QTest::keyClicks(Code(), u"y"_s);
        QCOMPARE(Code()->Text(), u"  if x\r\n  y"_s);
        QTest::keyClick(Code(), Qt::Key_Return, Qt::ShiftModifier); // not so
        QTest::keyClicks(Code(), u"z"_s);
        QTest::keyClick(Code(), Qt::Key_Return);
        QCOMPARE(Code()->Text(), u"  if x\r\n  y\r\nz\r\n"_s);
        Code()->SetSelStart(1); // within the indent
        QTest::keyClick(Code(), Qt::Key_Return);
        QVERIFY(Code()->Text().startsWith(u" \r\n  if x"_s));
    }

    void copyAll_copiesThePlainText()
    {
        Write(u"Code"_s, RtfFromPlainText(u"one\r\ntwo"_s, CodeFont));
        Open();
        ClickOn(0);
        CodeButton(u"ALLTOCLIPBOARD"_s)->trigger();
        QCOMPARE(QGuiApplication::clipboard()->text(), u"one\ntwo"_s);
    }

    // Formats

    void formatToolbar_followsTheSelectionAndChangesIt()
    {
        Open();
        ClickOn(0);
        Tab(1);
        QVERIFY(m_window->findChild<QToolBar*>(u"tlbTextFormat"_s)->isVisible());
        QTest::keyClicks(Notes(), u"one two"_s);
        Notes()->SetSelStart(0);
        Notes()->SetSelLength(3);
        for (const QString& key : {u"BOLD"_s, u"ITALIC"_s, u"UNDERLINE"_s, u"BULLETS"_s, u"ALIGN_CENTER"_s})
            Button(key)->trigger();
        QCOMPARE(Notes()->SelBold(), std::optional(true));
        QCOMPARE(Notes()->SelItalic(), std::optional(true));
        QCOMPARE(Notes()->SelUnderline(), std::optional(true));
        QCOMPARE(Notes()->SelBullet(), std::optional(true));
        QCOMPARE(Notes()->BulletIndent(), 300);
        QCOMPARE(Notes()->SelAlignment(), std::optional(TextAlignment::Center));
        Notes()->SetSelStart(6);
        QVERIFY(!Button(u"BOLD"_s)->isChecked());
        QVERIFY(Button(u"BULLETS"_s)->isChecked());
        Notes()->SetSelStart(2);
        QVERIFY(Button(u"BOLD"_s)->isChecked());
        QVERIFY(Button(u"ALIGN_CENTER"_s)->isChecked());
        Button(u"BOLD"_s)->trigger();
        QVERIFY(!Button(u"BOLD"_s)->isChecked());
        Button(u"GROW"_s)->trigger();
        QCOMPARE(Notes()->SelIndent(), std::optional(200));
        Button(u"SHRINK"_s)->trigger();
        QCOMPARE(Notes()->SelIndent(), std::optional(0));
        QCOMPARE(m_window->findChild<QComboBox*>(u"cboFont"_s)->currentText(), u"Verdana"_s);
        QCOMPARE(m_window->findChild<QComboBox*>(u"cboFontSize"_s)->currentText(), u"10"_s);
        Tab(0);
        QVERIFY(!m_window->findChild<QToolBar*>(u"tlbTextFormat"_s)->isVisible());
        QVERIFY(m_window->findChild<QToolBar*>(u"tbrCode"_s)->isVisible());
    }

    void fontLists_setFontAndSize()
    {
        Open();
        ClickOn(0);
        Tab(1);
        QTest::keyClicks(Notes(), u"text"_s);
        Notes()->selectAll();
        auto* fonts = m_window->findChild<QComboBox*>(u"cboFont"_s);
        QVERIFY(fonts->count() > 1);
        Q_EMIT fonts->textActivated(fonts->itemText(0));
        Q_EMIT m_window->findChild<QComboBox*>(u"cboFontSize"_s)->textActivated(u"18"_s);
        QCOMPARE(Notes()->SelFontName(), std::optional(fonts->itemText(0)));
        QCOMPARE(Notes()->SelFontSize(), std::optional(18.0));
    }

    void formatColours_areThoseOfTheSettings()
    {
        Open();
        ClickOn(0);
        Tab(1);
        QTest::keyClicks(Notes(), u"text"_s);
        Notes()->selectAll();
        QTest::keyClick(m_window.get(), Qt::Key_2, Qt::ControlModifier);
        QCOMPARE(Notes()->SelColor(), std::optional(quint32(0xff0000)));
        QTest::keyClick(m_window.get(), Qt::Key_1, Qt::ControlModifier);
        QCOMPARE(Notes()->SelColor(), std::optional(quint32(0x0000ff)));
        auto* button = qobject_cast<QToolButton*>(m_window->findChild<QToolBar*>(u"tlbTextFormat"_s)->widgetForAction(Button(u"COLOUR1"_s)));
        for (QAction* entry : button->menu()->actions()) {
            if (entry->property("key") == u"GREEN"_s)
                entry->trigger();
        }
        QCOMPARE(Notes()->SelColor(), std::optional(quint32(0x008000)));
        QCOMPARE(GetSetting(SettingsApplication, u"Settings"_s, u"DefaultColor1"_s), u"32768"_s);
    }

    void editMenu_fitsTheTabAndNamesTheSteps()
    {
        Open();
        ClickOn(0);
        QTest::keyClicks(Code(), u"text"_s);
        OpenMenu(u"mnuEdit"_s);
        QVERIFY(m_window->findChild<QMenu*>(u"mnuEditCode"_s)->menuAction()->isVisible());
        QVERIFY(!m_window->findChild<QMenu*>(u"mnuFormat"_s)->menuAction()->isVisible());
        QCOMPARE(Action(u"mnuUndo"_s)->text(), u"&Undo Typing"_s);
        QVERIFY(!Action(u"mnuRedo"_s)->isEnabled());
        QVERIFY(!Action(u"mnuCut"_s)->isEnabled());
        Action(u"mnuUndo"_s)->trigger();
        QCOMPARE(Code()->Text(), QString());
        OpenMenu(u"mnuEdit"_s);
        QCOMPARE(Action(u"mnuRedo"_s)->text(), u"&Redo Typing"_s);
        Tab(1);
        OpenMenu(u"mnuEdit"_s);
        QVERIFY(m_window->findChild<QMenu*>(u"mnuFormat"_s)->menuAction()->isVisible());
        for (const QString& name : {u"mnuBoldItem"_s, u"mnuBullet"_s, u"mnuAlignmentLeft"_s, u"mnuAlignmentCenter"_s, u"mnuAlignmentRight"_s,
                                    u"mnuIncreaseIndent"_s, u"mnuDecreaseIndent"_s, u"mnuFontItem"_s, u"mnuFontSizeItem"_s,
                                    u"mnuFontColor1"_s, u"mnuFontColor2"_s, u"mnuColorItem"_s})
            QVERIFY2(m_window->findChild<QAction*>(name), qPrintable(name));
    }

    void undoWords_areThoseOfTheirNumbers()
    {
        const QString words[] = {u"Last Action"_s, u"Typing"_s, u"Delete"_s, u"Drag Drop"_s, u"Cut"_s, u"Paste"_s, QString()};
        for (int number = 0; number < 7; ++number)
            QCOMPARE(CTextEdit::Translated(UndoType(number)), words[number]);
    }

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
        QCOMPARE(m_database->QueryValue(u"SELECT Title FROM Items WHERE ParentID = ?"_s, {m_item}).ToText(), u"child"_s);
        QTest::keyClicks(Code(), u"x"_s);
        QTest::keyClick(m_window.get(), Qt::Key_S, Qt::ControlModifier);
        QCOMPARE(PlainTextFromRtf(m_database->QueryValue(u"SELECT Code FROM Items WHERE ParentID = ?"_s, {m_item}).ToText()), u"x"_s);
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
        QCOMPARE(m_database->QueryValue(u"SELECT Title FROM Items WHERE ID = ?"_s, {m_item}).ToText(), QString(254, u'a'));
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
        QVERIFY(deleted.contains(u"mnuKeepItem"_s) && !deleted.contains(u"mnuAddCode"_s) && deleted.contains(u"mnuDeleteCode"_s));
        const QStringList conflict = shown(Child(2), u"conflict"_s);
        QVERIFY(!conflict.contains(u"mnuKeepItem"_s) && !conflict.contains(u"mnuDeleteCode"_s) && conflict.contains(u"mnuAddCode"_s));
        Tree()->expand(Child(1));
        const QStringList orphan = shown(Tree()->model()->index(0, 0, Child(1)), u"orphan"_s);
        QVERIFY(orphan.contains(u"mnuDeleteCode"_s) && !orphan.contains(u"mnuAddCode"_s) && !orphan.contains(u"mnuNewSiblingItem"_s));
        QVERIFY(m_window->findChild<QMenu*>(u"mnuTools"_s)->menuAction()->isVisible());
        Tree()->setCurrentIndex(Child(0));
        Action(u"mnuKeepItem"_s)->trigger();
        QVERIFY(Read(u"LastChanged"_s) != u"0"_s);
    }

    // Pictures for people to look at

    void pictures()
    {
        const QString notes = u"{\\rtf1{\\fonttbl{\\f0 Verdana;}}{\\colortbl;\\red255\\green0\\blue0;\\red0\\green0\\blue255;}\\f0\\fs28\\b How to read a file\\b0\\fs20\\par "
                              "Three things \\cf1 matter\\cf0  here, see {\\field{\\*\\fldinst{HYPERLINK \"https://example.org\"}}{\\fldrslt the page}}:\\par "
                              "{\\pntext\\'b7\\tab}{\\*\\pn\\pnlvlblt{\\pntxtb\\bullet}}\\fi-300\\li300 open it \\i binary\\i0\\par"
                              "{\\pntext\\'b7\\tab}check \\ul every\\ulnone  result\\par"
                              "\\pard{\\*\\pn\\pnlvlbody\\pndec\\pnstart1{\\pntxta.}}\\fi-300\\li600 close it\\par look at \\cf2 errno\\cf0\\par"
                              "\\pard\\qc centred \\highlight1 marked\\highlight0\\par\\pard\\qr right}"_s;
        Write(u"Notes"_s, notes);
        Write(u"Code"_s, RtfFromPlainText(u"' Works out a price\r\nPrivate Function Price(ByVal Count As Long) As Double\r\n"
                                          "    Dim total As Double, name As String\r\n    name = \"price of \" & CStr(Count)\r\n"
                                          "    If Count > 0 Then ' plain\r\n        total = Count * 2.5\r\n    End If\r\n"
                                          "    Price = total\r\nEnd Function\r\n"_s, CodeFont));
        for (const bool dark : {false, true}) {
            const QString suffix = dark ? u"-dark"_s : QString();
            const QPalette before = QApplication::palette();
            if (dark)
                QApplication::setPalette(DarkPalette());
            Open();
            m_window->resize(1000, 640);
            ClickOn(0);
            Action(u"mnuColorize"_s)->setEnabled(true);
            Action(u"mnuColorize"_s)->trigger();
            TakePicture(*m_window, u"code"_s + suffix);
            Tab(1);
            TakePicture(*m_window, u"notes"_s + suffix);
            m_window.reset();
            QApplication::setPalette(before);
        }
    }

private:
    static QPalette DarkPalette()
    {
        QPalette palette(QColor(0x31, 0x36, 0x3b), QColor(0x2a, 0x2e, 0x32));
        palette.setColor(QPalette::Base, QColor(0x1b, 0x1e, 0x20));
        palette.setColor(QPalette::Link, QColor(0x1d, 0x99, 0xf3));
        return palette;
    }

    void Open()
    {
        m_window.reset();
        m_window = std::make_unique<frmCodeLib>();
        m_window->Form_Load();
        m_window->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
    }

    /// The program ends in the middle of the work, as by a power cut.
    void TypeAndDie(const QString& text)
    {
        Open();
        ClickOn(0);
        QTest::keyClicks(Code(), text);
        QTRY_COMPARE(UnsavedFiles().size(), 1);
        m_window.reset();
    }
    QStringList UnsavedFiles() const { return QDir(m_home->Path(u"data"_s)).entryList({u"Unsaved-*"_s}); }

    QString Read(const QString& column)
    {
        return m_database->QueryValue(u"SELECT "_s + column + u" FROM Items WHERE ID = ?"_s, {m_item}).ToText();
    }
    void Write(const QString& column, const QString& value)
    {
        m_database->Execute(u"UPDATE Items SET "_s + column + u" = ? WHERE ID = ?"_s, {value, m_item});
    }

    /// The tree takes the text once the key is done with.
    static void Enter(QLineEdit* editor)
    {
        QTest::keyClick(editor, Qt::Key_Return);
        QCoreApplication::processEvents();
    }

    QTreeView* Tree() { return m_window->findChild<QTreeView*>(u"tvwTree"_s); }
    QModelIndex Root() { return Tree()->model()->index(0, 0); }
    QModelIndex Child(int row) { return Tree()->model()->index(row, 0, Root()); }
    CodeBox* Code() { return m_window->findChild<CodeBox*>(u"rtbCode"_s); }
    RichTextBox* Notes() { return m_window->findChild<RichTextBox*>(u"rtbNotes"_s); }
    QAction* Action(const QString& name) { return m_window->findChild<QAction*>(name); }
    QAction* Button(const QString& key) { return ToolbarButton(u"tlbTextFormat"_s, key); }
    QAction* CodeButton(const QString& key) { return ToolbarButton(u"tbrCode"_s, key); }
    QAction* ToolbarButton(const QString& toolbar, const QString& key)
    {
        for (QAction* action : m_window->findChild<QToolBar*>(toolbar)->actions()) {
            if (action->property("key") == key)
                return action;
        }
        return nullptr;
    }
    void Tab(int index) { m_window->findChild<QTabWidget*>(u"tbsTabs"_s)->setCurrentIndex(index); }
    /// Whether the tab's image says that it has content.
    bool TabIcon(int index)
    {
        const QIcon icon = m_window->findChild<QTabWidget*>(u"tbsTabs"_s)->tabIcon(index);
        const QString names[] = {u"CODE"_s, u"NOTES"_s, u"USAGE"_s};
        return icon.cacheKey() == IconNamed(names[index]).cacheKey();
    }
    void ClickOn(int row)
    {
        QTest::mouseClick(Tree()->viewport(), Qt::LeftButton, {}, Tree()->visualRect(Child(row)).center());
    }
    void OpenMenu(const QString& name, const std::function<void()>& whileOpen = [] {})
    {
        auto* menu = m_window->findChild<QMenu*>(name);
        QTimer::singleShot(0, menu, [menu, whileOpen] {
            whileOpen();
            menu->close();
        });
        menu->exec(m_window->mapToGlobal(QPoint(0, 0)));
    }

    std::unique_ptr<TemporaryHome> m_home;
    std::unique_ptr<ScriptedPrompts> m_prompts;
    std::unique_ptr<Database> m_database;
    qint64 m_item = 0;
    std::unique_ptr<frmCodeLib> m_window;
};

QB_GUI_TEST_MAIN(TestEditing)
#include "tst_editing.moc"
