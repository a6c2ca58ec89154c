#include "platform/richtext/RunMap.h"
#include "support/RichTextDescription.h"
#include "support/TestRun.h"

#include <vector>

using namespace qb;
using namespace qb::test;

namespace {

/// The same values without runs: one for each position, and one for all that stands behind.
class Model {
public:
    void Clear(quint32 value)
    {
        m_values.clear();
        m_rest = value;
    }
    quint32 At(qsizetype position) const
    {
        return size_t(position) < m_values.size() ? m_values[size_t(position)] : m_rest;
    }
    void Set(qsizetype begin, qsizetype end, quint32 value)
    {
        for (Reach(end); begin < end; ++begin)
            m_values[size_t(begin)] = value;
    }
    void Append(qsizetype begin, quint32 value)
    {
        Reach(begin);
        m_values.resize(size_t(begin));
        m_rest = value;
    }
    void Insert(qsizetype at, qsizetype length, quint32 value)
    {
        Reach(at);
        m_values.insert(m_values.begin() + at, size_t(length), value);
    }
    void Erase(qsizetype at, qsizetype length)
    {
        Reach(at + length);
        m_values.erase(m_values.begin() + at, m_values.begin() + at + length);
    }
    qsizetype Size() const { return qsizetype(m_values.size()); }

private:
    void Reach(qsizetype end)
    {
        if (Size() < end)
            m_values.resize(size_t(end), m_rest);
    }

    std::vector<quint32> m_values;
    quint32 m_rest = 0;
};

/// The first position at which the map differs, or -1.
qsizetype FirstDifference(const RunMap& map, const Model& model)
{
    for (qsizetype at = 0; at <= model.Size() + 2; ++at) {
        if (map.ValueAt(at) != model.At(at))
            return at;
    }
    return -1;
}

QString RunsOf(const RunMap& map)
{
    QString text;
    for (auto run = map.RunAt(0); run != map.End(); ++run)
        text += QStringLiteral("%1=%2 ").arg(run->first).arg(run->second);
    return text.trimmed();
}

/// What is wrong with the runs themselves, or nothing.
QString Fault(const RunMap& map)
{
    auto run = map.RunAt(0);
    if (run->first != 0)
        return QStringLiteral("the first run begins at %1").arg(run->first);
    size_t count = 1;
    RunMap::Run last = *run;
    for (++run; run != map.End(); ++run, ++count) {
        if (run->first <= last.first || run->second == last.second)
            return RunsOf(map);
        last = *run;
    }
    if (count != map.Count())
        return QStringLiteral("%1 runs instead of %2").arg(count).arg(map.Count());
    for (--run; count > 1; --count) { // and back
        const RunMap::Run behind = *run;
        --run;
        if (run->first >= behind.first)
            return QStringLiteral("backwards: ") + RunsOf(map);
    }
    return {};
}

} // namespace

class TestRunMap : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { FailOnWarnings(); }

    void newMap_hasOneRun()
    {
        RunMap map(7);
        QCOMPARE(RunsOf(map), QStringLiteral("0=7"));
        QCOMPARE(map.ValueAt(1000000), 7u);
        map.Set(3, 5, 1);
        map.Clear(2);
        QCOMPARE(RunsOf(map), QStringLiteral("0=2"));
    }

    void set_mergesWithItsNeighbours()
    {
        RunMap map;
        map.Set(2, 4, 1);
        map.Set(6, 8, 1);
        QCOMPARE(RunsOf(map), QStringLiteral("0=0 2=1 4=0 6=1 8=0"));
        map.Set(4, 6, 1);
        QCOMPARE(RunsOf(map), QStringLiteral("0=0 2=1 8=0"));
        map.Set(0, 9, 0);
        QCOMPARE(RunsOf(map), QStringLiteral("0=0"));
    }

    void emptyRanges_changeNothing()
    {
        RunMap map;
        map.Set(2, 4, 1);
        map.Set(3, 3, 9);
        map.Set(4, 3, 9);
        map.Insert(3, 0, 9);
        map.Erase(3, 0);
        QCOMPARE(RunsOf(map), QStringLiteral("0=0 2=1 4=0"));
    }

    void insertAtTheBeginOfARun_standsBeforeIt()
    {
        RunMap map;
        map.Set(2, 4, 1);
        map.Insert(2, 3, 5);
        QCOMPARE(RunsOf(map), QStringLiteral("0=0 2=5 5=1 7=0"));
        map.Insert(0, 1, 0);
        QCOMPARE(RunsOf(map), QStringLiteral("0=0 3=5 6=1 8=0"));
        map.Insert(0, 1, 4);
        QCOMPARE(RunsOf(map), QStringLiteral("0=4 1=0 4=5 7=1 9=0"));
    }

    void eraseBetweenEqualRuns_mergesThem()
    {
        RunMap map(3);
        map.Set(2, 4, 1);
        map.Erase(2, 2);
        QCOMPARE(RunsOf(map), QStringLiteral("0=3"));
    }

    void runAt_isTheRunThatHoldsThePosition()
    {
        RunMap map;
        map.Set(2, 4, 1);
        map.Set(9, 12, 2);
        map.Set(0, 1, 3); // the gap stands in front now
        const int expected[] = {0, 1, 2, 2, 4, 4, 4, 4, 4, 9, 9, 9, 12, 12};
        for (int at = 0; at < int(std::size(expected)); ++at)
            QCOMPARE(map.RunAt(at)->first, expected[at]);
    }

    void randomChanges_giveWhatAPlainListGives()
    {
        for (quint32 seed = 0; seed < 60; ++seed) {
            Dice dice(seed);
            RunMap map(1);
            Model model;
            model.Clear(1);
            for (int i = 0; i < 300; ++i) {
                const qsizetype size = model.Size() + 1;
                const qsizetype at = dice.Roll(size);
                const qsizetype length = dice.OneIn(10) ? dice.Roll(200) : dice.Roll(12);
                const auto value = quint32(dice.Roll(4));
                switch (dice.Roll(20)) {
                case 0:
                    map.Append(model.Size(), value);
                    model.Append(model.Size(), value);
                    break;
                case 1:
                    map.Append(at, value);
                    model.Append(at, value);
                    break;
                case 2:
                case 3:
                case 4:
                case 5:
                    map.Insert(at, length, value);
                    model.Insert(at, length, value);
                    break;
                case 6:
                case 7:
                case 8:
                case 9:
                    map.Erase(at, length);
                    model.Erase(at, length);
                    break;
                default:
                    map.Set(at, at + length, value);
                    model.Set(at, at + length, value);
                    break;
                }
                const QByteArray where = "seed " + QByteArray::number(seed) + ", change " + QByteArray::number(i)
                                         + ": ";
                const QString fault = Fault(map);
                QVERIFY2(fault.isEmpty(), where + fault.toUtf8());
                QVERIFY2(FirstDifference(map, model) < 0, where + RunsOf(map).toUtf8());
            }
        }
    }

    void appendedRuns_areThoseOfAReaderInOrder()
    {
        RunMap map;
        for (int i = 0; i < 1000; ++i)
            map.Append(i * 3, quint32(i / 2 % 5));
        QCOMPARE(map.Count(), size_t(500));
        for (int i = 0; i < 1000; ++i)
            QCOMPARE(map.ValueAt(i * 3 + 2), quint32(i / 2 % 5));
    }
};

QB_TEST_MAIN(TestRunMap)
#include "tst_runmap.moc"
