#include "support/EditingWindow.h"

#include <QClipboard>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// Sections of code, and the keys of a box for code, in the main window.
class TestSectionEditing : public QObject, private EditingWindow {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        Begin();
    }
    void cleanup() { End(); }

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

    void secondClick_copiesWholeLinesUnlessTheCaretHasLeftTheSection()
    {
        Open();
        ClickOn(0);
        QAction* button = CodeButton(u"BAS_MODULE"_s);
        button->trigger();
        QTest::keyClicks(Code(), u"y = 2"_s);
        Tree()->setFocus(); // so that the next one comes to the end
        CodeButton(u"FORM_MODULE"_s)->trigger();
        QTest::keyClicks(Code(), u"z = 3"_s);
        const QString line = u"'###############      Code Module Code      ###############"_s;
        QGuiApplication::clipboard()->setText(u"before"_s);
        button->trigger();
        QCOMPARE(QGuiApplication::clipboard()->text(), u"before"_s);
        button->trigger();
        QCOMPARE(QGuiApplication::clipboard()->text(), line + u"\ny = 2\n\n"_s); // empty lines, too
        Code()->SetSelStart(Code()->Text().size());                            // in the other section
        QCOMPARE(button->toolTip(), u"Go to Code Module Code"_s);
        button->trigger();
        QCOMPARE(Code()->SelStart(), Code()->Text().indexOf(u"Code Module Code"_s));
        QVERIFY(!QGuiApplication::clipboard()->text().contains(u"z = 3"_s));
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

    void usageSections_areAddedFoundAndTakenOffAsThoseOfCode()
    {
        m_database->Execute(u"UPDATE Items SET CodeHeaders = 16 WHERE ID = ?"_s, {m_item});
        Write(u"Example"_s, RtfFromPlainText(u"x = 1"_s, CodeFont));
        Open();
        ClickOn(0);
        Tab(2);
        QAction* button = CodeButton(u"BAS_MODULE"_s);
        button->trigger();
        const QString whole = Usage()->Text();
        QVERIFY(whole.contains(u"Code Module Code"_s));
        QCOMPARE(button->property("Tag").toString(), u"GOTO"_s);
        Usage()->SetSelStart(0);
        button->trigger(); // goes there
        QCOMPARE(Usage()->Text(), whole);
        QCOMPARE(Usage()->SelStart(), whole.indexOf(u"Code Module Code"_s));
        Action(u"mnuSaveItem"_s)->trigger();
        QCOMPARE(Read(u"UsageHeaders"_s), u"4"_s);
        QCOMPARE(Read(u"CodeHeaders"_s), u"16"_s);
        Usage()->SetText(u"y"_s); // the user has taken the line away
        button->trigger();
        QCOMPARE(button->property("Tag").toString(), u"ADD"_s);
        Action(u"mnuSaveItem"_s)->trigger();
        QCOMPARE(Read(u"UsageHeaders"_s), u"0"_s);
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

    void halfOfAHeader_goesWhole_data()
    {
        QTest::addColumn<int>("start");
        QTest::addColumn<int>("key");
        QTest::newRow("first half") << 0 << int(Qt::Key_Delete);
        QTest::newRow("second half") << 30 << int(Qt::Key_Backspace);
    }

    void halfOfAHeader_goesWhole()
    {
        QFETCH(int, start);
        QFETCH(int, key);
        Write(u"Code"_s, RtfFromPlainText(u"x = 1"_s, CodeFont));
        Open();
        ClickOn(0);
        CodeButton(u"BAS_MODULE"_s)->trigger();
        QTest::keyClicks(Code(), u"y = 2"_s);
        Code()->SetSelStart(Code()->Text().indexOf(u"'###"_s) + start);
        Code()->SetSelLength(29);
        m_prompts->ExpectMsgBox(u"Section Delete"_s, MsgBoxResult::No);
        QTest::keyClick(Code(), Qt::Key(key));
        QCOMPARE(Code()->Text(), u"x = 1\r\n\r\ny = 2"_s);
        Code()->selectAll();
        QTest::keyClick(Code(), Qt::Key_Delete);
        QCOMPARE(Code()->Text(), QString()); // nothing has stayed protected
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
};

QB_GUI_TEST_MAIN(TestSectionEditing)
#include "tst_section_editing.moc"
