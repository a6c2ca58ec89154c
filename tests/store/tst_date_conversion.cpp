#include "maintenance/BackupItems.h"
#include "maintenance/ContentCheck.h"
#include "maintenance/LibraryBackup.h"
#include "platform/dao/DateForm.h"
#include "session/BackupList.h"
#include "store/CCodeItem.h"
#include "store/Checksums.h"
#include "store/LibraryFormat.h"
#include "support/DateFormatCustom.h"
#include "support/InZone.h"
#include "support/LibraryBuilder.h"
#include "support/RecordedWork.h"
#include "support/TestRun.h"

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

namespace {

constexpr qint64 Hour = 3600;

QString Shown(Date date)
{
    return date.IsNone() ? u"none"_s : DateFormatCustom(date, u"yyyy-mm-dd hh:nn:ss"_s);
}

/// All columns of dates that a library has, as "table.column".
const QStringList DateColumns{
    u"Items.Created"_s,           u"Items.LastChanged"_s,     u"Items.HTMLLastUpdated"_s,
    u"Files.OrigDateTime"_s,      u"Files.DateAdded"_s,       u"Files.LastUpdated"_s,
    u"ItemLinks.DateAdded"_s,     u"ItemLinks.DateUpdated"_s, u"Properties.LastCompacted"_s,
    u"Properties.LastBackedUp"_s, u"Properties.LastOpened"_s, u"ChildCopies.LastSynchronized"_s,
    u"DeletedItems.DateDeleted"_s};

} // namespace

/// Libraries of the time when dates were readings of a clock. Where the clock is that of UTC both forms are the same,
/// so what is written there and said to be of the first format is such a library in any zone.
class TestDateConversion : public QObject {
    Q_OBJECT

private:
    QStringList ShownDates(Database& library)
    {
        QStringList dates;
        for (const QString& column : DateColumns) {
            Statement rows = library.Query(
                u"SELECT %1 FROM %2 ORDER BY rowid"_s.arg(column.section(u'.', 1), column.section(u'.', 0, 0)));
            while (rows.Step())
                dates << column + u' ' + Shown(rows.Column(0).ToDate()) + (rows.IsNull(0) ? u" null"_s : QString());
        }
        return dates;
    }

    static void MakeOld(Database& library)
    {
        library.Execute(u"UPDATE DBVersion SET Version = 1"_s);
        library.Execute(u"PRAGMA user_version = 1"_s);
    }

    qint64 FormatOf(Database& database) { return database.QueryValue(u"PRAGMA user_version"_s).ToLong(); }

    void FillDates(Library& library)
    {
        qint64 date = Date::FromParts(2026, 7, 1, 12).Seconds();
        for (const QString& column : DateColumns) {
            const QString table = column.section(u'.', 0, 0);
            if (CountOf(library, table) == 0)
                library.Execute(u"INSERT INTO %1 (%2) VALUES (1)"_s.arg(table, column.section(u'.', 1)));
            library.Execute(u"UPDATE %1 SET %2 = ?"_s.arg(table, column.section(u'.', 1)), {date += 1001 * Hour});
        }
        library.Execute(u"UPDATE Items SET LastChanged = 0, HTMLLastUpdated = NULL WHERE ID = 2"_s);
    }

    std::optional<InZone> m_zone;
    std::optional<TemporaryHome> m_home;
    QString m_path;
    QStringList m_before;

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_zone.emplace("UTC0");
        m_home.emplace();
        m_path = m_home->Path(u"Bücher.qbd"_s);
        const auto library = MakeLibrary(m_path, LanguageType::None);
        AddItem(*library, 0, u"one"_s, u"int x;"_s);
        AddItem(*library, 0, u"two"_s);
        AddStoredFile(*library, 1, u"a.txt"_s, "1", Date::FromParts(2026, 3, 1));
        library->Execute(u"INSERT INTO ItemLinks (ItemID, LinkItemID, Note) VALUES (1, 2, '')"_s);
        MakeMother(*library, Date::FromParts(2026, 3, 1));
    }

    void cleanup()
    {
        m_home.reset();
        m_zone.reset();
    }

    void everyDate_readsAsBefore_data()
    {
        QTest::addColumn<QByteArray>("zone");
        QTest::addColumn<bool>("writes");
        for (const char* zone : Zones) {
            QTest::newRow(zone) << QByteArray(zone) << true;
            QTest::newRow((QByteArray(zone) + ", only read").constData()) << QByteArray(zone) << false;
        }
    }
    void everyDate_readsAsBefore()
    {
        QFETCH(QByteArray, zone);
        QFETCH(bool, writes);
        {
            const auto library = Library::Open(m_path);
            FillDates(*library);
            m_before = ShownDates(*library);
            MakeOld(*library);
        }
        QVERIFY(m_before.contains(u"Items.LastChanged none"_s));
        QVERIFY(m_before.contains(u"Items.HTMLLastUpdated none null"_s));
        InZone::Set(zone);
        const QByteArray bytes = ReadFile(m_path);
        {
            const auto library = Library::Open(m_path,
                                               writes ? DBEngine::Access::ReadWrite : DBEngine::Access::ReadOnly);
            QCOMPARE(ShownDates(*library), m_before);
            QCOMPARE(library->HasWallDates(), !writes);
            QCOMPARE(FormatOf(*library), writes ? 2 : 1);
            QCOMPARE(library->QueryValue(u"SELECT Version FROM DBVersion"_s).ToLong(), writes ? 2 : 1);
        }
        QCOMPARE(ReadFile(m_path) == bytes, !writes);
        const auto again = Library::Open(m_path);
        QCOMPARE(ShownDates(*again), m_before);
    }

    void convertedLibrary_isNotConvertedTwice()
    {
        MakeOld(*Library::Open(m_path));
        InZone::Set(MiddleEurope);
        Library::Open(m_path);
        const QByteArray bytes = ReadFile(m_path);
        InZone::Set("JST-9");
        Library::Open(m_path);
        QCOMPARE(ReadFile(m_path), bytes);
    }

    void otherProcess_mayHaveConvertedMeanwhile()
    {
        const Value stored = Library::Open(m_path)->QueryValue(u"SELECT Created FROM Items"_s);
        MakeOld(*Library::Open(m_path));
        InZone::Set(MiddleEurope);
        const auto slow = DBEngine::OpenDatabase(m_path);
        QVERIFY(slow->HasWallDates());
        Library::Open(m_path);
        BringUpToDate(*slow);
        QVERIFY(!slow->HasWallDates());
        QCOMPARE(slow->QueryValue(u"SELECT Created FROM Items"_s).ToDate(), Date::FromWallSeconds(stored.ToLong()));
    }

    void orderOfReadings_isKeptOverBothChangesOfTheClocks()
    {
        {
            const auto library = Library::Open(m_path);
            Transaction transaction(*library);
            for (const Date& begin : {Date::FromParts(2026, 3, 28, 12), Date::FromParts(2026, 10, 24, 12)}) {
                for (int step = 0; step < 24 * 6; ++step)
                    library->Execute(u"INSERT INTO Items (Title, LastChanged) VALUES ('x', ?)"_s,
                                     {begin.Seconds() + 600 * step});
            }
            MakeOld(*library);
            transaction.Commit();
        }
        InZone::Set(MiddleEurope);
        const auto library = Library::Open(m_path);
        Statement rows = library->Query(u"SELECT LastChanged FROM Items WHERE Title = 'x' ORDER BY ID"_s);
        qint64 before = 0;
        int count = 0;
        for (; rows.Step(); ++count) {
            QVERIFY(rows.Long(0) >= before);
            before = rows.Long(0);
        }
        QCOMPARE(count, 2 * 24 * 6);
    }

    void checksums_areKnownAfterwardsToo_data()
    {
        QTest::addColumn<bool>("writes");
        QTest::newRow("converted") << true;
        QTest::newRow("only read") << false;
    }
    void checksums_areKnownAfterwardsToo()
    {
        QFETCH(bool, writes);
        {
            const auto library = Library::Open(m_path);
            CCodeItem item;
            item.Initialise(*library, u"1"_s);
            item.SetInfo(u"info"_s);
            item.SetItemChanged(true);
            QVERIFY(item.Commit());
            library->Execute(u"UPDATE Items SET Info = 'rot' WHERE ID = 1"_s);
            library->Execute(u"UPDATE own_Checksums SET Sums = replace(Sums, 'Info', 'info') WHERE OfRow = 2"_s);
            MakeOld(*library);
        }
        InZone::Set(MiddleEurope);
        const auto library = Library::Open(m_path, writes ? DBEngine::Access::ReadWrite : DBEngine::Access::ReadOnly);
        const ContentCheck check = CheckContents(*library);
        QStringList faults;
        for (const LibraryFault& fault : check.Faults)
            faults << FaultName(fault.What) + u' ' + QString::number(fault.Id);
        QCOMPARE(faults, (QStringList{u"damaged-text 1"_s, u"damaged-checksum 2"_s}));
        QCOMPARE(check.KnownRows, 1);
    }

    void conversionThatFails_leavesTheLibraryToBeRead()
    {
        {
            const auto library = Library::Open(m_path);
            FillDates(*library);
            m_before = ShownDates(*library);
            MakeOld(*library);
            library->Execute(u"ALTER TABLE DBVersion RENAME COLUMN Version TO Other"_s);
        }
        InZone::Set(MiddleEurope);
        const QByteArray bytes = ReadFile(m_path);
        QB_VERIFY_RAISES(Library::Open(m_path), 3051);
        const auto library = Library::Open(m_path, DBEngine::Access::ReadOnly);
        QCOMPARE(ShownDates(*library), m_before);
        QCOMPARE(library
                     ->QueryValue(u"SELECT count(*) FROM Items WHERE LastChanged > ?"_s,
                                  {library->StoredDate(Date::FromParts(2026, 1, 1))})
                     .ToLong(),
                 1);
    }

    void tableOfAnotherProgram_isLeftAlone()
    {
        {
            const auto library = Library::Open(m_path);
            library->Execute(u"CREATE TABLE Foreign_ (Moment DATETIME)"_s);
            library->Execute(u"INSERT INTO Foreign_ VALUES (1000000)"_s);
            MakeOld(*library);
        }
        InZone::Set(MiddleEurope);
        QCOMPARE(Library::Open(m_path)->QueryValue(u"SELECT Moment FROM Foreign_"_s).ToLong(), 1000000);
    }

    void backupOfAnOldLibrary_tellsAndGivesTheRightDates()
    {
        const QString file = m_home->Path(u"b.qbb"_s);
        {
            const auto library = Library::Open(m_path);
            library->Execute(u"UPDATE Items SET Created = ?, LastChanged = ?"_s,
                             {Date::FromParts(2026, 7, 1, 12), Date::FromParts(2026, 7, 2, 12)});
            MakeOld(*library);
            // It can only be read then, and so is its backup of the old form.
            library->Execute(u"ALTER TABLE DBVersion RENAME COLUMN Version TO Other"_s);
        }
        RecordedWork work;
        BackUpLibrary(m_path, file, {}, work);
        InZone::Set(MiddleEurope);
        BackupItems items(file, m_home->Path());
        QCOMPARE(Shown(items.Item(1).LastChanged), u"2026-07-02 12:00:00"_s);
        QCOMPARE(Shown(items.All().front().LastChanged), u"2026-07-02 12:00:00"_s);
        const auto library = MakeLibrary(m_home->Path(u"new.qbd"_s));
        const qint64 fresh = items.BringBack(1, *library);
        QCOMPARE(Shown(library->QueryValue(u"SELECT Created FROM Items WHERE ID = ?"_s, {fresh}).ToDate()),
                 u"2026-07-01 12:00:00"_s);
    }

    void changesSinceABackup_areFoundInALibraryThatIsOnlyRead()
    {
        {
            const auto library = Library::Open(m_path);
            library->Execute(u"UPDATE Items SET LastChanged = ?"_s, {Date::FromParts(2026, 7, 2, 12)});
            MakeOld(*library);
        }
        InZone::Set(MiddleEurope);
        const auto library = Library::Open(m_path, DBEngine::Access::ReadOnly);
        BackupSummary backup;
        backup.Rows.insert(u"Items"_s, 2);
        backup.Made = Date::FromParts(2026, 7, 2, 11, 30);
        QCOMPARE(ChangesSince(*library, backup), u"2 items changed"_s);
        backup.Made = Date::FromParts(2026, 7, 2, 12, 30);
        QCOMPARE(ChangesSince(*library, backup), u"nothing"_s);
    }

    void summaryOfAnOldBackup_isReadAsTheClockRead()
    {
        InZone::Set(MiddleEurope);
        const Date made = Date::FromParts(2026, 10, 25, 2, 30, 0);
        const Date second = Date::FromSeconds(made.Seconds() + Hour);
        BackupSummary summary;
        summary.Made = second;
        QCOMPARE(BackupSummary::FromComment(summary.ToComment())->Made, second);
        QByteArray old = summary.ToComment();
        const qsizetype at = old.indexOf("\"moment\"");
        old.remove(at, old.indexOf(',', at) + 1 - at);
        QCOMPARE(BackupSummary::FromComment(old)->Made, made);
    }
};

QB_TEST_MAIN(TestDateConversion)
#include "tst_date_conversion.moc"
