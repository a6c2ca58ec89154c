#include "platform/richtext/Rtf.h"
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

const QString Head = u"{\\rtf1\\ansi\\ansicpg1252\\deff0\\uc1{\\fonttbl{\\f0\\fnil\\fcharset0 Courier New;}}\r\n"_s;

} // namespace

class TestRtfWriter : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { FailOnWarnings(); }

    void plainText_isWrittenAsOneRunAParagraph()
    {
        QCOMPARE(WriteRtf(Document(u"a\r\n\r\nb c"_s)), Head + u"\\pard\\f0\\fs20 a\\par\r\n\\par\r\nb c\\par\r\n}"_s);
    }

    void emptyText_saysItsFont() { QCOMPARE(WriteRtf(Document({})), Head + u"\\pard\\f0\\fs20\\par\r\n}"_s); }

    void specialCharacters_areEscaped_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("written");
        QTest::newRow("backslash and braces") << u"\\{}"_s << u"\\\\\\{\\}"_s;
        QTest::newRow("tab") << u"\tx"_s << u"\\tab x"_s;
        QTest::newRow("digit behind a tab") << u"\t1"_s << u"\\tab 1"_s;
        QTest::newRow("umlaut") << u"ä"_s << u"\\u228?"_s;
        QTest::newRow("surrogates") << u"😀"_s << u"\\u-10179?\\u-8704?"_s;
        QTest::newRow("highest positive") << QString(QChar(0x7fff)) << u"\\u32767?"_s;
        QTest::newRow("lowest negative") << QString(QChar(0x8000)) << u"\\u-32768?"_s;
        QTest::newRow("control character") << u"\x01"_s << u"\\u1?"_s;
        QTest::newRow("delete") << u"\x7f"_s << u"\\u127?"_s;
        QTest::newRow("blank first") << u" x"_s << u" x"_s;
    }

    void specialCharacters_areEscaped()
    {
        QFETCH(QString, text);
        QFETCH(QString, written);
        QCOMPARE(WriteRtf(Document(text)), Head + u"\\pard\\f0\\fs20 "_s + written + u"\\par\r\n}"_s);
    }

    void tables_holdOnlyWhatIsUsed()
    {
        RichTextDocument document = Document(u"abc"_s);
        document.NumberOfFont({u"Never used"_s, u"roman"_s, 0});
        CharFormat unused = document.DefaultFormat();
        unused.Color = 0x112233;
        document.NumberOf(unused);
        document.ChangeFormat(0, 3, [](CharFormat& format) { format.Color = 0x445566; }); // overwritten below
        document.ChangeFormat(0, 3, [](CharFormat& format) { format.Color = 0x0000ff; });
        QCOMPARE(WriteRtf(document),
                 Head + u"{\\colortbl ;\\red255\\green0\\blue0;}\r\n\\pard\\f0\\fs20\\cf1 abc\\par\r\n}"_s);
    }

    void equalNeighbours_areOneRun()
    {
        RichTextDocument document = Document(u"abcdef"_s);
        for (qsizetype at = 1; at < 5; ++at)
            document.ChangeFormat(at, at + 1, [](CharFormat& format) { format.Bold = 1; });
        QCOMPARE(WriteRtf(document), Head + u"\\pard\\f0\\fs20 a\\b bcde\\b0 f\\par\r\n}"_s);
    }

    void looks_areWrittenAsChanges()
    {
        RichTextDocument document = Document(u"abcdefgh"_s);
        const auto change = [&document](qsizetype at, auto&& what) { document.ChangeFormat(at, at + 1, what); };
        change(1, [](CharFormat& format) { format.Italic = 1; });
        change(2, [](CharFormat& format) { format.Underline = 1; });
        change(3, [](CharFormat& format) { format.Strike = 1; });
        change(4, [](CharFormat& format) { format.Protected = 1; });
        change(5, [](CharFormat& format) { format.HalfPoints = 31; });
        change(6, [](CharFormat& format) { format.BackColor = 0x00ff00; });
        QCOMPARE(WriteRtf(document),
                 Head
                     + u"{\\colortbl ;\\red0\\green255\\blue0;}\r\n\\pard\\f0\\fs20 a\\i b\\i0\\ul c\\ulnone\\strike "
                       "d\\strike0\\protect e"
                       "\\fs31\\protect0 f\\fs20\\highlight1 g\\highlight0 h\\par\r\n}"_s);
    }

    void paragraphs_areWrittenWhereTheyChange()
    {
        RichTextDocument document = Document(u"a\nb\nc\nd"_s);
        const auto change = [&document](qsizetype at, auto&& what) { document.ChangeParagraphs(at, at, what); };
        const quint32 tabs = document.NumberOfTabStops({500, 900});
        change(3, [tabs](ParagraphFormat& format) {
            format = {.LeftIndent = 720,
                      .FirstIndent = -360,
                      .RightIndent = 5,
                      .Tabs = tabs,
                      .Alignment = TextAlignment::Justified};
        });
        change(6, [tabs](ParagraphFormat& format) {
            format = {.LeftIndent = 720,
                      .FirstIndent = -360,
                      .RightIndent = 5,
                      .Tabs = tabs,
                      .Alignment = TextAlignment::Justified};
        });
        QCOMPARE(WriteRtf(document), Head
                                         + u"\\pard\\f0\\fs20 a\\par\r\n\\pard\\fi-360\\li720\\ri5\\qj\\tx500\\tx900 "
                                           "b\\par\r\nc\\par\r\n\\pard d\\par\r\n}"_s);
    }

    void listItems_carryTheirTextForOldReaders_data()
    {
        QTest::addColumn<ListKind>("kind");
        QTest::addColumn<int>("start");
        QTest::addColumn<QStringList>("texts");
        QTest::newRow("bullet") << ListKind::Bullet << 1
                                << QStringList{u"{\\pntext\\bullet\\tab}"_s, u"{\\pntext\\bullet\\tab}"_s};
        QTest::newRow("numbers") << ListKind::Decimal << 9
                                 << QStringList{u"{\\pntext 9.\\tab}"_s, u"{\\pntext 10.\\tab}"_s};
        QTest::newRow("letters") << ListKind::LowerLetter << 26
                                 << QStringList{u"{\\pntext z.\\tab}"_s, u"{\\pntext aa.\\tab}"_s};
        QTest::newRow("capitals") << ListKind::UpperLetter << 1
                                  << QStringList{u"{\\pntext A.\\tab}"_s, u"{\\pntext B.\\tab}"_s};
        QTest::newRow("Roman") << ListKind::LowerRoman << 1989
                               << QStringList{u"{\\pntext mcmlxxxix.\\tab}"_s, u"{\\pntext mcmxc.\\tab}"_s};
        QTest::newRow("Roman capitals") << ListKind::UpperRoman << 3
                                        << QStringList{u"{\\pntext III.\\tab}"_s, u"{\\pntext IV.\\tab}"_s};
    }

    void listItems_carryTheirTextForOldReaders()
    {
        QFETCH(ListKind, kind);
        QFETCH(int, start);
        QFETCH(QStringList, texts);
        RichTextDocument document = Document(u"x\ny\nz"_s);
        document.ChangeParagraphs(0, 4, [kind, start](ParagraphFormat& format) {
            format.List = kind;
            format.ListStart = quint16(start);
        });
        const QString rtf = WriteRtf(document);
        const qsizetype first = rtf.indexOf(texts[0]);
        QVERIFY2(first > 0 && rtf.indexOf(texts[1], first + 1) > first, qPrintable(rtf));
        QCOMPARE(rtf.count(u"{\\pntext"_s), 2);
        RichTextDocument back;
        ReadRtf(rtf, back);
        QCOMPARE(back.Text(), document.Text());
    }

    void list_afterOtherText_startsAgain()
    {
        RichTextDocument document = Document(u"x\ny\nz"_s);
        for (const qsizetype at : {0, 6})
            document.ChangeParagraphs(at, at, [](ParagraphFormat& format) { format.List = ListKind::Decimal; });
        QCOMPARE(WriteRtf(document).count(u"{\\pntext 1.\\tab}"_s), 2);
    }

    void link_holdsAllItsRuns()
    {
        RichTextDocument document = Document(u"abcd"_s);
        const quint32 link = document.NumberOfLink(u"http://x.invalid/{ä}"_s);
        document.ChangeFormat(1, 3, [link](CharFormat& format) { format.Link = link; });
        document.ChangeFormat(2, 3, [](CharFormat& format) { format.Bold = 1; });
        QCOMPARE(
            WriteRtf(document),
            Head
                + u"\\pard\\f0\\fs20 a{\\field{\\*\\fldinst{HYPERLINK \"http://x.invalid/\\{\\u228?\\}\"}}{\\fldrslt "
                  "b\\b c}}d\\par\r\n}"_s);
    }

    void picture_isWrittenInHexDigits()
    {
        RichTextDocument document;
        CharFormat format = document.DefaultFormat();
        format.Picture = document.NumberOfPicture({TextPicture::Png, "\x89PNG"_ba, 300, 0});
        document.Replace(0, 0, QString(QChar(RichTextDocument::PictureCharacter)), format);
        format.Picture = document.NumberOfPicture({TextPicture::Jpeg, "\xff\xd8"_ba, 0, 200});
        document.Replace(1, 0, QString(QChar(RichTextDocument::PictureCharacter)), format);
        document.Replace(2, 0, u"x"_s, document.DefaultFormat());
        QCOMPARE(WriteRtf(document),
                 Head
                     + u"\\pard\\f0\\fs20{\\pict\\pngblip\\picwgoal300 89504e47}{\\pict\\jpegblip\\pichgoal200 "
                       "ffd8}x\\par\r\n}"_s);
    }

    void longLine_isWrittenWhole()
    {
        const QString text = u"word ä {1} "_s.repeated(100000);
        RichTextDocument back;
        ReadRtf(WriteRtf(Document(text)), back);
        QCOMPARE(back.Text(), text);
    }
};

QB_TEST_MAIN(TestRtfWriter)
#include "tst_rtf_writer.moc"
