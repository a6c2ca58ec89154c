#include "replication/ReplicaFamily.h"

#include "exchange/BranchExport.h"
#include "exchange/BranchImport.h"
#include "replication/MergedFiles.h"
#include "replication/ReplicaList.h"
#include "support/LibraryState.h"

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

namespace {

using Family = ReplicaFamily;

} // namespace

/// Lost files, steps in the wrong order, and sides that come back from an earlier state.
class TestReplicaWaysBack : public QObject {
    Q_OBJECT

    std::unique_ptr<Family> f;

    /// Changes of all kinds, which only A has.
    void WorkInA()
    {
        f->EditCode(f->A(), Family::X, u"int by_a;"_s);
        const qint64 added = f->Add(f->A(), Family::P, u"added"_s);
        f->AttachTo(f->A(), added, u"new.txt"_s, "new");
        f->SetPage(f->A(), added, "by A");
        f->In(f->A(), [added](Library& library) {
            library.Execute(u"INSERT INTO ItemLinks (ItemID, LinkItemID, DateAdded) VALUES (?, ?, ?)"_s,
                            {added, Family::X, library.NextStamp()});
        });
    }
    /// The file stays as it is, and so does she; the message names the way.
    void VerifyRefusedByTheMother(const QString& way)
    {
        const auto before = StateOf(f->M());
        const QByteArray file = ReadFile(f->File);
        f->Prompts.ExpectMsgBox(u"Old synchronization file"_s);
        QCOMPARE(f->TakeIn(f->M()).Result, 0);
        const QString text = f->Prompts.Messages.last().Text;
        QVERIFY(text.startsWith(u"This export file has already been synchronized with the mother database.\r\n"_s));
        QVERIFY2(text.contains(way), qPrintable(text));
        QVERIFY2(text.contains(u"Export the items of the replica, import them"_s), qPrintable(text));
        QCOMPARE(DifferenceOf(StateOf(f->M()), before), QString());
        QCOMPARE(ReadFile(f->File), file);
    }
    void HandOutTo(const QString& description)
    {
        f->In(f->M(), [&](Library& library) { HandOutAgain(library, ChildAt(library, description), f->File); });
    }
    static QString ChildAt(Library& mother, const QString& description)
    {
        return mother.QueryValue(u"SELECT DBCopyID FROM ChildCopies WHERE ShortDescr = ?"_s, {description}).ToText();
    }
    /// All of A is exported, imported at the mother, and given out anew.
    void VerifyTakenOverAsABranch()
    {
        const QString branch = f->Home.Path(u"all.qbx"_s);
        f->In(f->A(), [&](Library& library) { ExportItems(library, 0, branch); });
        const qint64 parent = f->Add(f->M(), 0, u"of the replica"_s);
        f->In(f->M(), [&](Library& library) {
            ImportItems(library, UnpackedBranch(branch), {.Parent = parent, .Only = {}});
            const Value moment = library.QueryValue(u"SELECT LastSynchronized FROM ChildCopies WHERE DBCopyID = ?"_s,
                                                    {ChildAt(library, u"child"_s)});
            ForgetChildren(library, moment.ToDate());
        });
        const QStringList mother = Family::Outline(f->M());
        for (const QString& line : Family::Outline(f->A()))
            QVERIFY2(mother.contains(line.contains(u" --> "_s) ? line : u"of the replica/"_s + line), qPrintable(line));
        QVERIFY(mother.filter(u"of the replica/P/added"_s).size() == 2); // with its stored file
        QCOMPARE(Family::Outline(f->GiveOutTo(u"anew"_s)), mother);
    }

private Q_SLOTS:
    void initTestCase() { FailOnWarnings(); }
    void init() { f = std::make_unique<Family>(); }
    void cleanup() { f.reset(); }

    void s42_stepsInTheWrongOrder_areTold()
    {
        f->EditTitle(f->A(), Family::X, u"X by A"_s);
        f->ExportOf(f->A());
        f->Prompts.ExpectMsgBox(u"Can't synchronize"_s, MsgBoxResult::Yes);
        const QByteArray before = ReadFile(f->File);
        QCOMPARE(f->TakeIn(f->A()).Result, 0);
        QCOMPARE(ReadFile(f->File), before);
        f->Prompts.ExpectMsgBox(u"Can't synchronize"_s, MsgBoxResult::No);
        QCOMPARE(f->TakeIn(f->A()).Result, 0);
        QVERIFY(ReadFile(f->File).startsWith("SQLite format 3"));
        QVERIFY(f->TakeIn(f->M()).Done); // it is accepted unpacked
        const QByteArray answer = ReadFile(f->File);
        f->Prompts.ExpectMsgBox(u"Old synchronization file"_s);
        QCOMPARE(f->TakeIn(f->M()).Result, 0);
        QCOMPARE(f->Prompts.Messages.last().Text,
                 u"This export file has already been synchronized with the mother database."_s);
        QVERIFY(f->TakeIn(f->A()).Done);
        QVERIFY(!QFile::exists(f->File));
        WriteFile(f->File, answer);
        f->Prompts.ExpectMsgBox(u"Can't synchronize"_s, MsgBoxResult::Yes);
        QCOMPARE(f->TakeIn(f->A()).Result, 0);
        QCOMPARE(f->TakeIn(f->B).Result, 0);
        QCOMPARE(Family::TitleOf(f->M(), Family::X), u"X by A"_s);
    }

    void s42_answerToAnExportThatTheChildDoesNotKnow_isOld()
    {
        const QByteArray child = ReadFile(f->A());
        f->EditTitle(f->A(), Family::X, u"X by A"_s);
        f->ExportOf(f->A());
        QVERIFY(f->TakeIn(f->M()).Done);
        WriteFile(f->A(), child); // as from a backup
        const QByteArray answer = ReadFile(f->File);
        f->Prompts.ExpectMsgBox(u"Old synchro file"_s, MsgBoxResult::Yes);
        QCOMPARE(f->TakeIn(f->A()).Result, 0);
        QCOMPARE(f->Prompts.Messages.last().Text,
                 u"This synchronization file is old and has already been synchronized with this child database. The "
                 "file can be destroyed, because is is not needed any more. Do you want to delete this file from your "
                 "hard drive?\r\n\r\nThis database knows nothing of the changes that the file answers, as after it was "
                 "brought back from a backup, or opened twice. Export the items of the replica, import them into the "
                 "mother database, forget the replica and create a new one; nothing is lost that way."_s);
        QCOMPARE(f->Prompts.Messages.last().Buttons, MsgBoxButtons::YesNo);
        QCOMPARE(f->Prompts.Messages.last().Icon, MsgBoxIcon::Question);
        QCOMPARE(ReadFile(f->File), answer);
        f->Prompts.ExpectMsgBox(u"Old synchro file"_s, MsgBoxResult::No);
        QCOMPARE(f->TakeIn(f->A()).Result, 0);
        QVERIFY(ReadFile(f->File).startsWith("SQLite format 3"));
        QCOMPARE(Family::TitleOf(f->A(), Family::X), u"X"_s);
    }

    void s45_lostFiles_comeAgain()
    {
        f->EditTitle(f->A(), Family::X, u"X by A"_s);
        f->ExportOf(f->A());
        QFile::remove(f->File);
        f->EditTitle(f->A(), Family::P, u"P by A"_s);
        f->ExportOf(f->A(), ExportAgain::Yes);
        QVERIFY(f->TakeIn(f->M()).Done);
        QFile::remove(f->File);
        f->In(f->M(), [this](Library& library) {
            const QString child =
                library.QueryValue(u"SELECT DBCopyID FROM ChildCopies WHERE ShortDescr = 'child'"_s).ToText();
            HandOutAgain(library, child, f->File);
        });
        QVERIFY(f->TakeIn(f->A()).Done);
        f->Round(f->B);
        QCOMPARE(Family::TitleOf(f->B, Family::X), u"X by A"_s);
        QCOMPARE(Family::TitleOf(f->B, Family::P), u"P by A"_s);
        QVERIFY(f->AreEqual());
    }

    void synchronizationThatIsUndone_canBeDoneAgain()
    {
        Family::WantUndo(true);
        f->EditTitle(f->A(), Family::X, u"X by A"_s);
        f->Delete(f->A(), Family::Y);
        f->AttachTo(f->A(), Family::Q, u"new.txt"_s, "new");
        f->ExportOf(f->A());
        const QStringList before = Family::Outline(f->M());
        const QByteArray file = ReadFile(f->File);
        QVERIFY(f->TakeIn(f->M()).Done);
        QVERIFY(Family::Outline(f->M()) != before);
        UndoMerge(f->M());
        QCOMPARE(Family::Outline(f->M()), before);
        QCOMPARE(ReadFile(f->File), file);
        f->In(f->M(), [this](Library& library) {
            const QString child =
                library.QueryValue(u"SELECT DBCopyID FROM ChildCopies WHERE ShortDescr = 'child'"_s).ToText();
            QVERIFY_THROWS_EXCEPTION(RuntimeError, HandOutAgain(library, child, f->Home.Path(u"again.qbs"_s)));
        });
        QVERIFY(f->TakeIn(f->M()).Done);
        QVERIFY(f->TakeIn(f->A()).Done);
        f->Round(f->B);
        QVERIFY(f->AreEqual());
    }

    void undoneBehindTheChild_refusesWhatItSends()
    {
        Family::WantUndo(true);
        f->EditTitle(f->A(), Family::X, u"X by A"_s);
        f->ExportOf(f->A());
        const QByteArray file = ReadFile(f->File);
        QVERIFY(f->TakeIn(f->M()).Done);
        QVERIFY(f->TakeIn(f->A()).Done);
        UndoMerge(f->M());
        QCOMPARE(Family::TitleOf(f->M(), Family::X), u"X"_s);
        QCOMPARE(ReadFile(f->File), file);
        f->Clock.AddSeconds(60);
        f->EditTitle(f->A(), Family::P, u"P by A"_s);
        f->ExportOf(f->A());
        f->Prompts.ExpectMsgBox(u"Old synchronization file"_s);
        QVERIFY(!f->TakeIn(f->M()).Done);
        QCOMPARE(Family::TitleOf(f->M(), Family::P), u"P"_s);
        QCOMPARE(Family::TitleOf(f->A(), Family::X), u"X by A"_s);
    }

    /// Its backup is of the time when its export was on its way, which its log knows.
    void childFromABackupThatKnowsItsExport_takesTheAnswerAgain()
    {
        f->EditTitle(f->A(), Family::X, u"X by A"_s);
        const qint64 added = f->Add(f->A(), Family::P, u"added"_s);
        f->ExportOf(f->A());
        const QByteArray backup = ReadFile(f->A());
        QVERIFY(f->TakeIn(f->M()).Done);
        QVERIFY(f->TakeIn(f->A()).Done);
        WriteFile(f->A(), backup);
        f->EditTitle(f->A(), added, u"added, later"_s);
        f->ExportOf(f->A(), ExportAgain::Yes);
        VerifyRefusedByTheMother(u"'Hand Out Again'"_s);
        HandOutTo(u"child"_s);
        QVERIFY(f->TakeIn(f->A()).Done);
        f->Clock.AddSeconds(120);
        f->Round(f->A());
        f->Round(f->B);
        QCOMPARE(Family::Ask(f->M(), u"SELECT count(*) FROM Items WHERE Title LIKE 'added%'"_s).ToLong(), 1);
        QVERIFY(Family::IdOf(f->M(), u"added, later"_s) > 0);
        QVERIFY(f->AreEqual());
    }

    void childFromAnOlderBackup_itsWorkIsTakenOverAsABranch()
    {
        const QByteArray backup = ReadFile(f->A());
        f->EditTitle(f->A(), Family::Q, u"Q by A"_s);
        f->Round(f->A());
        WriteFile(f->A(), backup);
        WorkInA();
        f->ExportOf(f->A());
        VerifyRefusedByTheMother(u"'Hand Out Again'"_s);
        HandOutTo(u"child"_s);
        f->Prompts.ExpectMsgBox(u"Old synchro file"_s, MsgBoxResult::Yes);
        QCOMPARE(f->TakeIn(f->A()).Result, 0);
        VerifyTakenOverAsABranch();
        QCOMPARE(Family::Ask(f->M(), u"SELECT count(*) FROM Items WHERE Title = 'Q by A'"_s).ToLong(), 1);
    }

    void motherFromAnOlderBackup_theWorkOfTheChildIsTakenOverAsABranch()
    {
        const QByteArray backup = ReadFile(f->M());
        f->EditTitle(f->A(), Family::Q, u"Q by A"_s);
        f->Round(f->A());
        WriteFile(f->M(), backup);
        WorkInA();
        f->ExportOf(f->A());
        VerifyRefusedByTheMother(u"a later state of this database"_s);
        VerifyTakenOverAsABranch();
        QVERIFY(Family::Outline(f->M()).join(u'\n').contains(u"of the replica/Q by A"_s));
        f->EditTitle(f->B, Family::F, u"F by B"_s); // which she still knows
        f->Round(f->B);
        QCOMPARE(Family::Outline(f->B), Family::Outline(f->M()));
    }

    void s45_fileOfAnEarlierExport_isAcceptedBack()
    {
        f->EditTitle(f->A(), Family::X, u"X by A"_s);
        f->ExportOf(f->A());
        const QByteArray first = ReadFile(f->File);
        f->EditTitle(f->A(), Family::P, u"P by A"_s);
        f->ExportOf(f->A(), ExportAgain::Yes);
        WriteFile(f->File, first);
        QVERIFY(f->TakeIn(f->M()).Done);
        QVERIFY(f->TakeIn(f->A()).Done);
        QCOMPARE(Family::TitleOf(f->M(), Family::P), u"P"_s);
        f->Clock.AddSeconds(120);
        f->Round(f->A()); // what changed after it travels now
        QCOMPARE(Family::TitleOf(f->M(), Family::P), u"P by A"_s);
    }
};

QB_TEST_MAIN(TestReplicaWaysBack)
#include "tst_replica_ways_back.moc"
