#include "platform/system/SourceForm.h"

#include "platform/richtext/RichTextDocument.h"
#include "platform/richtext/Rtf.h"
#include "platform/system/TextEncoding.h"
#include "support/TestRun.h"

using namespace qb;
using namespace Qt::StringLiterals;

Q_DECLARE_METATYPE(qb::FallbackEncoding)

/// How a text stood in its file, and the file made of it again.
class TestSourceForm : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { qb::test::FailOnWarnings(); }

    void file_isHadBackByteForByte_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<FallbackEncoding>("fallback");
        QTest::addColumn<QString>("form");
        const auto row = [](const char* name, const QByteArray& bytes, const QString& form,
                            FallbackEncoding fallback = FallbackEncoding::None) {
            QTest::newRow(name) << bytes << fallback << form;
        };
        row("as usual", "a\nb\n", {});
        row("no line end at all", "a", {});
        row("no line end at the end", "a\nb", {});
        row("empty lines", "\n\na\n\n", {});
        row("letters",
            "gr\xC3\xB6\xC3\x9F"
            "e \xF0\x9F\x98\x80\n",
            {});
        row("CR LF", "a\r\nb\r\n", u"utf-8 w"_s);
        row("CR", "a\rb\r", u"utf-8 r"_s);
        row("mixed", "a\r\nb\nc\nd\re", u"utf-8 w1n2r1"_s);
        row("CR before CR LF", "a\r\r\nb", u"utf-8 r1w1"_s);
        row("a mark",
            "\xEF\xBB\xBF"
            "a\n",
            u"utf-8-bom n"_s);
        row("two marks",
            "\xEF\xBB\xBF\xEF\xBB\xBF"
            "a\n",
            u"utf-8-bom n"_s);
        row("16 bits, little",
            QByteArray("\xFF\xFE"
                       "a\0\r\0\n\0\xE4\0",
                       10),
            u"utf-16le-bom w"_s);
        row("16 bits, big", QByteArray("\xFE\xFF\0a\0\n", 6), u"utf-16be-bom n"_s);
        row("32 bits, little", QByteArray("\xFF\xFE\0\0a\0\0\0", 8), u"utf-32le-bom n"_s);
        row("32 bits, big", QByteArray("\0\0\xFE\xFF\0\0\0a", 8), u"utf-32be-bom n"_s);
        row("Latin 1",
            "gr\xF6\xDF"
            "e\x85\n",
            u"latin1 n"_s, FallbackEncoding::Latin1);
        row("the Windows code page", "\x80 \x93x\x94\r\n", u"windows-1252 w"_s, FallbackEncoding::Windows1252);
        row("controls", "\x01\x0C\x0B\x1B[0m\x7F\t\n", {});
    }
    /// Also through the RTF in which it is kept.
    void file_isHadBackByteForByte()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(FallbackEncoding, fallback);
        const auto text = DecodeText(bytes, fallback);
        QVERIFY(text);
        RichTextDocument document(CodeFont);
        document.Replace(0, 0, *text, document.DefaultFormat());
        document.SetLanguage(u"Python"_s);
        document.SetSourceForm(SourceFormOf(bytes, *text));
        QTEST(document.SourceForm(), "form");
        const QString rtf = WriteRtf(document);
        RichTextDocument read;
        ReadRtf(rtf, read);
        QCOMPARE(read.SourceForm(), document.SourceForm());
        QCOMPARE(EncodeSource(read.Text(), read.SourceForm()), bytes);
        QCOMPARE(WriteRtf(read), rtf);
        QCOMPARE(LanguageInRtf(rtf), u"Python"_s);
        RichTextDocument renamed;
        ReadRtf(WithLanguageInRtf(rtf, u"C"_s), renamed);
        QCOMPARE(renamed.SourceForm(), document.SourceForm());
    }

    void everyByteOfTheCodePages_isHadBack()
    {
        QByteArray bytes = "\xE4";
        for (int byte = 1; byte < 256; ++byte)
            bytes += char(byte);
        for (const FallbackEncoding fallback : {FallbackEncoding::Latin1, FallbackEncoding::Windows1252}) {
            const QString text = *DecodeText(bytes, fallback);
            const QString form = SourceFormOf(bytes, text);
            QCOMPARE(EncodeSource(WithCrLf(text), form), bytes);
        }
    }

    void textThatWasChanged_keepsItsForm_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("form");
        QTest::addColumn<QByteArray>("bytes");
        QTest::newRow("a line more") << u"a\r\nb\r\nc"_s << u"utf-8-bom w"_s
                                     << "\xEF\xBB\xBF"
                                        "a\r\nb\r\nc"_ba;
        QTest::newRow("other lines of a mixed one") << u"a\r\nb\r\n"_s << u"utf-8 n5w1"_s << "a\nb\n"_ba;
        QTest::newRow("mostly both") << u"a\r\nb\r\n"_s << u"utf-8 n1w5"_s << "a\r\nb\r\n"_ba;
        QTest::newRow("what the encoding lacks") << u"€ü\r\n"_s << u"latin1 n"_s << "\xE2\x82\xAC\xC3\xBC\n"_ba;
        QTest::newRow("an encoding that nobody knows") << u"ü\r\n"_s << u"ebcdic w"_s << "\xC3\xBC\r\n"_ba;
        QTest::newRow("nonsense") << u"a\r\nb"_s << u"  -bom n0x99999999999999999999r "_s << "a\nb"_ba;
        QTest::newRow("counts that add up by going round")
            << u"a\r\nb"_s << u"utf-8 n9223372036854775807w9223372036854775806n3"_s << "a\nb"_ba;
        QTest::newRow("nothing") << QString() << u"utf-8 w3n2"_s << QByteArray();
    }
    void textThatWasChanged_keepsItsForm()
    {
        QFETCH(QString, text);
        QFETCH(QString, form);
        QTEST(EncodeSource(text, form), "bytes");
    }

    void formThatIsTooLong_isNotKept()
    {
        const QByteArray bytes = QByteArray("a\nb\r\n").repeated(1000);
        QCOMPARE(SourceFormOf(bytes, QString::fromUtf8(bytes)), QString());
        const QByteArray fewer = QByteArray("a\nb\r\n").repeated(200);
        QVERIFY(!SourceFormOf(fewer, QString::fromUtf8(fewer)).isEmpty());
    }

    void bytesOfAnotherText_haveNoForm() { QCOMPARE(SourceFormOf("a\xE4", u"b"_s), QString()); }
};

QB_TEST_MAIN(TestSourceForm)
#include "tst_sourceform.moc"
