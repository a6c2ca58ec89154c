#include "panels/ui/FilePreview.h"
#include "panels/ui/StoredFileList.h"
#include "panels/ui/frmImportType.h"
#include "platform/archive/BrindletonZip.h"
#include "support/FileSizeLimit.h"
#include "support/FilesWindow.h"
#include "support/ui/WorkProgress.h"

#include <QAbstractItemModelTester>
#include <QCheckBox>
#include <QClipboard>
#include <QDropEvent>
#include <QFile>
#include <QHeaderView>
#include <QMimeData>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QProgressDialog>
#include <QPushButton>
#include <QRadioButton>
#include <QScopedValueRollback>
#include <QSplitter>
#include <QStatusBar>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// The page of stored files in the window: adding, describing, exporting, opening, unzipping, deleting.
class TestFilesPanel : public QObject, private FilesWindow {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        Begin();
        WriteFile(In(u"a.txt"_s), QByteArray("int main() { return 0; }\n").repeated(40));
        WriteFile(In(u"b.txt"_s), "beta");
        WriteFile(In(u"archive.zip"_s), "x");
    }
    void cleanup() { End(); }

    // The list

    void files_areListedWithTheirColumns()
    {
        Store({u"a.txt"_s, u"b.txt"_s});
        OpenFiles();
        const QAbstractItemModel* model = List()->model();
        const QStringList headers{u"Original File Name              "_s, u"File Date/Time"_s, u"Sort"_s,
                                  u"Date Added"_s, u"Size"_s};
        for (int column = 0; column < headers.size(); ++column)
            QCOMPARE(model->headerData(column, Qt::Horizontal).toString(), headers[column]);
        QCOMPARE(model->index(0, 2).data().toString(), u"000000001000"_s);
        QCOMPARE(model->index(0, 4).data().toString(), u"1,000"_s);
        QVERIFY(!model->index(0, 0).data(Qt::DecorationRole).value<QIcon>().isNull());
        const QAbstractItemModelTester tester(List()->model());
        TakePicture(*m_window, u"stored-files"_s);
    }

    void size_isSortedAsANumber()
    {
        WriteFile(In(u"nine"_s), QByteArray(9, 'x'));
        WriteFile(In(u"ten"_s), QByteArray(10, 'x'));
        WriteFile(In(u"hundred"_s), QByteArray(100, 'x'));
        Store({u"hundred"_s, u"nine"_s, u"ten"_s});
        OpenFiles();
        List()->sortByColumn(StoredFileList::SizeColumn, Qt::AscendingOrder);
        QCOMPARE(Titles(), (QStringList{u"nine"_s, u"ten"_s, u"hundred"_s}));
        const QHeaderView* header = List()->header();
        const QPoint place(header->sectionViewportPosition(StoredFileList::SizeColumn) + 10, header->height() / 2);
        QTest::mouseClick(header->viewport(), Qt::LeftButton, {}, place); // the column that is sorted already
        QCOMPARE(Titles(), (QStringList{u"hundred"_s, u"ten"_s, u"nine"_s}));
    }

    // Adding

    void files_areAddedAsTheyAre()
    {
        OpenFiles();
        m_prompts->ExpectFileNames(u"Select File(s) To Import"_s, {In(u"a.txt"_s), In(u"b.txt"_s)});
        InDialog<frmImportType>([&](frmImportType& dialog) {
            QVERIFY(dialog.findChild<QRadioButton*>(u"optNo"_s)->isChecked());
            QVERIFY(dialog.findChild<QRadioButton*>(u"optYesAll"_s)->isVisible());
            TakePicture(dialog, u"import-type"_s);
            dialog.accept();
        });
        Action(u"mnuAddFile"_s)->trigger();
        QCOMPARE(Titles(), (QStringList{u"a.txt"_s, u"b.txt"_s}));
        QCOMPARE(Stored(), (QStringList{u"1 - a.txt"_s, u"2 - b.txt"_s}));
        QCOMPARE(List()->selectionModel()->selectedRows().size(), 2);
        QVERIFY(Details()->TabEnabled(DetailsTab::Files));
        QVERIFY(m_window->statusBar()->currentMessage().contains(u"2 files added"_s));
        QVERIFY(!m_window->findChild<QLabel*>(u"sbrMainPanel2"_s)->text().isEmpty()); // the item's date is there again
    }

    void singleFile_hasItsOwnQuestion()
    {
        OpenFiles();
        m_prompts->ExpectFileNames(u"Select File(s) To Import"_s, {In(u"a.txt"_s)});
        InDialog<frmImportType>([&](frmImportType& dialog) {
            QCOMPARE(
                dialog.findChild<QLabel*>(u"lblInfo"_s)->text(),
                u"KT Quillbase can compress the file for you. Do you wish the file to be compressed, before saving "
                "it to the library?"_s);
            QCOMPARE(dialog.findChild<QRadioButton*>(u"optNo"_s)->text(), u"&No, don't compress the file."_s);
            QCOMPARE(dialog.findChild<QRadioButton*>(u"optYesEach"_s)->text(), u"Yes, compress the file."_s);
            QVERIFY(!dialog.findChild<QRadioButton*>(u"optYesAll"_s)->isVisible());
            dialog.findChild<QRadioButton*>(u"optYesEach"_s)->setChecked(true);
            dialog.findChild<QCheckBox*>(u"chkDontShowAgain"_s)->setChecked(true);
            dialog.findChild<QPushButton*>(u"cmdOK"_s)->click();
        });
        Action(u"mnuAddFile"_s)->trigger();
        QCOMPARE(Stored(), QStringList{u"1 - a.zip"_s});
        QVERIFY(!m_window->Settings().ShowImportFilesDialog());
        QCOMPARE(GetSetting(SettingsApplication, u"Settings"_s, u"FileImportOperation"_s), u"2"_s);
        // The next time nobody asks.
        m_prompts->ExpectFileNames(u"Select File(s) To Import"_s, {In(u"b.txt"_s)});
        Action(u"mnuAddFile"_s)->trigger();
        QCOMPARE(Stored(), (QStringList{u"1 - a.zip"_s, u"2 - b.zip"_s}));
    }

    void archiveOfAll_needsAName()
    {
        OpenFiles();
        m_prompts->ExpectFileNames(u"Select File(s) To Import"_s, {In(u"a.txt"_s), In(u"b.txt"_s)});
        m_prompts->ExpectMsgBox(u"Zip File Name Missing"_s);
        InDialog<frmImportType>([&](frmImportType& dialog) {
            dialog.findChild<QRadioButton*>(u"optYesAll"_s)->setChecked(true);
            auto* name = dialog.findChild<QLineEdit*>(u"txtZipFileName"_s);
            QCOMPARE(name->text(), u"in ß.zip"_s); // proposed
            name->clear();
            dialog.accept();
            QVERIFY(dialog.isVisible());
            QCOMPARE(m_prompts->Messages.last().Text,
                     u"Please enter a name for the new zip file that you want to create."_s);
            QTest::keyClicks(name, u"to/gether"_s); // no path can be typed
            dialog.accept();
        });
        Action(u"mnuAddFile"_s)->trigger();
        QCOMPARE(Stored(), QStringList{u"1 - together.zip"_s});
        QCOMPARE(Names(u"1 - together.zip"_s), (QStringList{u"a.txt"_s, u"b.txt"_s}));
    }

    void nameThatEndsInZip_isKept()
    {
        frmImportType dialog;
        dialog.SetOptionSelected(ImportOption::ZipAll);
        dialog.findChild<QLineEdit*>(u"txtZipFileName"_s)->setText(u"Mine.ZIP"_s);
        dialog.accept();
        QCOMPARE(dialog.ZipFileName(), u"Mine.ZIP"_s);
        dialog.SetMultipleFiles(false); // the saved way of several is that of each
        QCOMPARE(dialog.OptionSelected(), ImportOption::ZipEach);
    }

    void savedWayOfAll_asksForTheNameOnly()
    {
        SaveSetting(SettingsApplication, u"Settings"_s, u"FileImportOperation"_s, u"3"_s);
        OpenFiles();
        m_window->Settings().SetShowImportFilesDialog(false);
        const QStringList both{In(u"a.txt"_s), In(u"b.txt"_s)};
        m_prompts->ExpectInputBox(u"Import Files"_s, std::nullopt);
        Files()->ImportFiles(both);
        QCOMPARE(Stored(), QStringList());
        m_prompts->ExpectInputBox(u"Import Files"_s, u"no/name"_s);
        m_prompts->ExpectMsgBox(u"Import Files"_s);
        m_prompts->ExpectInputBox(u"Import Files"_s, u"all"_s);
        Files()->ImportFiles(both);
        QCOMPARE(m_prompts->InputPresets.first(), u"in ß.zip"_s);
        QCOMPARE(Stored(), QStringList{u"1 - all.zip"_s});
        Files()->ImportFiles({In(u"b.txt"_s)}); // one file has an archive of its own
        QCOMPARE(Stored(), (QStringList{u"1 - all.zip"_s, u"2 - b.zip"_s}));
    }

    void failedImport_saysHowFarItGot()
    {
        OpenFiles();
        m_window->Settings().SetShowImportFilesDialog(false);
        WriteFile(In(u"big"_s), QByteArray(400'000, 'x'));
        m_prompts->ExpectError();
        const FileSizeLimit full(300'000);
        Files()->ImportFiles({In(u"a.txt"_s), In(u"big"_s), In(u"b.txt"_s)});
        QCOMPARE(Titles(), QStringList{u"a.txt"_s});
        QCOMPARE(m_window->statusBar()->currentMessage(), u"Stopped by an error; 1 file added"_s);
    }

    void runningWork_canBeCancelled_data()
    {
        QTest::addColumn<QString>("option");
        QTest::newRow("copying") << u"1"_s;
        QTest::newRow("packing") << u"2"_s;
    }
    void runningWork_canBeCancelled()
    {
        QFETCH(QString, option);
        SaveSetting(SettingsApplication, u"Settings"_s, u"FileImportOperation"_s, option);
        OpenFiles();
        m_window->Settings().SetShowImportFilesDialog(false);
        const QScopedValueRollback delay(WorkProgress::Delay, std::chrono::milliseconds(0));
        ClickCancelSoon();
        Files()->ImportFiles({In(u"a.txt"_s), In(u"b.txt"_s)});
        QVERIFY2(m_window->statusBar()->currentMessage().startsWith(u"Cancelled; "_s),
                 qPrintable(m_window->statusBar()->currentMessage()));
        QVERIFY(Titles().size() < 2);
        QCOMPARE(Stored().size(), Titles().size()); // nothing of what was under way
        QVERIFY(!m_window->findChild<QProgressBar*>(u"prgStatus"_s)->isVisible());
    }

    void runningExport_canBeCancelled()
    {
        Store({u"a.txt"_s});
        OpenFiles();
        WriteFile(m_home->Path(u"out/x"_s), "mine");
        m_prompts->ExpectFileName(u"Save File As : "_s, m_home->Path(u"out/x"_s));
        const QScopedValueRollback delay(WorkProgress::Delay, std::chrono::milliseconds(0));
        ClickCancelSoon();
        Action(u"mnuExportFile"_s)->trigger();
        QCOMPARE(ReadFile(m_home->Path(u"out/x"_s)), "mine");
        QCOMPARE(QDir(m_home->Path(u"out"_s)).entryList(QDir::Files | QDir::Hidden).size(), 1);
    }

    void cancelledDialog_addsNothing()
    {
        OpenFiles();
        m_prompts->ExpectFileNames(u"Select File(s) To Import"_s, {In(u"a.txt"_s)});
        InDialog<frmImportType>([&](frmImportType& dialog) { dialog.reject(); });
        Action(u"mnuAddFile"_s)->trigger();
        QCOMPARE(Stored(), QStringList());
    }

    void archives_areAddedWithoutAQuestion()
    {
        OpenFiles();
        WriteFile(In(u"b.zip"_s), "beside b.txt");
        m_prompts->ExpectFileNames(u"Select File(s) To Import"_s, {In(u"archive.zip"_s), In(u"b.txt"_s)});
        Action(u"mnuAddFile"_s)->trigger();
        QCOMPARE(Stored(), (QStringList{u"1 - archive.zip"_s, u"2 - b.zip"_s}));
    }

    // Dragging and pasting

    void droppedFiles_areAdded()
    {
        OpenFiles();
        m_window->Settings().SetShowImportFilesDialog(false);
        m_prompts->ExpectMsgBox(u"Import Files"_s); // the folder among them
        QMimeData data;
        data.setUrls({QUrl::fromLocalFile(In(u"a.txt"_s)), QUrl::fromLocalFile(m_home->Path(u"in ß"_s)),
                      QUrl(u"https://example.org/"_s)});
        QVERIFY(Drop(data));
        QTRY_COMPARE(Stored(), QStringList{u"1 - a.txt"_s});
        QVERIFY(QFile::exists(In(u"a.txt"_s)));
        QVERIFY(m_prompts->Messages.last().Text.contains(u"in ß"_s));
    }

    void pastedFiles_areAdded()
    {
        OpenFiles();
        m_window->Settings().SetShowImportFilesDialog(false);
        auto* data = new QMimeData;
        data->setUrls({QUrl::fromLocalFile(In(u"b.txt"_s))});
        QApplication::clipboard()->setMimeData(data);
        PressInList(Qt::Key_V, Qt::ControlModifier);
        QTRY_COMPARE(Stored(), QStringList{u"1 - b.txt"_s});
    }

    void copiedFiles_canBePastedElsewhere()
    {
        Store({u"a.txt"_s});
        OpenFiles();
        PressInList(Qt::Key_C, Qt::ControlModifier);
        const QList<QUrl> urls = QApplication::clipboard()->mimeData()->urls();
        QCOMPARE(urls.size(), 1);
        QCOMPARE(ReadFile(urls.first().toLocalFile()), ReadFile(In(u"a.txt"_s)));
    }

    void draggedFiles_areCopiesUnderTheirOwnNames()
    {
        Store({u"a.txt"_s, u"b.txt"_s});
        OpenFiles();
        QFile::remove(Place(2, u"b.txt"_s));
        List()->selectAll();
        const QList<QUrl> urls = List()->MakeCopies();
        QCOMPARE(urls.size(), 1); // what is missing is left out
        QCOMPARE(urls.first().fileName(), u"a.txt"_s);
        QCOMPARE(ReadFile(urls.first().toLocalFile()), ReadFile(In(u"a.txt"_s)));
    }

    void lockedItem_takesNothing()
    {
        Store({u"a.txt"_s});
        OpenFiles();
        Files()->SetLocked(true);
        QMimeData data;
        data.setUrls({QUrl::fromLocalFile(In(u"b.txt"_s))});
        QVERIFY(!Drop(data));
        QVERIFY(!Action(u"mnuAddFile"_s)->isEnabled());
        QVERIFY(!Action(u"mnuDeleteFile"_s)->isEnabled());
        QVERIFY(Action(u"mnuExportFile"_s)->isEnabled());
        QVERIFY(Box()->Locked());
    }

    // Exporting and deleting

    void text_isFoundInTheDescriptionsOneAfterAnother()
    {
        WriteFile(In(u"one.txt"_s), "1");
        WriteFile(In(u"three.txt"_s), "3");
        WriteFile(In(u"two.txt"_s), "2");
        Store({u"one.txt"_s, u"three.txt"_s, u"two.txt"_s});
        const std::pair<QString, QString> texts[] = {{u"one.txt"_s, u"Größe und größe"_s},
                                                     {u"three.txt"_s, u"nothing"_s},
                                                     {u"two.txt"_s, u"die GRÖSSE: größe"_s}};
        for (const auto& [title, text] : texts)
            m_database->Execute(u"UPDATE Files SET Description = ? WHERE Title = ?"_s,
                                {RtfFromPlainText(text, CodeFont), title});
        OpenFiles();
        const auto place = [this] { return Box()->Text().left(3) + QString::number(Box()->SelStart()); };
        QVERIFY(Files()->SearchNextOccurence(u"größe"_s));
        QCOMPARE(place(), u"Grö0"_s);
        QVERIFY(Files()->SearchNextOccurence(u"größe"_s));
        QCOMPARE(place(), u"Grö10"_s);
        QVERIFY(Files()->SearchNextOccurence(u"größe"_s)); // of the file that is the third
        QCOMPARE(place(), u"die12"_s);
        QVERIFY(!Files()->SearchNextOccurence(u"größe"_s));
        QCOMPARE(place(), u"die12"_s);
        QVERIFY(Files()->SearchPreviousOccurence(u"größe"_s));
        QCOMPARE(place(), u"Grö10"_s);
        QVERIFY(Files()->SearchPreviousOccurence(u"größe"_s));
        QVERIFY(!Files()->SearchPreviousOccurence(u"größe"_s));
        QCOMPARE(place(), u"Grö0"_s);
        QVERIFY(!Files()->SearchNextOccurence({}));
    }

    void details_handFilesOnToTheirList()
    {
        WriteFile(In(u"one.txt"_s), "1");
        Store({u"one.txt"_s});
        OpenFiles();
        m_prompts->ExpectFileName(u"Save File As : "_s, m_home->Path(u"copy.txt"_s));
        Details()->ExportFile();
        QCOMPARE(ReadFile(m_home->Path(u"copy.txt"_s)), QByteArray("1"));
        m_prompts->ExpectFileNames(u"Select File(s) To Import"_s, {});
        Details()->AddFile();
        m_prompts->ExpectMsgBox(u"Delete File from Database"_s, MsgBoxResult::Yes);
        Details()->DeleteFile();
        QCOMPARE(CountOf(*m_database, u"Files"_s), 0);
        Details()->UnzipToDirectory(); // nothing is selected
    }

    void exportedFile_isACopy()
    {
        Store({u"a.txt"_s, u"b.txt"_s});
        OpenFiles();
        List()->selectAll();
        QCOMPARE(Action(u"mnuExportFile"_s)->text(), u"&Export Files"_s);
        m_prompts->ExpectFileName(u"Save File As : "_s, m_home->Path(u"one"_s));
        m_prompts->ExpectFileName(u"Save File As : "_s, m_home->Path(u"two"_s));
        Action(u"mnuExportFile"_s)->trigger();
        QCOMPARE(m_prompts->Questions.first().Name, u"a.txt"_s);
        QCOMPARE(ReadFile(m_home->Path(u"one"_s)), ReadFile(In(u"a.txt"_s)));
        QCOMPARE(ReadFile(m_home->Path(u"two"_s)), "beta");
        QCOMPARE(m_window->statusBar()->currentMessage(), u"File Exported to: "_s + m_home->Path(u"two"_s));
    }

    void missingFile_losesItsRow()
    {
        Store({u"a.txt"_s});
        OpenFiles();
        QFile::remove(Place(1, u"a.txt"_s));
        m_prompts->ExpectFileName(u"Save File As : "_s, m_home->Path(u"out"_s));
        m_prompts->ExpectMsgBox(u"Update database?"_s, MsgBoxResult::Yes);
        m_prompts->ExpectMsgBox(u"Source File Not Found"_s);
        m_prompts->ExpectMsgBox(u"Database Record Removed"_s);
        Action(u"mnuExportFile"_s)->trigger();
        QCOMPARE(m_prompts->Messages[1].Text, u"File could not have been exported."_s);
        QCOMPARE(m_prompts->Messages[2].Text,
                 u"File record removed from the database, because source file was not found in the required system "
                 "location."_s);
        QCOMPARE(Titles(), QStringList());
        QVERIFY(!Details()->TabEnabled(DetailsTab::Files));
    }

    void filesDeletedElsewhere_areNotExported()
    {
        Store({u"a.txt"_s, u"b.txt"_s});
        OpenFiles();
        List()->selectAll();
        m_database->Execute(u"DELETE FROM Files"_s);
        QFile::remove(Place(1, u"a.txt"_s));
        QFile::remove(Place(2, u"b.txt"_s));
        m_prompts->ExpectFileName(u"Save File As : "_s, m_home->Path(u"out"_s));
        m_prompts->ExpectMsgBox(u"Source File Not Found"_s);
        m_prompts->ExpectMsgBox(u"Database Record Removed"_s);
        Action(u"mnuExportFile"_s)->trigger();
        QCOMPARE(Titles(), QStringList());
    }

    void missingFileOfALockedItem_keepsItsRow()
    {
        Store({u"a.txt"_s});
        OpenFiles();
        Files()->SetLocked(true);
        QFile::remove(Place(1, u"a.txt"_s));
        m_prompts->ExpectFileName(u"Save File As : "_s, m_home->Path(u"out"_s));
        m_prompts->ExpectMsgBox(u"Source File Not Found"_s);
        Action(u"mnuExportFile"_s)->trigger();
        QCOMPARE(m_database->QueryValue(u"SELECT count(*) FROM Files"_s).ToLong(), 1);
    }

    void deletionThatFails_keepsWhatWasTyped()
    {
        Store({u"a.txt"_s});
        OpenFiles();
        QTest::keyClicks(Box(), u"precious"_s);
        m_database->Execute(u"CREATE TABLE Holder (FileID INTEGER REFERENCES Files (ID))"_s);
        m_database->Execute(u"INSERT INTO Holder VALUES (1)"_s);
        m_prompts->ExpectMsgBox(u"Delete File from Database"_s, MsgBoxResult::Yes);
        m_prompts->ExpectError();
        Action(u"mnuDeleteFile"_s)->trigger();
        QCOMPARE(Box()->Text(), u"precious"_s);
        QCOMPARE(Stored(), QStringList{u"1 - a.txt"_s});
    }

    void missingFile_staysWhereItIsWanted()
    {
        Store({u"a.txt"_s});
        OpenFiles();
        QFile::remove(Place(1, u"a.txt"_s));
        m_prompts->ExpectFileName(u"Save File As : "_s, m_home->Path(u"out"_s));
        m_prompts->ExpectMsgBox(u"Update database?"_s, MsgBoxResult::No);
        m_prompts->ExpectMsgBox(u"Source File Not Found"_s);
        Action(u"mnuExportFile"_s)->trigger();
        QCOMPARE(Titles(), QStringList{u"a.txt"_s});
    }

    void deletedFiles_goFromTheListAndTheDisk()
    {
        Store({u"a.txt"_s, u"b.txt"_s, u"archive.zip"_s});
        OpenFiles();
        m_prompts->ExpectMsgBox(u"Delete File from Database"_s, MsgBoxResult::No);
        PressInList(Qt::Key_Delete);
        QCOMPARE(m_prompts->Messages.last().Text, u"Do you really want to delete this file from the database?"_s);
        QCOMPARE(m_prompts->Messages.last().Default, std::optional(MsgBoxResult::No));
        QCOMPARE(Titles().size(), 3);
        List()->selectAll();
        List()->selectionModel()->select(List()->model()->index(0, 0),
                                         QItemSelectionModel::Deselect | QItemSelectionModel::Rows);
        QCOMPARE(Action(u"mnuDeleteFile"_s)->text(), u"&Delete Files"_s);
        m_prompts->ExpectMsgBox(u"Delete File from Database"_s, MsgBoxResult::Yes);
        Action(u"mnuDeleteFile"_s)->trigger();
        QCOMPARE(m_prompts->Messages.last().Text,
                 u"Do you really want to delete the 2 selected files from the database?"_s);
        QCOMPARE(Titles().size(), 1);
        QCOMPARE(Stored().size(), 1);
        QCOMPARE(List()->selectionModel()->selectedRows().size(), 1);
    }

    // Opening

    void openedFile_isGivenToItsApplication()
    {
        Store({u"a.txt"_s});
        OpenFiles();
        const Desktop desktop(*m_home, u"editor.desktop"_s);
        PressInList(Qt::Key_Return);
        QTRY_COMPARE(desktop.Opened(), Place(1, u"a.txt"_s));
    }

    void fileWithoutApplication_isExported()
    {
        Store({u"a.txt"_s});
        OpenFiles();
        const Desktop desktop(*m_home, QString());
        m_prompts->ExpectFileName(u"Save File As : "_s, m_home->Path(u"out"_s));
        Action(u"mnuFileOpenItem"_s)->trigger();
        QCOMPARE(ReadFile(m_home->Path(u"out"_s)), ReadFile(In(u"a.txt"_s)));
    }

    void program_isNeverOpenedWithoutAQuestion_data()
    {
        QTest::addColumn<QString>("name");
        for (const char* name : {"setup.exe", "run.sh", "x.desktop", "tool.AppImage", "a.BAT", "lib.so", "app.jar"})
            QTest::newRow(name) << QString::fromLatin1(name);
    }
    void program_isNeverOpenedWithoutAQuestion()
    {
        QFETCH(QString, name);
        WriteFile(In(name), "#!/bin/sh\n");
        Store({name});
        OpenFiles();
        const Desktop desktop(*m_home, u"editor.desktop"_s);
        m_prompts->ExpectMsgBox(u"Open Program"_s, MsgBoxResult::No);
        Action(u"mnuFileOpenItem"_s)->trigger();
        QCOMPARE(m_prompts->Messages.last().Default, std::optional(MsgBoxResult::No));
        m_prompts->ExpectMsgBox(u"Open Program"_s, MsgBoxResult::Yes);
        Action(u"mnuFileOpenItem"_s)->trigger();
        QTRY_COMPARE(desktop.Opened(), Place(1, name));
    }

    void missingFile_isNotOpened()
    {
        Store({u"a.txt"_s});
        OpenFiles();
        QFile::remove(Place(1, u"a.txt"_s));
        m_prompts->ExpectMsgBox(u"Source File Not Found"_s);
        Action(u"mnuFileOpenItem"_s)->trigger();
        QCOMPARE(Titles(), QStringList{u"a.txt"_s});
    }

    // The preview

    void textWithoutLineEnds_isShownToItsLimit()
    {
        WriteFile(In(u"min.js"_s), QByteArray("\xc3\xa4").repeated(50'000)); // two bytes each
        WriteFile(In(u"wide.txt"_s), QByteArray("\xff\xfe", 2) + QByteArray("a\0", 2).repeated(50'000));
        Store({u"min.js"_s, u"wide.txt"_s});
        OpenFiles();
        auto* text = m_window->findChild<QPlainTextEdit*>(u"txtPreview"_s);
        QTRY_COMPARE(text->toPlainText().size(), 32 * 1024);
        QCOMPARE(text->toPlainText().back(), u'ä');
        Select(1);
        QTRY_VERIFY(text->toPlainText().startsWith(u"aaaa"_s));
    }

    void preview_showsTextsAndPictures()
    {
        QImage picture(300, 200, QImage::Format_RGB32);
        picture.fill(Qt::darkCyan);
        QVERIFY(picture.save(In(u"c.png"_s)));
        WriteFile(In(u"d.bin"_s), QByteArray("\0\1\2\3", 4));
        Store({u"a.txt"_s, u"c.png"_s, u"d.bin"_s});
        OpenFiles();
        auto* text = m_window->findChild<QPlainTextEdit*>(u"txtPreview"_s);
        QTRY_VERIFY(text->isVisible());
        QVERIFY(text->toPlainText().startsWith(u"int main()"_s));
        Select(1);
        auto* image = m_window->findChild<QLabel*>(u"imgPreview"_s);
        QTRY_VERIFY(image->isVisible());
        QVERIFY(!image->pixmap().isNull());
        TakePicture(*m_window, u"stored-files-picture"_s);
        Select(2);
        QTRY_VERIFY(m_window->findChild<QLabel*>(u"lblType"_s)->text().contains(u"4 bytes"_s));
        Action(u"mnuFilePreview"_s)->trigger();
        QVERIFY(!m_window->findChild<FilePreview*>()->isVisible());
        Open(); // it is remembered
        QVERIFY(!Action(u"mnuFilePreview"_s)->isChecked());
    }

    // The window

    void toolbar_isThereOnTheTabOnly()
    {
        Store({u"a.txt"_s, u"archive.zip"_s});
        OpenFiles();
        auto* toolbar = m_window->findChild<QToolBar*>(u"tbrFiles"_s);
        QVERIFY(toolbar->isVisible());
        QStringList keys;
        for (QAction* action : toolbar->actions()) {
            if (!action->isSeparator())
                keys << action->property("key").toString();
        }
        QCOMPARE(keys, (QStringList{u"ADD"_s, u"EXPORT"_s, u"EXTRACT"_s, u"DELETE"_s}));
        QVERIFY(!ToolbarButton(u"tbrFiles"_s, u"EXTRACT"_s)->isEnabled());
        Select(1);
        QCOMPARE(List()->currentIndex().siblingAtColumn(0).data().toString(), u"archive.zip"_s);
        QVERIFY(ToolbarButton(u"tbrFiles"_s, u"EXTRACT"_s)->isEnabled());
        Tab(1);
        QVERIFY(!toolbar->isVisible());
    }

    void separator_isRemembered()
    {
        OpenFiles();
        auto* resizer = m_window->findChild<QSplitter*>(u"FileResizer"_s);
        QTRY_VERIFY(resizer->height() > 100);
        Files()->SetSeparatorPosition(150);
        const int position = resizer->sizes().first();
        m_window->close();
        Open();
        ClickOn(0);
        Tab(FilesTab);
        QTRY_COMPARE(m_window->findChild<QSplitter*>(u"FileResizer"_s)->sizes().first(), position);
    }

    void emptyList_saysSo()
    {
        OpenFiles();
        TakePicture(*m_window, u"stored-files-empty"_s);
        QVERIFY(!Action(u"mnuExportFile"_s)->isEnabled());
        QVERIFY(!Box()->isEnabled());
    }

private:
    /// Stands in for the desktop: one application for all, or none; writes down what is opened.
    class Desktop {
    public:
        Desktop(const TemporaryHome& home, const QString& application)
            : m_file(home.Path(u"opened"_s)), m_before(qgetenv("PATH"))
        {
            Program(home.Path(u"desktop/xdg-mime"_s), "echo '" + application.toUtf8() + "'\n");
            Program(home.Path(u"desktop/xdg-open"_s), "printf %s \"$1\" >'" + m_file.toUtf8() + "'\n");
            qputenv("PATH", home.Path(u"desktop"_s).toUtf8() + ':' + m_before);
        }
        ~Desktop() { qputenv("PATH", m_before); }
        QString Opened() const
        {
            QFile file(m_file);
            return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
        }

    private:
        static void Program(const QString& path, const QByteArray& lines)
        {
            WriteFile(path, "#!/bin/sh\n" + lines);
            QFile::setPermissions(path, QFile::permissions(path) | QFile::ExeOwner);
        }
        QString m_file;
        QByteArray m_before;
    };

    QStringList Names(const QString& stored)
    {
        QStringList names;
        BrindletonZip zip;
        for (const ArchiveEntry& entry : zip.Entries(FilesFolder() + stored))
            names << entry.Name;
        return names;
    }
    /// Clicks the button of the next dialog of progress, as the mouse does.
    void ClickCancelSoon()
    {
        auto* timer = new QTimer(m_window.get());
        connect(timer, &QTimer::timeout, this, [timer] {
            auto* dialog = qobject_cast<QProgressDialog*>(QApplication::activeModalWidget());
            if (!dialog)
                return;
            timer->stop();
            QTest::mouseClick(dialog->findChild<QPushButton*>(), Qt::LeftButton);
        });
        timer->start(0);
    }
    /// Whether the list takes it.
    bool Drop(const QMimeData& data)
    {
        const QPoint place(20, 40);
        QDragEnterEvent enter(place, Qt::CopyAction | Qt::MoveAction, &data, Qt::LeftButton, Qt::NoModifier);
        enter.setDropAction(Qt::MoveAction);
        enter.ignore();
        QApplication::sendEvent(List()->viewport(), &enter);
        QDropEvent drop(place, Qt::CopyAction | Qt::MoveAction, &data, Qt::LeftButton, Qt::NoModifier);
        drop.setDropAction(Qt::MoveAction);
        drop.ignore();
        QApplication::sendEvent(List()->viewport(), &drop);
        return enter.isAccepted() && drop.isAccepted() && drop.dropAction() == Qt::CopyAction;
    }
};

QB_GUI_TEST_MAIN(TestFilesPanel)
#include "tst_files_panel.moc"
