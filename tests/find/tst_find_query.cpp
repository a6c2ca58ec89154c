#include "find/FindMatcher.h"
#include "find/FindPlaces.h"
#include "find/FuzzyTitles.h"
#include "find/PageText.h"
#include "platform/system/RuntimeError.h"
#include "support/TestRun.h"

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

class TestFindQuery : public QObject {
    Q_OBJECT

private:
    static FindQuery Expression(const QString& pattern)
    {
        FindQuery query;
        query.Text = pattern;
        query.Mode = FindMode::Expression;
        return query;
    }
    static QString WhyRefused(const FindQuery& query)
    {
        try {
            const FindMatcher matcher(query);
        } catch (const RuntimeError& error) {
            return error.Number() == ErrorNumber::InvalidCall ? error.Description() : u"another error"_s;
        }
        return {};
    }
    static QStringList Titles(const FuzzyTitles& titles, const QString& typed)
    {
        QStringList found;
        for (const FuzzyTitles::Match& match : titles.Find(typed, 10))
            found << titles.TitleOf(match.Number);
        return found;
    }

private Q_SLOTS:
    void init() { FailOnWarnings(); }

    void emptyText_isRefused()
    {
        FindQuery query;
        QVERIFY(WhyRefused(query).contains(u"empty"_s));
        query.Mode = FindMode::AllWords;
        query.Text = u" \t\n"_s;
        QVERIFY(WhyRefused(query).contains(u"empty"_s));
        query.Mode = FindMode::Phrase;
        QCOMPARE(WhyRefused(query), QString()); // a blank is something
    }

    void tooManyWords_areRefusedWithTheirNumber()
    {
        FindQuery query;
        query.Mode = FindMode::AllWords;
        for (int i = 0; i < 65; ++i)
            query.Text += u"w%1 "_s.arg(i);
        QVERIFY(WhyRefused(query).contains(u"65"_s));
        query.Text.chop(4);
        QCOMPARE(WhyRefused(query), QString());
    }

    void phraseOfAMegabyte_isLookedFor()
    {
        FindQuery query;
        query.Text = QString(1 << 20, u'ä');
        QCOMPARE(RangesIn(u"xx"_s + query.Text, FindMatcher(query), 10), (std::vector<TextRange>{{2, 1 << 20}}));
        QVERIFY(!WhyRefused(Expression(QString(1 << 20, u'('))).isEmpty());
    }

    void invalidExpression_isRefusedWithItsPlace()
    {
        QVERIFY(WhyRefused(Expression(u"äb(c"_s)).contains(u"at character 5: missing closing parenthesis"_s));
        QVERIFY(WhyRefused(Expression(u"[a"_s)).contains(u"at character 3"_s));
        FindQuery query = Expression(u"a#b"_s);
        query.WholeWord = true;
        QCOMPARE(WhyRefused(query), QString());
        query.Text = u"(?x)a #b"_s;
        QVERIFY(WhyRefused(query).contains(u"whole words"_s));
    }

    void smartCase_countsWithACapitalOnly()
    {
        FindQuery query;
        query.Text = u"abc"_s;
        QVERIFY(!CountsCase(query));
        query.Text = u"aBc"_s;
        QVERIFY(CountsCase(query));
        query.Text = u"äÖ"_s;
        QVERIFY(CountsCase(query));
        query.Text = u"ǅ"_s; // the capital of a pair of letters
        QVERIFY(CountsCase(query));
        query = Expression(u"\\S+\\W"_s);
        QVERIFY(!CountsCase(query));
        query.Text = u"\\\\S"_s;
        QVERIFY(CountsCase(query));
    }

    void ranges_countLineEndsAsTheTextHasThem()
    {
        FindQuery query;
        query.Text = u"b\nc"_s;
        const FindMatcher matcher(query);
        QCOMPARE(RangesIn(u"a\r\nb\r\nc"_s, matcher, 9), (std::vector<TextRange>{{3, 4}}));
        QCOMPARE(RangesIn(u"a\nb\nc"_s, matcher, 9), (std::vector<TextRange>{{2, 3}}));
        query.Text = u"e"_s;
        query.FoldAccents = true;
        QCOMPARE(RangesIn(u"\U0001F600e\u0301x\r\né"_s, FindMatcher(query), 9),
                 (std::vector<TextRange>{{2, 2}, {7, 1}}));
    }

    void punctuation_countsExactly()
    {
        FindQuery query;
        for (const QString& text : {u"std::move"_s, u"$$"_s, u"->"_s, u"."_s, u"\\"_s, u"%_"_s}) {
            query.Text = text;
            QCOMPARE(RangesIn(u"a"_s + text + u"b"_s, FindMatcher(query), 9),
                     (std::vector<TextRange>{{1, text.size()}}));
            QCOMPARE(RangesIn(u"std:move $ - > |"_s, FindMatcher(query), 9).size(), size_t(0));
        }
    }

    void literals_areWhatAllMatchesHold_data()
    {
        QTest::addColumn<QString>("pattern");
        QTest::addColumn<QString>("literal");
        const auto row = [](const QString& pattern, const QString& literal) {
            QTest::newRow(qPrintable(pattern)) << pattern << literal;
        };
        row(u"abc"_s, u"abc"_s);
        row(u"ab?cde"_s, u"cde"_s);
        row(u"abc*"_s, u"ab"_s);
        row(u"abc+d"_s, u"abc"_s);
        row(u"foo|bar"_s, QString());
        row(u"(foo|bar)baz"_s, u"baz"_s);
        row(u"\\bstd::\\w+"_s, u"std::"_s);
        row(u"a\\.b\\(c"_s, u"a.b(c"_s);
        row(u"x{2,3}yz"_s, u"yz"_s);
        row(u"x{,3}yz"_s, u"yz"_s);
        row(u"[abc]def"_s, u"def"_s);
        row(u"[]x]def"_s, u"def"_s);
        row(u"[[:alpha:]]def"_s, u"def"_s);
        row(u"(?i)abc"_s, QString());
        row(u"(?x)a b c"_s, QString());
        row(u"\\Qa*\\E"_s, QString());
        row(u"(*UTF)abc"_s, QString());
        row(u"(?=abc)d"_s, u"d"_s);
        row(u"(a(b|c)*d)?ef"_s, u"ef"_s);
        row(u"a\\x41b"_s, QString());
    }
    void literals_areWhatAllMatchesHold()
    {
        QFETCH(const QString, pattern);
        QFETCH(const QString, literal);
        QCOMPARE(RequiredLiteral(pattern, false), literal);
    }
    void literalsOfAscii_leaveOtherCharactersOut() { QCOMPARE(RequiredLiteral(u"abäcde"_s, true), u"cde"_s); }

    void fields_haveNamesAndLetters()
    {
        QString letters;
        for (size_t i = 0; i < FindFields; ++i) {
            letters += LetterOf(FindField(i));
            QCOMPARE(FindFieldNamed(NameOf(FindField(i))), std::optional(FindField(i)));
            QCOMPARE(FindFieldNamed(LetterOf(FindField(i))), std::optional(FindField(i)));
        }
        QCOMPARE(letters, u"TDCNUFOLW"_s);
        QCOMPARE(FindFieldNamed(u"nothing"_s), std::optional<FindField>());
    }

    void pages_areWhatAReaderSees_data()
    {
        QTest::addColumn<QString>("html");
        QTest::addColumn<QString>("text");
        const auto row = [](const char* name, const QString& html, const QString& text) {
            QTest::newRow(name) << html << text;
        };
        row("blocks", u"<html><head><title>T</title></head><body><p>one  two</p>\n<p>three"_s, u"T\none two\nthree"_s);
        row("hidden", u"a<script>if (a<b) x();</script>b<style>p{}</style><!-- c > -->d"_s, u"abd"_s);
        row("entities", u"&lt;a&gt; &amp;amp; &#65;&#x42; &nope; & &uuml;"_s, u"<a> &amp; AB &nope; & ü"_s);
        row("quoted", u"a<img alt='x>y' title=\">\">b"_s, u"ab"_s);
        row("preformatted", u"<pre>a\n  b</pre>c"_s, u"a\n  b\nc"_s);
        row("no markup", u"a < b <3"_s, u"a < b <3"_s);
        row("cut off", u"text<p class='x"_s, u"text"_s);
        row("open comment", u"text<!-- x"_s, u"text"_s);
        row("open script", u"text<script>x"_s, u"text"_s);
    }
    void pages_areWhatAReaderSees()
    {
        QFETCH(const QString, html);
        QFETCH(const QString, text);
        QCOMPARE(TextOfPage(html), text);
    }

    void fuzzyTitles_comeInTheOrderOfTheirFit()
    {
        const FuzzyTitles titles({{1, u"Read a file"_s},
                                  {2, u"File"_s},
                                  {3, u"Profile"_s},
                                  {4, u"Find in lists of eggs"_s},
                                  {5, u"fileNames"_s},
                                  {6, u"Überblick"_s}});
        QCOMPARE(Titles(titles, u"file"_s),
                 QStringList({u"File"_s, u"fileNames"_s, u"Read a file"_s, u"Profile"_s, u"Find in lists of eggs"_s}));
        QCOMPARE(Titles(titles, u"file read"_s), QStringList({u"Read a file"_s}));
        QCOMPARE(Titles(titles, u"read file"_s), QStringList({u"Read a file"_s}));
        QCOMPARE(Titles(titles, u"fN"_s).first(), u"fileNames"_s);
        QCOMPARE(Titles(titles, u"uber"_s), QStringList({u"Überblick"_s}));
        QCOMPARE(Titles(titles, u" "_s), QStringList());
        QCOMPARE(Titles(titles, u"xyz"_s), QStringList());
        QCOMPARE(titles.Find(u"file"_s, 2).size(), size_t(2));
        QCOMPARE(titles.Find(u"a le"_s, 1)[0].Places, (std::vector<qsizetype>{5, 9, 10}));
    }
};

QB_TEST_MAIN(TestFindQuery)
#include "tst_find_query.moc"
