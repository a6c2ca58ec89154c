#include "store/CCodeItem.h"
#include "store/Library.h"
#include "support/LibraryBuilder.h"
#include "support/ScriptedPrompts.h"
#include "support/TestRun.h"

#include <QTest>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// Links between items: how they are read from both ends, and what each direction writes.
class TestItemLinks : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_home = std::make_unique<TemporaryHome>();
        m_time = std::make_unique<FixedClock>(Date::FromParts(2026, 3, 1, 12, 0, 0));
        m_prompts = std::make_unique<ScriptedPrompts>();
        m_database = MakeLibrary(m_home->Path(u"Verknüpfungen.qbd"_s));
        m_a = AddItem(*m_database, 0, u"A"_s);
        m_b = AddItem(*m_database, 0, u"B"_s);
        m_c = AddItem(*m_database, 0, u"C"_s);
    }
    void cleanup()
    {
        m_item.reset();
        m_database.reset();
        m_prompts.reset();
        m_time.reset();
        m_home.reset();
    }

    // The collection

    void collection_isKeyedAndOrdered()
    {
        CLinks links;
        const auto first = links.Add(u"L7"_s);
        const auto given = std::make_shared<CLink>();
        QCOMPARE(links.Add(u"L5"_s, given), given);
        QCOMPARE(links.Count(), 2);
        QCOMPARE(links.Item(u"L7"_s), first);
        QCOMPARE(links.Item(u"1"_s), first);
        QCOMPARE(links.Item(u"2"_s), given);
        QVERIFY(!links.Item(u"3"_s));
        QVERIFY(!links.Item(u"0"_s));
        QVERIFY(!links.Item(u"L9"_s));
        QVERIFY_THROWS_EXCEPTION(RuntimeError, links.Add(u"L5"_s));
        links.Remove(u"L7"_s);
        QCOMPARE(links.Item(u"1"_s), given);
        QVERIFY_THROWS_EXCEPTION(RuntimeError, links.Remove(u"L7"_s));
        links.Clear();
        QCOMPARE(links.Count(), 0);
    }

    void direction_isResolved_data()
    {
        QTest::addColumn<LinkDirection>("has");
        QTest::addColumn<LinkDirection>("comes");
        QTest::addColumn<LinkDirection>("then");
        QTest::newRow("1 and 1") << LinkDirection::Left << LinkDirection::Left << LinkDirection::Left;
        QTest::newRow("1 and 2") << LinkDirection::Left << LinkDirection::Right << LinkDirection::Both;
        QTest::newRow("2 and 1") << LinkDirection::Right << LinkDirection::Left << LinkDirection::Both;
        QTest::newRow("3 and 1") << LinkDirection::Both << LinkDirection::Left << LinkDirection::Both;
        QTest::newRow("0 and 1") << LinkDirection::None << LinkDirection::Left << LinkDirection::None;
    }
    void direction_isResolved()
    {
        QFETCH(LinkDirection, has);
        QFETCH(LinkDirection, comes);
        QFETCH(LinkDirection, then);
        CLinks links;
        const auto link = links.Add(u"L7"_s);
        link->Direction = has;
        QCOMPARE(links.AddAutoResolveExisting(7, comes), link);
        QCOMPARE(link->Direction, then);
        QVERIFY(!links.AddAutoResolveExisting(8, comes));
    }

    // Reading

    void oneWayLink_isSeenFromItsBeginOnly()
    {
        Row(m_a, m_b, u"because"_s);
        QCOMPARE(Seen(m_a), u"B>1/0 'because'"_s);
        QCOMPARE(Seen(m_b), QString());
    }

    void twoWayLink_isSeenFromBothEnds()
    {
        Row(m_a, m_b, u"to b"_s);
        Row(m_b, m_a, u"to a"_s);
        QCOMPARE(Seen(m_a), u"B<>1/2 'to b'"_s);
        QCOMPARE(Seen(m_b), u"A<>2/1 'to a'"_s);
    }

    void linkToADeletedItem_hasNoTitle()
    {
        Row(m_a, 999, QString());
        QCOMPARE(Seen(m_a), u">1/0 ''"_s);
    }

    void linkToItself_isReadAsItStands()
    {
        Row(m_a, m_a, QString());
        QCOMPARE(Seen(m_a), u"A<>1/1 ''"_s);
    }

    void damagedRows_areRead()
    {
        m_database->Execute(
            u"INSERT INTO ItemLinks (ItemID, LinkItemID, Note, DateUpdated) VALUES (?, ?, NULL, NULL)"_s, {m_a, m_b});
        m_database->Execute(u"INSERT INTO ItemLinks (ItemID, LinkItemID) VALUES (?, 0)"_s, {m_a});
        QCOMPARE(Seen(m_a), u"B>1/0 ''; >2/0 ''"_s);
        QVERIFY(Open(m_a).Links().Item(CLinks::KeyOf(m_b))->DateChanged.IsNone());
    }

    void links_areReadBehindTheOtherPartsAndBeforeTheItemIsToldOf()
    {
        Row(m_a, m_b, u"because"_s);
        CCodeItem item;
        item.Initialise(*m_database, QString::number(m_a));
        QStringList told;
        connect(&item, &CCodeItem::LinkLoaded, &item, [&] { told << u"LinkLoaded %1"_s.arg(item.Links().Count()); });
        connect(&item, &CCodeItem::NewItemLoaded, &item,
                [&] { told << u"NewItemLoaded %1"_s.arg(item.Links().Count()); });
        item.Title();
        QCOMPARE(told, (QStringList{u"LinkLoaded 0"_s, u"NewItemLoaded 1"_s}));
    }

    void longNote_isKept()
    {
        const QString note(1'000'000, u'n');
        Row(m_a, m_b, note);
        QCOMPARE(Open(m_a).Links().Item(u"1"_s)->Note, note);
    }

    // Writing: the rows before, the direction that the link gets in A, the rows after

    void direction_writesItsRows_data()
    {
        QTest::addColumn<QString>("before");
        QTest::addColumn<LinkDirection>("direction");
        QTest::addColumn<QString>("after");
        QTest::addColumn<QString>("fromA");
        QTest::addColumn<QString>("fromB");
        using D = LinkDirection;
        const QString note = u"'new'"_s;
        QTest::newRow("new, 1") << QString() << D::Left << u"AB'new'"_s << u"B>1/0 'new'"_s << QString();
        QTest::newRow("new, 2") << QString() << D::Right << u"BA''"_s << QString() << u"A>1/0 ''"_s;
        QTest::newRow("new, 3") << QString() << D::Both << u"AB'new' BA''"_s << u"B<>1/2 'new'"_s << u"A<>2/1 ''"_s;
        QTest::newRow("new, 0") << QString() << D::None << QString() << QString() << QString();
        QTest::newRow("one way, 0") << u"AB"_s << D::None << QString() << QString() << QString();
        QTest::newRow("one way, 1") << u"AB"_s << D::Left << u"AB'new'"_s << u"B>1/0 'new'"_s << QString();
        QTest::newRow("one way, 2") << u"AB"_s << D::Right << u"BA''"_s << QString() << u"A>2/0 ''"_s;
        QTest::newRow("one way, 3") << u"AB"_s << D::Both << u"AB'new' BA''"_s << u"B<>1/2 'new'"_s << u"A<>2/1 ''"_s;
        QTest::newRow("two ways, 0") << u"AB BA"_s << D::None << QString() << QString() << QString();
        QTest::newRow("two ways, 1") << u"AB BA"_s << D::Left << u"AB'new'"_s << u"B>1/0 'new'"_s << QString();
        QTest::newRow("two ways, 2") << u"AB BA"_s << D::Right << u"BA'old'"_s << QString() << u"A>2/0 'old'"_s;
        QTest::newRow("two ways, 3") << u"AB BA"_s << D::Both << u"AB'new' BA'old'"_s << u"B<>1/2 'new'"_s
                                     << u"A<>2/1 'old'"_s;
    }
    void direction_writesItsRows()
    {
        QFETCH(QString, before);
        QFETCH(LinkDirection, direction);
        QFETCH(QString, after);
        QFETCH(QString, fromA);
        QFETCH(QString, fromB);
        if (before.contains(u"AB"_s))
            Row(m_a, m_b, u"old"_s);
        if (before.contains(u"BA"_s))
            Row(m_b, m_a, u"old"_s);
        m_database->Execute(u"INSERT INTO ItemLinks (ID, ItemID, LinkItemID, Note) VALUES (-7, ?, ?, 'bystander')"_s,
                            {m_c, m_a});
        m_time->AddSeconds(3600);
        CCodeItem& item = Open(m_a);
        const Date changed = item.LastChanged();
        const std::shared_ptr<CLink> link = Change(item, direction);
        link->Note = u"new"_s;
        QVERIFY(item.Commit());
        QVERIFY(!item.LinksChanged());
        QVERIFY(!link->DirtyFlag);
        QCOMPARE(Rows(), (after.isEmpty() ? QString() : after + u' ') + u"CA'bystander'"_s);
        QCOMPARE(Seen(m_a), fromA);
        QCOMPARE(Seen(m_b), fromB);
        QCOMPARE(Open(m_a).LastChanged(), changed); // links alone move no date
        for (const QString& row : Texts(*m_database, u"SELECT ID FROM ItemLinks WHERE Note = 'new'"_s))
            QCOMPARE(m_database->QueryValue(u"SELECT DateUpdated FROM ItemLinks WHERE ID = ?"_s, {row.toLongLong()})
                         .ToDate(),
                     m_time->Now());
    }

    void writtenLink_inMemory()
    {
        Row(m_a, m_b, QString());
        CCodeItem& item = Open(m_a);
        const auto known = Change(item, LinkDirection::Both);
        const auto added = item.Links().Add(CLinks::KeyOf(m_c));
        added->LinkedItemId = m_c;
        added->Direction = LinkDirection::Both;
        added->DirtyFlag = true;
        QVERIFY(item.Commit());
        QCOMPARE(known->ID2, 2); // of the row that was added
        QCOMPARE(added->ID, 0);  // reloading brings these
        QCOMPARE(added->ID2, 0);
        item.LoadLinks();
        QVERIFY(item.Links().Item(CLinks::KeyOf(m_c))->ID > 0);
        Change(item, LinkDirection::Right);
        QVERIFY(item.Commit());
        QVERIFY(!item.Links().Item(CLinks::KeyOf(m_b))); // it leads away no more
    }

    void unchangedLink_isNotWritten()
    {
        Row(m_a, m_b, u"old"_s);
        CCodeItem& item = Open(m_a);
        item.Links().Item(u"1"_s)->Note = u"typed, but not marked"_s;
        item.SetLinksChanged(true);
        QVERIFY(item.Commit());
        QCOMPARE(Rows(), u"AB'old'"_s);
    }

    void newItem_getsItsLinksAfterwards()
    {
        CCodeItem item;
        item.Initialise(*m_database, {});
        item.SetTitle(u"new"_s);
        QVERIFY(item.Commit());
        const auto link = item.Links().Add(CLinks::KeyOf(m_b));
        link->LinkedItemId = m_b;
        link->Direction = LinkDirection::Left;
        link->DirtyFlag = true;
        item.SetLinksChanged(true);
        QVERIFY(item.Commit());
        QCOMPARE(CountOf(*m_database, u"ItemLinks"_s), 1);
    }

    void noteWithAnApostrophe_isAnErrorThatChangesNoLink()
    {
        Row(m_a, m_b, u"old"_s);
        CCodeItem& item = Open(m_a);
        const auto other = item.Links().Add(CLinks::KeyOf(m_c)); // written first, and not kept
        other->LinkedItemId = m_c;
        other->Direction = LinkDirection::Left;
        other->DirtyFlag = true;
        Change(item, LinkDirection::Both)->Note = u"it's"_s;
        item.SetTitle(u"other title"_s);
        item.SetItemChanged(true);
        m_prompts->ExpectError();
        QVERIFY(!item.Commit());
        QVERIFY(m_prompts->Errors.last().contains(u"Syntax error"_s));
        QCOMPARE(Rows(), u"AB'old'"_s);
        // What was typed of the item does not wait for it.
        QCOMPARE(m_database->QueryValue(u"SELECT Title FROM Items WHERE ID = ?"_s, {m_a}).ToText(), u"other title"_s);
        QVERIFY(!item.ItemChanged());
        QVERIFY(item.LinksChanged()); // it can be mended and saved
        item.Links().Item(CLinks::KeyOf(m_b))->Note = u"its"_s;
        QVERIFY(item.Commit());
        QCOMPARE(Rows(), u"AB'its' AC'' BA''"_s);
    }

    void noteIsText_whateverItHolds()
    {
        CCodeItem& item = Open(m_a);
        Change(item, LinkDirection::Left)->Note = u"\"; DROP TABLE Items; --\r\nzwei\u2028 ä"_s;
        QVERIFY(item.Commit());
        QCOMPARE(Open(m_a).Links().Item(u"1"_s)->Note, u"\"; DROP TABLE Items; --\r\nzwei\u2028 ä"_s);
        QCOMPARE(CountOf(*m_database, u"Items"_s), 3);
    }

    void linkAddedElsewhereMeanwhile_keepsBothNotes_data()
    {
        QTest::addColumn<QString>("own");
        QTest::addColumn<QString>("rows");
        QTest::newRow("none here") << u""_s << u"AB'of another'"_s;
        QTest::newRow("the same") << u"of another"_s << u"AB'of another'"_s;
        QTest::newRow("another") << u"own"_s << u"AB'of another\r\nown'"_s;
    }
    void linkAddedElsewhereMeanwhile_keepsBothNotes()
    {
        QFETCH(QString, own);
        CCodeItem& item = Open(m_a);
        Change(item, LinkDirection::Left)->Note = own;
        Row(m_a, m_b, u"of another"_s);
        QVERIFY(item.Commit());
        QTEST(Rows(), "rows");
    }

    void linkBackToAnItemThatLeadsHere_addsTheMissingSideOnly_data()
    {
        QTest::addColumn<LinkDirection>("direction");
        QTest::addColumn<QString>("rows");
        QTest::newRow("from here") << LinkDirection::Left << u"AB'there' BA'typed'"_s;
        QTest::newRow("to here") << LinkDirection::Right << u"AB'there'"_s;
        QTest::newRow("both ways") << LinkDirection::Both << u"AB'there' BA'typed'"_s;
    }
    void linkBackToAnItemThatLeadsHere_addsTheMissingSideOnly()
    {
        QFETCH(LinkDirection, direction);
        Row(m_a, m_b, u"there"_s);
        CCodeItem& item = Open(m_b); // where the link from A is not to be seen
        const auto link = item.Links().Add(CLinks::KeyOf(m_a));
        link->LinkedItemId = m_a;
        link->Direction = direction;
        link->Note = u"typed"_s;
        link->DirtyFlag = true;
        item.SetNotes(u"{\\rtf1 text}"_s);
        item.SetItemChanged(true);
        item.SetLinksChanged(true);
        QVERIFY(item.Commit());
        QTEST(Rows(), "rows");
        QCOMPARE(Open(m_b).Notes(), u"{\\rtf1 text}"_s);
    }

    void deletedLink_isRecordedWhereTheOtherSideKnowsIt_data()
    {
        QTest::addColumn<bool>("child");
        QTest::addColumn<bool>("mother");
        QTest::addColumn<bool>("before");
        QTest::addColumn<bool>("known");
        QTest::addColumn<QString>("recorded");
        QTest::newRow("child") << true << false << true << true << u"101 102"_s;
        QTest::newRow("child, made since") << true << false << false << true << QString();
        QTest::newRow("child, an end not known") << true << false << true << false << QString();
        QTest::newRow("mother") << false << true << true << false << u"1 2"_s;
        QTest::newRow("mother, made since") << false << true << false << false << QString();
    }
    void deletedLink_isRecordedWhereTheOtherSideKnowsIt()
    {
        QFETCH(bool, child);
        QFETCH(bool, mother);
        QFETCH(bool, before);
        QFETCH(bool, known);
        const Date synchronized = Date::FromParts(2026, 1, 1);
        if (child)
            MakeChild(*m_database, u"/mother.qbd"_s, synchronized);
        if (mother)
            MakeMother(*m_database, synchronized);
        Row(m_a, m_b, u"note"_s);
        m_database->Execute(u"UPDATE ItemLinks SET DateAdded = ?"_s,
                            {before ? Date::FromParts(2025, 6, 1) : Date::FromParts(2026, 2, 1)});
        if (child)
            m_database->Execute(u"UPDATE ItemLinks SET MotherItemID = 101, MotherLinkItemID = ?"_s, {known ? 102 : 0});
        CCodeItem& item = Open(m_a);
        const auto link = item.Links().Item(CLinks::KeyOf(m_b));
        link->Direction = LinkDirection::None;
        link->DirtyFlag = true;
        item.SetLinksChanged(true);
        QVERIFY(item.Commit());
        QCOMPARE(Rows(), QString());
        QTEST(Texts(*m_database, u"SELECT ItemID || ' ' || LinkItemID FROM DeletedItemLinks"_s).join(u';'), "recorded");
        if (CountOf(*m_database, u"DeletedItemLinks"_s) > 0)
            QCOMPARE(m_database->QueryValue(u"SELECT DateDeleted FROM DeletedItemLinks"_s).ToDate(), m_time->Now());
    }

    // In a child each row names the mother's records too

    void childsRows_nameTheMothersRecords()
    {
        MakeChild(*m_database, u"/mother.qbd"_s, Date::FromParts(2026, 1, 1));
        m_database->Execute(u"UPDATE Items SET MotherRecordID = 100 + ID"_s);
        CCodeItem& item = Open(m_a);
        Change(item, LinkDirection::Both);
        QVERIFY(item.Commit());
        QCOMPARE(Texts(*m_database,
                       u"SELECT ItemID || ' ' || MotherItemID || ' ' || LinkItemID || ' ' || MotherLinkItemID FROM "
                       "ItemLinks ORDER BY ID"_s),
                 (QStringList{u"1 101 2 102"_s, u"2 102 1 101"_s}));
    }

    void childsLinkToAMissingItem_isAnError()
    {
        MakeChild(*m_database, u"/mother.qbd"_s, Date::FromParts(2026, 1, 1));
        CCodeItem& item = Open(m_a);
        Change(item, LinkDirection::Both);
        m_database->Execute(u"DELETE FROM Items WHERE ID = ?"_s, {m_b});
        m_prompts->ExpectError();
        QVERIFY(!item.Commit());
        QVERIFY(m_prompts->Errors.last().contains(u"Required record missing"_s));
        QCOMPARE(CountOf(*m_database, u"ItemLinks"_s), 0);
    }

private:
    CCodeItem& Open(qint64 id)
    {
        m_item = std::make_unique<CCodeItem>();
        m_item->Initialise(*m_database, QString::number(id));
        return *m_item;
    }
    /// Gives A's link to B, which is made when it is missing, another direction.
    std::shared_ptr<CLink> Change(CCodeItem& item, LinkDirection direction)
    {
        std::shared_ptr<CLink> link = item.Links().Item(CLinks::KeyOf(m_b));
        if (!link) {
            link = item.Links().Add(CLinks::KeyOf(m_b));
            link->LinkedItemId = m_b;
        }
        link->Direction = direction;
        link->DirtyFlag = true;
        item.SetLinksChanged(true);
        return link;
    }
    void Row(qint64 from, qint64 to, const QString& note)
    {
        m_database->Execute(
            u"INSERT INTO ItemLinks (ItemID, LinkItemID, Note, DateAdded, DateUpdated) VALUES (?, ?, ?, ?, ?)"_s,
            {from, to, note, m_time->Now(), m_time->Now()});
    }
    /// The links of an item as it sees them: title, way, row and mirror row, note.
    QString Seen(qint64 id)
    {
        QStringList texts;
        for (const std::shared_ptr<CLink>& link : Open(id).Links().All())
            texts << u"%1%2%3/%4 '%5'"_s
                         .arg(link->LinkedItemTitle, link->Direction == LinkDirection::Both ? u"<>"_s : u">"_s)
                         .arg(link->ID)
                         .arg(link->ID2)
                         .arg(link->Note);
        return texts.join(u"; "_s);
    }
    /// All rows, by the letters of their items.
    QString Rows()
    {
        return Texts(*m_database,
                     u"SELECT char(64 + ItemID) || char(64 + LinkItemID) || '''' || Note || '''' FROM ItemLinks ORDER "
                     "BY ItemID, LinkItemID"_s)
            .join(u' ');
    }

    std::unique_ptr<TemporaryHome> m_home;
    std::unique_ptr<FixedClock> m_time;
    std::unique_ptr<ScriptedPrompts> m_prompts;
    std::unique_ptr<Library> m_database;
    std::unique_ptr<CCodeItem> m_item;
    qint64 m_a = 0, m_b = 0, m_c = 0;
};

QTEST_GUILESS_MAIN(TestItemLinks)
#include "tst_item_links.moc"
