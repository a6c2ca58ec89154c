#include "support/EditingWindow.h"

#include <QClipboard>
#include <QStatusBar>
#include <QTextBlock>
#include <QTextLayout>
#include <QToolButton>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// Indenting, long lines, foreign letters and taking back in the boxes for code of the main window.
class TestCodeKeys : public QObject, private EditingWindow {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        Begin();
    }
    void cleanup() { End(); }

    // Indenting

    void tab_indentsSelectedLines()
    {
        OpenWithCode(u"one\ntwo\n\nthree\nfour"_s);
        Select(1, u"one\r\ntwo\r\n\r\nth"_s.size());
        QTest::keyClick(Code(), Qt::Key_Tab);
        QCOMPARE(Code()->Text(), u"    one\r\n    two\r\n\r\n    three\r\nfour"_s);
        QCOMPARE(Code()->SelText(), u"    one\r\n    two\r\n\r\n    thr"_s);
        QTest::keyClick(Code(), Qt::Key_Tab);
        QVERIFY(Code()->Text().startsWith(u"        one\r\n        two"_s));
        Code()->Undo();
        QCOMPARE(Code()->Text(), u"    one\r\n    two\r\n\r\n    three\r\nfour"_s); // all in one step
        Code()->Undo();
        QCOMPARE(Code()->Text(), u"one\r\ntwo\r\n\r\nthree\r\nfour"_s);
    }

    void lineThatTheSelectionEndsBefore_isNotIndented()
    {
        OpenWithCode(u"one\ntwo"_s);
        Select(0, 5);
        QTest::keyClick(Code(), Qt::Key_Tab);
        QCOMPARE(Code()->Text(), u"    one\r\ntwo"_s);
    }

    void shiftTab_takesOneStepBack()
    {
        OpenWithCode(u"      one\n\ttwo\n  three\nfour"_s);
        Select(0, Code()->Text().size());
        QTest::keyClick(Code(), Qt::Key_Backtab, Qt::ShiftModifier);
        QCOMPARE(Code()->Text(), u"  one\r\ntwo\r\nthree\r\nfour"_s);
        QCOMPARE(Code()->SelText(), Code()->Text());
        Code()->Undo();
        QCOMPARE(Code()->Text(), u"      one\r\n\ttwo\r\n  three\r\nfour"_s);
    }

    void shiftTabWithACaret_takesBackItsLine()
    {
        OpenWithCode(u"    one\n    two"_s);
        Code()->setFocus();
        Code()->SetSelStart(Code()->Text().size());
        QTest::keyClick(Code(), Qt::Key_Backtab, Qt::ShiftModifier);
        QCOMPARE(Code()->Text(), u"    one\r\ntwo"_s);
        QCOMPARE(Code()->SelStart(), Code()->Text().size());
        QVERIFY(Code()->hasFocus());
    }

    void tabWithACaret_putsInBlanks()
    {
        OpenWithCode(u"one"_s);
        Code()->SetSelStart(1);
        QTest::keyClick(Code(), Qt::Key_Tab);
        QCOMPARE(Code()->Text(), u"o    ne"_s);
    }

    void headerAmongTheLines_staysAsItIs()
    {
        OpenWithCode(u"one"_s);
        Code()->SetSelStart(Code()->Text().size());
        CodeButton(u"GENERAL_DECLARATION"_s)->trigger();
        const QString header = Code()->Text().section(u"\r\n"_s, 0, 0);
        QTest::keyClicks(Code(), u"two"_s);
        Select(0, Code()->Text().size());
        QTest::keyClick(Code(), Qt::Key_Tab);
        QVERIFY2(Code()->Text().startsWith(header + u"\r\n"_s), qPrintable(Code()->Text()));
        QVERIFY(Code()->Text().contains(u"    two"_s));
    }

    void tabInNotes_indentsSelectedParagraphs()
    {
        Write(u"Notes"_s, RtfFromPlainText(u"one\ntwo"_s, CodeFont));
        Open();
        ClickOn(0);
        Tab(1);
        Notes()->setFocus();
        Notes()->SetSelStart(1);
        Notes()->SetSelLength(6);
        QTest::keyClick(Notes(), Qt::Key_Tab);
        QCOMPARE(Notes()->Text(), u"one\r\ntwo"_s); // nothing is replaced
        QVERIFY(Notes()->SelIndent().value_or(0) > 0);
        QTest::keyClick(Notes(), Qt::Key_Backtab, Qt::ShiftModifier);
        QCOMPARE(Notes()->SelIndent(), std::optional(0));
        Notes()->SetSelStart(1);
        QTest::keyClick(Notes(), Qt::Key_Tab);
        QCOMPARE(Notes()->Text(), u"o\tne\r\ntwo"_s);
    }

    // Long lines and foreign letters

    void lineWithoutBlanks_isWrappedAnywhere()
    {
        Write(u"Code"_s, RtfFromPlainText(QString(960'000, u'x'), CodeFont));
        Open();
        ClickOn(0);
        Action(u"mnuViewWordWrap"_s)->trigger();
        QCOMPARE(Code()->wordWrapMode(), QTextOption::WrapAnywhere); // between words would take many seconds
        QVERIFY(Code()->document()->firstBlock().layout()->lineCount() > 1000);
        ClickOn(1);
        QCOMPARE(Code()->wordWrapMode(), QTextOption::WrapAtWordBoundaryOrAnywhere);
        QGuiApplication::clipboard()->setText(QString(960'000, u'y'));
        QTest::keyClick(Code(), Qt::Key_V, Qt::ControlModifier);
        QCOMPARE(Code()->wordWrapMode(), QTextOption::WrapAnywhere);
    }

    void lineWithLettersFromRightToLeft_keepsItsDirection()
    {
        OpenWithCode(u"\u05D0\u05D1\u05D2 = 1\nx = 2"_s);
        const QTextBlock first = Code()->document()->firstBlock();
        QCOMPARE(first.textDirection(), Qt::LeftToRight);
        QVERIFY(first.layout()->lineAt(0).naturalTextRect().left() < 20);
        TakePicture(*m_window, u"code-right-to-left"_s);
    }

    // Sections

    void undoOfASection_takesHeaderBitAndButtonBack()
    {
        OpenWithCode(u"x = 1"_s);
        QAction* button = CodeButton(u"BAS_MODULE"_s);
        Code()->setFocus();
        button->trigger();
        QCOMPARE(button->property("Tag").toString(), u"GOTO"_s);
        QTest::keyClick(Code(), Qt::Key_Z, Qt::ControlModifier);
        QCOMPARE(Code()->Text(), u"x = 1"_s);
        QCOMPARE(button->property("Tag").toString(), u"ADD"_s);
        QTest::keyClick(m_window.get(), Qt::Key_S, Qt::ControlModifier);
        QCOMPARE(Read(u"CodeHeaders"_s), u"0"_s);
        QTest::keyClick(Code(), Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
        QVERIFY(Code()->Text().contains(u"Code Module Code"_s));
        QCOMPARE(button->property("Tag").toString(), u"GOTO"_s);
        QTest::keyClick(m_window.get(), Qt::Key_S, Qt::ControlModifier);
        QCOMPARE(Read(u"CodeHeaders"_s), u"4"_s);
    }

    void undoInATextWithoutTheLineOfABit_clearsIt()
    {
        m_database->Execute(u"UPDATE Items SET CodeHeaders = 4 WHERE ID = ?"_s, {m_item});
        OpenWithCode(u"x = 1"_s);
        QTest::keyClicks(Code(), u"y"_s);
        QTest::keyClick(Code(), Qt::Key_Z, Qt::ControlModifier);
        QCOMPARE(CodeButton(u"BAS_MODULE"_s)->property("Tag").toString(), u"ADD"_s);
    }

    void sectionCommand_tellsWhereItPutsTheSection()
    {
        OpenWithCode(u"one\ntwo\nthree"_s);
        Code()->setFocus();
        Code()->GoToLine(2);
        HoverButton(u"BAS_MODULE"_s);
        QCOMPARE(m_window->statusBar()->currentMessage(), u"The section is put before line 2"_s);
        TakePicture(*m_window, u"section-place"_s);
        CodeButton(u"BAS_MODULE"_s)->trigger();
        const QStringList lines = Code()->Text().split(u"\r\n"_s);
        QVERIFY2(lines.indexOf(u"two"_s) > lines.indexOf(u"one"_s) + 1, qPrintable(Code()->Text()));
        QVERIFY2(lines[lines.indexOf(u"two"_s) - 1].contains(u"Code Module Code"_s), qPrintable(Code()->Text()));
        HoverButton(u"BAS_MODULE"_s);
        QCOMPARE(m_window->statusBar()->currentMessage(), QString());
    }

    void sectionEntryOfTheMenu_tellsItToo()
    {
        OpenWithCode(u"one\ntwo\nthree"_s);
        Code()->setFocus();
        Code()->GoToLine(3);
        OpenMenu(u"mnuEdit"_s, [this] { m_menuTip = Action(u"mnuEditAddBasModuleCode"_s)->statusTip(); });
        QCOMPARE(m_menuTip, u"The section is put before line 3"_s);
    }

    void sectionCommandBesideTheText_tellsTheChosenPlace()
    {
        OpenWithCode(u"one\ntwo"_s);
        Tree()->setFocus();
        HoverButton(u"GENERAL_DECLARATION"_s);
        QCOMPARE(m_window->statusBar()->currentMessage(), u"The section is put at the top of the text"_s);
        HoverButton(u"FORM_MODULE"_s);
        QCOMPARE(m_window->statusBar()->currentMessage(), u"The section is put at the end of the text"_s);
    }

private:
    void OpenWithCode(const QString& text)
    {
        Write(u"Code"_s, RtfFromPlainText(text, CodeFont));
        Open();
        ClickOn(0);
    }
    void Select(qsizetype start, qsizetype length)
    {
        Code()->setFocus();
        Code()->SetSelStart(start);
        Code()->SetSelLength(length);
    }
    void HoverButton(const QString& key)
    {
        QWidget* button = m_window->findChild<QToolBar*>(u"tbrCode"_s)->widgetForAction(CodeButton(key));
        const QPointF place = button->rect().center();
        QEvent leave(QEvent::Leave);
        QCoreApplication::sendEvent(button, &leave);
        QEnterEvent enter(place, place, button->mapToGlobal(place));
        QCoreApplication::sendEvent(button, &enter);
    }

    QString m_menuTip;
};

QB_GUI_TEST_MAIN(TestCodeKeys)
#include "tst_code_keys.moc"
