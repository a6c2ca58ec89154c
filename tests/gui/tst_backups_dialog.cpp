#include "maintenance/BackupRotation.h"
#include "maintenance/LibraryBackup.h"
#include "session/ui/frmBackups.h"
#include "support/EditingWindow.h"
#include "support/ui/Appearance.h"
#include "support/ui/WorkProgress.h"

#include <QCheckBox>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScrollArea>
#include <QTreeWidget>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// The list of backups, bringing back items from one, and the options of backups.
class TestBackupsDialog : public QObject, private EditingWindow {
    Q_OBJECT

private:
    QString Folder() const { return m_home->Path(u"data/Backups"_s); } // as it is where nothing else is set
    QString File(const QString& name) const { return Folder() + u'/' + name; }
    QString LibraryPath() const { return m_home->Path(u"data/QBLib.qbd"_s); }
    /// A backup in which there is something to see, with changes of the library since.
    void MakeBackup()
    {
        QDir().mkpath(Folder());
        const qint64 folder = AddItem(*m_database, 0, u"Files and folders"_s);
        m_gone = AddItem(*m_database, folder, u"Read a text file"_s,
                         u"std::string ReadAll(const std::string& path)\r\n{\r\n    std::ifstream file(path);\r\n"
                         "    return {std::istreambuf_iterator<char>(file), {}};\r\n}"_s);
        AddItem(*m_database, folder, u"Write a text file"_s, u"void Write();"_s);
        BackUpLibrary(LibraryPath(), File(u"QBLib260302.qbb"_s), {});
        m_clock.AddSeconds(3600);
        m_database->Execute(u"DELETE FROM Items WHERE ID = ?"_s, {m_gone});
        Write(u"Code"_s, u"changed"_s);
        m_database->Execute(u"UPDATE Items SET LastChanged = ? WHERE ID = ?"_s, {m_clock.Now(), m_item});
    }
    void MakeForeignBackup()
    {
        QDir().mkpath(Folder());
        const auto other = MakeLibrary(m_home->Path(u"other.qbd"_s));
        AddItem(*other, AddItem(*other, 0, u"foreign parent"_s), u"foreign"_s, u"int y;"_s);
        BackUpLibrary(m_home->Path(u"other.qbd"_s), File(u"foreign.qbb"_s), {});
    }
    /// Opens the list and acts in it.
    void InList(const std::function<void(frmBackups&)>& act)
    {
        InDialog<frmBackups>(act);
        Action(u"mnuBackupsItem"_s)->trigger();
        QVERIFY(m_acted);
        m_acted = false;
    }
    template <class Dialog>
    void InDialog(const std::function<void(Dialog&)>& act)
    {
        QTimer::singleShot(0, m_window.get(), [this, act] {
            auto* dialog = qobject_cast<Dialog*>(QApplication::activeModalWidget());
            QVERIFY(dialog);
            act(*dialog);
            m_acted = true;
            if (dialog->isVisible())
                dialog->reject();
        });
    }
    static QTreeWidget* List(frmBackups& dialog) { return dialog.findChild<QTreeWidget*>(u"lvBackups"_s); }
    static QStringList Row(const QTreeWidgetItem* item)
    {
        QStringList texts;
        for (int i = 0; item && i < item->columnCount(); ++i)
            texts << item->text(i);
        return texts;
    }
    static QPushButton* Button(const QDialog& dialog, const QString& name)
    {
        return dialog.findChild<QPushButton*>(name);
    }
    static QString Label(const QDialog& dialog, const QString& name) { return dialog.findChild<QLabel*>(name)->text(); }
    void Choose(frmBackups& dialog, const QString& file)
    {
        QTreeWidget* list = List(dialog);
        for (int i = 0; i < list->topLevelItemCount(); ++i) {
            if (list->topLevelItem(i)->text(5) == file)
                return list->setCurrentItem(list->topLevelItem(i));
        }
        QFAIL(qPrintable(file));
    }
    /// Titles of the items that are in sight, in the order of the tree; those that fit have their state behind them.
    static QStringList Shown(const frmBackupItem& dialog)
    {
        QStringList shown;
        const QTreeWidget* tree = dialog.findChild<QTreeWidget*>(u"tvItems"_s);
        for (QTreeWidgetItem* item = tree->topLevelItem(0); item; item = tree->itemBelow(item)) {
            if (!item->isHidden())
                shown << (item->text(1).isEmpty() ? item->text(0) : item->text(0) + u": "_s + item->text(1));
        }
        return shown;
    }

    FixedClock m_clock;
    qint64 m_gone = 0;
    bool m_acted = false;

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        WorkProgress::Delay = std::chrono::hours(1);
        m_clock.Set(Date::FromParts(2026, 3, 2, 14, 30, 5));
        Begin();
    }
    void cleanup()
    {
        ApplyAppearance(u"System"_s, {}, 0);
        End();
    }

    // The list

    void list_tellsOfEachBackup()
    {
        MakeBackup();
        MakeForeignBackup();
        RememberCheck(File(u"foreign.qbb"_s), false);
        WriteFile(File(u"half.qbb"_s), ReadFile(File(u"QBLib260302.qbb"_s)).left(2000));
        Open();
        InList([&](frmBackups& dialog) {
            QCOMPARE(List(dialog)->topLevelItemCount(), 3);
            Choose(dialog, u"QBLib260302.qbb"_s);
            QStringList row = Row(List(dialog)->currentItem());
            QCOMPARE(row[0], u"2026-03-02 14:30"_s);
            QVERIFY(row[1].contains(u"KiB"_s) || row[1].contains(u"kB"_s) || row[1].contains(u"KB"_s));
            QCOMPARE(row.mid(2, 3), (QStringList{u"QBLib"_s, u"not checked"_s, u"1 item changed, 1 item fewer"_s}));
            Choose(dialog, u"foreign.qbb"_s);
            row = Row(List(dialog)->currentItem());
            QCOMPARE(row.mid(2, 3), (QStringList{u"other (another library)"_s, u"BAD, 2026-03-02 15:30"_s, QString()}));
            Choose(dialog, u"half.qbb"_s);
            QCOMPARE(Row(List(dialog)->currentItem())[2], u"not known"_s);
            TakePicture(dialog, u"backups"_s);
            ApplyAppearance(u"Dark"_s, {}, 0);
            TakePicture(dialog, u"backups-dark"_s);
            dialog.resize(dialog.minimumSizeHint());
            TakePicture(dialog, u"backups-narrow"_s);
        });
    }

    void latestBackup_isChosenAtFirst()
    {
        MakeBackup();
        m_clock.AddSeconds(60);
        BackUpLibrary(LibraryPath(), File(u"late.qbb"_s), {});
        Open();
        InList([&](frmBackups& dialog) {
            QVERIFY(List(dialog)->currentItem());
            QCOMPARE(List(dialog)->currentItem()->text(5), u"late.qbb"_s);
            QVERIFY(Button(dialog, u"cmdCheck"_s)->isEnabled());
        });
    }

    void folderThatHasGone_saysSo()
    {
        Open();
        InList([&](frmBackups& dialog) {
            QVERIFY(dialog.findChild<QLabel*>(u"lblNotice"_s)->isVisible());
            QVERIFY(Label(dialog, u"lblNotice"_s).contains(u"The folder is not there"_s));
            QCOMPARE(Label(dialog, u"lblFolder"_s), QDir::toNativeSeparators(Folder()));
            for (const QString& name : {u"cmdCheck"_s, u"cmdItem"_s, u"cmdRestore"_s})
                QVERIFY(!Button(dialog, name)->isEnabled());
            TakePicture(dialog, u"backups-no-folder"_s);
        });
        QDir().mkpath(Folder());
        InList([&](frmBackups& dialog) { QVERIFY(Label(dialog, u"lblNotice"_s).contains(u"There are no backups"_s)); });
        m_database->Execute(u"UPDATE Properties SET BackupDir = ?"_s, {m_home->Path(u"elsewhere"_s)});
        InList([&](frmBackups& dialog) {
            QCOMPARE(Label(dialog, u"lblFolder"_s), QDir::toNativeSeparators(m_home->Path(u"elsewhere"_s)));
            QVERIFY(Label(dialog, u"lblNotice"_s).contains(u"The folder is not there"_s));
        });
    }

    void backupThatHasGone_isToldAndOffTheList()
    {
        MakeBackup();
        Open();
        for (const QString& command : {u"cmdCheck"_s, u"cmdItem"_s, u"cmdRestore"_s}) {
            InList([&](frmBackups& dialog) {
                QVERIFY(QFile::rename(File(u"QBLib260302.qbb"_s), File(u"away"_s)));
                m_prompts->ExpectMsgBox(u"Backups"_s);
                Button(dialog, command)->click();
                QVERIFY(m_prompts->Messages.last().Text.contains(u"not there any more"_s));
                QCOMPARE(List(dialog)->topLevelItemCount(), 0);
                QVERIFY(dialog.isVisible());
                QVERIFY(QFile::rename(File(u"away"_s), File(u"QBLib260302.qbb"_s)));
            });
        }
    }

    // Checking

    void goodBackup_isToldOf()
    {
        MakeBackup();
        Open();
        InList([&](frmBackups& dialog) {
            Button(dialog, u"cmdCheck"_s)->click();
            QCOMPARE(List(dialog)->currentItem()->text(3), u"good, 2026-03-02 15:30"_s);
            QCOMPARE(Label(dialog, u"lblDone"_s), u"“QBLib260302.qbb” is good."_s);
        });
    }

    void damagedBackup_isToldOf_andNothingComesBackFromIt()
    {
        MakeBackup();
        QByteArray bytes = ReadFile(File(u"QBLib260302.qbb"_s));
        for (qsizetype i = bytes.size() / 3; i < bytes.size() / 2; ++i)
            bytes[i] = char(~bytes[i]);
        WriteFile(File(u"QBLib260302.qbb"_s), bytes);
        Open();
        const qint64 items = CountOf(*m_database, u"Items"_s);
        InList([&](frmBackups& dialog) {
            m_prompts->ExpectMsgBox(u"Check"_s);
            Button(dialog, u"cmdCheck"_s)->click();
            QVERIFY(m_prompts->Messages.last().Text.startsWith(u"The backup is not good:"_s));
            QCOMPARE(List(dialog)->currentItem()->text(3), u"BAD, 2026-03-02 15:30"_s);
            m_prompts->ExpectMsgBox(u"Backups"_s);
            Button(dialog, u"cmdItem"_s)->click(); // a message, no error of the program
            QVERIFY(!m_prompts->Messages.last().Text.isEmpty());
        });
        QCOMPARE(CountOf(*m_database, u"Items"_s), items);
        QCOMPARE(QDir(Folder()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
                 QStringList{u"QBLib260302.qbb"_s}); // nothing of it is left beside it
    }

    void fileThatIsNoBackup_isToldOf()
    {
        QDir().mkpath(Folder());
        WriteFile(File(u"x.qbb"_s), "no backup");
        Open();
        InList([&](frmBackups& dialog) {
            QCOMPARE(Row(List(dialog)->currentItem())[2], u"not known"_s);
            m_prompts->ExpectMsgBox(u"Backups"_s);
            Button(dialog, u"cmdItem"_s)->click();
            m_prompts->ExpectMsgBox(u"Check"_s);
            Button(dialog, u"cmdCheck"_s)->click();
        });
    }

    // One item

    void deletedItem_isFoundLookedAtAndBroughtBack()
    {
        MakeBackup();
        Open();
        InList([&](frmBackups& list) {
            InDialog<frmBackupItem>([&](frmBackupItem& dialog) {
                // At first what is not as it was.
                QCOMPARE(Shown(dialog),
                         (QStringList{u"Files and folders"_s, u"Read a text file: deleted"_s, u"item: changed"_s}));
                QCOMPARE(dialog.Item(), m_gone);
                auto* preview = dialog.findChild<QPlainTextEdit*>(u"txtPreview"_s);
                QVERIFY(preview->toPlainText().contains(u"std::ifstream file(path);"_s));
                QVERIFY(Label(dialog, u"lblWhere"_s).contains(u"below its former parent"_s));
                TakePicture(dialog, u"backup-item"_s);
                ApplyAppearance(u"Dark"_s, {}, 0);
                TakePicture(dialog, u"backup-item-dark"_s);
                ApplyAppearance(u"System"_s, {}, 0);
                Button(dialog, u"cmdBringBack"_s)->click();
            });
            QTest::keyClick(List(list), Qt::Key_Return); // as the button does
            QVERIFY(Label(list, u"lblDone"_s).startsWith(u"“Read a text file” was brought back"_s));
            TakePicture(list, u"backups-done"_s);
        });
        QCOMPARE(m_window->findChild<QLabel*>(u"lblTitle"_s)->text(), u"Read a text file"_s);
        QVERIFY(Code()->Text().contains(u"std::ifstream file(path);"_s));
        QCOMPARE(Texts(*m_database, u"SELECT b.Title FROM Items a JOIN Items b ON b.ID = a.ParentID WHERE a.Title = "
                                    "'Read a text file'"_s),
                 QStringList{u"Files and folders"_s});
    }

    void filter_narrowsTheItems()
    {
        MakeBackup();
        Open();
        InList([&](frmBackups& list) {
            InDialog<frmBackupItem>([&](frmBackupItem& dialog) {
                auto* only = dialog.findChild<QCheckBox*>(u"chkOnlyOthers"_s);
                QVERIFY(only->isChecked());
                only->setChecked(false);
                QCOMPARE(Shown(dialog).size(), 5);
                QTest::keyClicks(dialog.findChild<QLineEdit*>(u"txtFilter"_s), u"WRITE"_s);
                QCOMPARE(Shown(dialog), (QStringList{u"Files and folders"_s, u"Write a text file"_s}));
                QVERIFY(dialog.findChild<QPlainTextEdit*>(u"txtPreview"_s)->toPlainText().contains(u"Write();"_s));
                QVERIFY(!dialog.findChild<QLabel*>(u"lblNone"_s)->isVisible());
                QTest::keyClicks(dialog.findChild<QLineEdit*>(u"txtFilter"_s), u"x"_s);
                QCOMPARE(Shown(dialog), QStringList());
                QVERIFY(dialog.findChild<QLabel*>(u"lblNone"_s)->isVisible());
                QVERIFY(!Button(dialog, u"cmdBringBack"_s)->isEnabled());
                QCOMPARE(dialog.Item(), 0);
            });
            Button(list, u"cmdItem"_s)->click();
            QCOMPARE(Label(list, u"lblDone"_s), QString());
        });
        QCOMPARE(CountOf(*m_database, u"Items"_s), 4);
    }

    void itemOfAnotherLibrary_comesAtTheTop_andTheDialogSaysSo()
    {
        MakeForeignBackup();
        Open();
        InList([&](frmBackups& list) {
            InDialog<frmBackupItem>([&](frmBackupItem& dialog) {
                QVERIFY(Label(dialog, u"lblWhere"_s).contains(u"another library"_s));
                QVERIFY(!dialog.findChild<QCheckBox*>(u"chkOnlyOthers"_s)->isVisible());
                QTest::keyClicks(dialog.findChild<QLineEdit*>(u"txtFilter"_s), u"foreign"_s);
                auto* tree = dialog.findChild<QTreeWidget*>(u"tvItems"_s);
                tree->setCurrentItem(tree->topLevelItem(0)->child(0));
                TakePicture(dialog, u"backup-item-foreign"_s);
                Button(dialog, u"cmdBringBack"_s)->click();
            });
            Button(list, u"cmdItem"_s)->click();
        });
        QCOMPARE(Texts(*m_database, u"SELECT Title FROM Items WHERE ParentID = 0 AND Title = 'foreign'"_s).size(), 1);
    }

    void libraryWhoseFileHasGone_takesNoItemBack()
    {
        MakeBackup();
        Open();
        const QString away = m_home->Path(u"away.qbd"_s);
        InList([&](frmBackups& dialog) {
            QVERIFY(QFile::rename(LibraryPath(), away));
            List(dialog)->clearSelection();
            List(dialog)->setCurrentItem(List(dialog)->topLevelItem(0));
            QVERIFY(!Button(dialog, u"cmdItem"_s)->isEnabled());
            QVERIFY(!Button(dialog, u"cmdItem"_s)->toolTip().isEmpty());
            QVERIFY(Button(dialog, u"cmdCheck"_s)->isEnabled());
            QTest::keyClick(List(dialog), Qt::Key_Return); // nothing comes of it
            QVERIFY(QFile::rename(away, LibraryPath()));
        });
    }

    // All of it

    void restore_closesTheList_andOpensWhatCameOfIt()
    {
        MakeBackup();
        Open();
        InList([&](frmBackups& dialog) {
            m_prompts->ExpectMsgBox(u"Restore Location"_s, MsgBoxResult::Yes);
            m_prompts->ExpectFileName(u"Choose path and name of the restored database"_s,
                                      m_home->Path(u"restored.qbd"_s));
            m_prompts->ExpectMsgBox(u"Confirm"_s, MsgBoxResult::No);
            m_prompts->ExpectInputBox(u"Include to Favourites List"_s, u"Back"_s);
            Button(dialog, u"cmdRestore"_s)->click();
            QVERIFY(!dialog.isVisible());
        });
        QCOMPARE(m_window->CurrentDatabase()->Name(), m_home->Path(u"restored.qbd"_s));
    }

    // Options

    void folderOfBackups_canBeSetForRotatingOnesAlone()
    {
        Open();
        QTimer::singleShot(0, m_window.get(), [this] {
            auto* dialog = qobject_cast<frmSettings*>(QApplication::activeModalWidget());
            QVERIFY(dialog);
            const auto control = [dialog](const char* name) {
                return dialog->findChild<QWidget*>(QString::fromLatin1(name));
            };
            const auto check = [&](const char* name, bool on) {
                qobject_cast<QCheckBox*>(control(name))->setChecked(on);
            };
            check("chkDBBackupEvery", false);
            check("chkBackupRotation", false);
            QVERIFY(!control("txtDBBackupPath")->isEnabled());
            QVERIFY(!control("txtBackupRotationDaily")->isEnabled());
            check("chkBackupRotation", true);
            for (const char* name : {"txtDBBackupPath", "cmdDBBackupPathBrowse", "txtBackupRotationEvery",
                                     "txtBackupRotationLast", "txtBackupRotationDaily", "txtBackupRotationWeekly"})
                QVERIFY2(control(name)->isEnabled(), name);
            QVERIFY(!control("txtDBBackupEvery")->isEnabled());
            dialog->ShowPage(frmSettings::LibraryPage);
            dialog->resize(dialog->width(), 700);
            TakePicture(*dialog, u"options-backups"_s);
            ApplyAppearance(u"Dark"_s, {}, 0);
            TakePicture(*dialog, u"options-backups-dark"_s);
            dialog->reject();
            m_acted = true;
        });
        Action(u"mnuOptionsItem"_s)->trigger();
        QVERIFY(m_acted);
    }
};

QB_GUI_TEST_MAIN(TestBackupsDialog)
#include "tst_backups_dialog.moc"
