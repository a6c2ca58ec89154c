#include "find/FindRun.h"
#include "finder/FindMemory.h"
#include "finder/ui/FindHitView.h"
#include "finder/ui/FindResultsView.h"
#include "finder/ui/frmFind.h"
#include "finder/ui/frmReplace.h"
#include "panels/ui/ctlBookmarks.h"
#include "panels/ui/ctlFileDetails.h"
#include "session/WindowLayout.h"
#include "session/ui/LibraryFind.h"
#include "support/EditingWindow.h"
#include "support/ui/Appearance.h"

#include <QCheckBox>
#include <QComboBox>
#include <QHeaderView>
#include <QListView>
#include <QPlainTextEdit>
#include <QPushButton>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// The find over the library in the window: dialog, list, and the way through the texts.
class TestFindPanel : public QObject, private EditingWindow {
    Q_OBJECT

private:
    void Fill()
    {
        m_other = m_database->QueryValue(u"SELECT ID FROM Items WHERE Title = 'other'"_s).ToLong();
        Write(u"Code"_s, u"Dim needle As Long ' the first\r\nneedle = 1\r\n\r\nPrint needle"_s);
        Write(u"Notes"_s, u"Where a needle is, there is hay."_s);
        m_database->Execute(u"UPDATE Items SET Title = 'needle box', Example = 'Use the needle' WHERE ID = ?"_s,
                            {m_other});
    }
    frmFind* Dialog() { return m_window->findChild<frmFind*>(); }
    FindResultsView* List() { return m_window->findChild<FindResultsView*>(); }
    ctlBookmarks* Panel() { return m_window->findChild<ctlBookmarks*>(); }
    QString Caption() { return Panel()->findChild<QLabel*>(u"lblCaption"_s)->text(); }
    template <class Widget>
    Widget* In(const QString& name)
    {
        return Dialog()->findChild<Widget*>(name);
    }
    QString Status() { return In<QLabel>(u"lblFindStatus"_s)->text(); }
    void OpenDialog(const QString& text)
    {
        Action(u"mnuFullTextFind"_s)->trigger();
        QVERIFY(Dialog() && Dialog()->isVisible());
        In<QLineEdit>(u"txtFind"_s)->setText(text);
        QTRY_VERIFY(!Status().contains(u"so far"_s)
                    && (Status().contains(u"item"_s) || Status().contains(u"Nothing"_s)));
    }
    void Find(const QString& text)
    {
        OpenDialog(text);
        In<QPushButton>(u"cmdOK"_s)->click();
        QTRY_VERIFY(!Dialog()->isVisible());
    }
    QStringList Rows()
    {
        QStringList rows;
        for (int row = 0; row < List()->model()->rowCount(); ++row)
            rows << List()->model()->index(row, 0).data().toString();
        return rows;
    }
    QString Selected() { return Details()->SelText(); }
    /// Runs @p use in the preview that opens next, which on a slow machine comes behind a window of progress.
    static void InDialog(const std::function<void(frmReplace&)>& use)
    {
        QTimer::singleShot(0, qApp, [use] {
            auto* dialog = qobject_cast<frmReplace*>(QApplication::activeModalWidget());
            if (!dialog)
                return InDialog(use);
            use(*dialog);
            if (dialog->isVisible())
                dialog->reject();
        });
    }
    int Marks(QPlainTextEdit* box) { return int(box->extraSelections().size()); }

    qint64 m_other = 0;

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        Begin();
        Fill();
    }
    void cleanup() { End(); }

    void find_listsItemsWithTheirLetters()
    {
        Open();
        QVERIFY(!Action(u"mnuFindNextOccurance"_s)->isEnabled());
        Find(u"needle"_s);
        QCOMPARE(Rows(), (QStringList{u"needle box  (T/U)"_s, u"item  (C/N)"_s}));
        QCOMPARE(Panel()->DisplayedTab(), int(BookmarkTab::FindResults));
        QCOMPARE(Caption(), u" Find Results : needle (Exact)"_s);
        QCOMPARE(List()->currentIndex().row(), 0);
        QVERIFY(List()->isHeaderHidden());
        QVERIFY(Action(u"mnuFindNextOccurance"_s)->isEnabled());
        TakePicture(*m_window, u"find-tab-quick"_s);
        ToolbarButton(u"tbrSearch"_s, u"DETAIL_LIST"_s)->trigger();
        QCOMPARE(List()->header()->count(), 12);
        QCOMPARE(List()->columnWidth(5), 350 / 15);
        QVERIFY(!List()->isHeaderHidden());
        QVERIFY(ToolbarButton(u"tbrSearch"_s, u"DETAIL_LIST"_s)->isChecked());
        QVERIFY(!ToolbarButton(u"tbrSearch"_s, u"QUICK_LIST"_s)->isChecked());
        TakePicture(*m_window, u"find-tab-detail"_s);
        ApplyAppearance(u"Dark"_s, {}, 0);
        TakePicture(*m_window, u"find-tab-detail-dark"_s);
        ApplyAppearance(u"System"_s, {}, 0);
    }

    void emptyList_saysWhatToDo()
    {
        Open();
        Panel()->SetDisplayedTab(int(BookmarkTab::FindResults));
        QCOMPARE(Caption(), u" Find Results :"_s);
        TakePicture(*Panel(), u"find-tab-empty"_s);
    }

    void settings_areReadAndKept()
    {
        SaveSetting(SettingsApplication, u"Settings"_s, u"SearchResultsViewType"_s, u"1"_s);
        SaveSetting(SettingsApplication, u"Settings"_s, u"FindResultsSingleClick"_s, u"True"_s);
        Open();
        QVERIFY(!List()->isHeaderHidden());
        QVERIFY(Action(u"mnuFindSingleClick"_s)->isChecked());
        ToolbarButton(u"tbrSearch"_s, u"QUICK_LIST"_s)->trigger();
        Action(u"mnuFindSingleClick"_s)->trigger();
        m_window->close();
        QCOMPARE(GetSetting(SettingsApplication, u"Settings"_s, u"SearchResultsViewType"_s), u"0"_s);
        QCOMPARE(GetSetting(SettingsApplication, u"Settings"_s, u"FindResultsSingleClick"_s), u"False"_s);
    }

    void foreignViewTypeInTheSettings_isTheQuickList_data()
    {
        QTest::addColumn<QString>("number");
        for (const char* number : {"2", "-1", "2147483647", "257", "9999999999", "x"})
            QTest::newRow(number) << QString::fromLatin1(number);
    }

    void foreignViewTypeInTheSettings_isTheQuickList()
    {
        QFETCH(QString, number);
        SaveSetting(SettingsApplication, u"Settings"_s, u"SearchResultsViewType"_s, number);
        Open();
        QVERIFY(List()->isHeaderHidden());
        QVERIFY(ToolbarButton(u"tbrSearch"_s, u"QUICK_LIST"_s)->isChecked());
        QVERIFY(!ToolbarButton(u"tbrSearch"_s, u"DETAIL_LIST"_s)->isChecked());
        m_window->close();
        QCOMPARE(GetSetting(SettingsApplication, u"Settings"_s, u"SearchResultsViewType"_s), u"0"_s);
    }

    void occurrences_areSteppedThroughAcrossPagesAndItems()
    {
        Open();
        Find(u"needle"_s);
        const auto next = [this] { Action(u"mnuFindNextOccurance"_s)->trigger(); };
        next();
        QCOMPARE(Details()->CurrentView(), DetailsTab::Usage);
        QCOMPARE(Usage()->SelStart(), 8);
        QCOMPARE(Selected(), u"needle"_s);
        next();
        QCOMPARE(Details()->CurrentView(), DetailsTab::Code);
        QCOMPARE(Code()->SelStart(), 4);
        QCOMPARE(Selected(), u"needle"_s);
        QCOMPARE(Marks(Code()), 3);
        TakePicture(*m_window, u"find-marks"_s);
        next();
        QCOMPARE(Code()->SelStart(), 32);
        next();
        next();
        QCOMPARE(Details()->CurrentView(), DetailsTab::Notes);
        QCOMPARE(Notes()->SelStart(), 8);
        Action(u"mnuFindPreviousOccurance"_s)->trigger();
        QCOMPARE(Details()->CurrentView(), DetailsTab::Code);
        QCOMPARE(Code()->SelStart(), 52);
        next();
        m_prompts->ExpectMsgBox(u"Start Over?"_s, MsgBoxResult::No);
        next();
        QCOMPARE(List()->currentIndex().row(), 1);
        m_prompts->ExpectMsgBox(u"Start Over?"_s, MsgBoxResult::Yes);
        next();
        QCOMPARE(List()->currentIndex().row(), 0);
        QCOMPARE(Details()->CurrentView(), DetailsTab::Usage);
    }

    void words_areChosenInTheCombo()
    {
        Open();
        Action(u"mnuFullTextFind"_s)->trigger();
        In<QComboBox>(u"cboMode"_s)->setCurrentIndex(1);
        Find(u"first needle"_s);
        QCOMPARE(Caption(), u" Find Results : first needle (All)"_s);
        auto* words = m_window->findChild<QComboBox*>(u"cboSearchWords"_s);
        QVERIFY(!words->isEnabled());
        m_prompts->ExpectMsgBox(u"Find what?"_s);
        Action(u"mnuFindNextOccurance"_s)->trigger();
        QCOMPARE(words->count(), 2);
        QCOMPARE(words->currentIndex(), -1);
        QCOMPARE(words->placeholderText(), u"Select word"_s);
        QCOMPARE(m_window->focusWidget(), words);
        words->setCurrentIndex(0);
        Action(u"mnuFindNextOccurance"_s)->trigger();
        QCOMPARE(Selected(), u"first"_s);
    }

    void clicks_openAResultByTheSetting()
    {
        Open();
        Find(u"needle"_s);
        const QPoint place = List()->visualRect(List()->model()->index(1, 0)).center();
        QTest::mouseClick(List()->viewport(), Qt::LeftButton, {}, place);
        QVERIFY(!Details()->CurrentView());
        QTest::mouseDClick(List()->viewport(), Qt::LeftButton, {}, place);
        QCOMPARE(Details()->CurrentView(), DetailsTab::Code);
        QCOMPARE(Code()->SelStart(), 4);
        Action(u"mnuFindSingleClick"_s)->trigger();
        QTest::mouseClick(List()->viewport(), Qt::LeftButton, {},
                          List()->visualRect(List()->model()->index(0, 0)).center());
        QCOMPARE(Details()->CurrentView(), DetailsTab::Usage);
    }

    void marks_followTheTextAndGoWithTheResults()
    {
        Open();
        Find(u"needle"_s);
        Action(u"mnuFindNextOccurance"_s)->trigger();
        Action(u"mnuFindNextOccurance"_s)->trigger();
        QCOMPARE(Marks(Code()), 3);
        Code()->SetSelStart(0);
        QTest::keyClicks(Code(), u"needle "_s);
        QTRY_COMPARE(Marks(Code()), 4);
        Action(u"mnuFindInText"_s)->trigger(); // its marks stand beside these
        m_window->findChild<QLineEdit*>(u"txtFindText"_s)->setText(u"Long"_s);
        QCOMPARE(Marks(Code()), 5);
        m_window->findChild<QToolButton*>(u"cmdFindClose"_s)->click();
        QCOMPARE(Marks(Code()), 4);
        Action(u"mnuClearFindResults"_s)->trigger();
        QCOMPARE(Marks(Code()), 0);
        QCOMPARE(Rows(), QStringList());
        QCOMPARE(Caption(), u" Find Results :"_s);
    }

    void itemThatHasGone_isSaid()
    {
        Open();
        Find(u"needle"_s);
        m_database->Execute(u"DELETE FROM Items WHERE ID = ?"_s, {m_other});
        m_prompts->ExpectMsgBox(ApplicationTitle);
        Action(u"mnuFindNextOccurance"_s)->trigger();
        QVERIFY(m_prompts->Messages.last().Text.contains(u"not in the library any more"_s));
    }

    void itemThatIsSaved_isFoundAtOnce()
    {
        Open();
        ClickOn(0);
        QTest::keyClicks(Code(), u"haystack "_s);
        Action(u"mnuSaveItem"_s)->trigger();
        Find(u"haystack"_s);
        QCOMPARE(Rows(), QStringList{u"item  (C)"_s});
    }

    void anotherLibrary_hasNoResults()
    {
        const QString path = m_home->Path(u"second.qbd"_s);
        AddItem(*MakeLibrary(path, LanguageType::None), 0, u"needle too"_s);
        Open();
        Find(u"needle"_s);
        m_prompts->ExpectFileName(u"Select a Quillbase Library Database"_s, path);
        m_prompts->ExpectInputBox(u"Include to Favourites List"_s, u"second"_s);
        Action(u"mnuOpenDatabase"_s)->trigger();
        QCOMPARE(Rows(), QStringList());
        Find(u"needle"_s);
        QCOMPARE(Rows(), QStringList{u"needle too  (T)"_s});
    }

    // The dialog

    void emptyKeyword_isSaid()
    {
        Open();
        Action(u"mnuFullTextFind"_s)->trigger();
        m_prompts->ExpectMsgBox(u"Missing search phrase"_s);
        In<QPushButton>(u"cmdOK"_s)->click();
        QCOMPARE(m_prompts->Messages.last().Text, u"No keyword entered."_s);
        QVERIFY(Dialog()->isVisible());
        TakePicture(*Dialog(), u"find-dialog-empty"_s);
    }

    void dialog_showsHitsWhileTyping()
    {
        Open();
        OpenDialog(u"needle"_s);
        QCOMPARE(Status(), u"6 places in 2 items"_s);
        QAbstractItemModel* hits = Dialog()->Hits()->model();
        QCOMPARE(hits->rowCount(), 8);
        TakePicture(*Dialog(), u"find-dialog"_s);
        In<QToolButton>(u"cmdMore"_s)->setChecked(true);
        TakePicture(*Dialog(), u"find-dialog-more"_s);
        In<QCheckBox>(u"chkFieldC"_s)->setChecked(false);
        QTRY_COMPARE(Status(), u"3 places in 2 items"_s);
        In<QComboBox>(u"cboCase"_s)->setCurrentIndex(1);
        In<QLineEdit>(u"txtFind"_s)->setText(u"NEEDLE"_s);
        QTRY_COMPARE(Status(), u"Nothing was found"_s);
        ApplyAppearance(u"Dark"_s, {}, 0);
        In<QComboBox>(u"cboCase"_s)->setCurrentIndex(0);
        In<QCheckBox>(u"chkFieldC"_s)->setChecked(true);
        In<QLineEdit>(u"txtFind"_s)->setText(u"needle"_s);
        QTRY_COMPARE(Status(), u"6 places in 2 items"_s);
        Dialog()->Hits()->setCurrentIndex(hits->index(4, 0));
        TakePicture(*Dialog(), u"find-dialog-dark"_s);
        ApplyAppearance(u"System"_s, {}, 0);
        Dialog()->resize(Dialog()->minimumSizeHint().width(), 480);
        TakePicture(*Dialog(), u"find-dialog-narrow"_s);
    }

    void hit_isOpenedAtItsPlace()
    {
        Open();
        OpenDialog(u"needle"_s);
        FindHitView* hits = Dialog()->Hits();
        int row = 0; // the third place in the code
        while (hits->model()->index(row, 0).data().toString() != u"C 4: Print needle"_s)
            ++row;
        hits->scrollTo(hits->model()->index(row, 0));
        QTest::mouseClick(hits->viewport(), Qt::LeftButton, {},
                          hits->visualRect(hits->model()->index(row, 0)).center());
        QCOMPARE(Details()->CurrentView(), DetailsTab::Code);
        QCOMPARE(Code()->SelStart(), 52);
        QVERIFY(Dialog()->isVisible());
        QCOMPARE(Rows().size(), 2);
        QTest::keyClick(Dialog(), Qt::Key_F4, Qt::ShiftModifier);
        QCOMPARE(Code()->SelStart(), 32);
    }

    void hitInAStoredFile_leadsToTheFile()
    {
        const Date added = Date::FromParts(2024, 5, 6);
        AddStoredFile(*m_database, m_item, u"a.txt"_s, "hay", added);
        const qint64 file = AddStoredFile(*m_database, m_item, u"b.txt"_s, "hay and a pitchfork", added);
        AddStoredFile(*m_database, m_item, u"c.txt"_s, "hay", added);
        Open();
        OpenDialog(u"pitchfork"_s);
        FindHitView* hits = Dialog()->Hits();
        QTest::mouseClick(hits->viewport(), Qt::LeftButton, {}, hits->visualRect(hits->model()->index(1, 0)).center());
        QCOMPARE(Details()->CurrentView(), DetailsTab::Files);
        auto* files = m_window->findChild<ctlFileDetails*>();
        QCOMPARE(files->SelectedFiles(), QList<qint64>{file});
        m_database->Execute(u"DELETE FROM Files WHERE ID = ?"_s, {file}); // the list of hits doesn't know that yet
        QTest::mouseClick(hits->viewport(), Qt::LeftButton, {}, hits->visualRect(hits->model()->index(1, 0)).center());
        QCOMPARE(Details()->CurrentView(), DetailsTab::Files);
    }

    void unsavedText_isSaidNotToBeFound()
    {
        Open();
        OpenDialog(u"needle"_s);
        QVERIFY2(!Status().contains(u"saved"_s), qPrintable(Status()));
        ClickOn(0);
        QTest::keyClicks(Code(), u"straw "_s);
        OpenDialog(u"straw"_s);
        QTRY_COMPARE(Status(), u"Nothing was found. “item” was searched as it is saved."_s);
        Details()->SaveItem(true);
        In<QLineEdit>(u"txtFind"_s)->clear();
        OpenDialog(u"straw"_s);
        QTRY_COMPARE(Status(), u"1 place in 1 item"_s);
    }

    void wrongExpression_isSaidWhereItIsWrong()
    {
        Open();
        Action(u"mnuFullTextFind"_s)->trigger();
        In<QComboBox>(u"cboMode"_s)->setCurrentIndex(2);
        In<QLineEdit>(u"txtFind"_s)->setText(u"a(b"_s);
        QVERIFY2(Status().contains(u"at character 4"_s), qPrintable(Status()));
        TakePicture(*Dialog(), u"find-dialog-wrong"_s);
    }

    void branch_isThatOfTheItem()
    {
        AddItem(*m_database, m_other, u"child"_s, u"needle"_s);
        Open();
        ClickOn(1);
        OpenDialog(u"needle"_s);
        auto* branch = In<QCheckBox>(u"chkBranch"_s);
        QCOMPARE(branch->text(), u"Only the &branch of “needle box”"_s);
        branch->setChecked(true);
        QTRY_COMPARE(Status(), u"3 places in 2 items"_s);
    }

    void limits_areThoseOfTheQuery()
    {
        m_database->Execute(u"UPDATE Items SET ItemStatus = 4, ItemRating = 6 WHERE ID = ?"_s, {m_other});
        Open();
        OpenDialog(u"needle"_s);
        In<QComboBox>(u"cboStatus"_s)->setCurrentIndex(In<QComboBox>(u"cboStatus"_s)->findData(4));
        QTRY_COMPARE(Status(), u"2 places in 1 item"_s);
        In<QComboBox>(u"cboRating"_s)->setCurrentIndex(In<QComboBox>(u"cboRating"_s)->findData(5));
        QTRY_COMPARE(Status(), u"Nothing was found"_s);
        In<QComboBox>(u"cboRating"_s)->setCurrentIndex(In<QComboBox>(u"cboRating"_s)->findData(6));
        QTRY_COMPARE(Status(), u"2 places in 1 item"_s);
        QCOMPARE(In<QComboBox>(u"cboLanguage"_s)->count(), 2);
        In<QComboBox>(u"cboLanguage"_s)->setCurrentIndex(1);
        QCOMPARE(Dialog()->Query().Language, u"VB"_s);
        In<QCheckBox>(u"chkSince"_s)->setChecked(true);
        QVERIFY(!Dialog()->Query().ChangedSince.IsNone());
    }

    void history_comesBackWithUp()
    {
        FindMemory::AddToHistory(u"older"_s);
        FindMemory::AddToHistory(u"newer"_s);
        Open();
        Action(u"mnuFullTextFind"_s)->trigger();
        auto* text = In<QLineEdit>(u"txtFind"_s);
        QTest::keyClicks(text, u"typed"_s);
        const QList<std::pair<Qt::Key, QString>> steps{{Qt::Key_Up, u"newer"_s},
                                                       {Qt::Key_Up, u"older"_s},
                                                       {Qt::Key_Up, u"older"_s},
                                                       {Qt::Key_Down, u"newer"_s},
                                                       {Qt::Key_Down, u"typed"_s}};
        for (const auto& [key, shown] : steps) {
            QTest::keyClick(text, key);
            QCOMPARE(text->text(), shown);
        }
    }

    // Replacing

    void replacement_isShownMadeAndTakenBack()
    {
        Open();
        ClickOn(0);
        Code()->SetSelStart(0);
        QTest::keyClicks(Code(), u"needle "_s); // not saved yet
        OpenDialog(u"needle"_s);
        In<QLineEdit>(u"txtReplace"_s)->setText(u"pin"_s);
        QTRY_VERIFY(In<QPushButton>(u"cmdReplace"_s)->isEnabled());
        InDialog([](frmReplace& dialog) {
            QAbstractItemModel* plan = dialog.findChild<QListView*>(u"lvChanges"_s)->model();
            QCOMPARE(plan->rowCount(), 9);
            QCOMPARE(dialog.findChild<QLabel*>(u"lblReplaceState"_s)->text(), u"7 of 7 changes in 2 items"_s);
            QVERIFY(plan->setData(plan->index(1, 0), Qt::Unchecked, Qt::CheckStateRole)); // the title
            TakePicture(dialog, u"replace-preview"_s);
            ApplyAppearance(u"Dark"_s, {}, 0);
            TakePicture(dialog, u"replace-preview-dark"_s);
            ApplyAppearance(u"System"_s, {}, 0);
            QTest::keyClick(dialog.findChild<QListView*>(u"lvChanges"_s), Qt::Key_Enter);
        });
        In<QPushButton>(u"cmdReplace"_s)->click();
        QVERIFY2(Code()->Text().startsWith(u"pin Dim pin As Long"_s), qPrintable(Code()->Text()));
        QTRY_COMPARE(Status(), u"1 place in 1 item"_s);
        QCOMPARE(PlainTextFromRtf(Read(u"Notes"_s)), u"Where a pin is, there is hay."_s);
        QVERIFY(Action(u"mnuUndoReplace"_s)->isEnabled());
        m_prompts->ExpectMsgBox(u"Undo Replace"_s);
        Action(u"mnuUndoReplace"_s)->trigger();
        QCOMPARE(m_prompts->Messages.last().Text, u"3 texts are as they were before."_s);
        QVERIFY2(Code()->Text().startsWith(u"needle Dim needle As Long"_s), qPrintable(Code()->Text()));
        QVERIFY(!Action(u"mnuUndoReplace"_s)->isEnabled());
        QTRY_COMPARE(Status(), u"7 places in 2 items"_s);
    }

    void replacementThatIsCancelled_changesNothing()
    {
        Open();
        OpenDialog(u"needle"_s);
        const QString before = Read(u"Code"_s);
        QTRY_VERIFY(In<QPushButton>(u"cmdReplace"_s)->isEnabled());
        InDialog([](frmReplace& dialog) {
            dialog.findChild<QPushButton*>(u"cmdNone"_s)->click();
            QVERIFY(!dialog.findChild<QPushButton*>(u"cmdOK"_s)->isEnabled());
            dialog.reject();
        });
        In<QPushButton>(u"cmdReplace"_s)->click();
        QCOMPARE(Read(u"Code"_s), before);
        QVERIFY(!Action(u"mnuUndoReplace"_s)->isEnabled());
    }

    void savedSearch_isOffered()
    {
        Open();
        OpenDialog(u"needle"_s);
        In<QCheckBox>(u"chkFieldC"_s)->setChecked(false);
        In<QCheckBox>(u"chkWholeWord"_s)->setChecked(true);
        auto* menu = In<QMenu>(u"mnuSavedFinds"_s);
        Q_EMIT menu->aboutToShow();
        m_prompts->ExpectInputBox(u"Save Search"_s, u"my & search"_s);
        menu->actions().first()->trigger();
        In<QCheckBox>(u"chkFieldC"_s)->setChecked(true);
        In<QCheckBox>(u"chkWholeWord"_s)->setChecked(false);
        In<QLineEdit>(u"txtFind"_s)->setText(u"else"_s);
        Q_EMIT menu->aboutToShow();
        QCOMPARE(menu->actions().at(2)->text(), u"my && search"_s);
        menu->actions().at(2)->trigger();
        QCOMPARE(In<QLineEdit>(u"txtFind"_s)->text(), u"needle"_s);
        QVERIFY(In<QCheckBox>(u"chkWholeWord"_s)->isChecked());
        QVERIFY(!In<QCheckBox>(u"chkFieldC"_s)->isChecked());
        Q_EMIT menu->aboutToShow();
        menu->actions().last()->menu()->actions().first()->trigger();
        QVERIFY(FindMemory::SavedFinds().empty());
    }
};

QB_GUI_TEST_MAIN(TestFindPanel)
#include "tst_find_panel.moc"
