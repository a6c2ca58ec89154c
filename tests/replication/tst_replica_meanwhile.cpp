#include "replication/ReplicaFamily.h"

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

namespace {

using Family = ReplicaFamily;

} // namespace

/// What is done between a step and the next one, and in the seconds around them.
class TestReplicaMeanwhile : public QObject {
    Q_OBJECT

    std::unique_ptr<Family> f;

private Q_SLOTS:
    void initTestCase() { FailOnWarnings(); }
    void init() { f = std::make_unique<Family>(); }
    void cleanup() { f.reset(); }

    void s17_movesBelowEachOtherDuringARound_oneIsAnOrphanOnBoth()
    {
        f->ExportOf(f->A());
        f->Move(f->M(), Family::F, Family::Q);
        f->TakeIn(f->M());
        f->Move(f->A(), Family::Q, Family::F);
        f->TakeIn(f->A());
        QCOMPARE(Family::ParentOf(f->A(), u"F"_s),
                 u"Orphaned Items"_s); // what came from the mother is the earlier move
        f->Round(f->A());
        f->Round(f->B);
        QCOMPARE(Family::ParentOf(f->A(), u"F"_s), u"Q"_s);
        QCOMPARE(Family::ParentOf(f->A(), u"Q"_s), u"Orphaned Items"_s);
        QVERIFY(f->AreEqual());
    }

    void descriptionOfAFile_thatWasChangedMeanwhile_travelsAlone()
    {
        f->ExportOf(f->A());
        f->Describe(f->A(), 1, u"by A"_s);
        QVERIFY(f->TakeIn(f->M()).Done);
        QVERIFY(f->TakeIn(f->A()).Done);
        f->Clock.AddSeconds(60);
        QVERIFY(f->Round(f->A()).first.Report.Faults.empty());
        QCOMPARE(Family::Ask(f->M(), u"SELECT Description FROM Files WHERE ID = 1"_s).ToText(), u"by A"_s);
    }

    void fileDescribedByBothMeanwhile_hasTheLaterText_data()
    {
        QTest::addColumn<bool>("motherLater");
        QTest::newRow("the mother later") << true;
        QTest::newRow("the child later") << false;
    }
    void fileDescribedByBothMeanwhile_hasTheLaterText()
    {
        QFETCH(bool, motherLater);
        f->ExportOf(f->A());
        f->Describe(motherLater ? f->A() : f->M(), 1, u"earlier"_s);
        f->Describe(motherLater ? f->M() : f->A(), 1, u"later"_s);
        QVERIFY(f->TakeIn(f->M()).Done);
        QVERIFY(f->TakeIn(f->A()).Done);
        QCOMPARE(Family::Ask(f->A(), u"SELECT Description FROM Files WHERE ID = 1"_s).ToText(), u"later"_s);
        f->Clock.AddSeconds(60);
        f->Round(f->A());
        f->Round(f->B);
        QCOMPARE(Family::Ask(f->M(), u"SELECT Description FROM Files WHERE ID = 1"_s).ToText(), u"later"_s);
        QVERIFY(f->AreEqual());
    }

    /// The mother calls its former place an orphan's.
    void itemMovedMeanwhile_staysWhereTheChildHasPutIt()
    {
        f->Delete(f->M(), Family::Q);
        f->Move(f->A(), Family::Y, Family::Q);
        f->ExportOf(f->A());
        f->Move(f->A(), Family::Y, Family::P);
        QVERIFY(f->TakeIn(f->M()).Done);
        QCOMPARE(Family::ParentOf(f->M(), u"Y"_s), u"Orphaned Items"_s);
        QVERIFY(f->TakeIn(f->A()).Done);
        QCOMPARE(Family::ParentOf(f->A(), u"Y"_s), u"P"_s);
        f->Clock.AddSeconds(60);
        f->Round(f->A());
        f->Round(f->B);
        QCOMPARE(Family::ParentOf(f->M(), u"Y"_s), u"P"_s);
        QVERIFY(f->AreEqual());
    }

    /// The date that the child gives what it has changed lies ahead by a minute.
    void itemEditedMeanwhile_canBeExportedAtOnce()
    {
        f->ExportOf(f->A());
        f->EditTitle(f->A(), Family::X, u"X meanwhile"_s);
        QVERIFY(f->TakeIn(f->M()).Done);
        {
            const auto child = Library::Open(f->A());
            Synchronize(*child, f->File);
            QVERIFY(WriteChanges(*child, f->File, ExportAgain::No));
        }
        f->Clock.AddSeconds(120);
        QVERIFY(f->TakeIn(f->M()).Done);
        QCOMPARE(Family::TitleOf(f->M(), Family::X), u"X meanwhile"_s);
    }

    void fileDeletedRightAfterARound_goes()
    {
        const qint64 file = f->AttachTo(f->M(), Family::Q, u"new.txt"_s, "new");
        f->ExportOf(f->A());
        QVERIFY(f->TakeIn(f->M()).Done);
        f->Clock.AddSeconds(2);
        {
            const auto mother = f->OpenMother(); // sooner than the date that the child gives what it takes over
            Transaction transaction(*mother);
            StoredFileDeletion deletion;
            deletion.Delete(*mother, file);
            transaction.Commit();
            deletion.Complete();
        }
        QVERIFY(f->TakeIn(f->A()).Done);
        f->Clock.AddSeconds(120);
        f->Round(f->A());
        f->Round(f->A());
        QVERIFY(Family::Outline(f->M()).filter(u"new.txt"_s).isEmpty());
        QVERIFY(Family::Outline(f->A()).filter(u"new.txt"_s).isEmpty());
    }

    /// The mother has it by then, and nobody here knows what she calls it before her answer comes.
    void deletedWhileTheAnswerIsOnItsWay_goes()
    {
        const qint64 file = f->AttachTo(f->A(), Family::Q, u"new.txt"_s, "new");
        const qint64 one = f->Add(f->A(), 0, u"one"_s);
        f->In(f->A(), [one](Library& library) {
            library.Execute(u"INSERT INTO ItemLinks (ItemID, LinkItemID, DateAdded, DateUpdated) VALUES (?1, ?2, ?3, "
                            "?3)"_s,
                            {one, Family::X, library.NextStamp()});
        });
        f->ExportOf(f->A());
        QVERIFY(f->TakeIn(f->M()).Done);
        f->In(f->A(), [file, one](Library& library) {
            CFileObject object;
            object.Initialise(library, QString::number(file));
            object.Delete();
            object.Commit();
            Family::Unlink(library, one, Family::X);
        });
        QVERIFY(f->TakeIn(f->A()).Done);
        f->Clock.AddSeconds(60);
        QVERIFY(Family::Outline(f->M()).contains(u"one --> X"_s));
        f->Round(f->A());
        QVERIFY(Family::Outline(f->M()).filter(u"new.txt"_s).isEmpty());
        QVERIFY(!Family::Outline(f->M()).contains(u"one --> X"_s));
        f->Round(f->B);
        QVERIFY(f->AreEqual());
    }

    /// B met the mother between A's changes and A's round: their dates are before its bound.
    void whatAnotherChangedBefore_comesAllTheSame()
    {
        f->AttachTo(f->A(), Family::P, u"new.txt"_s, "new");
        f->In(f->A(), [](Library& library) {
            library.Execute(u"INSERT INTO ItemLinks (ItemID, LinkItemID, DateAdded) VALUES (?, ?, ?)"_s,
                            {Family::P, Family::F, library.NextStamp()});
        });
        f->Delete(f->A(), Family::Q);
        f->Round(f->B);
        f->Round(f->A());
        f->Round(f->B);
        QCOMPARE(Family::Outline(f->B).filter(u"new.txt"_s), QStringList{u"P > new.txt |  | new"_s});
        QVERIFY(Family::Outline(f->B).contains(u"P --> F"_s));
        QCOMPARE(Family::IdOf(f->B, u"Q"_s), 0);
        QVERIFY(f->AreEqual());
    }

    /// Both have made it; the mother's answer does not bring it back.
    void linkDeletedWhileTheAnswerIsOnItsWay_staysAway()
    {
        for (const QString& path : {f->M(), f->A()})
            f->In(path, [](Library& library) {
                library.Execute(u"INSERT INTO ItemLinks (ItemID, LinkItemID, DateAdded) VALUES (?, ?, ?)"_s,
                                {Family::P, Family::Q, library.NextStamp()});
            });
        f->ExportOf(f->A());
        f->In(f->A(), [](Library& library) { Family::Unlink(library, Family::P, Family::Q); });
        QVERIFY(f->TakeIn(f->M()).Done);
        QVERIFY(Family::Outline(f->M()).contains(u"P --> Q"_s));
        QVERIFY(f->TakeIn(f->A()).Done);
        QVERIFY(!Family::Outline(f->A()).contains(u"P --> Q"_s));
        f->Clock.AddSeconds(120);
        f->Round(f->A());
        f->Round(f->B);
        QVERIFY(!Family::Outline(f->M()).contains(u"P --> Q"_s));
        QVERIFY(f->AreEqual());
    }

    /// What was made while a file was on its way has a later date than the next export, if that follows at once.
    void fileDeletedAfterAnExportAtOnce_goes()
    {
        f->ExportOf(f->A());
        QVERIFY(f->TakeIn(f->M()).Done);
        const Date before = f->Clock.Now();
        f->Clock.Set(Date::FromSeconds(before.Seconds() - 90)); // between the export and the mother's stamp
        qint64 file = 0;
        {
            const auto child = Library::Open(f->A());
            file = f->Attach(*child, Family::Q, u"new.txt"_s, "new");
        }
        f->Clock.Set(before);
        const auto child = Library::Open(f->A());
        Synchronize(*child, f->File);
        QVERIFY(WriteChanges(*child, f->File, ExportAgain::No));
        f->Clock.AddSeconds(120);
        {
            CFileObject object;
            object.Initialise(*child, QString::number(file));
            object.Delete();
            object.Commit();
        }
        QVERIFY(f->TakeIn(f->M()).Done);
        QVERIFY(f->TakeIn(f->A()).Done);
        f->Clock.AddSeconds(120);
        f->Round(f->A());
        QVERIFY(Family::Outline(f->M()).filter(u"new.txt"_s).isEmpty());
    }

    void s50_changeInTheSecondOfTheStamp_travels()
    {
        f->Round(f->A());
        f->Clock.Set(Library::Open(f->A())->Replica().LastSynchronized);
        {
            const auto child = Library::Open(f->A());
            f->Edit(*child, Family::X, u"X by A"_s);
        }
        f->Clock.AddSeconds(60);
        f->Round(f->A());
        QCOMPARE(Family::TitleOf(f->M(), Family::X), u"X by A"_s);
    }

    void madeDuringARound_isDatedAMinuteAfterTheStamp()
    {
        f->ExportOf(f->A());
        f->Add(f->A(), 0, u"late"_s);
        QVERIFY(f->TakeIn(f->M()).Done);
        QVERIFY(f->TakeIn(f->A()).Done);
        QCOMPARE(Family::Ask(f->A(),
                             u"SELECT (i.Created - p.LastSynchronized) || ' ' || (i.LastChanged - p.LastSynchronized) "
                             "FROM Items AS i, Properties AS p WHERE i.Title = 'late'"_s)
                     .ToText(),
                 u"60 60"_s);
    }

    void addedInTheSecondOfTheStamp_travels()
    {
        f->ExportOf(f->A());
        QVERIFY(f->TakeIn(f->M()).Done);
        const Date now = f->Clock.Now();
        f->Clock.Set(
            Family::Ask(f->M(), u"SELECT LastSynchronized FROM ChildCopies WHERE ShortDescr = 'child'"_s).ToDate());
        {
            const auto child = Library::Open(f->A());
            f->Attach(*child, Family::Q, u"new.txt"_s, "new");
            child->Execute(u"INSERT INTO ItemLinks (ItemID, LinkItemID, DateAdded) VALUES (?, ?, ?)"_s,
                           {Family::P, Family::Q, f->Clock.Now()});
        }
        f->Clock.Set(now);
        QVERIFY(f->TakeIn(f->A()).Done);
        f->Clock.AddSeconds(120);
        f->Round(f->A());
        QCOMPARE(Family::Outline(f->M()).filter(u"new.txt"_s), QStringList{u"Q > new.txt |  | new"_s});
        QVERIFY(Family::Outline(f->M()).contains(u"P --> Q"_s));
    }

    void deletedInTheSecondOfTheExport_isToldOnce()
    {
        {
            const auto child = Library::Open(f->A());
            f->DeleteItem(*child, Family::Q);
            QVERIFY(WriteChanges(*child, f->File, ExportAgain::No));
            QCOMPARE(child->QueryValue(u"SELECT DateDeleted FROM DeletedItems"_s).ToDate(), child->LastExportedDate());
        }
        QVERIFY(f->TakeIn(f->M()).Done);
        QCOMPARE(Family::IdOf(f->M(), u"Q"_s), 0);
        QVERIFY(f->TakeIn(f->A()).Done);
        QCOMPARE(Family::Ask(f->A(), u"SELECT count(*) FROM DeletedItems"_s).ToLong(), 0);
    }
};

QB_TEST_MAIN(TestReplicaMeanwhile)
#include "tst_replica_meanwhile.moc"
