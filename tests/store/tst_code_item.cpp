#include "store/CCodeItem.h"
#include "store/Library.h"
#include "support/ErrorRoutine.h"
#include "support/LibraryBuilder.h"
#include "support/ScriptedPrompts.h"
#include "support/TestRun.h"

#include <QSignalSpy>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

namespace {

/// Writes down an item's events with their arguments.
class Events : public QStringList {
public:
    explicit Events(CCodeItem& item)
    {
        const auto note = [this](const QString& name) {
            return [this, name](bool has) { append(name + (has ? u" True"_s : u" False"_s)); };
        };
        QObject::connect(&item, &CCodeItem::CodeLoaded, &item, note(u"CodeLoaded"_s));
        QObject::connect(&item, &CCodeItem::NotesLoaded, &item, note(u"NotesLoaded"_s));
        QObject::connect(&item, &CCodeItem::UsageLoaded, &item, note(u"UsageLoaded"_s));
        QObject::connect(&item, &CCodeItem::FilesLoaded, &item, note(u"FilesLoaded"_s));
        QObject::connect(&item, &CCodeItem::LinkLoaded, &item, note(u"LinkLoaded"_s));
        QObject::connect(&item, &CCodeItem::NewItemLoaded, &item, [this](Date created, Date changed) {
            append(u"NewItemLoaded %1 %2"_s.arg(created.Seconds()).arg(changed.Seconds()));
        });
    }
};

struct Access {
    const char* Name;
    void (*Run)(CCodeItem&);
};

const Access Reads[] = {
    {"Title", [](CCodeItem& item) { item.Title(); }},
    {"Description", [](CCodeItem& item) { item.Description(); }},
    {"Info", [](CCodeItem& item) { item.Info(); }},
    {"Code", [](CCodeItem& item) { item.Code(); }},
    {"Notes", [](CCodeItem& item) { item.Notes(); }},
    {"Example", [](CCodeItem& item) { item.Example(); }},
    {"HTMLPage", [](CCodeItem& item) { item.HTMLPage(); }},
    {"ParentKey", [](CCodeItem& item) { item.ParentKey(); }},
    {"User", [](CCodeItem& item) { item.User(); }},
    {"ItemRating", [](CCodeItem& item) { item.ItemRating(); }},
    {"ItemStatus", [](CCodeItem& item) { item.ItemStatus(); }},
    {"CodeHeaders", [](CCodeItem& item) { item.CodeHeaders(); }},
    {"UsageHeaders", [](CCodeItem& item) { item.UsageHeaders(); }},
    {"Created", [](CCodeItem& item) { item.Created(); }},
    {"LastChanged", [](CCodeItem& item) { item.LastChanged(); }},
    {"HTMLLastUpdated", [](CCodeItem& item) { item.HTMLLastUpdated(); }},
    {"MotherParentKey", [](CCodeItem& item) { item.MotherParentKey(); }},
    {"CodeHeaderPresent", [](CCodeItem& item) { item.CodeHeaderPresent(1); }},
    {"UsageHeaderPresent", [](CCodeItem& item) { item.UsageHeaderPresent(1); }},
};

/// Writes that make a record an edited one.
const Access StateWrites[] = {
    {"Title", [](CCodeItem& item) { item.SetTitle(u"other"_s); }},
    {"Description", [](CCodeItem& item) { item.SetDescription(u"other"_s); }},
    {"Info", [](CCodeItem& item) { item.SetInfo(u"other"_s); }},
    {"Code", [](CCodeItem& item) { item.SetCode(u"other"_s); }},
    {"Notes", [](CCodeItem& item) { item.SetNotes(u"other"_s); }},
    {"Example", [](CCodeItem& item) { item.SetExample(u"other"_s); }},
    {"HTMLPage", [](CCodeItem& item) { item.SetHTMLPage(true); }},
    {"ParentKey", [](CCodeItem& item) { item.SetParentKey(u"0"_s); }},
};

/// Writes that leave the state alone.
const Access OtherWrites[] = {
    {"User", [](CCodeItem& item) { item.SetUser(u"Zoë"_s); }},
    {"ItemRating", [](CCodeItem& item) { item.SetItemRating(3); }},
    {"ItemStatus", [](CCodeItem& item) { item.SetItemStatus(3); }},
    {"CodeHeaders", [](CCodeItem& item) { item.SetCodeHeaders(3); }},
    {"UsageHeaders", [](CCodeItem& item) { item.SetUsageHeaders(3); }},
    {"Created", [](CCodeItem& item) { item.SetCreated(Date::FromSeconds(5)); }},
    {"LastChanged", [](CCodeItem& item) { item.SetLastChanged(Date::FromSeconds(5)); }},
    {"HTMLLastUpdated", [](CCodeItem& item) { item.SetHTMLLastUpdated(Date::FromSeconds(5)); }},
};

} // namespace

/// An item's properties, states, events and section headers; what a commit writes is tested in
/// tst_code_item_commit.
class TestCodeItem : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<CCodeItem> Item(qint64 id)
    {
        auto item = std::make_unique<CCodeItem>();
        item->Initialise(*m_library, id == 0 ? QString() : QString::number(id));
        return item;
    }

    template <size_t Count>
    static void Rows(const Access (&all)[Count])
    {
        QTest::addColumn<int>("index");
        for (size_t i = 0; i < Count; ++i)
            QTest::newRow(all[i].Name) << int(i);
    }

    TemporaryHome m_home;
    FixedClock m_clock;
    std::unique_ptr<Library> m_library;
    qint64 m_id = 0;

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_library = MakeLibrary(m_home.Path(u"items Ω.qbd"_s), LanguageType::None);
        m_library->BeginTrans();
        m_id = AddItem(*m_library, 0, u"Größe"_s);
    }

    void cleanup()
    {
        m_library->Rollback();
        m_library.reset();
    }

    void newItem_hasItsDefaults()
    {
        const auto item = Item(0);
        QCOMPARE(item->State(), RecordState::New);
        QCOMPARE(item->Key(), QString());
        QCOMPARE(item->ParentKey(), u"0"_s);
        for (const QString& text : {item->Title(), item->Description(), item->Info(), item->User(), item->Code(),
                                    item->Notes(), item->Example()})
            QVERIFY(text.isEmpty());
        QCOMPARE(item->Created(), m_clock.Now());
        QCOMPARE(item->LastChanged(), m_clock.Now());
        QVERIFY(item->HTMLLastUpdated().IsNone());
        QCOMPARE(item->ItemStatus() + item->ItemRating() + item->CodeHeaders() + item->UsageHeaders(), 0);
        QVERIFY(!item->HTMLPage() && !item->ItemChanged() && !item->ItemMarkedForDelete());
    }

    void initialisedAgain_forgetsWhatItHeld()
    {
        const auto item = Item(m_id);
        item->SetTitle(u"other"_s);
        item->SetItemChanged(true);
        item->Initialise(*m_library, QString::number(m_id));
        QCOMPARE(item->State(), RecordState::Clean);
        QVERIFY(!item->ItemChanged());
        QCOMPARE(item->Title(), u"Größe"_s);
    }

    // Reading

    void rowThatCouldNotBeRead_isNotWrittenBackEmpty()
    {
        m_library->Execute(u"UPDATE Items SET Code = 'precious' WHERE ID = ?"_s, {m_id});
        const auto item = Item(m_id);
        m_library->Execute(u"ALTER TABLE Items RENAME TO Gone"_s);
        ScriptedPrompts prompts;
        prompts.ExpectError();
        QCOMPARE(item->Title(), QString());
        m_library->Execute(u"ALTER TABLE Gone RENAME TO Items"_s);
        item->SetTitle(u"new"_s);
        item->SetItemChanged(true);
        prompts.ExpectError();
        QVERIFY(!item->Commit());
        QVERIFY(prompts.Errors.last().contains(u"could not be read"_s));
        QCOMPARE(Texts(*m_library, u"SELECT Title || ' ' || Code FROM Items WHERE ID = ?"_s, {m_id}),
                 QStringList{u"Größe precious"_s});
    }

    void storedProperty_readsTheRowOnce_data() { Rows(Reads); }
    void storedProperty_readsTheRowOnce()
    {
        QFETCH(int, index);
        const auto item = Item(m_id);
        const Events events(*item);
        QVERIFY(events.isEmpty());
        Reads[index].Run(*item);
        QCOMPARE(events.size(), 6);
        Reads[index].Run(*item);
        item->Title();
        QCOMPARE(events.size(), 6);
        QCOMPARE(item->State(), RecordState::Clean);
    }

    void keyAndFlags_doNotReadTheRow()
    {
        const auto item = Item(m_id);
        const Events events(*item);
        QCOMPARE(item->Key(), QString::number(m_id));
        QVERIFY(!item->ItemMarkedForDelete());
        QCOMPARE(item->MotherRecordKey(), 0);
        QVERIFY(!item->DontUpdateLastChangedDate());
        item->SetDontUpdateLastChangedDate(true);
        item->Delete();
        QVERIFY(events.isEmpty());
    }

    void newItem_isNotRead()
    {
        const auto item = Item(0);
        const Events events(*item);
        item->Title();
        item->SetTitle(u"t"_s);
        QVERIFY(events.isEmpty());
    }

    void readRow_raisesItsEventsInOrder_data()
    {
        QTest::addColumn<QString>("column");
        QTest::addColumn<int>("raised"); // the event that says True
        QTest::newRow("nothing") << u"Info"_s << -1;
        QTest::newRow("code") << u"Code"_s << 0;
        QTest::newRow("notes") << u"Notes"_s << 1;
        QTest::newRow("usage") << u"Example"_s << 2;
        QTest::newRow("page") << u"HTMLPage"_s << 4;
    }
    void readRow_raisesItsEventsInOrder()
    {
        QFETCH(QString, column);
        QFETCH(int, raised);
        m_library->Execute(u"UPDATE Items SET Created = 11, LastChanged = 22, %1 = ?"_s.arg(column),
                           {column == u"HTMLPage" ? Value(true) : Value(u"text"_s)});
        const auto item = Item(m_id);
        const Events events(*item);
        item->Title();
        QStringList expected{u"CodeLoaded"_s, u"NotesLoaded"_s, u"UsageLoaded"_s, u"FilesLoaded"_s, u"LinkLoaded"_s};
        for (int i = 0; i < expected.size(); ++i)
            expected[i] += i == raised ? u" True"_s : u" False"_s;
        QCOMPARE(QStringList(events), expected + QStringList{u"NewItemLoaded 11 22"_s});
    }

    void itemWithFiles_saysSo()
    {
        m_library->Execute(u"INSERT INTO Files (CodeID, Title) VALUES (?, 'a file')"_s, {m_id});
        const auto item = Item(m_id);
        QSignalSpy files(item.get(), &CCodeItem::FilesLoaded);
        item->Title();
        QCOMPARE(files, (QList<QList<QVariant>>{{true}}));
    }

    void missingRow_raisesFiveEventsAndLeavesTheDefaults()
    {
        const auto item = Item(m_id + 100);
        const Events events(*item);
        QCOMPARE(item->Title(), QString());
        QCOMPARE(QStringList(events),
                 (QStringList{u"CodeLoaded False"_s, u"NotesLoaded False"_s, u"UsageLoaded False"_s,
                              u"FilesLoaded False"_s, u"LinkLoaded False"_s}));
        QCOMPARE(item->ParentKey(), u"0"_s);
        QCOMPARE(item->LastChanged(), m_clock.Now());
        QVERIFY(!item->ItemMarkedForDelete());
    }

    void eventHandlerThatReads_doesNotStartAnotherRead()
    {
        const auto item = Item(m_id);
        QString seen;
        connect(item.get(), &CCodeItem::CodeLoaded, item.get(), [&] { seen += item->Title(); });
        item->Info();
        QCOMPARE(seen, u"Größe"_s);
    }

    void nullColumns_readAsEmpty()
    {
        m_library->Execute(
            u"UPDATE Items SET Description = NULL, Info = NULL, Created = NULL, User = NULL, Code = NULL, "
            "ItemStatus = NULL, ItemRating = NULL, CodeHeaders = NULL, UsageHeaders = NULL, ParentID = NULL, "
            "HTMLLastUpdated = NULL"_s);
        const auto item = Item(m_id);
        QCOMPARE(item->Description() + item->Info() + item->User() + item->Code(), QString());
        QVERIFY(item->Created().IsNone() && item->HTMLLastUpdated().IsNone());
        QCOMPARE(item->ItemStatus() + item->ItemRating() + item->CodeHeaders() + item->UsageHeaders(), 0);
        QCOMPARE(item->ParentKey(), u"0"_s);
    }

    void itemWithoutADateOfChange_isMarkedForDelete_data()
    {
        QTest::addColumn<Value>("lastChanged");
        QTest::addColumn<bool>("marked");
        QTest::newRow("0") << Value(0) << true;
        QTest::newRow("Null") << Value() << true;
        QTest::newRow("1") << Value(1) << false;
    }
    void itemWithoutADateOfChange_isMarkedForDelete()
    {
        QFETCH(Value, lastChanged);
        m_library->Execute(u"UPDATE Items SET LastChanged = ?"_s, {lastChanged});
        const auto item = Item(m_id);
        QVERIFY(!item->ItemMarkedForDelete()); // not known before the row is read
        item->Title();
        QTEST(item->ItemMarkedForDelete(), "marked");
        QCOMPARE(item->LastChanged(), lastChanged.ToDate());
    }

    void childsRow_bringsTheMothersNumbers()
    {
        MakeChild(*m_library, u"/Mütter/m.qbd"_s, m_clock.Now());
        m_library->Execute(u"UPDATE Items SET MotherParentID = 44, MotherRecordID = 55"_s);
        const auto item = Item(m_id);
        QCOMPARE(item->MotherParentKey(), 44);
        QCOMPARE(item->MotherRecordKey(), 55);
    }

    void childWithoutTheMothersColumns_isReadAllTheSame()
    {
        MakeChild(*m_library, u"/m.qbd"_s, Date::FromSeconds(100));
        for (const QString& column : {u"MotherParentID"_s, u"MotherRecordID"_s}) {
            m_library->Execute(u"DROP INDEX Items_"_s + column);
            m_library->DeleteField(u"Items"_s, column);
        }
        const auto item = Item(m_id);
        QCOMPARE(item->MotherParentKey(), 0);
        QCOMPARE(item->Title(), u"Größe"_s);
    }

    // States

    void write_makesACleanRecordEdited_data() { Rows(StateWrites); }
    void write_makesACleanRecordEdited()
    {
        QFETCH(int, index);
        const auto write = StateWrites[index].Run;
        const auto item = Item(m_id);
        const Events events(*item);
        write(*item);
        QCOMPARE(item->State(), RecordState::Edited);
        QCOMPARE(events.size(), 6); // the row was read before
        write(*item);
        QCOMPARE(item->State(), RecordState::Edited);
        QVERIFY(!item->ItemChanged());

        const auto fresh = Item(0);
        write(*fresh);
        QCOMPARE(fresh->State(), RecordState::New);
    }

    void writeOfADeletedRecord_isRefused_data() { Rows(StateWrites); }
    void writeOfADeletedRecord_isRefused()
    {
        QFETCH(int, index);
        const auto item = Item(m_id);
        item->Delete();
        try {
            StateWrites[index].Run(*item);
            QFAIL("was accepted");
        } catch (const RuntimeError& error) {
            QCOMPARE(error.Number(), long(int(0x80040201)));
            QCOMPARE(error.Description(), u"This Record is About to be deleted"_s);
            QCOMPARE(error.Source(), u"CCodeItem::SetStateForLet"_s);
        }
        QCOMPARE(item->State(), RecordState::MarkedForDelete);
        QVERIFY(item->Commit());
        QCOMPARE(item->State(), RecordState::Deleted);
        try {
            StateWrites[index].Run(*item);
            QFAIL("was accepted");
        } catch (const RuntimeError& error) {
            QCOMPARE(error.Number(), long(int(0x80040202)));
            QCOMPARE(error.Description(), u"This record has been deleted"_s);
            QCOMPARE(error.Source(), u"CCodeItem::SetStateForLet"_s);
        }
        QCOMPARE(item->State(), RecordState::Deleted);
    }

    void otherWrite_leavesTheState_data() { Rows(OtherWrites); }
    void otherWrite_leavesTheState()
    {
        QFETCH(int, index);
        const auto item = Item(m_id);
        OtherWrites[index].Run(*item);
        QCOMPARE(item->State(), RecordState::Clean);
        item->Delete();
        OtherWrites[index].Run(*item);
        QCOMPARE(item->State(), RecordState::MarkedForDelete);
    }

    void delete_marksFromAnyLivingState_data()
    {
        QTest::addColumn<bool>("fresh");
        QTest::addColumn<bool>("edited");
        QTest::newRow("clean") << false << false;
        QTest::newRow("edited") << false << true;
        QTest::newRow("new") << true << false;
    }
    void delete_marksFromAnyLivingState()
    {
        QFETCH(bool, fresh);
        QFETCH(bool, edited);
        const auto item = Item(fresh ? 0 : m_id);
        if (edited)
            item->SetTitle(u"other"_s);
        item->Delete();
        QCOMPARE(item->State(), RecordState::MarkedForDelete);
        QCOMPARE(CountOf(*m_library, u"Items"_s), 1); // nothing is written yet
    }

    void itemChanged_movesTheDateOnAnyWrite_data()
    {
        QTest::addColumn<bool>("value");
        QTest::newRow("True") << true;
        QTest::newRow("False") << false;
    }
    void itemChanged_movesTheDateOnAnyWrite()
    {
        QFETCH(bool, value);
        const auto item = Item(m_id);
        m_clock.AddSeconds(60);
        item->SetItemChanged(value);
        QCOMPARE(item->ItemChanged(), value);
        QCOMPARE(item->LastChanged(), m_clock.Now());
        QCOMPARE(item->State(), RecordState::Clean);
    }

    void dateThatIsHeld_staysWhenTheItemChanges()
    {
        const auto item = Item(m_id);
        const Date before = item->LastChanged();
        m_clock.AddSeconds(60);
        item->SetDontUpdateLastChangedDate(true);
        item->SetItemChanged(true);
        QVERIFY(item->ItemChanged());
        QCOMPARE(item->LastChanged(), before);
    }

    // Status

    void status_isAnnounced()
    {
        const auto item = Item(m_id);
        QSignalSpy updated(item.get(), &CCodeItem::StatusUpdated);
        item->SetItemStatus(7);
        QCOMPARE(item->ItemStatus(), 7);
        QCOMPARE(updated, (QList<QList<QVariant>>{{7}}));
    }

    void statusSetFromItsOwnEvent_isIgnored()
    {
        const auto item = Item(m_id);
        QSignalSpy updated(item.get(), &CCodeItem::StatusUpdated);
        connect(item.get(), &CCodeItem::StatusUpdated, item.get(),
                [&](qint32 status) { item->SetItemStatus(status + 1); });
        item->SetItemStatus(7);
        QCOMPARE(item->ItemStatus(), 7);
        QCOMPARE(updated.size(), 1);
        item->SetItemStatus(9); // the guard is off again
        QCOMPARE(item->ItemStatus(), 9);
    }

    // Parent

    void parentKey_isNeverEmpty()
    {
        const auto item = Item(m_id);
        item->SetParentKey(u"17"_s);
        QCOMPARE(item->ParentKey(), u"17"_s);
        item->SetParentKey({});
        QCOMPARE(item->ParentKey(), u"0"_s);
    }

    void parentOfAChildsItem_isTranslatedForTheMother_data()
    {
        QTest::addColumn<int>("motherRecord"); // of the parent; -2: the root, -3: Null
        QTest::addColumn<int>("expected");
        QTest::newRow("root") << -2 << 0;
        QTest::newRow("known to the mother") << 71 << 71;
        QTest::newRow("number 0") << 0 << 0;
        QTest::newRow("unknown to the mother") << -1 << -1;
        QTest::newRow("said by nobody") << -3 << -1;
    }
    void parentOfAChildsItem_isTranslatedForTheMother()
    {
        QFETCH(int, motherRecord);
        MakeChild(*m_library, u"/m.qbd"_s, Date::FromSeconds(100));
        const qint64 parent = AddItem(*m_library, 0, u"parent"_s);
        m_library->Execute(u"UPDATE Items SET MotherRecordID = ? WHERE ID = ?"_s,
                           {motherRecord == -3 ? Value() : Value(qMax(motherRecord, -1)), parent});
        m_library->Execute(u"UPDATE Items SET MotherParentID = 99 WHERE ID = ?"_s, {m_id});
        const auto item = Item(m_id);
        item->SetParentKey(motherRecord == -2 ? u"0"_s : QString::number(parent));
        QTEST(item->MotherParentKey(), "expected");
    }

    void missingParentInAChild_isSaidAndLeavesTheMothersParent()
    {
        MakeChild(*m_library, u"/m.qbd"_s, Date::FromSeconds(100));
        m_library->Execute(u"UPDATE Items SET MotherParentID = 99"_s);
        const auto item = Item(m_id);
        ScriptedPrompts prompts;
        prompts.ExpectMsgBox(u"Error"_s);
        item->SetParentKey(u"4711"_s);
        QCOMPARE(prompts.Messages.value(0).Text, u"Error - the item is being moved under non existing parent!!!"_s);
        QCOMPARE(prompts.Messages.value(0).Icon, MsgBoxIcon::Critical);
        QCOMPARE(item->MotherParentKey(), 99);
        QCOMPARE(item->ParentKey(), u"4711"_s);
    }

    void parentOutsideAChild_isNotLookedUp()
    {
        const auto item = Item(m_id);
        item->SetParentKey(u"4711"_s); // no prompt is expected
        QCOMPARE(item->MotherParentKey(), 0);
    }

    // Section headers

    void codeHeader_isAddedAndTakenAway()
    {
        const auto item = Item(m_id);
        item->AddCodeHeader(4);
        item->AddCodeHeader(16);
        QCOMPARE(int(item->CodeHeaders()), 20);
        QVERIFY(item->CodeHeaderPresent(4) && item->CodeHeaderPresent(16) && !item->CodeHeaderPresent(8));
        QVERIFY(!item->ItemChanged());
        item->RemoveCodeHeader(8); // not there
        QVERIFY(!item->ItemChanged());
        item->RemoveCodeHeader(4);
        QCOMPARE(int(item->CodeHeaders()), 16);
        QVERIFY(item->ItemChanged());
    }

    void codeHeaderTwice_isRefused()
    {
        const auto item = Item(m_id);
        item->SetCodeHeaders(2);
        ScriptedPrompts prompts;
        prompts.ExpectMsgBox(ApplicationTitle);
        item->AddCodeHeader(2);
        QCOMPARE(prompts.Messages.value(0).Text, u"Header already present in this item."_s);
        QCOMPARE(prompts.Messages.value(0).Icon, MsgBoxIcon::Exclamation);
        QCOMPARE(int(item->CodeHeaders()), 2);
    }

    void usageHeader_isAddedByTheCodesOtherBits_data()
    {
        QTest::addColumn<int>("code");
        QTest::addColumn<int>("usage");
        QTest::addColumn<int>("header");
        QTest::addColumn<int>("expected"); // -1: refused
        QTest::newRow("code has no bits") << 0 << 0 << 1 << -1;
        QTest::newRow("code has that bit only") << 1 << 0 << 1 << -1;
        QTest::newRow("code has another bit") << 2 << 0 << 1 << 1;
        QTest::newRow("usage has the bit already") << 2 << 1 << 1 << 2;
        QTest::newRow("up to the byte's end") << 2 << 254 << 1 << 255;
    }
    void usageHeader_isAddedByTheCodesOtherBits()
    {
        QFETCH(int, code);
        QFETCH(int, usage);
        QFETCH(int, header);
        QFETCH(int, expected);
        const auto item = Item(m_id);
        item->SetCodeHeaders(quint8(code));
        item->SetUsageHeaders(quint8(usage));
        ScriptedPrompts prompts;
        if (expected < 0)
            prompts.ExpectMsgBox(ApplicationTitle);
        item->AddUsageHeader(quint8(header));
        QCOMPARE(int(item->UsageHeaders()), expected < 0 ? usage : expected);
        QCOMPARE(prompts.Messages.value(0).Text, expected < 0 ? u"Header already present in this item."_s : QString());
        QVERIFY(!item->ItemChanged());
    }

    void usageHeader_isRaisedWhereItShouldGo()
    {
        const auto item = Item(m_id);
        item->SetUsageHeaders(5);
        item->RemoveUsageHeader(4);
        QCOMPARE(int(item->UsageHeaders()), 9);
        QVERIFY(item->ItemChanged());
        QVERIFY(!item->UsageHeaderPresent(4) && item->UsageHeaderPresent(8));
    }

    void usageHeaderThatIsNotThere_isSaid()
    {
        const auto item = Item(m_id);
        item->SetUsageHeaders(1);
        ScriptedPrompts prompts;
        prompts.ExpectMsgBox(ApplicationTitle);
        item->RemoveUsageHeader(4);
        QCOMPARE(prompts.Messages.value(0).Text, u"Selected header doesn't exist in this item."_s);
        QCOMPARE(int(item->UsageHeaders()), 1);
        QVERIFY(!item->ItemChanged());
    }

    void usageHeadersBeyondAByte_areReported_data()
    {
        QTest::addColumn<bool>("add");
        QTest::addColumn<QByteArray>("procedure");
        QTest::newRow("add") << true << QByteArray("AddUsageHeader");
        QTest::newRow("remove") << false << QByteArray("RemoveUsageHeader");
    }
    void usageHeadersBeyondAByte_areReported()
    {
        QFETCH(bool, add);
        QFETCH(QByteArray, procedure);
        const auto item = Item(m_id);
        item->SetCodeHeaders(1);
        item->SetUsageHeaders(255);
        ScriptedPrompts prompts;
        prompts.ExpectError();
        add ? item->AddUsageHeader(128) : item->RemoveUsageHeader(128);
        QCOMPARE(prompts.Errors, QStringList{u"Overflow"_s});
        QVERIFY(ReadFile(ErrorLogFile()).contains("  -  6, Overflow, CCodeItem, " + procedure + ", "));
        QCOMPARE(int(item->UsageHeaders()), 255);
        QVERIFY(!item->ItemChanged());
    }
};

QB_TEST_MAIN(TestCodeItem)
#include "tst_code_item.moc"
