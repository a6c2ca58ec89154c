#include "panels/BookmarkDraft.h"
#include "panels/BookmarkList.h"
#include "panels/LibraryFacts.h"
#include "support/LibraryBuilder.h"
#include "support/ScriptedPrompts.h"
#include "support/TestRun.h"

#include <QMimeData>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// What the commands of the list of bookmarks do, how a bookmark is made, and the facts of a library.
class TestBookmarkList : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_home = std::make_unique<TemporaryHome>();
        m_prompts = std::make_unique<ScriptedPrompts>();
        m_library = MakeLibrary(m_home->Path(u"Büch erei.qbd"_s), LanguageType::None);
        m_item = AddItem(*m_library, 0, u"item"_s);
        m_list = std::make_unique<BookmarkList>();
    }
    void cleanup()
    {
        m_list.reset();
        m_library.reset();
        m_prompts.reset();
        m_home.reset();
    }

    // The list

    void library_isReadAndLeft()
    {
        const qint64 bookmark = Make(u"g"_s);
        m_list->Initialise(*m_library);
        QCOMPARE(m_list->Rows().BookmarkAt(m_list->Rows().FindBookmark(m_item)), bookmark);
        m_list->Terminate();
        QCOMPARE(m_list->Rows().rowCount(), 0);
        m_list->Refresh();
        QVERIFY(!m_list->RemoveBookMark(bookmark));
        m_list->RemoveAllBookmarks();
        m_list->RenameGroup(1);
        m_list->RemoveGroup(1);
        m_list->MoveToGroup(bookmark, 1);
        QCOMPARE(CountOf(*m_library, u"Bookmarks"_s), 1);
    }

    void bookmark_isRemovedWithoutAQuestion()
    {
        const qint64 first = Make(u"g"_s);
        const qint64 second = Make(u"g"_s);
        m_list->Initialise(*m_library);
        QVERIFY(m_list->RemoveBookMark(first));
        QCOMPARE(Texts(*m_library, u"SELECT ID FROM Bookmarks"_s), QStringList{QString::number(second)});
        QCOMPARE(m_list->Rows().BookmarkCount(), 1);
        QVERIFY(!m_list->RemoveBookMark(0));
        QCOMPARE(CountOf(*m_library, u"Bookmarks"_s), 1);
    }

    void allBookmarks_areRemovedAfterAQuestion()
    {
        Make(u"g"_s);
        Make(u"h"_s);
        m_list->Initialise(*m_library);
        m_prompts->ExpectMsgBox(u"Delete ALL bookmarks?"_s, MsgBoxResult::No);
        m_list->RemoveAllBookmarks();
        const Message& question = m_prompts->Messages.first();
        QCOMPARE(question.Text, u"Do you really want to remove ALL bookmarks from the list?"_s);
        QCOMPARE(question.Icon, MsgBoxIcon::Question);
        QCOMPARE(question.Buttons, MsgBoxButtons::YesNo);
        QCOMPARE(CountOf(*m_library, u"Bookmarks"_s), 2);
        m_prompts->ExpectMsgBox(u"Delete ALL bookmarks?"_s, MsgBoxResult::Yes);
        m_list->RemoveAllBookmarks();
        QCOMPARE(CountOf(*m_library, u"Bookmarks"_s), 0);
        QCOMPARE(m_list->Rows().BookmarkCount(), 0);
        QCOMPARE(m_list->Rows().rowCount(), 2); // the groups stay
    }

    void removalOfAllThatFails_removesNone()
    {
        Make(u"g"_s);
        const qint64 second = Make(u"g"_s);
        m_library->Execute(u"CREATE TABLE Holder (Held REFERENCES Bookmarks (ID))"_s);
        m_library->Execute(u"INSERT INTO Holder VALUES (?)"_s, {second});
        m_list->Initialise(*m_library);
        m_prompts->ExpectMsgBox(u"Delete ALL bookmarks?"_s, MsgBoxResult::Yes);
        m_prompts->ExpectError(); // of the row
        m_prompts->ExpectError(); // of the whole
        m_list->RemoveAllBookmarks();
        QCOMPARE(CountOf(*m_library, u"Bookmarks"_s), 2);
        QCOMPARE(m_list->Rows().BookmarkCount(), 2);
    }

    void bookmark_isMovedToAnotherGroup()
    {
        const qint64 bookmark = Make(u"g"_s);
        const qint64 other = AddBookmarkGroup(*m_library, u"h"_s);
        m_list->Initialise(*m_library);
        m_list->MoveToGroup(bookmark, other);
        QCOMPARE(m_library->QueryValue(u"SELECT BookmarkGroup FROM Bookmarks"_s).ToLong(), other);
        QCOMPARE(m_list->Rows().GroupAt(m_list->Rows().FindBookmark(m_item)), other);
    }

    void bookmarkDroppedOnAGroup_goesThere()
    {
        Make(u"g"_s);
        const qint64 other = AddBookmarkGroup(*m_library, u"h"_s);
        m_list->Initialise(*m_library);
        BookmarkTree& rows = m_list->Rows();
        const std::unique_ptr<QMimeData> data(rows.mimeData({rows.FindBookmark(m_item)}));
        QVERIFY(
            rows.dropMimeData(data.get(), Qt::MoveAction, -1, -1, rows.IndexOfKey(BookmarkTree::KeyOfGroup(other))));
        QCOMPARE(m_library->QueryValue(u"SELECT BookmarkGroup FROM Bookmarks"_s).ToLong(), other);
        QCOMPARE(rows.GroupAt(rows.FindBookmark(m_item)), other);
    }

    void group_isRenamedByWhatIsTyped()
    {
        Make(u"old"_s);
        m_list->Initialise(*m_library);
        m_prompts->ExpectInputBox(u"Rename Bookmark Group"_s, std::nullopt);
        m_list->RenameGroup(1);
        QCOMPARE(m_prompts->InputPresets, QStringList{u"old"_s});
        m_prompts->ExpectInputBox(u"Rename Bookmark Group"_s, u"new"_s);
        m_list->RenameGroup(1);
        QCOMPARE(m_list->Rows().index(0, 0).data().toString(), u"new (1)"_s);
        AddBookmarkGroup(*m_library, u"third"_s);
        m_prompts->ExpectInputBox(u"Rename Bookmark Group"_s, u"THIRD"_s);
        m_prompts->ExpectError();
        m_list->RenameGroup(1);
        QCOMPARE(Texts(*m_library, u"SELECT \"Group\" FROM BookmarkGroups"_s), (QStringList{u"new"_s, u"third"_s}));
    }

    void group_isRemovedAfterAQuestionWhereItHasBookmarks()
    {
        Make(u"full"_s);
        const qint64 empty = AddBookmarkGroup(*m_library, u"empty"_s);
        m_list->Initialise(*m_library);
        m_list->RemoveGroup(empty);
        QCOMPARE(CountOf(*m_library, u"BookmarkGroups"_s), 1);
        m_prompts->ExpectMsgBox(u"Remove Bookmark Group"_s, MsgBoxResult::No);
        m_list->RemoveGroup(1);
        QCOMPARE(m_prompts->Messages.last().Text,
                 u"Do you really want to remove the group 'full' with its bookmark?"_s);
        QCOMPARE(m_prompts->Messages.last().Default, std::optional(MsgBoxResult::No));
        QCOMPARE(CountOf(*m_library, u"Bookmarks"_s), 1);
        Make(u"full"_s);
        m_list->Refresh();
        m_prompts->ExpectMsgBox(u"Remove Bookmark Group"_s, MsgBoxResult::Yes);
        m_list->RemoveGroup(1);
        QCOMPARE(m_prompts->Messages.last().Text,
                 u"Do you really want to remove the group 'full' with its 2 bookmarks?"_s);
        QCOMPARE(CountOf(*m_library, u"Bookmarks"_s) + CountOf(*m_library, u"BookmarkGroups"_s), 0);
        QCOMPARE(m_list->Rows().rowCount(), 0);
    }

    // A new bookmark

    void draft_offersTheGroupsInTheirOrder()
    {
        AddBookmarkGroup(*m_library, u"z"_s);
        AddBookmarkGroup(*m_library, u"a"_s);
        BookmarkDraft draft(*m_library, m_item);
        QCOMPARE(draft.Title(), u"item"_s);
        QCOMPARE(draft.Groups(), (QStringList{u"z"_s, u"a"_s}));
        QCOMPARE(draft.GroupIndex(), -1);
        draft.SelectGroup(2);
        QCOMPARE(draft.GroupIndex(), 1);
        draft.SelectGroup(9);
        QCOMPARE(draft.GroupIndex(), -1);
    }

    void knownGroup_isChosenWithoutAQuestion()
    {
        AddBookmarkGroup(*m_library, u"Mine"_s);
        BookmarkDraft draft(*m_library, m_item);
        QVERIFY(draft.cboGroups_Validate(u" mine "_s));
        QCOMPARE(draft.GroupIndex(), 0);
        QVERIFY(draft.cboGroups_Validate(QString())); // emptied again
        QCOMPARE(draft.GroupIndex(), -1);
    }

    void newGroup_isAskedAbout()
    {
        BookmarkDraft draft(*m_library, m_item);
        m_prompts->ExpectMsgBox(u"Group item not found"_s, MsgBoxResult::No);
        QVERIFY(!draft.cboGroups_Validate(u"it's new"_s));
        const Message& question = m_prompts->Messages.first();
        QCOMPARE(question.Text, u"Do you wish to add a new bookmark group 'it's new' to the database?"_s);
        QCOMPARE(question.Icon, MsgBoxIcon::Question);
        QCOMPARE(question.Buttons, MsgBoxButtons::YesNo);
        QCOMPARE(CountOf(*m_library, u"BookmarkGroups"_s), 0);
        m_prompts->ExpectMsgBox(u"Group item not found"_s, MsgBoxResult::Yes);
        QVERIFY(draft.cboGroups_Validate(u"it's new"_s));
        QCOMPARE(Texts(*m_library, u"SELECT \"Group\" FROM BookmarkGroups"_s), QStringList{u"it's new"_s});
        QCOMPARE(draft.Groups(), QStringList{u"it's new"_s});
        QCOMPARE(draft.GroupIndex(), 0);
        QVERIFY(draft.cboGroups_Validate(u"it's new"_s)); // known now
    }

    void groupThatAnotherProgramHasAdded_isTaken()
    {
        BookmarkDraft draft(*m_library, m_item);
        const qint64 theirs = AddBookmarkGroup(*m_library, u"Theirs"_s);
        m_prompts->ExpectMsgBox(u"Group item not found"_s, MsgBoxResult::Yes);
        QVERIFY(draft.cboGroups_Validate(u"theirs"_s));
        QCOMPARE(draft.Group(), theirs);
        QCOMPARE(CountOf(*m_library, u"BookmarkGroups"_s), 1);
    }

    void bookmarkWithoutAGroup_isNotMade()
    {
        AddBookmarkGroup(*m_library, u"g"_s);
        BookmarkDraft draft(*m_library, m_item);
        m_prompts->ExpectMsgBox(u"No group selected"_s);
        QVERIFY(!draft.cmdOK_Click(QString(), u"text"_s));
        QCOMPARE(m_prompts->Messages.first().Text, u"You have to select a group for the bookmark."_s);
        QCOMPARE(m_prompts->Messages.first().Icon, MsgBoxIcon::Information);
        QCOMPARE(CountOf(*m_library, u"Bookmarks"_s), 0);
    }

    void bookmark_isWritten()
    {
        AddBookmarkGroup(*m_library, u"g"_s);
        BookmarkDraft draft(*m_library, m_item);
        QVERIFY(draft.IsNew());
        QVERIFY(draft.cmdOK_Click(u"g"_s, u"a\nb"_s));
        QCOMPARE(Texts(*m_library, u"SELECT ID || ' ' || CodeID || ' ' || BookmarkGroup || ' ' || Description FROM "
                                   "Bookmarks"_s),
                 QStringList{u"%1 %2 1 a\r\nb"_s.arg(draft.Bookmark()).arg(m_item)});
    }

    void bookmarkOfADeletedItem_isNotMade()
    {
        AddBookmarkGroup(*m_library, u"g"_s);
        BookmarkDraft draft(*m_library, m_item);
        m_library->Execute(u"DELETE FROM Items"_s);
        m_prompts->ExpectError();
        QVERIFY(!draft.cmdOK_Click(u"g"_s, {}));
        QCOMPARE(CountOf(*m_library, u"Bookmarks"_s), 0);
    }

    void bookmarkThatIsThere_isChanged()
    {
        const qint64 bookmark = Make(u"g"_s, u"a\r\nb"_s);
        BookmarkDraft draft = BookmarkDraft::Of(*m_library, bookmark);
        QVERIFY(!draft.IsNew());
        QCOMPARE(draft.Title(), u"item"_s);
        QCOMPARE(draft.Text(), u"a\nb"_s);
        QCOMPARE(draft.GroupIndex(), 0);
        m_prompts->ExpectMsgBox(u"Group item not found"_s, MsgBoxResult::Yes);
        QVERIFY(draft.cmdOK_Click(u"h"_s, u"c"_s));
        QCOMPARE(Texts(*m_library, u"SELECT ID || ' ' || BookmarkGroup || ' ' || Description FROM Bookmarks"_s),
                 QStringList{u"%1 2 c"_s.arg(bookmark)});
    }

    // Facts

    void facts_areThoseOfTheLibrary()
    {
        const LibraryFacts facts = ReadLibraryFacts(*m_library);
        QCOMPARE(facts.Type, ReplicaType::None);
        QVERIFY(facts.LastSynchronized.IsNone());
        QCOMPARE(facts.Children, 0);
        QCOMPARE(facts.Size, QFileInfo(m_library->Name()).size());
    }

    void factsOfAReplica_tellItsPart()
    {
        const Date day = Date::FromParts(2026, 3, 2);
        const Date later = Date::FromParts(2026, 3, 5);
        MakeChild(*m_library, u"mother.qbd"_s, day);
        QCOMPARE(ReadLibraryFacts(*m_library).Type, ReplicaType::Child);
        QCOMPARE(ReadLibraryFacts(*m_library).LastSynchronized, day);
        m_library->Execute(u"UPDATE Properties SET LastExported = ?"_s, {later});
        QCOMPARE(ReadLibraryFacts(*m_library).LastSynchronized, later);
        MakeMother(*m_library, day);
        const LibraryFacts both = ReadLibraryFacts(*m_library);
        QCOMPARE(both.Type, ReplicaType::Mother);
        QCOMPARE(both.Children, 1);
        QCOMPARE(both.LastSynchronized, later);
    }

    void factsOfAMother_tellOfHerChildren()
    {
        MakeMother(*m_library, Date::FromParts(2026, 3, 2));
        m_library->Execute(u"INSERT INTO ChildCopies (DBCopyID, ShortDescr) VALUES ('Child00002', 'Lap top')"_s);
        const LibraryFacts facts = ReadLibraryFacts(*m_library);
        QCOMPARE(facts.Type, ReplicaType::Mother);
        QCOMPARE(facts.Children, 2);
        QCOMPARE(facts.LastSynchronized, Date::FromParts(2026, 3, 2));
    }

    void facts_haveTheirWords()
    {
        QCOMPARE(CaptionOf(ReplicaType::Mother), u"Mother Replica"_s);
        QCOMPARE(CaptionOf(ReplicaType::Child), u"Child Replica"_s);
        QCOMPARE(CaptionOf(ReplicaType::None), u"No Replication"_s);
        QCOMPARE(ToolTipOf(ReplicaType::Mother), u"The current database is 'Mother replica'"_s);
        QCOMPARE(ToolTipOf(ReplicaType::Child), u"The current database is a 'Child Replica'"_s);
        QCOMPARE(ToolTipOf(ReplicaType::None), u"This database has no replication set"_s);
        QCOMPARE(DayOrNever({}), u"Never"_s);
        QCOMPARE(DayOrNever(Date::FromParts(2026, 3, 2, 5)),
                 QLocale().toString(QDate(2026, 3, 2), QLocale::ShortFormat));
        QCOMPARE(SizeText(0), u"0 kB"_s);
        QCOMPARE(SizeText(1234 * 1024), u"1,234 kB"_s);
        QCOMPARE(SizeText(1234567 * 1024LL + 600), u"1,234,568 kB"_s);
    }

private:
    qint64 Make(const QString& group, const QString& text = {})
    {
        const qint64 known = FindBookmarkGroup(*m_library, group);
        CBookmark bookmark;
        bookmark.Initialise(*m_library, {});
        bookmark.SetCodeItemKey(QString::number(m_item));
        bookmark.SetGroupNo(known != 0 ? known : AddBookmarkGroup(*m_library, group));
        bookmark.SetDescription(text);
        bookmark.Commit();
        return bookmark.Key().toLongLong();
    }

    std::unique_ptr<TemporaryHome> m_home;
    std::unique_ptr<ScriptedPrompts> m_prompts;
    std::unique_ptr<Library> m_library;
    std::unique_ptr<BookmarkList> m_list;
    qint64 m_item = 0;
};

QB_TEST_MAIN(TestBookmarkList)
#include "tst_bookmark_list.moc"
