#include "platform/system/SettingsStore.h"
#include "removed/RemovedEvent.h"
#include "removed/RemovedRetention.h"
#include "support/FolderContents.h"
#include "support/LibraryBuilder.h"
#include "support/TestRun.h"

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// What was removed is kept for a time and up to a size, and the latest always.
class TestRemovedRetention : public QObject {
    Q_OBJECT

    std::optional<TemporaryHome> m_home;
    const Date m_now = Date::FromParts(2026, 3, 2, 14, 30, 5);

    QString Path() const { return m_home->Path(u"net ä.qbd"_s); }
    QString Folder() const { return RemovedFolderOf(Path()); }
    void MakeEvent(const QString& day, int bytes)
    {
        WriteFile(Folder() + day + u" 100000 deleted.qbx"_s, QByteArray(bytes, 'x'));
        WriteFile(Folder() + day + u" 100000 deleted.json"_s, "{}");
    }
    QStringList Days() const
    {
        QStringList days;
        for (const QString& name : ContentsOf(Folder()).keys()) {
            if (name.endsWith(u".qbx"))
                days << name.left(10);
        }
        return days;
    }

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_home.emplace();
        MakeEvent(u"2024-12-31"_s, 700'000);
        MakeEvent(u"2025-03-03"_s, 700'000);
        MakeEvent(u"2026-02-28"_s, 700'000);
        WriteFile(Folder() + u"notes.txt"_s, "somebody's");
        WriteFile(Folder() + u"2020-01-01 mine.qbx"_s, "somebody's");
    }
    void cleanup() { m_home.reset(); }

    void olderThanTheDays_goes()
    {
        QCOMPARE(PruneRemoved(Path(), {.Days = 365, .Megabytes = 0}, m_now),
                 QStringList{u"2024-12-31 100000 deleted"_s});
        QCOMPARE(Days(), (QStringList{u"2020-01-01"_s, u"2025-03-03"_s, u"2026-02-28"_s}));
        QVERIFY(QFile::exists(Folder() + u"notes.txt"_s));
        QVERIFY(!QFile::exists(Folder() + u"2024-12-31 100000 deleted.json"_s));
    }

    void moreThanTheSize_goesFromTheOldestOn()
    {
        PruneRemoved(Path(), {.Days = 0, .Megabytes = 1}, m_now);
        QCOMPARE(Days(), (QStringList{u"2020-01-01"_s, u"2026-02-28"_s}));
    }

    void newest_stays()
    {
        PruneRemoved(Path(), {.Days = 1, .Megabytes = 0}, Date::FromParts(2036, 1, 1));
        QCOMPARE(Days(), (QStringList{u"2020-01-01"_s, u"2026-02-28"_s}));
    }

    void noLimits_keepAll()
    {
        QCOMPARE(PruneRemoved(Path(), {.Days = 0, .Megabytes = 0}, Date::FromParts(2036, 1, 1)), QStringList());
    }

    void settings_areFollowedAfterEachEvent()
    {
        QCOMPARE(ReadRetention().Days, 365);
        QCOMPARE(ReadRetention().Megabytes, 1024);
        SaveSetting(SettingsApplication, u"Settings"_s, u"RemovedDays"_s, u"-4"_s);
        QCOMPARE(ReadRetention().Days, 365);
        SaveSetting(SettingsApplication, u"Settings"_s, u"RemovedDays"_s, u"30"_s);
        const FixedClock clock(m_now);
        const auto library = MakeLibrary(Path());
        AddItem(*library, 0, u"one"_s);
        RemovedEvent event(*library, RemovalKind::DeletedByUser, {});
        Transaction transaction(*library);
        event.Add(RemovedRows::OfLibrary(u"r.ID > 0"_s), {});
        event.Note();
        transaction.Commit();
        event.Place();
        QCOMPARE(Days(), (QStringList{u"2020-01-01"_s, u"2026-02-28"_s, u"2026-03-02"_s}));
    }
};

QB_TEST_MAIN(TestRemovedRetention)
#include "tst_removed_retention.moc"
