#include "removed/Keeping.h"
#include "removed/RemovedReturn.h"
#include "support/FolderContents.h"
#include "support/LibraryBuilder.h"
#include "support/LibraryState.h"
#include "support/ScriptedPrompts.h"
#include "support/TestRun.h"
#include "web/ItemPages.h"

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// What a user deletes is kept; what can't be kept is not deleted without a question.
class TestKeeping : public QObject {
    Q_OBJECT

    std::optional<TemporaryHome> m_home;
    std::optional<FixedClock> m_clock;
    std::optional<ScriptedPrompts> m_prompts;
    std::unique_ptr<Library> m_library;
    qint64 m_top = 0, m_inner = 0, m_file = 0;

    QString Path() const { return m_home->Path(u"net ä.qbd"_s); }
    void Delete(qint64 item)
    {
        Kept(*m_library, RemovalKind::DeletedByUser, u"Items deleted"_s,
             [&](Keeping& keeping) { DeleteItem(*m_library, item, keeping); });
    }
    QStringList Titles() const
    {
        QStringList titles;
        const RemovedList list(Path());
        for (const ListedEvent& event : list.Events()) {
            for (const RemovedEntry& entry : event.Index.Entries)
                titles << entry.Title;
        }
        return titles;
    }
    /// Nothing can be kept from now on.
    void BlockFolder() { WriteFile(RemovedFolderOf(Path()) + u".library"_s, "somebody\n"); }

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_home.emplace();
        m_clock.emplace();
        m_prompts.emplace();
        m_library = MakeLibrary(Path());
        m_top = AddItem(*m_library, 0, u"top"_s, u"int top;"_s);
        m_inner = AddItem(*m_library, m_top, u"inner"_s);
        m_file = AddStoredFile(*m_library, m_inner, u"a.bin"_s, "contents", Date::FromParts(2020, 1, 2));
    }
    void cleanup()
    {
        m_library.reset();
        m_prompts.reset();
        m_clock.reset();
        m_home.reset();
    }

    void deletedBranch_isKept()
    {
        Delete(m_top);
        QCOMPARE(CountOf(*m_library, u"Items"_s), qint64(0));
        QCOMPARE(Titles(), (QStringList{u"top"_s, u"inner"_s}));
        const RemovedList list(Path());
        ReturnRemoved(*m_library, list, list.Find({}).front());
        QCOMPARE(Texts(*m_library, u"SELECT ID FROM Items WHERE ParentID = ?"_s, {m_top}),
                 QStringList{QString::number(m_inner)});
    }

    void itemsThatWaitedForRemoval_areKept()
    {
        m_library->Execute(u"UPDATE Items SET LastChanged = 0 WHERE ID = ?"_s, {m_top});
        Kept(*m_library, RemovalKind::RemoveAllDeleted, {},
             [&](Keeping& keeping) { RemoveItemsMarkedForDelete(*m_library, {}, keeping); });
        QCOMPARE(Titles(), QStringList{u"top"_s}); // what stood below it is an orphan
        QVERIFY(RemovedList(Path()).Events().front().Name.endsWith(u"deleted items removed"));
    }

    void storedFiles_areKeptTogether()
    {
        const qint64 other = AddStoredFile(*m_library, m_top, u"b.bin"_s, "b", Date::FromParts(2020, 1, 2));
        DeleteStoredFiles(*m_library, {m_file, other});
        QCOMPARE(CountOf(*m_library, u"Files"_s), qint64(0));
        QCOMPARE(StoredNames(m_library->FilesFolder()), QStringList());
        QCOMPARE(Titles(), (QStringList{u"inner"_s, u"top"_s}));
    }

    void pages_areKeptWhenTheyGoOrAreOverwritten()
    {
        const QString page = m_home->Path(u"p.htm"_s);
        WriteFile(page, "<p>one</p>");
        SetPage(*m_library, m_top, page, {});
        QCOMPARE(Titles(), QStringList()); // there was none before
        WriteFile(page, "<p>two</p>");
        SetPage(*m_library, m_top, page, {});
        QCOMPARE(RemovedList(Path()).Events().front().Index.Header.Kind, RemovalKind::Overwritten);
        DeletePage(*m_library, m_top);
        QCOMPARE(Titles().size(), 2);
        const RemovedList list(Path());
        ReturnRemoved(*m_library, list, list.Find({}).front());
        QCOMPARE(ReadPage(*m_library, m_top), "<p>two</p>"_ba);
    }

    void failedDeletion_keepsNothing()
    {
        const auto fail = [&](Keeping& keeping) {
            Transaction transaction(*m_library);
            keeping.Take(*m_library, {m_top});
            keeping.Note();
            throw RuntimeError(ErrorNumber::Engine, u"refused"_s, {});
        };
        QB_VERIFY_RAISES(Kept(*m_library, RemovalKind::DeletedByUser, {}, fail), ErrorNumber::Engine);
        QCOMPARE(Titles(), QStringList());
        QCOMPARE(ContentsOf(RemovedFolderOf(Path())).keys(), QStringList{u".library"_s});
    }

    void whatCantBeKept_goesOnlyIfTheUserSaysSo()
    {
        BlockFolder();
        const QMap<QString, QByteArray> before = StateOf(Path());
        m_prompts->ExpectMsgBox(u"Removed Items"_s, MsgBoxResult::No);
        QB_VERIFY_RAISES(Delete(m_top), ErrorNumber::PathAccess);
        QCOMPARE(DifferenceOf(StateOf(Path()), before), QString());
        m_prompts->ExpectMsgBox(u"Removed Items"_s, MsgBoxResult::Yes);
        Delete(m_top);
        QCOMPARE(CountOf(*m_library, u"Items"_s), qint64(0));
    }
};

QB_TEST_MAIN(TestKeeping)
#include "tst_keeping.moc"
