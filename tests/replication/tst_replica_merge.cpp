#include "replication/ReplicaPair.h"

#include "replication/MergedFiles.h"
#include "replication/Synchronization.h"
#include "store/ItemBranch.h"
#include "store/PendingReplica.h"
#include "store/StoredFiles.h"

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

namespace {

/// A pair that is synchronized.
struct MergingPair : ReplicaPair {
    SyncResult Merge(const QString& library)
    {
        Clock.AddSeconds(60);
        const auto open = Library::Open(library);
        return Synchronize(*open, File);
    }
    /// All three steps; the report of the mother.
    SyncResult Round()
    {
        Clock.AddSeconds(60);
        {
            const auto child = OpenChild();
            WriteChanges(*child, File, ExportAgain::No);
        }
        const SyncResult mother = Merge(MotherFile);
        const SyncResult child = Merge(Child);
        [&] {
            QCOMPARE(mother.Result, 2);
            QVERIFY(mother.Done);
            QCOMPARE(child.Result, 1);
            QVERIFY(child.Done);
            QVERIFY(!QFile::exists(File));
        }();
        Clock.AddSeconds(120);
        return mother;
    }
};

Value Ask(const QString& library, const QString& sql, const Values& values = {})
{
    return Library::Open(library, DBEngine::Access::ReadOnly)->QueryValue(sql, values);
}

QString TitleOf(const QString& library, qint64 item)
{
    return Ask(library, u"SELECT Title FROM Items WHERE ID = ?"_s, {item}).ToText();
}

} // namespace

/// Mother and child come to the same state, whatever was done on either side.
class TestReplicaMerge : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void nothingChanged_nothingHappens();
    void childsEdit_reachesTheMother();
    void mothersEdit_reachesTheChild();
    void bothEdited_theLaterOneStays();
    void newItems_getNumbersOnBothSides();
    void filesAndPages_travel();
    void deletion_reachesTheOtherSide();
    void preview_changesNothing();
    void answerThatCantBeWritten_isToldAndWrittenLater();
    void rounds_followEachOtherDirectly();
};

void TestReplicaMerge::nothingChanged_nothingHappens()
{
    MergingPair pair;
    const SyncResult merged = pair.Round();
    QCOMPARE(merged.Report.Lines.size(), size_t(0));
    QCOMPARE(merged.Report.Faults.size(), size_t(0));
    pair.Round();
}

void TestReplicaMerge::childsEdit_reachesTheMother()
{
    MergingPair pair;
    pair.Edit(*pair.OpenChild(), 5, u"X by the child"_s);
    pair.Round();
    QCOMPARE(TitleOf(pair.MotherFile, 5), u"X by the child"_s);
    QCOMPARE(TitleOf(pair.Child, 5), u"X by the child"_s);
    QVERIFY(!pair.Round().HasConflicts);
}

void TestReplicaMerge::mothersEdit_reachesTheChild()
{
    MergingPair pair;
    pair.Edit(*pair.OpenMother(), 5, u"X by the mother"_s);
    pair.Round();
    QCOMPARE(TitleOf(pair.Child, 5), u"X by the mother"_s);
    const auto child = pair.OpenChild();
    QCOMPARE(CountChanges(*child).Changes(), 0);
}

void TestReplicaMerge::bothEdited_theLaterOneStays()
{
    MergingPair pair;
    pair.Edit(*pair.OpenChild(), 5, u"X by the child"_s);
    pair.Clock.AddSeconds(10);
    pair.Edit(*pair.OpenMother(), 5, u"X by the mother"_s);
    const SyncResult merged = pair.Round();
    QVERIFY(merged.HasConflicts);
    QCOMPARE(TitleOf(pair.MotherFile, 5), u"X by the mother"_s);
    QCOMPARE(TitleOf(pair.Child, 5), u"X by the mother"_s);
    QCOMPARE(Ask(pair.MotherFile, u"SELECT Title FROM TempItems"_s).ToText(), u"X by the child"_s);
    QCOMPARE(Ask(pair.MotherFile, u"SELECT Title FROM TempFiles"_s).ToText(), u"f Ü.bin"_s);
    QCOMPARE(Ask(pair.MotherFile, u"SELECT File FROM TempFiles"_s).ToBytes(), QByteArray("file f"));
}

void TestReplicaMerge::newItems_getNumbersOnBothSides()
{
    MergingPair pair;
    qint64 n = 0, n2 = 0, m = 0;
    {
        const auto child = pair.OpenChild();
        n = AddItem(*child, 0, u"N"_s);
        n2 = AddItem(*child, n, u"N2"_s);
        MoveItem(*child, 5, n2);
        const auto mother = pair.OpenMother();
        m = AddItem(*mother, 2, u"M"_s);
    }
    QCOMPARE(n, m);
    pair.Round();
    const qint64 nAtMother = Ask(pair.MotherFile, u"SELECT ID FROM Items WHERE Title = 'N'"_s).ToLong();
    QVERIFY(nAtMother > m);
    QCOMPARE(Ask(pair.MotherFile, u"SELECT ParentID FROM Items WHERE Title = 'N2'"_s).ToLong(), nAtMother);
    QCOMPARE(Ask(pair.MotherFile, u"SELECT p.Title FROM Items i JOIN Items p ON p.ID = i.ParentID WHERE i.ID = 5"_s)
                 .ToText(),
             u"N2"_s);
    QCOMPARE(Ask(pair.Child, u"SELECT MotherRecordID FROM Items WHERE Title = 'N'"_s).ToLong(), nAtMother);
    QCOMPARE(Ask(pair.Child, u"SELECT p.Title FROM Items i JOIN Items p ON p.ID = i.ParentID WHERE i.Title = 'M'"_s)
                 .ToText(),
             u"Q"_s);
    QCOMPARE(Ask(pair.Child, u"SELECT ParentID FROM Items WHERE ID = 5"_s).ToLong(), n2);
    QCOMPARE(pair.Round().Report.Lines.size(), size_t(0));
}

void TestReplicaMerge::filesAndPages_travel()
{
    MergingPair pair;
    {
        const auto child = pair.OpenChild();
        pair.Attach(*child, 1, u"new.bin"_s, "by the child");
        const auto mother = pair.OpenMother();
        pair.Attach(*mother, 2, u"new.bin"_s, "by the mother");
    }
    pair.Round();
    const auto contents = [](const QString& library, qint64 item) {
        const auto open = Library::Open(library);
        const qint64 id = open->QueryValue(u"SELECT ID FROM Files WHERE CodeID = ?"_s, {item}).ToLong();
        return ReadFile(StoredFilePath(*open, id, u"new.bin"_s));
    };
    for (const QString& library : {pair.MotherFile, pair.Child}) {
        QCOMPARE(contents(library, 1), QByteArray("by the child"));
        QCOMPARE(contents(library, 2), QByteArray("by the mother"));
    }
    QCOMPARE(pair.Round().Report.Lines.size(), size_t(0));
}

void TestReplicaMerge::deletion_reachesTheOtherSide()
{
    MergingPair pair;
    DeleteItem(*pair.OpenChild(), 5);
    DeleteItem(*pair.OpenMother(), 6);
    pair.Round();
    for (const QString& library : {pair.MotherFile, pair.Child})
        QCOMPARE(Ask(library, u"SELECT count(*) FROM Items"_s).ToLong(), 4);
    QVERIFY(!QFile::exists(pair.Home.Path(u"Mütter/mother_HTML/6.htm"_s)));
    QVERIFY(!QFile::exists(pair.Home.Path(u"child/lib_HTML/6.htm"_s)));
    QVERIFY(QDir(pair.Home.Path(u"Mütter/mother_Files"_s)).entryList(QDir::Files).isEmpty());
}

void TestReplicaMerge::preview_changesNothing()
{
    MergingPair pair;
    pair.Edit(*pair.OpenChild(), 5, u"X by the child"_s);
    pair.DeleteItem(*pair.OpenChild(), 6);
    {
        const auto child = pair.OpenChild();
        WriteChanges(*child, pair.File, ExportAgain::No);
    }
    pair.Clock.AddSeconds(60);
    const QByteArray before = ReadFile(pair.MotherFile), fileBefore = ReadFile(pair.File);
    const auto mother = pair.OpenMother();
    const SyncResult preview = Synchronize(*mother, pair.File, {.Preview = true});
    QVERIFY(preview.Done);
    QCOMPARE(preview.Report.CountOf(MergeEvent::ItemChanged), 1);
    QCOMPARE(preview.Report.CountOf(MergeEvent::ItemDeleted), 1);
    QCOMPARE(ReadFile(pair.MotherFile), before);
    QCOMPARE(ReadFile(pair.File), fileBefore);
    const SyncResult done = Synchronize(*mother, pair.File);
    QCOMPARE(done.Report.Lines, preview.Report.Lines);
}

/// Once the library has merged, somebody puts a folder in the place of the synchronization file.
class Obstructor : public Work {
public:
    explicit Obstructor(const MergingPair& pair) : m_pair(pair) {}
    void Advance(qint64, qint64) override { Obstruct(); }
    void Pulse() override { Obstruct(); }

private:
    void Obstruct()
    {
        const auto hasMerged = [this] {
            return Ask(m_pair.MotherFile, u"SELECT Title FROM Items WHERE ID = 5"_s).ToText() == u"X by the child"_s;
        };
        if (QFileInfo(m_pair.File).isDir() || !hasMerged())
            return;
        QVERIFY(QFile::rename(m_pair.File, m_pair.File + u".aside"_s));
        QVERIFY(QDir().mkpath(m_pair.File + u"/in the way"_s));
    }
    const MergingPair& m_pair;
};

void TestReplicaMerge::answerThatCantBeWritten_isToldAndWrittenLater()
{
    MergingPair pair;
    pair.Edit(*pair.OpenChild(), 5, u"X by the child"_s);
    {
        const auto child = pair.OpenChild();
        WriteChanges(*child, pair.File, ExportAgain::No);
    }
    pair.Clock.AddSeconds(60);
    {
        Obstructor obstructor(pair);
        const auto mother = pair.OpenMother();
        QString told;
        try {
            Synchronize(*mother, pair.File, {}, obstructor);
        } catch (const RuntimeError& error) {
            told = error.Description();
        }
        QVERIFY2(told.contains(u"has been synchronized"_s) && told.contains(u"opened next"_s), qPrintable(told));
    }
    QCOMPARE(TitleOf(pair.MotherFile, 5), u"X by the child"_s);
    QVERIFY(QDir(pair.File).removeRecursively());
    pair.OpenMother(); // which writes the answer
    pair.Clock.AddSeconds(60);
    const auto child = pair.OpenChild();
    QCOMPARE(Synchronize(*child, pair.File).Result, 1);
}

void TestReplicaMerge::rounds_followEachOtherDirectly()
{
    MergingPair pair;
    for (int i = 0; i < 3; ++i) {
        pair.Edit(*pair.OpenMother(), 1, u"P %1"_s.arg(i));
        {
            const auto child = pair.OpenChild();
            QVERIFY(WriteChanges(*child, pair.File, ExportAgain::No));
        }
        for (const QString& library : {pair.MotherFile, pair.Child}) {
            pair.Clock.AddSeconds(2);
            const auto open = Library::Open(library);
            QVERIFY(Synchronize(*open, pair.File).Done);
        }
        pair.Clock.AddSeconds(2);
        QCOMPARE(TitleOf(pair.Child, 1), u"P %1"_s.arg(i));
    }
}

QB_TEST_MAIN(TestReplicaMerge)
#include "tst_replica_merge.moc"
