// Reading RTF as other programs write it, and as damage leaves it.

#include "platform/richtext/Rtf.h"
#include "support/RichTextDescription.h"
#include "support/TestRun.h"

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

namespace {

RichTextDocument Read(const QString& rtf)
{
    RichTextDocument document;
    ReadRtf(rtf, document);
    return document;
}

/// A document with some fonts, colours and lists; @p body begins plain.
QString File(const QString& body)
{
    return u"{\\rtf1\\ansi\\ansicpg1252\\deff0{\\fonttbl{\\f0\\fswiss\\fcharset0 Arial;}{\\f1\\fmodern\\fcharset0 "
           "Mono;}"
           "{\\f2\\fnil\\fcharset204 Cyr;}}{\\colortbl ;\\red255\\green0\\blue0;\\red1\\green2\\blue3;}"
           "{\\*\\listtable{\\list\\listtemplateid1{\\listlevel\\levelnfc0\\levelstartat1{\\leveltext\\'02\\'00.;}{"
           "\\levelnumbers\\'01;}}"
           "{\\listlevel\\levelnfc4{\\leveltext\\'02\\'01);}{\\levelnumbers\\'01;}}{\\listlevel\\levelnfc23{"
           "\\leveltext\\'01\\u8226 ?;}}"
           "\\listid11}{\\list{\\listlevel\\levelnfc23\\levelnfcn23{\\leveltext\\'01\\'b7;}}\\listid12}{\\list{"
           "\\listlevel\\levelnfc2}\\listid13}}"
           "{\\*\\listoverridetable{\\listoverride\\listid12\\listoverridecount0\\ls1}{\\listoverride\\listid11\\ls2}"
           "{\\listoverride\\listid13\\ls3}}"
           "\\pard\\plain\\f0\\fs20 "_s
           + body + u"}"_s;
}

/// The look of the character that is 'x' in @p body.
QString LookOfX(const QString& body)
{
    const RichTextDocument document = Read(File(body));
    const qsizetype at = document.Text().indexOf(u'x');
    return at < 0 ? u"no x in "_s + document.Text() : DescribeFormat(document, document.FormatAt(at));
}

/// The stand of the paragraph that holds 'x'.
QString StandOfX(const QString& body)
{
    const RichTextDocument document = Read(File(body));
    const qsizetype at = document.Text().indexOf(u'x');
    return at < 0 ? u"no x in "_s + document.Text() : DescribeParagraph(document, document.ParagraphAt(at));
}

QString TextOf(const QString& body)
{
    return Read(File(body)).Text();
}

} // namespace

class TestRtfReader : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { FailOnWarnings(); }

    void characterWords_giveTheirLook_data()
    {
        QTest::addColumn<QString>("body");
        QTest::addColumn<QString>("look");
        const auto add = [](const char* name, const QString& body, const QString& look) {
            QTest::newRow(name) << body << look;
        };
        add("nothing", u"x"_s, u"Arial,swiss,0,20"_s);
        add("font", u"\\f1 x"_s, u"Mono,modern,0,20"_s);
        add("font of another character set", u"\\f2 x"_s, u"Cyr,nil,204,20"_s);
        add("font that is not there", u"\\f9 x"_s, u"Arial,swiss,0,20"_s);
        add("size", u"\\fs37 x"_s, u"Arial,swiss,0,37"_s);
        add("size without a number", u"\\fs x"_s, u"Arial,swiss,0,24"_s);
        add("bold", u"\\b x"_s, u"Arial,swiss,0,20,bold"_s);
        add("bold off", u"\\b\\b0 x"_s, u"Arial,swiss,0,20"_s);
        add("italic", u"\\i x"_s, u"Arial,swiss,0,20,italic"_s);
        add("underline", u"\\ul x"_s, u"Arial,swiss,0,20,underline"_s);
        add("underline off", u"\\ul\\ul0 x"_s, u"Arial,swiss,0,20"_s);
        add("no underline", u"\\ul\\ulnone x"_s, u"Arial,swiss,0,20"_s);
        add("double underline", u"\\uldb x"_s, u"Arial,swiss,0,20,underline"_s);
        add("strike", u"\\strike x"_s, u"Arial,swiss,0,20,strike"_s);
        add("protect", u"\\protect x"_s, u"Arial,swiss,0,20,protected"_s);
        add("protect off", u"\\protect\\protect0 x"_s, u"Arial,swiss,0,20"_s);
        add("colour, red in the low byte", u"\\cf1 x"_s, u"Arial,swiss,0,20,color 0000ff"_s);
        add("colour of three parts", u"\\cf2 x"_s, u"Arial,swiss,0,20,color 030201"_s);
        add("automatic colour", u"\\cf1\\cf0 x"_s, u"Arial,swiss,0,20"_s);
        add("colour that is not there", u"\\cf77 x"_s, u"Arial,swiss,0,20"_s);
        add("negative colour", u"\\cf-1 x"_s, u"Arial,swiss,0,20"_s);
        add("background", u"\\cb1 x"_s, u"Arial,swiss,0,20,back 0000ff"_s);
        add("highlight", u"\\highlight2 x"_s, u"Arial,swiss,0,20,back 030201"_s);
        add("shading", u"\\chcbpat2 x"_s, u"Arial,swiss,0,20,back 030201"_s);
        add("plain", u"\\f1\\b\\i\\ul\\strike\\cf1\\highlight1\\plain x"_s, u"Arial,swiss,0,24"_s);
        add("group takes its look with it", u"{\\b\\cf1 a}x"_s, u"Arial,swiss,0,20"_s);
        add("group begins as its surroundings", u"\\b{\\i x}"_s, u"Arial,swiss,0,20,bold,italic"_s);
        add("paragraph keeps the look", u"\\b a\\par x"_s, u"Arial,swiss,0,20,bold"_s);
        add("new paragraph keeps the look", u"\\b a\\par\\pard x"_s, u"Arial,swiss,0,20,bold"_s);
        add("unknown word", u"\\b\\nosuch3 x"_s, u"Arial,swiss,0,20,bold"_s);
    }

    void characterWords_giveTheirLook()
    {
        QFETCH(QString, body);
        QTEST(LookOfX(body), "look");
    }

    void fontTable_isReadInAllItsForms_data()
    {
        QTest::addColumn<QString>("table");
        QTest::addColumn<QString>("look");
        QTest::newRow("plain") << u"{\\f5\\froman\\fcharset238\\fprq2 Times New Roman;}"_s
                               << u"Times New Roman,roman,238,24"_s;
        QTest::newRow("without groups") << u"\\f4\\fnil Other;\\f5\\fscript Script;"_s << u"Script,script,0,24"_s;
        QTest::newRow("with an alternative") << u"{\\f5\\fdecor{\\*\\falt Arial}Name;}"_s << u"Name,decor,0,24"_s;
        QTest::newRow("with panose") << u"{\\f5\\fbidi{\\*\\panose 020b0604020202020204}Name;}"_s
                                     << u"Name,bidi,0,24"_s;
        QTest::newRow("with a theme") << u"{\\flomajor\\f5\\ftech\\fcharset0 Name;}"_s << u"Name,tech,0,24"_s;
        QTest::newRow("Unicode") << u"{\\f5\\fnil Gr\\u246 ?\\u223\\'dfe;}"_s << u"Größe,nil,0,24"_s;
        QTest::newRow("bytes of its character set") << u"{\\f5\\fnil\\fcharset204 \\'cf\\'f0;}"_s << u"Пр,nil,204,24"_s;
        QTest::newRow("cut into pieces") << u"{\\f5\\fnil Na\r\nme\\{1\\};}"_s << u"Name{1},nil,0,24"_s;
        QTest::newRow("no semicolon") << u"{\\f5\\fnil Name}"_s << u"Name,nil,0,24"_s;
        QTest::newRow("family does not pass on")
            << u"{\\f4\\froman\\fcharset204 A;}{\\f5 Name;}"_s << u"Name,nil,0,24"_s;
    }

    void fontTable_isReadInAllItsForms()
    {
        QFETCH(QString, table);
        const RichTextDocument document = Read(u"{\\rtf1\\deff0{\\fonttbl{\\f0 Arial;}"_s + table + u"}\\f5 x}"_s);
        QCOMPARE(document.Text(), u"x"_s);
        QTEST(DescribeFormat(document, document.FormatAt(0)), "look");
    }

    void textWithoutFontWords_hasTheDefaultFont()
    {
        const RichTextDocument document = Read(u"{\\rtf1\\deff3{\\fonttbl{\\f1 Arial;}{\\f3 Mono;}}x}"_s);
        QCOMPARE(DescribeFormat(document, document.FormatAt(0)), u"Mono,nil,0,24"_s);
        const RichTextDocument bare = Read(u"{\\rtf1 x}"_s);
        QCOMPARE(DescribeFormat(bare, bare.FormatAt(0)), u"Courier New,nil,0,24"_s);
    }

    void paragraphWords_giveTheirStand_data()
    {
        QTest::addColumn<QString>("body");
        QTest::addColumn<QString>("stand");
        const auto add = [](const char* name, const QString& body, const QString& stand) {
            QTest::newRow(name) << body << stand;
        };
        add("nothing", u"x\\par"_s, u"align 0 left 0 first 0 right 0"_s);
        add("right", u"\\qr x\\par"_s, u"align 1 left 0 first 0 right 0"_s);
        add("centre", u"\\qc x\\par"_s, u"align 2 left 0 first 0 right 0"_s);
        add("justified", u"\\qj x\\par"_s, u"align 3 left 0 first 0 right 0"_s);
        add("left", u"\\qc\\ql x\\par"_s, u"align 0 left 0 first 0 right 0"_s);
        add("indents", u"\\li720\\fi-360\\ri100 x\\par"_s, u"align 0 left 720 first -360 right 100"_s);
        add("tab stops", u"\\tx500\\tqr\\tx1000 x\\par"_s, u"align 0 left 0 first 0 right 0 tab 500 tab 1000"_s);
        add("words behind the text", u"x\\qc\\par"_s, u"align 2 left 0 first 0 right 0"_s);
        add("last one without a line end", u"\\qc x"_s, u"align 2 left 0 first 0 right 0"_s);
        add("behind other lines, without a line end", u"a\\par\\pard\\qr\\li200 x"_s,
            u"align 1 left 200 first 0 right 0"_s);
        add("lasts until it is reset", u"\\qc\\li100\\tx9 a\\par x\\par"_s,
            u"align 2 left 100 first 0 right 0 tab 9"_s);
        add("reset", u"\\qc\\li100\\tx9 a\\par\\pard x\\par"_s, u"align 0 left 0 first 0 right 0"_s);
        add("group takes its stand with it", u"{\\qc a\\par}x\\par"_s, u"align 0 left 0 first 0 right 0"_s);
        add("old bullet",
            u"\\pard{\\pntext\\f2\\'b7\\tab}{\\*\\pn\\pnlvlblt\\pnf2\\pnindent0"
            "{\\pntxtb\\'b7}}\\fi-200\\li200 x\\par"_s,
            u"align 0 left 200 first -200 right 0 list 1"_s);
        add("old bullet, next line",
            u"{\\pntext\\'b7\\tab}{\\*\\pn\\pnlvlblt{\\pntxtb\\'b7}}a\\par{\\pntext\\'b7\\tab}x\\par"_s,
            u"align 0 left 0 first 0 right 0 list 1"_s);
        add("end of the old bullet", u"{\\*\\pn\\pnlvlblt}a\\par\\pard x\\par"_s, u"align 0 left 0 first 0 right 0"_s);
        add("old numbers", u"{\\*\\pn\\pnlvlbody\\pnstart3\\pndec{\\pntxta.}}x\\par"_s,
            u"align 0 left 0 first 0 right 0 list 2 from 3"_s);
        add("old letters", u"{\\*\\pn\\pnlvlbody\\pnlcltr}x\\par"_s, u"align 0 left 0 first 0 right 0 list 3 from 1"_s);
        add("old capitals", u"{\\*\\pn\\pnlvlbody\\pnucltr}x\\par"_s,
            u"align 0 left 0 first 0 right 0 list 4 from 1"_s);
        add("old Roman numbers", u"{\\*\\pn\\pnlvlbody\\pnlcrm}x\\par"_s,
            u"align 0 left 0 first 0 right 0 list 5 from 1"_s);
        add("old Roman capitals", u"{\\*\\pn\\pnlvlbody\\pnucrm}x\\par"_s,
            u"align 0 left 0 first 0 right 0 list 6 from 1"_s);
        add("new bullet", u"{\\listtext\\'b7\\tab}\\ls1\\ilvl0 x\\par"_s, u"align 0 left 0 first 0 right 0 list 1"_s);
        add("new numbers", u"\\ls2 x\\par"_s, u"align 0 left 0 first 0 right 0 list 2 from 1"_s);
        add("nested", u"\\ilvl1\\ls2 x\\par"_s, u"align 0 left 0 first 0 right 0 list 3 from 1 level 1"_s);
        add("nested, level behind the list", u"\\ls2\\ilvl1 x\\par"_s,
            u"align 0 left 0 first 0 right 0 list 3 from 1 level 1"_s);
        add("nested bullet", u"\\ls2\\ilvl2 x\\par"_s, u"align 0 left 0 first 0 right 0 list 1 level 2"_s);
        add("deeper on the next line", u"\\ls2\\ilvl0 a\\par\\ilvl1 x\\par"_s,
            u"align 0 left 0 first 0 right 0 list 3 from 1 level 1"_s);
        add("Roman", u"\\ls3 x\\par"_s, u"align 0 left 0 first 0 right 0 list 5 from 1"_s);
        add("end of the new list", u"\\ls1 a\\par\\pard x\\par"_s, u"align 0 left 0 first 0 right 0"_s);
        add("out of the list", u"\\ls1\\ls0 x\\par"_s, u"align 0 left 0 first 0 right 0"_s);
        add("list that is not there", u"\\ls44 x\\par"_s, u"align 0 left 0 first 0 right 0"_s);
        add("numbers out of range", u"\\li99999999999\\ilvl999 x\\par"_s,
            u"align 0 left 2147483647 first 0 right 0 level 8"_s);
    }

    void paragraphWords_giveTheirStand()
    {
        QFETCH(QString, body);
        QTEST(StandOfX(body), "stand");
    }

    void text_isRead_data()
    {
        QTest::addColumn<QString>("body");
        QTest::addColumn<QString>("text");
        const auto add = [](const char* name, const QString& body, const QString& text) {
            QTest::newRow(name) << body << text;
        };
        add("last line end is not part of it", u"a\\par"_s, u"a"_s);
        add("only the last line end", u"a\\par\\par"_s, u"a\r\n"_s);
        add("line end and a group behind", u"a\\par{\\b}"_s, u"a"_s);
        add("without a last line end", u"a\\par b"_s, u"a\r\nb"_s);
        add("only a line end", u"\\par"_s, QString());
        add("break at the end is kept", u"a\\line"_s, u"a\r\n"_s);
        add("section and page", u"a\\sect b\\page c"_s, u"a\r\nb\r\nc"_s);
        add("tab", u"a\\tab b\\\tc"_s, u"a\tb\tc"_s);
        add("special characters",
            u"\\lquote\\rquote\\ldblquote\\rdblquote\\emdash\\endash\\emspace\\enspace\\bullet\\~\\_\\-\\{\\}\\\\"_s,
            u"‘’“”—–\u2003\u2002•\u00a0\u2011\u00ad{}\\"_s);
        add("Unicode, no mark", u"\\uc0\\u228 b"_s, u"äb"_s);
        add("Unicode, one mark", u"\\uc1\\u228 ?b"_s, u"äb"_s);
        add("Unicode, two marks", u"\\uc2\\u28450 ??b"_s, u"漢b"_s);
        add("Unicode, two bytes", u"\\uc2\\u28450\\'8a\\'bfb"_s, u"漢b"_s);
        add("Unicode, more marks than characters", u"{\\uc5\\u228 ab}c"_s, u"äc"_s);
        add("Unicode, a word counts as one", u"\\uc2\\u228\\emdash ?b"_s, u"äb"_s);
        add("Unicode, marks over a line end of the file", u"\\uc2\\u228 ?\r\n?b"_s, u"äb"_s);
        add("Unicode, negative", u"\\u-4064?"_s, u"\uf020"_s);
        add("surrogates", u"\\u-10179?\\u-8704?"_s, u"😀"_s);
        add("surrogates, no marks", u"\\uc0\\u-10179\\u-8704 b"_s, u"😀b"_s);
        add("surrogates, two marks each", u"\\uc2\\u-10179 ??\\u-8704 ??b"_s, u"😀b"_s);
        add("marks count again in the group", u"\\uc0{\\uc1\\u228 ?}\\u228 b"_s, u"ää"_s + u"b"_s);
        add("Unicode alternative", u"{\\upr{a?}{\\*\\ud{a\\u228 ?}}}b"_s, u"a?b"_s);
        add("link", u"a{\\field{\\*\\fldinst{HYPERLINK \"http://b\"}}{\\fldrslt c}}d"_s, u"acd"_s);
        add("other field", u"{\\field{\\*\\fldinst PAGE}{\\fldrslt 7}}d"_s, u"7d"_s);
        add("row", u"\\trowd\\cellx1\\cellx2\\pard\\intbl a\\cell b\\cell\\row\\pard c"_s, u"a\tb\r\nc"_s);
        add("empty cells", u"\\trowd\\intbl\\cell\\cell b\\cell\\row\\pard c"_s, u"\t\tb\r\nc"_s);
        add("lines in a cell", u"\\trowd\\intbl a\\par b\\cell c\\cell\\row\\pard d\\par"_s, u"a b\tc\r\nd"_s);
        add("rows", u"\\trowd\\intbl a\\cell b\\cell\\row\\intbl c\\cell d\\cell\\row\\pard"_s, u"a\tb\r\nc\td\r\n"_s);
        add("row of one cell", u"\\trowd\\intbl a\\cell\\row\\pard b"_s, u"a\r\nb"_s);
        add("unknown destination", u"a{\\*\\nosuch b{c}\\par d}e"_s, u"ae"_s);
        add("unknown word in a group", u"a{\\nosuch b}c"_s, u"abc"_s);
        add("known word behind the star", u"a{\\*\\b b}c"_s, u"abc"_s);
        add("headers and footers",
            u"{\\header a\\par}{\\headerl b}{\\headerr c}{\\headerf d}{\\footer e}{\\footerl f}{\\footerr "
            "g}{\\footerf h}i"_s,
            u"i"_s);
        add("style sheet, info, templates", u"{\\stylesheet{\\s1 a;}}{\\info{\\title b}}{\\*\\template c}d"_s, u"d"_s);
        add("comment", u"a{\\*\\atnid b}{\\*\\atnauthor c}{\\*\\annotation d}e"_s, u"ae"_s);
        add("index entry", u"a{\\xe b}{\\tc c}d"_s, u"ad"_s);
        add("text of a shape", u"a{\\shp{\\*\\shpinst{\\sp{\\sn b}{\\sv c}}{\\shptxt d\\par}}}e"_s, u"ad\r\ne"_s);
        add("object", u"a{\\object{\\*\\objclass b}{\\*\\objdata 0102}{\\result c}}d"_s, u"acd"_s);
        add("list texts", u"{\\listtext 1.\\tab}a{\\pntext b}"_s, u"a"_s);
        add("text behind the end", u"a}b"_s, u"ab"_s);
        add("table of colours holds no text", u"{\\colortbl;\\red1;x}a"_s, u"a"_s);
    }

    void text_isRead()
    {
        QFETCH(QString, body);
        QTEST(TextOf(body), "text");
    }

    void nestedTable_keepsItsCellsSideBySide()
    {
        const QString text = TextOf(
            u"\\trowd\\intbl a\\cell{\\itap2 n\\nestcell m\\nestcell{\\*\\nesttableprops\\trowd\\nestrow}}\\cell\\row"
            "\\pard b"_s);
        QVERIFY2(text.startsWith(u"a\tn\tm"_s) && text.endsWith(u"\r\nb"_s), qPrintable(text));
    }

    void lineEndsByNumberOrByte_areWholeLineEnds_data()
    {
        QTest::addColumn<QString>("body");
        QTest::newRow("CR by number") << u"a\\u13?b"_s;
        QTest::newRow("LF by number") << u"a\\u10?b"_s;
        QTest::newRow("CR LF by number") << u"a\\u13?\\u10?b"_s;
        QTest::newRow("CR by byte") << u"a\\'0db"_s;
        QTest::newRow("CR LF by byte") << u"a\\'0d\\'0ab"_s;
    }

    void lineEndsByNumberOrByte_areWholeLineEnds()
    {
        QFETCH(QString, body);
        const QString text = TextOf(body);
        QCOMPARE(WithCrLf(text), text);
        QVERIFY(text.startsWith(u'a') && text.endsWith(u'b'));
    }

    void bytes_areOfTheCodePageOfTheFont_data()
    {
        QTest::addColumn<int>("charSet");
        QTest::addColumn<QString>("bytes");
        QTest::addColumn<QString>("text");
        QTest::newRow("Western") << 0 << u"\\'e4\\'80"_s << u"ä€"_s;
        QTest::newRow("default") << 1 << u"\\'e4"_s << u"ä"_s;
        QTest::newRow("Mac") << 77 << u"\\'8a"_s << u"ä"_s;
        QTest::newRow("Japanese") << 128 << u"\\'8a\\'bf\\'b1"_s << u"漢ｱ"_s;
        QTest::newRow("Japanese, ASCII trail byte") << 128 << u"\\'83A"_s << u"ア"_s;
        QTest::newRow("Japanese, escaped trail byte") << 128 << u"\\'83\\'5cb"_s << u"ソb"_s;
        QTest::newRow("Japanese, more text behind the trail byte") << 128 << u"\\'83Abc\\'83C"_s << u"アbcイ"_s;
        QTest::newRow("Japanese, cut by the line end of the file") << 128 << u"\\'83\r\n\\'41"_s << u"ア"_s;
        QTest::newRow("Japanese, trail byte is a backslash") << 128 << u"\\'83\\\\b"_s << u"ソb"_s;
        QTest::newRow("Japanese, trail byte is a brace") << 128 << u"\\'83\\{b\\'83\\}"_s << u"ボbマ"_s;
        QTest::newRow("Korean") << 129 << u"\\'b0\\'a1"_s << u"가"_s;
        QTest::newRow("Chinese, simplified") << 134 << u"\\'c4\\'e3\\'81@"_s << u"你丂"_s;
        QTest::newRow("Chinese, traditional") << 136 << u"\\'a4\\'a4\\'a4@"_s << u"中一"_s;
        QTest::newRow("Greek") << 161 << u"\\'e1"_s << u"α"_s;
        QTest::newRow("Turkish") << 162 << u"\\'fd"_s << u"ı"_s;
        QTest::newRow("Vietnamese") << 163 << u"\\'f5"_s << u"ơ"_s;
        QTest::newRow("Hebrew") << 177 << u"\\'e0"_s << u"א"_s;
        QTest::newRow("Arabic") << 178 << u"\\'c7"_s << u"ا"_s;
        QTest::newRow("Baltic") << 186 << u"\\'e0"_s << u"ą"_s;
        QTest::newRow("Russian") << 204 << u"\\'cf\\'f0"_s << u"Пр"_s;
        QTest::newRow("Thai") << 222 << u"\\'a1"_s << u"ก"_s;
        QTest::newRow("Eastern Europe") << 238 << u"\\'b3\\'b9"_s << u"łą"_s;
        QTest::newRow("PC") << 254 << u"\\'84"_s << u"ä"_s;
        QTest::newRow("OEM") << 255 << u"\\'84\\'d5"_s << u"äı"_s;
        QTest::newRow("unknown") << 99 << u"\\'e4"_s << u"ä"_s;
    }

    void bytes_areOfTheCodePageOfTheFont()
    {
        QFETCH(int, charSet);
        QFETCH(QString, bytes);
        QFETCH(QString, text);
        const QString rtf = u"{\\rtf1\\ansi\\deff0{\\fonttbl{\\f0 Arial;}{\\f1\\fcharset%1 Font;}}\\f1 %2\\f0 \\'e4}"_s
                                .arg(charSet)
                                .arg(bytes);
        QCOMPARE(Read(rtf).Text(), text + u"ä"_s);
    }

    void bytes_areOfTheCodePageOfTheDocument_data()
    {
        QTest::addColumn<QString>("words");
        QTest::addColumn<QString>("text");
        QTest::newRow("none") << u"\\ansi"_s << u"ä"_s;
        QTest::newRow("1251") << u"\\ansi\\ansicpg1251"_s << u"д"_s;
        QTest::newRow("1250") << u"\\ansi\\ansicpg1250"_s << u"ä"_s;
        QTest::newRow("Mac") << u"\\mac"_s << u"‰"_s;
        QTest::newRow("PC") << u"\\pc"_s << u"Σ"_s;
        QTest::newRow("PC 850") << u"\\pca"_s << u"õ"_s;
        QTest::newRow("unknown") << u"\\ansi\\ansicpg4711"_s << u"ä"_s;
    }

    void bytes_areOfTheCodePageOfTheDocument()
    {
        QFETCH(QString, words);
        QTEST(Read(u"{\\rtf1"_s + words + u"{\\fonttbl{\\f0\\fcharset0 Arial;}}\\f0 \\'e4}"_s).Text(), "text");
    }

    void link_hasItsTarget_data()
    {
        QTest::addColumn<QString>("instruction");
        QTest::addColumn<QString>("target");
        QTest::newRow("quoted") << u"HYPERLINK \"http://x.invalid/a b\""_s << u"http://x.invalid/a b"_s;
        QTest::newRow("plain") << u" HYPERLINK  http://x.invalid "_s << u"http://x.invalid"_s;
        QTest::newRow("small letters") << u"hyperlink \"y\""_s << u"y"_s;
        QTest::newRow("in groups") << u"{\\b HYPER}{LINK \"y\"}"_s << u"y"_s;
        QTest::newRow("beyond ASCII") << u"HYPERLINK \"\\u228 ?\\'e4\""_s << u"ää"_s;
        QTest::newRow("no link") << u"PAGEREF \"y\""_s << QString();
    }

    void link_hasItsTarget()
    {
        QFETCH(QString, instruction);
        const RichTextDocument document = Read(
            File(u"a{\\field{\\*\\fldinst "_s + instruction + u"}{\\fldrslt{\\ul x}y}}b"_s));
        QCOMPARE(document.Text(), u"axyb"_s);
        QCOMPARE(document.Link(document.FormatAt(0).Link), QString());
        QTEST(document.Link(document.FormatAt(1).Link), "target");
        QTEST(document.Link(document.FormatAt(2).Link), "target");
        QCOMPARE(document.FormatAt(1).Underline, 1);
        QCOMPARE(document.Link(document.FormatAt(3).Link), QString());
    }

    void picture_isKept_data()
    {
        QTest::addColumn<QString>("body");
        QTest::addColumn<QString>("look");
        const QString hex = QString::fromLatin1(SmallPng.toHex());
        const QString png = u"Arial,swiss,0,20,picture 0 300x200 "_s + hex;
        QTest::newRow("PNG") << u"{\\pict\\pngblip\\picw1\\pich1\\picwgoal300\\pichgoal200 "_s + hex + u"}"_s << png;
        QTest::newRow("broken over lines")
            << u"{\\pict\\pngblip\\picwgoal300\\pichgoal200\r\n"_s + hex.left(30) + u"\r\n"_s + hex.mid(30) + u"\r\n}"_s
            << png;
        QTest::newRow("words behind") << u"{\\pict\\picwgoal300\\pichgoal200\\pngblip "_s + hex + u"}"_s << png;
        QTest::newRow("with an identifier")
            << u"{\\pict{\\*\\blipuid 0102030405}\\pngblip\\picwgoal300\\pichgoal200 "_s + hex + u"}"_s << png;
        QTest::newRow("with properties")
            << u"{\\pict{\\*\\picprop{\\sp{\\sn a}{\\sv b}}}\\pngblip\\picwgoal300\\pichgoal200 "_s + hex + u"}"_s
            << png;
        QTest::newRow("capital digits") << u"{\\pict\\pngblip\\picwgoal300\\pichgoal200 "_s + hex.toUpper() + u"}"_s
                                        << png;
        QTest::newRow("twice, for old readers too") << u"{\\*\\shppict{\\pict\\pngblip\\picwgoal300\\pichgoal200 "_s
                                                           + hex + u"}}{\\nonshppict{\\pict\\wmetafile8 0102}}"_s
                                                    << png;
        QTest::newRow("JPEG, raw") << u"{\\pict\\jpegblip\\bin5 {\\}}\u00ff}"_s
                                   << u"Arial,swiss,0,20,picture 1 0x0 7b5c7d7dff"_s;
    }

    void picture_isKept()
    {
        QFETCH(QString, body);
        const RichTextDocument document = Read(File(u"a"_s + body + u"b"_s));
        QCOMPARE(document.Text(), u"a\ufffcb"_s);
        QTEST(DescribeFormat(document, document.FormatAt(1)), "look");
        QCOMPARE(document.FormatAt(2).Picture, 0u);
    }

    void pictureOfAnotherKindOrWithoutData_isLeftOut_data()
    {
        QTest::addColumn<QString>("body");
        QTest::newRow("metafile") << u"{\\pict\\wmetafile8 0102}"_s;
        QTest::newRow("enhanced metafile") << u"{\\pict\\emfblip 0102}"_s;
        QTest::newRow("bitmap") << u"{\\pict\\dibitmap0 0102}"_s;
        QTest::newRow("no kind") << u"{\\pict 0102}"_s;
        QTest::newRow("empty") << u"{\\pict\\pngblip}"_s;
        QTest::newRow("no digits") << u"{\\pict\\pngblip ,;-}"_s;
        QTest::newRow("in a header") << u"{\\header{\\pict\\pngblip 0102}}"_s;
    }

    void pictureOfAnotherKindOrWithoutData_isLeftOut()
    {
        QFETCH(QString, body);
        QCOMPARE(TextOf(u"a"_s + body + u"b"_s), u"ab"_s);
    }

    void pictureOfHalfAByteMore_keepsTheBytesBefore()
    {
        const RichTextDocument document = Read(File(u"{\\pict\\pngblip 8950a}"_s));
        QVERIFY(document.Picture(document.FormatAt(0).Picture).Bytes.startsWith("\x89\x50"));
    }

    void plainText_isTakenAsItIs()
    {
        const RichTextDocument document = Read(u"int main() {\n\treturn '\\x';\r}"_s);
        QCOMPARE(document.Text(), u"int main() {\r\n\treturn '\\x';\r\n}"_s);
        QCOMPARE(DescribeFormat(document, document.FormatAt(0)), u"Courier New,nil,0,20"_s);
        QCOMPARE(Read(u" {\\rtf1 a}"_s).Text(), u" {\\rtf1 a}"_s);
        QCOMPARE(Read({}).Text(), QString());
    }

    void reading_replacesWhatWasThere()
    {
        RichTextDocument document({.Name = u"Arial"_s, .Points = 14});
        ReadRtf(File(u"\\qc\\b old\\par text"_s), document);
        ReadRtf(u"plain"_s, document);
        QCOMPARE(Describe(document), (QStringList{u"plain"_s, u"0: Arial,nil,0,28"_s,
                                                  u"paragraph at 0: align 0 left 0 first 0 right 0"_s}));
    }

    // Damage

    void braces_thatDontMatch_loseNoText_data()
    {
        QTest::addColumn<QString>("body");
        QTest::newRow("too many closed") << u"a}}}}b"_s;
        QTest::newRow("too few closed") << u"a{{{{b"_s;
        QTest::newRow("closed before") << u"}}a{b"_s;
        QTest::newRow("table that never ends") << u"a}b{\\fonttbl{\\f0 c"_s;
        QTest::newRow("4 GB of raw data") << u"a\\bin4294967295 b"_s;
        QTest::newRow("2 GB of raw data") << u"a\\bin2147483647 b"_s;
        QTest::newRow("4 GB of picture") << u"a{\\pict\\pngblip\\bin4294967295 }b"_s;
        QTest::newRow("numbers out of range")
            << u"\\fs99999999999\\li-99999999999\\tx99999999999\\cf99999999999\\f-99999999999\\uc99999999999\\uc1"
               "\\ls99999999999\\ilvl-5 ab"_s;
        QTest::newRow("negative count of marks") << u"\\uc-3 ab"_s;
    }

    void braces_thatDontMatch_loseNoText()
    {
        QFETCH(QString, body);
        QCOMPARE(TextOf(body), u"ab"_s);
    }

    void sampleCutAnywhere_givesTheBeginOfItsText()
    {
        const QString rtf = File(
            u"Gr\\'fc\\'dfe\\b  fett\\b0\\par\\pard\\qc\\ls2{\\listtext 1.\\tab}eins\\par"
            "{\\field{\\*\\fldinst{HYPERLINK \"http://x\"}}{\\fldrslt{\\ul link}}} {\\pict\\pngblip 01020304}"
            "{\\pict\\bin6 {{{{{{\\pngblip}\\trowd\\intbl a\\cell b\\cell\\row\\pard"
            "\\uc2\\u28450\\'8a\\'bf ende\\par"_s);
        const QString whole = Read(rtf).Text();
        QCOMPARE(whole, u"Grüße fett\r\neins\r\nlink \ufffc\ufffca\tb\r\n漢 ende"_s);
        for (qsizetype length = 5; length < rtf.size(); ++length) { // known as RTF from there on
            const RichTextDocument part = Read(rtf.left(length));
            // A number that is cut gives another character, so the last one is not compared.
            QVERIFY2(whole.startsWith(part.Text().chopped(qMin(part.Length(), qsizetype(1)))), qPrintable(part.Text()));
            const QString written = WriteRtf(part);
            QCOMPARE(WriteRtf(Read(written)), written);
        }
    }

    void nestingOf100000_isRead_data()
    {
        QTest::addColumn<QString>("open");
        QTest::newRow("groups") << u"{"_s;
        QTest::newRow("formats") << u"{\\b\\i"_s;
        QTest::newRow("tables") << u"{\\fonttbl"_s;
        QTest::newRow("skipped") << u"{\\*\\nosuch"_s;
        QTest::newRow("fields") << u"{\\field{\\*\\fldinst HYPERLINK \"x\"}{\\fldrslt "_s;
        QTest::newRow("pictures") << u"{\\pict\\pngblip 01"_s;
        QTest::newRow("lists") << u"{\\pn\\pnlvlblt"_s;
    }

    void nestingOf100000_isRead()
    {
        QFETCH(QString, open);
        constexpr qsizetype Depth = 100000;
        const qsizetype groups = open.count(u'{') - open.count(u'}');
        const QString opened = File(u"a"_s).chopped(1) + open.repeated(Depth);
        QVERIFY(Read(opened).Text().startsWith(u'a'));
        const QString text = Read(opened + u"}"_s.repeated(Depth * groups) + u"b}"_s).Text();
        QVERIFY(text.startsWith(u'a') && text.endsWith(u'b'));
    }

    void manyEntriesInTables_areRead()
    {
        QString fonts;
        QString colors;
        for (int i = 0; i < 10000; ++i) {
            fonts += u"{\\f%1 F%1;}"_s.arg(i);
            colors += u"\\red%1;"_s.arg(i % 256);
        }
        const QString rtf = u"{\\rtf1{\\fonttbl"_s + fonts + u"}{\\colortbl;"_s + colors + u"}\\f100\\cf100 x}"_s;
        const RichTextDocument document = Read(rtf);
        QCOMPARE(DescribeFormat(document, document.FormatAt(0)), u"F100,nil,0,24,color 000063"_s);
    }

    void randomBytes_areReadToTheirEnd()
    {
        static const QStringList pieces{u"{"_s,
                                        u"}"_s,
                                        u"\\"_s,
                                        u"\\par"_s,
                                        u"\\pard"_s,
                                        u"\\'83"_s,
                                        u"\\u-10179"_s,
                                        u"\\uc2"_s,
                                        u"\\f2 "_s,
                                        u"\\cell"_s,
                                        u"\\row"_s,
                                        u"\\intbl"_s,
                                        u"{\\fonttbl"_s,
                                        u"{\\colortbl"_s,
                                        u"{\\pict\\pngblip"_s,
                                        u"{\\*\\fldinst HYPERLINK "_s,
                                        u"{\\fldrslt"_s,
                                        u"{\\*\\pn\\pnlvlblt"_s,
                                        u"\\ls2"_s,
                                        u"\\ilvl1"_s,
                                        u"{\\*\\shppict"_s,
                                        u"\\bin3"_s,
                                        u"\\plain"_s,
                                        u"\\deff2"_s,
                                        u";"_s,
                                        u"\""_s,
                                        u"a"_s,
                                        u" "_s,
                                        u"\\'"_s,
                                        u"{\\*\\listtable{\\list{\\listlevel\\levelnfc4"_s,
                                        u"\\listid3"_s,
                                        u"{\\stylesheet"_s,
                                        u"\\qc"_s,
                                        u"\\li99"_s,
                                        u"ä"_s};
        for (quint32 seed = 0; seed < 5000; ++seed) {
            Dice dice(seed);
            QString rtf = u"{\\rtf1 "_s;
            for (int i = dice.Roll(60); i > 0; --i)
                rtf += dice.OneIn(8) ? QString(QChar(dice.Roll(256))) : dice.PickOf(pieces);
            const RichTextDocument once = Read(rtf);
            QVERIFY2(once.Text() == WithCrLf(once.Text()), "seed " + QByteArray::number(seed) + ": " + rtf.toUtf8());
            const QString written = WriteRtf(once);
            const QString again = WriteRtf(Read(written));
            QVERIFY2(again == written, "seed " + QByteArray::number(seed) + ": " + rtf.toUtf8() + '\n'
                                           + FirstDifference(again.split(u'\n'), written.split(u'\n')));
        }
    }
};

QB_TEST_MAIN(TestRtfReader)
#include "tst_rtf_reader.moc"
