#include "conflicts/ConflictOrigin.h"
#include "conflicts/FormerVersions.h"
#include "platform/richtext/Rtf.h"
#include "replication/MergedFiles.h"
#include "replication/ReplicaFamily.h"

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// The versions that a mother and her child came from, out of what she sent it before.
class TestFormerVersions : public QObject {
    Q_OBJECT

    using Family = ReplicaFamily;
    std::unique_ptr<Family> f;

    static QString Rtf(const QString& text) { return RtfFromPlainText(text, CodeFont); }
    static QString CodeOf(const QString& path, qint64 item)
    {
        return PlainTextFromRtf(Family::Ask(path, u"SELECT Code FROM Items WHERE ID = ?"_s, {item}).ToText());
    }
    std::optional<BaseVersion> FormerAtMother(qint64 item)
    {
        const auto library = Library::Open(f->M());
        return FormerVersionsOf(*library)(item);
    }
    QStringList FormerFiles() const { return QDir(MergedFolderOf(f->M())).entryList({u"Former*"_s}, QDir::Files); }
    /// Both have changed the item since the last synchronization with A.
    void Conflict(qint64 atMother, const QString& mothers, qint64 atChild, const QString& childs)
    {
        f->EditCode(f->A(), atChild, Rtf(childs));
        f->EditCode(f->M(), atMother, Rtf(mothers));
        f->ExportOf(f->A());
        QVERIFY(f->TakeIn(f->M()).HasConflicts);
    }

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        f = std::make_unique<Family>();
    }
    void cleanup() { f.reset(); }

    void whatTheMotherSent_letsBothChangesBeTaken()
    {
        f->EditCode(f->M(), Family::X, Rtf(u"1\r\n2\r\n3"_s));
        f->Round(f->A());
        Conflict(Family::X, u"1\r\n2\r\nthree"_s, Family::X, u"one\r\n2\r\n3"_s);
        const std::optional<BaseVersion> former = FormerAtMother(Family::X);
        QVERIFY(former);
        QCOMPARE(PlainTextFromRtf(former->Code), u"1\r\n2\r\n3"_s);
        QCOMPARE(former->Title, u"X"_s);
        {
            const auto library = Library::Open(f->M());
            ConflictSolver solver(*library);
            solver.SetFindBase(FormerVersionsOf(*library));
            QVERIFY(solver.Load());
            QVERIFY(solver.TakeMerged());
            f->Prompts.ExpectMsgBox(u"All confilicts solved"_s);
            solver.Keep(1);
        }
        QCOMPARE(CodeOf(f->M(), Family::X), u"one\r\n2\r\nthree"_s);
        f->TakeIn(f->A());
        f->Round(f->A());
        f->Round(f->B);
        QCOMPARE(CodeOf(f->A(), Family::X), u"one\r\n2\r\nthree"_s);
        QVERIFY(f->AreEqual());
        QCOMPARE(FormerFiles(), QStringList()); // it counts for one merge
    }

    void whatTheChildAdded_isKnownByTheMothersNumber()
    {
        const qint64 another = f->Add(f->M(), 0, u"of the mother"_s); // takes the number
        const qint64 atChild = f->Add(f->A(), 0, u"new"_s);
        QCOMPARE(atChild, another);
        f->EditCode(f->A(), atChild, Rtf(u"as it was"_s));
        f->Round(f->A());
        const qint64 atMother = Family::Ask(f->M(), u"SELECT ID FROM Items WHERE Title = 'new'"_s).ToLong();
        QVERIFY(atMother > 0 && atMother != atChild);
        Conflict(atMother, u"by the mother"_s, atChild, u"by the child"_s);
        QCOMPARE(PlainTextFromRtf(FormerAtMother(atMother)->Code), u"as it was"_s);
    }

    /// The answer has the child's version of it, too.
    void whatWasInConflict_isKnownAsTheMotherSentIt()
    {
        f->Round(f->A());
        Conflict(Family::X, u"by the mother"_s, Family::X, u"by the child"_s);
        {
            const auto library = Library::Open(f->M());
            CConflict conflict;
            conflict.Initialize(*library, Family::X);
            QVERIFY(conflict.KeepItem(1));
        }
        f->TakeIn(f->A());
        QCOMPARE(CodeOf(f->A(), Family::X), u"by the mother"_s);
        f->Clock.AddSeconds(60);
        Conflict(Family::X, u"by the mother again"_s, Family::X, u"by the child again"_s);
        QCOMPARE(PlainTextFromRtf(FormerAtMother(Family::X).value_or(BaseVersion()).Code), u"by the mother"_s);
    }

    void lastCommonMoment_isThatOfTheSynchronizationBefore()
    {
        const auto synchronized = [this] {
            return Family::Ask(f->M(), u"SELECT max(LastSynchronized) FROM ChildCopies"_s).ToDate();
        };
        f->Round(f->A());
        const Date before = synchronized();
        f->Clock.AddSeconds(60);
        Conflict(Family::X, u"by the mother"_s, Family::X, u"by the child"_s);
        QVERIFY(synchronized() != before);
        QCOMPARE(LastCommonMoment(*Library::Open(f->M())), std::optional(before));
        f->DiscardConflicts(f->M());
        f->TakeIn(f->A());
        QCOMPARE(LastCommonMoment(*Library::Open(f->A())), std::optional<Date>());
    }

    void whatNobodySent_isNotKnown()
    {
        Conflict(Family::X, u"by the mother"_s, Family::X, u"by the child"_s); // the first round: there is no answer
        QVERIFY(!FormerAtMother(Family::X));
        QCOMPARE(FormerFiles(), QStringList());
        QVERIFY(!FormerVersionsOf(*Library::Open(f->A()))(Family::X)); // nor in a child
    }

    void itemsThatWereNotInTheAnswer_areNotKnown()
    {
        f->EditTitle(f->M(), Family::Y, u"Y by M"_s);
        f->Round(f->A());
        Conflict(Family::X, u"by the mother"_s, Family::X, u"by the child"_s);
        QCOMPARE(FormerFiles().size(), 1);
        QVERIFY(!FormerAtMother(Family::X));
    }

    /// One that was taken back, or belongs to another child.
    void answerOfAnotherMoment_countsForNothing()
    {
        f->EditCode(f->M(), Family::X, Rtf(u"1\r\n2\r\n3"_s));
        f->Round(f->A());
        Conflict(Family::X, u"by the mother"_s, Family::X, u"by the child"_s);
        QCOMPARE(FormerFiles().size(), 1);
        QDir folder(MergedFolderOf(f->M()));
        QVERIFY(folder.rename(FormerFiles().first(), u"Former 5.qbs"_s));
        QVERIFY(!FormerAtMother(Family::X));
    }

    void answerThatIsDamaged_isReportedOnce()
    {
        f->EditCode(f->M(), Family::X, Rtf(u"1\r\n2\r\n3"_s));
        f->Round(f->A());
        Conflict(Family::X, u"by the mother"_s, Family::X, u"by the child"_s);
        WriteFile(MergedFolderOf(f->M()) + FormerFiles().first(), "no file of changes");
        const auto library = Library::Open(f->M());
        const FindBaseVersion find = FormerVersionsOf(*library);
        f->Prompts.ExpectError();
        QVERIFY(!find(Family::X));
        QVERIFY(!find(Family::X));
    }
};

QB_TEST_MAIN(TestFormerVersions)
#include "tst_former_versions.moc"
