#include "exchange/BranchExport.h"
#include "exchange/BranchImport.h"
#include "exchange/BranchStream.h"
#include "platform/archive/BrindletonZip.h"
#include "platform/richtext/Rtf.h"
#include "platform/richtext/RtfPlainText.h"
#include "store/CCodeItem.h"
#include "store/CFileObject.h"
#include "store/ItemBranch.h"
#include "support/FewFiles.h"
#include "support/FolderContents.h"
#include "support/LibraryBuilder.h"
#include "support/RecordedWork.h"
#include "support/ScriptedPrompts.h"
#include "support/TestRun.h"

#include <QStringEncoder>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// A branch goes out of one library and into another.
class TestBranchTransfer : public QObject {
    Q_OBJECT

    std::optional<TemporaryHome> m_home;
    std::optional<FixedClock> m_clock;
    std::unique_ptr<Library> m_from;
    std::unique_ptr<Library> m_to;
    qint64 m_top = 0, m_inner = 0, m_aside = 0;

    QString File() const { return m_home->Path(u"ast ä.qbx"_s); }

    void Fill()
    {
        m_top = AddItem(*m_from, 0, u"top ü"_s, u"int top;\nint two;"_s);
        m_inner = AddItem(*m_from, m_top, u"inner"_s, QString(70'000, u'x'));
        m_aside = AddItem(*m_from, 0, u"aside"_s);
        CCodeItem item;
        item.Initialise(*m_from, QString::number(m_inner));
        item.SetDescription(u"what it is"_s);
        item.SetInfo(u"info €"_s);
        item.SetUser(u"somebody"_s);
        item.SetItemStatus(3);
        item.SetItemRating(7);
        item.SetCodeHeaders(5);
        item.SetUsageHeaders(9);
        item.SetNotes(RtfFromPlainText(u"notes"_s, CodeFont));
        item.SetExample(RtfFromPlainText(u"usage"_s, CodeFont));
        item.SetHTMLPage(true);
        item.SetItemChanged(true);
        QVERIFY(item.Commit());
        for (const int size : {0, 16'383, 16'384, 16'385})
            AddStoredFile(*m_from, m_inner, u"größe %1.bin"_s.arg(size), QByteArray(size, char('a' + size % 7)),
                          Date::FromParts(2020, 1, 2));
        const QString page = m_from->HTMLFolder() + QString::number(m_inner);
        WriteFile(page + u".htm"_s, "<img src=\"" + QByteArray::number(m_inner) + "/pic ä.png\">");
        WriteFile(page + u"/pic ä.png"_s, "picture");
        WriteFile(page + u"/deep/er/x.css"_s, "css");
        m_from->Execute(u"INSERT INTO ItemLinks (ItemID, LinkItemID, Note) VALUES (?, ?, 'why'), (?, ?, 'out')"_s,
                        {m_top, m_inner, m_inner, m_aside});
    }

    /// All of an item but its numbers and dates.
    static QStringList Shown(Library& library, const QString& title)
    {
        const qint64 id =
            library.QueryValue(u"SELECT ID FROM Items WHERE Title = ? ORDER BY ID DESC LIMIT 1"_s, {title}).ToLong();
        CCodeItem item;
        item.Initialise(library, QString::number(id));
        QStringList shown{item.Title(),
                          item.Description(),
                          item.Info(),
                          item.User(),
                          QString::number(item.ItemStatus()),
                          QString::number(item.ItemRating()),
                          PlainTextFromRtf(item.Code()),
                          QString::number(item.CodeHeaders()),
                          PlainTextFromRtf(item.Notes()),
                          PlainTextFromRtf(item.Example()),
                          QString::number(item.UsageHeaders()),
                          QString::number(item.HTMLPage())};
        shown += Texts(
            library,
            u"SELECT Title || '|' || FileSize || '|' || coalesce(Description, '') || '|' || coalesce(OrigDateTime, 0) "
            "FROM Files WHERE CodeID = %1 ORDER BY Title"_s.arg(id));
        for (const QString& file : Texts(library, u"SELECT ID || ' - ' || Title FROM Files WHERE CodeID = %1 ORDER BY "
                                                  "Title"_s.arg(id)))
            shown << QString::fromLatin1(ReadFile(library.FilesFolder() + file));
        const QString place = library.HTMLFolder() + QString::number(id) + u".htm"_s;
        const QByteArray page = QFile::exists(place) ? ReadFile(place) : QByteArray();
        shown << QString::fromUtf8(page).replace(QString::number(id), u"ID"_s);
        const QMap<QString, QByteArray> below = ContentsOf(library.HTMLFolder() + QString::number(id));
        for (auto file = below.begin(); file != below.end(); ++file)
            shown << file.key() + u'=' + QString::fromUtf8(file.value());
        return shown;
    }

    /// Without the marks by which the folders know their library.
    QStringList Rows() const
    {
        QStringList rows = Texts(*m_to, u"SELECT ID || Title || ParentID FROM Items"_s)
                           + Texts(*m_to, u"SELECT ID || Title FROM Files"_s) + ContentsOf(m_to->FilesFolder()).keys()
                           + ContentsOf(m_to->HTMLFolder()).keys();
        rows.removeAll(u".library"_s);
        return rows;
    }

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_home.emplace();
        m_clock.emplace();
        m_from = MakeLibrary(m_home->Path(u"von.qbd"_s), LanguageType::Cpp);
        m_to = MakeLibrary(m_home->Path(u"nach.qbd"_s), LanguageType::VB);
    }
    void cleanup()
    {
        m_from.reset();
        m_to.reset();
        m_clock.reset();
        m_home.reset();
    }

    void branch_arrivesAsItWas()
    {
        Fill();
        const BranchExportResult sent = ExportItems(*m_from, m_top, File());
        QCOMPARE(sent.Items, 2);
        QCOMPARE(sent.Files, 4);
        QCOMPARE(sent.Pages, 3);
        const UnpackedBranch branch(File());
        QCOMPARE(branch.Trailer().Links.size(), 1); // nothing of what stays behind
        QCOMPARE(branch.Trailer().Links.front().Note, u"why"_s);
        const qint64 parent = AddItem(*m_to, 0, u"parent"_s);
        m_clock->AddSeconds(77);
        const BranchImportResult got = ImportItems(*m_to, branch, {.Parent = parent, .Only = {}});
        QCOMPARE(got.Items, 2);
        QCOMPARE(got.Files, 4);
        QCOMPARE(got.Pages, 3);
        QCOMPARE(got.Links, 1); // that inside of the branch
        for (const QString& title : {u"top ü"_s, u"inner"_s})
            QCOMPARE(Shown(*m_to, title), Shown(*m_from, title));
        QCOMPARE(Texts(*m_to, u"SELECT ParentID FROM Items WHERE ID = %1"_s.arg(got.Top)),
                 QStringList{QString::number(parent)});
        QCOMPARE(Texts(*m_to, u"SELECT p.Title FROM Items i, Items p WHERE i.Title = 'inner' AND p.ID = i.ParentID"_s),
                 QStringList{u"top ü"_s});
        QCOMPARE(Texts(*m_to, u"SELECT Note FROM ItemLinks"_s), QStringList{u"why"_s});
        QCOMPARE(m_to->QueryValue(u"SELECT LastChanged FROM Items WHERE ID = ?"_s, {got.Top}).ToDate(), m_clock->Now());
        QCOMPARE(ContentsOf(m_to->HTMLFolder()).keys().filter(u"arriving"_s), QStringList());
    }

    void linksOfPages_leadToTheItemsThatArrived_data()
    {
        QTest::addColumn<bool>("isWide");
        QTest::newRow("bytes") << false;
        QTest::newRow("UTF-16") << true;
    }
    void linksOfPages_leadToTheItemsThatArrived()
    {
        QFETCH(bool, isWide);
        Fill();
        const auto page = [isWide](qint64 top, qint64 aside) {
            const QString text = u"\ufeff<a href='local://Item%1'>ä</a> <a href=\"LOCAL://item%2\">"_s.arg(top).arg(
                aside);
            return isWide ? QByteArray(QStringEncoder(QStringEncoder::Utf16LE).encode(text)) : text.mid(1).toUtf8();
        };
        WriteFile(m_from->HTMLFolder() + QString::number(m_inner) + u".htm"_s, page(m_top, m_aside));
        ExportItems(*m_from, m_top, File());
        for (int i = 0; i < 20; ++i)
            AddItem(*m_to, 0, u"there"_s); // so that the numbers are others
        const BranchImportResult got = ImportItems(*m_to, UnpackedBranch(File()), {.Parent = 0, .Only = {}});
        QVERIFY(got.Top != m_top);
        const QString arrived = m_to->HTMLFolder() + QString::number(got.Top + 1) + u".htm"_s;
        QCOMPARE(ReadFile(arrived), page(got.Top, m_aside)); // one that stays behind keeps its address
    }

    void importIntoAReplica_isNewToTheOthersWithItsPageAndLinks()
    {
        Fill();
        m_from->Execute(u"UPDATE Items SET HTMLLastUpdated = 5"_s);
        ExportItems(*m_from, m_top, File());
        ImportItems(*m_to, UnpackedBranch(File()), {.Parent = 0, .Only = {}});
        const QString page = u"SELECT HTMLLastUpdated FROM Items WHERE Title = 'inner' ORDER BY ID DESC LIMIT 1"_s;
        QCOMPARE(m_to->QueryValue(page).ToLong(), 5);
        MakeMother(*m_to, m_clock->Now());
        m_to->Execute(u"DELETE FROM ItemLinks"_s);
        ImportItems(*m_to, UnpackedBranch(File()), {.Parent = 0, .Only = {}});
        const Date later = Date::FromSeconds(m_clock->Now().Seconds() + 1);
        QCOMPARE(m_to->QueryValue(page).ToDate(), later);
        QCOMPARE(m_to->QueryValue(u"SELECT DateAdded FROM ItemLinks"_s).ToDate(), later);
        QCOMPARE(
            m_to->QueryValue(u"SELECT HTMLLastUpdated FROM Items WHERE Title = 'top ü' ORDER BY ID DESC"_s).ToLong(),
            5); // it has none
    }

    void importOfAnImport_equalsTheFirst()
    {
        Fill();
        ExportItems(*m_from, m_top, File());
        const BranchImportResult first = ImportItems(*m_to, UnpackedBranch(File()), {.Parent = 0, .Only = {}});
        const QStringList before = Shown(*m_to, u"inner"_s);
        ExportItems(*m_to, first.Top, File());
        const BranchImportResult second = ImportItems(*m_to, UnpackedBranch(File()), {.Parent = 0, .Only = {}});
        QVERIFY(second.Top != first.Top);
        QCOMPARE(Shown(*m_to, u"inner"_s), before);
    }

    void codeOfAnotherLibrarysLanguage_namesIt()
    {
        Fill();
        ExportItems(*m_from, m_top, File());
        ImportItems(*m_to, UnpackedBranch(File()), {.Parent = 0, .Only = {}});
        const QString code = Texts(*m_to, u"SELECT Code FROM Items WHERE Title = 'inner'"_s).value(0);
        QCOMPARE(LanguageInRtf(code), m_from->QueryValue(u"SELECT LanguageUsed FROM Properties"_s).ToText());
        const auto same = MakeLibrary(m_home->Path(u"same.qbd"_s), LanguageType::Cpp);
        ImportItems(*same, UnpackedBranch(File()), {.Parent = 0, .Only = {}});
        QCOMPARE(LanguageInRtf(Texts(*same, u"SELECT Code FROM Items WHERE Title = 'inner'"_s).value(0)), QString());
    }

    void wholeLibrary_hasNoRecordOfItsRoot()
    {
        Fill();
        m_from->Execute(u"PRAGMA ignore_check_constraints = ON"_s); // other programs leave titles empty
        m_from->Execute(u"INSERT INTO Items (Title, ParentID) VALUES ('lost', 4711), ('', ?)"_s, {m_top});
        QCOMPARE(CountBranchItems(*m_from, 0), 5);
        QCOMPARE(ExportItems(*m_from, 0, File()).Items, 5);
        const UnpackedBranch branch(File());
        QStringList outline;
        for (const OutlinedItem& item : branch.Items())
            outline << u"%1 below %2"_s.arg(item.Title).arg(item.Parent);
        QCOMPARE(outline, (QStringList{u"aside below -1"_s, u"top ü below -1"_s, u"  below 1"_s, u"inner below 1"_s,
                                       u"lost below -1"_s}));
        const OutlinedItem& inner = branch.Items()[3];
        QCOMPARE(inner.Files, 4);
        QCOMPARE(inner.FileBytes, 16'383 + 16'384 + 16'385);
        QCOMPARE(inner.Pages, 3);
        ImportItems(*m_to, branch, {.Parent = 0, .Only = {}});
        QCOMPARE(Texts(*m_to, u"SELECT Title FROM Items WHERE ParentID = 0 ORDER BY Title"_s),
                 (QStringList{u"aside"_s, u"lost"_s, u"top ü"_s}));
    }

    void chosenBranches_comeAlone()
    {
        Fill();
        ExportItems(*m_from, 0, File());
        const UnpackedBranch branch(File());
        const BranchImportResult got = ImportItems(*m_to, branch, {.Parent = 0, .Only = {QString::number(m_inner)}});
        QCOMPARE(got.Items, 1);
        QCOMPARE(got.Links, 0);
        QCOMPARE(Shown(*m_to, u"inner"_s), Shown(*m_from, u"inner"_s));
        const QStringList before = Rows();
        QVERIFY(Raised([&] { ImportItems(*m_to, branch, {.Parent = 0, .Only = {u"4711"_s}}); }).contains(u"4711"_s));
        QCOMPARE(Rows(), before);
        const BranchImportResult below = ImportItems(*m_to, branch, {.Parent = 0, .Only = {QString::number(m_top)}});
        QCOMPARE(below.Items, 2); // with all that stands below it
        QCOMPARE(below.Links, 1);
    }

    void reservedTitle_becomesACopyUnderTheRootOnly()
    {
        AddItem(*m_from, 0, OrphanedItemsTitle);
        ExportItems(*m_from, 0, File());
        ImportItems(*m_to, UnpackedBranch(File()), {.Parent = 0, .Only = {}});
        QCOMPARE(Texts(*m_to, u"SELECT Title FROM Items"_s), QStringList{u"Orphaned Items Copy"_s});
        const qint64 parent = AddItem(*m_to, 0, u"parent"_s);
        ImportItems(*m_to, UnpackedBranch(File()), {.Parent = parent, .Only = {}});
        QCOMPARE(Texts(*m_to, u"SELECT Title FROM Items WHERE ParentID = %1"_s.arg(parent)),
                 QStringList{OrphanedItemsTitle});
    }

    void importThatFails_changesNothing_data()
    {
        QTest::addColumn<QString>("how");
        for (const char* how :
             {"refused before it counts", "refused as it counts", "cancelled", "a row that can't be stored"})
            QTest::newRow(how) << QString::fromLatin1(how);
    }
    void importThatFails_changesNothing()
    {
        QFETCH(QString, how);
        Fill();
        ExportItems(*m_from, 0, File());
        const UnpackedBranch branch(File());
        const QStringList before = Rows();
        BranchImportOptions options;
        struct Cancelled : Work {
            int Left = 2;
            bool IsCancelled() override { return --Left < 0; }
        } cancelled;
        ScriptedPrompts prompts;
        if (how == u"refused before it counts"_s)
            options.BeforeCommit = [](const BranchImportResult&) {
                throw RuntimeError(ErrorNumber::Internal, u"no"_s, u"test"_s);
            };
        else if (how == u"refused as it counts"_s)
            options.BeforeCommit = [this](const BranchImportResult&) {
                m_to->Execute(u"PRAGMA defer_foreign_keys = ON"_s);
                m_to->Execute(u"INSERT INTO Files (CodeID, Title) VALUES (4711, 'x')"_s);
            };
        else if (how != u"cancelled"_s) {
            RefuseWord(*m_to, u"Items"_s, u"Title"_s, u"inner"_s);
            prompts.ExpectError();
        }
        QVERIFY(!Raised([&] {
                     ImportItems(*m_to, branch, options, how == u"cancelled"_s ? cancelled : NoWork());
                 }).isEmpty());
        QCOMPARE(Rows(), before);
    }

    void flushOfAnExport_isWatchedAndCanBeStopped()
    {
        Fill();
        struct CountedAtTheEnd : RecordedWork {
            void Pulse() override { AtTheEnd += Done.isEmpty() || Done.last() < Totals.last() ? 0 : 1; }
            bool IsCancelled() override { return Stops && AtTheEnd >= Stops; }
            int AtTheEnd = 0;
            int Stops = 0;
        } counted;
        ExportItems(*m_from, 0, File(), counted);
        QVERIFY2(counted.AtTheEnd >= 3, qPrintable(QString::number(counted.AtTheEnd)));
        QVERIFY(QFile::remove(File()));
        CountedAtTheEnd stopped;
        stopped.Stops = counted.AtTheEnd - 2;
        QVERIFY(!Raised([&] { ExportItems(*m_from, 0, File(), stopped); }).isEmpty());
        QVERIFY(!QFile::exists(File()));
    }

    void branchOfManyPages_needsFewFiles()
    {
        constexpr int Many = 200;
        const qint64 top = AddItem(*m_from, 0, u"top"_s);
        for (int i = 0; i < Many; ++i) {
            const qint64 item = AddItem(*m_from, top, u"inner"_s);
            WriteFile(m_from->HTMLFolder() + QString::number(item) + u".htm"_s, "page");
            AddStoredFile(*m_from, item, u"file.txt"_s, "file", Date::FromParts(2020, 1, 2));
        }
        m_from->Execute(u"UPDATE Items SET HTMLPage = -1 WHERE ParentID = ?"_s, {top});
        const FewFiles few(Many / 2);
        ExportItems(*m_from, top, File());
        const BranchImportResult result = ImportItems(*m_to, UnpackedBranch(File()), {});
        QCOMPARE(result.Pages, Many);
        QCOMPARE(result.Files, Many);
    }

    void keyThatRepeats_isRefused()
    {
        const QString stream = m_home->Path(u"x.qbt"_s);
        {
            BranchWriter writer(stream, 2);
            for (int i = 0; i < 2; ++i) {
                BranchItem item;
                item.Title = u"one"_s;
                item.Key = u"7"_s;
                writer.Write(item);
                writer.WriteCount(0);
            }
            writer.Write(BranchTrailer());
            writer.Close();
        }
        BrindletonZip zip;
        zip.SetZipFileName(File());
        zip.AddFile(stream);
        QVERIFY(zip.Zip());
        QVERIFY(Raised([this] { UnpackedBranch branch(File()); }).contains(u"two items of the key '7'"_s));
    }

    void whatIsNoExport_isRefused()
    {
        WriteFile(File(), "no export at all");
        QVERIFY(!Raised([this] { UnpackedBranch branch(File()); }).isEmpty());
    }

    void exportOverAFile_replacesItWhole()
    {
        Fill();
        WriteFile(File(), "old");
        QVERIFY(!Raised([this] { ExportItems(*m_from, 4711, File()); }).isEmpty());
        QCOMPARE(ReadFile(File()), "old");
        ExportItems(*m_from, m_aside, File());
        QCOMPARE(UnpackedBranch(File()).Items().size(), 1u);
        for (const QString& name : ContentsOf(m_home->Path({})).keys())
            QVERIFY2(!name.startsWith(u'.') || name.contains(u".open-"_s), qPrintable(name));
    }
};

QB_TEST_MAIN(TestBranchTransfer)
#include "tst_branch_transfer.moc"
