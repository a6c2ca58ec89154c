#include "find/ByteScan.h"
#include "support/TestRun.h"

#include <random>

using namespace qb;
using namespace qb::test;

class TestByteScan : public QObject {
    Q_OBJECT

private:
    static std::vector<quint32> Naive(const QByteArray& text, const QByteArray& needle, ByteScan::Case sensitivity)
    {
        const bool folds = sensitivity == ByteScan::FoldsAscii;
        const QByteArray where = folds ? text.toLower() : text;
        const QByteArray what = folds ? needle.toLower() : needle;
        std::vector<quint32> places;
        for (qsizetype at = where.indexOf(what); at >= 0; at = where.indexOf(what, at + what.size()))
            places.push_back(quint32(at));
        return places;
    }
    static std::vector<quint32> Scanned(const ByteScan& scan, const QByteArray& text, size_t room)
    {
        std::vector<quint32> all;
        std::vector<quint32> places(room);
        qsizetype at = 0;
        for (size_t count = room; count == room;) {
            count = scan.Next(text, at, places);
            all.insert(all.end(), places.begin(), places.begin() + qsizetype(count));
        }
        return all;
    }

private Q_SLOTS:
    void init() { FailOnWarnings(); }

    void randomTexts_allLevelsFindWhatStandsThere_data()
    {
        QTest::addColumn<int>("level");
        QTest::newRow("single") << int(ByteScan::Single);
        QTest::newRow("16 bytes") << int(ByteScan::Sse2);
        QTest::newRow("32 bytes") << int(ByteScan::Avx2);
    }
    void randomTexts_allLevelsFindWhatStandsThere()
    {
        QFETCH(const int, level);
        std::mt19937 random(5);
        const auto below = [&random](int bound) { return std::uniform_int_distribution(0, bound - 1)(random); };
        const QByteArray letters("aAbB@`[{ \xc3\xa9\xff");
        int found = 0;
        for (int i = 0; i < 20000; ++i) {
            QByteArray text;
            for (int length = below(200); length > 0; --length)
                text += letters[below(below(2) ? 3 : int(letters.size()))];
            QByteArray needle;
            for (int length = 1 + below(below(10) ? 4 : 70); length > 0; --length)
                needle += letters[below(3)];
            if (!text.isEmpty() && below(2))
                needle = text.mid(below(int(text.size())), 1 + below(40));
            const auto sensitivity = below(2) ? ByteScan::Exact : ByteScan::FoldsAscii;
            const ByteScan scan(needle, sensitivity, ByteScan::Level(level));
            const std::vector<quint32> expected = Naive(text, needle, sensitivity);
            QCOMPARE(Scanned(scan, text, size_t(1 + below(5))), expected);
            QCOMPARE(scan.First(text), expected.empty() ? qsizetype(-1) : qsizetype(expected[0]));
            if (needle.size() == 1)
                QCOMPARE(scan.CountByte(text), qsizetype(expected.size()));
            found += int(expected.size());
        }
        QVERIFY(found > 20000);
    }

    void needleLongerThanTheText_isNotInIt()
    {
        QCOMPARE(ByteScan("abc").First("ab"), qsizetype(-1));
        QCOMPARE(ByteScan("abc").First(QByteArray()), qsizetype(-1));
        QCOMPARE(ByteScan(QByteArray(1 << 20, 'a')).First(QByteArray(1000, 'a')), qsizetype(-1));
    }
};

QB_TEST_MAIN(TestByteScan)
#include "tst_byte_scan.moc"
