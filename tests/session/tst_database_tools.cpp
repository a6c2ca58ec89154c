#include "maintenance/BackupItems.h"
#include "maintenance/BackupRotation.h"
#include "maintenance/Compaction.h"
#include "maintenance/LibraryBackup.h"
#include "platform/system/Paths.h"
#include "session/BackupList.h"
#include "session/ExitMaintenance.h"
#include "support/LibraryState.h"
#include "support/RecordedWork.h"
#include "support/TestSession.h"

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// Backup, restore, undo and the end of a session, as the window's commands do them.
class TestDatabaseTools : public QObject {
    Q_OBJECT

    std::unique_ptr<TestSession> s;
    std::unique_ptr<DatabaseTools> m_tools;
    QString m_one;

    QString Path(const QString& name) const { return s->Home.Path(name); }
    CSettings& Settings() { return *s->State.moSettings; }
    /// Writes a setting of the open library as another session did.
    void Store(const QString& column, const Value& value)
    {
        s->State.CurrentDatabase->Execute(u"UPDATE Properties SET %1 = ?"_s.arg(column), {value});
    }
    Value Stored(const QString& column)
    {
        return s->State.CurrentDatabase->QueryValue(u"SELECT %1 FROM Properties"_s.arg(column));
    }
    QStringList NamesIn(const QString& folder) const
    {
        return QDir(Path(folder)).entryList(QDir::Files | QDir::Hidden, QDir::Name);
    }
    /// The end of a session, as the window has it.
    void EndSession()
    {
        s->Libraries.CloseDatabase();
        s->State.CurrentDatabase = Library::Open(m_one);
        ExitMaintenance(s->State, s->Shell, *m_tools).Run();
    }
    /// The user of a work's window who has had enough.
    static std::function<void(const QString&, const std::function<void(Work&)>&)> CancelAtOnce()
    {
        return [](const QString&, const std::function<void(Work&)>& body) {
            RecordedWork work;
            work.Ends = [](qint64) { return true; };
            body(work);
        };
    }
    void ExpectRestore(const QString& file, MsgBoxResult choosesPath, MsgBoxResult takesPlace)
    {
        s->Script.ExpectFileName(u"Select a back-up file to restore database from"_s, file);
        s->Script.ExpectMsgBox(u"Restore Location"_s, choosesPath);
        if (choosesPath == MsgBoxResult::Yes)
            s->Script.ExpectFileName(u"Choose path and name of the restored database"_s, Path(u"there/restored.qbd"_s));
        s->Script.ExpectMsgBox(u"Confirm"_s, takesPlace);
    }

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        s = std::make_unique<TestSession>();
        m_tools = std::make_unique<DatabaseTools>(s->State, s->CommandStates, s->Libraries, s->Tree);
        m_one = s->LibraryFile(u"one.qbd"_s, u"first"_s);
        QVERIFY(s->Start(u"%1|One;"_s.arg(m_one)));
    }
    void cleanup()
    {
        m_tools.reset();
        s.reset();
    }

    // Menu commands

    void backup_isMadeAndTheLibraryOpenAgain()
    {
        s->Click(u"first"_s);
        s->Script.ExpectFileName(u"Select destination folder and file name of the new backup file"_s, Path(u"b.qbb"_s));
        s->Script.ExpectMsgBox(u"DB Backed Up"_s);
        s->CommandStates.Run(u"mnuDBToolsBackupItem"_s);
        QCOMPARE(s->Script.Questions.last().Name, u"one260302.qbb"_s);
        QCOMPARE(s->Script.Questions.last().Filter, u"KT Quillbase Backup File|*.qbb"_s);
        QCOMPARE(s->Script.Messages.last().Text,
                 u"Current database seccessfully backed up to "_s + QDir::toNativeSeparators(Path(u"b.qbb"_s)));
        QCOMPARE(s->Script.Messages.last().Icon, MsgBoxIcon::Information);
        QVERIFY(ReadBackupSummary(Path(u"b.qbb"_s)));
        QCOMPARE(s->OpenPath(), m_one);
        QCOMPARE(s->Selected(), u"first"_s);
        QCOMPARE(s->State.oCodeItem->Title(), u"first"_s);
    }

    void damagedLibrary_isBackedUpAndTold()
    {
        Store(u"BackupDir"_s, Path(u"backups"_s));
        s->State.CurrentDatabase->Execute(u"UPDATE Items SET Code = 'rotten'"_s); // as no row is written
        s->Script.ExpectFileName(u"Select destination folder and file name of the new backup file"_s, Path(u"b.qbb"_s));
        s->Script.ExpectMsgBox(u"DB Backed Up"_s);
        s->Script.ExpectMsgBox(u"Damage in the Library"_s, MsgBoxResult::Yes);
        int shown = 0;
        s->CommandStates.Register(u"mnuBackupsItem"_s, [&shown] { ++shown; });
        s->CommandStates.Run(u"mnuDBToolsBackupItem"_s);
        QVERIFY(s->Script.Messages.last().Text.contains(u"The item 1 'first' has a damaged code"_s));
        QCOMPARE(shown, 1);
        QVERIFY(!ListBackups(Path(QString())).front().IsGood);
        s->Script.ExpectFileName(u"Select destination folder and file name of the new backup file"_s, Path(u"c.qbb"_s));
        s->Script.ExpectMsgBox(u"DB Backed Up"_s);
        s->Script.ExpectMsgBox(u"Damage in the Library"_s, MsgBoxResult::No);
        s->CommandStates.Run(u"mnuDBToolsBackupItem"_s);
        QCOMPARE(shown, 1);
    }

    void damagedLibrary_makesNoBackupGo()
    {
        Settings().SetBackupRotation(true);
        Settings().SetBackupRotationEvery(1);
        Settings().SetBackupRotationLast(1);
        QDir().mkpath(Path(u"backups"_s));
        Store(u"BackupDir"_s, Path(u"backups"_s));
        EndSession();
        s->Time.Set(Date::FromParts(2026, 3, 5, 12));
        s->State.CurrentDatabase->Execute(u"UPDATE Items SET Code = 'rotten'"_s);
        s->Script.ExpectMsgBox(u"Damage in the Library"_s);
        EndSession();
        QCOMPARE(NamesIn(u"backups"_s), (QStringList{u"one260302.qbb"_s, u"one260305.qbb"_s}));
        s->Time.Set(Date::FromParts(2026, 3, 7, 12));
        s->Script.ExpectMsgBox(u"Damage in the Library"_s);
        EndSession();
        QVERIFY(NamesIn(u"backups"_s).contains(u"one260302.qbb"_s)); // the last good one
    }

    void cancelledDialog_endsTheCommand()
    {
        s->Script.ExpectFileName(u"Select destination folder and file name of the new backup file"_s, {});
        s->CommandStates.Run(u"mnuDBToolsBackupItem"_s);
        s->Script.ExpectFileName(u"Select a back-up file to restore database from"_s, {});
        s->CommandStates.Run(u"mnuDBToolsRestoreItem"_s);
        QCOMPARE(s->OpenPath(), m_one);
    }

    void backupThatFails_isTold()
    {
        s->Script.ExpectFileName(u"Select destination folder and file name of the new backup file"_s, m_one);
        s->Script.ExpectError();
        s->Script.ExpectMsgBox(u"Operation Unseccessfull"_s);
        s->CommandStates.Run(u"mnuDBToolsBackupItem"_s);
        QCOMPARE(s->Script.Messages.last().Text,
                 u"Program couldn't back up your database. It might be opened by another user."_s);
        QCOMPARE(s->OpenPath(), m_one);
    }

    void restoredLibrary_isOpened()
    {
        BackUpLibrary(m_one, Path(u"b.qbb"_s), {});
        QDir().mkpath(Path(u"there"_s));
        ExpectRestore(Path(u"b.qbb"_s), MsgBoxResult::Yes, MsgBoxResult::No);
        s->Script.ExpectInputBox(u"Include to Favourites List"_s, u"Two"_s);
        s->CommandStates.Run(u"mnuDBToolsRestoreItem"_s);
        QCOMPARE(s->OpenPath(), Path(u"there/restored.qbd"_s));
        QCOMPARE(s->Shell.Aliases, (QStringList{u"One"_s, u"Two"_s}));
        QCOMPARE(s->Script.Messages[0].DefaultAnswer(), MsgBoxResult::No);
        QCOMPARE(s->Script.Questions.last().Name, u"b.qbd"_s);
    }

    void restoredLibrary_takesThePlaceInTheList()
    {
        BackUpLibrary(m_one, Path(u"b.qbb"_s), {});
        ExpectRestore(Path(u"b.qbb"_s), MsgBoxResult::No, MsgBoxResult::Yes);
        s->Script.ExpectInputBox(u"Include to Favourites List"_s, u"Two"_s);
        s->CommandStates.Run(u"mnuDBToolsRestoreItem"_s);
        QCOMPARE(s->OpenPath(), ApplicationFolder() + u"b.qbd"_s);
        QCOMPARE(s->Shell.Aliases, QStringList{u"Two"_s});
        QVERIFY(QFileInfo::exists(m_one)); // it is only off the list
    }

    void restoredVolumes_areNamedAsTheirLibrary()
    {
        BackUpLibrary(m_one, Path(u"b.qbb"_s), {.VolumeSize = 1000});
        ExpectRestore(Path(u"b.qbb.001"_s), MsgBoxResult::No, MsgBoxResult::Yes);
        s->Script.ExpectInputBox(u"Include to Favourites List"_s, u"Two"_s);
        s->CommandStates.Run(u"mnuDBToolsRestoreItem"_s);
        QCOMPARE(s->OpenPath(), ApplicationFolder() + u"b.qbd"_s);
    }

    void restoreThatFails_endsTheCommand()
    {
        WriteFile(Path(u"b.qbb"_s), "no backup");
        s->Script.ExpectFileName(u"Select a back-up file to restore database from"_s, Path(u"b.qbb"_s));
        s->Script.ExpectMsgBox(u"Restore Location"_s, MsgBoxResult::No);
        s->Script.ExpectError();
        s->CommandStates.Run(u"mnuDBToolsRestoreItem"_s);
        QCOMPARE(s->OpenPath(), m_one);
    }

    void repair_isThereAndDoesNothing()
    {
        QVERIFY(s->CommandStates.HasProcedure(u"mnuToolDatabaseRepair"_s));
        QVERIFY(s->Enabled(u"mnuToolDatabaseRepair"_s));
        const auto before = StateOf(m_one);
        s->CommandStates.Run(u"mnuToolDatabaseRepair"_s);
        QCOMPARE(DifferenceOf(StateOf(m_one), before), QString());
    }

    // The session

    void session_isUndoneWithTheTree()
    {
        QVERIFY(!s->Enabled(u"mnuUndoThisSessionChanges"_s));
        s->Libraries.CloseDatabase();
        Settings().SetDBEnableSessionUndo(true);
        m_tools->MakeStartOfSessionCopy();
        QVERIFY(s->Libraries.SetupDBConnection());
        QVERIFY(s->Enabled(u"mnuUndoThisSessionChanges"_s));
        AddItem(*s->State.CurrentDatabase, 0, u"of this session"_s);
        s->Tree.Refill();
        QCOMPARE(s->Shape(), u"One Library(first of this session)"_s);
        s->CommandStates.Run(u"mnuUndoThisSessionChanges"_s);
        QCOMPARE(s->Shape(), u"One Library(first)"_s);
        QCOMPARE(s->OpenPath(), m_one);
        QCOMPARE(CountOf(*s->State.CurrentDatabase, u"Items"_s), 1);
    }

    void copyThatFails_offersNoUndo()
    {
        s->Libraries.CloseDatabase();
        Settings().SetDBEnableSessionUndo(true);
        m_tools->MakeStartOfSessionCopy();
        QVERIFY(s->Enabled(u"mnuUndoThisSessionChanges"_s));
        s->State.CurrentDatabasePath = Path(u"gone.qbd"_s);
        s->Script.ExpectError();
        m_tools->MakeStartOfSessionCopy();
        QVERIFY(!s->Enabled(u"mnuUndoThisSessionChanges"_s));
        QVERIFY(!QFileInfo::exists(SessionCopyPath()));
    }

    void copyOfAnEarlierSession_goesWithTheNextOne_data()
    {
        QTest::addColumn<bool>("isWanted");
        QTest::addColumn<bool>("isShared");
        QTest::addColumn<bool>("hasLibrary");
        QTest::newRow("undo is off") << false << false << true;
        QTest::newRow("the library is shared") << true << true << true;
        QTest::newRow("no library was opened") << true << false << false;
    }

    void copyOfAnEarlierSession_goesWithTheNextOne()
    {
        QFETCH(bool, isWanted);
        QFETCH(bool, isShared);
        QFETCH(bool, hasLibrary);
        Store(u"SharedDatabase"_s, isShared);
        s->Libraries.CloseDatabase();
        MakeSessionCopy(m_one);
        QVERIFY(WhyNotUndone(m_one).isEmpty());
        Settings().SetDBEnableSessionUndo(isWanted);
        if (!hasLibrary) {
            s->State.CurrentDatabasePath.clear();
            s->Script.ExpectMsgBox(u"KT Quillbase"_s);
        }
        m_tools->MakeStartOfSessionCopy();
        QVERIFY(!QFileInfo::exists(SessionCopyPath()));
        QVERIFY(!WhyNotUndone(m_one).isEmpty());
        QCOMPARE(s->Enabled(u"mnuUndoThisSessionChanges"_s), isWanted && !isShared);
    }

    void cancelledUndo_leavesTheSession()
    {
        s->Libraries.CloseDatabase();
        Settings().SetDBEnableSessionUndo(true);
        m_tools->MakeStartOfSessionCopy();
        QVERIFY(s->Libraries.SetupDBConnection());
        AddItem(*s->State.CurrentDatabase, 0, u"of this session"_s);
        m_tools->Watched = CancelAtOnce();
        s->CommandStates.Run(u"mnuUndoThisSessionChanges"_s);
        QCOMPARE(s->OpenPath(), m_one);
        QCOMPARE(CountOf(*s->State.CurrentDatabase, u"Items"_s), 2);
    }

    void copyOfAnotherLibrary_isNotTaken()
    {
        s->Libraries.CloseDatabase();
        Settings().SetDBEnableSessionUndo(true);
        m_tools->MakeStartOfSessionCopy();
        s->State.CurrentDatabasePath = s->LibraryFile(u"two.qbd"_s, u"second"_s);
        QVERIFY(s->Libraries.SetupDBConnection());
        const QMap<QString, QByteArray> before = StateOf(s->State.CurrentDatabasePath);
        s->Script.ExpectMsgBox(u"KT Quillbase"_s);
        s->CommandStates.Run(u"mnuUndoThisSessionChanges"_s);
        QCOMPARE(DifferenceOf(StateOf(s->State.CurrentDatabasePath), before), QString());
    }

    // The end of the session

    void dueCompaction_isDone()
    {
        AddItem(*s->State.CurrentDatabase, 0, u"big"_s, QString(300'000, u'y'));
        s->State.CurrentDatabase->Execute(u"DELETE FROM Items WHERE Title = 'big'"_s);
        Store(u"CompactOnExit"_s, false); // which is not asked
        Store(u"CompactOnExitEvery"_s, 5);
        Store(u"CompactOnExitUsedDays"_s, 4);
        EndSession();
        QVERIFY(s->State.CurrentDatabase->QueryValue(u"PRAGMA freelist_count"_s).ToLong() > 20);
        Store(u"CompactOnExitUsedDays"_s, 5);
        EndSession();
        QCOMPARE(s->State.CurrentDatabase->QueryValue(u"PRAGMA freelist_count"_s), Value(0));
        QVERIFY(s->State.CurrentDatabase);
    }

    void cancelledCompaction_isNoFailure()
    {
        Store(u"CompactOnExitEvery"_s, 5);
        Store(u"CompactOnExitUsedDays"_s, 5);
        m_tools->Watched = CancelAtOnce();
        EndSession(); // without a message
        QVERIFY(s->State.CurrentDatabase);
    }

    void libraryWithoutExtension_isBackedUp()
    {
        QDir().mkpath(Path(u"lib.old"_s));
        const QString plain = Path(u"lib.old/plain"_s);
        QVERIFY(QFile::copy(m_one, plain));
        s->Libraries.CloseDatabase();
        m_one = plain;
        s->State.CurrentDatabasePath = plain;
        s->State.CurrentDatabase = Library::Open(plain);
        Store(u"BackupOnExitEvery"_s, 0);
        Settings().SetDBBackupAutomatic(true);
        EndSession();
        QCOMPARE(s->Shell.StatusText, u"Database Backed Up"_s);
        QCOMPARE(NamesIn(u"data/Backups"_s), QStringList{u"plain260302."_s});
    }

    void dueBackup_compactsAndAsks()
    {
        Store(u"BackupOnExitEvery"_s, 0);
        Store(u"BackupDir"_s, Path(u"gone"_s));
        Store(u"BackupAutoDelete"_s, false);
        s->Script.ExpectMsgBox(u"Scheduled Backup Procedure Ready"_s, MsgBoxResult::No);
        EndSession();
        QCOMPARE(NamesIn(u"data/Backups"_s), QStringList());
        QVERIFY(s->Script.Messages.last().Text.endsWith(u"one260302.qbd?"_s));
        s->Script.ExpectMsgBox(u"Scheduled Backup Procedure Ready"_s, MsgBoxResult::Yes);
        EndSession();
        QCOMPARE(NamesIn(u"data/Backups"_s), QStringList{u"one260302.qbd"_s}); // the extension is the library's
        QVERIFY(ReadBackupSummary(Path(u"data/Backups/one260302.qbd"_s)));
        QCOMPARE(s->Shell.StatusText, u"Database Backed Up"_s);
    }

    void dueBackupThatIsNotWanted_compactsOnly()
    {
        Store(u"BackupOnExitEvery"_s, 0);
        Store(u"BackupOnExit"_s, false);
        AddItem(*s->State.CurrentDatabase, 0, u"big"_s, QString(300'000, u'y'));
        s->State.CurrentDatabase->Execute(u"DELETE FROM Items WHERE Title = 'big'"_s);
        EndSession();
        QCOMPARE(s->State.CurrentDatabase->QueryValue(u"PRAGMA freelist_count"_s), Value(0));
        QCOMPARE(NamesIn(u"data/Backups"_s), QStringList());
    }

    void automaticBackupThatFails_isTold()
    {
        Store(u"BackupOnExitEvery"_s, 0);
        Settings().SetDBBackupAutomatic(true);
        QDir().mkpath(Path(u"backups"_s));
        Store(u"BackupDir"_s, Path(u"backups"_s));
        MakeLibrary(Path(u"backups/one260302.qbd"_s)).reset(); // a library has the name
        s->Script.ExpectError();
        s->Script.ExpectMsgBox(u"BackUp Unsuccessful"_s);
        EndSession();
        QCOMPARE(s->Shell.StatusText, u"Unable to Back Up the Database"_s);
        QVERIFY(Library::Open(Path(u"backups/one260302.qbd"_s)));
    }

    void oldBackups_areThoseOfTheOddPattern_data()
    {
        QTest::addColumn<int>("files");
        QTest::addColumn<int>("deleted");
        QTest::newRow("five of seven are too many") << 7 << 3;
        QTest::newRow("four are not") << 4 << 0;
        QTest::newRow("five are one too many") << 5 << 1;
    }
    void oldBackups_areThoseOfTheOddPattern()
    {
        QFETCH(int, files);
        QFETCH(int, deleted);
        QDir().mkpath(Path(u"backups"_s));
        Store(u"BackupDir"_s, Path(u"backups"_s));
        for (int day = 1; day <= files; ++day)
            WriteFile(Path(u"backupsone26010%1.qbb"_s.arg(day)), "old"); // beside the folder, its name in front
        WriteFile(Path(u"backups/one260101.qbb"_s), "in the folder");
        ExitMaintenance exit(s->State, s->Shell, *m_tools);
        const QStringList old = exit.OldBackups();
        QCOMPARE(old.size(), deleted);
        for (qsizetype i = 0; i < old.size(); ++i)
            QCOMPARE(old[i], u"backupsone26010%1.qbb"_s.arg(i + 1));
        Store(u"BackupAutoDelete"_s, false);
        QCOMPARE(exit.OldBackups(), QStringList());
    }

    void oldBackups_goOnceTheNewOneIsGood_data()
    {
        QTest::addColumn<bool>("damaged");
        QTest::addColumn<int>("left");
        QTest::newRow("good") << false << 4;
        QTest::newRow("damaged") << true << 7;
    }
    void oldBackups_goOnceTheNewOneIsGood()
    {
        QFETCH(bool, damaged);
        QFETCH(int, left);
        Store(u"BackupOnExitEvery"_s, 0);
        Settings().SetDBBackupAutomatic(true);
        QDir().mkpath(Path(u"backups"_s));
        Store(u"BackupDir"_s, Path(u"backups"_s));
        for (int day = 1; day <= 7; ++day)
            WriteFile(Path(u"backupsone26010%1.qbb"_s.arg(day)), "old");
        WriteFile(Path(u"backupsone2601011.qbb"_s), "seven digits");
        if (damaged) {
            s->State.CurrentDatabase->Execute(u"UPDATE Items SET Code = 'rotten'"_s);
            s->Script.ExpectMsgBox(u"Damage in the Library"_s);
        }
        const QString folder = QDir::currentPath();
        QVERIFY(QDir::setCurrent(Path(QString()))); // where the bare names lead
        EndSession();
        QDir::setCurrent(folder);
        QCOMPARE(QDir(Path(QString())).entryList({u"backupsone26010?.qbb"_s}).size(), left);
        QVERIFY(QFileInfo::exists(Path(u"backupsone2601011.qbb"_s)));
        QCOMPARE(NamesIn(u"backups"_s), QStringList{u"one260302.qbd"_s});
    }

    void folderOfBackupsThatHasGone_isReplacedInMemory()
    {
        Store(u"BackupDir"_s, Path(u"gone"_s));
        ExitMaintenance(s->State, s->Shell, *m_tools).OldBackups();
        Settings().SetChangingSettings(true); // what is in memory
        QCOMPARE(Settings().DBBackupDir(), ApplicationFolder() + u"Backups"_s);
        Settings().SetChangingSettings(false);
        QCOMPARE(Settings().DBBackupDir(), Path(u"gone"_s));
    }

    void dates_areThoseOfWhatWasDue_data()
    {
        QTest::addColumn<int>("compactEvery");
        QTest::addColumn<bool>("isCompactionDue");
        QTest::newRow("the backup") << 50 << false; // it is compacted all the same
        QTest::newRow("both") << 0 << true;
    }
    void dates_areThoseOfWhatWasDue()
    {
        QFETCH(int, compactEvery);
        QFETCH(bool, isCompactionDue);
        Store(u"LastOpened"_s, Date::FromParts(2026, 3, 1)); // so that the day counts, and is written
        Store(u"BackupOnExitEvery"_s, 0);
        Store(u"CompactOnExitEvery"_s, compactEvery);
        Settings().InitializeDatabaseProperties();
        Settings().SetDBBackupAutomatic(true);
        EndSession();
        QCOMPARE(Stored(u"LastBackedUp"_s).ToDate(), Clock::Today());
        QCOMPARE(Stored(u"LastCompacted"_s).ToDate(), isCompactionDue ? Clock::Today() : Date());
    }

    void rotatingBackups_haveTheirOwnSchedule()
    {
        Settings().SetBackupRotation(true);
        Settings().SetBackupRotationEvery(2);
        Settings().SetBackupRotationLast(2);
        Settings().SetBackupRotationDaily(0);
        Settings().SetBackupRotationWeekly(0);
        QDir().mkpath(Path(u"backups"_s));
        Store(u"BackupDir"_s, Path(u"backups"_s));
        for (int day = 2; day <= 8; ++day) {
            s->Time.Set(Date::FromParts(2026, 3, day, 12));
            EndSession();
        }
        QCOMPARE(NamesIn(u"backups"_s), (QStringList{u"one260306.qbb"_s, u"one260308.qbb"_s}));
        for (const BackupEntry& entry : ListBackups(Path(u"backups"_s)))
            QVERIFY(entry.IsGood);
    }

    void damagedLibrary_costsNoRotatingBackup()
    {
        Settings().SetBackupRotation(true);
        Settings().SetBackupRotationEvery(1);
        Settings().SetBackupRotationLast(2);
        Settings().SetBackupRotationDaily(0);
        Settings().SetBackupRotationWeekly(0);
        QDir().mkpath(Path(u"backups"_s));
        Store(u"BackupDir"_s, Path(u"backups"_s));
        for (const int day : {2, 3}) {
            s->Time.Set(Date::FromParts(2026, 3, day, 12));
            EndSession();
        }
        s->State.CurrentDatabase->Execute(u"UPDATE Items SET Code = 'rotten'"_s);
        s->Time.Set(Date::FromParts(2026, 3, 4, 12));
        s->Script.ExpectMsgBox(u"Damage in the Library"_s);
        EndSession();
        QCOMPARE(NamesIn(u"backups"_s), (QStringList{u"one260302.qbb"_s, u"one260303.qbb"_s, u"one260304.qbb"_s}));
    }

    void clockThatWasAhead_putsNoBackupOff()
    {
        Settings().SetBackupRotation(true);
        Settings().SetBackupRotationEvery(1);
        QDir().mkpath(Path(u"backups"_s));
        Store(u"BackupDir"_s, Path(u"backups"_s));
        s->Time.Set(Date::FromParts(2035, 1, 1, 12));
        EndSession();
        s->Time.Set(Date::FromParts(2026, 3, 2, 12));
        EndSession();
        QCOMPARE(NamesIn(u"backups"_s), (QStringList{u"one260302.qbb"_s, u"one350101.qbb"_s}));
    }

    void rotatingBackup_neverReplacesThatOfAnotherLibrary()
    {
        Settings().SetBackupRotation(true);
        QDir().mkpath(Path(u"backups"_s));
        Store(u"BackupDir"_s, Path(u"backups"_s));
        BackUpLibrary(s->LibraryFile(u"two.qbd"_s), Path(u"backups/one260302.qbb"_s), {});
        const QByteArray other = ReadFile(Path(u"backups/one260302.qbb"_s));
        s->Script.ExpectMsgBox(u"KT Quillbase"_s);
        EndSession();
        QCOMPARE(ReadFile(Path(u"backups/one260302.qbb"_s)), other);
    }

    void rotation_isOffAtFirst()
    {
        EndSession();
        QVERIFY(!QFileInfo::exists(Path(u"data/Backups"_s)));
    }

    // The list

    void list_saysWhatHasChanged()
    {
        QDir().mkpath(Path(u"backups"_s));
        BackUpLibrary(m_one, Path(u"backups/b.qbb"_s), {});
        Library& library = *s->State.CurrentDatabase;
        QCOMPARE(BackupLines(Path(u"backups"_s), &library)[0].Changes, u"nothing"_s);
        QCOMPARE(BackupLines(Path(u"backups"_s), &library)[0].State, u"not checked"_s);
        s->Time.AddSeconds(10);
        AddItem(library, 0, u"second"_s);
        AddStoredFile(library, 1, u"f"_s, "f", s->Time.Now());
        RememberCheck(Path(u"backups/b.qbb"_s), true);
        const BackupLine line = BackupLines(Path(u"backups"_s), &library)[0];
        QCOMPARE(line.Changes, u"1 item changed, 1 file added, 1 item more"_s);
        QCOMPARE(line.State, u"good, 2026-03-02 14:30"_s);
        QVERIFY(BackupLines(Path(u"nowhere"_s), &library).empty());
        QVERIFY(BackupLines(Path(u"backups"_s), nullptr)[0].Changes.isEmpty());
        QCOMPARE(line.Library, u"one"_s);
    }

    void list_tellsOfWhatIsNotOfThisLibrary()
    {
        QDir().mkpath(Path(u"backups"_s));
        BackUpLibrary(s->LibraryFile(u"two.qbd"_s), Path(u"backups/b.qbb"_s), {});
        const BackupLine line = BackupLines(Path(u"backups"_s), s->State.CurrentDatabase.get())[0];
        QCOMPARE(line.Library, u"two (another library)"_s);
        QCOMPARE(line.Changes, QString());
        WriteFile(Path(u"backups/b.qbb"_s), "nothing");
        QCOMPARE(BackupLines(Path(u"backups"_s), nullptr)[0].Library, u"not known"_s);
        QVERIFY(NoBackupsNotice(Path(u"nowhere"_s)).startsWith(u"The folder is not there"_s));
        QVERIFY(NoBackupsNotice(Path(u"backups"_s)).startsWith(u"There are no backups"_s));
    }

    void itemsOfABackup_sayHowTheyAreNow()
    {
        Library& library = *s->State.CurrentDatabase;
        const qint64 second = AddItem(library, 1, u"second"_s);
        AddItem(library, second, u"third"_s);
        BackUpLibrary(m_one, Path(u"b.qbb"_s), {});
        BackupItems backup(Path(u"b.qbb"_s), s->Home.Path());
        const auto states = [&] {
            QStringList texts;
            for (const BackupItemLine& one : BackupItemLines(backup, library))
                texts << one.Title + u':' + one.State;
            return texts;
        };
        QCOMPARE(states(), (QStringList{u"first:"_s, u"second:"_s, u"third:"_s}));
        library.Execute(u"DELETE FROM Items WHERE ID = 3"_s);
        library.Execute(u"UPDATE Items SET LastChanged = LastChanged + 1 WHERE ID = 2"_s);
        QCOMPARE(states(), (QStringList{u"first:"_s, u"second:changed"_s, u"third:deleted"_s}));
        const auto other = MakeLibrary(Path(u"other.qbd"_s)); // of which the backup knows nothing
        QCOMPARE(BackupItemLines(backup, *other)[2].State, QString());
    }

    void filterOfItems_keepsWhatTheyStandBelow()
    {
        // A path of three, one beside it, and two that stand below each other.
        const std::vector<BackupItemLine> lines{
            {1, 0, u"Top"_s, {}},      {2, 1, u"middle"_s, {}}, {3, 2, u"Leaf"_s, u"deleted"_s},
            {4, 0, u"leaf too"_s, {}}, {5, 6, u"round"_s, {}},  {6, 5, u"and round"_s, u"changed"_s}};
        const auto listed = [&lines](const QString& text, bool onlyOthers) {
            QString flags;
            for (const ListedLine& line : Listed(lines, text, onlyOthers))
                flags += line.Fits ? u'F' : line.IsListed ? u'x' : u'-';
            return flags;
        };
        QCOMPARE(listed({}, false), u"FFFFFF"_s);
        QCOMPARE(listed(u"LEAF"_s, false), u"xxFF--"_s);
        QCOMPARE(listed(u"leaf"_s, true), u"xxF---"_s);
        QCOMPARE(listed({}, true), u"xxF-xF"_s);
        QCOMPARE(listed(u"nothing"_s, false), u"------"_s);
    }

    void preview_showsTheTexts()
    {
        const QString preview = PreviewOf({.Id = 1,
                                           .Parent = 0,
                                           .Title = u"title"_s,
                                           .Description = u"said"_s,
                                           .Info = {},
                                           .Code = u"{\\rtf1 int x;}"_s,
                                           .Notes = {},
                                           .Usage = {},
                                           .LastChanged = {},
                                           .Files = {u"a.txt"_s},
                                           .HasPage = true});
        QCOMPARE(preview,
                 u"title\n\nDescription:\nsaid\n\nCode:\nint x;\n\nStored files:\na.txt\n\nIt has a web page.\n"_s);
    }
};

QB_TEST_MAIN(TestDatabaseTools)
#include "tst_database_tools.moc"
