#include "support/RichTextDescription.h"
#include "support/TestRun.h"
#include "text/KeywordSet.h"

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

class TestKeywordSet : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { FailOnWarnings(); }

    void word_isFoundInTheSpellingOfTheSet_data()
    {
        QTest::addColumn<QString>("set");
        QTest::addColumn<QString>("word");
        QTest::addColumn<QString>("found");
        const QString set = u"*#If*End If*Dim*x_1*DIM*Größe*dim2*a.b*"_s;
        QTest::newRow("as it is") << set << u"Dim"_s << u"Dim"_s;
        QTest::newRow("lower case") << set << u"dim"_s << u"Dim"_s;
        QTest::newRow("the first spelling wins") << set << u"DIM"_s << u"Dim"_s;
        QTest::newRow("underscore and digit") << set << u"X_1"_s << u"x_1"_s;
        QTest::newRow("beyond letters") << set << u"#if"_s << u"#If"_s;
        QTest::newRow("with a blank") << set << u"end if"_s << u"End If"_s;
        QTest::newRow("with a dot") << set << u"A.B"_s << u"a.b"_s;
        QTest::newRow("beyond ASCII") << set << u"GRößE"_s << u"Größe"_s;
        QTest::newRow("first half of a word") << set << u"En"_s << QString();
        QTest::newRow("part of a word") << set << u"If"_s << QString();
        QTest::newRow("word and more") << set << u"Dim2x"_s << QString();
        QTest::newRow("longer one of two") << set << u"dim2"_s << u"dim2"_s;
        QTest::newRow("last one") << u"*a*b*"_s << u"B"_s << u"b"_s;
        QTest::newRow("only one") << u"*a*"_s << u"A"_s << u"a"_s;
        QTest::newRow("empty set") << QString() << u"a"_s << QString();
        QTest::newRow("set of no words") << u"*"_s << u"a"_s << QString();
        QTest::newRow("word without its end") << u"*a*b"_s << u"b"_s << QString();
        QTest::newRow("word without its begin") << u"a*b*"_s << u"a"_s << QString();
        QTest::newRow("behind an empty word") << u"*a**b*"_s << u"b"_s << u"b"_s;
    }

    void word_isFoundInTheSpellingOfTheSet()
    {
        QFETCH(QString, set);
        QFETCH(QString, word);
        QFETCH(QString, found);
        const KeywordSet keywords(set);
        QCOMPARE(keywords.Text(), set);
        QCOMPARE(keywords.Find(word).toString(), found);
        QCOMPARE(keywords.Find(word).isNull(), found.isEmpty());
    }

    void newSet_holdsNothing()
    {
        QVERIFY(KeywordSet().Find(u"a").isNull());
        QCOMPARE(KeywordSet().Text(), QString());
    }

    void copy_findsInItsOwnText()
    {
        auto keywords = std::make_unique<KeywordSet>(u"*Dim*Else*"_s);
        const KeywordSet copy = *keywords;
        keywords.reset();
        QCOMPARE(copy.Find(u"ELSE").toString(), u"Else"_s);
    }

    void fiveThousandWords_areFoundAsByASearchOfTheText()
    {
        Dice dice(1);
        static const QString letters = u"abAB_19#"_s;
        const auto word = [&dice] {
            QString text;
            for (int i = 1 + dice.Roll(7); i > 0; --i)
                text += letters[dice.Roll(letters.size())];
            return text;
        };
        QString set = u"*"_s;
        for (int i = 0; i < 5000; ++i)
            set += word() + u'*';
        const KeywordSet keywords(set);
        int found = 0;
        for (int i = 0; i < 20000; ++i) {
            const QString one = word();
            const qsizetype at = set.indexOf(u'*' + one + u'*', 0, Qt::CaseInsensitive);
            found += at >= 0;
            QCOMPARE(keywords.Find(one).toString(), at < 0 ? QString() : set.mid(at + 1, one.size()));
        }
        QVERIFY(found > 1000 && found < 19000);
    }
};

QB_TEST_MAIN(TestKeywordSet)
#include "tst_keywordset.moc"
