#include "attack/AttackedLibrary.h"
#include "attack/RecordedDisk.h"

#include <QElapsedTimer>
#include <QRandomGenerator>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// A power cut at any call of a command, with any of the writes that nothing had flushed: the library is as it was
/// before the command or as it is after it, it passes its check, and what a command has reported as done is done.
/// ATTACK_SECONDS sets for how long cuts are tried.
class TestPowerCut : public QObject {
    Q_OBJECT

    std::unique_ptr<AttackedLibrary> m_library;

    static QString Named(RecordedDisk::Kept kept)
    {
        static const QStringList names{u"nothing"_s, u"everything"_s, u"any"_s, u"parts"_s};
        return names[int(kept)];
    }

    /// One cut; says what is wrong, empty when nothing is.
    QString Try(const RecordedDisk& disk, size_t end, RecordedDisk::Kept kept, QRandomGenerator& random,
                const State& before, const State& after) const
    {
        const QString cut = m_library->Work(); // where notes and journals name each other
        disk.Cut(end, kept, random, cut);
        const QString where = u"cut behind call %1 of %2, %3 kept: "_s.arg(end).arg(disk.Calls()).arg(Named(kept));
        try {
            const State state = AttackedLibrary::Look(cut);
            const bool isDone = end == disk.Calls(); // the command has reported it
            if (state == after || (state == before && !isDone))
                return {};
            return where
                   + u"differs from before in %1; from after in %2"_s.arg(AttackedLibrary::Difference(before, state),
                                                                          AttackedLibrary::Difference(after, state));
        } catch (const RuntimeError& error) {
            return where + error.Description();
        }
    }

private Q_SLOTS:
    void initTestCase()
    {
        FailOnWarnings();
        m_library = std::make_unique<AttackedLibrary>();
    }
    void init() { FailOnWarnings(); }
    void cleanupTestCase() { m_library.reset(); }

    void powerCut_leavesTheCommandDoneOrNot_data()
    {
        QTest::addColumn<int>("index");
        for (size_t i = 0; i < std::size(Commands); ++i)
            QTest::newRow(Commands[i].Name) << int(i);
    }
    void powerCut_leavesTheCommandDoneOrNot()
    {
        QFETCH(int, index);
        m_library->Reset();
        const State before = AttackedLibrary::Look(m_library->Work());
        m_library->Reset();
        RecordedDisk disk(m_library->Work());
        const QString record = m_library->Path(u"record"_s);
        QFile::remove(record);
        const Attacked whole = m_library->Run(Commands[index],
                                              {u"RECORD_TO="_s + record, u"RECORD_BELOW="_s + m_library->Work(),
                                               u"LD_PRELOAD="_s + qEnvironmentVariable("QUILLBASE_RECORD")});
        QVERIFY2(whole.Status == 0, qPrintable(whole.Error));
        disk.Read(record);
        QVERIFY(disk.Calls() > 0);
        const State after = AttackedLibrary::Look(m_library->Work());
        QVERIFY(after != before);
        QRandomGenerator random(20260302 + quint32(index));
        // The record is the whole truth: replayed, it gives what the command has left.
        QCOMPARE(Try(disk, disk.Calls(), RecordedDisk::Kept::Everything, random, before, after), QString());
        using Kept = RecordedDisk::Kept;
        const int seconds = qEnvironmentVariableIntValue("ATTACK_SECONDS");
        const qint64 share = (seconds > 0 ? seconds * 1000LL : 25000LL) / qint64(std::size(Commands));
        QElapsedTimer timer;
        timer.start();
        QStringList losses;
        int cuts = 0;
        do { // the end, which is a promise, more often than the way there
            for (const size_t end : {disk.Calls(), size_t(random.bounded(quint32(disk.Calls()))) + 1}) {
                for (const Kept kept : {Kept::Nothing, Kept::Any, Kept::Parts}) {
                    ++cuts;
                    if (const QString loss = Try(disk, end, kept, random, before, after); !loss.isEmpty())
                        losses << loss;
                }
            }
        } while (timer.elapsed() < share && losses.size() < 20);
        qInfo("%s: %d cuts on %zu calls, %d losses", Commands[index].Name, cuts, disk.Calls(), int(losses.size()));
        QVERIFY2(losses.isEmpty(), qPrintable(u'\n' + losses.mid(0, 5).join(u'\n')));
    }
};

QB_TEST_MAIN(TestPowerCut)
#include "tst_power_cut.moc"
