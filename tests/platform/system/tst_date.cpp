#include "platform/system/Clock.h"
#include "platform/system/Date.h"
#include "support/DateFormatCustom.h"
#include "support/InZone.h"
#include "support/TestRun.h"

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

namespace {
constexpr qint64 Hour = 3600;
constexpr qint64 Day = 24 * Hour;

QString Shown(Date date)
{
    return DateFormatCustom(date, u"yyyy-mm-dd hh:nn:ss"_s);
}
} // namespace

class TestDate : public QObject {
    Q_OBJECT

private:
    static void AddZones()
    {
        QTest::addColumn<QByteArray>("zone");
        for (const char* zone : Zones)
            QTest::newRow(zone) << QByteArray(zone);
    }

private Q_SLOTS:
    void init() { FailOnWarnings(); }

    void origin_isZeroAnywhere_data() { AddZones(); }
    void origin_isZeroAnywhere()
    {
        QFETCH(QByteArray, zone);
        const InZone here(zone);
        QCOMPARE(Date::FromParts(1899, 12, 30).Seconds(), 0);
        QVERIFY(Date().IsNone());
        QCOMPARE(Date().Day(), QDate(1899, 12, 30));
        QCOMPARE(Date().Time(), QTime(0, 0));
        QCOMPARE(Date().ToDayCount(), 0.0);
        QCOMPARE(Date().ToIso(), QString());
    }

    void parts_comeBackInEachZone_data() { AddZones(); }
    void parts_comeBackInEachZone()
    {
        QFETCH(QByteArray, zone);
        const InZone here(zone);
        for (const int month : {1, 2, 5, 7, 8, 12}) {
            const Date date = Date::FromParts(2026, month, 28, 23, 59, 58);
            QCOMPARE(date.Day(), QDate(2026, month, 28));
            QCOMPARE(date.Time(), QTime(23, 59, 58));
            QCOMPARE(date.DateOnly(), Date::FromParts(2026, month, 28));
            QCOMPARE(date.AddDays(1).Day(), QDate(2026, month, 28).addDays(1));
            QCOMPARE(date.AddDays(1).Time(), date.Time());
            QCOMPARE(Date::FromDayCount(date.ToDayCount()), date);
            QCOMPARE(Date::FromWallSeconds(date.WallSeconds()), date);
        }
    }

    void beforeTheOrigin_partsComeBack()
    {
        const Date date = Date::FromParts(1850, 7, 4, 6, 7, 8);
        QCOMPARE(date.Day(), QDate(1850, 7, 4));
        QCOMPARE(date.Time(), QTime(6, 7, 8));
        QCOMPARE(date.DateOnly().Time(), QTime(0, 0));
    }

    void moment_isTheSameEverywhere()
    {
        const InZone here(MiddleEurope);
        const Date summer = Date::FromParts(2026, 7, 1, 12, 0, 0);
        QCOMPARE(summer.ToIso(), u"2026-07-01T10:00:00Z"_s);
        QCOMPARE(Date::FromParts(2026, 1, 1, 0, 30, 0).ToIso(), u"2025-12-31T23:30:00Z"_s);
        QCOMPARE(summer, Date::FromDateTime(QDateTime(QDate(2026, 7, 1), QTime(10, 0), Qt::UTC)));
        QCOMPARE(summer, Date::FromDateTime(QDateTime(QDate(2026, 7, 1), QTime(19, 0), Qt::OffsetFromUTC, 9 * Hour)));
        InZone::Set("IST-5:30"); // a journey
        QCOMPARE(Shown(summer), u"2026-07-01 15:30:00"_s);
        QCOMPARE(summer.DateOnly().ToIso(), u"2026-06-30T18:30:00Z"_s);
    }

    void fractionsOfASecond_areCutOff()
    {
        const QDateTime moment(QDate(1850, 7, 1), QTime(10, 0, 0, 999), Qt::UTC);
        QCOMPARE(Date::FromDateTime(moment).ToIso(), u"1850-07-01T10:00:00Z"_s);
    }

    void hourThatComesTwice_isTheFirstOneWhenItIsTyped()
    {
        const InZone here(MiddleEurope);
        const Date first = Date::FromParts(2026, 10, 25, 2, 30, 0);
        QCOMPARE(first.ToIso(), u"2026-10-25T00:30:00Z"_s);
        const Date second = Date::FromSeconds(first.Seconds() + Hour);
        QCOMPARE(Shown(second), Shown(first)); // and is the later one all the same
        QVERIFY(second > first);
        QCOMPARE(Date::FromParts(2026, 10, 25, 3, 0, 0).Seconds(), first.Seconds() + Hour + Hour / 2);
    }

    void hourThatIsLeftOut_isTheMomentOfTheChange()
    {
        const InZone here(MiddleEurope);
        for (const int minute : {0, 1, 59})
            QCOMPARE(Date::FromParts(2026, 3, 29, 2, minute, 0).ToIso(), u"2026-03-29T01:00:00Z"_s);
        QCOMPARE(Shown(Date::FromParts(2026, 3, 29, 2, 30, 0)), u"2026-03-29 03:00:00"_s);
        QCOMPARE(Date::FromParts(2026, 3, 28, 2, 30).AddDays(1).Time(), QTime(3, 0));
    }

    void midnightThatIsLeftOut_isTheFirstMomentOfTheDay()
    {
        const InZone here("<-03>3<-02>,M3.5.0/0,M10.5.0/0");
        QCOMPARE(Shown(Date::FromParts(2026, 3, 29, 15, 0, 0).DateOnly()), u"2026-03-29 01:00:00"_s);
    }

    void laterReadings_giveLaterMoments_data() { AddZones(); }
    void laterReadings_giveLaterMoments()
    {
        QFETCH(QByteArray, zone);
        const InZone here(zone);
        constexpr qint64 Step = 600;
        const qint64 begin = Date::FromParts(2026, 1, 1).WallSeconds();
        Date before = Date::FromWallSeconds(begin - Step);
        int same = 0;
        for (qint64 wall = begin; wall < begin + 366 * Day; wall += Step) {
            const Date date = Date::FromWallSeconds(wall);
            QVERIFY2(date >= before, qPrintable(Shown(date)));
            same += date == before ? 1 : 0;
            before = date;
        }
        QCOMPARE(same, zone.contains(',') ? 6 : 0); // those of the hour that is left out
    }

    void dayCount_isWhatTheClockReads()
    {
        const InZone here(MiddleEurope);
        QCOMPARE(Shown(Date::FromDayCount(46082.5)), u"2026-03-01 12:00:00"_s);
        QCOMPARE(Date::FromParts(2026, 8, 1, 12).ToDayCount(), 46235.5);
    }

    void limitsOfStoredDates_areTheYears100And9999_data() { AddZones(); }
    void limitsOfStoredDates_areTheYears100And9999()
    {
        QFETCH(QByteArray, zone);
        const InZone here(zone);
        const qint64 first = -56802297600;
        const qint64 last = 255611462399;
        QVERIFY(Date::FromWallSeconds(first).Seconds() >= first);
        QVERIFY(Date::FromWallSeconds(last).Seconds() <= last);
        QVERIFY(Date::FromWallSeconds(first).Seconds() < first + Day);
        QVERIFY(Date::FromWallSeconds(last).Seconds() > last - Day);
        for (const qint64 beyond : {first - 1, last + 1, std::numeric_limits<qint64>::max()})
            QCOMPARE(Date::FromWallSeconds(beyond).Seconds(), beyond);
    }

    void now_isTheSystemsMoment()
    {
        const InZone here(MiddleEurope);
        const qint64 before = QDateTime::currentSecsSinceEpoch();
        const Date now = Clock::Now();
        const qint64 moment = now.Seconds() - 25569 * Day;
        QVERIFY(moment >= before && moment <= QDateTime::currentSecsSinceEpoch());
        QCOMPARE(Clock::Today().Time(), QTime(0, 0));
    }
};

QB_TEST_MAIN(TestDate)
#include "tst_date.moc"
