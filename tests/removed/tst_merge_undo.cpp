#include "platform/system/SettingsStore.h"
#include "removed/MergeUndo.h"
#include "store/CCodeItem.h"
#include "store/ItemBranch.h"
#include "store/LibraryUse.h"
#include "store/PendingReplica.h"
#include "support/FolderContents.h"
#include "support/LibraryBuilder.h"
#include "support/LibraryState.h"
#include "support/ScriptedPrompts.h"
#include "support/TestRun.h"

#include <QProcess>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// A synchronization is undone as a whole, until something is changed.
class TestMergeUndo : public QObject {
    Q_OBJECT

    std::optional<TemporaryHome> m_home;
    std::optional<FixedClock> m_clock;
    std::unique_ptr<Library> m_library;
    qint64 m_one = 0, m_two = 0, m_gone = 0;
    QMap<QString, QByteArray> m_before;

    QString Path() const { return m_home->Path(u"mother ä.qbd"_s); }
    QString Sync() const { return m_home->Path(u"back.qbs"_s); }
    QString PageOf(qint64 item) const { return HTMLFolderOf(Path()) + u"%1.htm"_s.arg(item); }

    /// A merge as far as the undo knows of it: rows, a file that goes, one that comes, pages that are overwritten and
    /// made.
    void Merge(MergeUndo& undo)
    {
        Transaction transaction(*m_library);
        undo.PutAside(Sync());
        undo.WaitForCopy();
        const qint64 file = m_library->QueryValue(u"SELECT ID FROM Files"_s).ToLong();
        const QString path = m_library->FilesFolder() + u"%1 - a.bin"_s.arg(file);
        undo.KeepFile(path);
        for (const qint64 item : {m_one, m_two})
            undo.KeepPage(item);
        m_library->Execute(u"DELETE FROM Files"_s);
        m_library->Execute(u"UPDATE Items SET Title = 'theirs', HTMLPage = -1"_s);
        const qint64 came = AddItem(*m_library, 0, u"came"_s);
        transaction.Commit();
        QFile::remove(path);
        AddStoredFile(*m_library, came, u"came.bin"_s, "came", Date::FromParts(2026, 1, 1));
        for (const qint64 item : {m_one, m_two, came}) {
            QFile::remove(PageOf(item)); // never written in its place
            WriteFile(PageOf(item), "theirs");
        }
        QFile::remove(Sync());
        WriteFile(Sync(), "after");
    }
    void MergeWhole()
    {
        MergeUndo undo(*m_library);
        Merge(undo);
        undo.Complete();
    }

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_home.emplace();
        m_clock.emplace();
        m_library = MakeLibrary(Path());
        m_one = AddItem(*m_library, 0, u"one"_s, u"int one;"_s);
        m_two = AddItem(*m_library, m_one, u"two"_s);
        AddStoredFile(*m_library, m_two, u"a.bin"_s, QByteArray(70'000, 'a'), Date::FromParts(2020, 1, 2));
        WriteFile(PageOf(m_one), "mine");
        WriteFile(HTMLFolderOf(Path()) + u"%1/pic/a.png"_s.arg(m_one), "picture");
        WriteFile(HTMLFolderOf(Path()) + u"default.htm"_s, "default");
        m_library->Execute(u"UPDATE Items SET HTMLPage = -1 WHERE ID = ?"_s, {m_one});
        WriteFile(Sync(), "before");
        m_before = StateOf(Path());
    }
    void cleanup()
    {
        m_library.reset();
        m_clock.reset();
        m_home.reset();
    }

    void undone_allIsAsItWas()
    {
        MergeWhole();
        QVERIFY(DifferenceOf(StateOf(Path()), m_before).contains(u"Items"_s));
        m_library.reset();
        QCOMPARE(LastMergeOf(Path())->File, Sync());
        QCOMPARE(WhyMergeNotUndone(Path()), QString());
        UndoMerge(Path());
        QCOMPARE(DifferenceOf(StateOf(Path()), m_before), QString());
        QCOMPARE(ReadFile(Sync()), "before"_ba);
        QVERIFY(!LastMergeOf(Path()));
        QB_VERIFY_RAISES(UndoMerge(Path()), ErrorNumber::FileNotFound);
    }

    /// The folder of a file can't be written, or the process dies: the library has it written by a later opening.
    void fileThatHadToWait_comesBackAtALaterOpening()
    {
        MergeWhole();
        m_library.reset();
        const QByteArray answer = ReadFile(Sync());
        UndoMerge(Path());
        const QString kept = m_home->Path(u"kept.qbs"_s);
        WriteFile(kept, "before");
        const auto wait = [&] {
            const auto library = Library::Open(Path());
            NotePendingReplica(*library, {.File = Sync(), .Kept = kept});
        };
        WriteFile(Sync(), answer);
        wait();
        QVERIFY(!Library::Open(Path())->TableExists(u"own_PendingReplica"_s));
        QCOMPARE(ReadFile(Sync()), "before"_ba);
        WriteFile(Sync(), answer);
        wait();
        WriteFile(Sync(), "exported since"); // which is not overwritten
        QVERIFY(!Library::Open(Path())->TableExists(u"own_PendingReplica"_s));
        QCOMPARE(ReadFile(Sync()), "exported since"_ba);
        wait();
        QFile::remove(Sync());
        Library::Open(Path());
        QCOMPARE(ReadFile(Sync()), "before"_ba);
    }

    void openedAndClosed_isStillUndone()
    {
        MergeWhole();
        m_library->Execute(u"UPDATE Properties SET LastOpened = 5"_s); // as every session does
        m_library.reset();
        QCOMPARE(WhyMergeNotUndone(Path()), QString());
    }

    void changedSince_isNotUndone_data()
    {
        QTest::addColumn<QString>("change");
        for (const char* change :
             {"UPDATE Items SET LastChanged = LastChanged + 1 WHERE ID = 1", "DELETE FROM Items WHERE ID = 2",
              "INSERT INTO ItemLinks (ItemID, LinkItemID) VALUES (1, 2)",
              "INSERT INTO BookmarkGroups (\"Group\") VALUES ('g')", "UPDATE Items SET ParentID = 0",
              "UPDATE Files SET LastUpdated = 7", "UPDATE Items SET ItemRating = 5"})
            QTest::newRow(change) << QString::fromLatin1(change);
    }
    void changedSince_isNotUndone()
    {
        QFETCH(const QString, change);
        MergeWhole();
        m_library->Execute(change);
        m_library.reset();
        const QMap<QString, QByteArray> now = StateOf(Path());
        QVERIFY(WhyMergeNotUndone(Path()).contains(u"was changed since"));
        QB_VERIFY_RAISES(UndoMerge(Path()), ErrorNumber::FileNotFound);
        QCOMPARE(DifferenceOf(StateOf(Path()), now), QString());
        QCOMPARE(ReadFile(Sync()), "after"_ba);
    }

    void mergeThatFailed_leavesTheFormerUndo()
    {
        MergeWhole();
        const QStringList before = ContentsOf(m_home->Path(u"mother ä_Undo"_s)).keys();
        {
            MergeUndo undo(*m_library);
            const Transaction transaction(*m_library);
            undo.PutAside(Sync());
            undo.WaitForCopy();
            undo.KeepPage(m_one);
        }
        QCOMPARE(ContentsOf(m_home->Path(u"mother ä_Undo"_s)).keys(), before);
        m_library.reset();
        UndoMerge(Path());
        QCOMPARE(DifferenceOf(StateOf(Path()), m_before), QString());
    }

    void secondMerge_takesThePlaceOfTheFirst()
    {
        MergeWhole();
        const QMap<QString, QByteArray> between = StateOf(Path());
        AddStoredFile(*m_library, m_two, u"a.bin"_s, "b", Date::FromParts(2020, 1, 2));
        const QMap<QString, QByteArray> second = StateOf(Path());
        MergeUndo undo(*m_library);
        {
            Transaction transaction(*m_library);
            undo.PutAside({});
            undo.WaitForCopy();
            m_library->Execute(u"UPDATE Items SET Title = 'again'"_s);
            transaction.Commit();
        }
        undo.Complete();
        m_library.reset();
        UndoMerge(Path());
        QCOMPARE(DifferenceOf(StateOf(Path()), second), QString());
        QCOMPARE(ReadFile(Sync()), "after"_ba); // the second one had none
    }

    /// A file of a database that this process has open, read by another.
    QByteArray OnTheDisk() const
    {
        QProcess::execute(u"cp"_s, {Path(), m_home->Path(u"seen"_s)});
        return ReadFile(m_home->Path(u"seen"_s));
    }

    void copyUnderWay_keepsWritesInMemory()
    {
        const QByteArray before = OnTheDisk();
        MergeUndo undo(*m_library);
        Transaction transaction(*m_library);
        undo.PutAside({});
        undo.HoldWrites(20 << 20);
        m_library->Execute(u"UPDATE Items SET Code = hex(randomblob(10000000))"_s); // more than the engine's cache
        QCOMPARE(OnTheDisk(), before);
        undo.WaitForCopy();
        transaction.Commit();
        QVERIFY(OnTheDisk().size() > before.size());
    }

    void muchToWrite_waitsForTheCopy()
    {
        MergeUndo undo(*m_library);
        Transaction transaction(*m_library);
        undo.PutAside({});
        undo.HoldWrites(qint64(1) << 40);
        const auto copies = ContentsOf(m_home->Path(u"mother ä_Undo"_s));
        QVERIFY(copies.values().contains(OnTheDisk()));
        m_library->Execute(u"UPDATE Items SET Code = hex(randomblob(10000000))"_s);
        QVERIFY(OnTheDisk().size() > copies.first().size());
    }

    void copyDoesNotEndTheLockOfTheTransaction()
    {
        MergeUndo undo(*m_library);
        Transaction transaction(*m_library);
        undo.PutAside(Sync());
        undo.WaitForCopy();
        QProcess other;
        other.start(qEnvironmentVariable("QUILLBASE_CLI"), {u"add"_s, Path(), u"--title"_s, u"meanwhile"_s});
        QVERIFY(other.waitForFinished(60000));
        QCOMPARE(other.exitCode(), 1);
        transaction.Commit();
    }

    void inUse_isNotUndone()
    {
        MergeWhole();
        QB_VERIFY_RAISES(UndoMerge(Path()), ErrorNumber::InUse);
        QCOMPARE(ReadFile(Sync()), "after"_ba);
    }

    void nothingPutAside_isToldSo()
    {
        QVERIFY(WhyMergeNotUndone(Path()).contains(u"Nothing was put aside"));
        WriteFile(m_home->Path(u"mother ä_Undo/last/state.json"_s), "{\"form\":\"x\"}");
        QVERIFY(WhyMergeNotUndone(Path()).contains(u"Nothing was put aside"));
    }

    void setting_switchesItOff()
    {
        QVERIFY(MergeUndo::IsWanted());
        SaveSetting(SettingsApplication, u"Settings"_s, u"UndoSynchronization"_s, u"False"_s);
        QVERIFY(!MergeUndo::IsWanted());
    }

    void leftovers_ofADeadMergeGo()
    {
        WriteFile(m_home->Path(u"mother ä_Undo/.new-%1/library.qbd"_s.arg(QString(32, u'a'))), "half");
        MergeWhole();
        QVERIFY(ContentsOf(m_home->Path(u"mother ä_Undo"_s)).keys().filter(u".new-"_s).isEmpty());
    }
};

QB_TEST_MAIN(TestMergeUndo)
#include "tst_merge_undo.moc"
