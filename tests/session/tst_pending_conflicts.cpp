#include "removed/RemovedIndex.h"
#include "session/PendingConflicts.h"
#include "store/CDBCreate.h"
#include "store/PendingRemoved.h"
#include "support/TestSession.h"

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// What the window's commands do about conflicts, and what is asked before a synchronization.
class TestPendingConflicts : public QObject {
    Q_OBJECT

    std::unique_ptr<TestSession> s;
    std::unique_ptr<PendingConflicts> m_conflicts;
    qint64 m_item = 0;
    int m_shown = 0;

    Library& Db() { return *s->State.CurrentDatabase; }
    qint64 Left() { return CountOf(Db(), u"TempItems"_s); }

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        s = std::make_unique<TestSession>();
        Library& library = s->OpenLibrary();
        m_item = AddItem(library, 0, u"item"_s);
        MakeMother(library, Date());
        CDBCreate().CreateTemporaryTablesInMainDB(library);
        library.Execute(u"INSERT INTO TempItems (ID, Title, LastChanged) VALUES (?, 'theirs', 5)"_s, {m_item});
        s->Tree.FillTree();
        m_conflicts = std::make_unique<PendingConflicts>(s->State, s->CommandStates, s->Tree);
        m_shown = 0;
        m_conflicts->ShowSolver = [this](Library&, std::optional<qint64>) {
            ++m_shown;
            return QList<qint64>();
        };
    }
    void cleanup()
    {
        m_conflicts.reset();
        s.reset();
    }

    void withoutConflicts_theWayIsClear()
    {
        Db().Execute(u"DELETE FROM TempItems"_s);
        QVERIFY(m_conflicts->ResolvePendingConflicts());
        CDBCreate().RemoveTemporaryTablesFromMainDB(Db());
        QVERIFY(m_conflicts->ResolvePendingConflicts());
    }

    void cancel_stops()
    {
        s->Script.ExpectMsgBox(u"Unresolved conflicts"_s, MsgBoxResult::Cancel);
        QVERIFY(!m_conflicts->ResolvePendingConflicts());
        const Message& message = s->Script.Messages.last();
        QVERIFY(
            message.Text.startsWith(u"You can not synchronize when there are still unresolved item conflicts in the "
                                    "currently opened database.\r\nYou first have to resolve all conflicts"_s));
        QVERIFY(message.Text.endsWith(u"for the previous synchronization."_s));
        QCOMPARE(message.Buttons, MsgBoxButtons::YesNoCancel);
        QCOMPARE(message.Icon, MsgBoxIcon::Exclamation);
        QCOMPARE(Left(), 1);
        QCOMPARE(m_shown, 0);
    }

    void no_discardsAndKeepsBesideTheLibrary()
    {
        s->Script.ExpectMsgBox(u"Unresolved conflicts"_s, MsgBoxResult::No);
        QVERIFY(m_conflicts->ResolvePendingConflicts());
        QVERIFY(!Db().TableExists(u"TempItems"_s));
        QVERIFY(!Db().TableExists(u"TempFiles"_s));
        QVERIFY(Db().TableExists(u"TempHTMLFiles"_s)); // which stays
        const QDir removed(RemovedFolderOf(Db().Name()));
        const QStringList lists = removed.entryList({u"*.json"_s});
        QCOMPARE(lists.size(), 1);
        const RemovedIndex index = ReadRemovedIndex(removed.filePath(lists.first()));
        QCOMPARE(index.Header.Kind, RemovalKind::ConflictsDiscarded);
        QCOMPARE(index.Entries[0].Title, u"theirs"_s);
        QVERIFY(!s->Tree.WalksProblems());
    }

    void yes_showsTheSolverUntilAllIsSolvedOrGivenUp()
    {
        s->Script.ExpectMsgBox(u"Unresolved conflicts"_s, MsgBoxResult::Yes);
        s->Script.ExpectMsgBox(u"Conflicts still exist"_s, MsgBoxResult::Retry);
        s->Script.ExpectMsgBox(u"Conflicts still exist"_s, MsgBoxResult::Cancel);
        QVERIFY(!m_conflicts->ResolvePendingConflicts());
        QCOMPARE(m_shown, 2);
        QCOMPARE(s->Script.Messages.last().Text, u"You haven't resolved all conflicts. Do you want to retry?"_s);
        QCOMPARE(s->Script.Messages.last().Icon, MsgBoxIcon::Question);
        QCOMPARE(s->Script.Messages.last().Buttons, MsgBoxButtons::RetryCancel);
        QCOMPARE(Left(), 1);
        m_conflicts->ShowSolver = [](Library& library, std::optional<qint64>) {
            library.Execute(u"DELETE FROM TempItems"_s);
            return QList<qint64>();
        };
        s->Script.ExpectMsgBox(u"Unresolved conflicts"_s, MsgBoxResult::Yes);
        QVERIFY(m_conflicts->ResolvePendingConflicts());
        QVERIFY(!Db().TableExists(u"TempItems"_s));
    }

    void solver_isShownForAllOrForTheItem()
    {
        QList<std::optional<qint64>> asked;
        m_conflicts->ShowSolver = [&](Library& library, std::optional<qint64> item) {
            asked << item;
            library.Execute(u"UPDATE Items SET Title = 'decided' WHERE ID = ?"_s, {m_item});
            library.Execute(u"DELETE FROM TempItems"_s);
            return QList<qint64>{m_item};
        };
        s->Click(u"item"_s);
        QCOMPARE(s->Image(u"item"_s), u"CONFLICT_ITEM"_s);
        m_conflicts->mnuResolveItem_Click();
        QCOMPARE(asked, QList<std::optional<qint64>>{m_item});
        QCOMPARE(s->Image(u"decided"_s), u"CHILD"_s);
        QCOMPARE(s->State.oCodeItem->Title(), u"decided"_s); // the item is shown as it was decided
        QVERIFY(!s->Tree.WalksProblems());
        m_conflicts->mnuConflictSolver_Click();
        QCOMPARE(asked.last(), std::optional<qint64>());
    }

    void itemThatStays_keepsTheSolverAway()
    {
        s->Tree.SaveItem = [] { return false; };
        m_conflicts->mnuConflictSolver_Click();
        QCOMPARE(m_shown, 0);
    }
};

QB_TEST_MAIN(TestPendingConflicts)
#include "tst_pending_conflicts.moc"
