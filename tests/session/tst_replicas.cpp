#include "maintenance/BackupFile.h"
#include "platform/system/Paths.h"
#include "replication/ReplicaCreation.h"
#include "replication/ReplicaList.h"
#include "session/Replicas.h"
#include "store/CDBCreate.h"
#include "store/ReplicaLog.h"
#include "support/LibraryState.h"
#include "support/TestSession.h"

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// Replication as the window's commands do it.
class TestReplicas : public QObject {
    Q_OBJECT

    std::unique_ptr<TestSession> s;
    std::unique_ptr<Replicas> m_replicas;
    QString m_one;

    QString Path(const QString& name) const { return s->Home.Path(name); }
    const Message& LastMessage() const { return s->Script.Messages.last(); }
    static QString Native(const QString& path) { return QDir::toNativeSeparators(path); }

    void GiveOut(const QString& file)
    {
        s->Script.ExpectFileName(u"Select destination folder and file name of the new replica transfer file"_s, file);
        s->Script.ExpectInputBox(u"Short Description"_s, u"away"_s);
        s->Script.ExpectMsgBox(u"Replica Created"_s);
        s->CommandStates.Run(u"mnuDBToolsCreateReplicaItem"_s);
    }
    /// Opens a transfer file by the command, in its own folder.
    void OpenTransfer(const QString& file)
    {
        s->Script.ExpectMsgBox(u"Target Database Location"_s, MsgBoxResult::No);
        s->Script.ExpectInputBox(u"Include to Favourites List"_s, u"Child"_s);
        s->Libraries.SelectDatabase(file);
    }
    void StartWithChild()
    {
        QDir().mkpath(Path(u"away"_s));
        GiveOut(Path(u"away/child.qbr"_s));
        OpenTransfer(Path(u"away/child.qbr"_s));
        s->Time.AddSeconds(60);
    }
    void ExpectExport(const QString& file, const QString& caption)
    {
        s->Script.ExpectFileName(u"Select destination folder and file name of the new backup file"_s, file);
        s->Script.ExpectMsgBox(caption);
    }

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        s = std::make_unique<TestSession>();
        m_replicas = std::make_unique<Replicas>(s->State, s->Shell, s->CommandStates, s->Libraries, s->Tree);
        m_one = s->LibraryFile(u"one.qbd"_s, u"first"_s);
        QVERIFY(s->Start(u"%1|One;"_s.arg(m_one)));
    }
    void cleanup()
    {
        m_replicas.reset();
        s.reset();
    }

    void replica_isGivenOutAndTheLibraryOpenAgain()
    {
        s->Click(u"first"_s);
        GiveOut(Path(u"child.qbr"_s));
        QCOMPARE(s->Script.Questions.last().Name, u"oneReplica.qbr"_s);
        QCOMPARE(s->Script.Questions.last().Filter, u"KT Quillbase Library Replica|*.qbr"_s);
        QVERIFY(s->Script.Questions.last().Save);
        QCOMPARE(LastMessage().Text,
                 u"Database replica seccessfully created at %1."_s.arg(Native(Path(u"child.qbr"_s))));
        QCOMPARE(LastMessage().Icon, MsgBoxIcon::Information);
        QCOMPARE(s->Shell.StatusText, u"Replica successfully created"_s);
        QVERIFY(ReadBackupSummary(Path(u"child.qbr"_s)));
        QCOMPARE(s->OpenPath(), m_one);
        QCOMPARE(s->State.oCodeItem->Title(), u"first"_s);
        QVERIFY(s->State.IsMotherReplica());
        QVERIFY(s->Enabled(u"mnuDBToolsForgetReplicaItem"_s));
        QVERIFY(s->Enabled(u"mnuDBToolsCreateReplicaItem"_s));
        QVERIFY(!s->Enabled(u"mnuDBToolsExportChangesItem"_s));
        QVERIFY(s->Shell.Waited > 0);
    }

    void replicaThatCantBeMade_isTold()
    {
        const auto elsewhere = Library::Open(m_one);
        s->Script.ExpectFileName(u"Select destination folder and file name of the new replica transfer file"_s,
                                 Path(u"child.qbr"_s));
        s->Script.ExpectError();
        s->Script.ExpectMsgBox(u"Operation Unseccessfull"_s);
        s->CommandStates.Run(u"mnuDBToolsCreateReplicaItem"_s);
        QCOMPARE(LastMessage().Text,
                 u"Program couldn't create replica. The database might be opened by another user."_s);
        QCOMPARE(LastMessage().Icon, MsgBoxIcon::Exclamation);
        QCOMPARE(s->Shell.StatusText, u"Replica creation unsuccessful"_s);
        QCOMPARE(s->OpenPath(), m_one);
        QVERIFY(!s->State.IsMotherReplica());
    }

    void replicaWithoutAName_isNotMade()
    {
        s->Script.ExpectFileName(u"Select destination folder and file name of the new replica transfer file"_s, {});
        s->CommandStates.Run(u"mnuDBToolsCreateReplicaItem"_s);
        QVERIFY(!s->State.IsMotherReplica());
    }

    // Opening

    void transferFile_becomesALibraryBesideIt()
    {
        QDir().mkpath(Path(u"away"_s));
        GiveOut(Path(u"away/child.qbr"_s));
        OpenTransfer(Path(u"away/child.qbr"_s));
        const Message& question = s->Script.Messages.last();
        QCOMPARE(question.Text,
                 u"Would you like to move the database to a different location before it will be unpacked and "
                 "connected?\r\nIf you select 'No', then the database will remain in its current directory and "
                 "necessary directories will be also created there."_s);
        QCOMPARE(question.Buttons, MsgBoxButtons::YesNoCancel);
        QCOMPARE(question.DefaultAnswer(), MsgBoxResult::Yes);
        QCOMPARE(s->OpenPath(), Path(u"away/child.qbd"_s));
        QCOMPARE(s->Shape(), u"Child Library(first)"_s);
        QCOMPARE(QDir(Path(u"away"_s)).entryList({u"*.qbr"_s}), QStringList());
        QVERIFY(s->State.IsChildReplica());
        QVERIFY(s->Enabled(u"mnuDBToolsExportChangesItem"_s));
        QVERIFY(!s->Enabled(u"mnuDBToolsCreateReplicaItem"_s));
        QVERIFY(!s->Enabled(u"mnuExportAgainItem"_s));
    }

    void transferFile_isMovedWhereTheUserSays()
    {
        QDir().mkpath(Path(u"there"_s));
        GiveOut(Path(u"child.qbr"_s));
        s->Script.ExpectMsgBox(u"Target Database Location"_s, MsgBoxResult::Yes);
        s->Script.ExpectFileName(u"Select Target Directory and File Name"_s, Path(u"there/mine.qbr"_s));
        s->Script.ExpectInputBox(u"Include to Favourites List"_s, u"Child"_s);
        s->Libraries.SelectDatabase(Path(u"child.qbr"_s));
        QCOMPARE(s->Script.Questions.last().Filter, u"KT Quillbase Replica File|*.qbr"_s);
        QCOMPARE(s->OpenPath(), Path(u"there/mine.qbd"_s));
        QVERIFY(!QFile::exists(Path(u"child.qbr"_s)));
    }

    void transferFileInTheProgramsFolder_asksNothing()
    {
        GiveOut(ApplicationFolder() + u"child.qbr"_s);
        s->Script.ExpectInputBox(u"Include to Favourites List"_s, u"Child"_s);
        s->Libraries.SelectDatabase(ApplicationFolder() + u"child.qbr"_s);
        QCOMPARE(s->OpenPath(), ApplicationFolder() + u"child.qbd"_s);
    }

    void cancelledOpening_leavesTheFile()
    {
        GiveOut(Path(u"child.qbr"_s));
        s->Script.ExpectMsgBox(u"Target Database Location"_s, MsgBoxResult::Cancel);
        s->Libraries.SelectDatabase(Path(u"child.qbr"_s));
        s->Script.ExpectMsgBox(u"Target Database Location"_s, MsgBoxResult::Yes);
        s->Script.ExpectFileName(u"Select Target Directory and File Name"_s, {});
        s->Libraries.SelectDatabase(Path(u"child.qbr"_s));
        QVERIFY(QFile::exists(Path(u"child.qbr"_s)));
        QCOMPARE(s->OpenPath(), m_one);
    }

    void libraryOfThatName_isReplacedOnlyWhenAsked()
    {
        GiveOut(Path(u"child.qbr"_s));
        s->LibraryFile(u"child.qbd"_s, u"somebody's"_s);
        const QMap<QString, QByteArray> before = StateOf(Path(u"child.qbd"_s));
        s->Script.ExpectMsgBox(u"Target Database Location"_s, MsgBoxResult::No);
        s->Script.ExpectMsgBox(u"Replace Current Database?"_s, MsgBoxResult::No);
        s->Script.ExpectInputBox(u"Include to Favourites List"_s, u"Child"_s);
        s->Libraries.SelectDatabase(Path(u"child.qbr"_s));
        QCOMPARE(s->OpenPath(), Path(u"child1.qbd"_s));
        QCOMPARE(DifferenceOf(StateOf(Path(u"child.qbd"_s)), before), QString());
    }

    void replicaThatIsOpenAlready_isNoticed()
    {
        GiveOut(Path(u"child.qbr"_s));
        QFile::copy(Path(u"child.qbr"_s), Path(u"copy.qbr"_s));
        OpenTransfer(Path(u"child.qbr"_s));
        s->Script.ExpectMsgBox(u"Target Database Location"_s, MsgBoxResult::No);
        s->Script.ExpectMsgBox(u"Replica Opened Again"_s, MsgBoxResult::No);
        s->Script.ExpectError();
        s->Libraries.SelectDatabase(Path(u"copy.qbr"_s));
        QVERIFY(s->Script.Messages.last().Text.contains(Native(Path(u"child.qbd"_s))));
        QCOMPARE(s->Script.Messages.last().DefaultAnswer(), MsgBoxResult::No);
        QVERIFY(!QFile::exists(Path(u"copy.qbd"_s)));
        QVERIFY(QFile::exists(Path(u"copy.qbr"_s)));
        s->Script.ExpectMsgBox(u"Target Database Location"_s, MsgBoxResult::No);
        s->Script.ExpectMsgBox(u"Replica Opened Again"_s, MsgBoxResult::Yes);
        s->Script.ExpectInputBox(u"Include to Favourites List"_s, u"Copy"_s);
        s->Libraries.SelectDatabase(Path(u"copy.qbr"_s));
        QCOMPARE(s->OpenPath(), Path(u"copy.qbd"_s));
    }

    void fileThatIsNone_isRefused()
    {
        WriteFile(Path(u"bad.qbr"_s), "no replica");
        s->Script.ExpectMsgBox(u"Target Database Location"_s, MsgBoxResult::No);
        s->Script.ExpectError();
        s->Libraries.SelectDatabase(Path(u"bad.qbr"_s));
        QCOMPARE(s->OpenPath(), m_one);
        QCOMPARE(ReadFile(Path(u"bad.qbr"_s)), "no replica");
        QVERIFY(!QFile::exists(Path(u"bad.qbd"_s)));
    }

    // Changes

    void export_locksTheChildAndTells()
    {
        StartWithChild();
        ExpectExport(Path(u"out.qbs"_s), u"Step 1 of 3 - Synchronization file created"_s);
        s->CommandStates.Run(u"mnuDBToolsExportChangesItem"_s);
        QCOMPARE(s->Script.Questions.last().Name, u"childSynchroFile.qbs"_s);
        QCOMPARE(s->Script.Questions.last().Filter, u"Quillbase Synchro Files|*.qbs"_s);
        QCOMPARE(
            LastMessage().Text,
            u"Synchronization file was seccesfully created at %1.\r\nThis is the first step in three step process. "
            "Now please use the newly created synchronization file to synchronize changes made in the currently "
            "opened replica database with the mother database."_s.arg(Native(Path(u"out.qbs"_s))));
        QCOMPARE(LastMessage().Icon, MsgBoxIcon::Information);
        QVERIFY(QFile::exists(Path(u"out.qbs"_s)));
        QVERIFY(!s->State.LastExportedDate().IsNone());
        QVERIFY(!s->Enabled(u"mnuDBToolsExportChangesItem"_s));
        QVERIFY(s->Enabled(u"mnuExportAgainItem"_s));
        s->Click(u"first"_s);
        QVERIFY(!s->Enabled(u"mnuDeleteCode"_s));
        ExpectExport(Path(u"again.qbs"_s), u"Step 1 of 3 - Synchronization file created"_s);
        s->CommandStates.Run(u"mnuExportAgainItem"_s);
        QVERIFY(QFile::exists(Path(u"again.qbs"_s)));
    }

    void contentsThatAreMissing_areToldAfterTheExport()
    {
        StartWithChild();
        Library& child = *s->State.CurrentDatabase;
        child.Execute(u"UPDATE Items SET HTMLPage = -1, HTMLLastUpdated = ? WHERE ID = 1"_s, {s->Time.Now()});
        for (const QString& name : {u"a.txt"_s, u"b.txt"_s})
            QFile::remove(child.FilesFolder()
                          + u"%1 - %2"_s.arg(AddStoredFile(child, 1, name, "a", s->Time.Now())).arg(name));
        ExpectExport(Path(u"out.qbs"_s), u"Step 1 of 3 - Synchronization file created"_s);
        s->Script.ExpectMsgBox(u"Missing Contents"_s);
        s->CommandStates.Run(u"mnuDBToolsExportChangesItem"_s);
        QCOMPARE(LastMessage().Text,
                 u"2 new stored files and 1 web page are missing in the library, and so in the export."_s);
    }

    void exportThatFails_isTold()
    {
        StartWithChild();
        s->Time.AddSeconds(-3600);
        s->Script.ExpectFileName(u"Select destination folder and file name of the new backup file"_s,
                                 Path(u"out.qbs"_s));
        s->Script.ExpectMsgBox(u"System Date Alert"_s);
        s->Script.ExpectMsgBox(u"Error"_s);
        s->CommandStates.Run(u"mnuDBToolsExportChangesItem"_s);
        QCOMPARE(LastMessage().Text, u"Synchronization file was not created."_s);
        QCOMPARE(LastMessage().Icon, MsgBoxIcon::Critical);
        QVERIFY(s->State.LastExportedDate().IsNone());
        QVERIFY(s->Enabled(u"mnuDBToolsExportChangesItem"_s));
        QVERIFY(!QFile::exists(Path(u"out.qbs"_s)));
    }

    void exportThatIsCancelled_isNoFailure()
    {
        StartWithChild();
        class Ended : public Work {
            bool IsCancelled() override { return true; }
        } ended;
        m_replicas->Watched = [&ended](const QString&, const std::function<void(Work&)>& body) { body(ended); };
        s->Script.ExpectFileName(u"Select destination folder and file name of the new backup file"_s,
                                 Path(u"out.qbs"_s));
        s->CommandStates.Run(u"mnuDBToolsExportChangesItem"_s);
        QVERIFY(s->State.LastExportedDate().IsNone());
    }

    // The list of children

    void forgottenChild_isStruckOff()
    {
        GiveOut(Path(u"a.qbr"_s));
        s->Time.AddSeconds(60);
        GiveOut(Path(u"b.qbr"_s));
        ReplicaList list(*s->State.CurrentDatabase);
        QCOMPARE(list.Lines().size(), size_t(2));
        QCOMPARE(list.Lines()[0].Description, u"away"_s);
        QCOMPARE(list.Lines()[0].WaitingText(), u"nothing"_s);
        s->Script.ExpectMsgBox(u"Confirm removal"_s, MsgBoxResult::No);
        QVERIFY(!list.Forget(0));
        QCOMPARE(list.Lines().size(), size_t(2));
        QCOMPARE(LastMessage().Text,
                 u"Are you sure that you want to remove the selected replica connection from the currently opened main "
                 "database? If you do so, you won't be able to synchronize the main database with the selected replica "
                 "any more!"_s);
        QCOMPARE(LastMessage().DefaultAnswer(), MsgBoxResult::No);
        const QString second = list.Lines()[1].Identity;
        // What only the one that goes had not heard of need not be kept any more.
        const Date between = Date::FromSeconds(list.Lines()[0].LastSynchronized.Seconds() + 1);
        ReplicaLog(*s->State.CurrentDatabase).Note({.Table = u"Items"_s, .Record = 77, .Moment = between});
        s->Script.ExpectMsgBox(u"Confirm removal"_s, MsgBoxResult::Yes);
        QVERIFY(!list.Forget(0));
        QCOMPARE(Texts(*s->State.CurrentDatabase, u"SELECT DBCopyID FROM ChildCopies"_s), QStringList{second});
        QVERIFY(!ReplicaLog(*s->State.CurrentDatabase).Has(ReplicaEvent::Deleted, u"Items"_s, 77));
        s->Script.ExpectMsgBox(u"Confirm removal"_s, MsgBoxResult::Yes);
        s->Script.ExpectMsgBox(u"Closing form..."_s);
        QVERIFY(list.Forget(0));
        QCOMPARE(LastMessage().Text, u"There is no other replica link in the database. Form will be closed."_s);
    }

    void childrenOfOneStamp_goTogetherAndTheQuestionSaysSo()
    {
        GiveOut(Path(u"a.qbr"_s));
        GiveOut(Path(u"b.qbr"_s)); // in the same second
        ReplicaList list(*s->State.CurrentDatabase);
        s->Script.ExpectMsgBox(u"Confirm removal"_s, MsgBoxResult::Yes);
        s->Script.ExpectMsgBox(u"Closing form..."_s);
        QVERIFY(list.Forget(1));
        QVERIFY(s->Script.Messages.at(s->Script.Messages.size() - 2).Text.contains(u"2 replicas go together"_s));
        QCOMPARE(CountOf(*s->State.CurrentDatabase, u"ChildCopies"_s), 0);
    }

    void list_tellsWhatWaits()
    {
        GiveOut(Path(u"a.qbr"_s));
        s->Time.AddSeconds(60);
        AddItem(*s->State.CurrentDatabase, 0, u"new"_s);
        AddItem(*s->State.CurrentDatabase, 0, u"newer"_s);
        CCodeItem item;
        item.Initialise(*s->State.CurrentDatabase, u"1"_s);
        item.Delete();
        item.Commit();
        QCOMPARE(ChildrenOf(*s->State.CurrentDatabase).front().WaitingText(), u"2 changed items, 1 deletion"_s);
    }

    void replicaList_isShownForTheLibraryAndTheMenuFollows()
    {
        GiveOut(Path(u"a.qbr"_s));
        m_replicas->ShowReplicaList = [](Library& library) { library.Execute(u"DELETE FROM ChildCopies"_s); };
        s->CommandStates.Run(u"mnuDBToolsForgetReplicaItem"_s);
        QVERIFY(!s->Enabled(u"mnuDBToolsForgetReplicaItem"_s));
        QVERIFY(!s->State.IsMotherReplica());
    }
};

QB_TEST_MAIN(TestReplicas)
#include "tst_replicas.moc"
