#include "platform/system/Clock.h"
#include "support/TestRun.h"

using namespace qb;
using namespace qb::test;

class TestClock : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { FailOnWarnings(); }

    void withoutASource_theSystemIsAsked()
    {
        const Date before = Date::FromDateTime(QDateTime::currentDateTime());
        const Date now = Clock::Now();
        const Date after = Date::FromDateTime(QDateTime::currentDateTime());
        QVERIFY(before <= now && now <= after);
    }

    void source_isAskedEachTime()
    {
        FixedClock clock(Date::FromParts(2026, 2, 28, 23, 59, 59));
        QCOMPARE(Clock::Now(), Date::FromParts(2026, 2, 28, 23, 59, 59));
        QCOMPARE(Clock::Today(), Date::FromParts(2026, 2, 28));
        clock.AddSeconds(1);
        QCOMPARE(Clock::Now(), Date::FromParts(2026, 3, 1));
        QCOMPARE(Clock::Today(), Date::FromParts(2026, 3, 1));
    }

    void setSource_returnsTheOneBefore()
    {
        const Date outer = Date::FromParts(2001, 1, 1);
        const FixedClock clock(outer);
        Clock::Source before = Clock::SetSource([] { return Date::FromParts(2002, 2, 2); });
        QCOMPARE(Clock::Now(), Date::FromParts(2002, 2, 2));
        Clock::SetSource(std::move(before));
        QCOMPARE(Clock::Now(), outer);
    }
};

QB_TEST_MAIN(TestClock)
#include "tst_clock.moc"
