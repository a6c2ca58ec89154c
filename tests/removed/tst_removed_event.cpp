#include "exchange/BranchImport.h"
#include "removed/RemovedEvent.h"
#include "store/CCodeItem.h"
#include "store/CDBCreate.h"
#include "store/ItemBranch.h"
#include "support/FileSizeLimit.h"
#include "support/FolderContents.h"
#include "support/LibraryBuilder.h"
#include "support/ScriptedPrompts.h"
#include "support/TestRun.h"

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// What is removed gets into the folder beside the library together with the change that removes it, or not at all.
class TestRemovedEvent : public QObject {
    Q_OBJECT

    std::optional<TemporaryHome> m_home;
    std::optional<FixedClock> m_clock;
    std::unique_ptr<Library> m_library;
    qint64 m_top = 0, m_inner = 0, m_aside = 0;

    QString Removed() const { return RemovedFolderOf(m_home->Path(u"net ä.qbd"_s)); }

    QStringList Names() const
    {
        QStringList names = ContentsOf(Removed()).keys();
        names.removeAll(u".library"_s);
        return names;
    }

    RemovedIndex Index(const QString& name) const { return ReadRemovedIndex(Removed() + name + RemovedIndexExtension); }

    /// An event of the branch, and its deletion, up to the commit.
    void RemoveBranch(RemovedEvent& event)
    {
        event.Add(RemovedRows::OfLibrary(u"r.ID IN (?, ?)"_s, {m_inner, m_top}), u"deleted by hand"_s);
        m_library->Execute(u"DELETE FROM Items WHERE ID IN (?, ?)"_s, {m_inner, m_top});
        event.Note();
    }

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_home.emplace();
        m_clock.emplace();
        m_library = MakeLibrary(m_home->Path(u"net ä.qbd"_s));
        m_inner = AddItem(*m_library, 0, u"inner"_s, u"int inner;"_s); // of a lower number than what is above it
        m_top = AddItem(*m_library, 0, u"top ü"_s, u"int top;"_s);
        m_aside = AddItem(*m_library, 0, u"aside"_s);
        m_library->Execute(u"UPDATE Items SET ParentID = ? WHERE ID = ?"_s, {m_top, m_inner});
        AddStoredFile(*m_library, m_inner, u"größe.bin"_s, QByteArray(70'000, 'g'), Date::FromParts(2020, 1, 2));
        WriteFile(m_library->HTMLFolder() + u"%1.htm"_s.arg(m_inner), "<p>page</p>");
        WriteFile(m_library->HTMLFolder() + u"%1/deep/pic.png"_s.arg(m_inner), "picture");
        m_library->Execute(u"UPDATE Items SET HTMLPage = -1 WHERE ID = ?"_s, {m_inner});
        m_library->Execute(u"INSERT INTO ItemLinks (ItemID, LinkItemID, Note, DateAdded) VALUES (?, ?, 'in', 5), "
                           "(?, ?, 'out', 6)"_s,
                           {m_top, m_inner, m_aside, m_inner});
        m_library->Execute(u"INSERT INTO BookmarkGroups (\"Group\") VALUES ('group')"_s);
        m_library->Execute(u"INSERT INTO Bookmarks (CodeID, BookmarkGroup, Description) VALUES (?, 1, 'mark')"_s,
                           {m_inner});
    }
    void cleanup()
    {
        m_library.reset();
        m_clock.reset();
        m_home.reset();
    }

    void committedEvent_isThereWithAllOfItsItems()
    {
        {
            RemovedEvent event(*m_library, RemovalKind::DeletedByUser, u"a branch"_s);
            Transaction transaction(*m_library);
            RemoveBranch(event);
            QVERIFY(!event.IsEmpty());
            transaction.Commit();
            event.Place();
        }
        const QString name = u"2026-03-02 143005 deleted"_s;
        QCOMPARE(Names(), (QStringList{name + u".json"_s, name + u".qbx"_s}));
        const UnpackedBranch branch(Removed() + name + u".qbx"_s);
        QCOMPARE(branch.Items().size(), size_t(2));
        QCOMPARE(branch.Items()[0].Title, u"top ü"_s);
        QCOMPARE(branch.Items()[1].Parent, 0); // what stood above it came first
        QCOMPARE(branch.Items()[1].FileBytes, qint64(70'000));
        QCOMPARE(branch.Items()[1].Pages, 2);
        QCOMPARE(branch.Trailer().Links.size(), size_t(1));

        const RemovedIndex index = Index(name);
        QCOMPARE(index.Header.What, u"a branch"_s);
        QCOMPARE(index.Header.Moment, m_clock->Now());
        QCOMPARE(index.Header.Library, m_library->Identity());
        const RemovedEntry& inner = index.Entries.at(1);
        QCOMPARE(inner.Item, m_inner);
        QCOMPARE(inner.Path, u"top ü"_s);
        QCOMPARE(inner.Parent, m_top);
        QCOMPARE(inner.Reason, u"deleted by hand"_s);
        QCOMPARE(inner.Created, m_clock->Now());
        QVERIFY(inner.HasPage);
        QCOMPARE(inner.Files.at(0).Title, u"größe.bin"_s);
        QCOMPARE(inner.Files.at(0).Bytes, qint64(70'000));
        QCOMPARE(inner.Links.size(), size_t(2)); // with the one from outside
        QCOMPARE(inner.Links.at(1).From, m_aside);
        QCOMPARE(inner.Links.at(1).Added, Date::FromSeconds(6));
        QCOMPARE(inner.Bookmarks.at(0).Group, u"group"_s);
        QVERIFY(!m_library->TableExists(u"own_PendingRemoved"_s));
    }

    void committedEvent_isAnExportThatComesIn()
    {
        RemovedEvent event(*m_library, RemovalKind::DeletedByUser, {});
        Transaction transaction(*m_library);
        RemoveBranch(event);
        transaction.Commit();
        event.Place();
        const auto other = MakeLibrary(m_home->Path(u"other.qbd"_s));
        const UnpackedBranch branch(Removed() + event.Name() + u".qbx"_s);
        const BranchImportResult result = ImportItems(*other, branch, {});
        QCOMPARE(result.Items, 2);
        QCOMPARE(result.Files, 1);
        QCOMPARE(result.Pages, 2);
        QCOMPARE(result.Links, 1);
    }

    void rolledBackChange_leavesNoEvent()
    {
        {
            RemovedEvent event(*m_library, RemovalKind::DeletedByUser, {});
            const Transaction transaction(*m_library);
            RemoveBranch(event);
        }
        QCOMPARE(Names(), QStringList());
        QCOMPARE(CountOf(*m_library, u"Items"_s), qint64(3));
    }

    void nothingAdded_makesNoFolder()
    {
        RemovedEvent event(*m_library, RemovalKind::Merge, {});
        Transaction transaction(*m_library);
        event.Note();
        transaction.Commit();
        event.Place();
        QVERIFY(!QFile::exists(Removed()));
        RemovedEvent other(*m_library, RemovalKind::Merge, {});
        other.Add(RemovedRows::OfLibrary(u"r.ID = -5"_s), {});
        QVERIFY(other.IsEmpty());
    }

    void committedAndNotPlaced_isFinishedAtTheNextOpening()
    {
        {
            RemovedEvent event(*m_library, RemovalKind::DeletedByUser, {});
            Transaction transaction(*m_library);
            RemoveBranch(event);
            transaction.Commit();
        } // as when the process ends
        QVERIFY(!Names().contains(u"2026-03-02 143005 deleted.qbx"_s));
        m_library.reset();
        m_library = Library::Open(m_home->Path(u"net ä.qbd"_s));
        QCOMPARE(Names(), (QStringList{u"2026-03-02 143005 deleted.json"_s, u"2026-03-02 143005 deleted.qbx"_s}));
        QVERIFY(!m_library->TableExists(u"own_PendingRemoved"_s));
    }

    void halfPlaced_isFinishedAtTheNextOpening()
    {
        QString mark;
        {
            RemovedEvent event(*m_library, RemovalKind::DeletedByUser, {});
            Transaction transaction(*m_library);
            RemoveBranch(event);
            transaction.Commit();
            mark = m_library->QueryValue(u"SELECT Mark FROM own_PendingRemoved"_s).ToText();
        }
        QVERIFY(QFile::rename(PendingRemovedFolder(m_library->Name(), mark) + u"event.qbx"_s,
                              Removed() + u"2026-03-02 143005 deleted.qbx"_s));
        m_library.reset();
        m_library = Library::Open(m_home->Path(u"net ä.qbd"_s));
        QCOMPARE(Names(), (QStringList{u"2026-03-02 143005 deleted.json"_s, u"2026-03-02 143005 deleted.qbx"_s}));
    }

    void leftByADeadProcessBeforeItsCommit_goesAtTheNextOpening()
    {
        const QString dead = PendingRemovedFolder(m_library->Name(), QString(32, u'a'));
        WriteFile(dead + u"event.qbx"_s, "half");
        m_library.reset();
        m_library = Library::Open(m_home->Path(u"net ä.qbd"_s));
        QVERIFY(!QFile::exists(dead));
    }

    void underWayElsewhere_isLeftAlone()
    {
        RemovedEvent event(*m_library, RemovalKind::DeletedByUser, {});
        event.Add(RemovedRows::OfLibrary(u"r.ID = ?"_s, {m_top}), {});
        const QStringList before = Names();
        QVERIFY(!before.isEmpty());
        const auto second = Library::Open(m_home->Path(u"net ä.qbd"_s));
        QCOMPARE(Names(), before);
    }

    void noteOfAStranger_movesNothing()
    {
        const QString dead = PendingRemovedFolder(m_library->Name(), QString(32, u'a'));
        WriteFile(dead + u"event.qbx"_s, "half");
        m_library->Execute(u"CREATE TABLE own_PendingRemoved (Mark TEXT, Name TEXT)"_s);
        m_library->Execute(
            u"INSERT INTO own_PendingRemoved VALUES (?, '../stolen'), ('../..', '2026-03-02 143005 x')"_s,
            {QString(32, u'a')});
        m_library.reset();
        m_library = Library::Open(m_home->Path(u"net ä.qbd"_s));
        QVERIFY(!QFile::exists(m_home->Path(u"stolen.qbx"_s)));
        QVERIFY(!m_library->TableExists(u"own_PendingRemoved"_s));
    }

    void eventsOfOneSecond_haveNamesOfTheirOwn()
    {
        for (const qint64 item : {m_top, m_aside}) {
            RemovedEvent event(*m_library, RemovalKind::ConflictDecided, {});
            Transaction transaction(*m_library);
            event.Add(RemovedRows::OfLibrary(u"r.ID = ?"_s, {item}), {});
            event.Note();
            transaction.Commit();
            event.Place();
        }
        QCOMPARE(Names().size(), 4);
        QCOMPARE(Index(u"2026-03-02 143006 conflict decided"_s).Header.Moment, m_clock->Now());
    }

    void versionsOfOneItem_areBothThere()
    {
        RemovedEvent event(*m_library, RemovalKind::Merge, {});
        Transaction transaction(*m_library);
        event.Add(RemovedRows::OfLibrary(u"r.ID = ?"_s, {m_inner}), u"one"_s);
        event.Add(RemovedRows::OfLibrary(u"r.ID = ?"_s, {m_inner}), u"two"_s);
        event.Note();
        transaction.Commit();
        event.Place();
        const UnpackedBranch branch(Removed() + event.Name() + u".qbx"_s); // raises for two of one key
        QCOMPARE(branch.Items().size(), size_t(2));
        QCOMPARE(Index(event.Name()).Entries.at(1).Item, m_inner);
    }

    void rowsOfAnAttachedFile_comeWithWhatIsInTheirColumns()
    {
        const QString path = m_home->Path(u"back.qbs"_s);
        CDBCreate().CreateSynchroDatabase(path);
        const AttachedFile file(*m_library, path, u"synchro"_s);
        RemovedEvent event(*m_library, RemovalKind::Merge, {});
        Transaction transaction(*m_library);
        m_library->Execute(u"INSERT INTO synchro.Items (ID, Title, Code, ParentID, MotherRecordID, MotherParentID, "
                           "HTMLPage) VALUES (70, 'theirs', 'words', 5, ?, ?, -1), (71, 'new', 'w', 70, -1, 0, 0)"_s,
                           {m_inner, m_top});
        m_library->Execute(u"INSERT INTO synchro.Files (ID, CodeID, Title, File) VALUES (3, 70, 'a.bin', "
                           "zeroblob(300000)), (4, 70, 'old.bin', NULL)"_s);
        m_library->Execute(u"INSERT INTO synchro.HTMLFiles (ItemIDRef, Name, Folder, File) VALUES (70, 'x.css', "
                           "'sub\\', X'2a'), (70, '../../e', '', X'2a'), (70, '70.htm', '', X'2a2a')"_s);
        RemovedRows rows = RemovedRows::InColumns(u"synchro"_s, u"r.ID >= ?"_s, {70});
        rows.ItemId = u"r.MotherRecordID"_s;
        rows.ParentId = u"r.MotherParentID"_s;
        QCOMPARE(event.Add(rows, u"lost"_s), 2);
        event.Note();
        transaction.Commit();
        event.Place();
        const UnpackedBranch branch(Removed() + event.Name() + u".qbx"_s);
        QCOMPARE(branch.Items()[0].Key, QString::number(m_inner));
        QCOMPARE(branch.Items()[0].FileBytes, qint64(300'000));
        QCOMPARE(branch.Items()[0].Files, 2);
        QCOMPARE(branch.Items()[0].Pages, 3); // a name that leads out of its folder is none
        QCOMPARE(branch.Items()[1].Parent, 0);
        const RemovedIndex index = Index(event.Name());
        QCOMPARE(index.Entries.at(0).Path, u"top ü"_s); // what the library calls it
        QCOMPARE(index.Entries.at(0).Parent, m_top);
        QVERIFY(!index.Entries.at(0).Files.at(0).IsMissing);
        QVERIFY(index.Entries.at(0).Files.at(1).IsMissing);
        QCOMPARE(index.Entries.at(1).Item, 0);
    }

    void partsOfItems_comeAlone()
    {
        RemovedEvent event(*m_library, RemovalKind::Merge, {});
        Transaction transaction(*m_library);
        RemovedRows files = RemovedRows::OfLibrary(u"f.Title = 'größe.bin'"_s);
        QCOMPARE(event.AddFiles(files, u"deleted there"_s), 1);
        m_library->Execute(u"UPDATE Files SET Description = 'lost words'"_s);
        QCOMPARE(event.AddDescriptions(files, u"described later there"_s), 1);
        QCOMPARE(event.AddPages(RemovedRows::OfLibrary(u"r.ID > 0"_s), u"overwritten"_s), 1);
        event.Note();
        transaction.Commit();
        event.Place();
        const UnpackedBranch branch(Removed() + event.Name() + u".qbx"_s);
        QCOMPARE(branch.Items().size(), size_t(3));
        QCOMPARE(branch.Items()[0].FileBytes, qint64(70'000));
        QCOMPARE(branch.Items()[1].FileBytes, qint64(0));
        QCOMPARE(branch.Items()[2].Pages, 2);
        QCOMPARE(branch.Items()[2].TextBytes, qint64(0));
        const RemovedIndex index = Index(event.Name());
        QCOMPARE(index.Entries.at(0).Part, RemovedPart::File);
        QCOMPARE(index.Entries.at(0).Item, m_inner);
        QCOMPARE(index.Entries.at(0).Title, u"inner"_s);
        QCOMPARE(index.Entries.at(1).Part, RemovedPart::Description);
        QCOMPARE(index.Entries.at(2).Part, RemovedPart::Page);
    }

    void fullDisk_failsTheChange()
    {
        RemovedEvent event(*m_library, RemovalKind::DeletedByUser, {});
        const Transaction transaction(*m_library);
        const FileSizeLimit full(30'000);
        QB_VERIFY_RAISES(event.Add(RemovedRows::OfLibrary(u"r.ID = ?"_s, {m_inner}), {}), ErrorNumber::PathAccess);
    }

    void folderOfAnotherLibrary_isNotUsed()
    {
        WriteFile(Removed() + u".library"_s, "somebody\n");
        RemovedEvent event(*m_library, RemovalKind::DeletedByUser, {});
        QB_VERIFY_RAISES(event.Add(RemovedRows::OfLibrary(u"r.ID = ?"_s, {m_inner}), {}), ErrorNumber::PathAccess);
    }

    void brokenIndex_isRefused_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::newRow("cut") << "{\"form\":\"quillbase-removed-1\",\"kind\":\"deleted\",\"entries\":[\n{"_ba;
        QTest::newRow("another form") << "{\"form\":\"x\",\"kind\":\"deleted\",\"entries\":[]}"_ba;
        QTest::newRow("another kind") << "{\"form\":\"quillbase-removed-1\",\"kind\":\"x\",\"entries\":[]}"_ba;
        QTest::newRow("no object") << "[]"_ba;
        QTest::newRow("entries out of order")
            << "{\"form\":\"quillbase-removed-1\",\"kind\":\"deleted\",\"entries\":[{\"entry\":2}]}"_ba;
    }
    void brokenIndex_isRefused()
    {
        QFETCH(const QByteArray, text);
        const QString path = m_home->Path(u"broken.json"_s);
        WriteFile(path, text);
        QB_VERIFY_RAISES(ReadRemovedIndex(path), ErrorNumber::Corrupt);
    }
};

QB_TEST_MAIN(TestRemovedEvent)
#include "tst_removed_event.moc"
