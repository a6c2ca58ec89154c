// Reading what was written, and writing what was read.

#include "platform/richtext/Rtf.h"
#include "support/RichTextDescription.h"
#include "support/TestRun.h"

#include <algorithm>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

namespace {

/// A document as several programs write them, with something of everything.
QString RichSample()
{
    return u"{\\rtf1\\ansi\\ansicpg1252\\deff0\\deflang1031{\\fonttbl{\\f0\\fmodern\\fprq1\\fcharset0 Courier New;}"
           "{\\f1\\fswiss\\fprq2\\fcharset0 Arial;}{\\f2\\froman\\fcharset204{\\*\\falt Times}Times New Roman Cyr;}"
           "{\\f3\\fnil\\fcharset128 MS Gothic;}{\\f4\\fnil\\fcharset2 Symbol;}}\r\n"
           "{\\colortbl ;\\red255\\green0\\blue0;\\red0\\green128\\blue0;\\red255\\green255\\blue0;}\r\n"
           "{\\stylesheet{\\s0 Normal;}{\\s1\\b heading 1;}}{\\info{\\author N. N.}}"
           "{\\*\\listtable{\\list{\\listlevel\\levelnfc0{\\leveltext\\'02\\'00.;}{\\levelnumbers\\'01;}}"
           "{\\listlevel\\levelnfc23{\\leveltext\\'01\\u8226 ?;}{\\levelnumbers;}}\\listid7}}"
           "{\\*\\listoverridetable{\\listoverride\\listid7\\listoverridecount0\\ls1}}\r\n"
           "{\\header top\\par}{\\*\\generator Writer 1.0;}\\viewkind4\\uc1\r\n"
           "\\pard\\qc\\f1\\fs28\\b Titel \\'fcber\\b0\\fs20\\par\r\n"
           "\\pard\\li360\\fi-200\\ri100\\tx720\\tx1440 a\\tab b\\tab\\i c\\i0\\par\r\n"
           "\\pard\\qj{\\ul under}{\\strike  struck}{\\protect  kept}{\\cf1\\highlight3  red on yellow}\\par\r\n"
           "\\pard{\\pntext\\f4\\'b7\\tab}{\\*\\pn\\pnlvlblt\\pnf4\\pnindent0{\\pntxtb\\'b7}}\\fi-300\\li300 "
           "one\\par\r\n"
           "{\\pntext\\f4\\'b7\\tab}two\\par\r\n"
           "\\pard{\\pntext 3)\\tab}{\\*\\pn\\pnlvlbody\\pnucrm\\pnstart3{\\pntxta)}}\\fi-300\\li300 III\\par\r\n"
           "\\pard\\ilvl0\\ls1\\fi-360\\li720 {\\listtext 1.\\tab}first\\par\\ilvl1\\ls1 second\\par\r\n"
           "\\pard\\qr\\f2 \\'cf\\'f0\\'e8\\'e2\\'e5\\'f2 \\f3 \\'83A\\'83\\'5c \\f0\\u28450\\'8a\\u-10179?\\u-8704?"
           "\\par\r\n"
           "\\pard\\f1{\\field{\\*\\fldinst{HYPERLINK \"http://x.invalid/?a=1&b=2\"}}{\\fldrslt{\\ul\\cf2 the "
           "link}}} behind\\line broken\\par\r\n"
           "\\par\r\n\\cf2\\par\r\n\\cf0 x\r\n"
           "{\\pict{\\*\\picprop}\\pngblip\\picw1\\pich1\\picwgoal15\\pichgoal15 "_s
           + QString::fromLatin1(SmallPng.toHex())
           + u"}{\\*\\shppict{\\pict\\jpegblip\\picwgoal300 ffd8ffe000104a464946}}{\\nonshppict{\\pict\\wmetafile8 "
             "0100}}\\par\r\n"
             "\\trowd\\cellx1000\\cellx2000\\pard\\intbl eins\\cell\\b zwei\\cell\\b0\\row\\trowd\\intbl drei\\cell "
             "vier\\cell\\row\r\n"
             "\\pard \\lquote q\\rquote\\ldblquote Q\\rdblquote\\endash\\emdash\\bullet\\~\\_\\-\\\\\\{\\} "
             "end\\par\r\n}"_s;
}

RichTextDocument Read(const QString& rtf)
{
    RichTextDocument document;
    ReadRtf(rtf, document);
    return document;
}

QString RandomLine(Dice& dice)
{
    static const QStringList pieces{
        u"word"_s, u" "_s,    u"  "_s,     u"\t"_s,     u"{"_s,    u"}"_s, u"\\"_s,     u"\\par"_s,  u"1"_s,
        u"-2"_s,   u"?"_s,    u"ä"_s,      u"€"_s,      u"漢字"_s, u"😀"_s, u"\u00a0"_s, u"\u00ad"_s, u"\u2028"_s,
        u"\x01"_s, u"\x7f"_s, u"\u0080"_s, u"\u8000"_s, u";"_s,    u"'"_s, u"*"_s,      u"\""_s};
    QString line;
    for (int i = dice.Roll(8); i > 0; --i)
        line += dice.PickOf(pieces);
    return line;
}

CharFormat RandomFormat(Dice& dice, RichTextDocument& document)
{
    static const FontInfo fonts[] = {{u"Courier New"_s, u"nil"_s, 0},
                                     {u"Courier New"_s, u"modern"_s, 0},
                                     {u"Arial"_s, u"swiss"_s, 0},
                                     {u"Größe {1} \\2"_s, u"roman"_s, 204},
                                     {u"ＭＳ ゴシック"_s, u"script"_s, 128},
                                     {u"Symbol"_s, u"decor"_s, 2},
                                     {u"B"_s, u"bidi"_s, 177},
                                     {u"T"_s, u"tech"_s, 255}};
    CharFormat format = document.DefaultFormat();
    format.Font = document.NumberOfFont(dice.PickOf(fonts));
    if (dice.OneIn(2))
        format.HalfPoints = quint16(1 + dice.Roll(200));
    if (dice.OneIn(2))
        format.Color = quint32(dice.Roll(4)) * 0x4030;
    if (dice.OneIn(4))
        format.BackColor = quint32(dice.Roll(0x1000000));
    format.Bold = dice.OneIn(3);
    format.Italic = dice.OneIn(3);
    format.Underline = dice.OneIn(3);
    format.Strike = dice.OneIn(4);
    format.Protected = dice.OneIn(4);
    if (dice.OneIn(5))
        format.Link = document.NumberOfLink(dice.OneIn(2) ? u"http://x.invalid/ä{}"_s : u"C:\\a b\\c.txt"_s);
    return format;
}

ParagraphFormat RandomStand(Dice& dice, RichTextDocument& document)
{
    ParagraphFormat format;
    if (dice.OneIn(2))
        format.LeftIndent = dice.Roll(3000);
    if (dice.OneIn(3))
        format.FirstIndent = dice.Roll(1000) - 500;
    if (dice.OneIn(4))
        format.RightIndent = dice.Roll(1000);
    format.Alignment = TextAlignment(dice.Roll(4));
    if (dice.OneIn(3)) {
        format.List = ListKind(dice.Roll(7));
        format.ListLevel = quint8(dice.Roll(3));
        if (format.List > ListKind::Bullet)
            format.ListStart = quint16(dice.Roll(60));
    }
    if (dice.OneIn(3))
        format.Tabs = document.NumberOfTabStops(QList<qint32>{360 + dice.Roll(3), 720 + dice.Roll(3)});
    return format;
}

RichTextDocument RandomDocument(quint32 seed)
{
    Dice dice(seed);
    RichTextDocument document({.Name = u"Arial"_s, .Points = 8 + dice.Roll(5)});
    const int lines = 1 + dice.Roll(7);
    for (int i = 0; i < lines; ++i) {
        for (int run = dice.Roll(4); run > 0; --run) {
            CharFormat format = RandomFormat(dice, document);
            if (dice.OneIn(10)) {
                format.Picture = document.NumberOfPicture({dice.OneIn(2) ? TextPicture::Png : TextPicture::Jpeg,
                                                           SmallPng.left(1 + dice.Roll(60)), dice.Roll(2) * 300,
                                                           dice.Roll(2) * 200});
                document.Replace(document.Length(), 0,
                                 QString(1 + dice.Roll(2), QChar(RichTextDocument::PictureCharacter)), format);
            } else {
                document.Replace(document.Length(), 0, RandomLine(dice), format);
            }
        }
        if (i + 1 < lines) {
            CharFormat format = document.Length() > 0 && !dice.OneIn(6) ? document.FormatAt(document.Length() - 1)
                                                                        : RandomFormat(dice, document);
            format.Picture = 0;
            document.Replace(document.Length(), 0, u"\r\n"_s, format);
        }
    }
    for (qsizetype at = 0;; at = document.ParagraphEnd(at)) {
        const ParagraphFormat stand = RandomStand(dice, document);
        if (dice.OneIn(2))
            document.ChangeParagraphs(at, at, [&stand](ParagraphFormat& format) { format = stand; });
        if (document.ParagraphEnd(at) == document.Length())
            break;
    }
    return document;
}

} // namespace

class TestRtfRoundTrip : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { FailOnWarnings(); }

    void sample_isWrittenTheSameAfterReading()
    {
        const RichTextDocument once = Read(RichSample());
        const QString rtf = WriteRtf(once);
        const RichTextDocument twice = Read(rtf);
        QCOMPARE(Describe(twice).join(u'\n'), Describe(once).join(u'\n'));
        QCOMPARE(WriteRtf(twice), rtf);
    }

    void foreignText_isWrittenTheSameAfterReading_data()
    {
        QTest::addColumn<QString>("rtf");
        const auto add = [](const char* name, const QString& body) {
            QTest::newRow(name) << u"{\\rtf1{\\fonttbl{\\f0 Arial;}{\\f1\\fmodern Mono;}{\\f2   ;}}"
                                   "{\\colortbl;\\red1\\green2\\blue3;\\red4\\green5\\blue6;}"_s
                                       + body + u"}"_s;
        };
        add("nothing", {});
        add("colour of a line end only", u"\\cf1 a\\cf2\\par\\cf1 b"_s);
        add("font of a line end only", u"\\f0 a\\f1\\par\\f0 b"_s);
        add("size of an empty line", u"\\fs20 a\\par\\fs40\\par\\fs20 b\\par"_s);
        add("colour of an empty text", u"\\cf2\\par"_s);
        add("font without a name", u"\\f2 a\\par"_s);
        add("tab stop at 0", u"\\pard a\\par\\pard\\tx0 b\\par\\pard\\tx0\\tx100 c\\par"_s);
        add("start of a bullet",
            u"\\pard{\\*\\pn\\pnlvlblt\\pnstart5}a\\par\\pard{\\*\\pn\\pnlvlblt\\pnstart6}b\\par"_s);
        add("start without a list", u"\\pard a\\par\\pnstart7 b\\par"_s);
        add("start of 0", u"\\pard{\\*\\pn\\pnlvlbody\\pnlcltr\\pnstart0}a\\par b\\par"_s);
        add("letters beyond z", u"\\pard{\\*\\pn\\pnlvlbody\\pnlcltr\\pnstart25}a\\par b\\par c\\par"_s);
        add("high numbers",
            u"\\pard{\\*\\pn\\pnlvlbody\\pnucrm\\pnstart32767}a\\par{\\*\\pn\\pnlvlbody\\pnucltr\\pnstart32767}b"
            "\\par c\\par"_s);
        add("level without a list", u"\\pard\\ilvl3 a\\par"_s);
        add("link without a target", u"{\\field{\\*\\fldinst HYPERLINK \"\"}{\\fldrslt a}}\\par"_s);
        add("link over lines", u"{\\field{\\*\\fldinst HYPERLINK \"x\"}{\\fldrslt a\\par b}}\\par"_s);
        add("link first", u"{\\field{\\*\\fldinst HYPERLINK \"x\"}{\\fldrslt\\fs40 a}}\\par b\\par"_s);
        add("link to a file", u"{\\field{\\*\\fldinst HYPERLINK \"C:\\\\\\\\a\\\\\\\\b.txt\"}{\\fldrslt a}}\\par"_s);
        add("link inside a link",
            u"{\\field{\\*\\fldinst HYPERLINK \"x\"}{\\fldrslt a{\\field{\\*\\fldinst HYPERLINK \"y\"}{\\fldrslt "
            "b}}c}}\\par"_s);
        add("picture of a negative size", u"{\\pict\\pngblip\\picwgoal-5 0102}{\\pict\\pngblip 0102}\\par"_s);
        add("picture of odd digits", u"{\\pict\\pngblip 010}\\par"_s);
        add("picture in a link", u"{\\field{\\*\\fldinst HYPERLINK \"x\"}{\\fldrslt{\\pict\\pngblip 0102}}}\\par"_s);
        add("object replacement character", u"\\u-4?\\par"_s);
        add("line ends by number", u"a\\u13?b\\u10?c\\u13?\\u10?d\\par"_s);
        add("line ends by byte", u"a\\'0db\\'0ac\\'0d\\'0ad\\par"_s);
        add("half a character", u"\\u-10179?a\\u-8704?\\par"_s);
        add("paragraphs of their own group", u"{\\qc a\\par}{\\qr b\\par}c"_s);
    }

    void foreignText_isWrittenTheSameAfterReading()
    {
        QFETCH(QString, rtf);
        const RichTextDocument once = Read(rtf);
        const QString written = WriteRtf(once);
        const RichTextDocument twice = Read(written);
        QCOMPARE(twice.Text(), once.Text());
        QCOMPARE(WriteRtf(twice), written);
        QCOMPARE(DescribeWithoutLineEnds(twice).join(u'\n'), DescribeWithoutLineEnds(once).join(u'\n'));
    }

    void randomDocuments_comeBackAsTheyWere()
    {
        for (quint32 seed = 0; seed < 4000; ++seed) {
            const RichTextDocument document = RandomDocument(seed);
            const QByteArray difference = FirstDifference(DescribeWithoutLineEnds(Read(WriteRtf(document))),
                                                          DescribeWithoutLineEnds(document));
            QVERIFY2(difference.isEmpty(), "seed " + QByteArray::number(seed) + '\n' + difference);
        }
    }

    void randomDocuments_areWrittenTheSameAfterReading()
    {
        for (quint32 seed = 0; seed < 4000; ++seed) {
            const QString rtf = WriteRtf(Read(WriteRtf(RandomDocument(seed))));
            const QString again = WriteRtf(Read(rtf));
            QVERIFY2(again == rtf,
                     "seed " + QByteArray::number(seed) + '\n' + FirstDifference(again.split(u'\n'), rtf.split(u'\n')));
        }
    }

    void emptyLine_keepsItsLook()
    {
        RichTextDocument document;
        document.Replace(0, 0, u"a\r\n\r\nb"_s, document.DefaultFormat());
        document.ChangeFormat(3, 5, [](CharFormat& format) { format.HalfPoints = 60; });
        QCOMPARE(Describe(Read(WriteRtf(document))), Describe(document));
    }

    void protectedLineEnd_staysProtected()
    {
        RichTextDocument document;
        document.Replace(0, 0, u"a\r\n\r\nb"_s, document.DefaultFormat());
        document.ChangeFormat(1, 5, [](CharFormat& format) { format.Protected = 1; });
        QCOMPARE(Describe(Read(WriteRtf(document))), Describe(document));
    }

    void lineEndBehindALink_looksAsTheTextBeforeTheLink()
    {
        RichTextDocument document;
        document.Replace(0, 0, u"link\r\nb"_s, document.DefaultFormat());
        const quint32 link = document.NumberOfLink(u"x"_s);
        document.ChangeFormat(0, 4, [link](CharFormat& format) { format.Link = link; });
        QCOMPARE(Describe(Read(WriteRtf(document))), Describe(document));
    }

    void writtenText_isAsciiWithNothingButPrintableCharactersAndLineEnds()
    {
        for (quint32 seed = 0; seed < 500; ++seed) {
            const QString rtf = WriteRtf(RandomDocument(seed));
            const auto printable = [](QChar c) { return (c >= u' ' && c <= u'~') || c == u'\r' || c == u'\n'; };
            QVERIFY2(std::all_of(rtf.begin(), rtf.end(), printable), qPrintable(rtf));
        }
    }

    void damagedSamples_areWrittenTheSameAfterReading()
    {
        const QString sample = RichSample();
        for (quint32 seed = 0; seed < 3000; ++seed) {
            Dice dice(seed);
            QString rtf = sample;
            for (int i = 1 + dice.Roll(6); i > 0; --i) {
                const qsizetype at = 6 + dice.Roll(rtf.size() - 6);
                const qsizetype length = dice.Roll(20);
                switch (dice.Roll(4)) {
                case 0:
                    rtf.remove(at, length);
                    break;
                case 1:
                    rtf.insert(at, QStringView(sample).mid(dice.Roll(sample.size()), length));
                    break;
                case 2:
                    rtf.insert(at, dice.PickOf(QStringList{u"{"_s, u"}"_s, u"\\"_s, u"\\'"_s, u"\\bin9 "_s, u"\\u"_s,
                                                           u"\\uc2"_s, u"0"_s, u"\\pard"_s, u"\\plain"_s, u"\\ls1"_s}));
                    break;
                default:
                    rtf[at] = QChar(dice.Roll(256));
                    break;
                }
            }
            const RichTextDocument once = Read(rtf);
            const QString written = WriteRtf(once);
            const RichTextDocument twice = Read(written);
            QVERIFY2(twice.Text() == once.Text(),
                     "seed " + QByteArray::number(seed) + '\n' + FirstDifference({twice.Text()}, {once.Text()}));
            const QString again = WriteRtf(twice);
            QVERIFY2(again == written, "seed " + QByteArray::number(seed) + '\n'
                                           + FirstDifference(again.split(u'\n'), written.split(u'\n')));
        }
    }
};

QB_TEST_MAIN(TestRtfRoundTrip)
#include "tst_rtf_roundtrip.moc"
