#include "panels/ui/ctlSmartTreeView.h"
#include "session/ui/BrowserToolbar.h"
#include "support/CountingServer.h"
#include "support/EditingWindow.h"
#include "text/ui/ctlCaptionRTB.h"
#include "web/LocalPages.h"
#include "web/OpenedPages.h"
#include "web/WebAccess.h"
#include "web/ui/BrowserView.h"
#include "web/ui/BusyLogo.h"

#include <QBuffer>
#include <QCheckBox>
#include <QComboBox>
#include <QPushButton>
#include <QSignalSpy>
#include <QStatusBar>
#include <QTcpServer>
#include <QTcpSocket>
#include <csignal>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

namespace {

constexpr int LinksTab = 4;

QByteArray Png(Qt::GlobalColor color)
{
    QImage image(80, 80, QImage::Format_RGB32);
    image.fill(color);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    image.save(&buffer, "PNG");
    return bytes;
}

const QByteArray HostileDrawing = R"(<svg xmlns='http://www.w3.org/2000/svg' width='9' height='9'
 onload="top.document.body.style.background='#f00'"><image href='WEB/v.png'/>
 <script>top.document.body.style.background='#f00'</script></svg>)";

/// With its own picture, and with all that must not be loaded nor run.
const QByteArray HostilePage = R"(<!doctype html><html><head>
<meta http-equiv='refresh' content='0;url=WEB/refresh'><base href='WEB/base/'>
<link rel='stylesheet' href='WEB/style.css'><link rel='prefetch' href='WEB/prefetch'>
<link rel='preconnect' href='WEB/'><link rel='dns-prefetch' href='WEB/'><link rel='preload' as='image' href='WEB/pre'>
<link rel='icon' href='WEB/icon.png'><link rel='manifest' href='WEB/manifest.json'>
<style>@import url(WEB/import.css); @font-face { font-family: f; src: url(WEB/f.woff) }
p { font-family: f; background: url(WEB/bg.png) } iframe { height: 90px }</style></head><body style='background:#fff'>
<form action='WEB/form'><input name='a' onfocus="document.body.style.background='#f00'" autofocus></form>
<img src='ID/own.png'><img src='999/foreign.png'><img src='ID/../999/foreign.png'>
<img src='ID/..%2f999/foreign.png'><img src='ID/..%5c999/foreign.png'><img src='../secret.png'>
<img src='file://SECRET'><img src='WEB/picture.png' srcset='WEB/picture2.png 2x'><img src='ID/own.svg'>
<iframe src='WEB/frame'></iframe><iframe src='ID/own.svg'></iframe><iframe src='file://SECRET'></iframe>
<iframe srcdoc="<script>top.document.body.style.background='#f00'</script>"></iframe>
<iframe src="data:text/html,<body style='background:red'><img src='WEB/data.png'>"></iframe>
<object data='WEB/o'></object><embed src='ID/own.svg'><video src='WEB/v' poster='WEB/p.png' autoplay></video>
<p>text</p>DRAWING<script>document.body.style.background='#f00'; document.title='ran';</script>
<img src='x' onerror="document.body.style.background='#f00'"></body></html>)";

/// A web server that gives one page and writes down what was asked for.
class PageServer : public QTcpServer {
public:
    explicit PageServer(QByteArray page) : m_page(std::move(page))
    {
        listen(QHostAddress::LocalHost);
        connect(this, &QTcpServer::newConnection, this, [this] {
            QTcpSocket* socket = nextPendingConnection();
            connect(socket, &QTcpSocket::readyRead, this, [this, socket] { Answer(*socket); });
            connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
        });
    }
    QString Address() const { return u"http://127.0.0.1:%1/"_s.arg(serverPort()); }
    QStringList Asked; ///< paths

private:
    void Answer(QTcpSocket& socket)
    {
        const QByteArray request = socket.readAll();
        const QString path = QString::fromLatin1(request.mid(4, request.indexOf(' ', 4) - 4));
        Asked << path;
        const QByteArray type = path.endsWith(u".bin"_s) ? "application/octet-stream" : "text/html";
        socket.write("HTTP/1.0 200 OK\r\nContent-Type: " + type
                     + "\r\nContent-Length: " + QByteArray::number(m_page.size()) + "\r\n\r\n" + m_page);
        socket.disconnectFromHost();
    }
    QByteArray m_page;
};

} // namespace

/// The Links tab with its browser, and the Files tab beside it.
class TestWebLinks : public QObject, private EditingWindow {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        // Without a display the browser draws by itself, of which it tells.
        QTest::failOnWarning(QRegularExpression(
            u"^(?!This plugin does not support |WebEngineContext used before |No suitable graphics backend )"_s));
        m_before = WebAccess::SetSource([] { return WebSurroundings(); }); // the pages are the test's own
        Begin();
        m_folder = m_home->Path(u"data/QBLib_HTML"_s) + u'/';
    }
    void cleanup()
    {
        End();
        WebAccess::SetSource(m_before);
    }

    void start_makesNoBrowser()
    {
        Open();
        ClickOn(0);
        QVERIFY(View()->findChildren<QWidget*>().isEmpty());
        Tab(LinksTab);
        QVERIFY(!View()->findChildren<QWidget*>().isEmpty());
    }

    void itemWithOnlyAPage_opensOnItsTab()
    {
        GivePage("<p>page</p>");
        Open();
        ClickOn(1);
        ClickOn(0);
        QCOMPARE(Details()->CurrentView(), DetailsTab::Links);
        QTRY_COMPARE(Address(), u"local://Item%1"_s.arg(m_item));
    }

    void localPage_showsItsOwnPicturesAndRunsNoScript()
    {
        CountingServer server;
        WriteFile(m_folder + QString::number(m_item) + u"/own.png"_s, Png(Qt::green));
        WriteFile(m_folder + u"999/foreign.png"_s, Png(Qt::red));
        WriteFile(m_home->Path(u"data/secret.png"_s), Png(Qt::red));
        const QHash<QByteArray, QByteArray> filled{{"WEB/", server.Address()},
                                                   {"ID/", QByteArray::number(m_item) + '/'},
                                                   {"SECRET", m_home->Path(u"data/secret.png"_s).toUtf8()}};
        QByteArray page = HostilePage;
        QByteArray svg = HostileDrawing;
        for (const auto& [word, text] : filled.asKeyValueRange()) {
            page.replace(word, text);
            svg.replace(word, text);
        }
        WriteFile(m_folder + QString::number(m_item) + u"/own.svg"_s, svg);
        GivePage(page.replace("DRAWING", svg));
        Open();
        ClickOn(0);
        Tab(LinksTab);
        QTRY_VERIFY(Shows(Qt::green));
        QTest::qWait(500); // for what should not happen
        QVERIFY(!Shows(Qt::red));
        QCOMPARE(server.Asked, QStringList());
        QCOMPARE(server.Met, 0);
        QCOMPARE(Address(), u"local://Item%1"_s.arg(m_item));
    }

    void pageFromTheTemplate_showsThePicturesOfThat()
    {
        WriteFile(m_folder + u"default2/logo.png"_s, Png(Qt::green));
        GivePage("<img src='default2\\logo.png'>");
        Open();
        ClickOn(1);
        ClickOn(0);
        QTRY_VERIFY(Shows(Qt::green));
    }

    void linkToAnotherWindow_isShownInThisOne()
    {
        CountingServer server("<body style='background:#00f'></body>");
        GivePage("<body style='margin:0'><a target='_blank' href='" + server.Address()
                 + "'><div style='width:100vw;height:100vh;background:#0f0'></div></a></body>");
        Open();
        ClickOn(1);
        ClickOn(0);
        QTRY_VERIFY(Shows(Qt::green));
        QTest::mouseClick(BrowserSurface(), Qt::LeftButton, {}, QPoint(100, 100));
        QTRY_VERIFY(Shows(Qt::blue));
        QCOMPARE(Address().toUtf8(), server.Address());
    }

    void pageOfTheWeb_isGrantedNothing()
    {
        PageServer server(
            "<script>Notification.requestPermission().then(answer => {"
            "document.body.style.background = answer === 'denied' ? '#0f0' : '#f00'; });</script><body></body>");
        Open();
        ClickOn(0);
        Tab(LinksTab);
        Type(server.Address());
        QTRY_VERIFY(Shows(Qt::green) || Shows(Qt::red));
        QVERIFY(Shows(Qt::green));
    }

    void pageOfTheWeb_runsItsScriptsAndReachesNoLocalPage()
    {
        WriteFile(m_folder + u"17.htm"_s, "<p>page</p>");
        WriteFile(m_folder + u"17/own.png"_s, Png(Qt::green));
        PageServer server("<body><img src='quillbase-page://library/17/own.png'><iframe "
                          "src='quillbase-page://library/17.htm'></iframe>"
                          "<script>document.body.style.background='#f00';"
                          "setTimeout(()=>{location='quillbase-page://library/17.htm'}, 50)</script></body>");
        Open();
        ClickOn(0);
        Tab(LinksTab);
        Type(server.Address());
        QTRY_VERIFY(Shows(Qt::red));
        QTest::qWait(300);
        QVERIFY(Shows(Qt::red));
        QVERIFY(!Shows(Qt::green));
        QCOMPARE(Address(), server.Address());
    }

    void commands_goBackForwardHomeAndReload()
    {
        PageServer server("<p>web</p>");
        Open();
        ClickOn(0);
        QVERIFY(!ToolbarButton(u"tbrBrowser"_s, u"BACK"_s)->isEnabled());
        Tab(LinksTab);
        QVERIFY(ToolbarButton(u"tbrBrowser"_s, u"HOME"_s)->isVisible());
        QTRY_VERIFY(Loaded() > 0);
        Type(server.Address().mid(7)); // without its scheme
        QTRY_VERIFY(ToolbarButton(u"tbrBrowser"_s, u"BACK"_s)->isEnabled());
        QCOMPARE(Address(), server.Address());
        const auto pages = [&server] { return server.Asked.count(u"/"_s); };
        QTRY_COMPARE(pages(), 1);
        ToolbarButton(u"tbrBrowser"_s, u"RELOAD"_s)->trigger();
        QTRY_COMPARE(pages(), 2);
        ToolbarButton(u"tbrBrowser"_s, u"BACK"_s)->trigger();
        QTRY_COMPARE(Address(), QString()); // the template
        QTRY_VERIFY(ToolbarButton(u"tbrBrowser"_s, u"FORWARD"_s)->isEnabled());
        QVERIFY(!ToolbarButton(u"tbrBrowser"_s, u"BACK"_s)->isEnabled());
        ToolbarButton(u"tbrBrowser"_s, u"FORWARD"_s)->trigger();
        QTRY_COMPARE(Address(), server.Address());
        ToolbarButton(u"tbrBrowser"_s, u"HOME"_s)->trigger();
        QTRY_COMPARE(Address(), QString());
    }

    void logo_turnsWhileAPageOfTheWebLoads()
    {
        QTcpServer silent;
        QVERIFY(silent.listen(QHostAddress::LocalHost));
        Open();
        ClickOn(0);
        auto* logo = m_window->findChild<BusyLogo*>(u"imgLabel"_s);
        QVERIFY(!logo->isVisible());
        Tab(LinksTab);
        QVERIFY(logo->isVisible());
        QTRY_VERIFY(Loaded() > 0);
        QVERIFY(!logo->IsBusy());
        Type(u"http://127.0.0.1:%1/"_s.arg(silent.serverPort()));
        QTRY_VERIFY(logo->IsBusy());
        ToolbarButton(u"tbrBrowser"_s, u"STOP"_s)->trigger();
        QVERIFY(!logo->IsBusy());
    }

    void fileThatTheBrowserMeets_isLoadedForTheItem()
    {
        PageServer server("bytes");
        Open();
        ClickOn(0);
        Tab(LinksTab);
        const QSignalSpy loads(View(), &BrowserView::LoadFile);
        Type(server.Address() + u"file.bin"_s); // which its address alone does not tell
        QTRY_COMPARE(loads.size(), 1);
        QTRY_COMPARE(Texts(*m_database, u"SELECT Title FROM Files WHERE CodeID = ?"_s, {m_item}),
                     QStringList{u"file.bin"_s});
    }

    void linkToAnItem_opensIt()
    {
        const QByteArray other =
            m_database->QueryValue(u"SELECT ID FROM Items WHERE Title = 'other'"_s).ToText().toUtf8();
        GivePage("<body style='margin:0'><a href='local://Item" + other
                 + "'><div style='width:100vw;height:100vh;background:#0f0'></div></a></body>");
        Open();
        ClickOn(0);
        Tab(LinksTab);
        QTRY_VERIFY(Shows(Qt::green));
        QTest::mouseClick(BrowserSurface(), Qt::LeftButton, {}, QPoint(100, 100));
        QTRY_COMPARE(Tree()->currentIndex(), Child(1));
    }

    void addressInNotes_isClicked()
    {
        PageServer server("<body style='background:#0f0'></body>");
        Write(u"Notes"_s, RtfFromPlainText(u"see "_s + server.Address() + u" here"_s, CodeFont));
        Open();
        ClickOn(0);
        Tab(1);
        const auto place = [this](int at) {
            QTextCursor cursor(Notes()->document());
            cursor.setPosition(at);
            return Notes()->cursorRect(cursor).center() + QPoint(2, 0);
        };
        QTRY_VERIFY(!Notes()->document()->isEmpty());
        QTest::mouseMove(Notes()->viewport(), place(1));
        QTRY_COMPARE(Notes()->viewport()->cursor().shape(), Qt::IBeamCursor);
        QTest::mouseMove(Notes()->viewport(), place(10));
        QTRY_COMPARE(Notes()->viewport()->cursor().shape(), Qt::PointingHandCursor);
        TakePicture(*m_window, u"notes-address"_s);
        QTest::mouseClick(Notes()->viewport(), Qt::LeftButton, {}, place(1));
        QCOMPARE(Details()->CurrentView(), DetailsTab::Notes);
        m_prompts->ExpectMsgBox(ApplicationTitle);
        const QByteArray path = qgetenv("PATH");
        qputenv("PATH", ""); // no desktop to open it
        QTest::mouseClick(Notes()->viewport(), Qt::LeftButton, Qt::ControlModifier, place(10));
        qputenv("PATH", path);
        QCOMPARE(m_prompts->Messages.size(), 1); // outside
        QCOMPARE(Details()->CurrentView(), DetailsTab::Notes);
        QTest::mouseClick(Notes()->viewport(), Qt::LeftButton, {}, place(10));
        QCOMPARE(Details()->CurrentView(), DetailsTab::Links);
        QTRY_COMPARE(Address(), server.Address());
        QTRY_VERIFY(Shows(Qt::green));
        QCOMPARE(PlainTextFromRtf(Read(u"Notes"_s)), u"see "_s + server.Address() + u" here"_s); // as it was
    }

    void addressInTheNotesOfAFile_isClicked()
    {
        CountingServer server;
        AddStoredFile(*m_database, m_item, u"a.txt"_s, "x", Date::FromParts(2026, 3, 1, 10, 0, 0));
        m_database->Execute(u"UPDATE Files SET Description = ?"_s,
                            {RtfFromPlainText(QString::fromLatin1(server.Address()), CodeFont)});
        Open();
        ClickOn(0);
        Tab(3);
        m_window->findChild<QTreeView*>(u"lvFiles"_s)
            ->setCurrentIndex(m_window->findChild<QTreeView*>(u"lvFiles"_s)->model()->index(0, 0));
        auto* notes = m_window->findChild<RichTextBox*>(u"rtbFileNotes"_s);
        QTRY_VERIFY(!notes->document()->isEmpty());
        QTextCursor cursor(notes->document());
        cursor.setPosition(5);
        QTest::mouseClick(notes->viewport(), Qt::LeftButton, {}, notes->cursorRect(cursor).center() + QPoint(2, 0));
        QCOMPARE(Details()->CurrentView(), DetailsTab::Links);
        QTRY_COMPARE(Address().toUtf8(), server.Address());
    }

    void mailInNotes_isWrittenOutside()
    {
        Write(u"Notes"_s, RtfFromPlainText(u"mailto:a@example.org"_s, CodeFont));
        Open();
        ClickOn(0);
        Tab(1);
        QTRY_VERIFY(!Notes()->document()->isEmpty());
        QTextCursor cursor(Notes()->document());
        cursor.setPosition(5);
        m_prompts->ExpectMsgBox(ApplicationTitle);
        const QByteArray path = qgetenv("PATH");
        const auto restore = qScopeGuard([path] { qputenv("PATH", path); });
        qputenv("PATH", ""); // no desktop to open it
        QTest::mouseClick(Notes()->viewport(), Qt::LeftButton, {}, Notes()->cursorRect(cursor).center() + QPoint(2, 0));
        QCOMPARE(m_prompts->Messages.size(), 1);
        QCOMPARE(m_prompts->Messages.last().Text, u"No application could be started for 'mailto:a@example.org'."_s);
        QCOMPARE(Details()->CurrentView(), DetailsTab::Notes);
    }

    void rootOfTheTree_hasNoPage()
    {
        Open();
        ClickOn(0);
        Tab(LinksTab);
        QTRY_VERIFY(Loaded() > 0);
        Tree()->setCurrentIndex(Root());
        for (const QString& command : {u"mnuWebHome"_s, u"mnuWebEditPage"_s, u"mnuWebInsertPicture"_s,
                                       u"mnuWebInsertLink"_s, u"mnuWebDeletePage"_s, u"mnuWebReload"_s})
            Action(command)->trigger();
        QCOMPARE(QDir(m_folder).entryList({u"0*"_s, u".htm"_s}, QDir::AllEntries | QDir::Hidden), QStringList());
        QCOMPARE(CountOf(*m_database, u"Items"_s), 2);
    }

    void openedBrowsers_areListedWhereOneTells()
    {
        Open();
        ClickOn(0);
        Tab(LinksTab);
        const auto entries = [this] {
            QStringList texts;
            QTimer::singleShot(0, this, [&texts] {
                auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
                for (const QAction* action : menu->actions())
                    texts << action->text() + (action->isEnabled() ? u""_s : u" (off)"_s);
                if (menu->actions().first()->isEnabled())
                    menu->actions().first()->trigger();
                menu->close();
            });
            ToolbarButton(u"tbrBrowser"_s, u"EXPLORERS"_s)->trigger();
            return texts;
        };
        QCOMPARE(entries(), QStringList{u"No Internet Explorers Opened (off)"_s});
        PageServer server("<p>web</p>");
        const auto before = SetOpenedPagesSource([&] {
            return std::vector<OpenedPage>{{u""_s, u"http://no.title/"_s}, {u"A & B"_s, server.Address()}};
        });
        QCOMPARE(entries(), QStringList{u"A && B"_s});
        SetOpenedPagesSource(before);
        QCOMPARE(Address(), server.Address());
        QTRY_COMPARE(server.Asked.count(u"/"_s), 1);
    }

    void toolbar_hasTheCommandsOfTheMenu()
    {
        Open();
        ClickOn(0);
        Tab(LinksTab);
        for (const QString& key : {u"EDIT"_s, u"INSERT_PICTURE"_s, u"INSERT_LINK"_s, u"BACK"_s, u"FORWARD"_s, u"STOP"_s,
                                   u"RELOAD"_s, u"HOME"_s, u"EXPLORERS"_s})
            QVERIFY2(ToolbarButton(u"tbrBrowser"_s, key) && ToolbarButton(u"tbrBrowser"_s, key)->isVisible(),
                     qPrintable(key));
        QVERIFY(!Action(u"mnuWebDeletePage"_s)->isEnabled()); // there is no page
        GivePage("<p>page</p>");
        ClickOn(1);
        ClickOn(0);
        QVERIFY(Action(u"mnuWebDeletePage"_s)->isEnabled());
    }

    void pageThatDies_saysSoAndIsLoadedAgain()
    {
        GivePage("<body style='background:#0f0'></body>");
        Open();
        ClickOn(1);
        ClickOn(0);
        QTRY_VERIFY(Shows(Qt::green));
        const auto isDead = [this] {
            const auto* label = m_window->findChild<QLabel*>(u"lblDead"_s);
            return label && label->isVisible();
        };
        KillPage();
        QTRY_VERIFY(isDead());
        TakePicture(*m_window, u"web-dead"_s);
        QTest::qWait(300); // for what should not happen
        QVERIFY(isDead()); // it is not loaded unasked
        m_window->findChild<QLabel*>(u"lblDead"_s)->parentWidget()->findChild<QPushButton*>()->click();
        QTRY_VERIFY(!isDead() && Shows(Qt::green));
        KillPage();
        QTRY_VERIFY(isDead());
        ToolbarButton(u"tbrBrowser"_s, u"RELOAD"_s)->trigger();
        QTRY_VERIFY(!isDead() && Shows(Qt::green));
        KillPage();
        QTRY_VERIFY(isDead());
        ToolbarButton(u"tbrBrowser"_s, u"HOME"_s)->trigger();
        QTRY_VERIFY(!isDead() && Shows(Qt::green));
        QCOMPARE(Address(), u"local://Item%1"_s.arg(m_item));
    }

    void pageThatDiesWhileItLoads_letsTheLogoRest()
    {
        QTcpServer silent;
        QVERIFY(silent.listen(QHostAddress::LocalHost));
        PageServer server("<body style='background:#0f0'><img src='http://127.0.0.1:"
                          + QByteArray::number(silent.serverPort()) + "/'></body>");
        Open();
        ClickOn(0);
        Tab(LinksTab);
        Type(server.Address());
        QTRY_VERIFY(Shows(Qt::green));
        auto* logo = m_window->findChild<BusyLogo*>(u"imgLabel"_s);
        QVERIFY(logo->IsBusy());
        KillPage();
        QTRY_VERIFY(!logo->IsBusy());
    }

    void pageByItself_hasNothingOpenedOutside()
    {
        // A download and a mail address that no click asks for, but which look like one.
        PageServer server("<body style='background:#0f0'><a id='mail' href='mailto:a@example.org'>m</a>"
                          "<script>setTimeout(() => document.getElementById('mail').click(), 50);"
                          "setTimeout(() => { location = '/file.bin'; }, 100);"
                          "onmousedown = () => { document.getElementById('mail').click();"
                          "setTimeout(() => { location = '/file.bin'; }, 50); }</script></body>");
        m_clock.emplace();
        Open();
        ClickOn(0);
        Tab(LinksTab);
        const QSignalSpy outside(View(), &BrowserView::OpenOutside);
        Type(server.Address());
        m_clock->AddSeconds(60); // since the address was entered
        QTRY_VERIFY(server.Asked.contains(u"/file.bin"_s));
        QTest::qWait(300); // for what should not happen
        QCOMPARE(outside.size(), 0);
        QVERIFY(m_prompts->Messages.isEmpty());
        m_prompts->ExpectMsgBox(ApplicationTitle);
        const QByteArray path = qgetenv("PATH");
        const auto restore = qScopeGuard([path] { qputenv("PATH", path); });
        qputenv("PATH", "");                                                       // no desktop to open it
        QTest::mouseClick(BrowserSurface(), Qt::LeftButton, {}, QPoint(100, 100)); // the page asks for two things
        QTRY_COMPARE(outside.size(), 1);
        QTest::qWait(300); // for what should not happen
        QCOMPARE(outside.size(), 1);
        m_clock.reset();
    }

    void webThatIsKeptOut_isToldAndNeverAsked_data()
    {
        QTest::addColumn<QString>("how");
        QTest::addColumn<QString>("reason");
        QTest::newRow("by an option") << u"option"_s << u"the options keep them out"_s;
        QTest::newRow("for root") << u"root"_s << u"the program runs as root, for whom the browser has no sandbox"_s;
    }
    void webThatIsKeptOut_isToldAndNeverAsked()
    {
        QFETCH(QString, how);
        QFETCH(QString, reason);
        PageServer server("<p>web</p>");
        GivePage("<body style='margin:0'><a href='" + server.Address().toUtf8()
                 + "'><div style='width:100vw;height:100vh;background:#0f0'></div></a></body>");
        if (how == u"root"_s)
            WebAccess::SetSource([] { return WebSurroundings{.IsRoot = true}; });
        else
            UseOwnWebAccess();
        SaveSetting(SettingsApplication, u"Settings"_s, u"KeepWebOut"_s, how == u"option"_s ? u"True"_s : u"False"_s);
        Open();
        ClickOn(1);
        ClickOn(0);
        QTRY_VERIFY(Shows(Qt::green)); // a page of the library is
        const auto told = [this] {
            const auto* label = m_window->findChild<QLabel*>(u"lblKeptOut"_s);
            return label && label->isVisible() ? label->text() : QString();
        };
        const QString text = u"Pages from the web are not shown here: %1.\n\n%2"_s.arg(reason, server.Address());
        QVERIFY(told().isEmpty());
        QTest::mouseClick(BrowserSurface(), Qt::LeftButton, {}, QPoint(100, 100));
        QTRY_COMPARE(told(), text);
        TakePicture(*m_window, u"web-kept-out-"_s + how);
        ClickOn(1);
        ClickOn(0);
        QTRY_VERIFY(told().isEmpty());
        Type(server.Address());
        QTRY_COMPARE(told(), text);
        QCOMPARE(server.Asked, QStringList());
    }

    void webThatIsKeptOutFromNowOn_goesAtOnce()
    {
        PageServer server("<body style='margin:0;background:#f00'><script>setInterval(() => { new Image().src = "
                          "'/tick?' + Math.random(); }, 20);</script></body>");
        UseOwnWebAccess();
        Open();
        ClickOn(0);
        Tab(LinksTab);
        Type(server.Address());
        QTRY_VERIFY(Shows(Qt::red));
        QTRY_VERIFY(server.Asked.size() > 3);
        QTimer::singleShot(0, this, [] {
            auto* dialog = QApplication::activeModalWidget();
            dialog->findChild<QCheckBox*>(u"chkKeepWebOut"_s)->setChecked(true);
            dialog->findChild<QPushButton*>(u"cmdOK"_s)->click();
        });
        Action(u"mnuOptionsItem"_s)->trigger();
        QVERIFY(!Shows(Qt::red));
        QVERIFY(m_window->findChild<QLabel*>(u"lblKeptOut"_s)->isVisible());
        QTest::qWait(100); // for what is on its way
        const qsizetype asked = server.Asked.size();
        QTest::qWait(300); // for what should not happen
        QCOMPARE(server.Asked.size(), asked);
        GivePage("<body style='background:#0f0'></body>");
        ClickOn(1);
        ClickOn(0);
        QTRY_VERIFY(Shows(Qt::green));
    }

    void menu_isTheTabs()
    {
        Open();
        ClickOn(0);
        OpenMenu(u"mnuEdit"_s);
        QVERIFY(!WebMenu()->menuAction()->isVisible());
        Tab(LinksTab);
        OpenMenu(u"mnuEdit"_s);
        QVERIFY(WebMenu()->menuAction()->isVisible());
    }

    void files_areListed()
    {
        const Date added = Date::FromParts(2026, 3, 1, 10, 0, 0);
        AddStoredFile(*m_database, m_item, u"Big.txt"_s, QByteArray(12345, 'x'), added);
        AddStoredFile(*m_database, m_item, u"alpha.png"_s, "123456789", added.AddDays(1));
        AddStoredFile(*m_database, m_item, u"mid.zip"_s, QByteArray(100, 'x'), added.AddDays(-1));
        Open();
        ClickOn(1);
        auto* list = m_window->findChild<QTreeView*>(u"lvFiles"_s);
        QCOMPARE(list->model()->rowCount(), 0);
        Tab(3);
        TakePicture(*m_window, u"files-empty"_s);
        ClickOn(0); // the tab has content now, so it stays
        QCOMPARE(Details()->CurrentView(), DetailsTab::Files);
        QCOMPARE(list->model()->rowCount(), 3);
        const auto column = [list](int at) {
            QStringList texts;
            for (int row = 0; row < list->model()->rowCount(); ++row)
                texts << list->model()->index(row, at).data().toString();
            return texts;
        };
        QCOMPARE(column(0), QStringList({u"alpha.png"_s, u"Big.txt"_s, u"mid.zip"_s}));
        list->sortByColumn(4, Qt::AscendingOrder);
        QCOMPARE(column(4), QStringList({u"9"_s, u"100"_s, u"12,345"_s}));
        QCOMPARE(column(2), QStringList({u"000000000009"_s, u"000000000100"_s, u"000000012345"_s}));
        list->sortByColumn(3, Qt::DescendingOrder);
        QCOMPARE(column(0), QStringList({u"alpha.png"_s, u"Big.txt"_s, u"mid.zip"_s}));
        Tree()->setCurrentIndex(Root());
        QCOMPARE(list->model()->rowCount(), 0); // the files of no item
    }

    void captionBox_isBoxOrBrowser()
    {
        WriteFile(m_folder + u"17.htm"_s, "<body style='background:#0f0'></body>");
        ctlCaptionRTB box;
        box.resize(300, 200);
        box.SetCaption(u" Database Item"_s);
        box.SetCaptionHeight(30);
        box.SetText(u"text"_s);
        box.SetSelStart(0);
        box.SetSelLength(2);
        box.SetSelBold(true);
        box.show();
        QVERIFY(QTest::qWaitForWindowExposed(&box));
        QCOMPARE(box.Caption(), u" Database Item"_s);
        QCOMPARE(box.CaptionHeight(), 30);
        QCOMPARE(box.SelText(), u"te"_s);
        QCOMPARE(box.SelBold(), true);
        QVERIFY(box.TextRTF().contains(u"\\b"_s));
        box.SetTextBackColor(Qt::yellow);
        box.SetShowInactive(true);
        box.SetInactiveColor(Qt::gray);
        const auto back = [&box] { return box.RtbText()->palette().color(QPalette::Base); };
        QCOMPARE(back(), QColor(Qt::yellow));
        box.SetInactive(true);
        QVERIFY(!box.RtbText()->isEnabled());
        QCOMPARE(back(), QColor(Qt::gray));
        box.SetInactive(false);
        QCOMPARE(back(), QColor(Qt::yellow));
        box.SetLocked(true);
        QVERIFY(box.Locked());
        QVERIFY(!box.ShowBrowser());
        box.SetShowBrowser(true);
        box.Navigate(u"local://Item17"_s, m_folder);
        auto* browser = box.findChild<BrowserView*>(u"WebBrowser"_s);
        QTRY_COMPARE(QColor(browser->grab().toImage().pixelColor(50, 50)), QColor(Qt::green));
        box.SetShowBrowser(false);
        QVERIFY(box.RtbText()->isVisible());
    }

    void address_leavesTheRestOfItsBand()
    {
        Open();
        m_window->showNormal();
        m_window->resize(1200, 700);
        ClickOn(0);
        Tab(LinksTab);
        auto* address = m_window->findChild<QComboBox*>(u"cboURL"_s);
        const auto fits = [&] {
            return address->width() <= m_window->width() - 244
                   && address->geometry().right() <= address->parentWidget()->width();
        };
        QTRY_VERIFY(address->isVisible() && fits());
        QVERIFY(address->maximumWidth() <= address->parentWidget()->width() - address->x());
        m_window->resize(700, 500);
        QTRY_VERIFY(address->maximumWidth() <= address->parentWidget()->width() - address->x() && fits());
    }

    void browsing_hidesTheTreeIfWanted()
    {
        SaveSetting(SettingsApplication, u"Settings"_s, u"AutoHideTreeWhenBrowsing"_s, u"True"_s);
        Open();
        ClickOn(0);
        QVERIFY(Tree()->isVisible());
        Tab(4);
        QVERIFY(!Tree()->isVisible());
        QVERIFY(!m_window->findChild<ctlSmartTreeView*>(u"tvCodeItems"_s)->TreeHidden()); // that is the user's
        Tab(0);
        QVERIFY(Tree()->isVisible());
    }

    void browsing_hidesTheBookmarksIfWanted()
    {
        SaveSetting(SettingsApplication, u"Settings"_s, u"AutoHideBookmarksWhenBrowsing"_s, u"True"_s);
        Open();
        ClickOn(0);
        auto* panel = m_window->findChild<QWidget*>(u"ctlBookMarkList"_s);
        QVERIFY(panel->isVisible());
        Tab(4);
        QVERIFY(!panel->isVisible());
        QVERIFY(Action(u"mnuViewBookmarks"_s)->isChecked()); // they are wanted all the same
        Tab(0);
        QVERIFY(panel->isVisible());
    }

    void pictures()
    {
        WriteFile(m_folder + QString::number(m_item) + u"/own.png"_s, Png(Qt::darkCyan));
        for (const bool dark : {false, true}) {
            const QString suffix = dark ? u"-dark"_s : QString();
            const QPalette before = QApplication::palette();
            if (dark)
                QApplication::setPalette(DarkPalette());
            Open();
            m_window->resize(1000, 640);
            ClickOn(1);
            Tab(LinksTab);
            QTRY_VERIFY(Loaded() > 0);
            QTest::qWait(200);
            TakePicture(*m_window, u"links-empty"_s + suffix);
            GivePage(
                "<h2>How a price is made up</h2><p>From the <a href='https://example.org'>rules of 2026</a>:</p><img "
                "src='"
                + QByteArray::number(m_item) + "/own.png'>");
            ClickOn(0);
            QTRY_VERIFY(Loaded() > 1);
            QTest::qWait(200);
            TakePicture(*m_window, u"links"_s + suffix);
            m_window.reset();
            QApplication::setPalette(before);
        }
    }

private:
    /// The program's own, but that who runs the tests does not count.
    void UseOwnWebAccess()
    {
        WebAccess::SetSource([before = m_before] {
            WebSurroundings surroundings = before();
            surroundings.IsRoot = surroundings.IsSandboxSwitchedOff = false;
            return surroundings;
        });
    }
    BrowserView* View() { return m_window->findChild<BrowserView*>(u"webLinks"_s); }
    /// What of the browser gets the user's clicks.
    QWidget* BrowserSurface()
    {
        const QList<QWidget*> all = View()->findChildren<QWidget*>();
        const auto found = std::find_if(all.begin(), all.end(), [](const QWidget* one) { return one->focusProxy(); });
        return found == all.end() ? nullptr : (*found)->focusProxy();
    }
    /// Kills the process in which the page is.
    void KillPage()
    {
        const QObjectList all = View()->findChildren<QObject*>();
        const auto page = std::find_if(all.begin(), all.end(),
                                       [](QObject* object) { return object->inherits("QWebEnginePage"); });
        QVERIFY(page != all.end());
        const auto process = pid_t((*page)->property("renderProcessPid").toLongLong());
        QVERIFY(process > 0);
        QCOMPARE(::kill(process, SIGKILL), 0);
    }
    QMenu* WebMenu() { return m_window->findChild<QMenu*>(u"mnuWebLinks"_s); }
    QComboBox* AddressBox() { return m_window->findChild<QComboBox*>(u"cboURL"_s); }
    QString Address() { return AddressBox()->currentText(); }
    void Type(const QString& address)
    {
        AddressBox()->setEditText(address);
        QTest::keyClick(AddressBox(), Qt::Key_Return);
    }
    int Loaded()
    {
        if (!m_loads || m_loadsOf != View()) {
            m_loadsOf = View();
            m_loads = std::make_unique<QSignalSpy>(View(), &BrowserView::DocumentComplete);
        }
        return int(m_loads->count());
    }
    void GivePage(const QByteArray& page)
    {
        WriteFile(m_folder + QString::number(m_item) + u".htm"_s, page);
        m_database->Execute(u"UPDATE Items SET HTMLPage = ? WHERE ID = ?"_s, {true, m_item});
    }
    /// Whether the browser shows a good deal of a colour.
    bool Shows(const QColor& color)
    {
        const QImage picture = View()->grab().toImage();
        int found = 0;
        for (int y = 0; y < picture.height(); y += 10) {
            for (int x = 0; x < picture.width(); x += 10)
                found += picture.pixelColor(x, y) == color;
        }
        return found > 20;
    }

    WebAccess::Source m_before;
    std::optional<FixedClock> m_clock;
    QString m_folder;
    BrowserView* m_loadsOf = nullptr;
    std::unique_ptr<QSignalSpy> m_loads;
};

QB_GUI_TEST_MAIN(TestWebLinks)
#include "tst_web_links.moc"
