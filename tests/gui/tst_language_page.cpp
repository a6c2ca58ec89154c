#include "platform/richtext/RtfPlainText.h"
#include "session/ui/LanguagePage.h"
#include "session/ui/frmNewDatabase.h"
#include "session/ui/frmSettings.h"
#include "store/LibraryLanguage.h"
#include "store/ShippedLanguages.h"
#include "support/EditingWindow.h"
#include "support/ui/ColorButton.h"
#include "text/ui/CodeBox.h"

#include <QAbstractItemModelTester>
#include <QCheckBox>
#include <QLabel>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTableView>
#include <QToolButton>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// The language page of the options, alone and as the main window opens it.
class TestLanguagePage : public QObject, private EditingWindow {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        Begin();
        m_database->Execute(u"DELETE FROM Keywords"_s);
        for (const auto& [word, coloured] :
             {std::pair(u"while"_s, true), std::pair(u"do"_s, true), std::pair(u"print"_s, false)})
            m_database->Execute(u"INSERT INTO Keywords (Keyword, Coloured) VALUES (?, ?)"_s, {word, coloured});
        m_settings = std::make_unique<CSettings>([this] { return m_database.get(); });
        m_settings->SkipDayCount();
    }
    void cleanup()
    {
        m_dialog.reset();
        m_settings.reset();
        End();
    }

    // The grid and its editor

    void editor_liesOverTheWord()
    {
        OpenDialog();
        QCOMPARE(Headers(), (QStringList{QString(), u"Keyword"_s, u"Coloured"_s}));
        QCOMPARE(Words(), u"do+ print while+ _"_s);
        QVERIFY(Editor()->isVisible());
        QCOMPARE(Editor()->text(), u"do"_s);
        QCOMPARE(Editor()->geometry(), Grid()->visualRect(Grid()->model()->index(0, 1)));
        QCOMPARE(Editor()->maxLength(), 30);
    }

    void newWord_isTypedInTheLastRow()
    {
        OpenDialog();
        Click(u"cmdAddNew"_s);
        QCOMPARE(Row(), 3);
        QVERIFY(Editor()->hasFocus());
        QTest::keyClicks(Editor(), u"for"_s);
        QCOMPARE(Stored(), u"do+ for print while+"_s); // inside the transaction
        QCOMPARE(Words(), u"do+ print while+ for _"_s);
        QVERIFY(Apply()->isEnabled());
        QTest::keyClick(Editor(), Qt::Key_Return); // to the tick
        QVERIFY(Grid()->hasFocus());
        QVERIFY(m_dialog->isVisible());
        QTest::keyClick(Grid(), Qt::Key_Space);
        QCOMPARE(Stored(), u"do+ for+ print while+"_s);
        QTest::keyClick(Grid(), Qt::Key_Tab); // to the next word
        QCOMPARE(Row(), 4);
        QVERIFY(Editor()->hasFocus());
        m_dialog->reject();
        QCOMPARE(Stored(), u"do+ print while+"_s);
    }

    void wordThatExists_leavesTheRow()
    {
        OpenDialog();
        Click(u"cmdAddNew"_s);
        QTest::keyClicks(Editor(), u"do"_s);
        QCOMPARE(Editor()->text(), u"do"_s);
        QCOMPARE(Stored(), u"d do+ print while+"_s);
        QTest::keyClicks(Editor(), u"g"_s);
        QCOMPARE(Stored(), u"do+ dog print while+"_s);
    }

    void emptiedWord_goesAtOnce()
    {
        OpenDialog();
        Editor()->setFocus();
        Editor()->selectAll();
        QTest::keyClick(Editor(), Qt::Key_Delete);
        QCOMPARE(Stored(), u"print while+"_s);
        QCOMPARE(Words(), u"print while+ _"_s);
        QCOMPARE(Editor()->text(), u"print"_s); // what stands there now
    }

    void keys_moveWithinTheRows()
    {
        OpenDialog();
        Editor()->setFocus();
        QTest::keyClick(Editor(), Qt::Key_Up);
        QCOMPARE(Row(), 0);
        QTest::keyClick(Editor(), Qt::Key_Down);
        QCOMPARE(Row(), 1);
        QCOMPARE(Editor()->text(), u"print"_s);
        Click(u"cmdMoveLast"_s);
        QCOMPARE(Row(), 3);
        QTest::keyClick(Editor(), Qt::Key_Down);
        QCOMPARE(Row(), 3);
        Click(u"cmdMovePrevious"_s);
        QCOMPARE(Row(), 2);
        Click(u"cmdMoveNext"_s);
        QCOMPARE(Row(), 3);
        Click(u"cmdMoveFirst"_s);
        QCOMPARE(Row(), 0);
        QTest::keyClick(Editor(), Qt::Key_Tab);
        QVERIFY(!Editor()->isVisible());
        QTest::keyClick(Grid(), Qt::Key_Left);
        QVERIFY(Editor()->isVisible());
        QTest::keyClick(Editor(), Qt::Key_Tab);
        QTest::keyClick(Grid(), Qt::Key_Return);
        QVERIFY(Editor()->isVisible());
        QVERIFY(m_dialog->isVisible());
        QVERIFY(!Apply()->isEnabled()); // going about changes nothing
    }

    void click_switchesTheTick()
    {
        OpenDialog();
        QTest::mouseClick(Grid()->viewport(), Qt::LeftButton, {},
                          Grid()->visualRect(Grid()->model()->index(1, 2)).center());
        QCOMPARE(Stored(), u"do+ print+ while+"_s);
        QVERIFY(Apply()->isEnabled());
    }

    void selectedWords_areDeletedAfterAQuestion()
    {
        OpenDialog();
        Grid()->setCurrentIndex(Grid()->model()->index(0, 2));
        Grid()->selectRow(0);
        Grid()->selectionModel()->select(Grid()->model()->index(2, 1),
                                         QItemSelectionModel::Select | QItemSelectionModel::Rows);
        m_prompts->ExpectMsgBox(u"Selection Delete"_s, MsgBoxResult::No);
        Click(u"cmdDelete"_s);
        QCOMPARE(m_prompts->Messages.last().Text, u"Do you wish to delete selected items?"_s);
        QCOMPARE(Words(), u"do+ print while+ _"_s);
        m_prompts->ExpectMsgBox(u"Selection Delete"_s, MsgBoxResult::Yes);
        Grid()->setFocus();
        QTest::keyClick(Grid(), Qt::Key_Delete);
        QCOMPARE(Words(), u"print _"_s);
        QCOMPARE(Stored(), u"print"_s);
    }

    // Values

    void values_areAppliedToTheLibrary()
    {
        OpenDialog();
        int told = 0;
        m_dialog->LanguageDataChanged = [&told] { ++told; };
        Box(u"txtLanguage"_s)->setText(u"Mine"_s);
        Box(u"txtCommentDelimiter"_s)->setText(u"--"_s);
        Box(u"txtCommentDelimiterStart"_s)->setText(u"/*"_s);
        Box(u"txtCommentDelimiterEnd"_s)->setText(u"*/"_s);
        Choose(u"lblKeywordColour"_s, u"PINK"_s);
        Choose(u"lblTextColour"_s, u"GREY"_s);
        Choose(u"lblNotesColour"_s, u"KHAKI"_s);
        QVERIFY(Apply()->isEnabled());
        QTest::mouseClick(Apply(), Qt::LeftButton);
        QCOMPARE(told, 1);
        QCOMPARE(GetSetting(SettingsApplication, u"Colours"_s, u"KeywordDefiner"_s),
                 u"%1,%2"_s.arg(0x6b7d8b).arg(0x8040ff));
        QCOMPARE(Property(u"LanguageUsed"_s), u"Mine"_s);
        QCOMPARE(Property(u"CommentIdentifier"_s), u"--"_s);
        QCOMPARE(Property(u"CommentIdentifierStart"_s), u"/*"_s);
        QCOMPARE(Property(u"CommentIdentifierEnd"_s), u"*/"_s);
        QCOMPARE(Property(u"ColouredKeywordColour"_s), QString::number(0x8040ff));
        QCOMPARE(Property(u"KeywordColour"_s), QString::number(0x808080));
        QCOMPARE(Property(u"CommentColour"_s), QString::number(0x6b7d8b));
        m_dialog->accept(); // nothing more was changed
        QCOMPARE(told, 1);
    }

    void coloursUsedLast_areOffered()
    {
        OpenDialog();
        auto* button = m_dialog->findChild<ColorButton*>(u"lblTextColour"_s);
        QStringList offered;
        for (const QAction* action : button->menu()->actions()) {
            if (action->property("key") == u"LAST"_s)
                offered << action->text();
        }
        QCOMPARE(offered, (QStringList{u"Used last: #008200"_s, u"Used last: #000084"_s})); // as preset
        button->menu()->actions().constFirst()->trigger();
        QCOMPARE(button->Color(), 33280U);
        QVERIFY(Apply()->isEnabled());
    }

    void missingDelimiter_keepsTheDialogOpen()
    {
        OpenDialog();
        Box(u"txtLanguage"_s)->setText(u"Mine"_s);
        Box(u"txtCommentDelimiter"_s)->clear();
        Box(u"txtCommentDelimiterStart"_s)->setText(u"/*"_s); // is not enough
        m_dialog->ShowPage(frmSettings::GeneralPage);
        m_prompts->ExpectMsgBox(u"Notes Delimiter Missing"_s);
        m_dialog->accept();
        QVERIFY(m_dialog->isVisible());
        QCOMPARE(m_dialog->findChild<QListWidget*>(u"lstPages"_s)->currentRow(), int(frmSettings::KeywordPage));
        QCOMPARE(Property(u"LanguageUsed"_s), u"VB"_s);
    }

    void libraryWithoutALanguage_letsTheDialogClose()
    {
        m_database->Execute(u"UPDATE Properties SET LanguageUsed = '', CommentIdentifier = NULL"_s);
        m_database->Execute(u"DELETE FROM Keywords"_s);
        OpenDialog();
        m_dialog->findChild<QCheckBox*>(u"chkTipsOnStartup"_s)->click();
        m_dialog->accept();
        QVERIFY(!m_dialog->isVisible());
        QVERIFY(!CSettings([] { return nullptr; }).TipsOnStartup());
    }

    /// The words that a full disk has taken back stand in the grid again.
    void lostTransaction_isShownInTheGrid()
    {
        OpenDialog();
        const QAbstractItemModelTester tester(Grid()->model());
        Grid()->setCurrentIndex(Grid()->model()->index(3, 1));
        for (const QString& word : {u"mine"_s, u"yours"_s}) {
            Grid()->setCurrentIndex(Grid()->model()->index(Grid()->model()->rowCount() - 1, 1));
            Editor()->setText(word);
        }
        QCOMPARE(Words(), u"do+ print while+ mine yours _"_s);
        LoseTransaction(*m_database);
        m_prompts->ExpectError();
        Editor()->setText(u"yours too"_s);
        QCOMPARE(Words(), u"do+ print while+ _"_s);
        QCOMPARE(Editor()->text(), Row() == 3 ? QString() : u"do print while"_s.section(u' ', Row(), Row()));
    }

    // Files

    void file_isExportedAndImported()
    {
        OpenDialog();
        const QString path = m_home->Path(u"mine.qbl"_s);
        QList<bool> asked;
        m_dialog->RequestLanguageDefinitionFileName = [&](QString& fileName, bool forExport) {
            asked << forExport;
            fileName = path;
        };
        Click(u"cmdExport"_s);
        QCOMPARE(ReadLanguageFile(path).ColouredWords, (QStringList{u"do"_s, u"while"_s}));
        WriteLanguageFile(
            path, {.Language = u"Other"_s, .Comment = u"%"_s, .ColouredWords = {u"alpha"_s}, .CommentColour = 5});
        Click(u"cmdImport"_s);
        QCOMPARE(asked, (QList<bool>{true, false}));
        QCOMPARE(Words(), u"alpha+ _"_s);
        QCOMPARE(Box(u"txtLanguage"_s)->text(), u"Other"_s);
        QCOMPARE(Box(u"txtCommentDelimiter"_s)->text(), u"%"_s);
        QCOMPARE(m_dialog->findChild<ColorButton*>(u"lblNotesColour"_s)->Color(), 5U);
        QVERIFY(Apply()->isEnabled());
        m_dialog->reject();
        QCOMPARE(Stored(), u"do+ print while+"_s);
    }

    void fileThatCantBeTaken_isToldAbout()
    {
        OpenDialog();
        const QString path = m_home->Path(u"bad.qbl"_s);
        WriteFile(path, BytesOf({.ColouredWords = {QString(31, u'x')}}));
        m_dialog->RequestLanguageDefinitionFileName = [&path](QString& fileName, bool) { fileName = path; };
        m_prompts->ExpectMsgBox(u"Import Language Definition"_s);
        Click(u"cmdImport"_s);
        QVERIFY(m_prompts->Messages.last().Text.contains(u"nothing was changed"_s));
        QCOMPARE(Words(), u"do+ print while+ _"_s);
        QVERIFY(!Apply()->isEnabled());
    }

    void cancelledFileDialog_doesNothing()
    {
        OpenDialog();
        m_dialog->RequestLanguageDefinitionFileName = [](QString&, bool) {};
        Click(u"cmdImport"_s);
        Click(u"cmdExport"_s);
        QVERIFY(!Apply()->isEnabled());
    }

    void shippedLanguage_isTakenFromTheList()
    {
        OpenDialog();
        auto* button = m_dialog->findChild<QToolButton*>(u"cmdShippedLanguages"_s);
        QVERIFY(button->isVisible());
        QTest::mouseClick(button, Qt::LeftButton);
        auto* search = button->findChild<QLineEdit*>(u"txtLanguageSearch"_s);
        QVERIFY(search);
        QTest::keyClicks(search, u"*.pyw"_s);
        QTest::keyClick(search, Qt::Key_Return);
        QCOMPARE(Box(u"txtLanguage"_s)->text(), u"Python"_s);
        QVERIFY(Words().contains(u"elif+"_s));
        QVERIFY(Rules()->toPlainText().contains(u"files: *.py"_s));
        QVERIFY(!Check(u"chkCorrectSpelling"_s)->isEnabled());
        QTest::mouseClick(Apply(), Qt::LeftButton);
        QVERIFY(RulesOfLibrary(*m_database).contains(u"files: *.py"_s));
    }

    void spellingSwitch_isKeptWithTheLibrary()
    {
        OpenDialog();
        QVERIFY(Check(u"chkCorrectSpelling"_s)->isEnabled());
        QVERIFY(Check(u"chkCorrectSpelling"_s)->isChecked());
        Check(u"chkCorrectSpelling"_s)->click();
        QTest::mouseClick(Apply(), Qt::LeftButton);
        QVERIFY(!CorrectsSpelling(RulesOfLibrary(*m_database)));
        Check(u"chkCorrectSpelling"_s)->click();
        QTest::mouseClick(Apply(), Qt::LeftButton);
        QCOMPARE(RulesOfLibrary(*m_database), QString());
    }

    void rulesThatAreTyped_areCheckedAndKept()
    {
        OpenDialog();
        auto* state = m_dialog->findChild<QLabel*>(u"lblRulesState"_s);
        Rules()->setPlainText(u"line: ;\nblock: half"_s);
        QVERIFY2(state->text().contains(u"line 2: 'block: half'"_s), qPrintable(state->text()));
        Rules()->setPlainText(u"line: ;"_s);
        QVERIFY2(state->text().startsWith(u"Texts are painted"_s), qPrintable(state->text()));
        QTest::mouseClick(Apply(), Qt::LeftButton);
        QCOMPARE(RulesOfLibrary(*m_database), u"line: ;"_s);
    }

    void coloursOfKinds_areTheUsersAndShownInTheSample()
    {
        OpenDialog();
        Rules()->setPlainText(u"line: ;"_s);
        auto* button = m_dialog->findChild<ColorButton*>(u"cmdColour_comment_light"_s);
        QVERIFY(button);
        button->SetColor(0x0000ff);
        Q_EMIT button->ColorChosen(0x0000ff);
        QVERIFY(Apply()->isEnabled());
        QTest::mouseClick(Apply(), Qt::LeftButton);
        QCOMPARE(m_settings->RuleColoursLight(), u"comment=#ff0000"_s);
        QCOMPARE(m_settings->RuleColoursDark(), QString());
        Q_EMIT button->ColorChosen(0xf0f0f0);
        QCOMPARE(m_dialog->findChild<QLabel*>(u"lblColourAdvice"_s)->text(), u"Hard to read: comments"_s);
        m_dialog->findChild<QPushButton*>(u"cmdUsualColours"_s)->click();
        QTest::mouseClick(Apply(), Qt::LeftButton);
        QCOMPARE(m_settings->RuleColoursLight(), QString());
    }

    // From the main window

    void newWords_colourTheCodeAtOnce()
    {
        Write(u"Code"_s, RtfFromPlainText(u"zig zag\r\n"_s, CodeFont));
        Open();
        ClickOn(0);
        WithOptions([this](frmSettings& dialog) {
            dialog.ShowPage(frmSettings::KeywordPage);
            dialog.findChild<QPushButton*>(u"cmdAddNew"_s)->click();
            auto* editor = dialog.findChild<QLineEdit*>(u"txtEdit"_s);
            QTest::keyClicks(editor, u"Zig"_s);
            QTest::keyClick(editor, Qt::Key_Return);
            QTest::keyClick(dialog.findChild<QTableView*>(u"fgrdList"_s), Qt::Key_Space);
            Box(dialog, u"txtLanguage"_s)->setText(u"Zigzag"_s);
            dialog.accept();
        });
        QCOMPARE(m_window->findChild<QLabel*>(u"sbrMainPanel1"_s)->text(), u"Zigzag"_s);
        QTest::keyClicks(Code(), u" "_s);
        Action(u"mnuColorize"_s)->trigger();
        QVERIFY(Code()->Text().contains(u"Zig zag"_s));
    }

    void fileDialog_hasTheTitlesOfItsTwoUses()
    {
        Open();
        WithOptions([this](frmSettings& dialog) {
            m_prompts->ExpectFileName(u"Export Language Definition To File"_s, {});
            dialog.findChild<QPushButton*>(u"cmdExport"_s)->click();
            m_prompts->ExpectFileName(u"Import Language Definition From File"_s, {});
            dialog.findChild<QPushButton*>(u"cmdImport"_s)->click();
            dialog.reject();
        });
        QCOMPARE(m_prompts->Questions.last().Filter, u"KT Quillbase Language Definition|*.qbl"_s);
    }

    void statusBar_followsTheOptions()
    {
        Open();
        WithOptions([](frmSettings& dialog) {
            dialog.findChild<QAbstractButton*>(u"chkStatusBar"_s)->setChecked(false);
            dialog.accept();
        });
        QVERIFY(!m_window->findChild<QWidget*>(u"sbrMain"_s)->isVisible());
        QVERIFY(!Action(u"mnuViewStatusBar"_s)->isChecked());
    }

    void selfDefinedLibrary_opensTheLanguagePage()
    {
        Open();
        const QString path = m_home->Path(u"data/own.qbd"_s);
        m_prompts->ExpectFileName(u"Enter Name and Path for the New Database"_s, path);
        m_prompts->ExpectInputBox(u"Include to Favourites List"_s, u"own"_s);
        bool shown = false;
        QTimer::singleShot(0, this, [&] {
            auto* dialog = qobject_cast<frmNewDatabase*>(QApplication::activeModalWidget());
            QVERIFY(dialog);
            QTimer::singleShot(0, this, [&] {
                auto* options = qobject_cast<frmSettings*>(QApplication::activeModalWidget());
                QVERIFY(options);
                shown = options->findChild<QListWidget*>(u"lstPages"_s)->currentRow() == frmSettings::KeywordPage
                        && options->findChild<QTableView*>(u"fgrdList"_s)->model()->rowCount() == 1;
                options->reject();
            });
            dialog->findChild<QRadioButton*>(u"optSelfDefined"_s)->setChecked(true);
            dialog->accept();
        });
        Action(u"mnuNewDatabase"_s)->trigger();
        QVERIFY(shown);
    }

    void shippedLanguage_isOfferedForANewLibrary()
    {
        frmNewDatabase dialog;
        auto* languages = dialog.findChild<QListWidget*>(u"lstLanguages"_s);
        QCOMPARE(languages->count(), int(ShippedLanguages().size()));
        QTest::keyClicks(dialog.findChild<QLineEdit*>(u"txtLanguageSearch"_s), u"rus"_s);
        QCOMPARE(languages->currentItem()->text(), u"Rust"_s);
        QVERIFY(!dialog.findChild<CodeBox*>(u"rtbSample"_s)->IsEmpty());
        QVERIFY(dialog.findChild<QRadioButton*>(u"optFile"_s)->isChecked());
        dialog.accept();
        QCOMPARE(dialog.LanguageSelected(), LanguageType::File);
        QCOMPARE(ReadLanguageFile(dialog.LanguageFilePath()).Language, u"Rust"_s);
    }

private:
    QPlainTextEdit* Rules() { return m_dialog->findChild<QPlainTextEdit*>(u"txtRules"_s); }
    QCheckBox* Check(const QString& name) { return m_dialog->findChild<QCheckBox*>(name); }
    void OpenDialog()
    {
        m_dialog = std::make_unique<frmSettings>();
        m_dialog->InitializeSettings(*m_settings, m_database.get());
        m_dialog->ShowPage(frmSettings::KeywordPage);
        m_dialog->show();
        m_dialog->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(m_dialog.get()));
    }
    /// Opens the options from the menu and works in them.
    void WithOptions(const std::function<void(frmSettings&)>& work)
    {
        bool worked = false;
        QTimer::singleShot(0, this, [&] {
            auto* dialog = qobject_cast<frmSettings*>(QApplication::activeModalWidget());
            QVERIFY(dialog);
            worked = true;
            work(*dialog);
        });
        Action(u"mnuOptionsItem"_s)->trigger();
        QVERIFY(worked);
    }

    QTableView* Grid() { return m_dialog->findChild<QTableView*>(u"fgrdList"_s); }
    QLineEdit* Editor() { return Box(u"txtEdit"_s); }
    QLineEdit* Box(const QString& name) { return Box(*m_dialog, name); }
    static QLineEdit* Box(frmSettings& dialog, const QString& name) { return dialog.findChild<QLineEdit*>(name); }
    QPushButton* Apply() { return m_dialog->findChild<QPushButton*>(u"cmdApply"_s); }
    void Click(const QString& button) { m_dialog->findChild<QPushButton*>(button)->click(); }
    int Row() { return Grid()->currentIndex().row(); }
    void Choose(const QString& button, const QString& key)
    {
        for (QAction* action : m_dialog->findChild<ColorButton*>(button)->menu()->actions()) {
            if (action->property("key") == key)
                action->trigger();
        }
    }
    QStringList Headers()
    {
        QStringList headers;
        for (int column = 0; column < Grid()->model()->columnCount(); ++column)
            headers << Grid()->model()->headerData(column, Qt::Horizontal).toString();
        return headers;
    }
    /// The grid; "+" marks a tick, "_" the empty row.
    QString Words()
    {
        QStringList words;
        const QAbstractItemModel* model = Grid()->model();
        for (int row = 0; row < model->rowCount(); ++row) {
            const QString word = model->index(row, 1).data().toString();
            const bool ticked = !model->index(row, 2).data(Qt::DecorationRole).isNull();
            words << (word.isEmpty() ? u"_"_s : word) + (ticked ? u"+"_s : QString());
        }
        return words.join(u' ');
    }
    QString Stored()
    {
        return Texts(*m_database,
                     u"SELECT Keyword || CASE WHEN coalesce(Coloured, 0) THEN '+' ELSE '' END FROM Keywords ORDER BY "
                     "Keyword"_s)
            .join(u' ');
    }
    QString Property(const QString& column)
    {
        return m_database->QueryValue(u"SELECT "_s + column + u" FROM Properties"_s).ToText();
    }

    std::unique_ptr<CSettings> m_settings;
    std::unique_ptr<frmSettings> m_dialog;
};

QB_GUI_TEST_MAIN(TestLanguagePage)
#include "tst_language_page.moc"
