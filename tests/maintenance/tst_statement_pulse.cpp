#include "maintenance/PhasedWork.h"
#include "maintenance/StatementPulse.h"
#include "platform/dao/DBEngine.h"
#include "support/RecordedWork.h"
#include "support/TestRun.h"

#include <atomic>
#include <thread>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// A statement that takes its time shows that it goes on, and can be ended.
class TestStatementPulse : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { FailOnWarnings(); }

    void endlessStatement_showsThatItGoesOnUntilItIsCancelled()
    {
        const TemporaryHome home;
        const auto database = DBEngine::CreateDatabase(home.Path(u"any.qbd"_s));
        RecordedWork work;
        work.Ends = [&work](qint64) { return work.Pulses == 3; };
        PhasedWork phases(work);
        phases.Begin(500);
        phases.Advance(1, 2);
        long error = 0;
        try {
            const StatementPulse pulse(*database, phases);
            database->QueryValue(
                u"WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n) SELECT count(*) FROM n"_s);
        } catch (const RuntimeError& failure) {
            error = failure.Number();
        }
        QCOMPARE(error, ErrorNumber::Cancelled);
        QCOMPARE(work.Pulses, 3);
        QCOMPARE(work.Done, QList<qint64>{250}); // nothing goes back
        QCOMPARE(database->QueryValue(u"SELECT 1"_s).ToLong(), 1);
    }

    void stepWithoutEnd_showsThatItGoesOnUntilItIsCancelled()
    {
        const TemporaryHome home;
        const auto database = DBEngine::CreateDatabase(home.Path(u"any.qbd"_s));
        RecordedWork work;
        work.Ends = [&work](qint64) { return work.Pulses >= 3; };
        QB_VERIFY_RAISES(RunPulsed(*database, work,
                                   [&] {
                                       database->QueryValue(u"WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 "
                                                            "FROM n) SELECT count(*) FROM n"_s);
                                   }),
                         18);
        QVERIFY(work.Pulses >= 3);
        QCOMPARE(database->QueryValue(u"SELECT 1"_s).ToLong(), 1);
    }

    void stepThatEndsAtOnce_isToldOf()
    {
        const TemporaryHome home;
        const auto database = DBEngine::CreateDatabase(home.Path(u"any.qbd"_s));
        RecordedWork work;
        qint64 read = 0;
        RunPulsed(*database, work, [&] { read = database->QueryValue(u"SELECT 7"_s).ToLong(); });
        QCOMPARE(read, 7);
        QVERIFY(work.Pulses >= 1);
        QB_VERIFY_RAISES(RunPulsed(*database, work, [&] { database->Execute(u"SELECT nothing FROM nowhere"_s); }),
                         3000);
        work.Ends = [](qint64) { return true; }; // too late for what is done already
        QB_VERIFY_RAISES(RunPulsed(*database, work, [] {}), 18);
    }

    void beat_isHeardAgainWhileTheOtherThreadRuns()
    {
        std::atomic<int> beats = 0;
        bool hasEnded = false;
        RunBeside(
            [&] {
                while (beats < 4)
                    std::this_thread::yield();
                hasEnded = true;
            },
            [&] { ++beats; });
        QVERIFY(hasEnded);
        QVERIFY(beats >= 4);
    }

    void failureOfABeat_isRaisedWhenTheOtherThreadHasEnded()
    {
        std::atomic<bool> isToEnd = false, hasEnded = false;
        const auto body = [&] {
            while (!isToEnd)
                std::this_thread::yield();
            hasEnded = true;
        };
        QB_VERIFY_RAISES(RunBeside(body,
                                   [&] {
                                       isToEnd = true;
                                       throw RuntimeError(18, u"enough"_s, {});
                                   }),
                         18);
        QVERIFY(hasEnded);
    }
};

QB_TEST_MAIN(TestStatementPulse)
#include "tst_statement_pulse.moc"
