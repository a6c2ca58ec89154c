// Painting by rules: of a text in a box, without a window.

#include "platform/dao/DBEngine.h"
#include "platform/richtext/RichText.h"
#include "platform/richtext/Rtf.h"
#include "store/LibraryLanguage.h"
#include "store/ShippedLanguages.h"
#include "support/LibraryBuilder.h"
#include "support/RecordedWork.h"
#include "support/TestRun.h"
#include "text/CTextFormat.h"
#include "text/CodeSections.h"
#include "text/LanguageSample.h"

#include <QHash>
#include <cmath>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

namespace {

const QString CRules = u"line: //\nblock: /* */ lines\nstring: \" \" escape=\\\n"
                       "words keyword: if else return\nwords type: int\n"_s;
const QString Header = u"//###############   "_s;

LanguageDefinition Language(const QString& rules, const QString& comment = u"//"_s)
{
    return {.Language = u"Mine"_s,
            .Comment = comment,
            .ColouredWords = {u"If"_s, u"Rem"_s, u"Name"_s},
            .PlainWords = {u"Class"_s},
            .ColouredKeywordColour = 0x800000,
            .KeywordColour = 0x101010,
            .CommentColour = 0x008000,
            .Rules = rules};
}

std::shared_ptr<const LanguageRules> RulesOf(const QString& text)
{
    return std::make_shared<LanguageRules>(text, QStringList(), QStringList());
}

/// A letter for each character: that of the kind whose colour it has, "." for none, "?" for another.
QString Marks(const RichText& text, const TokenColors& colors = TokenPalette::Default().Light)
{
    QString marks;
    for (qsizetype at = 0; at < text.Text().size(); ++at) {
        const QChar character = text.Text()[at];
        const quint32 color = text.Document().FormatAt(at).Color;
        QChar mark = color == AutomaticColor || color == colors[size_t(TokenKind::Text)] ? u'.' : u'?';
        for (const TokenKindRow& row : TokenKindRows) {
            if (row.Kind != TokenKind::Text && color == colors[size_t(row.Kind)])
                mark = QLatin1Char(row.Mark);
        }
        marks += character == u'\r' || character == u'\n' ? character : mark;
    }
    return marks;
}

RichText TextOf(const QString& text)
{
    RichText made;
    made.SetText(text);
    return made;
}

void Make(RichText& text, const QString& part, const std::function<void(RichText&)>& look)
{
    text.SetSelStart(text.Text().indexOf(part));
    text.SetSelLength(part.size());
    look(text);
}

void MakeHeader(RichText& text, const QString& line)
{
    Make(text, line, [](RichText& box) {
        box.SetSelBold(true);
        box.SetSelColor(0x800000);
        box.SetSelProtected(true);
    });
}

double PartOf(quint32 value)
{
    const double part = (value & 0xff) / 255.0;
    return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
}

/// By the guidelines for text; colours with red in the low byte.
double ContrastOf(quint32 left, quint32 right)
{
    const auto luminance = [](quint32 color) {
        return 0.2126 * PartOf(color) + 0.7152 * PartOf(color >> 8) + 0.0722 * PartOf(color >> 16);
    };
    const auto [darker, lighter] = std::minmax({luminance(left), luminance(right)});
    return (lighter + 0.05) / (darker + 0.05);
}

} // namespace

class TestRulePaint : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { FailOnWarnings(); }

    // Painting

    void text_isPaintedAndNotChanged()
    {
        RuleScan scan(RulesOf(CRules));
        const QString source = u"int x; // no\r\nif (\"a\\\"b\") /* c\r\nelse\r\n*/ return 42;"_s;
        RichText text = TextOf(source);
        PaintByRules(text, scan, TokenPalette::Default().Light, NoWork());
        QCOMPARE(text.Text(), source);
        QCOMPARE(Marks(text), u"ttt....ccccc\r\nkk..ssssss..cccc\r\ncccc\r\ncc.kkkkkk.nn."_s);
        QCOMPARE(text.SelStart(), 0);
        QCOMPARE(text.SelLength(), 0);
    }

    void paintedText_isInTheColoursThatAreGiven()
    {
        RuleScan scan(RulesOf(CRules));
        TokenColors colors = TokenPalette::Default().Light;
        colors[size_t(TokenKind::Comment)] = 0x123456;
        colors[size_t(TokenKind::Text)] = 0x010203;
        RichText text = TextOf(u"x // y"_s);
        PaintByRules(text, scan, colors, NoWork());
        QCOMPARE(text.Document().FormatAt(0).Color, 0x010203u);
        QCOMPARE(text.Document().FormatAt(2).Color, 0x123456u);
    }

    void looksOfBefore_areGoneAfterPainting()
    {
        RuleScan scan(RulesOf(CRules));
        RichText text = TextOf(u"int x = 1;"_s);
        Make(text, u"x = 1"_s, [](RichText& box) {
            box.SetSelColor(0x0000ff);
            box.SetSelBold(true);
            box.SetSelItalic(true);
            box.SetSelUnderline(true);
            box.SetSelFontName(u"Verdana"_s);
            box.SetSelFontSize(20);
        });
        PaintByRules(text, scan, TokenPalette::Default().Light, NoWork());
        QCOMPARE(Marks(text), u"ttt.....n."_s);
        text.SetSelStart(0);
        text.SetSelLength(text.Text().size());
        QCOMPARE(text.SelBold(), std::optional(false));
        QCOMPARE(text.SelItalic(), std::optional(false));
        QCOMPARE(text.SelUnderline(), std::optional(false));
        QCOMPARE(text.SelFontName(), std::optional(CodeFont.Name));
        QCOMPARE(text.SelFontSize(), std::optional(double(CodeFont.Points)));
    }

    void paintedTwice_isTheSame()
    {
        RuleScan scan(RulesOf(CRules));
        RichText text = TextOf(u"int x; /* a\r\nb */ if \"s\"\r\n"_s);
        PaintByRules(text, scan, TokenPalette::Default().Light, NoWork());
        const QString once = text.TextRTF();
        PaintByRules(text, scan, TokenPalette::Default().Light, NoWork());
        QCOMPARE(text.TextRTF(), once);
    }

    void headers_keepTheirLookAndOpenNothing()
    {
        RuleScan scan(RulesOf(u"block: //# #// lines\nline: //\nwords keyword: if\n"_s)); // a header would open a block
        const QString header = Header + u"   Title   ###############"_s;
        RichText text = TextOf(u"if a\r\n"_s + header + u"\r\nif b\r\n"_s);
        MakeHeader(text, header);
        PaintByRules(text, scan, TokenPalette::Default().Light, NoWork());
        const QString marks = Marks(text);
        QCOMPARE(marks, u"kk..\r\n"_s + QString(header.size(), u'?') + u"\r\nkk..\r\n"_s);
        const qsizetype at = text.Text().indexOf(header);
        QCOMPARE(text.Document().FormatAt(at).Color, 0x800000u);
        QVERIFY(text.Document().FormatAt(at).Bold);
        QVERIFY(text.Document().FormatAt(at).Protected);
        QVERIFY(!text.Document().FormatAt(0).Bold);
    }

    void headerWithinAComment_leavesItOpen()
    {
        RuleScan scan(RulesOf(CRules));
        const QString header = Header + u"   Title   ###############"_s;
        RichText text = TextOf(u"/* a\r\n"_s + header + u"\r\nb */ if"_s);
        MakeHeader(text, header);
        PaintByRules(text, scan, TokenPalette::Default().Light, NoWork());
        QVERIFY2(Marks(text).endsWith(u"cccc.kk"_s), qPrintable(Marks(text)));
    }

    void lineThatOnlyReadsLikeAHeader_isAComment()
    {
        RuleScan scan(RulesOf(CRules));
        const QString line = Header + u"   Title"_s;
        RichText text = TextOf(line); // not bold
        PaintByRules(text, scan, TokenPalette::Default().Light, NoWork());
        QCOMPARE(Marks(text), QString(line.size(), u'c'));
        RichText within = TextOf(u"x "_s + line); // bold, but not at the begin of its line
        MakeHeader(within, line);
        PaintByRules(within, scan, TokenPalette::Default().Light, NoWork());
        QCOMPARE(Marks(within), u".."_s + QString(line.size(), u'c'));
        QVERIFY(!within.Document().FormatAt(2).Bold);
    }

    void progress_isToldFrom3000CharactersOn_data()
    {
        QTest::addColumn<int>("length");
        QTest::addColumn<bool>("told");
        QTest::newRow("2999") << 2999 << false;
        QTest::newRow("3000") << 3000 << true;
        QTest::newRow("100000") << 100'000 << true;
    }
    void progress_isToldFrom3000CharactersOn()
    {
        QFETCH(int, length);
        QFETCH(bool, told);
        RuleScan scan(RulesOf(CRules));
        RichText text = TextOf(u"int x; //\r\n"_s.repeated(length / 11) + QString(length % 11, u' '));
        QCOMPARE(text.Text().size(), length);
        RecordedWork work;
        PaintByRules(text, scan, TokenPalette::Default().Light, work);
        const QList<qint64>& percents = work.Done;
        QCOMPARE(!percents.isEmpty(), told);
        if (!told)
            return;
        QCOMPARE(percents.first(), 0);
        QCOMPARE(percents.last(), 100);
        QVERIFY(percents.size() > 15 && percents.size() <= 22);
        QVERIFY(std::is_sorted(percents.begin(), percents.end()));
        QVERIFY(std::adjacent_find(percents.begin(), percents.end()) == percents.end());
    }

    void emptyText_isPainted()
    {
        RuleScan scan(RulesOf(CRules));
        RichText text;
        RecordedWork work;
        PaintByRules(text, scan, TokenPalette::Default().Light, work);
        QCOMPARE(work.Done, QList<qint64>());
        QCOMPARE(text.Text(), QString());
        TakePaintOff(text);
        QCOMPARE(text.Text(), QString());
    }

    void oddCharacters_stayAsTheyAre()
    {
        RuleScan scan(RulesOf(CRules));
        const QString source = u"\t\v\f \u00a0 \u2028 \U0001F600 \"\U0001F600\" // \u202e\r\n\r\n\r\n"_s + QChar(0xd800)
                               + u" // \ufeff"_s;
        RichText text = TextOf(source);
        PaintByRules(text, scan, TokenPalette::Default().Light, NoWork());
        QCOMPARE(text.Text(), source);
        QVERIFY(Marks(text).contains(u"ssss"_s));
    }

    // Taking off

    void takenOff_leavesBoldHeadersAndNothingElse()
    {
        const QString header = Header + u"   Title   ###############"_s;
        const QString source = u"a // b\r\n"_s + header + u"\r\nbold coloured\r\n"_s + header;
        RichText text = TextOf(source);
        text.SetSelStart(0);
        text.SetSelLength(source.size());
        text.SetSelColor(0x123456);
        text.SetSelItalic(true);
        text.SetSelUnderline(true);
        text.SetSelFontName(u"Verdana"_s);
        text.SetSelFontSize(24);
        Make(text, u"bold"_s, [](RichText& box) { box.SetSelBold(true); });
        MakeHeader(text, header); // the first one; the last line is none
        TakePaintOff(text);
        QCOMPARE(text.Text(), source);
        const qsizetype begin = source.indexOf(header);
        for (qsizetype at = 0; at < source.size(); ++at) {
            const CharFormat& format = text.Document().FormatAt(at);
            const bool isHeader = at >= begin && at < begin + header.size();
            QCOMPARE(bool(format.Bold), isHeader);
            QCOMPARE(format.Color, isHeader ? 0x800000u : AutomaticColor);
            QVERIFY(!format.Italic && !format.Underline);
            QCOMPARE(format.HalfPoints, quint16(2 * CodeFont.Points));
            QCOMPARE(text.Document().Font(format.Font).Name, CodeFont.Name);
            QCOMPARE(bool(format.Protected), isHeader);
        }
    }

    void paintedAndTakenOff_isThePlainTextsRtf()
    {
        RuleScan scan(RulesOf(CRules));
        RichText text = TextOf(u"int x; /* a\r\nb */ if \"s\"\r\n"_s);
        const QString before = text.TextRTF();
        PaintByRules(text, scan, TokenPalette::Default().Light, NoWork());
        QVERIFY(text.TextRTF() != before);
        TakePaintOff(text);
        QCOMPARE(text.TextRTF(), before);
    }

    // The palette

    void usualColours_canBeRead()
    {
        const TokenPalette& palette = TokenPalette::Default();
        for (const TokenKindRow& row : TokenKindRows) {
            const size_t place = size_t(row.Kind);
            QVERIFY2(ContrastOf(palette.Light[place], 0xffffff) >= 4.5, row.Name);
            QVERIFY2(ContrastOf(palette.Dark[place], 0x292623) >= 4.5, row.Name);
        }
        for (const TokenColors& colors : {palette.Light, palette.Dark}) { // and told from each other
            for (size_t one = 0; one < colors.size(); ++one) {
                for (size_t other = 0; other < one; ++other)
                    QVERIFY2(colors[one] != colors[other], TokenKindRows[one].Name);
            }
        }
    }

    void palette_goesIntoTextsAndBack()
    {
        QCOMPARE(TokenPalette::Default().LightText(), QString());
        QCOMPARE(TokenPalette::Default().DarkText(), QString());
        TokenPalette palette = TokenPalette::Default();
        quint32 color = 0x000001;
        for (const TokenKindRow& row : TokenKindRows) {
            palette.Light[size_t(row.Kind)] = color;
            palette.Dark[size_t(row.Kind)] = 0xffffff - color;
            color += 0x010203;
        }
        QCOMPARE(TokenPalette::FromTexts(palette.LightText(), palette.DarkText()), palette);
        TokenPalette one = TokenPalette::Default();
        one.Light[size_t(TokenKind::Comment)] = 0x030201;
        QCOMPARE(one.LightText(), u"comment=#010203"_s); // as it is commonly written
        QCOMPARE(one.DarkText(), QString());
        QCOMPARE(TokenPalette::FromTexts(u"  comment=#010203 "_s, {}), one);
    }

    void nonsenseInPaletteTexts_isPassedOver()
    {
        for (const QString& text :
             {u"comment"_s, u"comment="_s, u"comment=#"_s, u"comment=#12345"_s, u"comment=#1234567"_s,
              u"comment=#12345g"_s, u"comment=123456"_s, u"=#123456"_s, u"nothing=#123456"_s, u"Comment=#123456"_s,
              u"#123456"_s, u"comment=#-12345"_s, u"comment = #123456"_s, u"comment==#123456"_s, u"ä=#ä"_s})
            QVERIFY2(TokenPalette::FromTexts(text, text) == TokenPalette::Default(), qPrintable(text));
        const TokenPalette palette = TokenPalette::FromTexts(u"rubbish comment=#010203 string=#zz"_s, {});
        QCOMPARE(palette.LightText(), u"comment=#010203"_s);
        QCOMPARE(TokenPalette::FromTexts(u"comment=#010203 comment=#040506"_s, {}).LightText(), u"comment=#040506"_s);
    }

    // Languages

    void byRules_noWordIsSpeltAnew()
    {
        CTextFormat format;
        format.SetLanguage(Language(CRules + u"case: fold\nwords keyword: rem name\n"_s));
        QVERIFY(format.Rules());
        const QString source = u"Name.Class\r\nIF x THEN\r\nREM a Remark, name class\r\nrEm\r\n"_s;
        RichText text = TextOf(source);
        format.ColorizeCode(text);
        QCOMPARE(text.Text(), source);
        QVERIFY(Marks(text).startsWith(u"kkkk"_s));
        QVERIFY2(Marks(text).contains(u"\r\nkk.."_s), qPrintable(Marks(text)));
    }

    void withoutRules_wordsGetTheSpellingOfTheList()
    {
        CTextFormat format;
        format.SetLanguage(Language({}));
        QVERIFY(!format.Rules());
        RichText text = TextOf(u"IF name.CLASS "_s);
        format.ColorizeCode(text);
        QCOMPARE(text.Text(), u"If Name.Class "_s);
    }

    void spellingKept_coloursAreAsBeforeAndTheTextStays()
    {
        const QString source = u"IF name.CLASS \r\nREM note IF\r\n// If\r\nname \"IF\" rem\r\n"_s;
        CTextFormat corrects;
        corrects.SetLanguage(Language({}));
        RichText corrected = TextOf(source);
        corrects.ColorizeCode(corrected);
        QVERIFY(corrected.Text() != source);

        CTextFormat keeps;
        keeps.SetLanguage(Language(u"spelling: keep\n"_s));
        QVERIFY(!keeps.Rules());
        RichText kept = TextOf(source);
        keeps.ColorizeCode(kept);
        QCOMPARE(kept.Text(), source);
        for (qsizetype at = 0; at < source.size(); ++at) {
            const CharFormat& one = kept.Document().FormatAt(at);
            const CharFormat& other = corrected.Document().FormatAt(at);
            QVERIFY2(one.Color == other.Color && one.Bold == other.Bold, qPrintable(QString::number(at)));
        }
        QCOMPARE(kept.Document().FormatAt(0).Color, 0x800000u);
        QCOMPARE(kept.Document().FormatAt(source.indexOf(u"// If"_s)).Color, 0x008000u);
    }

    void remLine_ofALanguageThatKeepsSpelling_staysAndIsAComment()
    {
        CTextFormat format;
        LanguageDefinition vb = BuiltInLanguage(LanguageType::VB);
        vb.Rules = u"spelling: keep\n"_s;
        format.SetLanguage(vb);
        const QString source = u"REM dim x\r\nrem DIM\r\nDIM y ' dim\r\n"_s;
        RichText text = TextOf(source);
        format.ColorizeCode(text);
        QCOMPARE(text.Text(), source);
        CTextFormat correcting;
        correcting.SetLanguage(BuiltInLanguage(LanguageType::VB));
        RichText other = TextOf(source);
        correcting.ColorizeCode(other);
        for (qsizetype at = 0; at < source.size(); ++at)
            QVERIFY2(text.Document().FormatAt(at).Color == other.Document().FormatAt(at).Color,
                     qPrintable(QString::number(at)));
    }

    void languageOfAnItem_countsUntilItIsTakenBack()
    {
        CTextFormat format;
        format.SetLanguage(Language(u"line: ;\n"_s, u";"_s));
        const std::shared_ptr<RuleScan> library = format.Rules();
        format.SetItemLanguage(u"Python"_s);
        QVERIFY(format.Rules());
        QVERIFY(format.Rules() != library);
        QCOMPARE(format.CommentIdentifier(), u"#"_s);
        RichText text = TextOf(u"def x: # ;"_s);
        format.ColorizeCode(text);
        QCOMPARE(Marks(text), u"kkk....ccc"_s);
        const std::shared_ptr<RuleScan> python = format.Rules();
        format.SetItemLanguage(u"C"_s);
        QCOMPARE(format.CommentIdentifier(), u"//"_s);
        format.SetItemLanguage(u"python"_s); // known already
        QCOMPARE(format.Rules(), python);
        for (const QString& name : {QString(), u"No such language"_s}) {
            format.SetItemLanguage(u"Python"_s);
            format.SetItemLanguage(name);
            QCOMPARE(format.Rules(), library);
            QCOMPARE(format.CommentIdentifier(), u";"_s);
        }
    }

    void languageOfAnItem_countsInALibraryWithoutRules()
    {
        CTextFormat format;
        format.SetLanguage(Language({}));
        format.SetItemLanguage(u"Python"_s);
        const QString source = u"IF name # CLASS\r\n"_s;
        RichText text = TextOf(source);
        format.ColorizeCode(text);
        QCOMPARE(text.Text(), source);
        QCOMPARE(Marks(text), u"........ccccccc\r\n"_s);
        format.SetItemLanguage({});
        format.ColorizeCode(text);
        QVERIFY(text.Text() != source);
    }

    void otherLibrary_beginsWithoutWordsAndTheSameOneKeepsThem()
    {
        const TemporaryHome home;
        const auto one = MakeLibrary(home.Path(u"data/one.qbd"_s), LanguageType::VB);
        const auto other = MakeLibrary(home.Path(u"data/other.qbd"_s), LanguageType::VB);
        CTextFormat format;
        const auto painted = [&] {
            RichText text = TextOf(u"dim x "_s);
            format.ColorizeCode(text);
            return text.Text();
        };
        format.ColorizeInit(*one);
        QCOMPARE(painted(), u"Dim x "_s);
        one->Execute(u"DELETE FROM Keywords"_s);
        format.ColorizeInit(*one);
        QCOMPARE(painted(), u"Dim x "_s); // those that were loaded stay
        other->Execute(u"DELETE FROM Keywords"_s);
        format.ColorizeInit(*other);
        QCOMPARE(painted(), u"dim x "_s);
        format.ColorizeInit(*one);
        QCOMPARE(painted(), u"dim x "_s); // nor do they come back
    }

    void libraryWithRules_isPaintedByThem()
    {
        const TemporaryHome home;
        const auto library = MakeLibrary(home.Path(u"data/one.qbd"_s), LanguageType::VB);
        StoreRulesOfLibrary(*library, u"line: '\nwords type: foo\n"_s);
        CTextFormat format;
        format.ColorizeInit(*library);
        QVERIFY(format.Rules());
        RichText text = TextOf(u"foo dim Dim 'dim"_s);
        format.ColorizeCode(text);
        QCOMPARE(text.Text(), u"foo dim Dim 'dim"_s);
        QCOMPARE(Marks(text), u"ttt.....kkk.cccc"_s); // coloured words of the library are keywords, by case
        StoreRulesOfLibrary(*library, {});
        format.ColorizeInit(*library);
        QVERIFY(!format.Rules());
    }

    // Samples

    void sample_isThatOfTheDefinitionOrMade()
    {
        LanguageDefinition language = Language(CRules);
        const QString made = SampleOf(language);
        QVERIFY2(made.startsWith(u"// "_s), qPrintable(made));
        QVERIFY2(made.contains(u"If Rem Name"_s) && made.contains(u"Class"_s), qPrintable(made));
        language.CommentStart = u"(*"_s;
        language.CommentEnd = u"*)"_s;
        QVERIFY(SampleOf(language).contains(u"(* "_s));
        language.Rules += u"sample: |int x;\nsample: |\nsample: |    return x; // \\\n"_s;
        QCOMPARE(SampleOf(language), u"int x;\n\n    return x; // \\"_s);
    }

    void sampleInRules_isItsFirst18LinesAndChangesNoColour()
    {
        QStringList lines;
        for (int i = 1; i <= 30; ++i)
            lines << u"  line: %1 /*"_s.arg(i);
        LanguageDefinition language = Language(WithSample(CRules, u"\n\n"_s + lines.join(u'\n') + u"\n\n"_s));
        QVERIFY(language.Rules.startsWith(CRules));
        const QStringList sample = SampleOf(language).split(u'\n');
        QCOMPARE(sample.size(), 18);
        QCOMPARE(sample.last(), u"  line: 18 /*"_s);
        const LanguageRules rules(language.Rules, {}, {});
        QVERIFY2(rules.Problems().isEmpty(), qPrintable(rules.Problems().join(u'\n')));
        RuleScan scan(std::make_shared<LanguageRules>(rules));
        std::vector<Token> tokens;
        QCOMPARE(scan.ScanLine(u"int", RuleScan::Begin, tokens), RuleScan::Begin);
        QCOMPARE(tokens, (std::vector<Token>{{0, 3, TokenKind::Type}}));
    }

    void eachShippedLanguageWithRules_hasASampleInColour()
    {
        for (const ShippedLanguage& shipped : ShippedLanguages()) {
            const LanguageDefinition language = ReadLanguageFile(shipped.Path);
            const QString sample = SampleOf(language);
            QVERIFY2(!sample.trimmed().isEmpty(), qPrintable(shipped.Name));
            CTextFormat format;
            format.SetLanguage(language);
            if (!format.Rules())
                continue;
            RichText text = TextOf(sample);
            const QString before = text.Text();
            format.ColorizeCode(text);
            QVERIFY2(text.Text() == before, qPrintable(shipped.Name));
            QVERIFY2(!Marks(text).remove(u'.').trimmed().isEmpty(), qPrintable(shipped.Name));
        }
    }

    // Headers of sections in another language

    void headersOfAnotherLanguage_getTheMarkOfThisOne()
    {
        RichText text = TextOf(u"before\r\n\r\nafter"_s);
        CodeSections vb(text, u"'"_s);
        for (const quint8 bit : {quint8(1), quint8(8)})
            vb.Create(bit, 0, true);
        QCOMPARE(vb.Present(), quint8(9));
        const QString before = text.Text();
        text.SetSelStart(3);
        CodeSections c(text, u"//"_s);
        QCOMPARE(c.Present(), quint8(0));
        c.TakeOverHeaders(u"'"_s);
        QCOMPARE(c.Present(), quint8(9));
        QCOMPARE(text.Text(), QString(before).replace(u"'####"_s, u"//####"_s));
        for (qsizetype at = text.Text().indexOf(u"//##"_s); at >= 0; at = text.Text().indexOf(u"//##"_s, at + 1)) {
            for (int i = 0; i < 4; ++i) { // the mark looks and is kept as the line behind it
                const CharFormat& format = text.Document().FormatAt(at + i);
                QVERIFY(format.Bold && format.Protected);
                QCOMPARE(format.Color, 0x800000u);
            }
        }
        CodeSections back(text, u"'"_s);
        back.TakeOverHeaders(u"//"_s);
        QCOMPARE(text.Text(), before);
        QCOMPARE(text.SelStart(), 3);
    }

    void whatOnlyReadsLikeAHeader_keepsItsMark()
    {
        const QString marker = u"'###############   "_s;
        const QString source = marker + u"plain\r\nx "_s + marker + u"within\r\n"_s;
        RichText text = TextOf(source);
        Make(text, u"x "_s + marker, [](RichText& box) { box.SetSelBold(true); });
        CodeSections(text, u"//"_s).TakeOverHeaders(u"'"_s);
        QCOMPARE(text.Text(), source);
        CodeSections(text, u"//"_s).TakeOverHeaders({});
        QCOMPARE(text.Text(), source);
    }

    void markThatBeginsWithTheFormerOne_isTakenOverOnce()
    {
        for (const auto& [former, now] : {std::pair(u"-"_s, u"--"_s), std::pair(u"--"_s, u"-"_s),
                                          std::pair(u"#"_s, u"##"_s), std::pair(u"##"_s, u"#"_s)}) {
            RichText text;
            CodeSections(text, former).Create(4, 0, true);
            const QString before = text.Text();
            CodeSections sections(text, now);
            sections.TakeOverHeaders(former);
            QCOMPARE(sections.Present(), quint8(4));
            QCOMPARE(text.Text().size(), before.size() + now.size() - former.size());
        }
    }
};

QB_TEST_MAIN(TestRulePaint)
#include "tst_rule_paint.moc"
