#include "platform/system/Clock.h"
#include "support/TestRun.h"

#include <QElapsedTimer>

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

    // Of the system's clock

    void letPass_waitsForTheSecondAfter()
    {
        const Date moment = Clock::Now();
        Clock::LetPass(moment);
        QVERIFY(Clock::Now() > moment);
        const Date next = Date::FromSeconds(Clock::Now().Seconds() + 1);
        Clock::LetPass(next);
        QVERIFY(Clock::Now() > next);
    }

    void letPass_doesNotWaitForWhatIsOverOrFarAhead()
    {
        QElapsedTimer waited;
        waited.start();
        Clock::LetPass(Date::FromSeconds(Clock::Now().Seconds() - 1));
        Clock::LetPass(Date::FromSeconds(Clock::Now().Seconds() + 3600));
        {
            const FixedClock clock;
            Clock::LetPass(clock.Now());
            Clock::BeginSecond();
        }
        QVERIFY(waited.elapsed() < 400);
    }

    void beginSecond_waitsWhenLittleIsLeft()
    {
        while (QTime::currentTime().msec() < 600)
            QTest::qSleep(20);
        const Date before = Clock::Now();
        Clock::BeginSecond();
        QVERIFY(Clock::Now() > before);
    }

    void beginSecond_doesNotWaitWhenMuchIsLeft()
    {
        qint64 shortest = 1000; // of some, since others may have the processor meanwhile
        for (int i = 0; i < 3; ++i) {
            while (QTime::currentTime().msec() > 200)
                QTest::qSleep(20);
            QElapsedTimer waited;
            waited.start();
            Clock::BeginSecond();
            shortest = qMin(shortest, waited.elapsed());
        }
        QVERIFY(shortest < 200);
    }
};

QB_TEST_MAIN(TestClock)
#include "tst_clock.moc"
