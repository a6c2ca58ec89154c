#include "maintenance/PhasedWork.h"
#include "maintenance/StatementPulse.h"
#include "platform/dao/DBEngine.h"
#include "support/RecordedWork.h"
#include "support/TestRun.h"

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
};

QB_TEST_MAIN(TestStatementPulse)
#include "tst_statement_pulse.moc"
