// The colours of lines while a text is edited, held against a scan of the whole text.

#include "support/TestRun.h"
#include "text/LineColours.h"

#include <QRandomGenerator>
#include <QTest>

using namespace qb;
using namespace Qt::StringLiterals;

namespace {

std::shared_ptr<const LanguageRules> SomeRules()
{
    return std::make_shared<LanguageRules>(
        u"line: //\nblock: /* */ lines\nstring: \" \" escape=\\\nstring: ` ` lines interpolate=${,}\n"
        "heredoc: <<\nwords keyword: if else"_s,
        QStringList(), QStringList());
}

} // namespace

class LineColoursTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void randomEdits_tokensOfEachLineAreThoseOfAWholeScan()
    {
        const QStringList pieces{u"if x"_s,  u"/*"_s,       u"*/ else"_s, u"\"a\\"_s, u"b\" if"_s, u"`${"_s,
                                 u"}` if"_s, u"<<EOT if"_s, u"EOT"_s,     u""_s,      u"// /*"_s};
        for (quint32 seed = 1; seed <= 60; ++seed) {
            QRandomGenerator random(seed);
            const auto piece = [&] { return pieces[random.bounded(int(pieces.size()))]; };
            QStringList lines;
            for (int i = 0; i < 40; ++i)
                lines << piece();
            const auto live = std::make_shared<RuleScan>(SomeRules());
            LineColours colours;
            colours.Reset(live, int(lines.size()));
            const auto textOf = [&](int line) { return lines[line]; };
            for (int step = 0; step < 120; ++step) {
                const int first = random.bounded(int(lines.size()));
                const int removed = random.bounded(1, std::min(4, int(lines.size()) - first) + 1);
                const int added = random.bounded(1, 4);
                for (int i = 0; i < removed; ++i)
                    lines.removeAt(first);
                for (int i = 0; i < added; ++i)
                    lines.insert(first, piece());
                colours.LinesChanged(first, removed, added);
                QCOMPARE(colours.LineCount(), int(lines.size()));
                if (random.bounded(3) == 0)
                    continue; // several changes, unseen
                RuleScan whole(SomeRules());
                int state = RuleScan::Begin;
                std::vector<Token> expected;
                const int seen = random.bounded(int(lines.size())); // lines behind it are not asked for
                for (int line = 0; line <= seen; ++line) {
                    state = whole.ScanLine(lines[line], state, expected);
                    if (line < seen - 5)
                        continue;
                    QVERIFY2(
                        colours.TokensOf(line, textOf) == expected,
                        qPrintable(u"seed %1, step %2, line %3: %4"_s.arg(seed).arg(step).arg(line).arg(lines[line])));
                }
            }
        }
    }

    void keyInOneLine_onlyThatLineIsScanned()
    {
        QStringList lines(10000, u"if x"_s);
        const auto scan = std::make_shared<RuleScan>(SomeRules());
        LineColours colours;
        colours.Reset(scan, int(lines.size()));
        const auto textOf = [&](int line) { return lines[line]; };
        colours.TokensOf(9999, textOf);
        const qint64 before = colours.LinesScanned();
        lines[5000] += u"y"_s;
        colours.LinesChanged(5000, 1, 1);
        colours.TokensOf(9999, textOf);
        QVERIFY(colours.LinesScanned() - before <= 3);
    }

    void commentOpened_andClosedAgain_farLinesAreNotScannedTwice()
    {
        QStringList lines(10000, u"if x"_s);
        const auto scan = std::make_shared<RuleScan>(SomeRules());
        LineColours colours;
        colours.Reset(scan, int(lines.size()));
        const auto textOf = [&](int line) { return lines[line]; };
        colours.TokensOf(9999, textOf);
        lines[10] = u"/*"_s;
        colours.LinesChanged(10, 1, 1);
        QCOMPARE(colours.TokensOf(40, textOf), (std::vector<Token>{{0, 4, TokenKind::Comment}}));
        lines[10] = u"if x"_s;
        colours.LinesChanged(10, 1, 1);
        const qint64 before = colours.LinesScanned();
        QCOMPARE(colours.TokensOf(9999, textOf), (std::vector<Token>{{0, 2, TokenKind::Keyword}}));
        QVERIFY(colours.LinesScanned() - before < 50);
    }

    void noScan_noTokens()
    {
        LineColours colours;
        colours.Reset(nullptr, 3);
        QVERIFY(colours.TokensOf(1, [](int) { return u"if"_s; }).empty());
    }
};

QB_TEST_MAIN(LineColoursTest)
#include "tst_line_colours.moc"
