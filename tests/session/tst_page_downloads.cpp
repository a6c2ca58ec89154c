#include "session/PageDownloads.h"
#include "store/ItemRules.h"
#include "store/StoredFiles.h"
#include "support/FolderContents.h"
#include "support/TestSession.h"
#include "web/WebAccess.h"

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

namespace {

/// A server that answers when the test says so.
class HeldFetch : public FileFetch {
public:
    HeldFetch() { Last() = this; }
    void Start(const QUrl&, qint64, const QByteArray&) override {}
    void Stop() override {}
    static HeldFetch*& Last()
    {
        static HeldFetch* last = nullptr;
        return last;
    }
};

} // namespace

/// Files that are loaded for an item, and where they end.
class TestPageDownloads : public QObject {
    Q_OBJECT

    std::unique_ptr<TestSession> s;
    std::unique_ptr<PageDownloads> m_downloads;
    WebAccess::Source m_before;
    QList<qint64> m_shown; ///< items of the open library that got a file

    QString Path(const QString& name) const { return s->Home.Path(name); }
    /// Begins to load a file for the item that is selected.
    void Load()
    {
        m_downloads->Load(QUrl(u"http://example.org/a/f.bin"_s));
        File().Load->Room = [] { return qint64(1) << 40; };
    }
    const LoadingFile& File() const { return *m_downloads->Component()->Files().front(); }
    static void Arrive()
    {
        FetchAnswer answer;
        answer.Status = 200;
        answer.Url = QUrl(u"http://example.org/a/f.bin"_s);
        answer.Length = 3;
        QVERIFY(HeldFetch::Last()->Answered(answer));
        QVERIFY(HeldFetch::Last()->Received("abc"));
        HeldFetch::Last()->Ended({});
    }
    void OpenOther()
    {
        s->Libraries.CloseDatabase();
        s->State.CurrentDatabase = Library::Open(Path(u"two.qbd"_s));
    }
    QStringList StoredIn(const QString& library) const
    {
        const auto database = Library::Open(Path(library), DBEngine::Access::ReadOnly);
        return Texts(*database, u"SELECT CodeID || ' ' || Title FROM Files"_s);
    }

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_before = WebAccess::SetSource([] { return WebSurroundings(); });
        s = std::make_unique<TestSession>();
        const QString one = s->LibraryFile(u"one.qbd"_s, u"first"_s);
        AddItem(*Library::Open(one), 0, u"second"_s);
        s->LibraryFile(u"two.qbd"_s, u"other"_s);
        QVERIFY(s->Start(u"%1|One;"_s.arg(one)));
        s->State.moSettings->SetInternetFileSavePath(Path(u"loaded"_s));
        s->State.moSettings->SetInternetFileSaveToDir(false);
        s->State.moSettings->SetInternetFileAutosaveToItem(true);
        m_downloads = std::make_unique<PageDownloads>(
            s->State, [](QString&) -> std::unique_ptr<FileFetch> { return std::make_unique<HeldFetch>(); });
        m_shown.clear();
        m_downloads->FilesStored = [this](qint64 item) { m_shown << item; };
        s->Click(u"second"_s);
    }
    void cleanup()
    {
        m_downloads.reset();
        s.reset();
        WebAccess::SetSource(m_before);
    }

    void file_isStoredWithTheItemOfTheBegin()
    {
        Load();
        s->Click(u"first"_s);
        Arrive();
        QVERIFY(File().IsStored);
        QCOMPARE(StoredIn(u"one.qbd"_s), QStringList{u"2 f.bin"_s});
        QCOMPARE(m_shown, QList<qint64>{2});
        QVERIFY(!QFile::exists(Path(u"loaded"_s)));
    }

    void fileOfALibraryThatIsNoMoreOpen_goesThere()
    {
        Load();
        OpenOther();
        Arrive();
        QVERIFY2(File().IsStored, qPrintable(File().Trouble));
        QCOMPARE(StoredIn(u"one.qbd"_s), QStringList{u"2 f.bin"_s});
        QCOMPARE(StoredIn(u"two.qbd"_s), QStringList());
        QCOMPARE(ReadFile(StoredFilePath(*Library::Open(Path(u"one.qbd"_s)), 1, u"f.bin"_s)), "abc");
        QCOMPARE(m_shown, QList<qint64>()); // none of its items is seen
    }

    void fileOfALibraryThatHasGone_goesToTheFolder()
    {
        Load();
        OpenOther();
        QVERIFY(QFile::remove(Path(u"one.qbd"_s)));
        Arrive();
        QVERIFY(!File().IsStored);
        QVERIFY(!File().Trouble.isEmpty());
        QCOMPARE(ReadFile(Path(u"loaded/f.bin"_s)), "abc");
        QVERIFY(!QFile::exists(Path(u"one.qbd"_s)));
        QCOMPARE(StoredIn(u"two.qbd"_s), QStringList());
    }

    void fileOfAnItemThatIsBarred_goesToTheFolder()
    {
        Load();
        MakeMother(*s->State.CurrentDatabase, Date());
        s->State.CurrentDatabase->Execute(u"UPDATE Items SET LastChanged = 0"_s); // a child has deleted them
        Arrive();
        QVERIFY(!File().IsStored);
        QVERIFY(File().Trouble.contains(SentenceOf(Bar::Deleted)));
        QCOMPARE(ReadFile(Path(u"loaded/f.bin"_s)), "abc");
        QCOMPARE(StoredIn(u"one.qbd"_s), QStringList());
    }

    void fileWithoutAnItem_goesToTheFolder()
    {
        s->Libraries.CloseDatabase();
        Load();
        Arrive();
        QCOMPARE(ReadFile(Path(u"loaded/f.bin"_s)), "abc");
        QCOMPARE(File().Trouble, QString());
    }

    void storingAndSaving_areWatched()
    {
        s->State.moSettings->SetInternetFileSaveToDir(true);
        int watched = 0;
        m_downloads->Watched = [&watched](const QString&, const std::function<void(Work&)>& copy) {
            ++watched;
            copy(NoWork());
        };
        Load();
        Arrive();
        QCOMPARE(watched, 2);
        m_downloads->Component()->SaveAs(*m_downloads->Component()->Files().front(), Path(u"chosen"_s));
        QCOMPARE(watched, 3);
        QCOMPARE(ReadFile(Path(u"chosen"_s)), "abc");
    }

    void placeThatIsNoFile_takesNothing()
    {
        Load();
        Arrive();
        const QString folder = Path(u"folder"_s);
        WriteFile(folder + u"/own"_s, "mine");
        const QStringList before = QDir(Path(u"."_s)).entryList(QDir::AllEntries | QDir::Hidden);
        LoadingFile& file = *m_downloads->Component()->Files().front();
        m_downloads->Component()->SaveAs(file, folder);
        QVERIFY(!file.Trouble.isEmpty() && file.SavedAs.isEmpty());
        QCOMPARE(QDir(Path(u"."_s)).entryList(QDir::AllEntries | QDir::Hidden), before);
        QCOMPARE(ReadFile(folder + u"/own"_s), "mine");
    }

    void item_isGoneToInItsOwnLibraryOnly()
    {
        QList<qint64> gone;
        m_downloads->GoToItem = [&gone](qint64 item) { gone << item; };
        Load();
        const DownloadTarget target = File().Target;
        QCOMPARE(target.Title, u"second"_s);
        Q_EMIT m_downloads->Component()->OpenItem(target);
        QCOMPARE(gone, QList<qint64>{2});
        OpenOther();
        Q_EMIT m_downloads->Component()->OpenItem(target);
        QCOMPARE(gone, QList<qint64>{2});
    }
};

QB_TEST_MAIN(TestPageDownloads)
#include "tst_page_downloads.moc"
