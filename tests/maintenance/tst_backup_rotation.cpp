#include "maintenance/BackupRotation.h"
#include "maintenance/LibraryBackup.h"
#include "support/LibraryBuilder.h"
#include "support/LibraryState.h"
#include "support/RecordedWork.h"
#include "support/TestRun.h"

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// Which backups stay, and the list of them.
class TestBackupRotation : public QObject {
    Q_OBJECT

    std::unique_ptr<TemporaryHome> m_home;
    FixedClock m_clock;
    RecordedWork m_work;

    QString In(const QString& name = {}) const { return m_home->Path(u"ältere backups/"_s + name); }
    QStringList Names() const
    {
        return QDir(In()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot, QDir::Name);
    }
    static QDate Today() { return {2026, 3, 2}; } // a Monday

    /// One good backup of a library, copied under other names: they are told apart by their names only.
    QByteArray OneBackup(const QString& library)
    {
        const QString path = m_home->Path(library + u".qbd"_s);
        QDir().mkpath(QFileInfo(path).absolutePath());
        AddItem(*MakeLibrary(path), 0, u"one"_s);
        QDir().mkpath(In());
        BackUpLibrary(path, In(u"made"_s), {});
        const QByteArray bytes = ReadFile(In(u"made"_s));
        QFile::remove(In(u"made"_s));
        return bytes;
    }
    static QStringList KeptOf(const RotationRule& rule, const std::vector<QDate>& days)
    {
        QStringList kept;
        const std::vector<bool> flags = KeptBy(rule, days, Today());
        for (size_t i = 0; i < days.size(); ++i) {
            if (flags[i])
                kept << days[i].toString(u"MMdd"_s);
        }
        return kept;
    }
    static std::vector<QDate> DaysBack(int count)
    {
        std::vector<QDate> days;
        for (int i = 0; i < count; ++i)
            days.push_back(Today().addDays(-i));
        return days;
    }

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_home = std::make_unique<TemporaryHome>();
        m_work.Forget();
    }
    void cleanup() { m_home.reset(); }

    void rule_keepsTheLastOnesOneADayAndOneAWeek()
    {
        const std::vector<QDate> days = DaysBack(30);
        QCOMPARE(KeptOf({.Last = 3}, days), (QStringList{u"0302"_s, u"0301"_s, u"0228"_s}));
        QCOMPARE(KeptOf({.Daily = 2}, days), (QStringList{u"0302"_s, u"0301"_s}));
        // Of each week its last day.
        QCOMPARE(KeptOf({.Weekly = 3}, days), (QStringList{u"0302"_s, u"0301"_s, u"0222"_s}));
        QCOMPARE(KeptOf({.Last = 1, .Daily = 2, .Weekly = 2}, days), (QStringList{u"0302"_s, u"0301"_s}));
        // After a long pause the last ones stay, however old they are.
        QCOMPARE(KeptOf({.Last = 1, .Daily = 5}, {QDate(2025, 5, 1), QDate(2025, 4, 1)}), QStringList{u"0501"_s});
        QCOMPARE(KeptOf({.Last = 1}, {QDate(2026, 3, 9), QDate(2026, 3, 2), QDate(2026, 3, 1)}),
                 (QStringList{u"0309"_s, u"0302"_s})); // a clock that was wrong takes no place
        QCOMPARE(KeptOf({.Weekly = 1}, {QDate(2026, 3, 8), QDate(2026, 3, 2)}), (QStringList{u"0308"_s, u"0302"_s}));
        QCOMPARE(KeptOf({.Daily = 1}, {QDate(2026, 3, 9), QDate(2026, 3, 2), QDate(2026, 3, 1)}),
                 (QStringList{u"0309"_s, u"0302"_s}));
        QCOMPARE(KeptOf({.Daily = 1}, {Today(), Today()}).size(), 1);
    }

    void rotation_deletesWhatIsNotKept()
    {
        const QByteArray bytes = OneBackup(u"Lib"_s);
        for (const QString& day : {u"260302"_s, u"260301"_s, u"260228"_s, u"260131"_s})
            WriteFile(In(u"Lib%1.qbb"_s.arg(day)), bytes);
        const QStringList others{u"Lib260301.qbd"_s, u"Lib269999.qbb"_s, u"Libx.qbb"_s, u"notes.txt"_s};
        for (const QString& other : others)
            WriteFile(In(other), "not of that form");
        const RotationResult result = RotateBackups(In(), {.Last = 2}, Today(), m_work);
        QCOMPARE(result.Deleted, (QStringList{In(u"Lib260228.qbb"_s), In(u"Lib260131.qbb"_s)}));
        QCOMPARE(result.Kept.size(), 2);
        QStringList left = QStringList{u"Lib260301.qbb"_s, u"Lib260302.qbb"_s} + others;
        left.sort();
        QCOMPARE(Names(), left);
        QVERIFY(RotateBackups(In(), {.Last = 2}, Today(), m_work).Deleted.isEmpty());
        QB_VERIFY_RAISES(RotateBackups(In(), {}, Today(), m_work), 5);
    }

    void onlyGoodBackup_isNeverDeleted()
    {
        const QByteArray bytes = OneBackup(u"Lib"_s);
        WriteFile(In(u"Lib260301.qbb"_s), bytes);
        QByteArray damaged = bytes;
        damaged[bytes.size() / 3] = char(damaged[bytes.size() / 3] ^ 1);
        WriteFile(In(u"Lib260302.qbb"_s), damaged);
        RotationResult result = RotateBackups(In(), {.Last = 1}, Today(), m_work);
        QCOMPARE(result.Spared, QStringList{In(u"Lib260301.qbb"_s)});
        QVERIFY(result.Deleted.isEmpty());
        QCOMPARE(Names(), (QStringList{u"Lib260301.qbb"_s, u"Lib260302.qbb"_s}));
        WriteFile(In(u"Lib260228.qbb"_s),
                  bytes.left(bytes.size() / 2)); // which says nothing of itself: it counts apart
        QVERIFY(RotateBackups(In(), {.Last = 1}, Today(), m_work).Deleted.isEmpty());
        WriteFile(In(u"Lib260302.qbb"_s), bytes); // one that is good takes its place
        result = RotateBackups(In(), {.Last = 1}, Today(), m_work);
        QCOMPARE(result.Deleted, QStringList{In(u"Lib260301.qbb"_s)});
    }

    void librariesOfOneName_areRotatedByThemselves()
    {
        const QByteArray one = OneBackup(u"Lib"_s);
        const QByteArray other = OneBackup(u"x/Lib"_s);
        WriteFile(In(u"Lib260302.qbb"_s), one);
        WriteFile(In(u"Lib260301.qbb"_s), other);
        WriteFile(In(u"Other260220.qbb"_s), one);
        QVERIFY(RotateBackups(In(), {.Last = 1}, Today(), m_work).Deleted.isEmpty());
        WriteFile(In(u"Lib260228.qbb"_s), one);
        QVERIFY(RotateBackups(In(), {.Last = 1}, Today(), m_work, u"Other"_s).Deleted.isEmpty());
        QCOMPARE(RotateBackups(In(), {.Last = 1}, Today(), m_work).Deleted, QStringList{In(u"Lib260228.qbb"_s)});
    }

    void volumes_goTogether()
    {
        const QString path = m_home->Path(u"Lib.qbd"_s);
        AddItem(*MakeLibrary(path), 0, u"one"_s);
        QDir().mkpath(In());
        BackUpLibrary(path, In(u"Lib260301.qbb"_s), {.VolumeSize = 3000});
        QVERIFY(Names().size() > 2);
        BackUpLibrary(path, In(u"Lib260302.qbb"_s), {});
        QCOMPARE(ListBackups(In()).size(), size_t(2));
        QCOMPARE(RotateBackups(In(), {.Last = 1}, Today(), m_work).Deleted, QStringList{In(u"Lib260301.qbb.001"_s)});
        QCOMPARE(Names(), QStringList{u"Lib260302.qbb"_s});
    }

    void list_tellsWhatTheBackupsSayAndWhetherTheyAreChecked()
    {
        const QByteArray bytes = OneBackup(u"Lib"_s);
        WriteFile(In(u"Lib260302.qbb"_s), bytes);
        WriteFile(In(u"Lib260301.qbb"_s), "none");
        RememberCheck(In(u"Lib260302.qbb"_s), true);
        std::vector<BackupEntry> entries = ListBackups(In());
        const auto first = std::find_if(entries.begin(), entries.end(),
                                        [](const BackupEntry& entry) { return entry.Summary.has_value(); });
        QVERIFY(first != entries.end());
        QCOMPARE(first->Path, In(u"Lib260302.qbb"_s));
        QCOMPARE(first->Made, m_clock.Now());
        QCOMPARE(first->Checked, m_clock.Now());
        QVERIFY(first->IsGood);
        QCOMPARE(first->Base, u"Lib"_s);
        QCOMPARE(first->Day, Today());
        QCOMPARE(first->Size, bytes.size());
        WriteFile(In(u"Lib260302.qbb"_s), bytes + "x"); // another file than the one that was checked
        for (const BackupEntry& entry : ListBackups(In()))
            QVERIFY(entry.Checked.IsNone());
        QB_VERIFY_RAISES(ListBackups(In(u"nowhere"_s)), 75);
    }
};

QB_TEST_MAIN(TestBackupRotation)
#include "tst_backup_rotation.moc"
