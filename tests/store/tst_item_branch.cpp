#include "platform/system/Prompts.h"
#include "store/CCodeItem.h"
#include "store/ItemBranch.h"
#include "store/Library.h"
#include "store/PendingPages.h"
#include "support/LibraryBuilder.h"
#include "support/RecordedWork.h"
#include "support/ScriptedPrompts.h"
#include "support/TestRun.h"

#include <QDir>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// A small tree: top (branch (leaf 1, leaf 2), other) and, beside top, the item aside.
class TestItemBranch : public QObject {
    Q_OBJECT

private:
    qint64 ParentOf(qint64 id)
    {
        return m_library->QueryValue(u"SELECT ParentID FROM Items WHERE ID = ?"_s, {id}).ToLong();
    }
    void SetParent(qint64 id, qint64 parent)
    {
        m_library->Execute(u"UPDATE Items SET ParentID = ? WHERE ID = ?"_s, {parent, id});
    }
    QStringList AllItems()
    {
        return Texts(*m_library, u"SELECT ID || ' under ' || ParentID || ' at ' || LastChanged FROM Items"_s);
    }

    QString AddPage(qint64 item)
    {
        const QString page = m_library->HTMLFolder() + QString::number(item);
        WriteFile(page + u".htm"_s, "<html>");
        WriteFile(page + u"/bild ü.png"_s, "png");
        return page;
    }
    static QStringList FilesIn(const QString& folder)
    {
        return QDir(folder).entryList(QDir::AllEntries | QDir::NoDotAndDotDot);
    }

    std::optional<TemporaryHome> m_home;
    std::optional<FixedClock> m_clock;
    std::unique_ptr<Library> m_library;
    qint64 m_top = 0, m_branch = 0, m_leaf1 = 0, m_leaf2 = 0, m_other = 0, m_aside = 0;

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_home.emplace();
        m_clock.emplace();
        m_library = MakeLibrary(m_home->Path(u"Äste und Zweige.qbd"_s), LanguageType::None);
        m_top = AddItem(*m_library, 0, u"top"_s);
        m_branch = AddItem(*m_library, m_top, u"branch"_s);
        m_leaf1 = AddItem(*m_library, m_branch, u"leaf 1"_s);
        m_leaf2 = AddItem(*m_library, m_branch, u"leaf 2"_s);
        m_other = AddItem(*m_library, m_top, u"other"_s);
        m_aside = AddItem(*m_library, 0, u"aside"_s);
    }

    void cleanup()
    {
        m_library.reset();
        m_clock.reset();
        m_home.reset();
    }

    void branch_namesParentsBeforeChildren()
    {
        QCOMPARE(BranchOf(*m_library, m_top), (std::vector<qint64>{m_top, m_branch, m_leaf1, m_leaf2, m_other}));
        QCOMPARE(BranchOf(*m_library, m_leaf2), std::vector<qint64>{m_leaf2});
    }

    void branchInACycle_isWalkedOnce()
    {
        SetParent(m_top, m_leaf1);
        QCOMPARE(BranchOf(*m_library, m_branch).size(), size_t(5));
        QVERIFY(!IsInBranch(*m_library, m_aside, m_leaf1));
        QVERIFY(IsInBranch(*m_library, m_leaf1, m_top));
    }

    void isInBranch_data()
    {
        QTest::addColumn<QString>("branch");
        QTest::addColumn<QString>("candidate");
        QTest::addColumn<bool>("inside");
        const auto row = [](const char* branch, const char* candidate, bool inside) {
            QTest::addRow("%s in %s", candidate, branch)
                << QString::fromLatin1(branch) << QString::fromLatin1(candidate) << inside;
        };
        row("top", "top", true);
        row("top", "leaf 2", true);
        row("branch", "other", false);
        row("leaf 1", "top", false);
        row("top", "aside", false);
    }
    void isInBranch()
    {
        QFETCH(QString, branch);
        QFETCH(QString, candidate);
        const auto id = [this](const QString& title) {
            return m_library->QueryValue(u"SELECT ID FROM Items WHERE Title = ?"_s, {title}).ToLong();
        };
        QTEST(IsInBranch(*m_library, id(branch), id(candidate)), "inside");
        QVERIFY(!IsInBranch(*m_library, id(branch), 0));
    }

    // Delete

    void deletedBranch_goesWithItsFilesAndPages()
    {
        AddStoredFile(*m_library, m_leaf1, u"Bericht ä.txt"_s, "one", m_clock->Now());
        AddStoredFile(*m_library, m_branch, u"b.txt"_s, "two", m_clock->Now());
        const qint64 kept = AddStoredFile(*m_library, m_other, u"kept.txt"_s, "three", m_clock->Now());
        AddPage(m_leaf2);
        AddPage(m_other);
        RecordedWork work;
        DeleteBranch(*m_library, m_branch, work);
        QCOMPARE(work.Done, (QList<qint64>{1, 2, 3}));
        QCOMPARE(work.Totals, (QList<qint64>{3, 3, 3}));
        QCOMPARE(Texts(*m_library, u"SELECT Title FROM Items ORDER BY ID"_s),
                 (QStringList{u"top"_s, u"other"_s, u"aside"_s}));
        QCOMPARE(Texts(*m_library, u"SELECT ID FROM Files"_s), QStringList{QString::number(kept)});
        QCOMPARE(FilesIn(m_library->FilesFolder()), QStringList{u"%1 - kept.txt"_s.arg(kept)});
        QCOMPARE(FilesIn(m_library->HTMLFolder()), (QStringList{QString::number(m_other), u"%1.htm"_s.arg(m_other)}));
    }

    /// A folder of an item's number goes with the page that it belongs to, and not without.
    /// As a kill between the rows and the pages leaves them: moved away already, and the rows there or not.
    void pagesOfADeletionThatWasCutOff_areFinishedOrComeBack()
    {
        const QString kept = AddPage(m_leaf1);
        const QString gone = AddPage(m_leaf2);
        const QString mark(32, u'a');
        const auto leaving = [&](qint64 item) {
            return m_library->HTMLFolder() + u".leaving-%1-%2"_s.arg(mark).arg(item);
        };
        for (const qint64 item : {m_leaf1, m_leaf2}) {
            const QString page = m_library->HTMLFolder() + QString::number(item);
            QVERIFY(QFile::rename(page + u".htm"_s, leaving(item) + u".htm"_s));
            QVERIFY(QDir().rename(page, leaving(item)));
        }
        WriteFile(m_library->HTMLFolder() + u".leaving-mine"_s, "a user's");
        m_library->Execute(u"DELETE FROM Items WHERE ID = ?"_s, {m_leaf2});
        {
            const FileLock working(m_library->HTMLFolder() + u".working-"_s + mark, FileLock::Target::Own);
            FinishPendingPages(*m_library);
            QVERIFY(!QFile::exists(kept + u".htm"_s)); // it is still under way
        }
        FinishPendingPages(*m_library);
        QVERIFY(QFile::exists(kept + u".htm"_s) && QFile::exists(kept + u"/bild ü.png"_s));
        QVERIFY(!QFile::exists(gone + u".htm"_s) && !QFile::exists(gone));
        QVERIFY(!QFile::exists(leaving(m_leaf2)) && !QFile::exists(leaving(m_leaf2) + u".htm"_s));
        QVERIFY(QFile::exists(m_library->HTMLFolder() + u".leaving-mine"_s));
    }

    void pagesOfADeletionThatFails_comeBack()
    {
        const QString page = AddPage(m_leaf1);
        {
            PageDeletion deletion;
            deletion.Delete(*m_library, m_leaf1);
            QVERIFY(!QFile::exists(page + u".htm"_s));
        }
        QVERIFY(QFile::exists(page + u".htm"_s) && QFile::exists(page + u"/bild ü.png"_s));
        QCOMPARE(
            QDir(m_library->HTMLFolder()).entryList({u".leaving*"_s, u".working*"_s}, QDir::AllEntries | QDir::Hidden),
            QStringList());
    }

    void folderWithoutItsPage_stays()
    {
        WriteFile(m_library->HTMLFolder() + u"%1/mine.png"_s.arg(m_leaf1), "mine");
        WriteFile(m_library->HTMLFolder() + u"%1.htm"_s.arg(m_leaf2), "<html>"); // a page without a folder
        const QString other = AddPage(m_other);
        DeleteBranch(*m_library, m_branch);
        QCOMPARE(ReadFile(m_library->HTMLFolder() + u"%1/mine.png"_s.arg(m_leaf1)), "mine");
        QVERIFY(!QFileInfo::exists(m_library->HTMLFolder() + u"%1.htm"_s.arg(m_leaf2)));
        QVERIFY(QFileInfo::exists(other + u".htm"_s) && QFileInfo::exists(other + u"/bild ü.png"_s));
    }

    void pagesOfAnotherLibrary_stay()
    {
        const QString page = AddPage(m_leaf1);
        WriteFile(m_library->HTMLFolder() + u".library"_s, "another library");
        DeleteBranch(*m_library, m_leaf1);
        QVERIFY(QFileInfo::exists(page + u".htm"_s) && QFileInfo::exists(page + u"/bild ü.png"_s));
    }

    /// What lies below it is followed by nobody.
    void linkInAPagesFolder_leadsTheDeletionNowhere()
    {
        const QString page = AddPage(m_leaf1);
        WriteFile(m_home->Path(u"outside/precious.txt"_s), "mine");
        QVERIFY(QFile::link(m_home->Path(u"outside"_s), page + u"/link"_s));
        DeleteBranch(*m_library, m_leaf1);
        QVERIFY(!QFileInfo::exists(page));
        QCOMPARE(ReadFile(m_home->Path(u"outside/precious.txt"_s)), "mine");
    }

    void deletedBranchWhoseFileIsGone_isNoFailure()
    {
        const qint64 file = AddStoredFile(*m_library, m_leaf1, u"gone.txt"_s, "x", m_clock->Now());
        QVERIFY(QFile::remove(m_library->FilesFolder() + u"%1 - gone.txt"_s.arg(file)));
        DeleteBranch(*m_library, m_leaf1);
        QCOMPARE(CountOf(*m_library, u"Files"_s), 0);
    }

    void deletedBranchOfACycle_isGoneWhole()
    {
        SetParent(m_top, m_leaf1);
        DeleteBranch(*m_library, m_leaf1);
        QCOMPARE(Texts(*m_library, u"SELECT Title FROM Items"_s), QStringList{u"aside"_s});
    }

    void titleThatLeadsOutOfTheFolder_deletesNothingOutside()
    {
        const QString outside = m_home->Path(u"outside.txt"_s);
        WriteFile(outside, "mine");
        m_library->Execute(u"INSERT INTO Files (CodeID, Title) VALUES (?, ?)"_s, {m_leaf1, u"/../../outside.txt"_s});
        DeleteBranch(*m_library, m_leaf1);
        QCOMPARE(CountOf(*m_library, u"Files"_s), 0);
        QCOMPARE(ReadFile(outside), QByteArray("mine"));
    }

    void deleteThatFailsHalfWay_leavesRowsAndFiles()
    {
        const qint64 file = AddStoredFile(*m_library, m_branch, u"b.txt"_s, "two", m_clock->Now());
        const QString page = AddPage(m_branch);
        m_library->Execute(
            u"CREATE TEMP TRIGGER stop BEFORE DELETE ON Items WHEN old.ID = %1 BEGIN SELECT raise(ABORT, 'stopped'); "
            "END"_s.arg(m_leaf2));
        const QStringList before = AllItems();
        const ScriptedPrompts nobodyIsAsked;
        try {
            DeleteBranch(*m_library, m_branch);
            QFAIL("was deleted");
        } catch (const RuntimeError& error) {
            QVERIFY(error.Description().startsWith(
                u"The item %1 could not be deleted; nothing was changed.\n"_s.arg(m_leaf2)));
        }
        QCOMPARE(AllItems(), before);
        QCOMPARE(CountOf(*m_library, u"Files"_s), 1);
        QCOMPARE(ReadFile(m_library->FilesFolder() + u"%1 - b.txt"_s.arg(file)), QByteArray("two"));
        QVERIFY(QFileInfo::exists(page + u".htm"_s) && QFileInfo::exists(page));
        QVERIFY(!m_library->InTransaction());
    }

    void deleteOfNoItem_isRefused()
    {
        const QStringList before = AllItems();
        QB_VERIFY_RAISES(DeleteBranch(*m_library, 4711), ErrorNumber::ItemNotFound);
        QCOMPARE(AllItems(), before);
    }

    // Rename

    void renamedItem_isStamped()
    {
        m_clock->AddSeconds(77);
        QVERIFY(RenameItem(*m_library, m_branch, u"zweig"_s));
        QCOMPARE(Texts(*m_library, u"SELECT Title FROM Items WHERE ID = %1"_s.arg(m_branch)), QStringList{u"zweig"_s});
        QCOMPARE(m_library->QueryValue(u"SELECT LastChanged FROM Items WHERE ID = ?"_s, {m_branch}).ToDate(),
                 m_clock->Now());
    }

    void renameThatCannotBe_isReported()
    {
        const QStringList before = AllItems();
        m_clock->AddSeconds(77);
        ScriptedPrompts prompts;
        prompts.ExpectError();
        QVERIFY(!RenameItem(*m_library, 4711, u"x"_s));
        prompts.ExpectError();
        QVERIFY(!RenameItem(*m_library, m_top, QString(256, u'x')));
        QCOMPARE(AllItems(), before);
    }

    // Move

    void movedItem_takesItsBranchAlongAndIsStamped()
    {
        m_clock->AddSeconds(77);
        MoveItem(*m_library, m_branch, m_aside);
        QCOMPARE(ParentOf(m_branch), m_aside);
        QCOMPARE(ParentOf(m_leaf1), m_branch);
        QCOMPARE(m_library->QueryValue(u"SELECT LastChanged FROM Items WHERE ID = ?"_s, {m_branch}).ToDate(),
                 m_clock->Now());
        QCOMPARE(m_library->QueryValue(u"SELECT LastChanged FROM Items WHERE ID = ?"_s, {m_leaf1}).ToDate(),
                 FixedClock().Now());
    }

    void itemMovedToTheRoot_hasNoParent()
    {
        MoveItem(*m_library, m_leaf1, 0);
        QCOMPARE(ParentOf(m_leaf1), 0);
    }

    void moveThatCannotBe_isRefused_data()
    {
        QTest::addColumn<QString>("item");
        QTest::addColumn<QString>("parent");
        QTest::addColumn<int>("number");
        QTest::addColumn<QString>("message");
        QTest::newRow("on itself") << u"branch"_s << u"branch"_s << int(ErrorNumber::NodeCycle)
                                   << u"The item %1 can't be moved below itself; nothing was changed."_s;
        QTest::newRow("below itself") << u"branch"_s << u"leaf 1"_s << int(ErrorNumber::NodeCycle)
                                      << u"The item %1 can't be moved below itself; nothing was changed."_s;
        QTest::newRow("missing parent") << u"branch"_s << u"4711"_s << int(ErrorNumber::ItemNotFound)
                                        << u"There is no item 4711 in the library; nothing was changed."_s;
        QTest::newRow("missing item") << u"4711"_s << u"top"_s << int(ErrorNumber::ItemNotFound)
                                      << u"There is no item 4711 in the library; nothing was changed."_s;
        QTest::newRow("reserved place")
            << u"Orphaned Items"_s << QString() << int(ErrorNumber::ValueNotAllowed)
            << u"You can't create an 'Orphaned Items' folder! This name is reserved for the program."_s;
    }
    void moveThatCannotBe_isRefused()
    {
        QFETCH(QString, item);
        QFETCH(QString, parent);
        QFETCH(int, number);
        QFETCH(QString, message);
        AddItem(*m_library, m_aside, OrphanedItemsTitle);
        const auto id = [this](const QString& title) {
            const Value found = m_library->QueryValue(u"SELECT ID FROM Items WHERE Title = ?"_s, {title});
            return found.IsNull() ? title.toLongLong() : found.ToLong();
        };
        const QStringList before = AllItems();
        m_clock->AddSeconds(1);
        try {
            MoveItem(*m_library, id(item), id(parent));
            QFAIL("was moved");
        } catch (const RuntimeError& error) {
            QCOMPARE(error.Number(), long(number));
            QCOMPARE(error.Description(), message.contains(u'%') ? message.arg(id(item)) : message);
        }
        QCOMPARE(AllItems(), before);
    }

    void reservedTitle_isFreeBelowTheRoot()
    {
        const qint64 orphans = AddItem(*m_library, m_aside, OrphanedItemsTitle);
        MoveItem(*m_library, orphans, m_top);
        QCOMPARE(ParentOf(orphans), m_top);
        RefuseReservedTitle(OrphanedItemsTitle, m_top);
        RefuseReservedTitle(u"orphaned items"_s, 0); // only the exact name
        QB_VERIFY_RAISES(RefuseReservedTitle(OrphanedItemsTitle, 0), ErrorNumber::ValueNotAllowed);
    }

    void itemOfABrokenCycle_isMovedOutOfIt()
    {
        SetParent(m_branch, m_leaf1); // branch and leaf 1 stand below each other
        MoveItem(*m_library, m_branch, m_aside);
        QCOMPARE(ParentOf(m_branch), m_aside);
        QCOMPARE(ParentOf(m_leaf1), m_branch);
    }
};

QB_TEST_MAIN(TestItemBranch)
#include "tst_item_branch.moc"
