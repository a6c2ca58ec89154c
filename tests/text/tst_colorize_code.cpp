// What the colouriser makes of texts, one rule at a time.

#include "platform/richtext/RichText.h"
#include "support/TestRun.h"
#include "text/CTextFormat.h"

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

namespace {

constexpr quint32 PlainColour = 0x010203;
constexpr quint32 KeywordColour = 0x800000;
constexpr quint32 CommentColour = 0x008000;
constexpr quint32 OldColour = 0x0000ff;

LanguageDefinition Language(const QString& comment, const QString& start = {}, const QString& end = {})
{
    LanguageDefinition language;
    language.Comment = comment;
    language.CommentStart = start;
    language.CommentEnd = end;
    language.ColouredWords = QStringList{u"#Const"_s, u"Dim"_s, u"Const"_s, u"int"_s, u"TWO"_s, u"Class"_s};
    language.PlainWords = QStringList{u"Beep"_s, u"Two"_s};
    language.ColouredKeywordColour = KeywordColour;
    language.KeywordColour = PlainColour;
    language.CommentColour = CommentColour;
    return language;
}

const LanguageDefinition Lines = Language(u"'"_s);
const LanguageDefinition Slashes = Language(u"//"_s, u"/*"_s, u"*/"_s);
const LanguageDefinition Blocks = Language(u"'"_s, u"/*"_s, u"*/"_s);

QList<int> Paint(IRichTextBox& box, const LanguageDefinition& language)
{
    CTextFormat format;
    format.SetLanguage(language);
    QList<int> progress;
    QObject::connect(&format, &CTextFormat::eColorizeProgress, &format,
                     [&progress](int percent) { progress << percent; });
    format.ColorizeCode(box);
    return progress;
}

/// One mark a character: . as before, p plain, K keyword, c comment.
QString Marks(RichText& box)
{
    QString marks;
    for (qsizetype at = 0; at < box.Text().size(); ++at) {
        switch (box.Document().FormatAt(at).Color) {
        case PlainColour:
            marks += u'p';
            break;
        case KeywordColour:
            marks += u'K';
            break;
        case CommentColour:
            marks += u'c';
            break;
        case OldColour:
            marks += u'.';
            break;
        default:
            marks += u'?';
            break;
        }
    }
    return marks;
}

QString Bolds(RichText& box)
{
    QString marks;
    for (qsizetype at = 0; at < box.Text().size(); ++at)
        marks += box.Document().FormatAt(at).Bold ? u'B' : u'-';
    return marks;
}

RichText Box(const QString& text)
{
    RichText box;
    box.SetText(text);
    box.SetSelLength(box.Text().size());
    box.SetSelColor(OldColour);
    return box;
}

void Bold(RichText& box, qsizetype start, qsizetype length)
{
    box.SetSelStart(start);
    box.SetSelLength(length);
    box.SetSelBold(true);
}

const QString Marker = u"###############   "_s;

} // namespace

class TestColorizeCode : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { FailOnWarnings(); }

    void text_isPainted_data()
    {
        QTest::addColumn<LanguageDefinition>("language");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("painted");
        QTest::addColumn<QString>("marks");
        const auto add = [](const char* name, const LanguageDefinition& language, const QString& text,
                            const QString& painted,
                            const QString& marks) { QTest::newRow(name) << language << text << painted << marks; };
        add("empty", Lines, {}, {}, {});
        add("keyword", Lines, u"dim "_s, u"Dim "_s, u"KKK."_s);
        add("plain keyword", Lines, u"BEEP "_s, u"Beep "_s, u"pppp."_s);
        add("word in both sets", Lines, u"two "_s, u"Two "_s, u"ppp."_s);
        add("unknown word", Lines, u"foo "_s, u"foo "_s, u"ppp."_s);
        add("part of a keyword", Lines, u"dims "_s, u"dims "_s, u"pppp."_s);
        add("digits and underscore are of the word", Lines, u"dim_1 "_s, u"dim_1 "_s, u"ppppp."_s);
        add("letters beyond ASCII separate", Lines, u"dimä "_s, u"Dimä "_s, u"KKK.."_s);
        add("one separator stays as it was", Lines, u"dim x "_s, u"Dim x "_s, u"KKK.p."_s);
        add("several separators are painted", Lines, u"dim  x "_s, u"Dim  x "_s, u"KKKppp."_s);
        add("separators before the first word", Lines, u"  dim "_s, u"  Dim "_s, u"..KKK."_s);
        add("separators behind the last word", Lines, u"dim    "_s, u"Dim    "_s, u"KKK...."_s);
        add("hash separates", Lines, u"#Const A "_s, u"#Const A "_s, u".KKKKK.p."_s);
        add("last word, no block comments", Lines, u"x dim"_s, u"x dim"_s, u"p...."_s);
        add("last word, block comments", Blocks, u"x dim"_s, u"x Dim"_s, u"p.KKK"_s);
        add("last word, slashes", Slashes, u"INT"_s, u"int"_s, u"KKK"_s);

        add("string", Lines, u"x = \"dim\" ' dim"_s, u"x = \"dim\" ' dim"_s, u"pppppppp..ccccc"_s);
        add("comment right behind a string", Lines, u"\"a\"' dim "_s, u"\"a\"' Dim "_s, u"pppp.KKK."_s);
        add("empty string", Lines, u"\"\" x "_s, u"\"\" x "_s, u"p..p."_s);
        add("string up to the line end", Lines, u"\"dim\r\nx "_s, u"\"dim\r\nx "_s, u"pppp..p."_s);
        add("string without an end", Lines, u"\"dim x "_s, u"\"dim x "_s, u"......."_s);
        add("string without an end behind a gap", Lines, u"x   \"dim"_s, u"x   \"dim"_s, u"pppp...."_s);
        add("only a quote", Lines, u"\""_s, u"\""_s, u"."_s);
        add("comment opener in a string", Lines, u"\"it's\" x "_s, u"\"it's\" x "_s, u"ppppp..p."_s);
        add("word that goes on behind a string", Lines, u"di\"q\"xm "_s, u"Dimq\"xm "_s, u"KKKp...."_s);

        add("line comment", Lines, u"'a dim\r\nb "_s, u"'a dim\r\nb "_s, u"ccccccppp."_s);
        add("line comment to the end of the text", Lines, u"x 'dim y"_s, u"x 'dim y"_s, u"p.cccccc"_s);
        add("line comment of two characters", Slashes, u"//int\r\nint "_s, u"//int\r\nint "_s, u"cccccppKKK."_s);
        add("half of the opener", Slashes, u"x / int / "_s, u"x / int / "_s, u"ppppKKK..."_s);
        add("opener minds the case", Language(u"#C"_s), u"#c dim "_s, u"#c Dim "_s, u".p.KKK."_s);
        add("opener in its case", Language(u"#C"_s), u"#C dim "_s, u"#C dim "_s, u"ccccccc"_s);
        add("keyword right before a line comment", Lines, u"dim'x\r\ny "_s, u"Dim'x\r\ny "_s, u"KKKcc..p."_s);
        add("no identifier means an apostrophe", Language({}), u"x 'dim"_s, u"x 'dim"_s, u"p.cccc"_s);

        add("block comments that begin as line comments stay", Slashes, u"/* int */ "_s, u"/* int */ "_s,
            u"...KKK...."_s);
        add("block comment", Blocks, u"/* dim */dim a "_s, u"/* dim */dim a "_s, u"ccccccccc.pp.p."_s);
        add("block comment over lines", Blocks, u"/*a\r\nb*/\r\nx "_s, u"/*a\r\nb*/\r\nx "_s, u"ccccccccppp."_s);
        add("block comment without an end", Blocks, u"x /*dim\r\ny"_s, u"x /*dim\r\ny"_s, u"p.cccccccc"_s);
        add("block comment that ends in its opener", Blocks, u"/*/ x "_s, u"/*/ x "_s, u"ccc.p."_s);
        add("half of the block's opener", Blocks, u"/ dim "_s, u"/ Dim "_s, u"..KKK."_s);
        add("apostrophe in a block comment", Blocks, u"/*'*/ x "_s, u"/*'*/ x "_s, u"ccccc.p."_s);

        add("remark", Lines, u"REM Dim X\r\ny "_s, u"rem dim x\r\ny "_s, u"KKKKKKKKKppp."_s);
        add("remark in another language", Slashes, u"rem \"Ä // INT\r\ny "_s, u"rem \"ä // int\r\ny "_s,
            u"KKKKKKKKKKKKKppp."_s);
        add("remark on the last line", Lines, u"x \r\nRem A B"_s, u"x \r\nrem a b"_s, u"ppppKKKKKKK"_s);
        add("remark alone at the end", Slashes, u"REM"_s, u"rem"_s, u"KKK"_s);
        add("not a remark", Lines, u"REMS A "_s, u"REMS A "_s, u"pppp.p."_s);
        add("remark behind a statement", Lines, u"dim:REM A"_s, u"Dim:rem a"_s, u"KKK.KKKKK"_s);
    }

    void text_isPainted()
    {
        QFETCH(LanguageDefinition, language);
        QFETCH(QString, text);
        RichText box = Box(text);
        Paint(box, language);
        QTEST(box.Text(), "painted");
        QTEST(Marks(box), "marks");
        QCOMPARE(box.SelStart(), 0);
        QCOMPARE(box.SelLength(), 0);
        QCOMPARE(box.SelColor(), std::optional<quint32>(0));
    }

    void remarkOverALineEnd_keepsTheLengthOfTheText()
    {
        // The word that began before a string is found whole behind the line end.
        RichText box = Box(u"r\"\r\nem dim\r\ndim "_s);
        const qsizetype length = box.Text().size();
        Paint(box, Lines);
        QCOMPARE(box.Text().size(), length);
        QVERIFY2(box.Text().endsWith(u"\r\nDim "_s), qPrintable(box.Text()));
    }

    void keywordOverALineEnd_spoilsNothingBehindIt()
    {
        RichText box = Box(u"cla\"\r\nss //int\r\nint x //c\r\n"_s);
        Paint(box, Slashes);
        QVERIFY2(box.Text().endsWith(u"ss //int\r\nint x //c\r\n"_s), qPrintable(box.Text()));
    }

    void remarkInLettersThatGrowWhenLowered_keepsTheLengthOfTheText()
    {
        RichText box = Box(u"rem \u0130\r\ndim "_s);
        Paint(box, Lines);
        QCOMPARE(box.Text().size(), 11);
        QVERIFY(box.Text().endsWith(u"\r\nDim "_s));
    }

    void wholeText_getsTheFontOfCode()
    {
        RichText box = Box(u"dim x\r\n\"a\" 'c\r\n"_s);
        box.SetSelLength(5);
        box.SetSelFontName(u"Arial"_s);
        box.SetSelFontSize(20);
        box.SetSelItalic(true);
        box.SetSelUnderline(true);
        Paint(box, Lines);
        box.SetSelLength(box.Text().size());
        QCOMPARE(box.SelFontName(), std::optional(u"Courier New"_s));
        QCOMPARE(box.SelFontSize(), std::optional(10.0));
        QCOMPARE(box.SelItalic(), std::optional(false));
        QCOMPARE(box.SelUnderline(), std::optional(false));
    }

    void boldUnknownWord_losesItsOwnBoldOnly()
    {
        RichText box = Box(u"ab cd \r\nx "_s);
        Bold(box, 0, 10);
        Paint(box, Blocks);
        QCOMPARE(Bolds(box), u"--B--BBB-B"_s);
    }

    void boldLastLine_losesItsBoldWithoutBlockComments()
    {
        // Behind the text stands an empty comment, whose line is the last one.
        RichText box = Box(u"((\r\n(("_s);
        Bold(box, 0, 6);
        Paint(box, Lines);
        QCOMPARE(Bolds(box), u"BBBB--"_s);
    }

    void boldLine_losesItsBold_data()
    {
        QTest::addColumn<QString>("line");
        QTest::newRow("keyword") << u"( dim ("_s;
        QTest::newRow("plain keyword") << u"( beep ("_s;
        QTest::newRow("string") << u"( \"a\" ("_s;
        QTest::newRow("line comment") << u"( 'a"_s;
        QTest::newRow("block comment") << u"( /*a*/ ("_s;
    }

    void boldLine_losesItsBold()
    {
        QFETCH(QString, line);
        RichText box = Box(u"((\r\n"_s + line + u"\r\n(("_s);
        Bold(box, 0, box.Text().size());
        Paint(box, Blocks);
        QCOMPARE(Bolds(box), u"BBBB"_s + QString(line.size(), u'-') + u"BBBB"_s);
    }

    void partlyBoldWord_keepsWhatItHas()
    {
        RichText box = Box(u"dim "_s);
        Bold(box, 1, 1);
        Paint(box, Lines);
        QCOMPARE(box.Text(), u"Dim "_s);
        QCOMPARE(Marks(box), u"KKK."_s);
    }

    void boldSectionHeader_staysAsItIs_data()
    {
        QTest::addColumn<LanguageDefinition>("language");
        QTest::newRow("one character") << Lines;
        QTest::newRow("two characters") << Slashes;
    }

    void boldSectionHeader_staysAsItIs()
    {
        QFETCH(LanguageDefinition, language);
        const QString header = language.Comment + Marker + u"Dim Main"_s + u"   ###############"_s;
        RichText box = Box(u"dim (\r\n"_s + header);
        Bold(box, 7, header.size());
        Paint(box, language);
        QCOMPARE(box.Text(), u"Dim (\r\n"_s + header);
        QCOMPARE(Marks(box), u"KKK...."_s + QString(header.size(), u'.'));
        QCOMPARE(Bolds(box), u"-------"_s + QString(header.size(), u'B'));
    }

    void gapBehindABoldSectionHeader_leavesTheHeaderAsItIs()
    {
        const QString header = u"'"_s + Marker + u"Main"_s;
        RichText box = Box(header + u"\r\n dim "_s);
        Bold(box, 0, header.size());
        Paint(box, Lines);
        QCOMPARE(box.Text(), header + u"\r\n Dim "_s);
        QCOMPARE(Marks(box), QString(header.size(), u'.') + u"pppKKK."_s);
        QCOMPARE(Bolds(box), QString(header.size(), u'B') + u"-------"_s);
    }

    void sectionHeaderThatIsNotBold_isAComment()
    {
        const QString header = u"'"_s + Marker + u"Main"_s;
        RichText box = Box(header);
        Paint(box, Lines);
        QCOMPARE(Marks(box), QString(header.size(), u'c'));
    }

    void boldCommentWithoutTheWholeMarker_isAComment()
    {
        for (const QString& line : {u"'##############   Main"_s, u"'###############  Main"_s, u"'Main"_s}) {
            RichText box = Box(line);
            Bold(box, 0, line.size());
            Paint(box, Lines);
            QCOMPARE(Marks(box), QString(line.size(), u'c'));
            QCOMPARE(Bolds(box), QString(line.size(), u'-'));
        }
    }

    void identifierThatIsEmpty_isAnApostropheForGood()
    {
        CTextFormat format;
        QCOMPARE(format.CommentIdentifier(), QString());
        RichText box;
        format.ColorizeCode(box);
        QCOMPARE(format.CommentIdentifier(), u"'"_s);
    }

    void newObject_knowsNoKeywords()
    {
        RichText box = Box(u"Dim x 'c"_s);
        CTextFormat format;
        format.ColorizeCode(box);
        QCOMPARE(box.Text(), u"Dim x 'c"_s);
        for (const qsizetype at : {0, 4, 6})
            QCOMPARE(box.Document().FormatAt(at).Color, 0u);
    }

    void paintingAgain_changesNothing()
    {
        RichText box = Box(u"dim x = \"a\" 'c\r\n  rem X\r\n/* y */ beep (two)\r\n"_s);
        Paint(box, Blocks);
        const QString once = box.TextRTF();
        Paint(box, Blocks);
        QCOMPARE(box.TextRTF(), once);
    }

    // Progress

    void shortText_reportsNoProgress()
    {
        RichText box = Box(QString(2999, u'.'));
        QCOMPARE(Paint(box, Lines), QList<int>());
    }

    void longText_reportsEachTwentieth_data()
    {
        QTest::addColumn<int>("length");
        QTest::addColumn<int>("marks");
        QTest::newRow("3000: step 150, and 100 twice") << 3000 << 20;
        QTest::newRow("tie, down to the even 150") << 3009 << 20;
        QTest::newRow("just above the tie") << 3010 << 19;
        QTest::newRow("tie, up to the even 152") << 3029 << 19;
        QTest::newRow("just below the tie") << 3028 << 20;
        QTest::newRow("multiple of 20") << 9999 << 20;
    }

    void longText_reportsEachTwentieth()
    {
        QFETCH(int, length);
        QFETCH(int, marks);
        RichText box = Box(QString(length, u'.'));
        QList<int> expected{0};
        for (int mark = 1; mark <= marks; ++mark)
            expected << 5 * mark;
        expected << 100;
        QCOMPARE(Paint(box, Lines), expected);
    }

    void longComment_passesOverItsMarks()
    {
        RichText comment = Box(u"'"_s + QString(5000, u'x'));
        QCOMPARE(Paint(comment, Lines), (QList<int>{0, 100}));
        // One mark a step: what was passed over is made up for.
        RichText both = Box(u"'"_s + QString(2000, u'x') + u"\r\n"_s + QString(1996, u'.'));
        const QList<int> progress = Paint(both, Lines);
        QCOMPARE(progress.first(12), (QList<int>{0, 5, 10, 15, 20, 25, 30, 35, 40, 45, 50, 55}));
        QCOMPARE(progress.last(), 100);
    }

    // The rounds of the inner loops

    void commentBeyondTheRounds_isPaintedUpToThem()
    {
        constexpr qsizetype Rounds = 9999999;
        for (const QString& opener : {u"'"_s, u"/*"_s}) {
            RichText box;
            box.SetText(opener + QString(Rounds, u'.'));
            Paint(box, Blocks);
            QCOMPARE(box.Document().FormatAt(Rounds - 1).Color, CommentColour);
            QVERIFY(box.Document().FormatAt(Rounds).Color != CommentColour);
        }
    }

    void remarkBeyondTheRounds_isLoweredUpToThem()
    {
        constexpr qsizetype Rounds = 9999999;
        RichText box;
        box.SetText(u"REM"_s + QString(Rounds + 1, u'.') + u"XYZ "_s);
        Paint(box, Blocks);
        QVERIFY(box.Text().startsWith(u"rem."_s) && box.Text().endsWith(u".XYZ "_s));
        QCOMPARE(box.Document().FormatAt(Rounds + 2).Color, KeywordColour);
        QVERIFY(box.Document().FormatAt(Rounds + 3).Color != KeywordColour);
    }
};

QB_TEST_MAIN(TestColorizeCode)
#include "tst_colorize_code.moc"
