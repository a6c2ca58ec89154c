#include "platform/richtext/RtfPlainText.h"
#include "support/TestRun.h"

#include <algorithm>

using namespace qb;
using namespace Qt::StringLiterals;

namespace {

/// A document with @p body as another program writes it.
QString Document(const QString& body)
{
    return u"{\\rtf1\\ansi\\ansicpg1252\\deff0{\\fonttbl{\\f0\\fswiss Arial;}{\\f1 Courier New;}}"
           "{\\colortbl ;\\red255\\green0\\blue0;}\r\n\\viewkind4\\uc1\\pard\\f0\\fs20 "_s
           + body + u"}"_s;
}

} // namespace

class TestRtfPlainText : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { qb::test::FailOnWarnings(); }

    // Writing and reading back

    void text_comesBack_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("back");
        const auto same = [](const char* name, const QString& text) { QTest::newRow(name) << text << text; };
        same("empty", {});
        same("one line", u"Hello"_s);
        same("CR LF", u"one\r\ntwo\r\n\r\nfour"_s);
        same("line end at the end", u"one\r\n"_s);
        same("only line ends", u"\r\n\r\n"_s);
        QTest::newRow("LF") << u"one\ntwo\n"_s << u"one\r\ntwo\r\n"_s;
        QTest::newRow("CR") << u"one\rtwo\r"_s << u"one\r\ntwo\r\n"_s;
        QTest::newRow("mixed line ends") << u"a\r\rb\n\r\nc\n\rd"_s << u"a\r\n\r\nb\r\n\r\nc\r\n\r\nd"_s;
        same("tabs", u"\tint\tx;\t"_s);
        same("blanks", u"  x  y  "_s);
        same("backslashes and braces", u"{ \"C:\\\\par\\n\" } \\{ }}{{ \\"_s);
        same("words of the format", u"\\par \\u228? \\'e4 {\\rtf1}"_s);
        same("digits behind a tab", u"\t1 2"_s);
        same("umlauts", u"äöüßÄÖÜ é ñ"_s);
        same("marks behind beyond ASCII", u"ä?ö ü1ß-2"_s);
        same("beyond the code page", u"Ω漢字€–“”"_s);
        same("surrogates", u"a😀b𝄞c"_s);
        same("lone surrogate", u"a"_s + QChar(0xd83d) + u"b"_s);
        same("highest numbers", QString(QChar(0x7fff)) + QChar(0x8000) + QChar(0xfffd));
        same("control characters", u"a\001b\033c\177d"_s);
        same("form feed and vertical tab", u"a\fb\vc"_s);
        same("NUL", u"a\0b"_s);
        same("long line", QString(200000, u'x') + u'ä');
        same("many lines", u"line\r\n"_s.repeated(20000));
    }

    void text_comesBack()
    {
        QFETCH(QString, text);
        const QString rtf = RtfFromPlainText(text, CodeFont);
        QVERIFY(std::all_of(rtf.begin(), rtf.end(), [](QChar c) { return c.unicode() < 0x80 && c.unicode() != 0; }));
        QTEST(PlainTextFromRtf(rtf), "back");
    }

    void emptyText_givesAnEmptyString() { QCOMPARE(RtfFromPlainText({}, CodeFont), QString()); }

    void font_isWrittenWithItsSizeInHalfPoints()
    {
        const QString rtf = RtfFromPlainText(u"x"_s, {.Name = u"Größe {1}"_s, .Points = 12});
        QVERIFY(rtf.contains(u"Gr\\u246?\\u223?e \\{1\\};"_s));
        QVERIFY(rtf.contains(u"\\fs24 "_s));
        QCOMPARE(PlainTextFromRtf(rtf), u"x"_s);
    }

    // Other programs' texts

    void document_isRead_data()
    {
        QTest::addColumn<QString>("body");
        QTest::addColumn<QString>("text");
        QTest::newRow("paragraphs") << u"one\\par\r\ntwo\\par three"_s << u"one\r\ntwo\r\nthree"_s;
        QTest::newRow("line ends of the file") << u"one\r\ntwo\nthree"_s << u"onetwothree"_s;
        QTest::newRow("escaped line end") << u"one\\\ntwo"_s << u"one\r\ntwo"_s;
        QTest::newRow("escapes") << u"\\\\ \\{ \\}"_s << u"\\ { }"_s;
        QTest::newRow("hex, Latin") << u"gr\\'fc\\'DFe"_s << u"grüße"_s;
        QTest::newRow("hex, code page 1252") << u"\\'80 \\'93x\\'94 \\'96 \\'85"_s << u"€ “x” – …"_s;
        QTest::newRow("hex, not hex") << u"a\\'zzb"_s << u"azzb"_s;
        QTest::newRow("Unicode, one mark") << u"\\u228?b"_s << u"äb"_s;
        QTest::newRow("Unicode, hex mark") << u"\\u8364\\'80b"_s << u"€b"_s;
        QTest::newRow("Unicode, blank behind") << u"\\u228 ?b"_s << u"äb"_s;
        QTest::newRow("Unicode, no mark") << u"{\\uc0\\u228 b}"_s << u"äb"_s;
        QTest::newRow("Unicode, two marks") << u"{\\uc2\\u28450\\'8a\\'bfb}"_s << u"漢b"_s;
        QTest::newRow("Unicode, count holds for its group") << u"{\\uc0\\u228}\\u246?b"_s << u"äöb"_s;
        QTest::newRow("Unicode, negative") << u"\\u-10179?\\u-8704?"_s << u"😀"_s;
        QTest::newRow("Unicode, above 32767") << u"\\u55357?\\u56832?"_s << u"😀"_s;
        QTest::newRow("Unicode, marks end at the group") << u"{\\u228}b"_s << u"äb"_s;
        QTest::newRow("Unicode, a word as its mark") << u"\\u8212\\emdash x"_s << u"—x"_s;
        QTest::newRow("Unicode, an escape as its mark") << u"\\u8260\\{x"_s << u"⁄x"_s;
        QTest::newRow("formatted runs") << u"a{\\b bold}{\\i\\cf1  red}\\b0\\cf0 c"_s << u"abold redc"_s;
        QTest::newRow("nested groups") << u"{a{b{c}d}e}"_s << u"abcde"_s;
        QTest::newRow("special characters")
            << u"\\lquote x\\rquote\\endash\\emdash\\bullet\\~\\_"_s << u"‘x’–—•\u00a0\u2011"_s;
        QTest::newRow("tab and line") << u"a\\tab b\\line c"_s << u"a\tb\r\nc"_s;
        QTest::newRow("table") << u"\\trowd a\\cell b\\cell\\row c\\cell d\\cell\\row"_s << u"a\tb\r\nc\td\r\n"_s;
        QTest::newRow("unknown words") << u"a\\nosuchword12 b\\another-3c"_s << u"abc"_s;
        QTest::newRow("unknown symbols") << u"a\\|b\\:c"_s << u"abc"_s;
        QTest::newRow("optional hyphen") << u"a\\-b"_s << u"a\u00adb"_s;
        QTest::newRow("marked destination") << u"a{\\*\\generator Writer 1.0;}b{\\*\\unknown{x}y}c"_s << u"abc"_s;
        QTest::newRow("style sheet and info") << u"{\\stylesheet{\\s1 heading;}}{\\info{\\title T}}x"_s << u"x"_s;
        QTest::newRow("picture") << u"a{\\pict\\pngblip 89504e47}b"_s << u"a\ufffcb"_s;
        QTest::newRow("field") << u"{\\field{\\*\\fldinst HYPERLINK \"http://x\"}{\\fldrslt link}}"_s << u"link"_s;
        QTest::newRow("header and footer") << u"{\\header top}{\\footer bottom}x"_s << u"x"_s;
        QTest::newRow("binary") << u"a\\bin5 {}\\}{b"_s << u"ab"_s;
        QTest::newRow("binary in a picture") << u"{\\pict\\bin3 }}}}c"_s << u"c"_s;
        QTest::newRow("binary, longer than the file") << u"a\\bin999999999 rest"_s << u"arest"_s;
        QTest::newRow("binary, negative") << u"a\\bin-5 b"_s << u"ab"_s;
        QTest::newRow("number out of range") << u"a\\fs99999999999999999999 b"_s << u"ab"_s;
        QTest::newRow("closing braces too many") << u"a}}}b"_s << u"ab"_s;
        QTest::newRow("groups never closed") << u"a{{{b"_s << u"ab"_s;
        QTest::newRow("NUL behind the end") << u"a}\0"_s << u"a"_s;
    }

    void document_isRead()
    {
        QFETCH(QString, body);
        QTEST(PlainTextFromRtf(Document(body)), "text");
    }

    void documentCutAnywhere_givesTheBeginningOfItsText()
    {
        const QString rtf = Document(u"Gr\\'fc\\'dfe {\\b\\u8364\\'80 fett}\\par\r\n{\\*\\x y}\\uc2\\u28450\\'8a\\'bf "
                                     "{\\pict\\bin4 {{{{}\\line\\tab\\emdash end\\\\\\{\\}"_s);
        const QString whole = PlainTextFromRtf(rtf);
        QCOMPARE(whole, u"Grüße € fett\r\n漢 \r\n\t—end\\{}"_s);
        for (qsizetype length = Document({}).size(); length < rtf.size(); ++length) {
            // A number that is cut gives another character, so the last one is not compared.
            const QString text = PlainTextFromRtf(rtf.left(length));
            const qsizetype compared = qMax(text.size() - 1, 0);
            QCOMPARE(text.left(compared), whole.left(compared));
        }
    }

    void deepNesting_isRead()
    {
        constexpr qsizetype Depth = 100000;
        const QString rtf = Document(u"a"_s + u"{"_s.repeated(Depth) + u"b"_s + u"}"_s.repeated(Depth) + u"c"_s);
        QCOMPARE(PlainTextFromRtf(rtf), u"abc"_s);
    }

    void deepNestingNeverClosed_isRead()
    {
        QCOMPARE(PlainTextFromRtf(Document(u"a"_s + u"{\\b "_s.repeated(100000) + u"b"_s)), u"ab"_s);
    }

    void deepNestingInASkippedGroup_staysSkipped()
    {
        constexpr qsizetype Depth = 100000;
        const QString rtf = Document(u"a{\\*\\x "_s + u"{"_s.repeated(Depth) + u"b"_s + u"}"_s.repeated(Depth)
                                     + u"b}c"_s);
        QCOMPARE(PlainTextFromRtf(rtf), u"ac"_s);
    }

    void textThatIsNoRtf_passesThrough_data()
    {
        QTest::addColumn<QString>("text");
        QTest::newRow("empty") << QString();
        QTest::newRow("plain") << u"int main() { return '\\n'; }\r\n"_s;
        QTest::newRow("line ends as they are") << u"a\nb\rc"_s;
        QTest::newRow("mark not at the begin") << u" {\\rtf1 x}"_s;
        QTest::newRow("half of the mark") << u"{\\rt"_s;
    }

    void textThatIsNoRtf_passesThrough()
    {
        QFETCH(QString, text);
        QCOMPARE(PlainTextFromRtf(text), text);
    }
};

QB_TEST_MAIN(TestRtfPlainText)
#include "tst_rtfplaintext.moc"
