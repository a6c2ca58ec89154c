#include "store/CCodeItem.h"
#include "store/Library.h"
#include "support/ErrorRoutine.h"
#include "support/LibraryBuilder.h"
#include "support/ScriptedPrompts.h"
#include "support/TestRun.h"

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// What the commit of an item writes.
class TestCodeItemCommit : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<CCodeItem> Item(qint64 id)
    {
        auto item = std::make_unique<CCodeItem>();
        item->Initialise(*m_library, id == 0 ? QString() : QString::number(id));
        return item;
    }

    Value Column(const QString& column, qint64 id)
    {
        return m_library->QueryValue(u"SELECT %1 FROM Items WHERE ID = ?"_s.arg(Quoted(column)), {id});
    }

    /// All columns of a row, to see that nothing of it was touched.
    QStringList Row(qint64 id)
    {
        QStringList values;
        Statement row = m_library->Query(u"SELECT * FROM Items WHERE ID = ?"_s, {id});
        if (row.Step()) {
            for (int i = 0; i < row.ColumnCount(); ++i)
                values << row.Text(i);
        }
        return values;
    }

    qint64 Changes() { return m_library->QueryValue(u"SELECT total_changes()"_s).ToLong(); }

    static bool LogNames(const QByteArray& number, const QByteArray& procedure)
    {
        const QByteArray log = ReadFile(ErrorLogFile());
        return log.contains("  -  " + number + ", ") && log.contains(", CCodeItem, " + procedure + ", ");
    }

    /// A child last synchronized at @p own, a mother whose child was at @p childs, or both.
    void MakeReplica(Date own, Date childs)
    {
        if (!own.IsNone())
            MakeChild(*m_library, u"/Mütter/mother.qbd"_s, own);
        if (!childs.IsNone())
            MakeMother(*m_library, childs);
    }

    std::optional<TemporaryHome> m_home;
    std::optional<FixedClock> m_clock;
    std::unique_ptr<Library> m_library;
    qint64 m_id = 0;

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_home.emplace();
        m_clock.emplace();
        m_library = MakeLibrary(m_home->Path(u"commit ñ.qbd"_s), LanguageType::None);
        m_id = AddItem(*m_library, 0, u"Größe"_s, u"code"_s);
    }

    void cleanup()
    {
        m_library.reset();
        m_clock.reset();
        m_home.reset();
    }

    // Insert

    void newItem_getsARowAndItsKey()
    {
        const auto item = Item(0);
        item->SetTitle(u"Neues Stück"_s);
        const Date atInitialise = m_clock->Now();
        m_clock->AddSeconds(100);
        QVERIFY(item->Commit());
        QCOMPARE(item->State(), RecordState::Clean);
        QCOMPARE(item->Key(), QString::number(m_id + 1));
        QCOMPARE(Column(u"Title"_s, m_id + 1), Value(u"Neues Stück"_s));
        QCOMPARE(Column(u"Created"_s, m_id + 1).ToDate(), atInitialise);
        QCOMPARE(Column(u"LastChanged"_s, m_id + 1).ToDate(), atInitialise);
        QCOMPARE(Column(u"ParentID"_s, m_id + 1), Value(0));
    }

    void newItemThatWasChanged_isDatedByThat()
    {
        const auto item = Item(0);
        item->SetTitle(u"t"_s);
        m_clock->AddSeconds(100);
        item->SetItemChanged(true);
        QVERIFY(item->Commit());
        QCOMPARE(Column(u"LastChanged"_s, m_id + 1).ToDate(), m_clock->Now());
        QCOMPARE(Column(u"Created"_s, m_id + 1).ToDate().AddDays(0).Seconds() + 100, m_clock->Now().Seconds());
    }

    void everyProperty_comesBack_data()
    {
        QTest::addColumn<bool>("insert");
        QTest::newRow("insert") << true;
        QTest::newRow("update") << false;
    }
    void everyProperty_comesBack()
    {
        QFETCH(bool, insert);
        const Date page = Date::FromParts(2020, 2, 29, 23, 59, 59);
        const auto item = Item(insert ? 0 : m_id);
        item->SetTitle(u"Titel ⅓ 𝄞"_s);
        item->SetDescription(u"Beschreibung"_s);
        item->SetInfo(u"line 1\r\nline 2"_s);
        item->SetCode(u"{\\rtf1 code}"_s);
        item->SetNotes(u"{\\rtf1 notes}"_s);
        item->SetExample(u"{\\rtf1 usage}"_s);
        item->SetUser(u"Zoë"_s);
        item->SetHTMLPage(true);
        item->SetHTMLLastUpdated(page);
        item->SetItemStatus(-32768);
        item->SetItemRating(2147483647);
        item->SetCodeHeaders(31);
        item->SetUsageHeaders(255);
        item->SetParentKey(QString::number(insert ? m_id : 0));
        item->SetItemChanged(true);
        QVERIFY(item->Commit());

        const auto again = Item(item->Key().toLongLong());
        QCOMPARE(again->Title(), u"Titel ⅓ 𝄞"_s);
        QCOMPARE(again->Description(), u"Beschreibung"_s);
        QCOMPARE(again->Info(), u"line 1\r\nline 2"_s);
        QCOMPARE(again->Code(), u"{\\rtf1 code}"_s);
        QCOMPARE(again->Notes(), u"{\\rtf1 notes}"_s);
        QCOMPARE(again->Example(), u"{\\rtf1 usage}"_s);
        QCOMPARE(again->User(), u"Zoë"_s);
        QVERIFY(again->HTMLPage());
        QCOMPARE(again->HTMLLastUpdated(), page);
        QCOMPARE(again->ItemStatus(), -32768);
        QCOMPARE(again->ItemRating(), 2147483647);
        QCOMPARE(int(again->CodeHeaders()), 31);
        QCOMPARE(int(again->UsageHeaders()), 255);
        QCOMPARE(again->ParentKey(), QString::number(insert ? m_id : 0));
    }

    void textsLongerThanAChunk_comeBackWhole_data()
    {
        QTest::addColumn<int>("length");
        for (const int length : {16383, 16384, 16385, 3 * 16384 + 7})
            QTest::addRow("%d", length) << length;
    }
    void textsLongerThanAChunk_comeBackWhole()
    {
        QFETCH(int, length);
        QString text(length, u'ü');
        text.replace(qMin(16383, length - 2), 2, u"𝄞"_s); // two units on both sides of a chunk's end
        const auto item = Item(0);
        item->SetTitle(u"long"_s);
        item->SetCode(text);
        item->SetNotes(text + u'n');
        item->SetExample(text + u'e');
        QVERIFY(item->Commit());
        const auto again = Item(item->Key().toLongLong());
        QVERIFY(again->Code() == text);
        QVERIFY(again->Notes() == text + u'n');
        QVERIFY(again->Example() == text + u'e');
    }

    void newItemOfAChild_knowsItsMothersParentOnly()
    {
        MakeReplica(m_clock->Now(), {});
        m_library->Execute(u"UPDATE Items SET MotherRecordID = 77"_s);
        const auto item = Item(0);
        item->SetTitle(u"t"_s);
        item->SetParentKey(QString::number(m_id));
        QVERIFY(item->Commit());
        QCOMPARE(Column(u"MotherParentID"_s, m_id + 1), Value(77));
        QCOMPARE(Column(u"MotherRecordID"_s, m_id + 1), Value(-1));
    }

    void insertThatIsRefused_leavesNoRow()
    {
        const auto item = Item(0); // it has no title
        ScriptedPrompts prompts;
        prompts.ExpectError();
        QVERIFY(!item->Commit());
        QCOMPARE(prompts.Errors, QStringList{u"'Title' can't be empty; nothing was changed."_s});
        QVERIFY(LogNames("3315", "InsertObject"));
        QCOMPARE(item->State(), RecordState::New);
        QCOMPARE(item->Key(), QString());
        QCOMPARE(CountOf(*m_library, u"Items"_s), 1);
        item->SetTitle(u"now it has"_s);
        QVERIFY(item->Commit());
        QCOMPARE(CountOf(*m_library, u"Items"_s), 2);
    }

    // Update

    void writeWithoutItemChanged_persistsNothing()
    {
        const QStringList before = Row(m_id);
        const auto item = Item(m_id);
        item->SetTitle(u"other"_s);
        const qint64 changes = Changes();
        QVERIFY(item->Commit());
        QCOMPARE(Changes(), changes);
        QCOMPARE(Row(m_id), before);
        QCOMPARE(item->State(), RecordState::Clean);
    }

    void secondCommit_writesNothing()
    {
        const auto item = Item(m_id);
        item->SetTitle(u"other"_s);
        item->SetItemChanged(true);
        QVERIFY(item->Commit());
        QVERIFY(!item->ItemChanged());
        const qint64 changes = Changes();
        QVERIFY(item->Commit());
        QCOMPARE(Changes(), changes);
    }

    void changedItem_isStampedAndKeepsItsCreation()
    {
        const Date created = m_clock->Now();
        const auto item = Item(m_id);
        item->SetInfo(u"new"_s);
        item->SetCreated(Date::FromSeconds(1));
        m_clock->AddSeconds(3600);
        item->SetItemChanged(true);
        QVERIFY(item->Commit());
        QCOMPARE(Column(u"LastChanged"_s, m_id).ToDate(), m_clock->Now());
        QCOMPARE(Column(u"Created"_s, m_id).ToDate(), created);
        QCOMPARE(Column(u"Info"_s, m_id), Value(u"new"_s));
    }

    void itemThatWasNeverRead_keepsItsColumnsWhenStamped()
    {
        const QString code = Column(u"Code"_s, m_id).ToText();
        QVERIFY(!code.isEmpty());
        m_clock->AddSeconds(5);
        const auto item = Item(m_id);
        item->SetItemChanged(true);
        QVERIFY(item->Commit());
        QCOMPARE(Column(u"Title"_s, m_id), Value(u"Größe"_s));
        QCOMPARE(Column(u"Code"_s, m_id), Value(code));
        QCOMPARE(Column(u"LastChanged"_s, m_id).ToDate(), m_clock->Now());
    }

    void heldDate_isWrittenAsItWas()
    {
        const Date before = m_clock->Now();
        const auto item = Item(m_id);
        item->SetTitle(u"other"_s);
        m_clock->AddSeconds(3600);
        item->SetDontUpdateLastChangedDate(true);
        item->SetItemChanged(true);
        QVERIFY(item->Commit());
        QCOMPARE(Column(u"Title"_s, m_id), Value(u"other"_s));
        QCOMPARE(Column(u"LastChanged"_s, m_id).ToDate(), before);
    }

    void heldDateThatIsWrittenDirectly_isStored()
    {
        const auto item = Item(m_id);
        item->Title();
        item->SetDontUpdateLastChangedDate(true);
        item->SetLastChanged({});
        item->SetItemChanged(true);
        QVERIFY(item->Commit());
        QCOMPARE(Column(u"LastChanged"_s, m_id), Value(0));
    }

    void movedItemOfAChild_isWrittenWithItsMothersParent()
    {
        const qint64 parent = AddItem(*m_library, 0, u"parent"_s);
        MakeReplica(m_clock->Now(), {});
        m_library->Execute(u"UPDATE Items SET MotherRecordID = 77 WHERE ID = ?"_s, {parent});
        const auto item = Item(m_id);
        item->SetParentKey(QString::number(parent));
        item->SetItemChanged(true);
        QVERIFY(item->Commit());
        QCOMPARE(Column(u"ParentID"_s, m_id), Value(parent));
        QCOMPARE(Column(u"MotherParentID"_s, m_id), Value(77));
    }

    void childWithoutTheMothersColumns_isUpdatedAllTheSame()
    {
        MakeChild(*m_library, u"/m.qbd"_s, Date::FromSeconds(100));
        for (const QString& column : {u"MotherParentID"_s, u"MotherRecordID"_s}) {
            m_library->Execute(u"DROP INDEX Items_"_s + column);
            m_library->DeleteField(u"Items"_s, column);
        }
        const auto item = Item(m_id);
        item->SetTitle(u"other"_s);
        item->SetItemChanged(true);
        QVERIFY(item->Commit());
        QCOMPARE(Column(u"Title"_s, m_id), Value(u"other"_s));
    }

    void updateThatIsRefused_leavesTheRow_data()
    {
        QTest::addColumn<QString>("title");
        QTest::addColumn<int>("status");
        QTest::addColumn<QByteArray>("number");
        QTest::addColumn<QString>("message");
        QTest::newRow("status beyond 16 bits") << u"other"_s << 40000 << QByteArray("6")
                                               << u"The value of 'ItemStatus' is out of range; nothing was changed."_s;
        QTest::newRow("long title") << QString(256, u'ä') << 0 << QByteArray("3163")
                                    << u"'Title' is too long; nothing was changed."_s;
        QTest::newRow("empty title") << QString() << 0 << QByteArray("3315")
                                     << u"'Title' can't be empty; nothing was changed."_s;
    }
    void updateThatIsRefused_leavesTheRow()
    {
        QFETCH(QString, title);
        QFETCH(int, status);
        QFETCH(QByteArray, number);
        QFETCH(QString, message);
        const QStringList before = Row(m_id);
        const auto item = Item(m_id);
        item->SetTitle(title);
        item->SetItemStatus(status);
        item->SetItemChanged(true);
        ScriptedPrompts prompts;
        prompts.ExpectError();
        QVERIFY(!item->Commit());
        QCOMPARE(prompts.Errors, QStringList{message});
        QVERIFY(LogNames(number, "UpdateObject"));
        QCOMPARE(Row(m_id), before);
        QVERIFY(item->ItemChanged()); // still to be written
        item->SetTitle(u"short"_s);
        item->SetItemStatus(1);
        QVERIFY(item->Commit());
        QCOMPARE(Column(u"Title"_s, m_id), Value(u"short"_s));
    }

    void rowDeletedUnderneath_isReportedAtTheCommit_data()
    {
        QTest::addColumn<bool>("readBefore");
        QTest::newRow("read before") << true;
        QTest::newRow("never read") << false;
    }
    void rowDeletedUnderneath_isReportedAtTheCommit()
    {
        QFETCH(bool, readBefore);
        const auto item = Item(m_id);
        if (readBefore)
            item->Title();
        m_library->Execute(u"DELETE FROM Items"_s);
        item->SetTitle(u"other"_s);
        item->SetItemChanged(true);
        ScriptedPrompts prompts;
        prompts.ExpectError();
        QVERIFY(!item->Commit());
        QVERIFY(LogNames("3021", "UpdateObject"));
        QCOMPARE(CountOf(*m_library, u"Items"_s), 0);
    }

    // Delete

    void deletedItem_takesWhatBelongsToIt()
    {
        const qint64 other = AddItem(*m_library, 0, u"other"_s);
        m_library->Execute(u"INSERT INTO BookmarkGroups (ID, \"Group\") VALUES (1, 'g')"_s);
        for (const qint64 owner : {m_id, other}) {
            m_library->Execute(u"INSERT INTO Bookmarks (CodeID, BookmarkGroup) VALUES (?, 1)"_s, {owner});
            m_library->Execute(u"INSERT INTO Files (CodeID, Title) VALUES (?, 'f')"_s, {owner});
        }
        for (const auto& [from, to] : {std::pair(m_id, other), std::pair(other, m_id), std::pair(other, other + 1)})
            m_library->Execute(u"INSERT INTO ItemLinks (ItemID, LinkItemID) VALUES (?, ?)"_s, {from, to});
        const auto item = Item(m_id);
        item->Delete();
        QVERIFY(item->Commit());
        QCOMPARE(item->State(), RecordState::Deleted);
        const QStringList left{QString::number(other)};
        QCOMPARE(Texts(*m_library, u"SELECT ID FROM Items"_s), left);
        QCOMPARE(Texts(*m_library, u"SELECT CodeID FROM Bookmarks"_s), left);
        QCOMPARE(Texts(*m_library, u"SELECT CodeID FROM Files"_s), left);
        QCOMPARE(Texts(*m_library, u"SELECT ItemID || '-' || LinkItemID FROM ItemLinks"_s),
                 QStringList{u"%1-%2"_s.arg(other).arg(other + 1)});
    }

    void deletion_isRecordedForThoseWhoKnowTheItem_data()
    {
        QTest::addColumn<qint64>("own");    // the library's own last synchronization, 0: no child
        QTest::addColumn<qint64>("childs"); // its children's, 0: no mother
        QTest::addColumn<Value>("changed");
        QTest::addColumn<bool>("recorded");
        const auto row = [](const char* name, qint64 own, qint64 childs, const Value& changed, bool recorded) {
            QTest::newRow(name) << own << childs << changed << recorded;
        };
        row("plain", 0, 0, 50, false);
        row("plain, Null", 0, 0, {}, false);
        row("plain, marked", 0, 0, 0, false);
        row("child, before", 100, 0, 99, true);
        row("child, at", 100, 0, 100, false);
        row("child, after", 100, 0, 101, false);
        row("child, Null", 100, 0, {}, true);
        row("child, marked", 100, 0, 0, true);
        row("mother, before", 0, 100, 99, true);
        row("mother, at", 0, 100, 100, false);
        row("mother, after", 0, 100, 101, false);
        row("mother, Null", 0, 100, {}, true);
        row("both, before the later", 100, 200, 150, true);
        row("both, after the later", 100, 200, 200, false);
        row("both, own is the later", 200, 100, 150, true);
        row("both, after own", 200, 100, 250, false);
    }
    void deletion_isRecordedForThoseWhoKnowTheItem()
    {
        QFETCH(qint64, own);
        QFETCH(qint64, childs);
        QFETCH(Value, changed);
        QFETCH(bool, recorded);
        MakeReplica(Date::FromSeconds(own), Date::FromSeconds(childs));
        m_library->Execute(u"UPDATE Items SET LastChanged = ?"_s, {changed});
        const auto item = Item(m_id);
        item->Delete();
        QVERIFY(item->Commit());
        QCOMPARE(CountOf(*m_library, u"Items"_s), 0);
        QCOMPARE(m_library->TableExists(u"DeletedItems"_s), own + childs > 0);
        if (own + childs == 0)
            return;
        const QString expected = u"%1 at %2"_s.arg(m_id).arg(m_clock->Now().Seconds());
        QCOMPARE(Texts(*m_library, u"SELECT ItemID || ' at ' || DateDeleted FROM DeletedItems"_s),
                 recorded ? QStringList{expected} : QStringList());
    }

    void motherOfSeveralChildren_goesByTheLatest()
    {
        MakeReplica({}, Date::FromSeconds(100));
        m_library->Execute(
            u"INSERT INTO ChildCopies (DBCopyID, LastSynchronized) VALUES ('Second', 300), ('Never', NULL)"_s);
        m_library->Execute(u"UPDATE Items SET LastChanged = 299"_s);
        const auto item = Item(m_id);
        item->Delete();
        QVERIFY(item->Commit());
        QCOMPARE(CountOf(*m_library, u"DeletedItems"_s), 1);
    }

    void deleteThatFails_leavesEverything()
    {
        MakeReplica(m_clock->Now().AddDays(1), {});
        m_library->Execute(u"INSERT INTO ItemLinks (ItemID, LinkItemID) VALUES (?, 9)"_s, {m_id});
        m_library->Execute(u"INSERT INTO Files (CodeID, Title) VALUES (?, 'f')"_s, {m_id});
        m_library->Execute(
            u"CREATE TEMP TRIGGER stop BEFORE DELETE ON ItemLinks BEGIN SELECT raise(ABORT, 'stopped'); END"_s);
        const auto item = Item(m_id);
        item->Delete();
        ScriptedPrompts prompts;
        prompts.ExpectError();
        QVERIFY(!item->Commit());
        QVERIFY(ReadFile(ErrorLogFile()).contains(", CCodeItem, DeleteObject, "));
        QCOMPARE(item->State(), RecordState::MarkedForDelete);
        for (const QString& table : {u"Items"_s, u"Files"_s, u"ItemLinks"_s})
            QCOMPARE(CountOf(*m_library, table), 1);
        QCOMPARE(CountOf(*m_library, u"DeletedItems"_s), 0);
        m_library->Execute(u"DROP TRIGGER stop"_s);
        QVERIFY(item->Commit());
        QCOMPARE(CountOf(*m_library, u"Items"_s), 0);
    }

    void deleteOfARowThatIsGone_isReported()
    {
        const auto item = Item(m_id + 5);
        item->Delete();
        ScriptedPrompts prompts;
        prompts.ExpectError();
        QVERIFY(!item->Commit());
        QVERIFY(LogNames("3021", "DeleteObject"));
        QCOMPARE(CountOf(*m_library, u"Items"_s), 1);
    }

    void commitAfterTheDelete_writesNothing()
    {
        const auto item = Item(m_id);
        item->Delete();
        QVERIFY(item->Commit());
        const qint64 changes = Changes();
        QVERIFY(item->Commit());
        QCOMPARE(Changes(), changes);
    }
};

QB_TEST_MAIN(TestCodeItemCommit)
#include "tst_code_item_commit.moc"
