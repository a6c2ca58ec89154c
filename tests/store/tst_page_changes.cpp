#include "store/CCodeItem.h"
#include "store/Checksums.h"
#include "store/ItemBranch.h"
#include "store/PageChanges.h"
#include "store/PendingPages.h"
#include "support/FewFiles.h"
#include "support/FolderContents.h"
#include "support/LibraryBuilder.h"
#include "support/TestRun.h"

#include <sys/stat.h>
#include <unistd.h>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// Changes of pages that count with their rows, and what a process leaves that ends in the middle.
class TestPageChanges : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_home = std::make_unique<TemporaryHome>();
        m_library = MakeLibrary(m_home->Path(u"Bücher ei.qbd"_s));
        m_item = AddItem(*m_library, 0, u"item"_s);
        WriteFile(Pages() + u".library"_s, m_library->Identity().toUtf8());
        WriteFile(Page(), "old");
        WriteFile(Pages() + Id() + u"/old ä.png"_s, "picture");
        m_before = ContentsOf(Pages());
    }
    void cleanup()
    {
        m_library.reset();
        m_home.reset();
    }

    void change_countsWithItsTransaction_data()
    {
        QTest::addColumn<int>("kind");
        QTest::addColumn<QStringList>("left");
        QTest::newRow("add") << int(PageChanges::Kind::Add)
                             << QStringList{u"1.htm=new"_s, u"1/in/n.png=n"_s, u"1/old ä.png=picture"_s};
        QTest::newRow("replace") << int(PageChanges::Kind::Replace) << QStringList{u"1.htm=new"_s, u"1/in/n.png=n"_s};
        QTest::newRow("delete") << int(PageChanges::Kind::Delete) << QStringList{};
    }
    void change_countsWithItsTransaction()
    {
        QFETCH(int, kind);
        {
            PageChanges change(*m_library);
            Make(change, kind);
            Transaction transaction(*m_library);
            change.Bind(m_item, PageChanges::Kind(kind));
        } // neither is committed
        QCOMPARE(ContentsOf(Pages()), m_before);
        {
            PageChanges change(*m_library);
            Make(change, kind);
            Transaction transaction(*m_library);
            change.Bind(m_item, PageChanges::Kind(kind));
            transaction.Commit();
            QCOMPARE(ReadFile(Page()), "old"); // until it is put in place
            QVERIFY(IsPagePending(*m_library, m_item));
            change.PutInPlace();
        }
        QVERIFY(!IsPagePending(*m_library, m_item));
        QTEST(Files(), "left");
        QVERIFY(Interim().isEmpty());
    }

    void deadProcess_leavesWhatItCommitted_data() { change_countsWithItsTransaction_data(); }
    void deadProcess_leavesWhatItCommitted()
    {
        QFETCH(int, kind);
        for (const bool committed : {false, true}) {
            LeaveBehind(PageChanges::Kind(kind), committed);
            QCOMPARE(Interim().size(), 1);
            FinishPendingPages(*m_library);
            QVERIFY(Interim().isEmpty());
            if (!committed)
                QCOMPARE(ContentsOf(Pages()), m_before);
        }
        QTEST(Files(), "left");
    }

    /// What is left of a change that was completed, where its removal ended in the middle.
    void changeThatWasCompleted_isNotBegunAnew()
    {
        LeaveBehind(PageChanges::Kind::Replace, true);
        FinishPendingPages(*m_library);
        const QString mark = ReadChecksums(*m_library, u"PageChange"_s, m_item)->Sums.firstKey();
        QVERIFY(QDir().mkpath(Pages() + u".changing-pages-"_s + mark + u"/new"_s));
        FinishPendingPages(*m_library);
        QCOMPARE(Files(), (QStringList{u"1.htm=new"_s, u"1/in/n.png=n"_s}));
        QVERIFY(Interim().isEmpty());
    }

    void changesOfManyPages_needFewFiles()
    {
        constexpr int Many = 200;
        std::vector<qint64> items;
        for (int i = 0; i < Many; ++i)
            items.push_back(AddItem(*m_library, 0, u"item"_s));
        const FewFiles few(Many / 2);
        PageChanges changes(*m_library);
        for (const qint64 item : items)
            WriteFile(changes.PageFile(item), QByteArray::number(item));
        Transaction transaction(*m_library);
        changes.BindAll(PageChanges::Kind::Replace);
        transaction.Commit();
        changes.PutInPlace();
        for (const qint64 item : items)
            QCOMPARE(ReadFile(Pages() + QString::number(item) + u".htm"_s), QByteArray::number(item));
        QVERIFY(Interim().isEmpty());
    }

    /// One of several that can't get to its place waits, and keeps no other from it.
    void changeThatHasToWait_waitsAlone()
    {
        const qint64 other = AddItem(*m_library, 0, u"other"_s);
        const qint64 third = AddItem(*m_library, 0, u"third"_s);
        const auto pageOf = [this](qint64 item) { return Pages() + QString::number(item) + u".htm"_s; };
        {
            PageChanges changes(*m_library);
            for (const qint64 item : {m_item, other, third})
                WriteFile(changes.PageFile(item), "new");
            Transaction transaction(*m_library);
            changes.BindAll(PageChanges::Kind::Replace);
            transaction.Commit();
            QVERIFY(QDir().mkpath(pageOf(other) + u"/in the way"_s));
            const QString raised = Raised([&] { changes.PutInPlace(); });
            QVERIFY2(raised.contains(u"page of item %1 is stored"_s.arg(other)), qPrintable(raised));
        }
        QCOMPARE(ReadFile(pageOf(m_item)), "new");
        QCOMPARE(ReadFile(pageOf(third)), "new");
        WriteFile(pageOf(third), "newer");
        QVERIFY(IsPagePending(*m_library, other));
        DeleteAll(pageOf(other));
        FinishPendingPages(*m_library);
        QCOMPARE(ReadFile(pageOf(other)), "new");
        QCOMPARE(ReadFile(pageOf(third)), "newer"); // was not put there again
        QVERIFY(Interim().isEmpty());
    }

    void changeThatIsInItsPlace_isNotBegunAnewWithOnesThatWait()
    {
        const qint64 other = AddItem(*m_library, 0, u"other"_s);
        const QString inTheWay = Pages() + QString::number(other) + u".htm"_s;
        {
            PageChanges changes(*m_library);
            WriteFile(changes.PageFile(other), "new");
            Transaction transaction(*m_library);
            changes.Bind(m_item, PageChanges::Kind::Delete);
            changes.Bind(other, PageChanges::Kind::Add);
            transaction.Commit();
            QVERIFY(QDir().mkpath(inTheWay + u"/in the way"_s));
            QVERIFY(!Raised([&] { changes.PutInPlace(); }).isEmpty());
        }
        WriteFile(Page(), "written since");
        DeleteAll(inTheWay);
        FinishPendingPages(*m_library);
        QCOMPARE(ReadFile(inTheWay), "new");
        QCOMPARE(ReadFile(Page()), "written since");
    }

    void changeThatEndedHalfway_isCompleted_data()
    {
        QTest::addColumn<bool>("hadFolder");
        QTest::newRow("with a folder") << true;
        QTest::newRow("without one") << false;
    }
    void changeThatEndedHalfway_isCompleted()
    {
        QFETCH(bool, hadFolder);
        LeaveBehind(PageChanges::Kind::Replace, true);
        const QString folder = Pages() + Interim().first() + u'/';
        if (!hadFolder)
            DeleteAll(Pages() + Id());
        QVERIFY(QDir().mkpath(folder + u"old"_s));
        QVERIFY(hadFolder ? QDir().rename(Pages() + Id(), folder + u"old/"_s + Id())
                          : QDir().mkdir(folder + u"old/"_s + Id()));
        QVERIFY(QDir().rename(folder + u"new/"_s + Id(), Pages() + Id()));
        FinishPendingPages(*m_library);
        QCOMPARE(Files(), (QStringList{u"1.htm=new"_s, u"1/in/n.png=n"_s}));
        QVERIFY(Interim().isEmpty());
    }

    /// No error of reading makes a page that counts one that doesn't.
    void listThatCantBeRead_keepsThePage_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("changes") << u"changes"_s;
        QTest::newRow("done") << u"done"_s;
    }
    void listThatCantBeRead_keepsThePage()
    {
        QFETCH(QString, name);
        LeaveBehind(PageChanges::Kind::Replace, true);
        const QString folder = Pages() + Interim().first() + u'/';
        if (name == u"done"_s)
            WriteFile(folder + name, "");
        {
            const int lock = ::dup(0), list = ::dup(0); // the next two
            ::close(lock);
            ::close(list);
            const FewFiles one{rlim_t(list)}; // the lock of the folder alone can be opened
            FinishPendingPages(*m_library);
        }
        QCOMPARE(Interim().size(), 1);
        QCOMPARE(ReadFile(Page()), "old");
        FinishPendingPages(*m_library);
        QCOMPARE(ReadFile(Page()), "new");
        QVERIFY(Interim().isEmpty());
    }

    /// A full disk took a part of the line of item 17 or 118.
    void lineThatIsCutShort_isNone()
    {
        for (const QByteArray& cut : {"\n1"_ba, "\n1 don"_ba, "\n1 done2"_ba}) {
            LeaveBehind(PageChanges::Kind::Replace, true);
            WriteFile(Pages() + Interim().first() + u"/done"_s, cut);
            FinishPendingPages(*m_library);
            QCOMPARE(ReadFile(Page()), "new");
            WriteFile(Page(), "old");
        }
        LeaveBehind(PageChanges::Kind::Replace, true);
        WriteFile(Pages() + Interim().first() + u"/done"_s, "\n17 do\n1 done\n");
        FinishPendingPages(*m_library);
        QCOMPARE(ReadFile(Page()), "old");
    }

    void lineThatIsCutShort_isNoPartOfTheNext()
    {
        qint64 eleventh = 0;
        while (eleventh < 11)
            eleventh = AddItem(*m_library, 0, u"item"_s);
        QCOMPARE(std::pair(m_item, eleventh), std::pair(qint64(1), qint64(11)));
        const QString page = Pages() + u"11.htm"_s;
        {
            PageChanges changes(*m_library);
            for (const qint64 item : {m_item, eleventh})
                WriteFile(changes.PageFile(item), "new");
            WriteFile(changes.Folder() + u"../done"_s, "1");
            Transaction transaction(*m_library);
            changes.BindAll(PageChanges::Kind::Replace);
            transaction.Commit();
            QVERIFY(QDir().mkpath(page + u"/in the way"_s));
            QVERIFY(!Raised([&] { changes.PutInPlace(); }).isEmpty());
        }
        DeleteAll(page);
        FinishPendingPages(*m_library);
        QCOMPARE(ReadFile(page), "new");
    }

    void nextChange_completesTheOneThatWaits()
    {
        LeaveBehind(PageChanges::Kind::Add, true);
        PageChanges changes(*m_library);
        WriteFile(changes.PageFile(m_item), "second");
        Transaction transaction(*m_library);
        changes.Bind(m_item, PageChanges::Kind::Add);
        transaction.Commit();
        changes.PutInPlace();
        FinishPendingPages(*m_library);
        QCOMPARE(Files(), (QStringList{u"1.htm=second"_s, u"1/in/n.png=n"_s, u"1/old ä.png=picture"_s}));
    }

    void lastOfManyChanges_flushesAllAndIsHeardOf()
    {
        const qint64 other = AddItem(*m_library, 0, u"other"_s);
        PageChanges changes(*m_library);
        struct : Work {
            void Pulse() override { Lines << int(ReadFile(List).count("replace")); }
            QString List;
            QList<int> Lines;
        } work;
        work.List = changes.Folder() + u"../changes"_s;
        for (const qint64 item : {m_item, other})
            WriteFile(changes.PageFile(item), "new");
        Transaction transaction(*m_library);
        changes.BindAll(PageChanges::Kind::Replace, work);
        QVERIFY(!work.Lines.isEmpty());
        QCOMPARE(work.Lines.first(), 2);
    }

    void changeUnderWay_isLeftAlone()
    {
        PageChanges change(*m_library);
        Make(change, int(PageChanges::Kind::Add));
        FinishPendingPages(*m_library);
        QCOMPARE(Interim().size(), 1);
    }

    void nextChange_comesAfterTheOneThatWaits()
    {
        LeaveBehind(PageChanges::Kind::Add, true);
        Transaction transaction(*m_library);
        SettlePage(*m_library, m_item);
        QCOMPARE(ReadFile(Page()), "new");
        QVERIFY(Interim().isEmpty());
    }

    void fileInTheWay_isKept()
    {
        PageChanges change(*m_library);
        Make(change, int(PageChanges::Kind::Add));
        Transaction transaction(*m_library);
        change.Bind(m_item, PageChanges::Kind::Add);
        WriteFile(Pages() + Id() + u"/in/n.png"_s, "another program's");
        transaction.Commit();
        change.PutInPlace();
        QCOMPARE(Files(), (QStringList{u"1.htm=new"_s, u"1/in/found n.png=another program's"_s, u"1/in/n.png=n"_s,
                                       u"1/old ä.png=picture"_s}));
    }

    void pageThatIsALink_losesTheLinkOnly()
    {
        const QString elsewhere = m_home->Path(u"elsewhere.txt"_s);
        WriteFile(elsewhere, "not the library's");
        QFile::remove(Page());
        QVERIFY(QFile::link(elsewhere, Page()));
        for (const PageChanges::Kind kind : {PageChanges::Kind::Add, PageChanges::Kind::Delete}) {
            PageChanges change(*m_library);
            Make(change, int(kind));
            Transaction transaction(*m_library);
            change.Bind(m_item, kind);
            transaction.Commit();
            change.PutInPlace();
            QCOMPARE(ReadFile(elsewhere), "not the library's");
        }
        QCOMPARE(Files(), QStringList());
    }

    void folderThatIsALink_takesNoFiles()
    {
        const QString elsewhere = m_home->Path(u"elsewhere"_s);
        QVERIFY(QDir().mkpath(elsewhere));
        DeleteAll(Pages() + Id());
        QVERIFY(QFile::link(elsewhere, Pages() + Id()));
        PageChanges change(*m_library);
        Make(change, int(PageChanges::Kind::Add));
        Transaction transaction(*m_library);
        QB_VERIFY_RAISES(change.Bind(m_item, PageChanges::Kind::Add), ErrorNumber::PathAccess);
        QVERIFY(QDir(elsewhere).isEmpty());
    }

    void itemThatIsDeleted_forgetsItsChanges()
    {
        LeaveBehind(PageChanges::Kind::Add, true);
        DeleteBranch(*m_library, m_item);
        FinishPendingPages(*m_library);
        QVERIFY(Interim().isEmpty());
        QCOMPARE(Files(), QStringList());
        QCOMPARE(CountOf(*m_library, u"own_Checksums"_s), 0);
    }

    void strangersTable_allowsNoChange()
    {
        m_library->Execute(u"DROP TABLE own_Checksums"_s);
        m_library->Execute(u"CREATE VIEW own_Checksums AS SELECT 1 AS OfTable"_s);
        QB_VERIFY_RAISES(PageChanges{*m_library}, ErrorNumber::NotADatabase);
        QCOMPARE(ContentsOf(Pages()), m_before);
    }

    void strangersJournal_movesNothingOutOfTheFolder_data()
    {
        QTest::addColumn<QString>("link");
        QTest::addColumn<QString>("target");
        QTest::addColumn<QString>("changes");
        QTest::newRow("number") << u"new/page"_s << u"outside"_s << u"../../1 replace"_s;
        QTest::newRow("kind") << u"new/page"_s << u"outside"_s << u"1 other"_s;
        QTest::newRow("folder of what is made") << u"new"_s << u"outside"_s << u"1 replace"_s;
        QTest::newRow("folder of what goes") << u"old"_s << u"outside"_s << u"1 delete"_s;
        QTest::newRow("list") << u"changes"_s << u"outside/list"_s << QString();
        QTest::newRow("list of what is done") << u"done"_s << u"outside/1.htm"_s << u"1 replace"_s;
    }
    void strangersJournal_movesNothingOutOfTheFolder()
    {
        QFETCH(QString, link);
        QFETCH(QString, target);
        QFETCH(QString, changes);
        const QString mark(32, u'a');
        const QString folder = Pages() + u".changing-pages-"_s + mark + u'/';
        const QString outside = m_home->Path(u"outside/"_s);
        WriteFile(outside + u"1.htm"_s, "secret");
        WriteFile(outside + u"1/in.png"_s, "secret");
        WriteFile(outside + u"list"_s, "1 delete");
        const auto before = ContentsOf(outside);
        QVERIFY(QDir().mkpath(folder + (link.contains(u'/') ? u"new"_s : QString())));
        QVERIFY(QFile::link(m_home->Path(target), folder + link));
        if (!changes.isEmpty())
            WriteFile(folder + u"changes"_s, changes.toUtf8() + '\n');
        WriteChecksums(*m_library, u"PageChange"_s, m_item, 0, {{mark, 0}});
        FinishPendingPages(*m_library);
        QVERIFY(Interim().isEmpty());
        QCOMPARE(ContentsOf(Pages()), m_before);
        QCOMPARE(ContentsOf(outside), before);
    }

    void strangersPipe_isNotWaitedFor()
    {
        const QString mark(32, u'a');
        const QString folder = Pages() + u".changing-pages-"_s + mark + u'/';
        QVERIFY(QDir().mkpath(folder));
        QCOMPARE(::mkfifo(QFile::encodeName(folder + u"changes"_s).constData(), 0600), 0);
        WriteChecksums(*m_library, u"PageChange"_s, m_item, 0, {{mark, 0}});
        FinishPendingPages(*m_library);
        QVERIFY(Interim().isEmpty());
    }

private:
    QString Pages() const { return m_library->HTMLFolder(); }
    QString Id() const { return QString::number(m_item); }
    QString Page() const { return Pages() + Id() + u".htm"_s; }
    QStringList Interim() const { return QDir(Pages()).entryList({u".changing*"_s}, QDir::Dirs | QDir::Hidden); }
    QStringList Files() const
    {
        QStringList files;
        const QMap<QString, QByteArray> all = ContentsOf(Pages());
        for (auto file = all.begin(); file != all.end(); ++file) {
            if (!file.key().endsWith(u'/') && !file.key().startsWith(u'.'))
                files << file.key() + u'=' + QString::fromUtf8(file.value());
        }
        return files;
    }
    static void DeleteAll(const QString& folder) { QDir(folder).removeRecursively(); }
    void Make(PageChanges& change, int kind) const
    {
        if (kind == int(PageChanges::Kind::Delete))
            return;
        WriteFile(change.PageFile(m_item), "new");
        WriteFile(change.PageFolder(m_item) + u"in/n.png"_s, "n");
    }
    /// What a process leaves that ends before it has put its page in place.
    void LeaveBehind(PageChanges::Kind kind, bool committed)
    {
        QString folder;
        const QString kept = m_home->Path(u"kept"_s);
        QMap<QString, QByteArray> left;
        {
            PageChanges change(*m_library);
            Make(change, int(kind));
            Transaction transaction(*m_library);
            change.Bind(m_item, kind);
            folder = change.Folder() + u"../"_s;
            left = ContentsOf(folder);
            if (committed)
                transaction.Commit();
        }
        folder = QDir::cleanPath(folder) + u'/';
        QVERIFY(QDir().mkpath(folder + u"old"_s));
        for (auto entry = left.begin(); entry != left.end(); ++entry) {
            if (!entry.key().endsWith(u'/'))
                WriteFile(folder + entry.key(), entry.value());
        }
    }

    std::unique_ptr<TemporaryHome> m_home;
    std::unique_ptr<Library> m_library;
    qint64 m_item = 0;
    QMap<QString, QByteArray> m_before;
};

QB_TEST_MAIN(TestPageChanges)
#include "tst_page_changes.moc"
