#include "platform/dao/DBEngine.h"
#include "platform/richtext/RichText.h"
#include "support/CliRun.h"
#include "support/LibraryBuilder.h"
#include "support/TestRun.h"

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

class TestCliRichText : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_home = std::make_unique<TemporaryHome>();
        m_library = m_home->Path(u"the library 'é'.qbd"_s);
    }

    void cleanup() { m_home.reset(); }

    void colorize_printsThePaintedCodeAndKeepsTheLibrary()
    {
        MakeItem("dim x 'note\n", "beep y\n");
        const QByteArray before = ReadFile(m_library);
        const Outcome outcome = Cli({u"colorize"_s, m_library, u"1"_s});
        QCOMPARE(outcome.Status, 0);
        QCOMPARE(outcome.Error, QString());
        RichText box;
        box.SetTextRTF(outcome.Out);
        QCOMPARE(box.Text(), u"Dim x 'note\r\n"_s);
        QCOMPARE(box.Document().FormatAt(0).Color, 0x800000u);
        QCOMPARE(box.Document().FormatAt(4).Color, 0u);
        QCOMPARE(box.Document().FormatAt(6).Color, 0x8000u);
        QCOMPARE(ReadFile(m_library), before);
    }

    void colorize_asJson_givesBothTexts()
    {
        MakeItem("dim x \n", "beep y\n");
        const QJsonObject object = Cli({u"colorize"_s, m_library, u"1"_s, u"--json"_s}).Object();
        QCOMPARE(object[u"id"].toInt(), 1);
        QCOMPARE(PlainTextFromRtf(object[u"code"].toString()), u"Dim x \r\n"_s);
        QCOMPARE(PlainTextFromRtf(object[u"usage"].toString()), u"Beep y\r\n"_s);
    }

    void colorize_ofEmptyTexts_givesEmptyTexts()
    {
        MakeItem({}, {});
        QCOMPARE(Cli({u"colorize"_s, m_library, u"1"_s}).Out, QString());
        QCOMPARE(Cli({u"colorize"_s, m_library, u"1"_s, u"--json"_s}).Object()[u"usage"].toString(u"?"_s), QString());
        QCOMPARE(Cli({u"colorize"_s, m_library, u"1"_s, u"--save"_s}).Status, 0);
        QCOMPARE(Cli({u"show"_s, m_library, u"1"_s, u"--field"_s, u"code"_s, u"--raw"_s}).Out, QString());
    }

    void colorizeWithSave_storesBothTexts()
    {
        MakeItem("dim x 'note\n", "beep y\n");
        const QString painted = Cli({u"colorize"_s, m_library, u"1"_s}).Out;
        const Outcome outcome = Cli({u"colorize"_s, m_library, u"1"_s, u"--save"_s});
        QCOMPARE(outcome.Status, 0);
        QCOMPARE(outcome.Out, QString());
        QCOMPARE(Cli({u"show"_s, m_library, u"1"_s, u"--field"_s, u"code"_s, u"--raw"_s}).Out, painted);
        QCOMPARE(Cli({u"show"_s, m_library, u"1"_s, u"--field"_s, u"code"_s}).Out, u"Dim x 'note\n"_s);
        QCOMPARE(Cli({u"show"_s, m_library, u"1"_s, u"--field"_s, u"usage"_s}).Out, u"Beep y\n"_s);
        QCOMPARE(Cli({u"show"_s, m_library, u"1"_s, u"--field"_s, u"title"_s}).Out, u"item\n"_s);
    }

    void colorize_usesTheKeywordsOfTheLibrary()
    {
        MakeItem("mine dim\n", {});
        Library::Open(m_library)->Execute(u"INSERT INTO Keywords (Keyword, Coloured) VALUES ('MINE', -1)"_s);
        QCOMPARE(PlainTextFromRtf(Cli({u"colorize"_s, m_library, u"1"_s}).Out), u"MINE Dim\r\n"_s);
    }

    void colorizeOfAFile_asRtf_data()
    {
        QTest::addColumn<QString>("language");
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<QString>("painted");
        QTest::addColumn<int>("commentAt");
        QTest::newRow("VB") << u"vb"_s << QByteArray("dim x 'int\n") << u"Dim x 'int\r\n"_s << 6;
        QTest::newRow("C++") << u"cpp"_s << QByteArray("INT x; // dim\n") << u"int x; // dim\r\n"_s << 7;
        QTest::newRow("capitals") << u"CPP"_s << QByteArray("INT x; // dim\n") << u"int x; // dim\r\n"_s << 7;
        QTest::newRow("UTF-8") << u"vb"_s << QByteArray("dim \xc3\xa4 'x\r\n") << u"Dim ä 'x\r\n"_s << 6;
        QTest::newRow("code page 1252") << u"vb"_s << QByteArray("dim \xe4 'x\r\n") << u"Dim ä 'x\r\n"_s << 6;
    }

    void colorizeOfAFile_asRtf()
    {
        QFETCH(QString, language);
        QFETCH(QByteArray, text);
        QFETCH(int, commentAt);
        const QString file = m_home->Path(u"größe 1.txt"_s);
        WriteFile(file, text);
        const Outcome outcome = Cli({u"colorize"_s, u"--language"_s, language, file, u"--rtf"_s});
        QCOMPARE(outcome.Status, 0);
        RichText box;
        box.SetTextRTF(outcome.Out);
        QTEST(box.Text(), "painted");
        QCOMPARE(box.Document().FormatAt(0).Color, 0x800000u);
        QVERIFY(box.Document().FormatAt(commentAt - 1).Color != 0x8000u);
        QCOMPARE(box.Document().FormatAt(commentAt).Color, 0x8000u);
        QCOMPARE(ReadFile(file), text);
        QCOMPARE(Cli({u"colorize"_s, u"--language"_s, language, u"-"_s, u"--rtf"_s}, text).Out, outcome.Out);
        QCOMPARE(Cli({u"colorize"_s, u"--language="_s + language, u"-"_s, u"--rtf"_s}, text).Out, outcome.Out);
    }

    void colorizeOfAFile_asHtml()
    {
        const QString file = m_home->Path(u"a & b.cpp"_s);
        WriteFile(file, "INT x = a<b && \"q\"; // <note>\n");
        const Outcome outcome = Cli({u"colorize"_s, u"--language"_s, u"cpp"_s, file, u"--html"_s});
        QCOMPARE(outcome.Status, 0);
        QVERIFY2(outcome.Out.startsWith(u"<!DOCTYPE html>\n"_s), qPrintable(outcome.Out));
        QVERIFY(outcome.Out.contains(u"<title>a &amp; b.cpp</title>"_s));
        QVERIFY(outcome.Out.contains(u"<span style=\"color:#000080\">int</span>"_s));
        QVERIFY(outcome.Out.contains(u"a&lt;b &amp;&amp; "_s));
        QVERIFY(outcome.Out.contains(u"<span style=\"color:#008000\">// &lt;note&gt;</span>"_s));
        QVERIFY(!outcome.Out.contains(u'\r'));
    }

    void rtf2text_printsThePlainText()
    {
        const QByteArray rtf =
            "{\\rtf1\\ansi{\\fonttbl{\\f0 Arial;}}\\b Gr\\'fc\\'dfe\\b0\\par\\tab \\u8364? \\u-10179?\\u-8704?\\par}";
        const QString file = m_home->Path(u"größe.rtf"_s);
        WriteFile(file, rtf);
        const QString text = u"Grüße\n\t€ 😀"_s;
        QCOMPARE(Cli({u"rtf2text"_s, file}).Out, text);
        QCOMPARE(Cli({u"rtf2text"_s, u"-"_s}, rtf).Out, text);
        QCOMPARE(Cli({u"rtf2text"_s, file, u"--json"_s}).Object()[u"text"].toString(), text);
        QCOMPARE(Cli({u"rtf2text"_s, u"-"_s}, "{\\rtf1 gr\xfc\xdf"
                                              "e\\par}")
                     .Out,
                 u"grüße"_s);
        QCOMPARE(Cli({u"rtf2text"_s, u"-"_s}, "no rtf\r\n").Out, u"no rtf\n"_s);
        QCOMPARE(Cli({u"rtf2text"_s, u"-"_s}, {}).Out, QString());
    }

    void show_asRtf_printsTheTextsAsRtf()
    {
        MakeItem("x = 1\n", {});
        const QString rtf = Cli({u"show"_s, m_library, u"1"_s, u"--field"_s, u"code"_s, u"--rtf"_s}).Out;
        QVERIFY2(rtf.startsWith(u"{\\rtf1"_s), qPrintable(rtf));
        QCOMPARE(PlainTextFromRtf(rtf), u"x = 1\r\n"_s);
        const QJsonObject object = Cli({u"show"_s, m_library, u"1"_s, u"--rtf"_s, u"--json"_s}).Object();
        QCOMPARE(object[u"code"].toString(), rtf);
    }

    void wrongUsage_exitsWith2_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("complaint");
        QTest::newRow("no arguments") << QStringList{u"colorize"_s} << u"An argument is missing"_s;
        QTest::newRow("no ID") << QStringList{u"colorize"_s, u"L"_s} << u"An argument is missing"_s;
        QTest::newRow("ID of letters") << QStringList{u"colorize"_s, u"L"_s, u"one"_s} << u"'one' is not the ID"_s;
        QTest::newRow("no file") << QStringList{u"colorize"_s, u"--language"_s, u"vb"_s, u"--rtf"_s}
                                 << u"An argument is missing"_s;
        QTest::newRow("unknown language")
            << QStringList{u"colorize"_s, u"--language"_s, u"klingon"_s, u"F"_s, u"--rtf"_s}
            << u"Unknown language 'klingon'"_s;
        QTest::newRow("no format") << QStringList{u"colorize"_s, u"--language"_s, u"vb"_s, u"F"_s}
                                   << u"Give one of --rtf, --html and --marks"_s;
        QTest::newRow("two formats") << QStringList{u"colorize"_s, u"--language"_s, u"vb"_s,
                                                    u"F"_s,        u"--rtf"_s,      u"--html"_s}
                                     << u"Give one of --rtf, --html and --marks"_s;
        QTest::newRow("save a file") << QStringList{u"colorize"_s, u"--language"_s, u"vb"_s,
                                                    u"F"_s,        u"--rtf"_s,      u"--save"_s}
                                     << u"Unknown option"_s;
        QTest::newRow("item as HTML") << QStringList{u"colorize"_s, u"L"_s, u"1"_s, u"--html"_s} << u"Unknown option"_s;
        QTest::newRow("rtf2text of nothing") << QStringList{u"rtf2text"_s} << u"An argument is missing"_s;
        QTest::newRow("rtf2text of two") << QStringList{u"rtf2text"_s, u"F"_s, u"F"_s} << u"Unexpected argument"_s;
    }

    void wrongUsage_exitsWith2()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QString, complaint);
        MakeItem("dim x\n", {});
        const QByteArray before = ReadFile(m_library);
        WriteFile(m_home->Path(u"F"_s), "dim x\n");
        arguments.replaceInStrings(u"L"_s, m_library, Qt::CaseSensitive);
        const Outcome outcome = Cli(arguments);
        QCOMPARE(outcome.Status, 2);
        QVERIFY2(outcome.Error.contains(complaint), qPrintable(outcome.Error));
        QCOMPARE(outcome.Out, QString());
        QCOMPARE(ReadFile(m_library), before);
    }

    void whatIsNotThere_isRefused_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("complaint");
        QTest::newRow("item") << QStringList{u"colorize"_s, u"L"_s, u"77"_s} << u"no item 77"_s;
        QTest::newRow("item to save") << QStringList{u"colorize"_s, u"L"_s, u"77"_s, u"--save"_s} << u"no item 77"_s;
        QTest::newRow("library") << QStringList{u"colorize"_s, u"/no/such/library.qbd"_s, u"1"_s} << u"was not found"_s;
        QTest::newRow("file to paint") << QStringList{u"colorize"_s, u"--language"_s, u"vb"_s, u"/no/such/file"_s,
                                                      u"--rtf"_s}
                                       << u"can't be read"_s;
        QTest::newRow("folder to paint") << QStringList{u"colorize"_s, u"--language"_s, u"vb"_s, u"/tmp"_s, u"--rtf"_s}
                                         << u"can't be read"_s;
        QTest::newRow("RTF file") << QStringList{u"rtf2text"_s, u"/no/such/file"_s} << u"can't be read"_s;
        QTest::newRow("RTF folder") << QStringList{u"rtf2text"_s, u"/tmp"_s} << u"can't be read"_s;
    }

    void whatIsNotThere_isRefused()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QString, complaint);
        MakeItem("dim x\n", {});
        const QByteArray before = ReadFile(m_library);
        arguments.replaceInStrings(u"L"_s, m_library, Qt::CaseSensitive);
        const Outcome outcome = Cli(arguments);
        QCOMPARE(outcome.Status, 1);
        QVERIFY2(outcome.Error.contains(complaint), qPrintable(outcome.Error));
        QCOMPARE(outcome.Out, QString());
        QCOMPARE(ReadFile(m_library), before);
    }

    void binaryFile_isNotPainted()
    {
        const QString file = m_home->Path(u"picture.bin"_s);
        WriteFile(file, QByteArray("\x00\x01\x02\xff\x00", 5));
        const Outcome outcome = Cli({u"colorize"_s, u"--language"_s, u"vb"_s, file, u"--rtf"_s});
        QCOMPARE(outcome.Status, 1);
        QVERIFY2(outcome.Error.contains(u"is no text"_s), qPrintable(outcome.Error));
    }

private:
    /// A VB library with one item.
    void MakeItem(const QByteArray& code, const QByteArray& usage)
    {
        QCOMPARE(Cli({u"new"_s, m_library, u"--language"_s, u"vb"_s}).Status, 0);
        WriteFile(m_home->Path(u"usage.txt"_s), usage);
        QCOMPARE(Cli({u"add"_s, m_library, u"--title"_s, u"item"_s, u"--code"_s, u"-"_s, u"--usage"_s,
                      m_home->Path(u"usage.txt"_s)},
                     code)
                     .Status,
                 0);
    }

    std::unique_ptr<TemporaryHome> m_home;
    QString m_library;
};

QB_TEST_MAIN(TestCliRichText)
#include "tst_cli_richtext.moc"
