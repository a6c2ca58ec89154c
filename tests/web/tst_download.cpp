#include "platform/system/Paths.h"
#include "platform/system/RuntimeError.h"
#include "support/FolderContents.h"
#include "support/LibraryBuilder.h"
#include "web/DownloadAddress.h"
#include "web/InetFileLoad.h"
#include "web/WebAccess.h"

#include <fcntl.h>
#include <sys/stat.h>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

namespace {

/// A server without a network: says and sends what the test has it do.
class FakeFetch : public FileFetch {
public:
    struct Asked {
        QUrl Url;
        qint64 From;
        QByteArray Validator;
    };
    void Start(const QUrl& url, qint64 from, const QByteArray& validator) override
    {
        All() << Asked{url, from, validator};
        Current() = this;
    }
    void Stop() override { IsStopped = true; }
    ~FakeFetch() override
    {
        if (Current() == this)
            Current() = nullptr;
    }
    bool IsStopped = false;

    static QList<Asked>& All()
    {
        static QList<Asked> all;
        return all;
    }
    static FakeFetch*& Current()
    {
        static FakeFetch* current = nullptr;
        return current;
    }
};

FetchAnswer Answer(qint64 length, const QByteArray& validator = "\"v1\"")
{
    FetchAnswer answer;
    answer.Status = 200;
    answer.Url = QUrl(u"http://example.org/a/f.bin"_s);
    answer.Validator = validator;
    answer.Length = length;
    return answer;
}

FetchAnswer Part(const QByteArray& range)
{
    FetchAnswer answer = Answer(-1);
    answer.Status = 206;
    answer.Range = range;
    return answer;
}

} // namespace

/// Files that are loaded: what is decided of them, with a server that does as it is told.
class TestDownload : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_home = std::make_unique<TemporaryHome>();
        m_before = WebAccess::SetSource([] { return WebSurroundings(); });
        FakeFetch::All().clear();
        m_download = std::make_unique<Download>(QUrl(u"http://example.org/a/f.bin"_s), MakeFake);
        m_download->Room = [this] { return m_room; };
        m_room = 1000;
    }
    void cleanup()
    {
        m_download.reset();
        WebAccess::SetSource(m_before);
        m_home.reset();
    }

    void address_isOfAFileOrAPage_data()
    {
        QTest::addColumn<QString>("address");
        QTest::addColumn<bool>("isFile");
        QTest::newRow("zip") << u"http://example.org/files/report.zip"_s << true;
        QTest::newRow("page") << u"http://example.org/files/page.html"_s << false;
        QTest::newRow("old page") << u"http://example.org/files/page.HTM"_s << false;
        QTest::newRow("asp") << u"http://example.org/files/page.asp"_s << false;
        QTest::newRow("odt") << u"http://example.org/files/a.odt"_s << false;
        QTest::newRow("xml") << u"http://example.org/files/a.Xml"_s << false;
        QTest::newRow("no name") << u"http://example.org/files/"_s << false;
        QTest::newRow("no ending") << u"http://example.org/files/report"_s << false;
        QTest::newRow("long ending") << u"http://example.org/files/report.jpeg"_s << false;
        QTest::newRow("short ending") << u"http://example.org/files/report.gz"_s << false;
        QTest::newRow("at the top") << u"http://example.org/report.zip"_s << false; // four pieces
        QTest::newRow("server") << u"http://example.org"_s << false;
        QTest::newRow("resource") << u"res://a/b/c/report.zip"_s << false;
        QTest::newRow("query") << u"http://example.org/files/report.zip?a=b"_s << false;
    }
    void address_isOfAFileOrAPage()
    {
        QFETCH(QString, address);
        QTEST(CancelNavigate(address), "isFile");
    }

    void name_leadsNowhere_data()
    {
        QTest::addColumn<QString>("url");
        QTest::addColumn<QByteArray>("disposition");
        QTest::addColumn<QString>("name");
        const QString url = u"http://example.org/a/f%20g.bin?x=/y"_s;
        const auto row = [&](const char* what, const QByteArray& disposition, const QString& name) {
            QTest::newRow(what) << url << disposition << name;
        };
        row("of the address", "", u"f g.bin"_s);
        row("given", "attachment; filename=\"report.pdf\"", u"report.pdf"_s);
        row("bare", "attachment;filename=report.pdf", u"report.pdf"_s);
        row("encoded", "attachment; filename=\"x\"; filename*=UTF-8''na%C3%AFve.txt", u"naïve.txt"_s);
        row("UTF-8", "attachment; filename=\"na\xc3\xafve.txt\"", u"naïve.txt"_s);
        row("up", "attachment; filename=\"../../.bashrc\"", u"bashrc"_s);
        row("up, encoded", "attachment; filename*=UTF-8''..%2F..%2F.bashrc", u"bashrc"_s);
        row("up, backwards", "attachment; filename=\"..\\..\\evil.exe\"", u"evil.exe"_s);
        row("absolute", "attachment; filename=\"/etc/passwd\"", u"passwd"_s);
        row("only dots", "attachment; filename=\"..\"", u"f g.bin"_s);
        row("drive", "attachment; filename=\"C:evil.txt\"", u"C_evil.txt"_s);
        row("device", "attachment; filename=\"con\"", u"_con"_s);
        row("turned around", "attachment; filename*=UTF-8''a%E2%80%AEfdp.exe", u"a_fdp.exe"_s);
        row("line", "attachment; filename*=UTF-8''a%0Ab%00c", u"a_b_c"_s);
        row("option", "attachment; filename=\"-rf\"", u"rf"_s);
        row("torn", "attachment; filename=\"", u"f g.bin"_s);
        QTest::newRow("nothing") << u"http://example.org/"_s << QByteArray() << u"download"_s;
        QTest::newRow("up in the address")
            << u"http://example.org/a/..%2F..%2Fetc%2Fpasswd"_s << QByteArray() << u"passwd"_s;
    }
    void name_leadsNowhere()
    {
        QFETCH(QString, url);
        QFETCH(QByteArray, disposition);
        QTEST(DownloadName(QUrl(url), disposition), "name");
    }

    void file_isWrittenAsItComes()
    {
        m_download->Start();
        QCOMPARE(FakeFetch::All().size(), 1);
        QVERIFY(Server().Answered(Answer(6)));
        QVERIFY(Server().Received("abc"));
        QCOMPARE(ReadFile(m_download->File()), "abc");
        QCOMPARE(m_download->Received(), 3);
        QVERIFY(Server().Received("def"));
        const QSignalSpy loaded(m_download.get(), &Download::Loaded);
        Server().Ended({});
        QCOMPARE(loaded.size(), 1);
        QCOMPARE(m_download->Now(), Download::State::Loaded);
        QCOMPARE(ReadFile(m_download->File()), "abcdef");
        QVERIFY(!QFileInfo(m_download->File()).isExecutable());
    }

    void cutConnection_goesOnWhereItWas()
    {
        m_download->Start();
        Server().Answered(Answer(6));
        Server().Received("abc");
        Server().Ended({}); // too early
        QCOMPARE(m_download->Now(), Download::State::Stopped);
        QCOMPARE(m_download->Why(), u"the connection was cut"_s);
        QVERIFY(m_download->MayGoOn());
        m_download->Start();
        QCOMPARE(FakeFetch::All().last().From, 3);
        QCOMPARE(FakeFetch::All().last().Validator, "\"v1\"");
        QVERIFY(Server().Answered(Part("bytes 3-5/6")));
        Server().Received("def");
        Server().Ended({});
        QCOMPARE(ReadFile(m_download->File()), "abcdef");
    }

    void serverThatGivesAllAgain_isTakenAnew()
    {
        CutAfterThree(Answer(6));
        m_download->Start();
        QVERIFY(Server().Answered(Answer(4, "\"v2\""))); // another file by now
        Server().Received("wxyz");
        Server().Ended({});
        QCOMPARE(ReadFile(m_download->File()), "wxyz");
    }

    void serverWithoutMark_isAskedForAllOfIt()
    {
        CutAfterThree(Answer(6, {}));
        QVERIFY(!m_download->MayGoOn());
        m_download->Start();
        QCOMPARE(FakeFetch::All().last().From, 0);
        QCOMPARE(m_download->Received(), 0);
    }

    void partThatDoesNotFit_isNeverTaken_data()
    {
        QTest::addColumn<QByteArray>("range");
        for (const QByteArray& range : {"bytes 2-5/6"_ba, "bytes 4-5/6"_ba, "bytes 3-9/10"_ba, "items 3-5/6"_ba, ""_ba})
            QTest::newRow(range.isEmpty() ? "none" : range.constData()) << range;
    }
    void partThatDoesNotFit_isNeverTaken()
    {
        QFETCH(QByteArray, range);
        CutAfterThree(Answer(6));
        m_download->Start();
        QVERIFY(!Server().Answered(Part(range)));
        QTRY_COMPARE(FakeFetch::All().size(), 3); // for all of it, once
        QCOMPARE(FakeFetch::All().last().From, 0);
        QVERIFY(Server().Answered(Answer(6)));
        Server().Received("abcdef");
        Server().Ended({});
        QCOMPARE(ReadFile(m_download->File()), "abcdef");
    }

    void rangeThatIsNoMore_beginsAnew()
    {
        CutAfterThree(Answer(6));
        m_download->Start();
        FetchAnswer none = Answer(-1);
        none.Status = 416;
        QVERIFY(!Server().Answered(none));
        QTRY_COMPARE(FakeFetch::All().size(), 3);
        QCOMPARE(FakeFetch::All().last().From, 0);
    }

    void refusal_isTold()
    {
        m_download->Start();
        FetchAnswer missing = Answer(10);
        missing.Status = 404;
        missing.Reason = u"Not Found"_s;
        QVERIFY(!Server().Answered(missing));
        QCOMPARE(m_download->Now(), Download::State::Refused);
        QCOMPARE(m_download->Why(), u"the server says 404 Not Found"_s);
    }

    void moreThanWasSaid_isNotTaken()
    {
        m_download->Start();
        Server().Answered(Answer(4));
        QVERIFY(!Server().Received("abcdef"));
        QCOMPARE(m_download->Now(), Download::State::Refused);
    }

    void fileWithoutEnd_leavesRoomOnTheDisk()
    {
        m_download->Start();
        QVERIFY(Server().Answered(Answer(-1)));
        const QByteArray piece(1 << 20, 'x');
        int taken = 0;
        m_room = -1; // looked at each few megabytes
        while (taken < 100 && Server().Received(piece))
            ++taken;
        QVERIFY2(taken < 10, qPrintable(QString::number(taken)));
        QCOMPARE(m_download->Why(), u"the disk is nearly full"_s);
        QCOMPARE(m_download->Now(), Download::State::Stopped);
    }

    void fileThatHasNoRoom_isNotBegun()
    {
        m_download->Start();
        QVERIFY(!Server().Answered(Answer(5000)));
        QCOMPARE(m_download->Why(), u"there is no room for it on the disk"_s);
    }

    void cancel_leavesNothing()
    {
        m_download->Start();
        Server().Answered(Answer(6));
        Server().Received("abc");
        const QString file = m_download->File();
        m_download->Cancel();
        QVERIFY(!QFile::exists(file));
        QVERIFY(Server().IsStopped);
        m_download->Start();
        QCOMPARE(FakeFetch::All().size(), 1);
    }

    void page_isShownInstead()
    {
        m_download->Start();
        FetchAnswer page = Answer(6);
        page.ContentType = "text/html; charset=utf-8";
        const QSignalSpy shown(m_download.get(), &Download::IsPage);
        QVERIFY(!Server().Answered(page));
        QCOMPARE(shown.size(), 1);
        QCOMPARE(m_download->Now(), Download::State::Cancelled);
    }

    void webThatIsKeptOut_isAskedForNothing()
    {
        m_download->WhyKeptOut = [] { return u"the options keep them out"_s; };
        m_download->Start();
        QVERIFY(FakeFetch::All().isEmpty());
        QCOMPARE(m_download->Now(), Download::State::Stopped);
        QVERIFY(m_download->Why().contains(u"the options"_s));
    }

    // Where it goes

    void file_goesWhereTheOptionsSay_data()
    {
        QTest::addColumn<bool>("toItem");
        QTest::addColumn<bool>("toFolder");
        QTest::addColumn<bool>("itemTakesIt");
        QTest::addColumn<bool>("stored");
        QTest::addColumn<bool>("saved");
        QTest::newRow("item") << true << false << true << true << false;
        QTest::newRow("folder") << false << true << true << false << true;
        QTest::newRow("both") << true << true << true << true << true;
        QTest::newRow("neither is the folder") << false << false << true << false << true;
        QTest::newRow("item that takes nothing") << true << false << false << false << true;
    }
    void file_goesWhereTheOptionsSay()
    {
        QFETCH(bool, toItem);
        QFETCH(bool, toFolder);
        QFETCH(bool, itemTakesIt);
        const QString folder = m_home->Path(u"Geladenes"_s);
        WriteFile(folder + u"/f.bin"_s, "stays");
        InetFileLoad component(MakeFake);
        QStringList stored;
        component.FileLoaded = [&](const QString& file, const DownloadTarget& target) {
            if (!itemTakesIt)
                throw RuntimeError(ErrorNumber::ValueNotAllowed, u"locked"_s, u"test"_s);
            stored << QFileInfo(file).fileName() + u'@' + QString::number(target.Item);
            return ReadFile(file) == "abc";
        };
        const QSignalSpy finished(&component, &InetFileLoad::Finished);
        component.Load(QUrl(u"http://example.org/a/f.bin"_s), {u"lib"_s, 17, u"item"_s},
                       {folder, toFolder, toItem, false});
        component.Files().front()->Load->Room = [] { return qint64(1) << 40; };
        Server().Answered(Answer(3));
        Server().Received("abc");
        Server().Ended({});
        const LoadingFile& file = *component.Files().front();
        QTEST(file.IsStored, "stored");
        QCOMPARE(stored, file.IsStored ? QStringList{u"f.bin@17"_s} : QStringList());
        QTEST(!file.SavedAs.isEmpty(), "saved");
        if (!file.SavedAs.isEmpty())
            QCOMPARE(ReadFile(folder + u"/f(1).bin"_s), "abc");
        QCOMPARE(ReadFile(folder + u"/f.bin"_s), "stays");
        QCOMPARE(finished.isEmpty(), !itemTakesIt); // what has gone another way is told
    }

    void several_goOnAtATime()
    {
        InetFileLoad component(MakeFake);
        std::vector<FakeFetch*> servers;
        for (int i = 0; i < 3; ++i) {
            component.Load(QUrl(u"http://example.org/a/%1.bin"_s.arg(i)), {},
                           {m_home->Path(u"in"_s), true, false, false});
            component.Files().back()->Load->Room = [] { return qint64(1) << 40; };
            servers.push_back(FakeFetch::Current());
            QVERIFY(Server().Answered(Answer(2)));
        }
        QCOMPARE(component.Loading(), 3);
        const QSignalSpy finished(&component, &InetFileLoad::Finished);
        for (FakeFetch* server : servers)
            server->Received("a");
        for (FakeFetch* server : servers) {
            QVERIFY(finished.isEmpty());
            server->Received("b");
            server->Ended({});
        }
        QVERIFY(!finished.isEmpty());
        QCOMPARE(QDir(m_home->Path(u"in"_s)).entryList(QDir::Files).size(), 3);
    }

    void close_destroysAndLeavesNothing()
    {
        m_download.reset(); // which has a folder of its own
        auto component = std::make_unique<InetFileLoad>(MakeFake);
        component->Load(QUrl(u"http://example.org/a/f.bin"_s), {}, {m_home->Path(u"in"_s), true, false, false});
        component->Files().back()->Load->Room = [] { return qint64(1) << 40; };
        Server().Answered(Answer(9));
        Server().Received("abc");
        const QSignalSpy destroyed(component.get(), &InetFileLoad::DestroyClass);
        component->Close();
        QCOMPARE(destroyed.size(), 1);
        component.reset();
        QVERIFY(!QDir(m_home->Path(u"in"_s)).exists());
        QVERIFY(QDir(CacheFolder()).entryList({u"download-*"_s}).isEmpty());
    }

    void oldLeftovers_areRemoved()
    {
        const QString old = CacheFolder() + u"download-abcdef"_s;
        const QString young = CacheFolder() + u"download-ghijkl"_s;
        for (const QString& folder : {old, young})
            QVERIFY(QDir().mkpath(folder));
        const timespec times[2] = {{0, 0}, {0, 0}};
        QCOMPARE(::utimensat(AT_FDCWD, QFile::encodeName(old).constData(), times, 0), 0);
        const InetFileLoad component(MakeFake);
        QVERIFY(!QFileInfo::exists(old));
        QVERIFY(QFileInfo::exists(young));
    }

private:
    static std::unique_ptr<FileFetch> MakeFake(QString&) { return std::make_unique<FakeFetch>(); }
    static FakeFetch& Server() { return *FakeFetch::Current(); }
    void CutAfterThree(const FetchAnswer& answer)
    {
        m_download->Start();
        Server().Answered(answer);
        Server().Received("abc");
        Server().Ended(u"Connection closed"_s);
    }

    std::unique_ptr<TemporaryHome> m_home;
    WebAccess::Source m_before;
    std::unique_ptr<Download> m_download;
    qint64 m_room = 0;
};

QB_TEST_MAIN(TestDownload)
#include "tst_download.moc"
