#include "support/TestRun.h"
#include "web/LocalPages.h"

#include <QTemporaryDir>
#include <QTest>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// The library's own pages in the browser: their addresses, and what they may reach.
class TestLocalPages : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_dir = std::make_unique<QTemporaryDir>();
        m_folder = m_dir->path() + u"/pages/"_s;
        WriteFile(m_folder + u"17.htm"_s, "<p>page</p>");
        WriteFile(m_folder + u"17/ein Bild.png"_s, "picture");
        WriteFile(m_dir->path() + u"/secret.txt"_s, "secret");
        WriteFile(m_dir->path() + u"/pages2/x.htm"_s, "secret");
    }

    void address_isShownAsTheItem_data()
    {
        QTest::addColumn<QString>("url");
        QTest::addColumn<QString>("text");
        QTest::newRow("item") << u"quillbase-page://library/17.htm"_s << u"local://Item17"_s;
        QTest::newRow("template") << u"quillbase-page://library/default2.htm"_s << u""_s;
        QTest::newRow("blank") << u"about:blank"_s << u""_s;
        QTest::newRow("web") << u"https://example.org/a b?q=1"_s << u"https://example.org/a b?q=1"_s;
    }
    void address_isShownAsTheItem()
    {
        QFETCH(QString, url);
        QFETCH(QString, text);
        QCOMPARE(AddressText(QUrl(url)), text);
    }

    void typedAddress_getsAScheme_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("url");
        QTest::newRow("bare") << u" example.org/x "_s << u"http://example.org/x"_s;
        QTest::newRow("with one") << u"https://example.org"_s << u"https://example.org"_s;
        QTest::newRow("a colon alone is none") << u"localhost:8080/x"_s << u"http://localhost:8080/x"_s;
        QTest::newRow("item in small letters") << u"local://item17"_s << u"quillbase-page://library/17.htm"_s;
        QTest::newRow("item") << u"local://Item17"_s << u"quillbase-page://library/17.htm"_s;
    }
    void typedAddress_getsAScheme()
    {
        QFETCH(QString, text);
        QFETCH(QString, url);
        QCOMPARE(UrlOfAddress(text).toString(), url);
    }

    void page_isReadWithItsPolicy()
    {
        const auto page = ReadLocalPageFile(m_folder, LocalPageUrl(u"17.htm"_s));
        QVERIFY(page);
        QCOMPARE(page->MimeType, "text/html");
        QCOMPARE(
            page->Content,
            "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; img-src quillbase-page: data:; "
            "media-src quillbase-page:; font-src quillbase-page:; style-src quillbase-page: 'unsafe-inline'; "
            "form-action 'none'; base-uri 'none'\"><p>page</p>");
    }

    void policy_standsAheadOfAllButTheType_data()
    {
        QTest::addColumn<QByteArray>("page");
        QTest::addColumn<QByteArray>("ahead");
        QTest::newRow("type") << QByteArray(" \r\n<!DOCTYPE html>\n<p>") << QByteArray(" \r\n<!DOCTYPE html>");
        QTest::newRow("mark") << QByteArray("\xef\xbb\xbf<!doctype html><p>")
                              << QByteArray("\xef\xbb\xbf<!doctype html>");
        QTest::newRow("no type") << QByteArray("<html><head>") << QByteArray();
        QTest::newRow("comment that ends at once")
            << QByteArray("<!--><script>1</script><!doctype html>") << QByteArray();
        QTest::newRow("type without an end") << QByteArray("<!doctype html <p") << QByteArray();
        QTest::newRow("empty") << QByteArray() << QByteArray();
    }
    void policy_standsAheadOfAllButTheType()
    {
        QFETCH(QByteArray, page);
        QFETCH(QByteArray, ahead);
        WriteFile(m_folder + u"18.htm"_s, page);
        const QByteArray read = ReadLocalPageFile(m_folder, LocalPageUrl(u"18.htm"_s))->Content;
        QCOMPARE(read.left(read.indexOf("<meta http-equiv")), ahead);
        QCOMPARE(read.mid(read.indexOf("'none'\">") + 8), page.mid(ahead.size()));
    }

    void wideText_becomesUtf8()
    {
        const QString text = u"<p>Ä</p>"_s;
        WriteFile(m_folder + u"19.htm"_s,
                  QByteArray("\xff\xfe") + QByteArray(reinterpret_cast<const char*>(text.utf16()), text.size() * 2));
        const QByteArray read = ReadLocalPageFile(m_folder, LocalPageUrl(u"19.htm"_s))->Content;
        QVERIFY(read.startsWith("\xef\xbb\xbf<meta"));
        QVERIFY(read.endsWith(text.toUtf8()));
    }

    void picture_isReadAsItIs_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("plain") << u"17/ein Bild.png"_s;
        QTest::newRow("back slash") << u"17\\ein Bild.png"_s;
    }
    void picture_isReadAsItIs()
    {
        QFETCH(QString, name);
        const auto file = ReadLocalPageFile(m_folder, LocalPageUrl(name));
        QVERIFY(file);
        QCOMPARE(file->Content, "picture");
        QCOMPARE(file->MimeType, "image/png");
    }

    void nameThatLeadsOut_givesNothing_data()
    {
        QTest::addColumn<QUrl>("url");
        QTest::newRow("up") << LocalPageUrl(u"../secret.txt"_s);
        QTest::newRow("up, escaped") << QUrl(u"quillbase-page://library/17/%2e%2e/%2e%2e/secret.txt"_s);
        QTest::newRow("up, back slash") << LocalPageUrl(u"17\\..\\..\\secret.txt"_s);
        QTest::newRow("folder with the same begin") << LocalPageUrl(u"../pages2/x.htm"_s);
        QTest::newRow("absolute") << LocalPageUrl(m_folder + u"/../secret.txt"_s);
        QTest::newRow("folder") << LocalPageUrl(u"17"_s);
        QTest::newRow("missing") << LocalPageUrl(u"99.htm"_s);
        QTest::newRow("cut by a NUL") << QUrl(u"quillbase-page://library/17.htm%00.png"_s);
        QTest::newRow("another scheme") << QUrl(u"file:///etc/hostname"_s);
    }
    void nameThatLeadsOut_givesNothing()
    {
        QFETCH(QUrl, url);
        QVERIFY(!ReadLocalPageFile(m_folder, url));
    }

    void link_givesNothing()
    {
        QDir(m_folder).mkpath(u"18"_s);
        WriteFile(m_folder + u"18/own.txt"_s, "text");
        QVERIFY(ReadLocalPageFile(m_folder, LocalPageUrl(u"18/own.txt"_s)));
        QVERIFY(QFile::link(m_folder + u"18/own.txt"_s, m_folder + u"17/own.txt"_s)); // another page's
        QVERIFY(!ReadLocalPageFile(m_folder, LocalPageUrl(u"17/own.txt"_s)));
        QVERIFY(QFile::link(m_folder + u"18"_s, m_folder + u"19"_s));
        QVERIFY(!ReadLocalPageFile(m_folder, LocalPageUrl(u"19/own.txt"_s)));
        QVERIFY(QFile::link(m_dir->path() + u"/secret.txt"_s, m_folder + u"17/link.txt"_s));
        QVERIFY(!ReadLocalPageFile(m_folder, LocalPageUrl(u"17/link.txt"_s)));
        QVERIFY(!ReadLocalPageFile({}, LocalPageUrl(u"17.htm"_s)));
    }

    void page_reachesItsOwnFilesOnly_data()
    {
        QTest::addColumn<QUrl>("page");
        QTest::addColumn<QUrl>("resource");
        QTest::addColumn<bool>("may");
        const QUrl own = LocalPageUrl(u"17.htm"_s);
        const QUrl web(u"https://example.org/"_s);
        QTest::newRow("own picture") << own << LocalPageUrl(u"17/x.png"_s) << true;
        QTest::newRow("own picture, back slash") << own << LocalPageUrl(u"17\\x.png"_s) << true;
        QTest::newRow("template's picture") << own << LocalPageUrl(u"default2/logo.png"_s) << true;
        QTest::newRow("template") << own << LocalPageUrl(u"default2.htm"_s) << false;
        QTest::newRow("web to template's picture") << web << LocalPageUrl(u"default2/logo.png"_s) << false;
        QTest::newRow("data") << own << QUrl(u"data:image/png;base64,AA"_s) << true;
        QTest::newRow("another's picture") << own << LocalPageUrl(u"18/x.png"_s) << false;
        QTest::newRow("another page") << own << LocalPageUrl(u"18.htm"_s) << false;
        QTest::newRow("up") << own << LocalPageUrl(u"17/../18/x.png"_s) << false;
        QTest::newRow("up, slash escaped") << own << QUrl(u"quillbase-page://library/17/..%2f18/x.png"_s) << false;
        QTest::newRow("up, back slash escaped") << own << QUrl(u"quillbase-page://library/17/..%5c18/x.png"_s) << false;
        QTest::newRow("up, dots escaped") << own << QUrl(u"quillbase-page://library/17/%2e%2e/18/x.png"_s) << false;
        QTest::newRow("up and down again") << own << LocalPageUrl(u"17/../17/x.png"_s) << true;
        QTest::newRow("folder with the same begin") << own << LocalPageUrl(u"170/x.png"_s) << false;
        QTest::newRow("file") << own << QUrl(u"file:///etc/hostname"_s) << false;
        QTest::newRow("web") << own << QUrl(u"http://example.org/x.png"_s) << false;
        QTest::newRow("web to web") << web << QUrl(u"https://cdn.example.org/x.js"_s) << true;
        QTest::newRow("web to local") << web << LocalPageUrl(u"17/x.png"_s) << false;
        QTest::newRow("web to file") << web << QUrl(u"file:///etc/hostname"_s) << false;
    }
    void page_reachesItsOwnFilesOnly()
    {
        QFETCH(QUrl, page);
        QFETCH(QUrl, resource);
        QFETCH(bool, may);
        QCOMPARE(MayRequest(page, resource), may);
    }

    void webThatIsKeptOut_isNeverShown_data()
    {
        QTest::addColumn<QUrl>("to");
        QTest::addColumn<NavigationCause>("cause");
        QTest::addColumn<NavigationAnswer>("answer");
        using Cause = NavigationCause;
        using Answer = NavigationAnswer;
        const QUrl web(u"https://example.org/"_s);
        QTest::newRow("asked") << web << Cause::Asked << Answer::KeepOut;
        QTest::newRow("clicked") << web << Cause::Clicked << Answer::KeepOut;
        QTest::newRow("by itself") << web << Cause::Page << Answer::Refuse;
        QTest::newRow("page of an item") << LocalPageUrl(u"17.htm"_s) << Cause::Asked << Answer::Show;
        QTest::newRow("mail") << QUrl(u"mailto:a@example.org"_s) << Cause::Clicked << Answer::OpenOutside;
    }
    void webThatIsKeptOut_isNeverShown()
    {
        QFETCH(QUrl, to);
        QFETCH(NavigationCause, cause);
        QTEST(AnswerNavigation(LocalPageUrl(u"18.htm"_s), to, cause, Web::KeptOut), "answer");
    }

    void addressOfTheWeb_isKnown()
    {
        for (const char* web : {"http://a.org/", "https://a.org/", "ws://a.org", "wss://a.org", "ftp://a.org"})
            QVERIFY2(IsWebAddress(QUrl(QString::fromLatin1(web))), web);
        QVERIFY(!IsWebAddress(LocalPageUrl(u"17.htm"_s)));
        QVERIFY(!IsWebAddress(QUrl(u"about:blank"_s)));
        QVERIFY(!IsWebAddress(QUrl(u"data:image/png;base64,AA"_s)));
    }

    void navigation_followsItsCause_data()
    {
        QTest::addColumn<QUrl>("from");
        QTest::addColumn<QUrl>("to");
        QTest::addColumn<NavigationCause>("cause");
        QTest::addColumn<NavigationAnswer>("answer");
        const QUrl own = LocalPageUrl(u"17.htm"_s);
        const QUrl other = LocalPageUrl(u"18.htm"_s);
        const QUrl web(u"https://example.org/"_s);
        const QUrl file(u"file:///etc/hostname"_s);
        const QUrl mail(u"mailto:a@example.org"_s);
        using Cause = NavigationCause;
        using Answer = NavigationAnswer;
        QTest::newRow("asked, local") << web << own << Cause::Asked << Answer::Show;
        QTest::newRow("asked, web") << own << web << Cause::Asked << Answer::Show;
        QTest::newRow("asked, blank") << own << QUrl(u"about:blank"_s) << Cause::Asked << Answer::Show;
        QTest::newRow("asked, file") << own << file << Cause::Asked << Answer::OpenOutside;
        QTest::newRow("asked, picture of the library")
            << own << LocalPageUrl(u"17/x.svg"_s) << Cause::Asked << Answer::Refuse;
        QTest::newRow("clicked, local to local") << own << other << Cause::Clicked << Answer::Show;
        const QUrl item(u"local://Item17"_s);
        QTest::newRow("clicked, local to item") << own << item << Cause::Clicked << Answer::OpenItem;
        QTest::newRow("by itself, local to item") << own << item << Cause::Page << Answer::Refuse;
        QTest::newRow("clicked, web to item") << web << item << Cause::Clicked << Answer::Refuse;
        QTest::newRow("clicked, local to no item")
            << own << QUrl(u"local://Item0"_s) << Cause::Clicked << Answer::Refuse;
        QTest::newRow("clicked, an item that did not come along")
            << own << QUrl(u"local://Item-17"_s) << Cause::Clicked << Answer::OpenItem;
        const QUrl zip(u"http://example.org/files/report.zip"_s);
        QTest::newRow("asked, file") << own << zip << Cause::Asked << Answer::LoadFile;
        QTest::newRow("clicked, local to file") << own << zip << Cause::Clicked << Answer::LoadFile;
        QTest::newRow("clicked, web to file") << web << zip << Cause::Clicked << Answer::LoadFile;
        QTest::newRow("by itself, local to file") << own << zip << Cause::Page << Answer::Refuse;
        QTest::newRow("clicked, local to web") << own << web << Cause::Clicked << Answer::Show;
        QTest::newRow("clicked, mail") << own << mail << Cause::Clicked << Answer::OpenOutside;
        QTest::newRow("clicked, file") << own << file << Cause::Clicked << Answer::Refuse;
        QTest::newRow("clicked, no item") << own << QUrl(u"local://Itemx"_s) << Cause::Clicked << Answer::Refuse;
        QTest::newRow("clicked, web to local") << web << own << Cause::Clicked << Answer::Refuse;
        QTest::newRow("by itself, local to web") << own << web << Cause::Page << Answer::Refuse;
        QTest::newRow("by itself, local to local") << own << other << Cause::Page << Answer::Refuse;
        QTest::newRow("by itself, web to web") << web << QUrl(u"http://example.com"_s) << Cause::Page << Answer::Show;
        QTest::newRow("by itself, web to local") << web << own << Cause::Page << Answer::Refuse;
        QTest::newRow("by itself, mail") << web << mail << Cause::Page << Answer::Refuse;
    }
    void navigation_followsItsCause()
    {
        QFETCH(QUrl, from);
        QFETCH(QUrl, to);
        QFETCH(NavigationCause, cause);
        QFETCH(NavigationAnswer, answer);
        QCOMPARE(AnswerNavigation(from, to, cause), answer);
    }

    void itemOfALink_isBelowZeroWhereItDidNotComeAlong()
    {
        const auto itemOf = [](const QString& address) { return ItemOfAddress(QUrl(address)).value_or(0); };
        QCOMPARE(itemOf(u"local://Item17"_s), 17);
        QCOMPARE(itemOf(u"local://Item-17"_s), -17);
        QCOMPARE(itemOf(u"local://Item0-17"_s), -17);
        QCOMPARE(itemOf(u"local://Item0-0-17"_s), -17);
        QCOMPARE(itemOf(u"local://Item-0-17"_s), -17);
        for (const QString& other : {u"local://Item0"_s, u"local://Item"_s, u"local://Item-"_s, u"local://Item1-17"_s,
                                     u"local://17"_s, u"http://item17"_s, u"local://Item17x"_s})
            QCOMPARE(itemOf(other), 0);
    }

private:
    std::unique_ptr<QTemporaryDir> m_dir;
    QString m_folder;
};

QTEST_GUILESS_MAIN(TestLocalPages)
#include "tst_localpages.moc"
