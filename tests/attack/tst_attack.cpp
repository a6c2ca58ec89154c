#include "attack/AttackedLibrary.h"

#include <QElapsedTimer>
#include <QRandomGenerator>
#include <algorithm>
#include <cerrno>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// Ends commands at, or lets fail, every call that changes a file: whatever happens, the library is as it
/// was before the command or as it is after it, it passes its check, and what a command says is true.
/// ATTACK_SECONDS sets for how long calls are tried; without it some of each command's are.
class TestAttack : public QObject {
    Q_OBJECT

    std::unique_ptr<AttackedLibrary> m_library;
    int m_runs = 0;

    /// One attack; says what is wrong, empty when nothing is.
    QString Attack(const AttackedCommand& command, const QString& how, bool once, long at, const State& before,
                   const State& after)
    {
        m_library->Reset();
        QStringList variables{u"ATTACK_AT=%1"_s.arg(at), u"ATTACK_HOW="_s + how};
        if (once)
            variables << u"ATTACK_ONCE=1"_s;
        const Attacked outcome = m_library->Run(command, variables << Preload());
        ++m_runs;
        State state;
        try {
            state = AttackedLibrary::Look(m_library->Work());
        } catch (const RuntimeError& error) {
            return u"%1 at call %2 (%3): can't be opened: %4"_s.arg(QString::fromLatin1(command.Name))
                .arg(at)
                .arg(how, error.Description());
        }
        const bool isBefore = state == before;
        const bool isAfter = state == after;
        const bool killed = outcome.Status < 0;
        const bool isTrue = killed                ? isBefore || isAfter
                            : outcome.Status == 0 ? isAfter
                                                  : isBefore || (isAfter && IsLate(outcome));
        const QString again = isTrue && command.MayBeRepeated ? m_library->TryAgain(command, after) : QString();
        if (isTrue && again.isEmpty())
            return {};
        return again
               + u"%1 at call %2 (%3): status %4, %5; differs from before in %6; from after in %7"_s
                     .arg(QString::fromLatin1(command.Name))
                     .arg(at)
                     .arg(how)
                     .arg(outcome.Status)
                     .arg(outcome.Error.trimmed(), AttackedLibrary::Difference(before, state),
                          AttackedLibrary::Difference(after, state));
    }

    static QString Preload() { return u"LD_PRELOAD="_s + qEnvironmentVariable("QUILLBASE_INJECT"); }

    /// The failure is one of tidying up after the command had been done.
    static bool IsLate(const Attacked& outcome) { return !outcome.Error.isEmpty(); }

private Q_SLOTS:
    void initTestCase()
    {
        FailOnWarnings();
        m_library = std::make_unique<AttackedLibrary>();
    }
    void init() { FailOnWarnings(); }
    void cleanupTestCase() { m_library.reset(); }

    void command_isDoneOrNot_data()
    {
        QTest::addColumn<int>("index");
        for (size_t i = 0; i < std::size(Commands); ++i)
            QTest::newRow(Commands[i].Name) << int(i);
    }
    void command_isDoneOrNot()
    {
        QFETCH(int, index);
        const AttackedCommand& command = Commands[index];
        m_library->Reset();
        const State before = AttackedLibrary::Look(m_library->Work());
        QVERIFY2(!before.contains(u"fault"_s), before.value(u"fault"_s).constData());
        const QString count = m_library->Path(u"count"_s);
        m_library->Reset();
        const Attacked whole = m_library->Run(command, {u"ATTACK_COUNT="_s + count, Preload()});
        QVERIFY2(whole.Status == 0, qPrintable(whole.Error));
        const long calls = ReadFile(count).toLong();
        const State after = AttackedLibrary::Look(m_library->Work());
        QVERIFY(calls > 0);
        QVERIFY(after != before);
        struct Way {
            const char* How;
            bool Once;
        };
        static const QByteArray full = QByteArray::number(ENOSPC), broken = QByteArray::number(EIO);
        const Way ways[] = {{"kill", false}, {"half", false}, {full.constData(), false}, {broken.constData(), true}};
        std::vector<std::pair<long, const Way*>> attacks;
        for (long at = 1; at <= calls; ++at) {
            for (const Way& way : ways)
                attacks.emplace_back(at, &way);
        }
        QRandomGenerator random(20260302 + quint32(index));
        std::shuffle(attacks.begin(), attacks.end(), random);
        const int seconds = qEnvironmentVariableIntValue("ATTACK_SECONDS");
        const qint64 share = (seconds > 0 ? seconds * 1000LL : 30000LL) / qint64(std::size(Commands));
        QElapsedTimer timer;
        timer.start();
        QStringList losses;
        m_runs = 0;
        for (const auto& [at, way] : attacks) {
            if (timer.elapsed() > share)
                break;
            const QString loss = Attack(command, QString::fromLatin1(way->How), way->Once, at, before, after);
            if (!loss.isEmpty())
                losses << loss;
        }
        qInfo("%s: %d of %zu attacks on %ld calls, %d losses", command.Name, m_runs, attacks.size(), calls,
              int(losses.size()));
        QVERIFY2(losses.isEmpty(), qPrintable(u'\n' + losses.mid(0, 5).join(u'\n')));
    }
};

QB_TEST_MAIN(TestAttack)
#include "tst_attack.moc"
