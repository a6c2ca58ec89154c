#include "platform/richtext/HtmlWriter.h"
#include "platform/richtext/Rtf.h"
#include "support/TestRun.h"

using namespace qb;
using namespace Qt::StringLiterals;

class TestHtmlWriter : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { qb::test::FailOnWarnings(); }

    void text_isEscaped() { QVERIFY(HtmlOf(u"a < b & c"_s).contains(u"a &lt; b &amp; c"_s)); }

    void fontName_staysInsideItsQuotes()
    {
        const QString html = HtmlOf(u"{\\fonttbl{\\f0 O'Font;}}\\f0 x"_s);
        QVERIFY2(html.contains(u"font-family:'OFont'"_s), qPrintable(html));
    }

    void link_leadsOnlyToAddresses_data()
    {
        QTest::addColumn<QString>("target");
        QTest::addColumn<bool>("leads");
        QTest::newRow("web") << u"https://example.org/"_s << true;
        QTest::newRow("mail") << u"MAILTO:a@example.org"_s << true;
        QTest::newRow("script") << u"javascript:alert(1)"_s << false;
        QTest::newRow("file") << u"file:/etc/passwd"_s << false;
    }

    void link_leadsOnlyToAddresses()
    {
        QFETCH(QString, target);
        const QString html = HtmlOf(u"{\\field{\\*\\fldinst{HYPERLINK \"%1\"}}{\\fldrslt shown}}"_s.arg(target));
        QVERIFY(html.contains(u"shown"_s));
        QTEST(html.contains(u"href="_s), "leads");
    }

private:
    static QString HtmlOf(const QString& body)
    {
        RichTextDocument document;
        ReadRtf(u"{\\rtf1 "_s + body + u'}', document);
        return WriteHtml(document, u"title"_s);
    }
};

QB_TEST_MAIN(TestHtmlWriter)
#include "tst_htmlwriter.moc"
