#include "support/TestRun.h"
#include "text/AddressDetect.h"

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

class TestAddressDetect : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { FailOnWarnings(); }

    void addressInALine_isFound_data()
    {
        QTest::addColumn<QString>("line");
        QTest::addColumn<QStringList>("found");
        const auto row = [](const char* what, const QString& line, const QStringList& found) {
            QTest::newRow(what) << line << found;
        };
        row("alone", u"http://example.org"_s, {u"http://example.org"_s});
        row("in a sentence", u"See https://example.org/a, or not."_s, {u"https://example.org/a"_s});
        row("end of a sentence", u"It is at http://example.org/a."_s, {u"http://example.org/a"_s});
        row("in brackets", u"(see http://example.org/a)"_s, {u"http://example.org/a"_s});
        row("with brackets", u"http://example.org/a_(b) c"_s, {u"http://example.org/a_(b)"_s});
        row("in quotes", u"\"http://example.org/a\""_s, {u"http://example.org/a"_s});
        row("between angles", u"<http://example.org/a>"_s, {u"http://example.org/a"_s});
        row("without scheme", u"www.example.org and www. or www.x"_s, {u"www.example.org"_s});
        row("two", u"http://a.org http://b.org"_s, {u"http://a.org"_s, u"http://b.org"_s});
        row("letters beyond ASCII", u"http://exämple.org/ß ü"_s, {u"http://exämple.org/ß"_s});
        row("item", u"as local://Item17 says"_s, {u"local://Item17"_s});
        row("mail", u"mailto:a@example.org"_s, {u"mailto:a@example.org"_s});
        row("big letters", u"HTTP://EXAMPLE.ORG"_s, {u"HTTP://EXAMPLE.ORG"_s});
        row("program", u"javascript:alert(1) file:///etc/passwd data:text/html,x"_s, {});
        row("scheme alone", u"http:// and https://"_s, {});
        row("in a word", u"xhttp://example.org"_s, {});
        row("in an address", u"a@www.example.org"_s, {});
        row("nothing", u"plain words. And more"_s, {});
    }
    void addressInALine_isFound()
    {
        QFETCH(QString, line);
        QStringList found;
        for (const DetectedAddress& address : AddressesIn(line))
            found << line.mid(address.Begin, address.Length);
        QTEST(found, "found");
    }

    void addressWithoutScheme_isOfTheWeb()
    {
        QCOMPARE(AddressToOpen(u"www.example.org"_s), u"http://www.example.org"_s);
        QCOMPARE(AddressToOpen(u"https://example.org"_s), u"https://example.org"_s);
    }
};

QB_TEST_MAIN(TestAddressDetect)
#include "tst_address_detect.moc"
