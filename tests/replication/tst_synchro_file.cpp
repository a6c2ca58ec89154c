#include "replication/ReplicaFamily.h"

#include "maintenance/Containers.h"
#include "store/PendingReplica.h"
#include "support/FileSizeLimit.h"
#include "support/FolderContents.h"
#include "support/LibraryState.h"
#include "support/Unasked.h"

#include <QRandomGenerator>
#include <QRegularExpression>
#include <QtEndian>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// A synchronization file comes from outside: whatever is in it, the library is as before or as after.
class TestSynchroFile : public QObject {
    Q_OBJECT

    std::unique_ptr<ReplicaFamily> f;
    QMap<QString, QByteArray> m_before;
    QByteArray m_bytes;

    /// The database in the file, changed by a stranger; it lies under the file's name then.
    void Change(const std::function<void(Database&)>& change)
    {
        const auto database = f->Unpack();
        database->Execute(u"PRAGMA ignore_check_constraints = ON"_s);
        change(*database);
        WriteFile(f->File, ReadFile(database->Name()));
    }
    void VerifyRefused(int number)
    {
        const QByteArray file = ReadFile(f->File);
        const auto mother = f->OpenMother();
        try {
            Synchronize(*mother, f->File);
            QFAIL("it was taken in");
        } catch (const RuntimeError& error) {
            QCOMPARE(error.Number(), number);
            QVERIFY2(error.Description().contains(u"othing was changed"_s), qPrintable(error.Description()));
        }
        QCOMPARE(DifferenceOf(StateOf(f->M()), m_before), QString());
        QCOMPARE(ReadFile(f->File), file);
    }

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        f = std::make_unique<ReplicaFamily>();
        f->EditTitle(f->A(), ReplicaFamily::X, u"X by A"_s);
        f->AttachTo(f->A(), ReplicaFamily::X, u"new.bin"_s, QByteArray(9000, 'n'));
        f->ExportOf(f->A());
        f->Clock.AddSeconds(60);
        m_before = StateOf(f->M());
        m_bytes = ReadFile(f->File);
    }
    void cleanup() { f.reset(); }

    void cutFile_isRefused()
    {
        for (int i = 0; i < 64; ++i) {
            WriteFile(f->File, m_bytes.left(m_bytes.size() * i / 64));
            const auto mother = f->OpenMother();
            QVERIFY_THROWS_EXCEPTION(RuntimeError, Synchronize(*mother, f->File));
        }
        QCOMPARE(DifferenceOf(StateOf(f->M()), m_before), QString());
        WriteFile(f->File, m_bytes);
        QVERIFY(f->TakeIn(f->M()).Done);
    }

    void flippedBits_areRefusedOrDoNoHarm_data()
    {
        QTest::addColumn<bool>("atMother");
        QTest::newRow("step 2") << true;
        QTest::newRow("step 3") << false;
    }
    void flippedBits_areRefusedOrDoNoHarm()
    {
        QFETCH(bool, atMother);
        if (!atMother) {
            f->EditTitle(f->M(), ReplicaFamily::P, u"P by M"_s);
            QVERIFY(f->TakeIn(f->M()).Done);
            f->Clock.AddSeconds(60);
        }
        const QString& path = atMother ? f->M() : f->A();
        const QMap<QString, QByteArray> before = StateOf(path);
        const QByteArray packed = ReadFile(f->File);
        QRandomGenerator random(7);
        const auto library = Library::Open(path);
        const SyncResult whole = Synchronize(*library, f->File, {.Preview = true});
        QVERIFY(whole.Done);
        int noticed = 0;
        const int wanted = qEnvironmentVariableIntValue("QUILLBASE_FLIPPED_BITS");
        const int bits = wanted > 0 ? wanted : 150;
        for (int i = 0; i < bits; ++i) {
            QByteArray bytes = packed;
            const qsizetype at = random.bounded(int(bytes.size()));
            bytes[at] = char(bytes[at] ^ (1 << random.bounded(8)));
            WriteFile(f->File, bytes);
            try {
                const SyncResult result = Synchronize(*library, f->File, {.Preview = true});
                if (result.Done) // nothing of what is packed was hit
                    QCOMPARE(result.Report.Lines, whole.Report.Lines);
            } catch (const RuntimeError&) {
                ++noticed;
            }
        }
        QVERIFY2(noticed > bits * 2 / 3, qPrintable(QString::number(noticed)));
        QCOMPARE(DifferenceOf(StateOf(path), before), QString());
    }

    void hostileFile_isRefused_data()
    {
        QTest::addColumn<QString>("sql");
        QTest::newRow("trigger") << u"CREATE TRIGGER t AFTER INSERT ON Items BEGIN DELETE FROM Files; END"_s;
        QTest::newRow("view") << u"CREATE VIEW v AS SELECT * FROM Items"_s;
        QTest::newRow("missing table") << u"DROP TABLE DeletedItems"_s;
        QTest::newRow("missing column") << u"ALTER TABLE Items DROP COLUMN Notes"_s;
        QTest::newRow("no identity") << u"UPDATE Properties SET DBID = NULL"_s;
        QTest::newRow("two rows of properties") << u"INSERT INTO Properties (DBID) VALUES ('x')"_s;
        QTest::newRow("item twice")
            << u"INSERT INTO Items (ID, Title, MotherRecordID) SELECT ID + 100, Title, MotherRecordID FROM Items"_s;
        QTest::newRow("negative number") << u"UPDATE Items SET ID = -5"_s;
        QTest::newRow("no title") << u"UPDATE Items SET Title = ''"_s;
        QTest::newRow("virtual table") << u"CREATE VIRTUAL TABLE v USING fts5(a)"_s;
        QTest::newRow("new item twice")
            << u"INSERT INTO Items (ID, Title, MotherRecordID) VALUES (500, 'a', -1), (500, 'b', -1)"_s;
        QTest::newRow("known file twice")
            << u"INSERT INTO Files (ID, Title, MotherRecordID) VALUES (1, 'a', 1), (2, 'b', 1)"_s;
        QTest::newRow("new file twice") << u"INSERT INTO Files (ID, Title) SELECT ID, 'a' FROM Files"_s;
        QTest::newRow("page in the folder itself")
            << u"INSERT INTO HTMLFiles (ItemIDRef, Name, Folder) VALUES (5, 'x.htm', '5\\.\\')"_s;
        QTest::newRow("file name that leads out") << u"UPDATE Files SET Title = '../../x'"_s;
        QTest::newRow("page that leads out")
            << u"INSERT INTO HTMLFiles (ItemIDRef, Name, Folder) VALUES (5, 'x.htm', '..\\..\\')"_s;
    }
    void hostileFile_isRefused()
    {
        QFETCH(QString, sql);
        Change([&](Database& database) { database.Execute(sql); });
        VerifyRefused(ErrorNumber::NotADatabase);
    }

    /// What would unpack to more than it says, or to more than there is room for, is not unpacked.
    void bomb_isRefused()
    {
        const QString inner = f->Home.Path(u"changes.qbt"_s);
        constexpr qsizetype Size = 40'000'000;
        WriteFile(inner, QByteArray(Size, '\0'));
        QVERIFY(PackContainer(inner, f->File, {}, NoWork()));
        QFile::remove(inner);
        const QByteArray honest = ReadFile(f->File);
        QVERIFY(honest.size() < Size / 500);
        VerifyRefused(ErrorNumber::NotADatabase); // it is no database
        const auto declared = [](qsizetype size) {
            QByteArray bytes(4, Qt::Uninitialized);
            qToLittleEndian(quint32(size), bytes.data());
            return bytes;
        };
        for (const quint32 said : {4096U, 0xFFFFFFF0U}) {
            WriteFile(f->File, QByteArray(honest).replace(declared(Size), declared(said)));
            VerifyRefused(ErrorNumber::PathAccess);
        }
        const QString folder = f->Home.Path(u"Mütter/mother_Merged"_s);
        QCOMPARE(QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
                 QStringList{u".library"_s});
    }

    void missingVolume_isRefused()
    {
        QString first = SplitContainer(f->File, QFileInfo(f->File).size() / 5, NoWork());
        const QFileInfoList volumes = QFileInfo(first).absoluteDir().entryInfoList(
            {QFileInfo(f->File).completeBaseName() + u"*"_s}, QDir::Files, QDir::Name);
        QVERIFY(volumes.size() > 3);
        f->File = first;
        const QString second = volumes[2].filePath();
        QVERIFY(second != first);
        QVERIFY(QFile::rename(second, second + u".aside"_s));
        VerifyRefused(ErrorNumber::PathAccess);
        QVERIFY(QFile::rename(second + u".aside"_s, second));
        QVERIFY(f->TakeIn(f->M()).Done);
    }

    /// Whatever is written last before the room ends.
    void fullDisk_leavesLibraryAndFile()
    {
        const auto verify = [this](const QString& path) {
            const QMap<QString, QByteArray> before = StateOf(path);
            const QByteArray file = ReadFile(f->File);
            int refused = 0;
            for (const int limit : {1'000, 8'000, 20'000, 40'000, 60'000, 90'000, 120'000, 160'000}) {
                const auto library = Library::Open(path);
                QString raised;
                {
                    const Unasked unasked;
                    const FileSizeLimit full{rlim_t(limit)};
                    raised = Raised([&] { Synchronize(*library, f->File, {.Preview = false}); });
                }
                if (raised.isEmpty())
                    break;
                ++refused;
                QCOMPARE(DifferenceOf(StateOf(path), before), QString());
                QCOMPARE(ReadFile(f->File), file);
            }
            QVERIFY(refused >= 5);
        };
        verify(f->M());
        if (!QFile::exists(f->M()) || ReplicaFamily::TitleOf(f->M(), ReplicaFamily::X) == u"X"_s)
            QVERIFY(f->TakeIn(f->M()).Done);
        f->Clock.AddSeconds(60);
        verify(f->A());
    }

    void otherTables_areOfNoUse()
    {
        Change([](Database& database) {
            database.Execute(u"CREATE TABLE other (a)"_s);
            database.Execute(u"CREATE TABLE ItemsX (ID)"_s);
        });
        const auto mother = f->OpenMother();
        f->Prompts.ExpectError();
        QVERIFY_THROWS_EXCEPTION(RuntimeError, Synchronize(*mother, f->File));
        QCOMPARE(DifferenceOf(StateOf(f->M()), m_before), QString());
    }

    void itemsBelowEachOther_areBrokenUp()
    {
        const qint64 p = ReplicaFamily::P, q = ReplicaFamily::Q;
        Change([&](Database& database) {
            database.Execute(
                u"INSERT INTO Items (ID, Title, MotherRecordID, MotherParentID, LastChanged) SELECT ?1, 'P', ?1, "
                "?2, LastChanged FROM Items LIMIT 1"_s,
                {p, q});
            database.Execute(
                u"INSERT INTO Items (ID, Title, MotherRecordID, MotherParentID, LastChanged) SELECT ?1, 'Q', ?1, "
                "?2, LastChanged FROM Items LIMIT 1"_s,
                {q, p});
        });
        QVERIFY(f->TakeIn(f->M()).Done);
        const QStringList outline = ReplicaFamily::Outline(f->M());
        QCOMPARE(outline.filter(QRegularExpression(u"^Orphaned Items/[PQ] "_s)).size(), 1);
        QCOMPARE(outline.filter(QRegularExpression(u"^Orphaned Items/[PQ]/[PQ] "_s)).size(), 1);
    }

    void folderOfMerges_hasNothingLeft()
    {
        QVERIFY(f->TakeIn(f->M()).Done);
        const QStringList names = QDir(f->Home.Path(u"Mütter/mother_Merged"_s))
                                      .entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
        QCOMPARE(names.size(), 2);
        QCOMPARE(names.filter(u".qbs"_s).size(), 1);
        QVERIFY(f->TakeIn(f->A()).Done);
        QCOMPARE(
            QDir(f->Home.Path(u"child/lib_Merged"_s)).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
            QStringList{u".library"_s});
    }

    void answerThatDidNotGetItsName_isPlacedAtTheNextOpening()
    {
        const QString elsewhere = f->Home.Path(u"stick/changes.qbs"_s);
        QDir().mkpath(f->Home.Path(u"stick"_s));
        QFile::rename(f->File, elsewhere);
        const auto noted = [&](bool inKept) {
            const QString folder = f->Home.Path(u"Mütter/mother_Merged/"_s);
            QDir().mkpath(folder);
            const QString kept = folder + u"6162.qbs"_s, complete = folder + u"complete"_s;
            WriteFile(inKept ? kept : complete, "answer");
            const auto mother = f->OpenMother();
            NotePendingReplica(*mother, {.File = elsewhere, .Complete = complete, .Kept = kept});
        };
        for (const bool inKept : {false, true}) {
            WriteFile(elsewhere, "old");
            noted(inKept);
            f->OpenMother();
            QCOMPARE(ReadFile(elsewhere), QByteArray("answer"));
            QVERIFY(!f->OpenMother()->TableExists(u"own_PendingReplica"_s));
        }
    }
};

QB_TEST_MAIN(TestSynchroFile)
#include "tst_synchro_file.moc"
