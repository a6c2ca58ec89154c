#include "session/CommandRules.h"
#include "session/Commands.h"
#include "support/TestRun.h"

#include <QSet>
#include <QSignalSpy>

using namespace qb;
using namespace Qt::StringLiterals;

class TestCommands : public QObject {
    Q_OBJECT

private:
    /// Names of the commands of @p all that are enabled.
    static QStringList Enabled(const Commands& commands, const QStringList& all)
    {
        QStringList enabled;
        for (const QString& name : all) {
            if (commands.Get(name).Enabled)
                enabled << name;
        }
        return enabled;
    }

    static QStringList Toolbar()
    {
        QStringList keys;
        for (const CommandRow& row : Commands::Table()) {
            if (row.Where == CommandRow::Place::Toolbar)
                keys << QString::fromLatin1(row.Name);
        }
        return keys;
    }

private Q_SLOTS:
    void readOnlyLibrary_holdsWhatWritesUntilItIsOver()
    {
        Commands commands;
        commands.SetEnabled(u"mnuDeleteCode"_s, false);
        commands.SetStanding({.ReadOnly = true});
        QVERIFY(!commands.Get(u"NEW"_s).Enabled);
        QVERIFY(!commands.Get(u"mnuAddCode"_s).Enabled);
        QVERIFY(commands.Get(u"mnuFindInText"_s).Enabled);
        commands.SetEnabled(u"NEW"_s, true);
        commands.SetEnabled(u"mnuAddCode"_s, false);
        commands.SetEnabled(u"mnuDeleteCode"_s, true);
        QVERIFY(!commands.Get(u"NEW"_s).Enabled);
        commands.SetStanding({});
        QVERIFY(commands.Get(u"NEW"_s).Enabled);
        QVERIFY(!commands.Get(u"mnuAddCode"_s).Enabled);
        QVERIFY(commands.Get(u"mnuDeleteCode"_s).Enabled);
    }

    void init() { qb::test::FailOnWarnings(); }

    void table_namesEachCommandOnce()
    {
        QSet<QString> names;
        for (const CommandRow& row : Commands::Table()) {
            if (!*row.Name)
                continue;
            QVERIFY2(!names.contains(QString::fromLatin1(row.Name)), row.Name);
            names.insert(QString::fromLatin1(row.Name));
        }
        QVERIFY(names.size() > 20);
    }

    void shortcuts_areUsedOnce()
    {
        QSet<QString> keys;
        for (const CommandRow& row : Commands::Table()) {
            if (!*row.Shortcut)
                continue;
            QVERIFY2(!keys.contains(QString::fromLatin1(row.Shortcut)), row.Shortcut);
            keys.insert(QString::fromLatin1(row.Shortcut));
        }
    }

    void toolbar_hasItsKeys()
    {
        QStringList keys = Toolbar();
        keys.sort();
        QCOMPARE(keys, (QStringList{u"BACK"_s, u"BOOKMARK"_s, u"DELETE"_s, u"FIND"_s, u"FORWARD"_s, u"NEW"_s, u"NEXT"_s,
                                    u"PREVIOUS"_s, u"PRINT"_s, u"SAVE"_s, u"VIEWBOOKMARKS"_s}));
    }

    void fresh_hidesTheEntriesForProblems()
    {
        const Commands commands;
        for (const QString& name : {u"mnuKeepItem"_s, u"mnuResolveItem"_s, u"mnuItemSeparator1"_s})
            QVERIFY2(!commands.Get(name).Visible, qPrintable(name));
        QVERIFY(commands.Get(u"mnuNewDatabase"_s).Visible && commands.Get(u"mnuNewDatabase"_s).Enabled);
    }

    void change_isAnnounced()
    {
        Commands commands;
        QSignalSpy changed(&commands, &Commands::Changed);
        commands.SetEnabled(u"NEW"_s, false);
        commands.SetVisible(u"mnuKeepItem"_s, true);
        commands.SetChecked(u"mnuViewStatusBar"_s, true);
        commands.SetImage(u"NEXT"_s, u"DOWN_RED"_s, u"tip ü"_s);
        QStringList names;
        for (const QList<QVariant>& arguments : changed)
            names << arguments[0].toString();
        QCOMPARE(names, (QStringList{u"NEW"_s, u"mnuKeepItem"_s, u"mnuViewStatusBar"_s, u"NEXT"_s}));
        QVERIFY(!commands.Get(u"NEW"_s).Enabled);
        QVERIFY(commands.Get(u"mnuKeepItem"_s).Visible);
        QVERIFY(commands.Get(u"mnuViewStatusBar"_s).Checked);
        QCOMPARE(commands.Get(u"NEXT"_s).Icon, u"DOWN_RED"_s);
        QCOMPARE(commands.Get(u"NEXT"_s).Tip, u"tip ü"_s);
    }

    void mainToolbar_isSwitchedAsAWhole()
    {
        Commands commands;
        commands.EnableMainToolbar(false);
        QVERIFY(Enabled(commands, Toolbar()).isEmpty());
        QVERIFY(commands.Get(u"mnuNewDatabase"_s).Enabled); // the menus stay
        commands.EnableMainToolbar(true);
        QCOMPARE(Enabled(commands, Toolbar()), Toolbar());
    }

    void root_canNeitherBeDeletedNorBookmarked()
    {
        Commands commands;
        commands.DoToolBarLogic(true);
        QVERIFY(!commands.Get(u"DELETE"_s).Enabled && !commands.Get(u"BOOKMARK"_s).Enabled);
        commands.DoToolBarLogic(false);
        QVERIFY(commands.Get(u"DELETE"_s).Enabled && commands.Get(u"BOOKMARK"_s).Enabled);
    }

    void itemMenu_followsTheItemsState_data()
    {
        QTest::addColumn<bool>("keep");
        QTest::addColumn<bool>("resolve");
        QTest::newRow("ordinary") << false << false;
        QTest::newRow("deleted") << true << false;
        QTest::newRow("in conflict") << false << true;
    }
    void itemMenu_followsTheItemsState()
    {
        QFETCH(bool, keep);
        QFETCH(bool, resolve);
        Commands commands;
        commands.SetStanding({.IsMother = true, .Deleted = !keep, .Conflict = !resolve, .Marked = !keep});
        commands.HideItemMenuItems(keep, resolve);
        QCOMPARE(commands.Get(u"mnuKeepItem"_s).Visible, keep);
        QCOMPARE(commands.Get(u"mnuKeepItem"_s).Enabled, keep);
        QCOMPARE(commands.Get(u"mnuResolveItem"_s).Visible, resolve);
        QCOMPARE(commands.Get(u"mnuItemSeparator1"_s).Visible, keep || resolve);
        QCOMPARE(commands.Get(u"NEW"_s).Enabled, !keep);
        QCOMPARE(commands.Get(u"DELETE"_s).Enabled, !resolve);
        QVERIFY(commands.Standing().IsMother); // what is not said stays
    }

    void branches_areClosedAtTheRoot()
    {
        Commands commands;
        for (const bool root : {false, true}) {
            commands.DoToolBarLogic(root);
            QCOMPARE(commands.Get(u"mnuCollapseBranchesItem"_s).Visible, root);
            QCOMPARE(commands.Get(u"mnuCollapseBranchesItem"_s).Enabled, root);
        }
    }

    void everyRule_isOfACommand()
    {
        const Commands commands;
        QVERIFY(CommandRules::Names().size() > 20);
        for (const QString& name : CommandRules::Names()) {
            const auto table = Commands::Table();
            QVERIFY2(std::any_of(table.begin(), table.end(),
                                 [&](const CommandRow& row) { return name == QLatin1StringView(row.Name); }),
                     qPrintable(name));
        }
        QVERIFY(CommandRules::Allows(u"mnuFindInText"_s, {.NoLibrary = true})); // nothing bars it
    }

    void facesOfOneCommand_haveOneState_data()
    {
        QTest::addColumn<ItemStanding>("standing");
        QTest::newRow("ordinary") << ItemStanding{};
        QTest::newRow("root") << ItemStanding{.Root = true};
        QTest::newRow("no library") << ItemStanding{.NoLibrary = true, .Root = true};
        QTest::newRow("gone") << ItemStanding{.FileGone = true};
        QTest::newRow("exported") << ItemStanding{.IsChild = true, .Exported = true};
        QTest::newRow("deleted") << ItemStanding{.IsMother = true, .Deleted = true, .Marked = true};
        QTest::newRow("conflict") << ItemStanding{.IsMother = true, .Conflict = true};
        QTest::newRow("orphan") << ItemStanding{.Orphan = true};
        QTest::newRow("orphan in a child") << ItemStanding{.IsChild = true, .Orphan = true};
    }
    void facesOfOneCommand_haveOneState()
    {
        QFETCH(ItemStanding, standing);
        Commands commands;
        commands.SetStanding(standing);
        const std::pair<QString, QString> faces[] = {
            {u"mnuAddCode"_s, u"NEW"_s},       {u"mnuDeleteCode"_s, u"DELETE"_s},
            {u"mnuBookMark"_s, u"BOOKMARK"_s}, {u"mnuColorize"_s, u"COLORIZE"_s},
            {u"mnuAddLink"_s, u"LINK_MODE"_s}, {u"mnuAddLink"_s, u"mnuAddLinkTwoWayNew"_s}};
        for (const auto& [entry, button] : faces)
            QVERIFY2(commands.Get(entry).Enabled == commands.Get(button).Enabled, qPrintable(entry));
        QCOMPARE(commands.Get(u"DELETE"_s).Enabled, !IsBarred(ItemChange::Delete, standing));
    }

    void commandThatIsBarred_doesNotRun()
    {
        Commands commands;
        int runs = 0;
        QVERIFY(!commands.HasProcedure(u"DELETE"_s));
        commands.Run(u"DELETE"_s); // nothing stands behind it
        QSignalSpy changed(&commands, &Commands::Changed);
        commands.Register(u"DELETE"_s, [&runs] { ++runs; });
        QCOMPARE(changed.size(), 1);
        QVERIFY(commands.HasProcedure(u"DELETE"_s));
        commands.Run(u"DELETE"_s);
        QCOMPARE(runs, 1);
        commands.SetStanding({.IsChild = true, .Exported = true});
        commands.Run(u"DELETE"_s);
        QCOMPARE(runs, 1);
        commands.SetEnabled(u"DELETE"_s, true); // whatever wants it
        commands.Run(u"DELETE"_s);
        QCOMPARE(runs, 1);
        commands.SetStanding({});
        commands.SetEnabled(u"DELETE"_s, false);
        commands.Run(u"DELETE"_s);
        QCOMPARE(runs, 1);
    }

    void replicationMenu_fitsTheLibrary_data()
    {
        QTest::addColumn<bool>("child");
        QTest::addColumn<bool>("mother");
        QTest::addColumn<bool>("exported");
        QTest::addColumn<QStringList>("enabled");
        const QString create = u"mnuDBToolsCreateReplicaItem"_s, exportIt = u"mnuDBToolsExportChangesItem"_s,
                      synchronize = u"mnuDBToolsSynchronizeItem"_s, forget = u"mnuDBToolsForgetReplicaItem"_s,
                      again = u"mnuExportAgainItem"_s, reports = u"mnuSynchronizationReportsItem"_s,
                      handOut = u"mnuHandOutAgainItem"_s, undo = u"mnuUndoSynchronization"_s;
        QTest::newRow("plain") << false << false << false << QStringList{create};
        QTest::newRow("mother") << false << true << false
                                << QStringList{create, synchronize, forget, reports, handOut, undo};
        QTest::newRow("child") << true << false << false << QStringList{exportIt, reports, undo};
        QTest::newRow("child that exported") << true << false << true << QStringList{again, synchronize, reports, undo};
        QTest::newRow("child and mother")
            << true << true << false << QStringList{exportIt, synchronize, forget, reports, handOut, undo};
        QTest::newRow("child and mother that exported")
            << true << true << true << QStringList{again, synchronize, forget, reports, handOut, undo};
    }
    void replicationMenu_fitsTheLibrary()
    {
        QFETCH(bool, child);
        QFETCH(bool, mother);
        QFETCH(bool, exported);
        Commands commands;
        commands.SetStanding({.IsChild = child, .IsMother = mother, .Exported = exported, .Root = true});
        QTEST(Enabled(commands,
                      {u"mnuDBToolsCreateReplicaItem"_s, u"mnuDBToolsExportChangesItem"_s, u"mnuExportAgainItem"_s,
                       u"mnuDBToolsSynchronizeItem"_s, u"mnuDBToolsForgetReplicaItem"_s,
                       u"mnuSynchronizationReportsItem"_s, u"mnuHandOutAgainItem"_s, u"mnuUndoSynchronization"_s}),
              "enabled");
    }
};

QB_TEST_MAIN(TestCommands)
#include "tst_commands.moc"
