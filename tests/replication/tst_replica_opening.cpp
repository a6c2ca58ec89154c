#include "maintenance/BackupFile.h"
#include "maintenance/CDBManipulate.h"
#include "maintenance/LibraryBackup.h"
#include "replication/ReplicaPair.h"
#include "support/FolderContents.h"
#include "support/LibraryState.h"
#include "support/RecordedWork.h"

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// A transfer file may come from anybody.
class TestReplicaOpening : public QObject {
    Q_OBJECT

    std::unique_ptr<ReplicaPair> p;
    QString m_transfer;

    QString Target() const { return p->Home.Path(u"opened/lib.qbd"_s); }
    RestoreResult Open(RestoreOver over = RestoreOver::Refuse, Work& work = NoWork()) const
    {
        return OpenReplica(
            m_transfer, Target(), over, {}, [](const QString&) { return true; }, work);
    }
    QStringList Names() const
    {
        return QDir(p->Home.Path(u"opened"_s)).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
    }
    /// Changes what is in the transfer file, as a stranger does.
    void Tamper(const QStringList& statements) const
    {
        const QString folder = p->Home.Path(u"tampered"_s);
        QDir(folder).removeRecursively();
        QDir().mkpath(folder);
        const QString inner = UnpackLibraryTo(m_transfer, folder, NoWork());
        {
            const auto database = DBEngine::OpenDatabase(inner);
            for (const QString& sql : statements)
                database->Execute(sql);
        }
        QFile::remove(m_transfer);
        PackContainer(inner, m_transfer, {}, NoWork());
    }

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        p = std::make_unique<ReplicaPair>();
        m_transfer = p->Home.Path(u"second.qbr"_s);
        p->Prompts.ExpectInputBox(u"Short Description"_s, u"second"_s);
        GiveOutChild(p->MotherFile, m_transfer);
        QDir().mkpath(p->Home.Path(u"opened"_s));
    }
    void cleanup() { p.reset(); }

    void replica_hasItsFilesAndPagesInItsFolders()
    {
        const RestoreResult result = Open();
        QCOMPARE(result.Items, 6);
        QCOMPARE(result.Files, 1);
        QCOMPARE(result.Pages, 2);
        const auto child = Library::Open(Target());
        QCOMPARE(ReadFile(child->FilesFolder() + u"1 - f Ü.bin"_s), "file f");
        QCOMPARE(ReadFile(child->HTMLFolder() + u"6/bild.png"_s), "picture");
        QVERIFY(!child->TableExists(u"HTMLFiles"_s));
        QVERIFY(!child->GetTableDef(u"Files"_s).FindField(u"File"_s));
        QVERIFY(child->GetTableDef(u"Files"_s).FindField(u"MotherRecordID"_s));
        QVERIFY(child->IsChildReplica());
        QVERIFY(QFile::exists(m_transfer));
    }

    void hostileFile_isRefusedAndNothingWritten_data()
    {
        QTest::addColumn<QStringList>("statements");
        QTest::addColumn<long>("number");
        const auto row = [](const char* name, const QStringList& statements, long number) {
            QTest::newRow(name) << statements << number;
        };
        row("a trigger", {u"CREATE TRIGGER t AFTER INSERT ON Items BEGIN DELETE FROM Items; END"_s}, 3343);
        row("a view", {u"CREATE VIEW v AS SELECT * FROM Items"_s}, 3343);
        row("a view for a table", {u"DROP TABLE Bookmarks"_s, u"CREATE VIEW Bookmarks AS SELECT 1"_s}, 3343);
        row("no bookmarks", {u"DROP TABLE Keywords"_s}, 3343);
        row("no log", {u"DROP TABLE ReplicaLog"_s}, 3343);
        row("no list of deletions", {u"DROP TABLE DeletedItemLinks"_s}, 3343);
        row("a column is missing", {u"ALTER TABLE ItemLinks DROP COLUMN MotherItemID"_s}, 3343);
        row("a column of another kind",
            {u"ALTER TABLE Files DROP COLUMN MotherCodeID"_s, u"ALTER TABLE Files ADD COLUMN MotherCodeID TEXT"_s},
            3343);
        row("no mother", {u"UPDATE Properties SET MasterReplicaPath = ''"_s}, 3343);
        row("no identity", {u"UPDATE Properties SET DBID = ''"_s}, 3343);
        row("no properties", {u"DELETE FROM Properties"_s}, 3343);
        row("two identities", {u"INSERT INTO Properties (DBID, MasterReplicaPath) VALUES ('x', 'y')"_s}, 3343);
        row("a page that leads out", {u"UPDATE HTMLFiles SET Folder = '..\\..\\'"_s}, 75);
        row("a page with a path", {u"UPDATE HTMLFiles SET Name = '../../x'"_s}, 75);
        row("a stored file that leads out", {u"UPDATE Files SET Title = '../../x'"_s}, 75);
    }
    void hostileFile_isRefusedAndNothingWritten()
    {
        QFETCH(QStringList, statements);
        QFETCH(long, number);
        Tamper(statements);
        QB_VERIFY_RAISES(Open(), number);
        QCOMPARE(Names(), QStringList());
        QVERIFY(!QFile::exists(p->Home.Path(u"x"_s)));
    }

    void cutOrChangedFile_isRefused()
    {
        const QByteArray whole = ReadFile(m_transfer);
        for (int i = 0; i < 12; ++i) {
            WriteFile(m_transfer, whole.left(whole.size() * i / 12));
            QVERIFY2(!Raised([this] { Open(); }).isEmpty(), qPrintable(QString::number(i)));
            QCOMPARE(Names(), QStringList());
        }
        QByteArray flipped = whole;
        flipped[flipped.size() / 2] = char(~flipped[flipped.size() / 2]);
        WriteFile(m_transfer, flipped);
        QVERIFY(!Raised([this] { Open(); }).isEmpty());
        QCOMPARE(Names(), QStringList());
    }

    void backupAndLibrary_areNoReplicas()
    {
        const QString backup = p->Home.Path(u"b.qbr"_s);
        BackUpLibrary(p->MotherFile, backup, {});
        QB_VERIFY_RAISES(OpenReplica(backup, Target(), RestoreOver::Refuse, {}, [](const QString&) { return true; }),
                         3343);
        QB_VERIFY_RAISES(
            OpenReplica(p->MotherFile, Target(), RestoreOver::Refuse, {}, [](const QString&) { return true; }), 75);
        QCOMPARE(Names(), QStringList());
        p->Prompts.ExpectError();
        QString target = Target();
        QVERIFY(!CDBManipulate().Restore(target, backup, false, true));
        QVERIFY(QFile::exists(backup));
    }

    void sameChild_isFoundAmongTheKnownAndBeside()
    {
        Open();
        const QString identity = Library::Open(Target())->Identity();
        const QString elsewhere = p->Home.Path(u"else/where.qbd"_s);
        QCOMPARE(LibrariesOf(identity, {Target(), u"no such.qbd"_s, p->MotherFile}, {elsewhere}),
                 QStringList{Target()});
        QCOMPARE(LibrariesOf(identity, {}, {p->Home.Path(u"opened/other.qbr"_s)}), QStringList{Target()});
        QCOMPARE(LibrariesOf(identity, {p->Child, p->MotherFile}, {}), QStringList());
        QStringList asked;
        const auto ask = [&asked](const QString& other) {
            asked << other;
            return false;
        };
        QB_VERIFY_RAISES(OpenReplica(m_transfer, elsewhere, RestoreOver::Refuse, {Target()}, ask), 75); // no folder
        QDir().mkpath(p->Home.Path(u"else"_s));
        QB_VERIFY_RAISES(OpenReplica(m_transfer, elsewhere, RestoreOver::Refuse, {Target()}, ask), 3204);
        QCOMPARE(asked, QStringList{Target()});
        QVERIFY(!QFile::exists(elsewhere));
        OpenReplica(m_transfer, Target(), RestoreOver::Replace, {Target()}, ask); // that one goes
        QCOMPARE(asked.size(), 1);
    }

    void cancelledOpening_leavesNothing()
    {
        for (const int part : {0, 300, 500}) {
            RecordedWork work;
            work.Ends = [part](qint64 done) { return done >= part; };
            QB_VERIFY_RAISES(Open(RestoreOver::Refuse, work), 18);
            QCOMPARE(Names(), QStringList());
        }
    }
};

QB_TEST_MAIN(TestReplicaOpening)
#include "tst_replica_opening.moc"
