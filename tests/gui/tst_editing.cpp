#include "support/EditingWindow.h"
#include "text/ui/CTextEdit.h"

#include <QClipboard>
#include <QComboBox>
#include <QProgressBar>
#include <QToolButton>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// The texts of an item are read, written, formatted and saved in the main window.
class TestEditing : public QObject, private EditingWindow {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        Begin();
    }
    void cleanup() { End(); }

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

    /// Another program writes to the item while it is shown here.
    void whatAnotherProgramWrote_staysAndIsShown()
    {
        Open();
        ClickOn(0);
        QTest::keyClicks(Code(), u"mine"_s);
        Write(u"Title"_s, u"their title"_s);
        Write(u"Notes"_s, RtfFromPlainText(u"their notes"_s, CodeFont));
        Action(u"mnuSaveItem"_s)->trigger();
        QCOMPARE(PlainTextFromRtf(Read(u"Code"_s)), u"mine"_s);
        QCOMPARE(Read(u"Title"_s), u"their title"_s);
        QCOMPARE(PlainTextFromRtf(Read(u"Notes"_s)), u"their notes"_s);
        QCOMPARE(Notes()->Text(), u"their notes"_s);
        QVERIFY(TabIcon(1));
        QCOMPARE(m_window->findChild<QLabel*>(u"lblTitle"_s)->text(), u"their title"_s);
        QCOMPARE(Child(0).data().toString(), u"their title"_s);
        QVERIFY(m_prompts->Choices.isEmpty());
        QTest::keyClicks(Notes(), u"x"_s); // what was shown anew is no change of the user's, and can be changed
        ClickOn(1);
        QVERIFY(PlainTextFromRtf(Read(u"Notes"_s)).contains(u'x'));
    }

    void textThatAnotherProgramChangedToo_isAskedFor_data()
    {
        QTest::addColumn<ChosenText>("answer");
        QTest::addColumn<QString>("stored");
        QTest::addColumn<QString>("shown");
        QTest::newRow("own") << ChosenText::Own << u"mine"_s << u"mine"_s;
        QTest::newRow("theirs") << ChosenText::Theirs << u"theirs"_s << u"theirs"_s;
        QTest::newRow("neither") << ChosenText::Cancel << u"theirs"_s << u"mine"_s;
    }
    void textThatAnotherProgramChangedToo_isAskedFor()
    {
        QFETCH(ChosenText, answer);
        QFETCH(QString, stored);
        QFETCH(QString, shown);
        Open();
        ClickOn(0);
        QTest::keyClicks(Code(), u"mine"_s);
        Write(u"Code"_s, RtfFromPlainText(u"theirs"_s, CodeFont));
        m_prompts->ExpectTextChoice(answer);
        Action(u"mnuSaveItem"_s)->trigger();
        QCOMPARE(m_prompts->Choices[0].Own, u"mine"_s);
        QCOMPARE(m_prompts->Choices[0].Theirs, u"theirs"_s);
        QCOMPARE(PlainTextFromRtf(Read(u"Code"_s)), stored);
        QCOMPARE(Code()->Text(), shown);
        if (answer == ChosenText::Cancel) { // it is still to be saved
            m_prompts->ExpectTextChoice(ChosenText::Own);
            ClickOn(1);
            QCOMPARE(PlainTextFromRtf(Read(u"Code"_s)), u"mine"_s);
        }
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
        RefuseWord(*m_database, u"Items"_s, u"Code"_s, u"precious"_s);
        m_prompts->ExpectError();
        m_prompts->ExpectMsgBox(u"Save Item"_s, MsgBoxResult::No);
        QVERIFY(!m_window->close());
        QCOMPARE(Code()->Text(), u"precious"_s);
        m_database->Execute(u"DROP INDEX refuse"_s); // there is room again
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
        m_prompts->ExpectMsgBox(u"Update this item and reset its '%1' status?"_s.arg(status),
                                yes ? MsgBoxResult::Yes : MsgBoxResult::No);
        Action(u"mnuSaveItem"_s)->trigger();
        const QString asked = m_prompts->Messages.last().Text;
        QVERIFY(asked.startsWith(
            inChild
                ? u"The item you have just updated is currently in conflict with its copy in mother database. \r\n"_s
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
        QVERIFY(Details()->TabEnabled(DetailsTab::Links));
        Action(u"NEW"_s)->trigger();
        QVERIFY(!TabIcon(0));
        QVERIFY(!Details()->TabEnabled(DetailsTab::Links));
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
        QCOMPARE(Child(1).data().toString(), u"typed title"_s);
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
        auto* button = qobject_cast<QToolButton*>(
            m_window->findChild<QToolBar*>(u"tlbTextFormat"_s)->widgetForAction(Button(u"COLOUR1"_s)));
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
        for (const QString& name :
             {u"mnuBoldItem"_s, u"mnuBullet"_s, u"mnuAlignmentLeft"_s, u"mnuAlignmentCenter"_s, u"mnuAlignmentRight"_s,
              u"mnuIncreaseIndent"_s, u"mnuDecreaseIndent"_s, u"mnuFontItem"_s, u"mnuFontSizeItem"_s,
              u"mnuFontColor1"_s, u"mnuFontColor2"_s, u"mnuColorItem"_s})
            QVERIFY2(m_window->findChild<QAction*>(name), qPrintable(name));
    }

    void undoWords_areThoseOfTheirNumbers()
    {
        const QString words[] = {u"Last Action"_s, u"Typing"_s, u"Delete"_s, u"Drag Drop"_s,
                                 u"Cut"_s,         u"Paste"_s,  QString()};
        for (int number = 0; number < 7; ++number)
            QCOMPARE(CTextEdit::Translated(UndoType(number)), words[number]);
    }

    // Pictures for people to look at

    void pictures()
    {
        const QString notes =
            u"{\\rtf1{\\fonttbl{\\f0 Verdana;}}{\\colortbl;\\red255\\green0\\blue0;\\red0\\green0\\blue255;}\\f0"
            "\\fs28\\b How to read a file\\b0\\fs20\\par "
            "Three things \\cf1 matter\\cf0  here, see {\\field{\\*\\fldinst{HYPERLINK \"https://example.org\"}}{"
            "\\fldrslt the page}}:\\par "
            "{\\pntext\\'b7\\tab}{\\*\\pn\\pnlvlblt{\\pntxtb\\bullet}}\\fi-300\\li300 open it \\i binary\\i0\\par"
            "{\\pntext\\'b7\\tab}check \\ul every\\ulnone  result\\par"
            "\\pard{\\*\\pn\\pnlvlbody\\pndec\\pnstart1{\\pntxta.}}\\fi-300\\li600 close it\\par look at \\cf2 "
            "errno\\cf0\\par"
            "\\pard\\qc centred \\highlight1 marked\\highlight0\\par\\pard\\qr right}"_s;
        Write(u"Notes"_s, notes);
        Write(u"Code"_s,
              RtfFromPlainText(u"' Works out a price\r\nPrivate Function Price(ByVal Count As Long) As Double\r\n"
                               "    Dim total As Double, name As String\r\n    name = \"price of \" & CStr(Count)\r\n"
                               "    If Count > 0 Then ' plain\r\n        total = Count * 2.5\r\n    End If\r\n"
                               "    Price = total\r\nEnd Function\r\n"_s,
                               CodeFont));
        Write(u"Example"_s, RtfFromPlainText(u"Debug.Print Price(3) ' 7.5"_s, CodeFont));
        Write(u"Info"_s, u"Prices are in the currency of the library."_s);
        AddStoredFile(*m_database, m_item, u"Price list.pdf"_s, QByteArray(48211, 'x'),
                      Date::FromParts(2026, 2, 3, 9, 30, 0));
        AddStoredFile(*m_database, m_item, u"Tests.zip"_s, QByteArray(1201, 'x'),
                      Date::FromParts(2026, 2, 7, 19, 4, 11));
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
            Tab(2);
            TakePicture(*m_window, u"usage"_s + suffix);
            Tab(3);
            TakePicture(*m_window, u"files"_s + suffix);
            Tab(5);
            TakePicture(*m_window, u"info"_s + suffix);
            m_window.reset();
            QApplication::setPalette(before);
        }
    }

private:
};

QB_GUI_TEST_MAIN(TestEditing)
#include "tst_editing.moc"
