#include "platform/system/Date.h"
#include "support/DateFormatCustom.h"
#include "support/TestRun.h"

using namespace qb;
using namespace Qt::StringLiterals;

class TestDate : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { qb::test::FailOnWarnings(); }

    void origin_isZero()
    {
        QCOMPARE(Date::FromParts(1899, 12, 30).Seconds(), 0);
        QVERIFY(Date().IsNone());
    }

    void parts_comeBack()
    {
        const Date date = Date::FromParts(2026, 2, 28, 23, 59, 58);
        QCOMPARE(date.Day(), QDate(2026, 2, 28));
        QCOMPARE(date.Time(), QTime(23, 59, 58));
        QCOMPARE(date.DateOnly(), Date::FromParts(2026, 2, 28));
        QCOMPARE(date.AddDays(1).Day(), QDate(2026, 3, 1));
    }

    void beforeTheOrigin_partsComeBack()
    {
        const Date date = Date::FromParts(1850, 7, 4, 6, 7, 8);
        QCOMPARE(date.Day(), QDate(1850, 7, 4));
        QCOMPARE(date.Time(), QTime(6, 7, 8));
        QCOMPARE(date.DateOnly().Time(), QTime(0, 0));
    }

    void dayCount_comesBackToTheSecond()
    {
        const Date date = Date::FromParts(2026, 11, 21, 13, 37, 1);
        QCOMPARE(Date::FromDayCount(date.ToDayCount()), date);
        QCOMPARE(Date::FromDayCount(1.5), Date::FromParts(1899, 12, 31, 12));
    }

    void limitsOfStoredDates_areTheYears100And9999()
    {
        QCOMPARE(Date::FromParts(100, 1, 1).Seconds(), -56802297600ll);
        QCOMPARE(Date::FromParts(9999, 12, 31, 23, 59, 59).Seconds(), 255611462399ll);
    }
};

QB_TEST_MAIN(TestDate)
#include "tst_date.moc"
