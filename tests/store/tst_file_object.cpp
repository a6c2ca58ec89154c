#include "platform/dao/DBEngine.h"
#include "store/CFileObject.h"
#include "store/Library.h"
#include "store/PendingFiles.h"
#include "store/StoredFiles.h"
#include "support/ErrorRoutine.h"
#include "support/LibraryBuilder.h"
#include "support/OrdinaryUser.h"
#include "support/RecordedWork.h"
#include "support/ScriptedPrompts.h"
#include "support/TestRun.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QTest>
#include <csignal>
#include <sys/wait.h>
#include <unistd.h>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// A stored file: its row and its contents on the disk, through all that can happen to them.
class TestFileObject : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_home = std::make_unique<TemporaryHome>();
        m_time = std::make_unique<FixedClock>(Date::FromParts(2026, 3, 1, 12, 0, 0));
        m_prompts = std::make_unique<ScriptedPrompts>();
        m_database = MakeLibrary(m_home->Path(u"Dateien & mehr.qbd"_s));
        m_item = AddItem(*m_database, 0, u"owner"_s);
        WriteFile(m_home->Path(u"in/größe a.zip"_s), "contents");
        QFile source(m_home->Path(u"in/größe a.zip"_s));
        QVERIFY(source.open(QIODevice::ReadWrite));
        QVERIFY(source.setFileTime(QDateTime(QDate(2025, 7, 8), QTime(9, 10, 11)), QFileDevice::FileModificationTime));
    }
    void cleanup()
    {
        m_database.reset();
        m_prompts.reset();
        m_time.reset();
        m_home.reset();
    }

    // Adding

    void file_isTakenIn()
    {
        CFileObject file = New();
        file.SetDescription(u"what it is"_s);
        file.SetStoredFile(Source());
        QCOMPARE(file.Title(), u"größe a.zip"_s);
        QVERIFY(file.Commit());
        QCOMPARE(file.State(), RecordState::Clean);
        QCOMPARE(file.Key(), u"1"_s);
        QCOMPARE(Names(), QStringList{u"1 - größe a.zip"_s});
        QCOMPARE(ReadFile(StoredFilePath(*m_database, 1, u"größe a.zip"_s)), "contents");
        CFileObject again = Open(1);
        QCOMPARE(again.CodeID(), QString::number(m_item));
        QCOMPARE(again.Title(), u"größe a.zip"_s);
        QCOMPARE(again.Size(), 8);
        QCOMPARE(again.OrigDateTime(), Date::FromParts(2025, 7, 8, 9, 10, 11));
        QCOMPARE(again.DateAdded(), m_time->Now());
        QCOMPARE(again.Description(), u"what it is"_s);
        QCOMPARE(Column(u"LastUpdated"_s).ToDate(), m_time->Now());
        QVERIFY(!again.DescriptionChanged());
    }

    void rowWithoutFile_hasNone()
    {
        CFileObject file = New();
        file.SetTitle(u"only a row"_s);
        QVERIFY(file.Commit());
        QCOMPARE(Names(), QStringList());
        QVERIFY(Open(1).OrigDateTime().IsNone());
        QCOMPARE(Open(1).Size(), 0);
    }

    void fileThatCantBeTaken_leavesNothing_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("reason");
        QTest::newRow("missing") << u"no such file"_s << u"can't be read"_s;
        QTest::newRow("folder") << u"."_s << u"can't be read"_s;
        QTest::newRow("long name") << QString(240, u'n') << u"is too long to be stored"_s;
    }
    void fileThatCantBeTaken_leavesNothing()
    {
        QFETCH(QString, name);
        QFETCH(QString, reason);
        if (name.size() > 200)
            WriteFile(m_home->Path(u"in/"_s + name), "x");
        CFileObject file = New();
        file.SetStoredFile(m_home->Path(u"in/"_s + name));
        m_prompts->ExpectError();
        QVERIFY(!file.Commit());
        QVERIFY2(m_prompts->Errors.last().contains(reason), qPrintable(m_prompts->Errors.last()));
        QCOMPARE(CountOf(*m_database, u"Files"_s), 0);
        QCOMPARE(AllNames(), QStringList());
        QCOMPARE(file.State(), RecordState::New); // another try is one
    }

    void titleThatLeadsOut_isRefused_data()
    {
        QTest::addColumn<QString>("title");
        for (const QString& title :
             {u"../x"_s, u"a/b"_s, u"a\\b"_s, QString(u"a"_s + QChar(u'\0') + u"b"_s), QString()})
            QTest::newRow(qPrintable(title)) << title;
    }
    void titleThatLeadsOut_isRefused()
    {
        QFETCH(QString, title);
        CFileObject file = New();
        file.SetStoredFile(Source());
        file.SetTitle(title);
        m_prompts->ExpectError();
        QVERIFY(!file.Commit());
        QVERIFY(m_prompts->Errors.last().contains(u"is no name for a stored file"_s));
        QCOMPARE(CountOf(*m_database, u"Files"_s), 0);
        QCOMPARE(AllNames(), QStringList());
    }

    void oddTitles_areStoredAsTheyAre_data()
    {
        QTest::addColumn<QString>("title");
        for (const QString& title : {u".."_s, u"."_s, u"a:b"_s, u"trailing..."_s, u" blank "_s, u"日本語.txt"_s,
                                     u"new\nline"_s, u"-rf"_s, u"CON"_s})
            QTest::newRow(qPrintable(title)) << title;
    }
    void oddTitles_areStoredAsTheyAre()
    {
        QFETCH(QString, title);
        CFileObject file = New();
        file.SetStoredFile(Source());
        file.SetTitle(title);
        QVERIFY(file.Commit());
        QCOMPARE(Names(), QStringList{u"1 - "_s + title});
        QCOMPARE(Open(1).SaveToFile2(m_home->Path(u"out"_s)), m_home->Path(u"out"_s));
        QCOMPARE(ReadFile(m_home->Path(u"out"_s)), "contents");
    }

    void fileBeyondTheColumn_isRefusedBeforeItIsCopied()
    {
        QFile large(m_home->Path(u"in/large"_s));
        QVERIFY(large.open(QIODevice::WriteOnly));
        QVERIFY(large.resize(qint64(1) << 31)); // takes no room
        CFileObject file = New();
        file.SetStoredFile(large.fileName());
        m_prompts->ExpectError();
        QVERIFY(!file.Commit());
        QVERIFY(
            m_prompts->Errors.last().contains(u"has 2147483648 bytes; a library stores files of up to 2147483647"_s));
        QCOMPARE(AllNames(), QStringList());
    }

    void cancelledCopy_leavesNothing()
    {
        CFileObject file = New();
        file.SetStoredFile(Source());
        RecordedWork work;
        work.Ends = [](qint64) { return true; };
        file.SetWork(work);
        QVERIFY(!file.Commit()); // and nobody is told of an error
        QCOMPARE(work.Done, QList<qint64>{8});
        QCOMPARE(work.Totals, QList<qint64>{8});
        QCOMPARE(CountOf(*m_database, u"Files"_s), 0);
        QCOMPARE(AllNames(), QStringList());
        work.Ends = {};
        QVERIFY(file.Commit());
        QCOMPARE(Names(), QStringList{u"1 - größe a.zip"_s});
    }

    // Changing

    void description_movesItsDate()
    {
        Add();
        m_time->AddSeconds(60);
        CFileObject file = Open(1);
        file.SetTitle(u"größe a.zip"_s);
        QVERIFY(file.Commit());
        QCOMPARE(Column(u"LastUpdated"_s).ToDate(), Date::FromParts(2026, 3, 1, 12, 0, 0));
        file.SetDescription(u"other"_s);
        QVERIFY(file.Commit()); // not marked as changed
        QCOMPARE(Open(1).Description(), QString());
        file.SetDescriptionChanged(true);
        QVERIFY(file.Commit());
        QCOMPARE(Open(1).Description(), u"other"_s);
        QCOMPARE(Column(u"LastUpdated"_s).ToDate(), m_time->Now());
        QVERIFY(!file.DescriptionChanged());
    }

    void replacedFile_leavesTheOldOneBehind()
    {
        Add();
        WriteFile(m_home->Path(u"in/b.txt"_s), "new contents");
        CFileObject file = Open(1);
        file.SetStoredFile(m_home->Path(u"in/b.txt"_s));
        QVERIFY(file.Commit());
        QCOMPARE(Names(), (QStringList{u"1 - b.txt"_s, u"1 - größe a.zip"_s}));
        QCOMPARE(ReadFile(StoredFilePath(*m_database, 1, u"b.txt"_s)), "new contents");
        QCOMPARE(Open(1).Size(), 8); // is not refreshed, nor is the date
        QCOMPARE(Open(1).OrigDateTime(), Date::FromParts(2025, 7, 8, 9, 10, 11));
    }

    void replacementThatFails_keepsTheOldFile()
    {
        Add();
        CFileObject file = Open(1);
        file.SetStoredFile(m_home->Path(u"in/missing/größe a.zip"_s));
        m_prompts->ExpectError();
        QVERIFY(!file.Commit());
        QCOMPARE(AllNames(), QStringList{u"1 - größe a.zip"_s});
        QCOMPARE(ReadFile(StoredFilePath(*m_database, 1, u"größe a.zip"_s)), "contents");
    }

    /// The row says nothing of whether it was committed, since its title stays: neither file may pass for a remnant.
    void replacementThatIsKilled_losesNeitherFile_data()
    {
        QTest::addColumn<bool>("committed");
        QTest::newRow("before the commit") << false;
        QTest::newRow("between the commit and the file's place") << true;
    }
    void replacementThatIsKilled_losesNeitherFile()
    {
        QFETCH(bool, committed);
        Add();
        const QString source = m_home->Path(u"other/größe a.zip"_s);
        WriteFile(source, "new contents");
        const QString library = m_database->Name();
        const pid_t process = ::fork();
        if (process == 0) {
            const auto database = Library::Open(library);
            CFileObject file;
            file.Initialise(*database, u"1"_s);
            file.SetStoredFile(source);
            Transaction transaction(*database);
            if (file.Commit() && committed)
                transaction.Commit();
            ::kill(::getpid(), SIGKILL);
        }
        int status = 0;
        ::waitpid(process, &status, 0);
        QVERIFY(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL);
        QCOMPARE(ReadFile(StoredFilePath(*m_database, 1, u"größe a.zip"_s)), "contents");
        QCOMPARE(AllNames().size(), 3); // with the new one, and the lock
        FinishPendingFiles(*m_database);
        QCOMPARE(AllNames(), (QStringList{u"1 - größe a.zip"_s, u"found 1 - größe a.zip"_s}));
        QCOMPARE(ReadFile(StoredFilePath(*m_database, 1, u"größe a.zip"_s)), "new contents");
        QCOMPARE(ReadFile(m_database->FilesFolder() + u"found 1 - größe a.zip"_s), "contents");
    }

    void propertyThatWasSet_isReadBeforeTheRow()
    {
        Add();
        const Date day = Date::FromParts(2020, 1, 2);
        CFileObject file = Open(1);
        file.SetSize(77);
        QCOMPARE(file.Size(), 77);
        CFileObject dated = Open(1);
        dated.SetOrigDateTime(day);
        QCOMPARE(dated.OrigDateTime(), day);
        CFileObject added = Open(1);
        added.SetDateAdded(day);
        QCOMPARE(added.DateAdded(), day);
        CFileObject replicated = Open(1);
        replicated.SetMotherCodeID(5);
        QCOMPARE(replicated.MotherCodeID(), 5);
        QCOMPARE(Open(1).Size(), 8);
    }

    void newTitleAlone_losesTheFile()
    {
        Add();
        CFileObject file = Open(1);
        file.SetTitle(u"b.zip"_s);
        QVERIFY(file.Commit());
        QCOMPARE(Names(), QStringList{u"1 - größe a.zip"_s});
        m_prompts->ExpectMsgBox(u"Update database?"_s, MsgBoxResult::No);
        QCOMPARE(Open(1).SaveToFile2(m_home->Path(u"out"_s)), QString());
    }

    // Handing out

    void file_isHandedOut()
    {
        Add();
        WriteFile(m_home->Path(u"out.zip"_s), "what was there before, and longer");
        QCOMPARE(Open(1).SaveToFile2(m_home->Path(u"out.zip"_s)), m_home->Path(u"out.zip"_s));
        QCOMPARE(ReadFile(m_home->Path(u"out.zip"_s)), "contents");
        QCOMPARE(Open(99).SaveToFile2(m_home->Path(u"none"_s)), QString());
        QVERIFY(!QFile::exists(m_home->Path(u"none"_s)));
    }

    void placeThatCantBeWritten_isAnError()
    {
        Add();
        m_prompts->ExpectError();
        QCOMPARE(Open(1).SaveToFile2(m_home->Path(u"no/such/folder/out.zip"_s)), QString());
    }

    void vanishedFile_isAskedAbout_data()
    {
        QTest::addColumn<bool>("yes");
        QTest::newRow("yes") << true;
        QTest::newRow("no") << false;
    }
    void vanishedFile_isAskedAbout()
    {
        QFETCH(bool, yes);
        Add();
        QVERIFY(QFile::remove(StoredFilePath(*m_database, 1, u"größe a.zip"_s)));
        WriteFile(m_home->Path(u"out.zip"_s), "before");
        m_prompts->ExpectMsgBox(u"Update database?"_s, yes ? MsgBoxResult::Yes : MsgBoxResult::No);
        QCOMPARE(Open(1).SaveToFile2(m_home->Path(u"out.zip"_s)), QString());
        QCOMPARE(m_prompts->Messages.last().Text,
                 u"Source file not found in its location. Do you wish to delete the record from the database?"_s);
        QCOMPARE(CountOf(*m_database, u"Files"_s), yes ? 0 : 1);
        QCOMPARE(ReadFile(m_home->Path(u"out.zip"_s)), "before");
    }

    // Deleting; what other replicas are told is tested with DeleteStoredFileRow

    void deletedFile_isGone()
    {
        Add();
        CFileObject file = Open(1);
        file.Delete();
        QVERIFY(file.Commit());
        QCOMPARE(file.State(), RecordState::Deleted);
        QCOMPARE(CountOf(*m_database, u"Files"_s), 0);
        QCOMPARE(AllNames(), QStringList());
        QVERIFY_THROWS_EXCEPTION(RuntimeError, file.SetTitle(u"x"_s));
    }

    void deletedRow_whoseFileIsGone_goesWithoutAWord()
    {
        Add();
        QVERIFY(QFile::remove(StoredFilePath(*m_database, 1, u"größe a.zip"_s)));
        CFileObject file = Open(1);
        file.Delete();
        QVERIFY(file.Commit());
        QCOMPARE(CountOf(*m_database, u"Files"_s), 0);
    }

    void deletionThatFails_bringsTheFileBack()
    {
        Add();
        m_database->Execute(
            u"CREATE TEMP TRIGGER hold BEFORE DELETE ON Files BEGIN SELECT raise(ABORT, 'held'); END"_s);
        CFileObject file = Open(1);
        file.Delete();
        m_prompts->ExpectError();
        QVERIFY(!file.Commit());
        QCOMPARE(AllNames(), QStringList{u"1 - größe a.zip"_s});
        QCOMPARE(CountOf(*m_database, u"Files"_s), 1);
    }

    void child_namesTheMothersRecord()
    {
        MakeChild(*m_database, u"/mother.qbd"_s, Date::FromParts(2026, 4, 1));
        CFileObject file = New();
        file.SetStoredFile(Source());
        file.SetMotherCodeID(77);
        QVERIFY(file.Commit());
        QCOMPARE(Open(1).MotherCodeID(), 77);
    }

    void newFileOfAChild_namesTheMothersItem_data()
    {
        QTest::addColumn<Value>("motherRecord");
        QTest::addColumn<int>("expected");
        QTest::newRow("item that came from the mother") << Value(55) << 55;
        QTest::newRow("item made in the child") << Value(-1) << 0;
        QTest::newRow("nothing said") << Value() << 0;
    }
    void newFileOfAChild_namesTheMothersItem()
    {
        QFETCH(Value, motherRecord);
        MakeChild(*m_database, u"/mother.qbd"_s, Date::FromParts(2026, 4, 1));
        m_database->Execute(u"UPDATE Items SET MotherRecordID = ?"_s, {motherRecord});
        Add();
        QTEST(int(Open(1).MotherCodeID()), "expected");
    }

    // Kills in the middle of the work

    void workThatWasUnderWay_isFinishedOrTakenBack_data()
    {
        QTest::addColumn<QString>("left");
        QTest::addColumn<bool>("hasRow");
        QTest::addColumn<QStringList>("names");
        QTest::newRow("copying") << u".adding-%1-0"_s << false << QStringList();
        QTest::newRow("before the commit of a new row") << u".arriving-%1-1"_s << false << QStringList();
        QTest::newRow("after it") << u".arriving-%1-1"_s << true << QStringList{u"1 - a.txt"_s};
        QTest::newRow("before the commit of another title") << u".arriving-%1-1-01234567"_s << true << QStringList();
        QTest::newRow("after the commit of this title")
            << u".arriving-%1-1-cfc7b488"_s << true << QStringList{u"1 - a.txt"_s};
        QTest::newRow("before the commit of a deletion") << u".leaving-%1-1"_s << true << QStringList{u"1 - a.txt"_s};
        QTest::newRow("after it") << u".leaving-%1-1"_s << false << QStringList();
        QTest::newRow("of another's") << u".hidden"_s << false << QStringList{u".hidden"_s};
    }
    void workThatWasUnderWay_isFinishedOrTakenBack()
    {
        QFETCH(QString, left);
        QFETCH(bool, hasRow);
        QFETCH(QStringList, names);
        if (hasRow)
            m_database->Execute(u"INSERT INTO Files (ID, CodeID, Title) VALUES (1, ?, 'a.txt')"_s, {m_item});
        WriteFile(m_database->FilesFolder() + (left.contains(u'%') ? left.arg(Mark) : left), "contents");
        WriteFile(m_database->FilesFolder() + u".working-"_s + Mark, {}); // which nobody has locked
        FinishPendingFiles(*m_database);
        QCOMPARE(AllNames(), names);
        FinishPendingFiles(*m_database);
        QCOMPARE(AllNames(), names);
    }

    void workWithoutALock_isOver()
    {
        WriteFile(m_database->FilesFolder() + u".adding-%1-0"_s.arg(Mark), "contents");
        FinishPendingFiles(*m_database);
        QCOMPARE(AllNames(), QStringList());
    }

    void workUnderWay_isLeftAlone()
    {
        {
            const PendingWork work(*m_database);
            WriteFile(work.AddingName(), "contents");
            WriteFile(work.ArrivingName(1, u"a.txt"_s), "contents");
            FinishPendingFiles(*m_database);
            QCOMPARE(AllNames().size(), 3); // with the lock
        }
        FinishPendingFiles(*m_database);
        QCOMPARE(AllNames(), QStringList());
    }

    /// One that can't be finished waits, and keeps nobody from the others.
    void fileThatCantGetToItsPlace_stopsNoOther()
    {
        m_database->Execute(u"INSERT INTO Files (ID, CodeID, Title) VALUES (1, ?, 'a.txt'), (2, ?, 'b.txt')"_s,
                            {m_item, m_item});
        QVERIFY(QDir().mkpath(StoredFilePath(*m_database, 1, u"a.txt"_s) + u"/in the way"_s));
        for (const char* id : {"1", "2"})
            WriteFile(m_database->FilesFolder() + u".arriving-%1-%2"_s.arg(Mark, QString::fromLatin1(id)), id);
        FinishPendingFiles(*m_database);
        QCOMPARE(ReadFile(StoredFilePath(*m_database, 2, u"b.txt"_s)), "2");
        QCOMPARE(ReadFile(m_database->FilesFolder() + u".arriving-%1-1"_s.arg(Mark)), "1");
        QVERIFY(ReadFile(ErrorLogFile()).contains("FinishPendingFiles"));
        QVERIFY(QDir(StoredFilePath(*m_database, 1, u"a.txt"_s)).removeRecursively());
        FinishPendingFiles(*m_database);
        QCOMPARE(ReadFile(StoredFilePath(*m_database, 1, u"a.txt"_s)), "1"); // another time
    }

    void folderInTheWayOfAnExport_isAnError()
    {
        Add();
        QVERIFY(QDir().mkpath(m_home->Path(u"out/taken"_s)));
        m_prompts->ExpectError();
        QCOMPARE(Open(1).SaveToFile2(m_home->Path(u"out/taken"_s)), QString());
        QCOMPARE(QDir(m_home->Path(u"out"_s)).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
                 QStringList{u"taken"_s});
    }

    /// Whose lock this user can't even open.
    void workOfAnotherUser_isLeftAlone()
    {
        const PendingWork work(*m_database);
        WriteFile(work.AddingName(), "contents");
        const QString lock = AllNames().filter(u".working-"_s).value(0);
        QVERIFY(QFile::setPermissions(m_database->FilesFolder() + lock, {}));
        for (const QString& folder : {m_home->Path(), m_database->FilesFolder()})
            QVERIFY(QFile::setPermissions(folder, QFileDevice::Permissions(0x7777)));
        {
            const OrdinaryUser user;
            QCOMPARE(AllNames().size(), 2);
            FinishPendingFiles(*m_database);
        }
        QCOMPARE(AllNames().size(), 2);
    }

    void libraryForReading_isLeftAsItIs()
    {
        WriteFile(m_database->FilesFolder() + u".adding-%1-0"_s.arg(Mark), "contents");
        const auto reading = Library::Open(m_home->Path(u"Dateien & mehr.qbd"_s), DBEngine::Access::ReadOnly);
        FinishPendingFiles(*reading);
        QCOMPARE(AllNames().size(), 1);
        Add();
        QFile::remove(StoredFilePath(*m_database, 1, u"größe a.zip"_s));
        CFileObject file;
        file.Initialise(*reading, u"1"_s);
        m_prompts->ExpectError();
        QCOMPARE(file.SaveToFile2(m_home->Path(u"out"_s)), QString()); // and nobody is asked to delete it
        QVERIFY(m_prompts->Errors.last().contains(u"is missing in the library's folder"_s));
    }

    /// The program ends between the new file's arrival and the commit of its row.
    void replacementThatWasNotCommitted_leavesTheOldFile()
    {
        Add();
        const QString arriving = PendingWork(*m_database)
                                     .ArrivingName(1, u"other.zip"_s)
                                     .replace(QRegularExpression(u"[0-9a-f]{32}"_s), Mark);
        WriteFile(arriving, "new contents");
        FinishPendingFiles(*m_database);
        QCOMPARE(ReadFile(StoredFilePath(*m_database, 1, u"größe a.zip"_s)), "contents");
        QCOMPARE(AllNames(), QStringList{u"1 - größe a.zip"_s});
    }

    void fileOnItsWay_isHandedOut()
    {
        Add();
        QVERIFY(QFile::rename(StoredFilePath(*m_database, 1, u"größe a.zip"_s),
                              m_database->FilesFolder() + u".arriving-%1-1"_s.arg(Mark)));
        QCOMPARE(Open(1).SaveToFile2(m_home->Path(u"out"_s)), m_home->Path(u"out"_s)); // and nothing is asked
        QCOMPARE(Names(), QStringList{u"1 - größe a.zip"_s});
    }

    void folderThatCantBeWritten_isAnError()
    {
        const QString folder = m_database->FilesFolder().chopped(1);
        QDir(folder).removeRecursively();
        WriteFile(folder, "a file in its place");
        CFileObject file = New();
        file.SetStoredFile(Source());
        m_prompts->ExpectError();
        QVERIFY(!file.Commit());
        QVERIFY(m_prompts->Errors.last().contains(u"can't be written; nothing was changed"_s));
        QCOMPARE(CountOf(*m_database, u"Files"_s), 0);
    }

    void commitWithoutALook_changesNothing()
    {
        Add();
        CFileObject file = Open(1);
        file.SetDescriptionChanged(true);
        file.SetDescription(u"new"_s);
        QVERIFY(file.DescriptionChanged());
        QVERIFY(file.Commit());
        CFileObject untouched = Open(1);
        QVERIFY(untouched.Commit());
        QCOMPARE(Open(1).Title(), u"größe a.zip"_s);
        QCOMPARE(Open(1).CodeID(), QString::number(m_item));
        QCOMPARE(Open(1).Description(), u"new"_s);
    }

private:
    inline static const QString Mark = u"0123456789abcdef0123456789abcdef"_s;

    CFileObject New()
    {
        CFileObject file;
        file.Initialise(*m_database, {});
        file.SetCodeID(QString::number(m_item));
        return file;
    }
    void Add()
    {
        CFileObject file = New();
        file.SetStoredFile(Source());
        QVERIFY(file.Commit());
    }
    CFileObject Open(qint64 id)
    {
        CFileObject file;
        file.Initialise(*m_database, QString::number(id));
        return file;
    }
    QString Source() const { return m_home->Path(u"in/größe a.zip"_s); }
    Value Column(const QString& column) { return m_database->QueryValue(u"SELECT "_s + column + u" FROM Files"_s); }
    QStringList Names() { return QDir(m_database->FilesFolder()).entryList(QDir::Files, QDir::Name); }
    QStringList AllNames() { return StoredNames(m_database->FilesFolder()); }

    std::unique_ptr<TemporaryHome> m_home;
    std::unique_ptr<FixedClock> m_time;
    std::unique_ptr<ScriptedPrompts> m_prompts;
    std::unique_ptr<Library> m_database;
    qint64 m_item = 0;
};

QTEST_GUILESS_MAIN(TestFileObject)
#include "tst_file_object.moc"
