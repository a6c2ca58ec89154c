#include "finder/ui/QuickHints.h"
#include "finder/ui/QuickRowModel.h"
#include "finder/ui/frmQuickOpen.h"
#include "panels/ui/NodeTreeView.h"
#include "support/EditingWindow.h"
#include "support/ui/Appearance.h"

#include <QAbstractItemModelTester>
#include <QClipboard>
#include <QListView>
#include <QMimeData>
#include <QSplitter>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// Quick open over the main window.
class TestQuickOpenWindow : public QObject, private EditingWindow {
    Q_OBJECT

private:
    frmQuickOpen* Popup() { return m_window->findChild<frmQuickOpen*>(u"frmQuickOpen"_s); }
    QLineEdit* Field() { return Popup()->findChild<QLineEdit*>(u"txtQuickOpen"_s); }
    QListView* List() { return Popup()->findChild<QListView*>(u"lvQuickOpen"_s); }
    CodeBox* Preview() { return Popup()->findChild<CodeBox*>(u"txtQuickPreview"_s); }
    QuickHints* Hints() { return Popup()->findChild<QuickHints*>(u"quickHints"_s); }
    QString Notice() { return Popup()->findChild<QLabel*>(u"lblNotice"_s)->text(); }
    QString Title() { return m_window->findChild<QLabel*>(u"lblTitle"_s)->text(); }
    QString Chosen() { return List()->currentIndex().data().toString(); }
    QStringList Rows()
    {
        QStringList rows;
        for (int i = 0; i < List()->model()->rowCount(); ++i)
            rows << List()->model()->index(i, 0).data().toString();
        return rows;
    }
    void Show(const QString& typed = {})
    {
        QTest::keyClick(m_window.get(), Qt::Key_P, Qt::ControlModifier);
        QVERIFY(Popup()->isVisible());
        QVERIFY(Field()->hasFocus());
        QTest::keyClicks(Field(), typed);
    }
    void Press(int key, Qt::KeyboardModifiers modifiers = {}) { QTest::keyClick(Field(), Qt::Key(key), modifiers); }
    /// A library in which there is something to find.
    void Fill()
    {
        const qint64 folder = AddItem(*m_database, 0, u"Strings and text"_s);
        const qint64 sub = AddItem(*m_database, folder, u"Splitting and joining"_s);
        RichText code;
        code.SetText(u"#include <string>\r\n#include <vector>\r\n\r\n"
                     "// Splits a text at each separator; empty parts are kept.\r\n"
                     "std::vector<std::string> split(const std::string& text, char separator)\r\n{\r\n"
                     "    std::vector<std::string> parts;\r\n    size_t begin = 0;\r\n"
                     "    for (size_t end = text.find(separator); end != text.npos; end = text.find(separator, begin)) "
                     "{\r\n        parts.push_back(text.substr(begin, end - begin));\r\n        begin = end + 1;\r\n"
                     "    }\r\n    parts.push_back(text.substr(begin));\r\n    return parts;\r\n}"_s);
        code.Document().SetLanguage(u"cpp23"_s);
        m_split = AddItem(*m_database, sub, u"Split a string by a separator"_s, code.Text());
        m_database->Execute(u"UPDATE Items SET Code = ? WHERE ID = ?"_s, {code.TextRTF(), m_split});
        for (const char* title : {"Split a string by a regular expression", "Join strings with a separator",
                                  "Split a path into its parts", "Trim blanks at both ends of a string"})
            AddItem(*m_database, sub, QString::fromLatin1(title), u"// "_s + QString::fromLatin1(title));
        AddItem(*m_database, folder, u"Spell a number in words"_s, u"std::string spell(int number);"_s);
    }
    void DeleteBehindTheBack(qint64 id) { m_database->Execute(u"DELETE FROM Items WHERE ID = ?"_s, {id}); }

    qint64 m_split = 0;

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        Begin();
    }
    void cleanup()
    {
        ApplyAppearance(u"System"_s, {}, 0);
        End();
    }

    void typed_listsTitles_andEnterOpensTheBest()
    {
        Fill();
        Open();
        Show(u"sep spl"_s);
        const QAbstractItemModelTester tester(List()->model());
        QCOMPARE(Rows().value(0), u"Split a string by a separator"_s);
        QTRY_COMPARE(Preview()->Text().left(17), u"#include <string>"_s);
        QVERIFY(Preview()->ColoursByRules());
        Press(Qt::Key_Return);
        QVERIFY(!Popup()->isVisible());
        QCOMPARE(Title(), u"Split a string by a separator"_s);
        QVERIFY(Code()->hasFocus()); // to go on in the text
        QVERIFY(Tree()->visualRect(Tree()->currentIndex()).isValid());
    }

    void pictures()
    {
        Fill();
        Open();
        m_window->resize(1200, 800);
        for (const QString& scheme : {u"Light"_s, u"Dark"_s}) {
            ApplyAppearance(scheme, {}, 0);
            const QString name = u"quick-open-"_s + scheme.toLower();
            Show();
            QTRY_VERIFY(!Preview()->IsEmpty());
            TakePicture(*m_window, name + u"-empty"_s);
            Field()->setText(u"spl str"_s);
            QTRY_VERIFY(Preview()->Text().contains(u"#include"_s));
            TakePicture(*m_window, name);
            Field()->setText(u"#separator"_s);
            QTRY_VERIFY(List()->model()->rowCount() > 3);
            Press(Qt::Key_Down);
            Press(Qt::Key_Down);
            QTRY_VERIFY(Preview()->extraSelections().size() > 2);
            TakePicture(*m_window, name + u"-text"_s);
            Field()->setText(u">lib"_s);
            TakePicture(*m_window, name + u"-commands"_s);
            Field()->setText(u"#zebra"_s);
            QTRY_VERIFY(Notice().contains(u"none of the texts"_s));
            TakePicture(*m_window, name + u"-none"_s);
            Press(Qt::Key_Escape);
        }
        m_window->resize(m_window->minimumSize());
        Show(u"spl str"_s);
        TakePicture(*m_window, u"quick-open-narrow"_s);
        m_window->resize(640, 480);
        TakePicture(*m_window, u"quick-open-640"_s);
    }

    void emptyField_offersTheItemBefore()
    {
        Open();
        ClickOn(0);
        ClickOn(1);
        Show();
        QCOMPARE(Rows().value(0), u"item"_s);
        QVERIFY(!Rows().contains(u"other"_s)); // that is shown
        Press(Qt::Key_Return);
        QCOMPARE(Title(), u"item"_s);
    }

    void altEnter_showsTheItemInTheTree()
    {
        Fill();
        Open();
        auto* filter = m_window->findChild<QLineEdit*>(u"txtFilter"_s);
        QTest::keyClicks(filter, u"other"_s); // the tree shows that only
        Show(u"spl sep"_s);
        Press(Qt::Key_Return, Qt::AltModifier);
        QCOMPARE(Title(), u"Split a string by a separator"_s);
        QVERIFY(Tree()->isVisible());
        QVERIFY(Tree()->hasFocus());
        QCOMPARE(Tree()->currentIndex().data().toString(), Title());
        QVERIFY(Tree()->viewport()->rect().intersects(Tree()->visualRect(Tree()->currentIndex())));
    }

    void keys_goThroughTheRows()
    {
        for (int i = 0; i < 60; ++i)
            AddItem(*m_database, 0, u"row %1"_s.arg(i, 2, 10, QChar(u'0')));
        Open();
        Show(u"row"_s);
        QCOMPARE(Chosen(), u"row 00"_s);
        Press(Qt::Key_Down);
        QCOMPARE(Chosen(), u"row 01"_s);
        Press(Qt::Key_P, Qt::ControlModifier); // once more
        QCOMPARE(Chosen(), u"row 02"_s);
        Press(Qt::Key_PageDown);
        const int page = List()->currentIndex().row() - 2;
        QVERIFY(page > 3);
        Press(Qt::Key_PageUp);
        QCOMPARE(Chosen(), u"row 02"_s);
        Press(Qt::Key_PageUp);
        QCOMPARE(Chosen(), u"row 00"_s);
        Press(Qt::Key_Up); // around the end
        QCOMPARE(Chosen(), u"row 59"_s);
        Press(Qt::Key_Tab);
        QCOMPARE(Chosen(), u"row 00"_s);
        QTest::mouseClick(List()->viewport(), Qt::LeftButton, {},
                          List()->visualRect(List()->model()->index(3, 0)).center());
        QCOMPARE(Title(), u"row 03"_s);
        QVERIFY(!Popup()->isVisible());
    }

    void escape_givesTheFocusBack()
    {
        Open();
        ClickOn(0);
        Notes()->parentWidget();
        Code()->setFocus();
        Show(u"oth"_s);
        Press(Qt::Key_Escape);
        QVERIFY(!Popup()->isVisible());
        QVERIFY(Code()->hasFocus());
        QCOMPARE(Title(), u"item"_s);
        Show();
        QCOMPARE(Field()->text(), QString()); // nothing of the last time
    }

    void clickElsewhere_closesIt()
    {
        Open();
        Show();
        Tree()->setFocus();
        QVERIFY(!Popup()->isVisible());
        QVERIFY(Tree()->hasFocus());
    }

    void copy_takesTheCodeInItsColours()
    {
        Fill();
        Open();
        Show(u"spl sep"_s);
        QApplication::clipboard()->clear();
        Press(Qt::Key_C, Qt::ControlModifier);
        QVERIFY(QApplication::clipboard()->text().startsWith(u"#include <string>\n#include <vector>\n"_s));
        QVERIFY(QApplication::clipboard()->mimeData()->html().contains(u"color"_s));
        QCOMPARE(Hints()->Message(), u"Copied: 15 lines of code"_s);
        QVERIFY(Popup()->isVisible());
        Field()->setText(u"Splitting"_s); // a folder
        QCOMPARE(Hints()->Message(), QString());
        Press(Qt::Key_C, Qt::ControlModifier);
        QCOMPARE(Hints()->Message(), u"There is no code to copy."_s);
        QVERIFY(QApplication::clipboard()->text().startsWith(u"#include"_s));
        Field()->selectAll();
        Press(Qt::Key_C, Qt::ControlModifier); // what is selected there is what is meant
        QCOMPARE(QApplication::clipboard()->text(), u"Splitting"_s);
    }

    // Commands

    void commands_areThoseThatCanRun_withTheirKeys()
    {
        Open(); // at the root
        Show(u">"_s);
        const auto& rows = static_cast<QuickRowModel*>(List()->model())->Rows();
        const auto find = [&rows](const QString& name) {
            return std::find_if(rows.begin(), rows.end(), [&](const QuickRow& row) { return row.Command == name; });
        };
        QVERIFY(find(u"mnuNewDatabase"_s) != rows.end());
        QCOMPARE(find(u"mnuNewDatabase"_s)->Text, u"File: New Library..."_s);
        QCOMPARE(find(u"mnuNewDatabase"_s)->Mark, u"Ctrl+Shift+N"_s);
        QCOMPARE(find(u"mnuNewDatabase"_s)->Beside, Action(u"mnuNewDatabase"_s)->statusTip());
        // The root can't be renamed, nothing can be undone, no web page is shown, two only open menus.
        for (const char* name : {"mnuRename", "mnuDeleteCode", "mnuUndo", "mnuWebReload", "mnuAddLink",
                                 "mnuFileDatabaseSelect", "mnuQuickOpen", "mnuConflictSolver", "mnuKeepItem"})
            QVERIFY2(find(QString::fromLatin1(name)) == rows.end(), name);
        for (const QuickRow& row : rows)
            QVERIFY2(Action(row.Command)->isEnabled() && Action(row.Command)->isVisible(), qPrintable(row.Command));
        Press(Qt::Key_Escape);
        ClickOn(0);
        Code()->setFocus();
        QTest::keyClicks(Code(), u"typed"_s);
        Show(u">"_s);
        for (const char* name : {"mnuRename", "mnuDeleteCode", "mnuUndo"})
            QVERIFY2(find(QString::fromLatin1(name)) != rows.end(), name);
    }

    void noCommand_isOfferedTwice()
    {
        Open();
        ClickOn(0);
        Show(u">"_s);
        QStringList captions, tips;
        for (const QuickRow& row : static_cast<QuickRowModel*>(List()->model())->Rows()) {
            QVERIFY2(!captions.contains(row.Text), qPrintable(row.Text));
            QVERIFY2(row.Beside.isEmpty() || !tips.contains(row.Beside), qPrintable(row.Text));
            captions << row.Text;
            tips << row.Beside;
        }
        QVERIFY(captions.contains(u"Item: Rename Item"_s));
        QVERIFY(captions.contains(u"Find Results: Detail List"_s)); // a button that stands in no menu
    }

    void command_isRunOnceItIsClosed()
    {
        Open();
        ClickOn(0);
        Code()->setFocus();
        QTest::keyClicks(Code(), u"typed"_s);
        Show(u">undo"_s);
        QCOMPARE(Rows().value(0).left(10), u"Edit: Undo"_s);
        Press(Qt::Key_Return);
        QVERIFY(!Popup()->isVisible());
        QCOMPARE(Code()->Text(), QString());
        QVERIFY(Code()->hasFocus());
    }

    // Texts

    void text_isFound_andEnterGoesThere()
    {
        Fill();
        Open();
        ClickOn(0);
        Show(u"#npos"_s);
        QTRY_COMPARE(List()->model()->rowCount(), 1);
        QTRY_COMPARE(Preview()->LineOfCaret(), 9);
        QCOMPARE(Preview()->extraSelections().size(), 1);
        QTRY_COMPARE(Hints()->Status(), u"1 item"_s);
        Press(Qt::Key_Return);
        QCOMPARE(Title(), u"Split a string by a separator"_s);
        QCOMPARE(Code()->LineOfCaret(), 9);
        QCOMPARE(Code()->SelText(), u"npos"_s);
        QVERIFY(Code()->hasFocus());
    }

    void textInNotes_opensThatTab()
    {
        Write(u"Notes"_s, RtfFromPlainText(u"first\r\nneedle"_s, CodeFont));
        Write(u"Code"_s, RtfFromPlainText(u"hay"_s, CodeFont));
        Open();
        Show(u"#needle"_s);
        QTRY_COMPARE(List()->model()->rowCount(), 1);
        Press(Qt::Key_Return);
        QCOMPARE(Details()->CurrentView(), DetailsTab::Notes);
        QCOMPARE(Notes()->SelText(), u"needle"_s);
        QVERIFY(Notes()->hasFocus());
    }

    void hitInAnItemThatAnotherProgramHasAdded_isOpened()
    {
        Open();
        AddItem(*m_database, 0, u"late"_s, u"needle"_s);
        Show(u"#needle"_s);
        QTRY_COMPARE(List()->model()->rowCount(), 1);
        Press(Qt::Key_Return);
        QCOMPARE(Title(), u"late"_s);
    }

    void itemThatHasGone_saysSo()
    {
        Fill();
        Open();
        Show(u"spl sep"_s);
        DeleteBehindTheBack(m_split);
        Press(Qt::Key_Return);
        QVERIFY(Popup()->isVisible());
        QVERIFY(Hints()->Message().contains(u"not in the library any more"_s));
        QTRY_VERIFY(Popup()->findChild<QLabel*>(u"lblPreviewNotice"_s)->isVisible());
        TakePicture(*m_window, u"quick-open-gone"_s);
        Press(Qt::Key_Escape);
        QVERIFY(!Popup()->isVisible());
    }

    // A line

    void line_isPreviewed_andGoneTo()
    {
        Fill();
        Open();
        Show(u"spl sep"_s);
        Press(Qt::Key_Return);
        QTest::keyClick(Code(), Qt::Key_End);
        QTest::keyClicks(Code(), u" // typed"_s);
        Show(u":9"_s);
        QCOMPARE(Rows(), QStringList{u"Line 9 of 15"_s});
        QTRY_COMPARE(Preview()->LineOfCaret(), 9);
        QVERIFY(Preview()->Text().contains(u"typed"_s));
        QVERIFY(Preview()->ColoursByRules());
        TakePicture(*m_window, u"quick-open-line"_s);
        Press(Qt::Key_Return);
        QCOMPARE(Code()->LineOfCaret(), 9);
        QVERIFY(Code()->hasFocus());
    }

    void lineFromAnotherTab_goesToTheCode()
    {
        Write(u"Code"_s, RtfFromPlainText(u"one\r\ntwo"_s, CodeFont));
        Open();
        ClickOn(0);
        Tab(1);
        Show(u":2"_s);
        Press(Qt::Key_Return);
        QCOMPARE(Details()->CurrentView(), DetailsTab::Code);
        QCOMPARE(Code()->LineOfCaret(), 2);
    }

    // The window

    void smallWindow_hasRoomForTheList()
    {
        Fill();
        Open();
        m_window->resize(m_window->minimumSize());
        Show(u"spl"_s);
        QVERIFY(!Preview()->isVisible());
        QVERIFY(m_window->rect().contains(Popup()->geometry()));
        QVERIFY(List()->viewport()->height() > 3 * List()->sizeHintForRow(0));
        m_window->resize(1200, 700);
        QTRY_VERIFY(Preview()->isVisible());
        QCOMPARE(Popup()->geometry().center().x(), m_window->rect().center().x());
    }

    void withoutALibrary_commandsCanBeRun()
    {
        Open();
        m_prompts->ExpectMsgBox(u"Remove Database"_s, MsgBoxResult::Yes);
        Action(u"mnuRemoveDBItem"_s)->trigger();
        Show();
        QCOMPARE(Notice(), u"No library is open."_s);
        QTest::keyClicks(Field(), u">about"_s);
        QCOMPARE(Rows(), QStringList{u"Help: About KT Quillbase"_s});
    }

    void closedLibrary_isHeldByNobody()
    {
        Open();
        Show(u"#item"_s);
        QTRY_COMPARE(List()->model()->rowCount(), 1);
        m_window->close();
        QVERIFY(!Popup()->isVisible());
        m_window.reset();
        m_database.reset();
        QVERIFY(QFile::remove(m_home->Path(u"data/QBLib.qbd"_s)));
    }
};

QB_GUI_TEST_MAIN(TestQuickOpenWindow)
#include "tst_quick_open_window.moc"
