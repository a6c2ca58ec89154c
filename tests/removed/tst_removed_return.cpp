#include "maintenance/ContentCheck.h"
#include "maintenance/LibraryCheck.h"
#include "platform/richtext/RtfPlainText.h"
#include "removed/RemovedEvent.h"
#include "removed/RemovedReturn.h"
#include "store/CCodeItem.h"
#include "store/ItemBranch.h"
#include "store/PendingFiles.h"
#include "support/FolderContents.h"
#include "support/LibraryBuilder.h"
#include "support/LibraryState.h"
#include "support/ScriptedPrompts.h"
#include "support/TestRun.h"

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// What was removed is found in the list and comes back, whole or not at all.
class TestRemovedReturn : public QObject {
    Q_OBJECT

    std::optional<TemporaryHome> m_home;
    std::optional<FixedClock> m_clock;
    std::unique_ptr<Library> m_library;
    qint64 m_above = 0, m_top = 0, m_inner = 0, m_aside = 0, m_file = 0;

    QString Path() const { return m_home->Path(u"net ä.qbd"_s); }
    QString Event(const QString& kind = u"deleted"_s) const
    {
        return RemovedFolderOf(Path()) + u"2026-03-02 143005 "_s + kind;
    }

    void Keep(const std::function<void(RemovedEvent&)>& add, RemovalKind kind = RemovalKind::DeletedByUser)
    {
        RemovedEvent event(*m_library, kind, u"what happened"_s);
        Transaction transaction(*m_library);
        add(event);
        event.Note();
        transaction.Commit();
        event.Place();
    }

    void DeleteKept(qint64 item)
    {
        Keep([this, item](RemovedEvent& event) {
            event.Add(RemovedRows::OfLibrary(
                          u"r.ID IN (WITH RECURSIVE b(ID) AS (SELECT ?1 UNION SELECT i.ID FROM Items i JOIN b ON "
                          "i.ParentID = b.ID) SELECT ID FROM b)"_s,
                          {item}),
                      u"by hand"_s);
        });
        DeleteBranch(*m_library, item);
    }

    ReturnResult BringBack(const QString& words, const ReturnOptions& options = {})
    {
        const RemovedList list(Path());
        const std::vector<ListedEntry> found = list.Find(words);
        if (found.empty())
            return {};
        return ReturnRemoved(*m_library, list, found.front(), options);
    }

    QByteArray FileOf(qint64 item)
    {
        Statement row = m_library->Query(u"SELECT ID, Title FROM Files WHERE CodeID = ?"_s, {item});
        return row.Step() ? ReadFile(m_library->FilesFolder() + u"%1 - %2"_s.arg(row.Long(0)).arg(row.Text(1)))
                          : QByteArray();
    }

    QStringList Faults()
    {
        QStringList faults;
        for (const LibraryFault& fault : CheckLibrary(*m_library))
            faults << fault.Text;
        for (const LibraryFault& fault : CheckContents(*m_library).Faults)
            faults << fault.Text;
        return faults;
    }

    static QByteArray LinkTo(qint64 item) { return "<a href=\"local://Item" + QByteArray::number(item) + "\">"; }
    void LetPageLeadTo(qint64 item)
    {
        WriteFile(m_library->HTMLFolder() + u"%1.htm"_s.arg(m_inner), LinkTo(item) + LinkTo(m_aside));
    }
    QByteArray PageOf(qint64 item) { return ReadFile(m_library->HTMLFolder() + u"%1.htm"_s.arg(item)); }

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_home.emplace();
        m_clock.emplace(Date::FromParts(2026, 3, 1, 10, 0, 0));
        m_library = MakeLibrary(Path());
        m_above = AddItem(*m_library, 0, u"above"_s);
        m_top = AddItem(*m_library, m_above, u"top ü"_s, u"int top;"_s);
        m_inner = AddItem(*m_library, m_top, u"inner"_s, u"int inner;"_s);
        m_aside = AddItem(*m_library, 0, u"aside"_s);
        m_file = AddStoredFile(*m_library, m_inner, u"größe.bin"_s, QByteArray(70'000, 'g'),
                               Date::FromParts(2020, 1, 2));
        WriteFile(m_library->HTMLFolder() + u"%1.htm"_s.arg(m_inner),
                  u"<img src=\"%1/pic.png\">"_s.arg(m_inner).toUtf8());
        WriteFile(m_library->HTMLFolder() + u"%1/pic.png"_s.arg(m_inner), "picture");
        m_library->Execute(u"UPDATE Items SET HTMLPage = -1 WHERE ID = ?"_s, {m_inner});
        m_library->Execute(u"INSERT INTO ItemLinks (ItemID, LinkItemID, Note, DateAdded) VALUES (?, ?, 'in', 5), "
                           "(?, ?, 'out', 6)"_s,
                           {m_top, m_inner, m_aside, m_inner});
        m_library->Execute(u"INSERT INTO BookmarkGroups (\"Group\") VALUES ('group')"_s);
        m_library->Execute(u"INSERT INTO Bookmarks (CodeID, BookmarkGroup, Description) VALUES (?, 1, 'mark')"_s,
                           {m_inner});
        m_clock->Set(Date::FromParts(2026, 3, 2, 14, 30, 5));
    }
    void cleanup()
    {
        m_library.reset();
        m_clock.reset();
        m_home.reset();
    }

    void deletedBranch_comesBackWhole()
    {
        const QMap<QString, QByteArray> before = StateOf(Path());
        DeleteKept(m_top);
        QCOMPARE(CountOf(*m_library, u"Items"_s), qint64(2));
        m_clock->AddSeconds(60);
        const ReturnResult result = BringBack({});
        QCOMPARE(result.Item, m_top);
        QCOMPARE(result.Items, 2);
        QCOMPARE(result.Files, 1);
        QCOMPARE(result.Pages, 1);
        QCOMPARE(result.Links, 2);
        QCOMPARE(result.Bookmarks, 1);
        QCOMPARE(Faults(), QStringList());
        QCOMPARE(FileOf(m_inner), QByteArray(70'000, 'g'));
        QCOMPARE(Texts(*m_library, u"SELECT Description FROM Bookmarks WHERE CodeID = ?"_s, {m_inner}),
                 QStringList{u"mark"_s});
        QMap<QString, QByteArray> after = StateOf(Path());
        // All is as it was, but for the numbers of rows that nobody sees.
        for (const QString& table : {u"Items"_s, u"Keywords"_s, u"Properties"_s}) {
            for (auto row = before.begin(); row != before.end(); ++row) {
                if (row.key().startsWith(table))
                    QCOMPARE(after.value(row.key()), row.value());
            }
        }
        QCOMPARE(Texts(*m_library, u"SELECT ItemID || ' ' || LinkItemID || ' ' || Note || ' ' || DateAdded FROM "
                                   "ItemLinks ORDER BY DateAdded"_s),
                 (QStringList{u"%1 %2 in 5"_s.arg(m_top).arg(m_inner), u"%1 %2 out 6"_s.arg(m_aside).arg(m_inner)}));
        QCOMPARE(after.value(u"pages/%1.htm"_s.arg(m_inner)), before.value(u"pages/%1.htm"_s.arg(m_inner)));
        QCOMPARE(after.value(u"pages/%1/pic.png"_s.arg(m_inner)), "picture"_ba);
        QCOMPARE(m_library->QueryValue(u"SELECT DateAdded FROM Files"_s).ToDate(), Date::FromParts(2020, 1, 2));
    }

    void partOfABranch_comesBackAlone()
    {
        DeleteKept(m_top);
        const ReturnResult result = BringBack(u"INNER"_s);
        QCOMPARE(result.Items, 1);
        QCOMPARE(result.Item, m_inner);
        QCOMPARE(m_library->QueryValue(u"SELECT ParentID FROM Items WHERE ID = ?"_s, {m_inner}).ToLong(), 0);
        QCOMPARE(result.Links, 1); // the other one's end is gone still
        const ReturnResult rest = BringBack(u"top"_s);
        QCOMPARE(rest.Items, 1); // what is there again does not come twice
        QCOMPARE(rest.Links, 1);
        QCOMPARE(m_library->QueryValue(u"SELECT ParentID FROM Items WHERE ID = ?"_s, {m_top}).ToLong(), m_above);
        QCOMPARE(Faults(), QStringList());
    }

    void parentIsGone_comesToTheRootOrWhereItIsSaid()
    {
        DeleteKept(m_above);
        const RemovedList list(Path());
        QCOMPARE(PlaceOfReturn(*m_library, list.Find(u"inner"_s).front()), ReturnPlace::None);
        BringBack(u"inner"_s, {.Parent = m_aside});
        QCOMPARE(m_library->QueryValue(u"SELECT ParentID FROM Items WHERE ID = ?"_s, {m_inner}).ToLong(), m_aside);
        QB_VERIFY_RAISES(BringBack(u"top"_s, {.Parent = 4711}), ErrorNumber::ItemNotFound);
    }

    void versionOfAnItemThatIsThere_comesBeside()
    {
        Keep([this](RemovedEvent& event) { event.Add(RemovedRows::OfLibrary(u"r.ID = ?"_s, {m_inner}), u"lost"_s); },
             RemovalKind::Merge);
        const ReturnResult result = BringBack({});
        QVERIFY(result.IsBeside);
        QVERIFY(result.Item != m_inner);
        Statement row = m_library->Query(u"SELECT Title, ParentID FROM Items WHERE ID = ?"_s, {result.Item});
        QVERIFY(row.Step());
        QCOMPARE(row.Text(0), u"inner (removed version)"_s);
        QCOMPARE(row.Long(1), m_top);
        QCOMPARE(result.Links, 0);
        QCOMPARE(result.Bookmarks, 0);
        QCOMPARE(FileOf(result.Item).size(), 70'000);
        // What it leads to lies in its own folder.
        QCOMPARE(ReadFile(m_library->HTMLFolder() + u"%1.htm"_s.arg(result.Item)),
                 u"<img src=\"%1/pic.png\">"_s.arg(result.Item).toUtf8());
        row.Reset();
        QCOMPARE(Faults(), QStringList());
    }

    void itemThatWaitedForRemoval_waitsNoMore()
    {
        m_library->Execute(u"UPDATE Items SET LastChanged = 0 WHERE ID = ?"_s, {m_aside});
        DeleteKept(m_aside);
        BringBack({});
        QCOMPARE(m_library->QueryValue(u"SELECT LastChanged FROM Items WHERE ID = ?"_s, {m_aside}).ToDate(),
                 m_clock->Now());
    }

    void inAReplica_comesAsANewItemThatTravels()
    {
        MakeMother(*m_library, Date::FromParts(2026, 6, 1)); // later than the clock
        DeleteKept(m_aside);
        const ReturnResult result = BringBack({});
        QVERIFY(result.Item != m_aside);
        QVERIFY(m_library->QueryValue(u"SELECT LastChanged FROM Items WHERE ID = ?"_s, {result.Item}).ToDate()
                > m_library->LastOwnStamp());
        QCOMPARE(result.Links, 1); // to what is there
        QVERIFY(m_library->QueryValue(u"SELECT DateAdded FROM ItemLinks WHERE ItemID = ?"_s, {result.Item}).ToDate()
                > m_library->LastOwnStamp());
    }

    void linksOfAPage_leadToWhatComesBackWithIt()
    {
        LetPageLeadTo(m_top);
        MakeMother(*m_library, Date::FromParts(2026, 6, 1)); // numbers are new
        DeleteKept(m_top);
        const ReturnResult result = BringBack(u"top"_s);
        QVERIFY(result.Item != m_top);
        const qint64 inner = m_library->QueryValue(u"SELECT ID FROM Items WHERE Title = 'inner'"_s).ToLong();
        QCOMPARE(PageOf(inner), LinkTo(result.Item) + LinkTo(m_aside));
    }

    void linksOfAPageThatComesBeside_leadWhereTheyLed()
    {
        LetPageLeadTo(m_inner);
        Keep([this](RemovedEvent& event) { event.Add(RemovedRows::OfLibrary(u"r.ID = ?"_s, {m_inner}), u"lost"_s); },
             RemovalKind::Merge);
        QCOMPARE(PageOf(BringBack({}).Item), LinkTo(m_inner) + LinkTo(m_aside));
    }

    /// Its numbers are those of other items here.
    void linksOfAPageOfAnotherLibrary_leadNowhere()
    {
        LetPageLeadTo(m_inner);
        DeleteKept(m_inner);
        const QString index = Event() + u".json"_s;
        WriteFile(index, ReadFile(index).replace(m_library->Identity().toUtf8(), "another"));
        const qint64 inner = BringBack(u"inner"_s).Item;
        QCOMPARE(PageOf(inner), LinkTo(inner) + "<a href=\"local://Item-" + QByteArray::number(m_aside) + "\">");
    }

    void barredPlace_takesNothingBack()
    {
        DeleteKept(m_aside);
        MakeMother(*m_library, Date::FromParts(2026, 1, 1));
        const qint64 orphans = AddItem(*m_library, 0, OrphanedItemsTitle);
        const QString raised = Raised([&] { BringBack({}, {.Parent = orphans}); });
        QVERIFY2(raised.contains(u"nothing was changed"_s, Qt::CaseInsensitive), qPrintable(raised));
        QCOMPARE(CountOf(*m_library, u"Items"_s), qint64(4));
    }

    void storedFile_comesBackToItsItem()
    {
        Keep([](RemovedEvent& event) { event.AddFiles(RemovedRows::OfLibrary(u"f.ID > 0"_s), u"deleted"_s); });
        StoredFileDeletion deletion;
        deletion.Delete(*m_library, m_file);
        deletion.Complete();
        const ReturnResult result = BringBack(u"größe"_s);
        QCOMPARE(result.Item, m_inner);
        QCOMPARE(result.Items, 0);
        QCOMPARE(FileOf(m_inner), QByteArray(70'000, 'g'));
        DeleteBranch(*m_library, m_inner);
        const ReturnResult alone = BringBack(u"größe"_s);
        QCOMPARE(alone.Items, 1);
        QCOMPARE(m_library->QueryValue(u"SELECT Title FROM Items WHERE ID = ?"_s, {alone.Item}).ToText(),
                 u"inner (removed file)"_s);
        QCOMPARE(FileOf(alone.Item).size(), 70'000);
    }

    void page_comesBackToAnItemWithoutOne()
    {
        Keep([](RemovedEvent& event) { event.AddPages(RemovedRows::OfLibrary(u"r.ID > 0"_s), u"overwritten"_s); });
        const ReturnResult beside = BringBack({});
        QCOMPARE(m_library->QueryValue(u"SELECT Title FROM Items WHERE ID = ?"_s, {beside.Item}).ToText(),
                 u"inner (removed page)"_s);
        QFile::remove(m_library->HTMLFolder() + u"%1.htm"_s.arg(m_inner));
        QDir(m_library->HTMLFolder() + QString::number(m_inner)).removeRecursively();
        m_library->Execute(u"UPDATE Items SET HTMLPage = 0 WHERE ID = ?"_s, {m_inner});
        const ReturnResult result = BringBack({});
        QCOMPARE(result.Item, m_inner);
        QVERIFY(m_library->QueryValue(u"SELECT HTMLPage FROM Items WHERE ID = ?"_s, {m_inner}).ToBoolean());
        QCOMPARE(ReadFile(m_library->HTMLFolder() + u"%1/pic.png"_s.arg(m_inner)), "picture"_ba);
    }

    void description_comesBehindThatOfTheFile()
    {
        m_library->Execute(u"UPDATE Files SET Description = 'lost'"_s);
        Keep([](RemovedEvent& event) { event.AddDescriptions(RemovedRows::OfLibrary(u"f.ID > 0"_s), u"later"_s); });
        m_library->Execute(u"UPDATE Files SET Description = 'kept'"_s);
        BringBack({});
        QCOMPARE(m_library->QueryValue(u"SELECT Description FROM Files"_s).ToText(), u"kept\r\nlost"_s);
        m_library->Execute(u"DELETE FROM Files"_s);
        QB_VERIFY_RAISES(BringBack({}), ErrorNumber::ItemNotFound);
    }

    void missingContents_areNamed()
    {
        QFile::remove(m_library->FilesFolder() + u"%1 - größe.bin"_s.arg(m_file));
        DeleteKept(m_inner);
        const ReturnResult result = BringBack({});
        QCOMPARE(result.Missing, QStringList{u"größe.bin"_s});
        QCOMPARE(result.Files, 0);
    }

    void failure_leavesTheLibraryAsItWas()
    {
        DeleteKept(m_top);
        const QMap<QString, QByteArray> before = StateOf(Path());
        const ReturnOptions options{
            .BeforeCommit = [](const ReturnResult&) { throw RuntimeError(ErrorNumber::Engine, u"full"_s, {}); }};
        QB_VERIFY_RAISES(BringBack({}, options), ErrorNumber::Engine);
        QCOMPARE(DifferenceOf(StateOf(Path()), before), QString());
    }

    void list_showsTopsAndFindsAll()
    {
        DeleteKept(m_above);
        const RemovedList list(Path());
        QCOMPARE(list.Events().size(), size_t(1));
        QVERIFY(list.Bytes() > 0);
        const std::vector<ListedEntry> tops = list.Find({});
        QCOMPARE(tops.size(), size_t(1));
        QCOMPARE(tops[0].Entry->Title, u"above"_s);
        QCOMPARE(tops[0].Below, 2);
        QCOMPARE(tops[0].Id(), u"20260302143005.1"_s);
        QCOMPARE(list.Find(u"TOP inner"_s).size(), size_t(1)); // one word in the path
        QCOMPARE(list.Find(u"top nowhere"_s).size(), size_t(0));
        QCOMPARE(list.At(u"20260302143005.3"_s).Entry->Title, u"inner"_s);
        for (const QString& id : {u"20260302143005.4"_s, u"20260302143005.0"_s, u"1.1"_s, u"x"_s, QString()})
            QB_VERIFY_RAISES(list.At(id), ErrorNumber::ItemNotFound);
    }

    void versionsOfAMerge_areAllListed()
    {
        Keep(
            [this](RemovedEvent& event) {
                event.Add(RemovedRows::OfLibrary(u"r.ID IN (?, ?)"_s, {m_top, m_inner}), u"lost"_s);
            },
            RemovalKind::Merge);
        QCOMPARE(RemovedList(Path()).Find({}).size(), size_t(2));
    }

    void preview_showsTheTexts()
    {
        DeleteKept(m_inner);
        const RemovedList list(Path());
        const ListedEntry entry = list.Find({}).front();
        const RemovedContents contents = ReadRemoved(list, entry);
        QCOMPARE(PlainTextFromRtf(contents.Item.Code), u"int inner;"_s);
        const QString text = PreviewOf(entry, contents);
        for (const QString& part :
             {u"inner"_s, u"above / top ü"_s, u"by hand"_s, u"int inner;"_s, u"größe.bin"_s, u"It has a web page."_s})
            QVERIFY2(text.contains(part), qPrintable(text));
    }

    void brokenEvents_areNamedAndChangeNothing_data()
    {
        QTest::addColumn<QString>("damage");
        for (const char* damage : {"no items", "cut items", "no archive", "cut index", "other items", "a link"})
            QTest::newRow(damage) << QString::fromLatin1(damage);
    }
    void brokenEvents_areNamedAndChangeNothing()
    {
        QFETCH(const QString, damage);
        DeleteKept(m_top);
        const QMap<QString, QByteArray> before = StateOf(Path());
        const QByteArray items = ReadFile(Event() + u".qbx"_s);
        const QByteArray index = ReadFile(Event() + u".json"_s);
        if (damage == u"no items")
            QFile::remove(Event() + u".qbx"_s);
        else if (damage == u"cut items")
            WriteFile(Event() + u".qbx"_s, items.left(items.size() / 2));
        else if (damage == u"no archive")
            WriteFile(Event() + u".qbx"_s, "nothing");
        else if (damage == u"cut index")
            WriteFile(Event() + u".json"_s, index.left(index.size() / 2));
        else if (damage == u"other items")
            WriteFile(Event() + u".json"_s,
                      QByteArray(index).replace(",\n{\"bookmarks\"", ",\n{\"entry\":2},{\"entry\":3"));
        else {
            QFile::rename(Event() + u".qbx"_s, Event() + u".x"_s);
            QFile::link(Event() + u".x"_s, Event() + u".qbx"_s);
        }
        const RemovedList list(Path());
        if (!list.Events().empty())
            QVERIFY(!Raised([&] { BringBack({}); }).isEmpty());
        else
            QCOMPARE(list.Problems().size(), 1);
        QCOMPARE(DifferenceOf(StateOf(Path()), before), QString());
    }
};

QB_TEST_MAIN(TestRemovedReturn)
#include "tst_removed_return.moc"
