#include "platform/richtext/RichTextDocument.h"
#include "support/RichTextDescription.h"
#include "support/TestRun.h"

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

namespace {

RichTextDocument Document(const QString& text)
{
    RichTextDocument document;
    document.Replace(0, 0, text, document.DefaultFormat());
    return document;
}

void Bold(RichTextDocument& document, qsizetype begin, qsizetype end)
{
    document.ChangeFormat(begin, end, [](CharFormat& format) { format.Bold = 1; });
}

/// One mark a character: B where it is bold.
QString Bolds(const RichTextDocument& document)
{
    QString marks;
    for (qsizetype at = 0; at < document.Length(); ++at)
        marks += document.FormatAt(at).Bold ? u'B' : u'-';
    return marks;
}

void Indent(RichTextDocument& document, qsizetype position, int twips)
{
    document.ChangeParagraphs(position, position, [twips](ParagraphFormat& format) { format.LeftIndent = twips; });
}

/// The left indents of the paragraphs, in order.
QString Indents(const RichTextDocument& document)
{
    QStringList list;
    qsizetype begin = 0;
    for (bool more = true; more;) {
        list << QString::number(document.ParagraphAt(begin).LeftIndent);
        const qsizetype end = document.Text().indexOf(u'\n', begin);
        more = end >= 0;
        begin = end + 1;
    }
    return list.join(u' ');
}

bool HasOnlyWholeLineEnds(const QString& text)
{
    const qsizetype pairs = text.count("\r\n"_L1);
    return text.count(u'\r') == pairs && text.count(u'\n') == pairs;
}

} // namespace

class TestRichTextDocument : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { FailOnWarnings(); }

    void lineEndsOfAnyKind_becomeCrLf_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("lines");
        QTest::newRow("empty") << QString() << QString();
        QTest::newRow("none") << u"abc"_s << u"abc"_s;
        QTest::newRow("CR LF") << u"a\r\nb\r\n"_s << u"a\r\nb\r\n"_s;
        QTest::newRow("LF") << u"\na\nb"_s << u"\r\na\r\nb"_s;
        QTest::newRow("CR") << u"a\r\rb\r"_s << u"a\r\n\r\nb\r\n"_s;
        QTest::newRow("LF CR") << u"a\n\rb"_s << u"a\r\n\r\nb"_s;
        QTest::newRow("mixed") << u"a\r\r\nb\r\n\nc"_s << u"a\r\n\r\nb\r\n\r\nc"_s;
        QTest::newRow("others are no line ends") << u"a\vb\fc\u2028d\u0085e"_s << u"a\vb\fc\u2028d\u0085e"_s;
    }

    void lineEndsOfAnyKind_becomeCrLf()
    {
        QFETCH(QString, text);
        QTEST(WithCrLf(text), "lines");
        RichTextDocument document;
        const qsizetype came = document.Replace(0, 0, text, document.DefaultFormat());
        QCOMPARE(came, document.Length());
        QTEST(document.Text(), "lines");
    }

    void replace_keepsTheFormatsAround_data()
    {
        QTest::addColumn<int>("position");
        QTest::addColumn<int>("length");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("after");
        QTest::addColumn<QString>("bolds");
        QTest::newRow("same length") << 1 << 2 << u"xy"_s << u"axyd\r\nefgh"_s << u"B--B---BB-"_s;
        QTest::newRow("shorter") << 1 << 2 << u"x"_s << u"axd\r\nefgh"_s << u"B-B---BB-"_s;
        QTest::newRow("longer") << 1 << 2 << u"xyz"_s << u"axyzd\r\nefgh"_s << u"B---B---BB-"_s;
        QTest::newRow("insert") << 2 << 0 << u"x"_s << u"abxcd\r\nefgh"_s << u"BB-BB---BB-"_s;
        QTest::newRow("insert at the begin") << 0 << 0 << u"x"_s << u"xabcd\r\nefgh"_s << u"-BBBB---BB-"_s;
        QTest::newRow("insert at the end") << 10 << 0 << u"x"_s << u"abcd\r\nefghx"_s << u"BBBB---BB--"_s;
        QTest::newRow("delete") << 1 << 2 << QString() << u"ad\r\nefgh"_s << u"BB---BB-"_s;
        QTest::newRow("across lines") << 3 << 5 << u"x"_s << u"abcxgh"_s << u"BBB-B-"_s;
        QTest::newRow("across lines, same length") << 3 << 5 << u"vwxyz"_s << u"abcvwxyzgh"_s << u"BBB-----B-"_s;
        QTest::newRow("line end within a line") << 1 << 2 << u"\r\n"_s << u"a\r\nd\r\nefgh"_s << u"B--B---BB-"_s;
        QTest::newRow("LF within a line") << 1 << 1 << u"\n"_s << u"a\r\ncd\r\nefgh"_s << u"B--BB---BB-"_s;
        QTest::newRow("line end by letters") << 4 << 2 << u"xy"_s << u"abcdxyefgh"_s << u"BBBB---BB-"_s;
        QTest::newRow("all") << 0 << 10 << u"new"_s << u"new"_s << u"---"_s;
        QTest::newRow("all by nothing") << 0 << 10 << QString() << QString() << QString();
    }

    void replace_keepsTheFormatsAround()
    {
        QFETCH(int, position);
        QFETCH(int, length);
        QFETCH(QString, text);
        RichTextDocument document = Document(u"abcd\r\nefgh"_s);
        Bold(document, 0, 4);
        Bold(document, 7, 9);
        const qsizetype came = document.Replace(position, length, text, document.DefaultFormat());
        QTEST(document.Text(), "after");
        QTEST(Bolds(document), "bolds");
        QCOMPARE(came, document.Length() - (10 - length));
    }

    void replace_givesTheFormatAskedFor()
    {
        RichTextDocument document = Document(u"abcd"_s);
        CharFormat format = document.DefaultFormat();
        format.Bold = 1;
        document.Replace(1, 2, u"xy"_s, format);
        document.Replace(4, 0, u"\nz"_s, format);
        QCOMPARE(document.Text(), u"axyd\r\nz"_s);
        QCOMPARE(Bolds(document), u"-BB-BBB"_s);
    }

    void paragraphFormats_followTheirParagraphs_data()
    {
        QTest::addColumn<int>("position");
        QTest::addColumn<int>("length");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("indents");
        // "a\r\nbb\r\n\r\ncc" with the indents 1 to 4
        QTest::newRow("insert in the first") << 1 << 0 << u"xyz"_s << u"1 2 3 4"_s;
        QTest::newRow("insert before the second") << 3 << 0 << u"x"_s << u"1 2 3 4"_s;
        QTest::newRow("insert in the empty one") << 7 << 0 << u"x"_s << u"1 2 3 4"_s;
        QTest::newRow("split in the middle") << 4 << 0 << u"\r\n"_s << u"1 2 2 3 4"_s;
        QTest::newRow("split before the first") << 0 << 0 << u"\n"_s << u"1 1 2 3 4"_s;
        QTest::newRow("split behind the last") << 11 << 0 << u"\n"_s << u"1 2 3 4 4"_s;
        QTest::newRow("several lines into one") << 4 << 0 << u"x\ny\nz"_s << u"1 2 2 2 3 4"_s;
        QTest::newRow("join the first two") << 1 << 2 << QString() << u"1 3 4"_s;
        QTest::newRow("join by a word") << 0 << 5 << u"x"_s << u"1 3 4"_s;
        QTest::newRow("delete the empty one") << 7 << 2 << QString() << u"1 2 4"_s;
        QTest::newRow("join over the empty one") << 5 << 4 << QString() << u"1 2"_s;
        QTest::newRow("delete the second") << 3 << 4 << QString() << u"1 3 4"_s;
        QTest::newRow("delete the first two") << 0 << 7 << QString() << u"3 4"_s;
        QTest::newRow("line end by a line end") << 1 << 2 << u"\n"_s << u"1 1 3 4"_s;
        QTest::newRow("line end at the end") << 4 << 7 << u"\n"_s << u"1 2 2"_s;
        QTest::newRow("whole") << 0 << 11 << u"x\ny"_s << u"1 1"_s;
    }

    void paragraphFormats_followTheirParagraphs()
    {
        QFETCH(int, position);
        QFETCH(int, length);
        QFETCH(QString, text);
        RichTextDocument document = Document(u"a\r\nbb\r\n\r\ncc"_s);
        int indent = 0;
        for (const qsizetype begin : {0, 3, 7, 9})
            Indent(document, begin, ++indent);
        QCOMPARE(Indents(document), u"1 2 3 4"_s);
        document.Replace(position, length, text, document.DefaultFormat());
        QTEST(Indents(document), "indents");
    }

    void part_isATextOfItsOwn()
    {
        RichTextDocument document = Document(u"ab\r\ncd\r\nef"_s);
        Bold(document, 1, 5);
        Indent(document, 0, 1);
        Indent(document, 4, 2);
        Indent(document, 8, 3);
        const RichTextDocument part = document.Part(1, 8);
        QCOMPARE(part.Text(), u"b\r\ncd\r\ne"_s);
        QCOMPARE(Bolds(part), u"BBBB----"_s);
        QCOMPARE(Indents(part), u"1 2 3"_s);
        QCOMPARE(Describe(document.Part(0, document.Length())), Describe(document));
        QCOMPARE(document.Part(3, 0).Text(), QString());
        QCOMPARE(Indents(document.Part(4, 2)), u"2"_s);
        QCOMPARE(Indents(document.Part(8, 0)), u"3"_s);
    }

    void replaceByADocument_bringsItsFormats()
    {
        RichTextDocument document = Document(u"ab\r\ncd"_s);
        Bold(document, 0, 6);
        Indent(document, 0, 1);
        Indent(document, 4, 2);

        RichTextDocument other({.Name = u"Arial"_s, .Points = 14});
        CharFormat format = other.DefaultFormat();
        format.Font = other.NumberOfFont({u"Times"_s, u"roman"_s, 204});
        format.Link = other.NumberOfLink(u"http://x.invalid"_s);
        other.Replace(0, 0, u"T"_s, format);
        format.Picture = other.NumberOfPicture({TextPicture::Jpeg, "JPEG"_ba, 300, 200});
        other.Replace(1, 0, QString(QChar(RichTextDocument::PictureCharacter)), format);
        other.Replace(2, 0, u"\r\nx"_s, other.DefaultFormat());
        Indent(other, 0, 7);
        const quint32 tabs = other.NumberOfTabStops({100, 200});
        other.ChangeParagraphs(0, 0, [tabs](ParagraphFormat& one) { one.Tabs = tabs; });

        QCOMPARE(document.Replace(1, 1, other), 5);
        QCOMPARE(document.Text(), u"aT\ufffc\r\nx\r\ncd"_s);
        QCOMPARE(Bolds(document), u"B-----BBBB"_s);
        const QStringList lines = Describe(document);
        QCOMPARE(lines.filter(u"1: Times,roman,204,28,link http://x.invalid"_s).size(), 1);
        QCOMPARE(lines.filter(u"picture 1 300x200 4a504547"_s).size(), 1);
        QCOMPARE(lines.filter(u"3: Arial,nil,0,28"_s).size(), 1);
        QCOMPARE(lines.filter(u"paragraph at 0: align 0 left 7 first 0 right 0 tab 100 tab 200"_s).size(), 1);
        QCOMPARE(Indents(document), u"7 1 2"_s);
    }

    void replaceByADocumentOfOneLine_keepsTheParagraph()
    {
        RichTextDocument document = Document(u"ab\r\ncd"_s);
        Indent(document, 0, 1);
        Indent(document, 4, 2);
        RichTextDocument other = Document(u"x"_s);
        Indent(other, 0, 9);
        document.Replace(1, 0, other);
        QCOMPARE(document.Text(), u"axb\r\ncd"_s);
        QCOMPARE(Indents(document), u"1 2"_s);
        document.Replace(0, 0, RichTextDocument());
        QCOMPARE(document.Text(), u"axb\r\ncd"_s);
        QCOMPARE(Indents(document), u"1 2"_s);
    }

    void changeFormat_changesTheRangeOnly()
    {
        RichTextDocument document = Document(u"abcdef"_s);
        Bold(document, 1, 3);
        document.ChangeFormat(2, 5, [](CharFormat& format) { format.Italic = 1; });
        QCOMPARE(Bolds(document), u"-BB---"_s);
        QCOMPARE(document.FormatAt(1).Italic, 0);
        QCOMPARE(document.FormatAt(2).Italic, 1);
        QCOMPARE(document.FormatAt(4).Italic, 1);
        QCOMPARE(document.FormatAt(5).Italic, 0);
        const size_t runs = document.Runs().Count();
        document.ChangeFormat(3, 3, [](CharFormat& format) { format.Strike = 1; });
        QCOMPARE(document.Runs().Count(), runs);
    }

    void changeParagraphs_changesThoseThatTheRangeTouches_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("begin");
        QTest::addColumn<int>("end");
        QTest::addColumn<QString>("indents");
        const QString text = u"a\r\nbb\r\n\r\ncc"_s;
        QTest::newRow("first") << text << 0 << 0 << u"5 0 0 0"_s;
        QTest::newRow("inside") << text << 4 << 5 << u"0 5 0 0"_s;
        QTest::newRow("up to the begin of the next") << text << 3 << 7 << u"0 5 0 0"_s;
        QTest::newRow("over a line end") << text << 5 << 8 << u"0 5 5 0"_s;
        QTest::newRow("empty one") << text << 7 << 7 << u"0 0 5 0"_s;
        QTest::newRow("last, without a line end") << text << 11 << 11 << u"0 0 0 5"_s;
        QTest::newRow("all") << text << 0 << 11 << u"5 5 5 5"_s;
        QTest::newRow("empty last") << u"a\r\n"_s << 3 << 3 << u"0 5"_s;
        QTest::newRow("line before an empty last") << u"a\r\n"_s << 0 << 1 << u"5 0"_s;
        QTest::newRow("up to an empty last") << u"a\r\n"_s << 0 << 3 << u"5 0"_s;
        QTest::newRow("empty text") << QString() << 0 << 0 << u"5"_s;
    }

    void changeParagraphs_changesThoseThatTheRangeTouches()
    {
        QFETCH(QString, text);
        QFETCH(int, begin);
        QFETCH(int, end);
        RichTextDocument document = Document(text);
        document.ChangeParagraphs(begin, end, [](ParagraphFormat& format) { format.LeftIndent = 5; });
        QTEST(Indents(document), "indents");
    }

    void emptyText_keepsItsParagraphForWhatIsTyped()
    {
        RichTextDocument document;
        Indent(document, 0, 5);
        document.Replace(0, 0, u"a\r\nb"_s, document.DefaultFormat());
        QCOMPARE(Indents(document), u"5 5"_s);
    }

    void paragraphBeginAndEnd_holdTheLineEnd()
    {
        const RichTextDocument document = Document(u"a\r\n\r\nbc"_s);
        const qsizetype begins[] = {0, 0, 0, 3, 3, 5, 5, 5};
        const qsizetype ends[] = {3, 3, 3, 5, 5, 7, 7, 7};
        for (qsizetype at = 0; at <= document.Length(); ++at) {
            QCOMPARE(document.ParagraphBegin(at), begins[at]);
            QCOMPARE(document.ParagraphEnd(at), ends[at]);
        }
    }

    void clear_keepsTheDefaultFont()
    {
        RichTextDocument document({.Name = u"Arial"_s, .Points = 14});
        document.Replace(0, 0, u"a\r\nb"_s, document.DefaultFormat());
        Bold(document, 0, 4);
        Indent(document, 0, 5);
        document.Clear();
        document.Replace(0, 0, u"x"_s, document.DefaultFormat());
        QCOMPARE(Describe(document),
                 (QStringList{u"x"_s, u"0: Arial,nil,0,28"_s, u"paragraph at 0: align 0 left 0 first 0 right 0"_s}));
    }

    void fontName_isFoundWithItsFamilyAndCharacterSet()
    {
        RichTextDocument document;
        const quint16 number = document.NumberOfFont({u"Arial"_s, u"swiss"_s, 204});
        QCOMPARE(document.NumberOfFontName(u"Arial"_s), number);
        QCOMPARE(document.Font(document.NumberOfFontName(u"New"_s)).Name, u"New"_s);
        QCOMPARE(document.NumberOfFontName(u"Courier New"_s), document.DefaultFormat().Font);
    }

    void randomChanges_leaveOnlyWholeLineEnds()
    {
        static const QStringList pieces{u"x"_s, u"\r\n"_s, u"\n"_s, u"\r"_s, u"word"_s, u"a\r\nb"_s, {}};
        for (quint32 seed = 0; seed < 300; ++seed) {
            Dice dice(seed);
            RichTextDocument document = Document(u"one\r\ntwo\r\n\r\nthree"_s);
            for (int i = 0; i < 20; ++i) {
                const qsizetype at = dice.Roll(document.Length() + 1);
                const qsizetype length = dice.Roll(qMin(qsizetype(6), document.Length() - at + 1));
                document.Replace(at, length, dice.PickOf(pieces), document.DefaultFormat());
                QVERIFY2(HasOnlyWholeLineEnds(document.Text()),
                         "seed " + QByteArray::number(seed) + ": " + document.Text().toUtf8().toPercentEncoding());
            }
        }
    }

    void randomChanges_keepFormatsAndParagraphsWhereTheyWere()
    {
        static const QStringList pieces{u"x"_s, u"\r\n"_s, u"xy"_s, u"a\nb"_s, {}};
        for (quint32 seed = 0; seed < 500; ++seed) {
            Dice dice(seed);
            RichTextDocument document = Document(u"one\r\ntwo\r\n\r\nthree"_s);
            for (qsizetype at = 0; at < document.Length(); ++at)
                document.ChangeFormat(at, at + 1, [&dice](CharFormat& format) { format.Bold = dice.OneIn(2); });
            for (qsizetype at = 0, i = 1; i < 5; at = document.ParagraphEnd(at), ++i)
                Indent(document, at, int(i));
            for (int i = 0; i < 10; ++i) {
                // Both ends beside whole line ends
                const auto place = [&document](qsizetype at) {
                    return at > 0 && document.Text()[at - 1] == u'\r' ? at - 1 : at;
                };
                const qsizetype at = place(dice.Roll(document.Length() + 1));
                const qsizetype end = place(at + dice.Roll(document.Length() - at + 1));
                const qsizetype length = qMax(qsizetype(0), end - at);
                const QString bolds = Bolds(document);
                const QStringList indents = Indents(document).split(u' ');
                // A paragraph that goes whole takes its format along; here they don't.
                const bool begins = at == document.ParagraphBegin(at);
                const QString text = dice.PickOf(begins && length > 0 ? pieces.first(4) : pieces);
                if (text == document.Text().mid(at, length))
                    continue; // what is replaced by itself keeps its paragraphs
                const qsizetype before = document.Text().left(at).count(u'\n');
                const qsizetype gone = document.Text().mid(at, length).count(u'\n');
                const qsizetype came = document.Replace(at, length, text, document.DefaultFormat());
                QCOMPARE(Bolds(document), bolds.left(at) + QString(came, u'-') + bolds.mid(at + length));
                QStringList expected = indents.mid(0, before + 1);
                for (qsizetype line = text.count(u'\n'); line > 0; --line)
                    expected << indents[before];
                expected << indents.mid(before + gone + 1);
                QCOMPARE(Indents(document), expected.join(u' '));
            }
        }
    }
};

QB_TEST_MAIN(TestRichTextDocument)
#include "tst_richtextdocument.moc"
