#include "store/Bookmarks.h"
#include "store/CBookmark.h"
#include "store/ItemStatus.h"
#include "support/LibraryBuilder.h"
#include "support/ScriptedPrompts.h"
#include "support/TestRun.h"

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// Bookmarks and their groups as rows of a library.
class TestBookmark : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_home = std::make_unique<TemporaryHome>();
        m_prompts = std::make_unique<ScriptedPrompts>();
        m_library = MakeLibrary(m_home->Path(u"Büch erei.qbd"_s), LanguageType::None);
        m_item = AddItem(*m_library, 0, u"item"_s);
        m_group = AddBookmarkGroup(*m_library, u"mine"_s);
    }
    void cleanup()
    {
        m_library.reset();
        m_prompts.reset();
        m_home.reset();
    }

    // The object

    void newBookmark_isARow()
    {
        CBookmark bookmark;
        bookmark.Initialise(*m_library, {});
        QCOMPARE(bookmark.State(), RecordState::New);
        bookmark.SetCodeItemKey(QString::number(m_item));
        bookmark.SetDescription(u"why\r\nnot"_s);
        bookmark.SetGroupNo(m_group);
        QCOMPARE(CountOf(*m_library, u"Bookmarks"_s), 0);
        QVERIFY(bookmark.Commit());
        QCOMPARE(bookmark.State(), RecordState::Clean);
        QCOMPARE(Texts(*m_library, u"SELECT ID || '|' || CodeID || '|' || BookmarkGroup || '|' || Description FROM "
                                   "Bookmarks"_s),
                 QStringList{u"%1|%2|%3|why\r\nnot"_s.arg(bookmark.Key()).arg(m_item).arg(m_group)});
    }

    void storedBookmark_readsItsRow()
    {
        const qint64 id = Make(u"text"_s);
        CBookmark bookmark;
        bookmark.Initialise(*m_library, QString::number(id));
        QCOMPARE(bookmark.Key(), QString::number(id));
        QCOMPARE(bookmark.CodeItemKey(), QString::number(m_item));
        QCOMPARE(bookmark.Description(), u"text"_s);
        QCOMPARE(bookmark.GroupNo(), m_group);
        QCOMPARE(bookmark.CodeItem().Title(), u"item"_s);
        QCOMPARE(bookmark.State(), RecordState::Clean);
    }

    void codeItem_followsItsKey()
    {
        const qint64 other = AddItem(*m_library, 0, u"other"_s);
        CBookmark bookmark;
        bookmark.Initialise(*m_library, QString::number(Make({})));
        QCOMPARE(bookmark.CodeItem().Title(), u"item"_s);
        CCodeItem item;
        item.Initialise(*m_library, QString::number(other));
        bookmark.SetCodeItem(item);
        QCOMPARE(bookmark.CodeItem().Title(), u"other"_s);
        QCOMPARE(bookmark.CodeItemKey(), QString::number(other));
    }

    void change_isWrittenByCommitOnly()
    {
        const qint64 id = Make(u"before"_s);
        CBookmark bookmark;
        bookmark.Initialise(*m_library, QString::number(id));
        bookmark.SetDescription(u"after"_s);
        QCOMPARE(bookmark.State(), RecordState::Edited);
        QCOMPARE(Described(id), u"before"_s);
        m_library->Execute(u"UPDATE Bookmarks SET CodeID = 77"_s); // what others write to the rest of the row stays
        QVERIFY(bookmark.Commit());
        QCOMPARE(bookmark.State(), RecordState::Clean);
        QCOMPARE(Described(id), u"after"_s);
        QCOMPARE(m_library->QueryValue(u"SELECT CodeID FROM Bookmarks"_s).ToLong(), 77);
    }

    void unchangedBookmark_writesNothing()
    {
        const qint64 id = Make(u"before"_s);
        CBookmark bookmark;
        bookmark.Initialise(*m_library, QString::number(id));
        QCOMPARE(bookmark.Description(), u"before"_s);
        m_library->Execute(u"UPDATE Bookmarks SET Description = 'theirs'"_s);
        QVERIFY(bookmark.Commit());
        QCOMPARE(Described(id), u"theirs"_s);
    }

    void deletion_isWrittenByCommitOnly()
    {
        CBookmark bookmark;
        bookmark.Initialise(*m_library, QString::number(Make({})));
        bookmark.Delete();
        QCOMPARE(bookmark.State(), RecordState::MarkedForDelete);
        QCOMPARE(CountOf(*m_library, u"Bookmarks"_s), 1);
        QVERIFY(bookmark.Commit());
        QCOMPARE(bookmark.State(), RecordState::Deleted);
        QCOMPARE(CountOf(*m_library, u"Bookmarks"_s), 0);
        QVERIFY(bookmark.Commit()); // of what is gone
        QCOMPARE(bookmark.State(), RecordState::Deleted);
    }

    void deletedBookmark_takesNoProperty_data()
    {
        QTest::addColumn<bool>("committed");
        QTest::addColumn<QString>("text");
        QTest::addColumn<qint64>("number");
        QTest::newRow("to be deleted") << false << u"This Record is About to be deleted"_s
                                       << qint64(ErrorNumber::RecordAboutToBeDeleted);
        QTest::newRow("deleted") << true << u"This record has been deleted"_s
                                 << qint64(ErrorNumber::RecordHasBeenDeleted);
    }
    void deletedBookmark_takesNoProperty()
    {
        QFETCH(bool, committed);
        CBookmark bookmark;
        bookmark.Initialise(*m_library, QString::number(Make({})));
        bookmark.Delete();
        if (committed)
            QVERIFY(bookmark.Commit());
        const std::function<void()> lets[] = {[&] { bookmark.SetCodeItemKey(u"1"_s); },
                                              [&] { bookmark.SetDescription(u"x"_s); },
                                              [&] { bookmark.SetGroupNo(1); }};
        for (const auto& let : lets) {
            try {
                let();
                QFAIL("no error was raised");
            } catch (const RuntimeError& error) {
                QTEST(error.Description(), "text");
                QTEST(qint64(error.Number()), "number");
                QCOMPARE(error.Source(), u"CBookmark::SetStateForLet"_s);
            }
        }
    }

    void bookmarkThatAnotherProgramHasRemoved_isDeletedAllTheSame()
    {
        CBookmark bookmark;
        bookmark.Initialise(*m_library, QString::number(Make({})));
        m_library->Execute(u"DELETE FROM Bookmarks"_s);
        bookmark.Delete();
        QVERIFY(bookmark.Commit());
    }

    void bookmarkThatCantBeWritten_isReportedAndLeavesNoRow_data()
    {
        QTest::addColumn<qint64>("item");
        QTest::addColumn<qint64>("group");
        QTest::addColumn<int>("length");
        QTest::newRow("no item") << qint64(99) << qint64(1) << 1;
        QTest::newRow("no group") << qint64(1) << qint64(0) << 1;
        QTest::newRow("too long") << qint64(1) << qint64(1) << CBookmark::LongestDescription + 1;
    }
    void bookmarkThatCantBeWritten_isReportedAndLeavesNoRow()
    {
        QFETCH(qint64, item);
        QFETCH(qint64, group);
        QFETCH(int, length);
        CBookmark bookmark;
        bookmark.Initialise(*m_library, {});
        bookmark.SetCodeItemKey(QString::number(item));
        bookmark.SetGroupNo(group);
        bookmark.SetDescription(QString(length, u'ä'));
        m_prompts->ExpectError();
        QVERIFY(!bookmark.Commit());
        QCOMPARE(bookmark.State(), RecordState::New);
        QCOMPARE(CountOf(*m_library, u"Bookmarks"_s), 0);
    }

    void longestDescription_isWritten()
    {
        const QString text(CBookmark::LongestDescription, u'ä');
        QCOMPARE(Described(Make(text)), text);
    }

    // Lists

    void bookmarks_areReadInTheirOrderWithTheTitlesOfTheirItems()
    {
        const qint64 other = AddItem(*m_library, 0, u"a title before"_s);
        m_library->Execute(u"INSERT INTO Bookmarks (CodeID, BookmarkGroup, Description) VALUES (?, ?, 'second')"_s,
                           {other, m_group});
        Make(u"first made last"_s);
        m_library->Execute(u"INSERT INTO Bookmarks (CodeID, BookmarkGroup) VALUES (99, ?)"_s, {m_group});
        QStringList texts;
        for (const BookmarkRow& row : ReadBookmarks(*m_library))
            texts << u"%1 %2 %3 %4 %5"_s.arg(row.Id).arg(row.Item).arg(row.Title).arg(row.Group).arg(row.Description);
        QCOMPARE(texts, (QStringList{u"1 2 a title before 1 second"_s, u"2 1 item 1 first made last"_s}));
    }

    void description_isShownInOneLine()
    {
        QCOMPARE(BookmarkInOneLine(u"a\r\nb\r\n\r\nc"_s), u"a b  c"_s);
        QCOMPARE(BookmarkInOneLine(u"a\nb\rc"_s), u"a b c"_s);
    }

    // Groups

    void group_isFoundWhateverTheCaseOfItsLetters()
    {
        const qint64 id = AddBookmarkGroup(*m_library, u"  Ähn  lich "_s);
        QCOMPARE(FindBookmarkGroup(*m_library, u"ähn lich"_s), id);
        QCOMPARE(FindBookmarkGroup(*m_library, u"ahn lich"_s), 0);
        QCOMPARE(Groups(), (QStringList{u"mine"_s, u"Ähn lich"_s}));
    }

    void groupName_isRefusedWhereItCantBe_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<int>("number");
        QTest::newRow("empty") << QString() << int(ErrorNumber::ValueNotAllowed);
        QTest::newRow("blanks") << u" \t "_s << int(ErrorNumber::ValueNotAllowed);
        QTest::newRow("too long") << QString(LongestGroupName + 1, u'x') << int(ErrorNumber::ValueNotAllowed);
        QTest::newRow("known") << u"MINE"_s << int(ErrorNumber::KeyExists);
    }
    void groupName_isRefusedWhereItCantBe()
    {
        QFETCH(QString, name);
        QFETCH(int, number);
        const qint64 other = AddBookmarkGroup(*m_library, QString(LongestGroupName, u'y'));
        QB_VERIFY_RAISES(AddBookmarkGroup(*m_library, name), number);
        QB_VERIFY_RAISES(RenameBookmarkGroup(*m_library, other, name), number);
        QCOMPARE(Groups(), (QStringList{u"mine"_s, QString(LongestGroupName, u'y')}));
    }

    void group_isRenamedAlsoInItsCase()
    {
        RenameBookmarkGroup(*m_library, m_group, u"Mine"_s);
        QCOMPARE(Groups(), QStringList{u"Mine"_s});
        QB_VERIFY_RAISES(RenameBookmarkGroup(*m_library, 99, u"other"_s), ErrorNumber::RecordDeleted);
    }

    void removedGroup_takesItsBookmarksAlong()
    {
        Make({});
        RemoveBookmarkGroup(*m_library, m_group);
        QCOMPARE(Groups(), QStringList());
        QCOMPARE(CountOf(*m_library, u"Bookmarks"_s), 0);
    }

    // The status of items

    void status_hasItsWord()
    {
        for (const ItemStatusName& row : ItemStatusNames()) {
            QCOMPARE(StatusNamed(QString::fromLatin1(row.Name)), std::optional(row.Status));
            QCOMPARE(NameOfStatus(qint32(row.Status)),
                     row.Status == ItemStatus::None ? QString() : QString::fromLatin1(row.Name));
        }
        QCOMPARE(StatusNamed(u"TESTED"_s), std::optional(ItemStatus::TestedOK));
        QVERIFY(!StatusNamed(u"good"_s));
        QCOMPARE(NameOfStatus(77), QString());
    }

private:
    qint64 Make(const QString& description)
    {
        CBookmark bookmark;
        bookmark.Initialise(*m_library, {});
        bookmark.SetCodeItemKey(QString::number(m_item));
        bookmark.SetGroupNo(m_group);
        bookmark.SetDescription(description);
        bookmark.Commit();
        return bookmark.Key().toLongLong();
    }
    QString Described(qint64 id)
    {
        return m_library->QueryValue(u"SELECT Description FROM Bookmarks WHERE ID = ?"_s, {id}).ToText();
    }
    QStringList Groups()
    {
        QStringList names;
        for (const BookmarkGroup& group : ReadBookmarkGroups(*m_library))
            names << group.Name;
        return names;
    }

    std::unique_ptr<TemporaryHome> m_home;
    std::unique_ptr<ScriptedPrompts> m_prompts;
    std::unique_ptr<Library> m_library;
    qint64 m_item = 0;
    qint64 m_group = 0;
};

QB_TEST_MAIN(TestBookmark)
#include "tst_bookmark.moc"
