// What the rules of a language make of a text: each form of rule with its options, on definitions of
// this test's own. The definitions that come with the program are held against samples elsewhere.

#include "support/TestRun.h"
#include "text/Marks.h"

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

class TestRuleScan : public QObject {
    Q_OBJECT

private:
    /// The marks of a text, lines parted by LF.
    static QString Marks(const QString& rules, const QString& text)
    {
        const auto made = std::make_shared<LanguageRules>(rules, QStringList{u"if"_s, u"end"_s},
                                                          QStringList{u"plain"_s});
        if (!made->Problems().isEmpty())
            return made->Problems().join(u'\n');
        RuleScan scan(made);
        return FromMarkedText(MarkedText(text, scan)).Marks.join(u'\n');
    }

private Q_SLOTS:
    void init() { FailOnWarnings(); }

    void rule_paintsWhatItSays_data()
    {
        QTest::addColumn<QString>("rules");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("marks");
        const auto row = [](const char* name, const QString& rules, const QString& text, const QString& marks) {
            QTest::newRow(name) << rules << text << marks;
        };
        row("words of the definition", u"line: #"_s, u"if endx end"_s, u"kk      kkk"_s);
        row("capitals count", u"line: #"_s, u"IF if"_s, u"   kk"_s);
        row("capitals don't count", u"case: fold\nline: rem whole-word"_s, u"IF x REM if\nremx"_s, u"kk   cccccc\n"_s);
        row("a plain word is never painted", u"words type: plain other"_s, u"plain other"_s, u"      ttttt"_s);
        row("a plain word in a context", u"enter: ` t kind=string\ncontext: t kind=string words=none"_s,
            u"`a plain b"_s, u"ssssssssss"_s);
        row("a line of many pieces", u"line: #"_s, QString(u"if "_s).repeated(2000),
            QString(u"kk "_s).repeated(2000).chopped(1));
        row("the first kind counts", u"words type: a\nwords builtin: a"_s, u"a"_s, u"t"_s);
        row("a member's name is no keyword", u"member: . ->\nwords type: t"_s, u"x.if x->end if"_s,
            u"            kk"_s);
        row("word characters", u"word: -\nword-inner: ?\nwords builtin: a-b c?"_s, u"a-b a c? ?c"_s, u"bbb   bb"_s);
        row("line comment", u"line: //"_s, u"a // if\nif"_s, u"  ccccc\nkk"_s);
        row("the longest opener wins", u"line: #\nblock: #| |# lines"_s, u"#| a\n|# # b"_s, u"cccc\ncc ccc"_s);
        row("line comment behind a blank", u"line: # after-blank"_s, u"a#b #c\n#d"_s, u"    cc\ncc"_s);
        row("line comment at the first place", u"line: * first"_s, u"  * a\nb * c"_s, u"  ccc\n"_s);
        row("line comment at the begin", u"line: * at-line-begin"_s, u" * a\n* c"_s, u"\nccc"_s);
        row("line comment that goes on", u"line: // escape=\\"_s, u"// a\\\nb\nif"_s, u"ccccc\nc\nkk"_s);
        row("an escaped continuation is none", u"line: // escape=\\\nstring: \" \" escape=\\"_s,
            u"// a\\\\\nif\n\"a\\\\\nif"_s, u"cccccc\nkk\nssss\nkk"_s);
        row("block comment over lines", u"block: /* */ lines"_s, u"a /* b\nif\n*/ if"_s, u"  cccc\ncc\ncc kk"_s);
        row("block comment of one line", u"block: /* */"_s, u"/* b\nif"_s, u"cccc\nkk"_s);
        row("nested comment", u"block: {- -} nested lines"_s, u"{- {- -} if -} if"_s, u"cccccccccccccc kk"_s);
        row("comment that doesn't nest", u"block: /* */ lines"_s, u"/* /* */ if */"_s, u"cccccccc kk"_s);
        row("block at the line's begin", u"block: =b =e lines at-line-begin"_s, u"x =b\n=b\nif\n=e if"_s,
            u"\ncc\ncc\ncc kk"_s);
        row("string with escape", u"string: \" \" escape=\\"_s, u"\"a\\\"b\" if"_s, u"ssssss kk"_s);
        row("string that ends with its line", u"string: \" \""_s, u"\"a\nif"_s, u"ss\nkk"_s);
        row("string that an escape carries on", u"string: \" \" escape=\\"_s, u"\"a\\\nif\" if"_s, u"sss\nsss kk"_s);
        row("doubled quotes", u"string: ' ' escape=double"_s, u"'it''s' if"_s, u"sssssss kk"_s);
        row("string over lines", u"string: \"\"\" \"\"\" lines\nstring: \" \""_s, u"\"\"\"a \" b\nif\"\"\" \"x\""_s,
            u"ssssssss\nsssss sss"_s);
        row("prefixes", u"string: \" \" prefix=r,br"_s, u"r\"a\" br\"b\" \"c\" xr\"d\""_s, u"ssss sssss sss   sss"_s);
        row("prefixes that have to be", u"string: \" \" prefixed=r kind=type"_s, u"r\"a\" \"c"_s, u"tttt"_s);
        row("interpolation keeps the string's colour", u"string: \" \" escape=\\ interpolate=${,}"_s,
            u"\"a${f(\"x\", {if})} b\" if"_s, u"ssssssssssssssssssss kk"_s);
        row("interpolation that begins with the escape", u"string: \" \" escape=\\ interpolate=\\(,)"_s,
            u"\"a \\(f(\"x\")) b\" if"_s, u"sssssssssssssss kk"_s);
        row("a range is no member", u"member: . ::"_s, u"a..if ...if x.if x::if"_s, u"   kk    kk"_s);
        row("interpolation over lines", u"string: ` ` lines interpolate=${,}"_s, u"`a${if\n`b` }c` if"_s,
            u"ssssss\nsssssss kk"_s);
        row("raw string with a mark", u"raw: R\"%( )%\" mark=any lines"_s, u"R\"x(a)\" b\n)x\" if"_s,
            u"sssssssss\nsss kk"_s);
        row("raw string with hashes", u"raw: r%\" \"% mark=hash lines"_s, u"r##\"a\"# \"## if r\"x\""_s,
            u"sssssssssss kk ssss"_s);
        row("raw comment of equal signs", u"line: --\nraw: --[%[ ]%] mark=equals lines kind=comment"_s,
            u"--[==[ ]] ]=]\n]==] if\n-- if"_s, u"ccccccccccccc\ncccc kk\nccccc"_s);
        row("heredoc", u"heredoc: << indented=-~ spaced"_s, u"f <<EOT, if\n EOT\nif\nEOT\nif"_s,
            u"  sssss  kk\nssss\nss\nsss\nkk"_s);
        row("heredoc that may be indented", u"heredoc: << indented=-"_s, u"<<-'E O'\nif\n  E O\nif"_s,
            u"ssssssss\nss\nsssss\nkk"_s);
        row("two heredocs of one line", u"heredoc: <<"_s, u"<<A <<B\na\nA\nb\nB\nif"_s, u"sss sss\ns\ns\ns\ns\nkk"_s);
        row("heredoc with code behind its end", u"heredoc: <<< indented=* loose"_s, u"<<<E\n x\n E; if"_s,
            u"ssss\nss\nss  kk"_s);
        row("no heredoc", u"heredoc: <<"_s, u"a << b <<1"_s, u"         n"_s);
        row("character and lifetime", u"char: ' escape=\\"_s, u"'a' 'b: '\\'' '\\u{1F}' 'if"_s,
            u"sss     ssss ssssssss  kk"_s);
        row("character behind a word", u"char: ' not-after-word"_s, u"x'a' 'b'"_s, u"     sss"_s);
        row("regular expression", u"regex: / after=return"_s, u"a = /[/\"]x/g; b / c / d; return /if/"_s,
            u"    ssssssss                    ssss"_s);
        row("quotes of the text's choice", u"quote: q,qq lines"_s, u"q(a(b)c) qq{x\nif} if q => 1"_s,
            u"ssssssss ssss\nsss kk      n"_s);
        row("two parts", u"quote: s parts=2 escape=\\\nquote: tr parts=2"_s, u"s/a\\/b/c/gi if tr{a} {b} if"_s,
            u"sssssssssss kk sssss sss kk"_s);
        row("sigils", u"sigil: $ braces special=@0"_s, u"$a1 ${b c} $@ $12 $, $"_s, u"vvv vvvvvv vv vvv"_s);
        row("dotted sigil", u"sigil: @ dotted kind=annotation"_s, u"@a.b.c (@ x"_s, u"aaaaaa"_s);
        row("numbers", u"number-separator: '"_s, u"1 0x1F 1.5e-3f 1'000 1..2 a1 .5 3.x 0b1_0 1.e"_s,
            u"n nnnn nnnnnnn nnnnn n  n    nn n   nnnnn nnn"_s);
        row("number prefixes", u"number-prefix: &H $"_s, u"&HFF $1a &x"_s, u"nnnn nnn"_s);
        row("match", u"match: annotation at=@ @\\w+!"_s, u"@a! @b"_s, u"aaa"_s);
        row("match of a group", u"match: label first (\\w+)\\s*:"_s, u"  key : key :\nif"_s, u"  lll\nkk"_s);
        row("match of words", u"match: builtin at=word \\w+(?=\\()"_s, u"f(if) g"_s, u"b kk"_s);
        row("contexts",
            u"enter: { in kind=keyword\ncontext: in kind=string words=none\nleave: } kind=keyword\nenter: { in"_s,
            u"if {if {a} b} if"_s, u"kk ksss skssk kk"_s);
        row("context of a line",
            u"enter: # directive first kind=preprocessor\ncontext: directive line continue=\\ include=main\nwords "
            "preprocessor: once"_s,
            u"#x once \\\nonce\nonce"_s, u"p  pppp\npppp\n"_s);
        row("comment out of a context of a line",
            u"block: /* */ lines\nenter: # d first\ncontext: d line include=main\nwords preprocessor: once"_s,
            u"# /*\n*/ once"_s, u"  cc\ncc"_s);
        row("skipped", u"string: \" \"\nskip: \\\""_s, u"\\\" if \"a\""_s, u"   kk sss"_s);
        row("followers", u"line: # follow=!\nline: % not-follow=%"_s, u"#a\n#!a\n%%\n%a"_s, u"\nccc\n c\ncc"_s);
    }

    void rule_paintsWhatItSays()
    {
        QFETCH(QString, rules);
        QFETCH(QString, text);
        QFETCH(QString, marks);
        QCOMPARE(Marks(rules, text), marks);
    }

    void ruleThatCantBeUnderstood_isNamedWithItsLineAndPassedOver_data()
    {
        QTest::addColumn<QString>("line");
        for (const char* line : {"lin: //", "line:", "line: // sometimes", "block: /*", "string: \" \" kind=colour",
                                 "match: label x", "match: label at=x (", "match: nothing at=x x", "words verb: a",
                                 "case: any", "context: c colour=red", "raw: [%[ ]%] mark=stars", "nonsense"})
            QTest::newRow(line) << QString::fromLatin1(line);
    }

    void ruleThatCantBeUnderstood_isNamedWithItsLineAndPassedOver()
    {
        QFETCH(QString, line);
        const auto made = std::make_shared<LanguageRules>(u"line: #\n"_s + line + u"\nwords type: t"_s, QStringList(),
                                                          QStringList());
        QCOMPARE(made->Problems(), QStringList{u"line 2: '%1' is no rule."_s.arg(line)});
        RuleScan scan(made);
        std::vector<Token> tokens;
        scan.ScanLine(u"t #", RuleScan::Begin, tokens);
        QCOMPARE(MarksOf(u"t #", tokens), u"t c"_s);
    }

    void halfASurrogate_isNoMatchAndEndsNothing()
    {
        RuleScan scan(
            std::make_shared<LanguageRules>(u"match: label at=@ @\\w+\nline: #"_s, QStringList(), QStringList()));
        QString line = u"@a #c"_s;
        line.insert(3, QChar(0xd800));
        std::vector<Token> tokens;
        scan.ScanLine(line, RuleScan::Begin, tokens);
        QCOMPARE(MarksOf(line, tokens), u"    cc"_s);
    }

    void contextThatIsNotThere_isNamed()
    {
        QCOMPARE(LanguageRules(u"enter: { nowhere"_s, {}, {}).Problems(),
                 QStringList{u"There is no context 'nowhere'."_s});
    }

    void definitionWithoutRules_paintsNothing()
    {
        QVERIFY(!LanguageRules(u"spelling: keep\nfiles: *.x"_s, {u"if"_s}, {}).Paints());
        QVERIFY(LanguageRules(u"line: #"_s, {}, {}).Paints());
    }

    /// Rules of somebody else's making neither hang nor overflow.
    void rulesThatGoOnForEver_end()
    {
        const QString text = QString(u"aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa!"_s).repeated(40);
        for (const QString& rules : {u"match: label at=a (a+)+b"_s,
                                     u"match: label at=a enter=x (?=a)\ncontext: x\nmatch: label at=a leave (?=a)"_s,
                                     u"enter: a x\ncontext: x\nenter: a x"_s, u"block: a a nested lines"_s,
                                     u"string: a b interpolate=a,b lines"_s, u"context: x include=x\nline: #"_s}) {
            RuleScan scan(std::make_shared<LanguageRules>(rules, QStringList(), QStringList()));
            std::vector<Token> tokens;
            int state = RuleScan::Begin;
            for (int line = 0; line < 20; ++line)
                state = scan.ScanLine(text, state, tokens);
            QVERIFY(tokens.size() <= size_t(text.size()));
        }
    }
};

QB_TEST_MAIN(TestRuleScan)
#include "tst_rule_scan.moc"
