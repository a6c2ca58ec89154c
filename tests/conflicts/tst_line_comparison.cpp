#include "conflicts/LineComparison.h"
#include "conflicts/SequenceDiff.h"
#include "support/TestRun.h"

#include <QRandomGenerator>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

namespace {

/// The lines with a letter before each: of both, of the first, of the second.
QStringList Marked(const LineComparison& comparison)
{
    QStringList lines;
    for (const ComparedLine& line : comparison.Lines)
        lines << QString(u"=12"_s[qsizetype(line.Owner)]) + line.Text;
    return lines;
}

QStringList WordsOf(const ComparedLine& line)
{
    QStringList words;
    for (const LineSpan& span : line.Words)
        words << line.Text.mid(span.Begin, span.Length);
    return words;
}

QString RandomText(QRandomGenerator& random, int lines)
{
    const QStringList words{u"a"_s, u"b"_s, u""_s, u"int x;"_s, u"Ü 漢"_s, u"}"_s};
    QStringList text;
    for (int i = random.bounded(lines + 1); i > 0; --i)
        text << words[random.bounded(words.size())];
    return text.join(u"\r\n"_s);
}

/// Some lines of a text changed, taken away and added.
QString Edited(QRandomGenerator& random, const QString& text, int changes)
{
    QStringList lines = text.split(u"\r\n"_s);
    for (; changes > 0; --changes) {
        const qsizetype at = random.bounded(lines.size() + 1);
        if (random.bounded(2) || at == lines.size())
            lines.insert(at, u"new %1"_s.arg(random.bounded(4)));
        else
            lines.removeAt(at);
    }
    return lines.join(u"\r\n"_s);
}

} // namespace

/// Two texts side by side, and what both made of a third.
class TestLineComparison : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { FailOnWarnings(); }

    void lines_standSideBySide_data()
    {
        QTest::addColumn<QString>("first");
        QTest::addColumn<QString>("second");
        QTest::addColumn<QStringList>("lines");
        QTest::newRow("equal") << u"a\r\nb"_s << u"a\r\nb"_s << QStringList{u"=a"_s, u"=b"_s};
        QTest::newRow("empty") << QString() << QString() << QStringList{u"="_s};
        QTest::newRow("added") << u"a\r\nc"_s << u"a\r\nb\r\nc"_s << QStringList{u"=a"_s, u"2b"_s, u"=c"_s};
        QTest::newRow("taken") << u"a\r\nb\r\nc"_s << u"a\r\nc"_s << QStringList{u"=a"_s, u"1b"_s, u"=c"_s};
        QTest::newRow("changed") << u"a\r\nb\r\nc"_s << u"a\r\nx\r\nc"_s
                                 << QStringList{u"=a"_s, u"1b"_s, u"2x"_s, u"=c"_s};
        QTest::newRow("case") << u"a"_s << u"A"_s << QStringList{u"1a"_s, u"2A"_s};
        QTest::newRow("rest") << u"a"_s << u"a\r\nb\r\nc"_s << QStringList{u"=a"_s, u"2b"_s, u"2c"_s};
        QTest::newRow("last line end") << u"a"_s << u"a\r\n"_s << QStringList{u"=a"_s, u"2"_s};
        QTest::newRow("line ends") << u"a\nb\rc"_s << u"a\r\nb\r\nc"_s << QStringList{u"=a"_s, u"=b"_s, u"=c"_s};
        QTest::newRow("nothing in common") << u"a"_s << u"b\r\nc"_s << QStringList{u"1a"_s, u"2b"_s, u"2c"_s};
    }
    void lines_standSideBySide()
    {
        QFETCH(QString, first);
        QFETCH(QString, second);
        QTEST(Marked(CompareLines(first, second)), "lines");
    }

    void halvesOfCharacters_arePartsOfLines()
    {
        // Each is replaced by the same character where it is written as UTF-8.
        const QString one = u"a"_s + QChar(0xd800);
        const QString other = u"a"_s + QChar(0xdc01);
        QCOMPARE(CompareLines(one, other).Lines.size(), size_t(2));
    }

    void randomTexts_keepTheRules()
    {
        QRandomGenerator random(24);
        for (int i = 0; i < 3000; ++i) {
            const QString first = RandomText(random, 12);
            const QString second = i % 2 ? RandomText(random, 12) : Edited(random, first, random.bounded(6));
            const LineComparison comparison = CompareLines(first, second);
            QCOMPARE(comparison.TextOf(LineOwner::First), first);
            QCOMPARE(comparison.TextOf(LineOwner::Second), second);
            QCOMPARE(comparison.IsSame(), first == second);
            for (const ComparedLine& line : comparison.Lines) {
                for (const LineSpan& span : line.Words) {
                    QVERIFY(line.Owner != LineOwner::Both);
                    QVERIFY(span.Begin >= 0 && span.Length > 0 && span.Begin + span.Length <= line.Text.size());
                }
            }
        }
    }

    void randomMerges_keepTheRules()
    {
        QRandomGenerator random(25);
        int clashes = 0;
        for (int i = 0; i < 3000; ++i) {
            const QString base = RandomText(random, 12);
            const QString first = Edited(random, base, random.bounded(4));
            const QString second = Edited(random, base, random.bounded(4));
            QCOMPARE(MergeTexts(base, first, base).Text(LineOwner::First), first); // one side changed it
            QCOMPARE(MergeTexts(base, base, second).Text(LineOwner::First), second);
            QVERIFY(!MergeTexts(base, first, first).HasClash()); // both in the same way
            const MergedText merged = MergeTexts(base, first, second);
            QStringList ofBase;
            QStringList ofFirst;
            QStringList ofSecond;
            for (const MergedBlock& block : merged.Blocks) {
                ofBase << block.Base;
                ofFirst << block.First;
                ofSecond << block.Second;
            }
            QCOMPARE(ofBase.join(u"\r\n"_s), base);
            QCOMPARE(ofFirst.join(u"\r\n"_s), first);
            QCOMPARE(ofSecond.join(u"\r\n"_s), second);
            clashes += merged.HasClash() ? 1 : 0;
        }
        QVERIFY(clashes > 50 && clashes < 2950);
    }

    /// Each line of a clash is marked on its side, and no other; lines that stand in both texts never are.
    void randomClashes_areMarked()
    {
        QRandomGenerator random(26);
        int marked = 0;
        for (int i = 0; i < 2000; ++i) {
            const QString base = RandomText(random, 12);
            const QString texts[] = {Edited(random, base, random.bounded(4)), Edited(random, base, random.bounded(4))};
            const MergedText merged = MergeTexts(base, texts[0], texts[1]);
            LineComparison comparison = CompareLines(texts[0], texts[1]);
            MarkClashes(comparison, merged);
            for (const LineOwner side : {LineOwner::First, LineOwner::Second}) {
                QList<bool> clashes;
                for (const MergedBlock& block : merged.Blocks)
                    clashes << QList<bool>((side == LineOwner::First ? block.First : block.Second).size(),
                                           block.What == MergedBlock::Kind::Clash);
                for (const ComparedLine& line : comparison.Lines) {
                    if (line.Owner != LineOwner::Both && line.Owner != side)
                        continue;
                    const bool isClash = clashes.takeFirst();
                    QCOMPARE(line.IsClash, isClash && line.Owner == side);
                    marked += line.IsClash ? 1 : 0;
                }
                QVERIFY(clashes.isEmpty());
            }
        }
        QVERIFY(marked > 50);
    }

    void merge_takesWhatOneSideChanged()
    {
        const QString base = u"1\r\n2\r\n3\r\n4\r\n5"_s;
        const MergedText merged = MergeTexts(base, u"one\r\n2\r\n3\r\n4\r\n5"_s, u"1\r\n2\r\n3\r\n4\r\nfive"_s);
        QVERIFY(!merged.HasClash());
        QCOMPARE(merged.Text(LineOwner::First), u"one\r\n2\r\n3\r\n4\r\nfive"_s);
        const MergedText clash = MergeTexts(base, u"1\r\n2\r\nthree\r\n4\r\n5"_s, u"1\r\n2\r\nIII\r\n4\r\n5\r\n6"_s);
        QVERIFY(clash.HasClash());
        QVERIFY(MergeTexts(u"1\r\n2"_s, u"one\r\n2"_s, u"1\r\ntwo"_s).HasClash()); // lines next to each other
        QCOMPARE(clash.Text(LineOwner::First), u"1\r\n2\r\nthree\r\n4\r\n5\r\n6"_s);
        QCOMPARE(clash.Text(LineOwner::Second), u"1\r\n2\r\nIII\r\n4\r\n5\r\n6"_s);
    }

    void changedLines_tellTheirWords()
    {
        const LineComparison comparison = CompareLines(u"int count = old_value;"_s, u"int count = newValue + 1;"_s);
        QCOMPARE(comparison.Lines.size(), size_t(2));
        QCOMPARE(WordsOf(comparison.Lines[0]), QStringList{u"old_value"_s});
        QCOMPARE(WordsOf(comparison.Lines[1]), QStringList{u"newValue + 1"_s});
        const LineComparison other = CompareLines(u"alpha"_s, u"beta"_s);
        QVERIFY(other.Lines[0].Words.empty()); // nothing of it is left
    }

    void differences_areTheBeginsOfBlocks()
    {
        const LineComparison comparison = CompareLines(u"a\r\nb\r\nc\r\nd"_s, u"x\r\nb\r\nc\r\ny\r\nz"_s);
        QCOMPARE(Marked(comparison), (QStringList{u"1a"_s, u"2x"_s, u"=b"_s, u"=c"_s, u"1d"_s, u"2y"_s, u"2z"_s}));
        QCOMPARE(comparison.Differences(), (QList<int>{0, 4}));
    }

    void hugeTexts_areNotCompared()
    {
        const QString huge = u"line\r\n"_s.repeated(LongestCompared / 6 + 1);
        const LineComparison comparison = CompareLines(huge, u"x"_s);
        QVERIFY(comparison.IsTooLarge);
        QVERIFY(!comparison.IsSame());
        QVERIFY(comparison.Lines.empty());
    }

    /// However unlike they are.
    void largeTexts_areComparedInShortTime()
    {
        QString first;
        QString second;
        for (int i = 0; i < 100'000; ++i) {
            first += u"left %1 line\r\n"_s.arg(i % 7919);
            second += u"right %1 line\r\n"_s.arg(i * 31 % 7907);
        }
        QVERIFY(CompareLines(first, second).Lines.size() >= 100'000);
    }
};

QB_TEST_MAIN(TestLineComparison)
#include "tst_line_comparison.moc"
