#include "platform/system/RuntimeError.h"
#include "support/TestRun.h"
#include "web/PageBytes.h"
#include "web/PageInsert.h"
#include "web/WebPages.h"

#include <QStringEncoder>
#include <QTest>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

namespace {

const PagePicture Tree{u"17/tree.png"_s, 80, 60};
const QByteArray TreeTag = "\r\n <img border=\"0\" src=\"17/tree.png\" width=\"80\" height=\"60\"> ";

QByteArray Utf16(const QString& text, QStringConverter::Encoding encoding)
{
    return QStringEncoder(encoding, QStringConverter::Flag::WriteBom)(text);
}

} // namespace

/// Pictures and links that are put into pages.
class TestPageInsert : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { FailOnWarnings(); }

    void picture_getsIntoTheLastParagraph_data()
    {
        QTest::addColumn<QByteArray>("page");
        QTest::addColumn<QByteArray>("expected");
        QTest::newRow("marked") << QByteArray("<p>a</p>\r\n<!--End-->z")
                                << QByteArray("<p>a" + TreeTag + "</p>\r\n<!--End-->z");
        QTest::newRow("other line ends") << QByteArray("<p>a</p>\n<!--End-->\rz\n")
                                         << QByteArray("<p>a" + TreeTag + "</p>\r\n<!--End-->\r\nz\r\n");
        QTest::newRow("two marks: the first")
            << QByteArray("<p></p>\n<!--End--><p></p>\n<!--End-->")
            << QByteArray("<p>" + TreeTag + "</p>\r\n<!--End--><p></p>\r\n<!--End-->");
        QTest::newRow("mark is made") << QByteArray("<td><!--Start--><p>a</p>\n</td></td>")
                                      << QByteArray("<td><!--Start--><p>a" + TreeTag + "</p>\r\n<!--End--></td></td>");
        QTest::newRow("an odd place stays odd")
            << QByteArray("0123456789<!--End-->") << QByteArray("0123" + TreeTag + "456789<!--End-->");
        QTest::newRow("nothing ahead") << QByteArray("ab<!--End-->") << QByteArray(TreeTag + "ab<!--End-->");
        QTest::newRow("no character is cut")
            << QByteArray("x\xc3\xa4\xc3\xa4\xc3\xa4\xc3\xa4\xc3\xa4\xc3\xa4<!--End-->")
            << QByteArray("x" + TreeTag + "\xc3\xa4\xc3\xa4\xc3\xa4\xc3\xa4\xc3\xa4\xc3\xa4<!--End-->");
        QTest::newRow("behind the page's mark")
            << QByteArray("\xef\xbb\xbf<!--End-->") << QByteArray("\xef\xbb\xbf" + TreeTag + "<!--End-->");
    }
    void picture_getsIntoTheLastParagraph()
    {
        QFETCH(QByteArray, page);
        QFETCH(QByteArray, expected);
        QCOMPARE(WithPicture(page, Tree), std::optional(expected));
    }

    void wrongFormat_isRefused_data()
    {
        QTest::addColumn<QByteArray>("page");
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("no marks") << QByteArray("<p>a</p></td>");
        QTest::newRow("start without a cell's end") << QByteArray("</td><!--Start--><p>a</p>");
        QTest::newRow("other letters") << QByteArray("<!--end--><p>a</p>");
    }
    void wrongFormat_isRefused()
    {
        QFETCH(QByteArray, page);
        QVERIFY(!WithPicture(page, Tree));
        QVERIFY(!WithLink(page, {u"http://example.org"_s, {}, {}, {}}));
    }

    void template_takesOneAfterTheOther()
    {
        const QByteArray page = BuiltInPage(PageTemplate).toUtf8();
        const std::optional<QByteArray> once = WithPicture(page, Tree);
        QVERIFY(once);
        const std::optional<QByteArray> twice = WithPicture(*once, {u"17/b.png"_s, 1, 2});
        QVERIFY(twice);
        QVERIFY(twice->contains("<p>" + TreeTag
                                + "\r\n <img border=\"0\" src=\"17/b.png\" width=\"1\" height=\"2\"> </p>"));
    }

    void link_isComposedAsAsked_data()
    {
        QTest::addColumn<QString>("address");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QByteArray>("composed");
        QTest::newRow("with a scheme") << u"https://example.org"_s << u"text"_s
                                       << QByteArray("</p>b <a href=\"https://example.org\">text</a> c");
        QTest::newRow("without one") << u"example.org"_s << u""_s
                                     << QByteArray("</p>b <a href=\"http://example.org\">http://example.org</a> c");
        QTest::newRow("any colon is one")
            << u"example.org:80"_s << u"t"_s << QByteArray("</p>b <a href=\"example.org:80\">t</a> c");
        QTest::newRow("an item") << u"local://Item12"_s << u"t"_s
                                 << QByteArray("</p>b <a href=\"local://Item12\">t</a> c");
        QTest::newRow("bare scheme") << u"http://"_s << u"t"_s << QByteArray("</p>b c");
        QTest::newRow("markup is text") << u"http://x/?a=1&b=\"2\""_s << u"<b>"_s
                                        << QByteArray(
                                               "</p>b <a href=\"http://x/?a=1&amp;b=&quot;2&quot;\">&lt;b&gt;</a> c");
    }
    void link_isComposedAsAsked()
    {
        QFETCH(QString, address);
        QFETCH(QString, text);
        QFETCH(QByteArray, composed);
        QCOMPARE(WithLink("<p>a</p>\r\n<!--End-->", {address, text, u"b"_s, u"c"_s}),
                 std::optional<QByteArray>("<p>a\r\n" + composed + "</p>\r\n<!--End-->"));
    }

    void textAroundALink_isNoMarkup()
    {
        QCOMPARE(
            WithLink("<p>a</p>\r\n<!--End-->", {u"http://x"_s, u"t"_s, u"<b>"_s, u"&c"_s}),
            std::optional<QByteArray>("<p>a\r\n</p>&lt;b&gt; <a href=\"http://x\">t</a> &amp;c</p>\r\n<!--End-->"));
        QCOMPARE(WithPicture("<p>a</p>\r\n<!--End-->", {u"17/a&\".png"_s, 1, 2}),
                 std::optional<QByteArray>("<p>a\r\n <img border=\"0\" src=\"17/a&amp;&quot;.png\" width=\"1\" "
                                           "height=\"2\"> </p>\r\n<!--End-->"));
    }

    void otherEncodings_keepTheirBytes()
    {
        const PageLink link{u"http://x"_s, u"\u20ac \u4e2d"_s, {}, {}};
        const QByteArray windows = "<meta charset='iso-8859-1'><p>\xe4\x81</p>\r\n<!--End-->\xff";
        QCOMPARE(WithLink(windows, link),
                 std::optional<QByteArray>("<meta charset='iso-8859-1'><p>\xe4\x81\r\n</p> <a href=\"http://x\">\x80 "
                                           "&#20013;</a> </p>\r\n<!--End-->\xff"));
        const QByteArray other = "<meta charset=shift_jis><p>\x82\xa0</p>\r\n<!--End-->";
        QCOMPARE(WithLink(other, link),
                 std::optional<QByteArray>("<meta charset=shift_jis><p>\x82\xa0\r\n</p> <a href=\"http://x\">&#8364; "
                                           "&#20013;</a> </p>\r\n<!--End-->"));
        for (const auto encoding : {QStringConverter::Utf16LE, QStringConverter::Utf16BE}) {
            const QString text = u"<p>\u4e2d</p>\r\n<!--End-->"_s;
            QCOMPARE(
                WithLink(Utf16(text, encoding) + "x", link),
                std::optional(
                    Utf16(u"<p>\u4e2d\r\n</p> <a href=\"http://x\">\u20ac \u4e2d</a> </p>\r\n<!--End-->"_s, encoding)
                    + "x"));
        }
    }

    void encoding_isThatOfABrowser_data()
    {
        QTest::addColumn<QByteArray>("page");
        QTest::addColumn<PageEncoding>("encoding");
        QTest::newRow("a mark goes first")
            << QByteArray("\xef\xbb\xbf<meta charset=windows-1252>") << PageEncoding::Utf8;
        QTest::newRow("ASCII is Windows") << QByteArray("<meta charset=us-ascii>") << PageEncoding::Windows1252;
        QTest::newRow("UTF-16 in single bytes is none")
            << QByteArray("<meta charset=utf-16le>\xff") << PageEncoding::Utf8;
        QTest::newRow("as old pages say it")
            << QByteArray("<META HTTP-EQUIV='Content-Type' CONTENT='text/html; charset=ISO-8859-1'>")
            << PageEncoding::Windows1252;
        QTest::newRow("one that is not known") << QByteArray("<meta charset=koi8-r>") << PageEncoding::OtherAscii;
        QTest::newRow("said too late") << QByteArray(1024, ' ') + "<meta charset=windows-1252>\xc3\xa4"
                                       << PageEncoding::Utf8;
        QTest::newRow("nothing said, and UTF-8") << QByteArray("\xc3\xa4") << PageEncoding::Utf8;
        QTest::newRow("nothing said, and none") << QByteArray("\xe4") << PageEncoding::Windows1252;
        QTest::newRow("big first") << QByteArray("\xfe\xff\0a", 4) << PageEncoding::Utf16BE;
        QTest::newRow("little first") << QByteArray("\xff\xfe"
                                                    "a\0",
                                                    4)
                                      << PageEncoding::Utf16LE;
    }
    void encoding_isThatOfABrowser()
    {
        QFETCH(QByteArray, page);
        QTEST(EncodingOf(page), "encoding");
    }

    void pageBytes_knowItsBytes_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("text");
        QTest::newRow("UTF-8") << QByteArray("\xef\xbb\xbf"
                                             "a\xc3\xa4\xf0\x9f\x98\x80z")
                               << u"aä😀z"_s;
        QTest::newRow("broken UTF-8") << QByteArray("<meta charset=utf-8>\xc3(\xff\xe2\x82")
                                      << u"<meta charset=utf-8>\ufffd(\ufffd\ufffd\ufffd"_s;
        QTest::newRow("Windows") << QByteArray("\x80\xe4") << u"€ä"_s;
        QTest::newRow("UTF-16") << Utf16(u"aä😀"_s, QStringConverter::Utf16BE) << u"aä😀"_s;
        QTest::newRow("UTF-16 and a half") << Utf16(u"a"_s, QStringConverter::Utf16LE) + 'x' << u"a\ufffd"_s;
        QTest::newRow("nothing") << QByteArray() << QString();
    }
    void pageBytes_knowItsBytes()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(QString, text);
        const PageBytes page(bytes);
        QCOMPARE(page.Text(), text);
        QCOMPARE(page.Mark() + page.Slice(0, text.size()), bytes);
        for (qsizetype at = 0; at <= text.size(); ++at)
            QCOMPARE(page.Slice(0, at) + page.Slice(at, text.size()), page.Slice(0, text.size()));
        QB_VERIFY_RAISES(page.Slice(0, text.size() + 1), ErrorNumber::Internal);
    }
};

QB_TEST_MAIN(TestPageInsert)
#include "tst_page_insert.moc"
