#include "replication/ReplicaFamily.h"

#include "replication/ReplicaList.h"
#include "web/ItemPages.h"

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

namespace {

using Family = ReplicaFamily;

bool Has(const MergeReport& report, MergeEvent event, const QString& title)
{
    return std::any_of(report.Lines.begin(), report.Lines.end(),
                       [&](const MergeLine& line) { return line.Event == event && line.Title == title; });
}

} // namespace

/// What becomes of what a mother and her children do, through all three steps.
class TestReplicaScenarios : public QObject {
    Q_OBJECT

    std::unique_ptr<Family> f;

    static qint64 EventsBefore(const QString& path, Date moment)
    {
        return Family::Ask(path, u"SELECT count(*) FROM ReplicaLog WHERE max(Moment, RowDate) < ?"_s, {moment})
            .ToLong();
    }

private Q_SLOTS:
    void initTestCase() { FailOnWarnings(); }
    void init() { f = std::make_unique<Family>(); }
    void cleanup() { f.reset(); }

    void s01_nothing_hasNoRows()
    {
        f->Round(f->A());
        f->ExportOf(f->A());
        const auto file = f->Unpack();
        for (const QString& table : {u"Items"_s, u"Files"_s, u"ItemLinks"_s, u"HTMLFiles"_s, u"DeletedItems"_s,
                                     u"DeletedFiles"_s, u"DeletedItemLinks"_s})
            QCOMPARE(file->QueryValue(u"SELECT count(*) FROM "_s + table).ToLong(), 0);
        QVERIFY(f->AreEqual());
    }

    void s02_childEdits_allHaveIt()
    {
        f->EditTitle(f->A(), Family::X, u"X by A"_s);
        const auto [mother, own] = f->Round(f->A());
        QCOMPARE(mother.Report.Summary(), u"1 item changed"_s);
        QVERIFY(!mother.HasConflicts);
        QCOMPARE(Family::Ask(f->M(), u"SELECT count(*) FROM DeletedItems"_s).ToLong(), 0);
        f->Round(f->B);
        QCOMPARE(Family::TitleOf(f->B, Family::X), u"X by A"_s);
        QVERIFY(f->AreEqual());
    }

    void s03_motherEdits_secondExportHasNoRow()
    {
        f->EditTitle(f->M(), Family::X, u"X by M"_s);
        f->Round(f->A());
        QCOMPARE(Family::TitleOf(f->A(), Family::X), u"X by M"_s);
        f->ExportOf(f->A());
        QCOMPARE(f->Unpack()->QueryValue(u"SELECT count(*) FROM Items"_s).ToLong(), 0);
    }

    void s05_bothEditMotherLater_hersStays()
    {
        f->EditTitle(f->A(), Family::X, u"X by A"_s);
        f->EditTitle(f->M(), Family::X, u"X by M"_s);
        const auto [mother, own] = f->Round(f->A());
        QVERIFY(Has(mother.Report, MergeEvent::Conflict, u"X by M"_s));
        QCOMPARE(Family::Ask(f->M(), u"SELECT Title || ReplicaOrigin FROM TempItems"_s).ToText(),
                 u"X by A"_s + Value(true).ToText());
        QCOMPARE(Family::TitleOf(f->M(), Family::X), u"X by M"_s);
        QCOMPARE(Family::TitleOf(f->A(), Family::X), u"X by M"_s);
        QCOMPARE(Family::Conflicts(f->A()), QStringList());
    }

    void s06_bothEditChildLater_itsStays()
    {
        f->EditTitle(f->M(), Family::X, u"X by M"_s);
        f->EditTitle(f->A(), Family::X, u"X by A"_s);
        f->Round(f->A());
        QCOMPARE(Family::Ask(f->M(), u"SELECT Title FROM TempItems WHERE ReplicaOrigin = 0"_s).ToText(), u"X by M"_s);
        QCOMPARE(Family::TitleOf(f->M(), Family::X), u"X by A"_s);
        QCOMPARE(Family::TitleOf(f->A(), Family::X), u"X by A"_s);
    }

    void s07_sameSecond_childsStays()
    {
        f->EditTitle(f->M(), Family::X, u"X by M"_s);
        {
            const auto child = Library::Open(f->A()); // the clock stands
            f->Edit(*child, Family::X, u"X by A"_s);
        }
        f->Round(f->A());
        QCOMPARE(Family::TitleOf(f->M(), Family::X), u"X by A"_s);
        QCOMPARE(Family::Conflicts(f->M()), QStringList{u"X by M"_s});
    }

    void s08_bothMakeTheSameEdit_isClearedUnseen()
    {
        f->EditTitle(f->A(), Family::X, u"X"_s);
        f->EditTitle(f->M(), Family::X, u"X"_s);
        f->Round(f->A());
        QCOMPARE(Family::Conflicts(f->M()), QStringList{u"X"_s});
        f->In(f->M(), [](Library& library) { AutomaticResolveProblems(library); });
        QCOMPARE(Family::Conflicts(f->M()), QStringList());
    }

    void s09_otherFormOfTheSameCode_isClearedUnseen()
    {
        const QString form = u"{\\rtf1\\ansi%1 int x;}"_s;
        f->EditCode(f->M(), Family::X, form.arg(u"\\b"_s));
        f->EditCode(f->A(), Family::X, form.arg(u"\\i"_s));
        f->EditCode(f->M(), Family::X, form.arg(u"\\b"_s));
        f->Round(f->A());
        QCOMPARE(Family::Conflicts(f->M()), QStringList{u"X"_s});
        f->In(f->M(), [](Library& library) { AutomaticResolveProblems(library); });
        QCOMPARE(Family::Conflicts(f->M()), QStringList());
        QCOMPARE(Family::Ask(f->M(), u"SELECT Code FROM Items WHERE ID = 5"_s).ToText(), form.arg(u"\\b"_s));
    }

    void s10_titleAndCode_areAConflict()
    {
        f->EditTitle(f->M(), Family::X, u"X by M"_s);
        f->EditCode(f->A(), Family::X, u"int by_a;"_s);
        f->Round(f->A());
        f->In(f->M(), [](Library& library) { AutomaticResolveProblems(library); });
        QCOMPARE(Family::Conflicts(f->M()), QStringList{u"X by M"_s});
    }

    void s12_motherMovesChildEdits_theMoveIsUndoneAndTold()
    {
        f->Move(f->M(), Family::X, Family::Q);
        f->EditCode(f->A(), Family::X, u"int by_a;"_s);
        const auto [mother, own] = f->Round(f->A());
        QCOMPARE(Family::ParentOf(f->M(), u"X"_s), u"P2"_s);
        QVERIFY(Has(mother.Report, MergeEvent::SetAside, u"X"_s));
        QCOMPARE(Family::ParentOf(f->A(), u"X"_s), u"P2"_s);
    }

    /// Both have edited, moved and rated it.
    void versionThatLost_isNamedWithWhatWasDropped_data()
    {
        QTest::addColumn<bool>("atMother");
        QTest::addColumn<bool>("ownIsLater");
        QTest::addColumn<QStringList>("details");
        QTest::newRow("at the mother, the child's is later")
            << true << false
            << QStringList{u"Conflict: the child's version is the later one"_s, u"Moved: P"_s,
                           u"Set aside: status and rating of the mother"_s, u"Set aside: the place of the mother"_s};
        QTest::newRow("at the mother, hers is later")
            << true << true
            << QStringList{u"Conflict: the version here is the later one"_s,
                           u"Set aside: status and rating of the child"_s, u"Set aside: the place of the child"_s};
        QTest::newRow("at the child, the mother's is later")
            << false << false
            << QStringList{u"Conflict: the mother's version is the later one"_s, u"Moved: Q"_s,
                           u"Set aside: status and rating of the child"_s, u"Set aside: the place of the child"_s};
        QTest::newRow("at the child, its own is later")
            << false << true
            << QStringList{u"Conflict: the version here is the later one"_s,
                           u"Set aside: status and rating of the mother"_s, u"Set aside: the place of the mother"_s};
    }

    void versionThatLost_isNamedWithWhatWasDropped()
    {
        QFETCH(bool, atMother);
        QFETCH(bool, ownIsLater);
        const auto change = [&](const QString& path, qint64 parent, int rating) {
            f->In(path, [&](Library& library) {
                library.Execute(u"UPDATE Items SET ParentID = ?, ItemRating = ?, LastChanged = ? WHERE Title = 'X'"_s,
                                {parent, rating, library.NextStamp()});
                if (library.IsChildReplica())
                    library.Execute(u"UPDATE Items SET MotherParentID = ParentID WHERE Title = 'X'"_s);
            });
        };
        const bool childIsFirst = atMother == ownIsLater;
        if (!atMother) // the child changes it after its export
            f->ExportOf(f->A());
        if (childIsFirst)
            change(f->A(), Family::P, 2);
        change(f->M(), Family::Q, 8);
        if (!childIsFirst)
            change(f->A(), Family::P, 2);
        if (atMother)
            f->ExportOf(f->A());
        const SyncResult mother = f->TakeIn(f->M());
        const MergeReport report = atMother ? mother.Report : f->TakeIn(f->A()).Report;
        QStringList details;
        for (const MergeLine& line : report.Lines) {
            QCOMPARE(line.Title, u"X"_s);
            details << LabelOf(line.Event) + u": "_s + line.Detail;
        }
        QTEST(details, "details");
    }

    void s13_childMoves_bothHaveItThere()
    {
        f->Move(f->A(), Family::X, Family::Q);
        const auto [mother, own] = f->Round(f->A());
        QVERIFY(Has(mother.Report, MergeEvent::ItemMoved, u"X"_s));
        QCOMPARE(Family::ParentOf(f->M(), u"X"_s), u"Q"_s);
        f->Round(f->B);
        QVERIFY(f->AreEqual());
        f->Move(f->A(), Family::X, 0);
        f->Round(f->A());
        f->Round(f->B);
        QCOMPARE(Family::ParentOf(f->B, u"X"_s), u"/"_s);
        QVERIFY(f->AreEqual());
    }

    void s14_newChain_getsNumbers()
    {
        const qint64 n = f->Add(f->A(), 0, u"N"_s);
        const qint64 n2 = f->Add(f->A(), n, u"N2"_s);
        f->Move(f->A(), Family::X, n2);
        f->Add(f->M(), Family::Q, u"other"_s);
        f->Round(f->A());
        QCOMPARE(Family::ParentOf(f->M(), u"X"_s), u"N2"_s);
        QCOMPARE(Family::ParentOf(f->M(), u"N2"_s), u"N"_s);
        QCOMPARE(Family::Ask(f->A(), u"SELECT MotherRecordID FROM Items WHERE ID = ?"_s, {n2}).ToLong(),
                 Family::IdOf(f->M(), u"N2"_s));
        QCOMPARE(Family::Ask(f->A(), u"SELECT MotherParentID FROM Items WHERE ID = ?"_s, {n2}).ToLong(),
                 Family::IdOf(f->M(), u"N"_s));
        QCOMPARE(Family::Ask(f->A(), u"SELECT MotherParentID FROM Items WHERE ID = ?"_s, {Family::X}).ToLong(),
                 Family::IdOf(f->M(), u"N2"_s));
        f->Round(f->B);
        QVERIFY(f->AreEqual());
    }

    void s15_sameNumberOnBoth_areTwoItems()
    {
        const qint64 atA = f->Add(f->A(), 0, u"by A"_s);
        const qint64 atM = f->Add(f->M(), 0, u"by M"_s);
        QCOMPARE(atA, atM);
        f->AttachTo(f->A(), atA, u"a.txt"_s, "of A");
        f->AttachTo(f->M(), atM, u"m.txt"_s, "of M");
        f->In(f->A(), [&](Library& library) {
            library.Execute(u"INSERT INTO ItemLinks (ItemID, LinkItemID, DateAdded) VALUES (?, ?, ?)"_s,
                            {atA, Family::P, library.NextStamp()});
        });
        f->Round(f->A());
        f->Round(f->B);
        QVERIFY(f->AreEqual());
        QVERIFY(Family::Outline(f->B).contains(u"by A > a.txt |  | of A"_s));
        QVERIFY(Family::Outline(f->B).contains(u"by M > m.txt |  | of M"_s));
        QVERIFY(Family::Outline(f->B).contains(u"by A --> P"_s));
    }

    void s16_sameTitleOnBoth_areTwoItems()
    {
        f->Add(f->A(), Family::Q, u"same"_s);
        f->Add(f->M(), Family::Q, u"same"_s);
        f->Round(f->A());
        for (const QString& path : {f->M(), f->A()})
            QCOMPARE(Family::Ask(path, u"SELECT count(*) FROM Items WHERE Title = 'same'"_s).ToLong(), 2);
    }

    void s17_movesBelowEachOther_theEarlierGoes()
    {
        f->Move(f->M(), Family::Q, Family::P); // the earlier one
        f->Move(f->A(), Family::P, Family::Q);
        f->Round(f->A());
        f->Round(f->B);
        QCOMPARE(Family::ParentOf(f->M(), u"Q"_s), OrphanedItemsTitle);
        QCOMPARE(Family::ParentOf(f->M(), u"P"_s), u"Q"_s);
        QVERIFY(f->AreEqual());
    }

    void s17_movesBelowEachOtherTheOtherWay_theEarlierGoes()
    {
        f->Move(f->A(), Family::P, Family::Q); // the earlier one
        f->Move(f->M(), Family::Q, Family::P);
        f->Round(f->A());
        f->Round(f->B);
        QCOMPARE(Family::ParentOf(f->M(), u"P"_s), OrphanedItemsTitle);
        QCOMPARE(Family::ParentOf(f->M(), u"Q"_s), u"P"_s);
        QVERIFY(f->AreEqual());
    }

    /// X stays where it is, though it was edited before anything was moved.
    void s17_movesBelowEachOther_leaveWhatWasOnlyEdited()
    {
        f->EditTitle(f->A(), Family::X, u"X by A"_s);
        f->Move(f->A(), Family::Y, Family::X);
        f->Move(f->M(), Family::F, Family::Y);
        f->Round(f->A());
        QCOMPARE(Family::ParentOf(f->M(), u"X by A"_s), u"P2"_s);
        QCOMPARE(Family::ParentOf(f->M(), u"Y"_s), u"Orphaned Items"_s);
    }

    /// In the child that had both of it, the mother's move makes the cycle, and not what the child told her of X.
    void s17_movesBelowEachOther_leaveWhatTheMotherHasAlready()
    {
        f->Move(f->B, Family::Y, Family::X);
        f->ExportOf(f->B);
        QVERIFY(f->TakeIn(f->M()).Done);
        f->EditTitle(f->B, Family::X, u"X by B"_s);
        f->Move(f->A(), Family::P2, Family::Y);
        QVERIFY(f->TakeIn(f->B).Done);
        f->Round(f->A());
        f->Round(f->B);
        QCOMPARE(Family::ParentOf(f->M(), u"X by B"_s), u"P2"_s);
        QCOMPARE(Family::ParentOf(f->B, u"X by B"_s), u"P2"_s);
    }

    void s18_moveBelowWhatIsDeleted_isAnOrphanOnBoth()
    {
        f->Delete(f->M(), Family::Q);
        f->Move(f->A(), Family::X, Family::Q);
        f->Round(f->A());
        QCOMPARE(Family::ParentOf(f->M(), u"X"_s), OrphanedItemsTitle);
        QCOMPARE(Family::ParentOf(f->A(), u"X"_s), OrphanedItemsTitle);
        f->Round(f->B);
        QVERIFY(f->AreEqual());
    }

    void s19_childDeletesMotherEditsLater_isKept()
    {
        f->Delete(f->A(), Family::X);
        f->EditTitle(f->M(), Family::X, u"X by M"_s);
        const auto [mother, own] = f->Round(f->A());
        QVERIFY(Has(mother.Report, MergeEvent::ItemKept, u"X by M"_s));
        QCOMPARE(Family::Ask(f->M(), u"SELECT LastChanged FROM Items WHERE ID = ?"_s, {Family::X}).ToLong(), 0);
        const QString info = Family::Ask(f->M(), u"SELECT Info FROM Items WHERE ID = ?"_s, {Family::X}).ToText();
        QVERIFY2(info.contains(u" - Original location of this item was: //F/P2\r\nItem originaly last updated on "_s),
                 qPrintable(info));
        QCOMPARE(Family::ParentOf(f->M(), u"X by M"_s), u"P2"_s);
        QVERIFY(Family::Outline(f->M()).contains(u"F/P2/X by M > f Ü.bin |  | file f"_s)
                || !Family::Outline(f->M()).filter(u"f Ü.bin"_s).isEmpty());
        QCOMPARE(Family::IdOf(f->A(), u"X"_s), 0);
        QCOMPARE(f->Kept(f->M()), QStringList());
    }

    void s19_keptItemThatAnotherDeletesToo_saysItOnce()
    {
        f->Delete(f->A(), Family::X);
        f->Delete(f->B, Family::X);
        f->AttachTo(f->M(), Family::X, u"new.txt"_s, "new");
        f->Round(f->A());
        const QString info = Family::Ask(f->M(), u"SELECT Info FROM Items WHERE ID = ?"_s, {Family::X}).ToText();
        QCOMPARE(info.count(u"Original location"_s), 1);
        f->Round(f->B);
        QCOMPARE(Family::Ask(f->M(), u"SELECT Info FROM Items WHERE ID = ?"_s, {Family::X}).ToText(), info);
    }

    void s19_keptItem_goesBackWholeOnceDecided()
    {
        f->Delete(f->A(), Family::X);
        f->EditTitle(f->M(), Family::X, u"X by M"_s);
        f->Round(f->A());
        f->Round(f->A());
        QCOMPARE(Family::IdOf(f->A(), u"X by M"_s), 0);
        f->EditTitle(f->M(), Family::X, u"X kept"_s);
        f->Round(f->A());
        f->Round(f->B);
        QVERIFY(!Family::Outline(f->A()).filter(u"f Ü.bin"_s).isEmpty());
        QVERIFY(Family::Outline(f->A()).contains(u"X kept --> Y"_s));
        QVERIFY(f->AreEqual());
    }

    void s21_dayFirst_aJanuaryEditOutlivesAFebruaryDeletion()
    {
        f->Clock.Set(Date::FromParts(2027, 1, 31, 12));
        f->EditTitle(f->M(), Family::X, u"X by M"_s);
        f->Clock.Set(Date::FromParts(2027, 2, 1, 12));
        f->Delete(f->A(), Family::X);
        f->Round(f->A());
        QCOMPARE(Family::TitleOf(f->M(), Family::X), u"X by M"_s);
    }

    void s22_dayFirst_aFebruaryEditIsTakenByAJanuaryDeletion()
    {
        f->Clock.Set(Date::FromParts(2027, 1, 31, 12));
        f->Delete(f->A(), Family::X);
        f->Clock.Set(Date::FromParts(2027, 2, 1, 12));
        f->EditTitle(f->M(), Family::X, u"X by M"_s);
        const auto [mother, own] = f->Round(f->A());
        QCOMPARE(Family::IdOf(f->M(), u"X by M"_s), 0);
        QVERIFY(Has(mother.Report, MergeEvent::ItemDeleted, u"X by M"_s));
        QVERIFY(f->Kept(f->M()).contains(u"X by M"_s));
    }

    void s23_motherDeletesChildEditsLater_isRegained()
    {
        f->Delete(f->M(), Family::X);
        f->EditTitle(f->A(), Family::X, u"X by A"_s);
        const auto [mother, own] = f->Round(f->A());
        QVERIFY(Has(mother.Report, MergeEvent::ItemRegained, u"X by A"_s));
        const qint64 id = Family::IdOf(f->M(), u"X by A"_s);
        QVERIFY(id > Family::Y);
        QCOMPARE(Family::Ask(f->M(), u"SELECT LastChanged FROM Items WHERE ID = ?"_s, {id}).ToLong(), 0);
        QCOMPARE(Family::Ask(f->A(), u"SELECT MotherRecordID FROM Items WHERE ID = ?"_s, {Family::X}).ToLong(), id);
        QCOMPARE(Family::ParentOf(f->M(), u"X by A"_s), u"P2"_s);
        QVERIFY(!Family::Outline(f->A()).filter(u"f Ü.bin"_s).isEmpty()); // the child keeps it meanwhile
        f->Round(f->B);
        QCOMPARE(Family::Ask(f->B, u"SELECT count(*) FROM Items WHERE ID = ?"_s, {Family::X}).ToLong(), 0);
        f->Round(f->A()); // its files come along
        QVERIFY(!Family::Outline(f->M()).filter(u"f Ü.bin"_s).isEmpty());
        f->EditTitle(f->M(), id, u"X decided"_s);
        f->Round(f->A());
        f->Round(f->B);
        f->Round(f->A());
        QVERIFY(f->AreEqual());
        QVERIFY(!Family::Outline(f->B).filter(u"f Ü.bin"_s).isEmpty());
    }

    void s23_whatIsNewBelowARegainedItem_staysWithIt()
    {
        f->Delete(f->M(), Family::X);
        f->EditTitle(f->A(), Family::X, u"X by A"_s);
        f->Add(f->A(), Family::X, u"below"_s);
        f->Link(f->A(), Family::X, Family::P, u"new"_s);
        f->ExportOf(f->A());
        QVERIFY(f->TakeIn(f->M()).Report.Faults.empty());
        QCOMPARE(Family::ParentOf(f->M(), u"below"_s), u"X by A"_s);
        QVERIFY(Family::Outline(f->M()).contains(u"X by A --> P"_s));
        QVERIFY(f->TakeIn(f->A()).Report.Faults.empty());
        QCOMPARE(Family::ParentOf(f->A(), u"below"_s), u"X by A"_s);
    }

    /// It waits since the child has brought it back, who may go on with it.
    void s23_regainedItemThatItsChildEditsAgain_isNoConflict()
    {
        f->Delete(f->M(), Family::X);
        f->EditTitle(f->A(), Family::X, u"X by A"_s);
        f->Round(f->A());
        f->EditTitle(f->A(), Family::X, u"X by A again"_s);
        f->Round(f->A());
        QCOMPARE(Family::Conflicts(f->M()), QStringList());
        QVERIFY(Family::IdOf(f->M(), u"X by A again"_s) > 0);
    }

    void s23_deletedAndEditedInTheSameSecond_isGone()
    {
        f->Delete(f->M(), Family::Q);
        f->Edit(*Library::Open(f->A()), Family::Q, u"Q by A"_s); // the clock stands
        f->Round(f->A());
        QCOMPARE(Family::IdOf(f->M(), u"Q by A"_s), 0);
        QCOMPARE(Family::IdOf(f->A(), u"Q by A"_s), 0);
        QVERIFY(f->Kept(f->M()).contains(u"Q by A"_s));
    }

    /// She has changed it before, so that no list but the log has its deletion.
    void s23_motherEditsAndDeletes_theLaterOfBothCounts()
    {
        f->EditTitle(f->M(), Family::Q, u"Q by M"_s);
        f->EditTitle(f->M(), Family::Y, u"Y by M"_s);
        f->EditTitle(f->A(), Family::Q, u"Q by A"_s);
        f->Delete(f->M(), Family::Q);
        f->Delete(f->M(), Family::Y);
        f->EditTitle(f->A(), Family::Y, u"Y by A"_s);
        QCOMPARE(Family::Ask(f->M(), u"SELECT count(*) FROM DeletedItems"_s).ToLong(), 0);
        const auto [mother, own] = f->Round(f->A());
        QCOMPARE(Family::IdOf(f->M(), u"Q by A"_s), 0);
        QCOMPARE(Family::IdOf(f->A(), u"Q by A"_s), 0);
        QVERIFY(Family::IdOf(f->M(), u"Y by A"_s) > Family::Y);
        QVERIFY(Has(mother.Report, MergeEvent::ItemRegained, u"Y by A"_s));
    }

    void itemThatTheMotherKnowsNothingOf_travelsAsNewInTheNextRound()
    {
        f->In(f->M(), [](Library& library) { library.Execute(u"DELETE FROM Items WHERE ID = 2"_s); });
        const qint64 file = f->AttachTo(f->A(), Family::Q, u"old.txt"_s, "old");
        f->EditTitle(f->A(), Family::Q, u"Q by A"_s);
        f->Prompts.ExpectMsgBox(u"Error"_s); // of the file
        const auto [mother, own] = f->Round(f->A());
        QCOMPARE(Family::IdOf(f->M(), u"Q by A"_s), 0);
        QVERIFY(Has(mother.Report, MergeEvent::SetAside, u"Q by A"_s));
        QVERIFY(f->Kept(f->M()).contains(u"Q by A"_s));
        QCOMPARE(Family::Ask(f->A(), u"SELECT MotherRecordID FROM Items WHERE ID = 2"_s).ToLong(), -1);
        QVERIFY(QFile::exists(f->Home.Path(u"child/lib_Files/%1 - old.txt"_s.arg(file))));
        f->Round(f->A());
        QVERIFY(Family::IdOf(f->M(), u"Q by A"_s) > 0);
        QVERIFY(!Family::Outline(f->M()).filter(u"old.txt"_s).isEmpty());
    }

    void s24_childEditsMotherDeletesLater_goesAndIsKept()
    {
        f->EditTitle(f->A(), Family::X, u"X by A"_s);
        f->Delete(f->M(), Family::X);
        const auto [mother, own] = f->Round(f->A());
        QCOMPARE(Family::IdOf(f->M(), u"X by A"_s), 0);
        QCOMPARE(Family::IdOf(f->A(), u"X by A"_s), 0);
        QVERIFY(f->Kept(f->M()).contains(u"X by A"_s));
        QVERIFY(f->Kept(f->A()).contains(u"X by A"_s));
    }

    void s25_childDeletesTheBranchMotherEditsBelow_becomesAnOrphan()
    {
        f->Delete(f->A(), Family::F);
        f->EditTitle(f->M(), Family::X, u"X by M"_s);
        f->Round(f->A());
        QCOMPARE(Family::IdOf(f->M(), u"F"_s), 0);
        QCOMPARE(Family::IdOf(f->M(), u"P2"_s), 0);
        QCOMPARE(Family::ParentOf(f->M(), u"X by M"_s), OrphanedItemsTitle);
    }

    void s27_childDeletesTheBranchMotherAddsAFile_isKeptWithIt()
    {
        f->Delete(f->A(), Family::F);
        f->AttachTo(f->M(), Family::X, u"new.txt"_s, "new");
        f->Round(f->A());
        const QString info = Family::Ask(f->M(), u"SELECT Info FROM Items WHERE Title = 'X'"_s).ToText();
        QVERIFY2(info.startsWith(
                     u"Record was not deleted during synchronization because it contains at least one file, that "
                     "was added after the previous synchronization.\r\n"_s),
                 qPrintable(info));
        const QStringList files = Family::Outline(f->M()).filter(u" > "_s);
        QCOMPARE(files.filter(u"new.txt"_s).size(), 1);
        QCOMPARE(files.filter(u"f Ü.bin"_s).size(), 1);
    }

    void keptItem_goesBackWholeWithAVersionOfBeforeThat()
    {
        f->AttachTo(f->M(), Family::Q, u"new.txt"_s, "new");
        f->EditTitle(f->B, Family::Q, u"Q by B"_s);
        f->Delete(f->A(), Family::Q);
        f->Round(f->A());
        f->Round(f->B); // the item waits no more, with a date that A has passed
        f->DiscardConflicts(f->M());
        f->Round(f->A());
        QCOMPARE(Family::Outline(f->A()).filter(u"new.txt"_s).size(), 1);
        f->Round(f->B);
        QVERIFY(f->AreEqual());
    }

    void itemThatWaits_goesWholeToAChildThatNeverHadIt()
    {
        const qint64 added = f->Add(f->M(), Family::P, u"new"_s);
        f->AttachTo(f->M(), added, u"new.txt"_s, "new");
        f->In(f->M(), [&](Library& library) {
            WritePage(library, added, "<p>new</p>");
            library.Execute(u"INSERT INTO ItemLinks (ItemID, LinkItemID, DateAdded) VALUES (?, ?, ?)"_s,
                            {added, Family::Y, library.NextStamp()});
        });
        f->Round(f->A());
        f->Delete(f->A(), Family::Ask(f->A(), u"SELECT ID FROM Items WHERE Title = 'new'"_s).ToLong());
        f->EditTitle(f->M(), added, u"new, edited"_s);
        f->Round(f->A());
        QCOMPARE(Family::Ask(f->M(), u"SELECT LastChanged FROM Items WHERE ID = ?"_s, {added}).ToLong(), 0);
        f->Round(f->B);
        QVERIFY(Family::Outline(f->B).filter(u"new"_s).isEmpty());
        f->EditTitle(f->M(), added, u"new, kept"_s);
        f->Round(f->B);
        f->Round(f->A());
        QCOMPARE(Family::Outline(f->B).filter(u"new.txt"_s).size(), 1);
        QVERIFY(f->AreEqual());
    }

    void logsAreTrimmed_onceEverybodyHasPassed()
    {
        f->EditTitle(f->A(), Family::X, u"X by A"_s);
        f->Delete(f->A(), Family::Q);
        f->ExportOf(f->A());
        f->ExportOf(f->A(), ExportAgain::Yes);
        QCOMPARE(EventsBefore(f->A(), Date::FromSeconds(f->Clock.Now().Seconds() + 3600)), 3);
        QVERIFY(f->TakeIn(f->M()).Done);
        QVERIFY(f->TakeIn(f->A()).Done);
        QCOMPARE(EventsBefore(f->A(), Library::Open(f->A())->Replica().LastSynchronized), 0);
        f->Clock.AddSeconds(60);
        const Date passed = f->Clock.Now();
        QVERIFY(EventsBefore(f->M(), passed) > 0); // B has not passed yet
        f->Round(f->B);
        f->Round(f->A());
        QCOMPARE(EventsBefore(f->M(), passed), 0);
    }

    void s28_bothDelete_listsAreEmptyOnceAllHavePassed()
    {
        f->Delete(f->A(), Family::X);
        f->Delete(f->M(), Family::X);
        f->Round(f->A());
        f->Round(f->B);
        QVERIFY(f->AreEqual());
        f->Round(f->A());
        f->Round(f->B);
        QCOMPARE(Family::Ask(f->M(), u"SELECT count(*) FROM DeletedItems"_s).ToLong(), 0);
        QCOMPARE(Family::Ask(f->M(), u"SELECT count(*) FROM ReplicaLog"_s).ToLong(), 0);
    }

    void s29_editedThenDeleted_goes()
    {
        f->EditTitle(f->A(), Family::X, u"X by A"_s);
        f->Delete(f->A(), Family::X);
        QCOMPARE(Family::Ask(f->A(), u"SELECT count(*) FROM DeletedItems"_s).ToLong(), 0);
        f->Round(f->A());
        QCOMPARE(Family::IdOf(f->M(), u"X"_s), 0);
        f->Round(f->B);
        QVERIFY(f->AreEqual());
    }

    void s30_madeAndDeleted_leavesNoTrace()
    {
        f->Delete(f->A(), f->Add(f->A(), 0, u"X2"_s));
        const auto [mother, own] = f->Round(f->A());
        QCOMPARE(mother.Report.Lines.size(), size_t(0));
        QVERIFY(f->AreEqual());
    }

    void s31_itemOfAnotherNumber_isDeletedAloneAtTheMother()
    {
        f->Add(f->M(), 0, u"first of M"_s);
        f->Add(f->A(), 0, u"first of A"_s);
        f->Round(f->A());
        const qint64 atA = Family::IdOf(f->A(), u"first of M"_s);
        QVERIFY(atA != Family::IdOf(f->M(), u"first of M"_s));
        const qint64 before = Family::Ask(f->M(), u"SELECT count(*) FROM Items"_s).ToLong();
        f->Delete(f->A(), atA);
        f->Round(f->A());
        QCOMPARE(Family::IdOf(f->M(), u"first of M"_s), 0);
        QCOMPARE(Family::Ask(f->M(), u"SELECT count(*) FROM Items"_s).ToLong(), before - 1);
        f->Round(f->B);
        QVERIFY(f->AreEqual());
    }

    void s33_otherChildEditsBeforeTheDeletion_goesThere()
    {
        f->EditTitle(f->B, Family::X, u"X by B"_s);
        f->Delete(f->A(), Family::X);
        f->Round(f->A());
        f->Round(f->B);
        QCOMPARE(Family::IdOf(f->B, u"X by B"_s), 0);
        QVERIFY(f->Kept(f->B).contains(u"X by B"_s));
        QVERIFY(f->AreEqual());
    }

    void s33_otherChildEditsAfterTheDeletion_isRegained()
    {
        f->Delete(f->A(), Family::X);
        f->EditTitle(f->B, Family::X, u"X by B"_s);
        f->Round(f->A());
        f->Round(f->B);
        const qint64 id = Family::IdOf(f->M(), u"X by B"_s);
        QVERIFY(id > Family::Y);
        f->EditTitle(f->M(), id, u"X decided"_s);
        f->Round(f->B);
        f->Round(f->A());
        f->Round(f->B);
        QVERIFY(f->AreEqual());
    }

    void deletionByAClockAhead_takesNoLaterChange()
    {
        f->Clock.AddSeconds(3600);
        {
            const auto child = Library::Open(f->A());
            qb::DeleteItem(*child, Family::Y);
            QVERIFY(WriteChanges(*child, f->File, ExportAgain::No));
        }
        f->Clock.AddSeconds(-3600);
        QVERIFY(f->TakeIn(f->M()).Done);
        f->EditTitle(f->B, Family::Y, u"Y by B"_s);
        f->Round(f->B);
        QVERIFY(Family::IdOf(f->M(), u"Y by B"_s) > 0);
        QCOMPARE(Family::IdOf(f->B, u"Y by B"_s), Family::Y);
    }

    /// By its date, which comes down to the mother's clock, B would have it: B's clock was further ahead.
    void fileByAClockAhead_reachesTheOtherChild()
    {
        const auto exportAhead = [this](const QString& path, int seconds, const auto& change) {
            f->Clock.AddSeconds(seconds);
            const auto child = Library::Open(path);
            change(*child);
            QVERIFY(WriteChanges(*child, f->File, ExportAgain::No));
            f->Clock.AddSeconds(-seconds);
        };
        exportAhead(f->B, 7200, [](Library&) {});
        QVERIFY(f->TakeIn(f->M()).Done);
        QVERIFY(f->TakeIn(f->B).Done);
        exportAhead(f->A(), 3600, [this](Library& library) { f->Attach(library, Family::Q, u"ahead.txt"_s, "ahead"); });
        QVERIFY(f->TakeIn(f->M()).Done);
        f->Clock.AddSeconds(10000);
        f->Round(f->B);
        QVERIFY(!Family::Outline(f->B).filter(u"ahead.txt |  | ahead"_s).isEmpty());
    }

    void editByAClockAhead_countsAsOfNow()
    {
        f->Clock.AddSeconds(3600);
        {
            const auto child = Library::Open(f->A());
            Family::Edit(*child, Family::Q, u"Q ahead"_s);
            QVERIFY(WriteChanges(*child, f->File, ExportAgain::No));
        }
        f->Clock.AddSeconds(-3600);
        QVERIFY(f->TakeIn(f->M()).Done);
        QVERIFY(Family::Ask(f->M(), u"SELECT LastChanged FROM Items WHERE ID = ?"_s, {Family::Q}).ToDate()
                <= f->Clock.Now());
        f->EditTitle(f->B, Family::Q, u"Q later"_s);
        f->Round(f->B);
        QCOMPARE(Family::TitleOf(f->M(), Family::Q), u"Q later"_s);
    }

    void fileDescribedByBoth_hasTheLaterText_data()
    {
        QTest::addColumn<bool>("motherLater");
        QTest::newRow("the mother later") << true;
        QTest::newRow("the child later") << false;
    }
    void fileDescribedByBoth_hasTheLaterText()
    {
        QFETCH(bool, motherLater);
        f->Describe(motherLater ? f->A() : f->M(), 1, u"earlier"_s);
        f->Describe(motherLater ? f->M() : f->A(), 1, u"later"_s);
        f->Round(f->A());
        f->Round(f->B);
        QCOMPARE(Family::Ask(f->M(), u"SELECT Description FROM Files WHERE ID = 1"_s).ToText(), u"later"_s);
        QVERIFY(f->AreEqual());
    }

    /// B has met the mother between A's change and A's round.
    void fileDescribedBeforeAnothersRound_isDescribedThereToo()
    {
        f->Describe(f->A(), 1, u"by A"_s);
        f->ExportOf(f->A());
        const QString aside = f->Home.Path(u"aside.qbs"_s);
        QVERIFY(QFile::rename(f->File, aside));
        f->Round(f->B);
        QFile::remove(f->File);
        QVERIFY(QFile::rename(aside, f->File));
        QVERIFY(f->TakeIn(f->M()).Done);
        QVERIFY(f->TakeIn(f->A()).Done);
        f->Clock.AddSeconds(60);
        f->Round(f->B);
        QCOMPARE(Family::Ask(f->B, u"SELECT Description FROM Files WHERE ID = 1"_s).ToText(), u"by A"_s);
    }

    void s36_files_areAllThere()
    {
        f->AttachTo(f->A(), Family::Q, u"same.txt"_s, "of A");
        f->AttachTo(f->M(), Family::Q, u"same.txt"_s, "of M");
        f->AttachTo(f->A(), Family::Q, u"empty.txt"_s, "");
        f->AttachTo(f->A(), Family::Q, u"chunk.bin"_s, QByteArray(16384, 'c'));
        f->AttachTo(f->A(), Family::Q, u"Ü 'quoted'.txt"_s, "umlaut");
        f->Round(f->A());
        f->Round(f->B);
        QVERIFY(f->AreEqual());
        QCOMPARE(Family::Outline(f->B).filter(u"Q > "_s).size(), 5);
    }

    void s37_links_areOneAndGo()
    {
        const auto link = [](Library& library, qint64 from, qint64 to) {
            library.Execute(
                u"INSERT INTO ItemLinks (ItemID, LinkItemID, Note, DateAdded, DateUpdated) VALUES (?1, ?2, 'note', "
                "?3, ?3)"_s,
                {from, to, library.NextStamp()});
        };
        f->In(f->A(), [&](Library& library) { link(library, Family::P, Family::Q); });
        f->In(f->M(), [&](Library& library) { link(library, Family::P, Family::Q); });
        f->Round(f->A());
        f->Round(f->B);
        QVERIFY(f->AreEqual());
        QCOMPARE(Family::Outline(f->B).filter(u"P --> Q"_s).size(), 1);

        f->In(f->M(), [&](Library& library) {
            library.Execute(
                u"UPDATE ItemLinks SET Note = 'annotated', DateUpdated = ? WHERE ItemID = ? AND LinkItemID = ?"_s,
                {library.NextStamp(), Family::X, Family::Y});
        });
        f->Round(f->A());
        QCOMPARE(Family::Ask(f->A(), u"SELECT Note FROM ItemLinks WHERE ItemID = ?"_s, {Family::X}).ToText(), u"old"_s);
        f->In(f->A(), [&](Library& library) { Family::Unlink(library, Family::X, Family::Y); });
        QCOMPARE(Family::Outline(f->A()).filter(u"X --> Y"_s).size(), 0);
        f->Round(f->A());
        f->Round(f->B);
        QCOMPARE(Family::Outline(f->M()).filter(u"X --> Y"_s).size(), 0);
        QVERIFY(f->AreEqual());
    }

    void s37_linkThatWasMadeAnew_keepsALaterNote()
    {
        f->In(f->A(), [&](Library& library) {
            Family::Unlink(library, Family::X, Family::Y);
            library.Execute(u"INSERT INTO ItemLinks (ItemID, LinkItemID, Note, DateAdded, DateUpdated) "
                            "VALUES (?1, ?2, 'again', ?3, ?3)"_s,
                            {Family::X, Family::Y, library.NextStamp()});
        });
        f->Round(f->A());
        f->ExportOf(f->B);
        f->In(f->B, [](Library& library) {
            library.Execute(u"UPDATE ItemLinks SET Note = 'by B', DateUpdated = ? WHERE ItemID = ?"_s,
                            {library.NextStamp(), Family::X});
        });
        QVERIFY(f->TakeIn(f->M()).Done);
        QVERIFY(f->TakeIn(f->B).Done);
        QCOMPARE(Family::Ask(f->B, u"SELECT Note FROM ItemLinks WHERE ItemID = ?"_s, {Family::X}).ToText(), u"by B"_s);
        QVERIFY(f->AreEqual());
    }

    void s37_sameLinkOnBoth_hasTheLaterNote_data()
    {
        QTest::addColumn<bool>("motherLater");
        QTest::newRow("the mother later") << true;
        QTest::newRow("the child later") << false;
    }
    void s37_sameLinkOnBoth_hasTheLaterNote()
    {
        QFETCH(bool, motherLater);
        f->Link(motherLater ? f->A() : f->M(), Family::P, Family::Q, u"earlier"_s);
        f->Link(motherLater ? f->M() : f->A(), Family::P, Family::Q, u"later"_s);
        f->Round(f->A());
        f->Round(f->B);
        for (const QString& path : {f->M(), f->A(), f->B})
            QCOMPARE(Family::Ask(path, u"SELECT Note FROM ItemLinks WHERE ItemID = 1"_s).ToText(), u"later"_s);
    }

    void s37_noteFromAClockAhead_countsAsOfNow()
    {
        const auto link = [](Library& library, const QString& note, Date noted) {
            library.Execute(u"INSERT INTO ItemLinks (ItemID, LinkItemID, Note, DateAdded, DateUpdated) "
                            "VALUES (?, ?, ?, ?, ?)"_s,
                            {Family::P, Family::Q, note, library.NextStamp(), noted});
        };
        f->In(f->A(), [&](Library& library) {
            link(library, u"from tomorrow"_s, Date::FromSeconds(f->Clock.Now().Seconds() + 86400));
        });
        f->Round(f->A());
        QVERIFY(Family::Ask(f->M(), u"SELECT DateUpdated FROM ItemLinks WHERE ItemID = 1"_s).ToDate() < f->Clock.Now());
        f->In(f->B, [&](Library& library) { link(library, u"later"_s, library.NextStamp()); });
        f->Round(f->B);
        for (const QString& path : {f->M(), f->B})
            QCOMPARE(Family::Ask(path, u"SELECT Note FROM ItemLinks WHERE ItemID = 1"_s).ToText(), u"later"_s);
    }

    void contentsThatAreMissing_areInTheReportOfTheOtherSide()
    {
        f->SetPage(f->A(), Family::Y, "by A");
        QFile::remove(f->Home.Path(u"child/lib_HTML/6.htm"_s));
        const qint64 file = f->AttachTo(f->A(), Family::Q, u"lost.txt"_s, "lost");
        QFile::remove(f->Home.Path(u"child/lib_Files/%1 - lost.txt"_s.arg(file)));
        const qint64 page = f->Add(f->M(), 0, u"lost page"_s);
        f->SetPage(f->M(), page, "by M");
        QFile::remove(f->Home.Path(u"Mütter/mother_HTML/%1.htm"_s.arg(page)));
        QFile::remove(f->Home.Path(u"child/lib_HTML/6/bild.png"_s)); // of what is in its folder nothing is said
        f->SetPage(f->A(), Family::X, "whole");
        const auto [mother, own] = f->Round(f->A());
        const QString lost = u"it is missing on the other side, and did not come"_s;
        const auto has = [](const MergeReport& report, const MergeLine& line) {
            return std::count(report.Lines.begin(), report.Lines.end(), line) == 1;
        };
        QVERIFY(has(mother.Report, {MergeEvent::PageChanged, Family::Y, u"Y"_s, lost}));
        QVERIFY(has(mother.Report, {MergeEvent::PageChanged, Family::X, u"X"_s, {}}));
        QVERIFY(has(mother.Report, {MergeEvent::FileAdded, Family::Q, u"Q"_s,
                                    u"lost.txt, whose contents are missing in the replica"_s}));
        QCOMPARE(mother.Report.CountOf(MergeEvent::PageChanged), 2);
        QVERIFY(has(own.Report, {MergeEvent::PageChanged, Family::IdOf(f->A(), u"lost page"_s), u"lost page"_s, lost}));
        QCOMPARE(own.Report.CountOf(MergeEvent::PageChanged), 1);
        f->EditTitle(f->A(), Family::X, u"X by A"_s); // whose page has come before
        QCOMPARE(f->Round(f->A()).first.Report.CountOf(MergeEvent::PageChanged), 0);
    }

    void s39_threeEdit_endsEqual()
    {
        f->EditTitle(f->A(), Family::X, u"X by A"_s);
        f->EditTitle(f->B, Family::X, u"X by B"_s);
        f->Round(f->A());
        const auto [mother, own] = f->Round(f->B);
        QCOMPARE(mother.Report.CountOf(MergeEvent::Conflict), 1);
        QCOMPARE(Family::Conflicts(f->M()), QStringList{u"X by A"_s});
        f->DiscardConflicts(f->M());
        QVERIFY(f->Kept(f->M()).contains(u"X by A"_s));
        f->Round(f->A());
        f->Round(f->B);
        QCOMPARE(Family::TitleOf(f->A(), Family::X), u"X by B"_s);
        QVERIFY(f->AreEqual());
    }

    /// What is told of the failed export itself is tested with the export; here that a round goes on after it.
    void s44_exportFails_theNextRoundHasIt()
    {
        f->EditTitle(f->A(), Family::X, u"X by A"_s);
        f->In(f->A(), [&](Library& library) {
            QVERIFY_THROWS_EXCEPTION(RuntimeError, WriteChanges(library, f->M() + u"/file.qbs"_s, ExportAgain::No));
        });
        QVERIFY(Library::Open(f->A())->LastExportedDate().IsNone());
        f->Delete(f->A(), Family::P); // which an exported child refuses
        f->Round(f->A());
        QCOMPARE(Family::TitleOf(f->M(), Family::X), u"X by A"_s);
        QCOMPARE(Family::IdOf(f->M(), u"P"_s), 0);
    }

    void s46_childrenOfOneSecond_areForgottenTogether()
    {
        f->In(f->M(), [](Library& library) {
            library.Execute(u"UPDATE ChildCopies SET LastSynchronized = (SELECT max(LastSynchronized) "
                            "FROM ChildCopies)"_s);
        });
        f->Prompts.ExpectMsgBox(u"Confirm removal"_s, MsgBoxResult::Yes);
        f->Prompts.ExpectMsgBox(u"Closing form..."_s);
        const auto mother = f->OpenMother();
        ReplicaList list(*mother);
        QCOMPARE(list.Lines().size(), size_t(2));
        QVERIFY(list.Forget(0));
        QCOMPARE(f->Prompts.Messages.front().Text, ForgetQuestion(2));
        QVERIFY(ForgetQuestion(2) != ForgetQuestion(1));
        QCOMPARE(ChildrenOf(*mother).size(), size_t(0));
    }

    void s47_stampsOnBothSidesOfASecond_refuseTheExport()
    {
        f->In(f->M(), [](Library& library) {
            library.Execute(u"UPDATE ChildCopies SET LastSynchronized = LastSynchronized + 1"_s);
        });
        f->ExportOf(f->A());
        f->Prompts.ExpectMsgBox(u"Old synchronization file"_s);
        QVERIFY(!f->TakeIn(f->M()).Done);
    }

    void s48_dateAhead_isRefused()
    {
        f->Clock.AddSeconds(86400);
        f->EditTitle(f->A(), Family::X, u"X by A"_s);
        f->Clock.AddSeconds(-86400);
        f->Prompts.ExpectMsgBox(u"System Date Alert"_s);
        f->In(f->A(), [&](Library& library) { QVERIFY(!WriteChanges(library, f->File, ExportAgain::No)); });
        QVERIFY(Library::Open(f->A())->LastExportedDate().IsNone());
        f->Clock.AddSeconds(2 * 86400);
        f->Round(f->A());
        QCOMPARE(Family::TitleOf(f->M(), Family::X), u"X by A"_s);
    }

    void s49_clockBehind_theEditTravels()
    {
        f->Round(f->A());
        f->Clock.AddSeconds(-3600);
        f->EditTitle(f->A(), Family::X, u"X by A"_s);
        f->Clock.AddSeconds(7200);
        f->Round(f->A());
        QCOMPARE(Family::TitleOf(f->M(), Family::X), u"X by A"_s);
    }
};

QB_TEST_MAIN(TestReplicaScenarios)
#include "tst_replica_scenarios.moc"
