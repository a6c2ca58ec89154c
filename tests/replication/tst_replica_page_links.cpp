#include "replication/ReplicaFamily.h"

#include "removed/RemovedReturn.h"
#include "web/ItemPages.h"

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

namespace {

using Family = ReplicaFamily;

} // namespace

/// Addresses of items in pages, which each library numbers for itself.
class TestReplicaPageLinks : public QObject {
    Q_OBJECT

    std::unique_ptr<Family> f;

    static QByteArray LinkTo(qint64 item, const QByteArray& before = {})
    {
        return "<a href=\"local://Item" + before + QByteArray::number(item) + "\">it</a>";
    }
    void LetLead(const QString& path, qint64 from, const QByteArray& page)
    {
        f->In(path, [&](Library& library) { WritePage(library, from, page); });
    }
    static QByteArray PageOf(const QString& path, qint64 item)
    {
        const auto library = Library::Open(path, DBEngine::Access::ReadOnly);
        return ReadFile(library->HTMLFolder() + QString::number(item) + u".htm"_s);
    }
    /// An item that each library knows under a number of its own.
    void MakeTarget(const QString& where)
    {
        f->Add(f->M(), 0, u"of M"_s);
        f->Add(f->B, 0, u"of B"_s);
        f->Add(f->B, 0, u"of B too"_s);
        f->Round(f->B);
        f->Add(f->B, 0, u"of B again"_s);
        f->Add(where, 0, u"target"_s);
    }

private Q_SLOTS:
    void initTestCase() { FailOnWarnings(); }
    void init() { f = std::make_unique<Family>(); }
    void cleanup() { f.reset(); }

    void linkOfAChild_leadsToTheSameItemEverywhere()
    {
        MakeTarget(f->A());
        const qint64 target = Family::IdOf(f->A(), u"target"_s);
        for (const qint64 from : {Family::X, Family::Q})
            LetLead(f->A(), from, LinkTo(target) + LinkTo(Family::P));
        f->Round(f->A());
        f->Round(f->B);
        for (const QString& path : {f->M(), f->A(), f->B}) {
            for (const qint64 from : {Family::X, Family::Q})
                QCOMPARE(PageOf(path, from), LinkTo(Family::IdOf(path, u"target"_s)) + LinkTo(Family::P));
        }
        QVERIFY(Family::IdOf(f->M(), u"target"_s) != target);
        QVERIFY(Family::IdOf(f->B, u"target"_s) != Family::IdOf(f->M(), u"target"_s));
        // When the numbers are known to both, too.
        LetLead(f->A(), Family::Y, LinkTo(target));
        f->Round(f->A());
        QCOMPARE(PageOf(f->M(), Family::Y), LinkTo(Family::IdOf(f->M(), u"target"_s)));
    }

    void linkOfTheMother_leadsToTheSameItemEverywhere()
    {
        f->Add(f->A(), 0, u"of A"_s);
        MakeTarget(f->M());
        LetLead(f->M(), Family::X, LinkTo(Family::IdOf(f->M(), u"target"_s)) + LinkTo(Family::P));
        for (const QString& child : {f->A(), f->B}) {
            f->Round(child);
            QVERIFY(Family::IdOf(child, u"target"_s) != Family::IdOf(f->M(), u"target"_s));
            QCOMPARE(PageOf(child, Family::X), LinkTo(Family::IdOf(child, u"target"_s)) + LinkTo(Family::P));
        }
        const qint64 known = Family::IdOf(f->M(), u"of A"_s);
        LetLead(f->M(), Family::Y, LinkTo(known));
        f->Round(f->A());
        QCOMPARE(PageOf(f->A(), Family::Y), LinkTo(Family::IdOf(f->A(), u"of A"_s)));
    }

    void pageOfAnyEncoding_isLedOn()
    {
        MakeTarget(f->A());
        const auto utf16 = [](qint64 item) {
            const QString text = u"\ufeffä LOCAL://ITEM%1"_s.arg(item);
            return QByteArray(reinterpret_cast<const char*>(text.utf16()), text.size() * 2);
        };
        LetLead(f->A(), Family::X, utf16(Family::IdOf(f->A(), u"target"_s)));
        f->Round(f->A());
        QCOMPARE(PageOf(f->M(), Family::X), utf16(Family::IdOf(f->M(), u"target"_s)));
    }

    /// Its number is that of another item of the mother's.
    void linkToWhatTheChildHasDeleted_leadsNowhere()
    {
        f->Add(f->M(), 0, u"of M"_s);
        const qint64 gone = f->Add(f->A(), 0, u"gone"_s);
        f->Round(f->A());
        QCOMPARE(Family::IdOf(f->M(), u"of M"_s), gone);
        LetLead(f->A(), Family::X, LinkTo(gone));
        f->Delete(f->A(), gone);
        f->Round(f->A());
        QCOMPARE(PageOf(f->M(), Family::X), LinkTo(gone, "-"));
        f->EditTitle(f->M(), Family::X, u"X by M"_s);
        f->Round(f->B);
        QCOMPARE(PageOf(f->B, Family::X), LinkTo(gone, "-"));
    }

    /// Of the child's own items the mother knows none.
    void numberThatIsNoItems_staysAsItIs()
    {
        f->Add(f->A(), 0, u"of A"_s);
        f->In(f->A(),
              [](Library& library) { library.Execute(u"UPDATE Items SET MotherRecordID = 0 WHERE Title = 'of A'"_s); });
        const QByteArray page = "local://Item0 local://Item00 local://Item99999999999999999999";
        LetLead(f->M(), Family::X, page);
        f->ExportOf(f->A());
        f->Add(f->A(), 0, u"of A since"_s);
        QVERIFY(f->TakeIn(f->M()).Done);
        QVERIFY(f->TakeIn(f->A()).Done);
        QCOMPARE(PageOf(f->A(), Family::X), page);
    }

    void linkToNothing_leadsToNothingThatTheChildMayAdd()
    {
        LetLead(f->M(), Family::X, LinkTo(400));
        f->Round(f->A());
        QCOMPARE(PageOf(f->A(), Family::X), LinkTo(400, "0-"));
        LetLead(f->A(), Family::X, LinkTo(400, "0-") + LinkTo(400));
        f->Round(f->A());
        QCOMPARE(PageOf(f->M(), Family::X), LinkTo(400) + LinkTo(400));
    }

    /// The child does not get an item that waits for a decision, and has another one of its number.
    void linkToWhatTheChildDoesNotHave_isTheMothersAgain()
    {
        const qint64 added = f->Add(f->M(), Family::P, u"new"_s);
        f->Round(f->A());
        f->Delete(f->A(), Family::IdOf(f->A(), u"new"_s));
        f->EditTitle(f->M(), added, u"new, edited"_s);
        f->Round(f->A());
        QCOMPARE(Family::Ask(f->M(), u"SELECT LastChanged FROM Items WHERE ID = ?"_s, {added}).ToLong(), 0);
        QCOMPARE(f->Add(f->B, 0, u"of B"_s), added);
        LetLead(f->M(), Family::X, LinkTo(added));
        f->Round(f->B);
        QCOMPARE(PageOf(f->B, Family::X), LinkTo(added, "0-"));
        LetLead(f->B, Family::X, LinkTo(added, "0-") + "and more");
        f->Round(f->B);
        QCOMPARE(PageOf(f->M(), Family::X), LinkTo(added) + "and more");
        f->EditTitle(f->M(), added, u"new, kept"_s);
        f->Round(f->A());
        QVERIFY(Family::IdOf(f->A(), u"new, kept"_s) != 0);
        QCOMPARE(PageOf(f->A(), Family::X), LinkTo(Family::IdOf(f->A(), u"new, kept"_s)) + "and more");
    }

    void linkOfTheLosersPage_leadsToTheMothersItems()
    {
        MakeTarget(f->A());
        LetLead(f->A(), Family::Y, LinkTo(Family::IdOf(f->A(), u"target"_s)));
        f->EditTitle(f->A(), Family::Y, u"Y by A"_s);
        f->EditTitle(f->M(), Family::Y, u"Y by M"_s);
        f->Round(f->A());
        QCOMPARE(Family::Ask(f->M(), u"SELECT File FROM TempHTMLFiles WHERE ItemIDRef = 6 AND Folder = ''"_s).ToBytes(),
                 LinkTo(Family::IdOf(f->M(), u"target"_s)));
    }

    /// Against the mother's, which is the later one, it is put aside in her.
    void linkOfAPageThatIsPutAside_leadsToTheMothersItems()
    {
        MakeTarget(f->A());
        LetLead(f->A(), Family::Y, LinkTo(Family::IdOf(f->A(), u"target"_s)));
        f->EditTitle(f->A(), Family::Y, u"Y by A"_s);
        f->Delete(f->M(), Family::Y);
        f->Round(f->A());
        QCOMPARE(Family::IdOf(f->M(), u"Y by A"_s), 0);
        f->In(f->M(), [&](Library& library) {
            const RemovedList list(f->M());
            const std::vector<ListedEntry> found = list.Find(u"Y by A"_s);
            QCOMPARE(found.size(), 1);
            const ReturnResult result = ReturnRemoved(library, list, found.front(), {});
            QCOMPARE(ReadFile(library.HTMLFolder() + QString::number(result.Item) + u".htm"_s),
                     LinkTo(Family::IdOf(f->M(), u"target"_s)));
        });
    }

    void linkOfAGrandchild_leadsToTheSameItemEverywhere()
    {
        const QString grandchild = f->GiveOutTo(u"grandchild"_s, f->A());
        f->Clock.AddSeconds(60);
        f->Add(f->A(), 0, u"of A"_s);
        MakeTarget(grandchild);
        LetLead(grandchild, Family::X, LinkTo(Family::IdOf(grandchild, u"target"_s)));
        f->Round(grandchild, f->A());
        f->Round(f->A());
        f->Round(f->B);
        for (const QString& path : {f->M(), f->A(), f->B, grandchild})
            QCOMPARE(PageOf(path, Family::X), LinkTo(Family::IdOf(path, u"target"_s)));
        LetLead(f->M(), Family::Y, LinkTo(Family::IdOf(f->M(), u"of A"_s)) + LinkTo(400));
        f->Round(f->A());
        f->Round(grandchild, f->A());
        QCOMPARE(PageOf(f->A(), Family::Y), LinkTo(Family::IdOf(f->A(), u"of A"_s)) + LinkTo(400, "0-"));
        QCOMPARE(PageOf(grandchild, Family::Y), LinkTo(Family::IdOf(grandchild, u"of A"_s)) + LinkTo(400, "0-0-"));
        LetLead(grandchild, Family::Y, LinkTo(400, "0-0-"));
        f->Round(grandchild, f->A());
        f->Round(f->A());
        QCOMPARE(PageOf(f->M(), Family::Y), LinkTo(400));
    }
};

QB_TEST_MAIN(TestReplicaPageLinks)
#include "tst_replica_page_links.moc"
