#include "platform/system/TextEncoding.h"
#include "support/TestRun.h"

#include <QStringEncoder>

using namespace qb;
using namespace Qt::StringLiterals;

Q_DECLARE_METATYPE(qb::FallbackEncoding)

class TestTextEncoding : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { qb::test::FailOnWarnings(); }

    void everyByte_comesBackThroughTheCodePage()
    {
        QByteArray bytes;
        for (int byte = 0; byte < 256; ++byte)
            bytes += char(byte);
        const QString text = FromWindows1252(bytes);
        QCOMPARE(text.size(), 256);
        QCOMPARE(ToWindows1252(text), bytes);
    }

    void bytesOfTheCodePage_haveTheirCharacters_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("text");
        QTest::newRow("letters") << "Gr\xfc\xdf"
                                    "e"_ba
                                 << u"Grüße"_s;
        QTest::newRow("first of the specials") << "\x80"_ba << u"€"_s;
        QTest::newRow("last of the specials") << "\x9f"_ba << u"Ÿ"_s;
        QTest::newRow("first behind them") << "\xa0"_ba << u"\u00a0"_s;
        QTest::newRow("quotes and dashes") << "\x93x\x94\x96\x97\x85"_ba << u"“x”–—…"_s;
        QTest::newRow("open ones") << "\x81\x8d\x8f\x90\x9d"_ba << u"\u0081\u008d\u008f\u0090\u009d"_s;
    }

    void bytesOfTheCodePage_haveTheirCharacters()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(QString, text);
        QCOMPARE(FromWindows1252(bytes), text);
        QCOMPARE(ToWindows1252(text), bytes);
    }

    void characterBeyondTheCodePage_becomesAQuestionMark_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QByteArray>("bytes");
        QTest::newRow("Greek") << u"aΩb"_s << "a?b"_ba;
        QTest::newRow("surrogates") << u"a😀b"_s << "a?b"_ba;
        QTest::newRow("control character whose byte is taken") << u"a\u0080\u0085b"_s << "a??b"_ba;
    }

    void characterBeyondTheCodePage_becomesAQuestionMark()
    {
        QFETCH(QString, text);
        QTEST(ToWindows1252(text), "bytes");
    }

    void sourceText_isDecoded_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("text");
        const QString text = u"// Größe 😀\r\n"_s;
        const auto encoded = [&text](QStringConverter::Encoding encoding) -> QByteArray {
            return QStringEncoder(encoding, QStringConverter::Flag::WriteBom)(text);
        };
        QTest::newRow("empty") << QByteArray() << QString();
        QTest::newRow("ASCII") << "int x;"_ba << u"int x;"_s;
        QTest::newRow("UTF-8") << text.toUtf8() << text;
        QTest::newRow("UTF-8, marked") << "\xef\xbb\xbf"_ba + text.toUtf8() << text;
        QTest::newRow("UTF-16 LE") << encoded(QStringConverter::Utf16LE) << text;
        QTest::newRow("UTF-16 BE") << encoded(QStringConverter::Utf16BE) << text;
        QTest::newRow("UTF-32 LE") << encoded(QStringConverter::Utf32LE) << text;
        QTest::newRow("UTF-32 BE") << encoded(QStringConverter::Utf32BE) << text;
    }

    void sourceText_isDecoded()
    {
        QFETCH(QByteArray, bytes);
        const auto text = DecodeText(bytes);
        QVERIFY(text);
        QTEST(*text, "text");
    }

    void unmarkedBytes_areReadByTheFallback_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("latin1");
        QTest::addColumn<QString>("windows");
        QTest::newRow("inside") << "caf\xe9 au lait"_ba << u"café au lait"_s << u"café au lait"_s;
        QTest::newRow("at the end") << "caf\xe9"_ba << u"café"_s << u"café"_s;
        QTest::newRow("two bytes at the end") << "x\xe2\x82"_ba << u"xâ\u0082"_s << u"xâ‚"_s;
        QTest::newRow("special") << "\x93x\x94"_ba << u"\u0093x\u0094"_s << u"“x”"_s;
    }

    void unmarkedBytes_areReadByTheFallback()
    {
        QFETCH(QByteArray, bytes);
        QCOMPARE(DecodeText(bytes), std::nullopt);
        QTEST(DecodeText(bytes, FallbackEncoding::Latin1).value_or(u"nothing"_s), "latin1");
        QTEST(DecodeText(bytes, FallbackEncoding::Windows1252).value_or(u"nothing"_s), "windows");
    }

    void bytesThatAreNoText_giveNothing_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::newRow("NUL") << QByteArray("a\0b", 3);
        QTest::newRow("program") << QByteArray("\x7f"
                                               "ELF\2\1\1\0\0\0",
                                               10);
        QTest::newRow("marked, but no UTF-8") << "\xef\xbb\xbf"
                                                 "caf\xe9 x"_ba;
        QTest::newRow("marked, cut UTF-8") << "\xef\xbb\xbf"
                                              "caf\xc3"_ba;
        QTest::newRow("UTF-16 with half a character") << "\xff\xfe"
                                                         "a\0b"_ba;
    }

    void bytesThatAreNoText_giveNothing()
    {
        QFETCH(QByteArray, bytes);
        QCOMPARE(DecodeText(bytes), std::nullopt);
        QCOMPARE(DecodeText(bytes, FallbackEncoding::Windows1252), std::nullopt);
    }
};

QB_TEST_MAIN(TestTextEncoding)
#include "tst_textencoding.moc"
