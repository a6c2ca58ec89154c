#include "store/CDBCreate.h"
#include "store/ItemBranch.h"
#include "store/ItemRules.h"
#include "support/FolderContents.h"
#include "support/LibraryBuilder.h"

#include <QTest>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// What bars which change of an item.
class TestItemRules : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { FailOnWarnings(); }

    void unwritableLibrary_barsEverything_data()
    {
        QTest::addColumn<int>("change");
        for (int change = 0; change <= int(ItemChange::Write); ++change) {
            if (ItemChange(change) != ItemChange::Print)
                QTest::addRow("%d", change) << change;
        }
    }
    void unwritableLibrary_barsEverything()
    {
        QFETCH(int, change);
        QCOMPARE(WhatBars(ItemChange(change), {.ReadOnly = true}), Bar::ReadOnly);
        QCOMPARE(WhatBars(ItemChange(change), {.FileGone = true, .ReadOnly = true}), Bar::FileGone);
        for (const Bar bar : {Bar::ReadOnly, Bar::FileGone})
            QVERIFY(!SentenceOf(bar).isEmpty());
    }

    void print_isBarredAtTheRootAlone_andReadingNowhere()
    {
        QCOMPARE(WhatBars(ItemChange::Print, {.Root = true}), Bar::Root);
        QCOMPARE(WhatBars(ItemChange::Print, {.NoLibrary = true}), Bar::NoLibrary);
        const ItemStanding standings[] = {{},
                                          {.FileGone = true},
                                          {.ReadOnly = true},
                                          {.IsChild = true, .Orphan = true},
                                          {.IsMother = true, .Deleted = true},
                                          {.IsMother = true, .Conflict = true}};
        for (const ItemStanding& standing : standings) {
            QVERIFY(!IsBarred(ItemChange::Print, standing));
            QVERIFY(!IsBarred(ItemChange::Read, standing));
        }
        QVERIFY(!IsBarred(ItemChange::Read, {.Root = true}));
        QCOMPARE(WhatBars(ItemChange::Read, {.NoLibrary = true}), Bar::NoLibrary);
    }

    void change_isBarredByTheStateOfTheItem_data()
    {
        QTest::addColumn<ItemStanding>("standing");
        QTest::addColumn<QString>("allowed");
        const auto add = [](const char* name, const ItemStanding& standing, const QString& allowed) {
            QTest::newRow(name) << standing << allowed;
        };
        const QString ordinary =
            u"Add AddBeside Import Edit EditUnasked Rename Move Receive Delete Bookmark Link Write"_s;
        add("item", {}, ordinary);
        add("item of a child", {.IsChild = true}, ordinary);
        add("item of a mother", {.IsMother = true}, ordinary);
        add("item of an exported child", {.IsChild = true, .Exported = true}, Without(ordinary, u"Delete"_s));
        add("item of an exported child and mother", {.IsChild = true, .IsMother = true, .Exported = true},
            Without(ordinary, u"Delete"_s));
        add("root", {.Root = true}, u"Add Import Edit Receive Write"_s);
        add("deleted", {.IsMother = true, .Deleted = true, .Marked = true},
            u"Edit Move Receive Delete Keep Bookmark Link Write"_s);
        add("waiting", {.IsChild = true, .Waiting = true, .Marked = true}, Without(ordinary, u"EditUnasked"_s));
        add("in conflict", {.IsMother = true, .Conflict = true},
            u"Add AddBeside Import Edit EditUnasked Move Receive Resolve Bookmark Link Write"_s);
        add("orphan", {.Orphan = true}, u"Edit EditUnasked Move Delete Write"_s);
        add("orphan in a mother", {.IsMother = true, .Orphan = true}, u"Edit EditUnasked Move Delete Write"_s);
        add("orphan in a child", {.IsChild = true, .Orphan = true}, u"Write"_s);
        add("orphan in a child and mother", {.IsChild = true, .IsMother = true, .Orphan = true}, u"Write"_s);
        add("orphan in conflict", {.IsMother = true, .Conflict = true, .Orphan = true},
            u"Edit EditUnasked Move Resolve Write"_s);
        add("folder", {.Orphan = true, .OrphanUnderRoot = true}, u"AddBeside Edit EditUnasked Move Delete Write"_s);
        add("folder in a mother", {.IsMother = true, .Orphan = true, .OrphanUnderRoot = true},
            u"AddBeside Edit EditUnasked Delete Write"_s);
        add("folder in a child", {.IsChild = true, .Orphan = true, .OrphanUnderRoot = true}, u"AddBeside Write"_s);
    }
    void change_isBarredByTheStateOfTheItem()
    {
        QFETCH(ItemStanding, standing);
        const char* names[] = {"Add",    "AddBeside", "Import",  "Edit",     "EditUnasked", "Rename", "Move", "Receive",
                               "Delete", "Keep",      "Resolve", "Bookmark", "Link",        "Print",  "Write"};
        QStringList allowed;
        for (size_t i = 0; i < std::size(names); ++i) {
            if (ItemChange(i) == ItemChange::Print)
                continue;
            if (!IsBarred(ItemChange(i), standing))
                allowed << QString::fromLatin1(names[i]);
            else
                QVERIFY(!SentenceOf(WhatBars(ItemChange(i), standing)).isEmpty());
        }
        QTEST(allowed.join(u' '), "allowed");
    }

    void date_staysWithAnOrphanThatIsTidied()
    {
        QVERIFY(MovesDate(ItemChange::Edit, {}));
        QVERIFY(!MovesDate(ItemChange::Edit, {.Orphan = true}));
        QVERIFY(!MovesDate(ItemChange::Edit, {.IsMother = true, .Orphan = true}));
        QVERIFY(!MovesDate(ItemChange::Move, {.Orphan = true}));
        QVERIFY(MovesDate(ItemChange::Move, {.IsMother = true, .Orphan = true}));
    }

    // Out of the rows

    void standing_isReadFromTheRows_data()
    {
        QTest::addColumn<bool>("child");
        QTest::addColumn<bool>("mother");
        QTest::addColumn<QString>("standing");
        QTest::newRow("plain") << false << false
                               << u"item: / gone: M / conflict: / regained: M / folder: O F / orphan: O / like: O F"_s;
        QTest::newRow("child")
            << true << false
            << u"item: / gone: W M / conflict: / regained: W M / folder: O F / orphan: O / like: O F"_s;
        QTest::newRow("mother")
            << false << true
            << u"item: / gone: D M / conflict: C / regained: C M / folder: O F / orphan: O / like: O F"_s;
        QTest::newRow("both")
            << true << true
            << u"item: / gone: W M / conflict: C / regained: C M / folder: O F / orphan: O / like: O F"_s;
    }
    void standing_isReadFromTheRows()
    {
        QFETCH(bool, child);
        QFETCH(bool, mother);
        TemporaryHome home;
        const auto database = MakeLibrary(home.Path(u"Büch erei.qbd"_s));
        const qint64 gone = AddItem(*database, 0, u"gone"_s);
        const qint64 conflict = AddItem(*database, 0, u"conflict"_s);
        const qint64 regained = AddItem(*database, 0, u"regained"_s);
        const qint64 folder = AddItem(*database, 0, OrphanedItemsTitle);
        const std::pair<QString, qint64> items[] = {
            {u"item"_s, AddItem(*database, AddItem(*database, 0, u"x"_s), OrphanedItemsTitle)},
            {u"gone"_s, gone},
            {u"conflict"_s, conflict},
            {u"regained"_s, regained},
            {u"folder"_s, folder},
            {u"orphan"_s, AddItem(*database, AddItem(*database, folder, u"y"_s), u"z"_s)},
            {u"like"_s, AddItem(*database, 0, u"Orphaned Items, mine"_s)},
        };
        if (child)
            MakeChild(*database, home.Path(u"m.qbd"_s), Date());
        if (mother)
            MakeMother(*database, Date());
        CDBCreate(database.get()).Create_TblDef_Items(true, u"TempItems"_s);
        database->Execute(u"INSERT INTO TempItems (ID, Title) VALUES (?, 'c'), (?, 'r')"_s, {conflict, regained});
        database->Execute(u"UPDATE Items SET LastChanged = 0 WHERE ID IN (?, ?)"_s, {gone, regained});
        QStringList texts;
        for (const auto& [name, id] : items) {
            const ItemStanding standing = StandingOf(*database, id);
            QCOMPARE(standing.IsChild, child);
            QCOMPARE(standing.IsMother, mother);
            QVERIFY(!standing.Root && !standing.ReadOnly && !standing.FileGone && !standing.Exported);
            QString text = name + u':';
            for (const auto& [holds, letter] :
                 {std::pair(standing.Deleted, 'D'), std::pair(standing.Waiting, 'W'), std::pair(standing.Conflict, 'C'),
                  std::pair(standing.Orphan, 'O'), std::pair(standing.OrphanUnderRoot, 'F'),
                  std::pair(standing.Marked, 'M')})
                text += holds ? u' ' + QString(QLatin1Char(letter)) : QString();
            texts << text;
        }
        QTEST(texts.join(u" / "_s), "standing");
        QVERIFY(StandingOf(*database, 0).Root);
    }

    void exportedChild_isKnownByItsDate()
    {
        TemporaryHome home;
        const auto database = MakeLibrary(home.Path(u"l.qbd"_s));
        const qint64 item = AddItem(*database, 0, u"item"_s);
        MakeChild(*database, home.Path(u"m.qbd"_s), Date());
        QVERIFY(!StandingOf(*database, item).Exported);
        database->Execute(u"UPDATE Properties SET LastExported = 9"_s);
        QVERIFY(StandingOf(*database, item).Exported);
        QB_VERIFY_RAISES(RequireChange(*database, item, {ItemChange::Edit, ItemChange::Delete}),
                         ErrorNumber::ValueNotAllowed);
        RequireChange(*database, item, {ItemChange::Edit});
        QB_VERIFY_RAISES(RequireChange(*database, 4711, {ItemChange::Edit}), ErrorNumber::ItemNotFound);
        QVERIFY(
            Raised([&] { RequireChange(*database, item, {ItemChange::Delete}); }).contains(u": Item %1: "_s.arg(item)));
        const QString ofTheRoot = Raised([&] { RequireChange(*database, 0, {ItemChange::Delete}); });
        QVERIFY2(ofTheRoot.endsWith(u"; nothing was changed."_s) && !ofTheRoot.contains(u"Item 0"_s),
                 qPrintable(ofTheRoot));
    }

private:
    static QString Without(const QString& words, const QString& word)
    {
        QStringList rest = words.split(u' ');
        rest.removeAll(word);
        return rest.join(u' ');
    }
};

QB_TEST_MAIN(TestItemRules)
#include "tst_item_rules.moc"
