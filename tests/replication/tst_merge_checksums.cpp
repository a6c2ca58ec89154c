#include "maintenance/ContentCheck.h"
#include "replication/ReplicaFamily.h"

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

namespace {

using Family = ReplicaFamily;

} // namespace

/// What has rotted is found in what a merge has written, too, and a merge takes nothing for good that had rotted
/// before.
class TestMergeChecksums : public QObject {
    Q_OBJECT

    std::unique_ptr<Family> f;
    qint64 m_file = 0;     ///< of the item P
    qint64 m_regained = 0; ///< an item that will be deleted by her and changed by the child

    /// All of both families' rows are known, and whole.
    void VerifyAllIsKnown(const QString& path)
    {
        const auto library = Library::Open(path);
        const ContentCheck check = CheckContents(*library);
        for (const LibraryFault& fault : check.Faults)
            qWarning().noquote() << fault.Text;
        QCOMPARE(check.Faults.size(), size_t(0));
        QCOMPARE(check.UnknownRows, 0);
        QVERIFY(check.KnownRows > 0);
    }
    /// A byte of a text falls over, which no date tells.
    static void Rot(const QString& path, const QString& table, const QString& column, const QString& where)
    {
        const auto library = Library::Open(path);
        QCOMPARE(library->Execute(u"UPDATE %1 SET %2 = coalesce(%2, '') || '!' WHERE %3"_s.arg(table, column, where)),
                 1);
    }
    static QStringList Damaged(const QString& path)
    {
        QStringList texts;
        for (const LibraryFault& fault : CheckContents(*Library::Open(path)).Faults)
            texts << fault.Text;
        return texts;
    }
    void Describe(const QString& path, qint64 file, const QString& text)
    {
        f->In(path, [&](Library& library) {
            CFileObject object;
            object.Initialise(library, QString::number(file));
            object.SetDescription(text);
            object.SetDescriptionChanged(true);
            object.Commit();
        });
    }
    /// Everything that a merge does to rows, on both sides.
    void DoAll()
    {
        f->EditCode(f->A(), Family::P, u"int by_a;"_s); // taken by her
        f->EditCode(f->M(), Family::Q, u"int by_m;"_s); // taken by the child
        f->EditTitle(f->M(), Family::X, u"X by M"_s);
        f->EditTitle(f->A(), Family::X, u"X by A"_s); // a conflict
        f->AttachTo(f->A(), Family::P, u"a.txt"_s, "of A");
        f->AttachTo(f->M(), Family::Q, u"m.txt"_s, "of M");
        Describe(f->A(), 1, u"by A"_s);
        f->Add(f->A(), Family::Q, u"new by A"_s);
        f->Add(f->M(), Family::Q, u"new by M"_s);
        f->Delete(f->A(), Family::Y);
        f->EditTitle(f->M(), Family::Y, u"Y kept"_s);
        f->Delete(f->M(), m_regained);
        f->EditTitle(f->A(), Family::Ask(f->A(), u"SELECT ID FROM Items WHERE Title = 'R'"_s).ToLong(), u"regained"_s);
        f->ExportOf(f->A());
        f->EditTitle(f->A(), Family::P2, u"P2 since"_s);
        f->Add(f->A(), 0, u"new since"_s);
        f->AttachTo(f->A(), Family::Q, u"since.txt"_s, "since");
        QVERIFY(f->TakeIn(f->M()).Done);
        QVERIFY(f->TakeIn(f->A()).Done);
    }

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        f = std::make_unique<Family>();
        for (const QString& path : {f->M(), f->A()}) { // written by other means than the program's
            f->In(path, [](Library& library) { library.Execute(u"DELETE FROM own_Checksums"_s); });
            for (const qint64 id : {Family::P, Family::Q, Family::F, Family::P2, Family::X, Family::Y})
                f->EditCode(path, id, u"int code%1;"_s.arg(id));
            Describe(path, 1, u"described"_s);
        }
        m_file = f->AttachTo(f->M(), Family::P, u"held.txt"_s, "held");
        m_regained = f->Add(f->M(), 0, u"R"_s);
        f->Round(f->A());
        f->In(f->M(), [](Library& library) { library.Execute(u"DELETE FROM TempItems"_s); });
    }
    void cleanup() { f.reset(); }

    void whatAMergeWrites_isKnown()
    {
        VerifyAllIsKnown(f->M());
        DoAll();
        VerifyAllIsKnown(f->M());
        VerifyAllIsKnown(f->A());
    }

    void rotInWhatAMergeWrote_isNamed()
    {
        DoAll();
        for (const QString& path : {f->M(), f->A()}) {
            for (const QString& title : {u"new by A"_s, u"new by M"_s, u"X by A"_s, u"Q"_s}) {
                Rot(path, u"Items"_s, u"Notes"_s, u"Title = '%1'"_s.arg(title));
                const QStringList damaged = Damaged(path);
                QCOMPARE(damaged.filter(u"'%1' has a damaged notes"_s.arg(title)).size(), 1);
            }
            Rot(path, u"Files"_s, u"Description"_s, u"Title = 'a.txt'"_s);
            QCOMPARE(Damaged(path).filter(u"'a.txt' has a damaged description"_s).size(), 1);
            const auto library = Library::Open(path);
            const qint64 id = library->QueryValue(u"SELECT ID FROM Files WHERE Title = 'm.txt'"_s).ToLong();
            WriteFile(StoredFilePath(*library, id, u"m.txt"_s), "of N");
            QCOMPARE(Damaged(path).filter(u"'m.txt' is damaged"_s).size(), 1);
            QCOMPARE(Damaged(path).size(), 6);
        }
    }

    /// Of a row that gets another date, or another text in part, the rest stays as it was.
    void rotFromBefore_isNotTakenForGood()
    {
        f->Delete(f->A(), Family::Y);
        f->EditTitle(f->M(), Family::Y, u"Y kept"_s);
        Describe(f->A(), m_file, u"by A"_s);
        f->ExportOf(f->A());
        f->Add(f->A(), 0, u"new since"_s);
        f->Add(f->A(), 0, u"foreign"_s);
        f->In(f->A(), [](Library& library) { // another program changes it, which is no rot
            library.Execute(
                u"UPDATE Items SET Code = 'foreign', LastChanged = LastChanged + 1 WHERE Title = 'foreign'"_s);
        });
        Rot(f->A(), u"Items"_s, u"Notes"_s, u"Title = 'new since'"_s); // will be dated later
        Rot(f->M(), u"Items"_s, u"Code"_s, u"Title = 'Y kept'"_s);     // gets a note in its info
        // Gets another description.
        WriteFile(f->Home.Path(u"Mütter/mother_Files/%1 - held.txt"_s.arg(m_file)), "hold");
        QVERIFY(f->TakeIn(f->M()).Done);
        QVERIFY(f->TakeIn(f->A()).Done);
        QCOMPARE(Damaged(f->A()).filter(u"'new since' has a damaged notes"_s).size(), 1);
        QCOMPARE(Damaged(f->A()).size(), 1);
        QCOMPARE(Damaged(f->M()).filter(u"'Y kept' has a damaged code"_s).size(), 1);
        QCOMPARE(Damaged(f->M()).filter(u"'held.txt' is damaged"_s).size(), 1);
    }
};

QB_TEST_MAIN(TestMergeChecksums)
#include "tst_merge_checksums.moc"
