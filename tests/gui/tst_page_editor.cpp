#include "components/ui/WindowPages.h"
#include "components/ui/frmPageEditor.h"
#include "support/CountingServer.h"
#include "support/FileSizeLimit.h"
#include "support/GuiRun.h"
#include "support/ScriptedPrompts.h"
#include "support/TestRun.h"
#include "web/WebPages.h"

#include <QBuffer>
#include <QClipboard>
#include <QComboBox>
#include <QDirIterator>
#include <QDropEvent>
#include <QElapsedTimer>
#include <QJsonDocument>
#include <QLabel>
#include <QLineEdit>
#include <QMimeData>
#include <QPlainTextEdit>
#include <QSignalSpy>
#include <QStringEncoder>
#include <QToolButton>
#include <csignal>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

namespace {

constexpr int KeptAfter = 1500; // milliseconds in which the editor has told what was typed
constexpr int Patience = 8000;  // milliseconds, for an engine that starts on a busy machine

QByteArray Png(Qt::GlobalColor color)
{
    QImage image(40, 30, QImage::Format_RGB32);
    image.fill(color);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    image.save(&buffer, "PNG");
    return bytes;
}

/// Something of all that a page may have.
const QByteArray PageOfAllKinds =
    "<h1>How a price is made up</h1>\n<p>From the <a href='https://example.org'>rules of 2026</a>, with <b>bold</b> "
    "and <i>slanted</i> words, <code>code</code> and a picture: <img src='17/own.png'></p>\n"
    "<ul><li>First the price</li><li>then the tax</li></ul>\n"
    "<table border=1><tr><th>Country</th><th>Rate</th></tr><tr><td>AT</td><td>20 %</td></tr></table>\n"
    "<blockquote>Quoted words</blockquote>\n<pre class='qb-code' data-language='cpp23'>"
    "int rate(const Country&amp; country)\n{\n    return country.rate(); // in percent\n}</pre>\n"
    "<form><input></form><script>x()</script>";

/// Pages of this machine's own documents, of different makers.
QStringList RealPages(int most)
{
    QStringList pages;
    QHash<QString, int> ofFolder;
    QDirIterator all(u"/usr/share/doc"_s, {u"*.html"_s, u"*.htm"_s}, QDir::Files, QDirIterator::Subdirectories);
    QStringList names;
    while (all.hasNext())
        names << all.next();
    names.sort();
    for (const QString& name : names) {
        const qint64 size = QFileInfo(name).size();
        const bool isUsual = size > 1000 && size < 200'000 && !QFileInfo(name).isSymLink();
        if (isUsual && ++ofFolder[QFileInfo(name).path()] <= 3 && pages.size() < most)
            pages << name;
    }
    return pages;
}

} // namespace

/// The page editor's window, with the browser's engine.
class TestPageEditor : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        QTest::failOnWarning(QRegularExpression(
            u"^(?!This plugin does not support |WebEngineContext used before |No suitable graphics backend )"_s));
        m_home = std::make_unique<TemporaryHome>();
        m_prompts = std::make_unique<ScriptedPrompts>();
        m_folder = m_home->Path(u"pages"_s) + u'/';
        m_page = m_folder + u"17.htm"_s;
    }
    void cleanup()
    {
        m_editor.reset();
        m_prompts.reset();
    }

    void pageThatIsOnlyOpened_staysAsItIs()
    {
        const QByteArray page = "<P>one<p>two &eacute; <B>b</P></b>\r\n<center>x</center><!-- c -->";
        Open(page);
        Press("save");
        m_editor->reject();
        QTRY_VERIFY_WITH_TIMEOUT(!m_editor->isVisible(), Patience);
        QCOMPARE(ReadFile(m_page), page);
        QVERIFY(!m_editor->Outcome().IsChanged);
    }

    void typedText_changesNothingElse()
    {
        Open("<!doctype html>\n<html><head><script>alert(1)</script></head>\n<BODY bgcolor=white onload='x()'>\n"
             "<table><tr><td>\n<!--Start-->\n<p>one</p>\n<p class=x>two</p>\n<!--End-->\n</td></tr></table>\n"
             "<iframe src='a'></iframe><my-own x=1>y</my-own>\n</BODY></html>\n");
        Press(u"New "_s);
        QVERIFY(Saved());
        QCOMPARE(ReadFile(m_page),
                 "<!doctype html>\n<html><head><script>alert(1)</script></head>\n<BODY bgcolor=white onload='x()'>\n"
                 "<table><tr><td>\n<!--Start-->\n<p>New one</p>\n<p class=x>two</p>\n<!--End-->\n</td></tr></table>\n"
                 "<iframe src='a'></iframe><my-own x=1>y</my-own>\n</BODY></html>\n");
        QVERIFY(m_editor->Outcome().IsChanged);
        QVERIFY(!m_editor->Outcome().IsEmptied);
    }

    void template_getsAllThatIsMade()
    {
        Open(BuiltInPage(PageTemplate).toUtf8());
        Run(u"heading"_s, 1);
        Type(u"Title\n"_s);
        Run(u"bold"_s);
        Type(u"bold"_s);
        Run(u"bold"_s);
        Type(u" & plain\n"_s);
        Run(u"bullet_list"_s);
        Type(u"one\ntwo\n\n"_s);
        Run(u"code_block"_s, u"cpp23"_s);
        Type(u"int i; // <x>"_s);
        QTRY_VERIFY_WITH_TIMEOUT(Tree().contains(u"qb-type"_s) || Written().contains("qb-comment"), Patience);
        QVERIFY(Saved());
        const QByteArray page = ReadFile(m_page);
        QVERIFY2(
            page.contains("<!--Start-->\n<h1>Title</h1>\n<p><strong>bold</strong> &amp; plain</p>\n<ul>\n<li>one</li>\n"
                          "<li>two</li>\n</ul>\n<pre class=\"qb-code\" data-language=\"cpp23\">"),
            page.constData());
        QVERIFY2(page.contains("<span class=\"qb-comment\">// &lt;x&gt;</span></pre>\n<!--End-->"), page.constData());
        QVERIFY(page.contains("<style id=\"qb-code-colours\">"));
        QVERIFY(page.startsWith(BuiltInPage(PageTemplate).toUtf8().left(100)));
    }

    void emptiedPage_saysSo()
    {
        Open(BuiltInPage(PageTemplate).toUtf8().replace("<p></p>", "<p>text</p>"));
        Run(u"select_all"_s);
        QTest::keyClick(Surface(), Qt::Key_Delete);
        QTRY_VERIFY_WITH_TIMEOUT(m_editor->windowTitle().startsWith(u'*'), Patience);
        QVERIFY(Saved());
        QVERIFY(m_editor->Outcome().IsEmptied);
        QVERIFY(ReadFile(m_page).contains("<!--End-->"));
    }

    void hostilePage_runsNothingAndLeadsNowhere()
    {
        CountingServer server;
        const QByteArray web = server.Address();
        WriteFile(m_folder + u"17/own.png"_s, Png(Qt::green));
        WriteFile(m_folder + u"18/foreign.png"_s, Png(Qt::red));
        const QByteArray red = "document.documentElement.style.background='#f00';document.body.style.background='#f00'";
        const QByteArray hostile =
            "<html><head><base href='" + web + "'><meta http-equiv=refresh content='0;url=" + web + "refresh'><script>"
            + red + "</script><script src='" + web + "s.js'></script><link rel=stylesheet href='" + web
            + "s.css'><link rel=prefetch href='" + web + "p'><style>@import url(" + web
            + "i.css); body { background: url(" + web + "bg.png) }</style></head>\n<body onload=\"" + red
            + "\" background='" + web
            + "b.png'>\n<p>start</p>\n"
              "<img src='17/own.png'><img src='18/foreign.png'><img src='x' onerror=\""
            + red + "\"><img src='" + web + "i.png' srcset='" + web
            + "i2.png 2x'><img src='file:///etc/passwd'>\n<iframe src='" + web
            + "f'></iframe><iframe srcdoc=\"<script>parent." + red + "</script>\"></iframe><object data='" + web
            + "o'></object><embed src='" + web + "e'><svg onload=\"" + red + "\"><script>" + red
            + "</script><image href='" + web + "v.png'/></svg><video src='" + web + "v' poster='" + web
            + "v.png' autoplay></video>\n<form action='" + web + "form'><input autofocus onfocus=\"" + red
            + "\"><button>b</button></form>\n<p style=\"background:url(" + web
            + "st.png)\">styled</p><a href=\"javascript:" + red
            + "\">js</a><a href='data:text/html,<script>x</script>'>d</a>\n"
              "<script>"
            + red + "</script><math><mtext></mtext></math><details ontoggle=\"" + red
            + "\" open><summary>s</summary>t</details>\n</body></html>\n";
        Open(hostile);
        Type(u"New "_s);
        QTest::mouseClick(Surface(), Qt::LeftButton, Qt::ControlModifier, QPoint(200, 200));
        QTest::qWait(500); // for what should not happen
        TakePicture(*m_editor, u"page-editor-hostile"_s);
        QVERIFY(Shows(Qt::green));
        QVERIFY(!Shows(Qt::red));
        QVERIFY(Saved());
        QCOMPARE(server.Asked, QStringList());
        QCOMPARE(ReadFile(m_page), QByteArray(hostile).replace("<p>start", "<p>New start"));
        Press("source");
        QTRY_VERIFY_WITH_TIMEOUT(Source()->isVisible(), Patience);
        QCOMPARE(Source()->toPlainText().toUtf8(), QByteArray(hostile).replace("<p>start", "<p>New start"));
        QCOMPARE(server.Asked, QStringList());
    }

    void realPages_keepTheirTrees()
    {
        const QStringList pages = RealPages(20);
        QVERIFY(pages.size() >= 10);
        for (const QString& page : pages) {
            const QByteArray bytes = ReadFile(page);
            Open(bytes);
            QCOMPARE(TreeOf(Anew()), TreeOf(QString::fromUtf8(bytes))); // all of it written by the editor
            Press(u"Zed "_s);
            QVERIFY(Saved());
            const QByteArray saved = ReadFile(m_page);
            QVERIFY2(saved.contains("Zed"), qPrintable(page));
            QVERIFY2(saved != bytes, qPrintable(page));
            m_editor.reset();
        }
    }

    void source_isTakenByteByByte()
    {
        const QByteArray page = "<meta charset=windows-1252><p>\x80\x81</p>\r\n<p>two</p>\r\n";
        Open(page);
        Press("source");
        QTRY_VERIFY_WITH_TIMEOUT(Source()->isVisible(), Patience);
        QTextCursor cursor = Source()->document()->find(u"two"_s);
        cursor.insertText(u"zwölf € 中"_s);
        QVERIFY(m_editor->findChild<QAction*>(u"save"_s)->isEnabled());
        QVERIFY(Saved());
        QCOMPARE(ReadFile(m_page), QByteArray(page).replace("two", "zw\xf6lf \x80 &#20013;"));
        Press("source");
        QTRY_VERIFY_WITH_TIMEOUT(!Source()->isVisible(), Patience);
        Type(u"X"_s);
        QVERIFY(Saved());
        QVERIFY(ReadFile(m_page).contains("zw\xf6lf"));
        QVERIFY(ReadFile(m_page).contains("X\x80\x81</p>\r\n"));
        Press("undo"); // over the change of the source too
        Press("undo");
        QTRY_VERIFY_WITH_TIMEOUT(Written().contains("two"), Patience);
    }

    void utf16_staysUtf16()
    {
        const auto utf16 = [](const QString& text) -> QByteArray {
            return QStringEncoder(QStringConverter::Utf16LE, QStringConverter::Flag::WriteBom)(text);
        };
        Open(utf16(u"<p>中</p>\n"_s));
        Type(u"x"_s);
        QVERIFY(Saved());
        QCOMPARE(ReadFile(m_page), QByteArray(utf16(u"<p>x中</p>\n"_s)));
    }

    void findAndReplace_goesThroughTheText()
    {
        Open("<p>one two <b>o</b>ne</p>\n<ul><li>One</li></ul>");
        Press("find");
        auto* find = m_editor->findChild<QLineEdit*>(u"txtFind"_s);
        auto* found = m_editor->findChild<QLabel*>(u"lblFound"_s);
        find->setText(u"one"_s);
        QTRY_COMPARE_WITH_TIMEOUT(found->text(), u"1 of 3"_s, Patience);
        QTest::keyClick(find, Qt::Key_Return);
        QTRY_COMPARE_WITH_TIMEOUT(found->text(), u"2 of 3"_s, Patience);
        m_editor->findChild<QLineEdit*>(u"txtReplace"_s)->setText(u"1<"_s);
        TakePicture(*m_editor, u"page-editor-find"_s);
        m_editor->findChild<QToolButton*>(u"cmdReplaceAll"_s)->click();
        QTRY_COMPARE_WITH_TIMEOUT(found->text(), u"not found"_s, Patience);
        QVERIFY(Saved());
        QCOMPARE(ReadFile(m_page), "<p>1&lt; two <b>1&lt;</b></p>\n<ul><li>1&lt;</li></ul>");
    }

    void pastedPicture_isStoredBesideThePage()
    {
        Open("<p>a</p>");
        QImage image(40, 30, QImage::Format_RGB32);
        image.fill(Qt::blue);
        QApplication::clipboard()->setImage(image);
        m_editor->Pane().Do(EditorPane::Edit::Paste);
        QTRY_VERIFY_WITH_TIMEOUT(Written().contains("<img"), Patience);
        const QStringList files = QDir(m_folder + u"17"_s).entryList(QDir::Files);
        QCOMPARE(files.size(), 1);
        QVERIFY(Saved());
        QVERIFY2(ReadFile(m_page).contains("src=\"17/" + files.first().toUtf8() + "\""), ReadFile(m_page).constData());
        QTRY_VERIFY_WITH_TIMEOUT(Shows(Qt::blue), Patience);
    }

    void droppedPicture_isStoredWhereItFell()
    {
        const QString file = m_home->Path(u"Grüner Baum.png"_s);
        WriteFile(file, Png(Qt::green));
        Open("<p>first</p>\n<p>second</p>");
        QMimeData data;
        data.setUrls({QUrl::fromLocalFile(file)});
        Drop(data, QPoint(300, 60));
        QTRY_VERIFY_WITH_TIMEOUT(Written().contains("<img"), Patience);
        QVERIFY(Saved());
        const QByteArray page = ReadFile(m_page);
        QVERIFY2(page.contains("src=\"17/Gruner-Baum.png\""), page.constData());
        QVERIFY2(page.startsWith("<p>first</p>\n<p>second<img"), page.constData());
        QCOMPARE(ReadFile(m_folder + u"17/Gruner-Baum.png"_s), Png(Qt::green));
        QTRY_VERIFY_WITH_TIMEOUT(Shows(Qt::green), Patience);
    }

    void droppedPictureThatIsHuge_isRefusedUnread()
    {
        QFile file(m_home->Path(u"huge.png"_s));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(Png(Qt::green));
        QVERIFY(file.resize(4LL << 30)); // a hole, which takes no room
        file.close();
        Open("<p>first</p>");
        QMimeData data;
        data.setUrls({QUrl::fromLocalFile(file.fileName())});
        m_prompts->ExpectMsgBox(ApplicationTitle);
        Drop(data, QPoint(300, 30));
        QTRY_COMPARE_WITH_TIMEOUT(m_prompts->Messages.size(), 1, Patience);
        QCOMPARE(m_prompts->Messages.first().Text, u"'huge.png' is too large for a page: more than 64 MB."_s);
        QVERIFY(Written().startsWith("<p>first</p>"));
        QVERIFY(!QDir(m_folder + u"17"_s).exists());
    }

    void largePaste_isSavedWhole_data()
    {
        QTest::addColumn<QByteArray>("begin");
        QTest::addColumn<QByteArray>("end");
        QTest::addColumn<int>("size");
        QTest::newRow("paragraphs") << "<p>"_ba
                                    << "</p>"_ba << 500'000;
        QTest::newRow("lines") << ""_ba
                               << "<br>"_ba << 1'500'000; // all of them one text
    }
    void largePaste_isSavedWhole()
    {
        QFETCH(QByteArray, begin);
        QFETCH(QByteArray, end);
        QFETCH(int, size);
        constexpr int LongPatience = 60'000;
        Open("<p>first</p>");
        QByteArray markup;
        for (int number = 1; markup.size() < size; ++number)
            markup += begin + "Line " + QByteArray::number(number) + " with <b>bold</b> words." + end;
        auto* data = new QMimeData;
        data->setHtml(QString::fromUtf8(markup));
        QApplication::clipboard()->setMimeData(data);
        const auto* status = m_editor->findChild<QLabel*>(u"lblStatus"_s);
        m_editor->Pane().Do(EditorPane::Edit::Paste);
        if (size > 1'000'000)
            QTRY_VERIFY_WITH_TIMEOUT(status->text().contains(u"is being pasted"_s), Patience);
        QTRY_VERIFY_WITH_TIMEOUT(m_editor->windowTitle().startsWith(u'*'), LongPatience);
        QTRY_COMPARE_WITH_TIMEOUT(status->text(), QString(), Patience);
        QSignalSpy saved(m_editor.get(), &frmPageEditor::Saved);
        Press("save");
        QVERIFY((saved.size() > 0 || saved.wait(LongPatience)) && saved.first().first().toBool());
        const QByteArray page = ReadFile(m_page).replace("\n", " ").replace("<p> ", "<p>").replace(" <p>", "<p>");
        QVERIFY(page.contains(markup));
        QVERIFY(page.contains("first"));
    }

    void droppedFileThatIsNoPicture_isNotOpened()
    {
        const QString file = m_home->Path(u"page.htm"_s);
        WriteFile(file, "<body style='background:#f00'><script>document.body.style.background='#f00'</script></body>");
        Open("<p>first</p>");
        QMimeData data;
        data.setUrls({QUrl::fromLocalFile(file)});
        Drop(data, QPoint(300, 30));
        QTest::qWait(300); // for what should not happen
        QVERIFY(!Shows(Qt::red));
        QVERIFY(Written().startsWith("<p>first"));
        QVERIFY(!Written().contains("script"));
        QVERIFY(!QDir(m_folder + u"17"_s).exists());
    }

    void pastedMarkup_isCleaned()
    {
        CountingServer server;
        Open("<p>a</p>");
        auto* data = new QMimeData;
        data->setHtml(QString::fromUtf8("<h2 onclick='x()' style='color:red'>T</h2><p><b>b</b><script>x()</script>"
                                        "<img src='"
                                        + server.Address() + "i.png'><a href='http://x/' onclick='y()'>l</a></p>"));
        QApplication::clipboard()->setMimeData(data);
        m_editor->Pane().Do(EditorPane::Edit::Paste);
        QTRY_VERIFY_WITH_TIMEOUT(Written().contains("<b>b</b>"), Patience);
        QTest::qWait(200); // for what should not happen
        QCOMPARE(server.Asked, QStringList());
        const QByteArray page = Written();
        QVERIFY2(page.contains("<a href=\"http://x/\">l</a>") && page.contains("<h2>T</h2>"), page.constData());
        QVERIFY2(!page.contains("onclick") && !page.contains("script") && !page.contains("img"), page.constData());
    }

    void pageThatIsTooDeep_isEditedAsSource()
    {
        const QByteArray page = "<p>a</p>" + QByteArray("<div>").repeated(10'000) + "x";
        Open(page);
        QVERIFY(Source()->isVisible());
        Source()->textCursor().insertText(u"b"_s);
        QVERIFY(Saved());
        QCOMPARE(ReadFile(m_page), 'b' + page);
    }

    void deepPage_isEditedAsItLooks()
    {
        const QByteArray begin = QByteArray("<blockquote>").repeated(400) + "<p>";
        Open(begin + "x</p>");
        QVERIFY(!Source()->isVisible());
        Type(u"y"_s);
        QVERIFY(Written().startsWith(begin + "yx"));
        auto* data = new QMimeData;
        data->setHtml(QString::fromLatin1(QByteArray("<div>").repeated(10'000)) + u"deep words"_s);
        QApplication::clipboard()->setMimeData(data);
        m_editor->Pane().Do(EditorPane::Edit::Paste);
        QTRY_VERIFY_WITH_TIMEOUT(Written().contains("deep words"), Patience);
    }

    void fullDisk_keepsTheTextInTheEditor()
    {
        const QByteArray page = "<p>" + QByteArray(4000, 'x') + "</p>";
        Open(page);
        Type(u"New "_s);
        m_prompts->ExpectMsgBox(ApplicationTitle);
        {
            const FileSizeLimit limit(2000);
            QVERIFY(!Saved());
        }
        QVERIFY(m_prompts->Messages.last().Text.contains(u"your text is still here"_s));
        QCOMPARE(ReadFile(m_page), page);
        QVERIFY(m_editor->windowTitle().startsWith(u'*'));
        QVERIFY(Saved());
        QVERIFY(ReadFile(m_page).startsWith("<p>New\nx"));
    }

    void deadPane_comesBackWithTheText()
    {
        Open("<p>a</p>");
        Press(u"b"_s);
        QTRY_COMPARE_WITH_TIMEOUT(Written(), QByteArray("<p>ba</p>"), Patience);
        QTest::qWait(KeptAfter);
        const qint64 before = Renderer();
        QVERIFY(before > 0 && ::kill(pid_t(before), SIGKILL) == 0);
        QTRY_VERIFY_WITH_TIMEOUT(Renderer() > 0 && Renderer() != before, Patience);
        QTRY_COMPARE_WITH_TIMEOUT(Written(), QByteArray("<p>ba</p>"), Patience);
        QVERIFY(m_editor->windowTitle().startsWith(u'*'));
        QCOMPARE(ReadFile(m_page), QByteArray("<p>a</p>"));
        QVERIFY(Saved());
        QCOMPARE(ReadFile(m_page), QByteArray("<p>ba</p>"));
    }

    void closing_asksAboutWhatIsNotSaved()
    {
        Open("<p>a</p>");
        Press(u"b"_s);
        m_prompts->ExpectMsgBox(ApplicationTitle, MsgBoxResult::Cancel);
        m_editor->reject();
        QTRY_VERIFY_WITH_TIMEOUT(!m_prompts->Messages.isEmpty(), Patience);
        QVERIFY(m_editor->isVisible());
        m_prompts->ExpectMsgBox(ApplicationTitle, MsgBoxResult::Yes);
        m_editor->reject();
        QTRY_VERIFY_WITH_TIMEOUT(!m_editor->isVisible(), Patience);
        QCOMPARE(ReadFile(m_page), "<p>ba</p>");
    }

    void closing_asksAboutAPaneThatIsStillAtWork()
    {
        Open("<p>a</p>");
        const auto pane = pid_t(Renderer());
        QCOMPARE(::kill(pane, SIGSTOP), 0);
        const auto goOn = qScopeGuard([pane] { ::kill(pane, SIGCONT); });
        Press(u"b"_s);
        m_prompts->ExpectMsgBox(ApplicationTitle, MsgBoxResult::No);
        m_editor->reject();
        QTRY_COMPARE_WITH_TIMEOUT(m_prompts->Messages.size(), 1, Patience);
        QVERIFY(m_prompts->Messages.first().Text.startsWith(u"The editor does not answer"_s));
        QVERIFY(m_editor->isVisible());
        QCOMPARE(::kill(pane, SIGCONT), 0);
        QTRY_COMPARE_WITH_TIMEOUT(Written(), QByteArray("<p>ba</p>"), Patience);
        m_prompts->ExpectMsgBox(ApplicationTitle, MsgBoxResult::Yes); // about saving
        m_editor->reject();
        QTRY_VERIFY_WITH_TIMEOUT(!m_editor->isVisible(), Patience);
        QCOMPARE(ReadFile(m_page), "<p>ba</p>");
    }

    void largePage_opensSoon()
    {
        QByteArray page = "<h1>Large</h1>\n";
        while (page.size() < 200'000)
            page +=
                "<p>A paragraph with <b>bold</b> words and <a href='x'>links</a>, one of very many in this page.</p>\n";
        Open("<p>first</p>");
        m_editor.reset();
        QElapsedTimer timer;
        timer.start();
        Open(page);
        qInfo("200 kB: open after %lld ms", timer.elapsed());
        Type(u"x"_s);
        timer.start();
        QVERIFY(Saved());
        qInfo("200 kB: saved after %lld ms", timer.elapsed());
        QCOMPARE(ReadFile(m_page), page.replace("<h1>L", "<h1>xL"));
    }

    void pictures()
    {
        WriteFile(m_folder + u"17/own.png"_s, Png(Qt::darkCyan));
        const QByteArray page = BuiltInPage(PageTemplate).toUtf8().replace("<p></p>", PageOfAllKinds);
        for (const bool dark : {false, true}) {
            const QString suffix = dark ? u"-dark"_s : QString();
            const QPalette before = QApplication::palette();
            if (dark)
                QApplication::setPalette(DarkPalette());
            InitialiseIcons();
            Open(page, dark);
            QTest::qWait(400);
            TakePicture(*m_editor, u"page-editor"_s + suffix);
            Press("source");
            QTRY_VERIFY_WITH_TIMEOUT(Source()->isVisible(), Patience);
            TakePicture(*m_editor, u"page-editor-source"_s + suffix);
            m_editor->resize(420, 500);
            Press("source");
            QTRY_VERIFY_WITH_TIMEOUT(!Source()->isVisible(), Patience);
            QTest::qWait(300);
            TakePicture(*m_editor, u"page-editor-narrow"_s + suffix);
            m_editor.reset();
            QApplication::setPalette(before);
            InitialiseIcons();
        }
        Open(BuiltInPage(PageTemplate).toUtf8());
        QTest::qWait(200);
        TakePicture(*m_editor, u"page-editor-empty"_s);
    }

private:
    void Open(const QByteArray& page, bool isDark = false)
    {
        WriteFile(m_page, page);
        m_editor = std::make_unique<frmPageEditor>(nullptr, m_page, EditingTools(TokenPalette::Default(), isDark),
                                                   [] { return std::vector<LinkableItem>(); });
        QSignalSpy opened(m_editor.get(), &frmPageEditor::Opened);
        m_editor->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_editor.get()));
        QVERIFY(opened.wait(Patience));
    }
    void Press(const char* action) { m_editor->findChild<QAction*>(QString::fromLatin1(action))->trigger(); }
    QWidget* Surface()
    {
        QWidget* view = m_editor->Pane().Widget();
        return view->focusProxy() ? view->focusProxy() : view;
    }
    /// The process in which the page is; 0 while there is none.
    qint64 Renderer()
    {
        const QObjectList all = m_editor->findChildren<QObject*>();
        const auto page = std::find_if(all.begin(), all.end(),
                                       [](QObject* object) { return object->inherits("QWebEnginePage"); });
        return page == all.end() ? 0 : (*page)->property("renderProcessPid").toLongLong();
    }
    /// Drops what another program drags.
    void Drop(QMimeData& data, const QPoint& at)
    {
        QWidget* view = m_editor->Pane().Widget();
        QDragEnterEvent enter(at, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(view, &enter);
        QDragMoveEvent move(at, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(view, &move);
        QTest::qWait(100); // for the page's answer, as long as a hand holds it
        QDropEvent drop(at, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(view, &drop);
    }
    QPlainTextEdit* Source() { return m_editor->findChild<QPlainTextEdit*>(u"txtSource"_s); }
    bool Shows(Qt::GlobalColor color)
    {
        const QImage image = m_editor->grab().toImage();
        for (int y = 0; y < image.height(); y += 4) {
            for (int x = 0; x < image.width(); x += 4) {
                if (image.pixelColor(x, y) == QColor(color))
                    return true;
            }
        }
        return false;
    }

    /// What a function of the pane answers.
    QString Call(const QString& function, const QJsonValue& argument = {})
    {
        std::optional<QString> answer;
        m_editor->Pane().Call(function, argument, [&answer](const QJsonValue& value) { answer = value.toString(); });
        if (!QTest::qWaitFor([&answer] { return answer.has_value(); }, Patience))
            QTest::qFail("the pane does not answer", __FILE__, __LINE__);
        return answer.value_or(QString());
    }
    void Run(const QString& command, const QJsonValue& argument = {}) { Call(u"run"_s, QJsonArray{command, argument}); }
    /// Presses the keys at the caret; a page begins with it at its begin.
    void Press(const QString& text)
    {
        for (const QChar letter : text) {
            if (letter == u'\n')
                QTest::keyClick(Surface(), Qt::Key_Return);
            else
                QTest::keyClick(Surface(), letter.toLatin1());
        }
    }
    /// Types until it stands in the text.
    void Type(const QString& text)
    {
        for (const QChar letter : text) {
            const QByteArray before = Written();
            Press(QString(letter));
            if (!QTest::qWaitFor([&] { return Written() != before; }, Patience))
                QTest::qFail("the key is not in the text", __FILE__, __LINE__);
        }
    }

    QString TreeOf(const QString& page) { return Call(u"tree"_s, page); }
    QString Tree() { return TreeOf(QString::fromUtf8(Written())); }
    QString Anew() { return Call(u"anew"_s); }
    QByteArray Written() { return Call(u"text"_s).toUtf8(); }
    bool Saved()
    {
        QSignalSpy saved(m_editor.get(), &frmPageEditor::Saved);
        Press("save");
        return (saved.size() > 0 || saved.wait(Patience)) && saved.first().first().toBool();
    }

    std::unique_ptr<TemporaryHome> m_home;
    std::unique_ptr<ScriptedPrompts> m_prompts;
    QString m_folder;
    QString m_page;
    std::unique_ptr<frmPageEditor> m_editor;
};

QB_GUI_TEST_MAIN(TestPageEditor)
#include "tst_page_editor.moc"
