#include "replication/ReplicaFamily.h"

#include "conflicts/AutomaticResolution.h"
#include "support/FewFiles.h"
#include "web/ItemPages.h"

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

namespace {

using Family = ReplicaFamily;

} // namespace

/// Web pages of items between a mother and her children.
class TestReplicaPages : public QObject {
    Q_OBJECT

    std::unique_ptr<Family> f;

private Q_SLOTS:
    void initTestCase() { FailOnWarnings(); }
    void init() { f = std::make_unique<Family>(); }
    void cleanup() { f.reset(); }

    void s38_newPage_getsTheNewNumber()
    {
        f->Add(f->M(), 0, u"other"_s); // takes the number
        const qint64 id = f->Add(f->A(), 0, u"with page"_s);
        const QString page = u"<img src=\"%1/pic.png\">"_s.arg(id);
        f->In(f->A(), [&](Library& library) {
            WriteFile(library.HTMLFolder() + QString::number(id) + u".htm"_s, page.toUtf8());
            WriteFile(library.HTMLFolder() + QString::number(id) + u"/pic.png"_s, "picture");
            library.Execute(u"UPDATE Items SET HTMLPage = ?, HTMLLastUpdated = ?, LastChanged = ? WHERE ID = ?"_s,
                            {Value(true), library.NextStamp(), library.NextStamp(), id});
        });
        f->Round(f->A());
        const qint64 atM = Family::IdOf(f->M(), u"with page"_s);
        QVERIFY(atM != id);
        const QString folder = f->Home.Path(u"Mütter/mother_HTML/"_s);
        QCOMPARE(ReadFile(folder + QString::number(atM) + u".htm"_s),
                 "<img src=\"" + QByteArray::number(atM) + "/pic.png\">");
        QCOMPARE(ReadFile(folder + QString::number(atM) + u"/pic.png"_s), QByteArray("picture"));
        QCOMPARE(ReadFile(f->Home.Path(u"child/lib_HTML/%1.htm"_s.arg(id))), page.toUtf8());
        f->Round(f->B);
        QVERIFY(f->AreEqual());
    }

    void manyPages_needFewFiles()
    {
        constexpr int Many = 200;
        f->In(f->A(), [&](Library& library) {
            const qint64 first =
                library.QueryValue(u"SELECT seq + 1 FROM sqlite_sequence WHERE name = 'Items'"_s).ToLong();
            library.Execute(u"WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < ?1) INSERT INTO "
                            "Items (Title, ParentID, Created, LastChanged, HTMLPage, HTMLLastUpdated) SELECT 'page ' "
                            "|| i, 0, ?2, ?2, -1, ?2 FROM n"_s,
                            {Many, library.NextStamp()});
            for (qint64 item = first; item < first + Many; ++item)
                WriteFile(library.HTMLFolder() + QString::number(item) + u".htm"_s, "page");
        });
        const FewFiles few(Many / 2);
        f->Round(f->A());
        f->Round(f->B);
        QCOMPARE(Family::Outline(f->B).filter(u"| page page"_s).size(), Many);
        QVERIFY(f->AreEqual());
    }

    void pageOfTheMother_travelsWithTheChildsText()
    {
        f->SetPage(f->M(), Family::X, "first");
        f->Round(f->A());
        f->SetPage(f->M(), Family::X, "second");
        f->EditCode(f->A(), Family::X, u"int by_a;"_s);
        const auto [mother, own] = f->Round(f->A());
        QCOMPARE(mother.Report.CountOf(MergeEvent::Conflict), 1);
        QCOMPARE(ReadFile(f->Home.Path(u"Mütter/mother_HTML/5.htm"_s)), QByteArray("second"));
        QCOMPARE(ReadFile(f->Home.Path(u"child/lib_HTML/5.htm"_s)), QByteArray("second"));
        QCOMPARE(f->Kept(f->A()).count(u"X"_s), 2); // with the texts of the first round, and with the first page
    }

    /// A text that the child changed between its export and the answer travels next time, but not the page with it.
    void pageOfTheMother_staysOverATextThatWasChangedMeanwhile()
    {
        f->ExportOf(f->A());
        f->EditTitle(f->A(), Family::Y, u"Y by A"_s);
        QVERIFY(f->TakeIn(f->M()).Done);
        f->In(f->M(), [](Library& library) { WritePage(library, Family::Y, "new page"); });
        QVERIFY(f->TakeIn(f->A()).Done); // the text is dated as late as the page
        f->Round(f->A());
        QCOMPARE(ReadFile(f->Home.Path(u"Mütter/mother_HTML/6.htm"_s)), QByteArray("new page"));
        QCOMPARE(ReadFile(f->Home.Path(u"child/lib_HTML/6.htm"_s)), QByteArray("new page"));
    }

    /// Of an item that came back the child sends the page in the next round; she may have written another one since.
    void pageOfARegainedItem_isNotWrittenOverTheMothers()
    {
        f->Delete(f->M(), Family::Y);
        f->EditTitle(f->A(), Family::Y, u"Y by A"_s);
        f->Round(f->A());
        const qint64 id = Family::IdOf(f->M(), u"Y by A"_s);
        f->EditTitle(f->M(), id, u"Y kept"_s);
        f->In(f->M(), [id](Library& library) { WritePage(library, id, "by M"); });
        f->Round(f->A());
        const QString page = f->Home.Path(u"Mütter/mother_HTML/%1.htm"_s.arg(id));
        QCOMPARE(ReadFile(page), QByteArray("by M"));
        QCOMPARE(ReadFile(f->Home.Path(u"child/lib_HTML/6.htm"_s)), QByteArray("by M"));
        QCOMPARE(f->Kept(f->A()), QStringList{u"Y by A"_s});
        f->Round(f->A());
        QCOMPARE(ReadFile(page), QByteArray("by M"));
    }

    /// Of an item that came back the page comes alone, a round later. Others get it as well.
    void pageOfARegainedItem_goesToTheOthers()
    {
        f->Delete(f->A(), Family::Y);
        f->EditTitle(f->B, Family::Y, u"Y by B"_s);
        f->Round(f->A());
        f->Round(f->B);
        f->EditTitle(f->M(), Family::IdOf(f->M(), u"Y by B"_s), u"Y kept"_s);
        f->Round(f->A());
        f->Round(f->B);
        f->Round(f->A());
        QVERIFY(!Family::Outline(f->A()).filter(u"bild.png"_s).isEmpty());
        QVERIFY(f->AreEqual());
    }

    void pageOfTheMother_comesUnderATextThatWasChangedMeanwhile()
    {
        f->ExportOf(f->A());
        f->SetPage(f->M(), Family::X, "by M");
        f->SetPage(f->M(), Family::Y, {});
        f->EditTitle(f->A(), Family::X, u"X by A"_s);
        f->EditTitle(f->A(), Family::Y, u"Y by A"_s);
        QVERIFY(f->TakeIn(f->M()).Done);
        QVERIFY(f->TakeIn(f->A()).Done);
        QCOMPARE(ReadFile(f->Home.Path(u"child/lib_HTML/5.htm"_s)), QByteArray("by M"));
        QVERIFY(!QFile::exists(f->Home.Path(u"child/lib_HTML/6.htm"_s)));
        QCOMPARE(f->Kept(f->A()), QStringList{u"Y by A"_s}); // with the page that went
        f->Clock.AddSeconds(60);
        f->In(f->A(), [](Library& library) { DiscardAllConflicts(library); });
        f->Round(f->A());
        f->Round(f->B);
        QCOMPARE(Family::TitleOf(f->M(), Family::X), u"X by A"_s);
        QCOMPARE(ReadFile(f->Home.Path(u"Mütter/mother_HTML/5.htm"_s)), QByteArray("by M"));
        QVERIFY(f->AreEqual());
    }

    /// The solver shows it beside the child's, though it is the same and has not travelled.
    void pageOfTheMothersVersionThatLost_isThere()
    {
        f->ExportOf(f->A());
        f->EditTitle(f->M(), Family::Y, u"Y by M"_s);
        f->EditTitle(f->A(), Family::Y, u"Y by A"_s);
        QVERIFY(f->TakeIn(f->M()).Done);
        QVERIFY(f->TakeIn(f->A()).Done);
        const Value page = Family::Ask(f->A(), u"SELECT File FROM TempHTMLFiles WHERE ItemIDRef = 6 AND Folder = ''"_s);
        QCOMPARE(page.ToBytes(), ReadFile(f->Home.Path(u"child/lib_HTML/6.htm"_s)));
    }

    void pageThatOnlyTheChildChangedMeanwhile_staysUnderTheMothersText()
    {
        f->ExportOf(f->A());
        f->SetPage(f->A(), Family::X, "by A");
        f->SetPage(f->A(), Family::Y, {});
        f->EditTitle(f->M(), Family::X, u"X by M"_s);
        f->EditTitle(f->M(), Family::Y, u"Y by M"_s);
        QVERIFY(f->TakeIn(f->M()).Done);
        QVERIFY(f->TakeIn(f->A()).Done);
        f->Clock.AddSeconds(60);
        f->In(f->A(), [](Library& library) { DiscardAllConflicts(library); });
        f->Round(f->A());
        QCOMPARE(Family::TitleOf(f->A(), Family::X), u"X by M"_s);
        QCOMPARE(ReadFile(f->Home.Path(u"Mütter/mother_HTML/5.htm"_s)), QByteArray("by A"));
        QVERIFY(!QFile::exists(f->Home.Path(u"Mütter/mother_HTML/6.htm"_s)));
        f->Round(f->B);
        QVERIFY(f->AreEqual());
    }

    /// The child's text is the later, and stays for the solver to decide; its page does, too.
    void pageOfTheChildsLaterText_stays()
    {
        f->ExportOf(f->A());
        f->SetPage(f->M(), Family::Y, "by M");
        f->SetPage(f->A(), Family::Y, "by A");
        QVERIFY(f->TakeIn(f->M()).Done);
        QVERIFY(f->TakeIn(f->A()).Done);
        QCOMPARE(Family::Conflicts(f->A()), QStringList{u"Y"_s});
        QCOMPARE(ReadFile(f->Home.Path(u"child/lib_HTML/6.htm"_s)), QByteArray("by A"));
    }

    /// The mother's page comes alone, under a text of the child's that she has taken over.
    void pageThatTheChildChangesAfterItsText_staysAgainstTheMothers()
    {
        f->SetPage(f->M(), Family::Y, "by M");
        f->EditTitle(f->A(), Family::Y, u"Y by A"_s);
        f->ExportOf(f->A());
        f->SetPage(f->A(), Family::Y, "by A");
        QVERIFY(f->TakeIn(f->M()).Done);
        QVERIFY(f->TakeIn(f->A()).Done);
        QCOMPARE(ReadFile(f->Home.Path(u"child/lib_HTML/6.htm"_s)), QByteArray("by A"));
        f->Clock.AddSeconds(60);
        f->In(f->M(), [](Library& library) { DiscardAllConflicts(library); });
        f->Round(f->A());
        QCOMPARE(ReadFile(f->Home.Path(u"Mütter/mother_HTML/6.htm"_s)), QByteArray("by A"));
    }

    /// Her text is the later one, and says that there is no page any more.
    void pageThatTheMotherTookAwayWithALaterText_goes()
    {
        f->SetPage(f->M(), Family::Y, "by M");
        f->Round(f->A());
        f->ExportOf(f->A());
        f->SetPage(f->A(), Family::Y, "by A");
        f->SetPage(f->M(), Family::Y, {});
        QVERIFY(f->TakeIn(f->M()).Done);
        QVERIFY(f->TakeIn(f->A()).Done);
        QCOMPARE(Family::Ask(f->A(), u"SELECT HTMLPage FROM Items WHERE ID = ?"_s, {Family::Y}).ToLong(), 0);
        QCOMPARE(Family::Ask(f->A(), u"SELECT File FROM TempHTMLFiles WHERE ItemIDRef = 6"_s).ToBytes(),
                 QByteArray("by A"));
    }

    void pageThatBothChangedMeanwhile_goesWithTheText()
    {
        f->ExportOf(f->A());
        f->SetPage(f->A(), Family::X, "by A");
        f->SetPage(f->A(), Family::Y, {});
        f->SetPage(f->M(), Family::X, "by M");
        f->SetPage(f->M(), Family::Y, "Y by M");
        QVERIFY(f->TakeIn(f->M()).Done);
        QVERIFY(f->TakeIn(f->A()).Done);
        QCOMPARE(Family::Ask(f->A(), u"SELECT File FROM TempHTMLFiles WHERE ItemIDRef = 5"_s).ToBytes(),
                 QByteArray("by A"));
        f->Clock.AddSeconds(60);
        f->In(f->A(), [](Library& library) { DiscardAllConflicts(library); });
        f->Round(f->A());
        QCOMPARE(ReadFile(f->Home.Path(u"child/lib_HTML/5.htm"_s)), QByteArray("by M"));
        QCOMPARE(ReadFile(f->Home.Path(u"Mütter/mother_HTML/6.htm"_s)), QByteArray("Y by M"));
        f->Round(f->B);
        QVERIFY(f->AreEqual());
    }

    /// The child keeps its version and its page, which goes to the mother with it.
    void pageOfTheWinningChild_travelsWithItsText()
    {
        f->ExportOf(f->A());
        f->EditTitle(f->M(), Family::X, u"X by M"_s);
        f->SetPage(f->A(), Family::X, "by A");
        QVERIFY(f->TakeIn(f->M()).Done);
        QVERIFY(f->TakeIn(f->A()).Done);
        f->Clock.AddSeconds(60);
        f->DiscardConflicts(f->A());
        f->Round(f->A());
        QCOMPARE(ReadFile(f->Home.Path(u"Mütter/mother_HTML/5.htm"_s)), QByteArray("by A"));
        f->Round(f->B);
        QVERIFY(f->AreEqual());
    }

    void pageThatTheMotherDeleted_goesUnderTheChildsText()
    {
        f->SetPage(f->M(), Family::Y, {});
        f->EditCode(f->A(), Family::Y, u"int by_a;"_s);
        f->Round(f->A());
        QVERIFY(!QFile::exists(f->Home.Path(u"child/lib_HTML/6.htm"_s)));
        QCOMPARE(Family::Ask(f->A(), u"SELECT HTMLPage FROM Items WHERE ID = 6"_s).ToLong(), 0);
        QCOMPARE(Family::Ask(f->M(), u"SELECT HTMLPage FROM Items WHERE ID = 6"_s).ToLong(), 0);
        QCOMPARE(f->Kept(f->A()), QStringList{u"Y"_s});
    }

    /// B met the mother between A's change and A's round.
    void pageThatAnotherChildTookAway_staysAwayUnderALaterText()
    {
        f->SetPage(f->A(), Family::Y, {});
        f->Round(f->B);
        f->Round(f->A());
        f->EditTitle(f->B, Family::Y, u"Y by B"_s);
        f->Round(f->B);
        QCOMPARE(Family::Ask(f->M(), u"SELECT Title || HTMLPage FROM Items WHERE ID = 6"_s).ToText(), u"Y by B0"_s);
        f->DiscardConflicts(f->M());
        f->Round(f->A());
        QVERIFY(f->AreEqual());
    }

    void pageOfTheLosingChild_isReplacedByTheMothers()
    {
        f->SetPage(f->A(), Family::Y, "by A");
        f->EditTitle(f->M(), Family::Y, u"Y by M"_s);
        f->Round(f->A());
        QCOMPARE(ReadFile(f->Home.Path(u"child/lib_HTML/6.htm"_s)),
                 ReadFile(f->Home.Path(u"Mütter/mother_HTML/6.htm"_s)));
        QVERIFY(ReadFile(f->Home.Path(u"child/lib_HTML/6.htm"_s)).contains("bild.png"));
        QCOMPARE(Family::Ask(f->M(), u"SELECT File FROM TempHTMLFiles WHERE Folder = ''"_s).ToBytes(),
                 QByteArray("by A"));
    }
};

QB_TEST_MAIN(TestReplicaPages)
#include "tst_replica_pages.moc"
