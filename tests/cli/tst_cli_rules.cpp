#include "store/CDBCreate.h"
#include "store/ItemBranch.h"
#include "store/ItemRules.h"
#include "support/CliRun.h"
#include "support/LibraryBuilder.h"
#include "support/TestRun.h"

#include <QTest>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// Every command that changes items, on an item in every state that may bar it.
class TestCliRules : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        m_forms = std::make_unique<TemporaryHome>();
        const QString form = m_forms->Path(u"form.qbd"_s);
        MakeLibrary(form, LanguageType::VB);
        const QString other = m_forms->Path(u"other.qbd"_s);
        AddItem(*MakeLibrary(other), 0, u"arriving"_s);
        QCOMPARE(Cli({u"export"_s, other, u"0"_s, m_forms->Path(u"branch.qbx"_s)}).Status, 0);
    }
    void cleanupTestCase() { m_forms.reset(); }
    void init()
    {
        FailOnWarnings();
        m_home = std::make_unique<TemporaryHome>();
    }
    void cleanup()
    {
        m_database.reset();
        m_home.reset();
    }

    void command_doesWhatTheItemsStateAllows_data()
    {
        QTest::addColumn<QString>("state");
        QTest::addColumn<QString>("command");
        QTest::addColumn<int>("bar"); // Bar::None: it is done
        const QString all =
            u"add set rename colour attach describe detach page link unlink import take move fill delete keep"_s;
        struct Row {
            QString State;
            QHash<QString, Bar> Refused;
        };
        const auto each = [](const QString& commands, Bar bar, QHash<QString, Bar> others = {}) {
            for (const QString& command : commands.split(u' '))
                others.insert(command, bar);
            return others;
        };
        const QString touching = u"set rename colour attach describe detach page link unlink move"_s;
        const Row rows[] = {
            {u"plain"_s, {{u"keep"_s, Bar::NotDeleted}}},
            {u"in a mother"_s, {{u"keep"_s, Bar::NotDeleted}}},
            {u"in a child"_s, {{u"keep"_s, Bar::NotDeleted}}},
            {u"in an exported child"_s, {{u"keep"_s, Bar::NotDeleted}, {u"delete"_s, Bar::Exported}}},
            {u"in an exported child that is a mother"_s, {{u"keep"_s, Bar::NotDeleted}, {u"delete"_s, Bar::Exported}}},
            {u"orphan"_s, each(u"add rename link import take fill"_s, Bar::Orphan, {{u"keep"_s, Bar::NotDeleted}})},
            {u"orphan in a mother"_s,
             each(u"add rename link import take fill"_s, Bar::Orphan, {{u"keep"_s, Bar::NotDeleted}})},
            {u"orphan in a child"_s,
             each(touching + u" delete"_s, Bar::LockedOrphan,
                  each(u"add import take fill"_s, Bar::Orphan, {{u"keep"_s, Bar::NotDeleted}}))},
            {u"folder of orphans in a mother"_s, each(u"add rename link import take fill"_s, Bar::Orphan,
                                                      {{u"keep"_s, Bar::NotDeleted}, {u"move"_s, Bar::OrphanFolder}})},
            {u"deleted by a child"_s, each(u"add import take "_s + touching, Bar::Deleted)},
            {u"waiting in a child"_s, each(u"keep "_s + touching, Bar::Waiting)},
            {u"in conflict"_s,
             {{u"rename"_s, Bar::Conflict}, {u"delete"_s, Bar::Conflict}, {u"keep"_s, Bar::Conflict}}},
        };
        for (const Row& row : rows) {
            for (const QString& command : all.split(u' '))
                QTest::addRow("%s: %s", qPrintable(row.State), qPrintable(command))
                    << row.State << command << int(row.Refused.value(command, Bar::None));
        }
    }

    void command_doesWhatTheItemsStateAllows()
    {
        QFETCH(QString, state);
        QFETCH(QString, command);
        QFETCH(int, bar);
        MakeLibraryWithItemThatIs(state);
        const QStringList before = AllRows();
        const Outcome outcome = Cli(ArgumentsOf(command));
        if (bar == int(Bar::None)) {
            QVERIFY2(outcome.Status == 0, qPrintable(outcome.Error));
            QVERIFY(AllRows() != before);
            return;
        }
        QCOMPARE(outcome.Status, 1);
        QVERIFY2(outcome.Error.contains(SentenceOf(Bar(bar))), qPrintable(outcome.Error));
        QVERIFY2(outcome.Error.contains(u"nothing was changed"_s), qPrintable(outcome.Error));
        QCOMPARE(outcome.Out, QString());
        QCOMPARE(AllRows(), before);
        QCOMPARE(StoredNames(FilesFolderOf(m_database->Name())), m_storedBefore);
    }

    void removalOfDeletedItems_isTheMothersAlone_data()
    {
        QTest::addColumn<QString>("state");
        QTest::addColumn<int>("status");
        QTest::newRow("plain") << u"plain"_s << 1;
        QTest::newRow("child") << u"waiting in a child"_s << 1;
        QTest::newRow("mother") << u"deleted by a child"_s << 0;
    }
    void removalOfDeletedItems_isTheMothersAlone()
    {
        QFETCH(QString, state);
        MakeLibraryWithItemThatIs(state);
        const QStringList before = AllRows();
        const Outcome outcome = Cli({u"remove-deleted"_s, m_database->Name()});
        QTEST(outcome.Status, "status");
        QCOMPARE(AllRows() == before, outcome.Status == 1);
        QCOMPARE(outcome.Error.contains(u"nothing was changed"_s), outcome.Status == 1);
    }

    void removalOfDeletedItems_leavesACleanLibrary()
    {
        MakeLibraryWithItemThatIs(u"deleted by a child"_s);
        const qint64 below = AddItem(*m_database, m_item, u"below"_s);
        AddStoredFile(*m_database, m_item, u"ü.txt"_s, "stored", {});
        const Outcome outcome = Cli({u"remove-deleted"_s, m_database->Name()});
        QCOMPARE(outcome.Status, 0);
        QCOMPARE(outcome.Out, u"1 items removed\n"_s);
        QVERIFY2(outcome.Error.contains(u"Orphaned Items"), qPrintable(outcome.Error));
        QCOMPARE(Cli({u"check"_s, m_database->Name()}).Out, u"Nothing is wrong with the library.\n"_s);
        QCOMPARE(StoredNames(m_database->FilesFolder()), QStringList());
        QCOMPARE(
            Texts(*m_database, u"SELECT p.Title FROM Items i, Items p WHERE p.ID = i.ParentID AND i.ID = ?"_s, {below}),
            QStringList{u"Orphaned Items"_s});
    }

    // Orphans

    void orphanThatIsTidied_keepsItsDate()
    {
        MakeLibraryWithItemThatIs(u"orphan in a mother"_s);
        m_database->Execute(u"UPDATE Items SET LastChanged = 77 WHERE ID = ?"_s, {m_item});
        QCOMPARE(Cli(ArgumentsOf(u"set"_s)).Status, 0);
        QCOMPARE(m_database->QueryValue(u"SELECT LastChanged FROM Items WHERE ID = ?"_s, {m_item}).ToLong(), 77);
    }

    void lastOrphanThatIsMoved_takesTheFolderAlong_data()
    {
        QTest::addColumn<QString>("state");
        QTest::addColumn<QString>("command");
        QTest::addColumn<bool>("stays");
        QTest::newRow("moved in a mother") << u"orphan in a mother"_s << u"move"_s << false;
        QTest::newRow("deleted in a mother") << u"orphan in a mother"_s << u"delete"_s << false;
        QTest::newRow("moved in a plain library") << u"orphan"_s << u"move"_s << true;
        QTest::newRow("deleted in a plain library") << u"orphan"_s << u"delete"_s << true;
    }
    void lastOrphanThatIsMoved_takesTheFolderAlong()
    {
        QFETCH(QString, state);
        QFETCH(QString, command);
        MakeLibraryWithItemThatIs(state);
        m_database->Execute(u"UPDATE Items SET LastChanged = 77 WHERE ID = ?"_s, {m_item});
        QCOMPARE(Cli(ArgumentsOf(command)).Status, 0);
        QTEST(!Texts(*m_database, u"SELECT Title FROM Items WHERE Title = 'Orphaned Items'"_s).isEmpty(), "stays");
        if (command == u"move"_s) // and gets a date only where others are to learn of it
            QCOMPARE(m_database->QueryValue(u"SELECT LastChanged FROM Items WHERE ID = ?"_s, {m_item}).ToLong() == 77,
                     state == u"orphan"_s);
    }

private:
    /// An item with a stored file and a link, in one of the states; beside it the item "other".
    void MakeLibraryWithItemThatIs(const QString& state)
    {
        QVERIFY(QFile::copy(m_forms->Path(u"form.qbd"_s), m_home->Path(u"Büch erei.qbd"_s)));
        m_database = Library::Open(m_home->Path(u"Büch erei.qbd"_s));
        const bool orphan = state.startsWith(u"orphan"_s);
        const bool folder = state.startsWith(u"folder"_s);
        m_other = AddItem(*m_database, 0, u"other"_s);
        const qint64 parent = orphan ? AddItem(*m_database, 0, OrphanedItemsTitle) : 0;
        m_item = AddItem(*m_database, parent, folder ? OrphanedItemsTitle : u"item"_s, u"if x then"_s);
        m_database->Execute(u"INSERT INTO ItemLinks (ItemID, LinkItemID, DateAdded) VALUES (?, ?, 5)"_s,
                            {m_item, m_other});
        m_third = AddItem(*m_database, 0, u"third"_s);
        m_file = AddStoredFile(*m_database, m_item, u"ä.txt"_s, "stored", Clock::Now());
        if (state.contains(u"child"_s) && state != u"deleted by a child"_s)
            MakeChild(*m_database, m_home->Path(u"mother.qbd"_s), Date());
        if (state.contains(u"mother"_s) || state == u"deleted by a child"_s || state == u"in conflict"_s)
            MakeMother(*m_database, Date());
        if (state.contains(u"exported"_s))
            m_database->Execute(u"UPDATE Properties SET LastExported = 5"_s);
        if (state.startsWith(u"deleted"_s) || state.startsWith(u"waiting"_s))
            m_database->Execute(u"UPDATE Items SET LastChanged = 0 WHERE ID = ?"_s, {m_item});
        if (state == u"in conflict"_s) {
            CDBCreate(m_database.get()).Create_TblDef_Items(true, u"TempItems"_s);
            m_database->Execute(u"INSERT INTO TempItems (ID, Title) VALUES (?, 'c')"_s, {m_item});
        }
        m_storedBefore = StoredNames(FilesFolderOf(m_database->Name()));
        WriteFile(m_home->Path(u"in/new ü.txt"_s), "text");
    }

    QStringList ArgumentsOf(const QString& command) const
    {
        const QString item = QString::number(m_item);
        const QString other = QString::number(m_other);
        const QString third = QString::number(m_third);
        const QString library = m_home->Path(u"Büch erei.qbd"_s);
        const QHash<QString, QStringList> arguments{
            {u"add"_s, {u"add"_s, library, u"--parent"_s, item, u"--title"_s, u"new"_s}},
            {u"set"_s, {u"set"_s, library, item, u"--description"_s, u"changed"_s}},
            {u"rename"_s, {u"set"_s, library, item, u"--title"_s, u"renamed"_s}},
            {u"colour"_s, {u"colorize"_s, library, item, u"--save"_s}},
            {u"attach"_s, {u"attach"_s, library, item, m_home->Path(u"in/new ü.txt"_s)}},
            {u"describe"_s,
             {u"file"_s, u"describe"_s, library, QString::number(m_file), u"--description"_s, u"said"_s}},
            {u"detach"_s, {u"detach"_s, library, QString::number(m_file)}},
            {u"page"_s, {u"page"_s, u"link"_s, library, item, u"example.org"_s}},
            {u"link"_s, {u"link"_s, library, item, third}},
            {u"unlink"_s, {u"unlink"_s, library, item, other}},
            {u"import"_s, {u"import-folder"_s, library, m_home->Path(u"in"_s), u"--parent"_s, item}},
            {u"take"_s, {u"import"_s, library, m_forms->Path(u"branch.qbx"_s), u"--parent"_s, item}},
            {u"move"_s, {u"move"_s, library, item, other}},
            {u"fill"_s, {u"move"_s, library, third, item}},
            {u"delete"_s, {u"delete"_s, library, item}},
            {u"keep"_s, {u"keep"_s, library, item}},
        };
        return arguments[command];
    }

    QStringList AllRows()
    {
        return Texts(*m_database, u"SELECT quote(ID) || quote(ParentID) || quote(Title) || quote(Description) || "
                                  "quote(Code) || quote(LastChanged) || quote(HTMLPage) FROM Items ORDER BY ID"_s)
               + Texts(
                   *m_database,
                   u"SELECT quote(ID) || quote(CodeID) || quote(Title) || quote(Description) FROM Files ORDER BY ID"_s)
               + Texts(*m_database,
                       u"SELECT quote(ItemID) || quote(LinkItemID) || quote(Note) FROM ItemLinks ORDER BY ID"_s);
    }

    std::unique_ptr<TemporaryHome> m_forms; ///< holds a library and an export, which are made once
    std::unique_ptr<TemporaryHome> m_home;
    std::unique_ptr<Library> m_database;
    qint64 m_item = 0;
    qint64 m_other = 0;
    qint64 m_third = 0;
    qint64 m_file = 0;
    QStringList m_storedBefore;
};

QB_TEST_MAIN(TestCliRules)
#include "tst_cli_rules.moc"
