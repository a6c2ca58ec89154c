#include "panels/ui/frmUnzip.h"
#include "platform/archive/BrindletonZip.h"
#include "support/FilesWindow.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QPushButton>
#include <QStatusBar>
#include <QTreeWidget>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// The dialog that extracts a stored archive.
class TestUnzipDialog : public QObject, private FilesWindow {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        Begin();
        WriteFile(m_home->Path(u"in/a.txt"_s), "alpha");
        WriteFile(m_home->Path(u"in/sub/b.txt"_s), QByteArray("beta\n").repeated(500));
        BrindletonZip zip;
        zip.SetZipFileName(m_home->Path(u"pack.zip"_s));
        zip.SetBaseDirectory(m_home->Path(u"in"_s));
        zip.AddFile(m_home->Path(u"in/a.txt"_s));
        zip.AddFile(m_home->Path(u"in/sub/b.txt"_s));
        QVERIFY(zip.Zip());
        QVERIFY(QDir().mkpath(m_home->Path(u"out"_s)));
        SaveSetting(SettingsApplication, u"StoredData"_s, u"PreviousExportPaths"_s, m_home->Path(u"out"_s));
    }
    void cleanup() { End(); }

    void archive_isExtracted()
    {
        OpenWith(m_home->Path(u"pack.zip"_s));
        InDialog<frmUnzip>([&](frmUnzip& dialog) {
            QCOMPARE(dialog.windowTitle(), u"Unzip pack.zip"_s);
            QCOMPARE(Folder(dialog)->currentText(), m_home->Path(u"out"_s));
            QCOMPARE(dialog.findChild<QLabel*>(u"lblChosen"_s)->text().left(12), u"2 of 2 files"_s);
            TakePicture(dialog, u"unzip"_s);
            Folder(dialog)->setEditText(m_home->Path(u"out/new"_s));
            QTest::keyClick(&dialog, Qt::Key_Enter);
            QVERIFY(!dialog.isVisible());
        });
        PressInList(Qt::Key_Return); // an archive opens so
        QCOMPARE(ReadFile(m_home->Path(u"out/new/a.txt"_s)), "alpha");
        QCOMPARE(ReadFile(m_home->Path(u"out/new/sub/b.txt"_s)), QByteArray("beta\n").repeated(500));
        QCOMPARE(GetSetting(SettingsApplication, u"StoredData"_s, u"PreviousExportPaths"_s),
                 m_home->Path(u"out/new"_s));
        QCOMPARE(GetSetting(SettingsApplication, u"Settings"_s, u"InitDir"_s), m_home->Path(u"out/new"_s));
        QCOMPARE(m_window->statusBar()->currentMessage(),
                 u"File(s) successfully extracted to: "_s + m_home->Path(u"out/new"_s));
    }

    void chosenFiles_areExtracted()
    {
        OpenWith(m_home->Path(u"pack.zip"_s));
        InDialog<frmUnzip>([&](frmUnzip& dialog) {
            auto* list = dialog.findChild<QTreeWidget*>(u"lvEntries"_s);
            dialog.findChild<QPushButton*>(u"cmdSelectNone"_s)->click();
            QVERIFY(!dialog.findChild<QPushButton*>(u"cmdOK"_s)->isEnabled());
            list->topLevelItem(1)->setCheckState(0, Qt::Checked);
            QVERIFY(dialog.findChild<QPushButton*>(u"cmdOK"_s)->isEnabled());
            dialog.accept();
        });
        Action(u"mnuUnzipToDirectoryItem"_s)->trigger();
        QVERIFY(!QFile::exists(m_home->Path(u"out/a.txt"_s)));
        QVERIFY(QFile::exists(m_home->Path(u"out/sub/b.txt"_s)));
    }

    void existingFile_isReplacedOnlyWhenAsked_data()
    {
        QTest::addColumn<bool>("replace");
        QTest::addColumn<QByteArray>("expected");
        QTest::newRow("kept") << false << QByteArray("mine");
        QTest::newRow("replaced") << true << QByteArray("alpha");
    }
    void existingFile_isReplacedOnlyWhenAsked()
    {
        QFETCH(bool, replace);
        QFETCH(QByteArray, expected);
        WriteFile(m_home->Path(u"out/a.txt"_s), "mine");
        OpenWith(m_home->Path(u"pack.zip"_s));
        if (!replace)
            m_prompts->ExpectMsgBox(u"Unzip pack.zip"_s);
        InDialog<frmUnzip>([&](frmUnzip& dialog) {
            dialog.findChild<QCheckBox*>(u"chkReplace"_s)->setChecked(replace);
            dialog.accept();
        });
        Action(u"mnuUnzipToDirectoryItem"_s)->trigger();
        QCOMPARE(ReadFile(m_home->Path(u"out/a.txt"_s)), expected);
        QVERIFY(replace
                || m_prompts->Messages.last().Text == u"1 of the files were there and have been left as they were."_s);
        QVERIFY(QFile::exists(m_home->Path(u"out/sub/b.txt"_s)));
    }

    void cancelledDialog_changesNothing()
    {
        OpenWith(m_home->Path(u"pack.zip"_s));
        InDialog<frmUnzip>([](frmUnzip& dialog) { dialog.reject(); });
        Action(u"mnuUnzipToDirectoryItem"_s)->trigger();
        QVERIFY(QDir(m_home->Path(u"out"_s)).isEmpty());
        QVERIFY(m_window->statusBar()->currentMessage().isEmpty());
    }

    void relativeFolder_isRefused()
    {
        OpenWith(m_home->Path(u"pack.zip"_s));
        m_prompts->ExpectMsgBox(u"Extract To"_s);
        InDialog<frmUnzip>([&](frmUnzip& dialog) {
            Folder(dialog)->setEditText(u"somewhere"_s);
            dialog.accept();
            QVERIFY(dialog.isVisible());
            Folder(dialog)->setEditText(u"  "_s);
            QVERIFY(!dialog.findChild<QPushButton*>(u"cmdOK"_s)->isEnabled());
        });
        Action(u"mnuUnzipToDirectoryItem"_s)->trigger();
    }

    void entryThatLeadsOut_isShownAndLeftAlone()
    {
        MakeArchive(QByteArray("zipfile.ZipInfo('../evil.txt'), zipfile.ZipInfo('good.txt')"));
        OpenWith(m_home->Path(u"hostile.zip"_s));
        InDialog<frmUnzip>([&](frmUnzip& dialog) {
            auto* list = dialog.findChild<QTreeWidget*>(u"lvEntries"_s);
            QVERIFY(list->topLevelItem(0)->text(0).contains(u"can't be extracted: its name leads out of the folder"_s));
            QCOMPARE(list->topLevelItem(0)->flags(), Qt::NoItemFlags);
            dialog.findChild<QPushButton*>(u"cmdSelectAll"_s)->click();
            TakePicture(dialog, u"unzip-hostile"_s);
            dialog.accept();
        });
        Action(u"mnuUnzipToDirectoryItem"_s)->trigger();
        QVERIFY(QFile::exists(m_home->Path(u"out/good.txt"_s)));
        QVERIFY(!QFile::exists(m_home->Path(u"evil.txt"_s)));
    }

    void whatIsNoArchive_isSaid()
    {
        WriteFile(m_home->Path(u"in/broken.zip"_s), "no archive at all");
        OpenWith(m_home->Path(u"in/broken.zip"_s));
        m_prompts->ExpectMsgBox(u"Unzip broken.zip"_s);
        Action(u"mnuUnzipToDirectoryItem"_s)->trigger();
        QVERIFY(m_prompts->Messages.last().Text.contains(u"can't be extracted"_s));
    }

    void folderThatCantBeWritten_isSaidAndTheDialogStays()
    {
        WriteFile(m_home->Path(u"file"_s), "a file where a folder is wanted");
        OpenWith(m_home->Path(u"pack.zip"_s));
        m_prompts->ExpectMsgBox(u"Unzip pack.zip"_s);
        InDialog<frmUnzip>([&](frmUnzip& dialog) {
            Folder(dialog)->setEditText(m_home->Path(u"file/below"_s));
            dialog.accept();
            QVERIFY(dialog.isVisible());
        });
        Action(u"mnuUnzipToDirectoryItem"_s)->trigger();
        QCOMPARE(ReadFile(m_home->Path(u"file"_s)), "a file where a folder is wanted");
    }

private:
    static QComboBox* Folder(frmUnzip& dialog) { return dialog.findChild<QComboBox*>(u"cboFolder"_s); }
    void OpenWith(const QString& archive)
    {
        CFileObject file;
        file.Initialise(*m_database, {});
        file.SetCodeID(QString::number(m_item));
        file.SetStoredFile(archive);
        QVERIFY(file.Commit());
        OpenFiles();
    }
    /// An archive of entries as Python spells them.
    void MakeArchive(const QByteArray& entries)
    {
        QProcess python;
        python.start(u"python3"_s,
                     {u"-c"_s,
                      u"import sys, zipfile\nwith zipfile.ZipFile(sys.argv[1], 'w') as archive:\n    for entry in ["_s
                          + QString::fromLatin1(entries) + u"]:\n        archive.writestr(entry, b'contents')\n"_s,
                      m_home->Path(u"hostile.zip"_s)});
        QVERIFY(python.waitForFinished());
        QCOMPARE(python.exitCode(), 0);
    }
};

QB_GUI_TEST_MAIN(TestUnzipDialog)
#include "tst_unzip_dialog.moc"
