#include "support/FilesWindow.h"
#include "support/OrdinaryUser.h"

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// What a user writes of a stored file: when it is saved, asked about, and never lost.
class TestFileDescriptions : public QObject, private FilesWindow {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        Begin();
        WriteFile(In(u"a.txt"_s), "alpha");
        WriteFile(In(u"b.txt"_s), "beta");
    }
    void cleanup() { End(); }

    void description_isSavedWhenAnotherFileIsSelected()
    {
        Store({u"a.txt"_s, u"b.txt"_s});
        OpenFiles();
        QTest::keyClicks(Box(), u"about a"_s);
        Select(1);
        QVERIFY(Described(1).startsWith(u"{\\rtf"_s));
        QCOMPARE(PlainTextFromRtf(Described(1)), u"about a"_s);
        QVERIFY(Box()->IsEmpty());
        Select(0);
        QCOMPARE(Box()->Text(), u"about a"_s);
        Box()->SetText(QString());
        Select(1);
        QCOMPARE(Described(1), QString()); // not an empty document
    }

    void descriptionThatAnotherProgramChanged_isAskedAbout_data()
    {
        QTest::addColumn<ChosenText>("answer");
        QTest::addColumn<QString>("stays");
        QTest::newRow("own") << ChosenText::Own << u"mine"_s;
        QTest::newRow("theirs") << ChosenText::Theirs << u"theirs"_s;
    }
    void descriptionThatAnotherProgramChanged_isAskedAbout()
    {
        QFETCH(ChosenText, answer);
        QFETCH(QString, stays);
        Store({u"a.txt"_s, u"b.txt"_s});
        OpenFiles();
        QTest::keyClicks(Box(), u"mine"_s);
        m_database->Execute(u"UPDATE Files SET Description = ? WHERE ID = 1"_s,
                            {RtfFromPlainText(u"theirs"_s, CodeFont)});
        m_prompts->ExpectTextChoice(answer);
        Select(1);
        QCOMPARE(m_prompts->Choices.size(), 1);
        QCOMPARE(m_prompts->Choices[0].Own, u"mine"_s);
        QCOMPARE(m_prompts->Choices[0].Theirs, u"theirs"_s);
        QCOMPARE(PlainTextFromRtf(Described(1)), stays);
        Select(0);
        QCOMPARE(Box()->Text(), stays);
    }

    void descriptionThatIsNotDecidedAbout_overwritesNothing()
    {
        Store({u"a.txt"_s, u"b.txt"_s});
        OpenFiles();
        QTest::keyClicks(Box(), u"mine"_s);
        m_database->Execute(u"UPDATE Files SET Description = ? WHERE ID = 1"_s,
                            {RtfFromPlainText(u"theirs"_s, CodeFont)});
        m_prompts->ExpectTextChoice(ChosenText::Cancel);
        Action(u"mnuSaveItem"_s)->trigger();
        QCOMPARE(PlainTextFromRtf(Described(1)), u"theirs"_s);
        QCOMPARE(Box()->Text(), u"mine"_s);
        m_prompts->ExpectTextChoice(ChosenText::Own);
        Action(u"mnuSaveItem"_s)->trigger();
        QCOMPARE(PlainTextFromRtf(Described(1)), u"mine"_s);
    }

    void emptyDescription_asksForAFileOnlyWhereNoneIsSelected()
    {
        Store({u"a.txt"_s});
        OpenFiles();
        QCOMPARE(Box()->placeholderText(), u"What the file is for"_s);
        List()->clearSelection();
        QCOMPARE(Box()->placeholderText(), u"Select one file to describe it."_s);
    }

    void description_isSavedWithTheItem_data()
    {
        QTest::addColumn<int>("way");
        QTest::newRow("another item") << 0;
        QTest::newRow("closing") << 1;
        QTest::newRow("saving") << 2;
    }
    void description_isSavedWithTheItem()
    {
        QFETCH(int, way);
        Store({u"a.txt"_s});
        OpenFiles();
        QTest::keyClicks(Box(), u"about"_s);
        if (way == 0)
            ClickOn(1);
        else if (way == 1)
            m_window->close();
        else
            Action(u"mnuSaveItem"_s)->trigger();
        QCOMPARE(PlainTextFromRtf(Described(1)), u"about"_s);
    }

    void question_comesBeforeSavingWhereItIsSet()
    {
        Store({u"a.txt"_s, u"b.txt"_s});
        OpenFiles();
        m_window->Settings().SetAutoSaveFileDescriptions(false);
        m_window->Settings().Apply();
        QTest::keyClicks(Box(), u"about a"_s);
        m_prompts->ExpectMsgBox(u"Save changes?"_s, MsgBoxResult::No);
        Select(1);
        QCOMPARE(m_prompts->Messages.last().Text,
                 u"The file description have been changed. Do you want to save these changes?"_s);
        QCOMPARE(Described(1), QString());
        Select(0);
        QVERIFY(Box()->IsEmpty());
        QTest::keyClicks(Box(), u"again"_s);
        m_prompts->ExpectMsgBox(u"Save changes?"_s, MsgBoxResult::Yes);
        Select(1);
        QCOMPARE(PlainTextFromRtf(Described(1)), u"again"_s);
    }

    void asking_dependsOnAutoSave_data()
    {
        QTest::addColumn<bool>("descriptions");
        QTest::addColumn<bool>("onlyWithAutoSave");
        QTest::addColumn<bool>("autoSave");
        QTest::addColumn<bool>("asks");
        QTest::newRow("never") << false << false << true << true;
        QTest::newRow("always") << true << false << false << false;
        QTest::newRow("auto-save on") << true << true << true << false;
        QTest::newRow("auto-save off") << true << true << false << true;
    }
    void asking_dependsOnAutoSave()
    {
        QFETCH(bool, descriptions);
        QFETCH(bool, onlyWithAutoSave);
        QFETCH(bool, autoSave);
        QFETCH(bool, asks);
        OpenFiles();
        if (m_window->findChild<QAction*>(u"mnuAutoSaveItem"_s)->isChecked() != autoSave)
            Action(u"mnuAutoSaveItem"_s)->trigger();
        m_window->Settings().SetAutoSaveFileDescriptions(descriptions);
        m_window->Settings().SetAutoSaveFileDescrIfAutoSaveOn(onlyWithAutoSave);
        m_window->Settings().Apply();
        QCOMPARE(Files()->AskToSaveFileDescChanges(), asks);
        Action(u"mnuAutoSaveItem"_s)->trigger(); // and follows the button
        QCOMPARE(Files()->AskToSaveFileDescChanges(), onlyWithAutoSave && descriptions ? autoSave : asks);
    }

    void descriptionThatCantBeWritten_isNotLost()
    {
        Store({u"a.txt"_s, u"b.txt"_s});
        OpenFiles();
        RefuseWord(*m_database, u"Files"_s, u"Description"_s, u"precious"_s);
        QTest::keyClicks(Box(), u"precious"_s);
        m_prompts->ExpectError();
        Select(1);
        QCOMPARE(List()->selectionModel()->selectedRows().first().row(), 0); // it stays the one
        QCoreApplication::processEvents();
        m_prompts->ExpectError(); // one, although a key selects twice
        PressInList(Qt::Key_Down);
        QCoreApplication::processEvents();
        QTRY_COMPARE(List()->currentIndex().row(), 0); // by the keys, too
        QCOMPARE(Box()->Text(), u"precious"_s);
        m_prompts->ExpectError();
        m_prompts->ExpectMsgBox(u"Save Item"_s, MsgBoxResult::No);
        ClickOn(1);
        QCOMPARE(Box()->Text(), u"precious"_s);
        m_prompts->ExpectError();
        m_prompts->ExpectMsgBox(u"Save Item"_s, MsgBoxResult::Yes);
        ClickOn(1);
        QCOMPARE(Tree()->currentIndex().data().toString(), u"other"_s);
    }

    void itemThatIsNotSaved_keepsTheDescription()
    {
        Store({u"a.txt"_s});
        OpenFiles();
        if (Action(u"mnuAutoSaveItem"_s)->isChecked())
            Action(u"mnuAutoSaveItem"_s)->trigger();
        m_window->Settings().SetAutoSaveFileDescrIfAutoSaveOn(false);
        m_window->Settings().Apply();
        QTest::keyClicks(Box(), u"about a"_s);
        Tab(0);
        QTest::keyClicks(Code(), u"not wanted"_s);
        m_prompts->ExpectMsgBox(u"Save Item"_s, MsgBoxResult::No);
        ClickOn(1);
        QCOMPARE(PlainTextFromRtf(Described(1)), u"about a"_s);
        QCOMPARE(Read(u"Code"_s), QString());
    }

    void deletedItem_asksNothingOfItsFiles()
    {
        Store({u"a.txt"_s});
        OpenFiles();
        m_window->Settings().SetAutoSaveFileDescriptions(false);
        m_window->Settings().Apply();
        QTest::keyClicks(Box(), u"about a"_s);
        m_prompts->ExpectMsgBox(u"Delete Stored Item"_s, MsgBoxResult::Yes);
        Tree()->setFocus();
        Action(u"mnuDeleteCode"_s)->trigger();
        QCOMPARE(m_database->QueryValue(u"SELECT count(*) FROM Files"_s).ToLong(), 0);
    }

    void descriptionOfNoFile_isNotShown()
    {
        Store({u"a.txt"_s});
        OpenFiles();
        QTest::keyClicks(Box(), u"about a"_s);
        ClickOn(1); // which has no files
        QVERIFY(Box()->IsEmpty());
        QVERIFY(!Box()->isEnabled());
        ClickOn(0);
        Files()->SelectFirstItem();
        QCOMPARE(Box()->Text(), u"about a"_s);
        m_prompts->ExpectMsgBox(u"Delete File from Database"_s, MsgBoxResult::Yes);
        Action(u"mnuDeleteFile"_s)->trigger();
        QVERIFY(Box()->IsEmpty());
        QVERIFY(!Box()->isEnabled());
    }

    void filesThatCantBeRead_leaveTheItemWhole()
    {
        Store({u"a.txt"_s});
        OpenFiles();
        ClickOn(1);
        m_database->Execute(u"ALTER TABLE Files RENAME COLUMN FileSize TO Gone"_s);
        m_prompts->ExpectError();
        ClickOn(0);
        QCOMPARE(Titles(), QStringList());
        Tab(0);
        QTest::keyClicks(Code(), u"typed"_s); // counts as a change all the same
        Action(u"mnuSaveItem"_s)->trigger();
        QVERIFY(PlainTextFromRtf(Read(u"Code"_s)).startsWith(u"typed"_s));
    }

    void lockedDescription_keepsItsFormat()
    {
        Store({u"a.txt"_s});
        m_database->Execute(u"UPDATE Files SET Description = ?"_s, {RtfFromPlainText(u"plain"_s, CodeFont)});
        OpenFiles();
        Files()->SetLocked(true);
        Box()->selectAll();
        Button(u"BOLD"_s)->trigger();
        QCOMPARE(Box()->SelBold(), std::optional(false));
    }

    void fileDeletedElsewhere_isSaid()
    {
        Store({u"a.txt"_s, u"b.txt"_s});
        OpenFiles();
        QTest::keyClicks(Box(), u"about a"_s);
        m_database->Execute(u"DELETE FROM Files WHERE ID = 1"_s);
        m_prompts->ExpectMsgBox(u"Save changes?"_s);
        Select(1);
        QVERIFY(m_prompts->Messages.last().Text.startsWith(
            u"The file 'a.txt' has been deleted from the library meanwhile."_s));
        QTRY_COMPARE(Titles(), QStringList{u"b.txt"_s});
    }

    void nextDescription_showsItsOwnFormat()
    {
        Store({u"a.txt"_s, u"b.txt"_s});
        OpenFiles();
        QTest::keyClicks(Box(), u"bold"_s);
        Box()->selectAll();
        Button(u"BOLD"_s)->trigger();
        QVERIFY(Button(u"BOLD"_s)->isChecked());
        Select(1);
        QVERIFY(!Button(u"BOLD"_s)->isChecked());
        Select(0);
        Box()->selectAll();
        QVERIFY(Button(u"BOLD"_s)->isChecked());
    }

    void libraryForReading_isNotChanged()
    {
        Store({u"a.txt"_s});
        m_database.reset();
        const QString library = m_home->Path(u"data/QBLib.qbd"_s);
        QVERIFY(QFile::setPermissions(library, QFileDevice::ReadOwner | QFileDevice::ReadUser | QFileDevice::ReadGroup
                                                   | QFileDevice::ReadOther));
        for (const QString& folder :
             {m_home->Path(), m_home->Path(u"data"_s), m_home->Path(u"config"_s), FilesFolder().chopped(1)}) {
            if (QFile::exists(folder))
                QVERIFY(QFile::setPermissions(folder, QFileDevice::Permissions(0x7777)));
        }
        const OrdinaryUser user;
        m_prompts->ExpectMsgBox(ApplicationTitle);
        OpenFiles();
        QCOMPARE(Titles(), QStringList{u"a.txt"_s});
        QVERIFY(!Action(u"mnuAddFile"_s)->isEnabled());
        QVERIFY(!Action(u"mnuDeleteFile"_s)->isEnabled());
        QVERIFY(Action(u"mnuExportFile"_s)->isEnabled());
        QVERIFY(Box()->Locked());
        m_window.reset();
    }

    void format_isThatOfTheDescription()
    {
        Store({u"a.txt"_s});
        OpenFiles();
        QVERIFY(m_window->findChild<QToolBar*>(u"tlbTextFormat"_s)->isVisible());
        QTest::keyClicks(Box(), u"bold"_s);
        Box()->selectAll();
        Button(u"BOLD"_s)->trigger();
        QCOMPARE(Box()->SelBold(), std::optional(true));
        QVERIFY(Button(u"BOLD"_s)->isChecked());
        Tab(1);
        QVERIFY(!Button(u"BOLD"_s)->isChecked()); // the notes have their own
        Tab(FilesTab);
        QVERIFY(Button(u"BOLD"_s)->isChecked());
        QCOMPARE(Details()->CurrentBox(), static_cast<UserTextBox*>(Box()));
    }
};

QB_GUI_TEST_MAIN(TestFileDescriptions)
#include "tst_file_descriptions.moc"
