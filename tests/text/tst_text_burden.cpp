#include "support/TestRun.h"
#include "text/TextBurden.h"

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// What is too large for the boxes of the window, and what is shown of it.
class TestTextBurden : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { FailOnWarnings(); }

    void burden_isCountedOverTheRtf()
    {
        const TextBurden burden = BurdenOf(u"{\\rtf1\\b one\\b0\\par\r\ntwo \\u228?\\tab x\\line\\'e4\\{}"_s);
        QCOMPARE(burden.Lines, 3);
        QCOMPARE(burden.LongestLine, 7); // "two ", the letter, the tab and x
        QCOMPARE(burden.Characters, 3 + 7 + 2);
        QCOMPARE(burden.Words, 3); // rtf1, b, b0
        QCOMPARE(burden.WordsOfLine, 3);
    }

    void formattedText_bearsLessInALine()
    {
        const TextBurden burden = BurdenOf(u"\\b a\\b0 b"_s.repeated(10000));
        QCOMPARE(WhyTooLarge(burden, TextForm::Code), QString());
        QCOMPARE(WhyTooLarge(burden, TextForm::Formatted), u"the looks of one of its lines change 20,000 times"_s);
        QCOMPARE(WhyTooLarge(BurdenOf(QString(200000, u'x')), TextForm::Formatted),
                 u"one of its lines has 200,000 characters without a blank"_s);
        QCOMPARE(WhyTooLarge(BurdenOf(QString(200000, u'x')), TextForm::Code), QString());
        QCOMPARE(WhyTooLarge(BurdenOf(u"word "_s.repeated(100000)), TextForm::Formatted), QString());
    }

    void wordThatIsCutOff_isCounted_data()
    {
        QTest::addColumn<QString>("rtf");
        for (const char* rtf : {"\\", "\\'", "\\'e", "\\par", "\\u", "\\u12", "{\\"})
            QTest::newRow(rtf) << QString::fromLatin1(rtf);
    }
    void wordThatIsCutOff_isCounted()
    {
        QFETCH(QString, rtf);
        BurdenOf(rtf);
        BurdenOf(QString());
    }

    void textThatIsTooLarge_isToldByWhatIs_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("reason");
        QTest::newRow("none") << u"\\b a\\b0\\par "_s.repeated(100000) << QString();
        QTest::newRow("long line") << QString(3000000, u'x') << u"one of its lines has 3,000,000 characters"_s;
        QTest::newRow("8 MB of paragraphs") << u"\\par "_s.repeated(1600000) << u"it has 1,600,001 lines"_s;
        QTest::newRow("looks of a line") << u"\\b a\\b0 b"_s.repeated(100000)
                                         << u"the looks of one of its lines change 200,000 times"_s;
        QTest::newRow("looks of all lines")
            << u"\\b a\\b0\\i\\i0\\ul\\ul0\\par "_s.repeated(300000) << u"its looks change 1,800,000 times"_s;
    }
    void textThatIsTooLarge_isToldByWhatIs()
    {
        QFETCH(QString, text);
        QTEST(WhyTooLarge(BurdenOf(text), TextForm::Code), "reason");
    }

    void plainBegin_isShortAndSaysSo()
    {
        const QString shown = PlainBegin(u"{\\rtf1 first\\par "_s + QString(5000000, u'x') + u"}"_s, u"a reason"_s);
        QVERIFY(shown.startsWith(u"This text is too large to be shown whole and to be changed here: a reason."_s));
        QVERIFY(shown.contains(u"\r\nfirst\r\nxxx"_s));
        QVERIFY(shown.size() < 10000);
        QVERIFY(PlainBegin(u"{\\rtf1"_s + u"\\par "_s.repeated(1600000), u"r"_s).count(u'\n') < 3000);
    }
};

QB_TEST_MAIN(TestTextBurden)
#include "tst_text_burden.moc"
