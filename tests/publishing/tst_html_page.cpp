#include "platform/richtext/RichText.h"
#include "platform/richtext/Rtf.h"
#include "platform/richtext/RtfPlainText.h"
#include "publishing/BranchPublisher.h"
#include "publishing/HtmlText.h"
#include "publishing/StyleSheet.h"
#include "store/CCodeItem.h"
#include "store/CFileObject.h"
#include "support/FolderContents.h"
#include "support/LibraryBuilder.h"
#include "support/RecordedWork.h"
#include "support/TestRun.h"

#include <QCryptographicHash>
#include <QRegularExpression>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// A branch as one page for readers.
class TestHtmlPage : public QObject {
    Q_OBJECT

    std::optional<TemporaryHome> m_home;
    std::unique_ptr<Library> m_library;

    QString Target() const { return m_home->Path(u"seite ä.html"_s); }
    QString Page(qint64 item)
    {
        PublishBranch(*m_library, item, ReaderForm::Html, Target());
        return QString::fromUtf8(ReadFile(Target()));
    }

    void Set(qint64 id, void (ItemRow::*set)(const QString&), const QString& value)
    {
        CCodeItem item;
        item.Initialise(*m_library, QString::number(id));
        (item.*set)(value);
        item.SetItemChanged(true);
        QVERIFY(item.Commit());
    }

    /// The text of the tags that match.
    static QString Article(const QString& page, qint64 item)
    {
        const QString opener = u"<article id=i%1>"_s.arg(item);
        const qsizetype begin = page.indexOf(opener);
        return begin < 0 ? QString() : page.mid(begin, page.indexOf("</article>"_L1, begin) - begin);
    }

    /// A page with its markup taken off, and its entities read.
    static QString TextOf(QString html)
    {
        html.remove(QRegularExpression(u"<[^>]*>"_s));
        return html.replace("&lt;"_L1, "<"_L1)
            .replace("&gt;"_L1, ">"_L1)
            .replace("&quot;"_L1, "\""_L1)
            .replace("&#39;"_L1, "'"_L1)
            .replace("&amp;"_L1, "&"_L1);
    }

    /// What stands in the first element of a tag.
    static QString Inside(const QString& html, const QString& tag)
    {
        const qsizetype begin = html.indexOf(u'>', html.indexOf(u'<' + tag)) + 1;
        return html.mid(begin, html.indexOf(u"</"_s + tag, begin) - begin);
    }

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_home.emplace();
        m_library = MakeLibrary(m_home->Path(u"bücher.qbd"_s));
    }
    void cleanup()
    {
        m_library.reset();
        m_home.reset();
    }

    void hostileTexts_areTexts()
    {
        const QString hostile = u"</pre></title><script>alert(\"1\")</script><img src=x onerror='alert(2)'>&lt;"_s;
        const qint64 top = AddItem(*m_library, 0, hostile, hostile);
        AddItem(*m_library, top, hostile, hostile);
        Set(top, &CCodeItem::SetDescription, hostile);
        Set(top, &CCodeItem::SetInfo, hostile);
        Set(top, &CCodeItem::SetUser, u"<script>"_s);
        Set(top, &CCodeItem::SetNotes, RtfFromPlainText(hostile, {hostile, 12}));
        Set(top, &CCodeItem::SetExample, RtfFromPlainText(hostile, CodeFont));
        AddStoredFile(*m_library, top, u"\"><script>alert(3)<"_s, "x", {});
        m_library->Execute(u"UPDATE Files SET Description = ?"_s, {hostile});
        m_library->Execute(u"INSERT INTO ItemLinks (ItemID, LinkItemID, Note) VALUES (?, ?, ?)"_s,
                           {top, top + 1, hostile});
        const QString page = Page(top);
        QCOMPARE(page.count("<script"_L1), 1); // the page's own
        QCOMPARE(page.count("<img"_L1), 0);
        QCOMPARE(page.count("</title"_L1), 1);
        QCOMPARE(page.count("</style"_L1), 1);
        QCOMPARE(TextOf(Inside(page, u"title"_s)), hostile);
        QCOMPARE(TextOf(Inside(Article(page, top), u"h2"_s)), hostile);
        QCOMPARE(TextOf(Inside(Article(page, top), u"code"_s)), hostile);
        QCOMPARE(page.count("</pre>"_L1), 3);
    }

    void policy_namesThePagesOwnPartsOnly()
    {
        AddItem(*m_library, AddItem(*m_library, 0, u"top"_s, u"int x;"_s), u"inner"_s);
        const QString page = Page(0);
        const auto hash = [&page](const QString& tag) {
            return QString::fromLatin1(
                QCryptographicHash::hash(Inside(page, tag).toUtf8(), QCryptographicHash::Sha256).toBase64());
        };
        QVERIFY(
            page.contains(u"<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; img-src data:; "
                          "style-src 'sha256-%1'; script-src 'sha256-%2'; base-uri 'none'; form-action 'none'\">"_s.arg(
                              hash(u"style"_s), hash(u"script"_s))));
        QVERIFY(!page.contains("style="_L1)); // which the policy would not let count
        QVERIFY(!page.contains(QRegularExpression(u"<[^>]* on[a-z]+="_s)));
        QVERIFY(!page.contains("http://"_L1) && !page.contains("https://"_L1));
        QVERIFY(!page.contains("url("_L1) && !page.contains("@import"_L1));
    }

    void tree_standsAtTheSide()
    {
        const qint64 top = AddItem(*m_library, 0, u"top"_s);
        const qint64 inner = AddItem(*m_library, top, u"inner"_s);
        const qint64 leaf = AddItem(*m_library, inner, u"leaf"_s);
        const qint64 last = AddItem(*m_library, top, u"last"_s);
        const QString page = Page(top);
        const QString tree = page.mid(page.indexOf("<nav"_L1), page.indexOf("</nav>"_L1) - page.indexOf("<nav"_L1));
        const auto link = [](qint64 item, const QString& title) {
            return u"<a href=\"#i%1\"><bdi>%2</bdi></a>"_s.arg(item).arg(title);
        };
        QVERIFY(tree.endsWith(u"<ul>\n<li><details open><summary>"_s + link(top, u"top"_s) + u"</summary><ul>\n"_s
                              + u"<li><details open><summary>"_s + link(inner, u"inner"_s) + u"</summary><ul>\n<li>"_s
                              + link(leaf, u"leaf"_s) + u"</li>\n</ul></details></li>\n<li>"_s + link(last, u"last"_s)
                              + u"</li>\n</ul></details></li>\n</ul>\n"_s));
        for (const qint64 item : {top, inner, leaf, last})
            QCOMPARE(page.count(u"<article id=i%1>"_s.arg(item)), 1);
        QVERIFY(Article(page, leaf)
                    .contains(u"<p class=path>"_s + link(top, u"top"_s) + u" › "_s + link(inner, u"inner"_s)));
        QVERIFY(page.contains("<input id=find type=search"_L1));
    }

    void singleItem_needsNoTreeAndNoScript()
    {
        const QString page = Page(AddItem(*m_library, 0, u"one"_s, u"x"_s));
        QVERIFY(!page.contains("<nav"_L1) && !page.contains("<script"_L1));
        QVERIFY(page.contains("<body class=\"single\">"_L1) && page.contains("script-src 'none'"_L1));
    }

    void code_hasTheColoursOfItsLanguage()
    {
        const qint64 item = AddItem(*m_library, 0, u"one"_s);
        Set(item, &CCodeItem::SetCode,
            WithLanguageInRtf(RtfFromPlainText(u"\ndef f(): # why\n    return \"a<b\"\n"_s, CodeFont), u"Python"_s));
        const QString article = Article(Page(item), item);
        QVERIFY(article.contains("<h3>Code<small>Python</small></h3>"_L1));
        const auto piece = [](TokenKind kind, const QString& text) {
            return u"<span class=\"k%1\">%2</span>"_s.arg(int(kind)).arg(text);
        };
        QCOMPARE(Inside(article, u"code"_s), u"\n\n"_s + piece(TokenKind::Keyword, u"def"_s) + u" f(): "_s
                                                 + piece(TokenKind::Comment, u"# why"_s) + u"\n    "_s
                                                 + piece(TokenKind::Keyword, u"return"_s) + u' '
                                                 + piece(TokenKind::String, u"&quot;a&lt;b&quot;"_s) + u'\n');
    }

    void codeWithoutRules_isColouredByWordsAndKeepsItsSpelling()
    {
        m_library = MakeLibrary(m_home->Path(u"vb.qbd"_s), LanguageType::VB);
        const qint64 item = AddItem(*m_library, 0, u"one"_s, u"dim a as long 'why"_s);
        const QString page = Page(item);
        const QString code = Inside(Article(page, item), u"code"_s);
        QCOMPARE(TextOf(code), u"dim a as long 'why"_s);
        const QRegularExpressionMatch word = QRegularExpression(u"<span class=\"(s\\d+)\">dim</span>"_s).match(code);
        QVERIFY2(word.hasMatch(), qPrintable(code));
        QVERIFY(page.contains(QRegularExpression(u"\\.%1\\{color:#[0-9a-f]{6};\\}"_s.arg(word.captured(1)))));
    }

    void headersOfSections_areBold()
    {
        const qint64 item = AddItem(*m_library, 0, u"one"_s);
        RichText text;
        text.SetText(u"// ###############   Body   ###############\nint x;"_s);
        text.SetSelStart(0);
        text.SetSelLength(42);
        text.SetSelBold(true);
        Set(item, &CCodeItem::SetCode, WithLanguageInRtf(text.TextRTF(), u"C++ (current)"_s));
        QVERIFY(Inside(Article(Page(item), item), u"code"_s)
                    .startsWith("<span class=\"h\">// ###############   Body   ###############</span>\n"_L1));
    }

    void notes_keepTheirLooks()
    {
        const QByteArray png = QByteArray::fromBase64("iVBORw0KGgo=");
        const qint64 item = AddItem(*m_library, 0, u"one"_s);
        Set(item, &CCodeItem::SetNotes,
            u"{\\rtf1{\\fonttbl{\\f0 Arial;}{\\f1 Ti'm<e>s;}}"
            "{\\colortbl;\\red0\\green0\\blue128;\\red255\\green255\\blue0;}"
            "\\f0\\fs20 plain {\\b bold}{\\i it}{\\ul ul}{\\strike st}{\\cf1 blue}{\\highlight2 mark}"
            "{\\f1\\fs40 big}\\par "
            "{\\field{\\*\\fldinst HYPERLINK \"https://a.b/?c&d\"}{\\fldrslt there}}"
            "{\\field{\\*\\fldinst HYPERLINK \"javascript:alert(1)\"}{\\fldrslt never}}\\par "
            "\\pard{\\*\\pn\\pnlvlblt}first\\par second\\par \\pard\\qc "
            "{\\pict\\pngblip\\picwgoal300\\pichgoal150 %1}\\par}"_s.arg(QString::fromLatin1(png.toHex())));
        const QString page = Page(item);
        const QString notes = page.mid(page.indexOf("<section class=notes>"_L1));
        const auto look = [&](const QString& text) {
            const auto span = QRegularExpression(u"<span class=(s\\d+)>%1</span>"_s.arg(text)).match(notes);
            return page.section(u'.' + span.captured(1) + u'{', 1, 1).section(u'}', 0, 0);
        };
        QCOMPARE(look(u"bold"_s), u"font-weight:bold;"_s);
        QCOMPARE(look(u"it"_s), u"font-style:italic;"_s);
        QCOMPARE(look(u"ul"_s), u"text-decoration: underline;"_s);
        QCOMPARE(look(u"st"_s), u"text-decoration: line-through;"_s);
        QCOMPARE(look(u"blue"_s), u"color:#000080;"_s);
        QCOMPARE(look(u"mark"_s), u"background:#ffff00;color:#000000;"_s);
        QCOMPARE(look(u"big"_s), u"font-family:'Times';font-size:20pt;"_s);
        QVERIFY(notes.contains("<p>plain "_L1));
        QVERIFY(notes.contains("<a rel=\"noreferrer\" href=\"https://a.b/?c&amp;d\">there</a>never</p>"_L1));
        QVERIFY(notes.contains("<ul>\n<li>first</li>\n<li>second</li>\n</ul>\n"_L1));
        QVERIFY(notes.contains(u"<img alt=\"\" src=\"data:image/png;base64,%1\" width=20 height=10>"_s.arg(
            QString::fromLatin1(png.toBase64()))));
        QVERIFY(!page.contains("javascript:"_L1));
    }

    void smallFiles_canBeSavedFromThePage()
    {
        const qint64 item = AddItem(*m_library, 0, u"one"_s);
        AddStoredFile(*m_library, item, u"klein ä.bin"_s, "\1\2\3", {});
        AddStoredFile(*m_library, item, u"limit.bin"_s, QByteArray(128 * 1024, 'l'), {});
        AddStoredFile(*m_library, item, u"large.bin"_s, QByteArray(128 * 1024 + 1, 'g'), {});
        const qint64 lost = AddStoredFile(*m_library, item, u"lost.bin"_s, "x", {});
        QVERIFY(QFile::remove(m_library->FilesFolder() + u"%1 - lost.bin"_s.arg(lost)));
        m_library->Execute(u"UPDATE Files SET Description = 'what it is' WHERE ID = 1"_s);
        const PublishResult result = PublishBranch(*m_library, item, ReaderForm::Html, Target());
        const QString page = QString::fromUtf8(ReadFile(Target()));
        QVERIFY(page.contains(u"<li><a download=\"klein ä.bin\" href=\"data:application/octet-stream;base64,AQID\">"
                              "<bdi>klein ä.bin</bdi></a><small>3 bytes</small><br>what it is</li>"_s));
        QVERIFY(page.contains("<a download=\"limit.bin\""_L1));
        QVERIFY(page.contains("<bdi>large.bin</bdi><small>not in this page</small><small>128.0 KiB</small>"_L1));
        QVERIFY(page.contains("<bdi>lost.bin</bdi><small>missing in the library</small>"_L1));
        QCOMPARE(result.Files, 2);
        QCOMPARE(result.Missing, QStringList{u"lost.bin"_s});
    }

    void webPage_isReadHereAndCanBeSaved()
    {
        const qint64 item = AddItem(*m_library, 0, u"one"_s);
        m_library->Execute(u"UPDATE Items SET HTMLPage = -1"_s);
        const QString pages = m_library->HTMLFolder();
        WriteFile(pages + u"1.htm"_s, "<title>T</title><script>steal()</script><p>Größe &lt;b&gt;</p>");
        WriteFile(pages + u"1/p\".png"_s, "\1\2\3");
        WriteFile(pages + u"1/large.png"_s, QByteArray(128 * 1024 + 1, 'g'));
        const QString page = Page(item);
        const QString section = page.mid(page.indexOf(u"<h3>Web page</h3>"_s)).section(u"</section>"_s, 0, 0);
        QVERIFY(section.contains(u"Größe &lt;b&gt;"_s));
        QVERIFY(!section.contains(u"steal"_s));
        QVERIFY(section.contains(u"<a download=\"p&quot;.png\" href=\"data:application/octet-stream;base64,AQID\">"
                                 "<bdi>1/p&quot;.png</bdi></a>"_s));
        QVERIFY(section.contains(u"<bdi>1/large.png</bdi><small>not in this page</small>"_s));
        const QString saved = section
                                  .section(u"<a download=\"1.htm\" href=\"data:application/octet-stream;base64,"_s, 1)
                                  .section(u'"', 0, 0);
        QVERIFY(QByteArray::fromBase64(saved.toLatin1()).startsWith("<meta http-equiv=\"Content-Security-Policy\""));
    }

    void links_leadToItemsOfTheBranchOnly()
    {
        const qint64 top = AddItem(*m_library, 0, u"top"_s);
        const qint64 inner = AddItem(*m_library, top, u"inner"_s);
        const qint64 aside = AddItem(*m_library, 0, u"secret"_s);
        m_library->Execute(u"INSERT INTO ItemLinks (ItemID, LinkItemID, Note) "
                           "VALUES (?, ?, 'to top'), (?, ?, 'out'), (?, ?, 'self')"_s,
                           {inner, top, inner, aside, inner, inner});
        const QString page = Page(top);
        const QString article = Article(page, inner);
        const qsizetype first = article.indexOf(
            u"<li><a href=\"#i%1\"><bdi>top</bdi></a><small>to top</small></li>\n<li><a href=\"#i%2\">"_s.arg(top).arg(
                inner));
        QVERIFY2(first > 0, qPrintable(article));
        QVERIFY(!page.contains("secret"_L1) && !page.contains(">out<"_L1));
    }

    void page_isLegibleInLightAndDark()
    {
        const TokenPalette& palette = TokenPalette::Default();
        StyleSheet styles;
        const QByteArray name = styles.ClassOf(StyleSheet::Colored(0x800000)); // a dark blue
        const QByteArray rules = styles.Rules(palette);
        const qsizetype dark = rules.indexOf("@media screen and (prefers-color-scheme:dark)");
        QVERIFY(dark > 0);
        QVERIFY(rules.left(dark).contains('.' + name + "{color:#000080;}"));
        QVERIFY(rules.mid(dark).contains('.' + name + "{color:" + HtmlColor(LegibleOnDark(0x800000)) + ";}"));
        QVERIFY(LegibleOnDark(0x800000) != 0x800000);
        QCOMPARE(LegibleOnDark(0xffffff), 0xffffffU);
        QCOMPARE(styles.ClassOf(StyleSheet::Colored(0x800000)), name);
        QVERIFY(styles.ClassOf(StyleSheet::Colored(0x800001)) != name);
    }

    void textsForThePage_areEscaped_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QByteArray>("html");
        QTest::newRow("markup") << u"<a href=\"'\">&amp;"_s << "&lt;a href=&quot;&#39;&quot;&gt;&amp;amp;"_ba;
        QTest::newRow("lines") << u"a\r\nb\n\tc\fd"_s << "a\nb\n\tc\fd"_ba;
        QTest::newRow("controls") << u"a\x01"_s + QChar(0) + u"\x1b\x7f\r"_s
                                  << "a\xE2\x90\x81\xE2\x90\x80\xE2\x90\x9B\xE2\x90\xA1\xE2\x90\x8D"_ba;
        QTest::newRow("letters") << u"é€\U0001F600"_s << "\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80"_ba;
        QTest::newRow("half a character") << QString(QChar(0xd83d)) + u'x' << "\xEF\xBF\xBDx"_ba;
    }
    void textsForThePage_areEscaped()
    {
        QFETCH(QString, text);
        QTEST(Escaped(text), "html");
    }

    void failure_leavesTheFormerPage()
    {
        const qint64 top = AddItem(*m_library, 0, u"top"_s);
        for (int item = 0; item < 5; ++item)
            AddItem(*m_library, top, QString::number(item));
        WriteFile(Target(), "former");
        RecordedWork work;
        work.Ends = [](qint64 done) { return done == 3; };
        QVERIFY(
            Raised([&] { PublishBranch(*m_library, top, ReaderForm::Html, Target(), work); }).startsWith(u"3059: "_s));
        QCOMPARE(ReadFile(Target()), "former");
        QVERIFY(Raised([&] { PublishBranch(*m_library, 4711, ReaderForm::Html, Target()); }).contains(u"4711"_s));
        QCOMPARE(ReadFile(Target()), "former");
        QCOMPARE(QDir(m_home->Path()).entryList({u".unpacking*"_s}, QDir::Dirs | QDir::Hidden), QStringList());
        Page(top);
        QVERIFY(ReadFile(Target()).startsWith("<!DOCTYPE html>"));
    }
};

QB_TEST_MAIN(TestHtmlPage)
#include "tst_html_page.moc"
