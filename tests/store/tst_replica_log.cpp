#include "maintenance/ContentCheck.h"
#include "maintenance/LibraryBackup.h"
#include "maintenance/LibraryCheck.h"
#include "maintenance/LibraryRestore.h"
#include "store/CCodeItem.h"
#include "store/CFileObject.h"
#include "store/ItemBranch.h"
#include "store/ReplicaLog.h"
#include "store/StoredFiles.h"
#include "support/LibraryBuilder.h"
#include "support/RecordedWork.h"
#include "support/ScriptedPrompts.h"
#include "support/TestRun.h"

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

namespace {
using Event = ReplicaEvent;
constexpr qint64 Day = 86400;
const QString Mother = u"/Mütter/mother.qbd"_s;
} // namespace

/// What a mother and a child note for the others, and the dates of what is changed in them.
class TestReplicaLog : public QObject {
    Q_OBJECT

private:
    /// The clock, some seconds later; negative ones are before.
    Date At(qint64 seconds) const { return Date::FromSeconds(m_clock->Now().Seconds() + seconds); }

    /// The rows of the log as "event table record>second mother:record>second", in their order.
    QStringList Rows()
    {
        QStringList rows;
        for (const ReplicaLogEntry& entry : ReplicaLog(*m_library).Entries())
            rows << u"%1 %2 %3>%4 mother:%5>%6"_s.arg(int(entry.Event))
                        .arg(entry.Table)
                        .arg(entry.Record)
                        .arg(entry.Second)
                        .arg(entry.MotherRecord)
                        .arg(entry.MotherSecond);
        return rows;
    }

    void SetItem(qint64 id, const QString& column, const Value& value)
    {
        m_library->Execute(u"UPDATE Items SET %1 = ? WHERE ID = ?"_s.arg(column), {value, id});
    }

    void Change(qint64 id, const QString& title, bool keepsDate = false)
    {
        CCodeItem item;
        item.Initialise(*m_library, QString::number(id));
        item.SetDontUpdateLastChangedDate(keepsDate);
        item.SetTitle(title);
        item.SetItemChanged(true);
        QVERIFY(item.Commit());
    }

    void Link(qint64 from, qint64 to, LinkDirection direction)
    {
        CCodeItem item;
        item.Initialise(*m_library, QString::number(from));
        const QString key = CLinks::KeyOf(to);
        std::shared_ptr<CLink> link = item.Links().Item(key);
        if (!link)
            link = item.Links().Add(key);
        link->LinkedItemId = to;
        link->Direction = direction;
        link->DirtyFlag = true;
        item.SetLinksChanged(true);
        QVERIFY(item.Commit());
    }

    /// Stores a.txt with the item; returns the row's ID. b.txt lies beside it, to be stored in its place.
    qint64 TakeIn()
    {
        WriteFile(m_home->Path(u"a.txt"_s), "1");
        WriteFile(m_home->Path(u"b.txt"_s), "second");
        CFileObject file;
        file.Initialise(*m_library, {});
        file.SetCodeID(QString::number(m_item));
        file.SetStoredFile(m_home->Path(u"a.txt"_s));
        file.SetDescription(u"words"_s);
        file.Commit();
        return file.Key().toLongLong();
    }

    std::optional<TemporaryHome> m_home;
    std::optional<FixedClock> m_clock;
    std::unique_ptr<Library> m_library;
    qint64 m_item = 0;
    qint64 m_other = 0;

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_home.emplace();
        m_clock.emplace();
        m_library = MakeLibrary(m_home->Path(u"Büro.qbd"_s), LanguageType::None);
        m_item = AddItem(*m_library, 0, u"one"_s);
        m_other = AddItem(*m_library, 0, u"two"_s);
        m_clock->AddSeconds(Day);
    }

    void cleanup()
    {
        m_library.reset();
        m_clock.reset();
        m_home.reset();
    }

    // Deletions

    void itemOfTheMotherThatWasChangedSince_isNotedWhenItIsDeleted()
    {
        MakeChild(*m_library, Mother, At(-100));
        SetItem(m_item, u"MotherRecordID"_s, 77);
        SetItem(m_item, u"Created"_s, At(-50)); // the mother's clock
        Change(m_item, u"changed"_s);
        DeleteItem(*m_library, m_item);
        QCOMPARE(CountOf(*m_library, u"DeletedItems"_s), 0);
        QCOMPARE(Rows(), QStringList{u"2 Items %1>0 mother:77>0"_s.arg(m_item)});
        const ReplicaLogEntry entry = ReplicaLog(*m_library).Entries().front();
        QCOMPARE(entry.Moment, m_clock->Now());
        QCOMPARE(entry.RowDate, m_clock->Now());
    }

    void itemThatWasNotChanged_isNotedWithTheMothersNumberToo()
    {
        MakeChild(*m_library, Mother, At(-100));
        SetItem(m_item, u"MotherRecordID"_s, 77);
        DeleteItem(*m_library, m_item);
        QCOMPARE(Texts(*m_library, u"SELECT ItemID FROM DeletedItems"_s), QStringList{QString::number(m_item)});
        QCOMPARE(Rows(), QStringList{u"2 Items %1>0 mother:77>0"_s.arg(m_item)});
    }

    void itemThatNobodyElseHas_leavesNoTrace()
    {
        MakeChild(*m_library, Mother, At(-100));
        const qint64 fresh = AddItem(*m_library, 0, u"new"_s);
        DeleteItem(*m_library, fresh);
        QCOMPARE(Rows(), QStringList());
        QCOMPARE(CountOf(*m_library, u"DeletedItems"_s), 0);
    }

    void itemThatWentOutWithAnExport_isNoted()
    {
        MakeChild(*m_library, Mother, At(-100));
        const qint64 fresh = AddItem(*m_library, 0, u"new"_s);
        m_clock->AddSeconds(10);
        m_library->Execute(u"UPDATE Properties SET LastExported = ?"_s, {m_clock->Now()});
        m_clock->AddSeconds(10);
        CCodeItem item;
        item.Initialise(*m_library, QString::number(fresh));
        item.DeleteRow();
        QCOMPARE(Rows(), QStringList{u"2 Items %1>0 mother:0>0"_s.arg(fresh)});
    }

    void itemThatCameFromAChild_isNotedWhateverItsDateSays()
    {
        MakeMother(*m_library, At(-100));
        SetItem(m_item, u"Created"_s, At(Day)); // a child's clock
        SetItem(m_item, u"LastChanged"_s, At(0));
        DeleteItem(*m_library, m_item);
        QCOMPARE(Rows(), QStringList());

        SetItem(m_other, u"Created"_s, At(Day));
        SetItem(m_other, u"LastChanged"_s, At(0));
        ReplicaLog(*m_library)
            .Note({.Event = Event::Arrived, .Table = u"Items"_s, .Record = m_other, .Moment = At(-50)});
        DeleteItem(*m_library, m_other);
        QCOMPARE(Rows().value(1), u"2 Items %1>0 mother:0>0"_s.arg(m_other));
    }

    void branchOfAMother_isNotedItemByItemAndFileByFile()
    {
        MakeMother(*m_library, At(-100));
        const qint64 below = AddItem(*m_library, m_item, u"below"_s);
        SetItem(below, u"Created"_s, At(-200));
        const qint64 file = AddStoredFile(*m_library, below, u"a.txt"_s, "1", At(-200));
        DeleteBranch(*m_library, m_item);
        QStringList rows = Rows();
        rows.sort();
        QCOMPARE(rows, (QStringList{u"2 Files %1>0 mother:0>0"_s.arg(file), u"2 Items %1>0 mother:0>0"_s.arg(m_item),
                                    u"2 Items %1>0 mother:0>0"_s.arg(below)}));
    }

    void removingAllDeletedItems_isNotedLikeAnyDeletion()
    {
        MakeMother(*m_library, At(-100));
        SetItem(m_item, u"LastChanged"_s, 0);
        RemoveItemsMarkedForDelete(*m_library);
        QCOMPARE(Rows(), QStringList{u"2 Items %1>0 mother:0>0"_s.arg(m_item)});
        QCOMPARE(Texts(*m_library, u"SELECT ItemID FROM DeletedItems"_s), QStringList{QString::number(m_item)});
    }

    void fileOfAChildWithChildren_isNotedWithBothNumbers()
    {
        MakeChild(*m_library, Mother, At(-300));
        MakeMother(*m_library, At(-100));
        const qint64 file = AddStoredFile(*m_library, m_item, u"a.txt"_s, "1", At(-200));
        CFileObject row;
        row.Initialise(*m_library, QString::number(file));
        row.Delete();
        QVERIFY(row.Commit());
        QVERIFY(
            m_library->QueryValue(u"SELECT ItemID FROM DeletedFiles"_s).IsNull()); // its children can't be told by it
        QCOMPARE(Rows(), QStringList{u"2 Files %1>0 mother:0>0"_s.arg(file)});
    }

    void link_isNotedByBothEnds()
    {
        Link(m_item, m_other, LinkDirection::Left);
        MakeChild(*m_library, Mother, At(-100));
        m_library->Execute(u"UPDATE ItemLinks SET MotherItemID = 7, MotherLinkItemID = 8"_s);
        Link(m_item, m_other, LinkDirection::None);
        QCOMPARE(CountOf(*m_library, u"ItemLinks"_s), 0);
        QCOMPARE(Rows(), QStringList{u"2 ItemLinks %1>%2 mother:7>8"_s.arg(m_item).arg(m_other)});
    }

    void newLink_leavesNoTrace()
    {
        MakeMother(*m_library, At(-100));
        Link(m_item, m_other, LinkDirection::Left);
        Link(m_item, m_other, LinkDirection::None);
        QCOMPARE(Rows(), QStringList());
    }

    void ordinaryLibrary_notesNothing()
    {
        ReplicaLog(*m_library).Make(); // as where all children were forgotten
        Link(m_item, m_other, LinkDirection::Left);
        Link(m_item, m_other, LinkDirection::None);
        Change(m_other, u"orphan"_s, true);
        AddStoredFile(*m_library, m_item, u"a.txt"_s, "1", At(-200));
        DeleteItem(*m_library, m_item);
        QCOMPARE(Rows(), QStringList());
    }

    void deletionThatIsRolledBack_isNotNoted()
    {
        MakeMother(*m_library, At(-100));
        {
            Transaction transaction(*m_library);
            DeleteItem(*m_library, m_item);
            QCOMPARE(Rows().size(), 1);
        }
        QCOMPARE(Rows(), QStringList());
    }

    void replicaWithoutTheTable_deletesAllTheSame()
    {
        MakeMother(*m_library, At(-100));
        m_library->DeleteTableDef(u"ReplicaLog"_s);
        DeleteItem(*m_library, m_item);
        QCOMPARE(CountOf(*m_library, u"DeletedItems"_s), 1);
    }

    // Stored files that get other contents or another name

    void knownFile_isANewOneByOtherContentsOrName_data()
    {
        QTest::addColumn<bool>("isChild");
        QTest::addColumn<bool>("isReplaced");
        QTest::newRow("mother, replaced") << false << true;
        QTest::newRow("mother, renamed") << false << false;
        QTest::newRow("child, replaced") << true << true;
        QTest::newRow("child, renamed") << true << false;
    }
    void knownFile_isANewOneByOtherContentsOrName()
    {
        QFETCH(bool, isChild);
        QFETCH(bool, isReplaced);
        const qint64 old = TakeIn();
        isChild ? MakeChild(*m_library, Mother, At(10)) : MakeMother(*m_library, At(10));
        if (isChild)
            m_library->Execute(u"UPDATE Files SET MotherRecordID = 9, MotherCodeID = 4"_s);
        m_clock->AddSeconds(100);
        CFileObject file;
        file.Initialise(*m_library, QString::number(old));
        const Date original = file.OrigDateTime();
        if (isReplaced)
            file.SetStoredFile(m_home->Path(u"b.txt"_s));
        else
            file.SetTitle(u"b.txt"_s);
        QVERIFY(file.Commit());
        QCOMPARE(file.Key().toLongLong(), old + 1);
        QCOMPARE(StoredNames(m_library->FilesFolder()), QStringList{u"%1 - b.txt"_s.arg(old + 1)});
        QCOMPARE(ReadFile(StoredFilePath(*m_library, old + 1, u"b.txt"_s)), isReplaced ? "second" : "1");
        QCOMPARE(CountOf(*m_library, u"Files"_s), 1);
        Statement row = m_library->Query(
            u"SELECT CodeID, FileSize, DateAdded, LastUpdated, Description, OrigDateTime FROM Files"_s);
        QVERIFY(row.Step());
        QCOMPARE(row.Long(0), m_item);
        QCOMPARE(row.Long(1), isReplaced ? 6 : 1);
        QCOMPARE(row.Column(2).ToDate(), m_clock->Now());
        QCOMPARE(row.Column(3).ToDate(), m_clock->Now());
        QCOMPARE(row.Text(4), u"words"_s);
        if (!isReplaced)
            QCOMPARE(row.Column(5).ToDate(), original);
        QCOMPARE(Texts(*m_library, u"SELECT ItemID FROM DeletedFiles"_s),
                 QStringList{isChild ? u"9"_s : QString::number(old)});
        QCOMPARE(Rows(), QStringList{u"2 Files %1>0 mother:%2>0"_s.arg(old).arg(isChild ? 9 : 0)});
        if (isChild) {
            QCOMPARE(m_library->QueryValue(u"SELECT MotherRecordID FROM Files"_s).ToLong(), 0);
            QCOMPARE(m_library->QueryValue(u"SELECT MotherCodeID FROM Files"_s).ToLong(), 4);
        }
        const ContentCheck check = CheckContents(*m_library);
        QVERIFY(check.Faults.empty());
        QCOMPARE(check.UnknownRows, 0);
    }

    void fileThatNobodyElseHas_keepsItsRow_data()
    {
        QTest::addColumn<bool>("isReplica");
        QTest::newRow("new in a replica") << true;
        QTest::newRow("in an ordinary library") << false;
    }
    void fileThatNobodyElseHas_keepsItsRow()
    {
        QFETCH(bool, isReplica);
        if (isReplica)
            MakeMother(*m_library, At(-100));
        const qint64 id = TakeIn();
        CFileObject file;
        file.Initialise(*m_library, QString::number(id));
        file.SetStoredFile(m_home->Path(u"b.txt"_s));
        QVERIFY(file.Commit());
        QCOMPARE(file.Key().toLongLong(), id);
        QCOMPARE(Rows(), QStringList());
    }

    void missingFile_keepsItsRow()
    {
        const qint64 id = TakeIn();
        MakeMother(*m_library, At(10));
        QVERIFY(QFile::remove(StoredFilePath(*m_library, id, u"a.txt"_s)));
        CFileObject file;
        file.Initialise(*m_library, QString::number(id));
        file.SetTitle(u"b.txt"_s);
        QVERIFY(file.Commit());
        QCOMPARE(file.Key().toLongLong(), id);
        QCOMPARE(Rows(), QStringList()); // the others have it still
    }

    void rottenFile_isKnownUnderItsNewNameToo()
    {
        const qint64 id = TakeIn();
        MakeMother(*m_library, At(10));
        WriteFile(StoredFilePath(*m_library, id, u"a.txt"_s), "2");
        CFileObject file;
        file.Initialise(*m_library, QString::number(id));
        file.SetTitle(u"b.txt"_s);
        QVERIFY(file.Commit());
        const ContentCheck check = CheckContents(*m_library);
        QCOMPARE(check.Faults.size(), 1u);
        QCOMPARE(check.Faults.front().What, LibraryFault::Kind::DamagedFile);
        QCOMPARE(check.Faults.front().Id, id + 1);
    }

    void replacementThatFails_leavesTheOldFile()
    {
        const qint64 id = TakeIn();
        MakeMother(*m_library, At(10));
        m_library->Execute(u"CREATE TEMP TRIGGER hold BEFORE INSERT ON Files BEGIN SELECT raise(ABORT, 'held'); END"_s);
        {
            CFileObject file;
            file.Initialise(*m_library, QString::number(id));
            file.SetStoredFile(m_home->Path(u"b.txt"_s));
            ScriptedPrompts prompts;
            prompts.ExpectError();
            QVERIFY(!file.Commit());
        }
        QCOMPARE(StoredNames(m_library->FilesFolder()), QStringList{u"%1 - a.txt"_s.arg(id)});
        QCOMPARE(Rows(), QStringList());
        QCOMPARE(Texts(*m_library, u"SELECT ID FROM Files"_s), QStringList{QString::number(id)});
    }

    // Changes without a date

    void orphanThatKeepsItsDate_isNotedAsChangedOnce()
    {
        MakeMother(*m_library, At(-100));
        SetItem(m_item, u"LastChanged"_s, At(-1000));
        Change(m_item, u"first"_s, true);
        m_clock->AddSeconds(5);
        Change(m_item, u"second"_s, true);
        QCOMPARE(Rows(), QStringList{u"4 Items %1>0 mother:0>0"_s.arg(m_item)});
        QCOMPARE(ReplicaLog(*m_library).Entries().front().Moment, m_clock->Now());
        Change(m_other, u"with a date"_s);
        QCOMPARE(Rows().size(), 1);
    }

    // What is written and removed

    void entry_comesBackAsItWasNoted()
    {
        MakeMother(*m_library, At(-100));
        const ReplicaLogEntry entry{.Event = Event::TakenOver,
                                    .Table = u"ItemLinks"_s,
                                    .Record = 1,
                                    .Second = 2,
                                    .MotherRecord = 3,
                                    .MotherSecond = 4,
                                    .Moment = At(0),
                                    .RowDate = At(60),
                                    .Origin = u"0:BZbz9876"_s};
        ReplicaLog(*m_library).Note(entry);
        QCOMPARE(ReplicaLog(*m_library).Entries(), std::vector<ReplicaLogEntry>{entry});
        QVERIFY(ReplicaLog(*m_library).Has(Event::TakenOver, u"ItemLinks"_s, 1));
        QVERIFY(!ReplicaLog(*m_library).Has(Event::Arrived, u"ItemLinks"_s, 1));
        QVERIFY(!ReplicaLog(*m_library).Has(Event::TakenOver, u"Items"_s, 1));
    }

    void sameEvent_isOneRowForEachOrigin()
    {
        MakeMother(*m_library, At(-100));
        ReplicaLog log(*m_library);
        ReplicaLogEntry entry{
            .Event = Event::Arrived, .Table = u"Items"_s, .Record = 5, .Moment = At(0), .RowDate = At(-9)};
        for (const char* origin : {"one", "two", "one"}) {
            entry.Origin = QString::fromLatin1(origin);
            entry.Moment = Date::FromSeconds(entry.Moment.Seconds() + 1);
            log.Note(entry);
        }
        QCOMPARE(
            Texts(*m_library, u"SELECT Origin || (Moment - %1) FROM ReplicaLog ORDER BY Moment"_s.arg(At(0).Seconds())),
            (QStringList{u"two2"_s, u"one3"_s}));
    }

    void moveOn_datesOnlyWhatCameAfterTheExport()
    {
        MakeChild(*m_library, Mother, At(-100));
        ReplicaLog log(*m_library);
        for (const qint64 seconds : {-10, 0, 10, 100})
            log.Note({.Event = Event::Deleted, .Table = u"Items"_s, .Record = seconds + 50, .Moment = At(seconds)});
        log.Note({.Event = Event::TakenOver, .Table = u"Items"_s, .Record = 1, .Moment = At(10)});
        log.MoveOn(At(0), At(60));
        const QString moments = u"SELECT Event || ' ' || RecordID || ' ' || (Moment - %1) FROM ReplicaLog ORDER BY "
                                "Event, RecordID"_s.arg(At(0).Seconds());
        QCOMPARE(Texts(*m_library, moments),
                 (QStringList{u"2 40 -10"_s, u"2 50 0"_s, u"2 60 60"_s, u"2 150 100"_s, u"3 1 10"_s}));
    }

    void trim_waitsForTheLastOfAll_data()
    {
        QTest::addColumn<qint64>("own");    // seconds from now; 0: no child
        QTest::addColumn<qint64>("childs"); // the same; 0: no mother
        QTest::addColumn<QString>("left");
        const auto row = [](const char* what, qint64 own, qint64 childs, const char* left) {
            QTest::newRow(what) << own << childs << QString::fromLatin1(left);
        };
        row("nobody else is left", 0, 0, "");
        row("child", -20, 0, "3 4");
        row("mother of two", 0, -30, "2 3 4");
        row("both, its mother last", -40, -30, "1 2 3 4");
        row("both, a child last", -20, -30, "2 3 4");
    }
    void trim_waitsForTheLastOfAll()
    {
        QFETCH(qint64, own);
        QFETCH(qint64, childs);
        QFETCH(QString, left);
        ReplicaLog(*m_library).Make();
        if (own != 0)
            MakeChild(*m_library, Mother, At(own));
        if (childs != 0) {
            MakeMother(*m_library, At(childs));
            m_library->Execute(u"INSERT INTO ChildCopies (DBCopyID, LastSynchronized) VALUES ('later', ?)"_s, {At(-1)});
        }
        ReplicaLog log(*m_library);
        const auto note = [&](qint64 record, qint64 moment, qint64 date) {
            log.Note({.Event = Event::Arrived,
                      .Table = u"Items"_s,
                      .Record = record,
                      .Moment = At(moment),
                      .RowDate = At(date)});
        };
        note(1, -40, -500);
        note(2, -30, -500);
        note(3, -20, -500);
        note(4, -500, 60); // taken over with a date that is still to come
        log.Trim();
        QCOMPARE(Texts(*m_library, u"SELECT RecordID FROM ReplicaLog ORDER BY RecordID"_s).join(u' '), left);
    }

    void makeTwice_leavesWhatIsThere()
    {
        MakeMother(*m_library, At(-100));
        DeleteItem(*m_library, m_item);
        ReplicaLog(*m_library).Make();
        QCOMPARE(Rows().size(), 1);
        ReplicaLog(*m_library).Clear();
        QCOMPARE(Rows(), QStringList());
    }

    void check_knowsTheLog()
    {
        MakeMother(*m_library, At(-100));
        DeleteItem(*m_library, m_item);
        ReplicaLog(*m_library).Note({.Event = Event::Exported, .Moment = At(0), .RowDate = At(0)});
        QVERIFY(CheckLibrary(*m_library).empty());
        m_library->Execute(u"UPDATE ReplicaLog SET Event = 9 WHERE Event = 2"_s);
        QCOMPARE(CheckLibrary(*m_library).size(), 1u);
        QCOMPARE(CheckLibrary(*m_library).front().What, LibraryFault::Kind::Damage);
        m_library->DeleteTableDef(u"ReplicaLog"_s);
        QCOMPARE(CheckLibrary(*m_library).front().Text, u"The table ReplicaLog is missing."_s);
    }

    void restoredLibrary_keepsItsLog()
    {
        MakeMother(*m_library, At(-100));
        DeleteItem(*m_library, m_item);
        const std::vector<ReplicaLogEntry> before = ReplicaLog(*m_library).Entries();
        RecordedWork work;
        BackUpLibrary(m_library->Name(), m_home->Path(u"b.qbb"_s), {}, work);
        const QString path = m_home->Path(u"restored.qbd"_s);
        RestoreLibrary(m_home->Path(u"b.qbb"_s), path, RestoreOver::Refuse, work);
        const auto restored = Library::Open(path);
        QCOMPARE(ReplicaLog(*restored).Entries(), before);
        QCOMPARE(before.size(), 1u);
    }

    // Stamps

    void stamp_isNowInAnOrdinaryLibrary()
    {
        m_library->Execute(u"INSERT INTO ChildCopies (DBCopyID, LastSynchronized) VALUES ('x', ?)"_s, {At(Day)});
        QCOMPARE(m_library->NextStamp(), m_clock->Now()); // another process's doing: this one has not read it yet
        m_library->ReadReplica();
        QCOMPARE(m_library->NextStamp(), At(Day + 1));
    }

    void stamp_isLaterThanAllThatTheReplicaTookPartIn_data()
    {
        QTest::addColumn<QString>("statement"); // ? is the date
        QTest::newRow("mother") << u"UPDATE ChildCopies SET LastSynchronized = ?"_s;
        QTest::newRow("child") << u"UPDATE Properties SET LastSynchronized = ?"_s;
        QTest::newRow("exported") << u"UPDATE Properties SET LastExported = ?"_s;
        QTest::newRow("exported before") << u"INSERT INTO ReplicaLog (Event, RowDate) VALUES (5, ?)"_s;
    }
    void stamp_isLaterThanAllThatTheReplicaTookPartIn()
    {
        QFETCH(QString, statement);
        MakeChild(*m_library, Mother, At(-100));
        MakeMother(*m_library, At(-200));
        QCOMPARE(m_library->NextStamp(), m_clock->Now());
        m_library->Execute(statement, {At(0)});
        QCOMPARE(m_library->LastOwnStamp(), At(0));
        QCOMPARE(m_library->NextStamp(), At(1));
        m_clock->AddSeconds(-3600); // set back
        QCOMPARE(m_library->NextStamp(), At(3601));
        m_clock->AddSeconds(7200);
        QCOMPARE(m_library->NextStamp(), m_clock->Now());
    }

    void stamp_isNeverOneThatRowsWereTakenOverWith()
    {
        MakeChild(*m_library, Mother, At(-100));
        for (const qint64 seconds : {0, 1})
            ReplicaLog(*m_library)
                .Note({.Event = Event::TakenOver,
                       .Table = u"Items"_s,
                       .Record = seconds,
                       .Moment = At(-50),
                       .RowDate = At(seconds)});
        QCOMPARE(m_library->NextStamp(), At(2));
    }

    void everyWriter_datesByTheStamp()
    {
        MakeChild(*m_library, Mother, At(500));
        SetItem(m_item, u"MotherRecordID"_s, 7);
        const Date stamp = At(501);
        const qint64 fresh = AddItem(*m_library, 0, u"new"_s);
        const auto item = [this](const QString& column, qint64 id) {
            return m_library->QueryValue(u"SELECT %1 FROM Items WHERE ID = ?"_s.arg(column), {id}).ToDate();
        };
        QCOMPARE(item(u"Created"_s, fresh), stamp);
        QCOMPARE(item(u"LastChanged"_s, fresh), stamp);
        Change(m_item, u"changed"_s);
        QCOMPARE(item(u"LastChanged"_s, m_item), stamp);

        WriteFile(m_home->Path(u"a.txt"_s), "1");
        CFileObject file;
        file.Initialise(*m_library, {});
        file.SetCodeID(QString::number(m_item));
        file.SetStoredFile(m_home->Path(u"a.txt"_s));
        QVERIFY(file.Commit());
        QCOMPARE(m_library->QueryValue(u"SELECT DateAdded FROM Files"_s).ToDate(), stamp);
        QCOMPARE(m_library->QueryValue(u"SELECT LastUpdated FROM Files"_s).ToDate(), stamp);
        m_library->Execute(u"UPDATE Files SET DateAdded = 5, LastUpdated = 5, MotherRecordID = 9"_s);
        CFileObject described;
        described.Initialise(*m_library, file.Key());
        described.SetDescription(u"words"_s);
        described.SetDescriptionChanged(true);
        QVERIFY(described.Commit());
        QCOMPARE(m_library->QueryValue(u"SELECT LastUpdated FROM Files"_s).ToDate(), stamp);

        Link(m_item, m_other, LinkDirection::Left);
        QCOMPARE(m_library->QueryValue(u"SELECT DateAdded FROM ItemLinks"_s).ToDate(), stamp);
        QCOMPARE(m_library->QueryValue(u"SELECT DateUpdated FROM ItemLinks"_s).ToDate(), stamp);
        m_library->Execute(u"UPDATE ItemLinks SET DateAdded = 5, MotherItemID = 7, MotherLinkItemID = 8"_s);
        Link(m_item, m_other, LinkDirection::None);
        QCOMPARE(m_library->QueryValue(u"SELECT DateDeleted FROM DeletedItemLinks"_s).ToDate(), stamp);

        described.Delete();
        QVERIFY(described.Commit());
        QCOMPARE(m_library->QueryValue(u"SELECT DateDeleted FROM DeletedFiles"_s).ToDate(), stamp);
        SetItem(m_item, u"LastChanged"_s, 5);
        DeleteItem(*m_library, m_item);
        QCOMPARE(m_library->QueryValue(u"SELECT DateDeleted FROM DeletedItems"_s).ToDate(), stamp);
    }
};

QB_TEST_MAIN(TestReplicaLog)
#include "tst_replica_log.moc"
