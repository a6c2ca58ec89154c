#include "panels/ui/ctlFileDetails.h"
#include "platform/system/Paths.h"
#include "store/StoredFiles.h"
#include "support/EditingWindow.h"
#include "support/FileSizeLimit.h"
#include "support/ui/WorkProgress.h"
#include "web/WebAccess.h"
#include "web/ui/BrowserView.h"
#include "web/ui/WebBrowser.h"
#include "web/ui/frmDownloads.h"

#include <QApplication>
#include <QProgressBar>
#include <QProgressDialog>
#include <QTcpServer>
#include <QTcpSocket>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

namespace {

/// A web server that answers as the test says.
class FileServer : public QTcpServer {
public:
    FileServer()
    {
        listen(QHostAddress::LocalHost);
        connect(this, &QTcpServer::newConnection, this, [this] {
            QTcpSocket* socket = nextPendingConnection();
            connect(socket, &QTcpSocket::readyRead, this, [this, socket] { Read(*socket); });
            connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
        });
    }
    QUrl Url(const QString& path) const { return QUrl(u"http://127.0.0.1:%1%2"_s.arg(serverPort()).arg(path)); }

    QList<QByteArray> Requests;
    std::function<void(QTcpSocket& socket, const QByteArray& request)> Answer;

    static QByteArray Head(int status, const QList<QByteArray>& lines)
    {
        QByteArray head = "HTTP/1.1 " + QByteArray::number(status) + " Said\r\nConnection: close\r\n";
        for (const QByteArray& line : lines)
            head += line + "\r\n";
        return head + "\r\n";
    }

private:
    void Read(QTcpSocket& socket)
    {
        const QByteArray request = socket.readAll();
        Requests << request;
        Answer(socket, request);
    }
};

/// Cancels the first works that are shown, and notes the title of each.
class CancelledProgress : public QObject {
public:
    explicit CancelledProgress(int works) : m_works(works) { qApp->installEventFilter(this); }
    QStringList Titles;

protected:
    bool eventFilter(QObject* object, QEvent* event) override
    {
        auto* dialog = event->type() == QEvent::Show ? qobject_cast<QProgressDialog*>(object) : nullptr;
        if (dialog) {
            Titles << dialog->windowTitle();
            if (Titles.size() <= m_works)
                dialog->cancel();
        }
        return false;
    }

private:
    int m_works;
};

QByteArray Body()
{
    QByteArray body;
    for (int i = 0; i < 50'000; ++i)
        body += QByteArray::number(i) + ' ';
    return body;
}

} // namespace

/// Files that are loaded from a server on this machine, in the main window.
class TestDownloads : public QObject, private EditingWindow {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        QTest::failOnWarning(QRegularExpression(u"^(?!This plugin does not support |WebEngineContext used before |"
                                                "No suitable graphics backend )"_s));
        m_before = WebAccess::SetSource([] { return WebSurroundings(); });
        Begin();
        m_folder = m_home->Path(u"Geladenes"_s);
        Store(u"InternetFileSavePath"_s, m_folder);
    }
    void cleanup()
    {
        End();
        WebAccess::SetSource(m_before);
    }

    void linkToAFile_isStoredWithTheItem()
    {
        FileServer server;
        server.Answer = [](QTcpSocket& socket, const QByteArray&) {
            socket.write(FileServer::Head(200, {"Content-Length: 9", "Content-Disposition: attachment; "
                                                                     "filename=\"../../ä report.zip\""})
                         + "file here");
            socket.disconnectFromHost();
        };
        OpenLinks();
        Type(server.Url(u"/files/a.zip"_s).toString());
        QTRY_COMPARE_WITH_TIMEOUT(m_database->QueryValue(u"SELECT count(*) FROM Files"_s).ToLong(), 1, 20'000);
        QCOMPARE(Texts(*m_database, u"SELECT Title FROM Files WHERE CodeID = ?"_s, {m_item}),
                 QStringList{u"ä report.zip"_s});
        QTRY_COMPARE(ReadFile(StoredFilePath(*m_database, 1, u"ä report.zip"_s)), "file here");
        QVERIFY(Window());
        QTRY_VERIFY(Row()->findChild<QPushButton*>(u"cmdOpenItem"_s)->isVisible());
        TakePicture(*Window(), u"downloads-done"_s);
        ClickOn(1);
        Row()->findChild<QPushButton*>(u"cmdOpenItem"_s)->click();
        QTRY_COMPARE(Tree()->currentIndex(), Child(0));
        Tab(3);
        QCOMPARE(m_window->findChild<QTreeView*>(u"lvFiles"_s)->model()->rowCount(), 1);
        Window()->close(); // which releases the component
        QTRY_VERIFY(!Window());
        QVERIFY(!server.Requests.isEmpty());
    }

    void storing_isWatched()
    {
        FileServer server;
        server.Answer = [](QTcpSocket& socket, const QByteArray&) {
            const QByteArray body = Body();
            socket.write(FileServer::Head(200, {"Content-Length: " + QByteArray::number(body.size())}) + body);
            socket.disconnectFromHost();
        };
        const auto delay = std::exchange(WorkProgress::Delay, std::chrono::milliseconds(0));
        const auto back = qScopeGuard([delay] { WorkProgress::Delay = delay; });
        OpenLinks();
        CancelledProgress progress(1);
        Type(server.Url(u"/files/a.zip"_s).toString());
        // What the item did not take is not lost, and that is watched too.
        QTRY_COMPARE_WITH_TIMEOUT(progress.Titles.size(), 2, 20'000);
        QCOMPARE(progress.Titles, QStringList({u"Storing a Loaded File"_s, u"Storing a Loaded File"_s}));
        QTRY_COMPARE(ReadFile(m_folder + u"/a.zip"_s), Body());
        QCOMPARE(m_database->QueryValue(u"SELECT count(*) FROM Files"_s).ToLong(), 0);
    }

    void savingThatIsCancelled_leavesTheFileInTheWindow()
    {
        FileServer server;
        server.Answer = [](QTcpSocket& socket, const QByteArray&) {
            const QByteArray body = Body();
            socket.write(FileServer::Head(200, {"Content-Length: " + QByteArray::number(body.size())}) + body);
            socket.disconnectFromHost();
        };
        const auto delay = std::exchange(WorkProgress::Delay, std::chrono::milliseconds(0));
        const auto back = qScopeGuard([delay] { WorkProgress::Delay = delay; });
        OpenLinks(false);
        CancelledProgress progress(2);
        Type(server.Url(u"/files/a.zip"_s).toString());
        QTRY_VERIFY_WITH_TIMEOUT(Window() && Row()->findChild<QPushButton*>(u"cmdSaveAs"_s)->isVisible(), 20'000);
        QCOMPARE(progress.Titles.size(), 1);
        QCOMPARE(Row()->findChild<QLabel*>(u"lblState"_s)->text(), u"It is not saved: this was cancelled."_s);
        QVERIFY(QDir(m_folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot).isEmpty());
        const QString chosen = m_home->Path(u"chosen.zip"_s);
        WriteFile(chosen, "before");
        m_prompts->ExpectFileName(u"Save Downloaded File"_s, chosen);
        Row()->findChild<QPushButton*>(u"cmdSaveAs"_s)->click(); // which is cancelled too
        QCOMPARE(ReadFile(chosen), "before");
        {
            const FileSizeLimit limit(20'000);
            m_prompts->ExpectFileName(u"Save Downloaded File"_s, chosen);
            Row()->findChild<QPushButton*>(u"cmdSaveAs"_s)->click(); // for which the disk is too full
        }
        QCOMPARE(ReadFile(chosen), "before");
        const QString trouble = Row()->findChild<QLabel*>(u"lblState"_s)->text();
        QVERIFY2(trouble.contains(u"can't be copied"_s), qPrintable(trouble));
        m_prompts->ExpectFileName(u"Save Downloaded File"_s, chosen);
        Row()->findChild<QPushButton*>(u"cmdSaveAs"_s)->click();
        QCOMPARE(ReadFile(chosen), Body());
        QVERIFY(Row()->findChild<QLabel*>(u"lblState"_s)->text().contains(u"saved as "_s));
        QCOMPARE(QDir(m_home->Path(u"."_s)).entryList({u"*chosen*"_s}, QDir::Files | QDir::Hidden),
                 QStringList{u"chosen.zip"_s});
        QVERIFY(!Row()->findChild<QPushButton*>(u"cmdSaveAs"_s)->isVisible());
    }

    void cutConnection_goesOnWithARange()
    {
        const QByteArray body = Body();
        FileServer server;
        server.Answer = [&](QTcpSocket& socket, const QByteArray& request) {
            const qsizetype range = request.indexOf("Range: bytes=");
            const auto from = range < 0 ? qsizetype(0)
                                        : request.mid(range + 13, request.indexOf('-', range) - range - 13).toInt();
            const QByteArray rest = body.mid(from);
            QList<QByteArray> lines{"ETag: \"v1\"", "Content-Length: " + QByteArray::number(rest.size())};
            if (range >= 0)
                lines << "Content-Range: bytes " + QByteArray::number(from) + '-' + QByteArray::number(body.size() - 1)
                             + '/' + QByteArray::number(body.size());
            socket.write(FileServer::Head(range < 0 ? 200 : 206, lines));
            socket.write(range < 0 ? rest.left(100'000) : rest);
            socket.disconnectFromHost();
        };
        OpenLinks(false);
        Type(server.Url(u"/files/a.bin"_s).toString());
        QTRY_VERIFY_WITH_TIMEOUT(Window() && Stop()->text() == u"Go On"_s, 20'000);
        TakePicture(*Window(), u"downloads-cut"_s);
        Stop()->click();
        QTRY_VERIFY(QFile::exists(m_folder + u"/a.bin"_s));
        QCOMPARE(ReadFile(m_folder + u"/a.bin"_s), body);
        QVERIFY(server.Requests.last().contains("If-Range: \"v1\""));
        QVERIFY(!server.Requests.last().contains("Range: bytes=0-"));
        QVERIFY(!QFileInfo(m_folder + u"/a.bin"_s).isExecutable());
    }

    void bodyWithoutEnd_isCancelledAndLeavesNothing()
    {
        FileServer server;
        QList<QTcpSocket*> sockets;
        server.Answer = [&](QTcpSocket& socket, const QByteArray&) {
            socket.write(FileServer::Head(200, {"Content-Type: application/octet-stream"}));
            const auto more = [&socket] { socket.write(QByteArray(1 << 16, 'x')); };
            QObject::connect(&socket, &QTcpSocket::bytesWritten, &socket, more);
            more();
        };
        OpenLinks(false);
        const auto rows = [this] { return Window() ? Window()->findChildren<DownloadRow*>().size() : 0; };
        for (const QString& name : {u"/files/a.iso"_s, u"/files/b.iso"_s}) {
            const qsizetype before = rows();
            Type(server.Url(name).toString());
            QTRY_COMPARE_WITH_TIMEOUT(rows(), before + 1, 20'000);
        }
        const auto loads = [this] {
            const QList<QLabel*> states = Window()->findChildren<QLabel*>(u"lblState"_s);
            return std::all_of(states.begin(), states.end(),
                               [](QLabel* state) { return state->text().contains(u"MB"_s); });
        };
        QTRY_VERIFY_WITH_TIMEOUT(loads(), 20'000);
        for (const bool dark : {false, true}) {
            const QPalette before = QApplication::palette();
            if (dark)
                QApplication::setPalette(DarkPalette());
            TakePicture(*Window(), dark ? u"downloads-dark"_s : u"downloads"_s);
            QApplication::setPalette(before);
        }
        Window()->resize(Window()->minimumSizeHint());
        TakePicture(*Window(), u"downloads-narrow"_s);
        m_prompts->ExpectMsgBox(u"Downloads"_s, MsgBoxResult::No);
        Window()->close();
        QVERIFY(Window() && Window()->isVisible());
        Window()->findChildren<QPushButton*>(u"cmdCancel"_s).first()->click();
        m_prompts->ExpectMsgBox(u"Downloads"_s, MsgBoxResult::Yes);
        Window()->close();
        QTRY_VERIFY(!Window());
        QVERIFY(!QFileInfo::exists(m_folder));
        QTRY_VERIFY(QDir(CacheFolder()).entryList({u"download-*"_s}).isEmpty());
    }

    void redirection_leadsOnlyToTheWeb_data()
    {
        QTest::addColumn<QByteArray>("target");
        QTest::newRow("file") << QByteArray("file:///etc/passwd");
        QTest::newRow("ftp") << QByteArray("ftp://127.0.0.1/a.bin");
        QTest::newRow("data") << QByteArray("data:text/plain,a");
        QTest::newRow("page of the library") << QByteArray("quillbase-page://library/1.htm");
        QTest::newRow("itself") << QByteArray("/files/b.bin");
    }
    void redirection_leadsOnlyToTheWeb()
    {
        QFETCH(QByteArray, target);
        FileServer server;
        server.Answer = [&](QTcpSocket& socket, const QByteArray&) {
            socket.write(FileServer::Head(302, {"Location: " + target, "Content-Length: 0"}));
            socket.disconnectFromHost();
        };
        QString reason;
        const std::unique_ptr<FileFetch> fetch = MakeFileFetch(reason);
        QVERIFY2(fetch, qPrintable(reason));
        QString why;
        bool answered = false;
        fetch->Answered = [&](const FetchAnswer&) { return answered = true; };
        fetch->Received = [](const QByteArray&) { return true; };
        fetch->Ended = [&](const QString& reasonOfEnd) { why = reasonOfEnd + u'.'; };
        fetch->Start(server.Url(u"/files/a.bin"_s), 0, {});
        QTRY_VERIFY(!why.isEmpty());
        QVERIFY(!answered);
        QVERIFY2(why.contains(u"not followed"_s) || why.contains(u"without end"_s), qPrintable(why));
        QVERIFY(server.Requests.size() < 20);
    }

    void pageThatLooksLikeAFile_isShown()
    {
        FileServer server;
        server.Answer = [](QTcpSocket& socket, const QByteArray&) {
            socket.write(FileServer::Head(200, {"Content-Type: text/html", "Content-Length: 8"}) + "<p>a</p>");
            socket.disconnectFromHost();
        };
        OpenLinks();
        const QString address = server.Url(u"/forum/index.php"_s).toString();
        Type(address);
        QTRY_COMPARE_WITH_TIMEOUT(server.Requests.size(), 2, 20'000); // by the load, and by the browser
        QTRY_COMPARE(m_window->findChild<QComboBox*>(u"cboURL"_s)->currentText(), address);
        QTRY_VERIFY(!Window());
        QCOMPARE(CountOf(*m_database, u"Files"_s), 0);
    }

    void webThatIsKeptOut_loadsNothing()
    {
        FileServer server;
        server.Answer = [](QTcpSocket&, const QByteArray&) {};
        WebAccess::SetSource([] { return WebSurroundings{.IsUnwanted = true}; });
        OpenLinks();
        Type(server.Url(u"/files/a.bin"_s).toString());
        QTRY_VERIFY(m_window->findChild<QLabel*>(u"lblKeptOut"_s));
        QVERIFY(!Window());
        QVERIFY(server.Requests.isEmpty());
    }

private:
    static void Store(const QString& name, const QString& value)
    {
        SaveSetting(SettingsApplication, u"Settings"_s, name, value);
    }
    void OpenLinks(bool toItem = true)
    {
        Store(u"InternetFileAutosaveToItem"_s, toItem ? u"True"_s : u"False"_s);
        Store(u"InternetAutoSaveToDir"_s, toItem ? u"False"_s : u"True"_s);
        Open();
        ClickOn(0);
        Tab(4);
    }
    void Type(const QString& address)
    {
        auto* box = m_window->findChild<QComboBox*>(u"cboURL"_s);
        box->setEditText(address);
        QTest::keyClick(box, Qt::Key_Return);
    }
    frmDownloads* Window() { return m_window->findChild<frmDownloads*>(u"frmDownloads"_s); }
    DownloadRow* Row() { return Window()->findChild<DownloadRow*>(); }
    QPushButton* Stop() { return Row()->findChild<QPushButton*>(u"cmdStop"_s); }

    WebAccess::Source m_before;
    QString m_folder;
};

QB_GUI_TEST_MAIN(TestDownloads)
#include "tst_downloads.moc"
